#include "explorer/json.h"

#include <cstdint>

#include <oviapi/text.h>

class JsonParser {
public:
    explicit JsonParser(std::string_view text)
        : m_text(text)
    {
    }

    bool document(Json& value)
    {
        if (!this->value(value, 0))
            return false;
        skipSpace();
        return m_at == m_text.size();
    }

private:
    static constexpr int deepest = 64;

    void skipSpace()
    {
        while (m_at < m_text.size() &&
               std::string_view(" \t\r\n").find(m_text[m_at]) != std::string_view::npos)
            ++m_at;
    }
    bool take(char c)
    {
        skipSpace();
        if (m_at == m_text.size() || m_text[m_at] != c)
            return false;
        ++m_at;
        return true;
    }

    bool value(Json& out, int depth)
    {
        if (depth > deepest)
            return false;
        if (take('{'))
            return object(out.m_value.emplace<Json::Object>(), depth);
        if (take('['))
            return array(out.m_value.emplace<std::vector<Json>>(), depth);
        if (take('"'))
            return string(out.m_value.emplace<std::string>());
        return bare(out.m_value.emplace<Json::Bare>().text);
    }

    bool object(Json::Object& members, int depth)
    {
        if (take('}'))
            return true;
        do {
            auto& [name, content] = members.emplace_back();
            if (!take('"') || !string(name) || !take(':') || !value(content, depth + 1))
                return false;
        } while (take(','));
        return take('}');
    }

    bool array(std::vector<Json>& elements, int depth)
    {
        if (take(']'))
            return true;
        do {
            if (!value(elements.emplace_back(), depth + 1))
                return false;
        } while (take(','));
        return take(']');
    }

    bool bare(std::string& text)
    {
        while (m_at < m_text.size() && (m_text[m_at] == '-' || m_text[m_at] == '+' ||
                                        m_text[m_at] == '.' || isLetterOrDigit(m_text[m_at])))
            text += m_text[m_at++];
        return !text.empty();
    }
    static bool isLetterOrDigit(char c)
    {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    }

    bool string(std::string& text)
    {
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"')
                return true;
            if (c != '\\')
                text += c;
            else if (!escape(text))
                return false;
        }
        return false;
    }

    bool escape(std::string& text)
    {
        if (m_at == m_text.size())
            return false;
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const char c = m_text[m_at++];
        const size_t known = letters.find(c);
        if (known != std::string_view::npos) {
            text += meanings[known];
            return true;
        }
        return c == 'u' && unicodeEscape(text);
    }

    // One or, for a surrogate pair, two escapes; the first "\u" is taken already.
    bool unicodeEscape(std::string& text)
    {
        std::u16string units;
        do {
            char16_t unit = 0;
            if (!hexUnit(unit))
                return false;
            units += unit;
            if (unit < 0xD800 || unit > 0xDBFF || m_text.substr(m_at, 2) != "\\u")
                break;
            m_at += 2;
        } while (units.size() < 2);
        text += OviAPI::wideToUtf8(OviAPI::utf16ToWide(units));
        return true;
    }
    bool hexUnit(char16_t& unit)
    {
        if (m_text.size() - m_at < 4)
            return false;
        for (int i = 0; i < 4; ++i) {
            constexpr std::string_view hex = "0123456789abcdef0123456789ABCDEF";
            const size_t digit = hex.find(m_text[m_at++]);
            if (digit == std::string_view::npos)
                return false;
            unit = static_cast<char16_t>(unit * size_t{16} + digit % 16);
        }
        return true;
    }

    std::string_view m_text;
    size_t m_at = 0;
};

std::optional<Json> Json::parse(std::string_view text)
{
    Json value;
    if (!JsonParser(text).document(value))
        return std::nullopt;
    return value;
}

const Json* Json::member(std::string_view name) const
{
    const auto* members = std::get_if<Object>(&m_value);
    if (!members)
        return nullptr;
    for (const auto& [key, content] : *members) {
        if (key == name)
            return &content;
    }
    return nullptr;
}

std::string Json::text(std::string_view name) const
{
    const Json* content = member(name);
    const auto* string = content ? std::get_if<std::string>(&content->m_value) : nullptr;
    return string ? *string : std::string();
}
