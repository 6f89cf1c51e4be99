// What it costs to open a table through the database client: against the raw engine reading the
// whole table, in one run on one file.
//
//     dorcpp_open_bench [ROWS [FOLDER]]
//
// Makes a table of 8 mixed columns (default 1,000,000 rows) in a folder of its own and prints
// processor times in milliseconds, ratios to the raw reading, and memory above what the process had
// before. Ends with 1 when a limit is missed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sqlite3.h>

#include <dorcpp/cursor.h>

using namespace DorCPP;

namespace {

constexpr int64_t pageRows = 50;
constexpr int runs = 3; // the best of each is taken

// Processor time: everything runs on one thread, and a busy machine does not change it much.
double milliseconds(const std::function<void()>& work)
{
    const auto now = [] {
        timespec t{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
    };
    const double start = now();
    work();
    return now() - start;
}

double best(const std::function<void()>& work)
{
    double shortest = milliseconds(work);
    for (int i = 1; i < runs; ++i)
        shortest = std::min(shortest, milliseconds(work));
    return shortest;
}

double statusMiB(std::string_view key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key))
            return std::atof(line.c_str() + key.size()) / 1024;
    }
    return 0;
}

void resetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

void check(int result, sqlite3* db)
{
    if (result == SQLITE_OK || result == SQLITE_DONE || result == SQLITE_ROW)
        return;
    std::fprintf(stderr, "%s\n", sqlite3_errmsg(db));
    std::exit(2);
}

void makeTable(const std::string& path, int64_t rows)
{
    sqlite3* db = nullptr;
    check(sqlite3_open(path.c_str(), &db), db);
    const std::string sql =
        "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
        "CREATE TABLE item(id INTEGER PRIMARY KEY, qty INTEGER, big BIGINT, price DOUBLE,"
        " code VARCHAR(8), name VARCHAR(60), made TIMESTAMP, pic VARBINARY(16));"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
        std::to_string(rows) +
        ") INSERT INTO item SELECT i, i * 7919 % 100000, i * 1103515245 % 2147483647 * 4294967311,"
        " (i * 15485863 % 10000000) / 100.0, substr(hex(randomblob(4)), 1, 8),"
        " hex(randomblob(10 + i % 20)), strftime('%Y-%m-%d %H:%M:%S', 946684800 + i * 61,"
        " 'unixepoch'), CASE WHEN i % 4 THEN randomblob(16) END FROM n";
    check(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), db);
    sqlite3_close(db);
}

// The floor: every cell copied out of the engine, as an application without this client would.
uint64_t readRaw(const std::string& path)
{
    sqlite3* db = nullptr;
    check(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr),
          db);
    sqlite3_stmt* s = nullptr;
    check(sqlite3_prepare_v2(db, "SELECT * FROM item", -1, &s, nullptr), db);
    const int columns = sqlite3_column_count(s);
    uint64_t sum = 0;
    char cell[4096];
    while (sqlite3_step(s) == SQLITE_ROW) {
        for (int i = 0; i < columns; ++i) {
            switch (sqlite3_column_type(s, i)) {
            case SQLITE_INTEGER:
                sum += static_cast<uint64_t>(sqlite3_column_int64(s, i));
                break;
            case SQLITE_FLOAT:
                sum += static_cast<uint64_t>(sqlite3_column_double(s, i));
                break;
            case SQLITE_NULL:
                break;
            default: {
                const void* bytes = sqlite3_column_blob(s, i);
                const auto n =
                    std::min(static_cast<size_t>(sqlite3_column_bytes(s, i)), sizeof cell);
                std::memcpy(cell, bytes, n);
                sum += static_cast<unsigned char>(cell[0]) + n;
            }
            }
        }
    }
    sqlite3_finalize(s);
    sqlite3_close(db);
    return sum;
}

struct Client {
    struct Column {
        int type;
        size_t capacity;
    };
    explicit Client(const std::string& path)
    {
        connection.createCS("", "", path.c_str(), "", 0, false, true);
        cursor.create(connection, 0, nullptr, true);
    }
    void describe()
    {
        columns.clear();
        for (int i = 1; i <= cursor.columnCount(); ++i) {
            t_ParamDesc desc;
            cursor.answerDesc(i, desc);
            const bool text = desc.type == TypeVarchar || desc.type == TypeChar;
            columns.push_back({text ? int{TypeText} : int{desc.type},
                               static_cast<size_t>(desc.length) + (text ? 1 : 0)});
        }
    }
    void getRow()
    {
        char cell[65536];
        for (size_t i = 0; i < columns.size(); ++i)
            cursor.getData(static_cast<int>(i) + 1, columns[i].type, cell, columns[i].capacity);
    }
    void page(int64_t first)
    {
        for (int64_t row = first; row < first + pageRows; ++row) {
            cursor.fetch(FetchAbsolute, row);
            getRow();
        }
    }
    // Opens the query, asks for the number of rows and gets the first page.
    void openPage(const char* sql)
    {
        cursor.execute(sql);
        rows = cursor.selectRowCount();
        describe();
        page(1);
    }
    DorConnect connection;
    DorCursor cursor;
    std::vector<Column> columns;
    int64_t rows = 0;
};

bool report(const char* what, double value, const char* unit, double limit = 0)
{
    const bool met = limit == 0 || value <= limit;
    std::printf("%-52s %10.3f %-4s", what, value, unit);
    if (limit != 0)
        std::printf(" limit %g %s", limit, met ? "met" : "MISSED");
    std::printf("\n");
    std::fflush(stdout);
    return met;
}

bool measure(const std::string& path, const char* sql, double raw, double openLimit,
             double readLimit, double memoryLimit)
{
    std::printf("\n%s\n", sql);
    const double before = statusMiB("VmRSS:");
    resetPeak();
    Client client(path);
    bool met = true;
    const double opened = best([&] { client.openPage(sql); });
    met &= report("  open, row count, first page", opened, "ms");
    met &= report("    of the raw reading", opened / raw, "", openLimit);
    met &= report("  last page", milliseconds([&] {
                      client.page(client.rows - pageRows + 1);
                      client.cursor.fetch(FetchLast, 0);
                      client.getRow();
                  }),
                  "ms");
    met &= report("  memory above, after the last row", statusMiB("VmHWM:") - before, "MiB",
                  memoryLimit);
    const double all = milliseconds([&] {
        for (int64_t row = 1; row <= client.rows; ++row) {
            client.cursor.fetch(row == 1 ? FetchFirst : FetchNext, 0);
            client.getRow();
        }
    });
    met &= report("  every row and cell", all, "ms");
    met &= report("    with the opening, of the raw reading", (opened + all) / raw, "", readLimit);
    return met;
}

} // namespace

int main(int argc, char** argv)
{
    const int64_t rows = argc > 1 ? std::max<int64_t>(std::atoll(argv[1]), 1000) : 1'000'000;
    const std::filesystem::path parent =
        argc > 2 ? std::filesystem::path(argv[2]) : std::filesystem::temp_directory_path();
    std::string folder = (parent / "dorcpp_open_bench_XXXXXX").string();
    if (!::mkdtemp(folder.data())) {
        std::perror(folder.c_str());
        return 2;
    }
    const std::string path = folder + "/item.db";
    bool met = true;
    try {
        makeTable(path, rows);
        std::printf("%lld rows, %.0f MiB\n", static_cast<long long>(rows),
                    static_cast<double>(std::filesystem::file_size(path)) / (1 << 20));
        uint64_t sum = 0;
        const double raw = best([&] { sum += readRaw(path); });
        std::printf("raw engine, whole table (checksum %llx) %12.3f ms\n",
                    static_cast<unsigned long long>(sum), raw);
        met &= measure(path, "SELECT * FROM item", raw, 0.3, 1.4, 24);
        met &= measure(path, "SELECT * FROM item ORDER BY name", raw, 0, 0, 0);
        met &= measure(path, "SELECT DISTINCT * FROM item", raw, 0, 0, 0);
    } catch (const DorX& x) {
        std::fprintf(stderr, "%s\n", x.what());
        met = false;
    }
    std::filesystem::remove_all(folder);
    return met ? 0 : 1;
}
