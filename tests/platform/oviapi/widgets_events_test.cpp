#include <oviapi/button.h>
#include <oviapi/dialog.h>
#include <oviapi/form.h>
#include <oviapi/lineedit.h>
#include <oviapi/paintdevice.h>
#include <oviapi/panel.h>
#include <oviapi/scrollview.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

// Writes down what reaches the virtual functions.
struct LoggingPanel : WPanel {
    std::vector<std::string> log;
    bool answer = false;
    bool moves = false; // the pointer moves before every press: off for most tests

    bool note(const std::string& name, int x, int y, long flags)
    {
        log.push_back(name + ' ' + std::to_string(x) + ' ' + std::to_string(y) + ' ' +
                      std::to_string(flags));
        return answer;
    }
    bool onLButtonDown(int x, int y, long flags) override { return note("down", x, y, flags); }
    bool onLButtonUp(int x, int y, long flags) override { return note("up", x, y, flags); }
    bool onLButtonDblClk(int x, int y, long flags) override { return note("double", x, y, flags); }
    bool onRButtonDown(int x, int y, long flags) override { return note("right", x, y, flags); }
    bool onMouseMove(int x, int y, long flags) override
    {
        return moves && note("move", x, y, flags);
    }
    bool onMouseWheel(int x, int y, int delta, long) override { return note("wheel", x, y, delta); }
    bool onKeyDown(VirtualKey key) override
    {
        log.push_back("key " + std::to_string(key.getKeyboardKey()));
        return answer;
    }
    bool onKeyUp(VirtualKey key) override
    {
        log.push_back("keyup " + std::to_string(key.getKeyboardKey()));
        return answer;
    }
    bool onChar(wchar_t character) override
    {
        log.push_back("char " + std::to_string(static_cast<int>(character)));
        return answer;
    }
    bool onGetFocus() override { return note("focus", 0, 0, 0); }
    bool onLostFocus() override { return note("lost", 0, 0, 0); }
    bool onMove() override { return note("place", x(), y(), width()); }
    bool onSize() override { return note("size", clientWidth(), clientHeight(), 0); }
    bool onShow(bool shown) override { return note("show", shown, 0, 0); }
    bool onEnable(bool enabled) override { return note("enable", enabled, 0, 0); }
};

struct Window : ::testing::Test {
    WForm form;
    LoggingPanel panel;

    Window()
    {
        form.move(0, 0, 400, 300);
        EXPECT_TRUE(form.create());
        panel.setStyle(WPanel::TabStop);
        panel.setParent(&form);
        panel.move(50, 40, 200, 100);
        EXPECT_TRUE(panel.create());
        UiDriver::showAndActivate(form);
        form.setFocus();
        panel.log.clear();
    }
};

using Events = Window;

struct Receiver : Object {
    SlotResult answer = 0;
    int calls = 0;
    Object* sender = nullptr;
    SlotResult onDown(Object* from, int, int, long)
    {
        ++calls;
        sender = from;
        return answer;
    }
    SlotResult onKey(Object* from, VirtualKey)
    {
        ++calls;
        sender = from;
        return answer;
    }
};

TEST_F(Events, APressReachesTheVirtualFunctionInTheObjectsOwnCoordinates)
{
    UiDriver::click(panel, 10, 20);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"focus 0 0 0", "down 10 20 1", "up 10 20 0"}));
}

TEST_F(Events, ModifiersAreAmongTheFlags)
{
    UiDriver::press(panel, 1, 2, UiDriver::Button::Left, ModifierShift | ModifierControl);
    UiDriver::release(panel, 1, 2);
    ASSERT_GE(panel.log.size(), 2U);
    EXPECT_EQ(panel.log[1], "down 1 2 " + std::to_string(MouseLeft | MouseShift | MouseControl));
}

TEST_F(Events, ASlotThatHandlesAPressKeepsItFromTheVirtualFunction)
{
    Receiver receiver;
    receiver.answer = 1;
    connect<&VisualObject::onLButtonDown>(panel, receiver, &Receiver::onDown);
    UiDriver::click(panel, 10, 20);
    EXPECT_EQ(receiver.calls, 1);
    EXPECT_EQ(receiver.sender, static_cast<Object*>(&panel));
    EXPECT_EQ(panel.log, (std::vector<std::string>{"focus 0 0 0", "up 10 20 0"}));
}

TEST_F(Events, ASlotThatHasSeenAPressLeavesItToTheVirtualFunction)
{
    Receiver receiver;
    receiver.answer = 2;
    connect<&VisualObject::onLButtonDown>(panel, receiver, &Receiver::onDown);
    UiDriver::click(panel, 10, 20);
    EXPECT_EQ(receiver.calls, 1);
    EXPECT_EQ(panel.log[1], "down 10 20 1");
}

TEST_F(Events, ADoubleClickThatNobodyHandlesCountsAsASecondPress)
{
    UiDriver::doubleClick(panel, 3, 4);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"focus 0 0 0", "down 3 4 1", "up 3 4 0",
                                                   "double 3 4 1", "down 3 4 1", "up 3 4 0"}));
}

TEST_F(Events, ADoubleClickThatIsHandledIsNoPress)
{
    panel.answer = true;
    UiDriver::doubleClick(panel, 3, 4);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"focus 0 0 0", "down 3 4 1", "up 3 4 0",
                                                   "double 3 4 1", "up 3 4 0"}));
}

TEST_F(Events, TheMouseMovesWithoutAButton)
{
    panel.moves = true;
    UiDriver::moveTo(panel, 5, 6);
    EXPECT_EQ(panel.log, std::vector<std::string>{"move 5 6 0"});
}

TEST_F(Events, ADragStaysWithTheObjectItBeganIn)
{
    panel.moves = true;
    UiDriver::drag(panel, {10, 10}, {-40, 150});
    EXPECT_EQ(panel.log.back(), "up -40 150 0");
    EXPECT_EQ(panel.log[panel.log.size() - 2], "move -40 150 1");
}

TEST_F(Events, APressOnAChildIsNotOneOfItsParent)
{
    LoggingPanel child;
    child.setParent(&panel);
    child.move(0, 0, 30, 30);
    ASSERT_TRUE(child.create());
    panel.setFocus(); // a click on the child would give it
    panel.log.clear();
    UiDriver::click(child, 5, 5);
    EXPECT_EQ(child.log, (std::vector<std::string>{"down 5 5 1", "up 5 5 0"}));
    EXPECT_EQ(panel.log, std::vector<std::string>());
}

TEST_F(Events, ARightPressOnAButtonIsNotOneOfItsParent)
{
    WButton button;
    button.setParent(&panel);
    button.move(0, 0, 30, 30);
    ASSERT_TRUE(button.create());
    UiDriver::click(button, 5, 5, UiDriver::Button::Right);
    EXPECT_EQ(panel.log, std::vector<std::string>());
}

TEST_F(Events, ADisabledObjectGetsNoPressAndNeitherDoesItsParent)
{
    LoggingPanel child;
    child.setParent(&panel);
    child.move(0, 0, 30, 30);
    ASSERT_TRUE(child.create());
    child.enable(false);
    child.log.clear();
    panel.setFocus(); // a click on the child would give it
    panel.log.clear();
    UiDriver::click(child, 5, 5);
    EXPECT_EQ(child.log, std::vector<std::string>());
    EXPECT_EQ(panel.log, std::vector<std::string>());
}

TEST_F(Events, TheWheelGoesUpToTheParentWhenTheChildHasNoUseForIt)
{
    WButton button;
    button.setParent(&panel);
    button.move(10, 20, 30, 30);
    ASSERT_TRUE(button.create());
    UiDriver::click(button, 5, 5); // must not end the way of the wheel
    panel.log.clear();
    UiDriver::wheel(button, 5, 5, 1);
    EXPECT_EQ(panel.log, std::vector<std::string>{"wheel 15 25 120"});
}

TEST_F(Events, AKeyGoesToTheObjectWithTheFocus)
{
    panel.setFocus();
    panel.log.clear();
    UiDriver::key(panel, KeyMinus);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"key 41", "char 45", "keyup 41"}));
}

TEST_F(Events, AHandledKeyTypesNothing)
{
    panel.setFocus();
    panel.answer = true;
    panel.log.clear();
    UiDriver::key(panel, KeyMinus);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"key 41", "keyup 41"}));
}

TEST_F(Events, AnUnhandledKeyGoesUpToTheForm)
{
    WLineEdit edit;
    edit.setParent(&panel);
    edit.move(0, 0, 100, 25);
    ASSERT_TRUE(edit.create());
    edit.setFocus();
    Receiver receiver;
    connect<&VisualObject::onKeyDown>(form, receiver, &Receiver::onKey);
    UiDriver::key(edit, KeyEscape);
    EXPECT_EQ(receiver.calls, 1);
    UiDriver::key(edit, KeyA);
    EXPECT_EQ(receiver.calls, 1) << "the field has used the letter";
}

TEST_F(Events, AHandledTabMovesNoFocus)
{
    WLineEdit other;
    other.setParent(&form);
    other.move(0, 200, 100, 25);
    ASSERT_TRUE(other.create());
    panel.setFocus();
    panel.answer = true;
    UiDriver::key(panel, KeyTab);
    EXPECT_TRUE(panel.hasFocus());
    panel.answer = false;
    UiDriver::key(panel, KeyTab);
    EXPECT_TRUE(other.hasFocus());
}

TEST_F(Events, TabGoesThroughTheControlsInOrderOfCreation)
{
    WLineEdit first;
    WLineEdit second;
    for (WLineEdit* edit : {&second, &first}) // as children in the other order
        edit->setParent(&form);
    first.move(0, 200, 100, 25);
    second.move(0, 150, 100, 25);
    ASSERT_TRUE(first.create());
    ASSERT_TRUE(second.create());
    panel.setFocus();
    UiDriver::key(panel, KeyTab);
    EXPECT_TRUE(first.hasFocus());
    UiDriver::key(panel, KeyTab);
    EXPECT_TRUE(second.hasFocus());
    UiDriver::key(panel, KeyTab, ModifierShift);
    EXPECT_TRUE(first.hasFocus());
}

TEST_F(Events, MovingCallsOnMoveAndOnSizeOnlyWhenSomethingChanges)
{
    panel.move(50, 40, 200, 100);
    EXPECT_EQ(panel.log, std::vector<std::string>());
    panel.move(60, 40, 200, 100);
    EXPECT_EQ(panel.log, std::vector<std::string>{"place 60 40 200"});
    panel.log.clear();
    panel.move(60, 40, 210, 110);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"place 60 40 210", "size 210 110 0"}));
}

TEST_F(Events, AnOverriddenDoMoveMayRefuse)
{
    struct Stubborn : WPanel {
        bool doMove(int x, int y, int w, int h) override
        {
            return w >= 100 && WPanel::doMove(x, y, w, h);
        }
    };
    Stubborn stubborn;
    stubborn.setParent(&form);
    ASSERT_TRUE(stubborn.move(0, 0, 150, 10));
    ASSERT_TRUE(stubborn.create());
    EXPECT_FALSE(stubborn.move(5, 5, 99, 10));
    EXPECT_EQ(stubborn.geometry(), (Rect{0, 0, 150, 10}));
}

TEST_F(Events, AHiddenPanelKnowsItsClientSizeAtOnce)
{
    panel.show(false);
    panel.log.clear();
    panel.move(0, 0, 120, 80);
    EXPECT_EQ(panel.clientWidth(), 120);
    EXPECT_EQ(panel.clientHeight(), 80);
    EXPECT_EQ(panel.log, (std::vector<std::string>{"place 0 0 120", "size 120 80 0"}));
}

TEST_F(Events, ShowingAndHidingCallsOnShowOncePerChange)
{
    panel.show(true);
    EXPECT_EQ(panel.log, std::vector<std::string>());
    panel.show(false);
    panel.show(false);
    EXPECT_EQ(panel.log, std::vector<std::string>{"show 0 0 0"});
    EXPECT_FALSE(panel.isVisible());
}

TEST_F(Events, DisablingTheParentIsToldToTheChild)
{
    form.enable(false);
    ASSERT_FALSE(panel.log.empty());
    EXPECT_EQ(panel.log.back(), "enable 0 0 0");
    EXPECT_TRUE(panel.isEnabled()) << "switched on itself";
}

TEST_F(Events, TheUserResizesAForm)
{
    struct Sized : WForm {
        int sizes = 0;
        bool onSize() override
        {
            ++sizes;
            return true;
        }
    };
    Sized other;
    other.move(0, 0, 300, 200);
    ASSERT_TRUE(other.create());
    UiDriver::showAndActivate(other);
    UiDriver::resizeWindow(other, 350, 220);
    EXPECT_EQ(other.sizes, 1);
    EXPECT_EQ(other.width(), 350);
    EXPECT_EQ(other.clientHeight(), 220);
}

TEST_F(Events, APanelPaintsItself)
{
    struct Painted : WPanel {
        int paints = 0;
        Size device;
        bool doPaint(PaintDevice* to) override
        {
            ++paints;
            device = to->size();
            return true;
        }
    };
    Painted painted;
    painted.setParent(&form);
    painted.move(0, 0, 30, 20);
    ASSERT_TRUE(painted.create());
    ASSERT_TRUE(UiDriver::waitUntil([&] { return painted.paints > 0; }));
    EXPECT_EQ(painted.device, (Size{30, 20}));
    painted.paints = 0;
    painted.repaint();
    painted.repaint(Rect{0, 0, 5, 5});
    EXPECT_EQ(painted.paints, 0) << "painting waits for the event loop";
    ASSERT_TRUE(UiDriver::waitUntil([&] { return painted.paints > 0; }));
    UiDriver::processEvents();
    EXPECT_EQ(painted.paints, 1);
}

TEST_F(Events, BackColourFillsThePanel)
{
    panel.setBackColor(Color(10, 200, 30));
    EXPECT_EQ(UiDriver::pixel(panel, 5, 5), 0xFF0AC81EU);
}

TEST_F(Events, ANewChildStandsInFrontOfTheOthers)
{
    WPanel behind;
    WPanel front;
    behind.setParent(&form);
    front.setParent(&form);
    EXPECT_EQ(form.firstChild(), &front);
    EXPECT_EQ(front.nextSibling(), &behind);
    EXPECT_EQ(behind.nextSibling(), &panel);
    EXPECT_EQ(panel.nextSibling(), nullptr);
    EXPECT_EQ(behind.previousSibling(), &front);
    EXPECT_EQ(form.childCount(), 3);
}

TEST_F(Events, TheChildInFrontGetsThePressWhateverWasCreatedFirst)
{
    LoggingPanel first;
    LoggingPanel second;
    first.setParent(&form);
    second.setParent(&form);
    for (LoggingPanel* each : {&second, &first}) {
        each->move(0, 200, 50, 50);
        ASSERT_TRUE(each->create());
    }
    UiDriver::click(second, 5, 5);
    EXPECT_EQ(first.log.size(), 0U);
    EXPECT_EQ(second.log.size(), 2U);
    ASSERT_TRUE(first.placeInFrontOf(second));
    EXPECT_EQ(form.firstChild(), &first);
    UiDriver::click(second, 5, 5);
    EXPECT_EQ(first.log.size(), 2U);
    second.bringToFront();
    UiDriver::click(first, 5, 5);
    EXPECT_EQ(second.log.size(), 4U);
}

TEST_F(Events, OnlySiblingsArePlacedInFrontOfEachOther)
{
    WPanel inner;
    inner.setParent(&panel);
    EXPECT_FALSE(inner.placeInFrontOf(panel));
    EXPECT_FALSE(panel.placeInFrontOf(panel));
}

TEST_F(Events, AFormIsNoneOfTheChildrenOfItsParent)
{
    WForm above;
    above.setParent(&form);
    EXPECT_EQ(above.parent(), &form);
    EXPECT_EQ(form.firstChild(), &panel);
    EXPECT_EQ(form.childCount(), 1);
}

TEST_F(Events, AChildWithoutAParentIsNoWindow)
{
    WPanel alone;
    alone.move(0, 0, 50, 50);
    ASSERT_TRUE(alone.create());
    UiDriver::processEvents();
    EXPECT_TRUE(alone.isVisible());
    EXPECT_EQ(UiDriver::pixel(form, 20, 250), UiDriver::pixel(form, 390, 290));
    alone.setBackColor(Color(255, 0, 0));
    alone.setParent(&form);
    EXPECT_EQ(UiDriver::pixel(form, 20, 20), 0xFFFF0000U) << "shown once it has a parent";
}

TEST_F(Events, AChildOfSomethingThatHasNotBeenCreatedCannotBeCreated)
{
    WPanel outer;
    WPanel inner;
    outer.setParent(&form);
    inner.setParent(&outer);
    EXPECT_FALSE(inner.create());
    ASSERT_TRUE(outer.create());
    EXPECT_TRUE(inner.create());
}

TEST_F(Events, TheFontOfTheParentIsThatOfTheChild)
{
    const Font big(L"Helvetica", 20);
    form.setFont(big);
    EXPECT_EQ(panel.font(), big);
    panel.setFont(Font(L"Helvetica", 8));
    EXPECT_EQ(panel.font().size(), 8);
}

TEST_F(Events, AScrollViewTellsItsVisibleSizeAndScrollsToItsChildren)
{
    struct View : WScrollView {
        int changes = 0;
        bool onVisClientSize() override
        {
            ++changes;
            return true;
        }
    };
    View view;
    view.setParent(&form);
    view.move(0, 0, 200, 100);
    ASSERT_TRUE(view.create());
    view.changes = 0;
    EXPECT_EQ(view.visibleClientRect(), (Rect{0, 0, 200, 100}));
    WPanel far;
    far.setParent(&view);
    far.move(300, 20, 100, 30);
    ASSERT_TRUE(far.create());
    UiDriver::processEvents();
    EXPECT_EQ(view.contentSize(), (Size{400, 50}));
    EXPECT_LT(view.visibleHeight(), 100) << "a horizontal scroll bar takes its place";
    EXPECT_EQ(view.changes, 1);
    view.scrollTo(50, 0);
    EXPECT_EQ(view.visibleClientRect().left, 50);
    EXPECT_EQ(far.mapTo(form, Point{0, 0}), (Point{250, 20}));
    far.show(false);
    UiDriver::processEvents();
    EXPECT_EQ(view.visibleClientRect(), (Rect{0, 0, 200, 100}));
}

TEST_F(Events, CaptureKeepsTheMouse)
{
    panel.capture();
    EXPECT_TRUE(panel.hasCapture());
    panel.releaseCapture();
    EXPECT_FALSE(panel.hasCapture());
}

TEST_F(Events, AFixedDialogCanBeMovedToAnotherSizeByTheProgram)
{
    WDialog dialog;
    dialog.move(0, 0, 100, 50);
    ASSERT_TRUE(dialog.create());
    dialog.move(10, 10, 150, 70);
    EXPECT_EQ(dialog.clientSize(), (Size{150, 70}));
    dialog.show(true);
    UiDriver::processEvents();
    EXPECT_EQ(dialog.clientSize(), (Size{150, 70}));
}

TEST_F(Events, MaximizingAndRestoringAreTold)
{
    struct Watched : WForm {
        std::vector<std::string> log;
        bool onMaximize(bool maximized) override
        {
            log.push_back(maximized ? "max" : "normal");
            return true;
        }
        bool onMinimize() override
        {
            log.push_back("min");
            return true;
        }
        bool onRestore() override
        {
            log.push_back("restore");
            return true;
        }
    };
    Watched watched;
    watched.move(20, 30, 200, 100);
    ASSERT_TRUE(watched.create());
    UiDriver::showAndActivate(watched);
    watched.maximize();
    UiDriver::processEvents();
    EXPECT_TRUE(watched.isMaximized());
    EXPECT_EQ(watched.normalGeometry().width(), 200);
    watched.restore();
    watched.minimize();
    watched.restore();
    EXPECT_EQ(watched.log, (std::vector<std::string>{"max", "normal", "min", "restore"}));
}

} // namespace
