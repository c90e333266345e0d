#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vrlkrt {

/// A value of a JSON text. A plain value: other than nlohmann::json with its arrays and objects, it ends without asking
/// for memory, so one that memory runs out for may be thrown away half made.
struct JsonValue {
    enum class Kind { scalar, array, object };
    struct Member;

    Kind kind = Kind::scalar;
    nlohmann::json scalar;        ///< what is neither an array nor an object
    std::vector<Member> members;  ///< of an object, by their names; of an array, under empty names

    const char* typeName() const;
    /// The member of an object; null when there is none.
    const JsonValue* find(std::string_view name) const;
    /// As an error shows it. Arrays and objects go by their kind: their text has no bound, and nor has its nesting.
    std::string shown() const;
};

struct JsonValue::Member {
    std::string name;
    JsonValue value;
};

/// Reads a JSON text whose top is an object. Arrays and objects that lie deeper than `keptDepth` (1 keeps the top
/// alone) are there without their members. Throws vrlBaseException: with line and column for what is no JSON, for a
/// member that is there twice, at any depth, of which readers take one or the other, and for a text that they could
/// begin or end at different places.
[[nodiscard]] JsonValue parseJson(std::string_view text, std::size_t keptDepth);

}  // namespace vrlkrt
