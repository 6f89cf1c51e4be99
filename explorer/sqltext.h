// The SQL texts of the explorer.
#pragma once

#include <string>
#include <string_view>

// The name in double quotes, quotes inside it doubled. The empty name gives "".
std::wstring quotedName(std::wstring_view name);

// Every column and row of a table or view.
std::wstring selectAllText(std::wstring_view table);
// One row with the number of rows.
std::wstring countText(std::wstring_view table);
// Rows of name and kind ("table" or "view"): tables first, then views, each by name. Tables of the
// engine itself are left out.
std::wstring catalogText();
