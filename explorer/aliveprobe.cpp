#include "explorer/aliveprobe.h"

#include <system_error>

#include <dorcpp/connect.h>
#include <dorcpp/cursor.h>
#include <dorcpp/dorx.h>

namespace {

constexpr int lookInterval = 20; // ms

bool answers(int channel)
{
    try {
        DorCPP::DorConnect connection;
        connection.attach(channel, false);
        DorCPP::DorCursor cursor;
        cursor.create(connection, 0, nullptr, true);
        return true;
    } catch (const DorCPP::DorX& x) {
        return x.code() != DorCPP::CodeSessionLost && x.code() != DorCPP::CodeServerStopped;
    }
}

} // namespace

AliveProbe::AliveProbe()
    : m_timer(lookInterval)
{
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &AliveProbe::look);
}

bool AliveProbe::onAnswer(bool)
{
    return false;
}

void AliveProbe::ask(int channel)
{
    if (m_task)
        return;
    m_alive = std::make_shared<std::atomic<bool>>(true);
    try {
        m_task = std::make_unique<BackgroundTask>(
            [channel, alive = m_alive] { *alive = answers(channel); });
        m_timer.start();
    } catch (const std::system_error&) {
        // No thread to be had now: the next time.
    }
}

void AliveProbe::forget()
{
    m_timer.stop();
    m_task.reset();
}

OviAPI::SlotResult AliveProbe::look(OviAPI::Object*)
{
    if (!m_task || !m_task->isDone())
        return 1;
    forget();
    OviAPI::dispatch<&AliveProbe::onAnswer>(*this, m_alive->load());
    return 1;
}
