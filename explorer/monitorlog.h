// What was sent to the engines last.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <dorcpp/monitor.h>

// Something sent, after its end. Texts are UTF-8, the message multibyte text of the process locale.
struct MonitorEntry {
    std::chrono::system_clock::time_point start;
    int64_t micros = 0;
    int64_t rows = 0; // given, or changed
    int code = 0;     // DorCPP::DorCode of the error, 0 for none
    std::string text; // with its values, the longest texts cut
    std::string message;
};

// A ring of the last entries. Any thread may add.
class MonitorLog {
public:
    static constexpr size_t Most = 1000;
    static constexpr size_t LongestText = 20000; // bytes

    void add(const DorCPP::MonitorRecord& record);
    void clear();
    std::vector<MonitorEntry> entries() const; // the oldest first
    // Counts the changes.
    uint64_t revision() const;

private:
    mutable std::mutex m_mutex;
    std::deque<MonitorEntry> m_entries;
    uint64_t m_revision = 0;
};

// Sends everything to a log while it lives; one at a time in the process.
class MonitorWatch {
public:
    explicit MonitorWatch(std::shared_ptr<MonitorLog> log);
    ~MonitorWatch();
    MonitorWatch(const MonitorWatch&) = delete;
    MonitorWatch& operator=(const MonitorWatch&) = delete;
};

// Text of at most so many bytes, cut between two characters of UTF-8, with three points behind it
// when it was cut.
std::string cutUtf8(std::string_view text, size_t bytes);
