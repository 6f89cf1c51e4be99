#include "data/asynccursorquerymode.h"

#include <dorcpp/types.h>
#include <oviapi/application.h>

using OviAPI::Application;

TermGuard::TermGuard(AsyncCursorQueryMode& mode)
    : m_mode(mode)
    , m_slot(mode.m_flags.count())
{
    m_mode.m_flags.append(0);
}

TermGuard::~TermGuard()
{
    m_mode.m_flags.remove(m_slot);
}

bool TermGuard::isTerminated() const
{
    return m_mode.m_flags[m_slot] != 0;
}

AsyncCursorQueryMode& AsyncCursorQueryMode::instance()
{
    static AsyncCursorQueryMode mode;
    return mode;
}

AsyncCursorHandler* AsyncCursorQueryMode::dorHandler()
{
    m_current = std::make_unique<AsyncCursorHandler>();
    return m_current.get();
}

void AsyncCursorQueryMode::dropHandler()
{
    m_current = nullptr;
}

void AsyncCursorQueryMode::wait()
{
    const std::unique_ptr<AsyncCursorHandler, LeaveHandler> handler(m_current.release());
    if (!handler)
        return;
    const TermGuard guard(*this);
    const bool quitting = Application::isQuitting();
    while (!handler->isDone()) {
        proc();
        if (guard.isTerminated() || (!quitting && Application::isQuitting()))
            throw Terminate();
    }
    const DorCPP::DorX end = handler->result();
    if (end.status() != 0)
        throw end;
}

void AsyncCursorQueryMode::terminate()
{
    if (waitCount() > 0)
        terminate(waitCount() - 1);
}

void AsyncCursorQueryMode::terminate(uint32_t wait)
{
    if (wait >= waitCount())
        return;
    m_flags[wait] = 1;
    Application::wakeUp();
}

void AsyncCursorQueryMode::proc()
{
    if (Application::isUserInterfaceThread())
        Application::procTaskEvents();
    else // procTaskEvents would return at once
        DorCPP::DelayThread(1);
}
