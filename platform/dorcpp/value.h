// Conversion of stored values into the forms of the client types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <dorcpp/driver.h>
#include <dorcpp/types.h>

namespace DorCPP {

// Writes the value in the form of the client type; length gets the bytes without the end. See
// DorCursor::getData. Of a text or blob as many bytes as the buffer can take must be held.
ValueState deliver(const Value& value, int clientType, void* buffer, size_t capacity,
                   size_t& length);

// The same for the commonest values, which lie whole in their block and are delivered Exact; false
// for all others, which deliver is for. Asked first for every cell that is read.
bool deliverPlain(const RowBlock& block, const RowBlock::Cell& cell, int clientType, void* buffer,
                  size_t capacity, size_t& length);

// Gives a column without a declared type the type of its first value.
void typeFromValue(ColumnInfo& column, const Value& value);

// The text of a number, exact both ways: "5", "2.5", "1.0", "1e+300".
std::string numberText(int64_t value);
std::string numberText(double value);

// ISO text "yyyy-mm-dd[ hh:mi[:ss[.f]]]" (or 'T' between) to microseconds since 1970. Cut when the
// fraction has more than six digits, Mismatch for anything else, a zone included.
ValueState dateFromText(std::string_view text, int64_t& micros);
// The ISO text of a date: "yyyy-mm-dd hh:mi:ss[.f]".
std::string dateText(int64_t micros);

// Narrow text of the client in UTF-8; already UTF-8 it stays byte for byte, valid or not.
std::string fromClient(std::string_view text);

// A parameter from bytes in the form of a client type; throws DorX (CodeBadBind).
Parameter parameterFrom(int clientType, const void* data, size_t length);

} // namespace DorCPP
