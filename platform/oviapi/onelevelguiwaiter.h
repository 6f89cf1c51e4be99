// A wait for one thing at a time with the user interface alive.
#pragma once

#include <atomic>

#include <oviapi/export.h>

namespace OviAPI {

// Init, then start what is to be waited for, then Wait. There is one in the whole process: m_exists
// tells whether it is in use.
class OVIAPI_API OneLevelGUIWaiter {
public:
    enum Result {
        NotWaiting = 0, // Init has not been called
        Broken = 1,
        Completed = 2,
    };

    // From Init to the end of Wait.
    static std::atomic<bool> m_exists;

    static void Init();
    // Handles events until Leave or Break; a call of either after Init counts as well. Whichever
    // comes first decides. Quitting the application meanwhile breaks the wait. Throws what a
    // handler has thrown; the waiter is then free again.
    static int Wait();
    // What was waited for is complete. Any thread, and signal handlers.
    static void Leave() noexcept;
    // Gives up waiting. The user-interface thread, or any other.
    static void Break() noexcept;
    // Frees the waiter after Init when there will be no Wait.
    static void Cancel() noexcept;
};

} // namespace OviAPI
