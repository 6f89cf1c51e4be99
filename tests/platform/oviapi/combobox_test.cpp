#include <oviapi/combobox.h>
#include <oviapi/dialog.h>
#include <oviapi/inputdriver.h>
#include <oviapi/lineedit.h>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

struct ComboBox : FormTest {
    WComboBox combo;
    Counter selected;
    Counter told;
    Counter text;

    void fill(WComboBox& box)
    {
        for (const wchar_t* line : {L"apple", L"banana", L"blue", L"cherry"})
            box.insertLine(line);
    }
    void make(long style = 0)
    {
        combo.setStyle(style);
        fill(combo);
        made(combo).setFocus();
        selected.listen<&WLineList::onSelect>(combo);
        told.listen<&WComboBox::onSelChanged>(combo);
        text.listen<&WComboBox::onTextChanged>(combo);
    }
    void press(int key, int modifiers = 0) { UiDriver::key(form, key, modifiers); }
    // A key for whatever window is in front.
    static void pressInFront(int key)
    {
        InputDriver::key({key});
        UiDriver::processEvents();
    }
};

TEST_F(ComboBox, TellsWhatTheUserChoosesAndWhatIsSet)
{
    make();
    EXPECT_EQ(combo.currentLine(), -1);
    press(KeyDown);
    EXPECT_EQ(combo.currentLine(), 0);
    EXPECT_EQ(selected.calls, 1);
    EXPECT_EQ(told.calls, 1);
    combo.setCurrentLine(2);
    combo.setCurrentLine(2);
    EXPECT_EQ(selected.calls, 1) << "not by the user";
    EXPECT_EQ(told.calls, 2);
    combo.insertLine(L"first", nullptr, 0);
    EXPECT_EQ(combo.currentLine(), 3);
    EXPECT_EQ(told.calls, 2) << "the same line under another number";
    combo.removeLine(3);
    EXPECT_EQ(combo.currentLine(), -1);
    EXPECT_EQ(told.calls, 3);
    EXPECT_EQ(combo.text(), L"");
}

TEST_F(ComboBox, TypingChoosesTheNextLineThatBeginsSo)
{
    make();
    UiDriver::type(form, L"bl");
    EXPECT_EQ(combo.text(), L"blue");
}

TEST_F(ComboBox, DropsDownByKeysAndEscapeClosesTheListAlone)
{
    WDialog dialog;
    WComboBox inside;
    dialog.move(0, 0, 300, 200);
    ASSERT_TRUE(dialog.create());
    inside.setParent(&dialog);
    inside.move(10, 10, 120, 28);
    fill(inside);
    ASSERT_TRUE(inside.create());
    Counter escapes;
    escapes.listen<&VisualObject::onKeyDown>(dialog);
    Counter drops;
    drops.listen<&WComboBox::onDropDown>(inside);
    UiDriver::showAndActivate(dialog);
    inside.setFocus();
    UiDriver::key(dialog, KeyDown, ModifierAlt);
    EXPECT_TRUE(inside.isDropped());
    pressInFront(KeyEscape);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return !inside.isDropped(); }));
    EXPECT_EQ(escapes.calls, 0);
    UiDriver::key(dialog, KeyF1 + 3);
    EXPECT_TRUE(inside.isDropped());
    pressInFront(KeyDown);
    pressInFront(KeyEnter);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return !inside.isDropped(); }));
    EXPECT_GE(inside.currentLine(), 0);
    EXPECT_EQ(drops.calls, 2);
    UiDriver::key(dialog, KeyEscape);
    EXPECT_EQ(escapes.calls, 1);
}

TEST_F(ComboBox, TheListCanBeFilledOrKeptClosedWhenItDrops)
{
    make();
    connect<&WComboBox::onDropDown>(combo, form, [&](Object*) -> SlotResult {
        combo.insertLine(L"late");
        return combo.lineCount() > 5;
    });
    combo.setDropped(true);
    EXPECT_TRUE(combo.isDropped());
    EXPECT_EQ(combo.lineCount(), 5);
    combo.setDropped(false);
    combo.setDropped(true);
    EXPECT_FALSE(combo.isDropped());
}

TEST_F(ComboBox, AnEditableOneTakesAnyText)
{
    make(WComboBox::Editable);
    UiDriver::type(form, L"blue");
    EXPECT_EQ(combo.text(), L"blue");
    EXPECT_EQ(combo.currentLine(), 2) << "a line with this text";
    EXPECT_EQ(text.calls, 4);
    EXPECT_EQ(selected.calls, 1);
    UiDriver::type(form, L"r");
    EXPECT_EQ(combo.currentLine(), -1);
    EXPECT_EQ(combo.text(), L"bluer");
    combo.insertLine(L"x", nullptr, 0);
    combo.removeLine(1);
    combo.setLineText(0, L"y");
    EXPECT_EQ(combo.text(), L"bluer") << "lines come and go";
    press(KeyEnter);
    EXPECT_EQ(combo.lineCount(), 4) << "and none comes by itself";
    combo.setCurrentLine(1);
    EXPECT_EQ(combo.text(), L"banana");
}

TEST_F(ComboBox, TextsAreSetByTheProgram)
{
    make(WComboBox::Editable);
    combo.setText(L"cherry");
    EXPECT_EQ(combo.currentLine(), 3);
    EXPECT_EQ(text.calls, 1);
    EXPECT_EQ(told.calls, 1);
    EXPECT_EQ(selected.calls, 0);
    combo.setText(L"none of them");
    EXPECT_EQ(combo.currentLine(), -1);
    combo.setText(L"none of them");
    EXPECT_EQ(text.calls, 2);
    WComboBox plain;
    fill(plain);
    plain.setText(L"blue");
    EXPECT_EQ(plain.currentLine(), 2);
    plain.setText(L"other");
    EXPECT_EQ(plain.currentLine(), -1);
    EXPECT_EQ(plain.text(), L"");
    plain.setText(nullptr);
}

TEST_F(ComboBox, TextsAreNotLongerThanAllowed)
{
    make(WComboBox::Editable);
    combo.setMaxLength(3);
    UiDriver::type(form, L"abcdef");
    EXPECT_EQ(combo.text(), L"abc");
    combo.setText(L"uvwxyz");
    EXPECT_EQ(combo.text(), L"uvw");
}

TEST_F(ComboBox, KeepsTextAndLineBeforeAndAfterItsWindow)
{
    WComboBox other;
    other.setStyle(WComboBox::Editable | WComboBox::NoFrame);
    fill(other);
    other.setText(L"free text");
    made(other, 10, 60).setFocus();
    EXPECT_EQ(other.text(), L"free text");
    other.selectAll();
    UiDriver::type(form, L"blue");
    other.destroy();
    EXPECT_EQ(other.text(), L"blue");
    EXPECT_EQ(other.currentLine(), 2);
}

TEST_F(ComboBox, ItsOwnerSeesEnterEscapeAndTabFirst)
{
    for (const long style : {0L, long{WComboBox::Editable}}) {
        WComboBox box;
        box.setStyle(style);
        made(box, 200, 10).setFocus();
        std::vector<int> keys;
        connect<&VisualObject::onKeyDown>(box, form, [&](Object*, VirtualKey key) -> SlotResult {
            keys.push_back(key.getKeyboardKey());
            return 1;
        });
        press(KeyEnter);
        press(KeyEscape);
        press(KeyTab);
        EXPECT_EQ(keys, (std::vector<int>{KeyEnter, KeyEscape, KeyTab}));
        EXPECT_TRUE(box.hasFocus());
    }
}

TEST_F(ComboBox, MayDieInEveryHandlerOfItsOwn)
{
    for (int signal = 0; signal < 4; ++signal) {
        auto doomed = std::make_unique<WComboBox>();
        doomed->setStyle(WComboBox::Editable);
        fill(*doomed);
        made(*doomed, 200, 10).setFocus();
        const auto kill = [&](Object*) -> SlotResult {
            doomed.reset();
            return 0;
        };
        if (signal == 0)
            connect<&WComboBox::onSelChanged>(*doomed, form, kill);
        else if (signal == 1)
            connect<&WLineList::onSelect>(*doomed, form, kill);
        else if (signal == 2)
            connect<&WComboBox::onTextChanged>(*doomed, form, kill);
        else
            connect<&WComboBox::onDropDown>(*doomed, form, kill);
        press(signal == 3 ? KeyF1 + 3 : int{KeyDown});
        EXPECT_FALSE(doomed) << signal;
    }
    auto doomed = std::make_unique<WComboBox>();
    fill(*doomed);
    made(*doomed, 200, 10);
    doomed->setCurrentLine(1);
    connect<&WComboBox::onSelChanged>(*doomed, form, [&](Object*) -> SlotResult {
        doomed.reset();
        return 0;
    });
    doomed->clear();
    EXPECT_FALSE(doomed) << "while it is emptied";
}

TEST_F(ComboBox, TheWheelTurnsItOnlyWithTheFocus)
{
    make();
    combo.setCurrentLine(0);
    UiDriver::wheel(combo, 10, 10, -1);
    EXPECT_EQ(combo.currentLine(), 1);
    WLineEdit other;
    made(other, 10, 100).setFocus();
    UiDriver::wheel(combo, 10, 10, -1);
    EXPECT_EQ(combo.currentLine(), 1);
}

TEST_F(ComboBox, ADisabledOneDropsNothing)
{
    make();
    combo.enable(false);
    combo.setDropped(true);
    UiDriver::click(combo);
    EXPECT_FALSE(combo.isDropped());
}

} // namespace
