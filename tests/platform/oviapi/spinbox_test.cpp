#include <oviapi/button.h>
#include <oviapi/lineedit.h>
#include <oviapi/panel.h>
#include <oviapi/spinbox.h>
#include <oviapi/static.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

struct SpinBox : FormTest {
    WSpinBox box;
    Counter counter;

    SpinBox()
    {
        counter.listen<&WSpinBox::onValueChanged>(box);
        made(box).setFocus();
        counter.calls = 0;
    }
    void press(int key, int modifiers = 0) { UiDriver::key(form, key, modifiers); }
    void typeAnew(std::wstring_view text)
    {
        box.selectAll();
        UiDriver::type(form, text);
    }
};

TEST_F(SpinBox, StepsByKeysWithinItsRange)
{
    box.setRange(0, 25);
    box.setStep(2);
    press(KeyUp);
    press(KeyPageUp);
    EXPECT_EQ(box.value(), 22);
    press(KeyUp);
    press(KeyUp);
    EXPECT_EQ(box.value(), 25) << "the last step is shorter";
    EXPECT_EQ(box.text(), L"25");
    press(KeyPageDown);
    press(KeyPageDown);
    EXPECT_EQ(box.value(), 0);
    EXPECT_EQ(counter.calls, 6);
}

TEST_F(SpinBox, TypedNumbersCountAtOnceAndAreClampedOnLeaving)
{
    WLineEdit other;
    made(other, 10, 100);
    box.setFocus();
    box.setRange(10, 100);
    typeAnew(L"42");
    EXPECT_EQ(box.value(), 42) << "4 alone is below the range";
    typeAnew(L"4200");
    EXPECT_EQ(box.text(), L"4200");
    other.setFocus();
    EXPECT_EQ(box.value(), 100);
    EXPECT_EQ(box.text(), L"100") << "and one sees it";
    box.setFocus();
    typeAnew(L"3");
    press(KeyEnter);
    EXPECT_EQ(box.text(), L"10");
}

TEST_F(SpinBox, WhatIsNoNumberGivesWayOnLeaving)
{
    WLineEdit other;
    made(other, 10, 100);
    box.setFocus();
    box.setRange(-10, 100);
    box.setValue(7);
    typeAnew(L"abc");
    EXPECT_EQ(box.text().find(L'a'), std::wstring::npos) << "letters cannot be typed";
    typeAnew(L"-");
    EXPECT_EQ(box.text(), L"-");
    other.setFocus();
    EXPECT_EQ(box.text(), L"7");
    EXPECT_EQ(box.value(), 7);
}

TEST_F(SpinBox, DecimalsAreExactAndUseThePointInEveryLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // stays as it was where that is not installed
    box.setDigits(2);
    box.setRange(-100000, 100000);
    box.setNumber(12.345);
    EXPECT_EQ(box.text(), L"12.35");
    EXPECT_EQ(box.value(), 1235);
    EXPECT_DOUBLE_EQ(box.number(), 12.35);
    typeAnew(L"1,5");
    EXPECT_EQ(box.value(), 150);
    press(KeyUp);
    EXPECT_EQ(box.value(), 250) << "one as before there were decimals";
    box.setDigits(0);
    EXPECT_EQ(box.value(), 3);
    EXPECT_EQ(box.text(), L"3");
    box.setNumber(std::nan(""));
    EXPECT_EQ(box.value(), 3);
    std::setlocale(LC_ALL, before.c_str());
}

TEST_F(SpinBox, WholeNumbersOf64BitsAreReachedExactly)
{
    constexpr int64_t most = std::numeric_limits<int64_t>::max();
    constexpr int64_t least = std::numeric_limits<int64_t>::min();
    box.setRange(least, most);
    box.setStep(most);
    box.setValue(most - 1);
    press(KeyUp);
    EXPECT_EQ(box.value(), most);
    press(KeyPageDown);
    EXPECT_EQ(box.value(), least);
    EXPECT_EQ(box.text(), L"-9223372036854775808");
    typeAnew(L"9223372036854775806");
    EXPECT_EQ(box.value(), most - 1);
    box.setNumber(1e300);
    EXPECT_EQ(box.value(), most);
    box.setRange(5, 1);
    EXPECT_EQ(box.maximum(), 5);
    EXPECT_EQ(box.value(), 5);
}

TEST_F(SpinBox, ASuffixStandsBehindTheNumber)
{
    box.setSuffix(L" px");
    box.setValue(5);
    EXPECT_EQ(box.text(), L"5 px");
    typeAnew(L"12");
    press(KeyEnter);
    EXPECT_EQ(box.text(), L"12 px");
    EXPECT_EQ(box.value(), 12);
}

TEST_F(SpinBox, TheWheelTurnsItOnlyWithTheFocus)
{
    UiDriver::wheel(box, 10, 10, 1);
    EXPECT_EQ(box.value(), 1);
    WLineEdit other;
    made(other, 10, 100).setFocus();
    UiDriver::wheel(box, 10, 10, 1);
    EXPECT_EQ(box.value(), 1);
}

TEST_F(SpinBox, TellsEveryChangeOnceAndNoneThatIsNone)
{
    box.setValue(5);
    box.setValue(5);
    box.setRange(0, 3);
    EXPECT_EQ(counter.calls, 2);
    box.commit();
    press(KeyEnter);
    EXPECT_EQ(counter.calls, 2);
}

TEST_F(SpinBox, ItsOwnerSeesEnterEscapeAndTabFirst)
{
    std::vector<int> keys;
    connect<&VisualObject::onKeyDown>(box, form, [&](Object*, VirtualKey key) -> SlotResult {
        keys.push_back(key.getKeyboardKey());
        return 1;
    });
    press(KeyEnter);
    press(KeyEscape);
    press(KeyTab);
    press(KeyUp);
    EXPECT_EQ(keys, (std::vector<int>{KeyEnter, KeyEscape, KeyTab, KeyUp}));
    EXPECT_EQ(box.value(), 0);
    EXPECT_TRUE(box.hasFocus());
}

TEST_F(SpinBox, MayDieWhenItTellsOfItsValue)
{
    for (const int way : {0, 1, 2, 3}) {
        auto doomed = std::make_unique<WSpinBox>();
        made(*doomed, 200, 10).setFocus();
        connect<&WSpinBox::onValueChanged>(*doomed, form, [&](Object*) -> SlotResult {
            doomed.reset();
            return 0;
        });
        if (way == 0)
            press(KeyUp);
        else if (way == 1)
            UiDriver::type(form, L"7");
        else if (way == 2)
            doomed->setValue(9);
        else
            UiDriver::click(*doomed, 143, 8);
        EXPECT_FALSE(doomed) << way;
    }
}

TEST_F(SpinBox, ServesAsAFieldWithoutFrameInsideAnother)
{
    WPanel panel;
    WSpinBox inside;
    made(panel, 10, 60, 200, 100);
    inside.setStyle(WSpinBox::NoFrame | WSpinBox::NoButtons);
    inside.setParent(&panel);
    inside.move(5, 5, 60, 20);
    inside.setValue(3);
    ASSERT_TRUE(inside.create());
    inside.setFocus();
    inside.selectAll();
    UiDriver::type(form, L"44");
    box.setFocus();
    EXPECT_EQ(inside.value(), 44);
    inside.destroy();
    EXPECT_EQ(inside.text(), L"44");
}

TEST_F(SpinBox, ReadOnlyAndDisabledOnesKeepTheirValue)
{
    box.setReadOnly(true);
    press(KeyUp);
    UiDriver::type(form, L"5");
    EXPECT_EQ(box.value(), 0);
    box.setReadOnly(false);
    box.enable(false);
    UiDriver::click(box, 143, 8);
    EXPECT_EQ(box.value(), 0);
}

TEST_F(SpinBox, IsNamedByItsLabel)
{
    WStatic label;
    label.setText(L"&Width");
    made(label, 10, 60);
    WSpinBox named;
    made(named, 165, 60, 60, 30);
    form.show(true);
    EXPECT_EQ(UiDriver::accessibleName(named), L"Width");
}

} // namespace
