#include "proxies/jnvarrayproxy.h"

#include "jzi/jzi.h"
#include "proxies/jnvjavaobjectrefproxy.h"
#include "proxies/jprimitive.h"
#include "tether/jnicalls.h"

#include <string>

namespace nativevrl {

namespace {

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

/// The wrapper that fits an array, a local reference of the caller.
jobject wrap(JNIEnv* env, qxArray* array) {
    if (array != nullptr && ojIsJavaArray(array)) {
        return NewJNVJavaObjectRefProxy(env, array).detach();
    }
    if (array != nullptr && array->classWord() == qxFUNCTION_CLASS) {
        return NewJNVFunctionHandleProxy(env, array).detach();
    }
    return NewJNVBuiltinArrayProxy(env, array, true).detach();
}

}  // namespace

NewJNVArrayProxy::NewJNVArrayProxy(JNIEnv* env, qxArray* array) : JNVArrayProxy(env, nullptr) {
    attach(wrap(env, array));
}

qxArray* JNVBuiltinArrayProxy::getArray() const {
    return static_cast<qxArray*>(call<JNativePtrProxy>(cls().getValue).address());
}

NewJNVBuiltinArrayProxy::NewJNVBuiltinArrayProxy(JNIEnv* env, qxArray* array, bool specificClass)
    : JNVBuiltinArrayProxy(env, nullptr) {
    const NewJNativePtrProxy handle(env, array);
    const jvalue argument = objectArgument(handle.ref());
    if (!specificClass || array == nullptr) {
        construct(&argument);
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
    attach(tether::newObjectA(env, wrapper.get(), constructor, &argument));
}

NewJNVFunctionHandleProxy::NewJNVFunctionHandleProxy(JNIEnv* env, qxArray* array)
    : JNVFunctionHandleProxy(env, nullptr) {
    const NewJNativePtrProxy handle(env, array);
    const jvalue argument = objectArgument(handle.ref());
    construct(&argument);
}

}  // namespace nativevrl
