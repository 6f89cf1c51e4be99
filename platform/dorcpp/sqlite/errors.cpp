#include <dorcpp/sqlite/errors.h>

#include <algorithm>

#include <dorcpp/errors.h>

namespace DorCPP::Sqlite {

namespace {

constexpr ErrorRow table[] = {
    {SQLITE_ERROR, CodeSqlText},
    {SQLITE_INTERNAL, CodeSessionLost},
    {SQLITE_PERM, CodeRefused},
    {SQLITE_ABORT, CodeUndone},
    {SQLITE_BUSY, CodeLocked},
    {SQLITE_BUSY_SNAPSHOT, CodeDeadlock},
    {SQLITE_LOCKED, CodeLocked},
    {SQLITE_NOMEM, CodeNoMemory},
    {SQLITE_READONLY, CodeRefused},
    {SQLITE_READONLY_DBMOVED, CodeSessionLost},
    {SQLITE_INTERRUPT, CodeCancelled},
    {SQLITE_IOERR, CodeInputOutput},
    {SQLITE_IOERR_NOMEM, CodeNoMemory},
    {SQLITE_IOERR_CORRUPTFS, CodeCorruptFile},
    {SQLITE_IOERR_DATA, CodeCorruptFile},
    {SQLITE_CORRUPT, CodeCorruptFile},
    {SQLITE_NOTFOUND, CodeSqlText},
    {SQLITE_FULL, CodeDiskFull},
    {SQLITE_CANTOPEN, CodeCannotOpen},
    {SQLITE_PROTOCOL, CodeLocked},
    {SQLITE_SCHEMA, CodeStructureChanged},
    {SQLITE_TOOBIG, CodeTooBig},
    {SQLITE_CONSTRAINT, CodeRefused},
    {SQLITE_MISMATCH, CodeRefused},
    {SQLITE_MISUSE, CodeBadCall},
    {SQLITE_NOLFS, CodeInputOutput},
    {SQLITE_AUTH, CodeRefused},
    {SQLITE_FORMAT, CodeCorruptFile},
    {SQLITE_RANGE, CodeBadBind},
    {SQLITE_NOTADB, CodeCorruptFile},
};

} // namespace

std::span<const ErrorRow> errorTable()
{
    return table;
}

int codeOf(int native)
{
    for (const int wanted : {native, native & 0xFF}) {
        const auto* row = std::find_if(std::begin(table), std::end(table),
                                       [&](const ErrorRow& r) { return r.native == wanted; });
        if (row != std::end(table))
            return row->code;
    }
    return CodeOther;
}

DorX errorFor(int native, const char* message)
{
    return makeEngineError(codeOf(native), native, message ? message : sqlite3_errstr(native));
}

DorX lastError(sqlite3* db)
{
    DorX x = errorFor(sqlite3_extended_errcode(db), sqlite3_errmsg(db));
    if (const int offset = sqlite3_error_offset(db); offset >= 0)
        x.setPosition(offset + 1);
    return x;
}

} // namespace DorCPP::Sqlite
