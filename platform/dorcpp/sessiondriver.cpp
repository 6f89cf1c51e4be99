#include <dorcpp/sessiondriver.h>

#include <algorithm>
#include <chrono>

#include <dorcpp/errors.h>
#include <dorcpp/monitoring.h>

namespace DorCPP {

namespace {

std::string tableName(const std::string& schema, const std::string& table)
{
    return schema.empty() ? quoteName(table) : quoteName(schema) + '.' + quoteName(table);
}

// Tells the monitor when the object goes.
class Report {
public:
    Report(MonitorRecord record, std::string text)
        : m_record(record)
        , m_text(std::move(text))
        , m_begin(std::chrono::steady_clock::now())
    {
        m_record.start = std::chrono::system_clock::now();
    }
    ~Report()
    {
        using namespace std::chrono;
        m_record.micros = duration_cast<microseconds>(steady_clock::now() - m_begin).count();
        m_record.text = m_text;
        m_record.message = m_message;
        tellMonitor(m_record);
    }
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    int64_t& rows() { return m_record.rows; }
    void failed(const DorX& x)
    {
        m_record.code = x.code();
        m_message = x.what();
    }

private:
    MonitorRecord m_record;
    const std::string m_text;
    std::string m_message;
    const std::chrono::steady_clock::time_point m_begin;
};

} // namespace

SessionDriver::SessionDriver(std::unique_ptr<Driver> driver, int channel, bool beside)
    : m_driver(std::move(driver))
    , m_channel(channel)
    , m_beside(beside)
{
}

template<class Work>
auto SessionDriver::guarded(const Work& work)
{
    if (m_lost)
        throw makeError(CodeSessionLost);
    try {
        return work();
    } catch (const DorX& x) {
        m_lost = x.code() == CodeSessionLost || x.code() == CodeServerStopped;
        throw;
    }
}

template<class Text, class Work>
auto SessionDriver::send(MonitorPurpose purpose, const Text& text, const Work& work)
{
    int64_t rows = 0;
    if (!isMonitored())
        return guarded([&] { return work(rows); });
    MonitorRecord record;
    record.channel = m_channel;
    record.beside = m_beside;
    record.purpose = purpose;
    Report report(record, text());
    try {
        return guarded([&] { return work(report.rows()); });
    } catch (const DorX& x) {
        report.failed(x);
        throw;
    }
}

std::unique_ptr<Driver> SessionDriver::duplicate() const
{
    std::unique_ptr<Driver> other = m_driver->duplicate();
    return other ? std::make_unique<SessionDriver>(std::move(other), m_channel, true) : nullptr;
}

void SessionDriver::probe()
{
    send(
        MonitorPurpose::Check, [] { return std::string(); }, [&](int64_t&) { m_driver->probe(); });
}

int SessionDriver::prepare(const std::string& sql, bool longLived)
{
    return send(
        MonitorPurpose::Check, [&] { return sql; },
        [&](int64_t&) { return m_driver->prepare(sql, longLived); });
}

std::vector<ColumnInfo> SessionDriver::describe(const std::string& sql)
{
    return send(
        MonitorPurpose::Check, [&] { return sql; },
        [&](int64_t&) { return m_driver->describe(sql); });
}

StatementResult SessionDriver::run(const std::string& sql, const Parameters& parameters,
                                   bool prepared)
{
    return send(
        MonitorPurpose::Statement, [&] { return sql; },
        [&](int64_t& rows) {
            StatementResult result = m_driver->run(sql, parameters, prepared);
            rows = result.rows ? result.rows->rows() : result.changed;
            return result;
        });
}

// The monitor is told the values that a statement holds.
std::optional<BareText> SessionDriver::withoutLiterals(const SqlText& sql)
{
    if (isMonitored())
        return std::nullopt;
    return guarded([&] { return m_driver->withoutLiterals(sql); });
}

std::optional<BareText> SessionDriver::withExactReals(const SqlText& sql)
{
    return guarded([&] { return m_driver->withExactReals(sql); });
}

void SessionDriver::settingsChanged()
{
    guarded([&] { m_driver->settingsChanged(); });
}

std::vector<TableColumn> SessionDriver::tableColumns(const std::string& schema,
                                                     const std::string& table)
{
    return send(
        MonitorPurpose::Check, [&] { return tableName(schema, table); },
        [&](int64_t&) { return m_driver->tableColumns(schema, table); });
}

TableKey SessionDriver::keyOf(const KeyedSelect& select)
{
    return send(
        MonitorPurpose::Check, [&] { return tableName(select.schema, select.table); },
        [&](int64_t&) { return m_driver->keyOf(select); });
}

bool SessionDriver::givesRow(const std::string& sql)
{
    return send(
        MonitorPurpose::Check, [&] { return sql; },
        [&](int64_t&) { return m_driver->givesRow(sql); });
}

void SessionDriver::readKeys(const std::string& sql, const Parameters& parameters,
                             const TableKey& key, RowKeys& keys)
{
    send(
        MonitorPurpose::Keys, [&] { return sql; },
        [&](int64_t& rows) {
            m_driver->readKeys(sql, parameters, key, keys);
            rows = static_cast<int64_t>(keys.size());
        });
}

void SessionDriver::readRows(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                             std::vector<int>& places)
{
    send(
        MonitorPurpose::Rows, [&] { return "SELECT " + text.list + " FROM " + text.from; },
        [&](int64_t& rows) {
            m_driver->readRows(text, keys, first, block, places);
            rows = std::count_if(places.begin(), places.end(), [](int p) { return p >= 0; });
        });
}

size_t SessionDriver::readPiece(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                                uint64_t offset, void* buffer, size_t size)
{
    return send(
        MonitorPurpose::Piece,
        [&] { return "SELECT " + quoteName(text.columns[column].label) + " FROM " + text.from; },
        [&](int64_t& rows) {
            rows = 1;
            return m_driver->readPiece(text, keys, row, column, offset, buffer, size);
        });
}

void SessionDriver::modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                              const RowStatement& statement, const SeenRow& seen)
{
    send(
        MonitorPurpose::Change, [&] { return statement.text; },
        [&](int64_t& rows) {
            m_driver->modifyRow(text, keys, row, statement, seen);
            rows = 1;
        });
}

} // namespace DorCPP
