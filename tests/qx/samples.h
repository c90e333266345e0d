#pragma once

#include "qx/arrayowner.h"

#include <string>
#include <vector>

/// A small array of one kind and what another program must make of its serialised form, as JSON: class number, extents,
/// and, by kind, "real", "imag", "columnStart", "rowIndex", "fields", "slots".
struct Sample {
    std::string name;
    qxArrayOwner array;
    std::string json;
};

/// One sample of every class and layout.
std::vector<Sample> makeSamples();
