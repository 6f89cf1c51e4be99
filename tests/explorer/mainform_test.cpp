// The main window, used as a user does.
#include <algorithm>
#include <cwctype>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>

#include "application.h"
#include "database.h"
#include "explorer/builddialog.h"
#include "explorer/mainform.h"
#include "explorer/opendialog.h"
#include "explorer/settingsdialog.h"
#include "explorer/textlookup.h"
#include "support.h"

namespace fs = std::filesystem;
using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

VirtualKey control(int key)
{
    return {key, OviAPI::ModifierControl};
}

int letter(char c)
{
    return OviAPI::KeyA + (c - 'A');
}

bool dialogIsOpen()
{
    return OviAPI::WForm::topModal() != nullptr;
}

bool noDialogIsOpen()
{
    return !dialogIsOpen();
}

class MainWindow : public testing::Test {
protected:
    MainWindow()
        : m_options(TestApplication::get().record)
    {
        m_options.initDefaults();
        m_options.Language = TypicalOptions::DefaultLanguage;
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->setSample(MachineData(fixtureFolder() / "machine"), sample());
        m_form->create();
        m_form->show(true);
        settle();
    }
    ~MainWindow() override { m_form.reset(); }

    fs::path sample() const { return m_folder.path() / "sample.db"; }
    fs::path file(const char* name) const { return m_folder.path() / name; }
    bool ready()
    {
        return waitFor([this] { return !m_form->isBusy(); });
    }
    void makeSmall()
    {
        TestDatabase made(file("small.db"));
        made.execute("CREATE TABLE one (id INTEGER PRIMARY KEY, name VARCHAR(20))");
        made.execute("INSERT INTO one VALUES (1, 'first'), (2, NULL), (3, 'third')");
        made.execute("CREATE TABLE empty (a INTEGER)");
        made.execute("CREATE VIEW both AS SELECT name FROM one");
    }
    void openSmall()
    {
        makeSmall();
        ASSERT_TRUE(m_form->openDatabase(file("small.db")));
        ASSERT_TRUE(ready());
    }
    void choose(const std::wstring& table)
    {
        const auto& tables = m_form->session()->tables();
        for (size_t i = 0; i < tables.size(); ++i) {
            if (tables[i].name == table)
                m_form->list().SetFocusCell(1, static_cast<long>(i) + 1);
        }
        ASSERT_TRUE(ready());
    }
    // Opens a dialog by key, types the path of the small database and leaves by another key.
    void typeSmallInto(const VirtualKey& opening, int leaving)
    {
        Script script;
        script.step(dialogIsOpen, [&] {
            InputDriver::type(file("small.db").wstring());
            InputDriver::key(VirtualKey(leaving));
        });
        script.step(noDialogIsOpen);
        InputDriver::key(opening);
        ASSERT_TRUE(waitFor([&] { return script.isDone(); }));
    }
    std::wstring field(MainStatus::Field f) { return m_form->status().field(f); }

    TemporaryFolder m_folder;
    ExplorerOptions& m_options;
    std::unique_ptr<MainForm> m_form;
};

TEST_F(MainWindow, SaysWhatToDoWhenNothingIsOpen)
{
    EXPECT_EQ(m_form->pane().notice().heading(), L"No database is open");
    EXPECT_NE(m_form->pane().notice().hint().find(L"Ctrl+O"), std::wstring::npos);
    EXPECT_EQ(field(MainStatus::Database), L"No database is open");
    EXPECT_EQ(m_form->title(), L"Database Explorer");
}

TEST_F(MainWindow, ShowsTheTablesOfADatabaseWithTheirRows)
{
    openSmall();
    TableList& list = m_form->list();
    EXPECT_EQ(list.GetRowCount(), 3);
    EXPECT_EQ(list.GetCellText(TableList::Name, 1), L"empty");
    EXPECT_EQ(list.GetCellText(TableList::Kind, 1), L"table");
    EXPECT_EQ(list.GetCellText(TableList::Rows, 1), L"0");
    EXPECT_EQ(list.GetCellText(TableList::Rows, 2), L"3");
    EXPECT_EQ(list.GetCellText(TableList::Kind, 3), L"view");
    EXPECT_EQ(list.GetCellText(TableList::Rows, 3), L"3");
}

TEST_F(MainWindow, CarriesTheFileNameInItsTitle)
{
    openSmall();
    EXPECT_EQ(m_form->title(), L"small.db - Database Explorer");
    EXPECT_EQ(field(MainStatus::Database), file("small.db").wstring());
}

TEST_F(MainWindow, RemembersWhatWasOpenedAndWhere)
{
    openSmall();
    EXPECT_EQ(m_options.LastDatabase, file("small.db").wstring());
    EXPECT_EQ(m_options.LastLoadDirectory, m_folder.path().wstring());
    EXPECT_EQ(m_options.LastAction, TypicalOptions::LoadAction);
}

TEST_F(MainWindow, ShowsTheRowsOfTheChosenTable)
{
    openSmall();
    choose(L"one");
    ASSERT_TRUE(m_form->pane().hasRows());
    EXPECT_EQ(m_form->pane().view().GetRowCount(), 3);
    EXPECT_EQ(m_form->pane().view().GetCellText(2, 3), L"third");
    EXPECT_EQ(field(MainStatus::Rows), L"3 rows");
    EXPECT_EQ(field(MainStatus::Place), L"Row 1, column id");
}

TEST_F(MainWindow, TellsTheStateOfAValue)
{
    openSmall();
    choose(L"one");
    m_form->pane().view().SetFocusCell(2, 2);
    EXPECT_EQ(field(MainStatus::Place), L"Row 2, column name");
    EXPECT_EQ(field(MainStatus::Value), L"NULL: no value");
    choose(L"both");
    EXPECT_EQ(field(MainStatus::Value).find(L"Read-only: "), 0U);
}

TEST_F(MainWindow, SaysWhatItIsConnectedTo)
{
    openSmall();
    const std::wstring text = field(MainStatus::Connection);
    EXPECT_EQ(text.find(L"SQLite 3."), 0U) << OviAPI::wideToUtf8(text);
    EXPECT_EQ(text.find(L"read-only"), std::wstring::npos);
    ASSERT_TRUE(m_form->openDatabase("sqlite:" + file("small.db").string() + "?mode=ro"));
    EXPECT_NE(field(MainStatus::Connection).find(L", read-only"), std::wstring::npos);
    m_form->setLanguage(TypicalOptions::Koi8Language);
    EXPECT_NE(field(MainStatus::Connection).find(textOf(TextStateReadOnly)), std::wstring::npos);
    m_form->closeDatabase();
    EXPECT_EQ(field(MainStatus::Connection), L"");
}

TEST_F(MainWindow, TheStatusLineReadsOutItsFieldsAndLeavesOutTheEmptyOnes)
{
    openSmall();
    choose(L"empty");
    EXPECT_EQ(m_form->status().paneCount(), 3) << "there is no row to be at";
    choose(L"one");
    m_form->pane().view().SetFocusCell(2, 2);
    EXPECT_EQ(m_form->status().paneCount(), 5);
    EXPECT_EQ(m_form->status().paneText(3), L"NULL: no value");
    EXPECT_NE(m_form->status().accessibleName().find(L"3 rows\nRow 2, column name\n"),
              std::wstring::npos);
    settle();
    for (int pane = 1; pane < 5; ++pane)
        EXPECT_EQ(m_form->status().paneRect(pane).left, m_form->status().paneRect(pane - 1).right);
}

int number(Command command)
{
    return static_cast<int>(command);
}

void pressTool(MainForm& form, Command command)
{
    const OviAPI::Rect button = form.toolBar().buttonRect(number(command));
    ASSERT_FALSE(button.isEmpty());
    InputDriver::click(form.toolBar(),
                       {(button.left + button.right) / 2, (button.top + button.bottom) / 2});
}

TEST_F(MainWindow, TheToolBarDoesWhatTheMenuDoes)
{
    EXPECT_FALSE(m_form->toolBar().isButtonEnabled(number(Command::Refresh)));
    openSmall();
    EXPECT_TRUE(m_form->toolBar().isButtonEnabled(number(Command::Refresh)));
    choose(L"empty");
    EXPECT_FALSE(m_form->toolBar().isButtonEnabled(number(Command::GoToRow)));
    choose(L"one");
    EXPECT_TRUE(m_form->toolBar().isButtonEnabled(number(Command::GoToRow)));
    TestDatabase(file("small.db")).execute("CREATE TABLE added (a INTEGER)");
    pressTool(*m_form, Command::Refresh);
    EXPECT_TRUE(waitFor([this] { return m_form->list().GetRowCount() == 4; }));
}

TEST_F(MainWindow, TheToolBarIsSwitchedOffAndOnAndThatIsKept)
{
    settle();
    const int with = m_form->clientHeight();
    m_form->execute(Command::ToolBar);
    EXPECT_FALSE(m_form->toolBar().isVisible());
    EXPECT_TRUE(waitFor([&] { return m_form->clientHeight() > with; }));
    EXPECT_EQ(m_form->list().height(), m_form->clientHeight());
    EXPECT_FALSE(m_options.ToolBar);
    m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
    ASSERT_TRUE(m_form->create());
    m_form->show(true);
    EXPECT_FALSE(m_form->toolBar().isVisible());
    m_form->execute(Command::ToolBar);
    EXPECT_TRUE(m_form->toolBar().isVisible());
    EXPECT_TRUE(m_options.ToolBar);
}

TEST_F(MainWindow, SaysThatADatabaseHasNoTables)
{
    std::ofstream(file("empty.db"));
    ASSERT_TRUE(m_form->openDatabase(file("empty.db")));
    ASSERT_TRUE(ready());
    EXPECT_EQ(m_form->pane().notice().heading(), L"This database has no tables");
    EXPECT_EQ(m_form->list().GetRowCount(), 0);
}

TEST_F(MainWindow, KeepsWhatIsOpenWhenAnotherFileFails)
{
    openSmall();
    choose(L"one");
    std::ofstream(file("text")) << std::string(5000, 'x');
    BoxReader boxes;
    EXPECT_FALSE(m_form->openDatabase(file("text")));
    EXPECT_FALSE(m_form->openDatabase(file("missing.db")));
    EXPECT_FALSE(m_form->openDatabase(m_folder.path()));
    ASSERT_EQ(boxes.texts().size(), 3U);
    EXPECT_EQ(boxes.titles()[0], L"Error");
    EXPECT_NE(boxes.texts()[0].find(file("text").wstring()), std::wstring::npos);
    EXPECT_NE(boxes.texts()[0].find(L"is not a database"), std::wstring::npos);
    EXPECT_NE(boxes.texts()[1].find(L"There is no such file."), std::wstring::npos);
    EXPECT_NE(boxes.texts()[2].find(L"This is a folder"), std::wstring::npos);
    EXPECT_EQ(m_form->title(), L"small.db - Database Explorer");
    EXPECT_EQ(m_form->pane().view().GetCellText(2, 1), L"first");
}

TEST_F(MainWindow, SaysWhyInTheLanguageOfTheUser)
{
    m_form->setLanguage(TypicalOptions::Koi8Language);
    BoxReader boxes;
    m_form->openDatabase(file("missing.db"));
    EXPECT_EQ(boxes.titles().at(0), textOf(TextErrorTitle));
    EXPECT_NE(boxes.last().find(textOf(TextErrorMissing)), std::wstring::npos);
    EXPECT_GT(textOf(TextErrorMissing).at(0), L'\u0400');
}

TEST_F(MainWindow, ShowsWhyAViewCannotBeRead)
{
    makeSmall();
    TestDatabase(file("small.db")).execute("DROP TABLE one");
    ASSERT_TRUE(m_form->openDatabase(file("small.db")));
    choose(L"both");
    EXPECT_FALSE(m_form->pane().hasRows());
    EXPECT_EQ(m_form->pane().notice().heading(), L"This table cannot be shown");
    EXPECT_NE(m_form->pane().notice().hint().find(L"one"), std::wstring::npos);
    EXPECT_EQ(m_form->list().GetCellText(TableList::Rows, 2), L"?");
}

TEST_F(MainWindow, ShowsTheErrorOfARowThatHasGone)
{
    makeSmall();
    TestDatabase other(file("small.db"));
    other.execute("INSERT INTO one (id) WITH RECURSIVE n (i) AS "
                  "(SELECT 4 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) SELECT i FROM n");
    ASSERT_TRUE(m_form->openDatabase(file("small.db")));
    choose(L"one");
    other.execute("DELETE FROM one WHERE id = 4000"); // not read yet
    m_form->pane().view().SetFocusCell(1, 4000);
    EXPECT_EQ(field(MainStatus::Value).find(L"Error: "), 0U)
        << OviAPI::wideToUtf8(field(MainStatus::Value));
    m_form->pane().view().SetFocusCell(1, 4001);
    EXPECT_EQ(m_form->pane().view().GetCellText(1, 4001), L"4001");
}

TEST_F(MainWindow, OpensTablesWithQuotesInTheirNames)
{
    TestDatabase made(file("q.db"));
    made.execute("CREATE TABLE \"a\"\"b; drop\" (\"x\"\"y\" INTEGER)");
    made.execute("INSERT INTO \"a\"\"b; drop\" VALUES (42)");
    ASSERT_TRUE(m_form->openDatabase(file("q.db")));
    ASSERT_TRUE(ready());
    EXPECT_EQ(m_form->list().GetCellText(TableList::Rows, 1), L"1");
    EXPECT_EQ(m_form->pane().view().GetCellText(1, 1), L"42");
    EXPECT_EQ(m_form->pane().place().column, L"x\"y");
}

TEST_F(MainWindow, OpensATableOfTwoThousandColumns)
{
    std::string columns;
    std::string values;
    for (int i = 1; i <= 2000; ++i) {
        columns += (i > 1 ? ", c" : "c") + std::to_string(i) + " INTEGER";
        values += (i > 1 ? ", " : "") + std::to_string(i);
    }
    TestDatabase made(file("wide.db"));
    made.execute("CREATE TABLE wide (" + columns + ")");
    made.execute("INSERT INTO wide VALUES (" + values + ")");
    ASSERT_TRUE(m_form->openDatabase(file("wide.db")));
    ASSERT_TRUE(ready());
    ASSERT_EQ(m_form->pane().view().GetColCount(), 2000);
    EXPECT_EQ(m_form->pane().view().GetCellText(2000, 1), L"2000");
    EXPECT_TRUE(m_form->pane().view().SetFocusCell(2000, 1));
    EXPECT_EQ(field(MainStatus::Place), L"Row 1, column c2000");
}

TEST_F(MainWindow, MakesTheSampleOnFirstUse)
{
    ASSERT_TRUE(m_form->openSample());
    ASSERT_TRUE(ready());
    EXPECT_TRUE(fs::exists(sample()));
    choose(L"measurement");
    EXPECT_EQ(field(MainStatus::Rows), L"20\u00A0000 rows");
    const auto written = fs::last_write_time(sample());
    ASSERT_TRUE(m_form->openSample());
    EXPECT_EQ(fs::last_write_time(sample()), written);
}

TEST_F(MainWindow, OpensWhatWasOpenLast)
{
    makeSmall();
    m_options.LastDatabase = file("small.db").wstring();
    m_form->openLast();
    EXPECT_EQ(m_form->title(), L"small.db - Database Explorer");
}

TEST_F(MainWindow, OpensTheSampleWhenTheLastDatabaseHasGone)
{
    m_options.LastDatabase = L"/nowhere/gone.db";
    BoxReader boxes;
    m_form->openLast();
    EXPECT_EQ(boxes.texts().size(), 1U);
    EXPECT_EQ(m_form->title(), L"sample.db - Database Explorer");
}

TEST_F(MainWindow, ClosesTheDatabaseByKey)
{
    openSmall();
    InputDriver::key(control(letter('W')));
    ASSERT_TRUE(waitFor([this] { return !m_form->session(); }));
    EXPECT_EQ(m_form->list().GetRowCount(), 0);
    EXPECT_EQ(m_form->title(), L"Database Explorer");
}

TEST_F(MainWindow, AsksForAPathByKey)
{
    makeSmall();
    m_options.setLastLoadDirectory(m_folder.path().wstring().c_str());
    Script script;
    script.step(dialogIsOpen, [] {
        InputDriver::type(L"small.db");
        InputDriver::key(VirtualKey(OviAPI::KeyEnter));
    });
    InputDriver::key(control(letter('O')));
    ASSERT_TRUE(waitFor([this] { return m_form->session() != nullptr; }));
    EXPECT_EQ(m_form->title(), L"small.db - Database Explorer");
}

TEST_F(MainWindow, EscapeLeavesTheDialogWithoutOpening)
{
    makeSmall();
    typeSmallInto(control(letter('O')), OviAPI::KeyEscape);
    EXPECT_EQ(m_form->session(), nullptr);
}

TEST_F(MainWindow, ConnectsByKeyAndRemembersIt)
{
    makeSmall();
    typeSmallInto({letter('O'), OviAPI::ModifierControl | OviAPI::ModifierShift}, OviAPI::KeyEnter);
    ASSERT_NE(m_form->session(), nullptr);
    EXPECT_EQ(m_form->title(), L"small.db - Database Explorer");
    ASSERT_EQ(m_options.Connections.all().size(), 1U);
    EXPECT_EQ(m_options.Connections.all()[0].path, file("small.db").wstring());
}

TEST_F(MainWindow, WhatWasOpenedByItsPathIsARecentConnection)
{
    makeSmall();
    typeSmallInto(control(letter('O')), OviAPI::KeyEnter);
    ASSERT_EQ(m_options.Connections.all().size(), 1U);
    EXPECT_EQ(m_options.Connections.all()[0].path, file("small.db").wstring());
}

TEST_F(MainWindow, SettingsAreSeenBehindTheirDialogAndTakenBack)
{
    openSmall();
    choose(L"one");
    Script script;
    script.step(dialogIsOpen, [this] {
        auto& dialog = dynamic_cast<SettingsDialog&>(*OviAPI::WForm::topModal());
        dialog.sizeField(WExtForm::fkRecordView).setValue(21);
        EXPECT_EQ(m_form->pane().view().font().size(), 21);
        dialog.sizeField(WExtForm::fkControls).setValue(15);
        EXPECT_EQ(m_form->font().size(), 15);
        InputDriver::key(VirtualKey(OviAPI::KeyEscape));
    });
    script.step(noDialogIsOpen);
    InputDriver::key({OviAPI::KeyComma, OviAPI::ModifierControl, L','});
    ASSERT_TRUE(waitFor([&] { return script.isDone(); }));
    EXPECT_EQ(m_form->pane().view().font().size(), 10);
    EXPECT_EQ(m_form->font().size(), 10);
}

TEST_F(MainWindow, TheBuildingOfTheSampleCanBeStopped)
{
    Script script;
    script.step(dialogIsOpen, [] { InputDriver::key(VirtualKey(OviAPI::KeyEscape)); });
    EXPECT_FALSE(m_form->openSample());
    EXPECT_TRUE(fs::is_empty(m_folder.path()));
    EXPECT_EQ(m_form->session(), nullptr);
}

TEST_F(MainWindow, MovesBetweenThePanesByKey)
{
    openSmall();
    choose(L"one");
    m_form->list().setFocus();
    const VirtualKey f6(OviAPI::KeyF1 + 5);
    InputDriver::key(f6);
    EXPECT_TRUE(waitFor([this] { return m_form->splitter().hasFocus(); }));
    const int before = m_options.Splitter;
    InputDriver::key(VirtualKey(OviAPI::KeyRight));
    EXPECT_TRUE(waitFor([&] { return m_options.Splitter > before; }));
    InputDriver::key(f6);
    EXPECT_TRUE(waitFor([this] { return m_form->pane().view().hasFocus(); }));
    InputDriver::key(f6);
    EXPECT_TRUE(waitFor([this] { return m_form->list().hasFocus(); }));
}

TEST_F(MainWindow, MovesTheBorderWithTheMouse)
{
    const int before = m_form->list().width();
    InputDriver::drag(m_form->splitter(), {3, 50}, {43, 60});
    ASSERT_TRUE(waitFor([&] { return m_form->list().width() != before; }));
    settle();
    EXPECT_EQ(m_form->list().width(), before + 40);
    EXPECT_EQ(m_options.Splitter, before + 40);
    EXPECT_EQ(m_form->tabs().x(), m_form->splitter().geometry().right);
}

TEST_F(MainWindow, GoesToARowByItsNumber)
{
    openSmall();
    choose(L"one");
    Script script;
    script.step(dialogIsOpen, [] {
        InputDriver::type(L"7"); // there is no such row: the dialog stays
        InputDriver::key(VirtualKey(OviAPI::KeyEnter));
        InputDriver::type(L"3");
        InputDriver::key(VirtualKey(OviAPI::KeyEnter));
    });
    script.step(noDialogIsOpen);
    InputDriver::key(control(letter('G')));
    ASSERT_TRUE(waitFor([&] { return script.isDone(); }));
    EXPECT_EQ(m_form->pane().view().GetRow(), 3);
}

TEST_F(MainWindow, RefreshShowsWhatOthersChanged)
{
    openSmall();
    choose(L"one");
    m_form->pane().view().SetFocusCell(2, 2);
    TestDatabase other(file("small.db"));
    other.execute("INSERT INTO one VALUES (4, 'fourth')");
    other.execute("CREATE TABLE added (a INTEGER)");
    m_form->execute(Command::Refresh);
    ASSERT_TRUE(ready());
    EXPECT_EQ(m_form->list().GetRowCount(), 4);
    EXPECT_EQ(m_form->pane().table(), L"one");
    EXPECT_EQ(m_form->pane().view().GetRowCount(), 4);
    EXPECT_EQ(m_form->pane().view().GetRow(), 2);
    EXPECT_EQ(m_form->pane().view().GetCol(), 2);
}

TEST_F(MainWindow, TextGrowsAndShrinksByKind)
{
    const int controls = m_options.FontControls.size();
    const int tables = m_options.FontGrid.size();
    m_form->execute(Command::TablesLarger);
    EXPECT_EQ(m_form->list().font().size(), tables + 1);
    EXPECT_EQ(m_form->status().font().size(), controls);
    m_form->execute(Command::ControlsLarger);
    EXPECT_EQ(m_form->status().font().size(), controls + 1);
    m_form->execute(Command::NormalSize);
    EXPECT_EQ(m_form->list().font().size(), tables);
    for (int i = 0; i < 50; ++i)
        m_form->execute(Command::Smaller);
    EXPECT_GE(m_form->status().font().size(), 6);
}

void collect(const std::vector<std::unique_ptr<OviAPI::WMenuItem>>& items,
             std::vector<std::wstring>& texts)
{
    for (const auto& item : items) {
        if (!item->isSeparator())
            texts.push_back(item->text());
        collect(item->items(), texts);
    }
}

bool isLatin(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

TEST_F(MainWindow, NoEnglishIsLeftInRussian)
{
    openSmall();
    m_form->setLanguage(TypicalOptions::Koi8Language);
    std::vector<std::wstring> texts;
    collect(m_form->mainMenu().menu().items(), texts);
    for (int column = 1; column <= 3; ++column)
        texts.push_back(m_form->list().GetDataSet()->GetColInfo(column)->caption);
    texts.push_back(m_form->list().GetCellText(TableList::Kind, 1));
    texts.push_back(m_form->list().GetCellText(TableList::Kind, 3));
    texts.push_back(field(MainStatus::Rows));
    texts.push_back(m_form->list().accessibleName());
    EXPECT_GT(texts.size(), 30U);
    for (const std::wstring& text : texts) {
        if (text.find(L"English") != std::wstring::npos)
            continue; // each language is called by its own name
        EXPECT_FALSE(text.empty());
        std::wstring words = text;
        std::erase(words, L'&');
        words = words.substr(0, words.find(L'\t')); // a key stands behind it
        for (const std::wstring_view name : {L"SQL", L"NULL"})
            if (const size_t at = words.find(name); at != std::wstring::npos)
                words.erase(at, name.size());
        EXPECT_TRUE(std::none_of(words.begin(), words.end(), isLatin)) << OviAPI::wideToUtf8(text);
    }
    EXPECT_NE(m_form->title().find(textOf(TextAppTitle)), std::wstring::npos);
}

TEST_F(MainWindow, EveryTextExistsInBothLanguages)
{
    for (int id = 50001; id < 52000; ++id) {
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        const std::wstring english = textOf(static_cast<TextId>(id));
        TestApplication::get().setLanguage(TypicalOptions::Koi8Language);
        const std::wstring russian = textOf(static_cast<TextId>(id));
        EXPECT_EQ(english.empty(), russian.empty()) << id;
    }
}

TEST_F(MainWindow, SwitchesTheLanguageBackByKey)
{
    InputDriver::key(control(letter('L')));
    ASSERT_TRUE(waitFor([this] { return m_options.Language == TypicalOptions::Koi8Language; }));
    EXPECT_NE(m_form->pane().notice().heading(), L"No database is open");
    InputDriver::key(control(letter('L')));
    ASSERT_TRUE(waitFor([this] { return m_options.Language != TypicalOptions::Koi8Language; }));
    EXPECT_EQ(m_form->pane().notice().heading(), L"No database is open");
}

// What the tables say of themselves, in both languages, with the cells still in the cache.
TEST_F(MainWindow, SwitchesTheLanguageOfReasonsAtOnce)
{
    makeSmall();
    TestDatabase made(file("small.db"));
    made.execute("CREATE TABLE odd (a INTEGER)");
    made.execute("INSERT INTO odd VALUES ('n/a')");
    ASSERT_TRUE(m_form->openDatabase(file("small.db")));
    ASSERT_TRUE(ready());
    choose(L"odd");
    EXPECT_EQ(field(MainStatus::Value),
              L"Shown in part: The stored value does not have the type of its column: n/a");
    m_form->setLanguage(TypicalOptions::Koi8Language);
    const std::wstring russian = field(MainStatus::Value);
    EXPECT_NE(
        russian.find(
            L"\u043D\u0435 \u0442\u043E\u0433\u043E \u0442\u0438\u043F\u0430"), // not of the type
        std::wstring::npos)
        << OviAPI::wideToUtf8(russian);
    EXPECT_NE(russian.find(L"n/a"), std::wstring::npos);
    EXPECT_EQ(russian.find(L"stored"), std::wstring::npos);
    m_form->setLanguage(TypicalOptions::DefaultLanguage);
    EXPECT_NE(field(MainStatus::Value).find(L"stored value"), std::wstring::npos);
}

TEST_F(MainWindow, SwitchesTheLanguageOfAnEmptyTableAtOnce)
{
    openSmall();
    choose(L"empty");
    EXPECT_EQ(m_form->pane().view().GetEmptyText(), L"No rows");
    m_form->setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(m_form->pane().view().GetEmptyText(),
              L"\u041D\u0435\u0442 \u0441\u0442\u0440\u043E\u043A");
}

TEST_F(MainWindow, SwitchesTheLanguageOfAFailureAndKeepsTheWordsOfTheEngine)
{
    makeSmall();
    TestDatabase(file("small.db")).execute("CREATE VIEW broken AS SELECT * FROM nowhere");
    ASSERT_TRUE(m_form->openDatabase(file("small.db")));
    ASSERT_TRUE(ready());
    choose(L"broken");
    const auto& tables = m_form->session()->tables();
    const auto row = 1 +
                     std::find_if(tables.begin(), tables.end(),
                                  [](const auto& t) { return t.name == L"broken"; }) -
                     tables.begin();
    const auto countReason = [&] {
        OviAPI::aCDataSet& list = *m_form->list().GetDataSet();
        return list.SetRow(row) == 0 ? list.CellReason(TableList::Rows) : std::wstring();
    };
    const auto says = [&](const std::wstring& sentence) {
        for (const std::wstring& text : {m_form->pane().notice().hint(), countReason()}) {
            EXPECT_NE(text.find(sentence), std::wstring::npos) << OviAPI::wideToUtf8(text);
            EXPECT_NE(text.find(L"no such table"), std::wstring::npos) << OviAPI::wideToUtf8(text);
        }
    };
    says(L"The statement is not correct");
    m_form->setLanguage(TypicalOptions::Koi8Language);
    says(L"\u0412 \u043E\u043F\u0435\u0440\u0430\u0442\u043E\u0440\u0435 "
         L"\u043E\u0448\u0438\u0431\u043A\u0430");
    m_form->setLanguage(TypicalOptions::DefaultLanguage);
    says(L"The statement is not correct");
}

TEST_F(MainWindow, MnemonicsOfAMenuAreUniqueInBothLanguages)
{
    for (const auto language : {TypicalOptions::DefaultLanguage, TypicalOptions::Koi8Language}) {
        m_form->setLanguage(language);
        std::vector<const std::vector<std::unique_ptr<OviAPI::WMenuItem>>*> menus{
            &m_form->mainMenu().menu().items()};
        for (size_t i = 0; i < menus.size(); ++i) {
            std::set<wchar_t> marks;
            for (const auto& item : *menus[i]) {
                if (!item->items().empty())
                    menus.push_back(&item->items());
                const size_t mark = item->text().find(L'&');
                if (item->isSeparator())
                    continue;
                ASSERT_NE(mark, std::wstring::npos) << OviAPI::wideToUtf8(item->text());
                const auto letterOf = static_cast<wchar_t>(
                    std::towlower(static_cast<wint_t>(item->text()[mark + 1])));
                EXPECT_TRUE(marks.insert(letterOf).second) << OviAPI::wideToUtf8(item->text());
            }
        }
    }
}

TEST_F(MainWindow, KeepsItsPlaceAndSizeInTheOptions)
{
    m_form->move(30, 40, 700, 500);
    settle();
    m_form->close();
    EXPECT_EQ(m_options.MainFormRect, (OviAPI::Rect{30, 40, 730, 540}));
    EXPECT_FALSE(m_options.MainFormMaximized);
}

TEST_F(MainWindow, FitsInTheSmallestScreen)
{
    m_form->move(0, 0, 640, 480);
    settle();
    EXPECT_EQ(m_form->status().toScreen({0, 0}).y, m_form->toScreen({0, m_form->clientHeight()}).y);
    EXPECT_EQ(m_form->tabs().geometry().bottom, m_form->clientHeight());
    EXPECT_GE(m_form->pane().width(), 110);
    EXPECT_EQ(m_form->tabs().geometry().right, m_form->clientWidth());
}

TEST_F(MainWindow, TextMayGrowUntilScrollBarsComeAndGo)
{
    openSmall();
    m_form->move(0, 0, 640, 480);
    m_form->setLanguage(TypicalOptions::Koi8Language);
    for (int i = 0; i < 12; ++i) {
        m_form->execute(Command::Larger);
        settle();
        EXPECT_EQ(m_form->tabs().geometry().bottom, m_form->clientHeight());
        EXPECT_LE(m_form->status().height(), 100);
    }
}

TEST(TableCounterOf, GivesUpACountThatTakesTooLong)
{
    const TemporaryFolder folder;
    const fs::path path = folder.path() / "slow.db";
    {
        TestDatabase made(path);
        made.execute("CREATE TABLE n (a INTEGER)");
        made.execute("INSERT INTO n VALUES (1)");
        made.execute("CREATE VIEW endless AS WITH RECURSIVE r (i) AS "
                     "(SELECT 1 UNION ALL SELECT i + 1 FROM r) SELECT i FROM r");
    }
    DatabaseSession session(path);
    TableCounter counter(std::chrono::milliseconds(100));
    std::vector<TableCount> counts;
    counter.start(session.connection(),
                  {{L"endless", true, L""}, {L"n", false, L""}, {L"none", false, L"main"}},
                  [&](size_t table, const TableCount& count) {
                      EXPECT_EQ(table, counts.size());
                      counts.push_back(count);
                  });
    ASSERT_TRUE(waitFor([&] { return !counter.isRunning(); }));
    ASSERT_EQ(counts.size(), 3U);
    EXPECT_EQ(counts[0].state, TableCount::GivenUp);
    EXPECT_EQ(counts[1].state, TableCount::Known);
    EXPECT_EQ(counts[1].rows, 1);
    EXPECT_EQ(counts[2].state, TableCount::Failed);
    EXPECT_NE(counts[2].error.code(), 0);
}

TEST(TableCounterOf, CanBeLeftWhileItCounts)
{
    const TemporaryFolder folder;
    const fs::path path = folder.path() / "slow.db";
    TestDatabase(path).execute("CREATE VIEW endless AS WITH RECURSIVE r (i) AS "
                               "(SELECT 1 UNION ALL SELECT i + 1 FROM r) SELECT i FROM r");
    DatabaseSession session(path);
    int reports = 0;
    {
        TableCounter counter;
        counter.start(session.connection(), session.tables(),
                      [&](size_t, const TableCount&) { ++reports; });
        settle();
    }
    settle();
    EXPECT_EQ(reports, 0);
}

} // namespace
