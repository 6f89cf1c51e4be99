#include "data/dorcursor.h"

#include <cstdlib>
#include <cwchar>
#include <vector>

#include <sys/time.h>

namespace {

constexpr int64_t perSecond = 1000; // milliseconds
constexpr int64_t perMinute = 60 * perSecond;
constexpr int64_t perHour = 60 * perMinute;

// Throws DorX when the text cannot be said in the process locale.
std::vector<char> narrowed(const wchar_t* sql)
{
    const size_t capacity = 5 * std::wcslen(sql);
    std::vector<char> text(capacity + 1, 0);
    if (std::wcstombs(text.data(), sql, capacity) == static_cast<size_t>(-1))
        throw DorCPP::DorX(-1, DorCPP::CodeBadCall, OviAPI::Phrase::DbBadCall,
                           "the text has a character that is not in the character set of the "
                           "process");
    return text;
}

} // namespace

xRDorCursor::xRDorCursor() = default;

xRDorCursor::~xRDorCursor() = default;

xRDorCursor::TimeVal xRDorCursor::startClock()
{
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return {now.tv_sec, now.tv_usec};
}

void xRDorCursor::stopClock(const TimeVal& start)
{
    m_elapsed = millisecondsBetween(start, startClock());
}

int64_t xRDorCursor::millisecondsBetween(const TimeVal& start, const TimeVal& end)
{
    return (end.seconds - start.seconds) * 1000 + (end.microseconds - start.microseconds) / 1000;
}

void xRDorCursor::execute(const char* sql, bool async, bool single)
{
    const std::weak_ptr<const void> alive = life();
    try {
        if (!sql || !*sql) {
            xRAsyncCursor::execute("", async, single);
            return;
        }
        const TimeVal start = startClock();
        xRAsyncCursor::execute(sql, async, single);
        stopClock(start);
    } catch (...) {
        if (!alive.expired()) // an event may have destroyed the cursor
            m_elapsed = 0;
        throw;
    }
}

void xRDorCursor::execute(const wchar_t* sql, bool async, bool single)
{
    std::vector<char> text;
    try {
        text = narrowed(sql ? sql : L"");
    } catch (...) {
        m_elapsed = 0;
        throw;
    }
    execute(text.data(), async, single);
}

void xRDorCursor::execute(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds,
                          bool async, bool single)
{
    const TimeVal start = startClock();
    xRAsyncCursor::execute(statement, binds, async, single);
    stopClock(start);
}

int xRDorCursor::getHours() const
{
    return static_cast<int>(m_elapsed / perHour);
}

int xRDorCursor::getMinutes() const
{
    return static_cast<int>(m_elapsed / perMinute % 60);
}

double xRDorCursor::getSeconds() const
{
    return static_cast<double>(m_elapsed) / 1000.0 - getMinutes() * 60 - getHours() * 3600;
}
