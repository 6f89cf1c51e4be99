#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <sqlite3.h>

#include "rawengine.h"

namespace {

class RawSqlite final : public RawEngine {
public:
    explicit RawSqlite(const std::string& path)
        : m_path(path)
    {
        check(sqlite3_open_v2(path.c_str(), &m_db,
                              SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                              nullptr));
    }
    ~RawSqlite() override { sqlite3_close(m_db); }
    RawSqlite(const RawSqlite&) = delete;
    RawSqlite& operator=(const RawSqlite&) = delete;

    void makeTable(int64_t rows) override
    {
        execute("PRAGMA synchronous = OFF;"
                "CREATE TABLE item(id INTEGER PRIMARY KEY, qty INTEGER, big BIGINT, price DOUBLE,"
                " code VARCHAR(8), name VARCHAR(60), made TIMESTAMP, pic VARBINARY(16));"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                std::to_string(rows) +
                ") INSERT INTO item SELECT i, i * 7919 % 100000,"
                " i * 1103515245 % 2147483647 * 4294967311, (i * 15485863 % 10000000) / 100.0,"
                " substr(hex(randomblob(4)), 1, 8), hex(randomblob(10 + i % 20)),"
                " strftime('%Y-%m-%d %H:%M:%S', 946684800 + i * 61, 'unixepoch'),"
                " CASE WHEN i % 4 THEN randomblob(16) END FROM n;"
                "PRAGMA synchronous = FULL");
    }
    uint64_t readAll(const std::string& sql) override
    {
        sqlite3_stmt* s = nullptr;
        check(sqlite3_prepare_v2(m_db, sql.c_str(), -1, &s, nullptr));
        const int columns = sqlite3_column_count(s);
        uint64_t sum = 0;
        char cell[4096];
        while (sqlite3_step(s) == SQLITE_ROW) {
            for (int i = 0; i < columns; ++i)
                sum += copyCell(s, i, cell, sizeof cell);
        }
        check(sqlite3_finalize(s));
        return sum;
    }
    void updateByKey(int64_t count) override
    {
        sqlite3_stmt* s = nullptr;
        check(sqlite3_prepare_v2(m_db, "UPDATE item SET qty = ? WHERE id = ?", -1, &s, nullptr));
        for (int64_t id = 1; id <= count; ++id) {
            sqlite3_bind_int64(s, 1, ++m_updates);
            sqlite3_bind_int64(s, 2, id);
            sqlite3_step(s);
            check(sqlite3_reset(s));
        }
        sqlite3_finalize(s);
    }
    void insertRows(int64_t first, int64_t count) override
    {
        sqlite3_stmt* s = nullptr;
        check(sqlite3_prepare_v2(m_db,
                                 "INSERT INTO item(id, qty, big, price, code, name, made)"
                                 " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
                                 -1, &s, nullptr));
        for (int64_t id = first; id < first + count; ++id) {
            sqlite3_bind_int64(s, 1, id);
            sqlite3_bind_int64(s, 2, 5);
            sqlite3_bind_int64(s, 3, id);
            sqlite3_bind_double(s, 4, 2.5);
            sqlite3_bind_text(s, 5, "code", -1, SQLITE_STATIC);
            sqlite3_bind_text(s, 6, "a name of some length", -1, SQLITE_STATIC);
            sqlite3_bind_text(s, 7, "2005-03-04 06:07:08", -1, SQLITE_STATIC);
            sqlite3_step(s);
            check(sqlite3_reset(s));
        }
        sqlite3_finalize(s);
    }
    void execute(const std::string& sql) override
    {
        check(sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr));
    }

    const char* owner() const override { return "main"; }
    std::string database() const override { return m_path; }
    std::string peerArguments() const override { return "QSQLITE '" + m_path + "'"; }

private:
    static uint64_t copyCell(sqlite3_stmt* s, int i, char* cell, size_t size)
    {
        switch (sqlite3_column_type(s, i)) {
        case SQLITE_INTEGER:
            return static_cast<uint64_t>(sqlite3_column_int64(s, i));
        case SQLITE_FLOAT:
            return static_cast<uint64_t>(sqlite3_column_double(s, i));
        case SQLITE_NULL:
            return 0;
        default: {
            const void* bytes = sqlite3_column_blob(s, i);
            const auto n = std::min(static_cast<size_t>(sqlite3_column_bytes(s, i)), size);
            std::memcpy(cell, bytes, n);
            return static_cast<unsigned char>(cell[0]) + n;
        }
        }
    }
    void check(int result)
    {
        if (result == SQLITE_OK)
            return;
        std::fprintf(stderr, "%s\n", sqlite3_errmsg(m_db));
        std::exit(2);
    }

    std::string m_path;
    sqlite3* m_db = nullptr;
};

} // namespace

std::unique_ptr<RawEngine> rawSqlite(const std::string& path)
{
    return std::make_unique<RawSqlite>(path);
}
