// The statement monitor.
#include <thread>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>

#include "application.h"
#include "database.h"
#include "explorer/mainform.h"
#include "explorer/textlookup.h"
#include "support.h"

#include <QClipboard>
#include <QGuiApplication>

using OviAPI::InputDriver;

namespace {

DorCPP::MonitorRecord recordOf(std::string_view text)
{
    DorCPP::MonitorRecord record;
    record.text = text;
    return record;
}

TEST(MonitorLog, KeepsTheLastThousand)
{
    MonitorLog log;
    for (int i = 0; i < 1500; ++i)
        log.add(recordOf(std::to_string(i)));
    const auto entries = log.entries();
    ASSERT_EQ(entries.size(), MonitorLog::Most);
    EXPECT_EQ(entries.front().text, "500");
    EXPECT_EQ(entries.back().text, "1499");
    const uint64_t before = log.revision();
    log.clear();
    EXPECT_TRUE(log.entries().empty());
    EXPECT_NE(log.revision(), before);
}

TEST(MonitorLog, TakesFromSeveralThreads)
{
    MonitorLog log;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&log] {
                for (int n = 0; n < 200; ++n)
                    log.add(recordOf("SELECT 1"));
            });
    }
    EXPECT_EQ(log.entries().size(), 800U);
}

TEST(MonitorLog, CutsTextsBetweenTwoCharacters)
{
    EXPECT_EQ(cutUtf8("abc", 3), "abc");
    EXPECT_EQ(cutUtf8("abcd", 3), "abc...");
    EXPECT_EQ(cutUtf8("a\xD1\x8F", 2), "a...");
    MonitorLog log;
    log.add(recordOf(std::string(1000000, 'x')));
    EXPECT_EQ(log.entries()[0].text.size(), MonitorLog::LongestText + 3);
}

class Monitoring : public testing::Test {
protected:
    Monitoring()
        : m_options(TestApplication::get().record)
    {
        m_options.initDefaults();
        m_options.Language = TypicalOptions::DefaultLanguage;
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        TestDatabase(m_folder.path() / "a.db").execute("CREATE TABLE one (a INTEGER PRIMARY KEY)");
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->create();
        m_form->show(true);
        EXPECT_TRUE(m_form->openDatabase((m_folder.path() / "a.db").string()));
        EXPECT_TRUE(ready());
    }
    ~Monitoring() override { m_form.reset(); }

    bool ready()
    {
        return waitFor([this] { return !m_form->isBusy(); });
    }
    MonitorPane& monitor() { return m_form->monitor(); }
    void execute(const wchar_t* text)
    {
        m_form->sqlPane().editor().setText(text);
        m_form->sqlPane().runAll();
        ASSERT_TRUE(ready());
        monitor().refresh();
    }
    // The row, from 1, whose statement holds the text; 0 for none.
    long rowWith(const std::wstring& text)
    {
        for (long row = monitor().view().GetRowCount(); row > 0; --row) {
            if (cell(MonitorPane::Statement, row).find(text) != std::wstring::npos)
                return row;
        }
        return 0;
    }
    std::wstring cell(int column, long row) { return monitor().view().GetCellText(column, row); }
    void showValues(bool on)
    {
        monitor().valuesBox().setFocus();
        InputDriver::key({OviAPI::KeySpace, OviAPI::ModifierNone, L' '});
        ASSERT_TRUE(waitFor([&] { return monitor().valuesBox().isChecked() == on; }));
    }

    TemporaryFolder m_folder;
    ExplorerOptions& m_options;
    std::unique_ptr<MainForm> m_form;
};

TEST_F(Monitoring, IsSwitchedOnAndOffByItsKey)
{
    const OviAPI::VirtualKey key(OviAPI::KeyF1 + 7);
    EXPECT_FALSE(monitor().isWatching());
    InputDriver::key(key);
    ASSERT_TRUE(waitFor([this] { return monitor().isWatching(); }));
    EXPECT_TRUE(monitor().isVisible());
    EXPECT_EQ(m_form->tabs().tabCount(), 3);
    execute(L"SELECT 1");
    const long before = monitor().view().GetRowCount();
    EXPECT_GT(before, 0);
    InputDriver::key(key);
    ASSERT_TRUE(waitFor([this] { return !monitor().isWatching(); }));
    EXPECT_EQ(m_form->tabs().tabCount(), 2);
    execute(L"SELECT 2");
    EXPECT_EQ(monitor().view().GetRowCount(), before);
    m_form->execute(Command::Monitor);
    EXPECT_TRUE(monitor().isVisible()) << "once more";
}

TEST_F(Monitoring, ShowsWhatWasSentWithoutItsValues)
{
    m_form->execute(Command::Monitor);
    execute(L"INSERT INTO one VALUES (4711), (4712)");
    const long row = rowWith(L"INSERT INTO one");
    ASSERT_GT(row, 0);
    EXPECT_EQ(cell(MonitorPane::Statement, row), L"INSERT INTO one VALUES (?), (?)");
    EXPECT_EQ(cell(MonitorPane::Rows, row), L"2");
    EXPECT_NE(cell(MonitorPane::Duration, row).find(L'.'), std::wstring::npos);
    EXPECT_EQ(cell(MonitorPane::Time, row).size(), 12U);
    EXPECT_EQ(cell(MonitorPane::Error, row), L"");
    EXPECT_EQ(rowWith(L"4711"), 0);
    showValues(true);
    EXPECT_GT(rowWith(L"VALUES (4711), (4712)"), 0);
    showValues(false);
    EXPECT_EQ(rowWith(L"4711"), 0);
}

TEST_F(Monitoring, ShowsTheWordsOfAnErrorWithTheValuesOnly)
{
    m_form->execute(Command::Monitor);
    execute(L"SELECT 'secret' FROM nowhere");
    long row = rowWith(L"FROM nowhere");
    ASSERT_GT(row, 0);
    EXPECT_EQ(cell(MonitorPane::Error, row), L"Error 2001");
    showValues(true);
    row = rowWith(L"'secret' FROM nowhere");
    ASSERT_GT(row, 0);
    EXPECT_NE(cell(MonitorPane::Error, row).find(L"no such table"), std::wstring::npos);
}

TEST_F(Monitoring, CopiesWhatIsShownAndClears)
{
    m_form->execute(Command::Monitor);
    execute(L"INSERT INTO one VALUES (4711)");
    monitor().copy();
    const std::wstring copied = QGuiApplication::clipboard()->text().toStdWString();
    EXPECT_EQ(copied.find(L"Time\tms\tRows\tStatement\tError\n"), 0U) << OviAPI::wideToUtf8(copied);
    EXPECT_NE(copied.find(L"INSERT INTO one VALUES (?)"), std::wstring::npos);
    EXPECT_EQ(copied.find(L"4711"), std::wstring::npos);
    monitor().clear();
    EXPECT_EQ(monitor().view().GetRowCount(), 0);
}

TEST_F(Monitoring, ItsTextsFollowTheLanguage)
{
    m_form->execute(Command::Monitor);
    m_form->setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(m_form->tabs().caption(2), textOf(TextTabMonitor));
    EXPECT_GT(monitor().valuesBox().text().at(0), L'\u0400');
    m_form->setLanguage(TypicalOptions::DefaultLanguage);
    EXPECT_EQ(monitor().valuesBox().text(), L"&Show values");
}

TEST_F(Monitoring, SchemasAreNamedWhenThereAreSeveral)
{
    TestDatabase(m_folder.path() / "b.db").execute("CREATE TABLE one (b INTEGER)");
    TestDatabase(m_folder.path() / "b.db").execute("INSERT INTO one VALUES (7)");
    EXPECT_EQ(m_form->list().GetCellText(TableList::Name, 1), L"one");
    execute((L"ATTACH '" + OviAPI::localeToWide((m_folder.path() / "b.db").string()) +
             L"' AS \"other\"")
                .c_str());
    ASSERT_EQ(m_form->list().GetRowCount(), 2);
    EXPECT_EQ(m_form->list().GetCellText(TableList::Name, 1), L"main.one");
    EXPECT_EQ(m_form->list().GetCellText(TableList::Name, 2), L"other.one");
    m_form->list().SetFocusCell(1, 2);
    ASSERT_TRUE(ready());
    ASSERT_TRUE(m_form->pane().hasRows());
    EXPECT_EQ(m_form->pane().view().GetCellText(1, 1), L"7");
}

} // namespace
