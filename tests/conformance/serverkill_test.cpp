// Server processes that are ended while rows are written, at any moment: what was acknowledged is
// there once, what is said to be unknown is there once at most, and nothing else. A few of each in
// the usual suite; with OVI_STRESS=1 as many as the long suite asks for.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <thread>

#include "ownserver.h"
#include "support.h"

using namespace Conformance;

namespace {

using Clock = std::chrono::steady_clock;

bool isLoss(const DorX& x)
{
    return x.code() == CodeSessionLost || x.code() == CodeServerStopped;
}

// Connects again and again, as long as the server does not take connections.
void connect(const OwnServer& server, DorConnect& connection, DorCursor& cursor,
             const std::string& keywords)
{
    for (const Stopwatch watch;;) {
        try {
            server.open(connection, keywords);
            cursor.create(connection, 0, nullptr, false);
            return;
        } catch (const DorX& x) {
            if (!isLoss(x) && x.code() != CodeCannotOpen)
                throw;
            if (watch.ms() > 30'000)
                throw;
        }
        std::this_thread::yield();
    }
}

// What the client was told of a row.
enum class Fate { Acknowledged, Unknown, NotWritten };

// Writes rows 1, 2, 3, .. until it is told to end; opens a new connection after each loss.
class Writer {
public:
    static constexpr const char* keywords = "application_name=ledger "
                                            "options=-csynchronous_commit=on";

    explicit Writer(const OwnServer& server)
        : m_server(server)
    {
    }
    void run();

    // From any thread.
    void end() { m_end = true; }
    int losses() const { return m_losses; }
    int acknowledged() const { return m_acknowledged; }

    // When it has ended.
    const std::map<int64_t, Fate>& rows() const { return m_rows; }
    int count(Fate fate) const
    {
        return static_cast<int>(std::count_if(m_rows.begin(), m_rows.end(),
                                              [&](const auto& row) { return row.second == fate; }));
    }

private:
    void write(DorCursor& cursor, int64_t number);
    void execute(DorCursor& cursor, const std::string& sql, bool asynchronous);
    Fate fateOf(const DorX& x) const;

    const OwnServer& m_server;
    std::mt19937 m_random{1};
    std::map<int64_t, Fate> m_rows;
    std::atomic<bool> m_end = false;
    std::atomic<int> m_losses = 0;
    std::atomic<int> m_acknowledged = 0;
};

void Writer::execute(DorCursor& cursor, const std::string& sql, bool asynchronous)
{
    if (!asynchronous) {
        cursor.execute(sql.c_str());
        return;
    }
    Waiter waiter;
    cursor.execute(sql.c_str(), &waiter);
    ASSERT_TRUE(waiter.wait());
    EXPECT_EQ(waiter.calls, 1);
    if (waiter.status != 0)
        throw DorX(cursor.lastError());
}

// In turns synchronously and not; at once, with time before the row is kept and after it, and in a
// transaction.
void Writer::write(DorCursor& cursor, int64_t number)
{
    const bool asynchronous = number % 2 == 0;
    const std::string value = std::to_string(number);
    switch (m_random() % 5) {
    case 0:
        execute(cursor, "INSERT INTO ledger SELECT " + value + " FROM pg_sleep(0.003)",
                asynchronous);
        break;
    case 1:
        execute(cursor,
                "DO $$ BEGIN INSERT INTO ledger VALUES (" + value +
                    "); COMMIT; PERFORM pg_sleep(0.003); END $$",
                asynchronous);
        break;
    case 2:
        execute(cursor, "BEGIN", false);
        execute(cursor, "INSERT INTO ledger VALUES (" + value + ')', asynchronous);
        execute(cursor, "COMMIT", asynchronous);
        break;
    default:
        execute(cursor, "INSERT INTO ledger VALUES (" + value + ')', asynchronous);
    }
}

Fate Writer::fateOf(const DorX& x) const
{
    const bool isUnknown = says(x, OviAPI::Phrase::DbOutcomeUnknown);
    EXPECT_FALSE(isUnknown && says(x, OviAPI::Phrase::DbDetailRolledBack)) << x.what();
    return isUnknown ? Fate::Unknown : Fate::NotWritten;
}

void Writer::run()
{
    int64_t number = 0;
    while (!m_end) {
        DorConnect connection;
        DorCursor cursor;
        connect(m_server, connection, cursor, keywords);
        try {
            while (!m_end) {
                m_rows[++number] = Fate::Unknown;
                write(cursor, number);
                m_rows[number] = Fate::Acknowledged;
                ++m_acknowledged;
            }
        } catch (const DorX& x) {
            // a connection beside the session's cannot be made while the server starts
            EXPECT_TRUE(isLoss(x) || x.code() == CodeCannotOpen) << x.code() << ' ' << x.what();
            m_rows[number] = fateOf(x);
            ++m_losses;
        }
    }
}

// Ends server processes of the writer.
class Killer {
public:
    Killer(const OwnServer& server, const Writer& writer)
        : m_server(server)
        , m_writer(writer)
    {
        reconnect();
    }
    // Ends every connection of the writer as an administrator does, or one by force, so that the
    // server throws out everybody and starts again. False when the writer has not felt it.
    bool kill(bool byForce);

private:
    std::string value(const std::string& sql);
    void reconnect() { connect(m_server, m_connection, m_cursor, ""); }
    // A moment while the writer is at work on a connection of its own.
    void waitForWork();
    void endProcesses(bool byForce);
    bool waitFor(const std::function<bool()>& condition) const;

    const OwnServer& m_server;
    const Writer& m_writer;
    DorConnect m_connection;
    DorCursor m_cursor;
    std::mt19937 m_random{2};
};

bool Killer::waitFor(const std::function<bool()>& condition) const
{
    for (const Stopwatch watch; !condition(); std::this_thread::yield()) {
        if (watch.ms() > 10'000)
            return false;
    }
    return true;
}

void Killer::waitForWork()
{
    const int rows = m_writer.acknowledged() + 1 + static_cast<int>(m_random() % 4);
    EXPECT_TRUE(waitFor([&] { return m_writer.acknowledged() >= rows; }));
    const auto moment = Clock::now() + std::chrono::microseconds(m_random() % 4000);
    while (Clock::now() < moment)
        std::this_thread::yield();
}

std::string Killer::value(const std::string& sql)
{
    m_cursor.execute(sql.c_str());
    m_cursor.fetch(FetchFirst, 0);
    return text(m_cursor, 1);
}

void Killer::endProcesses(bool byForce)
{
    const char* const all = " FROM pg_stat_activity WHERE application_name = 'ledger'";
    if (!byForce) {
        value(std::string("SELECT count(pg_terminate_backend(pid))") + all);
        return;
    }
    const std::string pid = value(std::string("SELECT coalesce(max(pid), 0)") + all);
    if (pid != "0")
        ::kill(std::stoi(pid), SIGKILL);
}

bool Killer::kill(bool byForce)
{
    waitForWork();
    const int before = m_writer.losses();
    try {
        endProcesses(byForce);
    } catch (const DorX& x) {
        if (!isLoss(x))
            throw;
    }
    if (byForce)
        reconnect();
    return waitFor([&] { return m_writer.losses() > before; });
}

class Kills : public ::testing::Test {
protected:
    OwnServer owned;
};

void printTimes(const char* what, std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%s: median %.1f ms, longest %.1f ms of %zu\n", what, times[times.size() / 2],
                times.back(), times.size());
}

} // namespace

TEST_F(Kills, AcknowledgedRowsAreThereOnceAndUnknownOnesOnceAtMost)
{
    const int ended = isLong() ? 200 : 6;
    const int forced = isLong() ? 20 : 1;
    Writer writer(owned);
    Killer killer(owned, writer);
    {
        DorConnect connection;
        DorCursor cursor;
        connect(owned, connection, cursor, Writer::keywords);
        cursor.execute("CREATE TABLE ledger(n int8)"); // no key: a row that comes twice is seen
    }
    std::thread thread([&] { writer.run(); });
    for (int i = 0; i < ended + forced; ++i)
        EXPECT_TRUE(killer.kill(i % 11 == 3)) << "the writer has not felt end " << i;
    writer.end();
    thread.join();

    std::map<int64_t, int> found;
    DorConnect connection;
    DorCursor cursor;
    connect(owned, connection, cursor, "");
    cursor.execute("SELECT n FROM ledger");
    for (const std::string& n : rows(cursor))
        ++found[std::stoll(n)];
    int written = 0;
    for (const auto& [number, fate] : writer.rows()) {
        const int times = found[number];
        written += fate == Fate::Unknown ? times : 0;
        if (fate == Fate::Acknowledged) {
            EXPECT_EQ(times, 1) << "row " << number << " was acknowledged";
        } else {
            EXPECT_LE(times, fate == Fate::Unknown ? 1 : 0) << "row " << number;
        }
    }
    EXPECT_EQ(found.size(), writer.rows().size()) << "rows that nobody wrote";
    EXPECT_GE(writer.losses(), ended + forced);
    if (isLong()) {
        for (const Fate fate : {Fate::Acknowledged, Fate::Unknown, Fate::NotWritten})
            EXPECT_GT(writer.count(fate), 0);
        EXPECT_GT(written, 0);
    }
    std::printf("%d ends and %d restarts: %d rows acknowledged, %d unknown (%d of them written), "
                "%d not written\n",
                ended, forced, writer.count(Fate::Acknowledged), writer.count(Fate::Unknown),
                written, writer.count(Fate::NotWritten));
}

TEST_F(Kills, AStatementWhoseProcessIsEndedIsToldSoon)
{
    DorConnect observing;
    DorCursor observer;
    connect(owned, observing, observer, "");
    std::vector<double> times;
    for (int i = 0; i < (isLong() ? 200 : 10); ++i) {
        DorConnect connection;
        DorCursor cursor;
        connect(owned, connection, cursor, "");
        Waiter waiter;
        cursor.execute("SELECT pg_sleep(60)", &waiter);
        const char* const running = "SELECT pid FROM pg_stat_activity WHERE state = 'active' AND "
                                    "wait_event = 'PgSleep'";
        for (const Stopwatch watch; observer.selectRowCount() == 0 && watch.ms() < 20'000;)
            observer.execute(running);
        observer.fetch(FetchFirst, 0);
        const int pid = std::stoi(text(observer, 1));
        observer.close();
        const auto begin = Clock::now();
        ASSERT_EQ(::kill(pid, SIGTERM), 0);
        ASSERT_TRUE(waiter.wait());
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
        EXPECT_EQ(waiter.status, CodeSessionLost);
        EXPECT_LT(times.back(), 2000);
    }
    printTimes("error after the end of the server process", times);
}
