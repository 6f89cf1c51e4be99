// Translates any text for both engines. What comes out must not change when it is translated again,
// and every token that is no literal, no comma and no word of the translation must still be there.
#include <dorcpp/translate.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <dorcpp/dorx.h>
#include <dorcpp/monitor.h>
#include <dorcpp/positioned.h>
#include <dorcpp/types.h>

namespace {

using namespace DorCPP;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

std::shared_ptr<const TableColumns> lookUp(const std::string&, const std::string& table)
{
    static const auto columns =
        std::make_shared<const TableColumns>(TableColumns{{"a", TypeBigint, "7"},
                                                          {"b", TypeVarbyte, ""},
                                                          {"u", TypeNvarchar, "'x'"},
                                                          {"d", TypeDate, ""}});
    static const auto none = std::make_shared<const TableColumns>();
    return table == "t" ? columns : none;
}

std::optional<std::string> translation(const SqlText& text)
{
    try {
        return translated(text, lookUp);
    } catch (const DorX& x) {
        require(x.code() == CodeSqlText);
        return std::nullopt;
    }
}

size_t parameters(const SqlText& text)
{
    size_t count = 0;
    for (const SqlToken& token : text.tokens())
        count += token.kind == SqlToken::Parameter;
    return count;
}

void check(std::string_view sql, SqlDialect dialect)
{
    const SqlText text(sql, dialect);
    require(text.source() == sql);
    try {
        if (isPositioned(text)) {
            const PositionedText positioned = readPositioned(text);
            require(!isPositioned(SqlText(positioned.textFor(positioned.target), dialect)));
        }
    } catch (const DorX& x) {
        require(x.code() == CodeSqlText || x.code() == CodeSeveralStatements);
    }
    const std::optional<std::string> once = translation(text);
    if (!once)
        return;
    const SqlText after(*once, dialect);
    require(after.is(0, "insert") || after.is(0, "update") || after.is(0, "delete"));
    require(parameters(after) == parameters(text));
    require(translation(after).value_or(*once) == *once);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view sql(reinterpret_cast<const char*>(data), size);
    check(sql, SqlDialect::Sqlite);
    check(sql, SqlDialect::Postgresql);
    const std::string masked = maskedText(sql, "SQLite");
    require(maskedText(masked, "SQLite").size() <= masked.size());
    return 0;
}
