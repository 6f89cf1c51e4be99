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
    Execution(const std::shared_ptr<Session>& session, StatementText statement);

    // Chooses the connection and starts the worker; waits for nobody. Throws DorX when no thread
    // can be made: the handler is not called then.
    static std::shared_ptr<Execution> start(const std::shared_ptr<Session>& session,
                                            StatementText statement, DorCursor::Handler& handler);
    // The same with a positioned statement, on the row that the answer stands on: the execution has
    // the answer until it is finished, and takeAnswer gives it back. Where this throws it is back.
    static std::shared_ptr<Execution> startOnRow(const std::shared_ptr<Session>& session,
                                                 StatementText statement, Answer& answer,
                                                 DorCursor::Handler& handler);

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

    static void startWorker(const std::shared_ptr<Execution>& execution,
                            DorCursor::Handler& handler, bool elsewhere);
    void run(DorCursor::Handler& handler, bool elsewhere);
    void throwIfStopped() const;
    bool isAlive(Driver& driver);
    void execute(Driver& driver);
    void executeHere();
    void executeElsewhere();

    std::shared_ptr<Session> m_session;
    StatementText m_statement;
    StatementKind m_kind;
    bool m_onRow = false;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_finished = false;
    std::atomic<bool> m_inCallback = false;
    std::mutex m_mutex; // guards the driver that cancel may interrupt
    Driver* m_driver = nullptr;
    Answer m_answer;
    DorX m_error;
};

} // namespace DorCPP
