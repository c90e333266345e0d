#include "vrlkrt/java/javatypes.h"

#include "jzi/jzi.h"
#include "tether/jnicalls.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/java/javafailure.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

std::string systemProperty(JNIEnv* env, const char* name) {
    jclass system = tether::findClass(env, "java/lang/System");
    jmethodID getProperty =
        tether::getStaticMethodID(env, system, "getProperty", "(Ljava/lang/String;)Ljava/lang/String;");
    jvalue argument;
    argument.l = tether::newStringUTF(env, name);
    auto* value = static_cast<jstring>(env->CallStaticObjectMethodA(system, getProperty, &argument));
    tether::throwIfPending(env);
    std::string text;
    if (value != nullptr) {
        const char* characters = tether::getStringUTFChars(env, value);
        text = characters;
        env->ReleaseStringUTFChars(value, characters);
        env->DeleteLocalRef(value);
    }
    env->DeleteLocalRef(argument.l);
    env->DeleteLocalRef(system);
    return text;
}

jclass globalClass(JNIEnv* env, const char* name) {
    jclass local = tether::findClass(env, name);
    auto* global = static_cast<jclass>(env->NewGlobalRef(local));
    env->DeleteLocalRef(local);
    if (global == nullptr) {
        tether::throwOutOfMemory(env);
    }
    return global;
}

/// The configuration gives the class away for good, so it is kept also when a later step fails.
jclass integrationClass(JNIEnv* env) {
    static jclass loaded = nullptr;
    if (loaded != nullptr) {
        return loaded;
    }
    const boost::shared_ptr<jzi::JavaVMConfig> config = vrlGetJavaVMConfig();
    if (!config || !vrlIsJVMEnabled()) {
        throw vrlBaseException(config ? "the runtime was started with -nojvm" : "the runtime knows no virtual machine");
    }
    loaded = config->loadOJI("-Djava.class.path=" + systemProperty(env, "java.class.path"),
                             "-Djava.library.path=" + systemProperty(env, "java.library.path"));
    if (loaded == nullptr) {
        throw vrlBaseException("the integration class was not found");
    }
    return loaded;
}

std::unique_ptr<JavaTypes> loadTypes(JNIEnv* env) {
    auto types = std::make_unique<JavaTypes>();
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

std::unique_ptr<JavaTypes> loadOrExplain(JNIEnv* env) {
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
    static std::mutex& loading = *new std::mutex;
    static std::atomic<const JavaTypes*> types{nullptr};
    const JavaTypes* known = types.load(std::memory_order_acquire);
    if (known == nullptr) {
        const std::lock_guard<std::mutex> lock(loading);
        known = types.load(std::memory_order_relaxed);
        if (known == nullptr) {
            known = loadOrExplain(env).release();
            types.store(known, std::memory_order_release);
        }
    }
    return *known;
}

}  // namespace vrlkrt
