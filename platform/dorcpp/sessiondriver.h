// An engine's connection as sessions use it.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/monitor.h>

namespace DorCPP {

// Tells the monitor what is sent, and refuses every call at once after the connection was lost:
// what an engine still answers then is not what the application asked.
class SessionDriver final : public Driver {
public:
    // beside: the connection is not the session's own.
    SessionDriver(std::unique_ptr<Driver> driver, int channel, bool beside);

    SqlDialect dialect() const override { return m_driver->dialect(); }
    bool isReadOnly() const override { return m_driver->isReadOnly(); }
    std::unique_ptr<Driver> duplicate() const override;
    bool inTransaction() const override { return m_driver->inTransaction(); }
    void probe() override;
    ConnectionInfo info() const override { return m_driver->info(); }

    int prepare(const std::string& sql, bool longLived) override;
    std::vector<ColumnInfo> describe(const std::string& sql) override;
    StatementResult run(const std::string& sql, const Parameters& parameters,
                        bool prepared) override;
    std::optional<BareText> withoutLiterals(const SqlText& sql) override;
    std::optional<BareText> withExactReals(const SqlText& sql) override;
    void settingsChanged() override;

    std::vector<TableColumn> tableColumns(const std::string& schema,
                                          const std::string& table) override;
    std::string tableListText() const override { return m_driver->tableListText(); }
    std::string foreignKeyListText() const override { return m_driver->foreignKeyListText(); }
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

    void watch(const std::atomic<bool>* stop) override { m_driver->watch(stop); }
    void interrupt() noexcept override { m_driver->interrupt(); }

private:
    // Does the work; work(rows) may set the number of rows. text: makes the text.
    template<class Text, class Work>
    auto send(MonitorPurpose purpose, const Text& text, const Work& work);
    template<class Work>
    auto guarded(const Work& work);

    const std::unique_ptr<Driver> m_driver;
    const int m_channel;
    const bool m_beside;
    bool m_lost = false;
};

} // namespace DorCPP
