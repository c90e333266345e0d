#include "classtable.h"
#include "elementtext.h"
#include "sparse.h"
#include "storage.h"
#include "text/unicode.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <vector>

namespace qx {

namespace {

// What is shown of one array at most; a line tells how much is missing.
constexpr std::size_t kMaxRows = 200;
constexpr std::size_t kMaxColumns = 50;
constexpr std::size_t kMaxPages = 20;
constexpr std::size_t kMaxElements = 200;  // of a cell, struct or sparse array
constexpr std::size_t kMaxFields = 200;
constexpr std::size_t kMaxUnits = 10000;  // of a row of text
constexpr std::size_t kShownDimensions = 32;

/// Of the whole text: once there are as many lines, every array below closes with its own line on what is missing.
constexpr std::size_t kMaxLines = 2000;

/// Arrays nested deeper than this are told by shape and class alone. A level takes about 1 KB of the stack, of which a
/// Java thread may have little.
constexpr int kMaxDepth = 32;

constexpr std::size_t kIndent = 2;

/// The lines of the text, each indented by the depth at which it was added.
class TextLines {
public:
    void add(std::string_view line) {
        text_.append(indent_, ' ');
        text_.append(line);
        text_ += '\n';
        ++count_;
    }

    /// Names what was left out of `total` things, if anything was.
    void addRest(std::size_t shown, std::size_t total, std::string_view what) {
        if (shown < total) {
            add(fmt::format("... {} more {}", total - shown, what));
        }
    }

    bool isFull() const noexcept { return count_ >= kMaxLines; }
    void indent() noexcept { indent_ += kIndent; }
    void outdent() noexcept { indent_ -= kIndent; }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
    std::size_t indent_ = 0;
    std::size_t count_ = 0;
};

std::string extentsText(Shape shape) {
    const std::size_t shown = std::min<std::size_t>(shape.count, kShownDimensions);
    std::string text = fmt::format("{}", fmt::join(shape.extents, shape.extents + shown, "-by-"));
    return shown < shape.count ? fmt::format("{}-by-... ({} dimensions)", text, shape.count) : text;
}

std::string summary(const qxArray* array) {
    return fmt::format("{}{}{} {}", extentsText(shapeOf(array)), qxIsEmpty(array) ? " empty" : "",
                       array->isSparse() ? " sparse" : "", qxGetClassName(qxGetClassID(array)));
}

/// Subscripts, one-based, of a linear index into the extents from `first` on, as "a,b,c".
std::string subscriptsText(Shape shape, std::uint32_t first, std::size_t index) {
    std::vector<std::size_t> subscripts;
    const auto shown = static_cast<std::uint32_t>(std::min<std::size_t>(shape.count, kShownDimensions));
    for (std::uint32_t dimension = first; dimension < shown; ++dimension) {
        subscripts.push_back(index % shape.extents[dimension] + 1);
        index /= shape.extents[dimension];
    }
    return fmt::format("{}{}", fmt::join(subscripts, ","), shown < shape.count ? ",..." : "");
}

std::string textOf(const char16_t* units, std::size_t count) { return text::modifiedUtf8FromUtf16({units, count}); }

/// A line that was made of plain or modified UTF-8, as modified UTF-8.
std::string displayName(std::string_view name) { return text::modifiedUtf8FromUtf16(text::utf16FromUtf8(name)); }

class ArrayText {
public:
    void show(const qxArray* array, int depth) {
        switch (qxGetClassID(array)) {
            case qxFUNCTION_CLASS:
                lines_.add(functionText(array));
                return;
            case qxOPAQUE_CLASS:
            case qxOBJECT_CLASS:
                lines_.add(opaqueText(array));
                return;
            case qxSTRUCT_CLASS:
                showStruct(array, depth);
                return;
            default:
                break;
        }
        const bool hasNothing = array->realData() == nullptr || qxIsEmpty(array);
        if (hasNothing || depth > kMaxDepth) {
            lines_.add(summary(array));
        } else if (array->classWord() == qxCELL_CLASS) {
            showCell(array, depth);
        } else if (array->isSparse()) {
            showSparse(array);
        } else {
            showPages(array);
        }
    }

    std::string take() { return lines_.take(); }

private:
    static std::string functionText(const qxArray* array) {
        const qxArray* name = qxGetCell(array, 0);
        const bool hasName = name != nullptr && name->classWord() == qxCHAR_CLASS && name->realData() != nullptr;
        return hasName ? "@" + textOf(static_cast<const char16_t*>(name->realData()), shownUnits(name)) : "@";
    }

    static std::string opaqueText(const qxArray* array) {
        const char* subclass = qxGetSubclass(array);
        return "<" + displayName(subclass == nullptr ? "" : subclass) + ">";
    }

    static std::size_t shownUnits(const qxArray* text) { return std::min(qxGetNumberOfElements(text), kMaxUnits); }

    /// A dense array page by page: a page is what the first two subscripts span.
    void showPages(const qxArray* array) {
        const Shape shape = shapeOf(array);
        const std::size_t pages = extentProduct(shape, 2);
        const std::size_t pageSize = std::size_t{shape.extents[0]} * shape.extents[1];
        const std::size_t shown = std::min(pages, kMaxPages);
        std::size_t page = 0;
        for (; page < shown && (page == 0 || !lines_.isFull()); ++page) {
            if (shape.count > 2) {
                lines_.add(fmt::format("(:,:,{})", subscriptsText(shape, 2, page)));
            }
            if (array->classWord() == qxCHAR_CLASS) {
                showTextRows(array, page * pageSize);
            } else {
                showMatrix(array, page * pageSize);
            }
        }
        lines_.addRest(page, pages, "pages");
    }

    void showTextRows(const qxArray* array, std::size_t offset) {
        const std::size_t rows = array->get_dimensions()[0];
        const std::size_t columns = array->get_dimensions()[1];
        const std::size_t shownRows = std::min(rows, kMaxRows);
        const std::size_t shownColumns = std::min(columns, kMaxUnits);
        const auto* units = static_cast<const char16_t*>(array->realData()) + offset;
        std::u16string line(shownColumns, u'\0');
        for (std::size_t row = 0; row < shownRows; ++row) {
            for (std::size_t column = 0; column < shownColumns; ++column) {
                line[column] = units[column * rows + row];
            }
            lines_.add(text::modifiedUtf8FromUtf16(line));
        }
        lines_.addRest(shownRows, rows, "rows");
        lines_.addRest(shownColumns, columns, "columns");
    }

    void showMatrix(const qxArray* array, std::size_t offset) {
        const std::size_t rows = array->get_dimensions()[0];
        const std::size_t columns = array->get_dimensions()[1];
        const std::size_t shownRows = std::min(rows, kMaxRows);
        const std::size_t shownColumns = std::min(columns, kMaxColumns);
        ElementText elements(array);
        for (std::size_t column = 0; column < shownColumns; ++column) {
            for (std::size_t row = 0; row < shownRows; ++row) {
                elements.observe(offset + column * rows + row);
            }
        }
        std::vector<std::string> rowTexts(shownRows);
        for (std::size_t column = 0; column < shownColumns; ++column) {
            std::vector<EntryText> entries;
            for (std::size_t row = 0; row < shownRows; ++row) {
                entries.push_back(elements.text(offset + column * rows + row));
            }
            const std::vector<std::string> aligned = align(entries);
            for (std::size_t row = 0; row < shownRows; ++row) {
                rowTexts[row] += (column == 0 ? "" : "  ") + aligned[row];
            }
        }
        for (const std::string& line : rowTexts) {
            lines_.add(line);
        }
        lines_.addRest(shownRows, rows, "rows");
        lines_.addRest(shownColumns, columns, "columns");
    }

    /// The entries of one column, brought to one width.
    static std::vector<std::string> align(const std::vector<EntryText>& entries) {
        std::size_t realWidth = 0;
        std::size_t imagWidth = 0;
        for (const EntryText& entry : entries) {
            realWidth = std::max(realWidth, entry.real.size());
            imagWidth = std::max(imagWidth, entry.imag.size());
        }
        std::vector<std::string> aligned;
        for (const EntryText& entry : entries) {
            aligned.push_back(entry.imag.empty()
                                  ? fmt::format("{:>{}}", entry.real, realWidth)
                                  : fmt::format("{:>{}} {} {:>{}}i", entry.real, realWidth,
                                                entry.imagIsNegative ? '-' : '+', entry.imag, imagWidth));
        }
        return aligned;
    }

    void showSparse(const qxArray* array) {
        if (!hasValidTables(array)) {
            lines_.add(summary(array) + " with broken index tables");
            return;
        }
        const std::size_t stored = storedCount(array);
        if (stored == 0) {
            lines_.add(summary(array) + " without stored elements");
            return;
        }
        const std::size_t shown = std::min(stored, kMaxElements);
        ElementText elements(array);
        std::vector<std::string> places;
        std::size_t column = 0;
        std::size_t placeWidth = 0;
        for (std::size_t at = 0; at < shown; ++at) {
            while (array->columnStartTable()[column + 1] <= at) {
                ++column;
            }
            elements.observe(at);
            places.push_back(fmt::format("({},{})", array->rowIndexTable()[at] + std::size_t{1}, column + 1));
            placeWidth = std::max(placeWidth, places.back().size());
        }
        std::vector<EntryText> entries;
        for (std::size_t at = 0; at < shown; ++at) {
            entries.push_back(elements.text(at));
        }
        const std::vector<std::string> values = align(entries);
        for (std::size_t at = 0; at < shown; ++at) {
            lines_.add(fmt::format("{:<{}}  {}", places[at], placeWidth, values[at]));
        }
        lines_.addRest(shown, stored, "elements");
    }

    void showCell(const qxArray* array, int depth) {
        lines_.add(summary(array));
        lines_.indent();
        const std::size_t count = qxGetNumberOfElements(array);
        const std::size_t shown = std::min(count, kMaxElements);
        std::size_t index = 0;
        for (; index < shown && !lines_.isFull(); ++index) {
            showNested(fmt::format("({})", subscriptsText(shapeOf(array), 0, index)), qxGetCell(array, index), depth);
        }
        lines_.addRest(index, count, "elements");
        lines_.outdent();
    }

    void showStruct(const qxArray* array, int depth) {
        const std::size_t count = qxGetNumberOfElements(array);
        const std::uint32_t fields = array->get_number_of_struct_fields();
        if (count == 0 || fields == 0 || depth > kMaxDepth) {
            lines_.add(summary(array) + (fields == 0 ? " without fields" : ""));
            return;
        }
        if (count == 1) {
            showFields(array, 0, depth);
            return;
        }
        lines_.add(summary(array));
        lines_.indent();
        const std::size_t shown = std::min(count, kMaxElements);
        std::size_t index = 0;
        for (; index < shown && !lines_.isFull(); ++index) {
            lines_.add(fmt::format("({}):", subscriptsText(shapeOf(array), 0, index)));
            lines_.indent();
            showFields(array, index, depth);
            lines_.outdent();
        }
        lines_.addRest(index, count, "elements");
        lines_.outdent();
    }

    void showFields(const qxArray* array, std::size_t element, int depth) {
        const std::uint32_t count = array->get_number_of_struct_fields();
        std::uint32_t field = 0;
        for (; field < std::min<std::size_t>(count, kMaxFields) && (field == 0 || !lines_.isFull()); ++field) {
            showNested(displayName(array->get_struct_field_name_by_number(field)),
                       qxGetCell(array, element * count + field), depth);
        }
        lines_.addRest(field, count, "fields");
    }

    /// One value under its place or name: on the same line when it is a single one, indented below otherwise.
    void showNested(const std::string& label, const qxArray* value, int depth) {
        if (value == nullptr) {
            lines_.add(label + ": 0-by-0 empty double");
            return;
        }
        const std::string single = singleLine(value);
        if (!single.empty()) {
            lines_.add(label + ": " + single);
            return;
        }
        lines_.add(label + ":");
        lines_.indent();
        show(value, depth + 1);
        lines_.outdent();
    }

    /// The text of a value that always fits one line; empty for any other.
    static std::string singleLine(const qxArray* value) {
        const qxClassID classId = qxGetClassID(value);
        if (classId == qxFUNCTION_CLASS) {
            return functionText(value);
        }
        if (classId == qxOPAQUE_CLASS || classId == qxOBJECT_CLASS) {
            return opaqueText(value);
        }
        if (value->realData() == nullptr || qxIsEmpty(value)) {
            return classId == qxSTRUCT_CLASS ? std::string() : summary(value);
        }
        const bool isRow = value->numberOfDimensions() == 2 && value->get_dimensions()[0] == 1;
        const std::size_t count = qxGetNumberOfElements(value);
        if (classId == qxCHAR_CLASS && isRow && count <= kMaxUnits) {
            return "'" + textOf(static_cast<const char16_t*>(value->realData()), count) + "'";
        }
        const bool isNumber = hasNumericStorage(classId) && classId != qxCHAR_CLASS && !value->isSparse();
        if (!isNumber || !isRow || count != 1) {
            return {};
        }
        ElementText element(value);
        element.observe(0);
        return align({element.text(0)}).front();
    }

    TextLines lines_;
};

}  // namespace

}  // namespace qx

std::string qxToText(const qxArray* array) try {
    qx::ArrayText text;
    text.show(array, 1);
    return text.take();
} catch (const std::bad_alloc&) {
    return {};
}
