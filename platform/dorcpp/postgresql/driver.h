// The server as a driver.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/dorx.h>
#include <dorcpp/driver.h>
#include <dorcpp/piecebuffer.h>
#include <dorcpp/postgresql/statement.h>

namespace DorCPP::Postgresql {

// What an update of a table does to a row, as the catalogue said a short time ago.
struct TableFacts {
    bool isAlone = false;   // nothing else changes the row
    bool generates = false; // values of columns from those of others
    std::chrono::steady_clock::time_point found;
    uint64_t definitions = 0; // the driver's count then
};

class PostgresqlDriver final : public Driver {
public:
    explicit PostgresqlDriver(const Target& target);
    ~PostgresqlDriver() override;

    SqlDialect dialect() const override { return SqlDialect::Postgresql; }
    bool isReadOnly() const override;
    std::unique_ptr<Driver> duplicate() const override;
    bool inTransaction() const override { return m_link->isInTransaction(); }
    void probe() override;
    ConnectionInfo info() const override;

    int prepare(const std::string& sql, bool longLived) override;
    std::vector<ColumnInfo> describe(const std::string& sql) override;
    StatementResult run(const std::string& sql, const Parameters& parameters,
                        bool prepared) override;
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
    void interrupt() noexcept override { m_link->interrupt(); }

private:
    // What a column of a table is called.
    struct TableName {
        std::string schema;
        std::string name;
        std::map<int, std::string> columns; // by number
    };
    // How rows of a block are asked for.
    struct Question {
        std::string sql;
        Values values;
        bool byKey = false;        // rows are known by their one key, else by its place
        int place = 0;             // the answer's column with the key or its place
        std::vector<int> lengthOf; // by column: where the length of a long value stands, 0: nowhere
    };
    // A question sent before its answer was wanted.
    struct Ahead {
        unsigned long serial = 0;
        std::string sql;
        std::vector<std::string> values;
        uint64_t changes = 0;
        std::chrono::steady_clock::time_point sent;
    };
    void configure();
    void forgetTables();
    const Prepared& kept(const std::string& sql) { return m_cache.get(*m_link, sql); }
    void again(const std::function<void()>& attempt);
    Result query(const std::string& sql, const Values& values);
    Result runKept(const std::string& sql, const Parameters& parameters, StatementResult& result);
    Result runAny(const SqlText& text, const std::string& sql, const Parameters& parameters,
                  bool prepared, StatementResult& result);
    void noteEnd(const SqlText& text, const PGresult* end, StatementResult& result);
    void addOutcome(DorX& x, const SqlText& text, bool inside) const;
    void explain(DorX& x, const std::string& sql) const;

    std::vector<ColumnInfo> columnInfos(const std::vector<DescribedColumn>& columns);
    void learnTables(const std::vector<DescribedColumn>& columns);

    bool isFresh(const TableFacts& facts) const;
    TableFacts factsOf(const std::vector<DescribedColumn>& columns);
    std::vector<DescribedColumn> columnsNow(const KeyedText& text);
    void modifyOnce(const KeyedText& text, RowKeys& keys, size_t row, const RowStatement& statement,
                    const SeenRow& seen);

    void readKeyCopy(const std::string& sql, const TableKey& key, KeyList& keys);
    void readKeyRows(const std::string& sql, const Parameters& parameters, const TableKey& key,
                     RowKeys& keys);
    Question question(const KeyedText& text, RowKeys& keys, size_t first, size_t count);
    bool isAhead(const Question& question) const;
    void readBlock(const KeyedText& text, RowKeys& keys, size_t first, RowBlock& block,
                   std::vector<int>& places);
    void askAhead(const KeyedText& text, RowKeys& keys, size_t first, size_t count);

    Target m_target;
    std::unique_ptr<Link> m_link;
    StatementCache m_cache;
    std::map<Oid, TableName> m_tables;
    std::map<Oid, TableFacts> m_facts;
    bool m_settingsLost = false;
    bool m_beside = false; // a connection that may be made anew when it was lost
    // Statements that may have changed rows, through this connection and those beside it.
    std::shared_ptr<std::atomic<uint64_t>> m_changes;
    // The same of statements that may have changed tables.
    std::shared_ptr<std::atomic<uint64_t>> m_definitions;
    uint64_t m_changesAtRead = 0; // when rows were read last
    Ahead m_ahead;
    PieceBuffer m_piece;
    unsigned long m_pieceSerial = 0; // nothing was sent since
};

} // namespace DorCPP::Postgresql
