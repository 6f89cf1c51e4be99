// Timers.
#pragma once

#include <memory>

#include <oviapi/export.h>
#include <oviapi/object.h>

namespace OviAPI {

// Calls onTimer again and again while it runs, to the millisecond, also inside modal loops and
// waits. Ticks that could not be delivered in time are not made up for. Can be started once the
// application has been; user-interface thread only.
class OVIAPI_API WTimer : public virtual Object {
public:
    // interval: milliseconds.
    explicit WTimer(int interval = 0);
    ~WTimer() override;

    virtual bool onTimer();

    // A timer that runs begins the new interval now.
    void setInterval(int interval);
    int interval() const { return m_interval; }
    // Begins a new interval when the timer runs already. Returns false, and nothing runs, before
    // the application is started.
    bool start();
    void stop();
    bool isRunning() const;

private:
    friend struct Toolkit;
    struct Native;

    std::unique_ptr<Native> m_native;
    int m_interval;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WTimer, onTimer);
