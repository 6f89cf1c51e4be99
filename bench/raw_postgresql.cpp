#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <endian.h>
#include <libpq-fe.h>

#include "rawengine.h"

namespace {

// Type numbers of the server's catalogue.
enum CellType : Oid {
    BytesOid = 17,
    Int8Oid = 20,
    Int4Oid = 23,
    Float8Oid = 701,
    TimestampOid = 1114,
};

class RawPostgresql final : public RawEngine {
public:
    explicit RawPostgresql(const std::string& server)
        : m_server(server)
        , m_db(PQconnectdb(server.c_str()))
    {
        if (PQstatus(m_db) != CONNECTION_OK)
            fail();
        execute("SET client_min_messages = error");
    }
    ~RawPostgresql() override
    {
        PQclear(PQexec(m_db, "DROP TABLE IF EXISTS item"));
        PQfinish(m_db);
    }
    RawPostgresql(const RawPostgresql&) = delete;
    RawPostgresql& operator=(const RawPostgresql&) = delete;

    void makeTable(int64_t rows) override
    {
        execute("DROP TABLE IF EXISTS item");
        execute("CREATE TABLE item(id BIGINT PRIMARY KEY, qty INTEGER, big BIGINT,"
                " price DOUBLE PRECISION, code VARCHAR(8), name VARCHAR(60), made TIMESTAMP,"
                " pic BYTEA)");
        execute("INSERT INTO item SELECT i, i * 7919 % 100000,"
                " i * 1103515245 % 2147483647 * 4294967291,"
                " (i * 15485863 % 10000000) / 100.0, substr(md5(i::text), 1, 8),"
                " substr(md5((i * 31)::text) || md5((i * 17)::text), 1, (20 + i % 40)::int),"
                " timestamp '2000-01-01' + i * interval '61 seconds',"
                " CASE WHEN i % 4 <> 0 THEN decode(md5((i * 7)::text), 'hex') END"
                " FROM generate_series(1::bigint, " +
                std::to_string(rows) + ") AS n(i)");
        execute("VACUUM ANALYZE item");
        execute("CHECKPOINT");
    }
    uint64_t readAll(const std::string& sql) override
    {
        if (!PQsendQueryParams(m_db, sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, 1) ||
            !PQsetSingleRowMode(m_db))
            fail();
        uint64_t sum = 0;
        char cell[4096];
        while (PGresult* row = PQgetResult(m_db)) {
            if (PQresultStatus(row) == PGRES_SINGLE_TUPLE) {
                const int columns = PQnfields(row);
                for (int i = 0; i < columns; ++i)
                    sum += copyCell(row, i, cell, sizeof cell);
            } else if (PQresultStatus(row) != PGRES_TUPLES_OK) {
                fail();
            }
            PQclear(row);
        }
        return sum;
    }
    void updateByKey(int64_t count) override
    {
        PQclear(PQprepare(m_db, "byKey", "UPDATE item SET qty = $1::bigint WHERE id = $2::bigint",
                          0, nullptr));
        for (int64_t id = 1; id <= count; ++id) {
            const std::string value = std::to_string(++m_updates);
            const std::string key = std::to_string(id);
            const char* values[] = {value.c_str(), key.c_str()};
            PGresult* done = PQexecPrepared(m_db, "byKey", 2, values, nullptr, nullptr, 0);
            if (PQresultStatus(done) != PGRES_COMMAND_OK)
                fail();
            PQclear(done);
        }
        execute("DEALLOCATE \"byKey\"");
    }
    void insertRows(int64_t first, int64_t count) override
    {
        PQclear(PQprepare(m_db, "insertion",
                          "INSERT INTO item(id, qty, big, price, code, name, made)"
                          " VALUES ($1, $2, $3, $4, $5, $6, $7)",
                          0, nullptr));
        for (int64_t id = first; id < first + count; ++id) {
            const std::string number = std::to_string(id);
            const char* values[] = {
                number.c_str(),       "5", number.c_str(), "2.5", "code", "a name of some length",
                "2005-03-04 06:07:08"};
            PGresult* done = PQexecPrepared(m_db, "insertion", 7, values, nullptr, nullptr, 0);
            if (PQresultStatus(done) != PGRES_COMMAND_OK)
                fail();
            PQclear(done);
        }
        execute("DEALLOCATE insertion");
    }
    void execute(const std::string& sql) override
    {
        PGresult* done = PQexec(m_db, sql.c_str());
        if (PQresultStatus(done) != PGRES_COMMAND_OK)
            fail();
        PQclear(done);
    }

    const char* owner() const override { return "public"; }
    std::string database() const override { return m_server; }
    std::string peerArguments() const override
    {
        std::string options = m_server;
        std::replace(options.begin(), options.end(), ' ', ';');
        return "QPSQL '" + options + "'";
    }

private:
    static uint64_t bigEndian64(const char* bytes)
    {
        uint64_t value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return be64toh(value);
    }
    static uint64_t copyCell(PGresult* row, int i, char* cell, size_t size)
    {
        if (PQgetisnull(row, 0, i))
            return 0;
        const char* bytes = PQgetvalue(row, 0, i);
        switch (PQftype(row, i)) {
        case Int8Oid:
        case TimestampOid:
            return bigEndian64(bytes);
        case Int4Oid: {
            uint32_t value = 0;
            std::memcpy(&value, bytes, sizeof value);
            return be32toh(value);
        }
        case Float8Oid:
            return static_cast<uint64_t>(std::bit_cast<double>(bigEndian64(bytes)));
        default: {
            const auto n = std::min(static_cast<size_t>(PQgetlength(row, 0, i)), size);
            std::memcpy(cell, bytes, n);
            return static_cast<unsigned char>(cell[0]) + n;
        }
        }
    }
    [[noreturn]] void fail()
    {
        std::fprintf(stderr, "%s", PQerrorMessage(m_db));
        std::exit(2);
    }

    std::string m_server;
    PGconn* m_db;
};

} // namespace

std::unique_ptr<RawEngine> rawPostgresql(const std::string& server)
{
    return std::make_unique<RawPostgresql>(server);
}
