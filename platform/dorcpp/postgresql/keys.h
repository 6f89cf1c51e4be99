// How statements for the server name rows of a keyed answer.
#pragma once

#include <string>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/postgresql/statement.h>

namespace DorCPP::Postgresql {

// The keys of tables without a unique key: a place of the table, and the version of the row that
// was there, for the place alone may be another row's by now.
const std::vector<std::string>& placeKey();

void setKey(Values& values, int firstNumber, RowKeys& keys, size_t row);

// The keys of rows as arrays, one parameter for each key column.
void setKeyArrays(Values& values, RowKeys& keys, size_t first, size_t count);

// The answer's rows without a condition.
std::string plainText(const KeyedText& text);

// What is read of a long value.
struct LongValue {
    std::string head;   // as much as blocks keep
    std::string length; // in bytes; null where the head is all of it
};
// value: the column.
LongValue longValue(std::string value, Oid type);

} // namespace DorCPP::Postgresql
