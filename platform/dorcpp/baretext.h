// Values that stand in a statement as literals, taken out of its text.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <dorcpp/parameter.h>
#include <dorcpp/sqltext.h>

namespace DorCPP {

// A statement with parameters in the place of its literals: the same text for all statements that
// differ in nothing but these values, so that the engine has to read it only once. Nothing of a
// value is left in the text.
struct BareText {
    std::string text;
    Parameters values;           // numbered from 1 in the order of the text
    size_t table = 0;            // the token of the statement that its target begins with
    std::vector<size_t> columns; // for each value, the token that names its column
};

// The value of a real number's digits as the engine reads them in a statement.
using RealReader = std::function<double(const std::string& digits)>;

// Takes the literals out of
//
//     INSERT INTO name (column, ..) VALUES (value, ..)
//     UPDATE name SET column = value, ..
//
// where every value is a string, a decimal number with or without a minus, x'..', NULL, TRUE or
// FALSE and nothing else. Such a value only passes through to its column: an engine that gives a
// parameter the type of its value stores and refuses it as it does the literal, and shows the same
// to triggers and constraints. TRUE and FALSE stay in the text, for they may be names of columns.
//
// Nothing for any other statement, for one that an engine might read in another way (with comments,
// unusual blanks, or a number with a tail), and for long ones, which would fill a cache. What is
// wrong in the statement is wrong in the bare text as well, at another place of the text.
// Nothing either where a real number is out of range. The others become the nearest value.
std::optional<BareText> withoutLiterals(const SqlText& sql);

// Takes out only those real numbers that the engine does not read as the nearest value, wherever
// they stand, so that what is stored is what was written. Nothing where it reads all of them so,
// and for a statement that has parameters. `table` and `columns` stay empty.
std::optional<BareText> withExactReals(const SqlText& sql, const RealReader& realOf);

} // namespace DorCPP
