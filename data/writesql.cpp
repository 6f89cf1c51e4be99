#include "data/writesql.h"

namespace {

std::wstring tableText(const TableColumnName& name)
{
    return inQuotes(name.owner, L'"') + L'.' + inQuotes(name.table, L'"');
}

} // namespace

std::wstring inQuotes(std::wstring_view text, wchar_t quote)
{
    std::wstring quoted(1, quote);
    quoted.reserve(text.size() + 2);
    for (const wchar_t c : text) {
        quoted += c;
        if (c == quote)
            quoted += c;
    }
    return quoted += quote;
}

std::wstring updateText(const TableColumnName& name, std::wstring_view value)
{
    std::wstring text = L"UPDATE " + tableText(name) + L" SET " + inQuotes(name.column, L'"');
    return text.append(L"=").append(value).append(L" WHERE CURRENT OF CURSOR;");
}

std::wstring insertText(const TableColumnName& table, std::wstring_view names,
                        std::wstring_view values)
{
    std::wstring text = L"insert into " + tableText(table) + L" (";
    return text.append(names).append(L") values (").append(values).append(L")");
}

std::wstring deleteRowText(const TableColumnName& table)
{
    return L"DELETE FROM " + tableText(table) +
           L"  WHERE CURRENT OF CURSOR;"; // Kept: two blanks before WHERE
}

std::wstring deleteAllText(const TableColumnName& table)
{
    return L"delete from " + tableText(table);
}
