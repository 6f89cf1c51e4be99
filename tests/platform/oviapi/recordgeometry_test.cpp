#include <gtest/gtest.h>

#include <numeric>

#include <oviapi/celldisplay.h>
#include <oviapi/recordgeometry.h>

using namespace OviAPI;

TEST(ScrollMap, ShortRangesAreMappedOneToOne)
{
    const ScrollMap map(1000);
    EXPECT_EQ(map.sliderMax(), 1000);
    for (int i = 0; i <= 1000; ++i) {
        EXPECT_EQ(map.sliderFor(i), i);
        EXPECT_EQ(map.positionFor(i), i);
    }
    EXPECT_EQ(map.sliderPage(30), 30);
}

TEST(ScrollMap, BothEndsOfALongRangeAreReachedExactly)
{
    for (const int64_t last :
         {(int64_t{1} << 30) + 1, int64_t{1} << 31, int64_t{1'000'000'000'000}, INT64_MAX}) {
        const ScrollMap map(last);
        EXPECT_EQ(map.sliderFor(0), 0);
        EXPECT_EQ(map.positionFor(0), 0);
        EXPECT_EQ(map.sliderFor(last), map.sliderMax());
        EXPECT_EQ(map.positionFor(map.sliderMax()), last);
        EXPECT_LE(map.positionFor(map.sliderMax() / 2) - last / 2, 1);
        for (const int slider : {1, 2, 3, 12'345, 987'654'321, map.sliderMax() - 1})
            EXPECT_EQ(map.sliderFor(map.positionFor(slider)), slider);
        EXPECT_GE(map.sliderPage(30), 1);
    }
}

TEST(ScrollMap, PositionsOutsideAreTheNearestEnd)
{
    const ScrollMap map(10);
    EXPECT_EQ(map.clamped(-5), 0);
    EXPECT_EQ(map.clamped(99), 10);
    EXPECT_EQ(map.sliderFor(99), 10);
    EXPECT_EQ(map.positionFor(-1), 0);
    EXPECT_EQ(ScrollMap(-7).last(), 0);
}

TEST(ColumnLayout, ColumnsStandSideBySide)
{
    ColumnLayout layout;
    EXPECT_TRUE(layout.setWidths(std::vector{10, 20, 30}));
    EXPECT_FALSE(layout.setWidths(std::vector{10, 20, 30}));
    EXPECT_EQ(layout.count(), 3);
    EXPECT_EQ(layout.left(2), 30);
    EXPECT_EQ(layout.right(2), 60);
    EXPECT_EQ(layout.total(), 60);
    EXPECT_EQ(layout.columnAt(-1), -1);
    EXPECT_EQ(layout.columnAt(0), 0);
    EXPECT_EQ(layout.columnAt(9), 0);
    EXPECT_EQ(layout.columnAt(10), 1);
    EXPECT_EQ(layout.columnAt(59), 2);
    EXPECT_EQ(layout.columnAt(60), -1);
}

TEST(ColumnLayout, WithoutColumnsNothingIsFound)
{
    ColumnLayout layout;
    EXPECT_FALSE(layout.setWidths({}));
    EXPECT_EQ(layout.columnAt(0), -1);
    EXPECT_EQ(layout.firstFrom(0), 0);
    EXPECT_EQ(layout.edgeAt(0, 4), -1);
    EXPECT_EQ(layout.total(), 0);
}

TEST(ColumnLayout, TheNearestEdgeWithinTheToleranceIsFound)
{
    ColumnLayout layout;
    layout.setWidths(std::vector{10, 6, 30});
    EXPECT_EQ(layout.edgeAt(10, 4), 0);
    EXPECT_EQ(layout.edgeAt(12, 4), 0);
    EXPECT_EQ(layout.edgeAt(14, 4), 1);
    EXPECT_EQ(layout.edgeAt(20, 4), 1);
    EXPECT_EQ(layout.edgeAt(21, 4), -1);
    EXPECT_EQ(layout.edgeAt(50, 4), 2);
    EXPECT_EQ(layout.edgeAt(51, 4), -1);
    EXPECT_EQ(layout.edgeAt(3, 4), -1) << "the left edge of the first column cannot be dragged";
}

TEST(ColumnLayout, OfHiddenColumnsAtOnePlaceTheLastIsFound)
{
    ColumnLayout layout;
    layout.setWidths(std::vector{10, 0, 0, 30});
    EXPECT_EQ(layout.edgeAt(10, 4), 2);
    EXPECT_EQ(layout.columnAt(10), 3);
}

TEST(ColumnLayout, NegativeWidthsCountAsZero)
{
    ColumnLayout layout;
    layout.setWidths(std::vector{10, -5, 10});
    EXPECT_EQ(layout.total(), 20);
}

TEST(ColumnLayout, AgreesWithAPlainSearchOverManyWidths)
{
    std::vector<int> widths(500);
    std::iota(widths.begin(), widths.end(), 0);
    for (int& width : widths)
        width = width * 7919 % 13;
    ColumnLayout layout;
    layout.setWidths(widths);
    for (int64_t x = 0; x < layout.total(); ++x) {
        int plain = 0;
        while (layout.right(plain) <= x)
            ++plain;
        ASSERT_EQ(layout.columnAt(x), plain);
        ASSERT_EQ(layout.firstFrom(x), plain);
    }
}

TEST(RecordSelection, AMoveSelectsOneCell)
{
    RecordSelection selection;
    selection.moveTo(3, 7);
    EXPECT_TRUE(selection.contains(3, 7));
    EXPECT_FALSE(selection.contains(3, 8));
    EXPECT_FALSE(selection.isRange());
    EXPECT_TRUE(selection.range(5, 10).isSingle());
}

TEST(RecordSelection, AnExtensionKeepsItsStartAndMayTurnAround)
{
    RecordSelection selection;
    selection.moveTo(3, 7);
    selection.extendTo(5, 9);
    EXPECT_EQ(selection.range(9, 99), (RecordSelection::Range{3, 5, 7, 9}));
    selection.extendTo(1, 2);
    EXPECT_EQ(selection.range(9, 99), (RecordSelection::Range{1, 3, 2, 7}));
    EXPECT_EQ(selection.col(), 1);
    selection.collapse();
    EXPECT_FALSE(selection.isRange());
    EXPECT_EQ(selection.row(), 2);
}

TEST(RecordSelection, WholeRowsHoldEveryColumn)
{
    RecordSelection selection;
    selection.moveTo(3, 7);
    selection.extendTo(3, 9);
    selection.extendToRows();
    EXPECT_EQ(selection.range(2000, 99), (RecordSelection::Range{1, 2000, 7, 9}));
    EXPECT_TRUE(selection.contains(1999, 8));
    EXPECT_FALSE(selection.contains(1, 10));
    selection.moveTo(1, 1);
    EXPECT_FALSE(selection.wholeRows());
}

TEST(RecordSelection, EverythingMeansEveryRowThereIs)
{
    RecordSelection selection;
    selection.moveTo(2, 2);
    selection.selectAll();
    EXPECT_EQ(selection.range(3, 1'000'000'000'000),
              (RecordSelection::Range{1, 3, 1, 1'000'000'000'000}));
    EXPECT_TRUE(selection.contains(3, 999'999'999'999));
}

TEST(RecordSelection, ARangeStaysInsideATableThatShrank)
{
    RecordSelection selection;
    selection.moveTo(8, 80);
    selection.extendTo(9, 90);
    EXPECT_EQ(selection.range(3, 10), (RecordSelection::Range{3, 3, 10, 10}));
    EXPECT_TRUE(selection.range(0, 10).isEmpty());
    EXPECT_TRUE(selection.range(3, 0).isEmpty());
    EXPECT_TRUE(RecordSelection().range(3, 10).isEmpty());
}

TEST(CellDisplay, ControlCharactersAreVisibleSigns)
{
    EXPECT_EQ(shownLine(L"a\nb\tc\x01\x7F"), L"a\x21B5"
                                             L"b\x21E5"
                                             L"c\x2401\x2421");
    EXPECT_EQ(shownLine(L"\r\x2028"), L"\x240D\x21B5");
    EXPECT_EQ(shownLine(L"a\x202E"
                        L"b"),
              L"a\xFFFD"
              L"b")
        << "text cannot turn its direction";
    EXPECT_EQ(shownLine(L"plain \x00E9\x4E2D\x1F600"), L"plain \x00E9\x4E2D\x1F600");
}

TEST(CellDisplay, AtMost1024CharactersAreLaidOut)
{
    EXPECT_EQ(shownLine(std::wstring(5000, L'x')).size(), 1024U);
}
