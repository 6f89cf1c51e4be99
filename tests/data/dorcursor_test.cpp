#include <clocale>

#include "data/dorcursor.h"
#include "tests/data/asyncwait.h"

using namespace DorCPP;

namespace {

struct TimedCursor : xRDorCursor {
    int64_t elapsed() const { return m_elapsed; }
    void setElapsed(int64_t milliseconds) { m_elapsed = milliseconds; }
};

class Timed : public AsyncWait {
protected:
    Timed() { timed.create(connection, 0, nullptr, true); }
    TimedCursor timed;
};

constexpr int64_t mark = 123456789; // no statement takes as long

} // namespace

TEST_F(Timed, HoursMinutesAndSecondsAddUpToTheTime)
{
    timed.setElapsed(((1 * 60 + 2) * 60 + 3) * 1000 + 456);
    EXPECT_EQ(timed.getHours(), 1);
    EXPECT_EQ(timed.getMinutes(), 2);
    EXPECT_NEAR(timed.getSeconds(), 3.456, 1e-9);
    timed.setElapsed(0);
    EXPECT_EQ(timed.getHours(), 0);
    EXPECT_EQ(timed.getMinutes(), 0);
    EXPECT_EQ(timed.getSeconds(), 0.0);
    timed.setElapsed(59999);
    EXPECT_EQ(timed.getMinutes(), 0);
    EXPECT_DOUBLE_EQ(timed.getSeconds(), 59.999);
}

TEST_F(Timed, KeptPartsOfAMillisecondAreDroppedTowardsZero)
{
    // Kept: seconds and microseconds are subtracted by themselves.
    EXPECT_EQ(xRDorCursor::millisecondsBetween({10, 0}, {11, 1999}), 1001);
    EXPECT_EQ(xRDorCursor::millisecondsBetween({10, 999999}, {11, 0}), 1);
    EXPECT_EQ(xRDorCursor::millisecondsBetween({10, 500}, {11, 0}), 1000);
    EXPECT_EQ(xRDorCursor::millisecondsBetween({10, 900000}, {12, 100000}), 1200);
}

TEST_F(Timed, TheClockRunsFromStartToStop)
{
    xRDorCursor::TimeVal start = xRDorCursor::startClock();
    EXPECT_GT(start.seconds, 1000000000);
    EXPECT_LT(start.microseconds, 1000000);
    start.seconds -= 3723;
    timed.stopClock(start);
    EXPECT_GE(timed.elapsed(), 3723000);
    EXPECT_EQ(timed.getHours(), 1);
    EXPECT_EQ(timed.getMinutes(), 2);
}

TEST_F(Timed, EveryFormTakesTheTime)
{
    timed.setElapsed(mark);
    timed.execute("SELECT 1", false, false);
    EXPECT_LT(timed.elapsed(), mark);
    timed.setElapsed(mark);
    timed.execute(L"SELECT 2", true, false);
    EXPECT_LT(timed.elapsed(), mark);
    EXPECT_EQ(firstValue(timed), 2);
    timed.setElapsed(mark);
    DorStatement statement;
    statement.create(connection, "SELECT 3", true);
    timed.execute(statement, nullptr, true, true);
    EXPECT_LT(timed.elapsed(), mark);
    EXPECT_EQ(firstValue(timed), 3);
}

TEST_F(Timed, TheTimeOfAWaitCounts)
{
    const Stopwatch time;
    const When stop([&] { return time.milliseconds() >= 50; }, [&] { timed.terminate(); });
    timed.execute(endless, true, false);
    EXPECT_GE(timed.elapsed(), 45);
}

TEST_F(Timed, AnEmptyTextDoesNotTouchTheTime)
{
    timed.setElapsed(mark);
    timed.execute("", true, false);
    timed.execute(L"", false, false);
    timed.execute(static_cast<const char*>(nullptr), false, false);
    timed.execute(static_cast<const wchar_t*>(nullptr), true, true);
    EXPECT_EQ(timed.elapsed(), mark);
}

TEST_F(Timed, ATextThatFailsLeavesTheTimeZero)
{
    timed.setElapsed(mark);
    EXPECT_EQ(thrownBy([&] { timed.execute("SELECT * FROM nowhere", true, false); }).code(),
              CodeSqlText);
    EXPECT_EQ(timed.elapsed(), 0);
    timed.setElapsed(mark);
    EXPECT_THROW(timed.execute(L"SELECT * FROM nowhere", false, false), DorX);
    EXPECT_EQ(timed.elapsed(), 0);
}

TEST_F(Timed, KeptAStatementThatFailsLeavesTheTimeAsItWas)
{
    // Kept: only the text forms set it to 0.
    timed.setElapsed(mark);
    const DorStatement never;
    EXPECT_THROW(timed.execute(never, nullptr, true, false), DorX);
    EXPECT_EQ(timed.elapsed(), mark);
}

TEST_F(Timed, WideTextIsExecutedInTheLocale)
{
    run("CREATE TABLE t(s TEXT)");
    timed.execute(L"INSERT INTO t VALUES('\x43F\x440\x20AC\x1F600')", true, false);
    EXPECT_EQ(value("SELECT length(s) FROM t"), 4);
}

TEST_F(Timed, WideTextThatTheLocaleCannotSayIsRefusedBeforeItIsExecuted)
{
    run("CREATE TABLE t(s TEXT)");
    timed.setElapsed(mark);
    const DorX x = thrownBy([&] { timed.execute(L"INSERT INTO t VALUES('\xD800')", true, false); });
    EXPECT_EQ(x.code(), CodeBadCall);
    EXPECT_NE(std::string(x.what()).find("character"), std::string::npos);
    EXPECT_EQ(timed.elapsed(), 0);
    EXPECT_EQ(value("SELECT count(*) FROM t"), 0);
}

TEST_F(Timed, ACursorDestroyedDuringItsWaitIsNotTouched)
{
    auto own = std::make_unique<TimedCursor>();
    own->create(connection, 0, nullptr, true);
    xRDorCursor* plain = own.get();
    const When destroy([&] { return plain->isWaiting(); }, [&] { own = nullptr; });
    EXPECT_EQ(thrownBy([&] { plain->execute(endless, true, false); }).code(), CodeCancelled);
}
