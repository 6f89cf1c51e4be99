// The settings dialog.
#include "explorer/settingsdialog.h"

#include <algorithm>

#include <gtest/gtest.h>

#include <oviapi/fontfamilies.h>
#include <oviapi/inputdriver.h>

#include "application.h"
#include "dialogs.h"

using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

class SettingsWindow : public DialogTest {
protected:
    // A dialog on the screen that does not block the test.
    SettingsDialog& opened()
    {
        m_dialog = std::make_unique<SettingsDialog>(m_above, m_options, [this] { show(); });
        EXPECT_TRUE(m_dialog->create());
        m_dialog->show(true);
        settle();
        return *m_dialog;
    }
    // What the main window does.
    void show()
    {
        ++m_shown;
        m_above.setFont(m_options.FontControls);
        m_above.slotFontChanged(nullptr, WExtForm::fkControls, m_options.FontControls);
        setLanguage(m_options.Language);
    }
    void rememberBoth()
    {
        m_options.AdaptToTD.Value = TypicalConfirm::No;
        m_options.RemoveConnection.Value = TypicalConfirm::Yes;
    }

    int m_shown = 0;
    std::unique_ptr<SettingsDialog> m_dialog;
};

TEST_F(SettingsWindow, ShowsTheFontsAndTheLanguageOfTheOptions)
{
    m_options.FontGrid = {L"Courier", 13, true};
    m_options.FontEdits = {L"No such face", 9};
    m_options.Language = TypicalOptions::Koi8Language;
    SettingsDialog& dialog = opened();
    EXPECT_EQ(dialog.faceList(WExtForm::fkControls).text(), L"Helvetica");
    EXPECT_EQ(dialog.sizeField(WExtForm::fkControls).value(), 10);
    EXPECT_EQ(dialog.faceList(WExtForm::fkRecordView).text(), L"Courier");
    EXPECT_EQ(dialog.sizeField(WExtForm::fkRecordView).value(), 13);
    EXPECT_EQ(dialog.sizeField(WExtForm::fkTree).value(), 12);
    EXPECT_EQ(dialog.faceList(WExtForm::fkEdit).text(), L"No such face");
    EXPECT_EQ(dialog.languageList().currentLine(), 1);
    EXPECT_FALSE(dialog.applyButton().isEnabled());
    EXPECT_EQ(m_shown, 0);
}

TEST_F(SettingsWindow, AChangeIsSeenAtOnceInEveryForm)
{
    SettingsDialog& dialog = opened();
    WExtForm other;
    other.setParent(&m_above);
    OviAPI::WButton button;
    button.setParent(&other);
    ASSERT_TRUE(other.create());
    ASSERT_TRUE(button.create());
    const int height = dialog.height();
    dialog.sizeField(WExtForm::fkControls).setValue(15);
    EXPECT_EQ(m_options.FontControls.size(), 15);
    EXPECT_EQ(button.font().size(), 15);
    EXPECT_GT(dialog.height(), height) << "the dialog itself, too";
    EXPECT_TRUE(dialog.applyButton().isEnabled());
    checkTexts(dialog);
}

TEST_F(SettingsWindow, EachKindHasItsOwnFontAndTheSampleShowsTheLastOne)
{
    SettingsDialog& dialog = opened();
    dialog.sizeField(WExtForm::fkRecordView).setValue(17);
    EXPECT_EQ(dialog.sample().font().size(), 17);
    dialog.sizeField(WExtForm::fkTree).setValue(18);
    dialog.sizeField(WExtForm::fkEdit).setValue(19);
    EXPECT_EQ(m_options.FontControls.size(), 10);
    EXPECT_EQ(m_options.FontGrid.size(), 17);
    EXPECT_EQ(m_options.FontTree.size(), 18);
    EXPECT_EQ(m_options.FontEdits.size(), 19);
    EXPECT_EQ(dialog.sample().font(), m_options.FontEdits);
    dialog.sizeField(WExtForm::fkControls).setFocus();
    settle();
    EXPECT_EQ(dialog.sample().font(), m_options.FontControls);
}

TEST_F(SettingsWindow, InstalledFacesAreOfferedInTheirOrderAndOnce)
{
    const std::vector<std::wstring> faces = OviAPI::fontFamilies();
    ASSERT_FALSE(faces.empty());
    EXPECT_EQ(std::adjacent_find(faces.begin(), faces.end()), faces.end());
    OviAPI::WComboBox& list = opened().faceList(WExtForm::fkTree);
    for (const std::wstring& face : faces) {
        EXPECT_GE(list.findText(face.c_str()), 0);
        EXPECT_EQ(face.find(L'['), std::wstring::npos) << face; // the name alone, without a maker
    }
}

TEST_F(SettingsWindow, TheFaceIsChosenByKey)
{
    SettingsDialog& dialog = opened();
    OviAPI::WComboBox& faces = dialog.faceList(WExtForm::fkRecordView);
    ASSERT_GT(faces.lineCount(), 1);
    const int before = faces.currentLine();
    faces.setFocus();
    const int key = before + 1 < faces.lineCount() ? OviAPI::KeyDown : OviAPI::KeyUp;
    InputDriver::key(VirtualKey(key));
    ASSERT_TRUE(waitFor([&] { return faces.currentLine() != before; }));
    EXPECT_EQ(m_options.FontGrid.name(), faces.text());
    EXPECT_EQ(dialog.sample().font().name(), faces.text());
}

TEST_F(SettingsWindow, CancelEscapeAndTheCloseBoxTakeEverythingBack)
{
    rememberBoth();
    const ExplorerOptions before = m_options;
    for (const int way : {0, 1}) {
        SettingsDialog dialog(m_above, m_options, [this] { show(); });
        ASSERT_TRUE(dialog.create());
        Script script;
        script.step(modalIsOpen, [&] {
            dialog.sizeField(WExtForm::fkControls).setValue(20);
            dialog.sizeField(WExtForm::fkTree).setValue(30);
            dialog.tabs().setCurrentTab(1);
            dialog.askAllButton().push();
            EXPECT_EQ(m_options.AdaptToTD.Value, TypicalConfirm::Ask);
            dialog.tabs().setCurrentTab(0);
            dialog.languageList().setFocus();
            InputDriver::key(VirtualKey(OviAPI::KeyDown));
        });
        script.step([&] { return m_options.Language == TypicalOptions::Koi8Language; },
                    [&] {
                        EXPECT_EQ(dialog.title(), textOf(TextSettingsTitle));
                        if (way == 0)
                            InputDriver::key(VirtualKey(OviAPI::KeyEscape));
                        else
                            dialog.close();
                    });
        EXPECT_EQ(dialog.execModal(), 0);
        EXPECT_TRUE(m_options == before);
        EXPECT_EQ(m_above.font().size(), 10);
        EXPECT_EQ(textOf(TextSettingsTitle), L"Settings");
    }
}

TEST_F(SettingsWindow, OkKeepsTheChanges)
{
    SettingsDialog dialog(m_above, m_options, [this] { show(); });
    ASSERT_TRUE(dialog.create());
    Script script;
    script.step(modalIsOpen, [&] {
        EXPECT_EQ(dialog.tabs().tabCount(), 2) << "its parts are made once";
        dialog.sizeField(WExtForm::fkEdit).setValue(20);
        InputDriver::key(VirtualKey(OviAPI::KeyEnter));
    });
    EXPECT_EQ(dialog.execModal(), 1);
    EXPECT_EQ(m_options.FontEdits.size(), 20);
}

TEST_F(SettingsWindow, CancelGoesBackToWhatWasAppliedLast)
{
    SettingsDialog& dialog = opened();
    dialog.sizeField(WExtForm::fkTree).setValue(20);
    dialog.applyButton().push();
    EXPECT_FALSE(dialog.applyButton().isEnabled());
    dialog.sizeField(WExtForm::fkTree).setValue(30);
    dialog.close();
    EXPECT_EQ(m_options.FontTree.size(), 20);
}

TEST_F(SettingsWindow, DefaultsAreThoseOfANewUserAndCanBeTakenBack)
{
    m_options.FontControls = {L"Courier", 14};
    m_options.FontGrid = {L"Courier", 14};
    rememberBoth();
    SettingsDialog& dialog = opened();
    dialog.defaultsButton().push();
    EXPECT_EQ(m_options.FontControls, OviAPI::Font(L"Helvetica", 10));
    EXPECT_EQ(dialog.faceList(WExtForm::fkRecordView).text(), L"Helvetica");
    EXPECT_EQ(m_options.AdaptToTD.Value, TypicalConfirm::No) << "answers have buttons of their own";
    dialog.close();
    EXPECT_EQ(m_options.FontControls, OviAPI::Font(L"Courier", 14));
}

TEST_F(SettingsWindow, FontsOfAnySizeInTheOptionsAreMovedIntoTheRange)
{
    m_options.FontControls = {L"Helvetica", 10};
    m_options.FontTree = {L"Helvetica", 0};
    m_options.FontEdits = {L"Helvetica", 1000};
    SettingsDialog& dialog = opened();
    EXPECT_EQ(dialog.sizeField(WExtForm::fkTree).value(), Settings::SmallestText);
    EXPECT_EQ(dialog.sizeField(WExtForm::fkEdit).value(), Settings::LargestText);
    EXPECT_EQ(m_options.FontEdits.size(), 1000) << "until something is changed";
}

TEST_F(SettingsWindow, OneRememberedAnswerIsForgotten)
{
    rememberBoth();
    SettingsDialog& dialog = opened();
    dialog.tabs().setCurrentTab(1);
    ASSERT_EQ(dialog.answerList().lineCount(), 2);
    EXPECT_EQ(dialog.answerList().lineText(0), textOf(TextAnswerAdaptNo));
    EXPECT_EQ(dialog.answerList().lineText(1), textOf(TextAnswerRemoveYes));
    dialog.answerList().setCurrentLine(1);
    dialog.askAgainButton().push();
    EXPECT_EQ(m_options.RemoveConnection.Value, TypicalConfirm::Ask);
    EXPECT_EQ(m_options.AdaptToTD.Value, TypicalConfirm::No);
    EXPECT_EQ(dialog.answerList().lineCount(), 1);
}

TEST_F(SettingsWindow, AllRememberedAnswersAreForgotten)
{
    rememberBoth();
    SettingsDialog& dialog = opened();
    dialog.tabs().setCurrentTab(1);
    dialog.askAllButton().push();
    EXPECT_EQ(m_options.RemoveConnection.Value, TypicalConfirm::Ask);
    EXPECT_EQ(m_options.AdaptToTD.Value, TypicalConfirm::Ask);
    EXPECT_EQ(dialog.answerList().lineText(0), textOf(TextAnswersNone));
    EXPECT_FALSE(dialog.answerList().isEnabled());
    EXPECT_FALSE(dialog.askAgainButton().isEnabled());
    EXPECT_FALSE(dialog.askAllButton().isEnabled());
}

TEST_F(SettingsWindow, AnswersAreReadableInBothLanguages)
{
    rememberBoth();
    SettingsDialog& dialog = opened();
    const std::wstring english = dialog.answerList().lineText(0);
    setLanguage(TypicalOptions::Koi8Language);
    EXPECT_NE(dialog.answerList().lineText(0), english);
    EXPECT_FALSE(dialog.answerList().lineText(0).empty());
}

TEST_F(SettingsWindow, EverythingFitsOnASmallScreenInBothLanguages)
{
    rememberBoth();
    for (const auto language : {TypicalOptions::DefaultLanguage, TypicalOptions::Koi8Language}) {
        setLanguage(language);
        SettingsDialog& dialog = opened();
        for (const int tab : {0, 1}) {
            dialog.tabs().setCurrentTab(tab);
            settle();
            checkTexts(dialog);
        }
        EXPECT_LE(dialog.width(), 640);
        EXPECT_LE(dialog.height(), 450) << "with the frame on a screen of 640 x 480";
    }
}

} // namespace
