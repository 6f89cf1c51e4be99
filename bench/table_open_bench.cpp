// How long it takes to open a table and how much memory it takes to look at its end.
//
//     table_open_bench [ROWS]          1,000,000 when left out
//
// Makes a table of eight mixed columns in a temporary folder and measures, each in a process of its
// own:
//
//     open   from the query to the first painted page, with the number of rows known; beside it the
//            engine's own loop over all rows and columns (the floor), and the toolkit's table model
//            and view (the peer)
//     read   every row into the row buffer, beside the same loop
//     memory peak after the jump to the last row, beside the same program showing 1,000 rows
//
// Prints ratios of one run and returns 1 when one of them is over its limit.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <dorcpp/connect.h>
#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/recordview.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include "cputime.h"
#include "data/dordataset.h"
#include "measure.h"

namespace {

constexpr int columns = 8;
constexpr int repetitions = 5;
constexpr double openLimit = 0.3;  // of the floor
constexpr double readLimit = 2.5;  // of the floor
constexpr double memoryLimit = 24; // MiB more than for 1,000 rows
constexpr const char* query = "select * from item";

double peakMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// --- the engine itself

struct CloseEngine {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Engine = std::unique_ptr<sqlite3, CloseEngine>;
using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

void check(int result)
{
    if (result != SQLITE_OK)
        throw std::runtime_error(sqlite3_errstr(result));
}

Engine openEngine(const std::string& path)
{
    sqlite3* db = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    check(sqlite3_open_v2(path.c_str(), &db, flags, nullptr));
    return Engine(db);
}

Prepared prepare(const Engine& db, const char* sql)
{
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(db.get(), sql, -1, &statement, nullptr));
    return Prepared(statement);
}

void makeTable(const std::string& path, long rows)
{
    const Engine db = openEngine(path);
    check(sqlite3_exec(db.get(),
                       "pragma synchronous = off; pragma journal_mode = off;"
                       "create table item(id integer primary key, a integer, b bigint, c double, "
                       "d varchar(8), e varchar(60), f timestamp, g binary(16)); begin",
                       nullptr, nullptr, nullptr));
    const Prepared insert =
        prepare(db, "insert into item values(?1, ?1 % 1000, ?1 * 7919 % 1000003, ?1 / 7.0, "
                    "'code' || (?1 % 10000), substr('the quick brown fox jumps over the lazy dog "
                    "and runs away', 1, 20 + ?1 % 36), datetime(1600000000 + ?1, 'unixepoch'), "
                    "case when ?1 % 4 then randomblob(16) end)");
    for (long i = 1; i <= rows; ++i) {
        sqlite3_bind_int64(insert.get(), 1, i);
        sqlite3_step(insert.get());
        check(sqlite3_reset(insert.get()));
    }
    check(sqlite3_exec(db.get(), "commit", nullptr, nullptr, nullptr));
}

// Copies every value out, as any reader has to. Returns the number of rows.
long rawLoop(const std::string& path)
{
    const Engine db = openEngine(path);
    const Prepared select = prepare(db, query);
    char buffer[256];
    volatile char seen = 0; // the copies are used
    long rows = 0;
    for (; sqlite3_step(select.get()) == SQLITE_ROW; ++rows) {
        for (int i = 0; i < columns; ++i) {
            sqlite3_stmt* row = select.get();
            switch (sqlite3_column_type(row, i)) {
            case SQLITE_INTEGER: {
                const sqlite3_int64 value = sqlite3_column_int64(row, i);
                std::memcpy(buffer, &value, sizeof value);
                break;
            }
            case SQLITE_FLOAT: {
                const double value = sqlite3_column_double(row, i);
                std::memcpy(buffer, &value, sizeof value);
                break;
            }
            case SQLITE_NULL:
                break;
            default: {
                const void* value = sqlite3_column_blob(row, i);
                const auto length = static_cast<size_t>(sqlite3_column_bytes(row, i));
                if (length != 0)
                    std::memcpy(buffer, value, std::min(length, sizeof buffer));
            }
            }
            seen = buffer[0];
        }
    }
    static_cast<void>(seen);
    return rows;
}

// --- the library

class View : public OviAPI::aCRecordView {
public:
    bool onDraw(OviAPI::Painter* painter, const OviAPI::Rect& rect) override
    {
        const bool drawn = aCRecordView::onDraw(painter, rect);
        ++paints;
        return drawn;
    }
    // Handles events until the view has been painted once more.
    void waitForPaint()
    {
        const int before = paints;
        while (paints == before)
            OviAPI::Application::procTaskEvents();
    }

    int paints = 0;
};

// A window that is on the screen before the clock starts, as in a running program.
class Window {
public:
    explicit Window(const std::string& path)
    {
        channel = session.createCS(nullptr, nullptr, path.c_str(), nullptr, 0, false, true);
        view.setParent(&form);
        form.create();
        form.move(0, 0, 1000, 600);
        view.create();
        view.move(0, 0, 1000, 600);
        form.show(true);
        view.waitForPaint();
    }
    ~Window() { view.SetDataSet(nullptr, false); }

    void open()
    {
        data.Open(channel, std::wstring(query, query + std::strlen(query)).c_str(), 0, true);
        view.SetDataSet(&data, true);
        view.waitForPaint();
        if (data.GetErrorKind() != 0 || view.GetRowCount() != data.GetRowCount())
            throw std::runtime_error("the table cannot be shown");
    }
    void jumpToEnd()
    {
        view.SetFocusCell(1, view.GetRowCount());
        view.waitForPaint();
    }

    OviAPI::WForm form;
    View view;
    xCDorvexDataSet data;
    DorCPP::DorConnect session;
    int channel = 0;
};

int child(const std::string& mode, const std::string& path)
{
    if (mode == "open") {
        std::vector<double> raw;
        std::vector<double> open;
        for (int i = 0; i < repetitions; ++i) {
            raw.push_back(milliseconds([&] { rawLoop(path); }));
            Window window(path);
            open.push_back(milliseconds([&] { window.open(); }));
        }
        printf("%.3f %.3f\n", median(raw), median(open));
    } else if (mode == "read") {
        std::vector<double> raw;
        std::vector<double> read;
        for (int i = 0; i < 3; ++i) {
            raw.push_back(milliseconds([&] { rawLoop(path); }));
            Window window(path);
            window.open();
            const long rows = window.data.GetRowCount();
            read.push_back(milliseconds([&] {
                for (long row = 1; row <= rows; ++row)
                    window.data.ToRow(OviAPI::FetchAbsolute, row, false);
            }));
        }
        printf("%.3f %.3f\n", median(raw), median(read));
    } else {
        Window window(path);
        window.open();
        if (mode == "last")
            window.jumpToEnd();
        printf("%.3f 0\n", peakMiB());
    }
    return 0;
}

// --- the processes

struct Pair {
    double first = 0;
    double second = 0;
};

Pair runChild(const std::string& command)
{
    Pair numbers;
    FILE* pipe = popen(command.c_str(), "r");
    const bool read = pipe && fscanf(pipe, "%lf %lf", &numbers.first, &numbers.second) == 2;
    if (!pipe || pclose(pipe) != 0 || !read)
        throw std::runtime_error("failed: " + command);
    return numbers;
}

bool report(const char* what, double value, double limit, const char* unit)
{
    const bool good = value <= limit;
    printf("%-44s %8.3f %-4s limit %6.2f  %s\n", what, value, unit, limit, good ? "ok" : "OVER");
    return good;
}

int measure(const std::filesystem::path& program, long rows)
{
    std::string folder = (std::filesystem::temp_directory_path() / "table-open-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        throw std::runtime_error("no temporary folder");
    const std::unique_ptr<std::string, void (*)(std::string*)> cleaner(&folder, [](auto* path) {
        std::error_code ignored; // a folder that stays behind changes no result
        std::filesystem::remove_all(*path, ignored);
    });
    const std::string large = folder + "/large.db";
    const std::string small = folder + "/small.db";
    makeTable(large, rows);
    makeTable(small, 1000);

    const auto self = [&](const char* mode, const std::string& path) {
        return runChild(program.string() + " --child " + mode + " " + path);
    };
    const auto peer = [&](const char* mode, const std::string& path) {
        return runChild((program.parent_path() / "peer_qt_table").string() + " " + mode + " " +
                        path);
    };
    printf("%ld rows, %d columns\n", rows, columns);
    const Pair open = self("open", large);
    const Pair read = self("read", large);
    const double few = self("first", small).first;
    const double last = self("last", large).first;
    printf(
        "engine's loop %.0f ms; open %.1f ms; read %.0f ms; memory %.1f MiB, last row %.1f MiB\n",
        open.first, open.second, read.second, few, last);
    bool good =
        report("open to first page / engine's loop", open.second / open.first, openLimit, "x");
    good =
        report("read every row / engine's loop", read.second / read.first, readLimit, "x") && good;
    good = report("memory at the last row over 1,000 rows", last - few, memoryLimit, "MiB") && good;

    const Pair peerFirst = peer("first", large);
    const Pair peerLast = peer("last", large);
    printf("peer: first page %.1f ms, rows counted %.0f ms, memory at the last row %.1f MiB\n",
           peerFirst.first, peerLast.first, peerLast.second);
    printf(
        "peer / library: time until the rows are counted %.1f x, memory at the last row %.1f x\n",
        peerLast.first / open.second, peerLast.second / last);
    return good ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("LC_ALL", "C.UTF-8", 0);
    try {
        if (argc == 4 && std::strcmp(argv[1], "--child") == 0) {
            OviAPI::Application application;
            application.start(argc, argv);
            return child(argv[2], argv[3]);
        }
        const long rows = argc > 1 ? strtol(argv[1], nullptr, 10) : 1'000'000;
        return measure(std::filesystem::read_symlink("/proc/self/exe"), std::max(rows, 1L));
    } catch (const std::exception& x) {
        fprintf(stderr, "%s\n", x.what());
        return 2;
    }
}
