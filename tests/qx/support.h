#pragma once

#include "qx/arrayowner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

/// Every test leaves as many arrays alive as it found.
class QxTest : public testing::Test {
protected:
    void SetUp() override { liveBefore_ = qxLiveArrayCount(); }
    void TearDown() override { EXPECT_EQ(qxLiveArrayCount(), liveBefore_); }

    std::size_t liveBefore_ = 0;
};

/// A test of random arrays, whose seed and round a failure shows.
class RandomQxTest : public QxTest {
protected:
    template <typename Body>
    void forRounds(int count, const Body& body) {
        for (int round = 0; round < count && !HasFailure(); ++round) {
            SCOPED_TRACE("seed " + std::to_string(seed_) + ", round " + std::to_string(round));
            body();
        }
    }

    const std::uint64_t seed_ = std::random_device()();
    std::mt19937_64 random_{seed_};
};

template <typename Element>
Element* realOf(const qxArrayOwner& array) {
    return static_cast<Element*>(array->realData());
}

template <typename Element>
Element* imagOf(const qxArrayOwner& array) {
    return static_cast<Element*>(array->imagData());
}

/// rows-by-columns array of a class, its elements in column-major order.
template <typename Element>
qxArrayOwner matrixOf(qxClassID classId, std::uint32_t rows, std::uint32_t columns,
                      std::initializer_list<Element> elements) {
    qxArrayOwner array(qxCreateNumericMatrix(rows, columns, classId, qxREAL));
    std::copy(elements.begin(), elements.end(), realOf<Element>(array));
    return array;
}

inline qxArrayOwner rowOf(std::initializer_list<double> elements) {
    return matrixOf(qxDOUBLE_CLASS, 1, static_cast<std::uint32_t>(elements.size()), elements);
}

inline std::vector<std::uint32_t> extentsOf(const qxArray* array) {
    return {array->get_dimensions(), array->get_dimensions() + array->numberOfDimensions()};
}

/// Puts arrays, which are taken over, into the first slots.
inline qxArrayOwner filled(qxArray* array, std::initializer_list<qxArray*> slots) {
    std::size_t slot = 0;
    for (qxArray* element : slots) {
        qxSetCell(array, slot++, element);
    }
    return qxArrayOwner(array);
}

inline qxArrayOwner cellOf(std::uint32_t rows, std::uint32_t columns, std::initializer_list<qxArray*> slots) {
    return filled(qxCreateCellMatrix(rows, columns), slots);
}

inline qxArrayOwner structOf(std::uint32_t rows, std::uint32_t columns, std::vector<const char*> names,
                             std::initializer_list<qxArray*> slots = {}) {
    return filled(qxCreateStructMatrix(rows, columns, static_cast<std::uint32_t>(names.size()), names.data()), slots);
}

/// `depth` cells in one another around an array.
inline qxArrayOwner nestedCells(int depth, qxArrayOwner inner = nullptr) {
    for (int level = 0; level < depth; ++level) {
        qxArrayOwner wrapping(qxCreateCellMatrix(1, 1));
        qxSetCell(wrapping.get(), 0, inner.release());
        inner = std::move(wrapping);
    }
    return inner;
}

/// The serialised form as plain bytes; empty when there is none.
inline std::vector<unsigned char> formOf(const qxArray* array) {
    const qxArrayOwner form(qxSerialize(array));
    if (!form) {
        return {};
    }
    const auto* bytes = realOf<unsigned char>(form);
    return {bytes, bytes + qxGetNumberOfElements(form.get())};
}

inline qxArrayOwner arrayOf(const std::vector<unsigned char>& form) {
    return qxArrayOwner(qxDeserialize(form.data(), form.size()));
}
