#include "vrlbase/exceptions.h"

#include <cstddef>
#include <new>
#include <utility>

namespace Norvane::vrl {

struct FailureContent {
    std::string message;
    std::vector<vrlTAVRIXStackLine> stack;
};

vrlBaseException::vrlBaseException(const std::string& message)
    : content_(std::make_shared<const FailureContent>(FailureContent{message, {}})) {}
vrlBaseException::vrlBaseException(const std::string& message, const std::vector<vrlTAVRIXStackLine>& stack)
    : content_(std::make_shared<const FailureContent>(FailureContent{message, stack})) {}
vrlBaseException::vrlBaseException(std::shared_ptr<const FailureContent> content) noexcept
    : content_(std::move(content)) {}

vrlBaseException vrlBaseException::outOfMemory() noexcept {
    // In a place of its own, to the process's end; so short a text lies in the string itself. Holds on it are not
    // counted.
    alignas(FailureContent) static std::byte storage[sizeof(FailureContent)];
    static const FailureContent& content = *new (storage) FailureContent{"out of memory", {}};
    return vrlBaseException(std::shared_ptr<const FailureContent>(std::shared_ptr<const FailureContent>(), &content));
}

vrlBaseException::vrlBaseException(const vrlBaseException&) noexcept = default;
vrlBaseException& vrlBaseException::operator=(const vrlBaseException&) noexcept = default;
vrlBaseException::~vrlBaseException() = default;

const char* vrlBaseException::what() const noexcept { return content_->message.c_str(); }
const std::string& vrlBaseException::getErrorMessage() const { return content_->message; }
const std::vector<vrlTAVRIXStackLine>& vrlBaseException::getStack() const { return content_->stack; }

vrlInternalException::vrlInternalException(const std::string& message)
    : message_(std::make_shared<const std::string>(message)) {}
vrlInternalException::vrlInternalException(const vrlInternalException&) noexcept = default;
vrlInternalException& vrlInternalException::operator=(const vrlInternalException&) noexcept = default;
vrlInternalException::~vrlInternalException() = default;

const char* vrlInternalException::what() const noexcept { return message_->c_str(); }

}  // namespace Norvane::vrl
