#include "explorer/monitorlog.h"

#include <utility>

std::string cutUtf8(std::string_view text, size_t bytes)
{
    if (text.size() <= bytes)
        return std::string(text);
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
        --bytes;
    return std::string(text.substr(0, bytes)) + "...";
}

void MonitorLog::add(const DorCPP::MonitorRecord& record)
{
    if (record.text.empty() && record.code == 0)
        return; // whether the engine is alive: nothing was sent to be read
    MonitorEntry entry{record.start,
                       record.micros,
                       record.rows,
                       record.code,
                       cutUtf8(record.text, LongestText),
                       cutUtf8(record.message, LongestText)};
    const std::lock_guard lock(m_mutex);
    m_entries.push_back(std::move(entry));
    if (m_entries.size() > Most)
        m_entries.pop_front();
    ++m_revision;
}

void MonitorLog::clear()
{
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
    ++m_revision;
}

std::vector<MonitorEntry> MonitorLog::entries() const
{
    const std::lock_guard lock(m_mutex);
    return {m_entries.begin(), m_entries.end()};
}

uint64_t MonitorLog::revision() const
{
    const std::lock_guard lock(m_mutex);
    return m_revision;
}

MonitorWatch::MonitorWatch(std::shared_ptr<MonitorLog> log)
{
    DorCPP::setMonitor(
        [log = std::move(log)](const DorCPP::MonitorRecord& record) { log->add(record); });
}

MonitorWatch::~MonitorWatch()
{
    DorCPP::setMonitor({});
}
