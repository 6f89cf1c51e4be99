// A handler that tests wait for.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include <dorcpp/cursor.h>

namespace DorTest {

// Counts its calls and lets the test wait for them.
class Waiter : public DorCPP::DorCursor::Handler {
public:
    void handler(unsigned short s, int c) override
    {
        const std::lock_guard lock(m_mutex);
        status = s;
        code = c;
        thread = std::this_thread::get_id();
        ++calls;
        m_called.notify_all();
    }
    void wait(int count = 1)
    {
        std::unique_lock lock(m_mutex);
        m_called.wait(lock, [&] { return calls >= count; });
    }
    unsigned short status = 99;
    int code = 99;
    int calls = 0;
    std::thread::id thread;

private:
    std::mutex m_mutex;
    std::condition_variable m_called;
};

} // namespace DorTest
