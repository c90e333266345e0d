#pragma once

#include "qx/qx.h"

#include <memory>

/// Ends an array as qxDestroyArray does.
struct qxArrayDeleter {
    void operator()(qxArray* array) const noexcept { qxDestroyArray(array); }
};

/// Sole owner of an array. `release()` where the array goes to Java, to a caller or into a cell or struct slot.
using qxArrayOwner = std::unique_ptr<qxArray, qxArrayDeleter>;
