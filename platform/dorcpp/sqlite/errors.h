// Errors of the embedded engine as error records.
#pragma once

#include <span>

#include <dorcpp/dorx.h>
#include <sqlite3.h>

namespace DorCPP::Sqlite {

// A result code of the engine, primary or extended, and the DBMS code it becomes.
struct ErrorRow {
    int native;
    int code;
};
// The table; an extended code that is not in it goes by its primary code (the low eight bits).
std::span<const ErrorRow> errorTable();

// The DBMS code of a result code; CodeOther when it is not in the table.
int codeOf(int native);

// The error that a call on the connection has just reported.
DorX lastError(sqlite3* db);
DorX errorFor(int native, const char* message);

} // namespace DorCPP::Sqlite
