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

    /// Replaces the handlers. The old ones end when nobody prints through them any more.
    void replace(PrintHandlers handlers);
    /// Gives up the handlers, needing no memory for it.
    void drop();

    /// Prints a UTF-8 text (null is fine), converted to the local code page. It goes to the log when there is no
    /// handler or the handler fails. The handler runs outside of the call scope of arrays, and no Java exception is
    /// left pending by it. Without memory to convert a text, it goes to the log as well.
    void print(Channel channel, const char* text) const noexcept;

private:
    void exchange(std::shared_ptr<const PrintHandlers> handlers);

    mutable std::mutex mutex_;
    std::shared_ptr<const PrintHandlers> handlers_;
};

/// For text that is printed outside of any evaluation.
Output& defaultOutput();

/// "Warning: ", the message and a line end.
void printWarning(const Output& output, const char* message) noexcept;

}  // namespace vrlkrt
