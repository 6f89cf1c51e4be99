#include <oviapi/application.h>
#include <oviapi/button.h>
#include <oviapi/dialog.h>
#include <oviapi/form.h>
#include <oviapi/lexception.h>
#include <oviapi/menu.h>
#include <oviapi/moveobject.h>
#include <oviapi/msgbox.h>
#include <oviapi/panel.h>
#include <oviapi/phrases.h>
#include <oviapi/systemmetrics.h>
#include <oviapi/timer.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

// Calls a function once, from a handler of the framework.
struct Soon : WTimer {
    explicit Soon(std::function<void()> f, int delay = 0)
        : WTimer(delay)
        , function(std::move(f))
    {
        start();
    }
    bool onTimer() override
    {
        stop();
        function();
        return true;
    }
    std::function<void()> function;
};

struct Dialog : WDialog {
    WButton button;
    int pushes = 0;

    explicit Dialog(int place = 0)
    {
        move(place, place, 200, 100);
        EXPECT_TRUE(create());
        button.setParent(this);
        button.move(10, 10, 80, 25);
        button.setText(L"&Push");
        EXPECT_TRUE(button.create());
        connect<&WButton::onPush>(button, *this, &Dialog::pushed);
    }
    SlotResult pushed(Object*)
    {
        ++pushes;
        return 0;
    }
};

TEST(Modal, TheResultOfExitModalIsThatOfTheLoop)
{
    Dialog dialog;
    Soon end([&] { dialog.exitModal(7); });
    EXPECT_EQ(dialog.execModal(), 7);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_FALSE(dialog.isModal());
}

TEST(Modal, TheFirstResultCounts)
{
    Dialog dialog;
    Soon end([&] {
        dialog.exitModal(7);
        dialog.exitModal(8);
        dialog.exitModal(L"late");
    });
    EXPECT_EQ(dialog.execModal(), 7);
    EXPECT_EQ(dialog.modalText(), L"");
}

TEST(Modal, AFormCanBeModalAgainAndAgain)
{
    Dialog dialog;
    for (int i = 1; i <= 3; ++i) {
        Soon end([&] { dialog.exitModal(i); });
        EXPECT_EQ(dialog.execModal(), i);
    }
}

TEST(Modal, ATextIsAResult)
{
    Dialog dialog;
    Soon end([&] { dialog.exitModal(L"chosen"); });
    EXPECT_EQ(dialog.execModal(), 1);
    EXPECT_EQ(dialog.modalText(), L"chosen");
    Soon none([&] { dialog.exitModal(static_cast<const wchar_t*>(nullptr)); });
    EXPECT_EQ(dialog.execModal(), 0);
    EXPECT_EQ(dialog.modalText(), L"");
}

TEST(Modal, ClosingTheWindowEndsTheLoopWithZero)
{
    Dialog dialog;
    Soon end([&] { UiDriver::closeWindow(dialog); });
    EXPECT_EQ(dialog.execModal(), 0);
}

TEST(Modal, ACloseHandlerMayGiveAResult)
{
    struct Answering : Dialog {
        bool onClose() override
        {
            exitModal(5);
            return true;
        }
    };
    Answering dialog;
    Soon end([&] { UiDriver::closeWindow(dialog); });
    EXPECT_EQ(dialog.execModal(), 5);
}

TEST(Modal, HidingDoesNotEndTheLoop)
{
    Dialog dialog;
    int order = 0;
    Soon hide([&] {
        dialog.show(false);
        order = 1;
    });
    Soon end(
        [&] {
            EXPECT_EQ(order, 1);
            dialog.exitModal(9);
        },
        20);
    EXPECT_EQ(dialog.execModal(), 9);
}

TEST(Modal, ExitModalWithoutALoopDoesNothing)
{
    Dialog dialog;
    dialog.exitModal(3);
    Soon end([&] { dialog.exitModal(4); });
    EXPECT_EQ(dialog.execModal(), 4);
}

TEST(Modal, AModalFormBlocksTheOthers)
{
    Dialog below;
    UiDriver::showAndActivate(below);
    UiDriver::click(below.button);
    EXPECT_EQ(below.pushes, 1);
    Dialog above(250);
    Soon end([&] {
        UiDriver::showAndActivate(above); // a window manager takes its time
        UiDriver::click(below.button);
        UiDriver::click(above.button);
        above.exitModal(1);
    });
    above.execModal();
    EXPECT_EQ(below.pushes, 1);
    EXPECT_EQ(above.pushes, 1);
    UiDriver::showAndActivate(below);
    UiDriver::click(below.button);
    EXPECT_EQ(below.pushes, 2) << "free again";
}

TEST(Modal, FormsAreModalInsideEachOtherThreeDeep)
{
    Dialog first;
    Dialog second(10);
    Dialog third(20);
    int secondResult = 0;
    int thirdResult = 0;
    Soon start([&] {
        EXPECT_EQ(WForm::topModal(), &first);
        Soon next([&] {
            EXPECT_EQ(WForm::topModal(), &second);
            Soon last([&] {
                EXPECT_EQ(WForm::topModal(), &third);
                third.exitModal(3);
            });
            thirdResult = third.execModal();
            second.exitModal(2);
        });
        secondResult = second.execModal();
        first.exitModal(1);
    });
    EXPECT_EQ(first.execModal(), 1);
    EXPECT_EQ(secondResult, 2);
    EXPECT_EQ(thirdResult, 3);
    EXPECT_EQ(WForm::topModal(), nullptr);
}

TEST(Modal, AnOuterFormThatIsToEndDoesSoAfterTheInnerOne)
{
    Dialog outer;
    Dialog inner(10);
    std::string order;
    Soon start([&] {
        Soon end([&] {
            outer.exitModal(1);
            inner.exitModal(2);
        });
        inner.execModal();
        order += "inner ";
    });
    outer.execModal();
    order += "outer";
    EXPECT_EQ(order, "inner outer");
}

TEST(Modal, AFormMayBeModalInsideAWait)
{
    Dialog dialog;
    int result = 0;
    bool done = false;
    Soon start([&] {
        Soon end([&] { dialog.exitModal(6); });
        result = dialog.execModal();
        done = true;
    });
    while (!done)
        Application::procTaskEvents();
    EXPECT_EQ(result, 6);
}

TEST(Modal, AWaitMayRunInsideAModalForm)
{
    Dialog dialog;
    bool done = false;
    Soon start([&] {
        Soon finish([&] { done = true; }, 5);
        while (!done)
            Application::procTaskEvents();
        dialog.exitModal(4);
    });
    EXPECT_EQ(dialog.execModal(), 4);
    EXPECT_TRUE(done);
}

TEST(Modal, AFormMayBeDestroyedInItsOwnLoop)
{
    auto dialog = std::make_unique<Dialog>();
    Soon end([&] { dialog.reset(); });
    EXPECT_EQ(dialog->execModal(), 0);
    EXPECT_EQ(dialog, nullptr);
    EXPECT_EQ(WForm::topModal(), nullptr);
}

TEST(Modal, AnExceptionInAHandlerIsThrownByExecModal)
{
    Dialog dialog;
    Soon fail([] { throw LException("source", 12, L"broken"); });
    try {
        dialog.execModal();
        FAIL() << "nothing was thrown";
    } catch (const LException& e) {
        EXPECT_EQ(e.message(), L"broken");
    }
    EXPECT_FALSE(dialog.isModal());
    EXPECT_FALSE(dialog.isVisible());
    Soon end([&] { dialog.exitModal(1); });
    EXPECT_EQ(dialog.execModal(), 1) << "usable afterwards";
}

TEST(Modal, AnExceptionComesThroughEveryLoopItIsNotCaughtIn)
{
    Dialog outer;
    Dialog inner(10);
    std::string way;
    Soon start([&] {
        Soon fail([] { throw std::runtime_error("deep"); });
        try {
            inner.execModal();
        } catch (const std::exception&) {
            way += "inner ";
            throw;
        }
    });
    try {
        outer.execModal();
    } catch (const std::exception& e) {
        way += e.what();
    }
    EXPECT_EQ(way, "inner deep");
}

TEST(Modal, AnExceptionInAHandlerIsThrownByProcTaskEvents)
{
    Soon fail([] { throw std::runtime_error("in a wait"); });
    std::string text;
    while (text.empty()) {
        try {
            Application::procTaskEvents();
        } catch (const std::exception& e) {
            text = e.what();
        }
    }
    EXPECT_EQ(text, "in a wait");
}

TEST(Modal, AnExceptionOutsideAnyLoopWaitsForTheNextOne)
{
    struct Failing : WPanel {
        bool onMouseMove(int, int, long) override { throw std::runtime_error("early"); }
    };
    WForm form;
    form.move(0, 0, 100, 100);
    ASSERT_TRUE(form.create());
    Failing panel;
    panel.setParent(&form);
    panel.move(0, 0, 50, 50);
    ASSERT_TRUE(panel.create());
    UiDriver::showAndActivate(form);
    UiDriver::moveTo(panel, 5, 5);
    int thrown = 0;
    for (int i = 0; i < 5; ++i) {
        Soon wake([] {});
        try {
            Application::procTaskEvents();
        } catch (const std::runtime_error&) {
            ++thrown;
        }
    }
    EXPECT_EQ(thrown, 1);
}

TEST(Modal, EveryExceptionIsThrownOn)
{
    Dialog dialog;
    std::unique_ptr<Soon> first;
    std::unique_ptr<Soon> second;
    int caught = 0;
    Soon start([&] {
        first = std::make_unique<Soon>([] { throw std::runtime_error("first"); });
        second = std::make_unique<Soon>([] { throw std::runtime_error("second"); });
        try {
            dialog.execModal();
        } catch (const std::exception&) {
            ++caught;
        }
    });
    for (int i = 0; i < 50 && caught < 2; ++i) {
        Soon wake([] {});
        try {
            Application::procTaskEvents();
        } catch (const std::exception&) {
            ++caught;
        }
    }
    EXPECT_EQ(caught, 2);
}

TEST(Modal, EnterPushesTheDefaultButtonAndAFocusedButtonItself)
{
    Dialog dialog;
    WButton other;
    int otherPushes = 0;
    other.setParent(&dialog);
    other.move(100, 10, 80, 25);
    ASSERT_TRUE(other.create());
    connect<&WButton::onPush>(other, dialog, [&](Object*) -> SlotResult {
        ++otherPushes;
        return 0;
    });
    dialog.setDefaultButton(&dialog.button);
    UiDriver::showAndActivate(dialog);
    UiDriver::key(dialog, KeyEnter);
    EXPECT_EQ(dialog.pushes, 1);
    other.setFocus();
    UiDriver::key(dialog, KeyEnter);
    EXPECT_EQ(otherPushes, 1);
    EXPECT_EQ(dialog.pushes, 1);
    dialog.button.enable(false);
    dialog.setFocus();
    UiDriver::key(dialog, KeyEnter);
    EXPECT_EQ(dialog.pushes, 1) << "disabled";
}

TEST(Modal, AMnemonicPushesItsButton)
{
    Dialog dialog;
    UiDriver::showAndActivate(dialog);
    UiDriver::key(dialog, KeyA + 'P' - 'A', ModifierAlt);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return dialog.pushes == 1; }));
}

TEST(Modal, ADialogIsPlacedOverItsParentAndOnTheScreen)
{
    const Rect screen = SystemMetrics::getAvailableRect();
    ASSERT_FALSE(screen.isEmpty());
    WForm parent;
    parent.move(100, 60, 400, 300);
    ASSERT_TRUE(parent.create());
    Dialog dialog;
    MoveObject::MoveInit(&dialog);
    EXPECT_EQ(dialog.x(), screen.left + (static_cast<int>(screen.width()) - 200) / 2);
    dialog.setParent(&parent);
    parent.show(true);
    MoveObject::MoveInit(&dialog);
    EXPECT_EQ(dialog.geometry(), (Rect{200, 160, 400, 260}));
    parent.move(screen.right - 50, 60, 400, 300);
    MoveObject::MoveInit(&dialog);
    EXPECT_EQ(dialog.geometry().right, screen.right);
}

TEST(Modal, ARectangleThatDoesNotFitKeepsItsUpperLeftCornerInside)
{
    EXPECT_EQ(MoveObject::centered({500, 20}, {0, 0, 100, 100}, {10, 10, 110, 110}),
              (Rect{10, 40, 510, 60}));
}

TEST(Modal, APositionerIsAskedFirst)
{
    struct Positioner : MoveObjectPositioner {
        bool positionObject(WVisualObject* object) override { return object->move(1, 2, 30, 40); }
    };
    Positioner positioner;
    Dialog dialog;
    dialog.setPositioner(&positioner);
    MoveObject::MoveInit(&dialog);
    EXPECT_EQ(dialog.geometry(), (Rect{1, 2, 31, 42}));
}

struct Box {
    int buttons;
    int press;
    int result;
};

class Boxes : public ::testing::TestWithParam<Box> {};

TEST_P(Boxes, TheResultIsTheButtonThatWasPressed)
{
    UiDriver::answerMessageBox(GetParam().press);
    EXPECT_EQ(MsgBox::show(L"Error", L"100 % <b>sure</b>?\nSecond", GetParam().buttons),
              GetParam().result);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Error");
    EXPECT_EQ(UiDriver::lastBoxText(), L"100 % <b>sure</b>?\nSecond");
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
}

INSTANTIATE_TEST_SUITE_P(All, Boxes,
                         ::testing::Values(Box{1, 1, 1}, Box{12, 4, 4}, Box{12, 8, 8},
                                           Box{15, 2, 2}, Box{3, 1, 1}, Box{1, 0, 1}, Box{1, -1, 1},
                                           Box{12, 0, 8}, Box{12, -1, 8}, Box{3, 0, 2},
                                           Box{15, -1, 2}, Box{14, 0, 2}, Box{0, 1, 1},
                                           Box{256, 1, 1}));

TEST(MessageBox, CaptionsAreInTheLanguageOfTheApplication)
{
    loadPhrases([](int number) { return number == 60013 ? L"Ja" : std::wstring(); });
    UiDriver::answerMessageBox(MsgBox::No);
    MsgBox::show(L"", L"", MsgBox::Yes | MsgBox::No);
    EXPECT_EQ(UiDriver::lastBoxButtons(), L"Ja|No");
    loadPhrases(nullptr);
}

TEST(MessageBox, TextAndButtonsHaveTheFontOfControls)
{
    struct WithFonts : Application {
        Font controls{L"DejaVu Serif", 21, true};
        Font* fontForRole(int role) override { return role == ControlFont ? &controls : nullptr; }
    };
    UiDriver::answerMessageBox(MsgBox::Ok);
    MsgBox::show(L"", L"text");
    const auto usual = UiDriver::lastBoxFonts();
    ASSERT_GE(usual.size(), 2U);
    WithFonts application;
    UiDriver::answerMessageBox(MsgBox::Ok);
    MsgBox::show(L"", L"text");
    const auto fonts = UiDriver::lastBoxFonts();
    ASSERT_EQ(fonts.size(), usual.size());
    for (const Font& font : fonts)
        EXPECT_EQ(font, application.controls);
    EXPECT_NE(usual, fonts);
}

TEST(MessageBox, BoxesOpenInsideEachOther)
{
    int inner = 0;
    Soon second([&] {
        UiDriver::answerMessageBox(MsgBox::Yes);
        inner = MsgBox::show(L"inner", L"", 12);
        UiDriver::answerMessageBox(MsgBox::No);
    });
    EXPECT_EQ(MsgBox::show(L"outer", L"", 12), MsgBox::No);
    EXPECT_EQ(inner, MsgBox::Yes);
}

TEST(MessageBox, AnExceptionMeanwhileEndsIt)
{
    Soon fail([] { throw std::runtime_error("meanwhile"); });
    EXPECT_THROW(MsgBox::show(L"", L"", 12), std::runtime_error);
}

struct MenuTest : ::testing::Test {
    WForm form;
    WMenu menu;
    WMenuItem* up = menu.insertItem(nullptr, L"Ascending");
    WMenuItem* down = menu.insertItem(nullptr, L"Descending");
    WMenuItem* off = menu.insertItem(nullptr, L"Off", false);
    WMenuItem* clicked = nullptr;
    int clicks = 0;

    MenuTest()
    {
        form.move(0, 0, 300, 200);
        EXPECT_TRUE(form.create());
        UiDriver::showAndActivate(form);
        for (WMenuItem* item : {up, down, off})
            connect<&WMenuItem::onClick>(*item, form, [this, item](Object* sender) -> SlotResult {
                EXPECT_EQ(sender, item);
                clicked = item;
                ++clicks;
                return 0;
            });
    }
};

TEST_F(MenuTest, AChosenItemIsClickedAndReturned)
{
    UiDriver::answerPopupMenu(L"Descending");
    EXPECT_EQ(menu.trackPopupMenu(form, 10, 10), down);
    EXPECT_EQ(clicked, down);
    EXPECT_EQ(clicks, 1);
}

TEST_F(MenuTest, ADismissedMenuChoosesNothing)
{
    UiDriver::answerPopupMenu(L"");
    EXPECT_EQ(menu.trackPopupMenu(form, 10, 10), nullptr);
    EXPECT_EQ(clicks, 0);
}

TEST_F(MenuTest, ADisabledItemCannotBeChosen)
{
    UiDriver::answerPopupMenu(L"Off");
    Soon close([&] { menu.dismiss(); }, 50);
    EXPECT_EQ(menu.trackPopupMenu(form, 10, 10), nullptr);
    EXPECT_EQ(clicks, 0);
}

TEST_F(MenuTest, TheCheckMarkIsTheProgramsAndNotTheClicks)
{
    menu.check(up, true);
    UiDriver::answerPopupMenu(L"Ascending");
    menu.trackPopupMenu(form, 10, 10);
    EXPECT_TRUE(up->isChecked());
    EXPECT_FALSE(down->isChecked());
}

TEST_F(MenuTest, AnItemTakesAnotherTextAfterItHasBeenShown)
{
    UiDriver::answerPopupMenu(L"");
    menu.trackPopupMenu(form, 10, 10);
    menu.setItem(up, L"Rising");
    UiDriver::answerPopupMenu(L"Rising");
    EXPECT_EQ(menu.trackPopupMenu(form, 10, 10), up);
}

TEST_F(MenuTest, AClickMayDeleteTheMenu)
{
    auto own = std::make_unique<WMenu>();
    WMenuItem* item = own->insertItem(nullptr, L"End");
    connect<&WMenuItem::onClick>(*item, form, [&](Object*) -> SlotResult {
        own.reset();
        return 0;
    });
    UiDriver::answerPopupMenu(L"End");
    EXPECT_EQ(own->trackPopupMenu(form, 10, 10), nullptr);
    EXPECT_EQ(own, nullptr);
}

TEST_F(MenuTest, AnExceptionInAClickIsThrownByTheMenu)
{
    connect<&WMenuItem::onClick>(*down, form,
                                 [](Object*) -> SlotResult { throw std::runtime_error("click"); });
    UiDriver::answerPopupMenu(L"Descending");
    EXPECT_THROW(menu.trackPopupMenu(form, 10, 10), std::runtime_error);
}

TEST_F(MenuTest, AMenuBarTakesItsPlaceFromTheClientArea)
{
    WMenu bar;
    WMenuItem* file = bar.insertItem(nullptr, L"File");
    WMenuItem* open = bar.insertItem(file, L"Open");
    bar.insertSeparator(file);
    WMenuItem* close = bar.insertItem(file, L"Close");
    const int before = form.clientHeight();
    form.setMenu(&bar);
    EXPECT_LT(form.clientHeight(), before);
    EXPECT_EQ(form.height(), 200);
    int opened = 0;
    connect<&WMenuItem::onClick>(*open, form, [&](Object*) -> SlotResult {
        ++opened;
        return 0;
    });
    UiDriver::clickMenuItem(form, *open);
    EXPECT_EQ(opened, 1);
    bar.removeItem(close);
    EXPECT_EQ(file->items().size(), 2U);
    form.setMenu(nullptr);
    EXPECT_EQ(form.clientHeight(), before);
}

TEST_F(MenuTest, AMenuBarMayDieBeforeItsForm)
{
    {
        WMenu bar;
        bar.insertItem(nullptr, L"File");
        form.setMenu(&bar);
    }
    EXPECT_EQ(form.menu(), nullptr);
    EXPECT_EQ(form.clientHeight(), 200);
}

TEST_F(MenuTest, AShortcutChoosesItsItemFromTheForm)
{
    WMenu bar;
    WMenuItem* file = bar.insertItem(nullptr, L"File");
    WMenuItem* open = bar.insertItem(file, L"Open");
    bar.setShortcut(open, L"Ctrl+O");
    form.setMenu(&bar);
    int opened = 0;
    connect<&WMenuItem::onClick>(*open, form, [&](Object*) -> SlotResult {
        ++opened;
        return 0;
    });
    UiDriver::key(form, KeyA + 'O' - 'A', ModifierControl);
    EXPECT_EQ(opened, 1);
    form.setMenu(nullptr);
}

} // namespace
