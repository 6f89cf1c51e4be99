// Asynchronous statements and stopping them.
#include <cstdlib>

#include "support.h"

using namespace Conformance;

namespace {

class Stops : public OnEngine {
protected:
    // Starts a statement, lets it run and closes its cursor; ms until the handler was called.
    long stop(const std::string& sql, std::chrono::milliseconds after)
    {
        DorCursor running;
        running.create(connection, 0, nullptr, false);
        Waiter waiter;
        running.execute(sql.c_str(), &waiter);
        EXPECT_FALSE(waiter.wait(1, after)) << "it ended by itself with " << waiter.status;
        const Stopwatch watch;
        running.close();
        EXPECT_LT(watch.ms(), 100);
        EXPECT_TRUE(waiter.wait());
        const long ms = watch.ms();
        EXPECT_EQ(waiter.status, CodeCancelled);
        EXPECT_EQ(waiter.calls, 1);
        return ms;
    }
};

} // namespace

ON_BOTH_ENGINES(Stops);

TEST_P(Stops, AnAsynchronousAnswerIsTheSameAsTheOther)
{
    fill(1000);
    for (const char* sql : {"SELECT id, s FROM n", "SELECT DISTINCT id, s FROM n ORDER BY id"}) {
        Waiter waiter;
        cursor.execute(sql, &waiter);
        ASSERT_TRUE(waiter.wait());
        EXPECT_EQ(waiter.status, 0);
        EXPECT_EQ(waiter.calls, 1);
        EXPECT_EQ(cursor.selectRowCount(), 1000);
        cursor.fetch(FetchAbsolute, 999);
        EXPECT_EQ(text(cursor, 2), "row 999");
    }
}

TEST_P(Stops, AnErrorReachesTheHandler)
{
    Waiter waiter;
    cursor.execute("SELECT * FROM nowhere", &waiter);
    ASSERT_TRUE(waiter.wait());
    EXPECT_EQ(waiter.status, CodeSqlText);
    EXPECT_NE(std::string(cursor.lastError().what()).find("nowhere"), std::string::npos);
}

TEST_P(Stops, AStatementThatCountsIsStoppedSoon)
{
    EXPECT_LT(stop(endless(), std::chrono::milliseconds(100)), 1000);
    EXPECT_EQ(own.value("SELECT 7"), "7");
}

TEST_P(Stops, ASortIsStoppedSoon)
{
    const char* const sort = "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c "
                             "WHERE i < 30000000) SELECT i, 'text ' || i FROM c "
                             "ORDER BY (i * 7919.0) / 104729, i";
    EXPECT_LT(stop(sort, std::chrono::milliseconds(300)), 1000);
    EXPECT_EQ(own.value("SELECT 7"), "7");
}

TEST_P(Stops, AStatementInATransactionIsStoppedToo)
{
    fill(3);
    execute("BEGIN");
    EXPECT_LT(stop(endless(), std::chrono::milliseconds(100)), 1000);
    execute("ROLLBACK");
    EXPECT_EQ(own.value("SELECT count(*) FROM n"), "3");
}

TEST_P(Stops, AnotherCursorReadsWhileAStatementRuns)
{
    fill(1000);
    execute("SELECT id, s FROM n");
    DorCursor running;
    running.create(connection, 0, nullptr, false);
    Waiter waiter;
    running.execute(endless().c_str(), &waiter);
    for (int i = 0; i < 1000; ++i)
        cursor.fetch(FetchNext, 0);
    EXPECT_EQ(text(cursor, 2), "row 1000");
    EXPECT_EQ(waiter.calls, 0);
    running.close();
    ASSERT_TRUE(waiter.wait());
}

// A request to stop that comes late must not hit what follows. OVI_STOPS: how often it is tried.
TEST_P(Stops, AStopNeverHitsTheStatementBehindIt)
{
    fill(500);
    const char* const wanted = std::getenv("OVI_STOPS");
    const int count = wanted ? std::atoi(wanted) : 500;
    DorCursor running;
    running.create(connection, 0, nullptr, false);
    for (int i = 0; i < count; ++i) {
        Waiter stopped;
        running.execute("SELECT a.s FROM n a JOIN n b ON a.id <= b.id ORDER BY b.s", &stopped);
        stopped.wait(1, std::chrono::milliseconds(i % 7));
        running.close();
        ASSERT_TRUE(stopped.wait());
        Waiter next;
        running.execute("SELECT count(*) FROM n", &next);
        ASSERT_TRUE(next.wait());
        ASSERT_EQ(next.status, 0) << "after stop " << i << ": " << running.lastError().what();
    }
}
