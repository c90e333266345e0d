#pragma once

#include "vrlbase/library.h"
#include "vrlkrt/print/output.h"

#include <memory>

namespace vrlkrt {

/// For text that is printed outside of any evaluation: it goes through the handlers of one of the libraries that set
/// some, the one that opened a component last if possible.
const Output& defaultOutput();

/// Sets the handlers of a library, in its place if it has some, or else after those of others. Throws std::bad_alloc.
void setDefaultHandlers(vrlLibrary library, PrintHandlers handlers);
/// Gives up the handlers of a library.
void dropDefaultHandlers(vrlLibrary library) noexcept;

/// A library opens a component, so its handlers come before those of others.
void preferDefaultHandlers(vrlLibrary library) noexcept;
/// A library has no component any more, so its handlers come after those of others.
void yieldDefaultHandlers(vrlLibrary library) noexcept;

}  // namespace vrlkrt
