#pragma once

#include "qx/qx.h"

#include <cstdint>

namespace nativevrl::JConvert {

/// One triplet, its row and column counting from 0, in the layout of each kind of value. The members are what the
/// builder needs to know of a kind: reading the i-th value of a dense array, telling zero, merging duplicates, making
/// a sparse array and moving values to and from it.
struct LogicalEntry {
    unsigned row;
    unsigned column;
    bool value;

    static LogicalEntry read(unsigned row, unsigned column, const qxArray& data, std::size_t i) {
        return {row, column, static_cast<const std::uint8_t*>(data.realData())[i] != 0};
    }
    bool isZero() const { return !value; }
    void merge(const LogicalEntry& other) { value = value || other.value; }

    static qxArray* createArray(unsigned rows, unsigned columns, std::uint32_t room) {
        return qxCreateSparseLogicalMatrix(rows, columns, room);
    }
    void store(qxArray& array, std::size_t at) const {
        static_cast<std::uint8_t*>(array.realData())[at] = value ? 1 : 0;
    }
};

struct RealEntry {
    unsigned row;
    unsigned column;
    double re;

    static RealEntry read(unsigned row, unsigned column, const qxArray& data, std::size_t i) {
        return {row, column, static_cast<const double*>(data.realData())[i]};
    }
    bool isZero() const { return re == 0.0; }
    void merge(const RealEntry& other) { re += other.re; }

    static qxArray* createArray(unsigned rows, unsigned columns, std::uint32_t room) {
        return qxCreateSparse(rows, columns, room, qxREAL);
    }
    void store(qxArray& array, std::size_t at) const { static_cast<double*>(array.realData())[at] = re; }
};

struct ComplexEntry {
    unsigned row;
    unsigned column;
    double re;
    double im;

    static ComplexEntry read(unsigned row, unsigned column, const qxArray& data, std::size_t i) {
        return {row, column, static_cast<const double*>(data.realData())[i],
                static_cast<const double*>(data.imagData())[i]};
    }
    bool isZero() const { return re == 0.0 && im == 0.0; }
    void merge(const ComplexEntry& other) {
        re += other.re;
        im += other.im;
    }

    static qxArray* createArray(unsigned rows, unsigned columns, std::uint32_t room) {
        return qxCreateSparse(rows, columns, room, qxCOMPLEX);
    }
    void store(qxArray& array, std::size_t at) const {
        static_cast<double*>(array.realData())[at] = re;
        static_cast<double*>(array.imagData())[at] = im;
    }
};

}  // namespace nativevrl::JConvert
