#include "support/javaobjects.h"

#include "entry/startup.h"
#include "jzi/javaarray.h"
#include "support/javadata.h"

namespace nativevrl::test {

namespace {

const std::string testing = "com/norvane/toolbox/loomkit/testing/";

jvalue intArgument(jint value) { return asArgument<jint>(value); }

}  // namespace

jobject places(JNIEnv* env, jobjectArray values, std::string_view failing, jint failsAt) {
    const std::u16string operation(failing.begin(), failing.end());
    return newObject(env, testing + "Places", "([Ljava/lang/Object;Ljava/lang/String;I)V",
                     {objectArgument(values), objectArgument(javaString(env, operation)), intArgument(failsAt)});
}

jobject chunkedStream(JNIEnv* env, const std::vector<jbyte>& bytes, jint chunk, jint breaksAt) {
    return newObject(env, testing + "ChunkedStream", "([BII)V",
                     {objectArgument(primitiveArray<jbyte>(env, bytes)), intArgument(chunk), intArgument(breaksAt)});
}

jobject recorder(JNIEnv* env) { return newObject(env, testing + "Recorder", "()V"); }

std::string recordedText(JNIEnv* env, jobject recorder) {
    return toText(env, callObject(env, recorder, "text", "()Ljava/lang/String;"));
}

std::string recordedThread(JNIEnv* env, jobject recorder) {
    return toText(env, callObject(env, recorder, "threadName", "()Ljava/lang/String;"));
}

jobject failingOutput(JNIEnv* env, bool hasStream) {
    return newObject(env, testing + "FailingOutput", "(Z)V", {asArgument<jboolean>(hasStream ? JNI_TRUE : JNI_FALSE)});
}

jobject javaCell(JNIEnv* env, const std::vector<jint>& dimensions, const std::vector<jobject>& elements) {
    return newObject(
        env, "com/norvane/extern/java/NVCellArray", "([I[Ljava/lang/Object;)V",
        {objectArgument(intArray(env, dimensions)), objectArgument(objectArray(env, "java/lang/Object", elements))});
}

jobject javaStruct(JNIEnv* env, const std::vector<jint>& dimensions, const std::vector<std::u16string>& fields,
                   const std::vector<jobject>& elements) {
    std::vector<jobject> names;
    for (const auto& field : fields) {
        names.push_back(javaString(env, field));
    }
    return newObject(
        env, "com/norvane/extern/java/NVStructArray", "([I[Ljava/lang/String;[Ljava/lang/Object;)V",
        {objectArgument(intArray(env, dimensions)), objectArgument(objectArray(env, "java/lang/String", names)),
         objectArgument(objectArray(env, "java/lang/Object", elements))});
}

qxArray* javaObjectArray(JNIEnv* env, jobject object) {
    configureRuntimeOnce(env);
    jobject reference = env->NewGlobalRef(object);
    qxArray* array = jzi::makeJavaArray(reference);
    if (array == nullptr) {
        env->DeleteGlobalRef(reference);
        throw std::runtime_error("a Java object could not be wrapped");
    }
    return array;
}

}  // namespace nativevrl::test
