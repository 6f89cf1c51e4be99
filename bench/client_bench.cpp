// What the database client costs: against the engine's own calls (the floor) and the toolkit's
// query model (the peer), in one run on one table of 8 mixed columns.
//
//     client_bench ROWS [FOLDER]                  on an embedded database in a folder of its own
//     client_bench ROWS "host=... dbname=..."     on a server; makes and drops the table "item"
//
// Prints milliseconds of the clock, ratios, and memory above what the process had before. Pin it,
// and a server with it, to one core. Ends with 1 when a limit is missed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <dorcpp/cursor.h>

#include "measure.h"
#include "rawengine.h"

using namespace DorCPP;

namespace {

constexpr int64_t pageRows = 50;
constexpr int randomPages = 200;
constexpr int64_t updates = 500;

// What an engine is held to; 0: only told.
struct Limits {
    double open, openOrdered; // of the raw reading
    double read, readOrdered; // of the raw reading, the opening counted
    double page, pageOrdered; // ms
    double spooled;           // of the raw reading
    double peer;              // of the peer's time
    double update;            // of an update by key
};
constexpr Limits sqliteLimits = {0.2, 0.7, 1.4, 3.0, 0.5, 0.5, 1.6, 1.0 / 4, 1.5};
constexpr Limits postgresqlLimits = {0.3, 0.8, 1.7, 2.7, 1, 4, 1.6, 1.0 / 3, 1.5};
constexpr double peerMemory = 1.0 / 30;
constexpr double baseMemory = 8; // MiB
constexpr double keyBytes = 5;   // a row, of a keyed answer
constexpr double spoolBytes = 1; // a row, of a copied one

void resetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

// One table, its engine and the limits; counts what was missed.
class Bench {
public:
    Bench(RawEngine& raw, const Limits& limits, int64_t rows, std::string peer)
        : m_raw(raw)
        , m_limits(limits)
        , m_rows(rows)
        , m_peer(std::move(peer))
    {
    }
    bool run();

private:
    void report(const char* what, double value, const char* unit, double limit = 0);
    double rawReading(const std::string& sql);
    void keyed(const std::string& sql, double openLimit, double readLimit, double pageLimit);
    void spooled();
    void updatesByPosition();
    void againstPeer(const std::string& sql, double opened, double read, double memory);

    RawEngine& m_raw;
    Limits m_limits;
    int64_t m_rows;
    std::string m_peer;
    bool m_met = true;
};

// A cursor that is read as an application reads it.
class Client {
public:
    explicit Client(const std::string& database)
    {
        connection.createCS("", "", database.c_str(), "", 0, false, true);
        cursor.create(connection, 0, nullptr, true);
    }
    // Opens the query, asks for the number of rows and gets the first page.
    void openPage(const std::string& sql)
    {
        cursor.execute(sql.c_str());
        rows = cursor.selectRowCount();
        describe();
        page(1);
    }
    void page(int64_t first)
    {
        for (int64_t row = first; row < std::min(first + pageRows, rows + 1); ++row) {
            cursor.fetch(FetchAbsolute, row);
            getRow();
        }
    }
    void readAll()
    {
        for (int64_t row = 1; row <= rows; ++row) {
            cursor.fetch(row == 1 ? FetchFirst : FetchNext, 0);
            getRow();
        }
    }

    DorConnect connection;
    DorCursor cursor;
    int64_t rows = 0;

private:
    struct Column {
        int type;
        size_t capacity;
    };
    void describe()
    {
        m_columns.clear();
        for (int i = 1; i <= cursor.columnCount(); ++i) {
            t_ParamDesc desc;
            cursor.answerDesc(i, desc);
            const bool text = desc.type == TypeVarchar || desc.type == TypeChar;
            m_columns.push_back({text ? int{TypeText} : int{desc.type},
                                 std::max<size_t>(desc.length, 1) + (text ? 1 : 0)});
        }
    }
    void getRow()
    {
        for (size_t i = 0; i < m_columns.size(); ++i) {
            cursor.getData(static_cast<int>(i) + 1, m_columns[i].type, m_cell,
                           m_columns[i].capacity);
        }
    }

    std::vector<Column> m_columns;
    char m_cell[65540];
};

void Bench::report(const char* what, double value, const char* unit, double limit)
{
    const bool met = limit == 0 || value <= limit;
    std::printf("%-52s %10.3f %-4s", what, value, unit);
    if (limit != 0)
        std::printf(" limit %.3g %s", limit, met ? "met" : "MISSED");
    std::printf("\n");
    std::fflush(stdout);
    m_met = m_met && met;
}

// The floor; memory counts from here on.
double Bench::rawReading(const std::string& sql)
{
    std::printf("\n%s\n", sql.c_str());
    const double raw = best([&] { m_raw.readAll(sql); });
    report("  raw reading", raw, "ms");
    resetPeak();
    return raw;
}

void Bench::keyed(const std::string& sql, double openLimit, double readLimit, double pageLimit)
{
    const double raw = rawReading(sql);
    const double before = statusMiB("VmRSS:");
    Client client(m_raw.database());
    const double opened = best([&] { client.openPage(sql); });
    report("  open, row count, first page", opened, "ms");
    report("    of the raw reading", opened / raw, "", openLimit);

    std::mt19937_64 random(1);
    std::vector<double> pages;
    for (int i = 0; i < randomPages; ++i) {
        const auto last = static_cast<uint64_t>(std::max<int64_t>(m_rows - pageRows, 1));
        const auto first = static_cast<int64_t>(random() % last) + 1;
        pages.push_back(milliseconds([&] { client.page(first); }));
    }
    std::sort(pages.begin(), pages.end());
    report("  a page of 50 at any row, median", pages[pages.size() / 2], "ms", pageLimit);
    report("    95 of 100", pages[pages.size() * 95 / 100], "ms");

    const double read = best([&] { client.readAll(); });
    report("  every row and cell", read, "ms");
    report("    with the opening, of the raw reading", (opened + read) / raw, "", readLimit);
    const double memory = statusMiB("VmHWM:") - before;
    report("  memory above", memory, "MiB",
           baseMemory + keyBytes * static_cast<double>(m_rows) / (1 << 20));
    if (openLimit == m_limits.open)
        againstPeer(sql, opened, read, memory);
}

void Bench::againstPeer(const std::string& sql, double opened, double read, double memory)
{
    const std::string command = m_peer + ' ' + m_raw.peerArguments() + " '" + sql + "'";
    FILE* answer = ::popen(command.c_str(), "r");
    double time = 0;
    double peak = 0;
    const bool told = answer && std::fscanf(answer, "%lf %lf", &time, &peak) == 2;
    if (!answer || ::pclose(answer) != 0 || !told) {
        std::fprintf(stderr, "the peer could not be run: %s\n", command.c_str());
        m_met = false;
        return;
    }
    report("  the toolkit's query model, every row and cell", time, "ms");
    report("    the client's part of its time", (opened + read) / time, "", m_limits.peer);
    report("    its memory", peak, "MiB");
    report("    the client's part of it", memory / peak, "", peerMemory);
}

// A text that cannot be read by row keys, with the same rows.
void Bench::spooled()
{
    const std::string sql = "SELECT * FROM item UNION ALL SELECT * FROM item WHERE id < 0";
    const double raw = rawReading(sql);
    const double before = statusMiB("VmRSS:");
    Client client(m_raw.database());
    const double whole = best([&] {
        client.openPage(sql);
        client.readAll();
    });
    report("  open, every row and cell", whole, "ms");
    report("    of the raw reading", whole / raw, "", m_limits.spooled);
    report("  memory above", statusMiB("VmHWM:") - before, "MiB",
           baseMemory + spoolBytes * static_cast<double>(m_rows) / (1 << 20));
}

void Bench::updatesByPosition()
{
    std::printf("\nupdates of %lld rows, each its own transaction\n",
                static_cast<long long>(updates));
    Client client(m_raw.database());
    const std::string text = std::string("UPDATE \"") + m_raw.owner() +
                             "\".\"item\" SET \"qty\"=? WHERE CURRENT OF CURSOR";
    DorStatement statement;
    statement.create(client.connection, text.c_str(), true);
    int32_t value = 0; // below zero, where no raw update comes: each one is written
    BindMap binds;
    binds.bind(1, {TypeInteger, &value, sizeof value, 0});
    const auto update = [&] {
        for (int64_t row = 1; row <= updates; ++row) {
            client.cursor.fetch(FetchAbsolute, row);
            --value;
            client.cursor.execute(statement, &binds);
        }
    };
    double raw = 0;
    double guarded = 0;
    for (int i = 0; i < runs; ++i) { // in turns: what the disk does meanwhile meets both
        const double byKey = milliseconds([&] { m_raw.updateByKey(updates); });
        client.openPage("SELECT * FROM item"); // what the raw updates left
        const double byPosition = milliseconds(update);
        raw = i == 0 ? byKey : std::min(raw, byKey);
        guarded = i == 0 ? byPosition : std::min(guarded, byPosition);
    }
    report("  raw, by key", raw, "ms");
    report("  guarded, by position", guarded, "ms");
    report("    of the raw ones", guarded / raw, "", m_limits.update);
}

bool Bench::run()
{
    m_raw.makeTable(m_rows);
    std::printf("%lld rows\n", static_cast<long long>(m_rows));
    keyed("SELECT * FROM item", m_limits.open, m_limits.read, m_limits.page);
    keyed("SELECT * FROM item ORDER BY 6", m_limits.openOrdered, m_limits.readOrdered,
          m_limits.pageOrdered);
    spooled();
    updatesByPosition();
    return m_met;
}

} // namespace

int main(int argc, char** argv)
{
    const int64_t rows = argc > 1 ? std::max<int64_t>(std::atoll(argv[1]), 10'000) : 1'000'000;
    const std::string place = argc > 2 ? argv[2] : "";
    const std::string peer =
        (std::filesystem::path(argv[0]).parent_path() / "peer_qt_query").string();
    try {
        if (place.find('=') != std::string::npos)
            return Bench(*rawPostgresql(place), postgresqlLimits, rows, peer).run() ? 0 : 1;
        const std::filesystem::path parent =
            place.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(place);
        std::string folder = (parent / "client_bench_XXXXXX").string();
        if (!::mkdtemp(folder.data())) {
            std::perror(folder.c_str());
            return 2;
        }
        const bool met = Bench(*rawSqlite(folder + "/item.db"), sqliteLimits, rows, peer).run();
        std::filesystem::remove_all(folder);
        return met ? 0 : 1;
    } catch (const DorX& x) {
        std::fprintf(stderr, "%s\n", x.what());
        return 2;
    }
}
