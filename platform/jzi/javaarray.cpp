#include "jzi/javaarray.h"

#include "tether/jnicalls.h"

#include <cstring>
#include <memory>
#include <new>

namespace {

/// What a wrapping array owns. The virtual machine is remembered, since the last header may go when the runtime has
/// been told of another, or of none.
struct HeldObject {
    JavaVM* vm;
    jobject reference;
};

/// When the virtual machine is gone, so is the reference.
void endHeldObject(void* payload) {
    const std::unique_ptr<HeldObject> held(static_cast<HeldObject*>(payload));
    if (held->reference == nullptr) {
        return;
    }
    const jzi::ThreadEnv env(held->vm);
    if (env.get() != nullptr) {
        env.get()->DeleteGlobalRef(held->reference);
    }
}

}  // namespace

namespace jzi {

qxArray* makeJavaArray(jobject globalReference) {
    JavaVM* vm = javaVM();
    if (vm == nullptr && globalReference != nullptr) {
        return nullptr;
    }
    std::unique_ptr<HeldObject> held(new (std::nothrow) HeldObject{vm, globalReference});
    if (held == nullptr) {
        return nullptr;
    }
    qxArray* array = qxCreateOpaque(javaObjectSubclass, held.get(), endHeldObject);
    if (array != nullptr) {
        static_cast<void>(held.release());
    }
    return array;
}

jobject heldJavaObject(const qxArray* array) {
    return ojIsJavaArray(array) ? static_cast<const HeldObject*>(qxGetOpaquePayload(array))->reference : nullptr;
}

}  // namespace jzi

bool ojIsJavaArray(const qxArray* array) {
    if (array == nullptr || qxGetClassID(array) != qxOPAQUE_CLASS) {
        return false;
    }
    const char* subclass = qxGetSubclass(array);
    return subclass != nullptr && std::strcmp(subclass, jzi::javaObjectSubclass) == 0;
}

jobject mJava2jObject(const qxArray* array) {
    if (!ojIsJavaArray(array)) {
        return nullptr;
    }
    const auto* held = static_cast<const HeldObject*>(qxGetOpaquePayload(array));
    if (held->reference == nullptr) {
        return nullptr;
    }
    const jzi::ThreadEnv env(held->vm);
    if (env.get() == nullptr) {
        return nullptr;
    }
    jobject reference = env.get()->NewGlobalRef(held->reference);
    if (reference == nullptr) {
        tether::throwNamedException(env.get(), "java/lang/OutOfMemoryError");
    }
    return reference;
}
