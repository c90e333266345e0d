// Functions that compute, fail and call one another.

#include "krt/component.hpp"

#include <limits>
#include <stdexcept>
#include <string>

namespace {

[[noreturn]] void helper() {
    const krt::Frame frame;
    krt::error("test:deep", "it broke");
}

[[noreturn]] void libraryHelper() {
    const krt::Frame frame;
    throw std::out_of_range("thrown by a library");
}

}  // namespace

KRT_FUNCTION(add) {
    const auto a = in(0, "a").matrix();
    const auto b = in(1, "b").matrix();
    b.expectRows(a.rows()).expectColumns(a.columns());
    auto sum = out.matrix(0, a.rows(), a.columns());
    std::transform(a.begin(), a.end(), b.begin(), sum.begin(), [](double x, double y) { return x + y; });
}

/// Stores as many results as told, each its own number.
KRT_FUNCTION(count) {
    const auto stored = in(0, "stored").integer(0, 100);
    for (int i = 0; i < stored; ++i) {
        out.set(i, i + 1);
    }
}

KRT_FUNCTION(fail_inner) { helper(); }

KRT_FUNCTION(fail_outer) { krt::call("failInner")(); }

KRT_FUNCTION(fail_library) { libraryHelper(); }

KRT_FUNCTION(fail_foreign) { throw 42; }

KRT_FUNCTION(fail_memory) { throw std::bad_alloc(); }

/// Makes arrays of all kinds, stores some as results, and fails.
KRT_FUNCTION(fail_with_arrays) {
    out.matrix(0, 100, 100);
    krt::setCell(out.cell(1, 2, 2), 3, "text");
    krt::setField(out.structure(2), "x", in(0, "x"));
    krt::call("add")(1.0, 2.0);
    krt::error("test:arrays", "failed with arrays about");
}

/// Says what a failing function that it calls reports, and goes on.
KRT_FUNCTION(recover) {
    try {
        krt::call(in(0, "function").text())();
    } catch (const krt::Error& failure) {
        out.set(0, std::string(failure.identifier()) + "|" + failure.what());
    }
}

KRT_FUNCTION(recurse) { out.set(0, krt::call("recurse")().scalar()); }

/// Calls a function handle again and again; gives the last result and by how much the number of arrays grew.
KRT_FUNCTION(repeat) {
    const krt::Function f = in(0, "f").function();
    const auto times = in(1, "times").integer(1, 1000000);
    double last = 0;
    const std::size_t before = qxLiveArrayCount();
    for (std::int64_t i = 0; i < times; ++i) {
        const krt::Value result = f(static_cast<double>(i), 1.0);
        last = result.scalar();
        qxDestroyArray(const_cast<qxArray*>(result.array()));
    }
    const std::size_t after = qxLiveArrayCount();
    out.set(0, last);
    out.set(1, static_cast<double>(after - before));
}

KRT_FUNCTION(make_handle) { out.set(0, krt::Function(in(0, "name").text())); }

/// Reads its second argument as told by the first and gives a text of what it read.
KRT_FUNCTION(read) {
    const std::string kind = in(0, "kind").text();
    const krt::Value value = in(1, "value");
    if (kind == "scalar") {
        out.set(0, krt::numberText(value.scalar()));
    } else if (kind == "integer") {
        out.set(0, std::to_string(value.integer(0, 10)));
    } else if (kind == "large") {
        out.set(0, std::to_string(value.integer(0, std::numeric_limits<std::int64_t>::max())));
    } else if (kind == "logical") {
        out.set(0, value.logical() ? "yes" : "no");
    } else if (kind == "text") {
        out.set(0, value.text());
    } else if (kind == "sum") {
        double sum = 0;
        for (const double x : value.matrix()) {
            sum += x;
        }
        out.set(0, krt::numberText(sum));
    } else if (kind == "length") {
        out.set(0, std::to_string(value.vector().size()));
    } else if (kind == "square") {
        out.set(0, std::to_string(value.matrix().expectSquare().rows()));
    } else if (kind == "four") {
        out.set(0, std::to_string(value.vector().expectLength(4).size()));
    } else if (kind == "int16") {
        out.set(0, std::to_string(value.elements<std::int16_t>()[0]));
    } else if (kind == "sparse") {
        const krt::SparseView sparse = value.sparse();
        out.set(0, std::to_string(sparse.storedCount()) + " of " + std::to_string(sparse.columns()));
    } else if (kind == "complex") {
        const auto c = value.complexMatrix()(0, 0);
        out.set(0, krt::numberText(c.real()) + "+" + krt::numberText(c.imag()) + "i");
    } else if (kind == "cell") {
        out.set(0, value.cell()[1].text());
    } else if (kind == "field") {
        out.set(0, krt::numberText(value.structure()["tol"].scalarOr(0.5)));
    } else if (kind == "function") {
        out.set(0, value.function().name());
    } else if (kind == "java") {
        value.javaObject();
    }
}

extern "C" KRT_EXPORT const int no_function = 1;

/// An entry without the edge that KRT_FUNCTION makes.
extern "C" KRT_EXPORT void raw_throw(krtCall*, int, qxArray**, int, qxArray* const*) {
    throw std::logic_error("thrown past the edge");
}
