// Dialogs with text that is too large for the screen.
#include <set>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>

#include "application.h"
#include "dialogs.h"
#include "explorer/connectdialog.h"
#include "explorer/gotorowdialog.h"
#include "explorer/opendialog.h"
#include "explorer/settingsdialog.h"

namespace {

using OviAPI::InputDriver;
using OviAPI::VirtualKey;
using OviAPI::WVisualObject;

constexpr OviAPI::Rect smallScreen{0, 0, 800, 600};
constexpr int windowFrame = 30; // px

class BigText : public DialogTest {
protected:
    // Shows a dialog and goes through all its controls by key.
    void check(ExplorerDialog& dialog, bool scrolls)
    {
        dialog.setScreen(smallScreen);
        ASSERT_TRUE(dialog.create());
        dialog.show(true);
        dialog.bringToFront();
        settle();
        EXPECT_GE(dialog.x(), 0);
        EXPECT_GE(dialog.y(), 0);
        EXPECT_LE(dialog.width(), smallScreen.width());
        EXPECT_LE(dialog.height(), smallScreen.height() - windowFrame);
        EXPECT_EQ(dialog.content().contentSize().height > dialog.height(), scrolls);
        std::set<const WVisualObject*> seen;
        const WVisualObject* focused = WVisualObject::focusedObject();
        while (focused && seen.insert(focused).second) {
            checkSeen(dialog, *focused);
            InputDriver::key(VirtualKey(OviAPI::KeyTab));
            ASSERT_TRUE(waitFor([&] { return WVisualObject::focusedObject() != focused; }));
            focused = WVisualObject::focusedObject();
        }
        EXPECT_GE(seen.size(), 3U);
    }
    // The control with the focus is inside the part of the dialog that is on the screen.
    static void checkSeen(ExplorerDialog& dialog, const WVisualObject& object)
    {
        const OviAPI::Point from = object.mapTo(dialog, {0, 0});
        const OviAPI::Point to = object.mapTo(dialog, {object.width(), object.height()});
        EXPECT_GE(from.x, 0) << typeid(object).name();
        EXPECT_LE(to.x, dialog.clientWidth()) << typeid(object).name();
        if (to.y - from.y > dialog.clientHeight())
            return; // taller than the dialog
        EXPECT_GE(from.y, 0) << typeid(object).name();
        EXPECT_LE(to.y, dialog.clientHeight());
    }
    void setSize(int points)
    {
        m_options.FontControls = {L"Helvetica", points};
        m_above.setFont(m_options.FontControls);
    }
};

TEST_F(BigText, TheConnectionDialogScrollsToWhatHasTheFocus)
{
    for (const auto language : {TypicalOptions::DefaultLanguage, TypicalOptions::Koi8Language}) {
        setLanguage(language);
        setSize(30);
        Connection file;
        file.path = L"/a.db";
        file.readOnly = true; // shows the advanced settings
        m_options.Connections.add(file);
        ConnectDialog dialog(m_above, m_options);
        check(dialog, true);
    }
}

TEST_F(BigText, EveryDialogStaysOnTheScreen)
{
    for (const int points : {24, 40}) {
        setSize(points);
        SettingsDialog settings(m_above, m_options, [] {});
        check(settings, true);
        GoToRowDialog row(m_above, 1, 100000);
        check(row, false);
        OpenDialog open(m_above, L"/some/folder");
        check(open, false);
    }
}

TEST_F(BigText, ADialogThatFitsHasNoScrollBars)
{
    SettingsDialog settings(m_above, m_options, [] {});
    check(settings, false);
    EXPECT_EQ(settings.content().visibleHeight(), settings.clientHeight());
    EXPECT_EQ(settings.content().visibleWidth(), settings.clientWidth());
}

TEST_F(BigText, ADialogScrollsWhenItsTextGrows)
{
    SettingsDialog settings(m_above, m_options, [] {});
    check(settings, false);
    setSize(30);
    m_above.slotFontChanged(nullptr, WExtForm::fkControls, m_options.FontControls);
    settle();
    EXPECT_LE(settings.height(), smallScreen.height() - windowFrame);
    EXPECT_LT(settings.content().visibleHeight(), settings.content().contentSize().height);
}

} // namespace
