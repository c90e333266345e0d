#pragma once

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace Norvane::vrl {

/// One frame of a component's call stack, innermost first in a stack. `line` is one-based, 0 when not known, and
/// vrlIdentifierLine when `function` holds the identifier of the failure in place of a frame.
struct vrlTAVRIXStackLine {
    std::string function;
    std::string file;
    int line = 0;
};

constexpr int vrlIdentifierLine = -1;

/// What a vrlBaseException tells.
struct FailureContent;

/// A failure of the runtime, with the stack of the component functions that were running. Copies share what they
/// tell, so that copying one takes no memory.
class vrlBaseException : public std::exception {
public:
    explicit vrlBaseException(const std::string& message);
    vrlBaseException(const std::string& message, const std::vector<vrlTAVRIXStackLine>& stack);
    /// "out of memory", without a stack: made without taking any.
    static vrlBaseException outOfMemory() noexcept;
    vrlBaseException(const vrlBaseException&) noexcept;
    vrlBaseException& operator=(const vrlBaseException&) noexcept;
    ~vrlBaseException() override;
    const char* what() const noexcept override;

    const std::string& getErrorMessage() const;
    const std::vector<vrlTAVRIXStackLine>& getStack() const;

private:
    explicit vrlBaseException(std::shared_ptr<const FailureContent> content) noexcept;

    std::shared_ptr<const FailureContent> content_;
};

/// A failure of the runtime that it did not foresee. Copies share their message.
class vrlInternalException : public std::exception {
public:
    explicit vrlInternalException(const std::string& message);
    vrlInternalException(const vrlInternalException&) noexcept;
    vrlInternalException& operator=(const vrlInternalException&) noexcept;
    ~vrlInternalException() override;
    const char* what() const noexcept override;

private:
    std::shared_ptr<const std::string> message_;
};

}  // namespace Norvane::vrl
