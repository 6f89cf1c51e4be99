// The SQL texts of the explorer.
#pragma once

#include <string>
#include <string_view>

// The name in double quotes, quotes inside it doubled. The empty name gives "".
std::wstring quotedName(std::wstring_view name);

// How a statement names a table: "schema"."table", the table alone without a schema.
std::wstring tableReference(std::wstring_view schema, std::wstring_view table);

// Every column and row of a table or view, named by its reference.
std::wstring selectAllText(std::wstring_view reference);
// One row with the number of rows.
std::wstring countText(std::wstring_view reference);
