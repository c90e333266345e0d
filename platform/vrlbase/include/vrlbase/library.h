#pragma once

#include <boost/shared_ptr.hpp>

namespace jzi {
class JavaVMConfig;
}

/// A library or program whose code calls the runtime, known by the address that it is loaded at.
///
/// The binding is in a process once for each class loader that has it, and there is one runtime for all of them. Each
/// starts and stops it for itself; what it gave the runtime of its class loader is its own, and goes when it is
/// forgotten.
using vrlLibrary = const void*;

/// The one that holds the code at an address, such as the one that a function returns to. Null when none does.
vrlLibrary vrlLibraryAt(const void* code) noexcept;

/// The configuration that a library gave; empty when it gave none.
boost::shared_ptr<jzi::JavaVMConfig> vrlConfigOf(vrlLibrary library);
/// That of any library.
boost::shared_ptr<jzi::JavaVMConfig> vrlAnyConfig();

/// Starts the runtime with its defaults unless it runs, and counts the library among those that started it. Throws
/// std::bad_alloc.
void vrlStartFor(vrlLibrary library);
/// Ends what a library started, and with the last such library the runtime. Without effect when it started nothing.
void vrlStopFor(vrlLibrary library);
/// The same, and gives up its configuration: the library is about to be unloaded.
void vrlForgetInBase(vrlLibrary library);

/// What the layers above do for a library when it starts the runtime by vrlInitializeApplicationImpl, and before it
/// stops it. Called without a lock; neither may throw.
struct vrlStartAndStop {
    void (*started)(vrlLibrary library) = nullptr;
    void (*stopping)(vrlLibrary library) = nullptr;
};
void vrlSetStartAndStop(const vrlStartAndStop& hooks);
