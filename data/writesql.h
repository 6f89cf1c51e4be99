// The texts of the statements by which datasets write, as the database client takes them.
//
// Names stand in double quotes, with every double quote in them doubled. Values are texts of values
// already: a literal, NULL, DEFAULT, Hex('..') or EXTFILE('..').
#pragma once

#include <string>
#include <string_view>

#include "app/export.h"

// Where a value lies.
struct TableColumnName {
    std::wstring owner;
    std::wstring table;
    std::wstring column;

    bool hasTable() const { return !owner.empty() && !table.empty(); }
    bool isComplete() const { return hasTable() && !column.empty(); }
};

// A name or the text of a value between its quotes, which are doubled inside.
OVIEXT_API std::wstring inQuotes(std::wstring_view text, wchar_t quote);

// Changes one column of the row that the cursor stands on.
OVIEXT_API std::wstring updateText(const TableColumnName& name, std::wstring_view value);
// names, values: with commas between them.
OVIEXT_API std::wstring insertText(const TableColumnName& table, std::wstring_view names,
                                   std::wstring_view values);
// Deletes the row that the cursor stands on.
OVIEXT_API std::wstring deleteRowText(const TableColumnName& table);
// Deletes every row of the table.
OVIEXT_API std::wstring deleteAllText(const TableColumnName& table);
