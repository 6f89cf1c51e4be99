#include "explorer/backgroundtask.h"

#include <atomic>
#include <list>
#include <thread>
#include <utility>

#include <oviapi/application.h>

struct BackgroundTask::Thread {
    std::atomic<bool> isDone = false;
    std::thread thread;
};

// User-interface thread only.
class BackgroundTask::Abandoned {
public:
    static Abandoned& instance()
    {
        static Abandoned all;
        return all;
    }
    ~Abandoned() { wait(); }
    void wait()
    {
        for (const auto& each : m_threads)
            each->thread.join();
        m_threads.clear();
    }
    void add(std::unique_ptr<Thread> thread)
    {
        m_threads.push_back(std::move(thread));
        m_threads.remove_if([](const auto& each) {
            if (!each->isDone)
                return false;
            each->thread.join();
            return true;
        });
    }

private:
    std::list<std::unique_ptr<Thread>> m_threads;
};

BackgroundTask::BackgroundTask(std::function<void()> work)
    : m_thread(std::make_unique<Thread>())
{
    m_thread->thread = std::thread([work = std::move(work), done = &m_thread->isDone]() mutable {
        work();
        work = nullptr; // what it owns goes before anybody waits for it in vain
        *done = true;
        OviAPI::Application::wakeUp();
    });
}

BackgroundTask::~BackgroundTask()
{
    Abandoned::instance().add(std::move(m_thread));
}

bool BackgroundTask::isDone() const
{
    return m_thread->isDone;
}

void BackgroundTask::waitForAbandoned()
{
    Abandoned::instance().wait();
}
