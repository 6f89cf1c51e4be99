// Changing one row of a keyed answer on the server.
#include <dorcpp/errors.h>
#include <dorcpp/postgresql/driver.h>
#include <dorcpp/postgresql/keys.h>
#include <dorcpp/postgresql/savepoint.h>

namespace DorCPP::Postgresql {

namespace {

constexpr size_t maxGuardBytes = 4096; // longer values do not guard a change

// What the row must still hold, for its key alone may have been given to another row since: its
// version, or on engines that count none, the values that were read.
struct Guard {
    std::string text;
    std::vector<Value> values;

    void add(const std::string& condition, const Value& value)
    {
        text += " AND " + condition;
        values.push_back(value);
    }
};

Guard guardOf(const KeyedText& text, const RowBlock& seen, size_t place, int firstNumber)
{
    Guard guard;
    const auto next = [&] {
        return " $" + std::to_string(firstNumber + static_cast<int>(guard.values.size()));
    };
    if (!text.key.version.empty()) {
        guard.add(text.key.version + " =" + next(), seen.value(place, text.columns.size()));
        return guard;
    }
    if (text.key.columns == placeKey()) // holds the version
        return guard;
    for (size_t i = 0; i < text.columns.size(); ++i) {
        const Value old = seen.value(place, i);
        if (text.columns[i].table.empty() || old.held < old.length || old.length > maxGuardBytes)
            continue;
        guard.add(quoteName(text.columns[i].column) + " IS NOT DISTINCT FROM" + next(), old);
    }
    return guard;
}

} // namespace

void PostgresqlDriver::modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                                 const RowStatement& statement, const RowBlock& seen, size_t place)
{
    const int keyNumber = ServerText(statement.text).parameters() + 1;
    const int guardNumber = keyNumber + static_cast<int>(text.key.columns.size());
    const Guard guard = guardOf(text, seen, place, guardNumber);
    const std::string sql =
        statement.text + whereKeyText(SqlDialect::Postgresql, text.key.columns, "", keyNumber) +
        guard.text + (statement.deletes ? " RETURNING 1" : returningText(text.key.columns));
    const bool inside = inTransaction();
    Savepoint change(*m_link);
    const Prepared& prepared = kept(sql);
    Values values = prepared.values(statement.parameters);
    setKey(values, keyNumber, keys, row);
    for (size_t i = 0; i < guard.values.size(); ++i)
        values.set(guardNumber + static_cast<int>(i), guard.values[i]);
    ++*m_changes;
    Result result;
    try {
        m_link->sendPrepared(prepared.name, values, prepared.binary);
        result = m_link->take();
    } catch (DorX& x) {
        addOutcome(x, SqlText(statement.text, SqlDialect::Postgresql), inside);
        throw;
    }
    ++*m_changes;
    if (PQntuples(result.get()) == 0) {
        Values key(static_cast<int>(text.key.columns.size()));
        setKey(key, 1, keys, row);
        const Result still =
            query("SELECT 1 FROM " + text.from +
                      whereKeyText(SqlDialect::Postgresql, text.key.columns, text.alias + '.', 1),
                  key);
        change.release();
        throw makeError(PQntuples(still.get()) > 0 ? CodeRowChanged : CodeRowGone);
    }
    change.release();
    if (statement.deletes) {
        keys.drop(row);
        return;
    }
    std::vector<Parameter> key;
    key.reserve(text.key.columns.size());
    std::string own;
    for (int i = 0; i < PQnfields(result.get()); ++i)
        key.push_back(parameterOf(valueAt(result.get(), 0, i, own)));
    keys.replace(row, std::move(key));
}

} // namespace DorCPP::Postgresql
