#include "recordview_support.h"

#include <oviapi/painter.h>

using namespace OviAPI;

namespace {

constexpr long trillion = 1'000'000'000'000;

} // namespace

TEST_F(RecordViewTest, OnlyTheRowsOnTheScreenAreAskedFor)
{
    VirtualRows data(trillion);
    show(data);
    EXPECT_EQ(view.GetRowOnPage(), 20);
    EXPECT_LE(*data.asked.rbegin(), 21);
    EXPECT_GE(data.asked.size(), 20U);
    data.asked.clear();
    view.ScrollToRow(500'000'000'000);
    UiDriver::processEvents();
    EXPECT_EQ(*data.asked.begin(), 500'000'000'000);
    EXPECT_LE(*data.asked.rbegin(), 500'000'000'020);
}

TEST_F(RecordViewTest, ScrollingByARowFetchesOneRowOnly)
{
    VirtualRows data(trillion);
    show(data);
    data.asked.clear();
    view.doScroll(0, 1);
    UiDriver::processEvents();
    EXPECT_EQ(view.GetFirstShownRow(), 2);
    EXPECT_LE(data.asked.size(), 2U);
    EXPECT_EQ(*data.asked.rbegin(), 21);
}

TEST_F(RecordViewTest, TheLastRowIsReachedExactly)
{
    VirtualRows data(trillion);
    show(data);
    view.ScrollToRow(trillion);
    EXPECT_EQ(view.GetFirstShownRow(), trillion - 19);
    EXPECT_EQ(view.GetLastVisibleRow(), trillion);
    EXPECT_EQ(view.GetScrollPos(VerticalBar), trillion - 20);
}

TEST_F(RecordViewTest, RowsThatAllFitNeedNoScrollBar)
{
    VirtualRows data(20);
    show(data);
    EXPECT_FALSE(view.IsScrollBarShown(VerticalBar));
    data.setRows(21);
    data.RefreshViews();
    fixSizes();
    EXPECT_TRUE(view.IsScrollBarShown(VerticalBar));
}

TEST_F(RecordViewTest, PlacesAndPointsAgree)
{
    VirtualRows data(trillion);
    show(data);
    view.ScrollToRow(1000);
    Rect rect;
    ASSERT_TRUE(view.GetColRect(2, rect, nullptr, true));
    EXPECT_EQ(rect, (Rect{rowHeader + 100, 0, rowHeader + 200, header}));
    ASSERT_TRUE(view.GetColRect(2, rect, nullptr, false));
    EXPECT_EQ(rect.top, header);
    ASSERT_TRUE(view.GetClientCellRect(2, 1003, rect));
    EXPECT_EQ(rect.top, header + 3 * row);
    EXPECT_EQ(view.GetColFromPoint(rect.left, rect.top), 2);
    EXPECT_EQ(view.GetRowFromPoint(rect.left, rect.top), 1003);
    EXPECT_EQ(view.GetColFromPoint(rowHeader - 1, 50), 0);
    EXPECT_EQ(view.GetColFromPoint(rowHeader + 400, 50), 0);
    EXPECT_EQ(view.GetRowFromPoint(100, header - 1), 0);
    EXPECT_FALSE(view.GetClientCellRect(2, 999, rect));
    EXPECT_FALSE(view.GetColRect(5, rect, nullptr, true));
}

TEST_F(RecordViewTest, AViewWithoutDatasetColumnsOrRowsIsEmptyAndUsable)
{
    UiDriver::showAndActivate(form);
    EXPECT_EQ(view.GetEmptyText(), L"");
    key(KeyDown);
    UiDriver::click(view, 100, 100);
    EXPECT_EQ(view.GetRow(), 0);
    VirtualRows noColumns(10, 0);
    show(noColumns);
    EXPECT_EQ(view.GetEmptyText(), L"No columns");
    key(KeyDown);
    EXPECT_EQ(view.GetRow(), 0);
    VirtualRows noRows(0);
    show(noRows);
    EXPECT_EQ(view.GetEmptyText(), L"No rows");
    key(KeyEnd, ModifierControl);
    UiDriver::click(view, 100, 100);
    EXPECT_EQ(view.GetRow(), 0);
    EXPECT_EQ(view.GetLastVisibleRow(), 0);
    EXPECT_EQ(view.Copy(false), 0);
}

TEST_F(RecordViewTest, AFailingRowShowsItsErrorAndIsAskedForOnce)
{
    VirtualRows data(100);
    data.failing = {3};
    show(data);
    EXPECT_EQ(view.GetRowFault(3), L"The row is locked.");
    EXPECT_EQ(view.GetRowFault(4), L"");
    EXPECT_EQ(view.GetCellText(2, 3), L"");
    EXPECT_EQ(view.GetCellText(2, 4), L"r4 c2");
    data.asked.clear();
    view.repaint();
    UiDriver::processEvents();
    EXPECT_FALSE(data.asked.contains(3)) << "painting again does not ask again";
    data.failing.clear();
    view.ReShow(0, false, true, true, nullptr);
    EXPECT_EQ(view.GetRowFault(3), L"");
}

TEST_F(RecordViewTest, EveryRowMayFailWithoutEnd)
{
    class Broken : public VirtualRows {
    public:
        Broken()
            : VirtualRows(trillion)
        {
        }
        short ToRow(short, long, bool) override { throw std::runtime_error("gone"); }
    } data;
    show(data);
    EXPECT_EQ(view.GetRowFault(1), L"The row could not be read.");
    for (int i = 0; i < 200; ++i) {
        view.doScroll(0, i * 100L);
        UiDriver::processEvents();
    }
    EXPECT_EQ(view.GetFirstShownRow(), 19'901);
}

TEST_F(RecordViewTest, WordsStandForNullDefaultAndLargeObjects)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 1, 11, L"A", 0, 0, 0));
    data.AddColDef(new aCColumn(L"b", 9, 0, L"B", 0, 0, 0));
    data.AppendTexts({nullptr});
    data.AppendTexts({L""});
    data.MarkCell(2, 2, 0, nullptr);
    data.AddRow(nullptr, 0);
    show(data);
    EXPECT_EQ(view.GetCellWord(1, 1), L"NULL");
    EXPECT_EQ(view.GetCellWord(1, 2), L"");
    EXPECT_EQ(view.GetCellWord(2, 2), L"BLOB");
    EXPECT_EQ(view.GetCellWord(1, 3), L"DEFAULT");
    EXPECT_EQ(view.GetRowCaption(1), L"1");
    EXPECT_EQ(view.GetRowCaption(3), L"*");
}

TEST_F(RecordViewTest, NullLooksUnlikeEmptyTextAndUnlikeTheWordNull)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 1, 11, L"A", 0, 0, 0));
    data.AppendTexts({L"first"});
    data.AppendTexts({nullptr});
    data.AppendTexts({L""});
    data.AppendTexts({L"NULL"});
    show(data);
    const Picture picture = shot();
    const auto look = [&](long line) {
        std::vector<uint32_t> pixels;
        const int top = header + static_cast<int>(line - 1) * row;
        for (int y = 0; y < row; ++y)
            for (int x = 0; x < 100; ++x)
                pixels.push_back(at(picture, rowHeader + x, top + y));
        return pixels;
    };
    const auto null = look(2);
    EXPECT_NE(null, look(3));
    EXPECT_NE(null, look(4));
}

TEST_F(RecordViewTest, TheAreaBesideAndBelowTheRowsIsFilled)
{
    VirtualRows data(3);
    show(data);
    const Picture picture = shot();
    const uint32_t field = at(picture, rowHeader + 190, header + row + 4); // an empty place
    EXPECT_EQ(at(picture, rowHeader + 50, header + 3 * row + 5), field);
    EXPECT_EQ(at(picture, 10, header + 3 * row + 5), field);
    EXPECT_EQ(at(picture, rowHeader + 450, header + 5), field);
    EXPECT_EQ(at(picture, 590, 415), field);
}

TEST_F(RecordViewTest, RefreshKeepsFocusSelectionAndPlace)
{
    VirtualRows data(1000);
    show(data);
    view.SetFocusCell(3, 500);
    view.ExtendTo(4, 503);
    const long first = view.GetFirstShownRow();
    data.RefreshViews();
    EXPECT_EQ(view.GetRow(), 503);
    EXPECT_EQ(view.GetSelection(), (RecordSelection::Range{3, 4, 500, 503}));
    EXPECT_LE(std::abs(view.GetFirstShownRow() - first), 5);
}

TEST_F(RecordViewTest, RowsThatHaveGoneTakeTheFocusToTheLastOne)
{
    VirtualRows data(1000);
    show(data);
    view.SetFocusCell(3, 900);
    long told = 0;
    connect<&aCRecordView::onRowGetFocus>(view, form, [&](Object*, long, long now) {
        told = now;
        return SlotResult(0);
    });
    data.setRows(10);
    data.RefreshViews();
    EXPECT_EQ(view.GetRow(), 10);
    EXPECT_EQ(told, 10);
    EXPECT_EQ(view.GetFirstShownRow(), 1);
    data.setRows(0);
    data.RefreshViews();
    EXPECT_EQ(view.GetRow(), 0);
}

TEST_F(RecordViewTest, ReShowToTheStartGoesToTheFirstCell)
{
    VirtualRows data(1000);
    show(data);
    view.SetFocusCell(3, 900);
    view.ReShow(0, true, true, true, nullptr);
    EXPECT_EQ(view.GetRow(), 1);
    EXPECT_EQ(view.GetCol(), 1);
    EXPECT_EQ(view.GetFirstShownRow(), 1);
}

TEST_F(RecordViewTest, TheDatasetMayDieBeforeTheView)
{
    {
        VirtualRows data(1000);
        show(data);
        EXPECT_EQ(data.GetRecordView(), &view);
    }
    EXPECT_EQ(view.GetDataSet(), nullptr);
    EXPECT_EQ(view.GetColCount(), 0);
    UiDriver::processEvents();
}

TEST_F(RecordViewTest, TheViewMayDieBeforeTheDataset)
{
    VirtualRows data(1000);
    {
        aCRecordView other;
        other.SetDataSet(&data, true);
        EXPECT_EQ(data.GetRecordView(), &other);
    }
    EXPECT_EQ(data.GetRecordView(), nullptr);
    data.RefreshViews();
}

TEST_F(RecordViewTest, ADatasetMovedOnPurposeTakesTheFocusAlong)
{
    VirtualRows data(1000);
    show(data);
    data.MoveToRow(FetchAbsolute, 300, true);
    EXPECT_EQ(view.GetRow(), 300);
}

TEST_F(RecordViewTest, AColumnWithoutAWidthGetsOneFromItsContent)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 2, 4, L"A", 0, 0, 0));
    data.AddColDef(new aCColumn(L"b", 1, 1001, L"B", 0, 0, 0));
    data.AddColDef(new aCColumn(L"c", 1, 1001, L"C", 77, 0, 0));
    data.AppendTexts({L"1", std::wstring(30, L'm').c_str(), L"x"});
    view.SetDataSet(&data, true);
    const int wide = GetTextSize(view.GetCellFont(2), std::wstring(30, L'm')).width;
    EXPECT_EQ(data.GetColInfo(2)->width, wide + 8);
    EXPECT_LT(data.GetColInfo(1)->width, 60);
    EXPECT_EQ(data.GetColInfo(3)->width, 77) << "a width that is there stays";
}

TEST_F(RecordViewTest, FirstWidthsAreBounded)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"b", 1, 1001, L"B", 0, 0, 0));
    data.AppendTexts({std::wstring(900, L'm').c_str()});
    view.SetDataSet(&data, true);
    EXPECT_LT(data.GetColInfo(1)->width, 700);
}

TEST_F(RecordViewTest, AFitMeasuresWhatItsModeSays)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 1, 101, L"a long caption", 50, 0, 0));
    data.AddColDef(new aCColumn(L"b", 1, 101, L"b", 50, 0, aCColumn::DropDown));
    data.AddColDef(new aCColumn(L"c", 14, 1, L"c", 50, 40, aCColumn::CheckMark));
    data.AppendTexts({L"x", L"longer than its caption", L"true"});
    show(data);
    const auto width = [&](const wchar_t* text) {
        return GetTextSize(view.GetCellFont(1), text).width;
    };
    view.SetColAlignment(aCClientAreaBroker::AlignHeaders, 0);
    EXPECT_EQ(data.GetColInfo(1)->width, width(L"a long caption") + 8);
    view.SetColAlignment(aCClientAreaBroker::AlignCells, 0);
    EXPECT_EQ(data.GetColInfo(1)->width, width(L"x") + 8);
    EXPECT_EQ(data.GetColInfo(2)->width, width(L"longer than its caption") + 8 + 15);
    EXPECT_EQ(data.GetColInfo(3)->width, 40) << "the least width of the column";
    view.SetWideMargin(true);
    view.SetColAlignment(aCClientAreaBroker::AlignAll, 3);
    EXPECT_EQ(data.GetColInfo(1)->width, width(L"a l") + 18);
    EXPECT_EQ(view.GetColAlignMode(), 4);
    EXPECT_EQ(view.GetColAlignChars(), 3);
}

TEST_F(RecordViewTest, ABrokerOfAnotherKindTakesTheFittingOver)
{
    class Broker : public aCClientAreaBroker {
    public:
        explicit Broker(int& calls)
            : m_calls(calls)
        {
        }
        void SetColAlignment(short, short) override { ++m_calls; }

    private:
        int& m_calls;
    };
    int calls = 0;
    view.SetBroker(std::make_unique<Broker>(calls));
    EXPECT_EQ(view.GetBroker()->GetView(), &view);
    EXPECT_GT(view.GetBroker()->headerHeight, 0);
    view.SetColAlignment(4, 0);
    EXPECT_EQ(calls, 1);
}

TEST_F(RecordViewTest, AColumnMayDrawItsOwnHeader)
{
    class Column : public aCColumn {
    public:
        Column()
            : aCColumn(L"a", 2, 4, L"A", 100, 0, 0)
        {
            customHeader = true;
        }
        void DrawHeader(Painter* painter, int col, aCRecordView* shown) override
        {
            Rect rect;
            ASSERT_TRUE(shown->GetColRect(col, rect, nullptr, true));
            painter->fillRect(rect, Color(1, 2, 3));
        }
    };
    aCMemoryDataSet data;
    data.AddColDef(new Column); // owned by the dataset
    data.AddColDef(new aCColumn(L"b", 2, 4, L"B", 100, 0, 0));
    data.AppendTexts({L"1", L"2"});
    show(data);
    const Picture picture = shot();
    EXPECT_EQ(at(picture, rowHeader + 50, 5), 0xFF010203U);
    EXPECT_NE(at(picture, rowHeader + 150, 5), 0xFF010203U);
    EXPECT_NE(at(picture, rowHeader - 5, 5), 0xFF010203U);
}

TEST_F(RecordViewTest, AScrolledHeaderStaysRightOfTheRowHeader)
{
    VirtualRows data(100, 20);
    for (int i = 1; i <= 20; ++i)
        data.GetColInfo(i)->headerPicture = Picture({40, 20}, Color(250, 0, 250));
    show(data);
    view.doScroll(30, 0);
    UiDriver::processEvents();
    const Picture picture = shot();
    for (int x = 0; x < rowHeader; ++x)
        ASSERT_NE(at(picture, x, 12), 0xFFFA00FAU) << x;
    EXPECT_EQ(at(picture, rowHeader + 2, 12), 0xFFFA00FAU) << "the picture is there, cut";
}

TEST_F(RecordViewTest, TwoThousandColumnsTouchOnlyThoseOnTheScreen)
{
    class Wide : public aCMemoryDataSet {
    public:
        aCCell* GetCellInfo(int column, long) override
        {
            touched.insert(column);
            return nullptr;
        }
        std::set<int> touched;
    } data;
    for (int i = 0; i < 2000; ++i)
        data.AddColDef(new aCColumn(L"c", 2, 4, L"C", 100, 0, 0));
    std::vector<const wchar_t*> texts(2000, L"7");
    for (int i = 0; i < 40; ++i)
        data.AppendTexts(texts);
    show(data);
    data.touched.clear();
    view.ScrollToCell(1000, 1);
    UiDriver::processEvents();
    ASSERT_FALSE(data.touched.empty());
    EXPECT_GE(*data.touched.begin(), 994);
    EXPECT_LE(*data.touched.rbegin(), 1001);
}

TEST_F(RecordViewTest, HintsTellWhatACellCannotShow)
{
    aCMemoryDataSet data;
    data.AddColDef(
        new aCColumn(L"a", 1, 101, L"a caption that is wider than its column", 100, 0, 0));
    data.AddColDef(new aCColumn(L"b", 1, 101, L"b", 100, 0, 0));
    data.GetColInfo(2)->readOnly = true;
    data.AppendTexts({L"a text that is much wider than its column", L"short"});
    data.AppendTexts({L"two\nlines", L"cut"});
    data.MarkCell(2, 2, StampCut, L"The value is longer.");
    show(data);
    EXPECT_EQ(view.hintAt(rowHeader + 5, 5), L"a caption that is wider than its column");
    EXPECT_EQ(view.hintAt(rowHeader + 105, 5), L"");
    EXPECT_EQ(view.hintAt(rowHeader + 5, header + 5), L"a text that is much wider than its column");
    EXPECT_EQ(view.hintAt(rowHeader + 5, header + 25), L"two\nlines");
    EXPECT_EQ(view.hintAt(rowHeader + 105, header + 5), L"This column cannot be changed.");
    EXPECT_EQ(view.hintAt(rowHeader + 105, header + 25),
              L"The value is longer.\nThis column cannot be changed.");
    EXPECT_EQ(view.hintAt(5, header + 5), L"");
}

TEST_F(RecordViewTest, TheErrorOfARowIsToldByItsHint)
{
    VirtualRows data(100);
    data.failing = {2};
    show(data);
    EXPECT_EQ(view.hintAt(rowHeader + 5, header + 25), L"The row is locked.");
    EXPECT_EQ(view.hintAt(5, header + 25), L"The row is locked.");
}

TEST_F(RecordViewTest, ANewFontGivesNewHeights)
{
    VirtualRows data(1000);
    show(data);
    view.SetFont(Font(L"Helvetica", 30), 1);
    EXPECT_GT(view.GetBroker()->rowHeight, 30);
    EXPECT_GT(view.GetBroker()->headerHeight, 30);
    EXPECT_LT(view.GetRowOnPage(), 14);
    EXPECT_EQ(view.GetRowFont(), Font(L"Helvetica", 30));
}

TEST_F(RecordViewTest, RowHeadersCanBeSwitchedOff)
{
    VirtualRows data(100);
    show(data);
    view.ShowRowHeaders(false);
    EXPECT_EQ(view.GetBroker()->rowHeaderWidth, 0);
    EXPECT_EQ(view.GetColFromPoint(0, 50), 1);
    view.ShowRowHeaders(true);
    EXPECT_GT(view.GetBroker()->rowHeaderWidth, 0);
}
