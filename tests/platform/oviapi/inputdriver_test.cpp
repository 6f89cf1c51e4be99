#include <oviapi/form.h>
#include <oviapi/inputdriver.h>
#include <oviapi/lineedit.h>
#include <oviapi/panel.h>

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

// Counts what the mouse does.
struct Pad : WPanel {
    int presses = 0;
    int doubles = 0;
    long movedWith = -1; // flags of the last move
    std::function<void()> whenPressed;

    bool onLButtonDown(int, int, long) override
    {
        ++presses;
        if (whenPressed)
            whenPressed();
        return true;
    }
    bool onLButtonDblClk(int, int, long) override { return ++doubles > 0; }
    bool onMouseMove(int, int, long flags) override
    {
        movedWith = flags;
        return true;
    }
};

class Input : public testing::Test {
protected:
    Input()
    {
        form.move(0, 0, 300, 200);
        EXPECT_TRUE(form.create());
        pad->setParent(&form);
        pad->move(0, 0, 100, 100);
        EXPECT_TRUE(pad->create());
        edit.setParent(&form);
        edit.move(100, 0, 100, 30);
        EXPECT_TRUE(edit.create());
        UiDriver::showAndActivate(form);
    }

    WForm form;
    std::unique_ptr<Pad> pad = std::make_unique<Pad>();
    WLineEdit edit;
};

TEST_F(Input, TwoClicksInOnePlaceAreNotADoubleClick)
{
    InputDriver::click(*pad, {50, 50});
    InputDriver::click(*pad, {50, 50});
    EXPECT_EQ(pad->presses, 0); // the event loop has not run yet
    UiDriver::processEvents();
    EXPECT_EQ(pad->presses, 2);
    EXPECT_EQ(pad->doubles, 0);
}

TEST_F(Input, ADoubleClickIsAPressAndADoubleClick)
{
    InputDriver::doubleClick(*pad, {50, 50});
    InputDriver::doubleClick(*pad, {50, 50});
    UiDriver::processEvents();
    EXPECT_EQ(pad->presses, 2);
    EXPECT_EQ(pad->doubles, 2);
}

TEST_F(Input, AButtonStaysDownUntilItIsReleased)
{
    InputDriver::Mouse(*pad).press({10, 10});
    InputDriver::Mouse(*pad, ModifierShift).move({20, 20});
    EXPECT_EQ(pad->movedWith, MouseLeft | MouseShift);
    InputDriver::Mouse(*pad).release({20, 20});
    InputDriver::Mouse(*pad).move({30, 30});
    EXPECT_EQ(pad->movedWith, 0);
}

TEST_F(Input, TheMouseOutlivesWhatItPresses)
{
    pad->whenPressed = [this] { pad.reset(); };
    InputDriver::Mouse mouse(*pad);
    mouse.press({10, 10});
    EXPECT_EQ(pad, nullptr);
    mouse.move({20, 20});
    mouse.release({20, 20});
}

TEST_F(Input, AClickOnWhatHasGoneMeanwhileDoesNothing)
{
    InputDriver::click(*pad, {50, 50});
    pad.reset();
    UiDriver::processEvents();
    EXPECT_EQ(form.childCount(), 1);
}

TEST_F(Input, AKeyTypesWhatItStandsFor)
{
    edit.setFocus();
    for (const VirtualKey key :
         {VirtualKey(KeyA), VirtualKey(KeyZ, ModifierShift), VirtualKey(Key9), VirtualKey(KeySpace),
          VirtualKey(KeyPlus), VirtualKey(KeyA, ModifierControl), VirtualKey(KeyF1, 0, L'\u0416')})
        InputDriver::pressKey(edit, key);
    EXPECT_EQ(edit.text(), L"\u0416"); // Control+A selects everything before
    edit.setText(L"");
    for (const int key : {int{KeyA} + 1, int{KeyMinus}, int{KeyAsterisk}, int{KeyEqual}})
        InputDriver::key(key);
    InputDriver::type(L"x\u0416");
    UiDriver::processEvents();
    EXPECT_EQ(edit.text(), L"b-*=x\u0416");
}

} // namespace
