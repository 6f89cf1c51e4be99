// Whether a database still answers.
#pragma once

#include <atomic>
#include <memory>

#include <oviapi/object.h>
#include <oviapi/timer.h>

#include "explorer/backgroundtask.h"

// Asks on a thread of its own: a server that is gone holds up nobody.
class AliveProbe : public OviAPI::Object {
public:
    AliveProbe();

    // The answer is there. alive: false when the session is lost for good; a database that is busy
    // lives.
    virtual bool onAnswer(bool alive);

    // Asks the session with this channel number. Does nothing while it waits for an answer.
    void ask(int channel);
    bool isAsking() const { return m_task != nullptr; }
    // The answer is not wanted any more.
    void forget();

private:
    OviAPI::SlotResult look(OviAPI::Object*);

    std::shared_ptr<std::atomic<bool>> m_alive;
    std::unique_ptr<BackgroundTask> m_task;
    OviAPI::WTimer m_timer;
};

OVIAPI_SIGNAL(AliveProbe, onAnswer);
