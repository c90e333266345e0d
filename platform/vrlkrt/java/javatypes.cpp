#include "vrlkrt/java/javatypes.h"

#include "tether/jnicalls.h"
#include "tether/localref.h"

#include <atomic>
#include <memory>

namespace vrlkrt {

namespace {

jclass globalClass(JNIEnv* env, const char* name) {
    const tether::LocalRef<jclass> local(env, tether::findClass(env, name));
    auto* global = static_cast<jclass>(env->NewGlobalRef(local.get()));
    if (global == nullptr) {
        tether::throwOutOfMemory(env);
    }
    return global;
}

/// Ends types that nobody knows yet, with the references that they have got so far.
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

}  // namespace

const JavaTypes& javaTypes(JNIEnv* env) {
    static std::atomic<const JavaTypes*> known{nullptr};
    const JavaTypes* types = known.load(std::memory_order_acquire);
    if (types != nullptr) {
        return *types;
    }
    // Without a lock, since class loaders run code of the application. Whoever comes second drops what it loaded.
    UnknownTypes ours = loadTypes(env);
    if (known.compare_exchange_strong(types, ours.get(), std::memory_order_acq_rel)) {
        types = ours.release();
    }
    return *types;
}

}  // namespace vrlkrt
