// Row keys, and rows read by them.
#include <dorcpp/postgresql/keys.h>

#include <algorithm>
#include <bit>
#include <set>
#include <utility>

#include <dorcpp/errors.h>
#include <dorcpp/postgresql/driver.h>
#include <dorcpp/postgresql/savepoint.h>
#include <dorcpp/value.h>

namespace DorCPP::Postgresql {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t maxBlockHeap = 2 << 20;
constexpr size_t maxBlockCells = 128 << 10;
constexpr size_t smallBlock = 64; // rows
constexpr size_t largeBlock = 512;
constexpr size_t maxAheadBytes = 96 << 10; // what waits in the sockets' buffers blocks nobody
constexpr std::chrono::milliseconds maxAheadAge{500};

void appendElement(std::string& array, const Parameter& part)
{
    array += array.size() > 1 ? "," : "";
    if (part.kind == Value::Null) {
        array += "NULL";
        return;
    }
    if (part.kind == Value::Integer) {
        array += numberText(part.integer);
        return;
    }
    if (part.kind == Value::Real) {
        array += numberText(part.real);
        return;
    }
    array += '"';
    if (part.kind == Value::Blob) {
        static constexpr char digits[] = "0123456789abcdef";
        array += "\\\\x";
        for (const char c : part.bytes) {
            const auto byte = static_cast<unsigned char>(c);
            array += {digits[byte >> 4], digits[byte & 15]};
        }
    } else {
        for (const char c : part.bytes) {
            if (c == '"' || c == '\\')
                array += '\\';
            array += c;
        }
    }
    array += '"';
}

// Reads big-endian numbers of a COPY message.
class CopyReader {
public:
    explicit CopyReader(std::string_view bytes)
        : m_bytes(bytes)
    {
    }
    size_t left() const { return m_bytes.size(); }
    void skip(size_t size) { m_bytes.remove_prefix(std::min(size, m_bytes.size())); }
    int64_t number(size_t size)
    {
        if (m_bytes.size() < size || size > 8 || size == 0)
            throw makeError(CodeOther, "an unexpected form of row keys");
        uint64_t value = (m_bytes[0] & 0x80) ? ~uint64_t(0) : 0;
        for (size_t i = 0; i < size; ++i)
            value = value << 8 | static_cast<unsigned char>(m_bytes[i]);
        skip(size);
        return static_cast<int64_t>(value);
    }

private:
    std::string_view m_bytes;
};

constexpr const char* rowKey = ", \"rows\".\"row key\""; // of the inner SELECT

constexpr std::string_view copySignature{"PGCOPY\n\377\r\n\0", 11};

bool isClose(const RowKeys& keys, size_t first, size_t count)
{
    if (!keys.isPacked())
        return false;
    for (size_t i = 1; i < count; ++i) {
        if (keys.packed(first + i) <= keys.packed(first + i - 1))
            return false;
    }
    return static_cast<uint64_t>(keys.packed(first + count - 1)) -
               static_cast<uint64_t>(keys.packed(first)) <
           4 * count;
}

void checkColumns(const std::vector<DescribedColumn>& columns, const KeyedText& text)
{
    bool same = columns.size() == text.columns.size();
    for (size_t i = 0; same && i < columns.size(); ++i)
        same = columns[i].label == text.columns[i].label &&
               columnType(columns[i].type, columns[i].modifier).type == text.columns[i].type;
    if (!same)
        throw makeError(CodeStructureChanged);
}

// The table may have been changed since its columns were asked for.
bool isAsDescribed(const PGresult* result, const KeyedText& text, const std::vector<int>& lengthOf)
{
    const int count = static_cast<int>(text.columns.size());
    bool same = PQnfields(result) >= count;
    for (int i = 0; same && i < count; ++i) {
        const ColumnInfo& column = text.columns[static_cast<size_t>(i)];
        const bool whole = lengthOf[static_cast<size_t>(i)] == 0;
        same = column.label == PQfname(result, i) &&
               (!whole || columnType(PQftype(result, i), PQfmod(result, i)).type == column.type);
    }
    return same;
}

// Whether the columns of a subquery can be named one by one.
bool areNamed(const std::vector<DescribedColumn>& columns)
{
    std::set<std::string> labels{"row version", "row key"};
    return std::all_of(columns.begin(), columns.end(),
                       [&](const DescribedColumn& c) { return labels.insert(c.label).second; });
}

// The column of the answer, from 0, that is the one key column; -1 when there is none.
int keyColumn(const KeyedText& text)
{
    const auto at =
        std::find_if(text.columns.begin(), text.columns.end(), [&](const ColumnInfo& column) {
            return !column.table.empty() && quoteName(column.column) == text.key.columns[0];
        });
    return at == text.columns.end() ? -1 : static_cast<int>(at - text.columns.begin());
}

// Finds the places of a block's rows by their keys.
class PlacesByKey {
public:
    PlacesByKey() = default;
    PlacesByKey(const RowKeys& keys, size_t first, size_t count)
    {
        m_keys.reserve(count);
        for (size_t i = 0; i < count; ++i)
            m_keys.emplace_back(keys.packed(first + i), i);
        if (!std::is_sorted(m_keys.begin(), m_keys.end()))
            std::sort(m_keys.begin(), m_keys.end());
    }
    // Puts the row into each place that has its key; false when none has.
    bool take(int64_t key, int row, std::vector<int>& places)
    {
        if (m_next == m_keys.size() || m_keys[m_next].first != key) // else they come in order
            m_next = static_cast<size_t>(
                std::lower_bound(m_keys.begin(), m_keys.end(), std::pair(key, size_t(0))) -
                m_keys.begin());
        bool taken = false;
        for (; m_next < m_keys.size() && m_keys[m_next].first == key; ++m_next) {
            places[m_keys[m_next].second] = row;
            taken = true;
        }
        return taken;
    }

private:
    std::vector<std::pair<int64_t, size_t>> m_keys; // and their places, sorted
    size_t m_next = 0;                              // behind the row taken last
};

// The columns of a block in the outer SELECT: the row's, its version, its place where one is asked
// for, and of long values, of which only the head is read, the lengths, from column next on.
std::string outerList(const std::vector<DescribedColumn>& columns, const KeyedText& text,
                      const std::string& place, int next, std::vector<int>& lengthOf)
{
    const auto isLong = [](const DescribedColumn& c) { return isUnbounded(c.type, c.modifier); };
    lengthOf.assign(columns.size(), 0);
    if (std::none_of(columns.begin(), columns.end(), isLong) || !areNamed(columns))
        return "\"rows\".*" + (place == rowKey ? "" : place);
    std::string list;
    std::string lengths;
    for (size_t i = 0; i < columns.size(); ++i) {
        const std::string name = quoteName(columns[i].label);
        const std::string value = "\"rows\"." + name;
        list += i == 0 ? "" : ", ";
        if (!isLong(columns[i])) {
            list += value;
            continue;
        }
        const LongValue read = longValue(value, columns[i].type);
        list += read.head + " AS " + name;
        lengths += ", " + read.length;
        lengthOf[i] = next++;
    }
    if (!text.key.version.empty())
        list += ", \"rows\".\"row version\"";
    return list + place + lengths;
}

} // namespace

const std::vector<std::string>& placeKey()
{
    static const std::vector<std::string> key{"ctid", "xmin::text::int8"};
    return key;
}

std::string plainText(const KeyedText& text)
{
    return "SELECT " + text.list + " FROM " + text.from;
}

LongValue longValue(std::string value, Oid type)
{
    if (type != ByteaType)
        value += "::text";
    const std::string limit = std::to_string(RowBlock::maxHeld);
    const std::string when = "CASE WHEN octet_length(" + value + ") > " + limit + " THEN ";
    return {when + "substring(" + value + ", 1, " + limit + ") ELSE " + value + " END",
            when + "octet_length(" + value + ") END"};
}

void setKey(Values& values, int firstNumber, RowKeys& keys, size_t row)
{
    for (size_t i = 0; i < keys.columns(); ++i)
        values.set(firstNumber + static_cast<int>(i), valueOf(keys.part(row, i)));
}

void setKeyArrays(Values& values, RowKeys& keys, size_t first, size_t count)
{
    for (size_t column = 0; column < keys.columns(); ++column) {
        std::string array = "{";
        for (size_t row = first; row < first + count; ++row)
            appendElement(array, keys.part(row, column));
        values.set(static_cast<int>(column) + 1, array + '}');
    }
}

void PostgresqlDriver::readKeys(const std::string& sql, const Parameters& parameters,
                                const TableKey& key, RowKeys& keys)
{
    KeyList* list = keys.list();
    const bool inside = inTransaction();
    if (list && parameters.empty()) {
        try {
            readKeyCopy(sql, key, *list);
            return;
        } catch (const DorX& x) { // engines that copy no queries
            if (inside || x.code() != CodeSqlText || list->size() != 0)
                throw;
        }
    }
    readKeyRows(sql, parameters, key, keys);
}

void PostgresqlDriver::readKeyCopy(const std::string& sql, const TableKey& key, KeyList& keys)
{
    const ServerText server("COPY (" + sql + ") TO STDOUT (FORMAT binary)");
    m_link->send(server.text(), Values(), false);
    const auto wanted = static_cast<int64_t>(key.columns.size());
    m_link->takeCopy([&](std::string_view bytes) {
        CopyReader in(bytes);
        if (bytes.starts_with(copySignature)) {
            in.skip(copySignature.size() + 4);
            in.skip(static_cast<size_t>(in.number(4)));
        }
        while (in.left() > 0) {
            const int64_t fields = in.number(2);
            if (fields < 0)
                return; // the end
            for (int64_t i = 0; i < fields; ++i) {
                const int64_t size = in.number(4);
                if (i >= fields - wanted)
                    keys.add(in.number(static_cast<size_t>(size)));
                else if (size > 0)
                    in.skip(static_cast<size_t>(size));
            }
        }
    });
}

void PostgresqlDriver::readKeyRows(const std::string& sql, const Parameters& parameters,
                                   const TableKey& key, RowKeys& keys)
{
    const Prepared& statement = kept(sql);
    const int count = static_cast<int>(key.columns.size());
    const int first = static_cast<int>(statement.columns.size()) - count;
    std::string own;
    m_link->sendPrepared(statement.name, statement.values(parameters), statement.binary);
    m_link->takeRows([&](const PGresult* row) {
        if (KeyList* list = keys.list()) {
            list->add(valueAt(row, 0, first, own).integer);
            return;
        }
        keys.spool().beginRow();
        for (int i = first; i < first + count; ++i)
            addValue(valueAt(row, 0, i, own), keys.spool());
    });
    if (!keys.list())
        keys.spool().finish();
}

PostgresqlDriver::Question PostgresqlDriver::question(const KeyedText& text, RowKeys& keys,
                                                      size_t first, size_t count)
{
    const std::vector<DescribedColumn>& columns = kept(plainText(text)).columns;
    checkColumns(columns, text);
    Question q;
    q.byKey = keys.isPacked();
    q.place = q.byKey ? keyColumn(text) : -1;
    int next = static_cast<int>(columns.size()) + (text.key.version.empty() ? 0 : 1);
    std::string place;
    if (q.place < 0) {
        q.place = next++;
        place = q.byKey ? rowKey : ", \"row keys\".place";
    }
    const std::string outer = outerList(columns, text, place, next, q.lengthOf);
    const std::string alias = text.alias + '.';
    std::string inner = "SELECT " + text.list;
    if (!text.key.version.empty())
        inner += ", " + alias + text.key.version + " AS \"row version\"";
    if (q.byKey) {
        const std::string key = alias + text.key.columns[0];
        if (!place.empty())
            inner += ", " + key + " AS \"row key\"";
        inner += " FROM " + text.from + " WHERE " + key;
        const bool range = isClose(keys, first, count);
        inner += range ? " BETWEEN $1 AND $2" : " = ANY ($1::int8[])";
        q.sql = "SELECT " + outer + " FROM (" + inner + ") AS \"rows\"";
        if (!range) {
            q.values = Values(1);
            setKeyArrays(q.values, keys, first, count);
            return q;
        }
        const int64_t low = keys.packed(first);
        const int64_t high = keys.packed(first + count - 1);
        // There are no more rows in the range. Said so, the server makes one plan for all ranges;
        // else it fears for many rows and plans each anew.
        const auto most =
            std::bit_ceil(static_cast<uint64_t>(high) - static_cast<uint64_t>(low) + 1);
        q.sql += " ORDER BY " + std::to_string(q.place + 1) + " LIMIT " + std::to_string(most);
        q.values = Values(2);
        q.values.set(1, numberText(low));
        q.values.set(2, numberText(high));
        return q;
    }
    std::string arrays;
    std::string names;
    inner += " FROM " + text.from;
    for (size_t i = 0; i < text.key.columns.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        arrays += (i == 0 ? "$" : ", $") + number + "::" + text.key.types[i] + "[]";
        names += 'k' + number + ", ";
        inner += (i == 0 ? " WHERE " : " AND ") + alias + text.key.columns[i] +
                 " = \"row keys\".k" + number;
    }
    q.sql = "SELECT " + outer + " FROM unnest(" + arrays + ") WITH ORDINALITY AS \"row keys\"(" +
            names + "place) CROSS JOIN LATERAL (" + inner + ") AS \"rows\"";
    q.values = Values(static_cast<int>(text.key.columns.size()));
    setKeyArrays(q.values, keys, first, count);
    return q;
}

bool PostgresqlDriver::isAhead(const Question& q) const
{
    return m_ahead.serial == m_link->serial() && m_ahead.serial != 0 && m_ahead.sql == q.sql &&
           m_ahead.values == q.values.own() && m_ahead.changes == *m_changes &&
           Clock::now() - m_ahead.sent < maxAheadAge;
}

void PostgresqlDriver::readBlock(const KeyedText& text, RowKeys& keys, size_t first,
                                 RowBlock& block, std::vector<int>& places)
{
    const Question q = question(text, keys, first, places.size());
    if (!isAhead(q)) {
        const Prepared& statement = kept(q.sql);
        m_link->sendPrepared(statement.name, q.values, statement.binary);
    }
    m_ahead = Ahead();
    const Result result = m_link->take();
    if (!isAsDescribed(result.get(), text, q.lengthOf)) {
        m_cache.clear(true);
        throw makeError(CodeStructureChanged);
    }
    const Fields fields(result.get());
    std::vector<int> lengthOf = q.lengthOf;
    lengthOf.resize(block.columns()); // the version has none
    const int own = static_cast<int>(block.columns());
    std::string scratch;
    PlacesByKey byKey;
    if (q.byKey)
        byKey = PlacesByKey(keys, first, places.size());
    for (int r = 0; r < PQntuples(result.get()); ++r) {
        const int64_t where = fields.value(result.get(), r, q.place, scratch).integer;
        const auto here = static_cast<int>(block.rows());
        if (q.byKey) {
            if (!byKey.take(where, here, places))
                continue;
        } else {
            if (where < 1 || static_cast<size_t>(where) > places.size())
                continue;
            places[static_cast<size_t>(where) - 1] = here;
        }
        block.beginRow();
        for (int c = 0; c < own; ++c) {
            const int length = lengthOf[static_cast<size_t>(c)];
            if (length == 0 || PQgetisnull(result.get(), r, length)) {
                fields.add(result.get(), r, c, block, scratch);
                continue;
            }
            Value value = fields.value(result.get(), r, c, scratch); // the head of a long one
            std::string none;
            value.length = static_cast<size_t>(valueAt(result.get(), r, length, none).integer);
            addValue(value, block);
        }
    }
}

void PostgresqlDriver::readRows(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                                std::vector<int>& places)
{
    const size_t columns = std::max<size_t>(text.columns.size(), 1);
    places.resize(std::min(places.size(), std::max<size_t>(maxBlockCells / columns, 1)));
    again([&] {
        while (true) {
            block.clear();
            std::fill(places.begin(), places.end(), -1);
            Savepoint look(*m_link);
            readBlock(text, keys, first, block, places);
            look.release();
            if (block.heapBytes() <= maxBlockHeap || places.size() == 1)
                return;
            places.resize(std::max<size_t>(places.size() / 8, 1)); // long rows: fewer of them
        }
    });
    // Where rows are changed as they are read on, what was asked ahead would be thrown away.
    const bool changing = std::exchange(m_changesAtRead, m_changes->load()) != *m_changes;
    if (changing)
        return;
    const size_t next = std::min(places.size() * 2, largeBlock);
    const size_t bytes = block.heapBytes() + 8 * block.cellCount(); // about, as they are sent
    if (places.size() > smallBlock && bytes / places.size() * next <= maxAheadBytes)
        askAhead(text, keys, first + places.size(), next);
}

// While rows are read on, the server finds the next ones as those at hand are used.
void PostgresqlDriver::askAhead(const KeyedText& text, RowKeys& keys, size_t first, size_t count)
{
    if (first >= keys.size() || m_link->transaction() != PQTRANS_IDLE)
        return;
    try {
        Question q = question(text, keys, first, std::min(count, keys.size() - first));
        const Prepared& statement = kept(q.sql);
        m_link->sendPrepared(statement.name, q.values, statement.binary);
        m_ahead.serial = m_link->serial();
        m_ahead.sql = std::move(q.sql);
        m_ahead.values = q.values.own();
        m_ahead.changes = *m_changes;
        m_ahead.sent = Clock::now();
    } catch (const DorX&) {
        m_ahead = Ahead(); // whoever wants these rows asks again, and is told
    }
}

size_t PostgresqlDriver::readPiece(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                                   uint64_t offset, void* buffer, size_t size)
{
    again([&] {
        const Oid type = kept(plainText(text)).columns.at(column).type;
        std::string names;
        for (size_t i = 0; i < text.columns.size(); ++i)
            names += (i == 0 ? "c" : ", c") + std::to_string(i);
        const std::string value = "\"rows\".c" + std::to_string(column);
        const int next = static_cast<int>(text.key.columns.size()) + 1;
        const std::string sql =
            "SELECT substring(" +
            (type == ByteaType ? value : "convert_to(" + value + "::text, 'UTF8')") + ", $" +
            std::to_string(next) + "::int4, $" + std::to_string(next + 1) + "::int4) FROM (" +
            plainText(text) +
            whereKeyText(SqlDialect::Postgresql, text.key.columns, text.alias + '.', 1) +
            ") AS \"rows\"(" + names + ')';
        Values values(next + 1);
        setKey(values, 1, keys, row);
        std::string name = std::to_string(*m_changes) + ' ' + sql; // tells the value from others
        for (const std::string& part : values.own())
            name += ' ' + std::to_string(part.size()) + ' ' + part;
        if (m_pieceSerial == m_link->serial() && m_piece.holds(name, offset, size))
            return;
        const size_t asked = m_piece.sizeFor(name, offset, size);
        values.set(next, numberText(static_cast<int64_t>(offset) + 1));
        values.set(next + 1, numberText(static_cast<int64_t>(asked)));
        Savepoint look(*m_link);
        const Prepared& statement = kept(sql);
        m_link->sendPrepared(statement.name, values, true);
        const Result result = m_link->take();
        look.release();
        if (PQntuples(result.get()) == 0)
            throw makeError(CodeRowGone);
        m_piece.put(name, offset, textAt(result.get(), 0, 0), asked);
        m_pieceSerial = m_link->serial();
    });
    return m_piece.copy(offset, buffer, size);
}

} // namespace DorCPP::Postgresql
