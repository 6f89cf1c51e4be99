// What a session does about its connection.
#include <dorcpp/sessiondriver.h>

#include <memory>
#include <string>
#include <vector>

#include <dorcpp/errors.h>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

// A connection that fails with a given code; counts what reaches it.
class FailingDriver : public Driver {
public:
    explicit FailingDriver(int& calls)
        : m_calls(calls)
    {
    }
    int fault = 0;

    SqlDialect dialect() const override { return SqlDialect::Postgresql; }
    bool isReadOnly() const override { return false; }
    std::unique_ptr<Driver> duplicate() const override { return nullptr; }
    bool inTransaction() const override { return false; }
    void probe() override { work(); }
    ConnectionInfo info() const override { return {}; }
    int prepare(const std::string&, bool) override { return work(); }
    std::vector<ColumnInfo> describe(const std::string&) override
    {
        return work(), std::vector<ColumnInfo>();
    }
    StatementResult run(const std::string&, const Parameters&, bool) override
    {
        work();
        return {};
    }
    void settingsChanged() override { work(); }
    std::vector<TableColumn> tableColumns(const std::string&, const std::string&) override
    {
        work();
        return {};
    }
    std::string tableListText() const override { return {}; }
    std::string foreignKeyListText() const override { return {}; }
    TableKey keyOf(const KeyedSelect&) override { return work(), TableKey(); }
    bool givesRow(const std::string&) override { return work() != 0; }
    void readKeys(const std::string&, const Parameters&, const TableKey&, RowKeys&) override
    {
        work();
    }
    void readRows(const KeyedText&, RowKeys&, size_t, RowBlock&, std::vector<int>&) override
    {
        work();
    }
    size_t readPiece(const KeyedText&, RowKeys&, size_t, size_t, uint64_t, void*, size_t) override
    {
        return work(), 0;
    }
    void modifyRow(const KeyedText&, RowKeys&, size_t, const RowStatement&, const SeenRow&) override
    {
        work();
    }
    void watch(const std::atomic<bool>*) override {}
    void interrupt() noexcept override {}

private:
    int work()
    {
        ++m_calls;
        if (fault)
            throw makeError(fault);
        return 0;
    }
    int& m_calls;
};

} // namespace

TEST(SessionDriver, AfterALossEveryCallIsRefusedAtOnce)
{
    for (const int lost : {CodeSessionLost, CodeServerStopped}) {
        int calls = 0;
        auto owned = std::make_unique<FailingDriver>(calls);
        FailingDriver* engine = owned.get(); // the session's driver owns it
        SessionDriver driver(std::move(owned), 1, false);
        EXPECT_EQ(codeOf([&] { driver.probe(); }), 0);
        engine->fault = lost;
        EXPECT_EQ(codeOf([&] { driver.run("SELECT 1", {}, false); }), lost);
        engine->fault = 0;
        calls = 0;
        RowKeys keys;
        RowBlock block(1);
        std::unique_ptr<ChangePlan> plan;
        std::vector<int> places;
        EXPECT_EQ(codeOf([&] { driver.run("SELECT 1", {}, false); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] { driver.probe(); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] { driver.prepare("SELECT 1", false); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] { driver.describe("SELECT 1"); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] { driver.tableColumns("", "t"); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] { driver.keyOf({}); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] { driver.readRows({}, keys, 0, block, places); }), CodeSessionLost);
        EXPECT_EQ(codeOf([&] {
                      driver.modifyRow({}, keys, 0, {}, {block, 0, false, block, plan});
                  }),
                  CodeSessionLost);
        EXPECT_EQ(calls, 0);
    }
}

TEST(SessionDriver, OtherErrorsLoseNothing)
{
    int calls = 0;
    auto owned = std::make_unique<FailingDriver>(calls);
    FailingDriver* engine = owned.get(); // the session's driver owns it
    SessionDriver driver(std::move(owned), 1, false);
    engine->fault = CodeCancelled;
    EXPECT_EQ(codeOf([&] { driver.run("SELECT 1", {}, false); }), CodeCancelled);
    engine->fault = 0;
    EXPECT_EQ(codeOf([&] { driver.run("SELECT 1", {}, false); }), 0);
}
