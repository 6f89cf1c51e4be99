// What the database client calls at the end of an asynchronous statement, and how it is freed.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include <dorcpp/cursor.h>
#include <dorcpp/dorx.h>
#include <oviapi/socketnotifier.h>

#include "app/export.h"

// A handler object shared by a wait and the thread that ends the statement. It is called once, and
// freed exactly once, by whichever side has finished with it second: by the wait (leave), or, when
// the wait has gone already, by the event loop, to which the callback hands it through the
// HandlerManager. Derived classes decide which side is second by an atomic exchange.
class OVIEXT_API HandedHandler : public DorCPP::DorCursor::Handler {
public:
    HandedHandler();
    ~HandedHandler() override;
    HandedHandler(const HandedHandler&) = delete;
    HandedHandler& operator=(const HandedHandler&) = delete;

    // The wait has finished with the object, which may be gone after this call. Only after a
    // statement has been started with it.
    virtual void leave() = 0;

    // Expires when the object is freed: when neither the wait nor the statement goes on.
    std::weak_ptr<const void> life() const { return m_life; }

    struct Count {
        int64_t made;
        int64_t freed;
    };
    // Of the whole process, for diagnosis: made - freed objects live.
    static Count count();

private:
    std::shared_ptr<const void> m_life;
};

// Frees what a scope leaves.
struct LeaveHandler {
    void operator()(HandedHandler* handler) const { handler->leave(); }
};

// The handler of a nestable wait.
class OVIEXT_API AsyncCursorHandler final : public HandedHandler {
public:
    // Called by the client, on any thread or in a signal handler. Touches the done flag and the
    // pipe only.
    void handler(unsigned short status, int code) override;
    void leave() override;

    bool isDone() const { return m_done.load(std::memory_order_acquire) != 0; }
    // The end of the statement as an error record: status -1 and the error code, or the empty
    // record; never a text. Only when done.
    DorCPP::DorX result() const;

private:
    int m_code = 0;
    unsigned short m_status = 0;
    // 1: the statement has ended, or the wait has been left. Whoever finds it set is second.
    std::atomic<int> m_done = 0;
    static_assert(std::atomic<int>::is_always_lock_free, "touched in signal handlers");
};

// The end of a single-level wait: keeps what the client said and ends the wait. Lives in the wait's
// own call; what the client gets is a OneLevelRelay.
class OVIEXT_API OneLevelHandler final : public DorCPP::DorCursor::Handler {
public:
    void handler(unsigned short status, int code) override;
    DorCPP::DorX result() const;

private:
    int m_code = 0;
    unsigned short m_status = 0;
};

// Passes the client's call on to a OneLevelHandler while its wait is there, so that a call that
// comes after a broken wait reaches nobody.
class OVIEXT_API OneLevelRelay final : public HandedHandler {
public:
    explicit OneLevelRelay(OneLevelHandler& to)
        : m_to(to)
    {
    }

    void handler(unsigned short status, int code) override;
    // Afterwards the OneLevelHandler is not touched any more. Waits for a call that is passing it
    // at this moment, never for the statement.
    void leave() override;

private:
    enum State : int { Attached, Passing, Passed, Left };

    OneLevelHandler& m_to;
    std::atomic<int> m_state = Attached;
};

// Frees, from the event loop, the handlers that were called after their wait had gone. The callback
// writes the address of such a handler into a pipe; the event loop reads it. One for the process,
// made with its pipe when the library is loaded.
class OVIEXT_API HandlerManager final : public OviAPI::SocketNotifier {
public:
    static HandlerManager& instance();

    // To be called on the user-interface thread when a statement has been started: the event loop
    // watches the pipe from the first one on.
    void statementStarted();

    // Frees every handler that lies in the pipe.
    bool nRead() override;
    // Destroys the handler, a HandedHandler. Returns true.
    bool onPost(void* handler);

    // Hands a handler over to the event loop. Any thread, and signal handlers. Waits while the pipe
    // is full. When the process ends no event loop will read it: the handler is then freed here.
    static void post(HandedHandler* handler) noexcept;

private:
    HandlerManager();
    ~HandlerManager() override;

    static void watch() noexcept;
};
