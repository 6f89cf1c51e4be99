// The embedded engine as a driver.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/driver.h>
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
                   const RowBlock& seen, size_t place) override;

    void watch(const std::atomic<bool>* stop) override;
    void interrupt() noexcept override;

private:
    class ReadTransaction;

    // Called while another connection has a lock; false gives up.
    bool waitForLock(int calls);

    double readReal(const std::string& digits);
    void runToEnd(sqlite3_stmt* statement, const Parameters& parameters, StatementResult& result);
    void readRange(const KeyedText& text, const std::vector<int64_t>& keys, RowBlock& block,
                   std::vector<int>& places);
    void readSingly(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                    std::vector<int>& places);

    Target m_target;
    Connection m_db;
    bool m_utf8;            // texts lie in the database as UTF-8
    StatementCache m_cache; // goes before the connection
    const std::atomic<bool>* m_stop = nullptr;
    std::chrono::steady_clock::time_point m_lockedSince;
};

} // namespace DorCPP::Sqlite
