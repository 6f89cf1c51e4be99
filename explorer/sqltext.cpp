#include "explorer/sqltext.h"

std::wstring quotedName(std::wstring_view name)
{
    std::wstring text = L"\"";
    for (const wchar_t c : name) {
        if (c == L'"')
            text += c;
        text += c;
    }
    return text + L'"';
}

std::wstring tableReference(std::wstring_view schema, std::wstring_view table)
{
    return schema.empty() ? quotedName(table) : quotedName(schema) + L"." + quotedName(table);
}

std::wstring selectAllText(std::wstring_view reference)
{
    return L"SELECT * FROM " + std::wstring(reference);
}

std::wstring selectWhereText(std::wstring_view reference, std::span<const std::wstring> columns)
{
    std::wstring text = selectAllText(reference);
    const wchar_t* joint = L" WHERE ";
    for (const std::wstring& column : columns) {
        text += joint + quotedName(column) + L"=?";
        joint = L" AND ";
    }
    return text;
}

std::wstring setNullText(std::wstring_view reference, std::wstring_view column)
{
    return L"UPDATE " + std::wstring(reference) + L" SET " + quotedName(column) +
           L" = NULL WHERE CURRENT OF CURSOR";
}

std::wstring countText(std::wstring_view reference)
{
    return L"SELECT count(*) FROM " + std::wstring(reference);
}
