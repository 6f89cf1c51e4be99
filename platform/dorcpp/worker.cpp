#include <dorcpp/worker.h>

#include <system_error>

#include <dorcpp/errors.h>
#include <dorcpp/session.h>
#include <dorcpp/signalsblocked.h>

namespace DorCPP {

namespace {

std::atomic<void (*)()> wakeUpFunction = nullptr;

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
