// Waiting for asynchronous statements with the user interface alive, nestable.
#pragma once

#include <cstdint>
#include <memory>

#include <oviapi/vectorof.h>

#include "app/export.h"
#include "data/asynccursorhandler.h"

class AsyncCursorQueryMode;

// The termination flag of one wait, for the length of a scope. Guards are destroyed in the reverse
// order of their making.
class OVIEXT_API TermGuard {
public:
    explicit TermGuard(AsyncCursorQueryMode& mode);
    ~TermGuard();
    TermGuard(const TermGuard&) = delete;
    TermGuard& operator=(const TermGuard&) = delete;

    bool isTerminated() const;

private:
    AsyncCursorQueryMode& m_mode;
    uint32_t m_slot;
};

// Waits in a local event loop. Waits may be nested: one that is begun by an event handled inside
// another one ends first, and so it is the innermost that is terminated first. One for the
// process; user-interface thread only.
//
//     cursor.execute(sql, mode.dorHandler());
//     mode.wait();
class OVIEXT_API AsyncCursorQueryMode {
public:
    // Thrown out of a wait that was terminated.
    class Terminate {};

    static AsyncCursorQueryMode& instance();

    // A new handler, for the statement that the next wait waits for.
    AsyncCursorHandler* dorHandler();
    // Frees that handler when the statement could not be started.
    void dropHandler();

    // Handles events until the statement ends. Throws DorX when it ended with an error (see
    // AsyncCursorHandler::result), Terminate when the wait was terminated or the application was
    // quitted meanwhile, and what an event handler has thrown; in the last two cases the statement
    // may still run. Without a started application it waits without handling events.
    void wait();
    // Ends the innermost wait; does nothing when there is none.
    void terminate();
    // Ends the wait with this number, the outermost having 0, as soon as those inside it have
    // ended.
    void terminate(uint32_t wait);
    // How many waits there are, one inside the other.
    uint32_t waitCount() const { return m_flags.count(); }

    // Handles events once.
    void proc();

private:
    friend class TermGuard;

    AsyncCursorQueryMode() = default;

    VectorOf<unsigned char> m_flags{50, 50}; // 1: terminated; the innermost wait last
    std::unique_ptr<AsyncCursorHandler> m_current;
};
