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

std::wstring selectAllText(std::wstring_view table)
{
    return L"SELECT * FROM " + quotedName(table);
}

std::wstring countText(std::wstring_view table)
{
    return L"SELECT count(*) FROM " + quotedName(table);
}

std::wstring catalogText()
{
    return L"SELECT name, type FROM sqlite_master WHERE type IN ('table', 'view') "
           L"AND substr(name, 1, 7) <> 'sqlite_' ORDER BY type, lower(name), name";
}
