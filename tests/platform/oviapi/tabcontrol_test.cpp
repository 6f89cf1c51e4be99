#include <oviapi/tabcontrol.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <oviapi/form.h>
#include <oviapi/lineedit.h>
#include <oviapi/panel.h>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

using Heard = std::vector<std::string>;

struct Listener : Object {
    Heard heard;
    SlotResult answer = 0;

    SlotResult changing(Object*, int from, int to)
    {
        heard.push_back("changing " + std::to_string(from) + " " + std::to_string(to));
        return answer;
    }
    SlotResult changed(Object*, int tab)
    {
        heard.push_back("changed " + std::to_string(tab));
        return 0;
    }
    SlotResult closing(Object*, int tab)
    {
        heard.push_back("close " + std::to_string(tab));
        return answer;
    }
    Heard take() { return std::exchange(heard, {}); }
};

struct Tabs : ::testing::Test {
    WForm form;
    std::unique_ptr<WTabControl> owned = std::make_unique<WTabControl>();
    WTabControl& tabs = *owned;
    WPanel pages[3];
    WLineEdit field; // on the first page
    Listener listener;

    Tabs()
    {
        connect<&WTabControl::onTabChanging>(tabs, listener, &Listener::changing);
        connect<&WTabControl::onTabChanged>(tabs, listener, &Listener::changed);
        connect<&WTabControl::onTabClose>(tabs, listener, &Listener::closing);
    }
    void show(long style = 0)
    {
        form.move(0, 0, 400, 300);
        EXPECT_TRUE(form.create());
        tabs.setStyle(style);
        tabs.setParent(&form);
        tabs.move(10, 10, 380, 280);
        EXPECT_TRUE(tabs.create());
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(tabs.addTab((L"Page &" + std::to_wstring(i)).c_str(), &pages[i]), i);
            EXPECT_TRUE(pages[i].create());
        }
        field.setParent(&pages[0]);
        field.move(5, 5, 100, 24);
        EXPECT_TRUE(field.create());
        UiDriver::showAndActivate(form);
        UiDriver::processEvents();
    }
    void clickTab(int tab)
    {
        const Rect rect = tabs.tabRect(tab);
        ASSERT_FALSE(rect.isEmpty());
        UiDriver::click(tabs, rect.left + 12, (rect.top + rect.bottom) / 2);
    }
    std::vector<bool> shown() const
    {
        return {pages[0].isVisible(), pages[1].isVisible(), pages[2].isVisible()};
    }
    using Shown = std::vector<bool>;
    template<auto Signal>
    void destroyIn()
    {
        connect<Signal>(tabs, listener, [this](Object*, auto&&...) -> SlotResult {
            owned.reset();
            return 0;
        });
    }
};

} // namespace

TEST_F(Tabs, ThePageOfTheCurrentTabAloneIsShownAndFillsTheClientArea)
{
    show();
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(shown(), (Shown{true, false, false}));
    EXPECT_EQ(pages[0].geometry(), (Rect{0, 0, tabs.clientWidth(), tabs.clientHeight()}));
    tabs.setCurrentTab(2);
    EXPECT_EQ(shown(), (Shown{false, false, true}));
    tabs.move(0, 0, 200, 150);
    EXPECT_EQ(pages[2].width(), tabs.clientWidth());
    EXPECT_EQ(pages[2].height(), tabs.clientHeight());
    EXPECT_LT(pages[2].height(), 150);
    EXPECT_EQ(listener.take(), Heard()) << "nobody is told of what the program does";
}

TEST_F(Tabs, AClickOnATabAsksAndTells)
{
    show();
    clickTab(1);
    EXPECT_EQ(tabs.currentTab(), 1);
    EXPECT_EQ(tabs.currentPage(), &pages[1]);
    EXPECT_EQ(shown(), (Shown{false, true, false}));
    EXPECT_EQ(listener.take(), (Heard{"changing 0 1", "changed 1"}));
    clickTab(1);
    EXPECT_EQ(listener.take(), Heard());
}

TEST_F(Tabs, AChangeThatIsRefusedLeavesEverythingAsItIs)
{
    show();
    listener.answer = 1;
    clickTab(1);
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(shown(), (Shown{true, false, false}));
    EXPECT_EQ(listener.take(), (Heard{"changing 0 1"}));
    listener.answer = 2;
    clickTab(1);
    EXPECT_EQ(tabs.currentTab(), 1) << "seen is not handled";
}

TEST_F(Tabs, TheVirtualFunctionMayRefuseAsWell)
{
    struct Firm : WTabControl {
        bool onTabChanging(int, int) override { return true; }
    } firm;
    form.move(0, 0, 400, 300);
    ASSERT_TRUE(form.create());
    firm.setParent(&form);
    firm.move(0, 0, 300, 200);
    ASSERT_TRUE(firm.create());
    firm.addTab(L"one");
    firm.addTab(L"two");
    UiDriver::showAndActivate(form);
    const Rect rect = firm.tabRect(1);
    UiDriver::click(firm, rect.left + 5, rect.top + 5);
    EXPECT_EQ(firm.currentTab(), 0);
    firm.setCurrentTab(1);
    EXPECT_EQ(firm.currentTab(), 1) << "the program is not asked";
}

TEST_F(Tabs, HandlersThatShowAndHidePagesThemselvesDoNoHarm)
{
    show();
    connect<&WTabControl::onTabChanging>(tabs, listener, [this](Object*, int from, int) {
        pages[from].show(false);
        return SlotResult(0);
    });
    connect<&WTabControl::onTabChanged>(tabs, listener, [this](Object*, int tab) {
        pages[tab].show(true);
        return SlotResult(0);
    });
    clickTab(2);
    EXPECT_EQ(shown(), (Shown{false, false, true}));
    clickTab(0);
    EXPECT_EQ(shown(), (Shown{true, false, false}));
}

TEST_F(Tabs, TheKeyboardChangesTabsFromInsideAPage)
{
    show();
    field.setFocus();
    UiDriver::key(form, KeyTab, ModifierControl);
    EXPECT_EQ(tabs.currentTab(), 1);
    EXPECT_EQ(UiDriver::focused(), &tabs) << "the focus stays inside";
    UiDriver::key(form, KeyPageDown, ModifierControl);
    EXPECT_EQ(tabs.currentTab(), 2);
    UiDriver::key(form, KeyTab, ModifierControl);
    EXPECT_EQ(tabs.currentTab(), 0) << "around the end";
    field.setFocus();
    UiDriver::key(form, KeyTab, ModifierControl | ModifierShift);
    EXPECT_EQ(tabs.currentTab(), 2);
    UiDriver::key(form, KeyPageUp, ModifierControl);
    EXPECT_EQ(tabs.currentTab(), 1);
}

TEST_F(Tabs, ArrowsMoveOnTheTabs)
{
    show();
    tabs.setFocus();
    EXPECT_TRUE(tabs.hasFocus());
    EXPECT_EQ(UiDriver::focused(), &tabs);
    UiDriver::key(form, KeyRight);
    EXPECT_EQ(tabs.currentTab(), 1);
    UiDriver::key(form, KeyEnd);
    EXPECT_EQ(tabs.currentTab(), 2);
    UiDriver::key(form, KeyHome);
    EXPECT_EQ(tabs.currentTab(), 0);
    UiDriver::key(form, KeyPageDown, ModifierControl);
    UiDriver::key(form, KeyTab, ModifierControl);
    EXPECT_EQ(tabs.currentTab(), 2);
}

TEST_F(Tabs, AKeyOnTheTabsIsOfferedToTheHandlerOnceAndFirst)
{
    show();
    tabs.setFocus();
    int presses = 0;
    int releases = 0;
    SlotResult answer = 0;
    connect<&VisualObject::onKeyDown>(tabs, listener, [&](Object*, VirtualKey) {
        ++presses;
        return answer;
    });
    connect<&VisualObject::onKeyUp>(tabs, listener, [&](Object*, VirtualKey) {
        ++releases;
        return SlotResult(0);
    });
    UiDriver::key(form, KeyF1);
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(releases, 1);
    answer = 1;
    UiDriver::key(form, KeyRight);
    EXPECT_EQ(presses, 2);
    EXPECT_EQ(tabs.currentTab(), 0);
}

TEST_F(Tabs, AMnemonicChoosesItsTab)
{
    show();
    UiDriver::key(form, Key0 + 2, ModifierAlt);
    EXPECT_EQ(tabs.currentTab(), 2);
    EXPECT_EQ(listener.take(), (Heard{"changing 0 2", "changed 2"}));
}

TEST_F(Tabs, ADisabledTabIsPassedOverAndCannotBeChosen)
{
    show();
    tabs.enableTab(1, false);
    EXPECT_FALSE(tabs.isTabEnabled(1));
    clickTab(1);
    EXPECT_EQ(tabs.currentTab(), 0);
    tabs.setFocus();
    UiDriver::key(form, KeyTab, ModifierControl);
    EXPECT_EQ(tabs.currentTab(), 2);
    tabs.enableTab(2, false);
    EXPECT_EQ(tabs.currentTab(), 2) << "the current one stays";
    tabs.setCurrentTab(1);
    EXPECT_EQ(tabs.currentTab(), 1) << "the program may choose it";
    tabs.enableTab(0, false);
    UiDriver::key(form, KeyEnd);
    EXPECT_EQ(tabs.currentTab(), 1);
}

TEST_F(Tabs, InsertingAndMovingKeepsTheCurrentPage)
{
    show();
    tabs.setCurrentTab(1);
    WPanel extra;
    EXPECT_EQ(tabs.insertTab(L"first", &extra, nullptr, 0), 0);
    EXPECT_TRUE(extra.create());
    EXPECT_EQ(tabs.currentTab(), 2);
    EXPECT_FALSE(extra.isVisible());
    tabs.moveTab(2, 0);
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(tabs.currentPage(), &pages[1]);
    tabs.moveTab(3, 0);
    EXPECT_EQ(tabs.currentTab(), 1);
    EXPECT_EQ(tabs.caption(0), L"Page &2");
    tabs.moveTab(0, 3);
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(tabs.findPage(&pages[2]), 3);
    tabs.moveTab(0, 7);
    tabs.moveTab(-1, 0);
    EXPECT_EQ(tabs.currentPage(), &pages[1]);
    clickTab(3);
    EXPECT_EQ(tabs.currentPage(), &pages[2]) << "the tabs on the screen moved as well";
}

TEST_F(Tabs, RemovingTheCurrentTabShowsItsNeighbour)
{
    show();
    tabs.setCurrentTab(1);
    tabs.removeTab(1);
    EXPECT_EQ(tabs.currentPage(), &pages[2]);
    EXPECT_EQ(pages[1].parent(), nullptr);
    EXPECT_EQ(shown(), (Shown{false, false, true}));
    tabs.removeTab(1);
    EXPECT_EQ(tabs.currentPage(), &pages[0]);
    tabs.removeTab(0);
    EXPECT_EQ(tabs.currentTab(), -1);
    EXPECT_EQ(tabs.currentPage(), nullptr);
    tabs.removeTab(0);
    tabs.clear();
    EXPECT_EQ(listener.take(), Heard());
}

TEST_F(Tabs, APageMayBeDestroyedBeforeItsTab)
{
    show();
    auto page = std::make_unique<WPanel>();
    const int tab = tabs.addTab(L"short", page.get());
    tabs.setCurrentTab(tab);
    page.reset();
    EXPECT_EQ(tabs.page(tab), nullptr);
    tabs.setCurrentTab(0);
    tabs.setCurrentTab(tab);
    EXPECT_EQ(shown(), (Shown{false, false, false}));
    tabs.removeTab(tab);
    EXPECT_EQ(tabs.tabCount(), 3);
}

TEST_F(Tabs, NumbersOutOfRangeDoNothing)
{
    show();
    for (const int tab : {-1, 3, 2147483647, -2147483647 - 1}) {
        tabs.setCurrentTab(tab);
        tabs.removeTab(tab);
        tabs.setCaption(tab, L"x");
        tabs.setPicture(tab, nullptr);
        tabs.enableTab(tab, false);
        tabs.setTabToolTip(tab, L"x");
        EXPECT_EQ(tabs.caption(tab), L"");
        EXPECT_EQ(tabs.page(tab), nullptr);
        EXPECT_FALSE(tabs.isTabEnabled(tab));
        EXPECT_TRUE(tabs.tabRect(tab).isEmpty());
    }
    EXPECT_EQ(tabs.tabCount(), 3);
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(tabs.tabAt(-100, -100), -1);
    EXPECT_EQ(tabs.insertTab(L"last", nullptr, nullptr, 99), 3);
}

TEST_F(Tabs, HostileCaptionsAreKeptAndCutOnTheScreen)
{
    show();
    const std::wstring longText(10000, L'w');
    for (const std::wstring& text :
         {longText, std::wstring(L"<h1>big</h1>"), std::wstring(L"a\nb"), std::wstring(L"&&&&&")}) {
        tabs.setCaption(0, text.c_str());
        tabs.setTabToolTip(0, text.c_str());
        UiDriver::processEvents();
        EXPECT_EQ(tabs.caption(0), text);
        EXPECT_LE(tabs.tabRect(0).width(), 300);
        EXPECT_LT(tabs.tabRect(0).height(), 60);
        UiDriver::pixel(tabs, 1, 1);
    }
    tabs.setCaption(0, nullptr);
    EXPECT_EQ(tabs.caption(0), L"");
}

TEST_F(Tabs, TheTabsMayStandBelowThePages)
{
    show(WTabControl::Bottom);
    EXPECT_GE(tabs.tabRect(0).top, tabs.clientHeight());
    clickTab(2);
    EXPECT_EQ(tabs.currentTab(), 2);
}

TEST_F(Tabs, CloseBoxesAskAndRemoveNothing)
{
    show(WTabControl::CloseBoxes);
    const Rect rect = tabs.tabRect(1);
    UiDriver::click(tabs, rect.right - 14, (rect.top + rect.bottom) / 2);
    EXPECT_EQ(listener.take(), (Heard{"close 1"}));
    EXPECT_EQ(tabs.tabCount(), 3);
    tabs.setFocus();
    UiDriver::key(form, KeyF1 + 3, ModifierControl);
    UiDriver::key(form, KeyA + 22, ModifierControl);
    EXPECT_EQ(listener.take(), (Heard{"close 0", "close 0"}));
}

TEST_F(Tabs, WithoutCloseBoxesTheKeysCloseNothing)
{
    show();
    tabs.setFocus();
    UiDriver::key(form, KeyF1 + 3, ModifierControl);
    EXPECT_EQ(listener.take(), Heard());
}

TEST_F(Tabs, ATabMayBeRemovedByItsCloseBox)
{
    show(WTabControl::CloseBoxes);
    connect<&WTabControl::onTabClose>(tabs, listener, [this](Object*, int tab) {
        tabs.removeTab(tab);
        return SlotResult(1);
    });
    for (int left = 3; left > 0; --left) {
        EXPECT_EQ(tabs.tabCount(), left);
        const Rect rect = tabs.tabRect(0);
        UiDriver::click(tabs, rect.right - 14, (rect.top + rect.bottom) / 2);
    }
    EXPECT_EQ(tabs.tabCount(), 0);
}

TEST_F(Tabs, EverythingIsKeptBeforeItIsCreatedAndAfterItIsDestroyed)
{
    tabs.addTab(L"one", &pages[0]);
    tabs.addTab(L"two", &pages[1]);
    tabs.enableTab(0, false);
    tabs.setCurrentTab(1);
    form.move(0, 0, 400, 300);
    ASSERT_TRUE(form.create());
    tabs.setParent(&form);
    tabs.move(0, 0, 300, 200);
    ASSERT_TRUE(tabs.create());
    EXPECT_EQ(tabs.currentTab(), 1);
    ASSERT_TRUE(pages[0].create() && pages[1].create());
    EXPECT_EQ(pages[1].width(), tabs.clientWidth());
    tabs.destroy();
    EXPECT_FALSE(pages[1].isCreated());
    EXPECT_EQ(tabs.caption(1), L"two");
    EXPECT_TRUE(tabs.create());
    EXPECT_EQ(tabs.currentTab(), 1);
}

TEST_F(Tabs, ADisabledControlIsNotChanged)
{
    show();
    tabs.enable(false);
    clickTab(1);
    EXPECT_EQ(tabs.currentTab(), 0);
}

TEST_F(Tabs, AFontChangesTheHeightOfTheTabs)
{
    show();
    const int before = tabs.clientHeight();
    tabs.setFont(Font(L"DejaVu Sans", 24));
    UiDriver::processEvents();
    EXPECT_LT(tabs.clientHeight(), before);
    EXPECT_EQ(pages[0].height(), tabs.clientHeight());
}

TEST_F(Tabs, ItMayBeDestroyedWhileATabIsChosen)
{
    show();
    destroyIn<&WTabControl::onTabChanging>();
    clickTab(1);
    EXPECT_EQ(owned, nullptr);
    EXPECT_EQ(pages[0].parent(), nullptr);
}

TEST_F(Tabs, ItMayBeDestroyedWhenATabHasBeenChosen)
{
    show();
    destroyIn<&WTabControl::onTabChanged>();
    tabs.setFocus();
    UiDriver::key(form, KeyRight);
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tabs, ItMayBeDestroyedByACloseBox)
{
    show(WTabControl::CloseBoxes);
    destroyIn<&WTabControl::onTabClose>();
    const Rect rect = tabs.tabRect(1);
    UiDriver::click(tabs, rect.right - 14, (rect.top + rect.bottom) / 2);
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tabs, TheHandlerMayChooseAnotherTabItself)
{
    show();
    connect<&WTabControl::onTabChanging>(tabs, listener, [this](Object*, int, int) {
        tabs.setCurrentTab(2);
        return SlotResult(0);
    });
    clickTab(1);
    EXPECT_EQ(tabs.currentTab(), 2);
    EXPECT_EQ(shown(), (Shown{false, false, true}));
}
