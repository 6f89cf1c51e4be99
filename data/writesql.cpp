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
    for (size_t at = text.find(quote); at != text.npos; at = text.find(quote)) {
        quoted.append(text.substr(0, at + 1)).append(1, quote);
        text.remove_prefix(at + 1);
    }
    return quoted.append(text) += quote;
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
    text.reserve(text.size() + names.size() + values.size() + 16);
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
