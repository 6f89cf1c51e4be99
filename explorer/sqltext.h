// The SQL texts of the explorer.
#pragma once

#include <span>
#include <string>
#include <string_view>

// The name in double quotes, quotes inside it doubled. The empty name gives "".
std::wstring quotedName(std::wstring_view name);

// How a statement names a table: "schema"."table", the table alone without a schema.
std::wstring tableReference(std::wstring_view schema, std::wstring_view table);

// Every column and row of a table or view, named by its reference.
std::wstring selectAllText(std::wstring_view reference);
// Its rows in which these columns have the values of as many parameters.
std::wstring selectWhereText(std::wstring_view reference, std::span<const std::wstring> columns);
// Takes the value of one column away from the row that a cursor stands on.
std::wstring setNullText(std::wstring_view reference, std::wstring_view column);
// One row with the number of rows.
std::wstring countText(std::wstring_view reference);
