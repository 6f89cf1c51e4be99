#include <dorcpp/monitor.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <shared_mutex>

#include <dorcpp/monitoring.h>
#include <dorcpp/sqltext.h>

namespace DorCPP {

namespace {

std::shared_mutex monitorMutex; // held by those who are in the monitor
Monitor currentMonitor;
std::atomic<bool> monitorSet = false;

// Whether the word belongs to the string right behind it, as in x'00'.
bool isPrefix(const SqlText& s, size_t i)
{
    return s.isAny(i, {"x", "n", "b", "e"}) && i + 1 < s.count() &&
           s.tokens()[i + 1].kind == SqlToken::String && s.tokens()[i + 1].from == s.tokens()[i].to;
}

// A quoted name that does not end may be anything.
bool isLiteral(const SqlText& s, size_t i)
{
    const SqlToken& token = s.tokens()[i];
    const std::string_view text = s.str(i);
    const char close = text.front() == '[' ? ']' : text.front();
    const bool open =
        token.kind == SqlToken::QuotedName && (text.size() < 2 || text.back() != close);
    return token.kind == SqlToken::String || token.kind == SqlToken::Number || open;
}

} // namespace

void setMonitor(Monitor monitor)
{
    const std::unique_lock lock(monitorMutex);
    currentMonitor = std::move(monitor);
    monitorSet = currentMonitor != nullptr;
}

bool isMonitored()
{
    return monitorSet.load(std::memory_order_relaxed);
}

void tellMonitor(const MonitorRecord& record) noexcept
{
    try {
        const std::shared_lock lock(monitorMutex);
        if (currentMonitor)
            currentMonitor(record);
    } catch (...) {
        // What the monitor throws must not change what the statement did.
    }
}

std::string maskedText(std::string_view sql, std::string_view engine)
{
    const bool sqlite = sameName(engine, "sqlite", SqlDialect::Sqlite);
    const SqlText s(sql, sqlite ? SqlDialect::Sqlite : SqlDialect::Postgresql);
    std::string masked;
    size_t at = 0;
    for (size_t i = 0; i < s.count(); ++i) {
        const std::string_view gap = sql.substr(at, s.tokens()[i].from - at);
        const bool blank = gap.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
        masked += blank ? gap : std::string_view(" ");
        at = s.tokens()[i].to;
        if (isPrefix(s, i))
            continue;
        masked += isLiteral(s, i) ? std::string_view("?") : s.str(i);
    }
    return masked;
}

} // namespace DorCPP
