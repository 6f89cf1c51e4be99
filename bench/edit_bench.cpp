// What the editable dataset costs: against the engine's own calls (the floor) and the toolkit's
// query model (the peer), in one run on one table of 8 mixed columns.
//
//     edit_bench [ROWS [FOLDER]]                  on an embedded database in a folder of its own
//     edit_bench ROWS "host=... dbname=..."       on a server; makes and drops the table "item"
//
//     read     every row into the row buffer, and the memory that it takes
//     edit     a cell of a row that is shown, from the new text to the painted view, each edit in a
//              transaction of its own
//     insert   rows one by one in one transaction, from the values to the stored row; the query
//     that
//              is executed again after each is counted apart
//
// Prints milliseconds of the clock and ratios. Ends with 1 when a limit is missed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/recordview.h>

#include "data/dordataset.h"
#include "measure.h"
#include "rawengine.h"

namespace {

constexpr int edits = 500;
constexpr int insertions = 10'000;
constexpr double readLimit = 2.5;  // of the raw reading
constexpr double peerLimit = 1;    // of the peer's time
constexpr double memoryLimit = 16; // MiB above what the process had
constexpr double editLimit = 2;    // of the raw update by key
constexpr double insertLimit = 2;  // of the raw insertion
constexpr long firstInserted = 2'000'000'000;

class View : public OviAPI::aCRecordView {
public:
    bool onDraw(OviAPI::Painter* painter, const OviAPI::Rect& rect) override
    {
        const bool drawn = aCRecordView::onDraw(painter, rect);
        ++m_paints;
        return drawn;
    }
    // Handles events until the view has been painted once more.
    void waitForPaint()
    {
        for (const int before = m_paints; m_paints == before;)
            OviAPI::Application::procTaskEvents();
    }

private:
    int m_paints = 0;
};

// Knows when a change was done, before anything is read again.
class TimedDataSet : public xCDorvexDataSet {
public:
    double changedAt() const { return m_changedAt; }

protected:
    void ExecuteChange(DorCPP::DorCursor& cursor, const std::wstring& sql) override
    {
        xCDorvexDataSet::ExecuteChange(cursor, sql);
        m_changedAt = clockMs();
    }

private:
    double m_changedAt = 0; // by clockMs
};

void require(bool good, const xCDorvexDataSet& data)
{
    if (good)
        return;
    OviAPI::aCString text;
    data.GetLastErrorText(text);
    throw std::runtime_error("the dataset failed: " + std::string(text.begin(), text.end()));
}

class Bench {
public:
    Bench(RawEngine& raw, long rows, std::string peer)
        : m_raw(raw)
        , m_rows(rows)
        , m_peer(std::move(peer))
    {
    }
    bool run();

private:
    void report(const char* what, double value, const char* unit, double limit = 0);
    void read();
    void readByPeer(double ours);
    void edit();
    void insert();
    static std::string rowText(long id);

    RawEngine& m_raw;
    long m_rows;
    std::string m_peer;
    DorCPP::DorConnect m_session;
    bool m_met = true;
};

void Bench::report(const char* what, double value, const char* unit, double limit)
{
    const bool met = limit == 0 || value <= limit;
    m_met = m_met && met;
    std::printf("%-48s %10.3f %-3s", what, value, unit);
    if (limit != 0)
        std::printf(" limit %6.2f  %s", limit, met ? "ok" : "OVER");
    std::printf("\n");
}

void Bench::read()
{
    const double raw = best([&] { m_raw.readAll("SELECT * FROM item"); });
    const double before = statusMiB("VmRSS:");
    std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
    double opened = 0;
    const double all = best([&] {
        xCDorvexDataSet data;
        opened =
            milliseconds([&] { data.Open(m_session.channel(), L"SELECT * FROM item", 0, true); });
        require(data.GetRowCount() == m_rows, data);
        for (long row = 1; row <= m_rows; ++row)
            data.ToRow(row == 1 ? OviAPI::FetchFirst : OviAPI::FetchNext, 0, false);
        require(data.GetRow() == m_rows, data);
    });
    const double memory = statusMiB("VmHWM:") - before;
    report("raw, every row and cell", raw, "ms");
    report("dataset, opened and every row read", all, "ms");
    report("  of it the opening", opened, "ms");
    report("  of the raw reading", all / raw, "x", readLimit);
    report("  memory above", memory, "MiB", memoryLimit);
    readByPeer(all);
}

void Bench::readByPeer(double ours)
{
    const std::string command = m_peer + ' ' + m_raw.peerArguments() + " 'SELECT * FROM item'";
    FILE* answer = ::popen(command.c_str(), "r");
    double time = 0;
    double peak = 0;
    const bool told = answer && std::fscanf(answer, "%lf %lf", &time, &peak) == 2;
    if (!answer || ::pclose(answer) != 0 || !told)
        throw std::runtime_error("the peer could not be run: " + command);
    report("the toolkit's query model, every row and cell", time, "ms");
    report("  the dataset's part of its time", ours / time, "x", peerLimit);
}

// In turns with the raw updates: what the disk does meanwhile meets both.
void Bench::edit()
{
    OviAPI::WForm form;
    View view;
    view.setParent(&form);
    form.create();
    form.move(0, 0, 1000, 600);
    view.create();
    view.move(0, 0, 1000, 600);
    xCDorvexDataSet data;
    data.SetRowCache(true);
    double raw = 0;
    double ours = 0;
    for (int i = 0; i < runs; ++i) {
        const double byKey = milliseconds([&] { m_raw.updateByKey(edits); });
        data.Open(m_session.channel(), L"SELECT * FROM item", 0, true);
        data.ClearRowCache();
        view.SetDataSet(&data, true);
        form.show(true);
        view.waitForPaint();
        const double edited = milliseconds([&] {
            for (int k = 0; k < edits; ++k) {
                const long row = k % 10 + 1; // among those that are shown
                data.BeginEdit(row);
                require(data.StoreText(2, row, std::to_wstring(k + i * edits)) == 0, data);
                data.EndEdit();
                view.waitForPaint();
            }
        });
        raw = i == 0 ? byKey : std::min(raw, byKey);
        ours = i == 0 ? edited : std::min(ours, edited);
    }
    view.SetDataSet(nullptr, false);
    std::printf("\n%d edits of a cell, each its own transaction\n", edits);
    report("raw update by key, each", raw / edits, "ms");
    report("dataset and view, to the painted cell, each", ours / edits, "ms");
    report("  of the raw one", ours / raw, "x", editLimit);
}

std::string Bench::rowText(long id)
{
    const std::string n = std::to_string(id);
    return "INSERT INTO item(id, qty, big, price, code, name, made) VALUES (" + n + ", 5, " + n +
           ", 2.5, 'code', 'a name of some length', '2005-03-04 06:07:08')";
}

void Bench::insert()
{
    const double raw = best([&] {
        m_raw.execute("BEGIN");
        for (int i = 0; i < insertions; ++i)
            m_raw.execute(rowText(firstInserted + i));
        m_raw.execute("ROLLBACK");
    });
    const double prepared = best([&] {
        m_raw.execute("BEGIN");
        m_raw.insertRows(firstInserted, insertions);
        m_raw.execute("ROLLBACK");
    });
    DorCPP::DorCursor cursor;
    cursor.create(m_session, 0, nullptr, false);
    TimedDataSet data;
    data.Open(m_session.channel(),
              L"SELECT id, qty, big, price, code, name, made FROM item WHERE "
              L"id < 0",
              0, true);
    const auto row = data.AllocRowData();
    const auto set = [&](int column, const std::wstring& text) {
        const auto value = data.AllocData(column, nullptr, OviAPI::ValueForm);
        data.TextToData(column, text, value.get());
        data.ColDataIntoRow(column, value.get(), row.get());
    };
    set(2, L"5");
    set(4, L"2.5");
    set(5, L"code");
    set(6, L"a name of some length");
    set(7, L"2005-03-04 06:07:08");
    double added = 0;
    double again = 0;
    for (int run = 0; run < runs; ++run) {
        double inserting = 0;
        double querying = 0;
        cursor.execute("BEGIN");
        for (int i = 0; i < insertions; ++i) {
            set(1, std::to_wstring(firstInserted + i));
            set(3, std::to_wstring(firstInserted + i));
            const double start = clockMs();
            require(data.AddRow(row.get(), 0) == 0, data);
            querying += clockMs() - data.changedAt();
            inserting += data.changedAt() - start;
        }
        cursor.execute("ROLLBACK");
        added = run == 0 ? inserting : std::min(added, inserting);
        again = run == 0 ? querying : std::min(again, querying);
    }
    std::printf("\n%d rows inserted one by one in one transaction\n", insertions);
    report("raw, each a text of its own", raw, "ms");
    report("raw, one prepared statement", prepared, "ms");
    report("dataset", added, "ms");
    report("  of the raw texts", added / raw, "x", insertLimit);
    report("  of the raw prepared statement", added / prepared, "x");
    report("the query after each, besides", again, "ms");
}

bool Bench::run()
{
    m_raw.makeTable(m_rows);
    m_session.createCS("", "", m_raw.database().c_str(), "", 0, false, true);
    std::printf("%ld rows\n", m_rows);
    read();
    edit();
    insert();
    return m_met;
}

int measure(const std::string& program, long rows, const std::string& place)
{
    const std::string peer =
        (std::filesystem::path(program).parent_path() / "peer_qt_query").string();
    if (place.find('=') != std::string::npos)
        return Bench(*rawPostgresql(place), rows, peer).run() ? 0 : 1;
    const std::filesystem::path parent =
        place.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(place);
    std::string folder = (parent / "edit_bench_XXXXXX").string();
    if (!::mkdtemp(folder.data()))
        throw std::runtime_error("no temporary folder");
    const bool met = Bench(*rawSqlite(folder + "/item.db"), rows, peer).run();
    std::filesystem::remove_all(folder);
    return met ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("LC_ALL", "C.UTF-8", 0);
    try {
        OviAPI::Application application;
        application.start(argc, argv);
        const long rows = argc > 1 ? std::max(std::atol(argv[1]), 1000L) : 1'000'000;
        return measure(std::filesystem::read_symlink("/proc/self/exe").string(), rows,
                       argc > 2 ? argv[2] : "");
    } catch (const std::exception& x) {
        std::fprintf(stderr, "%s\n", x.what());
        return 2;
    }
}
