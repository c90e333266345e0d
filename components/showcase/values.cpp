// Values of every class: taken, transformed, given back.

#include "krt/component.hpp"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

template <typename T>
T plusOne(T value) {
    if constexpr (std::is_integral_v<T>) {
        return value == std::numeric_limits<T>::max() ? value : static_cast<T>(value + 1);
    } else {
        return value + 1;
    }
}

template <typename T>
void incrementElements(const krt::Value& x, krt::Results& out) {
    if (qxIsComplex(x.array())) {
        x.unexpected("a real numeric array");
    }
    const krt::ArrayView<const T> source = x.elements<T>();
    const krt::ArrayView<T> target = out.elements<T>(0, source.dimensions());
    std::transform(source.begin(), source.end(), target.begin(), plusOne<T>);
}

/// Runs incrementElements for the one of the classes that `x` is of.
template <typename... T>
bool incrementAnyOf(const krt::Value& x, krt::Results& out) {
    return ((x.classId() == krt::classOf<T>() && (incrementElements<T>(x, out), true)) || ...);
}

}  // namespace

KRT_FUNCTION(increment) {
    in.expectCount(1, 1);
    const krt::Value x = in(0, "x");
    const bool done = incrementAnyOf<double, float, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t,
                                     std::int32_t, std::uint32_t, std::int64_t, std::uint64_t>(x, out);
    if (!done) {
        x.unexpected("a real numeric array");
    }
}

KRT_FUNCTION(invert) {
    const krt::ArrayView<const bool> source = in(0, "x").elements<bool>();
    const krt::ArrayView<bool> target = out.elements<bool>(0, source.dimensions());
    std::transform(source.begin(), source.end(), target.begin(), [](bool value) { return !value; });
}

KRT_FUNCTION(conjugate) {
    const krt::ComplexMatrixView source = in(0, "x").complexMatrix();
    const auto target = out.complexMatrix(0, source.rows(), source.columns());
    for (std::size_t column = 0; column < source.columns(); ++column) {
        for (std::size_t row = 0; row < source.rows(); ++row) {
            target.first(row, column) = source(row, column).real();
            target.second(row, column) = -source(row, column).imag();
        }
    }
}

KRT_FUNCTION(shout) {
    std::string text = in(0, "text").text();
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    out.set(0, text);
}

KRT_FUNCTION(reverse) {
    const krt::Value c = in(0, "c");
    const krt::Cell source = c.cell();
    if (source.dimensions().size() != 2) {
        c.unexpected("a cell array of two dimensions");
    }
    qxArray* target = out.cell(0, source.dimensions()[0], source.dimensions()[1]);
    for (std::size_t i = 0; i < source.size(); ++i) {
        krt::setCell(target, source.size() - 1 - i, source[i]);
    }
}

KRT_FUNCTION(rename_field) {
    const krt::Value s = in(0, "s");
    const krt::Struct source = s.structure();
    const std::string from = in(1, "from").text();
    const std::string to = in(2, "to").text();
    if (source.size() != 1) {
        s.unexpected("a 1-by-1 struct array");
    }
    if (!source.has(from.c_str())) {
        krt::error("showcase:field", s.label() + " has no field '" + from + "'");
    }
    qxArray* target = out.structure(0);
    for (const std::string& field : source.fields()) {
        krt::setField(target, (field == from ? to : field).c_str(), source[field.c_str()]);
    }
}

KRT_FUNCTION(fields) {
    const krt::Value s = in(0, "s");
    if (s.classId() != qxSTRUCT_CLASS) {
        s.unexpected("a struct array");
    }
    const std::uint32_t count = s.array()->get_number_of_struct_fields();
    qxArray* names = out.cell(0, 1, count);
    for (std::uint32_t i = 0; i < count; ++i) {
        krt::setCell(names, i, s.array()->get_struct_field_name_by_number(i));
    }
    out.set(1, count);
}

KRT_FUNCTION(same) {
    in.expectCount(1, 1);
    out.set(0, in(0, "x"));
}

KRT_FUNCTION(gather) {
    const auto count = static_cast<std::size_t>(in.count());
    qxArray* cell = out.cell(0, 1, count);
    for (std::size_t i = 0; i < count; ++i) {
        krt::setCell(cell, i, in(static_cast<int>(i), "x"));
    }
}

KRT_FUNCTION(fewer) { out.set(0, "the only one"); }

KRT_FUNCTION(count) {
    out.set(0, in.count());
    out.set(1, out.wanted());
}
