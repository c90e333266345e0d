#include "vrlbase/exceptions.h"

namespace Norvane::vrl {

vrlBaseException::vrlBaseException(const std::string& message) : message_(message) {}
vrlBaseException::vrlBaseException(const std::string& message, const std::vector<vrlTAVRIXStackLine>& stack)
    : message_(message), stack_(stack) {}
vrlBaseException::vrlBaseException(const vrlBaseException&) = default;
vrlBaseException& vrlBaseException::operator=(const vrlBaseException&) = default;
vrlBaseException::~vrlBaseException() = default;

const char* vrlBaseException::what() const noexcept { return message_.c_str(); }
const std::string& vrlBaseException::getErrorMessage() const { return message_; }
const std::vector<vrlTAVRIXStackLine>& vrlBaseException::getStack() const { return stack_; }

vrlInternalException::vrlInternalException(const std::string& message) : message_(message) {}
vrlInternalException::vrlInternalException(const vrlInternalException&) = default;
vrlInternalException& vrlInternalException::operator=(const vrlInternalException&) = default;
vrlInternalException::~vrlInternalException() = default;

const char* vrlInternalException::what() const noexcept { return message_.c_str(); }

}  // namespace Norvane::vrl
