#include "entry/javaprinthandler.h"

#include "basix/basix.h"
#include "proxies/jobjectproxy.h"
#include "proxies/jprimitive.h"
#include "tether/jnicalls.h"

#include <boost/shared_ptr.hpp>

#include <exception>

namespace nativevrl {

JavaPrintHandler::JavaPrintHandler(const tether::JNIEnvInjector& injector, jobject callable)
    : callable_(tether::GlobalRef<jobject>::of(injector, callable)) {
    injector.run([this](JNIEnv* env) {
        const auto callableClass = adopt(env, tether::findClass(env, "java/util/concurrent/Callable"));
        const auto printStreamClass = adopt(env, tether::findClass(env, "java/io/PrintStream"));
        callMethod_ =
            tether::getMethodID(env, static_cast<jclass>(callableClass.ref()), "call", "()Ljava/lang/Object;");
        printMethod_ =
            tether::getMethodID(env, static_cast<jclass>(printStreamClass.ref()), "print", "(Ljava/lang/String;)V");
    });
}

int JavaPrintHandler::operator()(const char* text) const {
    return callable_.injector().run([&](JNIEnv* env) {
        try {
            return print(env, text);
        } catch (const std::exception&) {
            return -1;
        }
    });
}

int JavaPrintHandler::print(JNIEnv* env, const char* text) const {
    const boost::shared_ptr<utf16_t> wide(lcp_to_utf16(text, -1), utFree);
    if (wide == nullptr) {
        return -1;
    }
    const auto* units = reinterpret_cast<const jchar*>(wide.get());
    const auto string = adopt(env, tether::newString(env, units, static_cast<jsize>(utf16_strlen(wide.get()))));
    const auto stream = adopt(env, callObjectMethod(env, callable_.get(), callMethod_));
    const jvalue argument = objectArgument(string.ref());
    tether::callMethodA<void>(env, stream.ref(), printMethod_, &argument);
    return 0;
}

}  // namespace nativevrl
