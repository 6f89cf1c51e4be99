// A small reader of JSON documents.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// One value with everything inside it. Numbers, true, false and null keep their text. At most 64
// levels deep.
class Json {
public:
    // Nothing when the text is not one JSON value.
    static std::optional<Json> parse(std::string_view text);

    // The member of an object; null when this is no object or has no such member.
    const Json* member(std::string_view name) const;
    // The string member of an object in UTF-8; empty when there is none.
    std::string text(std::string_view name) const;
    // The elements of an array, null when this is none.
    const std::vector<Json>* array() const { return std::get_if<std::vector<Json>>(&m_value); }

private:
    friend class JsonParser;
    using Object = std::vector<std::pair<std::string, Json>>;
    struct Bare {
        std::string text;
    };

    std::variant<Bare, std::string, std::vector<Json>, Object> m_value;
};
