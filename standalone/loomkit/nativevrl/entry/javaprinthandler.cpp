#include "entry/javaprinthandler.h"

#include "basix/basix.h"
#include "proxies/jobjectproxy.h"
#include "tether/jnicalls.h"

#include <boost/shared_ptr.hpp>

#include <exception>

namespace nativevrl {

namespace {

/// A class for the length of a look-up, with the one local reference that the look-up gave.
JObjectRef foundClass(JNIEnv* env, const char* name) {
    JObjectRef cls(env, nullptr);
    cls.attach(tether::findClass(env, name));
    return cls;
}

}  // namespace

JavaPrintHandler::JavaPrintHandler(const tether::JNIEnvInjector& injector, jobject callable)
    : callable_(injector, callable) {
    injector.run([this](JNIEnv* env) {
        const JObjectRef callableClass = foundClass(env, "java/util/concurrent/Callable");
        const JObjectRef printStreamClass = foundClass(env, "java/io/PrintStream");
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
    JObjectRef string(env, nullptr);
    string.attach(tether::newString(env, reinterpret_cast<const jchar*>(wide.get()),
                                    static_cast<jsize>(utf16_strlen(wide.get()))));
    JObjectRef stream(env, nullptr);
    stream.attach(callObjectMethod(env, callable_.get(), callMethod_));
    jvalue argument;
    argument.l = string.ref();
    tether::callMethodA<void>(env, stream.ref(), printMethod_, &argument);
    return 0;
}

}  // namespace nativevrl
