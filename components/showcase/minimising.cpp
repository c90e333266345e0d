// A minimiser whose objective is a Java object or a function of a component.

#include "krt/component.hpp"

#include <boost/math/tools/minima.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>

namespace {

constexpr int mostEvaluations = 1000;

std::function<double(double)> objectiveOf(const krt::Value& f) {
    if (f.classId() == qxFUNCTION_CLASS) {
        return [handle = f.function()](double x) { return handle(x).scalar(); };
    }
    if (krtIsJavaObject(f.array()) != 0) {
        return [object = f.javaObject()](double x) { return object.applyAsDouble(x); };
    }
    f.unexpected("a function handle or a Java DoubleUnaryOperator");
}

double finite(const krt::Value& value) {
    const double number = value.scalar();
    if (!std::isfinite(number)) {
        krt::error("showcase:value", value.label() + " must be finite");
    }
    return number;
}

struct Minimum {
    double x;
    double value;
    int evaluations;
};

/// Brent's method for a minimum of `f` within [lower, upper]. `tolerance` bounds the error in x, apart from the square
/// root of the machine precision times x, below which a smooth function does not change.
Minimum minimise(const std::function<double(double)>& f, double lower, double upper, double tolerance) {
    int evaluations = 0;
    const auto counted = [&](long double x) -> long double {
        ++evaluations;
        return f(static_cast<double>(x));
    };
    // The library counts its precision in bits of x, or of 1/4 near zero, up to half of the bits of the type.
    constexpr int halfOfDouble = (std::numeric_limits<double>::digits + 1) / 2;
    const double largest = std::max({1.0, std::abs(lower), std::abs(upper)});
    const double relative = std::max(tolerance / (2.5 * largest), std::numeric_limits<double>::epsilon());
    const int bits = std::clamp(1 - std::ilogb(relative), 1, halfOfDouble);
    // It begins at the upper bound, where `f` need not be defined.
    const long double begin = std::nextafter(upper, lower);
    std::uintmax_t steps = mostEvaluations - 1;
    const auto [x, value] =
        boost::math::tools::brent_find_minima(counted, static_cast<long double>(lower), begin, bits, steps);
    return {static_cast<double>(x), static_cast<double>(value), evaluations};
}

}  // namespace

KRT_FUNCTION(minimize) {
    in.expectCount(3, 4);
    const std::function<double(double)> f = objectiveOf(in(0, "f"));
    const double lower = finite(in(1, "lower"));
    const double upper = finite(in(2, "upper"));
    const double tolerance = in.has(3) ? finite(in(3, "tolerance")) : 1e-8;
    if (!(lower < upper)) {
        krt::error("showcase:value", in(1, "lower").label() + " must be below argument 3 (upper)");
    }
    if (!(tolerance > 0)) {
        krt::error("showcase:value", in(3, "tolerance").label() + " must be above 0");
    }
    const auto checkedObjective = [&](double x) {
        const double value = f(x);
        if (std::isnan(value)) {
            krt::error("showcase:objective", "minimize: the objective is not a number at " + krt::numberText(x));
        }
        return value;
    };
    const Minimum minimum = minimise(checkedObjective, lower, upper, tolerance);
    if (minimum.evaluations >= mostEvaluations) {
        krt::warn("minimize: stopped after " + std::to_string(minimum.evaluations) +
                  " evaluations before the tolerance was reached");
    }
    out.set(0, minimum.x);
    out.set(1, minimum.value);
    out.set(2, minimum.evaluations);
}
