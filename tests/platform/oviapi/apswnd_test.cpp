#include <gtest/gtest.h>

#include <oviapi/apswnd.h>
#include <oviapi/form.h>
#include <oviapi/painter.h>

#include "tests/support/uidriver.h"

using namespace OviAPI;

namespace {

class Window : public aCApsWnd {
public:
    bool onDraw(Painter* painter, const Rect& rect) override
    {
        ++draws;
        drawn = rect;
        painter->fillRect(rect, Color(10, 20, 30));
        return true;
    }
    void doScroll(long horizontal, long vertical) override
    {
        asked = {horizontal, vertical};
        aCApsWnd::doScroll(horizontal, vertical);
    }
    bool onVisClientSize() override
    {
        ++sizes;
        return false;
    }

    int draws = 0;
    int sizes = 0;
    Rect drawn;
    std::pair<long, long> asked;
};

class ApsWnd : public testing::Test {
protected:
    ApsWnd()
    {
        form.create();
        form.move(0, 0, 300, 200);
        window.setParent(&form);
        window.create();
        window.move(0, 0, 300, 200);
        UiDriver::showAndActivate(form);
    }

    WForm form;
    Window window;
};

constexpr long trillion = 1'000'000'000'000;

} // namespace

TEST_F(ApsWnd, PositionsStayInsideTheRange)
{
    window.SetScrollRange(VerticalBar, 100);
    window.SetScrollPos(VerticalBar, 250);
    EXPECT_EQ(window.GetScrollPos(VerticalBar), 100);
    window.SetScrollPos(VerticalBar, -1);
    EXPECT_EQ(window.GetScrollPos(VerticalBar), 0);
    window.SetScrollPos(VerticalBar, 80);
    window.SetScrollRange(VerticalBar, 50);
    EXPECT_EQ(window.GetScrollPos(VerticalBar), 50);
    window.SetScrollRange(VerticalBar, -5);
    EXPECT_EQ(window.GetScrollRange(VerticalBar), 0);
}

TEST_F(ApsWnd, ABarIsSeenWhileItHasARange)
{
    const int wide = window.clientWidth();
    EXPECT_FALSE(window.IsScrollBarShown(VerticalBar));
    window.SetScrollRange(VerticalBar, 5);
    UiDriver::processEvents();
    EXPECT_TRUE(window.IsScrollBarShown(VerticalBar));
    EXPECT_LT(window.clientWidth(), wide);
    window.ShowScrollBar(VerticalBar, false);
    UiDriver::processEvents();
    EXPECT_FALSE(window.IsScrollBarShown(VerticalBar));
    EXPECT_EQ(window.clientWidth(), wide);
}

TEST_F(ApsWnd, ANewClientSizeIsTold)
{
    const int before = window.sizes;
    window.SetScrollRange(HorizontalBar, 5);
    UiDriver::processEvents();
    EXPECT_GT(window.sizes, before);
}

TEST_F(ApsWnd, ArrowsAndPagesMoveByTheirSteps)
{
    window.SetScrollRange(VerticalBar, trillion);
    window.SetScrollSteps(VerticalBar, 7, 1000);
    UiDriver::processEvents();
    const int barX = window.clientWidth() + 5;
    UiDriver::click(window, barX, window.clientHeight() - 5);
    EXPECT_EQ(window.asked, std::pair(0L, 7L));
    UiDriver::click(window, barX, window.clientHeight() / 2);
    EXPECT_EQ(window.asked, std::pair(0L, 1007L));
    UiDriver::click(window, barX, 5);
    EXPECT_EQ(window.GetScrollPos(VerticalBar), 1000);
}

TEST_F(ApsWnd, TheThumbReachesBothEnds)
{
    window.SetScrollRange(VerticalBar, trillion);
    window.SetScrollSteps(VerticalBar, 1, trillion / 4);
    UiDriver::processEvents();
    const int barX = window.clientWidth() + 5;
    UiDriver::drag(window, {barX, 24}, {barX, 195});
    EXPECT_EQ(window.GetScrollPos(VerticalBar), trillion);
    UiDriver::drag(window, {barX, window.clientHeight() - 24}, {barX, 2});
    EXPECT_EQ(window.GetScrollPos(VerticalBar), 0);
}

TEST_F(ApsWnd, OnlyThePartThatIsAskedForIsDrawn)
{
    UiDriver::processEvents();
    window.draws = 0;
    window.repaint({10, 20, 30, 50});
    UiDriver::processEvents();
    EXPECT_EQ(window.draws, 1);
    EXPECT_EQ(window.drawn, (Rect{10, 20, 30, 50}));
    EXPECT_EQ(UiDriver::pixel(window, 15, 25), 0xFF0A141EU);
}

TEST_F(ApsWnd, EverythingCanBeSetBeforeItIsCreated)
{
    Window early;
    early.SetScrollRange(VerticalBar, 50);
    early.SetScrollPos(VerticalBar, 20);
    early.ScrollPixels({0, 0, 10, 10}, 1, 1);
    EXPECT_FALSE(early.IsScrollBarShown(VerticalBar));
    early.setParent(&form);
    early.create();
    EXPECT_EQ(early.GetScrollPos(VerticalBar), 20);
    EXPECT_TRUE(early.IsScrollBarShown(VerticalBar));
}
