// Connections: their names, the list of recent ones, the dialog that opens them.
#include <cwctype>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>
#include <xmlutils/element.h>

#include "app/yesnoconfirmdlg.h"
#include "application.h"
#include "database.h"
#include "dialogs.h"
#include "explorer/connectdialog.h"
#include "support.h"

namespace fs = std::filesystem;
using DorCPP::Engine;
using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

constexpr auto utf8 = static_cast<XMLUtils::XMLEncoding>(1);

Connection fileAt(const std::wstring& path)
{
    Connection connection;
    connection.path = path;
    return connection;
}

Connection server()
{
    Connection connection;
    connection.engine = L"postgresql";
    connection.host = L"db.example";
    connection.port = 5433;
    connection.database = L"my db";
    connection.user = L"me@home";
    connection.parameters = L"sslmode=require";
    return connection;
}

TEST(Connection, AFileIsNamedByItsEngineAndPath)
{
    Connection connection = fileAt(L"/a/b c.db");
    EXPECT_EQ(connection.databaseName(), "sqlite:/a/b c.db");
    EXPECT_EQ(connection.title(), L"/a/b c.db");
    connection.readOnly = true;
    EXPECT_EQ(connection.databaseName(), "sqlite:/a/b c.db?mode=ro");
    EXPECT_EQ(fileAt(L"/a?mode=x").databaseName(), "sqlite:/a?mode=x?mode=rw");
}

TEST(Connection, AServerIsNamedByAnAddressWithEveryPartEncoded)
{
    EXPECT_EQ(server().databaseName(),
              "postgresql://me%40home@db.example:5433/my%20db?sslmode=require");
    EXPECT_EQ(server().title(), L"me@home@db.example:5433/my db");
    Connection plain;
    plain.engine = L"postgresql";
    plain.host = L"::1";
    EXPECT_EQ(plain.databaseName(), "postgresql://[::1]/");
    plain.host = L"[::1]";
    EXPECT_EQ(plain.databaseName(), "postgresql://[::1]/");
    Connection checked = server();
    checked.encryption = Connection::Checked;
    EXPECT_EQ(checked.databaseName(), "postgresql://me%40home@db.example:5433/my%20db"
                                      "?sslmode=verify-full&sslmode=require");
    checked.parameters.clear();
    EXPECT_EQ(checked.databaseName(),
              "postgresql://me%40home@db.example:5433/my%20db?sslmode=verify-full");
    plain.host = L"/run/postgresql";
    plain.database = L"\u0431\u0430\u0437\u0430";
    EXPECT_EQ(plain.databaseName(), "postgresql://%2Frun%2Fpostgresql/%D0%B1%D0%B0%D0%B7%D0%B0");
}

TEST(Connection, OptionsOfTheClientSayWhatItHonours)
{
    Connection connection = fileAt(L"/a.db");
    EXPECT_EQ(connection.clientOptions(), " timeout=1000");
    connection.readOnly = true;
    connection.lockWait = 0;
    EXPECT_EQ(connection.clientOptions(), "readonly timeout=0");
    EXPECT_EQ(server().clientOptions(), "");
}

TEST(RecentConnections, StandTheNewestFirstAndEachOnce)
{
    RecentConnections recent;
    recent.add(fileAt(L"/a"));
    recent.add(fileAt(L"/b"));
    Connection again = fileAt(L"/a");
    again.readOnly = true;
    recent.add(again);
    ASSERT_EQ(recent.all().size(), 2U);
    EXPECT_EQ(recent.all()[0], again);
    EXPECT_EQ(recent.all()[1], fileAt(L"/b"));
    recent.remove(7);
    recent.remove(0);
    EXPECT_EQ(recent.all(), std::vector<Connection>{fileAt(L"/b")});
}

TEST(RecentConnections, TheOldestGoes)
{
    RecentConnections recent;
    for (size_t i = 0; i < RecentConnections::Most + 3; ++i)
        recent.add(fileAt(L"/" + std::to_wstring(i)));
    EXPECT_EQ(recent.all().size(), RecentConnections::Most);
    EXPECT_EQ(recent.all().front().path, L"/12");
    EXPECT_EQ(recent.all().back().path, L"/3");
}

TEST(RecentConnections, AreKeptInTheOptions)
{
    ExplorerOptions options;
    options.initDefaults();
    Connection encrypted = server();
    encrypted.encryption = Connection::Always;
    options.Connections.add(encrypted);
    Connection file = fileAt(L"/\u0431\u0430\u0437\u0430 & <1>.db");
    file.readOnly = true;
    file.verify = true;
    file.lockWait = 7;
    options.Connections.add(file);
    options.RemoveConnection.Value = TypicalConfirm::Yes;
    XMLUtils::XMLElementA element("Options");
    options.serialize(element, utf8);
    ExplorerOptions read;
    read.deserialize(element, utf8);
    EXPECT_EQ(read.Connections, options.Connections);
    EXPECT_EQ(read.RemoveConnection.Value, TypicalConfirm::Yes);
}

TEST(RecentConnections, OneThatCannotBeReadIsLeftOutAndNumbersAreMovedIntoTheirRange)
{
    ExplorerOptions options;
    options.initDefaults();
    for (const wchar_t* path : {L"/a", L"/b", L"/c"})
        options.Connections.add(fileAt(path));
    XMLUtils::XMLElementA element("Options");
    options.serialize(element, utf8);
    XMLUtils::XMLElementA& list = element.getChild("Connections");
    list.child(0).getChild("LockWait").setText("soon");
    list.child(1).getChild("LockWait").setInteger(100000);
    list.child(1).getChild("Port").setInteger(-1);
    list.child(1).getChild("Encryption").setInteger(4);
    list.child(2).getChild("Encryption").setName("Other"); // as older versions wrote it
    ExplorerOptions read;
    read.deserialize(element, utf8);
    ASSERT_EQ(read.Connections.all().size(), 2U);
    EXPECT_EQ(read.Connections.all()[0].lockWait, Connection::LongestWait);
    EXPECT_EQ(read.Connections.all()[0].port, 0);
    EXPECT_EQ(read.Connections.all()[0].encryption, Connection::AsUsual);
    EXPECT_EQ(read.Connections.all()[1].path, L"/a");
    element.getChild("Connections").setName("Other");
    read.deserialize(element, utf8);
    EXPECT_TRUE(read.Connections.all().empty());
}

// --- the dialog

const std::vector<Engine> withServer{{"sqlite", "SQLite", Engine::File},
                                     {"nosuchengine", "Server engine", Engine::Server}};

class Connecting : public DialogTest {
protected:
    fs::path file(const char* name) const { return m_folder.path() / name; }
    std::wstring wide(const char* name) const { return OviAPI::localeToWide(file(name).string()); }
    void makeDatabase(const char* name)
    {
        TestDatabase made(file(name));
        made.execute("CREATE TABLE one (id INTEGER PRIMARY KEY)");
        made.execute("CREATE VIEW two AS SELECT id FROM one");
    }
    // A dialog on the screen that does not block the test.
    ConnectDialog& opened(std::vector<Engine> engines = DorCPP::engines())
    {
        m_dialog = std::make_unique<ConnectDialog>(m_above, m_options, std::move(engines));
        EXPECT_TRUE(m_dialog->create());
        m_dialog->show(true);
        settle();
        return *m_dialog;
    }
    // What a test of that path says.
    std::wstring answerTo(const std::wstring& path)
    {
        ConnectDialog& dialog = opened();
        dialog.pathLine().setText(path.c_str());
        dialog.testButton().push();
        EXPECT_TRUE(dialog.isVisible());
        return dialog.message();
    }

    std::unique_ptr<ConnectDialog> m_dialog;
};

TEST_F(Connecting, ATestSaysThatItWorksAndLeavesTheDialogOpen)
{
    makeDatabase("a.db");
    EXPECT_EQ(answerTo(wide("a.db")), L"The connection works. Tables and views: 2.");
    EXPECT_TRUE(m_options.Connections.all().empty());
    EXPECT_EQ(m_dialog->takeSession(), nullptr);
}

TEST_F(Connecting, WhatIsNoDatabaseIsSaidInPlace)
{
    std::ofstream(file("text")) << std::string(5000, 'x');
    EXPECT_EQ(answerTo(L""), L"Type the path of a database file.");
    EXPECT_EQ(answerTo(wide("none.db")), L"There is no such file.");
    EXPECT_EQ(answerTo(OviAPI::localeToWide(m_folder.path().string())),
              L"This is a folder, not a database file.");
    EXPECT_EQ(answerTo(wide("text")).find(L"The file is not a database"), 0U);
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &m_dialog->pathLine());
    EXPECT_FALSE(fs::exists(file("none.db"))) << "and it was not made";
}

TEST_F(Connecting, APathOfTenThousandCharactersIsSaidToBeWrong)
{
    EXPECT_FALSE(answerTo(L"/" + std::wstring(10000, L'x')).empty());
    EXPECT_LE(m_dialog->height(), 480);
}

TEST_F(Connecting, ALockedDatabaseIsWaitedForAsLongAsIsAsked)
{
    TestDatabase other(file("locked.db"));
    other.execute("CREATE TABLE t (a INTEGER)");
    other.execute("BEGIN EXCLUSIVE");
    Connection connection = fileAt(wide("locked.db"));
    connection.lockWait = 0;
    m_options.Connections.add(connection);
    ConnectDialog& dialog = opened();
    EXPECT_TRUE(dialog.advanced().isVisible()) << "settings that are not the usual ones";
    dialog.testButton().push();
    EXPECT_EQ(dialog.message().find(L"Another program has locked the database."), 0U);
}

TEST_F(Connecting, ConnectOpensAndRemembersTheNewestFirst)
{
    makeDatabase("a.db");
    makeDatabase("b.db");
    m_options.Connections.add(fileAt(wide("b.db")));
    m_options.LastLoadDirectory = OviAPI::localeToWide(m_folder.path().string());
    ConnectDialog dialog(m_above, m_options);
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.pathLine().text(), wide("b.db"));
    Script script;
    script.step(modalIsOpen, [&] {
        dialog.pathLine().setText(L"sqlite:a.db");
        dialog.readOnlyBox().setChecked(true);
        InputDriver::key(VirtualKey(OviAPI::KeyEnter));
    });
    EXPECT_EQ(dialog.execModal(), 1);
    const auto session = dialog.takeSession();
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->tables().size(), 2U);
    EXPECT_TRUE((session->connection().mode(true) & DorCPP::ModeReadOnly) != 0);
    ASSERT_EQ(m_options.Connections.all().size(), 2U);
    EXPECT_EQ(m_options.Connections.all()[0].path, wide("a.db"));
    EXPECT_TRUE(m_options.Connections.all()[0].readOnly);
}

TEST_F(Connecting, ConnectStaysOpenUntilTheConnectionWorks)
{
    makeDatabase("a.db");
    ConnectDialog dialog(m_above, m_options);
    ASSERT_TRUE(dialog.create());
    Script script;
    script.step(modalIsOpen, [] {
        InputDriver::type(L"/nonexistent.db");
        InputDriver::key(VirtualKey(OviAPI::KeyEnter));
    });
    script.step([&] { return !dialog.message().empty(); },
                [&] {
                    EXPECT_EQ(dialog.message(), L"There is no such file.");
                    InputDriver::type(wide("a.db")); // replaces what was selected
                    InputDriver::key(VirtualKey(OviAPI::KeyEnter));
                });
    EXPECT_EQ(dialog.execModal(), 1);
    EXPECT_NE(dialog.takeSession(), nullptr);
}

TEST_F(Connecting, EscapeOpensNothing)
{
    ConnectDialog dialog(m_above, m_options);
    ASSERT_TRUE(dialog.create());
    Script script;
    script.step(modalIsOpen, [] { InputDriver::key(VirtualKey(OviAPI::KeyEscape)); });
    EXPECT_EQ(dialog.execModal(), 0);
    EXPECT_EQ(dialog.takeSession(), nullptr);
}

TEST_F(Connecting, AServerCanBeChosenOnlyWhereThereIsAnEngineForIt)
{
    const ConnectDialog& plain = opened({{"sqlite", "SQLite", Engine::File}});
    EXPECT_FALSE(m_dialog->engineList().isVisible());
    EXPECT_TRUE(m_dialog->fileGroup().isVisible());
    EXPECT_FALSE(m_dialog->serverGroup().isVisible());
    EXPECT_EQ(plain.connection().engine, L"sqlite");

    ConnectDialog& dialog = opened(withServer);
    EXPECT_TRUE(dialog.engineList().isVisible());
    EXPECT_EQ(dialog.engineList().lineText(1), L"Server engine");
    dialog.engineList().setFocus();
    InputDriver::key(VirtualKey(OviAPI::KeyDown));
    ASSERT_TRUE(waitFor([&] { return dialog.serverGroup().isVisible(); }));
    EXPECT_FALSE(dialog.fileGroup().isVisible());
    dialog.testButton().push();
    EXPECT_EQ(dialog.message(), L"Type the name or address of the server.");
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &dialog.hostLine());
    dialog.hostLine().setText(L"localhost");
    dialog.passwordLine().setText(L"secret");
    dialog.testButton().push();
    EXPECT_NE(dialog.message().find(L"nosuchengine"), std::wstring::npos);
    EXPECT_EQ(dialog.message().find(L"secret"), std::wstring::npos);
    EXPECT_EQ(dialog.connection().host, L"localhost");
}

TEST_F(Connecting, WhatIsTooLongForTheClientIsRefusedBeforeItConnects)
{
    Connection recent = server();
    recent.engine = L"nosuchengine";
    m_options.Connections.add(recent);
    ConnectDialog& dialog = opened(withServer);
    const auto answer = [&](OviAPI::WLineEdit& line, size_t length) {
        const std::wstring before = line.text();
        line.setText(std::wstring(length, L'x').c_str());
        dialog.testButton().push();
        line.setText(before.c_str());
        return dialog.message();
    };
    EXPECT_EQ(answer(dialog.userLine(), 256), L"The name of the user is longer than 255 bytes.");
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &dialog.userLine());
    EXPECT_EQ(answer(dialog.passwordLine(), 256), L"The password is longer than 255 bytes.");
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &dialog.passwordLine());
    EXPECT_EQ(answer(dialog.databaseLine(), 256).find(L"Host, database and connection parameters"),
              0U);
    EXPECT_EQ(answer(dialog.passwordLine(), 255).find(L"longer"), std::wstring::npos);
}

TEST_F(Connecting, TheEncryptionOfAServerIsChosenInBothLanguages)
{
    Connection recent = server();
    recent.engine = L"nosuchengine";
    recent.encryption = Connection::Always;
    m_options.Connections.add(recent);
    ConnectDialog& dialog = opened(withServer);
    EXPECT_TRUE(dialog.encryptionList().isVisible());
    EXPECT_EQ(dialog.encryptionList().text(), L"always");
    setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(dialog.connection().encryption, Connection::Always);
    EXPECT_EQ(dialog.encryptionList().text(), textOf(TextEncryptionAlways));
    dialog.encryptionList().setCurrentLine(Connection::Checked);
    EXPECT_EQ(dialog.connection().encryption, Connection::Checked);
}

TEST(Secret, IsOverwrittenBeforeItGoes)
{
    std::string text(40, 'x');
    const char* bytes = text.data();
    wipe(text);
    EXPECT_TRUE(text.empty());
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(bytes[i], 0) << "the room of the text is still its own";
}

TEST_F(Connecting, ARecentServerIsShownWithoutItsPassword)
{
    Connection recent = server();
    recent.engine = L"nosuchengine";
    m_options.Connections.add(recent);
    ConnectDialog& dialog = opened(withServer);
    EXPECT_TRUE(dialog.serverGroup().isVisible());
    EXPECT_EQ(dialog.connection(), recent);
    EXPECT_EQ(dialog.passwordLine().text(), L"");
    EXPECT_TRUE(dialog.advanced().isVisible());
}

TEST_F(Connecting, ARecentConnectionFillsTheFields)
{
    m_options.Connections.add(fileAt(L"/old.db"));
    m_options.Connections.add(fileAt(L"/new.db"));
    ConnectDialog& dialog = opened();
    EXPECT_EQ(dialog.recentList().lineText(0), L"/new.db");
    EXPECT_EQ(dialog.pathLine().text(), L"/new.db");
    dialog.recentList().setFocus();
    InputDriver::key(VirtualKey(OviAPI::KeyDown));
    EXPECT_TRUE(waitFor([&] { return dialog.pathLine().text() == L"/old.db"; }));
}

TEST_F(Connecting, RemovingARecentConnectionAsksUntilTheAnswerIsRemembered)
{
    for (const wchar_t* path : {L"/a.db", L"/b.db", L"/c.db"})
        m_options.Connections.add(fileAt(path));
    ConnectDialog& dialog = opened();
    const auto answer = [&](const wchar_t* what, bool yes) {
        Script script;
        script.step(confirmIsOpen, [&] {
            YesNoConfirmDlg& question = *openConfirmation();
            EXPECT_NE(labelIn(question).find(what), std::wstring::npos);
            question.rememberChoice = yes;
            yes ? question.onYesPush(nullptr) : question.onNoPush(nullptr);
        });
        dialog.removeButton().push();
    };
    answer(L"/c.db", false);
    EXPECT_EQ(m_options.Connections.all().size(), 3U);
    EXPECT_EQ(m_options.RemoveConnection.Value, TypicalConfirm::Ask);
    answer(L"/c.db", true);
    EXPECT_EQ(m_options.Connections.all().size(), 2U);
    EXPECT_EQ(m_options.RemoveConnection.Value, TypicalConfirm::Yes);
    dialog.removeButton().push();
    dialog.removeButton().push();
    EXPECT_TRUE(m_options.Connections.all().empty());
    EXPECT_FALSE(dialog.removeButton().isEnabled());
    EXPECT_FALSE(dialog.recentList().isEnabled());
    dialog.removeButton().push();
}

TEST_F(Connecting, AdvancedSettingsAreShownAndHiddenByTheirButtons)
{
    ConnectDialog& dialog = opened();
    EXPECT_FALSE(dialog.advanced().isVisible());
    const int before = dialog.height();
    dialog.advancedButton().push();
    EXPECT_TRUE(dialog.advanced().isVisible());
    EXPECT_GT(dialog.height(), before);
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &dialog.readOnlyBox());
    dialog.advanced().button().push();
    EXPECT_FALSE(dialog.advanced().isVisible());
    EXPECT_EQ(dialog.height(), before);
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &dialog.advancedButton());
}

TEST_F(Connecting, ADamagedDatabaseIsRefusedWhenTheWholeFileIsChecked)
{
    TestDatabase(file("damaged.db")).execute("CREATE TABLE t (a INTEGER PRIMARY KEY, b TEXT)");
    TestDatabase(file("damaged.db"))
        .execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
                 "INSERT INTO t SELECT i, 'some text' FROM n");
    {
        std::fstream bytes(file("damaged.db"), std::ios::binary | std::ios::in | std::ios::out);
        bytes.seekp(5 * 4096);
        bytes << std::string(200, '\xFF');
    }
    Connection connection = fileAt(wide("damaged.db"));
    EXPECT_NO_THROW(DatabaseSession(connection, Secret()));
    connection.verify = true;
    EXPECT_THROW(DatabaseSession(connection, Secret()), OpenFailure);
}

TEST_F(Connecting, BrowseTakesTheFileThatIsChosen)
{
    makeDatabase("a.db");
    std::ofstream(file("notes.txt")) << "text";
    m_options.LastLoadDirectory = OviAPI::localeToWide(m_folder.path().string());
    ConnectDialog& dialog = opened();
    Script script;
    script.step(FileDialogDriver::isOpen, [this] {
        EXPECT_EQ(FileDialogDriver::title(), textOf(TextConnectBrowseTitle));
        EXPECT_EQ(FileDialogDriver::folder(), OviAPI::localeToWide(m_folder.path().string()));
        EXPECT_EQ(FileDialogDriver::filters(),
                  (std::vector<std::wstring>{L"Databases (*.db *.sqlite *.sqlite3 *.db3)",
                                             L"All files (*)"}));
        FileDialogDriver::choose(L"a.db");
    });
    dialog.browseButton().push();
    EXPECT_TRUE(script.isDone());
    EXPECT_EQ(dialog.pathLine().text(), wide("a.db"));
    dialog.bringToFront();
    settle();
    EXPECT_EQ(OviAPI::WVisualObject::focusedObject(), &dialog.pathLine());
    dialog.testButton().push();
    EXPECT_EQ(dialog.message(), L"The connection works. Tables and views: 2.");
}

TEST_F(Connecting, BrowseThatIsCancelledKeepsThePath)
{
    ConnectDialog& dialog = opened();
    dialog.pathLine().setText(L"/typed.db");
    Script script;
    script.step(FileDialogDriver::isOpen, FileDialogDriver::cancel);
    dialog.browseButton().push();
    EXPECT_TRUE(script.isDone());
    EXPECT_EQ(dialog.pathLine().text(), L"/typed.db");
}

TEST_F(Connecting, CancelEndsAnAttemptThatTakesLong)
{
    TestDatabase other(file("locked.db"));
    other.execute("CREATE TABLE t (a INTEGER)");
    other.execute("BEGIN EXCLUSIVE");
    Connection connection = fileAt(wide("locked.db"));
    connection.lockWait = Connection::LongestWait;
    m_options.Connections.add(connection);
    ConnectDialog dialog(m_above, m_options);
    ASSERT_TRUE(dialog.create());
    Script script;
    script.step(modalIsOpen, [] { InputDriver::key(VirtualKey(OviAPI::KeyEnter)); });
    script.step([&] { return dialog.isOpening(); }, [&] { dialog.cancelButton().push(); });
    EXPECT_EQ(dialog.execModal(), 0);
    EXPECT_TRUE(script.isDone());
    EXPECT_EQ(dialog.message(), L"");
    EXPECT_EQ(dialog.takeSession(), nullptr);
    other.execute("COMMIT");
    BackgroundTask::waitForAbandoned();
}

TEST_F(Connecting, TheTabKeyReachesEverythingAndComesBack)
{
    m_options.Connections.add(fileAt(L"/a.db"));
    ConnectDialog& dialog = opened();
    dialog.advancedButton().push();
    EXPECT_EQ(tabStops(dialog), 13) << "list, remove, engine, path, browse, advanced, hide, two "
                                       "boxes, wait, test, connect, cancel";
}

TEST_F(Connecting, MnemonicsAreUniqueAndNothingIsCutInBothLanguages)
{
    for (const auto language : {TypicalOptions::DefaultLanguage, TypicalOptions::Koi8Language}) {
        setLanguage(language);
        for (const bool atServer : {false, true}) {
            ConnectDialog& dialog = opened(withServer);
            dialog.advancedButton().push();
            if (atServer) {
                dialog.engineList().setFocus();
                InputDriver::key(VirtualKey(OviAPI::KeyDown));
                ASSERT_TRUE(waitFor([&] { return dialog.serverGroup().isVisible(); }));
            }
            checkTexts(dialog);
            EXPECT_LE(dialog.width(), 640);
            EXPECT_LE(dialog.height(), 450) << "with the frame on a screen of 640 x 480";
        }
    }
}

TEST_F(Connecting, ItFollowsTheLanguageAndTheFontOfItsWindow)
{
    ConnectDialog& dialog = opened();
    dialog.pathLine().setText(L"/typed.db");
    const int before = dialog.height();
    m_above.setFont({L"Helvetica", 16});
    m_above.slotFontChanged(nullptr, WExtForm::fkControls, {L"Helvetica", 16});
    EXPECT_GT(dialog.height(), before);
    checkTexts(dialog);
    setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(dialog.title(), textOf(TextConnectTitle));
    EXPECT_EQ(dialog.pathLine().text(), L"/typed.db");
}

} // namespace
