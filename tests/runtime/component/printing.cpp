// Functions that print, on their own thread and on others.

#include "krt/component.hpp"

#include <unistd.h>

#include <thread>

KRT_FUNCTION(print_both) {
    krt::print("ordinary");
    krt::warn("careful");
}

KRT_FUNCTION(print_text) {
    krt::print(in(0, "text").text());
    out.set(0, 1.0);
}

/// Starts a thread that prints once a byte can be read from the first file, and then writes it to the second.
KRT_FUNCTION(print_later) {
    const auto go = static_cast<int>(in(0, "go").integer());
    const auto done = static_cast<int>(in(1, "done").integer());
    std::thread([go, done, printer = krt::Printer()]() mutable {
        char byte = 0;
        if (read(go, &byte, 1) == 1) {
            printer.print("late");
        }
        if (write(done, &byte, 1) != 1) {
            printer.warn("nobody waits");
        }
    }).detach();
}

/// Fails on a thread of its own, and says how.
KRT_FUNCTION(fail_on_thread) {
    std::string what;
    std::thread([&] {
        try {
            krt::call("add")(1.0, 2.0);
        } catch (const krt::Error& failure) {
            what = failure.what();
        }
    }).join();
    out.set(0, what);
}
