// The program on a screen that its settings were not made for.
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include <oviapi/systemmetrics.h>
#include <oviapi/text.h>
#include <xmlutils/element.h>
#include <xmlutils/writer.h>

#include "app/yesnoconfirmdlg.h"
#include "application.h"
#include "dialogs.h"
#include "explorer/explorerapp.h"

namespace {

constexpr auto utf8 = static_cast<XMLUtils::XMLEncoding>(1);

class OtherScreen : public DialogTest {
protected:
    OtherScreen()
    {
        const char* home = std::getenv("XDG_CONFIG_HOME");
        m_configHome = home ? home : "";
        m_hadConfigHome = home != nullptr;
        m_mine.initDefaults();
        m_mine.Language = TypicalOptions::DefaultLanguage;
        // Wider and higher than any screen here; the window stands where this one has no room.
        m_mine.TermDesc.ScreenWidth = 5000;
        m_mine.TermDesc.ScreenHeight = 3000;
        m_mine.MainFormRect = {screen().right - 60, screen().bottom - 60, screen().right + 540,
                               screen().bottom + 340};
    }
    ~OtherScreen() override
    {
        if (m_hadConfigHome)
            setenv("XDG_CONFIG_HOME", m_configHome.c_str(), 1);
        else
            unsetenv("XDG_CONFIG_HOME");
    }
    static OviAPI::Rect screen() { return OviAPI::SystemMetrics::getAvailableRect(); }

    void writeMine() const
    {
        const auto folder = m_folder.path() / "oviexplorer";
        std::filesystem::create_directories(folder);
        XMLUtils::XMLElementA root;
        m_mine.serialize(root.addChild("Options"), utf8);
        XMLUtils::XMLFILEWriterA((folder / "options.dat").wstring(), utf8).write(root);
    }
    // Starts the program as far as its window, and ends it. answer: of the dialog, if it asks.
    void run(std::function<void(YesNoConfirmDlg&)> answer)
    {
        Arguments arguments;
        arguments.configDir = m_folder.path().string();
        ExplorerApp application(arguments);
        char name[] = "oviexplorer";
        char* argv[] = {name, nullptr};
        application.start(1, argv);
        Script script;
        if (answer)
            script.step(confirmIsOpen, [&] { answer(*openConfirmation()); });
        wchar_t wideName[] = L"oviexplorer";
        wchar_t* wideArgv[] = {wideName, nullptr};
        ASSERT_TRUE(application.initApplication(1, wideArgv));
        EXPECT_TRUE(script.isDone());
        m_place = application.mainForm()->geometry();
        m_after = dynamic_cast<const ExplorerOptions&>(*application.options());
        application.deInitApplication();
    }

    std::string m_configHome;
    bool m_hadConfigHome = false;
    ExplorerOptions m_mine;
    ExplorerOptions m_after;
    OviAPI::Rect m_place;
};

TEST_F(OtherScreen, ItAsksAndPutsTheWindowWhereThereIsRoom)
{
    writeMine();
    run([](YesNoConfirmDlg& question) {
        EXPECT_NE(labelIn(question).find(L"screen of another size"), std::wstring::npos);
        question.onYesPush(nullptr);
    });
    EXPECT_NE(m_after.MainFormRect, m_mine.MainFormRect);
    EXPECT_GE(m_after.MainFormRect.left, screen().left);
    EXPECT_LE(m_after.MainFormRect.right, screen().right);
    EXPECT_LE(m_after.MainFormRect.bottom, screen().bottom);
    EXPECT_EQ(m_after.TermDesc.ScreenWidth, screen().width());
    EXPECT_EQ(m_after.AdaptToTD.Value, TypicalConfirm::Ask);
}

TEST_F(OtherScreen, ItLeavesTheWindowWhereTheUserWantsItAndRemembersThat)
{
    writeMine();
    run([](YesNoConfirmDlg& question) {
        question.rememberChoice = true;
        question.onNoPush(nullptr);
    });
    EXPECT_EQ(m_after.MainFormRect, m_mine.MainFormRect);
    EXPECT_EQ(m_after.AdaptToTD.Value, TypicalConfirm::No);
    EXPECT_EQ(m_after.TermDesc.ScreenWidth, screen().width());
    run(nullptr); // the same screen again: nothing is asked
    EXPECT_EQ(m_after.AdaptToTD.Value, TypicalConfirm::No);
}

TEST_F(OtherScreen, ARememberedYesIsFollowedWithoutAQuestion)
{
    m_mine.AdaptToTD.Value = TypicalConfirm::Yes;
    writeMine();
    run(nullptr);
    EXPECT_LE(m_after.MainFormRect.right, screen().right);
    EXPECT_LE(m_after.MainFormRect.bottom, screen().bottom);
}

TEST_F(OtherScreen, AFirstRunIsAdaptedWithoutAQuestion)
{
    run(nullptr);
    EXPECT_LE(m_after.MainFormRect.right, screen().right);
    EXPECT_LE(m_after.MainFormRect.bottom, screen().bottom);
    EXPECT_GT(m_place.width(), 0);
}

TEST_F(OtherScreen, AWindowThatCannotBeSeenAtAllGetsTheUsualPlace)
{
    m_mine.AdaptToTD.Value = TypicalConfirm::No;
    m_mine.MainFormRect = {4000, 2500, 4600, 2900};
    writeMine();
    run(nullptr);
    EXPECT_TRUE(TypicalOptions::isValidGeometry(m_after.MainFormRect));
    EXPECT_LE(m_place.right, screen().right);
    EXPECT_GT(m_place.width(), 0);
}

} // namespace
