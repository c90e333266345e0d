#pragma once

#include "qx/qx.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace qx {

/// Element types of the logical and char classes: distinct from the integers of their width.
enum class Logical : std::uint8_t {};
using CharUnit = char16_t;

struct ClassInfo {
    const char* name;
    std::size_t elementSize;      ///< bytes of one element of one part; 0 for a class without numeric storage
    std::uint64_t typedArrayTag;  ///< of the little-endian typed array in CBOR; 0 likewise
};

/// By class id; 5 is not used.
constexpr ClassInfo kClassTable[] = {{"unknown", 0, 0},  {"cell", 0, 0},    {"struct", 0, 0},  {"logical", 1, 64},
                                     {"char", 2, 69},    {"unknown", 0, 0}, {"double", 8, 86}, {"single", 4, 85},
                                     {"int8", 1, 72},    {"uint8", 1, 64},  {"int16", 2, 77},  {"uint16", 2, 69},
                                     {"int32", 4, 78},   {"uint32", 4, 70}, {"int64", 8, 79},  {"uint64", 8, 71},
                                     {"function", 0, 0}, {"opaque", 0, 0},  {"object", 0, 0}};

constexpr ClassInfo classInfo(std::uint64_t classId) noexcept {
    return classId < sizeof(kClassTable) / sizeof(kClassTable[0]) ? kClassTable[classId] : kClassTable[0];
}

constexpr bool hasNumericStorage(std::uint64_t classId) noexcept { return classInfo(classId).elementSize != 0; }

/// Logical and char arrays have no imaginary part.
constexpr bool canBeComplex(std::uint64_t classId) noexcept {
    return hasNumericStorage(classId) && classId != qxLOGICAL_CLASS && classId != qxCHAR_CLASS;
}

constexpr bool isSparseClass(std::uint64_t classId) noexcept {
    return classId == qxDOUBLE_CLASS || classId == qxLOGICAL_CLASS;
}

template <typename Element>
struct ElementTag {
    using Type = Element;
};

/// Calls `visitor` with the ElementTag of a class with numeric storage, and `other` for any other class.
template <typename Visitor, typename Other>
auto visitNumericClass(qxClassID classId, Visitor&& visitor, Other&& other) -> decltype(other()) {
    switch (classId) {
        case qxLOGICAL_CLASS:
            return visitor(ElementTag<Logical>());
        case qxCHAR_CLASS:
            return visitor(ElementTag<CharUnit>());
        case qxDOUBLE_CLASS:
            return visitor(ElementTag<double>());
        case qxSINGLE_CLASS:
            return visitor(ElementTag<float>());
        case qxINT8_CLASS:
            return visitor(ElementTag<std::int8_t>());
        case qxUINT8_CLASS:
            return visitor(ElementTag<std::uint8_t>());
        case qxINT16_CLASS:
            return visitor(ElementTag<std::int16_t>());
        case qxUINT16_CLASS:
            return visitor(ElementTag<std::uint16_t>());
        case qxINT32_CLASS:
            return visitor(ElementTag<std::int32_t>());
        case qxUINT32_CLASS:
            return visitor(ElementTag<std::uint32_t>());
        case qxINT64_CLASS:
            return visitor(ElementTag<std::int64_t>());
        case qxUINT64_CLASS:
            return visitor(ElementTag<std::uint64_t>());
        default:
            return other();
    }
}

}  // namespace qx
