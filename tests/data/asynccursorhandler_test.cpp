#include <csignal>
#include <thread>

#include <fcntl.h>

#include <gtest/gtest.h>

#include "data/asynccursorhandler.h"
#include "tests/data/asyncwait.h"

namespace {

// Calls the handler as the client does, and ends with it.
void callElsewhere(DorCPP::DorCursor::Handler& handler, unsigned short status, int code)
{
    std::thread([&] { handler.handler(status, code); }).join();
}

bool isGone(const std::weak_ptr<const void>& life)
{
    return UiDriver::waitUntil([&] { return life.expired(); });
}

bool blocked(int signal)
{
    sigset_t now;
    pthread_sigmask(SIG_BLOCK, nullptr, &now);
    return sigismember(&now, signal) == 1;
}

struct LateHandlers : testing::Test {
    LateHandlers() { HandlerManager::instance().statementStarted(); }
};

} // namespace

TEST_F(LateHandlers, AHandlerThatWasCalledInTimeIsFreedByItsWait)
{
    auto* handler = new AsyncCursorHandler; // freed by leave
    const auto life = handler->life();
    EXPECT_FALSE(handler->isDone());
    callElsewhere(*handler, 7, 7);
    EXPECT_TRUE(handler->isDone());
    EXPECT_EQ(handler->result().status(), -1);
    EXPECT_EQ(handler->result().code(), 7);
    handler->leave();
    EXPECT_TRUE(life.expired());
}

TEST_F(LateHandlers, AHandlerThatIsCalledAfterItsWaitIsFreedByTheEventLoop)
{
    auto* handler = new AsyncCursorHandler; // freed by the event loop
    const auto life = handler->life();
    handler->leave();
    EXPECT_FALSE(life.expired());
    callElsewhere(*handler, 0, 0);
    EXPECT_FALSE(life.expired()); // it lies in the pipe
    EXPECT_TRUE(isGone(life));
}

TEST_F(LateHandlers, TheRecordOfACompletedStatementIsEmpty)
{
    OneLevelHandler handler;
    EXPECT_EQ(handler.result().status(), 0);
    handler.handler(0, 0);
    EXPECT_EQ(handler.result().status(), 0);
    EXPECT_EQ(handler.result().code(), 0);
    handler.handler(2001, 2001);
    EXPECT_EQ(handler.result().status(), -1);
    EXPECT_STREQ(handler.result().text(), "");
}

TEST_F(LateHandlers, ARelayPassesTheCallOnWhileTheWaitIsThere)
{
    OneLevelHandler handler;
    auto* relay = new OneLevelRelay(handler); // freed by leave
    const auto life = relay->life();
    callElsewhere(*relay, 9, 9);
    EXPECT_EQ(handler.result().code(), 9);
    relay->leave();
    EXPECT_TRUE(life.expired());
}

TEST_F(LateHandlers, AnOrphanedRelayReachesNobody)
{
    auto handler = std::make_unique<OneLevelHandler>();
    auto* relay = new OneLevelRelay(*handler); // freed by the event loop
    const auto life = relay->life();
    relay->leave();
    handler = nullptr;
    callElsewhere(*relay, 9, 9);
    EXPECT_TRUE(isGone(life));
}

TEST_F(LateHandlers, EitherSideMayComeSecondAtAnyMoment)
{
    const int64_t before = handlersAlive();
    for (int i = 0; i < 500; ++i) {
        auto* handler = new AsyncCursorHandler; // freed by whoever is second
        OneLevelHandler local;
        auto* relay = new OneLevelRelay(local); // as well
        std::atomic<bool> go = false;
        std::thread client([&] {
            go = true;
            handler->handler(1, 1);
            relay->handler(1, 1);
        });
        while (!go)
            std::this_thread::yield();
        handler->leave();
        relay->leave();
        client.join();
    }
    EXPECT_TRUE(UiDriver::waitUntil([&] { return handlersAlive() == before; }));
}

TEST_F(LateHandlers, AFullPipeHoldsTheCallbackUpUntilTheEventLoopHasRead)
{
    const int readEnd = HandlerManager::instance().socket();
    UiDriver::processEvents();
    const int64_t before = handlersAlive();
    const int capacity = ::fcntl(readEnd, F_SETPIPE_SZ, 4096) / 8;
    ASSERT_GE(capacity, 512);
    const int count = 3 * capacity;
    std::atomic<int> called = 0;
    std::thread client([&] {
        for (int i = 0; i < count; ++i) {
            auto* handler = new AsyncCursorHandler; // freed by the event loop
            handler->leave();
            handler->handler(0, 0);
            ++called;
        }
    });
    while (called < capacity) // no event is handled so far
        std::this_thread::yield();
    EXPECT_LE(called, capacity);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return called == count; }));
    client.join();
    EXPECT_TRUE(UiDriver::waitUntil([&] { return handlersAlive() == before; }));
    ::fcntl(readEnd, F_SETPIPE_SZ, 65536);
}

TEST_F(LateHandlers, TheSignalMaskIsAsItWasAfterwards)
{
    sigset_t usr1;
    sigemptyset(&usr1);
    sigaddset(&usr1, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &usr1, nullptr);
    auto* handler = new AsyncCursorHandler; // freed by leave
    handler->handler(0, 0);
    handler->leave();
    HandlerManager::instance().nRead();
    EXPECT_TRUE(blocked(SIGUSR1));
    EXPECT_FALSE(blocked(SIGCHLD));
    EXPECT_FALSE(blocked(SIGIO));
    pthread_sigmask(SIG_UNBLOCK, &usr1, nullptr);
}

TEST_F(LateHandlers, ReadingWhenNothingIsThereDoesNotWait)
{
    UiDriver::processEvents();
    const int64_t before = handlersAlive();
    EXPECT_TRUE(HandlerManager::instance().nRead());
    EXPECT_EQ(handlersAlive(), before);
}

TEST_F(LateHandlers, APostedHandlerIsDestroyed)
{
    auto* handler = new AsyncCursorHandler; // freed by onPost
    const auto life = handler->life();
    EXPECT_TRUE(HandlerManager::instance().onPost(handler));
    EXPECT_TRUE(life.expired());
}

TEST(TerminationFlags, AreAStack)
{
    AsyncCursorQueryMode& mode = AsyncCursorQueryMode::instance();
    const TermGuard outer(mode);
    {
        const TermGuard inner(mode);
        mode.terminate();
        EXPECT_TRUE(inner.isTerminated());
        EXPECT_FALSE(outer.isTerminated());
    }
    EXPECT_FALSE(outer.isTerminated());
    mode.terminate();
    EXPECT_TRUE(outer.isTerminated());
}

TEST(TerminationFlags, GrowBeyondTheirFirstCapacity)
{
    AsyncCursorQueryMode& mode = AsyncCursorQueryMode::instance();
    std::vector<std::unique_ptr<TermGuard>> guards;
    for (int i = 0; i < 120; ++i)
        guards.push_back(std::make_unique<TermGuard>(mode));
    EXPECT_EQ(mode.waitCount(), 120U);
    mode.terminate(60);
    EXPECT_TRUE(guards[60]->isTerminated());
    EXPECT_FALSE(guards[61]->isTerminated());
    EXPECT_FALSE(guards[59]->isTerminated());
    while (!guards.empty())
        guards.pop_back();
    EXPECT_EQ(mode.waitCount(), 0U);
}

TEST(TerminationFlags, TerminatingWithoutAWaitDoesNothing)
{
    AsyncCursorQueryMode& mode = AsyncCursorQueryMode::instance();
    mode.terminate();
    mode.terminate(3);
    const TermGuard guard(mode);
    EXPECT_FALSE(guard.isTerminated());
}
