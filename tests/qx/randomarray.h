#pragma once

#include "qx/arrayowner.h"

#include <random>

using Random = std::mt19937_64;

/// An array of any class but opaque, of any shape, nested down to `depth` levels.
qxArrayOwner randomArray(Random& random, int depth);

/// A sparse double or logical matrix with stored zeros and spare capacity here and there.
qxArrayOwner randomSparse(Random& random);

/// A dense numeric, logical or char array; floating elements are special values now and then.
qxArrayOwner randomDense(Random& random);

/// Whether two arrays agree in class, shape, parts, tables, fields and elements, bit by bit. The capacity doesn't
/// count.
bool areSame(const qxArray* first, const qxArray* second);
