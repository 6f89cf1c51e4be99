#include "recordview_support.h"

using namespace OviAPI;

namespace {

constexpr long trillion = 1'000'000'000'000;
using Range = RecordSelection::Range;

} // namespace

TEST_F(RecordViewTest, ArrowKeysMoveTheFocusAndStopAtTheEdges)
{
    VirtualRows data(1000);
    show(data);
    key(KeyUp);
    key(KeyLeft);
    EXPECT_EQ(view.GetRow(), 1);
    EXPECT_EQ(view.GetCol(), 1);
    key(KeyDown);
    key(KeyRight);
    EXPECT_EQ(view.GetRow(), 2);
    EXPECT_EQ(view.GetCol(), 2);
    key(KeyEnd);
    EXPECT_EQ(view.GetCol(), 4);
    key(KeyRight);
    EXPECT_EQ(view.GetCol(), 4);
    key(KeyHome);
    EXPECT_EQ(view.GetCol(), 1);
}

TEST_F(RecordViewTest, ControlHomeAndEndReachTheEndsOfATrillionRows)
{
    VirtualRows data(trillion);
    show(data);
    key(KeyEnd, ModifierControl);
    EXPECT_EQ(view.GetRow(), trillion);
    EXPECT_EQ(view.GetCol(), 4);
    EXPECT_EQ(view.GetLastVisibleRow(), trillion);
    key(KeyDown);
    key(KeyPageDown);
    EXPECT_EQ(view.GetRow(), trillion);
    key(KeyPageUp);
    EXPECT_EQ(view.GetRow(), trillion - 19);
    key(KeyHome, ModifierControl);
    EXPECT_EQ(view.GetRow(), 1);
    EXPECT_EQ(view.GetFirstShownRow(), 1);
}

TEST_F(RecordViewTest, TheViewFollowsTheFocusByOneRow)
{
    VirtualRows data(trillion);
    show(data);
    for (int i = 0; i < 20; ++i)
        key(KeyDown);
    EXPECT_EQ(view.GetRow(), 21);
    EXPECT_EQ(view.GetFirstShownRow(), 2);
}

TEST_F(RecordViewTest, TabGoesCellByCellAndLeavesBehindTheLast)
{
    VirtualRows data(2);
    show(data);
    for (int i = 0; i < 4; ++i)
        key(KeyTab);
    EXPECT_EQ(view.GetRow(), 2);
    EXPECT_EQ(view.GetCol(), 1);
    key(KeyTab, ModifierShift);
    EXPECT_EQ(view.GetRow(), 1);
    EXPECT_EQ(view.GetCol(), 4);
    view.SetFocusCell(4, 2);
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyTab)));
    view.SetFocusCell(1, 1);
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyTab, ModifierShift)));
}

TEST_F(RecordViewTest, ShiftExtendsTheSelection)
{
    VirtualRows data(1000);
    show(data);
    view.SetFocusCell(2, 5);
    key(KeyDown, ModifierShift);
    key(KeyRight, ModifierShift);
    EXPECT_EQ(view.GetSelection(), (Range{2, 3, 5, 6}));
    key(KeyEnd, ModifierShift | ModifierControl);
    EXPECT_EQ(view.GetSelection(), (Range{2, 4, 5, 1000}));
    key(KeyUp);
    EXPECT_TRUE(view.GetSelection().isSingle());
}

TEST_F(RecordViewTest, KeysSelectRowsColumnsAndEverything)
{
    VirtualRows data(1000);
    show(data);
    view.SetFocusCell(2, 5);
    key(KeySpace, ModifierShift);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 5, 5}));
    key(KeyDown, ModifierShift);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 5, 6}));
    view.SetFocusCell(2, 5);
    key(KeySpace, ModifierControl);
    EXPECT_EQ(view.GetSelection(), (Range{2, 2, 1, 1000}));
    key(KeyA, ModifierControl);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 1, 1000}));
}

TEST_F(RecordViewTest, AClickFocusesAndShiftClickExtends)
{
    VirtualRows data(1000);
    show(data);
    click(2, 4);
    EXPECT_EQ(view.GetRow(), 4);
    EXPECT_EQ(view.GetCol(), 2);
    click(3, 8, ModifierShift);
    EXPECT_EQ(view.GetSelection(), (Range{2, 3, 4, 8}));
    click(1, 1);
    EXPECT_TRUE(view.GetSelection().isSingle());
}

TEST_F(RecordViewTest, ADragSelectsARange)
{
    VirtualRows data(1000);
    show(data);
    UiDriver::drag(view, middle(1, 2), middle(3, 6));
    EXPECT_EQ(view.GetSelection(), (Range{1, 3, 2, 6}));
    const Point at = middle(4, 9);
    UiDriver::moveTo(view, at.x, at.y);
    EXPECT_EQ(view.GetSelection(), (Range{1, 3, 2, 6})) << "the button is up";
}

TEST_F(RecordViewTest, ADragBelowTheViewScrollsUntilTheButtonIsReleased)
{
    VirtualRows data(trillion);
    show(data);
    const Point from = middle(1, 2);
    UiDriver::press(view, from.x, from.y);
    UiDriver::moveTo(view, from.x, 500);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return view.GetRow() > 25; }));
    UiDriver::release(view, from.x, 500);
    EXPECT_EQ(view.GetSelection().firstRow, 2);
    EXPECT_GT(view.GetFirstShownRow(), 4);
}

TEST_F(RecordViewTest, RowHeadersSelectWholeRows)
{
    VirtualRows data(1000);
    show(data);
    UiDriver::drag(view, {10, header + 30}, {10, header + 70});
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 2, 4}));
    UiDriver::click(view, 10, 10);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 1, 1000}));
}

TEST_F(RecordViewTest, ARightClickOutsideTheSelectionMovesTheFocus)
{
    VirtualRows data(1000);
    show(data);
    UiDriver::drag(view, middle(1, 2), middle(3, 6));
    Point at = middle(2, 4);
    UiDriver::click(view, at.x, at.y, UiDriver::Button::Right);
    EXPECT_EQ(view.GetSelection(), (Range{1, 3, 2, 6}));
    at = middle(4, 9);
    UiDriver::click(view, at.x, at.y, UiDriver::Button::Right);
    EXPECT_EQ(view.GetSelection(), (Range{4, 4, 9, 9}));
}

TEST_F(RecordViewTest, APressNearAColumnEdgeResizesAndIsMarkedAsSuch)
{
    VirtualRows data(1000);
    show(data);
    int presses = 0;
    int suppressed = 0;
    int resized = 0;
    connect<&VisualObject::onLButtonDown>(view, form, [&](Object*, int, int, long) {
        ++presses;
        suppressed += view.HeaderActionsSuppressed() ? 1 : 0;
        return SlotResult(0);
    });
    connect<&aCRecordView::onHeaderLButtonDown>(view, form, [&](Object*, int) {
        ADD_FAILURE() << "an edge is no header";
        return SlotResult(0);
    });
    connect<&aCRecordView::onColResized>(view, form, [&](Object*, int col) {
        resized = col;
        return SlotResult(0);
    });
    for (const int off : {-4, 0, 4}) {
        const int edge = rowHeader + data.GetColInfo(1)->width;
        UiDriver::drag(view, {edge + off, 10}, {edge + off + 30, 10});
        EXPECT_FALSE(view.HeaderActionsSuppressed());
    }
    EXPECT_EQ(data.GetColInfo(1)->width, 190);
    EXPECT_EQ(presses, 3);
    EXPECT_EQ(suppressed, 3);
    EXPECT_EQ(resized, 1);
}

TEST_F(RecordViewTest, FivePixelsFromAnEdgeIsTheHeader)
{
    VirtualRows data(1000);
    show(data);
    std::vector<int> pressed;
    connect<&aCRecordView::onHeaderLButtonDown>(view, form, [&](Object*, int col) {
        pressed.push_back(col);
        EXPECT_FALSE(view.HeaderActionsSuppressed());
        return SlotResult(0);
    });
    UiDriver::click(view, rowHeader + 95, 10);
    UiDriver::click(view, rowHeader + 105, 10);
    EXPECT_EQ(pressed, (std::vector{1, 2}));
    EXPECT_EQ(data.GetColInfo(1)->width, 100);
}

TEST_F(RecordViewTest, EveryQuickPressOnAHeaderCounts)
{
    VirtualRows data(1000);
    show(data);
    int pressed = 0;
    connect<&aCRecordView::onHeaderLButtonDown>(view, form, [&](Object*, int) {
        ++pressed;
        return SlotResult(1);
    });
    UiDriver::doubleClick(view, rowHeader + 50, 10);
    EXPECT_EQ(pressed, 2);
}

TEST_F(RecordViewTest, ARightPressOnAHeaderHasASignalOfItsOwn)
{
    VirtualRows data(1000);
    show(data);
    int pressed = 0;
    connect<&aCRecordView::onHeaderRButtonDown>(view, form, [&](Object*, int col) {
        pressed = col;
        return SlotResult(1);
    });
    UiDriver::click(view, rowHeader + 250, 10, UiDriver::Button::Right);
    EXPECT_EQ(pressed, 3);
    EXPECT_EQ(view.GetRow(), 1);
}

TEST_F(RecordViewTest, ADoubleClickOnAnEdgeFitsTheColumn)
{
    VirtualRows data(1000);
    show(data);
    UiDriver::doubleClick(view, rowHeader + 200, 10);
    EXPECT_NE(data.GetColInfo(2)->width, 100);
    EXPECT_GT(data.GetColInfo(2)->width, 30);
    EXPECT_FALSE(view.HeaderActionsSuppressed());
}

TEST_F(RecordViewTest, AColumnOfFixedWidthHasNoEdge)
{
    VirtualRows data(1000);
    data.GetColInfo(1)->fixedWidth = true;
    show(data);
    EXPECT_EQ(view.GetEdgeFromPoint(rowHeader + 100, 10), 0);
    EXPECT_EQ(view.GetEdgeFromPoint(rowHeader + 200, 10), 2);
    EXPECT_EQ(view.GetEdgeFromPoint(rowHeader + 200, header), 0);
}

TEST_F(RecordViewTest, AWidthNeverFallsBelowItsLeast)
{
    VirtualRows data(1000);
    data.GetColInfo(1)->minWidth = 60;
    show(data);
    UiDriver::drag(view, {rowHeader + 100, 10}, {5, 10});
    EXPECT_EQ(data.GetColInfo(1)->width, 60);
    view.SetColWidth(2, 100'000);
    EXPECT_EQ(data.GetColInfo(2)->width, INT16_MAX);
}

TEST_F(RecordViewTest, ADoubleClickOnACellIsTold)
{
    VirtualRows data(1000);
    show(data);
    std::pair<int, long> told;
    connect<&aCRecordView::onCellDblClk>(view, form, [&](Object*, int col, long line) {
        told = {col, line};
        return SlotResult(1);
    });
    const Point at = middle(3, 5);
    UiDriver::doubleClick(view, at.x, at.y);
    EXPECT_EQ(told, std::pair(3, 5L));
}

TEST_F(RecordViewTest, TheWheelScrollsThreeRowsANotchAndKeepsTheFocus)
{
    VirtualRows data(trillion);
    show(data);
    UiDriver::wheel(view, 200, 200, -1);
    EXPECT_EQ(view.GetFirstShownRow(), 4);
    EXPECT_EQ(view.GetRow(), 1);
    UiDriver::wheel(view, 200, 200, 1);
    UiDriver::wheel(view, 200, 200, 1);
    EXPECT_EQ(view.GetFirstShownRow(), 1);
}

TEST_F(RecordViewTest, SmallTurnsOfTheWheelAddUp)
{
    VirtualRows data(1000);
    show(data);
    for (int i = 0; i < 4; ++i)
        view.onMouseWheel(200, 200, -10, 0);
    EXPECT_EQ(view.GetFirstShownRow(), 2);
}

TEST_F(RecordViewTest, FocusSignalsTellOldAndNewRow)
{
    VirtualRows data(1000);
    show(data);
    std::vector<std::pair<long, long>> rows;
    int cells = 0;
    connect<&aCRecordView::onRowGetFocus>(view, form, [&](Object*, long old, long now) {
        rows.emplace_back(old, now);
        return SlotResult(0);
    });
    connect<&aCRecordView::onCellGetFocus>(view, form, [&](Object*, int, long) {
        ++cells;
        return SlotResult(0);
    });
    key(KeyDown);
    key(KeyRight);
    key(KeyDown);
    EXPECT_EQ(rows, (std::vector<std::pair<long, long>>{{1, 2}, {2, 3}}));
    EXPECT_EQ(cells, 3);
}

TEST_F(RecordViewTest, AListMovesOneWholeRow)
{
    VirtualRows data(1000);
    show(data);
    view.SetListBoxMode(true, 2);
    key(KeyDown);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 2, 2}));
    key(KeyDown, ModifierShift);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 3, 3})) << "a list has no ranges";
    key(KeyA, ModifierControl);
    EXPECT_EQ(view.GetSelection(), (Range{1, 4, 3, 3}));
    key(KeyEnd);
    EXPECT_EQ(view.GetRow(), 1000);
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyTab)));
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyEnter)));
}

TEST_F(RecordViewTest, ASlotMayDeleteTheViewWhenTheFocusMoves)
{
    VirtualRows data(1000);
    auto other = std::make_unique<aCRecordView>();
    other->setParent(&form);
    other->create();
    other->SetDataSet(&data, true);
    connect<&aCRecordView::onRowGetFocus>(*other, form, [&](Object*, long, long) {
        other.reset();
        return SlotResult(1);
    });
    EXPECT_TRUE(other->SetRow(5));
    EXPECT_EQ(other, nullptr);
    UiDriver::processEvents();
}

TEST_F(RecordViewTest, ScrollStepsAreExactRowsAtATrillion)
{
    VirtualRows data(trillion);
    show(data);
    view.ScrollToRow(trillion);
    const long end = view.GetScrollPos(VerticalBar);
    // The bar stands right of the client area: the arrow at its upper end, then beside the thumb.
    const int barX = view.clientWidth() + 5;
    UiDriver::click(view, barX, 5);
    EXPECT_EQ(view.GetScrollPos(VerticalBar), end - 1);
    UiDriver::click(view, barX, 5);
    EXPECT_EQ(view.GetScrollPos(VerticalBar), end - 2);
    UiDriver::click(view, barX, 200);
    EXPECT_EQ(view.GetScrollPos(VerticalBar), end - 2 - 19);
}
