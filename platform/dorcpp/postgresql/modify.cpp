// Changing one row of a keyed answer on the server.
#include <algorithm>
#include <set>

#include <dorcpp/errors.h>
#include <dorcpp/postgresql/driver.h>
#include <dorcpp/postgresql/keys.h>
#include <dorcpp/postgresql/savepoint.h>

namespace DorCPP::Postgresql {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t maxGuardBytes = 4096;         // longer values do not guard a change
constexpr std::chrono::seconds maxKnownAge{1}; // another session may change the table

// Whether an update of the table computes columns from others, and whether it sets off nothing that
// could change the row besides. The server's own checks change nothing; any other trigger may, or
// set off what does, and so may a rule. Of another way of storing rows nothing is known.
constexpr const char* findTable =
    "SELECT EXISTS(SELECT 1 FROM pg_catalog.pg_attribute a"
    " WHERE a.attrelid = c.oid AND a.attgenerated <> ''),"
    " c.relkind = 'r' AND m.amname = 'heap' AND NOT c.relhasrules"
    " AND NOT EXISTS(SELECT 1 FROM pg_catalog.pg_trigger t"
    " JOIN pg_catalog.pg_proc p ON p.oid = t.tgfoid"
    " WHERE t.tgrelid = c.oid AND t.tgtype & 16 <> 0 AND NOT (t.tgisinternal AND p.proname IN"
    " ('RI_FKey_check_ins', 'RI_FKey_check_upd', 'RI_FKey_noaction_upd', 'RI_FKey_restrict_upd',"
    " 'unique_key_recheck')))"
    " FROM pg_catalog.pg_class c JOIN pg_catalog.pg_am m ON m.oid = c.relam"
    " WHERE c.oid = $1::int8::oid";

// What the row must still hold, for its key alone may have been given to another row since: its
// version, or on engines that count none, the values that were read. One letter for each column of
// the block.
constexpr char unguarded = '-';
constexpr char guarded = '=';
// Of a row that a statement returned, the version is a text of it and of the row's place: a trigger
// that nobody knew of has given the row another place, and the same version.
constexpr char placed = '@';

std::string shapeOf(const KeyedText& text, const SeenRow& seen)
{
    std::string shape(seen.block.columns(), unguarded);
    if (!text.key.version.empty()) {
        const Value version = seen.block.value(seen.place, text.columns.size());
        const bool hasPlace = version.bytes().find(' ') != std::string_view::npos;
        shape.back() = hasPlace ? placed : guarded;
        return shape;
    }
    if (text.key.columns == placeKey()) // holds the version
        return shape;
    for (size_t i = 0; i < text.columns.size(); ++i) {
        const Value old = seen.block.value(seen.place, i);
        if (!text.columns[i].table.empty() && old.held == old.length && old.length <= maxGuardBytes)
            shape[i] = guarded;
    }
    return shape;
}

std::string guardText(const KeyedText& text, const std::string& shape, int number)
{
    std::string guard;
    for (size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == unguarded)
            continue;
        guard += " AND " + (i == text.columns.size()
                                ? text.key.version + " = "
                                : quoteName(text.columns[i].column) + " IS NOT DISTINCT FROM ");
        guard += numberedParameter(SqlDialect::Postgresql, number++);
        if (shape[i] == placed)
            guard += " AND ctid = " + numberedParameter(SqlDialect::Postgresql, number++);
    }
    return guard;
}

// The columns that a statement may give a value, for it has to name them.
class Assigned {
public:
    explicit Assigned(const std::string& statement)
    {
        const SqlText s(statement, SqlDialect::Postgresql);
        for (size_t i = 0; i < s.count(); ++i) {
            if (s.isName(i))
                add(s, i);
        }
    }
    // name: in its quotes.
    bool mayBe(const std::string& name) const { return m_any || m_names.count(name) != 0; }

private:
    void add(const SqlText& s, size_t i)
    {
        constexpr size_t maxName = 63; // bytes; the server cuts longer ones
        const std::string name = s.foldedName(i);
        const bool plain = s.tokens()[i].kind == SqlToken::QuotedName ||
                           std::none_of(name.begin(), name.end(), [](char c) { return c < 0; });
        const bool escaped = s.is(i, "u") && s.str(i + 1) == "&"; // U&"..."
        m_any = m_any || !plain || escaped || name.size() > maxName;
        m_names.insert(quoteName(name));
    }
    std::set<std::string> m_names;
    bool m_any = false; // a name may stand for any other
};

// How a statement returns the row that it has changed: the columns of the block that may differ
// from what was seen, the row's place, the columns of the key, and the lengths of long values, of
// which only the head comes. Numbers are columns of the result.
struct ReturnedRow {
    static constexpr int asSeen = -1;
    std::string list;          // of the RETURNING
    std::vector<int> at;       // by column of the block
    std::vector<int> lengthAt; // the same; asSeen: the value comes whole
    int placeAt = asSeen;      // of the row, beside its version
    int keyAt = asSeen;        // the first column of the key
};

// assigned: null where any column may differ.
ReturnedRow returnedRow(const KeyedText& text, const std::vector<DescribedColumn>& columns,
                        const Assigned* assigned)
{
    ReturnedRow row;
    int next = 0;
    std::vector<std::pair<size_t, std::string>> lengths; // by column of the block
    const auto add = [&](const std::string& value) {
        row.list += (row.list.empty() ? "" : ", ") + value;
        return next++;
    };
    const auto mayDiffer = [&](const std::string& name) {
        return !assigned || assigned->mayBe(name);
    };
    row.at.assign(columns.size(), ReturnedRow::asSeen);
    for (size_t i = 0; i < columns.size(); ++i) {
        std::string value = quoteName(text.columns[i].column);
        if (!mayDiffer(value))
            continue;
        if (isUnbounded(columns[i].type, columns[i].modifier)) {
            LongValue read = longValue(value, columns[i].type);
            value = std::move(read.head);
            lengths.emplace_back(i, std::move(read.length));
        }
        row.at[i] = add(value);
    }
    if (!text.key.version.empty()) {
        row.at.push_back(add(text.key.version + "::text"));
        row.placeAt = add("ctid::text");
    }
    if (std::any_of(text.key.columns.begin(), text.key.columns.end(), mayDiffer)) {
        row.keyAt = next;
        for (const std::string& column : text.key.columns)
            add(column);
    }
    row.lengthAt.assign(row.at.size(), ReturnedRow::asSeen);
    for (const auto& [column, length] : lengths)
        row.lengthAt[column] = add(length);
    return row;
}

// Whether the result's columns are still those that the answer has.
bool isAsDescribed(const PGresult* result, const KeyedText& text, const ReturnedRow& row)
{
    for (size_t i = 0; i < text.columns.size(); ++i) {
        const int at = row.at[i];
        const bool whole = row.lengthAt[i] == ReturnedRow::asSeen;
        if (at != ReturnedRow::asSeen && whole &&
            columnType(PQftype(result, at), PQfmod(result, at)).type != text.columns[i].type)
            return false;
    }
    return true;
}

void takeRow(const PGresult* result, const KeyedText& text, const ReturnedRow& row,
             const SeenRow& seen)
{
    std::string own;
    std::string none;
    seen.now.beginRow();
    for (size_t i = 0; i < row.at.size(); ++i) {
        if (row.at[i] == ReturnedRow::asSeen) {
            addValue(seen.block.value(seen.place, i), seen.now);
            continue;
        }
        if (i == text.columns.size()) {
            const std::string version =
                textAt(result, 0, row.at[i]) + ' ' + textAt(result, 0, row.placeAt);
            seen.now.addBytes(Value::Text, version.data(), version.size());
            continue;
        }
        Value value = valueAt(result, 0, row.at[i], own);
        const int length = row.lengthAt[i];
        if (length != ReturnedRow::asSeen && !PQgetisnull(result, 0, length))
            value.length = static_cast<size_t>(valueAt(result, 0, length, none).integer);
        addValue(value, seen.now);
    }
}

// The whole statement for rows whose guards have the same shape.
struct Plan final : ChangePlan {
    std::string statement; // without its WHERE clause
    std::string shape;
    bool isSettled = false;
    int keyNumber = 1; // the first parameters of the key and of the guard
    int guardNumber = 1;
    std::string sql;
    ReturnedRow returned;
    bool returnsRow = false; // else the key alone, or nothing

    std::vector<DescribedColumn> columns; // of the answer
    TableFacts facts;

    bool isFor(const RowStatement& other, const std::string& otherShape, bool settled) const
    {
        return statement == other.text && shape == otherShape && isSettled == settled;
    }
    void make(const KeyedText& text, const RowStatement& forStatement, std::string forShape,
              bool settled)
    {
        statement = forStatement.text;
        shape = std::move(forShape);
        isSettled = settled;
        keyNumber = ServerText(statement).parameters() + 1;
        guardNumber = keyNumber + static_cast<int>(text.key.columns.size());
        returnsRow = !forStatement.deletes && facts.isAlone;
        sql = statement + whereKeyText(SqlDialect::Postgresql, text.key.columns, "", keyNumber) +
              guardText(text, shape, guardNumber);
        if (returnsRow) {
            // A version says of all columns that they are as they were seen, unless a transaction
            // that is open, or was, has given the row several states.
            const bool anyDiffers = !settled || text.key.version.empty() || facts.generates;
            const Assigned assigned(statement);
            returned = returnedRow(text, columns, anyDiffers ? nullptr : &assigned);
            sql += " RETURNING " + returned.list;
        } else {
            returned = ReturnedRow();
            returned.keyAt = 0;
            sql += forStatement.deletes ? " RETURNING 1" : returningText(text.key.columns);
        }
    }
};

Values valuesFor(const Plan& plan, const Prepared& prepared, const RowStatement& statement,
                 const SeenRow& seen)
{
    Values values = prepared.values(statement.parameters);
    int number = plan.guardNumber;
    for (size_t i = 0; i < plan.shape.size(); ++i) {
        const Value old = seen.block.value(seen.place, i);
        if (plan.shape[i] == guarded) {
            values.set(number++, old);
        } else if (plan.shape[i] == placed) {
            const size_t blank = old.bytes().find(' ');
            values.set(number++, std::string(old.bytes().substr(0, blank)));
            values.set(number++, std::string(old.bytes().substr(blank + 1)));
        }
    }
    return values;
}

} // namespace

bool PostgresqlDriver::isFresh(const TableFacts& facts) const
{
    return facts.definitions == *m_definitions && Clock::now() - facts.found < maxKnownAge;
}

// The answer's columns as the server describes them now; none when not all are columns of the
// table.
std::vector<DescribedColumn> PostgresqlDriver::columnsNow(const KeyedText& text)
{
    if (std::any_of(text.columns.begin(), text.columns.end(),
                    [](const ColumnInfo& column) { return column.column.empty(); }))
        return {};
    Savepoint look(*m_link);
    try {
        std::vector<DescribedColumn> columns = kept(plainText(text)).columns;
        look.release();
        return columns.size() == text.columns.size() ? columns : std::vector<DescribedColumn>();
    } catch (const DorX& x) { // the table is not what it was
        if (x.code() != CodeSqlText)
            throw;
        return {};
    }
}

TableFacts PostgresqlDriver::factsOf(const std::vector<DescribedColumn>& columns)
{
    TableFacts& facts = m_facts[columns.empty() ? InvalidOid : columns.front().table];
    if (isFresh(facts))
        return facts;
    facts = TableFacts();
    facts.definitions = *m_definitions;
    facts.found = Clock::now();
    if (columns.empty())
        return facts;
    Savepoint look(*m_link);
    try {
        Values table(1);
        table.set(1, std::to_string(columns.front().table));
        const Result found = query(findTable, table);
        look.release();
        if (PQntuples(found.get()) == 1) {
            std::string own;
            facts.generates = valueAt(found.get(), 0, 0, own).integer != 0;
            facts.isAlone = valueAt(found.get(), 0, 1, own).integer != 0;
        }
    } catch (const DorX& x) { // the engine keeps no such catalogue
        if (x.code() != CodeSqlText)
            throw;
    }
    return facts;
}

void PostgresqlDriver::modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                                 const RowStatement& statement, const SeenRow& seen)
{
    if (!seen.plan)
        seen.plan = std::make_unique<Plan>();
    auto& plan = static_cast<Plan&>(*seen.plan); // this driver's own
    // A kept statement may have been prepared for what the table was; it has done nothing then.
    if (m_cache.holds(plan.sql))
        again([&] { modifyOnce(text, keys, row, statement, seen); });
    else
        modifyOnce(text, keys, row, statement, seen);
}

void PostgresqlDriver::modifyOnce(const KeyedText& text, RowKeys& keys, size_t row,
                                  const RowStatement& statement, const SeenRow& seen)
{
    auto& plan = static_cast<Plan&>(*seen.plan);
    std::string shape = shapeOf(text, seen);
    const bool isFit = plan.isFor(statement, shape, seen.isSettled);
    if (!isFit || (!statement.deletes && !isFresh(plan.facts))) {
        if (!statement.deletes) {
            plan.columns = columnsNow(text);
            plan.facts = factsOf(plan.columns);
        }
        plan.make(text, statement, std::move(shape), seen.isSettled);
    }
    const bool inside = inTransaction();
    Savepoint change(*m_link);
    const Prepared& prepared = kept(plan.sql);
    Values values = valuesFor(plan, prepared, statement, seen);
    setKey(values, plan.keyNumber, keys, row);
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
        m_facts.clear(); // others are at work on the table, perhaps on its triggers
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
    if (plan.returned.keyAt != ReturnedRow::asSeen) {
        std::vector<Parameter> key;
        key.reserve(text.key.columns.size());
        std::string own;
        for (int i = 0; i < static_cast<int>(text.key.columns.size()); ++i)
            key.push_back(parameterOf(valueAt(result.get(), 0, plan.returned.keyAt + i, own)));
        keys.replace(row, std::move(key));
    }
    if (plan.returnsRow && isAsDescribed(result.get(), text, plan.returned))
        takeRow(result.get(), text, plan.returned, seen);
}

} // namespace DorCPP::Postgresql
