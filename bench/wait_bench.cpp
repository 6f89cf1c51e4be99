// What waiting costs: processor time of a wait of 3 s in procTaskEvents with a timer running, and
// the time from a completion on another thread to the code that waits for it. Beside them the raw
// floor, a condition variable, and the naive peer, a loop that polls and sleeps 1 ms.
#include <oviapi/application.h>
#include <oviapi/timer.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double processorMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double microsecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

struct Latency {
    double median;
    double p99;
};

// A worker completes after a pause; wait is to return when it has. signal is called by the worker.
Latency measure(int rounds, const std::function<void()>& signal,
                const std::function<void(const std::atomic<bool>&)>& wait)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        std::atomic<bool> done = false;
        Clock::time_point completed;
        std::thread worker([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            completed = Clock::now();
            done.store(true, std::memory_order_release);
            signal();
        });
        wait(done);
        times.push_back(microsecondsSince(completed));
        worker.join();
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times[times.size() * 99 / 100]};
}

double waitThreeSeconds(const std::function<void()>& step)
{
    const double before = processorMilliseconds();
    const auto end = Clock::now() + std::chrono::seconds(3);
    while (Clock::now() < end)
        step();
    return processorMilliseconds() - before;
}

} // namespace

int main(int argc, char** argv)
{
    OviAPI::Application application;
    application.start(argc, argv);
    OviAPI::WTimer timer(100);
    timer.start();

    const double framework = waitThreeSeconds([] { OviAPI::Application::procTaskEvents(); });
    const double polling = waitThreeSeconds([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        OviAPI::Application::wakeUp();
        OviAPI::Application::procTaskEvents();
    });

    constexpr int rounds = 500;
    std::mutex mutex;
    std::condition_variable condition;
    const Latency floor = measure(
        rounds,
        [&] {
            const std::lock_guard lock(mutex);
            condition.notify_one();
        },
        [&](const std::atomic<bool>& done) {
            std::unique_lock lock(mutex);
            condition.wait(lock, [&] { return done.load(std::memory_order_acquire); });
        });
    const Latency ours = measure(
        rounds, [] { OviAPI::Application::wakeUp(); },
        [](const std::atomic<bool>& done) {
            while (!done.load(std::memory_order_acquire))
                OviAPI::Application::procTaskEvents();
        });

    std::printf(
        "processor time of a wait of 3 s: procTaskEvents %.1f ms, polling every 1 ms %.1f ms,"
        " ratio %.3f\n",
        framework, polling, framework / polling);
    std::printf("completion to waiting code: procTaskEvents median %.0f us, p99 %.0f us;"
                " condition variable median %.0f us, p99 %.0f us; ratio of medians %.2f\n",
                ours.median, ours.p99, floor.median, floor.p99, ours.median / floor.median);
    return 0;
}
