// The SQL window: statements, answers, history, transactions.
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>
#include <oviapi/timer.h>

#include "application.h"
#include "database.h"
#include "explorer/mainform.h"
#include "explorer/sqlscript.h"
#include "explorer/textlookup.h"
#include "support.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace fs = std::filesystem;
using OviAPI::InputDriver;
using OviAPI::SrcPosition;
using OviAPI::SrcRange;
using OviAPI::VirtualKey;

namespace {

constexpr const wchar_t* endless =
    L"WITH RECURSIVE r (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM r) "
    L"SELECT count(*) FROM r";

TEST(SqlScript, IsSplitAtSemicolonsThatEndAStatement)
{
    const std::wstring text = L"SELECT 1; -- one; more\n"
                              L"  select ';' /* ; */ ;;\n"
                              L"SELECT \"a;b\",\n  3";
    EXPECT_EQ(statementsIn(text),
              (std::vector<SrcRange>{{{1, 1}, {1, 9}}, {{2, 3}, {2, 13}}, {{3, 1}, {4, 4}}}));
    EXPECT_TRUE(statementsIn(L"").empty());
    EXPECT_TRUE(statementsIn(L" ; -- nothing\n;").empty());
}

TEST(SqlScript, ABodyOfATriggerIsOneStatement)
{
    const auto all = statementsIn(L"CREATE TRIGGER t AFTER INSERT ON a BEGIN\n"
                                  L"DELETE FROM b; DELETE FROM c;\nEND;\nSELECT 1");
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].to, (SrcPosition{3, 4}));
    EXPECT_EQ(all[1].from, (SrcPosition{4, 1}));
}

TEST(SqlScript, AFaultIsFoundByTheByteThatTheEngineNames)
{
    const std::wstring statement = L"SELECT '\u044F\u044E',\n  nme FROM t";
    EXPECT_EQ(faultPosition(statement, {5, 3}, 1), (SrcPosition{5, 3}));
    // "SELECT '", four bytes of two letters, "',", the line end and two blanks
    EXPECT_EQ(faultPosition(statement, {5, 3}, 8 + 4 + 2 + 1 + 2 + 1), (SrcPosition{6, 3}));
    EXPECT_EQ(faultPosition(statement, {5, 3}, 0), (SrcPosition{5, 3})) << "unknown";
    EXPECT_EQ(faultPosition(L"ab", {1, 1}, 1000), (SrcPosition{1, 3}));
}

TEST(SqlScript, ADurationIsToldInHoursMinutesAndSeconds)
{
    TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
    EXPECT_EQ(durationText(0), L"0.000 s");
    EXPECT_EQ(durationText(12), L"0.012 s");
    EXPECT_EQ(durationText(63456), L"1 min 3.456 s");
    EXPECT_EQ(durationText(3723456), L"1 h 2 min 3.456 s");
    EXPECT_EQ(durationText(3600000), L"1 h 0 min 0.000 s");
}

TEST(SqlHistory, HasEachStatementOnceAndTheNewestFirst)
{
    SqlHistory history;
    for (const wchar_t* text : {L"a", L"b", L"a"})
        history.add(text);
    EXPECT_EQ(history.statements(), (std::vector<std::wstring>{L"a", L"b"}));
    for (int i = 0; i < 100; ++i)
        history.add(std::to_wstring(i));
    ASSERT_EQ(history.statements().size(), SqlHistory::Most);
    EXPECT_EQ(history.statements().front(), L"99");
    EXPECT_EQ(history.statements().back(), L"50");
}

TEST(SqlHistory, IsReadAsItWasWritten)
{
    const TemporaryFolder folder;
    const std::wstring path = OviAPI::localeToWide((folder.path() / "sql.dat").string());
    SqlHistory history;
    history.setText(L"SELECT 1;\n\n12\n\u044F");
    history.add(L"");
    history.add(L"3\nSELECT");
    history.add(L"\u0001\U0001F600");
    ASSERT_TRUE(history.save(path));
    SqlHistory read;
    read.load(path);
    EXPECT_EQ(read, history);
    EXPECT_FALSE(history.save(L"/nowhere/at/all/sql.dat"));
}

TEST(SqlHistory, ADamagedFileGivesWhatCanBeRead)
{
    const TemporaryFolder folder;
    const fs::path path = folder.path() / "sql.dat";
    const auto loaded = [&](const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
        SqlHistory history;
        history.setText(L"before");
        history.load(OviAPI::localeToWide(path.string()));
        return history;
    };
    EXPECT_EQ(loaded("").text(), L"before");
    EXPECT_EQ(loaded("something else\n1\na\n").text(), L"before");
    EXPECT_EQ(loaded("//SQL window\n99999999999999999999\na\n").text(), L"before");
    EXPECT_EQ(loaded("//SQL window\n18446744073709551615\na\n").text(), L"before");
    const SqlHistory cut = loaded("//SQL window\n1\na\n3\nbcd\n9\nef");
    EXPECT_EQ(cut.text(), L"a");
    EXPECT_EQ(cut.statements(), std::vector<std::wstring>{L"bcd"});
}

TEST(SqlHistory, AStatementInAMenuIsOneShortLine)
{
    EXPECT_EQ(shortStatement(L"  SELECT 1,\n\t 2 ", 70), L"SELECT 1, 2 ");
    EXPECT_EQ(shortStatement(L"SELECT 123456", 8), L"SELECT \u2026");
}

// --- in the window

class SqlWindow : public testing::Test {
protected:
    SqlWindow()
        : m_options(TestApplication::get().record)
    {
        m_options.initDefaults();
        m_options.Language = TypicalOptions::DefaultLanguage;
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->create();
        m_form->show(true);
        TestDatabase made(file());
        made.execute("CREATE TABLE one (id INTEGER PRIMARY KEY, name VARCHAR(20))");
        made.execute("INSERT INTO one VALUES (1, 'first'), (2, NULL), (3, 'third')");
        EXPECT_TRUE(m_form->openDatabase(file()));
        EXPECT_TRUE(ready());
        m_form->execute(Command::SqlWindow);
        settle();
    }
    ~SqlWindow() override
    {
        m_form->closeDatabase();
        m_form.reset();
    }

    std::string file() const { return (m_folder.path() / "a.db").string(); }
    bool ready()
    {
        return waitFor([this] { return !m_form->isBusy(); });
    }
    SqlPane& sql() { return m_form->sqlPane(); }
    std::wstring answer() const { return m_form->sqlPane().status(); }
    std::wstring field(MainStatus::Field f) { return m_form->status().field(f); }
    // Executes a text as a whole.
    void execute(const std::wstring& text)
    {
        sql().editor().setText(text.c_str());
        sql().runAll();
        ASSERT_TRUE(ready());
    }
    // Answers the box that asks about a transaction with the button of this caption.
    static void answerBox(Script& script, const char* caption, std::wstring* text)
    {
        script.step([] { return box() != nullptr; },
                    [caption, text] {
                        *text = box()->text().toStdWString();
                        for (QAbstractButton* button : box()->buttons()) {
                            if (button->text().remove('&') == caption) {
                                button->click();
                                return;
                            }
                        }
                        ADD_FAILURE() << OviAPI::wideToUtf8(*text);
                        box()->accept();
                    });
    }
    static QMessageBox* box()
    {
        return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    }

    TemporaryFolder m_folder;
    ExplorerOptions& m_options;
    std::unique_ptr<MainForm> m_form;
};

TEST_F(SqlWindow, IsReachedByItsKeyAndLeftByIt)
{
    EXPECT_TRUE(sql().isVisible());
    EXPECT_TRUE(sql().editor().hasFocus());
    EXPECT_EQ(sql().notice().heading(), L"No answer yet");
    EXPECT_TRUE(m_form->toolBar().isButtonChecked(static_cast<int>(Command::SqlWindow)));
    InputDriver::key({OviAPI::KeyA + ('E' - 'A'), OviAPI::ModifierControl});
    EXPECT_TRUE(waitFor([this] { return !sql().isVisible(); }));
    EXPECT_TRUE(m_form->pane().isVisible());
}

TEST_F(SqlWindow, ShowsTheRowsOfAQuery)
{
    execute(L"SELECT name, id * 2 AS twice FROM one ORDER BY id DESC;");
    ASSERT_TRUE(sql().view().isVisible());
    EXPECT_EQ(sql().view().GetRowCount(), 3);
    EXPECT_EQ(sql().view().GetCellText(2, 1), L"6");
    EXPECT_EQ(sql().view().GetDataSet()->GetColInfo(2)->caption, std::wstring(L"twice"));
    EXPECT_EQ(answer().find(L"3 rows, 0."), 0U) << OviAPI::wideToUtf8(answer());
    EXPECT_EQ(field(MainStatus::Rows), answer());
}

TEST_F(SqlWindow, SaysHowManyRowsHaveChanged)
{
    execute(L"UPDATE one SET name = 'x' WHERE id > 1");
    EXPECT_FALSE(sql().view().isVisible());
    EXPECT_EQ(sql().notice().heading().find(L"Rows changed: 2, 0."), 0U);
    EXPECT_EQ(TestDatabase(file()).value("SELECT count(*) FROM one WHERE name = 'x'"), "2");
    execute(L"UPDATE one SET name = 'x' WHERE id > 100");
    EXPECT_EQ(answer().find(L"Done, "), 0U);
}

TEST_F(SqlWindow, TheStatementAtTheCaretIsExecutedByKey)
{
    sql().editor().setText(L"SELECT 1 AS a;\nSELECT 2 AS b\nFROM one;\nSELECT 3 AS c;");
    sql().editor().setCaret({3, 2});
    sql().editor().setFocus();
    InputDriver::key({OviAPI::KeyEnter, OviAPI::ModifierControl});
    ASSERT_TRUE(waitFor([this] { return sql().view().isVisible(); }));
    EXPECT_EQ(sql().view().GetDataSet()->GetColInfo(1)->caption, std::wstring(L"b"));
    EXPECT_EQ(sql().view().GetRowCount(), 3);
    EXPECT_EQ(sql().editor().lineCount(), 4) << "the key types nothing";

    sql().editor().setCaret({4, 2});
    InputDriver::key(VirtualKey(OviAPI::KeyF1 + 4));
    ASSERT_TRUE(waitFor([this] {
        return sql().view().isVisible() &&
               sql().view().GetDataSet()->GetColInfo(1)->caption == std::wstring(L"c");
    }));
}

TEST_F(SqlWindow, TheSelectionIsExecutedAsItIs)
{
    sql().editor().setText(L"SELECT 1 AS a UNION SELECT 2;");
    sql().editor().select({{1, 1}, {1, 14}});
    sql().run();
    ASSERT_TRUE(ready());
    EXPECT_EQ(sql().view().GetRowCount(), 1);
}

TEST_F(SqlWindow, RunAllStopsAtTheFirstFault)
{
    execute(L"INSERT INTO one VALUES (4, 'd');\n"
            L"INSERT INTO one VALUES (1, 'again');\n"
            L"INSERT INTO one VALUES (5, 'e');");
    EXPECT_EQ(TestDatabase(file()).value("SELECT group_concat(id) FROM one"), "1,2,3,4");
    EXPECT_EQ(sql().notice().heading(), L"The statement failed");
    EXPECT_NE(sql().notice().hint().find(L"UNIQUE"), std::wstring::npos);
    EXPECT_EQ(sql().editor().errorPosition().line, 2);
}

TEST_F(SqlWindow, AFaultIsMarkedWhereItIs)
{
    execute(L"-- \u044F\nSELECT '\u044F', nme FROM one;");
    EXPECT_TRUE(sql().editor().hasError());
    EXPECT_EQ(sql().editor().errorPosition(), (SrcPosition{2, 13}));
    EXPECT_EQ(sql().editor().caret(), (SrcPosition{2, 13}));
    EXPECT_TRUE(sql().editor().hasFocus());
    EXPECT_NE(sql().notice().hint().find(L"nme"), std::wstring::npos);
    execute(L"SELECT 1");
    EXPECT_FALSE(sql().editor().hasError());
}

TEST_F(SqlWindow, AStatementThatTakesLongIsStopped)
{
    sql().editor().setText(endless);
    sql().editor().setFocus();
    Script script;
    script.step([this] { return sql().isRunning(); },
                [this] {
                    EXPECT_EQ(answer(), L"Executing...");
                    EXPECT_TRUE(sql().toolBar().isButtonEnabled(SqlPane::ToolStop));
                    EXPECT_FALSE(sql().toolBar().isButtonEnabled(SqlPane::ToolRun));
                    InputDriver::key(VirtualKey(OviAPI::KeyEscape));
                });
    sql().run();
    EXPECT_TRUE(script.isDone());
    EXPECT_FALSE(sql().isRunning());
    EXPECT_EQ(answer().find(L"Stopped at your request."), 0U);
    EXPECT_FALSE(sql().editor().hasError());
    execute(L"SELECT 1");
    EXPECT_EQ(sql().view().GetRowCount(), 1);
}

TEST_F(SqlWindow, ClosingTheDatabaseStopsWhatRuns)
{
    sql().editor().setText(endless);
    Script script;
    script.step([this] { return sql().isRunning(); }, [this] { m_form->execute(Command::Close); });
    sql().run();
    EXPECT_EQ(m_form->session(), nullptr);
    EXPECT_FALSE(sql().isRunning());
    sql().run(); // there is no database
    EXPECT_EQ(answer(), L"");
}

TEST_F(SqlWindow, ATransactionIsAskedForWhenItsStatementHasBeenStopped)
{
    execute(L"BEGIN; INSERT INTO one VALUES (9, 'nine');");
    sql().editor().setText(endless);
    std::wstring text;
    Script script;
    script.step([this] { return sql().isRunning(); }, [this] { EXPECT_FALSE(m_form->close()); });
    answerBox(script, "Yes", &text);
    sql().run();
    EXPECT_TRUE(script.isDone());
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_EQ(TestDatabase(file()).value("SELECT count(*) FROM one"), "4");
}

TEST_F(SqlWindow, AConnectionThatGoesEndsTheStatement)
{
    sql().editor().setText(endless);
    Script script;
    script.step([this] { return sql().isRunning(); }, [this] { m_form->closeDatabase(); });
    sql().run();
    EXPECT_TRUE(script.isDone());
    EXPECT_FALSE(sql().isRunning());
    EXPECT_EQ(sql().notice().heading(), L"No answer yet");
}

TEST_F(SqlWindow, WhatAnEventThrowsGoesThroughAndEndsTheStatement)
{
    sql().editor().setText(endless);
    OviAPI::WTimer timer(20);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(timer, *m_form,
                                              [&](OviAPI::Object*) -> OviAPI::SlotResult {
                                                  timer.stop();
                                                  throw std::runtime_error("thrown by an event");
                                              });
    timer.start();
    EXPECT_THROW(sql().run(), std::runtime_error);
    EXPECT_FALSE(sql().isRunning());
    execute(L"SELECT 1");
    EXPECT_EQ(sql().view().GetRowCount(), 1);
}

TEST_F(SqlWindow, AfterASecondAWindowWithAButtonToStopIsShown)
{
    sql().editor().setText(endless);
    QWidget* progress = nullptr;
    const auto isShown = [&] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->windowTitle() == "Query in progress")
                progress = window;
        }
        return progress != nullptr;
    };
    Script script;
    script.step(isShown, [&] { progress->findChild<QPushButton*>()->click(); });
    sql().run();
    EXPECT_TRUE(script.isDone());
    EXPECT_EQ(answer().find(L"Stopped at your request. 1."), 0U) << OviAPI::wideToUtf8(answer());
}

TEST_F(SqlWindow, ShowsTablesThatAreMade)
{
    execute(L"CREATE TABLE made (a INTEGER); INSERT INTO made VALUES (1), (2);");
    ASSERT_TRUE(ready());
    ASSERT_EQ(m_form->list().GetRowCount(), 2);
    EXPECT_EQ(m_form->list().GetCellText(TableList::Name, 1), L"made");
    EXPECT_EQ(m_form->list().GetCellText(TableList::Rows, 1), L"2");
    EXPECT_TRUE(sql().isVisible()) << "and stays where the user is";
}

TEST_F(SqlWindow, AnOpenTransactionIsToldAndCommitted)
{
    execute(L"BEGIN; INSERT INTO one VALUES (9, 'nine');");
    EXPECT_NE(field(MainStatus::Connection).find(L", transaction open"), std::wstring::npos);
    Script script;
    std::wstring text;
    answerBox(script, "Yes", &text);
    m_form->execute(Command::Close);
    EXPECT_TRUE(script.isDone());
    EXPECT_NE(text.find(L"A transaction is open."), std::wstring::npos);
    EXPECT_EQ(m_form->session(), nullptr);
    EXPECT_EQ(TestDatabase(file()).value("SELECT count(*) FROM one"), "4");
}

TEST_F(SqlWindow, AnOpenTransactionIsRolledBackOnDemand)
{
    execute(L"BEGIN; INSERT INTO one VALUES (9, 'nine');");
    Script script;
    std::wstring text;
    answerBox(script, "No", &text);
    EXPECT_TRUE(m_form->close());
    EXPECT_EQ(TestDatabase(file()).value("SELECT count(*) FROM one"), "3");
}

TEST_F(SqlWindow, TheQuestionAboutATransactionCanKeepTheWindowOpen)
{
    execute(L"BEGIN; INSERT INTO one VALUES (9, 'nine');");
    std::wstring text;
    {
        Script script;
        answerBox(script, "Cancel", &text);
        EXPECT_FALSE(m_form->close());
    }
    EXPECT_TRUE(m_form->isVisible());
    {
        Script script;
        answerBox(script, "Cancel", &text);
        EXPECT_FALSE(m_form->openDatabase(file())) << "another database does not close it unasked";
    }
    EXPECT_TRUE(m_form->session()->connection().inTransaction());
    m_form->execute(Command::RollBack);
    EXPECT_FALSE(m_form->session()->connection().inTransaction());
    EXPECT_EQ(field(MainStatus::Connection).find(L"transaction"), std::wstring::npos);
}

TEST_F(SqlWindow, WhatWasExecutedIsInTheHistoryAndTheTextIsKept)
{
    execute(L"SELECT 1; SELECT 2;");
    EXPECT_EQ(sql().history().statements(), (std::vector<std::wstring>{L"SELECT 2", L"SELECT 1"}));
    const std::wstring path = OviAPI::localeToWide((m_folder.path() / "sql.dat").string());
    m_form->saveSql(path);
    MainForm other(m_options, TestApplication::get().resources());
    ASSERT_TRUE(other.create());
    other.loadSql(path);
    EXPECT_EQ(other.sqlPane().editor().text(), L"SELECT 1; SELECT 2;");
    EXPECT_EQ(other.sqlPane().history().statements().size(), 2U);
}

TEST_F(SqlWindow, EverythingIsReachedByTheKeyOfThePanes)
{
    execute(L"SELECT * FROM one");
    const VirtualKey f6(OviAPI::KeyF1 + 5);
    m_form->list().setFocus();
    for (OviAPI::WVisualObject* next : std::initializer_list<OviAPI::WVisualObject*>{
             &m_form->splitter(), &sql().editor(), &sql().splitter(), &sql().view(),
             &m_form->list()}) {
        InputDriver::key(f6);
        EXPECT_TRUE(waitFor([&] { return next->hasFocus(); }));
    }
}

TEST_F(SqlWindow, ItsBorderIsMovedByKey)
{
    const int before = sql().splitter().y();
    sql().splitter().setFocus();
    InputDriver::key(VirtualKey(OviAPI::KeyDown));
    EXPECT_TRUE(waitFor([&] { return sql().splitter().y() > before; }));
    EXPECT_EQ(sql().notice().y(), sql().splitter().geometry().bottom);
}

TEST_F(SqlWindow, ItsTextsFollowTheLanguage)
{
    execute(L"SELECT nme FROM one");
    m_form->setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(sql().notice().heading(), textOf(TextSqlFailed));
    EXPECT_GT(sql().notice().heading().at(0), L'\u0400');
    EXPECT_EQ(m_form->tabs().caption(0), textOf(TextTabRows));
    m_form->setLanguage(TypicalOptions::DefaultLanguage);
}

} // namespace
