#include "toarray/datamodel.h"

#include "support/javadata.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace nativevrl::test {

namespace {

struct ClassFacts {
    unsigned bytes;
    bool floating;
    unsigned intermediateBits;  // of the truncation of a floating value
};

ClassFacts factsOf(qxClassID classId) {
    switch (classId) {
        case qxDOUBLE_CLASS:
            return {8, true, 0};
        case qxSINGLE_CLASS:
            return {4, true, 0};
        case qxLOGICAL_CLASS:
        case qxINT8_CLASS:
        case qxUINT8_CLASS:
            return {1, false, 32};
        case qxCHAR_CLASS:
        case qxINT16_CLASS:
        case qxUINT16_CLASS:
            return {2, false, 32};
        case qxINT32_CLASS:
            return {4, false, 32};
        case qxUINT32_CLASS:
            return {4, false, 64};
        case qxINT64_CLASS:
        case qxUINT64_CLASS:
            return {8, false, 64};
        default:
            throw std::logic_error("no element class");
    }
}

bool isFloating(const JavaValue& value) { return value.type == 'F' || value.type == 'D'; }
bool isZero(const JavaValue& value) { return isFloating(value) ? value.real == 0 : value.integer == 0; }

std::uint64_t lowBits(std::int64_t value, unsigned bytes) {
    const auto bits = static_cast<std::uint64_t>(value);
    return bytes == 8 ? bits : bits & ((std::uint64_t{1} << (8 * bytes)) - 1);
}

template <typename T>
std::uint64_t bitsOfReal(T value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

std::uint64_t realBits(qxClassID classId, const JavaValue& value) {
    if (classId == qxDOUBLE_CLASS) {
        return bitsOfReal(isFloating(value) ? value.real : static_cast<double>(value.integer));
    }
    return bitsOfReal(isFloating(value) ? static_cast<float>(value.real) : static_cast<float>(value.integer));
}

/// Toward zero; the lowest value for what does not fit.
std::int64_t truncated(double value, unsigned bits) {
    const double beyond = std::ldexp(1.0, static_cast<int>(bits) - 1);
    const double whole = std::trunc(value);
    if (std::isnan(value) || whole < -beyond || whole >= beyond) {
        return bits == 32 ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(whole);
}

/// As Java casts: not a number gives 0, what does not fit the nearest value.
std::int64_t javaInteger(double value, unsigned bits) {
    const double beyond = std::ldexp(1.0, static_cast<int>(bits) - 1);
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= beyond) {
        return bits == 32 ? std::numeric_limits<std::int32_t>::max() : std::numeric_limits<std::int64_t>::max();
    }
    return value < -beyond ? truncated(value, bits) : static_cast<std::int64_t>(std::trunc(value));
}

std::u16string javaText(const JavaValue& value) {
    if (value.type == 'C') {
        return {static_cast<char16_t>(value.integer)};
    }
    const std::string text =
        value.type == 'Z' ? (value.integer != 0 ? "true" : "false") : std::to_string(value.integer);
    return {text.begin(), text.end()};
}

/// Extents by level, straight from their definition.
std::vector<std::uint32_t> extentsOf(const JavaData& data, bool isChar) {
    std::vector<std::uint32_t> extents;
    const auto size = [](std::size_t n) { return static_cast<std::uint32_t>(n); };
    switch (data.kind) {
        case JavaData::null:
        case JavaData::object:
            break;
        case JavaData::nested:
            extents.push_back(size(data.elements.size()));
            for (const JavaData& element : data.elements) {
                const auto inner = extentsOf(element, isChar);
                extents.resize(std::max(extents.size(), inner.size() + 1));
                for (std::size_t i = 0; i < inner.size(); ++i) {
                    extents[i + 1] = std::max(extents[i + 1], inner[i]);
                }
            }
            break;
        case JavaData::row:
            extents.push_back(size(data.values.size()));
            if (isChar && data.type != 'C') {
                extents.push_back(0);
                for (const JavaValue& value : data.values) {
                    extents[1] = std::max(extents[1], size(javaText(value).size()));
                }
            }
            break;
        case JavaData::boxed:
            if (isChar && data.type != 'C') {
                extents.push_back(size(javaText(data.values[0]).size()));
            }
            break;
        case JavaData::text:
            if (isChar) {
                extents.push_back(size(data.characters.size()));
            }
            break;
    }
    return extents;
}

/// Puts values at subscripts.
class Placement {
public:
    Placement(qxClassID classId, const std::vector<std::uint32_t>& extents, std::vector<std::uint64_t>& part)
        : classId_(classId), extents_(extents), part_(part), at_(extents.size(), 0) {}

    void place(const JavaData& data, std::size_t level) {
        const bool isChar = classId_ == qxCHAR_CLASS;
        switch (data.kind) {
            case JavaData::null:
            case JavaData::object:
                return;
            case JavaData::nested:
                placeElements(data, level);
                return;
            case JavaData::row:
                if (isChar && data.type != 'C') {
                    placeTexts(data, level);
                } else {
                    placeRow(data, level);
                }
                return;
            case JavaData::boxed:
                if (isChar && data.type != 'C') {
                    placeText(javaText(data.values[0]), level);
                } else {
                    put(modelBitsOfBoxed(classId_, data.values[0]));
                }
                return;
            case JavaData::text:
                if (isChar) {
                    placeText(data.characters, level);
                }
                return;
        }
    }

private:
    void put(std::uint64_t bits) {
        std::size_t index = 0;
        std::size_t stride = 1;
        for (std::size_t i = 0; i < extents_.size(); ++i) {
            if (at_[i] >= extents_[i]) {
                return;
            }
            index += at_[i] * stride;
            stride *= extents_[i];
        }
        if (stride != 0) {
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

    void placeElements(const JavaData& data, std::size_t level) {
        along(level, data.elements.size(), [&](std::size_t i) { place(data.elements[i], level + 1); });
    }

    void placeRow(const JavaData& data, std::size_t level) {
        along(level, data.values.size(), [&](std::size_t i) { put(modelBits(classId_, data.values[i])); });
    }

    void placeText(const std::u16string& text, std::size_t level) {
        along(level, extents_[level], [&](std::size_t i) { put(i < text.size() ? text[i] : 0); });
    }

    /// Text over text, all along the row's own level.
    void placeTexts(const JavaData& data, std::size_t level) {
        for (const JavaValue& value : data.values) {
            placeText(javaText(value), level);
        }
        along(level, extents_[level], [&](std::size_t i) {
            if (i >= data.values.size()) {
                put(0);
            }
        });
    }

    qxClassID classId_;
    const std::vector<std::uint32_t>& extents_;
    std::vector<std::uint64_t>& part_;
    std::vector<std::size_t> at_;
};

template <typename T>
jobject primitiveRow(JNIEnv* env, const std::vector<JavaValue>& values) {
    std::vector<T> converted;
    for (const JavaValue& value : values) {
        converted.push_back(isFloating(value) ? static_cast<T>(value.real) : static_cast<T>(value.integer));
    }
    return primitiveArray<T>(env, converted);
}

/// Calls `visitor` with a value of the JNI type of a letter.
template <typename Visitor>
jobject withType(char type, Visitor&& visitor) {
    switch (type) {
        case 'Z':
            return visitor(jboolean{});
        case 'B':
            return visitor(jbyte{});
        case 'C':
            return visitor(jchar{});
        case 'S':
            return visitor(jshort{});
        case 'I':
            return visitor(jint{});
        case 'J':
            return visitor(jlong{});
        case 'F':
            return visitor(jfloat{});
        default:
            return visitor(jdouble{});
    }
}

std::vector<std::uint64_t> partContent(const void* block, std::size_t count, unsigned bytes) {
    std::vector<std::uint64_t> content(block == nullptr ? 0 : count);
    for (std::size_t i = 0; i < content.size(); ++i) {
        std::memcpy(&content[i], static_cast<const char*>(block) + i * bytes, bytes);
    }
    return content;
}

}  // namespace

JavaData JavaData::arrayOf(std::vector<JavaData> elements) {
    JavaData data;
    data.kind = nested;
    data.elements = std::move(elements);
    return data;
}

JavaData JavaData::rowOf(char type, std::vector<JavaValue> values) {
    JavaData data;
    data.kind = row;
    data.type = type;
    data.values = std::move(values);
    return data;
}

JavaData JavaData::box(JavaValue value) {
    JavaData data = rowOf(value.type, {value});
    data.kind = boxed;
    return data;
}

JavaData JavaData::string(std::u16string characters) {
    JavaData data;
    data.kind = text;
    data.characters = std::move(characters);
    return data;
}

JavaData JavaData::plainObject() {
    JavaData data;
    data.kind = object;
    return data;
}

jobject toJava(JNIEnv* env, const JavaData& data) {
    switch (data.kind) {
        case JavaData::nested: {
            jobjectArray array =
                objectArray(env, "java/lang/Object", std::vector<jobject>(data.elements.size(), nullptr));
            for (std::size_t i = 0; i < data.elements.size(); ++i) {
                jobject element = toJava(env, data.elements[i]);
                env->SetObjectArrayElement(array, static_cast<jsize>(i), element);
                env->DeleteLocalRef(element);
            }
            return array;
        }
        case JavaData::row:
            return withType(data.type, [&](auto zero) { return primitiveRow<decltype(zero)>(env, data.values); });
        case JavaData::boxed:
            return withType(data.type, [&](auto zero) {
                const JavaValue& value = data.values[0];
                using T = decltype(zero);
                return boxed<T>(env, isFloating(value) ? static_cast<T>(value.real) : static_cast<T>(value.integer));
            });
        case JavaData::text:
            return javaString(env, data.characters);
        case JavaData::object:
            return newObject(env, "java/lang/Object", "()V");
        default:
            return nullptr;
    }
}

qxClassID modelClass(const JavaData& data) {
    static const std::string letters = "ZBCSIJFD";
    constexpr qxClassID classes[] = {qxLOGICAL_CLASS, qxINT8_CLASS,  qxCHAR_CLASS,   qxINT16_CLASS,
                                     qxINT32_CLASS,   qxINT64_CLASS, qxSINGLE_CLASS, qxDOUBLE_CLASS};
    switch (data.kind) {
        case JavaData::nested:
            return data.elements.empty() ? qxUNKNOWN_CLASS : modelClass(data.elements.front());
        case JavaData::row:
        case JavaData::boxed:
            return classes[letters.find(data.type)];
        case JavaData::object:
            return qxUNKNOWN_CLASS;
        default:
            return qxCHAR_CLASS;
    }
}

ModelArray modelOf(const JavaData& real, const JavaData& imaginary, qxClassID classId, bool isComplex) {
    ModelArray model;
    model.classId = classId == qxUNKNOWN_CLASS ? modelClass(real) : classId;
    const bool isChar = model.classId == qxCHAR_CLASS;
    std::vector<std::uint32_t> extents = extentsOf(real, isChar);
    if (isComplex) {
        const auto other = extentsOf(imaginary, isChar);
        extents.resize(std::max(extents.size(), other.size()));
        for (std::size_t i = 0; i < other.size(); ++i) {
            extents[i] = std::max(extents[i], other[i]);
        }
    }
    if (extents.empty()) {
        extents = {1};
    }
    std::size_t count = 1;
    for (const std::uint32_t extent : extents) {
        count *= extent;
    }
    const bool hasImaginary = isComplex && !isChar && model.classId != qxLOGICAL_CLASS;
    model.real.resize(count);
    Placement(model.classId, extents, model.real).place(real, 0);
    if (hasImaginary) {
        model.imaginary.resize(count);
        Placement(model.classId, extents, model.imaginary).place(imaginary, 0);
    }
    model.extents = extents.size() == 1 ? std::vector<std::uint32_t>{1, extents[0]} : extents;
    return model;
}

ModelArray contentOf(const qxArray* array) {
    ModelArray content;
    content.classId = qxGetClassID(array);
    content.extents.assign(array->get_dimensions(), array->get_dimensions() + array->numberOfDimensions());
    const unsigned bytes = factsOf(content.classId).bytes;
    content.real = partContent(array->realData(), qxGetNumberOfElements(array), bytes);
    content.imaginary = partContent(array->imagData(), qxGetNumberOfElements(array), bytes);
    return content;
}

std::uint64_t modelBits(qxClassID classId, const JavaValue& value) {
    const ClassFacts facts = factsOf(classId);
    if (facts.floating) {
        return realBits(classId, value);
    }
    if (classId == qxLOGICAL_CLASS) {
        return isZero(value) ? 0 : 1;
    }
    return lowBits(isFloating(value) ? truncated(value.real, facts.intermediateBits) : value.integer, facts.bytes);
}

std::uint64_t modelBitsOfBoxed(qxClassID classId, const JavaValue& value) {
    const ClassFacts facts = factsOf(classId);
    if (facts.floating) {
        return realBits(classId, value);
    }
    if (classId == qxLOGICAL_CLASS) {
        return value.type == 'C' ? (value.integer & 0xff) != 0 : !isZero(value);
    }
    return lowBits(isFloating(value) ? javaInteger(value.real, facts.bytes == 8 ? 64 : 32) : value.integer,
                   facts.bytes);
}

JavaValue randomValue(std::mt19937& random, char type) {
    const auto pick = [&](auto lowest, auto highest) {
        return std::uniform_int_distribution<std::int64_t>(lowest, highest)(random);
    };
    if (type == 'F' || type == 'D') {
        const double special[] = {0.0,  -0.0,          std::nan(""), HUGE_VAL, -HUGE_VAL,
                                  1e20, -2147483648.5, 4294967295.0, -1.5,     0.25};
        const double value =
            pick(0, 2) == 0 ? special[pick(0, 9)]
                            : std::ldexp(static_cast<double>(pick(-100000, 100000)), static_cast<int>(pick(-10, 50)));
        return {type, 0, type == 'F' ? static_cast<double>(static_cast<float>(value)) : value};
    }
    switch (type) {
        case 'Z':
            return {type, pick(0, 1), 0};
        case 'B':
            return {type, pick(-128, 127), 0};
        case 'C':
            return {type, pick(0, 65535), 0};
        case 'S':
            return {type, pick(-32768, 32767), 0};
        case 'I':
            return {type, pick(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()), 0};
        default:
            return {type, pick(std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()), 0};
    }
}

JavaData randomData(std::mt19937& random, int depth, std::size_t longest, bool texts) {
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    // The texts of floating numbers are Java's own affair.
    const auto type = [&] { return kPrimitiveTypes[pick(texts ? 6 : 8)]; };
    const std::size_t chance = pick(10);
    if (chance == 0) {
        return JavaData::nothing();
    }
    if (chance == 1) {
        return JavaData::box(randomValue(random, type()));
    }
    if (chance == 2 && texts) {
        std::u16string characters;
        for (std::size_t i = pick(longest + 1); i > 0; --i) {
            characters.push_back(static_cast<char16_t>(randomValue(random, 'C').integer));
        }
        return JavaData::string(characters);
    }
    if (chance == 3 && !texts) {
        return JavaData::plainObject();
    }
    const std::size_t length = pick(longest + 1);
    if (depth <= 1 || chance == 4) {
        const char rowType = type();
        std::vector<JavaValue> values;
        for (std::size_t i = 0; i < length; ++i) {
            values.push_back(randomValue(random, rowType));
        }
        return JavaData::rowOf(rowType, values);
    }
    std::vector<JavaData> elements;
    for (std::size_t i = 0; i < length; ++i) {
        elements.push_back(randomData(random, depth - 1, longest, texts));
    }
    return JavaData::arrayOf(elements);
}

}  // namespace nativevrl::test
