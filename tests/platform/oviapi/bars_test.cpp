#include <oviapi/statusline.h>
#include <oviapi/toolbar.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QToolButton>

#include <oviapi/form.h>
#include <oviapi/lineedit.h>
#include <oviapi/menu.h>
#include <oviapi/panel.h>
#include <oviapi/qt/native.h>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

using Commands = std::vector<int>;

struct Listener : Object {
    Commands commands;
    Commands dropped;
    SlotResult answer = 0;

    SlotResult command(Object*, int id)
    {
        commands.push_back(id);
        return answer;
    }
    SlotResult drops(Object*, int id)
    {
        dropped.push_back(id);
        return 0;
    }
};

constexpr int openId = 10;
constexpr int saveId = 20;
constexpr int runId = 30;
constexpr int missingId = 99;

struct Bars : ::testing::Test {
    WForm form;
    std::unique_ptr<WToolBar> owned = std::make_unique<WToolBar>();
    WToolBar& bar = *owned;
    WStatusLine status;
    WLineEdit field;
    Listener listener;

    void show()
    {
        form.move(0, 0, 400, 300);
        EXPECT_TRUE(form.create());
        field.setParent(&form);
        field.move(10, 10, 100, 24);
        EXPECT_TRUE(field.create());
        const Picture picture({16, 16}, Color(255, 0, 0));
        bar.addButton(openId, &picture, L"&Open");
        bar.addSeparator();
        bar.addButton(saveId, &picture, L"&Save");
        bar.addButton(runId, nullptr, L"Run");
        connect<&WToolBar::onCommand>(bar, listener, &Listener::command);
        connect<&WToolBar::onDropDown>(bar, listener, &Listener::drops);
        bar.setParent(&form);
        EXPECT_TRUE(bar.create());
        UiDriver::showAndActivate(form);
        UiDriver::processEvents();
    }
    void showStatus()
    {
        status.setParent(&form);
        EXPECT_TRUE(status.create());
        UiDriver::processEvents();
    }
    void press(int command)
    {
        const Rect rect = bar.buttonRect(command);
        ASSERT_FALSE(rect.isEmpty());
        UiDriver::click(bar, rect.left + 8, (rect.top + rect.bottom) / 2);
    }
    QToolButton* button(const char* name)
    {
        for (auto* each : widgetOf(&bar)->findChildren<QToolButton*>()) {
            if (each->accessibleName() == name)
                return each;
        }
        return nullptr;
    }
    QLabel* pane(int number)
    {
        QLabel* found = nullptr;
        for (auto* each : widgetOf(&status)->findChildren<QLabel*>()) {
            const Rect rect = status.paneRect(number);
            if (each->x() == rect.left && !each->isHidden() && each->width() == rect.width())
                found = each;
        }
        return found;
    }
};

} // namespace

TEST_F(Bars, AToolBarTakesItsPlaceFromTheClientAreaOfItsForm)
{
    show();
    EXPECT_GT(bar.preferredHeight(), 16);
    EXPECT_EQ(form.clientHeight(), 300 - bar.preferredHeight());
    EXPECT_EQ(bar.width(), 400);
    const Point top = field.toScreen({0, 0});
    EXPECT_EQ(form.fromScreen(top), (Point{10, 10})) << "children count from below the bar";
    EXPECT_EQ(bar.fromScreen(top).y, 10 + bar.preferredHeight());
    bar.show(false);
    EXPECT_EQ(form.clientHeight(), 300);
    bar.show(true);
    EXPECT_EQ(form.clientHeight(), 300 - bar.preferredHeight());
    EXPECT_FALSE(bar.move(50, 50, 10, 10));
    EXPECT_EQ(bar.width(), 400);
    UiDriver::resizeWindow(form, 500, 200);
    EXPECT_EQ(bar.width(), 500);
    bar.destroy();
    UiDriver::processEvents();
    EXPECT_EQ(form.clientHeight(), 200);
}

TEST_F(Bars, BarsAndMenuShareTheWindow)
{
    show();
    const int without = form.clientHeight();
    WMenu menu;
    menu.insertItem(menu.insertItem(nullptr, L"File"), L"Open");
    form.setMenu(&menu);
    const int withMenu = form.clientHeight();
    EXPECT_LT(withMenu, without);
    showStatus();
    EXPECT_EQ(form.clientHeight(), withMenu - status.preferredHeight());
    WToolBar second;
    second.setParent(&form);
    second.addButton(1, nullptr, L"x");
    ASSERT_TRUE(second.create());
    EXPECT_EQ(form.clientHeight(), withMenu - status.preferredHeight() - second.preferredHeight());
    EXPECT_EQ(second.toScreen({0, 0}).y, bar.toScreen({0, 0}).y + bar.height());
    EXPECT_EQ(status.toScreen({0, 0}).y + status.height(),
              form.toScreen({0, 0}).y + form.clientHeight() + status.height());
}

TEST_F(Bars, AToolBarInAPanelIsPlacedByMove)
{
    show();
    WPanel panel;
    panel.setParent(&form);
    panel.move(0, 0, 200, 100);
    ASSERT_TRUE(panel.create());
    bar.setParent(&panel);
    UiDriver::processEvents();
    EXPECT_EQ(form.clientHeight(), 300);
    EXPECT_TRUE(bar.move(5, 6, 150, 30));
    EXPECT_EQ(bar.x(), 5);
    EXPECT_EQ(panel.clientHeight(), 100);
    bar.setParent(&form);
    EXPECT_EQ(form.clientHeight(), 300 - bar.preferredHeight());
}

TEST_F(Bars, APressGivesTheCommand)
{
    show();
    press(saveId);
    press(runId);
    EXPECT_EQ(listener.commands, (Commands{saveId, runId}));
    bar.enableButton(saveId, false);
    press(saveId);
    EXPECT_EQ(listener.commands.size(), 2U);
    EXPECT_FALSE(bar.isButtonEnabled(saveId));
    EXPECT_TRUE(bar.isButtonEnabled(openId));
    bar.enable(false);
    press(openId);
    EXPECT_EQ(listener.commands.size(), 2U);
}

TEST_F(Bars, AHandledCommandDoesNotReachTheFunction)
{
    struct Own : WToolBar {
        int calls = 0;
        bool onCommand(int) override { return ++calls > 0; }
    } own;
    form.move(0, 0, 300, 200);
    ASSERT_TRUE(form.create());
    own.setParent(&form);
    own.addButton(openId, nullptr, L"Open");
    ASSERT_TRUE(own.create());
    UiDriver::showAndActivate(form);
    connect<&WToolBar::onCommand>(own, listener, &Listener::command);
    const Rect rect = own.buttonRect(openId);
    UiDriver::click(own, rect.left + 5, rect.top + 5);
    EXPECT_EQ(own.calls, 1);
    listener.answer = 1;
    UiDriver::click(own, rect.left + 5, rect.top + 5);
    EXPECT_EQ(own.calls, 1);
    EXPECT_EQ(listener.commands.size(), 2U);
}

TEST_F(Bars, AButtonStaysCheckedUntilTheProgramChangesIt)
{
    show();
    bar.checkButton(openId, true);
    press(openId);
    EXPECT_TRUE(bar.isButtonChecked(openId));
    EXPECT_TRUE(button("Open")->isChecked());
    bar.checkButton(openId, false);
    press(openId);
    EXPECT_FALSE(bar.isButtonChecked(openId));
    EXPECT_FALSE(button("Open")->isChecked());
}

TEST_F(Bars, CommandsThatAreNotThereAreLeftAlone)
{
    show();
    for (const int command : {missingId, 0, -1}) {
        bar.enableButton(command, false);
        bar.checkButton(command, true);
        bar.setCaption(command, L"x");
        bar.setPicture(command, nullptr);
        bar.setButtonToolTip(command, L"x");
        bar.setDropDown(command, nullptr);
        EXPECT_FALSE(bar.isButtonEnabled(command));
        EXPECT_FALSE(bar.isButtonChecked(command));
        EXPECT_TRUE(bar.buttonRect(command).isEmpty());
    }
    EXPECT_EQ(bar.buttonCount(), 3);
}

TEST_F(Bars, TheToolTipIsPlainAndShowsTheShortcut)
{
    show();
    EXPECT_EQ(button("Open")->toolTip(), "<span>Open</span>") << "the caption";
    bar.setButtonToolTip(openId, L"<b>Open</b> a file", L"Ctrl+O");
    EXPECT_EQ(button("Open")->toolTip(), "<span>&lt;b&gt;Open&lt;/b&gt; a file (Ctrl+O)</span>");
    bar.setButtonToolTip(openId, nullptr, nullptr);
    EXPECT_EQ(button("Open")->toolTip(), "<span>Open</span>");
}

TEST_F(Bars, TheKeyboardReachesEveryButtonByOneStopOfTab)
{
    show();
    field.setFocus();
    UiDriver::key(form, KeyTab);
    EXPECT_EQ(UiDriver::focused(), &bar);
    UiDriver::key(form, KeySpace);
    UiDriver::key(form, KeyRight);
    UiDriver::key(form, KeyEnter);
    UiDriver::key(form, KeyEnd);
    UiDriver::key(form, KeySpace);
    UiDriver::key(form, KeyRight);
    UiDriver::key(form, KeySpace);
    UiDriver::key(form, KeyHome);
    UiDriver::key(form, KeyLeft);
    UiDriver::key(form, KeySpace);
    EXPECT_EQ(listener.commands, (Commands{openId, saveId, runId, runId, openId}));
    UiDriver::key(form, KeyTab);
    EXPECT_EQ(UiDriver::focused(), &field);
    press(saveId);
    EXPECT_EQ(UiDriver::focused(), &field) << "the mouse leaves the focus where it is";
}

TEST_F(Bars, WhatDoesNotFitMovesIntoAMenu)
{
    show();
    for (int i = 100; i < 130; ++i)
        bar.addButton(i, nullptr, (L"Button " + std::to_wstring(i)).c_str());
    UiDriver::resizeWindow(form, 300, 200);
    EXPECT_FALSE(bar.buttonRect(openId).isEmpty());
    EXPECT_TRUE(bar.buttonRect(129).isEmpty());
    auto* more = widgetOf(&bar)->findChild<QToolButton*>("qt_toolbar_ext_button");
    ASSERT_NE(more, nullptr);
    ASSERT_FALSE(more->isHidden());
    UiDriver::answerPopupMenu(L"Button 129");
    more->showMenu();
    EXPECT_TRUE(UiDriver::waitUntil([&] { return !listener.commands.empty(); }));
    EXPECT_EQ(listener.commands, (Commands{129}));
}

TEST_F(Bars, ADropDownMenuIsFilledWhenItOpens)
{
    show();
    WMenu menu;
    menu.insertItem(nullptr, L"old");
    bar.setDropDown(openId, &menu);
    int chosen = 0;
    connect<&WToolBar::onDropDown>(bar, listener, [&](Object*, int) {
        menu.clear();
        connect<&WMenuItem::onClick>(*menu.insertItem(nullptr, L"fresh"), listener, [&](Object*) {
            ++chosen;
            return SlotResult(0);
        });
        return SlotResult(0);
    });
    UiDriver::answerPopupMenu(L"fresh");
    field.setFocus();
    UiDriver::key(form, KeyTab);
    UiDriver::key(form, KeyDown);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return chosen == 1; }));
    EXPECT_EQ(listener.dropped, (Commands{openId}));
    EXPECT_EQ(listener.commands, Commands()) << "opening its menu presses no button";
    bar.setDropDown(openId, nullptr);
    EXPECT_EQ(button("Open")->defaultAction()->menu(), nullptr);
}

TEST_F(Bars, HostileCaptionsDoNotWidenTheBar)
{
    show();
    const std::wstring longText(10000, L'w');
    bar.setCaption(runId, longText.c_str());
    bar.setButtonToolTip(runId, longText.c_str(), longText.c_str());
    UiDriver::processEvents();
    EXPECT_LT(bar.buttonRect(runId).width(), 300);
    bar.setCaption(runId, L"<img src=x>");
    bar.setCaption(runId, nullptr);
    bar.addButton(missingId, nullptr, nullptr);
    EXPECT_EQ(bar.buttonCount(), 4);
}

TEST_F(Bars, PicturesAreShownAtTheSizeOfTheBar)
{
    show();
    const int small = bar.preferredHeight();
    bar.setPictureSize(24);
    UiDriver::processEvents();
    EXPECT_EQ(bar.preferredHeight(), small + 8);
    EXPECT_EQ(form.clientHeight(), 300 - bar.preferredHeight()) << "the form makes room";
    bar.setPictureSize(-5);
    EXPECT_EQ(bar.pictureSize(), 8);
}

TEST_F(Bars, AHandlerMayClearTheBar)
{
    show();
    connect<&WToolBar::onCommand>(bar, listener, [this](Object*, int) {
        bar.clear();
        bar.addButton(runId, nullptr, L"again");
        return SlotResult(0);
    });
    press(saveId);
    EXPECT_EQ(bar.buttonCount(), 1);
    press(runId);
    EXPECT_EQ(listener.commands, (Commands{saveId, runId}));
}

TEST_F(Bars, AHandlerMayDestroyTheBar)
{
    show();
    connect<&WToolBar::onCommand>(bar, listener, [this](Object*, int) {
        owned.reset();
        return SlotResult(0);
    });
    press(saveId);
    EXPECT_EQ(owned, nullptr);
    UiDriver::processEvents();
    EXPECT_EQ(form.clientHeight(), 300);
}

TEST_F(Bars, TheMenuMayDestroyTheBar)
{
    show();
    WMenu menu;
    menu.insertItem(nullptr, L"item");
    bar.setDropDown(openId, &menu);
    connect<&WToolBar::onDropDown>(bar, listener, [this](Object*, int) {
        owned.reset();
        return SlotResult(0);
    });
    field.setFocus();
    UiDriver::key(form, KeyTab);
    UiDriver::later([] {
        if (QWidget* open = QApplication::activePopupWidget())
            open->close();
    });
    UiDriver::key(form, KeyDown);
    UiDriver::processEvents();
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Bars, TheFormMayGoBeforeItsBars)
{
    WToolBar tools;
    WStatusLine line;
    {
        WForm window;
        window.move(0, 0, 300, 200);
        ASSERT_TRUE(window.create());
        tools.setParent(&window);
        line.setParent(&window);
        tools.addButton(1, nullptr, L"x");
        line.addPane(0);
        ASSERT_TRUE(tools.create() && line.create());
        window.show(true);
        UiDriver::processEvents();
        window.destroy();
        EXPECT_FALSE(tools.isCreated());
        ASSERT_TRUE(window.create() && tools.create());
    }
    EXPECT_EQ(tools.parent(), nullptr);
    EXPECT_FALSE(tools.isCreated());
    EXPECT_EQ(tools.buttonCount(), 1);
}

TEST_F(Bars, ControlsKeepTheirOrderOfStackingBesideBars)
{
    show();
    WPanel front;
    front.setParent(&form);
    front.setBackColor(Color(255, 0, 0));
    front.move(0, 0, 50, 50);
    ASSERT_TRUE(front.create());
    WPanel back;
    back.setParent(&form);
    back.setBackColor(Color(0, 0, 255));
    back.move(0, 0, 50, 50);
    ASSERT_TRUE(back.create());
    front.bringToFront();
    EXPECT_EQ(UiDriver::pixel(front, 5, 5), 0xFFFF0000U);
    EXPECT_EQ(UiDriver::pixel(form, 5, bar.height() + 5), 0xFFFF0000U);
    bar.bringToFront();
    back.bringToFront();
    EXPECT_EQ(UiDriver::pixel(form, 5, bar.height() + 5), 0xFF0000FFU);
}

TEST_F(Bars, PanesHaveFixedWidthsOrShareTheRest)
{
    EXPECT_EQ(status.addPane(100), 0);
    EXPECT_EQ(status.addPane(0, WStatusLine::Align::Center), 1);
    EXPECT_EQ(status.addPane(60, WStatusLine::Align::Right), 2);
    EXPECT_EQ(status.addPane(-7), 3);
    show();
    showStatus();
    EXPECT_EQ(status.paneRect(0).width(), 100);
    EXPECT_EQ(status.paneRect(1).width(), 120);
    EXPECT_EQ(status.paneRect(2).width(), 60);
    EXPECT_EQ(status.paneRect(3).width(), 120);
    status.setPaneWidth(1, 20);
    UiDriver::processEvents();
    EXPECT_EQ(status.paneRect(1).width(), 20);
    EXPECT_EQ(status.paneRect(3).width(), 220);
    status.clear();
    EXPECT_EQ(status.paneCount(), 0);
    EXPECT_TRUE(status.paneRect(0).isEmpty());
}

TEST_F(Bars, PanesKeepTheirTextsAndRefuseOtherNumbers)
{
    status.addPane(0);
    const std::wstring longText(10000, L'w');
    status.setPaneText(0, longText.c_str());
    show();
    showStatus();
    EXPECT_EQ(status.paneText(0), longText);
    EXPECT_EQ(status.width(), 400);
    for (const int number : {-1, 1, 2147483647}) {
        status.setPaneText(number, L"x");
        status.setPaneWidth(number, 7);
        status.setPaneName(number, L"x");
        status.setProgress(number, 50);
        EXPECT_EQ(status.paneText(number), L"");
        EXPECT_EQ(status.progress(number), WStatusLine::NoProgress);
    }
    status.setPaneText(0, nullptr);
    EXPECT_EQ(status.paneText(0), L"");
    status.setPaneText(0, L"<b>x</b> & y");
    ASSERT_NE(pane(0), nullptr);
    EXPECT_EQ(pane(0)->text(), "<b>x</b> & y");
    EXPECT_EQ(pane(0)->textFormat(), Qt::PlainText);
}

TEST_F(Bars, APaneIsReadOutWithItsName)
{
    status.addPane(0);
    status.setPaneText(0, L"17");
    show();
    showStatus();
    ASSERT_NE(pane(0), nullptr);
    EXPECT_EQ(pane(0)->accessibleName(), "17");
    status.setPaneName(0, L"Rows");
    EXPECT_EQ(pane(0)->accessibleName(), "Rows: 17");
}

TEST_F(Bars, AMessageStandsOverTheTextsForItsTime)
{
    status.addPane(0);
    status.addProgressPane(80);
    status.setProgress(1, 30);
    show();
    showStatus();
    status.showMessage(L"saved", 1);
    EXPECT_EQ(status.message(), L"saved");
    EXPECT_TRUE(status.paneRect(0).isEmpty());
    EXPECT_FALSE(status.paneRect(1).isEmpty()) << "progress stays";
    EXPECT_TRUE(UiDriver::waitUntil([&] { return status.message().empty(); }));
    UiDriver::processEvents();
    EXPECT_FALSE(status.paneRect(0).isEmpty());
    status.showMessage(L"stays", 0);
    status.setPaneText(0, L"changed below it");
    EXPECT_TRUE(status.paneRect(0).isEmpty());
    status.clearMessage();
    EXPECT_FALSE(status.paneRect(0).isEmpty());
    status.showMessage(L"x", -5);
    EXPECT_EQ(status.message(), L"x");
    status.showMessage(nullptr, 10);
    EXPECT_EQ(status.message(), L"");
}

TEST_F(Bars, AMessageGivenBeforeCreationIsShownForItsTime)
{
    status.addPane(0);
    status.showMessage(L"early", 1);
    show();
    EXPECT_EQ(status.message(), L"early");
    showStatus();
    EXPECT_TRUE(UiDriver::waitUntil([&] { return status.message().empty(); }));
}

TEST_F(Bars, AProgressBarIsShownWhileThereIsProgress)
{
    status.addPane(0);
    const int number = status.addProgressPane(100);
    show();
    showStatus();
    EXPECT_TRUE(status.paneRect(number).isEmpty());
    status.setProgress(number, 50);
    UiDriver::processEvents();
    EXPECT_EQ(status.paneRect(number).width(), 100);
    status.setProgress(number, 1000);
    EXPECT_EQ(status.progress(number), 100);
    status.setProgress(number, WStatusLine::Busy);
    EXPECT_FALSE(status.paneRect(number).isEmpty());
    status.setProgress(number, -77);
    EXPECT_EQ(status.progress(number), WStatusLine::NoProgress);
    EXPECT_TRUE(status.paneRect(number).isEmpty());
}

TEST_F(Bars, AFontOfTheFormMakesTheStatusLineHigher)
{
    status.addPane(0);
    show();
    showStatus();
    const int before = status.height();
    form.setFont(Font(L"DejaVu Sans", 24));
    UiDriver::processEvents();
    EXPECT_GT(status.height(), before);
    EXPECT_EQ(form.clientHeight(), 300 - status.height() - bar.height());
}
