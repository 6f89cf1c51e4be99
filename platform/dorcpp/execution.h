// One asynchronous execution of a statement.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include <dorcpp/answer.h>
#include <dorcpp/cursor.h>

namespace DorCPP {

// Shared by the cursor and the worker. The answer and the error belong to the worker until
// isFinished, then to the cursor; a cursor that was closed meanwhile just lets go.
class Execution : public std::enable_shared_from_this<Execution> {
public:
    // Chooses the connection and starts the worker. Throws DorX when that cannot be done.
    static std::shared_ptr<Execution> start(const std::shared_ptr<Session>& session,
                                            StatementText statement, DorCursor::Handler& handler);

    // Returns at once; the statement ends soon. No interruption is under way when the statement's
    // connection is used again.
    void cancel() noexcept;
    bool isFinished() const { return m_finished.load(std::memory_order_acquire); }
    bool isInCallback() const { return m_inCallback; }

    // Only when finished.
    Answer takeAnswer() { return std::move(m_answer); }
    const DorX& error() const { return m_error; }

private:
    // Lets cancel reach the driver while the object lives.
    class Running {
    public:
        Running(Execution& execution, Driver& driver);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        Execution& m_execution;
        Driver& m_driver;
    };

    void run(DorCursor::Handler& handler, bool elsewhere);
    void execute(Driver& driver);
    void executeHere();
    void executeElsewhere();

    std::shared_ptr<Session> m_session;
    StatementText m_statement;
    StatementKind m_kind = StatementKind::Empty;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_finished = false;
    std::atomic<bool> m_inCallback = false;
    std::mutex m_mutex; // guards the driver that cancel may interrupt
    Driver* m_driver = nullptr;
    Answer m_answer;
    DorX m_error;
};

} // namespace DorCPP
