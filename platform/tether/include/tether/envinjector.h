#pragma once

#include "tether/exceptions.h"

#include <jni.h>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

namespace tether {

/// Runs a callable with a JNIEnv on any thread. A thread that the virtual machine doesn't know is attached for
/// the length of that one callable and detached again, also when it throws; one that is attached stays so.
/// Copies share the three functions, so copying neither allocates nor fails; a run keeps them alive to its end.
class JNIEnvInjector {
public:
    using GetEnv = boost::function<int(JNIEnv**)>;
    using Attach = boost::function<int(JNIEnv**)>;
    using Detach = boost::function0<int>;

    /// Detaches the current thread when it goes.
    class detach_guard {
    public:
        explicit detach_guard(const Detach& detach);
        ~detach_guard();
        detach_guard(const detach_guard&) = delete;
        detach_guard& operator=(const detach_guard&) = delete;

    private:
        const Detach& detach_;
    };

    JNIEnvInjector(const GetEnv& getEnv, const Attach& attach, const Detach& detach);
    // No move: what was moved from would have no functions to run with.
    JNIEnvInjector(const JNIEnvInjector&) noexcept = default;
    JNIEnvInjector& operator=(const JNIEnvInjector&) noexcept = default;
    ~JNIEnvInjector();

    /// Calls `callable(JNIEnv*)` and returns its result. Throws GetEnvError or AttachCurrentThreadError when
    /// there is no environment to be had, boost::bad_function_call when a needed function is empty, and
    /// whatever the callable throws.
    template <typename Callable>
    auto run(Callable&& callable) const -> decltype(callable(static_cast<JNIEnv*>(nullptr))) {
        const boost::shared_ptr<const Functions> functions = functions_;
        JNIEnv* env = nullptr;
        if (functions->getEnv(&env) != JNI_EDETACHED) {
            if (env == nullptr) {
                throw GetEnvError();
            }
            return callable(env);
        }
        if (functions->attach(&env) != JNI_OK || env == nullptr) {
            throw AttachCurrentThreadError();
        }
        const detach_guard guard(functions->detach);
        return callable(env);
    }

private:
    struct Functions {
        GetEnv getEnv;
        Attach attach;
        Detach detach;
    };

    boost::shared_ptr<const Functions> functions_;
};

/// An injector that hands out the given environment; for use on its own thread only.
JNIEnvInjector make_local_env_injector(JNIEnv* env);

}  // namespace tether
