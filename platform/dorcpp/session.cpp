#include <dorcpp/session.h>

#include <chrono>
#include <map>
#include <utility>

#include <dorcpp/errors.h>

namespace DorCPP {

namespace {

// Sessions by channel number.
class Registry {
public:
    static Registry& instance()
    {
        static Registry registry;
        return registry;
    }
    int add(const std::shared_ptr<Session>& session)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_sessions, [](const auto& entry) { return entry.second.expired(); });
        const int channel = ++m_last;
        if (session)
            m_sessions[channel] = session;
        return channel;
    }
    std::shared_ptr<Session> find(int channel)
    {
        const std::lock_guard lock(m_mutex);
        const auto at = m_sessions.find(channel);
        return at == m_sessions.end() ? nullptr : at->second.lock();
    }

private:
    std::mutex m_mutex;
    std::map<int, std::weak_ptr<Session>> m_sessions;
    int m_last = 0;
};

} // namespace

std::shared_ptr<Session> Session::open(const Target& target, int mode, bool registered)
{
    auto session = std::make_shared<Session>(openDriver(target), target, mode);
    session->m_channel = Registry::instance().add(registered ? session : nullptr);
    return session;
}

std::shared_ptr<Session> Session::find(int channel)
{
    return Registry::instance().find(channel);
}

void Session::registerBefore()
{
    Registry::instance();
}

Session::Session(std::unique_ptr<Driver> driver, Target target, int mode)
    : m_target(std::move(target))
    , m_mode(mode)
    , m_driver(std::move(driver))
    , m_dialect(m_driver->dialect())
{
}

Session::~Session() = default;

Session::Use::Use(Session& session, bool asynchronous)
    : m_session(session)
{
    std::unique_lock lock(session.m_mutex);
    const auto isFree = [&] { return !session.m_used; };
    while (!isFree()) {
        if (!session.m_usedAsynchronously) {
            session.m_free.wait(lock, [&] { return isFree() || session.m_usedAsynchronously; });
        } else if (!session.m_free.wait_for(lock, std::chrono::milliseconds(200), isFree)) {
            throw makeError(CodeBusy, OviAPI::Phrase::DbDetailSessionBusy);
        }
    }
    session.m_used = true;
    session.m_usedAsynchronously = asynchronous;
}

Session::Use::~Use()
{
    {
        const std::lock_guard lock(m_session.m_mutex);
        m_session.m_used = false;
        m_session.m_usedAsynchronously = false;
    }
    m_session.m_free.notify_all();
}

bool Session::mayRunElsewhere(StatementKind kind)
{
    if (kind != StatementKind::Query && kind != StatementKind::Modify &&
        kind != StatementKind::Define)
        return false;
    if (m_hasState || (m_dialect == SqlDialect::Sqlite && m_target.path.empty()))
        return false;
    const Use driver(*this);
    return !driver->inTransaction();
}

std::unique_ptr<Driver> Session::takeSpare()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_spare)
            return std::move(m_spare);
    }
    const Use driver(*this);
    return driver->duplicate();
}

void Session::giveBack(std::unique_ptr<Driver> driver)
{
    const std::lock_guard lock(m_mutex);
    if (!m_spare)
        m_spare = std::move(driver);
}

void Session::noteExecuted(StatementKind kind)
{
    if (kind == StatementKind::SessionState)
        m_hasState = true;
    if (kind != StatementKind::Query && kind != StatementKind::Empty)
        countChange();
}

} // namespace DorCPP
