#include "vrlkrt/java/javacalls.h"

#include "jzi/javaarray.h"
#include "tether/jnicalls.h"
#include "tether/localref.h"
#include "vrlbase/exceptions.h"
#include "vrlkrt/java/integration.h"
#include "vrlkrt/java/javafailure.h"
#include "vrlkrt/java/javavalues.h"

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

/// Frees every local reference of a call at its end.
class LocalFrame {
public:
    LocalFrame(JNIEnv* env, int capacity) : env_(env) {
        if (env->PushLocalFrame(capacity) != JNI_OK) {
            throw tether::OutOfMemoryException();
        }
    }
    ~LocalFrame() { env_->PopLocalFrame(nullptr); }
    LocalFrame(const LocalFrame&) = delete;
    LocalFrame& operator=(const LocalFrame&) = delete;

private:
    JNIEnv* env_;
};

qxArray* invoke(JNIEnv* env, const Integration& integration, jobject target, const std::string& method, int nrhs,
                qxArray* const* prhs) {
    const JavaTypes& types = javaTypes(env);
    const LocalFrame frame(env, 16);
    jobjectArray arguments = tether::newObjectArray(env, nrhs, types.object);
    for (int i = 0; i < nrhs; ++i) {
        const krt::Value value(prhs[i], "Java method " + method + ": argument " + std::to_string(i + 1));
        const tether::LocalRef<jobject> argument(env, javaValueOf(env, types, value));
        tether::setObjectArrayElement(env, arguments, i, argument.get());
    }
    jvalue values[3];
    values[0].l = target;
    values[1].l = tether::newStringUTF(env, method.c_str());
    values[2].l = arguments;
    jobject result = nullptr;
    {
        const qxCallScopeSuspension outInJava;
        result = env->CallStaticObjectMethodA(integration.invoker.get(), integration.invoke, values);
    }
    tether::throwIfPending(env);
    return arrayOf(env, types, result);
}

}  // namespace

qxArray* callJavaMethod(vrlLibrary library, const qxArray* object, const std::string& method, int nrhs,
                        qxArray* const* prhs) {
    if (!ojIsJavaArray(object)) {
        throw vrlBaseException("the method " + method + " is called on what is no Java object");
    }
    jobject target = jzi::heldJavaObject(object);
    const jzi::ThreadEnv thread(jzi::javaVM());
    JNIEnv* env = thread.get();
    if (target == nullptr || env == nullptr) {
        throw vrlBaseException(
            "the method " + method +
            (target == nullptr ? " is called on null" : " can't be called: there is no virtual machine"));
    }
    if (env->ExceptionCheck() != JNI_FALSE) {
        throw vrlBaseException("the method " + method + " can't be called after " + takeJavaException(env));
    }
    try {
        return invoke(env, integrationOf(env, library), target, method, nrhs, prhs);
    } catch (const tether::Exception& failure) {
        const std::string text = takeJavaException(env);
        throw vrlBaseException("the Java method " + method + " failed: " + (text.empty() ? failure.what() : text));
    }
}

}  // namespace vrlkrt
