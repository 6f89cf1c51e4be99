#include <oviapi/button.h>
#include <oviapi/checkbox.h>
#include <oviapi/lineedit.h>
#include <oviapi/spinbox.h>
#include <oviapi/static.h>

#include <QPushButton>

#include <oviapi/qt/native.h>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

struct Keyboard : FormTest {
    void press(int key, int modifiers = 0) { UiDriver::key(form, key, modifiers); }
    void mnemonic(char c)
    {
        press(KeyA + c - 'A', ModifierAlt);
        UiDriver::processEvents();
    }
    static bool looksDefault(const WButton& button)
    {
        return button.native()->as<QPushButton>()->isDefault();
    }
};

TEST_F(Keyboard, AFocusedButtonLooksAndActsAsTheDefaultOne)
{
    WButton usual;
    WButton other;
    WLineEdit edit;
    made(edit, 10, 100);
    made(usual);
    made(other, 200, 10);
    form.setDefaultButton(&usual);
    edit.setFocus();
    EXPECT_TRUE(looksDefault(usual));
    other.setFocus();
    EXPECT_FALSE(looksDefault(usual));
    EXPECT_TRUE(looksDefault(other));
    other.setText(L"still");
    EXPECT_TRUE(looksDefault(other)) << "a new caption changes nothing";
    Counter pushes;
    pushes.listen<&WButton::onPush>(other);
    press(KeyEnter);
    EXPECT_EQ(pushes.calls, 1);
    edit.setFocus();
    EXPECT_TRUE(looksDefault(usual));
    EXPECT_FALSE(looksDefault(other));
    usual.setFocus();
    edit.setFocus();
    EXPECT_TRUE(looksDefault(usual));
}

TEST_F(Keyboard, EnterInAFieldPushesTheDefaultButton)
{
    WButton usual;
    WLineEdit edit;
    WSpinBox spin;
    WCheckBox box;
    made(usual);
    form.setDefaultButton(&usual);
    Counter pushes;
    pushes.listen<&WButton::onPush>(usual);
    made(edit, 10, 50).setFocus();
    press(KeyEnter);
    made(spin, 10, 90).setFocus();
    press(KeyEnter);
    made(box, 10, 130).setFocus();
    press(KeyEnter);
    EXPECT_EQ(pushes.calls, 3);
}

TEST_F(Keyboard, AMnemonicOfALabelLeadsToTheNextControl)
{
    WLineEdit before;
    WStatic label;
    WButton off;
    WLineEdit behind;
    made(before);
    label.setText(L"&Zoom");
    made(label, 10, 50);
    made(behind, 10, 90);
    form.show(true);
    before.setFocus();
    mnemonic('Z');
    EXPECT_TRUE(behind.hasFocus());
}

TEST_F(Keyboard, ABuddyMayBeCreatedAfterItsLabel)
{
    WStatic label;
    WLineEdit next;
    WLineEdit late;
    label.setText(L"&Zoom");
    label.setBuddy(&late);
    made(label);
    made(next, 10, 50).setFocus();
    made(late, 10, 90);
    form.show(true);
    mnemonic('Z');
    EXPECT_TRUE(late.hasFocus());
    EXPECT_EQ(UiDriver::accessibleName(late), L"Zoom");
}

TEST_F(Keyboard, AnAmpersandAloneIsNoMnemonic)
{
    WStatic label;
    WLineEdit edit;
    WLineEdit behind;
    label.setText(L"Zoom && more&");
    made(edit);
    made(label, 10, 50);
    made(behind, 10, 90);
    form.show(true);
    edit.setFocus();
    mnemonic('Z');
    EXPECT_TRUE(edit.hasFocus());
}

TEST_F(Keyboard, MnemonicsTickBoxesAndPushButtons)
{
    WCheckBox box;
    WButton button;
    box.setText(L"Re&member");
    button.setText(L"&Save");
    made(box);
    made(button, 10, 50);
    Counter pushes;
    pushes.listen<&WButton::onPush>(button);
    mnemonic('M');
    EXPECT_TRUE(UiDriver::waitUntil([&] { return box.isChecked(); }));
    mnemonic('S');
    EXPECT_TRUE(UiDriver::waitUntil([&] { return pushes.calls == 1; }));
}

TEST_F(Keyboard, TabFollowsTheOrderThatWasSet)
{
    WLineEdit a;
    WLineEdit b;
    WLineEdit c;
    WLineEdit never;
    made(a);
    made(b, 10, 50);
    made(c, 10, 90);
    form.setTabOrder({&c, &never, nullptr, &a, &b});
    c.setFocus();
    press(KeyTab);
    EXPECT_TRUE(a.hasFocus());
    press(KeyTab);
    EXPECT_TRUE(b.hasFocus());
    press(KeyTab);
    EXPECT_TRUE(c.hasFocus());
    press(KeyTab, ModifierShift);
    EXPECT_TRUE(b.hasFocus());
    form.setTabOrder({});
}

} // namespace
