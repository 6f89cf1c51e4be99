// Opening a database file.
#pragma once

#include <memory>

#include <dorcpp/driver.h>
#include <sqlite3.h>

namespace DorCPP::Sqlite {

struct Close {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
using Connection = std::unique_ptr<sqlite3, Close>;

// Opens the database and reads its header. Every file may come from a stranger: the engine loads no
// extension, trusts no function or view of the schema, maps nothing into memory and has limits that
// keep a hostile statement or pattern from running for ever. Throws DorX.
Connection openFile(const Target& target);

// Whether the database keeps its text as UTF-8.
bool isUtf8(sqlite3* db);

} // namespace DorCPP::Sqlite
