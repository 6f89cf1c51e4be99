// Watching what is sent.
#include <dorcpp/monitor.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include <dorcpp/catalogue.h>

#include "support.h"
#include "waiter.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

struct Seen {
    int channel;
    bool beside;
    MonitorPurpose purpose;
    std::string text;
    int64_t micros;
    int64_t rows;
    int code;
    std::string message;
};

class Monitored : public Database {
protected:
    Monitored()
    {
        execute("CREATE TABLE t(i INTEGER PRIMARY KEY, a TEXT)");
        execute("INSERT INTO t VALUES (1, 'one'), (2, 'two')");
        setMonitor([this](const MonitorRecord& r) {
            const std::lock_guard lock(m_mutex);
            m_seen.push_back({r.channel, r.beside, r.purpose, std::string(r.text), r.micros, r.rows,
                              r.code, std::string(r.message)});
        });
    }
    ~Monitored() override { setMonitor({}); }

    // What was sent for this purpose.
    std::vector<Seen> sent(MonitorPurpose purpose)
    {
        const std::lock_guard lock(m_mutex);
        std::vector<Seen> found;
        std::copy_if(m_seen.begin(), m_seen.end(), std::back_inserter(found),
                     [&](const Seen& s) { return s.purpose == purpose; });
        return found;
    }

private:
    std::mutex m_mutex;
    std::vector<Seen> m_seen;
};

} // namespace

TEST_F(Monitored, StatementsAreToldAsTheyAreSent)
{
    execute("UPDATE t SET a = Hex('41004200');");
    const auto all = sent(MonitorPurpose::Statement);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].text, "UPDATE t SET a = 'AB'");
    EXPECT_EQ(all[0].rows, 2);
    EXPECT_EQ(all[0].channel, connection.channel());
    EXPECT_FALSE(all[0].beside);
    EXPECT_EQ(all[0].code, 0);
    EXPECT_GE(all[0].micros, 0);
}

TEST_F(Monitored, KeysRowsAndChangesHaveTheirPurposes)
{
    execute("SELECT i, a FROM t");
    cursor.fetch(FetchFirst, 0);
    execute("UPDATE t SET a = 'new' WHERE CURRENT OF CURSOR");
    ASSERT_EQ(sent(MonitorPurpose::Keys).size(), 1U);
    EXPECT_EQ(sent(MonitorPurpose::Keys)[0].rows, 2);
    ASSERT_EQ(sent(MonitorPurpose::Rows).size(), 2U); // the block, and the row that was changed
    EXPECT_EQ(sent(MonitorPurpose::Rows)[0].rows, 2);
    ASSERT_EQ(sent(MonitorPurpose::Change).size(), 1U);
    EXPECT_EQ(sent(MonitorPurpose::Change)[0].text, "UPDATE \"main\".\"t\" SET a = 'new'");
    EXPECT_TRUE(sent(MonitorPurpose::Statement).empty());
}

TEST_F(Monitored, ErrorsAreToldWithTheirTexts)
{
    EXPECT_EQ(codeOf([&] { execute("INSERT INTO t VALUES (1, 'again')"); }), CodeRefused);
    const auto all = sent(MonitorPurpose::Statement);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].code, CodeRefused);
    EXPECT_NE(all[0].message.find("UNIQUE"), std::string::npos);
}

TEST_F(Monitored, StatementsBesideTheSessionAreToldToo)
{
    Waiter waiter;
    cursor.execute("SELECT DISTINCT a FROM t", &waiter);
    waiter.wait();
    const auto all = sent(MonitorPurpose::Statement);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_TRUE(all[0].beside);
    EXPECT_EQ(all[0].rows, 2);
}

TEST_F(Monitored, WhatTheMonitorThrowsIsLost)
{
    setMonitor([](const MonitorRecord&) { throw std::runtime_error("thrown"); });
    EXPECT_EQ(codeOf([&] { execute("SELECT 1"); }), 0);
    setMonitor({});
    EXPECT_EQ(codeOf([&] { execute("SELECT 1"); }), 0);
}

TEST_F(Monitored, TheTablesAreListedThroughAnyCursor)
{
    execute("CREATE VIEW v AS SELECT 1");
    const std::string list = tableListText(connection);
    execute(list);
    EXPECT_EQ(rows(cursor), (std::vector<std::string>{"main|t|table", "main|v|view"}));
    Waiter waiter;
    cursor.execute(list.c_str(), &waiter);
    waiter.wait();
    EXPECT_EQ(cursor.selectRowCount(), 2);
    EXPECT_EQ(codeOf([] { tableListText(DorConnect()); }), CodeSessionLost);
}

TEST(MaskedText, LiteralsAreReplacedAndNamesKept)
{
    EXPECT_EQ(
        maskedText("SELECT a, 'it''s', 1, 2.5e-3, 0xFF FROM t1 WHERE \"b\" = x'00'", "SQLite"),
        "SELECT a, ?, ?, ?, ? FROM t1 WHERE \"b\" = ?");
    EXPECT_EQ(maskedText("ALTER ROLE me PASSWORD 'secret';", "PostgreSQL"),
              "ALTER ROLE me PASSWORD ?");
    EXPECT_EQ(
        maskedText("SELECT E'a\\'b', $$c$$, $t$ d $$ $t$, N'e', B'01', U&'f', $1", "postgresql"),
        "SELECT ?, ?, ?, ?, ?, U&?, $1");
    EXPECT_EQ(maskedText("SELECT [it's], `x`, ?1, :a FROM t", "sqlite"),
              "SELECT [it's], `x`, ?1, :a FROM t");
}

TEST(MaskedText, ATextThatDoesNotEndHidesItsRest)
{
    for (const char* end : {"'secret", "E'secret\\'", "$$secret", "$a$secret $b$", "/* secret",
                            "-- secret", "\"secret", "x'secret"}) {
        const std::string masked = maskedText(std::string("SELECT a, ") + end, "PostgreSQL");
        EXPECT_EQ(masked.find("secret"), std::string::npos) << masked;
        EXPECT_EQ(masked.find("SELECT a,"), 0U) << masked;
    }
    EXPECT_EQ(maskedText("SELECT 1 /* 'x' */ + 2", "SQLite"), "SELECT ? + ?");
}
