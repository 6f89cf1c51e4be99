// What tests of waiting cursors share: statements that take as long as is wanted, and things that
// happen during a wait.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <oviapi/onelevelguiwaiter.h>
#include <oviapi/timer.h>

#include "data/asynccursor.h"
#include "data/asynccursorquerymode.h"
#include "tests/data/database.h"
#include "tests/support/uidriver.h"

// Runs until it is cancelled.
inline const char* const endless = "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c)"
                                   " SELECT count(*) FROM c";

// Does something once, from the event loop, as soon as the condition holds. What it throws goes the
// way of what an event handler throws.
class When : public virtual OviAPI::Object {
public:
    When(std::function<bool()> condition, std::function<void()> action)
        : m_condition(std::move(condition))
        , m_action(std::move(action))
    {
        OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &When::onTimer);
        m_timer.start();
    }

private:
    OviAPI::SlotResult onTimer(OviAPI::Object*)
    {
        if (!m_condition())
            return 0;
        m_timer.stop();
        const std::function<void()> action = std::move(m_action);
        action();
        return 0;
    }

    std::function<bool()> m_condition;
    std::function<void()> m_action;
    OviAPI::WTimer m_timer{1};
};

// Since it was made.
class Stopwatch {
public:
    int milliseconds() const
    {
        const auto time = std::chrono::steady_clock::now() - m_start;
        return static_cast<int>(
            std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

inline uint32_t waitCount()
{
    return AsyncCursorQueryMode::instance().waitCount();
}

inline std::function<bool()> waiting(uint32_t waits = 1)
{
    return [waits] { return waitCount() >= waits; };
}

inline int64_t handlersAlive()
{
    const HandedHandler::Count count = HandedHandler::count();
    return count.made - count.freed;
}

// Shows its window to a test.
struct OpenCursor : xRAsyncCursor {
    ProcessExecForm& form() { return m_form; }
};

// Parts of a progress window.
struct Parts : ProcessExecForm {
    static OviAPI::WButton& button(ProcessExecForm& form) { return form.*(&Parts::m_button); }
    static OviAPI::WStatic& label(ProcessExecForm& form) { return form.*(&Parts::m_label); }
    static OviAPI::WTimer& showTimer(ProcessExecForm& form) { return form.*(&Parts::m_showTimer); }
    static OviAPI::WTimer& hideTimer(ProcessExecForm& form) { return form.*(&Parts::m_hideTimer); }
};

// After every test nothing waits and every handler has been freed.
class AsyncWait : public Database {
protected:
    AsyncWait() { cursor.create(connection, 0, nullptr, true); }
    ~AsyncWait() override
    {
        EXPECT_EQ(waitCount(), 0U);
        EXPECT_FALSE(OviAPI::OneLevelGUIWaiter::m_exists);
        const Stopwatch time;
        while (handlersAlive() > 0 && time.milliseconds() < 10000) {
            HandlerManager::instance().nRead();
            DorCPP::DelayThread(1);
        }
        EXPECT_EQ(handlersAlive(), 0);
    }

    // The first value of a statement's answer.
    int value(const std::string& sql) const
    {
        DorCPP::DorCursor plain;
        plain.create(connection, 0, nullptr, false);
        plain.execute(sql.c_str());
        return firstValue(plain);
    }
    static int firstValue(DorCPP::DorCursor& of)
    {
        of.fetch(DorCPP::FetchFirst, 0);
        char text[32] = {};
        of.getData(1, DorCPP::TypeText, text, sizeof text);
        return std::stoi(text);
    }
    // What execute throws; the empty record for nothing.
    template<class Call>
    static DorCPP::DorX thrownBy(Call call)
    {
        try {
            call();
        } catch (const DorCPP::DorX& x) {
            return x;
        }
        return {};
    }

    OpenCursor cursor;
};

// Holds the write lock of the database, so that a statement that writes takes as long as wanted.
// The statement's session must wait for locks.
class WriteLock {
public:
    explicit WriteLock(const DorCPP::DorConnect& session)
    {
        m_cursor.create(session, 0, nullptr, false);
        m_cursor.execute("BEGIN IMMEDIATE");
    }
    void release() { m_cursor.execute("COMMIT"); }

private:
    DorCPP::DorCursor m_cursor;
};
