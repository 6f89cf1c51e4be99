// How soon a stop takes effect, and how long another cursor waits while a statement runs.
//
//     cancel_bench [DATABASE [ROWS]]
//
// DATABASE is what DorConnect::createCS takes, with the password in the usual places; a file in a
// temporary folder of its own when left out or "-". Makes the table cancel_bench there (1,000,000
// rows), and drops it at the end. Stops each of these statements 200 times, a moment after its
// start:
//
//     sort, aggregate, recursion     and on a server a statement that sleeps
//
// and measures the call of close() and the time from it until the engine is idle again; on the
// embedded engine beside its own interruption (the floor). Then reads pages of 50 rows through
// another cursor of the session while a statement runs, beside the same with none running. Prints
// milliseconds, median and maximum, and returns 1 when a maximum is over its limit.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <sqlite3.h>

#include <dorcpp/cursor.h>

#include "cputime.h"

using namespace DorCPP;

namespace {

constexpr int stops = 200;
constexpr int pages = 200;
constexpr int pageRows = 50;
constexpr double closeLimit = 5;  // ms
constexpr double idleLimit = 300; // ms
constexpr double pageLimit = 5;   // ms

using Clock = std::chrono::steady_clock;

double since(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The times of one question.
class Times {
public:
    void add(double milliseconds) { m_all.push_back(milliseconds); }
    double median() const { return ::median(m_all); }
    double maximum() const { return *std::max_element(m_all.begin(), m_all.end()); }

private:
    std::vector<double> m_all;
};

class Ended : public DorCursor::Handler {
public:
    void handler(unsigned short, int) override
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
        m_change.notify_one();
    }
    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_change.wait(lock, [this] { return m_ended; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_change;
    bool m_ended = false;
};

// Long enough for the statement to be at work, at another place every time.
void aMoment()
{
    static std::mt19937 random(1);
    std::this_thread::sleep_for(
        std::chrono::milliseconds(std::uniform_int_distribution<int>(2, 60)(random)));
}

struct Statement {
    const char* name;
    const char* sql;
};

const Statement statements[] = {
    {"sort", "SELECT DISTINCT s, k FROM cancel_bench ORDER BY s DESC, k"},
    {"aggregate", "SELECT count(*), sum(a.k) FROM cancel_bench AS a, cancel_bench AS b"
                  " WHERE a.k < b.k"},
    {"recursion", "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT (i + 1) % 1000000 FROM c)"
                  " SELECT count(*) FROM c"},
};
const Statement sleeping = {"sleep", "SELECT pg_sleep(60)"};

void makeTable(const DorConnect& connection, const std::string& rows)
{
    DorCursor cursor;
    cursor.create(connection, 0, nullptr, false);
    cursor.execute("DROP TABLE IF EXISTS cancel_bench");
    cursor.execute("CREATE TABLE cancel_bench(i INTEGER PRIMARY KEY, k INTEGER, s VARCHAR(40))");
    cursor.execute(("INSERT INTO cancel_bench WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL"
                    " SELECT i + 1 FROM c WHERE i < " +
                    rows + ") SELECT i, i % 7919, 'text ' || (i % 15485) || ' of row ' || i FROM c")
                       .c_str());
}

bool report(const char* name, const char* what, const Times& times, double limit)
{
    const bool good = times.maximum() <= limit;
    std::printf("%-10s %-14s median %8.3f  maximum %8.3f  limit %5.0f%s\n", name, what,
                times.median(), times.maximum(), limit, good ? "" : "  MISSED");
    return good;
}

bool stopMany(const DorConnect& connection, const Statement& statement)
{
    Times closing;
    Times idle;
    int ended = 0;
    for (int i = 0; i < stops; ++i) {
        Ended handler;
        DorCursor cursor;
        cursor.create(connection, 0, nullptr, false);
        cursor.execute(statement.sql, &handler);
        aMoment();
        ended += cursor.isRunning() ? 0 : 1;
        const Clock::time_point start = Clock::now();
        cursor.close();
        closing.add(since(start));
        handler.wait();
        idle.add(since(start));
    }
    if (ended > 0)
        std::printf("%-10s %d of %d had ended before the stop\n", statement.name, ended, stops);
    const bool closes = report(statement.name, "close()", closing, closeLimit);
    return report(statement.name, "engine idle", idle, idleLimit) && closes;
}

// The engine's own interruption of the same statement.
void floorOf(const std::string& path, const Statement& statement)
{
    sqlite3* db = nullptr;
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK)
        return;
    Times idle;
    std::atomic<bool> atWork = false; // before that an interruption hits nothing
    const auto tell = [](void* flag) {
        *static_cast<std::atomic<bool>*>(flag) = true;
        return 0;
    };
    sqlite3_progress_handler(db, 1000, tell, &atWork);
    for (int i = 0; i < stops / 4; ++i) {
        atWork = false;
        std::thread runner([&] { sqlite3_exec(db, statement.sql, nullptr, nullptr, nullptr); });
        while (!atWork)
            std::this_thread::yield();
        aMoment();
        const Clock::time_point start = Clock::now();
        sqlite3_interrupt(db);
        runner.join();
        idle.add(since(start));
    }
    sqlite3_close(db);
    std::printf("%-10s %-14s median %8.3f  maximum %8.3f\n", statement.name, "floor", idle.median(),
                idle.maximum());
}

void readPage(DorCursor& cursor, int64_t first)
{
    char text[64];
    for (int64_t row = first; row < first + pageRows; ++row) {
        cursor.fetch(FetchAbsolute, row);
        cursor.getData(3, TypeText, text, sizeof text);
    }
}

Times readPages(DorCursor& cursor)
{
    std::mt19937 random(2);
    std::uniform_int_distribution<int64_t> places(1, cursor.selectRowCount() - pageRows);
    Times times;
    for (int i = 0; i < pages; ++i) {
        const Clock::time_point start = Clock::now();
        readPage(cursor, places(random));
        times.add(since(start));
    }
    return times;
}

bool readBeside(const DorConnect& connection)
{
    DorCursor reader;
    reader.create(connection, 0, nullptr, false);
    reader.execute("SELECT i, k, s FROM cancel_bench");
    Times alone = readPages(reader);
    Ended handler;
    DorCursor running;
    running.create(connection, 0, nullptr, false);
    running.execute(statements[1].sql, &handler);
    aMoment();
    Times beside = readPages(reader);
    running.close();
    handler.wait();
    report("page", "alone", alone, pageLimit);
    return report("page", "beside", beside, pageLimit);
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // seen while it runs
    std::string folder;
    std::string database = argc > 1 && std::strcmp(argv[1], "-") != 0 ? argv[1] : "";
    if (database.empty()) {
        folder = (std::filesystem::temp_directory_path() / "cancel-bench-XXXXXX").string();
        if (!::mkdtemp(folder.data()))
            return 2;
        database = folder + "/bench.db";
    }
    bool good = true;
    try {
        DorConnect connection;
        connection.createCS(nullptr, nullptr, database.c_str(), folder.empty() ? "" : "create", 0,
                            false, true);
        makeTable(connection, argc > 2 ? argv[2] : "1000000");
        const bool server = !connection.info().host.empty();
        for (const Statement& statement : statements) {
            good = stopMany(connection, statement) && good;
            if (!folder.empty())
                floorOf(database, statement);
        }
        if (server)
            good = stopMany(connection, sleeping) && good;
        good = readBeside(connection) && good;
        DorCursor cursor;
        cursor.create(connection, 0, nullptr, false);
        cursor.execute("DROP TABLE cancel_bench");
    } catch (const DorX& x) {
        std::fprintf(stderr, "%s\n", x.what());
        good = false;
    }
    if (!folder.empty())
        std::filesystem::remove_all(folder);
    return good ? 0 : 1;
}
