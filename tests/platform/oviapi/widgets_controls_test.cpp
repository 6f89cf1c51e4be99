#include <oviapi/button.h>
#include <oviapi/checkbox.h>
#include <oviapi/combobox.h>
#include <oviapi/form.h>
#include <oviapi/lineedit.h>
#include <oviapi/listbox.h>
#include <oviapi/panel.h>
#include <oviapi/picture.h>
#include <oviapi/static.h>
#include <oviapi/virtualkey.h>

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

struct Controls : FormTest {
    Controls()
        : FormTest(400, 300)
    {
    }
    // Counts what a signal sends.
    struct Counter : Object {
        int calls = 0;
        SlotResult count(Object*)
        {
            ++calls;
            return 0;
        }
    } counter;
};

TEST_F(Controls, AButtonIsPushedByMouseAndSpaceAndProgram)
{
    WButton button;
    connect<&WButton::onPush>(button, counter, &Counter::count);
    button.push();
    EXPECT_EQ(counter.calls, 0) << "not created";
    made(button);
    UiDriver::click(button);
    EXPECT_EQ(counter.calls, 1);
    UiDriver::key(button, KeySpace);
    EXPECT_EQ(counter.calls, 2);
    button.push();
    EXPECT_EQ(counter.calls, 3);
    button.enable(false);
    button.push();
    UiDriver::click(button);
    EXPECT_EQ(counter.calls, 3);
}

TEST_F(Controls, APressReleasedOutsideTheButtonPushesNothing)
{
    WButton button;
    made(button);
    connect<&WButton::onPush>(button, counter, &Counter::count);
    UiDriver::drag(button, {5, 5}, {5, 100});
    EXPECT_EQ(counter.calls, 0);
}

TEST_F(Controls, TheVirtualFunctionOfAButtonIsItsOwnHandling)
{
    struct Own : WButton {
        int pushes = 0;
        bool onPush() override { return ++pushes > 0; }
    };
    Own button;
    made(button);
    UiDriver::click(button);
    EXPECT_EQ(button.pushes, 1);
}

TEST_F(Controls, WithoutTheVisibleBitAButtonIsMadeHidden)
{
    WButton button;
    button.setStyle(WButton::TabStop);
    made(button);
    EXPECT_FALSE(button.isVisible());
}

TEST_F(Controls, AButtonShowsThePictureOfItsState)
{
    const Picture red({16, 16}, Color(255, 0, 0));
    const Picture blue({16, 16}, Color(0, 0, 255));
    WButton button;
    button.setStyle(WButton::Visible | WButton::Flat | WButton::PictureOnly);
    button.setText(L"Close");
    button.setPictures(&red, &blue, nullptr, nullptr);
    made(button, 0, 0, 40, 40);
    EXPECT_EQ(UiDriver::pixel(button, 20, 20), 0xFFFF0000U);
    UiDriver::press(button, 20, 20);
    EXPECT_EQ(UiDriver::pixel(button, 21, 21), 0xFF0000FFU);
    UiDriver::release(button, 20, 20);
    EXPECT_EQ(UiDriver::pixel(button, 20, 20), 0xFFFF0000U);
    EXPECT_EQ(UiDriver::accessibleName(button), L"Close") << "the caption that is not shown";
    button.setPictures(nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(UiDriver::pixel(button, 20, 20), 0xFFFF0000U);
}

TEST_F(Controls, AFieldKeepsItsTextBeforeAndAfterItIsCreated)
{
    WLineEdit edit;
    edit.setText(L"before");
    EXPECT_EQ(edit.text(), L"before");
    made(edit);
    EXPECT_EQ(edit.text(), L"before");
    edit.setText(L"\x416\x1F600 after");
    wchar_t buffer[5];
    edit.getText(buffer, 5);
    EXPECT_STREQ(buffer, L"\x416\x1F600 a");
    edit.destroy();
    EXPECT_EQ(edit.text(), L"\x416\x1F600 after");
}

TEST_F(Controls, PositionsInAFieldCountCharacters)
{
    WLineEdit edit;
    edit.setText(L"\x1F600xyz");
    made(edit);
    edit.setCaret(2);
    EXPECT_EQ(edit.caret(), 2);
    edit.setFocus();
    UiDriver::type(form, L"-");
    EXPECT_EQ(edit.text(), L"\x1F600x-yz");
    edit.select(0, 1);
    EXPECT_EQ(edit.selectedText(), L"\x1F600");
    edit.select(3, -1);
    EXPECT_EQ(edit.selectedText(), L"yz");
    edit.select(-5, 100);
    EXPECT_EQ(edit.selectedText(), L"\x1F600x-yz");
    edit.setCaretToEnd();
    EXPECT_EQ(edit.caret(), 5);
    EXPECT_EQ(edit.selectedText(), L"");
}

TEST_F(Controls, AFieldTellsEveryChangeOfItsText)
{
    WLineEdit edit;
    made(edit);
    connect<&WLineEdit::onTextChanged>(edit, counter, &Counter::count);
    edit.setFocus();
    UiDriver::type(form, L"ab");
    EXPECT_EQ(counter.calls, 2);
    edit.setText(L"cd");
    edit.setText(L"cd");
    EXPECT_EQ(counter.calls, 3);
}

TEST_F(Controls, AReadOnlyFieldAndAFullOneTakeNothing)
{
    WLineEdit edit;
    edit.setMaxLength(3);
    made(edit);
    edit.setFocus();
    UiDriver::type(form, L"abcd");
    EXPECT_EQ(edit.text(), L"abc");
    edit.setReadOnly(true);
    UiDriver::key(form, KeyBackspace);
    EXPECT_EQ(edit.text(), L"abc");
}

TEST_F(Controls, AHandledCharacterIsNotTyped)
{
    struct Digits : WLineEdit {
        bool onChar(wchar_t character) override { return character < L'0' || character > L'9'; }
    };
    Digits edit;
    made(edit);
    edit.setFocus();
    UiDriver::type(form, L"1a2b3");
    EXPECT_EQ(edit.text(), L"123");
}

TEST_F(Controls, TickingACheckBoxIsTold)
{
    WCheckBox box;
    box.setText(L"&Remember");
    made(box);
    connect<&WCheckBox::onCheck>(box, counter, &Counter::count);
    UiDriver::click(box, 8, 15);
    EXPECT_TRUE(box.isChecked());
    EXPECT_EQ(counter.calls, 1);
    UiDriver::key(form, KeyA + 'R' - 'A', ModifierAlt);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return !box.isChecked(); }));
    EXPECT_EQ(counter.calls, 2);
    box.setChecked(true);
    EXPECT_EQ(counter.calls, 2) << "the program knows what it does";
}

TEST_F(Controls, LinesCarryTheApplicationsPointers)
{
    int a = 0;
    int b = 0;
    WListBox list;
    EXPECT_EQ(list.insertLine(L"second", &b), 0);
    made(list, 10, 10, 150, 100);
    EXPECT_EQ(list.insertLine(L"first", &a, 0), 0);
    EXPECT_EQ(list.insertLine(L"third"), 2);
    EXPECT_EQ(list.lineCount(), 3);
    EXPECT_EQ(list.lineCargo(0), &a);
    EXPECT_EQ(list.lineCargo(1), &b);
    EXPECT_EQ(list.lineCargo(2), nullptr);
    EXPECT_EQ(list.lineCargo(3), nullptr);
    EXPECT_EQ(list.lineCargo(-1), nullptr);
    EXPECT_EQ(list.lineText(1), L"second");
    EXPECT_EQ(list.findCargo(&b), 1);
    EXPECT_EQ(list.findCargo(&list), -1);
}

TEST_F(Controls, TheCurrentLineStaysTheSameWhenOthersComeAndGo)
{
    for (const bool created : {false, true}) {
        WListBox list;
        if (created)
            made(list, 10, 10, 150, 100);
        for (const wchar_t* text : {L"a", L"b", L"c"})
            list.insertLine(text);
        EXPECT_EQ(list.currentLine(), -1);
        list.setCurrentLine(1);
        list.insertLine(L"new", nullptr, 0);
        EXPECT_EQ(list.currentLine(), 2);
        EXPECT_EQ(list.lineText(list.currentLine()), L"b");
        list.removeLine(0);
        EXPECT_EQ(list.currentLine(), 1);
        list.removeLine(1);
        EXPECT_EQ(list.currentLine(), -1);
        list.removeLine(7);
        EXPECT_EQ(list.lineCount(), 2);
        list.setCurrentLine(7);
        EXPECT_EQ(list.currentLine(), -1);
        list.clear();
        EXPECT_EQ(list.lineCount(), 0);
    }
}

TEST_F(Controls, ChoosingALineIsToldWhenTheUserDoesIt)
{
    WListBox list;
    for (const wchar_t* text : {L"a", L"b", L"c"})
        list.insertLine(text);
    made(list, 10, 10, 150, 100);
    connect<&WLineList::onSelect>(list, counter, &Counter::count);
    list.setCurrentLine(0);
    EXPECT_EQ(counter.calls, 0);
    list.setFocus();
    UiDriver::key(form, KeyDown);
    EXPECT_EQ(list.currentLine(), 1);
    EXPECT_EQ(counter.calls, 1);
    int y = 0;
    while (list.lineAt(5, y) != 2 && y < 100)
        ++y;
    UiDriver::click(list, 5, y + 1);
    EXPECT_EQ(list.currentLine(), 2);
    EXPECT_EQ(counter.calls, 2);
}

TEST_F(Controls, AListGivesItsKeysAndDoubleClicksToItsSlots)
{
    WListBox list;
    for (const wchar_t* text : {L"a", L"b"})
        list.insertLine(text);
    made(list, 10, 10, 150, 100);
    list.setCurrentLine(0);
    int up = 0;
    int doubles = 0;
    connect<&VisualObject::onKeyDown>(list, counter, [&](Object*, VirtualKey key) -> SlotResult {
        up += key.getKeyboardKey() == 10;
        return true;
    });
    connect<&VisualObject::onLButtonDblClk>(list, counter,
                                            [&](Object*, int, int, long) -> SlotResult {
                                                ++doubles;
                                                return 0;
                                            });
    list.setFocus();
    UiDriver::key(form, KeyUp);
    UiDriver::key(form, KeyDown);
    EXPECT_EQ(up, 1);
    EXPECT_EQ(list.currentLine(), 0) << "the slot has handled the key";
    UiDriver::doubleClick(list, 5, 5);
    EXPECT_EQ(doubles, 1);
}

TEST_F(Controls, ADropDownListIsAListAsWell)
{
    WComboBox combo;
    for (const wchar_t* text : {L"a", L"b"})
        combo.insertLine(text);
    made(combo);
    EXPECT_EQ(combo.currentLine(), -1);
    combo.setCurrentLine(0);
    connect<&WLineList::onSelect>(combo, counter, &Counter::count);
    combo.setFocus();
    UiDriver::key(form, KeyDown);
    EXPECT_EQ(combo.currentLine(), 1);
    EXPECT_EQ(counter.calls, 1);
    combo.removeLine(1);
    EXPECT_EQ(combo.currentLine(), -1);
}

TEST_F(Controls, ALabelDrawsItsText)
{
    WStatic label;
    label.setText(L"\x2588\x2588\x2588\x2588");
    label.setTextColor(Color(200, 0, 0));
    made(label);
    bool drawn = false;
    for (int x = 0; x < 40 && !drawn; ++x)
        drawn = UiDriver::pixel(label, x, 8) == 0xFFC80000U;
    EXPECT_TRUE(drawn);
    wchar_t buffer[3];
    label.getText(buffer, 3);
    EXPECT_STREQ(buffer, L"\x2588\x2588");
}

TEST_F(Controls, ALabelMovesTheFocusToItsControl)
{
    WStatic label;
    WLineEdit edit;
    WLineEdit other;
    made(other, 10, 100);
    made(edit, 200, 200);
    label.setText(L"&Name");
    label.setBuddy(&edit);
    made(label);
    other.setFocus();
    UiDriver::key(form, KeyA + 'N' - 'A', ModifierAlt);
    EXPECT_TRUE(edit.hasFocus());
    EXPECT_EQ(UiDriver::accessibleName(edit), L"Name");
}

TEST_F(Controls, AFieldIsNamedByTheLabelBesideOrAboveIt)
{
    WStatic left;
    WStatic above;
    WLineEdit first;
    WLineEdit second;
    WLineEdit named;
    left.setText(L"&Width");
    above.setText(L"Height");
    named.setAccessibleName(L"Own");
    made(left, 10, 10, 100, 20);
    made(above, 10, 60, 100, 20);
    made(second, 10, 85, 100, 20);
    made(first, 120, 10, 100, 20);
    made(named, 240, 10, 100, 20);
    form.show(false);
    form.show(true);
    EXPECT_EQ(UiDriver::accessibleName(first), L"Width");
    EXPECT_EQ(UiDriver::accessibleName(second), L"Height");
    EXPECT_EQ(UiDriver::accessibleName(named), L"Own");
}

TEST_F(Controls, ABorderLiesOutsideTheClientArea)
{
    WPanel panel;
    panel.setStyle(WPanel::Border);
    made(panel, 0, 0, 100, 50);
    EXPECT_LT(panel.clientWidth(), 100);
    EXPECT_GT(panel.clientWidth(), 90);
    panel.move(0, 0, 120, 50);
    EXPECT_GT(panel.clientWidth(), 110);
}

TEST(Keys, TheNumbersThatApplicationsRelyOn)
{
    EXPECT_EQ(KeyEscape, 1);
    EXPECT_EQ(KeyEnter, 4);
    EXPECT_EQ(KeyLeft, 9);
    EXPECT_EQ(KeyUp, 10);
    EXPECT_EQ(KeyRight, 11);
    EXPECT_EQ(KeyDown, 12);
    EXPECT_EQ(KeyPageUp, 13);
    EXPECT_EQ(KeyPageDown, 14);
    EXPECT_EQ(KeyControl, 17);
    EXPECT_EQ(KeySpace, 30);
    EXPECT_EQ(KeyMinus, 41);
    EXPECT_EQ(KeyPlus, 43);
    EXPECT_EQ(KeyTab, 71);
    EXPECT_EQ(WButton().style(), 6);
}

TEST_F(Controls, KeysArriveUnderTheirNumbers)
{
    struct Log : WPanel {
        int key = 0;
        int modifiers = 0;
        bool onKeyDown(VirtualKey pressed) override
        {
            key = pressed.getKeyboardKey();
            modifiers = pressed.modifiers();
            return true;
        }
    };
    Log log;
    log.setStyle(WPanel::TabStop);
    made(log);
    log.setFocus();
    for (const int key : {1, 4, 9, 10, 11, 12, 13, 14, 17, 30, 31, 40, 41, 43, 45, 70, 71, 81}) {
        UiDriver::key(form, key);
        EXPECT_EQ(log.key, key);
    }
    UiDriver::key(form, KeyTab, ModifierShift | ModifierControl);
    EXPECT_EQ(log.key, KeyTab);
    EXPECT_EQ(log.modifiers, ModifierShift | ModifierControl);
}

} // namespace
