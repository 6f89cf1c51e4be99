// Waiting where no application is started, and the end of the process.
#include <cstdlib>

#include <fcntl.h>

#include "tests/data/asyncwait.h"

using namespace DorCPP;

namespace {

using WithoutApplication = AsyncWait;

} // namespace

TEST_F(WithoutApplication, AStatementIsWaitedForAllTheSame)
{
    cursor.execute("SELECT 7", true, false);
    EXPECT_EQ(firstValue(cursor), 7);
    EXPECT_FALSE(cursor.form().isCreated());
    cursor.execute("SELECT 8", true, true);
    EXPECT_EQ(firstValue(cursor), 8);
}

TEST_F(WithoutApplication, TheProcessEndsWhileThePipeIsFullAndAStatementRuns)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto endWithLateHandlers = [this] {
        const HandlerManager& manager = HandlerManager::instance();
        cursor.execute("SELECT 1", true, false);
        const int capacity = ::fcntl(manager.socket(), F_SETPIPE_SZ, 4096) / 8;
        for (int i = 0; i < capacity; ++i) {
            auto* handler = new AsyncCursorHandler; // freed when the process ends
            handler->leave();
            handler->handler(0, 0);
        }
        auto* handler = new AsyncCursorHandler; // as well
        DorCursor running;
        running.create(connection, 0, nullptr, true);
        running.execute(endless, handler);
        handler->leave();
        std::exit(0); // the statement's callback finds no room
    };
    EXPECT_EXIT(endWithLateHandlers(), testing::ExitedWithCode(0), "");
}
