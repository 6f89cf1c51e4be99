// Opening a database while the windows go on living.
#pragma once

#include <functional>
#include <memory>

#include "app/extform.h"
#include "explorer/backgroundtask.h"
#include "explorer/databasesession.h"

// Opens one database on a thread of its own, from construction on. An object that goes before the
// end gives the database up: it is closed as soon as it is open.
class BackgroundOpening {
public:
    // What opens the database; runs on the thread and owns what it needs. May throw OpenFailure.
    using Open = DatabaseSession::Open;

    // Throws OpenFailure when there can be no thread.
    explicit BackgroundOpening(Open open);

    bool isDone() const { return m_task->isDone(); }
    // The open database, once; throws what the opening ended with. Only when done.
    std::unique_ptr<DatabaseSession> result();

private:
    struct Answer;
    std::shared_ptr<Answer> m_answer; // with the thread
    std::unique_ptr<BackgroundTask> m_task;
};

// Opens databases for one window. While it waits the window handles its events; after a second a
// dialog with a button to give up is shown above it.
class Opening {
public:
    explicit Opening(WExtForm& above)
        : m_above(above)
    {
    }

    // name: what the dialog says is being opened. Null when the user gave up, giveUp was called, or
    // another database is being opened here. Throws OpenFailure.
    std::unique_ptr<DatabaseSession> run(const std::wstring& name, BackgroundOpening::Open open);
    bool isRunning() const { return m_running; }
    // Ends run without a database.
    void giveUp() { m_givenUp = true; }

private:
    WExtForm& m_above;
    bool m_running = false;
    bool m_givenUp = false;
};
