#include "vrlkrt/print/output.h"

#include "basix/basix.h"
#include "jzi/javaarray.h"
#include "vrlbase/runtime.h"
#include "vrlkrt/java/javafailure.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

namespace vrlkrt {

namespace {

constexpr const char* handlerFailed = "A print handler failed: ";

/// Clears a Java exception that a handler left, so that what runs next may use JNI.
void logPendingException(JNIEnv* env) {
    if (env == nullptr || env->ExceptionCheck() == JNI_FALSE) {
        return;
    }
    try {
        vrlWriteLog({handlerFailed, takeJavaException(env).c_str(), "\n"});
    } catch (const std::exception& failure) {
        env->ExceptionClear();
        vrlWriteLog({handlerFailed, failure.what(), "\n"});
    }
}

/// Whether the handler took the text (UTF-8). A Java exception that is pending already makes the handler unusable, and
/// stays.
bool handOver(const vrlPrintHandler& handler, const char* text) {
    JNIEnv* env = jzi::knownThreadEnv();
    if (handler.empty() || (env != nullptr && env->ExceptionCheck() != JNI_FALSE)) {
        return false;
    }
    const qxCallScopeSuspension suspension;
    bool taken = false;
    try {
        taken = handler(utLocalText(text).c_str()) == 0;
    } catch (const std::exception& failure) {
        vrlWriteLog({handlerFailed, failure.what(), "\n"});
    }
    logPendingException(env);
    return taken;
}

}  // namespace

Output::Output(PrintHandlers handlers) : handlers_(std::make_shared<const PrintHandlers>(std::move(handlers))) {}

void Output::use(std::shared_ptr<const PrintHandlers> handlers) noexcept {
    // The argument goes after the lock: the old handlers may print as they end.
    const std::lock_guard<std::mutex> lock(mutex_);
    handlers_.swap(handlers);
}

void Output::print(Channel channel, const char* text) const noexcept {
    if (text == nullptr) {
        return;
    }
    std::shared_ptr<const PrintHandlers> handlers;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        handlers = handlers_;
    }
    const bool taken =
        handlers != nullptr && handOver(channel == Channel::errors ? handlers->errors : handlers->ordinary, text);
    if (!taken) {
        vrlWriteLog(text);
    }
}

void printWarning(const Output& output, const char* message) noexcept {
    const char* shown = message == nullptr ? "" : message;
    try {
        output.print(Channel::errors, ("Warning: " + std::string(shown) + "\n").c_str());
    } catch (const std::bad_alloc&) {
        vrlWriteLog({"Warning: ", shown, "\n"});
    }
}

}  // namespace vrlkrt
