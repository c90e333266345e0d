#include "proxies/jnvarrayproxy.h"

#include "jzi/jzi.h"
#include "proxies/jnvjavaobjectrefproxy.h"
#include "tether/jnicalls.h"

#include <string>

namespace nativevrl {

namespace {

/// A new object through a constructor from NativePtr.
jobject newAround(JNIEnv* env, jclass cls, jmethodID constructor, const JNativePtrProxy& handle) {
    jvalue argument;
    argument.l = handle.ref();
    return tether::newObjectA(env, cls, constructor, &argument);
}

/// The wrapper class of each class id from cell to function handle.
const char* wrapperClassOf(std::uint32_t classId) {
    switch (classId) {
        case qxCELL_CLASS:
            return "com/norvane/toolbox/loomkit/NVCellArray";
        case qxSTRUCT_CLASS:
            return "com/norvane/toolbox/loomkit/NVStructArray";
        case qxLOGICAL_CLASS:
            return "com/norvane/toolbox/loomkit/NVLogicalArray";
        case qxCHAR_CLASS:
            return "com/norvane/toolbox/loomkit/NVCharArray";
        case qxFUNCTION_CLASS:
            return JNVFunctionHandleClassProxy::className();
        default:
            return classId >= qxDOUBLE_CLASS && classId <= qxUINT64_CLASS ? "com/norvane/toolbox/loomkit/NVNumericArray"
                                                                          : JNVBuiltinArrayClassProxy::className();
    }
}

[[noreturn]] void refuseWrapper(JNIEnv* env, const qxArray* array) {
    std::string message = "Could not create NVArray from unsupported TAVRIX type ";
    message += array->classWord() == qxOPAQUE_CLASS ? qxGetSubclass(array) : "<function-handle>";
    tether::throwNamedException(env, "java/lang/RuntimeException", message.c_str());
    throw tether::Exception();
}

}  // namespace

JNVArrayProxy::JNVArrayProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), arrayClass_(JNVArrayClassProxy::instance(env)) {}
JNVArrayProxy::JNVArrayProxy(const JNVArrayProxy& other) = default;
JNVArrayProxy::~JNVArrayProxy() = default;

NewJNVArrayProxy::NewJNVArrayProxy(JNIEnv* env, qxArray* array) : JNVArrayProxy(env, nullptr) {
    if (array != nullptr && ojIsJavaArray(array)) {
        attach(NewJNVJavaObjectRefProxy(env, array).detach());
    } else if (array != nullptr && array->classWord() == qxFUNCTION_CLASS) {
        attach(NewJNVFunctionHandleProxy(env, array).detach());
    } else {
        attach(NewJNVBuiltinArrayProxy(env, array, true).detach());
    }
}

NewJNVArrayProxy::~NewJNVArrayProxy() = default;

JNVBuiltinArrayClassProxy::JNVBuiltinArrayClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      constructor(method("<init>", nativePtrConstructorSignature())),
      getValue(method("getValue", nativePtrGetterSignature())) {}

JNVBuiltinArrayProxy::JNVBuiltinArrayProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), builtinClass_(JNVBuiltinArrayClassProxy::instance(env)) {}
JNVBuiltinArrayProxy::JNVBuiltinArrayProxy(const JNVBuiltinArrayProxy& other) = default;
JNVBuiltinArrayProxy::~JNVBuiltinArrayProxy() = default;

qxArray* JNVBuiltinArrayProxy::getArray() const {
    JNativePtrProxy handle(env(), nullptr);
    handle.attach(callObject(builtinClass_->getValue));
    return static_cast<qxArray*>(handle.address());
}

NewJNVBuiltinArrayProxy::NewJNVBuiltinArrayProxy(JNIEnv* env, qxArray* array, bool specificClass)
    : JNVBuiltinArrayProxy(env, nullptr) {
    const NewJNativePtrProxy handle(env, array);
    if (!specificClass || array == nullptr) {
        attach(newAround(env, builtinClass()->classRef(), builtinClass()->constructor, handle));
        return;
    }
    std::uint32_t classId = array->classWord();
    if (classId == qxFUNCTION_CLASS || classId == qxOPAQUE_CLASS) {
        refuseWrapper(env, array);
    }
    if (classId > qxFUNCTION_CLASS) {
        classId = static_cast<std::uint32_t>(array->_get_class_id_non_trivial());
    }
    const JClassRef wrapper(env, wrapperClassOf(classId));
    jmethodID constructor = tether::getMethodID(env, wrapper.get(), "<init>", nativePtrConstructorSignature());
    attach(newAround(env, wrapper.get(), constructor, handle));
}

NewJNVBuiltinArrayProxy::~NewJNVBuiltinArrayProxy() = default;

JNVFunctionHandleClassProxy::JNVFunctionHandleClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls), constructor(method("<init>", nativePtrConstructorSignature())) {}

JNVFunctionHandleProxy::JNVFunctionHandleProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), functionHandleClass_(JNVFunctionHandleClassProxy::instance(env)) {}
JNVFunctionHandleProxy::JNVFunctionHandleProxy(const JNVFunctionHandleProxy& other) = default;
JNVFunctionHandleProxy::~JNVFunctionHandleProxy() = default;

NewJNVFunctionHandleProxy::NewJNVFunctionHandleProxy(JNIEnv* env, qxArray* array)
    : JNVFunctionHandleProxy(env, nullptr) {
    const NewJNativePtrProxy handle(env, array);
    attach(newAround(env, functionHandleClass()->classRef(), functionHandleClass()->constructor, handle));
}

NewJNVFunctionHandleProxy::~NewJNVFunctionHandleProxy() = default;

}  // namespace nativevrl
