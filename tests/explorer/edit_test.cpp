// Rows edited in the main window, and the rows that refer to them.
#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>

#include "app/yesnoconfirmdlg.h"
#include "application.h"
#include "database.h"
#include "dialogs.h"
#include "explorer/mainform.h"
#include "explorer/textlookup.h"
#include "support.h"

namespace fs = std::filesystem;
using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

using Texts = std::vector<std::string>;

class Editing : public testing::Test {
protected:
    Editing()
        : m_options(TestApplication::get().record)
        , m_other(file())
    {
        m_options.initDefaults();
        m_options.Language = TypicalOptions::DefaultLanguage;
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        m_other.execute("CREATE TABLE section (id INTEGER PRIMARY KEY, name VARCHAR(20) NOT NULL)");
        m_other.execute("CREATE TABLE package (id INTEGER PRIMARY KEY, name VARCHAR(20) UNIQUE,"
                        " section_id INTEGER REFERENCES section, size INTEGER DEFAULT 7)");
        m_other.execute("CREATE TABLE file (id INTEGER PRIMARY KEY,"
                        " package_id INTEGER REFERENCES package (id), path VARCHAR(40))");
        m_other.execute("INSERT INTO section VALUES (1, 'admin'), (2, 'games'), (3, 'web')");
        m_other.execute("INSERT INTO package VALUES (10, 'cron', 1, 1), (11, 'chess', 2, 2),"
                        " (12, 'go', 2, 3)");
        m_other.execute("INSERT INTO file VALUES (100, 10, '/etc/crontab'), (101, 12, '/usr/go'),"
                        " (102, 12, '/usr/bin/go')");
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->create();
        m_form->show(true);
        EXPECT_TRUE(m_form->openDatabase(file().string()));
        EXPECT_TRUE(ready());
    }
    ~Editing() override
    {
        m_form.reset();
        BackgroundTask::waitForAbandoned();
    }

    fs::path file() const { return m_folder.path() / "a.db"; }
    bool ready()
    {
        return waitFor([this] { return !m_form->isBusy(); });
    }
    OviAPI::aCRecordView& view() { return m_form->pane().view(); }
    void choose(const std::wstring& table)
    {
        const auto& tables = m_form->session()->tables();
        for (size_t i = 0; i < tables.size(); ++i) {
            if (tables[i].name == table)
                m_form->list().SetFocusCell(1, static_cast<long>(i) + 1);
        }
        ASSERT_TRUE(ready());
        view().setFocus();
    }
    // Types into a cell and leaves it by a key.
    void typeInto(int col, long row, const std::wstring& text, int leaving = OviAPI::KeyEnter)
    {
        view().setFocus();
        ASSERT_TRUE(view().SetFocusCell(col, row));
        InputDriver::type(text);
        InputDriver::key(VirtualKey(leaving));
        settle();
    }
    void press(OviAPI::WButton& button)
    {
        button.push();
        settle();
    }

    TemporaryFolder m_folder;
    ExplorerOptions& m_options;
    TestDatabase m_other; // another session
    std::unique_ptr<MainForm> m_form;
};

TEST_F(Editing, WhatIsTypedIntoACellIsStored)
{
    choose(L"section");
    typeInto(2, 1, L"O'Brien");
    EXPECT_EQ(m_other.value("SELECT name FROM section WHERE id = 1"), "O'Brien");
    EXPECT_EQ(view().GetCellText(2, 1), L"O'Brien");
    EXPECT_FALSE(view().IsEditing());
}

TEST_F(Editing, EscapeTakesBackWhatWasTyped)
{
    choose(L"section");
    typeInto(2, 1, L"nothing", OviAPI::KeyEscape);
    EXPECT_EQ(m_other.value("SELECT name FROM section WHERE id = 1"), "admin");
    EXPECT_EQ(view().GetCellText(2, 1), L"admin");
}

TEST_F(Editing, ANewRowShowsWhatTheDatabaseMadeOfIt)
{
    choose(L"package");
    InputDriver::key(VirtualKey(OviAPI::KeyInsert));
    settle();
    ASSERT_TRUE(m_form->pane().rows()->HasVirtualRow());
    typeInto(2, 4, L"vim", OviAPI::KeyUp);
    ASSERT_TRUE(waitFor([&] { return !m_form->pane().rows()->HasVirtualRow(); }));
    EXPECT_EQ(view().GetRowCount(), 4);
    EXPECT_EQ(view().GetCellText(1, 4), L"13");
    EXPECT_EQ(view().GetCellText(2, 4), L"vim");
    EXPECT_EQ(view().GetCellText(4, 4), L"7") << "the default of the column";
    EXPECT_EQ(view().GetCellWord(3, 4), L"NULL");
    EXPECT_EQ(m_form->list().countText(1), L"4");
}

TEST_F(Editing, ARowIsDeletedOnceTheUserHasSaidYes)
{
    choose(L"file");
    ASSERT_TRUE(view().SetFocusCell(1, 2));
    Script script;
    script.step(confirmIsOpen, [] { InputDriver::key(VirtualKey(OviAPI::KeyEscape)); });
    script.step([] { return !modalIsOpen(); },
                [] {
                    InputDriver::key({OviAPI::KeyDelete, OviAPI::ModifierControl});
                });
    script.step(confirmIsOpen, [] { InputDriver::key(VirtualKey(OviAPI::KeyEnter)); });
    script.step([] { return !modalIsOpen(); });
    InputDriver::key({OviAPI::KeyDelete, OviAPI::ModifierControl});
    ASSERT_TRUE(waitFor([&] { return script.isDone(); }));
    EXPECT_EQ(m_other.rows("SELECT id FROM file ORDER BY id"), (Texts{"100", "102"}));
    EXPECT_EQ(view().GetRowCount(), 2);
    EXPECT_EQ(m_form->list().countText(0), L"2");
}

TEST_F(Editing, ARememberedAnswerDeletesWithoutAsking)
{
    m_options.DeleteRow.Value = TypicalConfirm::Yes;
    choose(L"file");
    ASSERT_TRUE(view().SetFocusCell(1, 1));
    InputDriver::key({OviAPI::KeyDelete, OviAPI::ModifierControl});
    ASSERT_TRUE(waitFor([&] { return view().GetRowCount() == 2; }));
    EXPECT_EQ(m_other.rows("SELECT id FROM file ORDER BY id"), (Texts{"101", "102"}));
}

TEST_F(Editing, NullAndEmptyTextAreTwoThings)
{
    choose(L"file");
    typeInto(3, 1, L"x");
    typeInto(3, 1, L"", OviAPI::KeyF1 + 1);
    InputDriver::key(VirtualKey(OviAPI::KeyDelete)); // everything is selected
    InputDriver::key(VirtualKey(OviAPI::KeyEnter));
    settle();
    EXPECT_EQ(m_other.value("SELECT path IS NULL, length(path) FROM file WHERE id = 100"), "0|0");
    ASSERT_TRUE(view().SetFocusCell(3, 1));
    m_form->execute(Command::SetNull);
    settle();
    EXPECT_EQ(m_other.value("SELECT path IS NULL FROM file WHERE id = 100"), "1");
    EXPECT_EQ(view().GetCellWord(3, 1), L"NULL");
}

TEST_F(Editing, AChangeOfAnotherSessionIsNeitherLostNorHidden)
{
    choose(L"section");
    ASSERT_EQ(view().GetCellText(2, 2), L"games");
    m_other.execute("UPDATE section SET name = 'theirs' WHERE id = 2");
    typeInto(2, 2, L"mine");
    ActionBar& bar = m_form->pane().conflict();
    ASSERT_TRUE(bar.isVisible());
    EXPECT_EQ(bar.text(), textOf(TextConflictChanged));
    EXPECT_EQ(m_other.value("SELECT name FROM section WHERE id = 2"), "theirs");
    EXPECT_TRUE(view().IsEditing());

    press(bar.button(0));
    EXPECT_EQ(m_form->pane().rows()->GetCellText(2, 2), L"theirs");
    ASSERT_TRUE(bar.isVisible());
    EXPECT_EQ(m_other.value("SELECT name FROM section WHERE id = 2"), "theirs");
    EXPECT_TRUE(view().IsEditing());

    press(bar.button(1));
    EXPECT_EQ(m_other.value("SELECT name FROM section WHERE id = 2"), "mine");
    EXPECT_FALSE(bar.isVisible());
    EXPECT_FALSE(view().IsEditing());
}

TEST_F(Editing, GivingUpShowsWhatTheOtherSessionHasMade)
{
    choose(L"section");
    view().GetCellText(2, 2);
    m_other.execute("UPDATE section SET name = 'theirs' WHERE id = 2");
    typeInto(2, 2, L"mine");
    ActionBar& bar = m_form->pane().conflict();
    ASSERT_TRUE(bar.isVisible());
    press(bar.button(2));
    EXPECT_FALSE(bar.isVisible());
    EXPECT_FALSE(view().IsEditing());
    EXPECT_EQ(view().GetCellText(2, 2), L"theirs");
    EXPECT_EQ(m_other.value("SELECT name FROM section WHERE id = 2"), "theirs");
}

TEST_F(Editing, ARowThatAnotherSessionHasDeletedCanOnlyBeGivenUp)
{
    choose(L"section");
    view().GetCellText(2, 3);
    m_other.execute("DELETE FROM section WHERE id = 3");
    typeInto(2, 3, L"mine");
    ActionBar& bar = m_form->pane().conflict();
    ASSERT_TRUE(bar.isVisible());
    EXPECT_EQ(bar.text(), textOf(TextConflictDeleted));
    EXPECT_FALSE(bar.button(0).isVisible());
    EXPECT_FALSE(bar.button(1).isVisible());
    press(bar.button(2));
    EXPECT_FALSE(bar.isVisible());
    EXPECT_EQ(m_other.value("SELECT count(*) FROM section WHERE id = 3"), "0");
}

// What is refused stays until the user gives it up, whatever he turns to.
struct Turn {
    const char* name;
    Command command;
};

class TurningAway : public Editing, public testing::WithParamInterface<Turn> {};

TEST_P(TurningAway, AsksBeforeWhatWasTypedGoes)
{
    choose(L"package");
    typeInto(2, 1, L"chess"); // there is one already
    ASSERT_TRUE(view().IsEditing());
    BoxReader boxes; // Enter presses the default button: to stay
    m_form->execute(GetParam().command);
    settle();
    ASSERT_EQ(boxes.titles(), std::vector<std::wstring>{textOf(TextEditTitle)});
    EXPECT_NE(boxes.last().find(L"UNIQUE"), std::wstring::npos) << "the reason";
    EXPECT_TRUE(view().IsEditing());
    EXPECT_TRUE(m_form->isVisible());
    EXPECT_NE(m_form->session(), nullptr);
    EXPECT_EQ(m_form->pane().table(), L"package");
    view().GiveUpEdit();
    EXPECT_EQ(m_other.value("SELECT name FROM package WHERE id = 10"), "cron");
}

INSTANTIATE_TEST_SUITE_P(To, TurningAway,
                         testing::Values(Turn{"Refresh", Command::Refresh},
                                         Turn{"Close", Command::Close},
                                         Turn{"Exit", Command::Exit}),
                         [](const auto& turn) { return turn.param.name; });

TEST_F(Editing, ChoosingAnotherTableAsksAndComesBack)
{
    choose(L"package");
    typeInto(2, 1, L"chess");
    ASSERT_TRUE(view().IsEditing());
    const BoxReader boxes;
    m_form->list().SetFocusCell(1, 3);
    ASSERT_TRUE(ready());
    EXPECT_EQ(boxes.texts().size(), 1U);
    EXPECT_EQ(m_form->pane().table(), L"package");
    EXPECT_EQ(m_form->list().currentTable(), 1);
    EXPECT_TRUE(view().IsEditing());
    view().GiveUpEdit();
}

TEST_F(Editing, WhatCanBeStoredIsStoredBeforeTheRowsGo)
{
    choose(L"package");
    view().setFocus();
    ASSERT_TRUE(view().SetFocusCell(2, 1));
    InputDriver::type(L"anacron");
    settle();
    ASSERT_TRUE(view().HasPendingEdit());
    m_form->execute(Command::Refresh);
    ASSERT_TRUE(ready());
    EXPECT_EQ(m_other.value("SELECT name FROM package WHERE id = 10"), "anacron");
    EXPECT_EQ(view().GetCellText(2, 1), L"anacron");
}

TEST_F(Editing, AViewTellsWhyItCannotBeEdited)
{
    m_other.execute("CREATE VIEW names AS SELECT name FROM section");
    m_form->execute(Command::Refresh);
    ASSERT_TRUE(ready());
    choose(L"names");
    ASSERT_TRUE(view().SetFocusCell(1, 1));
    EXPECT_FALSE(m_form->pane().canChange());
    EXPECT_FALSE(m_form->pane().canAdd());
    EXPECT_FALSE(m_form->pane().place().value.empty());
    InputDriver::type(L"x");
    settle();
    EXPECT_FALSE(view().IsEditing());
}

// --- referring rows

class Details : public Editing {
protected:
    DetailPane& detail(size_t level = 1) { return m_form->area().detail(level); }
    OviAPI::aCRecordView& rows(size_t level = 1) { return detail(level).rows().view(); }
    std::wstring shown(size_t level, int col)
    {
        std::wstring all;
        for (long row = 1; row <= rows(level).GetRowCount(); ++row)
            all += rows(level).GetCellText(col, row) + L" ";
        return all;
    }
    void open(const std::wstring& table)
    {
        choose(table);
        m_form->execute(Command::AddDetails);
        ASSERT_TRUE(ready());
    }
};

TEST_F(Details, FollowTheRowWithTheFocus)
{
    open(L"section");
    EXPECT_EQ(detail().table().name, L"package");
    EXPECT_EQ(shown(1, 2), L"cron ");
    view().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(1, 2), L"chess go ");
    view().SetRow(3);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(1, 2), L"");
}

TEST_F(Details, ReadOnlyForTheRowWhereTheFocusRests)
{
    open(L"section");
    const unsigned long before = detail().rows().edition();
    view().SetRow(2);
    view().SetRow(3);
    view().SetRow(2);
    EXPECT_TRUE(detail().isBehind());
    ASSERT_TRUE(ready());
    EXPECT_EQ(detail().rows().edition(), before + 1);
    EXPECT_EQ(shown(1, 2), L"chess go ");
}

TEST_F(Details, ChainOverThreeLevels)
{
    open(L"section");
    m_form->execute(Command::AddDetails);
    ASSERT_TRUE(ready());
    EXPECT_EQ(detail(2).table().name, L"file");
    EXPECT_EQ(shown(2, 3), L"/etc/crontab ");
    view().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(2, 3), L"") << "of chess";
    rows(1).SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(2, 3), L"/usr/go /usr/bin/go ");
    m_form->execute(Command::RemoveDetails);
    EXPECT_EQ(m_form->area().levels(), 1U);
}

TEST_F(Details, ANewRowBelongsToTheMastersRow)
{
    open(L"section");
    view().SetRow(2);
    ASSERT_TRUE(ready());
    rows().setFocus();
    InputDriver::key(VirtualKey(OviAPI::KeyInsert));
    settle();
    ASSERT_TRUE(detail().rows().rows()->HasVirtualRow());
    EXPECT_EQ(rows().GetCellText(3, 3), L"2");
    ASSERT_TRUE(rows().SetFocusCell(2, 3));
    InputDriver::type(L"tetris");
    InputDriver::key(VirtualKey(OviAPI::KeyUp));
    ASSERT_TRUE(waitFor([&] { return !detail().rows().rows()->HasVirtualRow(); }));
    EXPECT_EQ(m_other.value("SELECT section_id FROM package WHERE name = 'tetris'"), "2");
    EXPECT_EQ(shown(1, 2), L"chess go tetris ");
}

TEST_F(Details, WhatIsPendingIsStoredWhenTheMasterMoves)
{
    open(L"section");
    rows().setFocus();
    ASSERT_TRUE(rows().SetFocusCell(4, 1));
    InputDriver::type(L"99");
    settle();
    view().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(m_other.value("SELECT size FROM package WHERE id = 10"), "99");
    EXPECT_EQ(shown(1, 2), L"chess go ");
}

TEST_F(Details, TheMasterComesBackToWhatCannotBeStored)
{
    open(L"section");
    rows().setFocus();
    ASSERT_TRUE(rows().SetFocusCell(2, 1));
    InputDriver::type(L"chess"); // there is one already
    settle();
    const BoxReader boxes; // the default button: to stay
    view().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(boxes.texts().size(), 1U);
    EXPECT_EQ(view().GetRow(), 1);
    EXPECT_TRUE(rows().IsEditing());
    EXPECT_EQ(shown(1, 2), L"cron ");
    rows().GiveUpEdit();
}

TEST_F(Details, SayWhenNoTableRefers)
{
    open(L"file");
    EXPECT_EQ(detail().rows().notice().heading(), L"No table refers to file");
    choose(L"section");
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(1, 2), L"cron ");
}

TEST_F(Details, ANewRowOfTheMasterHasNone)
{
    open(L"section");
    InputDriver::key(VirtualKey(OviAPI::KeyInsert));
    view().setFocus();
    m_form->execute(Command::NewRow);
    ASSERT_TRUE(ready());
    EXPECT_EQ(detail().rows().notice().heading(), textOf(TextNoticeNoMaster));
    view().GiveUpEdit();
    ASSERT_TRUE(ready());
    EXPECT_TRUE(detail().rows().hasRows());
    EXPECT_EQ(shown(1, 2), L"") << "the last section has no packages";
}

TEST_F(Details, SpeakTheLanguageOfTheUser)
{
    open(L"section");
    m_form->setLanguage(TypicalOptions::Koi8Language);
    settle();
    EXPECT_GT(textOf(TextDetailsLabel).at(2), L'\u0400');
    m_form->setLanguage(TypicalOptions::DefaultLanguage);
}

TEST_F(Details, ThatCannotBeReadSaySoUntilTheyCan)
{
    open(L"section");
    EXPECT_EQ(shown(1, 2), L"cron ");
    m_other.execute("ALTER TABLE package RENAME TO hidden");
    view().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(detail().rows().notice().heading(), textOf(TextNoticeTableFailed));
    m_other.execute("ALTER TABLE hidden RENAME TO package");
    view().SetRow(1);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(1, 2), L"cron ");
}

TEST_F(Details, GoWithTheDatabase)
{
    open(L"section");
    m_form->execute(Command::Close);
    EXPECT_FALSE(detail().rows().hasRows());
    EXPECT_TRUE(m_form->openDatabase(file().string()));
    choose(L"section");
    EXPECT_EQ(shown(1, 2), L"cron ");
}

} // namespace
