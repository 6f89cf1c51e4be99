// Inserting rows through a prepared statement.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include <dorcpp/cursor.h>
#include <dorcpp/statement.h>

#include "explorer/calendar.h"

// Values are given from the first parameter to the last and then stored. Owns the statement; points
// to the cursor. Everything throws DorX.
class RowWriter {
public:
    RowWriter(const DorCPP::DorConnect& connection, DorCPP::DorCursor& cursor, const char* sql);

    RowWriter& integer(std::optional<int64_t> value);
    RowWriter& real(std::optional<double> value);
    RowWriter& boolean(bool value);
    RowWriter& date(const std::optional<CalendarTime>& value);
    // UTF-8; bytes that are none become replacement characters. Empty text is NULL.
    RowWriter& text(std::string_view utf8);
    // A number in plain decimal; empty text is NULL.
    RowWriter& decimal(std::string_view digits);
    RowWriter& bytes(std::string_view value);
    // Executes the statement and starts over with the first parameter.
    void store();

private:
    RowWriter& bind(int type, std::string bytes);
    RowWriter& null(int type);

    DorCPP::DorCursor& m_cursor;
    DorCPP::DorStatement m_statement;
    DorCPP::BindMap m_binds;
    std::deque<std::string> m_values; // what the binds point to
    int m_parameter = 0;
};
