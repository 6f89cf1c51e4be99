#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "support.h"
#include "waiter.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

const char* const endless = "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c) "
                            "SELECT count(*) FROM c";

class Async : public Database {
protected:
    void fill(int count)
    {
        execute("CREATE TABLE n(i INTEGER PRIMARY KEY, s TEXT)");
        execute("WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < " +
                std::to_string(count) + ") INSERT INTO n SELECT i, 'row ' || i FROM c");
    }
    void runAndWait(const char* sql)
    {
        Waiter waiter;
        cursor.execute(sql, &waiter);
        waiter.wait();
        status = waiter.status;
        EXPECT_EQ(waiter.calls, 1);
        EXPECT_NE(waiter.thread, std::this_thread::get_id());
    }
    int status = 99;
};

// Another session that holds the lock for writing.
class OtherWriter {
public:
    explicit OtherWriter(const std::string& path)
    {
        open(m_connection, path, "");
        m_cursor.create(m_connection, 0, nullptr, true);
        m_cursor.execute("BEGIN IMMEDIATE");
    }
    void end() { m_cursor.execute("ROLLBACK"); }

private:
    DorConnect m_connection;
    DorCursor m_cursor;
};

std::atomic<int> woken = 0;
std::mutex wokenMutex;
std::condition_variable wokenCondition;

void wake()
{
    const std::lock_guard lock(wokenMutex);
    ++woken;
    wokenCondition.notify_all();
}

} // namespace

TEST_F(Async, AKeyedAnswerIsReadyWhenTheHandlerIsCalled)
{
    fill(3000);
    runAndWait("SELECT i, s FROM n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(cursor.selectRowCount(), 3000);
    EXPECT_TRUE(cursor.isKeyed());
    cursor.fetch(FetchLast, 0);
    EXPECT_EQ(text(cursor, 2), "row 3000");
    EXPECT_EQ(cursor.lastError().code(), 0);
}

TEST_F(Async, ASpooledAnswerIsReadyWhenTheHandlerIsCalled)
{
    fill(3000);
    runAndWait("SELECT DISTINCT s FROM n ORDER BY i");
    cursor.fetch(FetchAbsolute, 2999);
    EXPECT_EQ(text(cursor, 1), "row 2999");
}

TEST_F(Async, AnEmptyTextCallsTheHandlerToo)
{
    runAndWait("  -- nothing");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(cursor.columnCount(), 0);
}

TEST_F(Async, AnErrorReachesTheHandlerAndItsTextsTheCursor)
{
    Waiter waiter;
    cursor.execute("SELECT * FROM nowhere", &waiter);
    waiter.wait();
    EXPECT_EQ(waiter.status, CodeSqlText);
    EXPECT_NE(waiter.code, 0);
    EXPECT_NE(std::string(cursor.lastError().what()).find("nowhere"), std::string::npos);
    execute("SELECT 1");
    EXPECT_EQ(cursor.lastError().code(), 0);
}

TEST_F(Async, ChangesMadeBesideAreSeenByTheSession)
{
    fill(10);
    execute("SELECT s FROM n");
    cursor.fetch(FetchAbsolute, 5);
    Waiter waiter;
    DorCursor other;
    other.create(connection, 0, nullptr, true);
    other.execute("UPDATE n SET s = 'changed'", &waiter);
    waiter.wait();
    EXPECT_EQ(waiter.status, 0);
    EXPECT_EQ(other.changedRowCount(), 10);
    EXPECT_EQ(text(cursor, 1), "row 5"); // as it was fetched
    cursor.fetch(FetchAbsolute, 5);
    EXPECT_EQ(text(cursor, 1), "changed");
}

TEST_F(Async, CloseReturnsAtOnceAndTheHandlerIsCalledOnce)
{
    Waiter waiter;
    cursor.execute(endless, &waiter);
    EXPECT_EQ(codeOf([&] { cursor.columnCount(); }), CodeBusy);
    EXPECT_EQ(codeOf([&] { cursor.execute("SELECT 1"); }), CodeBusy);
    EXPECT_TRUE(cursor.isRunning());
    const auto start = std::chrono::steady_clock::now();
    cursor.close();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_FALSE(cursor.isRunning());
    cursor.execute("SELECT 5");
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"5"});
    waiter.wait();
    EXPECT_EQ(waiter.status, CodeCancelled);
    EXPECT_EQ(waiter.calls, 1);
}

TEST_F(Async, DestroyingARunningCursorCancelsItsStatement)
{
    Waiter waiter;
    {
        DorCursor short_lived;
        short_lived.create(connection, 0, nullptr, true);
        short_lived.execute(endless, &waiter);
        connection.close();
        cursor.close();
    }
    waiter.wait();
    EXPECT_EQ(waiter.status, CodeCancelled);
}

TEST_F(Async, ACancelNeverHitsTheNextStatement)
{
    fill(2000);
    for (int i = 0; i < 100; ++i) {
        Waiter waiter;
        cursor.execute("SELECT count(*) FROM n AS a, n AS b WHERE a.i < 100 AND b.s > a.s",
                       &waiter);
        if (i % 3 == 0)
            std::this_thread::yield();
        cursor.close();
        Waiter next;
        cursor.execute("SELECT count(*) FROM n", &next);
        next.wait();
        ASSERT_EQ(next.status, 0) << i;
        cursor.execute("SELECT i FROM n ORDER BY s");
        ASSERT_EQ(cursor.selectRowCount(), 2000);
        waiter.wait();
        ASSERT_TRUE(waiter.status == 0 || waiter.status == CodeCancelled) << waiter.status;
    }
}

TEST_F(Async, OtherCursorsReadWhileAStatementRunsBeside)
{
    fill(500);
    execute("SELECT i FROM n");
    DorCursor running;
    running.create(connection, 0, nullptr, true);
    Waiter waiter;
    running.execute(endless, &waiter);
    cursor.fetch(FetchAbsolute, 400);
    EXPECT_EQ(text(cursor, 1), "400");
    EXPECT_TRUE(running.isRunning());
    running.close();
    waiter.wait();
}

TEST_F(Async, InATransactionTheStatementSeesItsChangesAndOthersAreToldToWait)
{
    fill(500);
    execute("BEGIN");
    execute("INSERT INTO n VALUES(501, 'mine')");
    runAndWait("SELECT count(*) FROM n");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(text(cursor, 1), "501");

    DorCursor running;
    running.create(connection, 0, nullptr, true);
    Waiter waiter;
    running.execute(endless, &waiter);
    DorCursor other;
    other.create(connection, 0, nullptr, true);
    int code = 0;
    while (code == 0) // until the worker has the session
        code = codeOf([&] { other.execute("SELECT 1"); });
    EXPECT_EQ(code, CodeBusy);
    other.create(connection, 0, nullptr, true); // a session at work is alive
    EXPECT_FALSE(connection.inTransaction());
    running.close();
    waiter.wait();
    execute("ROLLBACK");
    execute("SELECT count(*) FROM n");
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"500"});
}

TEST_F(Async, ATransactionStatementTakesEffectOnTheSession)
{
    runAndWait("BEGIN");
    EXPECT_TRUE(connection.inTransaction());
    runAndWait("ROLLBACK");
    EXPECT_FALSE(connection.inTransaction());
}

TEST_F(Async, TemporaryTablesAndMemoryDatabasesAreSeen)
{
    execute("CREATE TEMP TABLE mine(a)");
    runAndWait("SELECT * FROM mine");
    EXPECT_EQ(status, 0);
    open(connection, ":memory:");
    cursor.create(connection, 0, nullptr, true);
    execute("CREATE TABLE m(a)");
    runAndWait("INSERT INTO m VALUES(1)");
    EXPECT_EQ(status, 0);
    runAndWait("SELECT * FROM m");
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"1"});
}

TEST_F(Async, ValuesOfAStatementAreCopied)
{
    fill(10);
    DorStatement statement;
    statement.create(connection, "SELECT s FROM n WHERE i = ?", true);
    Waiter waiter;
    {
        auto value = std::make_unique<std::string>("7");
        BindMap binds;
        binds.bind(1, {TypeChar, value->data(), value->size(), 0});
        cursor.execute(statement, &binds, &waiter);
    }
    waiter.wait();
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"row 7"});
}

TEST_F(Async, TheHandlerMayBeInItsCallAndTheCursorUsedMeanwhile)
{
    // Stays in its call until the test has seen it there.
    struct Slow : DorCursor::Handler {
        void handler(unsigned short, int) override
        {
            inside = true;
            inside.notify_all();
            leave.wait(false);
        }
        std::atomic<bool> inside = false;
        std::atomic<bool> leave = false;
    } slow;
    fill(10);
    cursor.execute("SELECT i FROM n", &slow);
    slow.inside.wait(false);
    EXPECT_TRUE(cursor.isInCallback());
    EXPECT_FALSE(cursor.isRunning());
    EXPECT_EQ(cursor.selectRowCount(), 10);
    slow.leave = true;
    slow.leave.notify_all();
    while (cursor.isInCallback())
        DelayThread(0);
    EXPECT_FALSE(cursor.isInCallback());
}

TEST_F(Async, AHandlersExceptionStaysOnItsThread)
{
    struct Thrower : DorCursor::Handler {
        void handler(unsigned short, int) override
        {
            called = true;
            throw std::runtime_error("thrown");
        }
        std::atomic<bool> called = false;
    } thrower;
    cursor.execute("SELECT 1", &thrower);
    while (cursor.isRunning() || cursor.isInCallback() || !thrower.called)
        DelayThread(0);
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"1"});
}

TEST_F(Async, TheWakeUpFollowsTheHandler)
{
    woken = 0;
    setWakeUp(wake);
    runAndWait("SELECT 1");
    {
        std::unique_lock lock(wokenMutex);
        wokenCondition.wait(lock, [] { return woken > 0; });
    }
    setWakeUp(nullptr);
    EXPECT_EQ(woken, 1);
}

TEST_F(Async, ManyStatementsRunAtOnce)
{
    fill(1000);
    std::vector<std::unique_ptr<DorCursor>> cursors;
    Waiter waiter;
    for (int i = 0; i < 16; ++i) {
        cursors.push_back(std::make_unique<DorCursor>());
        cursors.back()->create(connection, 0, nullptr, true);
        cursors.back()->execute("SELECT i FROM n ORDER BY s", &waiter);
    }
    waiter.wait(16);
    for (const auto& c : cursors) {
        c->fetch(FetchLast, 0);
        EXPECT_EQ(text(*c, 1), "999");
    }
}

TEST_F(Async, SeveralThreadsShareASession)
{
    fill(2000);
    const int channel = connection.channel();
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            DorConnect mine;
            mine.attach(channel, true);
            DorCursor c;
            c.create(mine, 0, nullptr, true);
            c.execute(t % 2 ? "SELECT i, s FROM n" : "SELECT i, s FROM n ORDER BY s");
            for (int64_t row = 1; row <= 2000; ++row) {
                c.fetch(FetchAbsolute, row);
                if (text(c, 2) != "row " + text(c, 1))
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(Async, NeitherStartNorCloseWaitsForAnotherThreadsStatement)
{
    fill(10);
    OtherWriter holder(path());
    const int channel = connection.channel();
    std::atomic<bool> ended = false;
    std::atomic<bool> started = false;
    std::thread waiting([&] { // has the session until the lock is free
        DorConnect mine;
        mine.attach(channel, true);
        DorCursor c;
        c.create(mine, 0, nullptr, false);
        started = true;
        c.execute("INSERT INTO n VALUES (1000, 'waited')");
        ended = true;
    });
    while (!started)
        DelayThread(1);
    Waiter waiter;
    cursor.execute(endless, &waiter);
    cursor.close();
    EXPECT_FALSE(ended);
    holder.end();
    waiting.join();
    waiter.wait();
    EXPECT_EQ(waiter.status, CodeCancelled);
}

TEST_F(Async, AStatementThatWaitsForALockIsCancelled)
{
    fill(10);
    OtherWriter holder(path());
    Waiter waiter;
    cursor.execute("DELETE FROM n", &waiter);
    cursor.close();
    waiter.wait(); // while the lock is held
    EXPECT_EQ(waiter.status, CodeCancelled);
    holder.end();
}

TEST_F(Async, WhereNoThreadCanBeMadeExecuteThrowsAndTheHandlerIsNotCalled)
{
    fill(10);
    execute("SELECT i, s FROM n");
    cursor.fetch(FetchFirst, 0);
    Waiter waiter;
    pthread_attr_t before;
    pthread_attr_t huge;
    pthread_getattr_default_np(&before);
    pthread_getattr_default_np(&huge);
    ASSERT_EQ(pthread_attr_setstacksize(&huge, size_t{1} << 47), 0); // more than can be addressed
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    const int onRow =
        codeOf([&] { cursor.execute("UPDATE n SET s = 'x' WHERE CURRENT OF CURSOR", &waiter); });
    const std::string row = text(cursor, 2);
    const int plain = codeOf([&] { cursor.execute("SELECT 1", &waiter); });
    pthread_setattr_default_np(&before);
    pthread_attr_destroy(&huge);
    pthread_attr_destroy(&before);
    EXPECT_EQ(onRow, CodeNoMemory);
    EXPECT_EQ(row, "row 1"); // the answer is back
    EXPECT_EQ(plain, CodeNoMemory);
    EXPECT_FALSE(cursor.isRunning());
    runAndWait("SELECT 1");
    EXPECT_EQ(waiter.calls, 0);
}
