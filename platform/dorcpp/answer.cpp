#include <dorcpp/answer.h>

#include <algorithm>

#include <dorcpp/value.h>

namespace DorCPP {

namespace {

// Whether the SELECT can be read by row keys, and by which.
bool decideKeyed(Driver& driver, const KeyedSelect& select, TableKey& key)
{
    if (!select.keyable)
        return false;
    key = driver.keyOf(select);
    return !key.columns.empty() && !driver.givesRow(probeText(select, key.columns));
}

// A column keeps its source only when it is a column of this very row.
void keepOwnSources(std::vector<ColumnInfo>& columns, const KeyedSelect& select, SqlDialect dialect)
{
    const std::vector<bool> foreign =
        subqueryColumns(SqlText(select.list, dialect), columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
        if (foreign[i])
            columns[i].owner = columns[i].table = columns[i].column = std::string();
    }
}

void fillTypes(std::vector<ColumnInfo>& columns, RowSource& rows, bool hasRow)
{
    for (size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].type == 0)
            typeFromValue(columns[i], hasRow ? rows.value(i) : Value());
    }
}

bool hasUnknownType(const std::vector<ColumnInfo>& columns)
{
    return std::any_of(columns.begin(), columns.end(),
                       [](const ColumnInfo& c) { return c.type == 0; });
}

Answer keyedAnswer(const std::shared_ptr<Session>& session, Driver& driver,
                   const StatementText& statement, const KeyedSelect& select, const TableKey& key)
{
    KeyedText text;
    text.list = select.list;
    text.from = select.from;
    text.alias = select.alias;
    text.key = key;
    text.columns = driver.describe(statement.sql);
    keepOwnSources(text.columns, select, driver.dialect());
    RowKeys keys = key.rowId ? RowKeys() : RowKeys(key.columns.size());
    driver.readKeys(keyPassText(select, key.columns), statement.parameters, key, keys);

    auto rows = std::make_unique<KeyedRows>(session, std::move(text), std::move(keys));
    Answer answer;
    answer.columns = rows->keyedText()->columns;
    if (hasUnknownType(answer.columns))
        fillTypes(answer.columns, *rows, rows->count() > 0 && rows->seek(0, driver));
    answer.rows = std::move(rows);
    return answer;
}

} // namespace

Answer executeStatement(const std::shared_ptr<Session>& session, Driver& driver,
                        const StatementText& statement)
{
    const SqlText text(statement.sql, driver.dialect());
    if (text.count() == 0)
        return {};
    if (text.is(0, "select")) {
        driver.prepare(statement.sql, statement.prepared); // the engine's say on the text itself
        const KeyedSelect select = readSelect(text);
        TableKey key;
        if (decideKeyed(driver, select, key))
            return keyedAnswer(session, driver, statement, select, key);
    }
    StatementResult result = driver.run(statement.sql, statement.parameters, statement.prepared);
    if (kindOf(text) == StatementKind::SessionState)
        driver.settingsChanged();
    Answer answer;
    answer.changed = result.changed;
    if (result.columns.empty())
        return answer;
    answer.columns = std::move(result.columns);
    for (ColumnInfo& column : answer.columns) { // no statement can name one of these rows
        column.owner.clear();
        column.table.clear();
    }
    answer.rows = std::make_unique<SpooledRows>(std::move(result.rows));
    fillTypes(answer.columns, *answer.rows, answer.rows->count() > 0 && answer.rows->seek(0));
    return answer;
}

} // namespace DorCPP
