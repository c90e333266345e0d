#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace showcase {

struct Minimum {
    double x = 0;
    double value = 0;
    int evaluations = 0;
    bool converged = false;
};

/// Brent's method for a minimum of `f` within [lower, upper], without derivatives: steps to the vertex of the parabola
/// through the three best points, and golden-section steps where that one leaves the bounds or does not shrink the
/// steps. `tolerance` bounds the error in x, apart from the square root of the machine precision times x, below which
/// a smooth function does not change. For a function with one minimum within the bounds it finds that one.
template <typename Function>
class BrentMinimiser {
public:
    BrentMinimiser(Function f, double lower, double upper, double tolerance)
        : f_(std::move(f)), lower_(lower), upper_(upper), tolerance_(tolerance) {}

    Minimum run(int mostEvaluations) {
        const double start = lower_ + golden * (upper_ - lower_);
        best_ = second_ = third_ = evaluate(start);
        while (evaluations_ < mostEvaluations) {
            const double middle = 0.5 * (lower_ + upper_);
            const double near = std::sqrt(std::numeric_limits<double>::epsilon()) * std::abs(best_.x) + tolerance_ / 3;
            if (std::abs(best_.x - middle) <= 2 * near - 0.5 * (upper_ - lower_)) {
                return {best_.x, best_.value, evaluations_, true};
            }
            const double step = nextStep(middle, near);
            // Closer than `near` two values can't be told apart.
            accept(evaluate(best_.x + (std::abs(step) >= near ? step : std::copysign(near, step))));
        }
        return {best_.x, best_.value, evaluations_, false};
    }

private:
    struct Point {
        double x = 0;
        double value = 0;
    };

    /// The smaller part of the golden section, (3 - sqrt(5)) / 2.
    static constexpr double golden = 0.38196601125010515;

    Point evaluate(double x) {
        ++evaluations_;
        return {x, f_(x)};
    }

    double nextStep(double middle, double near) {
        double step = 0;
        if (std::abs(beforeLast_) > near && parabolicStep(step)) {
            beforeLast_ = last_;
            const double x = best_.x + step;
            if (x - lower_ < 2 * near || upper_ - x < 2 * near) {
                step = best_.x < middle ? near : -near;
            }
        } else {
            beforeLast_ = (best_.x < middle ? upper_ : lower_) - best_.x;
            step = golden * beforeLast_;
        }
        last_ = step;
        return step;
    }

    /// The way from the best point to the vertex; false when it leaves the bounds or is not below half of the step
    /// before the last, without which the steps need not get smaller.
    bool parabolicStep(double& step) const {
        const double r = (best_.x - second_.x) * (best_.value - third_.value);
        const double q = (best_.x - third_.x) * (best_.value - second_.value);
        const double denominator = 2 * (q - r);
        if (std::abs(denominator) < std::numeric_limits<double>::min()) {
            return false;
        }
        step = -((best_.x - third_.x) * q - (best_.x - second_.x) * r) / denominator;
        return std::isfinite(step) && std::abs(step) < 0.5 * std::abs(beforeLast_) && best_.x + step > lower_ &&
               best_.x + step < upper_;
    }

    /// Narrows the bounds by a new point and keeps the three best.
    void accept(Point point) {
        if (point.value <= best_.value) {
            (point.x < best_.x ? upper_ : lower_) = best_.x;
            third_ = second_;
            second_ = best_;
            best_ = point;
            return;
        }
        (point.x < best_.x ? lower_ : upper_) = point.x;
        if (point.value <= second_.value || second_.x == best_.x) {
            third_ = second_;
            second_ = point;
        } else if (point.value <= third_.value || third_.x == best_.x || third_.x == second_.x) {
            third_ = point;
        }
    }

    Function f_;
    double lower_;
    double upper_;
    double tolerance_;
    Point best_;
    Point second_;
    Point third_;
    double last_ = 0;
    double beforeLast_ = 0;
    int evaluations_ = 0;
};

}  // namespace showcase
