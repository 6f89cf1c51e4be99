#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/onelevelguiwaiter.h>
#include <oviapi/socketnotifier.h>
#include <oviapi/static.h>
#include <oviapi/systemmetrics.h>
#include <oviapi/text.h>
#include <oviapi/timer.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;
namespace fs = std::filesystem;

// What this executable prints when it is run with a task and more environment.
std::string outputOf(const std::string& environment, const std::string& task)
{
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    const std::string command = environment + " '" + self + "' " + task + " 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string text;
    std::array<char, 256> piece{};
    while (pipe && std::fgets(piece.data(), static_cast<int>(piece.size()), pipe))
        text += piece.data();
    const int status = pipe ? ::pclose(pipe) : -1;
    return status == 0 ? text : text + " status " + std::to_string(status);
}

// Makes the German locale in a folder of its own, as far as its source is installed.
bool makeGermanLocale(const fs::path& folder)
{
    const std::string command =
        "localedef -i de_DE -f UTF-8 '" + (folder / "de_DE.UTF-8").string() + "' 2>/dev/null";
    [[maybe_unused]] const int status = std::system(command.c_str()); // 1 for mere warnings
    return fs::exists(folder / "de_DE.UTF-8" / "LC_NUMERIC");
}

// A folder for settings that goes with the test.
struct Settings : ::testing::Test {
    struct Named : Application {
        const wchar_t* appName() override { return L"my/app"; }
    };
    Named application;
    fs::path folder;

    Settings()
    {
        std::string pattern = (fs::temp_directory_path() / "oviapiXXXXXX").string();
        folder = ::mkdtemp(pattern.data());
        ::setenv("XDG_CONFIG_HOME", (folder / "home").c_str(), 1);
        ::setenv("XDG_CONFIG_DIRS",
                 (":" + (folder / "a").string() + ":" + (folder / "b").string()).c_str(), 1);
    }
    ~Settings() override
    {
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("XDG_CONFIG_DIRS");
        fs::remove_all(folder);
    }
    std::wstring wide(const fs::path& path) const { return utf8ToWide(path.string()); }
};

TEST_F(Settings, WritingMakesTheFolderForTheUserAlone)
{
    const std::wstring path = application.getConfigFilePath(L"options.dat", 1);
    EXPECT_EQ(path, wide(folder / "home/my_app/options.dat"));
    struct stat status {};
    ASSERT_EQ(::stat((folder / "home/my_app").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(Settings, ReadingMakesNothing)
{
    EXPECT_EQ(application.getConfigFilePath(L"options.dat", 0),
              wide(folder / "home/my_app/options.dat"));
    EXPECT_FALSE(fs::exists(folder / "home"));
}

TEST_F(Settings, ReadingPrefersTheUsersFileAndThenTheFirstOfTheSystem)
{
    for (const char* place : {"b", "a"}) {
        fs::create_directories(folder / place / "my_app");
        std::ofstream(folder / place / "my_app/options.dat") << "x";
        EXPECT_EQ(application.getConfigFilePath(L"options.dat", 0),
                  wide(folder / place / "my_app/options.dat"));
    }
    std::ofstream(wideToUtf8(application.getConfigFilePath(L"options.dat", 1))) << "x";
    EXPECT_EQ(application.getConfigFilePath(L"options.dat", 0),
              wide(folder / "home/my_app/options.dat"));
}

TEST_F(Settings, ARelativeFolderIsIgnored)
{
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", folder.c_str(), 1);
    EXPECT_EQ(application.getConfigFilePath(L"x", 0), wide(folder / ".config/my_app/x"));
}

TEST(ApplicationObject, TheFolderOfTheExecutableHasNoSlashAtItsEnd)
{
    wchar_t buffer[4096];
    ASSERT_TRUE(Application::getExecutablePath(buffer, 4096));
    EXPECT_EQ(wideToUtf8(buffer), fs::read_symlink("/proc/self/exe").parent_path().string());
    EXPECT_FALSE(Application::getExecutablePath(buffer, 3));
    EXPECT_EQ(buffer[0], 0);
    Application::setExecutablePath(L"/opt/it/");
    ASSERT_TRUE(Application::getExecutablePath(buffer, 4096));
    EXPECT_STREQ(buffer, L"/opt/it");
    Application::setExecutablePath(nullptr);
}

TEST(ApplicationObject, TheOneMadeLastIsTheInstance)
{
    Application* before = Application::instance();
    {
        Application other;
        EXPECT_EQ(Application::instance(), &other);
    }
    EXPECT_EQ(Application::instance(), before);
}

TEST(ApplicationObject, AFontOfARoleFollowsTheRole)
{
    struct Roles : Application {
        Font font{L"Helvetica", 9};
        Font* fontForRole(int role) override { return role == EditFont ? &font : nullptr; }
    };
    Roles application;
    WStatic label;
    WStatic other;
    label.setFontRole(Application::EditFont);
    other.setFontRole(Application::TreeFont);
    EXPECT_EQ(label.font().size(), 9);
    EXPECT_TRUE(other.font().isEmpty());
    application.font = Font(L"Helvetica", 14);
    application.roledFontsChanged();
    EXPECT_EQ(label.font().size(), 14);
}

TEST(ApplicationObject, TheScreenHasASize)
{
    EXPECT_GT(SystemMetrics::getAvailableRect().width(), 100);
    EXPECT_GE(SystemMetrics::getScreenRect().height(), SystemMetrics::getAvailableRect().height());
    EXPECT_GT(SystemMetrics::getScrollBarWidth(), 4);
    EXPECT_GT(SystemMetrics::getPixelRatio(), 0.5);
}

TEST(ApplicationStart, NumbersKeepTheirDotUnderAGermanLocale)
{
    std::string pattern = (fs::temp_directory_path() / "oviapiXXXXXX").string();
    const fs::path folder = ::mkdtemp(pattern.data());
    const bool made = makeGermanLocale(folder);
    const std::string output =
        outputOf("LC_ALL=de_DE.UTF-8 LOCPATH='" + folder.string() + "'", "print-locale");
    fs::remove_all(folder);
    // Where the locale's source is not installed either, the fall back is seen instead.
    EXPECT_EQ(output, made ? "C de_DE.UTF-8 1.5 wide" : "C C.UTF-8 1.5 wide");
}

TEST(ApplicationStart, AMissingLocaleAndThePlainOneAreReplacedByUtf8)
{
    EXPECT_EQ(outputOf("LC_ALL=xx_YY.UTF-8", "print-locale"), "C C.UTF-8 1.5 wide");
    EXPECT_EQ(outputOf("LC_ALL=C", "print-locale"), "C C.UTF-8 1.5 wide");
}

TEST(ApplicationStart, FormsMayOutliveTheApplicationAndServeTheNextOne)
{
    EXPECT_EQ(outputOf("", "restart"), "first second");
}

TEST(ApplicationStart, RunGoesFromStartToEnd)
{
    EXPECT_EQ(outputOf("LC_ALL=C.UTF-8", "run '\xD0\x96'"), "init 3 \xD0\x96,closed,deinit,0");
}

TEST(ApplicationStart, WhatCouldNotStartIsNotShutDown)
{
    EXPECT_EQ(outputOf("", "run fail"), "init 3 fail,1");
}

struct Ticking : WTimer {
    using WTimer::WTimer;
    int ticks = 0;
    bool onTimer() override { return ++ticks > 0; }
};

TEST(MessagePump, QuitEndsIt)
{
    struct Program : Application {
        int start()
        {
            char name[] = "program";
            char* arguments[] = {name, nullptr};
            return run(1, arguments);
        }
    };
    Program program;
    Ticking timer(1);
    connect<&WTimer::onTimer>(timer, timer, [](Object*) -> SlotResult {
        Application::quit(3);
        return 0;
    });
    timer.start();
    EXPECT_EQ(program.start(), 3);
}

TEST(MessagePump, ClosingOneOfTwoFormsKeepsItRunning)
{
    Application& application = *Application::instance();
    WForm forms[2];
    for (WForm& form : forms) {
        form.move(0, 0, 100, 100);
        ASSERT_TRUE(form.create());
        form.show(true);
    }
    Ticking timer(5);
    int step = 0;
    connect<&WTimer::onTimer>(timer, timer, [&](Object*) -> SlotResult {
        if (step < 2)
            UiDriver::closeWindow(forms[step]);
        else
            Application::quit(9); // must not be reached
        ++step;
        return 0;
    });
    timer.start();
    application.messagePump();
    EXPECT_EQ(step, 2);
}

TEST(Waiting, ASleepCostsNoProcessorTime)
{
    UiDriver::processEvents();
    Ticking timer(300);
    timer.start();
    const std::clock_t before = std::clock();
    int rounds = 0;
    while (timer.ticks == 0) {
        Application::procTaskEvents();
        ++rounds;
    }
    const double used = 1000.0 * static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    EXPECT_LT(used, 100) << "ms of processor time in 300 ms";
    EXPECT_LT(rounds, 50);
}

TEST(Waiting, AThreadEndsTheSleep)
{
    std::atomic<bool> asleep{false};
    std::atomic<bool> done{false};
    std::thread worker([&] {
        while (!asleep)
            std::this_thread::yield();
        done = true;
        Application::wakeUp();
    });
    Ticking timer(1); // ticks inside the wait
    connect<&WTimer::onTimer>(timer, timer, [&](Object*) -> SlotResult {
        timer.stop();
        asleep = true;
        return 1;
    });
    timer.start();
    while (!done)
        Application::procTaskEvents();
    worker.join();
    EXPECT_TRUE(asleep);
}

TEST(Waiting, AWakeUpBeforeTheSleepIsNotLost)
{
    Application::wakeUp();
    Application::procTaskEvents(); // would sleep for ever
    SUCCEED();
}

volatile std::sig_atomic_t signalled = 0;

TEST(Waiting, ASignalHandlerMayWakeTheWait)
{
    signalled = 0;
    std::signal(SIGUSR1, [](int) {
        signalled = 1;
        Application::wakeUp();
    });
    const pthread_t waiter = ::pthread_self();
    std::thread worker([&] { ::pthread_kill(waiter, SIGUSR1); });
    while (!signalled)
        Application::procTaskEvents();
    worker.join();
    std::signal(SIGUSR1, SIG_DFL);
    EXPECT_EQ(signalled, 1);
}

TEST(Waiting, TimersTickDuringAWait)
{
    Ticking timer(2);
    ASSERT_TRUE(timer.start());
    EXPECT_TRUE(timer.isRunning());
    while (timer.ticks < 3)
        Application::procTaskEvents();
    timer.stop();
    EXPECT_FALSE(timer.isRunning());
}

TEST(Waiting, AnIntervalIsKeptToTheMillisecond)
{
    Ticking timer(40);
    timer.start();
    const auto begin = std::chrono::steady_clock::now();
    while (timer.ticks == 0)
        Application::procTaskEvents();
    const auto passed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(passed, std::chrono::milliseconds(39));
}

TEST(Waiting, ANewIntervalOfARunningTimerBeginsNow)
{
    Ticking timer(100000);
    timer.start();
    timer.setInterval(1);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return timer.ticks > 0; }));
    EXPECT_EQ(timer.interval(), 1);
}

TEST(Waiting, OnlyOneThreadIsThatOfTheUserInterface)
{
    bool other = true;
    std::thread([&] { other = Application::isUserInterfaceThread(); }).join();
    EXPECT_FALSE(other);
    EXPECT_TRUE(Application::isUserInterfaceThread());
}

// Made before main, and so before the application.
struct Pipe : SocketNotifier {
    int ends[2] = {-1, -1};
    std::string got;

    Pipe() { EXPECT_EQ(::pipe(ends), 0); }
    ~Pipe() override
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    bool nRead() override
    {
        char c = 0;
        if (::read(ends[0], &c, 1) == 1)
            got += c;
        return true;
    }
};

Pipe early;

TEST(Notifier, OneThatWasMadeBeforeTheApplicationFires)
{
    early.setSocket(early.ends[0]);
    ASSERT_EQ(::write(early.ends[1], "ab", 2), 2);
    EXPECT_TRUE(UiDriver::waitUntil([] { return early.got == "ab"; }));
    early.setSocket(-1);
}

TEST(Notifier, TheSocketMayBeSetByAnotherThread)
{
    Pipe pipe;
    std::thread([&] {
        pipe.setSocket(pipe.ends[0]);
        EXPECT_EQ(::write(pipe.ends[1], "x", 1), 1);
    }).join();
    EXPECT_TRUE(UiDriver::waitUntil([&] { return pipe.got == "x"; }));
}

TEST(Notifier, WithoutASocketNothingIsRead)
{
    Pipe pipe;
    pipe.setSocket(pipe.ends[0]);
    pipe.setSocket(-1);
    ASSERT_EQ(::write(pipe.ends[1], "x", 1), 1);
    UiDriver::processEvents();
    EXPECT_EQ(pipe.got, "");
    EXPECT_EQ(pipe.socket(), -1);
}

TEST(Notifier, AReadMayDeleteTheNotifier)
{
    auto pipe = std::make_unique<Pipe>();
    connect<&SocketNotifier::nRead>(*pipe, early, [&](Object*) -> SlotResult {
        pipe.reset();
        return 0;
    });
    pipe->setSocket(pipe->ends[0]);
    ASSERT_EQ(::write(pipe->ends[1], "x", 1), 1);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return !pipe; }));
}

TEST(OneLevelWaiter, LeaveFromAnotherThreadCompletesIt)
{
    EXPECT_FALSE(OneLevelGUIWaiter::m_exists);
    OneLevelGUIWaiter::Init();
    EXPECT_TRUE(OneLevelGUIWaiter::m_exists);
    std::thread worker([] { OneLevelGUIWaiter::Leave(); });
    EXPECT_EQ(OneLevelGUIWaiter::Wait(), 2);
    worker.join();
    EXPECT_FALSE(OneLevelGUIWaiter::m_exists);
}

TEST(OneLevelWaiter, BreakEndsItWithAnotherResult)
{
    Ticking timer(1);
    connect<&WTimer::onTimer>(timer, timer, [](Object*) -> SlotResult {
        OneLevelGUIWaiter::Break();
        OneLevelGUIWaiter::Leave(); // too late
        return 0;
    });
    timer.start();
    OneLevelGUIWaiter::Init();
    EXPECT_EQ(OneLevelGUIWaiter::Wait(), OneLevelGUIWaiter::Broken);
}

TEST(OneLevelWaiter, ACompletionBetweenInitAndWaitCounts)
{
    OneLevelGUIWaiter::Init();
    OneLevelGUIWaiter::Leave();
    EXPECT_EQ(OneLevelGUIWaiter::Wait(), OneLevelGUIWaiter::Completed);
}

TEST(OneLevelWaiter, WithoutInitThereIsNothingToWaitFor)
{
    OneLevelGUIWaiter::Leave();
    EXPECT_EQ(OneLevelGUIWaiter::Wait(), OneLevelGUIWaiter::NotWaiting);
}

TEST(OneLevelWaiter, AnExceptionFreesIt)
{
    Ticking timer(1);
    connect<&WTimer::onTimer>(timer, timer, [&](Object*) -> SlotResult {
        timer.stop();
        throw 5;
    });
    timer.start();
    OneLevelGUIWaiter::Init();
    EXPECT_THROW(OneLevelGUIWaiter::Wait(), int);
    EXPECT_FALSE(OneLevelGUIWaiter::m_exists);
    OneLevelGUIWaiter::Init();
    OneLevelGUIWaiter::Cancel();
    EXPECT_FALSE(OneLevelGUIWaiter::m_exists);
}

} // namespace
