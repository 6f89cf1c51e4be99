// A network that is cut. The test that is running runs again in a process with a network of its
// own, where packets can be dropped; that takes the rights of root. It waits for the limits of the
// connection, so it belongs to the long suite: OVI_STRESS=1.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "ownserver.h"
#include "support.h"

using namespace Conformance;

namespace {

constexpr const char* variable = "OVI_OWN_NETWORK";
constexpr long limit = 15'000; // ms from the cut to the error

int inOwnNetwork(const std::string& command)
{
    return std::system(("unshare --net sh -c 'ip link set lo up && " + command + '\'').c_str());
}

bool isPossible()
{
    return inOwnNetwork("iptables -w -A INPUT -p tcp -j DROP 2>/dev/null") == 0;
}

// Runs the running test again. 0 when it passed.
int runThisTest()
{
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    return inOwnNetwork(std::string(variable) + "=1 " +
                        std::filesystem::read_symlink("/proc/self/exe").string() +
                        " --gtest_filter=" + test.test_suite_name() + "." + test.name());
}

void cut()
{
    ASSERT_EQ(std::system("iptables -w -A INPUT -p tcp -j DROP"), 0);
}

void mend()
{
    ASSERT_EQ(std::system("iptables -w -F INPUT"), 0);
}

// Knows when it was called.
class TimedWaiter : public Waiter {
public:
    void handler(unsigned short s, int c) override
    {
        ms = watch.ms();
        Waiter::handler(s, c);
    }
    Stopwatch watch;
    long ms = 0;
};

// A connection to the server with a cursor.
struct Connected {
    explicit Connected(const OwnServer& server)
    {
        server.open(connection);
        cursor.create(connection, 0, nullptr, true);
    }
    std::string value(const char* sql)
    {
        cursor.execute(sql);
        cursor.fetch(FetchFirst, 0);
        return text(cursor, 1);
    }
    DorConnect connection;
    DorCursor cursor;
};

const char* const countSleeping =
    "SELECT count(*) FROM pg_stat_activity WHERE wait_event = 'PgSleep'";

} // namespace

TEST(NetworkCut, IsToldToTheRunningStatementAndToTheNextOne)
{
    if (!std::getenv(variable)) {
        if (!isLong())
            GTEST_SKIP() << "only with OVI_STRESS=1";
        if (!isPossible())
            GTEST_SKIP() << "this user can have no network of its own, or cannot cut it";
        EXPECT_EQ(runThisTest(), 0);
        return;
    }
    const OwnServer server;
    Connected busy(server);
    Connected idle(server);
    Connected later(server);
    TimedWaiter waiter;
    busy.cursor.execute("SELECT pg_sleep(60)", &waiter);
    while (waiter.calls == 0 && idle.value(countSleeping) != "1") {
    }
    cut();
    waiter.watch = Stopwatch();
    const int idleCode = codeOf([&] { idle.cursor.execute("SELECT 1"); });
    const long idleTime = waiter.watch.ms();
    ASSERT_TRUE(waiter.wait());
    const Stopwatch watch;
    const int laterCode = codeOf([&] { later.cursor.execute("SELECT 1"); });
    const long laterTime = watch.ms();
    EXPECT_EQ(waiter.status, CodeSessionLost);
    EXPECT_LT(waiter.ms, limit);
    EXPECT_EQ(idleCode, CodeSessionLost);
    EXPECT_LT(idleTime, limit);
    EXPECT_EQ(laterCode, CodeSessionLost);
    EXPECT_LT(laterTime, limit);
    std::printf("error after the cut: running statement %ld ms, next statement %ld ms, next one of "
                "a connection that was idle meanwhile %ld ms\n",
                waiter.ms, idleTime, laterTime);
    mend();
    EXPECT_EQ(Connected(server).value(countSleeping), "1"); // nothing but the cut ended it
}
