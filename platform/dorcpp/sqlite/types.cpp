#include <dorcpp/sqlite/types.h>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <string>

#include <dorcpp/types.h>

namespace DorCPP::Sqlite {

namespace {

constexpr int maxLength = 65532;
constexpr int defaultCharacters = 1000;
constexpr int extfileLength = 2048;

// A declared type: its words in capitals, parted by single blanks, and the numbers in parentheses.
struct Declared {
    std::string name;
    int first = 0; // 0: not given
    int second = 0;

    explicit Declared(std::string_view text)
    {
        const size_t open = text.find('(');
        for (const char c : text.substr(0, open)) {
            if (c == ' ' || c == '\t' || c == '\n') {
                if (!name.empty() && name.back() != ' ')
                    name += ' ';
            } else {
                name += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            }
        }
        while (!name.empty() && name.back() == ' ')
            name.pop_back();
        if (open != std::string_view::npos) {
            const size_t comma = text.find(',', open);
            first = number(text.substr(open + 1));
            second = comma == std::string_view::npos ? 0 : number(text.substr(comma + 1));
        }
    }
    static int number(std::string_view text)
    {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
        int value = 0;
        const auto error = std::from_chars(text.data(), text.data() + text.size(), value).ec;
        if (error == std::errc::result_out_of_range)
            return maxLength;
        return std::clamp(value, 0, maxLength);
    }
    bool is(std::initializer_list<std::string_view> names) const
    {
        return std::find(names.begin(), names.end(), name) != names.end();
    }
    bool has(std::initializer_list<std::string_view> parts) const
    {
        return std::any_of(parts.begin(), parts.end(), [&](std::string_view part) {
            return name.find(part) != std::string::npos;
        });
    }
    int textLength() const
    {
        const int characters = first > 0 ? first : defaultCharacters;
        return std::min(characters, maxLength / 4) * 4;
    }
};

// The types that are known by their whole name.
ColumnType named(const Declared& d)
{
    if (d.is({"SMALLINT", "TINYINT", "INT2"}))
        return {TypeSmallint, 2};
    if (d.is({"MEDIUMINT", "INT4"}))
        return {TypeInteger, 4};
    if (d.is({"BOOLEAN", "BOOL"}))
        return {TypeBoolean, 1};
    if (d.is({"DATE", "DATETIME"}) || d.name.starts_with("TIMESTAMP"))
        return {TypeDate, 8};
    if (d.is({"DECIMAL", "DEC", "NUMERIC", "NUMBER"})) // sign, point, end and an exponent
        return {TypeDecimal, std::min(std::max(d.first, 30) + 10, maxLength)};
    if (d.is({"BINARY", "VARBINARY", "BINARY VARYING"}))
        return d.first > 0 ? ColumnType{TypeVarbyte, d.first} : ColumnType{TypeBlob, 0};
    if (d.is({"NCHAR", "NATIVE CHARACTER", "NATIONAL CHARACTER", "NATIONAL CHAR"}))
        return {TypeNchar, d.textLength()};
    if (d.is({"NVARCHAR", "NCHAR VARYING", "NATIONAL VARCHAR", "NATIONAL CHARACTER VARYING"}))
        return {TypeNvarchar, d.textLength()};
    if (d.is({"CHAR", "CHARACTER"}) && d.first > 0)
        return {TypeChar, d.textLength()};
    if (d.is({"EXTFILE"}))
        return {TypeExtfile, extfileLength};
    return {};
}

} // namespace

ColumnType columnType(const char* declared)
{
    if (!declared || !*declared)
        return {};
    const Declared d(declared);
    if (const ColumnType known = named(d); known.type != 0)
        return known;
    if (d.has({"INT"})) // the engine's own rules, in its order
        return {TypeBigint, 8};
    if (d.has({"CHAR", "CLOB", "TEXT"}))
        return {TypeVarchar, d.textLength()};
    if (d.has({"BLOB"}))
        return {TypeBlob, 0};
    if (d.has({"REAL", "FLOA", "DOUB"}))
        return {TypeDouble, 8};
    return {};
}

bool holdsReals(const char* declared)
{
    std::string name(declared ? declared : "");
    for (char& c : name)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
    for (const char* stronger : {"INT", "CHAR", "CLOB", "TEXT", "BLOB"}) {
        if (has(stronger))
            return false;
    }
    return has("REAL") || has("FLOA") || has("DOUB");
}

} // namespace DorCPP::Sqlite
