// Printing: ordinary output, warnings, and both from a thread of the component's own.

#include "krt/component.hpp"

#include <exception>
#include <thread>

KRT_FUNCTION(say) { krt::print(in(0, "text").text() + "\n"); }

KRT_FUNCTION(caution) { krt::warn(in(0, "text").text()); }

KRT_FUNCTION(say_from_thread) {
    const std::string text = in(0, "text").text();
    const std::int64_t count = in(1, "n").integer(0, 10000);
    // The printer is made on the thread of the call, which alone knows whose output this is.
    const krt::Printer printer;
    std::exception_ptr failure;
    std::thread speaker([&] {
        try {
            for (std::int64_t i = 0; i < count; ++i) {
                printer.print(text + " " + std::to_string(i) + "\n");
            }
            printer.warn(text + " is done");
        } catch (...) {
            failure = std::current_exception();
        }
    });
    speaker.join();
    if (failure) {
        std::rethrow_exception(failure);
    }
}
