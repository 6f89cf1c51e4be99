#include <dorcpp/worker.h>

#include <csignal>
#include <system_error>

#include <dorcpp/errors.h>
#include <dorcpp/session.h>

namespace DorCPP {

namespace {

std::atomic<void (*)()> wakeUpFunction = nullptr;

// The user-interface thread gets the process's signals, never a worker.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_before;
};

} // namespace

Workers& Workers::instance()
{
    static Workers workers;
    return workers;
}

Workers::Workers()
{
    Session::registerBefore(); // what jobs use is destroyed after them
}

Workers::~Workers()
{
    for (Job& job : m_jobs)
        job.cancel();
    for (Job& job : m_jobs)
        job.thread.join();
}

void Workers::start(std::function<void()> job, std::function<void()> cancel)
{
    const std::lock_guard lock(m_mutex);
    m_jobs.remove_if([](Job& j) {
        const bool ended = j.ended; // asked once: it may end at this moment
        if (ended)
            j.thread.join();
        return ended;
    });
    Job& entry = m_jobs.emplace_back();
    entry.cancel = std::move(cancel);
    try {
        const SignalsBlocked blocked;
        entry.thread = std::thread([run = std::move(job), &entry]() mutable {
            run();
            run = nullptr; // what the job held goes before its end is told
            entry.ended = true;
        });
    } catch (const std::system_error& e) {
        m_jobs.pop_back();
        throw makeError(CodeNoMemory, e.code().message());
    }
}

void Workers::setWakeUp(void (*function)())
{
    wakeUpFunction = function;
}

void Workers::wakeUp()
{
    if (void (*function)() = wakeUpFunction)
        function();
}

} // namespace DorCPP
