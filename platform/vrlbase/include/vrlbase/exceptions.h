#pragma once

#include <exception>
#include <string>
#include <vector>

namespace Norvane::vrl {

/// One frame of a component's call stack, innermost first in a stack. `line` is one-based, 0 when not known.
struct vrlTAVRIXStackLine {
    std::string function;
    std::string file;
    int line = 0;
};

/// A failure of the runtime, with the stack of the component functions that were running.
class vrlBaseException : public std::exception {
public:
    explicit vrlBaseException(const std::string& message);
    vrlBaseException(const std::string& message, const std::vector<vrlTAVRIXStackLine>& stack);
    vrlBaseException(const vrlBaseException&);
    vrlBaseException& operator=(const vrlBaseException&);
    ~vrlBaseException() override;
    const char* what() const noexcept override;

    const std::string& getErrorMessage() const;
    const std::vector<vrlTAVRIXStackLine>& getStack() const;

private:
    std::string message_;
    std::vector<vrlTAVRIXStackLine> stack_;
};

/// A failure of the runtime that it did not foresee.
class vrlInternalException : public std::exception {
public:
    explicit vrlInternalException(const std::string& message);
    vrlInternalException(const vrlInternalException&);
    vrlInternalException& operator=(const vrlInternalException&);
    ~vrlInternalException() override;
    const char* what() const noexcept override;

private:
    std::string message_;
};

}  // namespace Norvane::vrl
