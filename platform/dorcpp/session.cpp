#include <dorcpp/session.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include <dorcpp/errors.h>
#include <dorcpp/sessiondriver.h>

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
    int nextChannel()
    {
        const std::lock_guard lock(m_mutex);
        return ++m_last;
    }
    void add(const std::shared_ptr<Session>& session)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_sessions, [](const auto& entry) { return entry.second.expired(); });
        m_sessions[session->channel()] = session;
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
    auto session = std::make_shared<Session>(target, mode, Registry::instance().nextChannel());
    if (registered)
        Registry::instance().add(session);
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

Session::Session(const Target& target, int mode, int channel)
    : m_mode(mode)
    , m_channel(channel)
    , m_inMemory(target.engine == SqlDialect::Sqlite && target.path.empty())
    , m_driver(std::make_unique<SessionDriver>(openDriver(target), channel, false))
    , m_dialect(m_driver->dialect())
    , m_tableListText(m_driver->tableListText())
    , m_foreignKeyListText(m_driver->foreignKeyListText())
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
    m_session.m_inTransaction = m_session.m_driver->inTransaction();
    {
        const std::lock_guard lock(m_session.m_mutex);
        m_session.m_used = false;
        m_session.m_usedAsynchronously = false;
    }
    m_session.m_free.notify_all();
}

bool Session::mayRunElsewhere(StatementKind kind) const
{
    const bool self = kind == StatementKind::Query || kind == StatementKind::Modify ||
                      kind == StatementKind::Define;
    return self && !m_inMemory && !m_hasState && !m_inTransaction;
}

std::unique_ptr<Driver> Session::takeSpare()
{
    const std::lock_guard lock(m_mutex);
    return std::move(m_spare);
}

void Session::giveBack(std::unique_ptr<Driver> driver)
{
    const std::lock_guard lock(m_mutex);
    if (!m_spare)
        m_spare = std::move(driver);
}

void Session::noteStarting(StatementKind kind)
{
    if (kind == StatementKind::Transaction)
        m_inTransaction = true;
}

void Session::noteExecuted(StatementKind kind)
{
    if (kind == StatementKind::SessionState)
        m_hasState = true;
    if (kind == StatementKind::Query || kind == StatementKind::Empty)
        return;
    countChange();
    if (kind != StatementKind::Modify)
        forgetColumns();
}

std::shared_ptr<const TableColumns> Session::columnsOf(Driver& driver, const std::string& schema,
                                                       const std::string& table)
{
    const auto now = std::chrono::steady_clock::now();
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_known, [&](const KnownTable& known) {
            return now - known.read > std::chrono::seconds(1);
        });
        const auto at = std::find_if(m_known.begin(), m_known.end(), [&](const KnownTable& known) {
            return known.table == table && known.schema == schema;
        });
        if (at != m_known.end())
            return at->columns;
    }
    auto columns = std::make_shared<const TableColumns>(driver.tableColumns(schema, table));
    const std::lock_guard lock(m_mutex);
    m_known.push_back({schema, table, columns, now});
    return columns;
}

void Session::forgetColumns()
{
    const std::lock_guard lock(m_mutex);
    m_known.clear();
}

} // namespace DorCPP
