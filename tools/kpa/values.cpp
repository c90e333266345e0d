#include "values.h"

#include "usageerror.h"

#include <algorithm>
#include <complex>
#include <cstdlib>
#include <new>
#include <optional>
#include <vector>

namespace kpa {
namespace {

using Number = std::complex<double>;
using Row = std::vector<Number>;

qxArrayOwner owned(qxArray* array) {
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return qxArrayOwner(array);
}

/// "3", "-2i", "1+2i"; nothing else.
std::optional<Number> parseNumber(const std::string& word) {
    const char* at = word.c_str();
    if (word.empty() || *at == ' ' || *at == '\t') {
        return std::nullopt;
    }
    char* end = nullptr;
    const double first = std::strtod(at, &end);
    if (end == at) {
        return std::nullopt;
    }
    if (*end == '\0') {
        return Number(first, 0);
    }
    if (*end == 'i' && end[1] == '\0') {
        return Number(0, first);
    }
    if (*end != '+' && *end != '-') {
        return std::nullopt;
    }
    at = end;
    const double second = std::strtod(at, &end);
    return end != at && *end == 'i' && end[1] == '\0' ? std::optional<Number>(Number(first, second)) : std::nullopt;
}

qxArrayOwner matrixOf(const std::vector<Row>& rows) {
    const std::size_t columns = rows.empty() ? 0 : rows.front().size();
    const bool complex = std::any_of(rows.begin(), rows.end(), [](const Row& row) {
        return std::any_of(row.begin(), row.end(), [](const Number& x) { return x.imag() != 0; });
    });
    qxArrayOwner matrix = owned(qxCreateDoubleMatrix(
        static_cast<std::uint32_t>(rows.size()), static_cast<std::uint32_t>(columns), complex ? qxCOMPLEX : qxREAL));
    auto* real = static_cast<double*>(matrix->realData());
    auto* imag = static_cast<double*>(matrix->imagData());
    for (std::size_t r = 0; r < rows.size(); ++r) {
        for (std::size_t c = 0; c < columns; ++c) {
            real[c * rows.size() + r] = rows[r][c].real();
            if (complex) {
                imag[c * rows.size() + r] = rows[r][c].imag();
            }
        }
    }
    return matrix;
}

Row parseRow(const std::string& text, const std::string& whole) {
    constexpr char separators[] = " \t,";
    Row row;
    std::size_t at = text.find_first_not_of(separators);
    while (at != std::string::npos) {
        const std::size_t end = text.find_first_of(separators, at);
        const std::string element = text.substr(at, end == std::string::npos ? end : end - at);
        const std::optional<Number> number = parseNumber(element);
        if (!number) {
            throw UsageError("'" + element + "' in the matrix " + whole + " is not a number");
        }
        row.push_back(*number);
        at = end == std::string::npos ? end : text.find_first_not_of(separators, end);
    }
    return row;
}

qxArrayOwner parseMatrix(const std::string& word) {
    if (word.back() != ']') {
        throw UsageError("the matrix " + word + " has no ']' at its end; text that starts with '[' goes in quotes");
    }
    std::vector<Row> rows;
    const std::string inside = word.substr(1, word.size() - 2);
    std::size_t at = 0;
    while (at <= inside.size()) {
        const std::size_t end = std::min(inside.find_first_of(";\n", at), inside.size());
        Row row = parseRow(inside.substr(at, end - at), word);
        if (!row.empty()) {
            rows.push_back(std::move(row));
        }
        at = end + 1;
    }
    for (std::size_t r = 1; r < rows.size(); ++r) {
        if (rows[r].size() != rows[0].size()) {
            throw UsageError("row " + std::to_string(r + 1) + " of the matrix " + word + " has " +
                             std::to_string(rows[r].size()) + " elements, and row 1 has " +
                             std::to_string(rows[0].size()));
        }
    }
    return matrixOf(rows);
}

bool isQuoted(const std::string& word) {
    return word.size() >= 2 && (word.front() == '\'' || word.front() == '"') && word.back() == word.front();
}

}  // namespace

bool isNumber(const std::string& word) { return parseNumber(word).has_value(); }

qxArrayOwner parseValue(const std::string& word) {
    if (word == "true" || word == "false") {
        return owned(qxCreateLogicalScalar(word == "true"));
    }
    if (!word.empty() && word.front() == '[') {
        return parseMatrix(word);
    }
    if (word.size() >= 2 && word.front() == '@') {
        return owned(qxCreateFunctionHandle(word.c_str() + 1));
    }
    if (const std::optional<Number> number = parseNumber(word)) {
        return matrixOf({{*number}});
    }
    return owned(qxCreateString((isQuoted(word) ? word.substr(1, word.size() - 2) : word).c_str()));
}

}  // namespace kpa
