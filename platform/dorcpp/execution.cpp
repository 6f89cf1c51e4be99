#include <dorcpp/execution.h>

#include <new>

#include <dorcpp/errors.h>
#include <dorcpp/worker.h>

namespace DorCPP {

Execution::Execution(const std::shared_ptr<Session>& session, StatementText statement)
    : m_session(session)
    , m_statement(std::move(statement))
    , m_kind(kindOf(m_statement.sql))
{
}

std::shared_ptr<Execution> Execution::start(const std::shared_ptr<Session>& session,
                                            StatementText statement, DorCursor::Handler& handler)
{
    const auto execution = std::make_shared<Execution>(session, std::move(statement));
    const bool elsewhere = session->mayRunElsewhere(execution->m_kind);
    if (!elsewhere)
        session->noteStarting(execution->m_kind);
    startWorker(execution, handler, elsewhere);
    return execution;
}

std::shared_ptr<Execution> Execution::startOnRow(const std::shared_ptr<Session>& session,
                                                 StatementText statement, Answer& answer,
                                                 DorCursor::Handler& handler)
{
    const auto execution = std::make_shared<Execution>(session, std::move(statement));
    execution->m_onRow = true;
    execution->m_answer = std::move(answer);
    try {
        startWorker(execution, handler, false);
    } catch (...) {
        answer = execution->takeAnswer();
        throw;
    }
    return execution;
}

void Execution::startWorker(const std::shared_ptr<Execution>& execution,
                            DorCursor::Handler& handler, bool elsewhere)
{
    Workers::instance().start(
        [execution, &handler, elsewhere] { execution->run(handler, elsewhere); },
        [weak = std::weak_ptr(execution)] {
            if (const auto running = weak.lock())
                running->cancel();
        });
}

void Execution::cancel() noexcept
{
    m_stop = true;
    const std::lock_guard lock(m_mutex);
    if (m_driver)
        m_driver->interrupt();
}

Execution::Running::Running(Execution& execution, Driver& driver)
    : m_execution(execution)
    , m_driver(driver)
{
    m_driver.watch(&m_execution.m_stop);
    const std::lock_guard lock(m_execution.m_mutex);
    m_execution.m_driver = &m_driver;
}

Execution::Running::~Running()
{
    {
        const std::lock_guard lock(m_execution.m_mutex);
        m_execution.m_driver = nullptr;
    }
    m_driver.watch(nullptr);
}

void Execution::throwIfStopped() const
{
    if (m_stop)
        throw makeError(CodeCancelled);
}

void Execution::execute(Driver& driver)
{
    const Running running(*this, driver);
    throwIfStopped();
    if (m_onRow)
        changeRow(*m_session, driver, m_statement, m_answer);
    else
        m_answer = executeStatement(m_session, driver, m_statement);
}

void Execution::executeHere()
{
    const Session::Use driver(*m_session, true);
    execute(*driver);
    if (!m_onRow) // else the rows have counted the change
        m_session->noteExecuted(m_kind);
}

// Whether an idle connection is still there; cancel reaches the question.
bool Execution::isAlive(Driver& driver)
{
    try {
        const Running running(*this, driver);
        driver.probe();
        return true;
    } catch (const DorX&) {
        return false;
    }
}

void Execution::executeElsewhere()
{
    std::unique_ptr<Driver> driver = m_session->takeSpare();
    if (driver && !isAlive(*driver))
        driver = nullptr;
    throwIfStopped();
    if (!driver)
        driver = m_session->connectBeside();
    if (!driver) {
        executeHere();
        return;
    }
    try {
        execute(*driver);
    } catch (const DorX& x) {
        const bool broken = x.code() >= CodeSessionLost && x.code() <= CodeCannotOpen;
        if (!broken && !driver->inTransaction())
            m_session->giveBack(std::move(driver));
        throw;
    }
    m_session->giveBack(std::move(driver));
    m_session->noteExecuted(m_kind);
}

void Execution::run(DorCursor::Handler& handler, bool elsewhere)
{
    try {
        if (elsewhere)
            executeElsewhere();
        else if (m_kind != StatementKind::Empty)
            executeHere();
    } catch (const DorX& x) { // a wait for a lock that was given up ends as locked
        m_error = m_stop && x.code() == CodeLocked ? makeError(CodeCancelled) : x;
    } catch (const std::bad_alloc&) {
        m_error = makeError(CodeNoMemory);
    } catch (const std::exception& e) {
        m_error = makeError(CodeOther, std::string_view(e.what()));
    } catch (...) {
        m_error = makeError(CodeOther);
    }
    const int code = m_error.code(); // read before the cursor may take what is here
    m_session = nullptr;
    m_inCallback = true;
    m_finished.store(true, std::memory_order_release);
    try {
        handler.handler(static_cast<unsigned short>(code), code);
    } catch (...) {
        // A handler's exception has no caller to reach on this thread.
    }
    m_inCallback = false;
    Workers::wakeUp();
}

} // namespace DorCPP
