#include "vrlkrt/java/integration.h"

#include "jzi/javaarray.h"
#include "tether/jnicalls.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/java/javafailure.h"
#include "vrlkrt/java/javatext.h"
#include "vrlkrt/java/loadedclass.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

/// A weak reference to the class, and the method once it is looked up.
struct KnownIntegration {
    jweak invoker = nullptr;
    jmethodID invoke = nullptr;
};

/// The classes by their libraries. The first lock is held while one is loaded, which runs class loaders of the
/// application; these may come back here on the same thread.
struct Integrations {
    std::recursive_mutex loading;
    std::mutex mutex;
    std::map<vrlLibrary, KnownIntegration> known;
};

/// Left to the process's end: its references are of a virtual machine that may be gone by then.
Integrations& integrations() {
    static Integrations& instance = *new Integrations;
    return instance;
}

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

KnownIntegration knownOf(vrlLibrary library) {
    Integrations& all = integrations();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto known = all.known.find(library);
    return known == all.known.end() ? KnownIntegration() : known->second;
}

/// A null class when the library's is not loaded; a null method before the first look-up.
Integration find(JNIEnv* env, vrlLibrary library) {
    const KnownIntegration known = knownOf(library);
    tether::LocalRef<jclass> invoker(env, static_cast<jclass>(env->NewLocalRef(known.invoker)));
    if (!invoker && known.invoker != nullptr) {
        tether::throwOutOfMemory(env);
    }
    return {std::move(invoker), known.invoke};
}

/// Has the class loaded through the configuration, which gives it away once: so there is room for it first, and it is
/// kept also when a later step fails. Loading it may run code that comes here and is first.
void load(JNIEnv* env, vrlLibrary library, jzi::JavaVMConfig& config) {
    Integrations& all = integrations();
    KnownIntegration* known = [&] {
        const std::lock_guard<std::mutex> lock(all.mutex);
        return &all.known[library];
    }();
    const LoadedClass givenToJava(env);
    jclass invoker = config.loadOJI("-Djava.class.path=" + systemProperty(env, "java.class.path"),
                                    "-Djava.library.path=" + systemProperty(env, "java.library.path"));
    if (invoker == nullptr) {
        throw vrlBaseException("the integration class was not found");
    }
    {
        const std::lock_guard<std::mutex> lock(all.mutex);
        if (known->invoker == nullptr) {
            known->invoker = env->NewWeakGlobalRef(invoker);
        }
    }
    env->DeleteGlobalRef(invoker);
    tether::throwIfPending(env);
}

void findMethod(JNIEnv* env, vrlLibrary library, jclass invoker) {
    jmethodID method = tether::getStaticMethodID(
        env, invoker, "invoke", "(Ljava/lang/Object;Ljava/lang/String;[Ljava/lang/Object;)Ljava/lang/Object;");
    Integrations& all = integrations();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.known[library].invoke = method;
}

/// Loads the class of a library with a configuration where it isn't there yet.
Integration findOrLoad(JNIEnv* env, vrlLibrary library) {
    const std::lock_guard<std::recursive_mutex> lock(integrations().loading);
    Integration found = find(env, library);
    if (!found.invoker) {
        if (const boost::shared_ptr<jzi::JavaVMConfig> config = vrlConfigOf(library)) {
            load(env, library, *config);
            found = find(env, library);
        }
    }
    if (found.invoker && found.invoke == nullptr) {
        findMethod(env, library, found.invoker.get());
        found = find(env, library);
    }
    return found;
}

/// The class of whichever library has one.
Integration findAny(JNIEnv* env) {
    Integrations& all = integrations();
    const std::lock_guard<std::mutex> lock(all.mutex);
    for (const auto& entry : all.known) {
        tether::LocalRef<jclass> invoker(env, static_cast<jclass>(env->NewLocalRef(entry.second.invoker)));
        if (invoker && entry.second.invoke != nullptr) {
            return {std::move(invoker), entry.second.invoke};
        }
    }
    throw vrlBaseException("the runtime knows no virtual machine");
}

}  // namespace

Integration integrationOf(JNIEnv* env, vrlLibrary library) {
    try {
        if (!vrlIsJVMEnabled()) {
            throw vrlBaseException("the runtime was started with -nojvm");
        }
        Integration found = find(env, library);
        if (!found.invoker || found.invoke == nullptr) {
            found = findOrLoad(env, library);
        }
        return found.invoker ? std::move(found) : findAny(env);
    } catch (const std::exception& failure) {
        const std::string pending = takeJavaException(env);
        const bool isMarker = dynamic_cast<const tether::Exception*>(&failure) != nullptr && !pending.empty();
        throw vrlBaseException(std::string("Java objects can't be called: ") +
                               (isMarker ? pending.c_str() : failure.what()));
    }
}

void prepareIntegration(vrlLibrary library) noexcept {
    JNIEnv* env = jzi::knownThreadEnv();
    if (env == nullptr || env->ExceptionCheck() != JNI_FALSE || knownOf(library).invoker != nullptr) {
        return;
    }
    try {
        findOrLoad(env, library);
    } catch (const std::exception&) {
        // Whoever needs it is told.
        env->ExceptionClear();
    }
}

void forgetIntegration(vrlLibrary library) noexcept {
    Integrations& all = integrations();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto known = all.known.extract(library);
    JNIEnv* env = jzi::knownThreadEnv();
    if (!known.empty() && env != nullptr) {
        env->DeleteWeakGlobalRef(known.mapped().invoker);
    }
}

}  // namespace vrlkrt
