// Translation of what the engines do not know: Hex('..'), EXTFILE('..'), DEFAULT as a value, and
// dates as the client writes them.
//
// Statements that begin with INSERT, UPDATE or DELETE are translated, by tokens:
//
//     Hex('..')        by the type of its column: a text column gets the text that the digits dump
//     as
//                      UTF-16 (low byte first), any other a literal of bytes
//     EXTFILE('..')    the text literal in it
//     DEFAULT          on SQLite: in VALUES the column is left out, in SET the column's default
//                      expression takes its place
//     'mm/dd/yyyy[:hh:mi:ss[.f]]'   as the value of a DATE column: 'yyyy-mm-dd[ hh:mi:ss[.f]]'
//
// The column of a value is the one it is inserted into, assigned to or compared with (name =
// value); inside a subquery there is none. Strings, quoted names, comments and parameters stay as
// they are.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/sqltext.h>

namespace DorCPP {

using TableColumns = std::vector<TableColumn>;

// Gives the columns of a table; the names are as the engine looks them up, the schema may be empty.
using ColumnLookup = std::function<std::shared_ptr<const TableColumns>(const std::string& schema,
                                                                       const std::string& table)>;

// The translated statement without semicolons at its end, or nothing when it has to reach the
// engine as it is. Asks for columns only when there is something to translate. Throws DorX
// (CodeSqlText) for digits that are none, a date that does not exist, and rows that cannot leave
// out the same columns.
std::optional<std::string> translated(const SqlText& text, const ColumnLookup& columnsOf);

// The same for the values that were taken out of the statement. False where the statement must be
// translated as a text: it has to be refused.
bool translateValues(BareText& bare, const SqlText& text, const ColumnLookup& columnsOf);

} // namespace DorCPP
