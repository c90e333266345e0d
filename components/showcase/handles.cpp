// Functions as values.

#include "krt/component.hpp"

#include <vector>

KRT_FUNCTION(handle_of) { out.set(0, krt::Function(in(0, "name").text())); }

KRT_FUNCTION(apply) {
    const krt::Value h = in(0, "h");
    std::vector<qxArray*> arguments;
    for (int i = 1; i < in.count(); ++i) {
        arguments.push_back(krt::toArray(in(i, "value")));
    }
    if (krtIsJavaObject(h.array()) != 0) {
        out.set(0, h.javaObject().callWith("apply", arguments));
        return;
    }
    const std::vector<krt::Value> results = h.function().callWith(out.wanted(), arguments);
    for (std::size_t i = 0; i < results.size(); ++i) {
        out.set(static_cast<int>(i), results[i]);
    }
}

KRT_FUNCTION(parabola) {
    const double x = in(0, "x").scalar();
    out.set(0, (x - 2) * (x - 2) + 1);
}
