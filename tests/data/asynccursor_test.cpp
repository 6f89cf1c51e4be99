#include <stdexcept>

#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/onelevelguiwaiter.h>

#include "tests/data/asyncwait.h"

using namespace DorCPP;

namespace {

enum Level : bool { Query = false, Single = true };

// Both ways of waiting.
class BothLevels : public AsyncWait, public testing::WithParamInterface<Level> {
protected:
    void executeEndless() { cursor.execute(endless, true, GetParam()); }
    // A condition for When.
    static std::function<bool()> isWaiting(const xRAsyncCursor& of)
    {
        return [&of] { return of.isWaiting(); };
    }
};

INSTANTIATE_TEST_SUITE_P(AsyncCursor, BothLevels, testing::Values(Query, Single),
                         [](const auto& level) { return level.param ? "Single" : "Query"; });

using AsyncCursor = AsyncWait;

} // namespace

TEST_P(BothLevels, TheAnswerIsThereWhenExecuteReturns)
{
    cursor.execute("SELECT 7", true, GetParam());
    EXPECT_EQ(firstValue(cursor), 7);
    EXPECT_FALSE(cursor.isWaiting());
    EXPECT_FALSE(cursor.isInCallback());
}

TEST_P(BothLevels, AStatementWithParametersIsExecuted)
{
    DorStatement statement;
    statement.create(connection, "SELECT ?", true);
    BindMap binds;
    binds.bind(1, {TypeChar, "42", 2, 0});
    cursor.execute(statement, &binds, true, GetParam());
    EXPECT_EQ(firstValue(cursor), 42);
}

TEST_P(BothLevels, EventsAreHandledDuringTheWait)
{
    int ticks = 0;
    const When third([&] { return cursor.isWaiting() && ++ticks == 3; },
                     [&] { cursor.terminate(); });
    executeEndless();
    EXPECT_EQ(ticks, 3);
}

TEST_P(BothLevels, KeptTheErrorHasACodeAndNoText)
{
    // Kept: who needs the words asks lastError.
    const DorX x = thrownBy([&] { cursor.execute("SELECT * FROM nowhere", true, GetParam()); });
    EXPECT_EQ(x.status(), -1);
    EXPECT_EQ(x.code(), CodeSqlText);
    EXPECT_STREQ(x.text(), "");
    EXPECT_EQ(x.detail(), nullptr);
    EXPECT_NE(std::string(cursor.lastError().what()).find("nowhere"), std::string::npos);
}

TEST_P(BothLevels, AStatementThatCannotBeStartedLeavesNothingBehind)
{
    OpenCursor unmade;
    const int64_t alive = handlersAlive();
    EXPECT_EQ(thrownBy([&] { unmade.execute("SELECT 1", true, GetParam()); }).code(), CodeBadCall);
    EXPECT_EQ(handlersAlive(), alive);
    EXPECT_FALSE(OviAPI::OneLevelGUIWaiter::m_exists);
    EXPECT_FALSE(unmade.isWaiting());
}

TEST_P(BothLevels, ATerminatedStatementIsNoErrorAndTheCursorCanBeUsedAgain)
{
    const When stop(isWaiting(cursor), [&] { cursor.terminate(); });
    EXPECT_NO_THROW(executeEndless());
    EXPECT_FALSE(cursor.isRunning());
    EXPECT_EQ(cursor.columnCount(), 0);
    cursor.execute("SELECT 5", true, GetParam());
    EXPECT_EQ(firstValue(cursor), 5);
}

TEST_P(BothLevels, TerminatingWithoutAWaitDoesNothing)
{
    cursor.execute("SELECT 1", true, GetParam());
    cursor.terminate();
    cursor.execute("SELECT 2", true, GetParam());
    EXPECT_EQ(firstValue(cursor), 2);
}

TEST_P(BothLevels, ALateCallbackIsFreedExactlyOnce)
{
    const HandedHandler::Count before = HandedHandler::count();
    for (int i = 0; i < 20; ++i) {
        const When stop(isWaiting(cursor), [&] { cursor.terminate(); });
        executeEndless();
    }
    EXPECT_TRUE(
        UiDriver::waitUntil([&] { return HandedHandler::count().freed - before.freed == 20; }));
    EXPECT_EQ(HandedHandler::count().made - before.made, 20);
}

TEST_P(BothLevels, WhatAnEventHandlerThrowsGoesThroughAndTheStatementIsCancelled)
{
    const When fail(isWaiting(cursor), [] { throw std::runtime_error("thrown"); });
    EXPECT_THROW(executeEndless(), std::runtime_error);
    EXPECT_EQ(waitCount(), 0U);
    EXPECT_FALSE(OviAPI::OneLevelGUIWaiter::m_exists);
    EXPECT_FALSE(cursor.isWaiting());
    EXPECT_FALSE(cursor.isRunning());
    cursor.execute("SELECT 3", true, GetParam());
    EXPECT_EQ(firstValue(cursor), 3);
}

TEST_P(BothLevels, ClosingTheCursorEndsItsWaitWithAnError)
{
    const When close(isWaiting(cursor), [&] { cursor.close(); });
    EXPECT_EQ(thrownBy([&] { executeEndless(); }).code(), CodeCancelled);
}

TEST_P(BothLevels, ACursorThatIsDestroyedDuringItsWaitIsNotGoneOnWith)
{
    auto own = std::make_unique<OpenCursor>();
    own->create(connection, 0, nullptr, true);
    xRAsyncCursor* plain = own.get();
    const When destroy(isWaiting(*own), [&] { own = nullptr; });
    EXPECT_EQ(thrownBy([&] { plain->execute(endless, true, GetParam()); }).code(), CodeCancelled);
    EXPECT_EQ(own, nullptr);
}

TEST_P(BothLevels, ExecutingOnTheWaitingCursorItselfIsRefusedAndTheWaitGoesOn)
{
    int code = 0;
    bool still = false;
    const When again(isWaiting(cursor), [&] {
        code = thrownBy([&] { cursor.execute("SELECT 1", true, Query); }).code();
        still = cursor.isWaiting() && cursor.isRunning();
    });
    const When stop([&] { return code != 0; },
                    [&] {
                        GetParam() ? OviAPI::OneLevelGUIWaiter::Break()
                                   : AsyncCursorQueryMode::instance().terminate();
                    });
    executeEndless();
    EXPECT_EQ(code, CodeBusy);
    EXPECT_TRUE(still);
}

TEST_P(BothLevels, QuittingTheApplicationEndsTheWait)
{
    bool returned = false;
    const When begin([] { return true; },
                     [&] {
                         executeEndless();
                         returned = true;
                     });
    const When quit(isWaiting(cursor), [] { OviAPI::Application::quit(3); });
    OviAPI::Application::instance()->messagePump();
    EXPECT_TRUE(returned);
    EXPECT_FALSE(cursor.isRunning());
}

TEST_P(BothLevels, AWaitThatBeginsAfterTheApplicationWasQuittedIsNotCutShort)
{
    int value = 0;
    const When begin([] { return true; },
                     [&] {
                         OviAPI::Application::quit();
                         cursor.execute("SELECT 11", true, GetParam());
                         value = firstValue(cursor);
                     });
    OviAPI::Application::instance()->messagePump();
    EXPECT_EQ(value, 11);
}

TEST_F(AsyncCursor, WithoutAsyncNothingIsWaitedFor)
{
    const int64_t made = HandedHandler::count().made;
    cursor.execute("SELECT 4", false, false);
    EXPECT_EQ(firstValue(cursor), 4);
    EXPECT_EQ(HandedHandler::count().made, made);
    EXPECT_FALSE(cursor.form().isCreated());
    const DorX x = thrownBy([&] { cursor.execute("SELECT * FROM nowhere", false, false); });
    EXPECT_STRNE(x.text(), "");
}

TEST_F(AsyncCursor, KeptASecondSingleLevelExecutionExecutesNothing)
{
    run("CREATE TABLE t(a)");
    OpenCursor second;
    second.create(connection, 0, nullptr, true);
    bool returned = false;
    const When nested([&] { return cursor.isWaiting(); },
                      [&] {
                          second.execute("INSERT INTO t VALUES(1)", true, Single);
                          returned = true;
                      });
    const When stop([&] { return returned; }, [&] { cursor.terminate(); });
    const int64_t made = HandedHandler::count().made;
    cursor.execute(endless, true, Single);
    EXPECT_TRUE(returned);
    EXPECT_EQ(HandedHandler::count().made, made + 1);
    EXPECT_FALSE(second.form().isCreated());
    EXPECT_EQ(value("SELECT count(*) FROM t"), 0);
}

TEST_F(AsyncCursor, NestedWaitsEndInnermostFirst)
{
    OpenCursor inner;
    inner.create(connection, 0, nullptr, true);
    std::string order;
    const When begin(waiting(1), [&] {
        inner.execute(endless, true, Query);
        order += "inner ";
    });
    const When stopOne(waiting(2), [&] { cursor.terminate(); });
    const When stopOther([&] { return order == "inner "; }, [&] { cursor.terminate(); });
    cursor.execute(endless, true, Query);
    order += "outer";
    EXPECT_EQ(order, "inner outer");
}

TEST_F(AsyncCursor, AnOuterStatementThatEndsFirstIsSeenWhenTheInnerOneHasEnded)
{
    OpenCursor inner;
    inner.create(connection, 0, nullptr, true);
    const When begin(waiting(1), [&] { inner.execute(endless, true, Query); });
    const When ended([&] { return waitCount() == 2 && !cursor.isRunning(); },
                     [&] { inner.terminate(); });
    cursor.execute(
        "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < 300000)"
        " SELECT count(*) FROM c",
        true, Query);
    EXPECT_EQ(firstValue(cursor), 300000);
}

TEST_F(AsyncCursor, AnOuterCursorMayBeDestroyedDuringAnInnerWait)
{
    auto outer = std::make_unique<OpenCursor>();
    outer->create(connection, 0, nullptr, true);
    int innerCode = -1;
    const When begin(waiting(1), [&] {
        innerCode = thrownBy([&] { cursor.execute(endless, true, Query); }).code();
    });
    const When destroy(waiting(2), [&] { outer = nullptr; });
    const When stop([&] { return !outer; }, [&] { cursor.terminate(); });
    xRAsyncCursor* plain = outer.get();
    EXPECT_EQ(thrownBy([&] { plain->execute(endless, true, Query); }).code(), CodeCancelled);
    EXPECT_EQ(innerCode, 0);
}

TEST_F(AsyncCursor, ASingleLevelWaitInsideANestableOneIsTerminatedByItsOwnCursor)
{
    OpenCursor inner;
    inner.create(connection, 0, nullptr, true);
    bool innerEnded = false;
    const When begin(waiting(1), [&] {
        inner.execute(endless, true, Single);
        innerEnded = true;
    });
    const When stopInner([&] { return inner.isWaiting(); }, [&] { inner.terminate(); });
    const When stopOuter([&] { return innerEnded; }, [&] { cursor.terminate(); });
    cursor.execute(endless, true, Query);
    EXPECT_TRUE(innerEnded);
}

TEST_F(AsyncCursor, AnExceptionOutOfANestedWaitLeavesTheFlagsBalanced)
{
    OpenCursor inner;
    inner.create(connection, 0, nullptr, true);
    const When begin(waiting(1), [&] { inner.execute(endless, true, Query); });
    const When fail(waiting(2), [] { throw std::runtime_error("thrown"); });
    EXPECT_THROW(cursor.execute(endless, true, Query), std::runtime_error);
    EXPECT_EQ(waitCount(), 0U);
    EXPECT_FALSE(inner.isRunning());
    EXPECT_FALSE(cursor.isRunning());
}

TEST_F(AsyncCursor, ClosingTheLastFormDuringAWaitEndsTheApplicationAlsoWhileProgressIsShown)
{
    OviAPI::WForm window;
    window.move(0, 0, 100, 100);
    window.create();
    window.show(true);
    bool returned = false;
    const When begin([] { return true; },
                     [&] {
                         cursor.execute(endless, true, Query);
                         returned = true;
                     });
    const When close(waiting(1), [&] {
        cursor.doShowCancel();
        EXPECT_TRUE(cursor.form().isVisible());
        window.close();
    });
    OviAPI::Application::instance()->messagePump();
    EXPECT_TRUE(returned);
}

TEST_F(AsyncCursor, AStatementThatWaitsForALockGoesOnWhenAnEventReleasesIt)
{
    DorConnect patient;
    patient.createCS(nullptr, nullptr, path().c_str(), "timeout=20000", 0, false, true);
    run("CREATE TABLE t(a)");
    cursor.create(patient, 0, nullptr, true);
    WriteLock lock(connection);
    const When release(waiting(1), [&] { lock.release(); });
    cursor.execute("INSERT INTO t VALUES(1)", true, Query);
    EXPECT_EQ(value("SELECT count(*) FROM t"), 1);
}
