#include "toarray/datamodel.h"

#include "support/javadata.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace nativevrl::test {

namespace {

/// By class id.
constexpr unsigned kBytes[] = {0, 0, 0, 1, 2, 0, 8, 4, 1, 1, 2, 2, 4, 4, 8, 8};

std::int64_t lowest(unsigned bits) {
    return bits == 32 ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int64_t>::min();
}

/// Toward zero. What does not fit is the lowest value, or, as Java casts, the nearest one and 0 for NaN.
std::int64_t truncated(Value value, unsigned bits, bool asJava) {
    const std::int64_t highest = -(lowest(bits) + 1);
    const Value whole = std::trunc(value);
    if (whole >= lowest(bits) && whole <= highest) {
        return static_cast<std::int64_t>(whole);
    }
    return !asJava || whole < 0 ? lowest(bits) : std::isnan(value) ? 0 : highest;
}

template <typename T>
std::uint64_t bitsOf(T value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

using Extents = std::vector<std::uint32_t>;

/// Whether a char array takes the data as the texts of its values.
bool isWord(const JavaData& data) {
    return data.kind == JavaData::text ||
           (data.type != 'C' && (data.kind == JavaData::row || data.kind == JavaData::boxed));
}

/// The text of one value, or of a text all of it.
std::vector<Value> unitsOf(const JavaData& data, Value value) {
    if (data.kind == JavaData::text) {
        return data.values;
    }
    const std::string number = std::to_string(static_cast<long long>(value));
    const std::string text = data.type != 'Z' ? number : value != 0 ? "true" : "false";
    return {text.begin(), text.end()};
}

void raise(Extents& extents, std::size_t level, std::size_t size) {
    extents.resize(std::max(extents.size(), level + 1));
    extents[level] = std::max(extents[level], static_cast<std::uint32_t>(size));
}

void measure(const JavaData& data, bool isChar, std::size_t level, Extents& extents) {
    const bool isNested = data.kind == JavaData::nested;
    if (isNested || data.kind == JavaData::row) {
        raise(extents, level, isNested ? data.elements.size() : data.values.size());
    }
    for (const JavaData& element : data.elements) {
        measure(element, isChar, level + 1, extents);
    }
    if (isChar && data.kind == JavaData::text) {
        raise(extents, level, data.values.size());
    } else if (isChar && isWord(data)) {
        const std::size_t below = data.kind == JavaData::row ? level + 1 : level;
        raise(extents, below, 0);
        for (const Value value : data.values) {
            raise(extents, below, unitsOf(data, value).size());
        }
    }
}

/// Puts values at subscripts, one per level.
class Placement {
public:
    Placement(qxClassID classId, const Extents& extents, std::vector<std::uint64_t>& part)
        : classId_(classId), extents_(extents), part_(part), at_(extents.size()) {}

    void place(const JavaData& data, std::size_t level) {
        const auto bits = [&](Value value) {
            return modelBits(classId_, data.type, value, data.kind == JavaData::boxed);
        };
        const auto isRow = data.kind == JavaData::row;
        if (classId_ == qxCHAR_CLASS && isWord(data)) {
            placeWords(data, level, isRow ? data.values.size() : 1);
        } else if (isRow) {
            along(level, data.values.size(), [&](std::size_t i) { put(bits(data.values[i])); });
        } else if (data.kind == JavaData::boxed) {
            put(bits(data.values[0]));
        }
        if (data.kind == JavaData::nested) {
            along(level, data.elements.size(), [&](std::size_t i) { place(data.elements[i], level + 1); });
        }
    }

private:
    void put(std::uint64_t bits) {
        std::size_t index = 0;
        for (std::size_t i = extents_.size(); i-- > 0;) {
            index = index * extents_[i] + at_[i];
        }
        if (!part_.empty()) {
            part_[index] = bits;
        }
    }

    template <typename Visit>
    void along(std::size_t level, std::size_t count, Visit&& visit) {
        for (std::size_t i = 0; i < std::min<std::size_t>(count, extents_[level]); ++i) {
            at_[level] = i;
            visit(i);
        }
        at_[level] = 0;
    }

    /// Text over text, all along the level itself, with zeros behind it, and behind as many as a row has texts.
    void placeWords(const JavaData& data, std::size_t level, std::size_t words) {
        for (std::size_t word = 0; word < words; ++word) {
            const auto units = unitsOf(data, data.values.empty() ? 0 : data.values[word]);
            along(level, extents_[level],
                  [&](std::size_t i) { put(i < units.size() ? static_cast<std::uint64_t>(units[i]) : 0); });
        }
        along(level, extents_[level], [&](std::size_t i) {
            if (data.kind == JavaData::row && i >= words) {
                put(0);
            }
        });
    }

    qxClassID classId_;
    const Extents& extents_;
    std::vector<std::uint64_t>& part_;
    std::vector<std::size_t> at_;
};

}  // namespace

jobject toJava(JNIEnv* env, const JavaData& data, bool typed) {
    if (data.kind == JavaData::null) {
        return nullptr;
    }
    if (data.kind == JavaData::object) {
        return newObject(env, "java/lang/Object", "()V");
    }
    if (data.kind == JavaData::text) {
        return javaString(env, std::u16string(data.values.begin(), data.values.end()));
    }
    if (data.kind == JavaData::nested) {
        const bool ofRows = typed && !data.elements.empty() && data.elements[0].kind == JavaData::row;
        const std::string elementClass = ofRows ? std::string("[") + data.elements[0].type : "java/lang/Object";
        jobjectArray array = objectArray(env, elementClass, std::vector<jobject>(data.elements.size()));
        for (std::size_t i = 0; i < data.elements.size(); ++i) {
            jobject element = toJava(env, data.elements[i], typed);
            env->SetObjectArrayElement(array, static_cast<jsize>(i), element);
            env->DeleteLocalRef(element);
        }
        return array;
    }
    return withType(data.type, [&](auto zero) -> jobject {
        using T = decltype(zero);
        std::vector<T> values;
        for (const Value value : data.values) {
            values.push_back(static_cast<T>(value));
        }
        return data.kind == JavaData::boxed ? boxed<T>(env, values[0]) : primitiveArray<T>(env, values);
    });
}

qxClassID modelClass(const JavaData& data) {
    constexpr qxClassID classes[] = {qxLOGICAL_CLASS, qxINT8_CLASS,  qxCHAR_CLASS,   qxINT16_CLASS,
                                     qxINT32_CLASS,   qxINT64_CLASS, qxSINGLE_CLASS, qxDOUBLE_CLASS};
    if (data.kind == JavaData::nested) {
        return data.elements.empty() ? qxUNKNOWN_CLASS : modelClass(data.elements.front());
    }
    return data.kind == JavaData::object ? qxUNKNOWN_CLASS
                                         : classes[std::strchr(kPrimitiveTypes, data.type) - kPrimitiveTypes];
}

ModelArray modelOf(const JavaData& real, const JavaData& imaginary, qxClassID classId, bool isComplex) {
    const bool isChar = classId == qxCHAR_CLASS;
    Extents extents;
    measure(real, isChar, 0, extents);
    if (isComplex) {
        measure(imaginary, isChar, 0, extents);
    }
    if (extents.empty() && (real.kind != JavaData::null || imaginary.kind != JavaData::null)) {
        extents = {1};
    }
    std::size_t count = extents.empty() ? 0 : 1;
    for (const std::uint32_t extent : extents) {
        count *= extent;
    }
    std::vector<std::uint64_t> parts[2];
    parts[0].resize(count);
    Placement(classId, extents, parts[0]).place(real, 0);
    if (isComplex && classId > qxCHAR_CLASS) {
        parts[1].resize(count);
        Placement(classId, extents, parts[1]).place(imaginary, 0);
    }
    if (extents.size() < 2) {
        extents.insert(extents.begin(), 2 - extents.size(), extents.empty() ? 0 : 1);
    }
    return {classId, extents, parts[0], parts[1]};
}

ModelArray contentOf(const qxArray* array) {
    const auto partOf = [&](const void* block) {
        std::vector<std::uint64_t> part(block == nullptr ? 0 : qxGetNumberOfElements(array));
        const unsigned bytes = kBytes[qxGetClassID(array)];
        for (std::size_t i = 0; i < part.size(); ++i) {
            std::memcpy(&part[i], static_cast<const char*>(block) + i * bytes, bytes);
        }
        return part;
    };
    return {qxGetClassID(array),
            {array->get_dimensions(), array->get_dimensions() + array->numberOfDimensions()},
            partOf(array->realData()),
            partOf(array->imagData())};
}

std::uint64_t modelBits(qxClassID classId, char type, Value value, bool isBoxed) {
    if (classId == qxDOUBLE_CLASS) {
        return bitsOf(static_cast<double>(value));
    }
    if (classId == qxSINGLE_CLASS) {
        return bitsOf(static_cast<float>(value));
    }
    if (classId == qxLOGICAL_CLASS) {
        return isBoxed && type == 'C' ? (static_cast<int>(value) & 0xff) != 0 : value != 0;
    }
    const unsigned bytes = kBytes[classId];
    const bool wide = bytes == 8 || (classId == qxUINT32_CLASS && !isBoxed);
    const bool isFloating = type == 'F' || type == 'D';
    const auto whole = isFloating ? truncated(value, wide ? 64 : 32, isBoxed) : static_cast<std::int64_t>(value);
    return static_cast<std::uint64_t>(whole) & (~std::uint64_t{0} >> (64 - 8 * bytes));
}

std::size_t randomBelow(std::mt19937& random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

Value randomValue(std::mt19937& random, char type) {
    const auto bits = (std::uint64_t{random()} << 32U) | random();
    if (type != 'F' && type != 'D') {
        return withType(type,
                        [&](auto zero) -> Value { return static_cast<decltype(zero)>(type == 'Z' ? bits & 1 : bits); });
    }
    const double special[] = {0.0, -0.0, std::nan(""), HUGE_VAL, -HUGE_VAL, 1e20, -2147483648.5, 4294967295.0};
    const double common =
        std::ldexp(static_cast<double>(bits % 200000) - 100000, static_cast<int>(randomBelow(random, 60)) - 10);
    const double value = randomBelow(random, 3) == 0 ? special[randomBelow(random, std::size(special))] : common;
    return type == 'F' ? static_cast<float>(value) : value;
}

JavaData randomRow(std::mt19937& random, char type, std::size_t length) {
    JavaData data{JavaData::row, type};
    for (std::size_t i = 0; i < length; ++i) {
        data.values.push_back(randomValue(random, type));
    }
    return data;
}

JavaData randomData(std::mt19937& random, int depth, std::size_t longest, bool texts) {
    const char type = kPrimitiveTypes[randomBelow(random, texts ? 6 : 8)];
    const std::size_t length = randomBelow(random, longest + 1);
    const std::size_t chance = randomBelow(random, 10);
    if (chance == 0) {
        return {};
    }
    if (chance == 1) {
        return {JavaData::boxed, type, {randomValue(random, type)}};
    }
    if (chance == 2) {
        return texts ? JavaData{JavaData::text, 'C', randomRow(random, 'C', length).values}
                     : JavaData{JavaData::object};
    }
    if (depth <= 1 || chance == 3) {
        return randomRow(random, type, length);
    }
    JavaData data{JavaData::nested};
    for (std::size_t i = 0; i < length; ++i) {
        data.elements.push_back(randomData(random, depth - 1, longest, texts));
    }
    return data;
}

}  // namespace nativevrl::test
