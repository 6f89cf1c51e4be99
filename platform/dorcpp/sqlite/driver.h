// The embedded engine as a driver.
#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/piecebuffer.h>
#include <dorcpp/sqlite/open.h>
#include <dorcpp/sqlite/statement.h>
#include <sqlite3.h>

namespace DorCPP::Sqlite {

class SqliteDriver final : public Driver {
public:
    explicit SqliteDriver(const Target& target);
    ~SqliteDriver() override;

    SqlDialect dialect() const override { return SqlDialect::Sqlite; }
    bool isReadOnly() const override;
    std::unique_ptr<Driver> duplicate() const override;
    bool inTransaction() const override;
    void probe() override;
    ConnectionInfo info() const override;

    int prepare(const std::string& sql, bool longLived) override;
    std::vector<ColumnInfo> describe(const std::string& sql) override;
    StatementResult run(const std::string& sql, const Parameters& parameters,
                        bool prepared) override;
    std::optional<BareText> withoutLiterals(const SqlText& sql) override;
    std::optional<BareText> withExactReals(const SqlText& sql) override;
    void settingsChanged() override;

    std::vector<TableColumn> tableColumns(const std::string& schema,
                                          const std::string& table) override;
    std::string tableListText() const override;
    std::string foreignKeyListText() const override;
    TableKey keyOf(const KeyedSelect& select) override;
    bool givesRow(const std::string& sql) override;
    void readKeys(const std::string& sql, const Parameters& parameters, const TableKey& key,
                  RowKeys& keys) override;
    void readRows(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                  std::vector<int>& places) override;
    size_t readPiece(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                     uint64_t offset, void* buffer, size_t size) override;
    void modifyRow(const KeyedText& text, RowKeys& keys, size_t row, const RowStatement& statement,
                   const SeenRow& seen) override;

    void watch(const std::atomic<bool>* stop) override;
    void interrupt() noexcept override;

private:
    class ReadTransaction;
    // A statement that changes one row, kept ready.
    struct KeptChange {
        std::string sql;
        StatementPtr statement;
        // Whether it gives the row as it is afterwards, and which columns hold real numbers: true
        // for as long as the schema is the one that the statement was prepared with.
        bool givesRow = false;
        std::vector<bool> reals;

        // False when the engine has prepared it anew, for another schema.
        bool isAsPrepared() const
        {
            return sqlite3_stmt_status(statement.get(), SQLITE_STMTSTATUS_REPREPARE, 0) == 0;
        }
    };

    // Called while another connection has a lock; false gives up.
    bool waitForLock(int calls);

    bool isChangedAlone(const KeyedText& text);
    const KeptChange& keptChange(const KeyedText& text, const std::string& sql, bool returnsRow);
    double readReal(const std::string& digits);
    void runToEnd(sqlite3_stmt* statement, const Parameters& parameters, StatementResult& result);
    void readRange(const KeyedText& text, const std::vector<int64_t>& keys, RowBlock& block,
                   std::vector<int>& places);
    void readSingly(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                    std::vector<int>& places);
    std::string valueName(const KeyedText& text, RowKeys& keys, size_t row, size_t column);
    // A piece of a long value; empty behind its end.
    std::string bytesOf(const KeyedText& text, RowKeys& keys, size_t row, size_t column,
                        uint64_t offset, size_t size);

    Target m_target;
    Connection m_db;
    bool m_utf8;                     // texts lie in the database as UTF-8
    StatementCache m_cache;          // goes before the connection
    std::list<KeptChange> m_changes; // the same; latest used first
    PieceBuffer m_piece;
    const std::atomic<bool>* m_stop = nullptr;
    std::chrono::steady_clock::time_point m_lockedSince;
};

} // namespace DorCPP::Sqlite
