#include "vrlkrt/jvmattach.h"

#include "tether/jnicalls.h"
#include "tether/localref.h"
#include "vrlkrt/java/javatext.h"
#include "vrlkrt/java/loadedclass.h"

#include <link.h>

#include <new>
#include <string_view>

namespace jvm_attach {

namespace {

using tether::LocalRef;

/// The one class of the binding that components reach Java through, as class loaders name it.
constexpr const char* invokerClass = "com.norvane.toolbox.loomkit.internal.ObjectInvoker";
constexpr const char* invokerClassForJni = "com/norvane/toolbox/loomkit/internal/ObjectInvoker";

/// Short enough to need no memory of its own.
constexpr const char* outOfMemory = "out of memory";

/// The path of a library that stays loaded, without its name.
struct LibraryFile {
    const char* path = "";
    std::size_t folderLength = 0;
};

/// Stops at the virtual machine's library and stores where it lies. Nothing may throw through the loader.
int findMachine(dl_phdr_info* library, std::size_t, void* result) {
    constexpr std::string_view name = "/libjvm.so";
    const std::string_view file = library->dlpi_name;
    if (file.size() < name.size() || file.substr(file.size() - name.size()) != name) {
        return 0;
    }
    *static_cast<LibraryFile*>(result) = {library->dlpi_name, file.size() - name.size()};
    return 1;
}

LocalRef<jclass> loadThrough(JNIEnv* env, jobject classLoader) {
    const LocalRef<jclass> loaderClass(env, tether::findClass(env, "java/lang/ClassLoader"));
    jmethodID loadClass =
        tether::getMethodID(env, loaderClass.get(), "loadClass", "(Ljava/lang/String;)Ljava/lang/Class;");
    const LocalRef<jstring> name(env, tether::newStringUTF(env, invokerClass));
    jvalue argument;
    argument.l = name.get();
    LocalRef<jclass> loaded(env, static_cast<jclass>(env->CallObjectMethodA(classLoader, loadClass, &argument)));
    tether::throwIfPending(env);
    return loaded;
}

/// What a method without arguments gives, a local reference.
jobject callForObject(JNIEnv* env, jobject object, const char* method, const char* signature) {
    const LocalRef<jclass> cls(env, env->GetObjectClass(object));
    jobject result = env->CallObjectMethodA(object, tether::getMethodID(env, cls.get(), method, signature), nullptr);
    tether::throwIfPending(env);
    return result;
}

std::string textBy(JNIEnv* env, jobject object, const char* method) {
    const LocalRef<jstring> text(env, static_cast<jstring>(callForObject(env, object, method, "()Ljava/lang/String;")));
    return vrlkrt::utf8Of(env, text.get());
}

/// What printStackTrace writes, without the last line end. References are left to the caller's frame.
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
    std::string text = textBy(env, buffer, "toString");
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

std::string className(JNIEnv* env, jthrowable thrown) {
    const LocalRef<jclass> cls(env, env->GetObjectClass(thrown));
    return textBy(env, cls.get(), "getName");
}

/// Tries ever simpler texts: the exception's own code may fail as well, or there be no memory for them.
std::string textOf(JNIEnv* env, jthrowable thrown) noexcept {
    for (const auto attempt : {stackTrace, className}) {
        try {
            return attempt(env, thrown);
        } catch (const tether::Exception&) {
            env->ExceptionClear();
        } catch (const std::bad_alloc&) {
            env->ExceptionClear();
        }
    }
    try {
        return "a Java exception that has no text";
    } catch (const std::bad_alloc&) {
        return outOfMemory;
    }
}

}  // namespace

std::string getJVMLocation() {
    LibraryFile machine{};
    dl_iterate_phdr(findMachine, &machine);
    try {
        return std::string(machine.path, machine.folderLength);
    } catch (const std::bad_alloc&) {
        throw tether::OutOfMemoryException();
    }
}

// The class lies beside the binding's own classes, so the loader finds it; the paths are for machines that don't run
// yet.
tether::GlobalRef<jclass> loadOJI(JNIEnv* env, const tether::JNIEnvInjector& injector, const std::string&,
                                  const std::string&, jobject classLoader) {
    LocalRef<jclass> loaded = classLoader == nullptr ? LocalRef<jclass>(env, tether::findClass(env, invokerClassForJni))
                                                     : loadThrough(env, classLoader);
    if (!loaded) {
        tether::throwNullPointer(env);
    }
    auto global = tether::GlobalRef<jclass>::taking(injector, env, loaded.release());
    vrlkrt::LoadedClass::handOut(global.get());
    return global;
}

std::string exceptionToString(JNIEnv* env) {
    const LocalRef<jthrowable> thrown(env, env->ExceptionOccurred());
    if (!thrown) {
        return {};
    }
    env->ExceptionClear();
    std::string text(outOfMemory);
    if (env->PushLocalFrame(16) == JNI_OK) {
        text = textOf(env, thrown.get());
        env->PopLocalFrame(nullptr);
    } else {
        env->ExceptionClear();
    }
    env->Throw(thrown.get());
    return text;
}

}  // namespace jvm_attach
