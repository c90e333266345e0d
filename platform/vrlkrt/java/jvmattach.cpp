#include "vrlkrt/jvmattach.h"

#include "tether/jnicalls.h"

#include <link.h>

#include <string_view>

namespace jvm_attach {

namespace {

/// The one class of the binding that components reach Java through, as class loaders name it.
constexpr const char* invokerClass = "com.norvane.toolbox.loomkit.internal.ObjectInvoker";
constexpr const char* invokerClassForJni = "com/norvane/toolbox/loomkit/internal/ObjectInvoker";

/// Stops at the virtual machine's library and stores its folder.
int findMachine(dl_phdr_info* library, std::size_t, void* result) {
    constexpr std::string_view name = "/libjvm.so";
    const std::string_view file = library->dlpi_name;
    if (file.size() < name.size() || file.substr(file.size() - name.size()) != name) {
        return 0;
    }
    *static_cast<std::string*>(result) = file.substr(0, file.size() - name.size());
    return 1;
}

jclass loadThrough(JNIEnv* env, jobject classLoader) {
    jclass loaderClass = tether::findClass(env, "java/lang/ClassLoader");
    jmethodID loadClass = tether::getMethodID(env, loaderClass, "loadClass", "(Ljava/lang/String;)Ljava/lang/Class;");
    jvalue name;
    name.l = tether::newStringUTF(env, invokerClass);
    jobject loaded = env->CallObjectMethodA(classLoader, loadClass, &name);
    tether::throwIfPending(env);
    env->DeleteLocalRef(name.l);
    env->DeleteLocalRef(loaderClass);
    return static_cast<jclass>(loaded);
}

std::string utf8Of(JNIEnv* env, jstring string) {
    const char* characters = tether::getStringUTFChars(env, string);
    std::string text = characters;
    env->ReleaseStringUTFChars(string, characters);
    return text;
}

jobject callForObject(JNIEnv* env, jobject object, const char* method, const char* signature) {
    jclass cls = env->GetObjectClass(object);
    jmethodID id = tether::getMethodID(env, cls, method, signature);
    env->DeleteLocalRef(cls);
    jobject result = env->CallObjectMethodA(object, id, nullptr);
    tether::throwIfPending(env);
    return result;
}

/// What printStackTrace writes, without the last line end.
std::string stackTrace(JNIEnv* env, jthrowable thrown) {
    jclass bufferClass = tether::findClass(env, "java/io/StringWriter");
    jobject buffer =
        tether::newObjectA(env, bufferClass, tether::getMethodID(env, bufferClass, "<init>", "()V"), nullptr);
    jclass writerClass = tether::findClass(env, "java/io/PrintWriter");
    jvalue argument;
    argument.l = buffer;
    jobject writer = tether::newObjectA(
        env, writerClass, tether::getMethodID(env, writerClass, "<init>", "(Ljava/io/Writer;)V"), &argument);
    argument.l = writer;
    jclass thrownClass = tether::findClass(env, "java/lang/Throwable");
    tether::callMethodA<void>(
        env, thrown, tether::getMethodID(env, thrownClass, "printStackTrace", "(Ljava/io/PrintWriter;)V"), &argument);
    tether::callMethodA<void>(env, writer, tether::getMethodID(env, writerClass, "flush", "()V"), nullptr);
    std::string text =
        utf8Of(env, static_cast<jstring>(callForObject(env, buffer, "toString", "()Ljava/lang/String;")));
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

/// Tries ever simpler texts: the exception's own code may fail as well.
std::string textOf(JNIEnv* env, jthrowable thrown) {
    try {
        return stackTrace(env, thrown);
    } catch (const tether::Exception&) {
        env->ExceptionClear();
    }
    try {
        auto* cls = env->GetObjectClass(thrown);
        return utf8Of(env, static_cast<jstring>(callForObject(env, cls, "getName", "()Ljava/lang/String;")));
    } catch (const tether::Exception&) {
        env->ExceptionClear();
    }
    return "a Java exception that has no text";
}

}  // namespace

std::string getJVMLocation() {
    std::string folder;
    dl_iterate_phdr(findMachine, &folder);
    return folder;
}

// The class lies beside the binding's own classes, so the loader finds it; the paths are for machines that don't run
// yet.
tether::GlobalRef<jclass> loadOJI(JNIEnv* env, const tether::JNIEnvInjector& injector, const std::string&,
                                  const std::string&, jobject classLoader) {
    jclass loaded = classLoader == nullptr ? tether::findClass(env, invokerClassForJni) : loadThrough(env, classLoader);
    if (loaded == nullptr) {
        tether::throwNullPointer(env);
    }
    return {injector, env, loaded};
}

std::string exceptionToString(JNIEnv* env) {
    jthrowable thrown = env->ExceptionOccurred();
    if (thrown == nullptr) {
        return {};
    }
    env->ExceptionClear();
    std::string text;
    if (env->PushLocalFrame(16) == JNI_OK) {
        text = textOf(env, thrown);
        env->PopLocalFrame(nullptr);
    } else {
        env->ExceptionClear();
    }
    env->Throw(thrown);
    env->DeleteLocalRef(thrown);
    return text;
}

}  // namespace jvm_attach
