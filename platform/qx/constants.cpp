#include "qx/qx.h"

#include <cmath>
#include <limits>

double qxGetEps() { return std::numeric_limits<double>::epsilon(); }

double qxGetInf() { return std::numeric_limits<double>::infinity(); }

double qxGetNaN() { return std::numeric_limits<double>::quiet_NaN(); }

bool qxIsFinite(double value) { return std::isfinite(value); }

bool qxIsInf(double value) { return std::isinf(value); }

bool qxIsNaN(double value) { return std::isnan(value); }
