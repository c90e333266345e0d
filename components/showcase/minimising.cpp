// A minimiser whose objective is a Java object or a function of a component.

#include "brent.h"

#include "krt/component.hpp"

#include <cmath>
#include <functional>

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
    showcase::BrentMinimiser minimiser(checkedObjective, lower, upper, tolerance);
    const showcase::Minimum minimum = minimiser.run(mostEvaluations);
    if (!minimum.converged) {
        krt::warn("minimize: stopped after " + std::to_string(minimum.evaluations) +
                  " evaluations before the tolerance was reached");
    }
    out.set(0, minimum.x);
    out.set(1, minimum.value);
    out.set(2, minimum.evaluations);
}
