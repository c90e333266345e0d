#include "vrlkrt/archive/jsonvalue.h"

#include "vrlkrt/archive/archivefailure.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

namespace vrlkrt {
namespace {

using Json = nlohmann::json;

/// Takes the values of a text as the parser meets them.
class JsonBuilder : public nlohmann::json_sax<Json> {
public:
    explicit JsonBuilder(std::size_t keptDepth) : keptDepth_(keptDepth) {}

    JsonValue take() { return std::move(top_); }

    bool null() override { return addScalar(nullptr); }
    bool boolean(bool value) override { return addScalar(value); }
    bool number_integer(std::int64_t value) override { return addScalar(value); }
    bool number_unsigned(std::uint64_t value) override { return addScalar(value); }
    bool number_float(double value, const std::string&) override { return addScalar(value); }
    bool string(std::string& value) override { return addScalar(std::move(value)); }
    /// Only the binary formats have such values.
    bool binary(Json::binary_t&) override { return false; }

    bool start_object(std::size_t) override {
        names_.emplace_back();
        return open(JsonValue::Kind::object);
    }

    bool key(std::string& name) override {
        if (!names_.back().insert(name).second) {
            failManifest("the member '" + name + "' is there twice");
        }
        name_ = std::move(name);
        return true;
    }

    bool end_object() override {
        names_.pop_back();
        if (JsonValue* object = open_.back()) {
            std::sort(object->members.begin(), object->members.end(),
                      [](const auto& one, const auto& other) { return one.name < other.name; });
        }
        return end_array();
    }

    bool start_array(std::size_t) override { return open(JsonValue::Kind::array); }

    bool end_array() override {
        open_.pop_back();
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const Json::exception& error) override {
        const std::string what = error.what();
        const std::size_t tagEnd = what.find("] ");
        failManifest(tagEnd == std::string::npos ? what : what.substr(tagEnd + 2));
    }

private:
    /// The new value at the place that is reached; null where values are not kept.
    JsonValue* add(JsonValue value) {
        if (open_.empty()) {
            top_ = std::move(value);
            return &top_;
        }
        JsonValue* around = open_.back();
        if (around == nullptr) {
            return nullptr;
        }
        const bool isNamed = around->kind == JsonValue::Kind::object;
        around->members.push_back({isNamed ? std::move(name_) : std::string(), std::move(value)});
        return &around->members.back().value;
    }

    template <typename Scalar>
    bool addScalar(Scalar&& scalar) {
        JsonValue value;
        value.scalar = std::forward<Scalar>(scalar);
        add(std::move(value));
        return true;
    }

    bool open(JsonValue::Kind kind) {
        JsonValue value;
        value.kind = kind;
        JsonValue* added = add(std::move(value));
        open_.push_back(open_.size() < keptDepth_ ? added : nullptr);
        return true;
    }

    std::size_t keptDepth_;
    JsonValue top_;
    std::vector<JsonValue*> open_;              ///< around the place, outermost first; null where members are not kept
    std::vector<std::set<std::string>> names_;  ///< members so far of the objects among them
    std::string name_;                          ///< of the member that comes next
};

}  // namespace

const char* JsonValue::typeName() const {
    return kind == Kind::scalar ? scalar.type_name() : kind == Kind::array ? "array" : "object";
}

const JsonValue* JsonValue::find(std::string_view name) const {
    const auto found = std::lower_bound(members.begin(), members.end(), name,
                                        [](const Member& member, std::string_view text) { return member.name < text; });
    return found == members.end() || found->name != name ? nullptr : &found->value;
}

std::string JsonValue::shown() const {
    return kind == Kind::scalar ? scalar.dump(-1, ' ', true, Json::error_handler_t::replace) : typeName();
}

JsonValue parseJson(std::string_view text, std::size_t keptDepth) {
    // Either ends or starts the text for one reader and not for another.
    if (text.find('\0') != std::string_view::npos || text.substr(0, 3) == "\xEF\xBB\xBF") {
        failManifest("it has a NUL character or a byte order mark");
    }
    JsonBuilder builder(keptDepth);
    Json::sax_parse(text.begin(), text.end(), &builder);
    JsonValue value = builder.take();
    if (value.kind != JsonValue::Kind::object) {
        failManifest(std::string("the top must be an object, not ") + value.typeName());
    }
    return value;
}

}  // namespace vrlkrt
