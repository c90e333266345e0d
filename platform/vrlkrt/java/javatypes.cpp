#include "vrlkrt/java/javatypes.h"

#include "jzi/jzi.h"
#include "tether/jnicalls.h"
#include "tether/localref.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/java/javafailure.h"
#include "vrlkrt/java/javatext.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

std::string systemProperty(JNIEnv* env, const char* name) {
    const tether::LocalRef<jclass> system(env, tether::findClass(env, "java/lang/System"));
    jmethodID getProperty =
        tether::getStaticMethodID(env, system.get(), "getProperty", "(Ljava/lang/String;)Ljava/lang/String;");
    const tether::LocalRef<jstring> key(env, tether::newStringUTF(env, name));
    jvalue argument;
    argument.l = key.get();
    const tether::LocalRef<jstring> value(
        env, static_cast<jstring>(env->CallStaticObjectMethodA(system.get(), getProperty, &argument)));
    tether::throwIfPending(env);
    return value ? utf8Of(env, value.get()) : std::string();
}

jclass globalClass(JNIEnv* env, const char* name) {
    const tether::LocalRef<jclass> local(env, tether::findClass(env, name));
    auto* global = static_cast<jclass>(env->NewGlobalRef(local.get()));
    if (global == nullptr) {
        tether::throwOutOfMemory(env);
    }
    return global;
}

/// The configuration gives the class away once, so it is kept also when a later step fails. Loading it runs class
/// loaders of the application, which may come back here on this thread: the first class that was had is the one.
jclass integrationClass(JNIEnv* env) {
    static std::recursive_mutex& loading = *new std::recursive_mutex;
    static jclass loaded = nullptr;
    const std::lock_guard<std::recursive_mutex> lock(loading);
    if (loaded != nullptr) {
        return loaded;
    }
    const boost::shared_ptr<jzi::JavaVMConfig> config = vrlGetJavaVMConfig();
    if (!config || !vrlIsJVMEnabled()) {
        throw vrlBaseException(config ? "the runtime was started with -nojvm" : "the runtime knows no virtual machine");
    }
    jclass ours = config->loadOJI("-Djava.class.path=" + systemProperty(env, "java.class.path"),
                                  "-Djava.library.path=" + systemProperty(env, "java.library.path"));
    if (loaded != nullptr) {
        env->DeleteGlobalRef(ours);
    } else if (ours == nullptr) {
        throw vrlBaseException("the integration class was not found");
    } else {
        loaded = ours;
    }
    return loaded;
}

/// Ends types that nobody knows yet, with the references that they have got so far. The integration class stays.
struct UnknownTypesEnd {
    JNIEnv* env;
    void operator()(JavaTypes* types) const noexcept {
        for (jclass cls : {types->object, types->string, types->number, types->boxedDouble, types->boxedBoolean,
                           types->doubleArray, types->doubleArrayArray}) {
            env->DeleteGlobalRef(cls);
        }
        delete types;
    }
};

using UnknownTypes = std::unique_ptr<JavaTypes, UnknownTypesEnd>;

UnknownTypes loadTypes(JNIEnv* env) {
    UnknownTypes types(new JavaTypes{}, {env});
    types->invoker = integrationClass(env);
    types->invoke = tether::getStaticMethodID(
        env, types->invoker, "invoke", "(Ljava/lang/Object;Ljava/lang/String;[Ljava/lang/Object;)Ljava/lang/Object;");
    types->object = globalClass(env, "java/lang/Object");
    types->string = globalClass(env, "java/lang/String");
    types->number = globalClass(env, "java/lang/Number");
    types->doubleValue = tether::getMethodID(env, types->number, "doubleValue", "()D");
    types->boxedDouble = globalClass(env, "java/lang/Double");
    types->newDouble = tether::getMethodID(env, types->boxedDouble, "<init>", "(D)V");
    types->boxedBoolean = globalClass(env, "java/lang/Boolean");
    types->newBoolean = tether::getMethodID(env, types->boxedBoolean, "<init>", "(Z)V");
    types->booleanValue = tether::getMethodID(env, types->boxedBoolean, "booleanValue", "()Z");
    types->doubleArray = globalClass(env, "[D");
    types->doubleArrayArray = globalClass(env, "[[D");
    return types;
}

UnknownTypes loadOrExplain(JNIEnv* env) {
    try {
        return loadTypes(env);
    } catch (const std::exception& failure) {
        const std::string pending = takeJavaException(env);
        const bool isMarker = dynamic_cast<const tether::Exception*>(&failure) != nullptr && !pending.empty();
        throw vrlBaseException(std::string("Java objects can't be called: ") +
                               (isMarker ? pending.c_str() : failure.what()));
    }
}

}  // namespace

const JavaTypes& javaTypes(JNIEnv* env) {
    static std::atomic<const JavaTypes*> known{nullptr};
    const JavaTypes* types = known.load(std::memory_order_acquire);
    if (types != nullptr) {
        return *types;
    }
    // Without a lock, since class loaders run code of the application. Whoever comes second drops what it loaded.
    UnknownTypes ours = loadOrExplain(env);
    if (known.compare_exchange_strong(types, ours.get(), std::memory_order_acq_rel)) {
        types = ours.release();
    }
    return *types;
}

}  // namespace vrlkrt
