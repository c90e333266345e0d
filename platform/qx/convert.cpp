#include "classtable.h"
#include "sparse.h"
#include "storage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace qx {

namespace {

/// Nearest integer, halves away from zero, held inside the target's range; 0 for a NaN.
template <typename Integer>
Integer roundSaturated(double value) {
    using Limits = std::numeric_limits<Integer>;
    // The upper limit of a 64-bit class rounds up to a power of two, which is out of range itself: hence >=.
    if (value >= static_cast<double>(Limits::max())) {
        return Limits::max();
    }
    if (value <= static_cast<double>(Limits::min())) {
        return Limits::min();
    }
    if (value != value) {
        return 0;
    }
    const auto whole = static_cast<Integer>(value);
    const double fraction = value - static_cast<double>(whole);
    return static_cast<Integer>(whole + (fraction >= 0.5 ? 1 : 0) - (fraction <= -0.5 ? 1 : 0));
}

template <typename To, typename From>
To clampInteger(From value) {
    using Limits = std::numeric_limits<To>;
    if constexpr (std::is_signed_v<From>) {
        if (value < 0) {
            const auto wide = std::max<std::int64_t>(value, static_cast<std::int64_t>(Limits::min()));
            return static_cast<To>(wide);
        }
    }
    return static_cast<To>(std::min<std::uint64_t>(static_cast<std::uint64_t>(value), Limits::max()));
}

template <typename Value>
bool isNan(Value value) {
    if constexpr (std::is_floating_point_v<Value>) {
        return std::isnan(value);
    } else {
        return false;
    }
}

/// A logical or char element as the integer that it is.
template <typename Element>
auto plain(Element value) {
    if constexpr (std::is_same_v<Element, Logical>) {
        return static_cast<std::uint8_t>(value != Logical{0});
    } else if constexpr (std::is_same_v<Element, CharUnit>) {
        return static_cast<std::uint16_t>(value);
    } else {
        return value;
    }
}

template <typename To, typename From>
To convertElement(From element) {
    const auto value = plain(element);
    using Value = decltype(plain(element));
    if constexpr (std::is_same_v<To, Logical>) {
        return value != 0 && !isNan(value) ? Logical{1} : Logical{0};
    } else if constexpr (std::is_floating_point_v<To>) {
        return static_cast<To>(value);
    } else {
        using Integer = decltype(plain(To()));
        if constexpr (std::is_floating_point_v<Value>) {
            return static_cast<To>(roundSaturated<Integer>(static_cast<double>(value)));
        } else {
            return static_cast<To>(clampInteger<Integer>(value));
        }
    }
}

/// Hands the element types of two classes, both with numeric storage, to the visitor.
template <typename Visitor>
void visitPair(qxClassID to, qxClassID from, Visitor visitor) {
    const auto neither = [] {};
    visitNumericClass(
        to,
        [&](auto toTag) {
            visitNumericClass(
                from, [&](auto fromTag) { visitor(toTag, fromTag); }, neither);
        },
        neither);
}

/// Converts `count` elements that lie next to one another.
void convertRun(void* target, qxClassID to, const void* source, qxClassID from, std::size_t count) {
    visitPair(to, from, [&](auto toTag, auto fromTag) {
        using To = typename decltype(toTag)::Type;
        using From = typename decltype(fromTag)::Type;
        const auto* begin = static_cast<const From*>(source);
        std::transform(begin, begin + count, static_cast<To*>(target), convertElement<To, From>);
    });
}

qxArrayOwner convertDense(const qxArray* source, qxClassID to) {
    const std::size_t count = qxGetNumberOfElements(source);
    if (source->realData() == nullptr && count != 0) {
        return nullptr;
    }
    const qxClassID from = qxGetClassID(source);
    qxArrayOwner target = makeNumeric(shapeOf(source), to, qxIsComplex(source), qxContents::unset);
    if (target) {
        convertRun(target->realData(), to, source->realData(), from, count);
        if (target->imagData() != nullptr) {
            convertRun(target->imagData(), to, source->imagData(), from, count);
        }
    }
    return target;
}

/// The converted stored elements with the tables of the source: an element that becomes zero stays stored.
qxArrayOwner convertStored(const qxArray* source, qxClassID to) {
    const std::size_t rows = source->get_dimensions()[0];
    const std::size_t columns = source->get_dimensions()[1];
    const std::uint32_t stored = storedCount(source);
    qxArrayOwner target = makeSparse(static_cast<std::int64_t>(rows), static_cast<std::int64_t>(columns),
                                     source->capacity(), to, qxIsComplex(source));
    if (target) {
        const qxClassID from = qxGetClassID(source);
        std::copy_n(source->columnStartTable(), columns + 1, target->columnStartTable());
        std::copy_n(source->rowIndexTable(), stored, target->rowIndexTable());
        convertRun(target->realData(), to, source->realData(), from, stored);
        if (target->imagData() != nullptr) {
            convertRun(target->imagData(), to, source->imagData(), from, stored);
        }
    }
    return target;
}

/// Spreads the stored elements of one part over a zeroed dense part.
void scatter(void* target, qxClassID to, const qxArray* source, const void* values) {
    const std::size_t rows = source->get_dimensions()[0];
    const std::size_t columns = source->get_dimensions()[1];
    const std::uint32_t* starts = source->columnStartTable();
    const std::uint32_t* rowIndex = source->rowIndexTable();
    visitPair(to, qxGetClassID(source), [&](auto toTag, auto fromTag) {
        using To = typename decltype(toTag)::Type;
        using From = typename decltype(fromTag)::Type;
        for (std::size_t column = 0; column < columns; ++column) {
            for (std::uint32_t at = starts[column]; at < starts[column + 1]; ++at) {
                static_cast<To*>(target)[column * rows + rowIndex[at]] =
                    convertElement<To>(static_cast<const From*>(values)[at]);
            }
        }
    });
}

qxArrayOwner convertToDense(const qxArray* source, qxClassID to) {
    qxArrayOwner target = makeNumeric(shapeOf(source), to, qxIsComplex(source), qxContents::zeros);
    if (target) {
        scatter(target->realData(), to, source, source->realData());
        if (target->imagData() != nullptr) {
            scatter(target->imagData(), to, source, source->imagData());
        }
    }
    return target;
}

qxArrayOwner convert(const qxArray* source, qxClassID to) {
    const qxClassID from = qxGetClassID(source);
    if (from == to) {
        return duplicate(source);
    }
    if (!hasNumericStorage(from) || !hasNumericStorage(to)) {
        return nullptr;
    }
    if (!source->isSparse()) {
        return convertDense(source, to);
    }
    if (!hasValidTables(source)) {
        return nullptr;
    }
    return isSparseClass(to) ? convertStored(source, to) : convertToDense(source, to);
}

}  // namespace

}  // namespace qx

qxArray* qxCreateConvertedCopy(const qxArray* source, qxClassID classId) {
    return source == nullptr ? nullptr : qx::handOut(qx::convert(source, classId));
}
