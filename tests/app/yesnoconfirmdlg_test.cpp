#include "app/yesnoconfirmdlg.h"

#include <gtest/gtest.h>

#include "tests/app/dialogs.h"
#include "tests/app/support.h"

namespace {

// Lets a test look at the parts.
class OpenDialog : public YesNoConfirmDlg {
public:
    using YesNoConfirmDlg::app;
    using YesNoConfirmDlg::message;
    using YesNoConfirmDlg::noButton;
    using YesNoConfirmDlg::rememberBox;
    using YesNoConfirmDlg::yesButton;
    using YesNoConfirmDlg::YesNoConfirmDlg;
};

class ConfirmDialog : public testing::Test {
protected:
    ConfirmDialog()
    {
        m_folders.writeResources(frameResources());
        m_app.ownRecord.initDefaults();
        m_app.initResourceManager();
    }
    // What the dialog gives when the function has worked on it.
    int resultOf(OpenDialog& dialog, std::function<void()> work)
    {
        UiDriver::later(std::move(work));
        return dialog.execModal();
    }

    TestFolders m_folders;
    TestApp m_app;
};

OviAPI::Rect placed(int left, int top, int width, int height)
{
    return {left, top, left + width, top + height};
}

} // namespace

TEST_F(ConfirmDialog, WithAnIdOfZeroAmongItsOwnItIsNotCreated)
{
    OviAPI::ResourceManager* rm = m_app.resources();
    EXPECT_FALSE(YesNoConfirmDlg(0, rm, L"?", 0, 60014, 60221, 60003).create());
    EXPECT_FALSE(YesNoConfirmDlg(0, rm, L"?", 60013, 0, 60221, 60003).create());
    EXPECT_FALSE(YesNoConfirmDlg(0, rm, L"?", 60013, 60014, 0, 60003).create());
    OpenDialog dialog(0, rm, L"?", 60013, 60014, 60221, 0);
    EXPECT_FALSE(dialog.create());
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_FALSE(dialog.isCreated());
    EXPECT_EQ(dialog.execModal(), 0);
}

TEST(ConfirmDialogWithoutExtApp, ItIsNotCreated)
{
    YesNoConfirmDlg dialog(0, nullptr, L"?");
    EXPECT_FALSE(dialog.create());
    EXPECT_FALSE(dialog.isCreated());
}

TEST(ConfirmDialogWithoutExtApp, WithItsOwnIdsItTakesItsTextsFromTheResources)
{
    const TempFolder folder;
    ResourceBuilder strings;
    strings.addString(1, L"Do it");
    strings.addString(2, L"Leave it");
    strings.addString(3, L"Always");
    strings.addString(4, L"Well?");
    writeFile(folder.path() / "own.rrs", strings.compiled());
    OviAPI::ResourceManager resources((folder.path() / "own.rrs").wstring().c_str());
    ASSERT_FALSE(resources.failed());
    OpenDialog dialog(0, &resources, L"100% %s &x", 1, 2, 3, 4);
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.title(), L"Well?");
    EXPECT_EQ(dialog.message.text(), L"100% %s &x");
    EXPECT_EQ(dialog.yesButton.text(), L"Do it");
    EXPECT_EQ(dialog.noButton.text(), L"Leave it");
    EXPECT_EQ(dialog.rememberBox.text(), L"Always");
}

TEST_F(ConfirmDialog, ItsDefaultTextsAreThoseOfTheApplication)
{
    OpenDialog dialog(0, nullptr, L"Really?");
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.app, &m_app);
    EXPECT_EQ(dialog.title(), L"Question");
    EXPECT_EQ(dialog.message.text(), L"Really?");
    EXPECT_EQ(dialog.yesButton.text(), L"&Yes");
    EXPECT_EQ(dialog.noButton.text(), L"&No");
    EXPECT_EQ(dialog.rememberBox.text(), L"&Remember");
}

TEST_F(ConfirmDialog, ItTakesTheControlsFontOfTheOptions)
{
    m_app.ownRecord.FontControls = {L"Courier", 13};
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.font(), m_app.ownRecord.FontControls);
    EXPECT_EQ(dialog.message.font(), m_app.ownRecord.FontControls);
    EXPECT_EQ(dialog.rememberBox.font(), m_app.ownRecord.FontControls);
}

TEST_F(ConfirmDialog, AChangeOfTheLanguageSetsItsTextsAgain)
{
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    ResourceBuilder other;
    other.addString(60013, L"Oui");
    m_folders.writeResources(other);
    m_app.initResourceManager();
    m_app.notifyCharsetChanged();
    EXPECT_EQ(dialog.yesButton.text(), L"Oui");
    EXPECT_EQ(dialog.noButton.text(), L"");
    EXPECT_EQ(dialog.message.text(), L"?");
}

TEST_F(ConfirmDialog, ItsFormIsADialogFrameOf640By120)
{
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.style() & 34, 34);
    EXPECT_EQ(dialog.clientWidth(), 640);
    EXPECT_EQ(dialog.clientHeight(), 120);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(dialog.yesButton.isDefault());
}

TEST_F(ConfirmDialog, CreatingItOnceMoreLeavesItWhereItIs)
{
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    dialog.move(30, 40, 500, 200);
    EXPECT_TRUE(dialog.create());
    EXPECT_EQ(dialog.geometry(), (OviAPI::Rect{30, 40, 530, 240}));
}

TEST_F(ConfirmDialog, ItsPartsAreLaidOutByTheClientArea)
{
    OpenDialog dialog(0, nullptr, L"?");
    dialog.width = 400;
    dialog.height = 120;
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.message.geometry(), placed(40, 5, 320, 57));
    EXPECT_EQ(dialog.yesButton.geometry(), placed(80, 67, 80, 25));
    EXPECT_EQ(dialog.noButton.geometry(), placed(240, 67, 80, 25));
    EXPECT_EQ(dialog.rememberBox.geometry(), placed(40, 97, 320, 18));
}

TEST_F(ConfirmDialog, DivisionOfTheFreeWidthRoundsTowardZero)
{
    OpenDialog dialog(0, nullptr, L"?");
    dialog.width = 401;
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.yesButton.x(), 80);
    EXPECT_EQ(dialog.noButton.x(), 240);
    dialog.move(0, 0, 500, 200);
    EXPECT_EQ(dialog.yesButton.geometry(), placed(113, 147, 80, 25));
    EXPECT_EQ(dialog.noButton.geometry(), placed(306, 147, 80, 25));
}

TEST_F(ConfirmDialog, YesGivesOneAndNoGivesZero)
{
    OpenDialog yes(0, nullptr, L"?");
    ASSERT_TRUE(yes.create());
    EXPECT_EQ(resultOf(yes, [&] { UiDriver::click(yes.yesButton); }), 1);
    EXPECT_FALSE(yes.isVisible());
    OpenDialog no(0, nullptr, L"?");
    ASSERT_TRUE(no.create());
    EXPECT_EQ(resultOf(no, [&] { UiDriver::click(no.noButton); }), 0);
    EXPECT_FALSE(no.isVisible());
    EXPECT_FALSE(no.rememberChoice);
}

TEST_F(ConfirmDialog, EnterMeansYesAndEscapeMeansNo)
{
    OpenDialog yes(0, nullptr, L"?");
    ASSERT_TRUE(yes.create());
    EXPECT_EQ(resultOf(yes, [&] { UiDriver::key(yes, OviAPI::KeyEnter); }), 1);
    OpenDialog no(0, nullptr, L"?");
    ASSERT_TRUE(no.create());
    EXPECT_EQ(resultOf(no, [&] { UiDriver::key(no, OviAPI::KeyEscape); }), 0);
}

TEST_F(ConfirmDialog, TheCloseBoxGivesZero)
{
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(resultOf(dialog, [&] { UiDriver::closeWindow(dialog); }), 0);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(ConfirmDialog, TickingTheBoxRemembersAndLeavesBothButtonsEnabled)
{
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    const int result = resultOf(dialog, [&] {
        for (const bool ticked : {true, false, true}) {
            UiDriver::click(dialog.rememberBox, 8);
            EXPECT_EQ(dialog.rememberChoice, ticked);
            EXPECT_TRUE(dialog.yesButton.isEnabled());
            EXPECT_TRUE(dialog.noButton.isEnabled());
        }
        UiDriver::click(dialog.yesButton);
    });
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(dialog.rememberChoice);
}

TEST_F(ConfirmDialog, AButtonMayBeDisabledWhileTheBoxIsTicked)
{
    OpenDialog dialog(0, nullptr, L"?");
    dialog.noEnabledWhenRemembered = false;
    ASSERT_TRUE(dialog.create());
    dialog.rememberBox.setChecked(true);
    dialog.onRememberChoiceCheck(nullptr);
    EXPECT_TRUE(dialog.yesButton.isEnabled());
    EXPECT_FALSE(dialog.noButton.isEnabled());
    dialog.yesEnabledWhenRemembered = false;
    dialog.onRememberChoiceCheck(nullptr);
    EXPECT_FALSE(dialog.yesButton.isEnabled());
    dialog.rememberBox.setChecked(false);
    dialog.onRememberChoiceCheck(nullptr);
    EXPECT_TRUE(dialog.yesButton.isEnabled());
    EXPECT_TRUE(dialog.noButton.isEnabled());
}

TEST_F(ConfirmDialog, LongLabelsAreCutAt4095Characters)
{
    ResourceBuilder strings;
    for (const uint32_t id : {60003U, 60013U, 60014U, 60221U})
        strings.addString(id, std::wstring(5000, L'x').c_str());
    m_folders.writeResources(strings);
    m_app.initResourceManager();
    OpenDialog dialog(0, nullptr, nullptr);
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.title().size(), 4095U);
    EXPECT_EQ(dialog.rememberBox.text().size(), 4095U);
    EXPECT_EQ(dialog.message.text(), L"");
}
