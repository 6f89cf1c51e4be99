#include <dorcpp/sqlite/driver.h>

#include <algorithm>

#include <strings.h>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/errors.h>
#include <dorcpp/sqlite/keys.h>
#include <dorcpp/sqlite/types.h>
#include <dorcpp/value.h>

namespace DorCPP {

std::unique_ptr<Driver> openSqlite(const Target& target)
{
    return std::make_unique<Sqlite::SqliteDriver>(target);
}

namespace Sqlite {

namespace {

constexpr int lockTimeoutBeside = 10'000; // ms, of statements that nobody waits for with the mouse
constexpr size_t maxBlockHeap = 2 << 20;
constexpr size_t maxBlockCells = 128 << 10;
constexpr int progressOperations = 1000; // between two looks at the stop flag

ColumnInfo columnInfo(sqlite3_stmt* statement, int i)
{
    ColumnInfo column;
    column.owner = orEmpty(sqlite3_column_database_name(statement, i));
    column.table = orEmpty(sqlite3_column_table_name(statement, i));
    column.column = orEmpty(sqlite3_column_origin_name(statement, i));
    column.label = orEmpty(sqlite3_column_name(statement, i));
    const ColumnType type = columnType(sqlite3_column_decltype(statement, i));
    column.type = type.type;
    column.length = type.length;
    return column;
}

std::vector<ColumnInfo> columnInfos(sqlite3_stmt* statement)
{
    std::vector<ColumnInfo> columns;
    const int count = sqlite3_column_count(statement);
    columns.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        columns.push_back(columnInfo(statement, i));
    return columns;
}

// The engine prepares a statement anew by itself when the schema has changed.
void checkColumns(sqlite3_stmt* statement, const KeyedText& text, int extra)
{
    const int count = static_cast<int>(text.columns.size());
    bool same = sqlite3_column_count(statement) == count + extra;
    for (int i = 0; same && i < count; ++i)
        same = text.columns[static_cast<size_t>(i)].label ==
               orEmpty(sqlite3_column_name(statement, i));
    if (!same)
        throw makeError(CodeStructureChanged);
}

std::string rowText(const KeyedText& text)
{
    return "SELECT " + text.list + " FROM " + text.from +
           whereKeyText(SqlDialect::Sqlite, text.key.columns, text.alias + '.', 1);
}

std::string rangeText(const KeyedText& text)
{
    const std::string key = text.alias + '.' + text.key.columns[0];
    return "SELECT " + text.list + ", " + key + " FROM " + text.from + " WHERE " + key +
           " BETWEEN ?1 AND ?2 ORDER BY " + key;
}

// The keys of a block that one range of keys reads without many rows between; else nothing.
std::vector<int64_t> closeKeys(const RowKeys& keys, size_t first, size_t count)
{
    if (!keys.isPacked())
        return {};
    std::vector<int64_t> close(count);
    for (size_t i = 0; i < count; ++i)
        close[i] = keys.packed(first + i);
    const auto falls = [](int64_t a, int64_t b) { return a >= b; };
    const bool rises = std::adjacent_find(close.begin(), close.end(), falls) == close.end();
    const uint64_t distance =
        static_cast<uint64_t>(close.back()) - static_cast<uint64_t>(close.front());
    return rises && distance < 4 * count ? close : std::vector<int64_t>();
}

} // namespace

// Keeps one state of the database over several statements, unless a transaction does so already.
class SqliteDriver::ReadTransaction {
public:
    explicit ReadTransaction(SqliteDriver& driver)
        : m_driver(driver)
        , m_own(!driver.inTransaction())
    {
        if (m_own)
            run("BEGIN");
    }
    ~ReadTransaction()
    {
        if (m_own && m_driver.inTransaction())
            sqlite3_exec(m_driver.m_db.get(), "COMMIT", nullptr, nullptr, nullptr);
    }
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

private:
    void run(const char* sql)
    {
        Use use(m_driver.m_db.get(), m_driver.m_cache.get(sql));
        use.step();
    }
    SqliteDriver& m_driver;
    bool m_own;
};

SqliteDriver::SqliteDriver(const Target& target)
    : m_target(target)
    , m_db(openFile(target))
    , m_utf8(isUtf8(m_db.get()))
    , m_cache(m_db.get())
{
    sqlite3_busy_handler(
        m_db.get(),
        [](void* driver, int calls) {
            return static_cast<SqliteDriver*>(driver)->waitForLock(calls) ? 1 : 0;
        },
        this);
}

SqliteDriver::~SqliteDriver() = default;

bool SqliteDriver::waitForLock(int calls)
{
    const auto now = std::chrono::steady_clock::now();
    if (calls == 0)
        m_lockedSince = now;
    if ((m_stop && *m_stop) ||
        now - m_lockedSince >= std::chrono::milliseconds(m_target.lockTimeout))
        return false;
    DelayThread(std::min(1 + calls, 20));
    return true;
}

bool SqliteDriver::isReadOnly() const
{
    return m_target.readOnly || sqlite3_db_readonly(m_db.get(), "main") == 1;
}

std::unique_ptr<Driver> SqliteDriver::duplicate() const
{
    if (m_target.path.empty())
        return nullptr;
    Target target = m_target;
    target.mayCreate = false;
    target.verify = false;
    target.lockTimeout = std::max(target.lockTimeout, lockTimeoutBeside);
    return std::make_unique<SqliteDriver>(target);
}

bool SqliteDriver::inTransaction() const
{
    return sqlite3_get_autocommit(m_db.get()) == 0;
}

void SqliteDriver::probe()
{
    int moved = 0;
    sqlite3_file_control(m_db.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    if (moved)
        throw makeEngineError(CodeSessionLost, SQLITE_READONLY_DBMOVED,
                              detailText(OviAPI::Phrase::DbDetailFileMoved));
    Use use(m_db.get(), m_cache.get("SELECT 1"));
    use.step();
}

ConnectionInfo SqliteDriver::info() const
{
    ConnectionInfo info;
    info.engine = "SQLite";
    info.version = sqlite3_libversion();
    info.database = m_target.path;
    info.readOnly = isReadOnly();
    return info;
}

int SqliteDriver::prepare(const std::string& sql, bool longLived)
{
    if (longLived)
        return sqlite3_bind_parameter_count(m_cache.get(sql));
    return sqlite3_bind_parameter_count(prepareOne(m_db.get(), sql, false).get());
}

std::vector<ColumnInfo> SqliteDriver::describe(const std::string& sql)
{
    return columnInfos(prepareOne(m_db.get(), sql, false).get());
}

StatementResult SqliteDriver::run(const std::string& sql, const Parameters& parameters,
                                  bool prepared)
{
    StatementResult result;
    StatementPtr own;
    if (!prepared)
        own = prepareOne(m_db.get(), sql, false);
    sqlite3_stmt* statement = prepared ? m_cache.get(sql) : own.get();
    if (!statement)
        return result;
    const bool inside = inTransaction();
    const sqlite3_int64 before = sqlite3_total_changes64(m_db.get());
    try {
        runToEnd(statement, parameters, result);
    } catch (DorX& x) {
        if (inside && !inTransaction())
            x.addNested(makeError(CodeUndone, OviAPI::Phrase::DbDetailRolledBack));
        throw;
    }
    if (sqlite3_total_changes64(m_db.get()) != before)
        result.changed = sqlite3_changes64(m_db.get());
    return result;
}

void SqliteDriver::runToEnd(sqlite3_stmt* statement, const Parameters& parameters,
                            StatementResult& result)
{
    Use use(m_db.get(), statement);
    use.bind(parameters);
    bool row = use.step();
    if (const int columns = sqlite3_column_count(statement)) {
        result.columns = columnInfos(statement);
        result.rows = std::make_unique<Spool>(static_cast<size_t>(columns));
        for (; row; row = use.step()) {
            result.rows->beginRow();
            takeCells(statement, 0, columns, m_utf8, *result.rows);
        }
        result.rows->finish();
    }
    use.reset();
}

// A statement that was kept is read anew by the engine when the schema of a database that it uses
// has changed. That of another attached database may hide a name that stands in a trigger, and the
// engine would not see it.
std::optional<BareText> SqliteDriver::withoutLiterals(const SqlText& sql)
{
    constexpr int firstAttached = 2;
    if (sqlite3_db_name(m_db.get(), firstAttached))
        return std::nullopt;
    return DorCPP::withoutLiterals(sql);
}

std::optional<BareText> SqliteDriver::withExactReals(const SqlText& sql)
{
    return DorCPP::withExactReals(sql, [&](const std::string& digits) { return readReal(digits); });
}

// By the engine: its reading of a number is its own, and not always the nearest one.
double SqliteDriver::readReal(const std::string& digits)
{
    Use use(m_db.get(), m_cache.get("SELECT ?1"));
    use.bind(1, digits);
    use.step();
    return sqlite3_value_double(sqlite3_column_value(use.get(), 0));
}

void SqliteDriver::settingsChanged()
{
    m_utf8 = isUtf8(m_db.get()); // that of an empty database can be changed
}

bool SqliteDriver::givesRow(const std::string& sql)
{
    try {
        const StatementPtr statement = prepareOne(m_db.get(), sql, false);
        Use use(m_db.get(), statement.get());
        return use.step();
    } catch (const DorX& x) {
        if (x.code() == CodeSqlText)
            return true;
        throw;
    }
}

void SqliteDriver::readKeys(const std::string& sql, const Parameters& parameters,
                            const TableKey& key, RowKeys& keys)
{
    const StatementPtr statement = prepareOne(m_db.get(), sql, false);
    Use use(m_db.get(), statement.get());
    use.bind(parameters);
    const int count = static_cast<int>(key.columns.size());
    const int first = sqlite3_column_count(statement.get()) - count;
    if (auto* list = keys.list()) {
        while (use.step())
            list->add(sqlite3_value_int64(sqlite3_column_value(statement.get(), first)));
        return;
    }
    Spool& spool = keys.spool();
    while (use.step()) {
        spool.beginRow();
        takeCells(statement.get(), first, count, m_utf8, spool);
    }
    spool.finish();
}

void SqliteDriver::readRows(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                            std::vector<int>& places)
{
    const size_t columns = std::max<size_t>(text.columns.size(), 1);
    places.resize(std::min(places.size(), std::max<size_t>(maxBlockCells / columns, 1)));
    while (true) {
        const std::vector<int64_t> close = closeKeys(keys, first, places.size());
        if (!close.empty())
            readRange(text, close, block, places);
        else
            readSingly(text, keys, first, block, places);
        if (block.heapBytes() <= maxBlockHeap || places.size() == 1)
            return;
        block.clear(); // long rows: fewer of them
        places.assign(std::max<size_t>(places.size() / 8, 1), -1);
    }
}

void SqliteDriver::readRange(const KeyedText& text, const std::vector<int64_t>& keys,
                             RowBlock& block, std::vector<int>& places)
{
    const int columns = static_cast<int>(text.columns.size());
    Use use(m_db.get(), m_cache.get(rangeText(text)));
    use.bind(1, keys.front());
    use.bind(2, keys.back());
    for (size_t i = 0; use.step();) {
        if (block.rows() == 0)
            checkColumns(use.get(), text, 1);
        const int64_t key = sqlite3_value_int64(sqlite3_column_value(use.get(), columns));
        while (i < keys.size() && keys[i] < key)
            ++i;
        if (i == keys.size() || block.heapBytes() > maxBlockHeap)
            break;
        if (keys[i] != key)
            continue;
        places[i] = static_cast<int>(block.rows());
        block.beginRow();
        takeCells(use.get(), 0, columns, m_utf8, block);
    }
}

void SqliteDriver::readSingly(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                              std::vector<int>& places)
{
    std::vector<size_t> order(places.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    if (keys.isPacked()) { // in key order pages are found in order
        std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
            return keys.packed(first + a) < keys.packed(first + b);
        });
    }
    const int columns = static_cast<int>(text.columns.size());
    sqlite3_stmt* statement = m_cache.get(rowText(text));
    const ReadTransaction one(*this);
    for (const size_t i : order) {
        Use use(m_db.get(), statement);
        bindKey(use, 1, keys, first + i);
        if (!use.step())
            continue;
        if (block.rows() == 0)
            checkColumns(statement, text, 0);
        places[i] = static_cast<int>(block.rows());
        block.beginRow();
        takeCells(statement, 0, columns, m_utf8, block);
        if (block.heapBytes() > maxBlockHeap)
            return;
    }
}

// What tells a value from all others, and from what it was before a change.
std::string SqliteDriver::valueName(const KeyedText& text, RowKeys& keys, size_t row, size_t column)
{
    Use version(m_db.get(), m_cache.get("PRAGMA data_version")); // of other connections
    version.step();
    std::string name = std::to_string(sqlite3_column_int64(version.get(), 0)) + ' ' +
                       std::to_string(sqlite3_total_changes64(m_db.get())) + ' ' +
                       std::to_string(column) + ' ' + rowText(text);
    for (size_t i = 0; i < keys.columns(); ++i) {
        const Parameter part = keys.part(row, i);
        name += ' ' + std::to_string(part.kind) + ' ' + std::to_string(part.integer) + ' ' +
                numberText(part.real) + ' ' + std::to_string(part.bytes.size()) + ' ' + part.bytes;
    }
    return name;
}

size_t SqliteDriver::readPiece(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                               uint64_t offset, void* buffer, size_t size)
{
    const std::string name = valueName(text, keys, row, column);
    if (!m_piece.holds(name, offset, size)) {
        const size_t asked = m_piece.sizeFor(name, offset, size);
        m_piece.put(name, offset, bytesOf(text, keys, row, column, offset, asked), asked);
    }
    return m_piece.copy(offset, buffer, size);
}

std::string SqliteDriver::bytesOf(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                                  uint64_t offset, size_t size)
{
    const ColumnInfo& info = text.columns[column];
    const auto sizeWithin = [&](uint64_t whole) {
        return offset < whole ? std::min<size_t>(size, whole - offset) : 0;
    };
    if (text.key.rowId && m_utf8 && !info.table.empty()) {
        sqlite3_blob* handle = nullptr;
        const int opened = sqlite3_blob_open(m_db.get(), info.owner.c_str(), info.table.c_str(),
                                             info.column.c_str(), keys.packed(row), 0, &handle);
        const std::unique_ptr<sqlite3_blob, int (*)(sqlite3_blob*)> blob(handle,
                                                                         sqlite3_blob_close);
        if (opened == SQLITE_OK) {
            std::string bytes(sizeWithin(static_cast<uint64_t>(sqlite3_blob_bytes(handle))), 0);
            if (!bytes.empty() &&
                sqlite3_blob_read(handle, bytes.data(), static_cast<int>(bytes.size()),
                                  static_cast<int>(offset)) != SQLITE_OK)
                throw lastError(m_db.get());
            return bytes;
        }
        if (codeOf(opened) != CodeSqlText) // else a value or table that has no such access
            throw lastError(m_db.get());
    }
    Use use(m_db.get(), m_cache.get(rowText(text)));
    bindKey(use, 1, keys, row);
    if (!use.step())
        throw makeError(CodeRowGone);
    checkColumns(use.get(), text, 0);
    const int i = static_cast<int>(column);
    const bool isText = sqlite3_column_type(use.get(), i) == SQLITE_TEXT;
    const void* bytes =
        isText ? sqlite3_column_text(use.get(), i) : sqlite3_column_blob(use.get(), i);
    const size_t n = sizeWithin(static_cast<uint64_t>(sqlite3_column_bytes(use.get(), i)));
    return bytes && n > 0 ? std::string(static_cast<const char*>(bytes) + offset, n)
                          : std::string();
}

void SqliteDriver::watch(const std::atomic<bool>* stop)
{
    m_stop = stop;
    const auto look = [](void* driver) -> int {
        const auto* flag = static_cast<SqliteDriver*>(driver)->m_stop;
        return flag && *flag ? 1 : 0;
    };
    sqlite3_progress_handler(m_db.get(), stop ? progressOperations : 0, stop ? +look : nullptr,
                             this);
}

void SqliteDriver::interrupt() noexcept
{
    sqlite3_interrupt(m_db.get());
}

} // namespace Sqlite

} // namespace DorCPP
