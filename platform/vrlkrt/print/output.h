#pragma once

#include "vrlkrt/vrlkrt.h"

#include <memory>
#include <mutex>

namespace vrlkrt {

/// Two ways out for text.
struct PrintHandlers {
    vrlPrintHandler errors;  ///< errors and warnings
    vrlPrintHandler ordinary;
};

enum class Channel { errors, ordinary };

/// Where an instance's text goes. Shared by the instance, its evaluations and every printer that a component holds;
/// once the handlers are dropped, texts go to the log.
class Output {
public:
    Output() = default;
    explicit Output(PrintHandlers handlers);

    /// Replaces the handlers; null gives them up. The old ones end when nobody prints through them any more.
    void use(std::shared_ptr<const PrintHandlers> handlers) noexcept;

    /// Prints a UTF-8 text (null is fine), converted to the local code page. It goes to the log when there is no
    /// handler or the handler fails. The handler runs outside of the call scope of arrays, and no Java exception is
    /// left pending by it. Without memory to convert a text, it goes to the log as well.
    void print(Channel channel, const char* text) const noexcept;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const PrintHandlers> handlers_;
};

/// "Warning: ", the message and a line end.
void printWarning(const Output& output, const char* message) noexcept;

}  // namespace vrlkrt
