// What an engine does for the client. One connection each; one thread at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <dorcpp/keylist.h>
#include <dorcpp/rowblock.h>
#include <dorcpp/spool.h>
#include <dorcpp/sqltext.h>
#include <dorcpp/types.h>

namespace DorCPP {

// The four strings of a connection, read. All text is UTF-8.
struct Target {
    std::string path; // of the file, in its own bytes; empty for a database in memory
    bool readOnly = false;
    bool mayCreate = false;
    bool verify = false;
    int lockTimeout = 2000; // ms that a statement waits for another session's lock
};

// A parameter value with its bytes.
struct Parameter {
    Value::Kind kind = Value::Null;
    int64_t integer = 0;
    double real = 0;
    std::string bytes;
};
using Parameters = std::vector<std::pair<int, Parameter>>; // by parameter number, from 1

// A column of an answer. Names are UTF-8; owner, table and column are empty without a source.
struct ColumnInfo {
    std::string owner;
    std::string table;
    std::string column;
    std::string label;
    int type = 0; // TypeCode; 0: told by the first value
    int length = 0;
};

// The key of a table: expressions for the key columns, without a table name. Empty: none.
struct TableKey {
    std::vector<std::string> columns;
    bool rowId = false; // one column of 64-bit integers
};

// Where the rows of a keyed answer come from.
struct KeyedText {
    std::string list; // of the user's SELECT
    std::string from;
    std::string alias;
    TableKey key;
    std::vector<ColumnInfo> columns;
};

// The keys of an answer in row order.
using KeyStore = std::variant<KeyList, Spool>;

struct StatementResult {
    std::vector<ColumnInfo> columns; // empty: the statement gives no rows
    std::unique_ptr<Spool> rows;
    int64_t changed = 0;
};

// Every function throws DorX. No statement, transaction or lock outlives a call, except what the
// user's own statements open.
class Driver {
public:
    virtual ~Driver() = default;

    virtual SqlDialect dialect() const = 0;
    virtual bool isReadOnly() const = 0;
    // Another connection to the same database, for statements that run beside this one; null when
    // only this one can see it.
    virtual std::unique_ptr<Driver> duplicate() const = 0;
    virtual bool inTransaction() const = 0;
    // Asks the engine for a sign of life.
    virtual void probe() = 0;

    // Checks the statement and counts its parameters. Refuses several statements in one text.
    virtual int prepare(const std::string& sql, bool longLived) = 0;
    // The columns of a statement that gives rows, without running it.
    virtual std::vector<ColumnInfo> describe(const std::string& sql) = 0;
    // Runs a statement to its end; its rows go to the result's spool. prepared: the text comes
    // again, keep it ready.
    virtual StatementResult run(const std::string& sql, const Parameters& parameters,
                                bool prepared) = 0;

    // After a statement that may have changed the connection's settings.
    virtual void settingsChanged() = 0;

    virtual TableKey keyOf(const KeyedSelect& select) = 0;
    virtual bool givesRow(const std::string& sql) = 0;
    // Runs a key pass; the key columns are the last ones.
    virtual void readKeys(const std::string& sql, const Parameters& parameters, const TableKey& key,
                          KeyStore& keys) = 0;
    // Reads rows first to first + places.size() - 1 (from 0) into the block, as far as its memory
    // may grow: fewer places are left then, one at least. A place is the row in the block, -1 where
    // the row has gone. CodeStructureChanged when the columns differ from text.columns.
    virtual void readRows(const KeyedText& text, KeyStore& keys, size_t first, RowBlock& block,
                          std::vector<int>& places) = 0;
    // Reads a piece of a text (as UTF-8) or blob of one row; CodeRowGone.
    virtual size_t readPiece(const KeyedText& text, KeyStore& keys, size_t row, size_t column,
                             uint64_t offset, void* buffer, size_t size) = 0;
    // Gives a column of one row a new value, if the row still holds what was read: the row at
    // `place` of the block. CodeRowGone, CodeRowChanged.
    virtual void writeValue(const KeyedText& text, KeyStore& keys, size_t row, size_t column,
                            const Value& value, const RowBlock& seen, size_t place) = 0;

    // Statements end with CodeCancelled when the flag becomes true; null: no flag.
    virtual void watch(const std::atomic<bool>* stop) = 0;
    // Hurries a running statement to look at the flag. From any thread.
    virtual void interrupt() noexcept = 0;
};

// Opens a database of the embedded engine.
std::unique_ptr<Driver> openSqlite(const Target& target);

} // namespace DorCPP
