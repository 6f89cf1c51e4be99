// Connections that are lost.
#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>

#include "application.h"
#include "database.h"
#include "explorer/mainform.h"
#include "explorer/textlookup.h"
#include "support.h"

namespace fs = std::filesystem;
using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

class LostConnection : public testing::Test {
protected:
    LostConnection()
        : m_options(TestApplication::get().record)
    {
        m_options.initDefaults();
        m_options.Language = TypicalOptions::DefaultLanguage;
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        make(file());
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->create();
        m_form->show(true);
        EXPECT_TRUE(m_form->openDatabase(file().string()));
        EXPECT_TRUE(ready());
        m_form->list().SetFocusCell(1, 2);
        EXPECT_TRUE(ready());
    }
    ~LostConnection() override
    {
        m_form.reset();
        BackgroundTask::waitForAbandoned();
    }

    fs::path file() const { return m_folder.path() / "a.db"; }
    static void make(const fs::path& path)
    {
        TestDatabase made(path);
        made.execute("CREATE TABLE one (a INTEGER)");
        made.execute("CREATE TABLE two (b INTEGER)");
    }
    bool ready()
    {
        return waitFor([this] { return !m_form->isBusy(); });
    }
    // Takes the file away from under the connection.
    void lose()
    {
        fs::remove(file());
        m_form->checkConnection();
        ASSERT_TRUE(waitFor([this] { return m_form->isLost(); }));
    }

    TemporaryFolder m_folder;
    ExplorerOptions& m_options;
    std::unique_ptr<MainForm> m_form;
};

class Probe : public AliveProbe {
public:
    bool onAnswer(bool alive) override
    {
        answers.push_back(alive);
        return true;
    }
    std::vector<bool> answers;
};

TEST(AliveProbeOf, TellsADatabaseThatAnswersFromOneThatDoesNot)
{
    const TemporaryFolder folder;
    TestDatabase((folder.path() / "a.db")).execute("CREATE TABLE t (a INTEGER)");
    Probe probe;
    int channel = 0;
    {
        DatabaseSession session((folder.path() / "a.db").string());
        channel = session.connection().channel();
        probe.ask(channel);
        EXPECT_TRUE(probe.isAsking());
        probe.ask(channel); // one at a time
        ASSERT_TRUE(waitFor([&] { return !probe.isAsking(); }));
        EXPECT_EQ(probe.answers, std::vector<bool>{true});
    }
    probe.ask(channel);
    ASSERT_TRUE(waitFor([&] { return !probe.isAsking(); }));
    EXPECT_EQ(probe.answers, (std::vector<bool>{true, false}));
    probe.ask(channel);
    probe.forget();
    settle();
    EXPECT_EQ(probe.answers.size(), 2U);
    BackgroundTask::waitForAbandoned();
}

TEST_F(LostConnection, IsNoticedAndSaid)
{
    EXPECT_FALSE(m_form->lostBar().isVisible());
    lose();
    EXPECT_EQ(m_form->status().field(MainStatus::Connection), L"connection lost");
    EXPECT_TRUE(m_form->lostBar().isVisible());
    EXPECT_EQ(m_form->lostBar().text(), L"The connection to the database is lost.");
    EXPECT_TRUE(m_form->lostBar().button().hasFocus());
    EXPECT_EQ(m_form->list().y(), m_form->lostBar().geometry().bottom);
}

TEST_F(LostConnection, IsSaidInTheLanguageOfTheUser)
{
    lose();
    m_form->setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(m_form->lostBar().text(), textOf(TextLostNotice));
    EXPECT_GT(m_form->lostBar().text().at(0), L'\u0400');
    m_form->setLanguage(TypicalOptions::DefaultLanguage);
}

TEST_F(LostConnection, ReconnectOpensTheDatabaseAgainAtTheSameTable)
{
    lose();
    make(file());
    InputDriver::key(VirtualKey(OviAPI::KeySpace, OviAPI::ModifierNone, L' '));
    ASSERT_TRUE(waitFor([this] { return !m_form->isLost() && !m_form->isBusy(); }));
    EXPECT_FALSE(m_form->lostBar().isVisible());
    EXPECT_EQ(m_form->pane().table(), L"two");
    EXPECT_EQ(m_form->list().y(), 0);
    m_form->checkConnection();
    settle();
    EXPECT_FALSE(m_form->isLost());
}

TEST_F(LostConnection, AReconnectThatFailsSaysWhyAndCanBeTriedAgain)
{
    lose();
    BoxReader boxes;
    m_form->execute(Command::Reconnect);
    ASSERT_EQ(boxes.texts().size(), 1U);
    EXPECT_NE(boxes.last().find(L"There is no such file."), std::wstring::npos);
    EXPECT_TRUE(m_form->isLost());
    make(file());
    m_form->execute(Command::Reconnect);
    EXPECT_FALSE(m_form->isLost());
}

TEST_F(LostConnection, ClosingAsksNothing)
{
    m_form->sqlPane().editor().setText(L"BEGIN; INSERT INTO one VALUES (1)");
    m_form->sqlPane().runAll();
    ASSERT_TRUE(ready());
    lose();
    m_form->execute(Command::Close);
    EXPECT_EQ(m_form->session(), nullptr);
    EXPECT_FALSE(m_form->isLost());
    EXPECT_FALSE(m_form->lostBar().isVisible());
}

} // namespace
