#include <dorcpp/execution.h>

#include <new>

#include <dorcpp/errors.h>
#include <dorcpp/worker.h>

namespace DorCPP {

std::shared_ptr<Execution> Execution::start(const std::shared_ptr<Session>& session,
                                            StatementText statement, DorCursor::Handler& handler)
{
    auto execution = std::make_shared<Execution>();
    execution->m_session = session;
    execution->m_statement = std::move(statement);
    execution->m_kind = kindOf(SqlText(execution->m_statement.sql, session->dialect()));
    const bool elsewhere = session->mayRunElsewhere(execution->m_kind);
    Workers::instance().start(
        [execution, &handler, elsewhere] { execution->run(handler, elsewhere); },
        [weak = std::weak_ptr(execution)] {
            if (const auto running = weak.lock())
                running->cancel();
        });
    return execution;
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

void Execution::execute(Driver& driver)
{
    const Running running(*this, driver);
    if (m_stop)
        throw makeError(CodeCancelled);
    m_answer = executeStatement(m_session, driver, m_statement);
}

void Execution::executeHere()
{
    const Session::Use driver(*m_session, true);
    execute(*driver);
    m_session->noteExecuted(m_kind);
}

void Execution::executeElsewhere()
{
    std::unique_ptr<Driver> driver = m_session->takeSpare();
    if (!driver) {
        executeHere();
        return;
    }
    try {
        execute(*driver);
    } catch (const DorX& x) {
        if (x.code() == CodeCancelled || x.code() == CodeSqlText)
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
    } catch (const DorX& x) {
        m_error = x;
    } catch (const std::bad_alloc&) {
        m_error = makeError(CodeNoMemory);
    } catch (const std::exception& e) {
        m_error = makeError(CodeOther, e.what());
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
