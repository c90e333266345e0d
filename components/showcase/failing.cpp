// Failures: from helpers below a function, from another function, from the standard library.

#include "krt/component.hpp"

#include <vector>

namespace {

[[noreturn]] void innermost(const std::string& message) {
    const krt::Frame frame;
    krt::error("showcase:asked", message);
}

void middle(const std::string& message) {
    const krt::Frame frame;
    innermost(message);
}

std::string messageOf(const krt::Arguments& in) {
    return in.has(0) ? in(0, "message").text() : "this function always fails";
}

}  // namespace

KRT_FUNCTION(fail_deep) { middle(messageOf(in)); }

KRT_FUNCTION(fail_in_call) { krt::call("fail_deep")(messageOf(in)); }

KRT_FUNCTION(fail_standard) {
    const std::vector<double> three(3);
    out.set(0, three.at(static_cast<std::size_t>(in.count()) + 3));
}

KRT_FUNCTION(recover) {
    try {
        krt::call("fail_deep")();
    } catch (const krt::Error& error) {
        out.set(0, std::string(error.identifier()) + ": " + error.what());
    }
}
