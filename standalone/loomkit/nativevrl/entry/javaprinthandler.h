#pragma once

#include "tether/globalref.h"

#include <jni.h>

namespace nativevrl {

/// Sends the runtime's text to a Java PrintStream, which a java.util.concurrent.Callable is asked for each time.
/// Held by value inside the runtime's handler functions: every copy owns a global reference. Usable on any thread,
/// also on several at once: nothing changes after construction.
class JavaPrintHandler {
public:
    /// `callable` is borrowed, and may be null as long as nothing is printed.
    JavaPrintHandler(const tether::JNIEnvInjector& injector, jobject callable);

    /// Prints a text in the local code page, as it is. 0, or -1 when it could not be printed; a Java exception that
    /// was the cause stays pending on the thread. Throws only when the thread can't be attached.
    int operator()(const char* text) const;

private:
    int print(JNIEnv* env, const char* text) const;

    tether::GlobalRef<jobject> callable_;
    jmethodID callMethod_ = nullptr;
    jmethodID printMethod_ = nullptr;
};

}  // namespace nativevrl
