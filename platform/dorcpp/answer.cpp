#include <dorcpp/answer.h>

#include <algorithm>

#include <dorcpp/errors.h>
#include <dorcpp/positioned.h>
#include <dorcpp/translate.h>
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

// What a positioned statement has to name: the table as the engine says, else as the SELECT does.
void nameTable(KeyedText& text, const KeyedSelect& select, SqlDialect dialect)
{
    const auto at = std::find_if(text.columns.begin(), text.columns.end(),
                                 [](const ColumnInfo& c) { return !c.table.empty(); });
    if (at != text.columns.end()) {
        text.schema = at->owner;
        text.table = at->table;
        return;
    }
    const SqlText from(select.from, dialect);
    const bool qualified = from.is(1, ".");
    text.schema = qualified ? from.foldedName(0) : std::string();
    text.table = from.foldedName(qualified ? 2 : 0);
}

Answer keyedAnswer(const std::shared_ptr<Session>& session, Driver& driver,
                   const StatementText& statement, const KeyedSelect& select, const TableKey& key)
{
    KeyedText text;
    text.list = select.list;
    text.from = select.from;
    text.alias = select.alias;
    text.key = key;
    text.columns = driver.describe(statement.sql.source());
    keepOwnSources(text.columns, select, driver.dialect());
    nameTable(text, select, driver.dialect());
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

ColumnLookup columnLookup(Session& session, Driver& driver)
{
    return [&](const std::string& schema, const std::string& table) {
        return session.columnsOf(driver, schema, table);
    };
}

std::optional<std::string> translation(Session& session, Driver& driver, const SqlText& sql)
{
    return translated(sql, columnLookup(session, driver));
}

// Does the work with a statement that has values in the place of literals. False, with nothing
// done, when it is refused as a text: it is tried again with its literals then, and the error has
// the place of the fault in the statement as it is.
template<class Work>
bool worksWith(BareText&& bare, bool keep, const Work& work)
{
    try {
        work(std::move(bare), keep);
        return true;
    } catch (const DorX& x) {
        if (x.position() == 0)
            throw;
        return false;
    }
}

// Does the work with the translated statement without its literals, or only without the numbers
// that the engine would not read exactly. False, with nothing done, where the statement has to keep
// them. keep: whether the text is the same for other values.
template<class Work>
bool withoutLiterals(Session& session, Driver& driver, const SqlText& sql, const Work& work)
{
    if (kindOf(sql) != StatementKind::Modify)
        return false;
    if (auto exact = driver.withExactReals(sql)) {
        if (const auto other = translation(session, driver, sql))
            exact = driver.withExactReals(SqlText(*other, sql.dialect()));
        return exact && worksWith(std::move(*exact), false, work);
    }
    std::optional<BareText> bare = driver.withoutLiterals(sql);
    return bare && translateValues(*bare, sql, columnLookup(session, driver)) &&
           worksWith(std::move(*bare), true, work);
}

StatementResult runStatement(Session& session, Driver& driver, const StatementText& statement)
{
    const SqlText& text = statement.sql;
    StatementResult result;
    const bool once = !statement.prepared && statement.parameters.empty();
    if (once && withoutLiterals(session, driver, text, [&](const BareText& bare, bool keep) {
            result = driver.run(bare.text, bare.values, keep);
        }))
        return result;
    const std::optional<std::string> other = translation(session, driver, text);
    return driver.run(other ? *other : text.source(), statement.parameters, statement.prepared);
}

// The name of the answer's table in a statement that changes its row.
std::string targetName(const KeyedText& text, const PositionedText& p, SqlDialect dialect)
{
    const bool sameTable = sameName(p.table, text.table, dialect);
    const bool sameSchema = p.schema.empty() || sameName(p.schema, text.schema, dialect);
    if (!sameTable || !sameSchema)
        throw makeError(CodeNotUpdatable, "the rows come from " + quoteName(text.table));
    return text.schema.empty() ? p.target : quoteName(text.schema) + '.' + quoteName(text.table);
}

// Whether anything tells the row from another one that got its key.
bool isGuarded(const KeyedText& text)
{
    return !text.key.version.empty() ||
           std::any_of(text.columns.begin(), text.columns.end(),
                       [](const ColumnInfo& c) { return !c.table.empty(); });
}

} // namespace

Answer executeStatement(const std::shared_ptr<Session>& session, Driver& driver,
                        const StatementText& statement)
{
    const SqlText& text = statement.sql;
    if (text.count() == 0)
        return {};
    if (text.is(0, "select")) {
        // the engine's say on the text itself
        driver.prepare(text.source(), statement.prepared);
        const KeyedSelect select = readSelect(text);
        TableKey key;
        if (decideKeyed(driver, select, key))
            return keyedAnswer(session, driver, statement, select, key);
    }
    StatementResult result = runStatement(*session, driver, statement);
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

void changeRow(Session& session, Driver& driver, const StatementText& statement, Answer& answer)
{
    if (statement.prepared && answer.latest.source == statement.sql.source()) {
        answer.rows->modify({answer.latest.text, statement.parameters, answer.latest.deletes},
                            driver);
        answer.changed = 1;
        return;
    }
    const PositionedText positioned = readPositioned(statement.sql);
    const KeyedText* keyed = answer.rows->keyedText();
    if (!keyed || !isGuarded(*keyed))
        throw makeError(CodeNotUpdatable, OviAPI::Phrase::DbDetailNotOneTable);
    const SqlDialect dialect = statement.sql.dialect();
    const SqlText text(positioned.textFor(targetName(*keyed, positioned, dialect)), dialect);
    const auto modify = [&](std::string sql, Parameters parameters) {
        answer.rows->modify({std::move(sql), std::move(parameters), positioned.deletes}, driver);
        answer.changed = 1;
    };
    const bool once = !statement.prepared && statement.parameters.empty();
    if (once && withoutLiterals(session, driver, text, [&](BareText&& bare, bool) {
            modify(std::move(bare.text), std::move(bare.values));
        }))
        return;
    const auto other = translation(session, driver, text);
    modify(other.value_or(text.source()), statement.parameters);
    if (statement.prepared && !other)
        answer.latest = {statement.sql.source(), text.source(), positioned.deletes};
}

std::string engineText(Session& session, Driver& driver, const SqlText& sql)
{
    if (isPositioned(sql)) {
        const PositionedText positioned = readPositioned(sql);
        const SqlText change(positioned.textFor(positioned.target), sql.dialect());
        return translation(session, driver, change).value_or(change.source());
    }
    return translation(session, driver, sql).value_or(sql.source());
}

} // namespace DorCPP
