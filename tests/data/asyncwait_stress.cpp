// Many waits with stops, deletions and signals at any moment. A few of each in the usual suite;
// with OVI_STRESS=1 as many as the long suite asks for.
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include <pthread.h>

#include <oviapi/application.h>
#include <oviapi/visualobject.h>

#include "tests/data/asyncwait.h"

using namespace DorCPP;

namespace {

bool isLong()
{
    const char* value = std::getenv("OVI_STRESS");
    return value && *value == '1';
}

int waits()
{
#ifdef __SANITIZE_THREAD__
    constexpr int many = 20000;
#else
    constexpr int many = 100000;
#endif
    return isLong() ? many : 300;
}

// Calls a function from the event loop, in the order of the calls.
class Later : public OviAPI::VisualObject {
public:
    explicit Later(std::function<void()> function)
        : m_function(std::move(function))
    {
        post(nullptr);
    }
    bool onPost(void*) override
    {
        m_function();
        return true;
    }

private:
    std::function<void()> m_function;
};

class Stress : public AsyncWait {
protected:
    Stress() { seed(1); }

    void seed(unsigned value)
    {
        m_random.seed(value);
        RecordProperty("seed", static_cast<int>(value));
    }
    int upTo(int last) { return std::uniform_int_distribution<int>(0, last)(m_random); }

    // A moment that is sometimes before the end of a short statement and sometimes after it.
    void pass()
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(upTo(200));
        while (std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
    }
    std::string statement()
    {
        switch (upTo(3)) {
        case 0:
            return "SELECT 1";
        case 1:
            return endless;
        default:
            return "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < " +
                   std::to_string(10 + upTo(3000)) + ") SELECT count(*) FROM c";
        }
    }
    // One execution that a posted stop ends, unless it has ended before.
    void stoppedExecution()
    {
        const std::string sql = statement();
        const bool single = upTo(1) == 1;
        const Later stop([&] {
            pass();
            cursor.terminate();
        });
        cursor.execute(sql.c_str(), true, single);
    }
    // Every handler that was made has been freed.
    static void expectAllFreed()
    {
        EXPECT_TRUE(UiDriver::waitUntil([] { return handlersAlive() == 0; }, 20000));
        const HandedHandler::Count count = HandedHandler::count();
        EXPECT_EQ(count.made, count.freed);
    }

private:
    std::mt19937 m_random;
};

std::atomic<int> signalsCaught = 0;

void catchSignal(int)
{
    ++signalsCaught;
}

// Sends the signals in turn to the thread that made it, a thousand a second.
class SignalStorm {
public:
    SignalStorm()
    {
        struct sigaction action {};
        action.sa_handler = catchSignal; // and system calls are not restarted
        for (size_t i = 0; i < std::size(signals); ++i)
            sigaction(signals[i], &action, &m_before[i]);
        m_sender = std::thread([this, target = pthread_self()] {
            for (size_t i = 0; !m_end; ++i) {
                pthread_kill(target, signals[i % std::size(signals)]);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    }
    ~SignalStorm()
    {
        m_end = true;
        m_sender.join();
        for (size_t i = 0; i < std::size(signals); ++i)
            sigaction(signals[i], &m_before[i], nullptr);
    }
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

private:
    static constexpr int signals[] = {SIGCHLD, SIGUSR1, SIGIO, SIGALRM};

    struct sigaction m_before[std::size(signals)];
    std::atomic<bool> m_end = false;
    std::thread m_sender;
};

} // namespace

TEST_F(Stress, StopsAtAnyMomentFreeEveryHandlerOnce)
{
    const int count = waits();
    const int64_t before = HandedHandler::count().made;
    for (int i = 0; i < count; ++i)
        stoppedExecution();
    EXPECT_EQ(HandedHandler::count().made - before, count);
    expectAllFreed();
    cursor.execute("SELECT 9", true, false);
    EXPECT_EQ(firstValue(cursor), 9);
}

TEST_F(Stress, SignalsAtAKilohertzBreakNoWait)
{
    [[maybe_unused]] sigset_t before;
    pthread_sigmask(SIG_BLOCK, nullptr, &before);
    {
        const SignalStorm storm;
        const int first = signalsCaught;
        for (int i = 0; i < waits() / 5 || signalsCaught < first + 20; ++i)
            stoppedExecution();
        expectAllFreed();
    }
#ifndef __SANITIZE_THREAD__ // which runs handlers late, and may leave every signal blocked
    sigset_t after;
    pthread_sigmask(SIG_BLOCK, nullptr, &after);
    for (const int signal : {SIGCHLD, SIGUSR1, SIGIO, SIGALRM})
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal));
#endif
}

TEST_F(Stress, WaitsNestWhileTheirCursorsAndWindowsComeAndGo)
{
    constexpr int depth = 4;
    std::vector<std::unique_ptr<OpenCursor>> cursors(depth);
    std::function<void(size_t)> waitOn;
    // What may happen during the wait of cursor number level.
    const auto disturb = [&](size_t level) {
        OpenCursor* one = cursors[static_cast<size_t>(upTo(depth - 1))].get();
        switch (upTo(6)) {
        case 0:
            if (one)
                one->doShowCancel();
            break;
        case 1:
            if (one)
                one->form().close();
            break;
        case 2:
            cursors[static_cast<size_t>(upTo(depth - 1))] = nullptr;
            break;
        case 3:
            throw std::runtime_error("thrown");
        case 4:
            if (one)
                one->close();
            break;
        default:
            if (level + 1 < depth)
                waitOn(level + 1);
        }
        AsyncCursorQueryMode::instance().terminate();
    };
    waitOn = [&](size_t level) {
        auto& mine = cursors[level];
        mine = std::make_unique<OpenCursor>();
        mine->create(connection, 0, nullptr, true);
        const Later first([&] { disturb(level); });
        const Later second([&] { disturb(level); });
        const std::string sql = statement();
        const When last([] { return true; }, [] { AsyncCursorQueryMode::instance().terminate(); });
        OpenCursor* const plain = mine.get();
        plain->execute(sql.c_str(), true, false);
    };
    const auto tryOne = [&] {
        try {
            waitOn(0);
        } catch (const DorX& x) {
            EXPECT_TRUE(x.code() == CodeCancelled || x.code() == CodeBadCall) << x.code();
        } catch (const std::runtime_error&) {
            // what a disturbance has thrown
        }
    };
    // Of several exceptions in one round of events the later ones wait for the next loops.
    const auto takeRest = [] {
        for (bool thrown = true; thrown;) {
            thrown = false;
            try {
                OviAPI::Application::wakeUp();
                OviAPI::Application::procTaskEvents();
            } catch (const std::exception&) { // a disturbance, or a destroyed cursor's wait
                thrown = true;
            }
        }
    };
    for (int i = 0; i < waits() / 10; ++i) {
        tryOne();
        takeRest();
        ASSERT_EQ(waitCount(), 0U);
    }
    expectAllFreed();
}

TEST_F(Stress, TheApplicationMayBeQuittedDuringAnyWait)
{
    for (int i = 0; i < waits() / 10; ++i) {
        bool returned = false;
        std::unique_ptr<Later> quit; // comes to its turn also when the statement has ended before
        const Later begin([&] {
            quit = std::make_unique<Later>([&] {
                pass();
                OviAPI::Application::quit();
            });
            const std::string sql = statement();
            cursor.execute(sql.c_str(), true, upTo(1) == 1);
            returned = true;
        });
        OviAPI::Application::instance()->messagePump();
        ASSERT_TRUE(returned);
    }
    expectAllFreed();
}
