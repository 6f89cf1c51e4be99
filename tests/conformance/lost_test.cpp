// Servers that go, and servers that stand still.
#include <csignal>
#include <thread>

#include "ownserver.h"
#include "support.h"

using namespace Conformance;

namespace {

std::string pidOf(Client& client)
{
    return client.value("SELECT pg_backend_pid()");
}

// The server process that sleeps in a statement with this mark in it, once it does.
int pidRunning(Client& client, const std::string& mark)
{
    for (const Stopwatch watch; watch.ms() < 20'000;) {
        const auto pids = client.answer("SELECT pid FROM pg_stat_activity WHERE pid <> "
                                        "pg_backend_pid() AND wait_event = 'PgSleep' AND query "
                                        "LIKE '%" +
                                        mark + "%'");
        if (!pids.empty())
            return std::stoi(pids.front());
        std::this_thread::yield();
    }
    ADD_FAILURE() << mark << " does not sleep";
    return 0;
}

// Closes a cursor whose statement runs on a server that a halted process holds up.
void closeWhileHalted(DorCursor& cursor, Waiter& waiter, pid_t pid)
{
    ASSERT_EQ(::kill(pid, SIGSTOP), 0);
    const Stopwatch watch;
    cursor.close();
    EXPECT_LT(watch.ms(), 50);
    EXPECT_TRUE(waiter.wait());
    EXPECT_LT(watch.ms(), 3000);
    EXPECT_EQ(waiter.status, CodeSessionLost);
    ::kill(pid, SIGCONT);
}

class Lost : public OnPostgresql {
protected:
    void end(const std::string& pid)
    {
        other.execute("SELECT pg_terminate_backend(" + pid + ", 10000)"); // waits for its end
    }
    // The error of a statement whose server process is ended while it runs.
    DorX endDuring(const std::string& sql)
    {
        Waiter waiter;
        cursor.execute(sql.c_str(), &waiter);
        end(std::to_string(pidRunning(other, "pg_sleep(59)")));
        const Stopwatch watch;
        EXPECT_TRUE(waiter.wait());
        EXPECT_LT(watch.ms(), 2000);
        EXPECT_EQ(waiter.status, CodeSessionLost);
        return cursor.lastError();
    }
    Client other{place};
};

} // namespace

TEST_F(Lost, ASessionThatWasEndedIsToldAtItsNextStatement)
{
    end(pidOf(own));
    try {
        execute("SELECT 1");
        FAIL();
    } catch (const DorX& x) {
        EXPECT_EQ(x.code(), CodeSessionLost);
        EXPECT_NE(x.systemCode(), 0);
        EXPECT_NE(std::string(x.what()).find("57P01"), std::string::npos) << x.what();
        EXPECT_EQ(x.nested().begin(), x.nested().end()); // nothing was sent
    }
    EXPECT_EQ(codeOf([&] { execute("SELECT 1"); }), CodeSessionLost);
    DorCursor another;
    EXPECT_EQ(codeOf([&] { another.create(connection, 0, nullptr, true); }), CodeSessionLost);
    EXPECT_FALSE(connection.inTransaction());
}

TEST_F(Lost, ASessionThatIsEndedDuringAStatementIsToldAtOnce)
{
    const DorX x = endDuring("SELECT pg_sleep(59)");
    EXPECT_NE(std::string(x.what()).find("57P01"), std::string::npos) << x.what();
    EXPECT_FALSE(says(x, OviAPI::Phrase::DbOutcomeUnknown));
    EXPECT_EQ(own.value("SELECT 1"), "1"); // it ran on a connection of its own
}

TEST_F(Lost, WhatWasInFlightIsSaidToBeUnknown)
{
    execute("CREATE TABLE t(a text)");
    EXPECT_TRUE(says(endDuring("INSERT INTO t SELECT 'x' FROM pg_sleep(59)"),
                     OviAPI::Phrase::DbOutcomeUnknown));
    EXPECT_EQ(own.value("SELECT count(*) FROM t"), "0");
}

TEST_F(Lost, WhatWasInFlightInATransactionIsUndone)
{
    execute("CREATE TABLE t(a text)");
    execute("BEGIN");
    execute("INSERT INTO t VALUES ('x')");
    const DorX x = endDuring("INSERT INTO t SELECT 'x' FROM pg_sleep(59)");
    EXPECT_TRUE(says(x, OviAPI::Phrase::DbDetailRolledBack));
    EXPECT_FALSE(says(x, OviAPI::Phrase::DbOutcomeUnknown));
    EXPECT_EQ(other.value("SELECT count(*) FROM t"), "0");
}

TEST_F(Lost, AConnectionBesideIsMadeAnew)
{
    Waiter first;
    cursor.execute("SELECT 'beside', pg_backend_pid()", &first);
    ASSERT_TRUE(first.wait());
    cursor.fetch(FetchFirst, 0);
    end(text(cursor, 2));
    Waiter second;
    cursor.execute("SELECT 'beside', pg_backend_pid()", &second);
    ASSERT_TRUE(second.wait());
    EXPECT_EQ(second.status, 0) << cursor.lastError().what();
}

TEST_F(Lost, ALongSleepIsStoppedAtOnce)
{
    Waiter waiter;
    cursor.execute("SELECT pg_sleep(58)", &waiter);
    pidRunning(other, "pg_sleep(58)");
    const Stopwatch watch;
    cursor.close();
    EXPECT_LT(watch.ms(), 50);
    ASSERT_TRUE(waiter.wait());
    EXPECT_LT(watch.ms(), 300);
    EXPECT_EQ(waiter.status, CodeCancelled);
}

TEST_F(Lost, AServerProcessThatStandsStillHoldsNobody)
{
    Waiter waiter;
    cursor.execute("SELECT pg_sleep(57)", &waiter);
    const int pid = pidRunning(other, "pg_sleep(57)");
    closeWhileHalted(cursor, waiter, pid);
    Waiter next;
    cursor.execute("SELECT 1", &next);
    ASSERT_TRUE(next.wait());
    EXPECT_EQ(next.status, 0);
}

// These end or halt a server of their own.
class LostServer : public ::testing::Test {
protected:
    LostServer()
    {
        owned.open(connection);
        cursor.create(connection, 0, nullptr, true);
    }

    OwnServer owned;
    DorConnect connection;
    DorCursor cursor;
};

TEST_F(LostServer, AServerThatStoppedIsSaidToHaveStopped)
{
    Waiter waiter;
    cursor.execute("SELECT pg_sleep(60)", &waiter);
    DorCursor second;
    second.create(connection, 0, nullptr, true);
    owned.run("stop");
    ASSERT_TRUE(waiter.wait());
    EXPECT_EQ(waiter.status, CodeServerStopped);
    EXPECT_EQ(codeOf([&] { second.execute("SELECT 1"); }), CodeServerStopped);
}

TEST_F(LostServer, AServerWithoutTlsIsRefusedWhereTlsIsWanted)
{
    for (const char* host : {"host=127.0.0.1 sslmode=require", "host=127.0.0.2"}) {
        DorConnect other; // of a keyword that comes twice the last one counts
        const std::string said = messageOf([&] { owned.open(other, host); });
        EXPECT_NE(said.find("SSL"), std::string::npos) << said;
    }
}

TEST_F(LostServer, ARequestToStopThatIsNotTakenHoldsNobody)
{
    Waiter waiter;
    cursor.execute("SELECT pg_sleep(60)", &waiter);
    EXPECT_FALSE(waiter.wait(1, std::chrono::milliseconds(300)));
    const pid_t pid = owned.mainProcess();
    ASSERT_GT(pid, 0);
    closeWhileHalted(cursor, waiter, pid);
}
