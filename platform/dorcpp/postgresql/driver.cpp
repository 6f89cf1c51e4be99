#include <dorcpp/postgresql/driver.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <set>

#include <dorcpp/errors.h>
#include <dorcpp/postgresql/errors.h>
#include <dorcpp/postgresql/savepoint.h>
#include <dorcpp/value.h>

namespace DorCPP {

std::unique_ptr<Driver> openPostgresql(const Target& target)
{
    return std::make_unique<Postgresql::PostgresqlDriver>(target);
}

namespace Postgresql {

namespace {

constexpr int lockTimeoutBeside = 10'000; // ms, of statements that nobody waits for with the mouse

// Sets what there is of the settings, so that engines that speak the same protocol and lack some
// are served too. A lock timeout that the user chose otherwise stays.
constexpr const char* setSettings =
    "SELECT pg_catalog.set_config(s.name, v.value, false)"
    " FROM pg_catalog.pg_settings s JOIN (VALUES ('DateStyle', 'ISO, MDY'),"
    " ('synchronize_seqscans', 'off'), ('bytea_output', 'hex'), ('extra_float_digits', '1'),"
    " ('client_encoding', 'UTF8'), ('lock_timeout', $1::text),"
    " ('default_transaction_read_only', $2::text)) v(name, value) ON s.name = v.name"
    " WHERE v.value IS NOT NULL AND (s.name <> 'lock_timeout'"
    " OR s.source IN ('default', 'session'))";

bool isLoss(const DorX& x)
{
    return x.code() == CodeSessionLost || x.code() == CodeServerStopped;
}

// Whether a statement failed because it was prepared before its table was changed.
bool isOutdated(const DorX& x)
{
    static const std::set<int> states{numberOf("0A000"), numberOf("26000"), numberOf("42703"),
                                      numberOf("42P01"), numberOf("42P10")};
    return states.count(x.engineCode()) != 0;
}

// Whether the answer's columns are wanted; other statements are sent without asking for them first.
bool mayGiveRows(const SqlText& text)
{
    if (kindOf(text) == StatementKind::Query)
        return true;
    for (size_t i = 0; i < text.count(); ++i) {
        if (text.is(i, "returning"))
            return true;
    }
    return false;
}

bool copiesToClient(const SqlText& text)
{
    if (!text.is(0, "copy"))
        return false;
    for (size_t i = 1; i < text.count(); ++i) {
        if (text.tokens()[i].depth == 0 && text.isAny(i, {"stdin", "stdout"}))
            return true;
    }
    return false;
}

bool holdsSeveral(const SqlText& text)
{
    for (size_t i = 0; i < text.count(); ++i) {
        if (text.is(i, ";"))
            return true;
    }
    return false;
}

// Copies the rows of a statement, which come one by one, into the result.
class RowTaker {
public:
    explicit RowTaker(StatementResult& result)
        : m_result(result)
    {
    }
    void operator()(const PGresult* row)
    {
        if (!m_fields) {
            m_fields.emplace(row);
            m_result.rows = std::make_unique<Spool>(static_cast<size_t>(m_fields->columns()));
        }
        m_result.rows->beginRow();
        for (int i = 0; i < m_fields->columns(); ++i)
            m_fields->add(row, 0, i, *m_result.rows, m_own);
    }

private:
    StatementResult& m_result;
    std::optional<Fields> m_fields; // of the first row
    std::string m_own;
};

} // namespace

PostgresqlDriver::PostgresqlDriver(const Target& target)
    : m_target(target)
    , m_link(std::make_unique<Link>(target))
    , m_changes(std::make_shared<std::atomic<uint64_t>>(0))
    , m_definitions(std::make_shared<std::atomic<uint64_t>>(0))
{
    configure();
}

PostgresqlDriver::~PostgresqlDriver() = default;

void PostgresqlDriver::configure()
{
    Values values(2);
    values.set(1, std::to_string(std::max(m_target.lockTimeout, 1))); // 0 would wait for ever
    if (m_target.readOnly)
        values.set(2, std::string("on"));
    m_link->send(setSettings, values, false);
    m_link->take();
    m_settingsLost = false;
}

void PostgresqlDriver::forgetTables()
{
    m_tables.clear();
    m_facts.clear();
    ++*m_definitions;
}

bool PostgresqlDriver::isReadOnly() const
{
    const char* standby = PQparameterStatus(m_link->get(), "in_hot_standby");
    return m_target.readOnly || (standby && std::strcmp(standby, "on") == 0);
}

std::unique_ptr<Driver> PostgresqlDriver::duplicate() const
{
    Target target = m_target;
    target.lockTimeout = std::max(target.lockTimeout, lockTimeoutBeside);
    auto driver = std::make_unique<PostgresqlDriver>(target);
    driver->m_beside = true;
    driver->m_changes = m_changes;
    driver->m_definitions = m_definitions;
    return driver;
}

void PostgresqlDriver::probe()
{
    m_link->send("", Values(), false);
    m_link->take();
}

ConnectionInfo PostgresqlDriver::info() const
{
    const auto orEmpty = [](const char* text) { return std::string(text ? text : ""); };
    const PGconn* connection = m_link->get();
    ConnectionInfo info;
    info.engine = "PostgreSQL";
    info.version = orEmpty(PQparameterStatus(connection, "server_version"));
    info.host = orEmpty(PQhost(connection));
    info.database = orEmpty(PQdb(connection));
    info.user = orEmpty(PQuser(connection));
    if (PQsslInUse(m_link->get()))
        info.cipher = orEmpty(PQsslAttribute(m_link->get(), "protocol")) + ' ' +
                      orEmpty(PQsslAttribute(m_link->get(), "cipher"));
    info.readOnly = isReadOnly();
    return info;
}

void PostgresqlDriver::watch(const std::atomic<bool>* stop)
{
    if (stop && m_beside && !m_link->listen()) { // nothing was in flight and nothing depends on it
        m_link = std::make_unique<Link>(m_target);
        m_cache.clear(false);
        forgetTables();
        configure();
    }
    m_link->watch(stop);
}

// Tells where the fault lies in the client's text, and the one that only looks like a wrong text.
void PostgresqlDriver::explain(DorX& x, const std::string& sql) const
{
    const int character = m_link->faultAt();
    if (character > 0)
        x.setPosition(ServerText(sql).clientByte(character));
    else if (x.engineCode() == numberOf("42601") &&
             holdsSeveral(SqlText(sql, SqlDialect::Postgresql)))
        x = makeEngineError(CodeSeveralStatements, x.engineCode(), x.detail() ? x.detail() : "");
}

int PostgresqlDriver::prepare(const std::string& sql, bool)
{
    try {
        return kept(sql).values().count();
    } catch (DorX& x) {
        explain(x, sql);
        throw;
    }
}

std::vector<ColumnInfo> PostgresqlDriver::describe(const std::string& sql)
{
    std::vector<DescribedColumn> columns;
    try {
        columns = kept(sql).columns;
    } catch (DorX& x) {
        explain(x, sql);
        throw;
    }
    return columnInfos(columns);
}

StatementResult PostgresqlDriver::run(const std::string& sql, const Parameters& parameters,
                                      bool prepared)
{
    checkText(sql);
    const SqlText text(sql, SqlDialect::Postgresql);
    if (copiesToClient(text))
        throw makeError(CodeSqlText, OviAPI::Phrase::DbDetailCopy);
    const StatementKind kind = kindOf(text);
    const bool inside = inTransaction();
    StatementResult result;
    if (kind == StatementKind::Empty)
        return result;
    if (kind != StatementKind::Query)
        ++*m_changes;
    try {
        const Result end = runAny(text, sql, parameters, prepared, result);
        noteEnd(text, end.get(), result);
    } catch (DorX& x) {
        explain(x, sql);
        addOutcome(x, text, inside);
        throw;
    }
    if (kind != StatementKind::Query)
        ++*m_changes; // what was read ahead meanwhile is old
    return result;
}

Result PostgresqlDriver::runAny(const SqlText& text, const std::string& sql,
                                const Parameters& parameters, bool prepared,
                                StatementResult& result)
{
    const bool wasKept = m_cache.holds(sql);
    if (!wasKept && !prepared && parameters.empty() && !mayGiveRows(text)) {
        const ServerText server(sql);
        if (server.parameters() == 0) {
            m_link->send(server.text(), Values(), false);
            return m_link->takeRows(RowTaker(result));
        }
    }
    // What is repeated must have been undone as a whole: a procedure may have committed.
    const StatementKind kind = kindOf(text);
    const bool isWhole = kind == StatementKind::Query || kind == StatementKind::Modify;
    if (!wasKept || !isWhole || inTransaction())
        return runKept(sql, parameters, result);
    Result end;
    again([&] {
        result = StatementResult();
        end = runKept(sql, parameters, result);
    });
    return end;
}

Result PostgresqlDriver::runKept(const std::string& sql, const Parameters& parameters,
                                 StatementResult& result)
{
    const Prepared& statement = kept(sql);
    m_link->sendPrepared(statement.name, statement.values(parameters), statement.binary);
    return m_link->takeRows(RowTaker(result));
}

void PostgresqlDriver::noteEnd(const SqlText& text, const PGresult* end, StatementResult& result)
{
    const std::string_view status = PQcmdStatus(const_cast<PGresult*>(end)); // only read
    if (text.isAny(0, {"commit", "end"}) && status == "ROLLBACK")
        throw makeError(CodeUndone, OviAPI::Phrase::DbDetailRolledBack);
    for (const char* word : {"INSERT", "UPDATE", "DELETE", "MERGE"}) {
        if (status.starts_with(word))
            result.changed = std::atoll(PQcmdTuples(const_cast<PGresult*>(end)));
    }
    const auto columns = describedColumns(end);
    if (!columns.empty()) {
        if (!result.rows)
            result.rows = std::make_unique<Spool>(columns.size());
        result.rows->finish();
        result.columns = columnInfos(columns);
    } else {
        result.rows = nullptr;
    }
    if (text.isAny(0, {"reset", "discard"}))
        m_settingsLost = true;
    if (text.isAny(0, {"deallocate", "discard"}))
        m_cache.clear(false);
    else if (kindOf(text) == StatementKind::Define || kindOf(text) == StatementKind::SessionState)
        m_cache.clear(true);
    if (kindOf(text) != StatementKind::Query && kindOf(text) != StatementKind::Modify)
        forgetTables();
}

// What became of the statement when the connection was lost under it.
void PostgresqlDriver::addOutcome(DorX& x, const SqlText& text, bool inside) const
{
    if (!isLoss(x))
        return;
    const bool commits = text.isAny(0, {"commit", "end"});
    if (inside && !commits)
        x.addNested(makeError(CodeUndone, OviAPI::Phrase::DbDetailRolledBack));
    else if (m_link->wasSent() && kindOf(text) != StatementKind::Query)
        x.addNested(DorX(-1, x.code(), OviAPI::Phrase::DbOutcomeUnknown));
}

void PostgresqlDriver::settingsChanged()
{
    const char* encoding = PQparameterStatus(m_link->get(), "client_encoding");
    const bool foreign = encoding && std::strcmp(encoding, "UTF8") != 0;
    if ((m_settingsLost || foreign) && m_link->transaction() != PQTRANS_INERROR)
        configure();
}

bool PostgresqlDriver::givesRow(const std::string& sql)
{
    Savepoint look(*m_link);
    try {
        const ServerText server("EXPLAIN (COSTS OFF) " + sql);
        m_link->send(server.text(), Values(server.parameters()), false);
        const Result plan = m_link->take();
        look.release();
        for (int i = 0; i < PQntuples(plan.get()); ++i) {
            std::string node = textAt(plan.get(), i, 0);
            node.erase(0, node.find_first_not_of(" ->"));
            if (node == "ProjectSet" || node == "WindowAgg" || node == "Unique")
                return true; // not one row for each row of the table
        }
        return false;
    } catch (const DorX& x) {
        if (x.code() == CodeSqlText)
            return true;
        throw;
    }
}

// A second attempt follows one that failed on a table that was changed meanwhile.
void PostgresqlDriver::again(const std::function<void()>& attempt)
{
    try {
        attempt();
        return;
    } catch (const DorX& x) {
        if (!isOutdated(x))
            throw;
    }
    m_cache.clear(true);
    forgetTables();
    attempt();
}

Result PostgresqlDriver::query(const std::string& sql, const Values& values)
{
    const Prepared& statement = kept(sql);
    m_link->sendPrepared(statement.name, values, statement.binary);
    return m_link->take();
}

} // namespace Postgresql

} // namespace DorCPP
