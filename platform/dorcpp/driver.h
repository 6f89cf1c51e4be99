// What an engine does for the client. One connection each; one thread at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <dorcpp/baretext.h>
#include <dorcpp/connectioninfo.h>
#include <dorcpp/parameter.h>
#include <dorcpp/rowblock.h>
#include <dorcpp/rowkeys.h>
#include <dorcpp/secret.h>
#include <dorcpp/spool.h>
#include <dorcpp/sqltext.h>
#include <dorcpp/types.h>

namespace DorCPP {

// The four strings of a connection, read. All text is UTF-8.
struct Target {
    SqlDialect engine = SqlDialect::Sqlite;
    std::string path; // of the file, in its own bytes; empty for a database in memory
    Secret server;    // a server's "postgresql://" URI or "keyword=value" text, as it was given
    std::string user; // of a server; empty: from the text above or the client's usual places
    Secret password;  // the same
    bool readOnly = false;
    bool mayCreate = false;
    bool verify = false;
    int lockTimeout = 2000; // ms that a statement waits for another session's lock
};

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
    std::vector<std::string> types; // of a server's columns, in its own words
    bool rowId = false;             // one column of 64-bit integers
    // An expression that changes with the row: each row of a block ends with its value, behind the
    // columns. Empty: none, the values guard the row.
    std::string version;
};

// Where the rows of a keyed answer come from.
struct KeyedText {
    std::string schema; // of the table, as the engine looks it up; empty when it is not known
    std::string table;
    std::string list; // of the user's SELECT
    std::string from;
    std::string alias;
    TableKey key;
    std::vector<ColumnInfo> columns;
};

// A statement that changes or deletes one row of a keyed answer.
struct RowStatement {
    std::string text; // without its WHERE clause
    Parameters parameters;
    bool deletes = false;
};

// How an engine sends such a statement, and what it found out for that. Kept with the rows of an
// answer, it saves a statement like the one before the same work. It holds nothing of a connection.
struct ChangePlan {
    virtual ~ChangePlan() = default;
};

// The row that a statement is for.
struct SeenRow {
    const RowBlock& block; // holds it as it was read
    size_t place;
    // Whether no statement of the session, nor of a transaction that was open meanwhile, can have
    // changed it since.
    bool isSettled;
    RowBlock& now;                     // empty, for the row as the statement leaves it
    std::unique_ptr<ChangePlan>& plan; // null: none yet
};

// A column of a table, for statements that give it a value.
struct TableColumn {
    std::string name;
    int type = 0;            // TypeCode
    std::string defaultText; // the expression that DEFAULT stands for; empty: none
};

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
    // only this one can see it. From any thread, also while another thread uses this one.
    virtual std::unique_ptr<Driver> duplicate() const = 0;
    virtual bool inTransaction() const = 0;
    // Asks the engine for a sign of life.
    virtual void probe() = 0;
    virtual ConnectionInfo info() const = 0;

    // Checks the statement and counts its parameters. Refuses several statements in one text.
    virtual int prepare(const std::string& sql, bool longLived) = 0;
    // The columns of a statement that gives rows, without running it.
    virtual std::vector<ColumnInfo> describe(const std::string& sql) = 0;
    // Runs a statement to its end; its rows go to the result's spool. prepared: the text comes
    // again, keep it ready.
    virtual StatementResult run(const std::string& sql, const Parameters& parameters,
                                bool prepared) = 0;

    // The statement without its literals, for `run` with "prepared"; nothing where it would not do
    // exactly the same, errors and all but their positions.
    virtual std::optional<BareText> withoutLiterals(const SqlText&) { return std::nullopt; }
    // The statement without the real numbers that the engine would not read as the nearest value;
    // nothing where there are none.
    virtual std::optional<BareText> withExactReals(const SqlText&) { return std::nullopt; }

    // After a statement that may have changed the connection's settings.
    virtual void settingsChanged() = 0;

    // The columns of a table in their order; empty when there is no such table. The schema may be
    // empty.
    virtual std::vector<TableColumn> tableColumns(const std::string& schema,
                                                  const std::string& table) = 0;
    // The statement whose rows are schema, name and kind ("table" or "view") of what the user can
    // read, without the engine's own tables.
    virtual std::string tableListText() const = 0;
    // The statement whose rows are the columns of foreign keys, see catalogue.h.
    virtual std::string foreignKeyListText() const = 0;

    virtual TableKey keyOf(const KeyedSelect& select) = 0;
    virtual bool givesRow(const std::string& sql) = 0;
    // Runs a key pass; the key columns are the last ones.
    virtual void readKeys(const std::string& sql, const Parameters& parameters, const TableKey& key,
                          RowKeys& keys) = 0;
    // Reads rows first to first + places.size() - 1 (from 0) into the block, as far as its memory
    // may grow: fewer places are left then, one at least. A place is the row in the block, -1 where
    // the row has gone. CodeStructureChanged when the columns differ from text.columns.
    virtual void readRows(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                          std::vector<int>& places) = 0;
    // Reads a piece of a text (as UTF-8) or blob of one row; CodeRowGone.
    virtual size_t readPiece(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                             uint64_t offset, void* buffer, size_t size) = 0;
    // Executes a statement for one row, if the row still holds what was seen of it. Then the key is
    // replaced by what the statement made of it, or dropped. seen.now gets the changed row, unless
    // anything else, such as a trigger, may have changed it behind the statement: it stays empty
    // then. CodeRowGone, CodeRowChanged; in neither case anything was changed.
    virtual void modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                           const RowStatement& statement, const SeenRow& seen) = 0;

    // Statements end with CodeCancelled when the flag becomes true; null: no flag.
    virtual void watch(const std::atomic<bool>* stop) = 0;
    // Hurries a running statement to look at the flag. From any thread.
    virtual void interrupt() noexcept = 0;
};

// Opens a database with the target's engine.
std::unique_ptr<Driver> openDriver(const Target& target);
// Opens a database of the embedded engine.
std::unique_ptr<Driver> openSqlite(const Target& target);
// Connects to a server.
std::unique_ptr<Driver> openPostgresql(const Target& target);

} // namespace DorCPP
