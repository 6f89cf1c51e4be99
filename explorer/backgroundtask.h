// Work on a thread of its own.
#pragma once

#include <functional>
#include <memory>

// Runs from construction on; its end wakes the event loop. An object that goes before that leaves
// the work alone to come to its end. At the end of the program such work is to be waited for.
class BackgroundTask {
public:
    // work: owns what it needs and throws nothing. Throws std::system_error when there can be no
    // thread.
    explicit BackgroundTask(std::function<void()> work);
    ~BackgroundTask();
    BackgroundTask(const BackgroundTask&) = delete;
    BackgroundTask& operator=(const BackgroundTask&) = delete;

    // What the work has written may be read from then on.
    bool isDone() const;

    // Waits for what was left alone; before the program's objects go.
    static void waitForAbandoned();

private:
    struct Thread;
    class Abandoned;
    std::unique_ptr<Thread> m_thread;
};
