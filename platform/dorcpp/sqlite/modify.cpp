// Changing one row of a keyed answer in the embedded engine.
#include <algorithm>

#include <strings.h>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/driver.h>
#include <dorcpp/sqlite/keys.h>
#include <dorcpp/sqlite/types.h>

namespace DorCPP::Sqlite {

namespace {

constexpr size_t maxKeptChanges = 16;

// How a value that was read guards a change: the row must still hold it, for its key alone may have
// been given to another row since. Of a value that is longer than what is kept of it, its kind, its
// length and its beginning.
constexpr char unguarded = '-';
constexpr char wholeValue = '=';
constexpr char longText = 't';
constexpr char longBlob = 'b';

char shapeOf(const Value& old, bool utf8)
{
    if (old.held == old.length)
        return wholeValue;
    if (old.kind == Value::Blob)
        return longBlob;
    return utf8 ? longText : unguarded; // its length as bytes is that of another form
}

std::string shapeOf(const KeyedText& text, const SeenRow& seen, bool utf8)
{
    std::string shape(text.columns.size(), unguarded);
    for (size_t i = 0; i < shape.size(); ++i) {
        if (!text.columns[i].table.empty())
            shape[i] = shapeOf(seen.block.value(seen.place, i), utf8);
    }
    return shape;
}

// The condition on the values, behind the one on the key. Its terms stand in groups, because the
// engine bounds the depth of an expression.
class GuardText {
public:
    explicit GuardText(int firstNumber)
        : m_next(firstNumber)
    {
    }
    void add(const std::string& name, char shape)
    {
        if (shape == unguarded)
            return;
        if (shape == wholeValue) {
            addTerm(name + " IS " + nextNumber() + " COLLATE BINARY");
            return;
        }
        const bool text = shape == longText;
        const std::string bytes = text ? "CAST(" + name + " AS BLOB)" : name;
        const std::string length = "length(" + bytes + ") = " + nextNumber();
        addTerm("typeof(" + name + ") = '" + (text ? "text" : "blob") + "' AND " + length +
                " AND substr(" + bytes + ", 1, " + std::to_string(RowBlock::maxHeld) + ") IS " +
                nextNumber());
    }
    const std::string& text() const { return m_text; }

private:
    std::string nextNumber() { return numberedParameter(SqlDialect::Sqlite, m_next++); }
    void addTerm(const std::string& term)
    {
        constexpr size_t groupSize = 50;
        const bool begins = m_terms++ % groupSize == 0;
        if (!begins)
            m_text.pop_back(); // the parenthesis
        m_text += (begins ? " AND (" : " AND ") + term + ')';
    }

    std::string m_text;
    size_t m_terms = 0;
    int m_next;
};

void bindGuard(Use& use, const std::string& shape, int number, const SeenRow& seen)
{
    for (size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == unguarded)
            continue;
        Value old = seen.block.value(seen.place, i);
        if (shape[i] != wholeValue) {
            use.bind(number++, static_cast<int64_t>(old.length));
            old.kind = Value::Blob;
        }
        use.bindInPlace(number++, old);
    }
}

// Whether the columns of the answer are all columns of the table, which a statement can give as it
// leaves them. "rowid" may be the engine's own name for the key.
bool areColumns(const KeyedText& text)
{
    return std::all_of(text.columns.begin(), text.columns.end(), [&](const ColumnInfo& column) {
        const bool rowId = strcasecmp(column.column.c_str(), "rowid") == 0;
        return !column.column.empty() && (!rowId || text.key.columns.front() == "rowid");
    });
}

// The columns of the answer, behind those of the key.
std::string rowText(const KeyedText& text)
{
    std::string list;
    for (const ColumnInfo& column : text.columns)
        list += ", " + quoteName(column.column);
    return list;
}

// Which columns of the answer hold real numbers.
std::vector<bool> realColumns(sqlite3* db, const KeyedText& text)
{
    std::vector<bool> reals;
    reals.reserve(text.columns.size());
    for (const ColumnInfo& column : text.columns) {
        const char* declared = nullptr;
        sqlite3_table_column_metadata(db, text.schema.c_str(), text.table.c_str(),
                                      column.column.c_str(), &declared, nullptr, nullptr, nullptr,
                                      nullptr);
        reals.push_back(holdsReals(declared));
    }
    return reals;
}

// The cells of a key. Unlike those of a row they are kept with all their bytes.
class KeyCells {
public:
    void addNull() { m_key.emplace_back(); }
    void addInteger(int64_t value) { add(Value::Integer).integer = value; }
    void addReal(double value) { add(Value::Real).real = value; }
    void addBytes(Value::Kind kind, const void* data, size_t length)
    {
        add(kind).bytes.assign(static_cast<const char*>(data), length);
    }
    std::vector<Parameter> take() { return std::move(m_key); }

private:
    Parameter& add(Value::Kind kind)
    {
        Parameter& part = m_key.emplace_back();
        part.kind = kind;
        return part;
    }
    std::vector<Parameter> m_key;
};

std::vector<Parameter> keyFrom(sqlite3_stmt* statement, size_t columns, bool utf8)
{
    KeyCells cells;
    takeCells(statement, 0, static_cast<int>(columns), utf8, cells);
    return cells.take();
}

// The cells of a column of real numbers. A statement gives a whole one that it has just stored as
// the integer that lies in the file.
class RealCells {
public:
    explicit RealCells(RowBlock& block)
        : m_block(block)
    {
    }
    void addNull() { m_block.addNull(); }
    void addInteger(int64_t value) { m_block.addReal(static_cast<double>(value)); }
    void addReal(double value) { m_block.addReal(value); }
    void addBytes(Value::Kind kind, const void* data, size_t length)
    {
        m_block.addBytes(kind, data, length);
    }

private:
    RowBlock& m_block;
};

void takeRow(sqlite3_stmt* statement, int first, const std::vector<bool>& reals, bool utf8,
             RowBlock& block)
{
    block.beginRow();
    for (const bool real : reals) {
        if (real) {
            RealCells cells(block);
            takeCells(statement, first, 1, utf8, cells);
        } else {
            takeCells(statement, first, 1, utf8, block);
        }
        ++first;
    }
}

// The whole statement for rows whose guards have the same shape.
struct Plan final : ChangePlan {
    std::string statement; // without its WHERE clause
    std::string shape;     // one letter for each column of the answer
    int keyNumber = 1;     // the first parameters of the key and of the guard
    int guardNumber = 1;
    std::string sql;
    bool returnsRow = false;

    bool isFor(const RowStatement& other, const std::string& otherShape) const
    {
        return statement == other.text && shape == otherShape;
    }
};

std::unique_ptr<Plan> makePlan(const KeyedText& text, const RowStatement& statement,
                               std::string shape, int ownParameters, size_t maxColumns)
{
    auto plan = std::make_unique<Plan>();
    plan->statement = statement.text;
    plan->shape = std::move(shape);
    plan->keyNumber = ownParameters + 1;
    plan->guardNumber = plan->keyNumber + static_cast<int>(text.key.columns.size());
    GuardText guard(plan->guardNumber);
    for (size_t i = 0; i < plan->shape.size(); ++i)
        guard.add(quoteName(text.columns[i].column), plan->shape[i]);
    plan->sql =
        statement.text + whereKeyText(SqlDialect::Sqlite, text.key.columns, "", plan->keyNumber) +
        guard.text() + (statement.deletes ? " RETURNING 1" : returningText(text.key.columns));
    const bool fits = text.key.columns.size() + text.columns.size() <= maxColumns;
    plan->returnsRow =
        !statement.deletes && !statement.parameters.empty() && fits && areColumns(text);
    if (plan->returnsRow)
        plan->sql += rowText(text);
    return plan;
}

} // namespace

// Whether a change of a row of the table sets off nothing that could change the row again: neither
// a trigger nor an action of a foreign key.
bool SqliteDriver::isChangedAlone(const KeyedText& text)
{
    Use trigger(m_db.get(), m_cache.get("SELECT 1 FROM " + quoteName(text.schema) +
                                        ".sqlite_master WHERE type = 'trigger'"
                                        " AND tbl_name = ?1 COLLATE NOCASE"
                                        " UNION ALL SELECT 1 FROM sqlite_temp_master"
                                        " WHERE type = 'trigger' AND tbl_name = ?1 COLLATE NOCASE"
                                        " LIMIT 1"));
    trigger.bind(1, text.table);
    if (trigger.step())
        return false;
    Use action(m_db.get(), m_cache.get("SELECT 1 FROM pragma_table_list AS t"
                                       " JOIN pragma_foreign_key_list(t.name, t.schema) AS k"
                                       " WHERE t.schema = ?1 COLLATE NOCASE"
                                       " AND k.\"table\" = ?2 COLLATE NOCASE"
                                       " AND (k.on_update NOT IN ('NO ACTION', 'RESTRICT')"
                                       " OR k.on_delete NOT IN ('NO ACTION', 'RESTRICT'))"
                                       " LIMIT 1"));
    action.bind(1, text.schema);
    action.bind(2, text.table);
    return !action.step();
}

// returnsRow: the statement has the row in its RETURNING.
const SqliteDriver::KeptChange& SqliteDriver::keptChange(const KeyedText& text,
                                                         const std::string& sql, bool returnsRow)
{
    const auto at = std::find_if(m_changes.begin(), m_changes.end(),
                                 [&](const KeptChange& change) { return change.sql == sql; });
    if (at != m_changes.end() && at->isAsPrepared()) {
        m_changes.splice(m_changes.begin(), m_changes, at);
        return m_changes.front();
    }
    if (at != m_changes.end())
        m_changes.erase(at);
    KeptChange change;
    change.sql = sql;
    change.statement = prepareOne(m_db.get(), sql, true);
    // What is found out now is true when the statement runs, or else the engine prepares it anew.
    change.givesRow = returnsRow && isChangedAlone(text);
    if (change.givesRow)
        change.reals = realColumns(m_db.get(), text);
    m_changes.push_front(std::move(change));
    if (m_changes.size() > maxKeptChanges)
        m_changes.pop_back();
    return m_changes.front();
}

void SqliteDriver::modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                             const RowStatement& statement, const SeenRow& seen)
{
    auto* plan = static_cast<Plan*>(seen.plan.get()); // this driver's own
    std::string shape = shapeOf(text, seen, m_utf8);
    if (!plan || !plan->isFor(statement, shape)) {
        const int maxColumns = sqlite3_limit(m_db.get(), SQLITE_LIMIT_COLUMN, -1);
        auto made = makePlan(text, statement, std::move(shape), prepare(statement.text, false),
                             static_cast<size_t>(maxColumns));
        plan = made.get();
        seen.plan = std::move(made);
    }
    // A text with values in it will not come again.
    const StatementPtr own =
        statement.parameters.empty() ? prepareOne(m_db.get(), plan->sql, false) : nullptr;
    const KeptChange* change = own ? nullptr : &keptChange(text, plan->sql, plan->returnsRow);
    {
        Use use(m_db.get(), own ? own.get() : change->statement.get());
        use.bind(statement.parameters);
        bindKey(use, plan->keyNumber, keys, row);
        bindGuard(use, plan->shape, plan->guardNumber, seen);
        if (use.step()) {
            std::vector<Parameter> key;
            if (!statement.deletes)
                key = keyFrom(use.get(), text.key.columns.size(), m_utf8);
            if (change && change->givesRow && change->isAsPrepared())
                takeRow(use.get(), static_cast<int>(key.size()), change->reals, m_utf8, seen.now);
            while (use.step())
                ;
            use.reset();
            if (statement.deletes)
                keys.drop(row);
            else
                keys.replace(row, std::move(key));
            return;
        }
    }
    Use still(m_db.get(),
              m_cache.get("SELECT 1 FROM " + text.from +
                          whereKeyText(SqlDialect::Sqlite, text.key.columns, text.alias + '.', 1)));
    bindKey(still, 1, keys, row);
    throw makeError(still.step() ? CodeRowChanged : CodeRowGone);
}

} // namespace DorCPP::Sqlite
