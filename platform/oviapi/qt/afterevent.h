// Calls handlers when a widget has finished with an event.
//
// A toolkit widget may emit a signal in the middle of its own event function and then go on with
// numbers and pointers that the handler has made wrong. A subclass of such a widget opens a Scope
// in event() (and viewportEvent()) and passes what its signals lead to through run().
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include <QPointer>

#include "native.h"

namespace OviAPI {

class AfterEvent {
public:
    class Scope {
    public:
        Scope(AfterEvent& calls, QObject* widget)
            : m_calls(calls)
            , m_widget(widget)
        {
            ++m_calls.m_depth;
        }
        ~Scope()
        {
            if (m_widget && --m_calls.m_depth == 0)
                m_calls.flush(m_widget);
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        AfterEvent& m_calls; // a member of the widget
        QPointer<QObject> m_widget;
    };

    // Around a handler that has to be called inside the event: it may run a loop of events, whose
    // calls do not wait.
    class Pause {
    public:
        Pause(AfterEvent& calls, QObject* widget)
            : m_calls(calls)
            , m_widget(widget)
            , m_depth(std::exchange(calls.m_depth, 0))
        {
        }
        ~Pause()
        {
            if (m_widget)
                m_calls.m_depth = m_depth;
        }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        AfterEvent& m_calls;
        QPointer<QObject> m_widget;
        int m_depth;
    };

    // At once outside of events; not at all when the context has been destroyed meanwhile.
    void run(QObject* context, std::function<void()> function)
    {
        if (m_depth > 0)
            m_pending.push_back({context, std::move(function)});
        else
            barrier(function);
    }

private:
    struct Call {
        QPointer<QObject> context;
        std::function<void()> function;
    };

    void flush(const QPointer<QObject>& widget)
    {
        const std::vector<Call> pending = std::exchange(m_pending, {});
        for (const Call& call : pending) {
            if (!widget)
                return;
            if (call.context)
                barrier(call.function);
        }
    }

    std::vector<Call> m_pending;
    int m_depth = 0;
};

} // namespace OviAPI
