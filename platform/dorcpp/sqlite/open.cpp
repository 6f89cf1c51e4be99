#include <dorcpp/sqlite/open.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

#include <sys/stat.h>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/errors.h>
#include <dorcpp/sqlite/statement.h>
#include <dorcpp/value.h>

namespace DorCPP::Sqlite {

namespace {

// The path as the details of an error hold it.
std::string shown(const Target& target)
{
    return fromClient(target.path);
}

// Refuses what is no file before the engine touches it: opening a device or a pipe has effects.
void checkPath(const Target& target)
{
    struct stat status;
    if (::stat(target.path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode))
            throw makeError(CodeCannotOpen, OviAPI::Phrase::DbDetailFolder, shown(target));
        if (!S_ISREG(status.st_mode))
            throw makeError(CodeCannotOpen, OviAPI::Phrase::DbDetailNotFile, shown(target));
        return;
    }
    if (errno != ENOENT || !target.mayCreate || target.readOnly)
        throw makeError(CodeCannotOpen,
                        fromClient(target.path + ": " + std::generic_category().message(errno)));
}

void configure(sqlite3* db, const Target& target)
{
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, target.lockTimeout);
    sqlite3_db_config(db, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
    sqlite3_db_config(db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(db, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_limit(db, SQLITE_LIMIT_SQL_LENGTH, 64 << 20);
    sqlite3_limit(db, SQLITE_LIMIT_EXPR_DEPTH, 500);
    sqlite3_limit(db, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 4096);
    sqlite3_limit(db, SQLITE_LIMIT_TRIGGER_DEPTH, 100);
    sqlite3_limit(db, SQLITE_LIMIT_VDBE_OP, 5'000'000);
    sqlite3_limit(db, SQLITE_LIMIT_WORKER_THREADS, 0);
}

void run(sqlite3* db, const char* sql)
{
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw lastError(db);
}

std::string firstText(sqlite3* db, const char* sql)
{
    const StatementPtr statement = prepareOne(db, sql, false);
    Use use(db, statement.get());
    if (!use.step())
        return {};
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(use.get(), 0));
    return text ? text : "";
}

} // namespace

Connection openFile(const Target& target)
{
    const bool inMemory = target.path.empty();
    if (!inMemory)
        checkPath(target);
    int flags = SQLITE_OPEN_NOMUTEX; // a session locks itself
    flags |= target.readOnly && !inMemory ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    if (inMemory || (target.mayCreate && !target.readOnly))
        flags |= SQLITE_OPEN_CREATE;
    // A path that begins like a flag of the engine must stay a path.
    std::string path = target.path;
    if (inMemory)
        path = ":memory:";
    else if (path[0] != '/')
        path.insert(0, "./");
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    Connection db(handle);
    if (!db)
        throw makeError(CodeNoMemory);
    if (result != SQLITE_OK)
        throw makeEngineError(codeOf(result), sqlite3_extended_errcode(db.get()),
                              shown(target) + ": " + sqlite3_errmsg(db.get()));
    configure(db.get(), target);
    run(db.get(), "PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0");
    if (target.readOnly)
        run(db.get(), "PRAGMA query_only = ON");
    run(db.get(),
        "SELECT count(*) FROM sqlite_schema LIMIT 1"); // reads the file for the first time
    if (target.verify) {
        const std::string fault = firstText(db.get(), "PRAGMA quick_check(1)");
        if (fault != "ok")
            throw makeError(CodeCorruptFile, fault);
    }
    return db;
}

bool isUtf8(sqlite3* db)
{
    return firstText(db, "PRAGMA encoding") == "UTF-8";
}

} // namespace DorCPP::Sqlite
