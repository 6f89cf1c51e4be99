#include <oviapi/onelevelguiwaiter.h>

#include <oviapi/application.h>

namespace OviAPI {

namespace {

enum State { Waiting, WasBroken, WasCompleted };

std::atomic<int> state{Waiting};

void end(State how) noexcept
{
    int expected = Waiting;
    if (OneLevelGUIWaiter::m_exists && state.compare_exchange_strong(expected, how))
        Application::wakeUp();
}

struct Release {
    ~Release() { OneLevelGUIWaiter::Cancel(); }
};

} // namespace

std::atomic<bool> OneLevelGUIWaiter::m_exists{false};

void OneLevelGUIWaiter::Init()
{
    state = Waiting;
    m_exists = true;
}

int OneLevelGUIWaiter::Wait()
{
    if (!m_exists)
        return NotWaiting;
    Release release;
    const bool quitting = Application::isQuitting();
    while (state == Waiting) {
        Application::procTaskEvents();
        if (!quitting && Application::isQuitting())
            Break();
    }
    return state == WasCompleted ? Completed : Broken;
}

void OneLevelGUIWaiter::Leave() noexcept
{
    end(WasCompleted);
}

void OneLevelGUIWaiter::Break() noexcept
{
    end(WasBroken);
}

void OneLevelGUIWaiter::Cancel() noexcept
{
    m_exists = false;
}

} // namespace OviAPI
