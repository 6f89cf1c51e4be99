// The threads of asynchronous statements.
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace DorCPP {

// One thread a job. Threads are collected when a later job starts; at the end of the process every
// job is cancelled and waited for, so that none runs into the end of the program's objects.
class Workers {
public:
    static Workers& instance();
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    // Neither function may throw. cancel may be called at any time, also after the job has ended.
    // Throws DorX (CodeNoMemory) when no thread can be made.
    void start(std::function<void()> job, std::function<void()> cancel);

    static void setWakeUp(void (*function)());
    static void wakeUp();

private:
    Workers();
    struct Job {
        std::thread thread;
        std::function<void()> cancel;
        std::atomic<bool> ended = false;
    };

    std::mutex m_mutex;
    std::list<Job> m_jobs;
};

} // namespace DorCPP
