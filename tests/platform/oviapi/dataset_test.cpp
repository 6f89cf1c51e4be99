#include <gtest/gtest.h>

#include <cstring>

#include <oviapi/dataset.h>
#include <oviapi/memorydataset.h>
#include <oviapi/painter.h>

using namespace OviAPI;

namespace {

// Rows that come from a source into a row buffer: number, text, bytes. Row 13 cannot be fetched.
class BufferDataSet : public aCDataSet {
public:
    BufferDataSet()
    {
        m_rowCount = 1'000'000'000'000;
        AddColDef(new aCColumn(L"flag", 14, 1, L"Flag", 0, 0, 0)); // puts the rest out of alignment
        AddColDef(new aCColumn(L"id", 8, 8, L"Number", 0, 0, 0));
        AddColDef(new aCColumn(L"name", 1, 21, L"Name", 0, 0, 0));
        AddColDef(new aCColumn(L"raw", 12, 4, L"Bytes", 0, 0, 0));
        buffer.resize(GetRowLength());
    }
    short ToRow(short, long row, bool) override
    {
        ++fetches;
        if (row == 13) {
            m_errorKind = Locked;
            setRowError(row, 135, 0, L"locked by another");
            return quiet ? 1 : 0;
        }
        std::fill(buffer.begin(), buffer.end(), std::byte{0});
        const int64_t id = row * 2;
        const std::wstring name = L"row " + std::to_wstring(row);
        std::memcpy(buffer.data() + GetColOffset(2), &id, sizeof id);
        std::memcpy(buffer.data() + GetColOffset(3), name.data(), name.size() * sizeof(wchar_t));
        std::memset(buffer.data() + GetColOffset(4), 0xAB, 4);
        return 0;
    }
    const void* GetRowData() override { return buffer.data(); }
    bool IsColumnNull(int column) override { return column == nullColumn; }
    long ColumnDataLen(int) override { return bytesLength; }
    unsigned ColumnState(int column) override
    {
        if (column == invalidColumn)
            return StampInvalid;
        return column == cutColumn ? StampCut : 0U;
    }
    aCString ColumnReason(int) override { return L"longer than it says"; }
    bool ColumnText(int, aCString& text) override
    {
        text = otherText;
        return !otherText.empty();
    }

    std::vector<std::byte> buffer;
    int fetches = 0;
    int nullColumn = 0;
    int cutColumn = 0;
    int invalidColumn = 0;
    aCString otherText;
    long bytesLength = -1;
    bool quiet = true;
};

class CountingViewer : public aCDataSetViewer {
public:
    void onDataSetChanged() override { ++changes; }
    void onDataSetDestroyed() override { ++deaths; }
    void onRowFollowed(long row) override { followed = row; }
    int changes = 0;
    int deaths = 0;
    long followed = 0;
};

} // namespace

TEST(DataSet, ColumnsLieOneBehindTheOtherWithoutPadding)
{
    BufferDataSet data;
    EXPECT_EQ(data.GetColOffset(1), 0U);
    EXPECT_EQ(data.GetColOffset(2), 1U);
    EXPECT_EQ(data.GetColOffset(3), 9U);
    EXPECT_EQ(data.GetColOffset(4), 9U + 21 * sizeof(wchar_t));
    EXPECT_EQ(data.GetRowLength(), 9U + 21 * sizeof(wchar_t) + 4);
}

TEST(DataSet, ColumnsAreNumberedFromOne)
{
    BufferDataSet data;
    EXPECT_EQ(data.GetColInfo(0), nullptr);
    EXPECT_EQ(data.GetColInfo(1)->name, L"flag");
    EXPECT_EQ(data.GetColInfo(4)->name, L"raw");
    EXPECT_EQ(data.GetColInfo(5), nullptr);
    EXPECT_THROW(data.GetColOffset(5), aCDataFailure);
}

TEST(DataSet, AColumnThatDoesNotExistIsFailureTwo)
{
    BufferDataSet data;
    try {
        data.GetCellText(9, 1);
        FAIL();
    } catch (const aCDataFailure& failure) {
        EXPECT_EQ(failure.code(), 2);
    }
}

TEST(DataSet, AColumnCanBePutInFrontOfOthersAndTakenOut)
{
    BufferDataSet data;
    EXPECT_EQ(data.AddColDef(new aCColumn(L"first", 2, 4, L"", 0, 0, 0), 1), 1);
    EXPECT_EQ(data.GetColOffset(2), 4U);
    EXPECT_EQ(data.AddColDef(new aCColumn(L"last", 2, 4, L"", 0, 0, 0), 0), 6);
    data.DeleteColDef(1);
    EXPECT_EQ(data.GetColInfo(1)->name, L"flag");
    data.DeleteAllColDef();
    EXPECT_EQ(data.GetColCount(), 0);
    EXPECT_EQ(data.GetRowLength(), 0U);
}

TEST(DataSet, ValuesOfTheRowBufferAreReadWhereverTheyLie)
{
    BufferDataSet data;
    EXPECT_EQ(data.GetCellText(1, 5), L"false");
    EXPECT_EQ(data.GetCellText(2, 5), L"10");
    EXPECT_EQ(data.GetCellText(3, 5), L"row 5");
    EXPECT_EQ(data.GetCellText(4, 5), L"ABABABAB");
    EXPECT_EQ(data.fetches, 1);
}

TEST(DataSet, RowNumbersHave64Bits)
{
    BufferDataSet data;
    EXPECT_EQ(data.GetCellText(2, 1'000'000'000'000), L"2000000000000");
    EXPECT_EQ(data.GetCellNumber(2, 999'999'999'999), 1999999999998.0);
}

TEST(DataSet, ARowOutsideIsNotFetched)
{
    BufferDataSet data;
    EXPECT_EQ(data.SetRow(0), 1);
    EXPECT_EQ(data.SetRow(-1), 1);
    EXPECT_EQ(data.SetRow(1'000'000'000'001), 1);
    EXPECT_EQ(data.fetches, 0);
    EXPECT_EQ(data.GetCellText(2, 0), L"");
}

TEST(DataSet, ARowThatFailsHasItsErrorAndNoValues)
{
    for (const bool quiet : {true, false}) { // both ways a source may tell
        BufferDataSet data;
        data.quiet = quiet;
        EXPECT_EQ(data.SetRow(13), 1);
        EXPECT_EQ(data.GetRow(), 0);
        EXPECT_TRUE(data.IsNull(2));
        EXPECT_EQ(data.GetCellText(3, 13), L"");
        ASSERT_NE(data.getRowError(13), nullptr);
        EXPECT_EQ(data.getRowError(13)->text, L"locked by another");
        EXPECT_EQ(data.getRowError(13)->kind, aCErrorHolder::Locked);
        short state = 7;
        EXPECT_EQ(data.GetCellNumber(2, 13, &state), 0.0);
        EXPECT_EQ(state, 1);
    }
}

TEST(DataSet, TextIntoABufferIsCutToItAndEnded)
{
    BufferDataSet data;
    wchar_t text[4];
    std::wmemset(text, L'#', 4);
    EXPECT_EQ(data.GetCellText(3, 5, text, 4), 3U);
    EXPECT_STREQ(text, L"row");
    EXPECT_EQ(data.GetCellText(3, 5, text, 0), 0U);
}

TEST(DataSet, NullAndEmptyTextAreTwoThings)
{
    BufferDataSet data;
    data.nullColumn = 3;
    EXPECT_EQ(data.GetCellText(3, 1), L"");
    EXPECT_TRUE(data.IsNull(3));
    EXPECT_FALSE(data.IsNull(2));
}

TEST(DataSet, BytesShorterThanTheirColumnShowTheirOwnLength)
{
    BufferDataSet data;
    data.bytesLength = 2;
    EXPECT_EQ(data.GetCellText(4, 1), L"ABAB");
    data.bytesLength = 99; // more than there is room for
    EXPECT_EQ(data.GetCellText(4, 2), L"ABABABAB");
}

TEST(DataSet, ACutCellHasItsReasonAndCannotBeEdited)
{
    BufferDataSet data;
    data.cutColumn = 3;
    ASSERT_EQ(data.SetRow(1), 0);
    EXPECT_EQ(data.CellState(3), StampCut);
    EXPECT_EQ(data.CellReason(3), L"longer than it says");
    EXPECT_EQ(data.ReadOnlyReason(3), L"longer than it says");
    EXPECT_EQ(data.ReadOnlyReason(2), L"");
}

TEST(DataSet, TheRowCacheServesARowAgainWithoutTheSource)
{
    BufferDataSet data;
    data.SetRowCache(true);
    data.nullColumn = 2;
    data.cutColumn = 3;
    data.bytesLength = 1;
    data.GetCellText(2, 5);
    data.GetCellText(2, 6);
    data.nullColumn = data.cutColumn = 0;
    EXPECT_EQ(data.GetCellText(3, 5), L"row 5");
    EXPECT_EQ(data.fetches, 2);
    EXPECT_TRUE(data.IsNull(2));
    EXPECT_EQ(data.CellState(3), StampCut);
    EXPECT_EQ(data.CellReason(3), L"longer than it says");
    EXPECT_EQ(data.CellText(4), L"AB");
    data.ClearRowCache();
    EXPECT_FALSE(data.IsRowCached(5));
    EXPECT_FALSE(data.SetRow(5));
    EXPECT_FALSE(data.IsNull(2));
}

TEST(DataSet, AValueOfAnotherTypeShowsItsOwnTextAndIsNoNumber)
{
    for (const bool cached : {false, true}) {
        BufferDataSet data;
        data.SetRowCache(cached);
        data.invalidColumn = 2;
        data.otherText = L"twelve";
        EXPECT_EQ(data.GetCellText(2, 5), L"twelve");
        EXPECT_EQ(data.CellText(2, 3), L"twe");
        EXPECT_EQ(data.CellState(2), StampInvalid);
        short state = 0;
        EXPECT_EQ(data.GetCellNumber(2, 5, &state), 0.0);
        EXPECT_EQ(state, 1);
        EXPECT_EQ(data.ReadOnlyReason(2), L"longer than it says");
        EXPECT_EQ(data.CellText(3), L"row 5");
    }
}

TEST(DataSet, TheRowCacheIsBounded)
{
    BufferDataSet data;
    data.SetRowCache(true);
    for (long row = 20; row < 200'000; ++row)
        ASSERT_EQ(data.SetRow(row), 0);
    EXPECT_TRUE(data.IsRowCached(199'999));
    EXPECT_FALSE(data.IsRowCached(20));
}

TEST(DataSet, WithoutTheCacheOnlyTheCurrentRowIsHeld)
{
    BufferDataSet data;
    data.SetRow(5);
    data.SetRow(6);
    data.SetRow(5);
    EXPECT_EQ(data.fetches, 3);
    EXPECT_FALSE(data.IsRowCached(5));
}

TEST(DataSet, AfterARefreshTheCurrentRowIsFetchedAgain)
{
    BufferDataSet data;
    data.SetRow(5);
    data.RefreshViews();
    EXPECT_EQ(data.GetRow(), 5);
    data.SetRow(5);
    EXPECT_EQ(data.fetches, 2);
}

TEST(DataSet, StampsOfDefaultReadDefault)
{
    BufferDataSet data;
    for (const unsigned kind : {8U, 16U, 32U})
        EXPECT_EQ(data.GetStamp(kind), L"DEFAULT");
    EXPECT_EQ(data.GetStamp(StampNull), L"NULL");
    data.SetStamp(8, L"by the server");
    EXPECT_EQ(data.GetStamp(8), L"by the server");
    EXPECT_EQ(data.GetStamp(64), L"");
}

TEST(DataSet, DataStartsAsNullAndTakesTextAndGivesItBack)
{
    BufferDataSet data;
    size_t size = 0;
    auto cell = data.AllocData(3, &size, ValueForm);
    EXPECT_GT(size, 21 * sizeof(wchar_t));
    EXPECT_TRUE(data.IsDataNull(3, cell.get()));
    EXPECT_EQ(data.TextToData(3, L"O'Brien", cell.get()), TextFault::None);
    EXPECT_FALSE(data.IsDataNull(3, cell.get()));
    auto text = data.AllocData(3, &size, TextForm);
    EXPECT_EQ(size, 21U);
    auto* wide = reinterpret_cast<wchar_t*>(text.get());
    EXPECT_EQ(data.DataToText(3, cell.get(), wide, size), 7U);
    EXPECT_STREQ(wide, L"O'Brien");
}

TEST(DataSet, DataKnowsNullDefaultAndEmptyTextApart)
{
    BufferDataSet data;
    auto cell = data.AllocData(3, nullptr, ValueForm);
    EXPECT_EQ(data.TextToData(3, L"", cell.get()), TextFault::None);
    EXPECT_FALSE(data.IsDataNull(3, cell.get()));
    EXPECT_FALSE(data.IsDataEmpty(3, cell.get()));
    for (const unsigned stamp : {8U, 16U, 32U}) {
        data.SetDataStamp(3, cell.get(), stamp);
        EXPECT_TRUE(data.IsDataEmpty(3, cell.get()));
        EXPECT_FALSE(data.IsDataNull(3, cell.get()));
    }
    data.SetDataStamp(3, cell.get(), StampNull);
    EXPECT_TRUE(data.IsDataNull(3, cell.get()));
    EXPECT_FALSE(data.IsDataEmpty(3, cell.get()));
}

TEST(DataSet, ATextThatIsNoValueLeavesNullBehind)
{
    BufferDataSet data;
    auto cell = data.AllocData(2, nullptr, ValueForm);
    data.TextToData(2, L"12", cell.get());
    EXPECT_EQ(data.TextToData(2, L"twelve", cell.get()), TextFault::NotAnInteger);
    EXPECT_TRUE(data.IsDataNull(2, cell.get()));
    EXPECT_EQ(data.TextToData(3, std::wstring(21, L'x'), data.AllocData(3, nullptr, 0).get()),
              TextFault::TooLong);
}

TEST(DataSet, TheLengthOfBytesTravelsWithTheData)
{
    BufferDataSet data;
    auto cell = data.AllocData(4, nullptr, ValueForm);
    EXPECT_EQ(data.TextToData(4, L"0102", cell.get()), TextFault::None);
    EXPECT_EQ(data.DataToText(4, cell.get()), L"0102");
    auto row = data.AllocRowData();
    data.ColDataIntoRow(4, cell.get(), row.get());
    EXPECT_EQ(data.DataToText(4, data.ColDataOfRow(4, row.get()).get()), L"0102");
}

TEST(DataSet, ARowOfDataIsUntouchedAtFirst)
{
    BufferDataSet data;
    auto row = data.AllocRowData();
    for (int i = 1; i <= 4; ++i)
        EXPECT_TRUE(data.IsDataEmpty(i, data.ColDataOfRow(i, row.get()).get()));
}

TEST(DataSet, ACellStoredInALiveRowIsSeenInTheBufferAndInTheCache)
{
    for (const bool cached : {false, true}) {
        BufferDataSet data;
        data.SetRowCache(cached);
        data.SetRow(5);
        EXPECT_EQ(data.StoreText(3, 5, L"changed"), 0);
        EXPECT_EQ(data.GetCellText(3, 5), L"changed");
        EXPECT_EQ(data.fetches, 2) << "the source is put on the row even when it is cached";
    }
}

TEST(DataSet, StoringBadTextGivesASentence)
{
    BufferDataSet data;
    aCString reason;
    EXPECT_EQ(data.StoreText(2, 5, L"abc", &reason), 1);
    EXPECT_EQ(reason, faultText(TextFault::NotAnInteger));
    EXPECT_EQ(data.StoreText(2, 13, L"1", &reason), 1);
    EXPECT_EQ(reason, L"locked by another");
}

TEST(DataSet, TheNewRowStandsBehindTheLastOne)
{
    BufferDataSet data;
    EXPECT_EQ(data.GetVirtualRow(), 0);
    EXPECT_EQ(data.AddRow(nullptr, 0), 0);
    EXPECT_EQ(data.GetRowCount(), 1'000'000'000'001);
    EXPECT_EQ(data.GetVirtualRow(), 1'000'000'000'001);
    ASSERT_EQ(data.SetRow(data.GetVirtualRow()), 0);
    EXPECT_EQ(data.CellState(2), StampUntouched);
    EXPECT_EQ(data.CellText(2), L"");
    EXPECT_EQ(data.StoreText(2, data.GetVirtualRow(), L"77"), 0);
    EXPECT_EQ(data.GetCellText(2, data.GetVirtualRow()), L"77");
    EXPECT_EQ(data.fetches, 0) << "the new row never asks the source";
    EXPECT_EQ(data.AddRow(nullptr, 0), 1) << "one new row at a time";
    EXPECT_EQ(data.DeleteRow(data.GetVirtualRow()), 0);
    EXPECT_FALSE(data.HasVirtualRow());
    EXPECT_EQ(data.GetRow(), 0);
}

TEST(DataSet, RowDefinitionsMoveUpBehindADeletedRow)
{
    BufferDataSet data;
    data.AddRowDef(3).caption = L"three";
    data.AddRowDef(5).caption = L"five";
    data.AddRowDef(6).caption = L"six";
    data.DeleteRowDef(5);
    EXPECT_EQ(data.GetRowInfo(3)->caption, L"three");
    EXPECT_EQ(data.GetRowInfo(5)->caption, L"six");
    EXPECT_EQ(data.GetRowInfo(6), nullptr);
}

TEST(DataSet, MovingOnPurposeTakesTheViewsAlong)
{
    CountingViewer viewer; // outlives the dataset, or would have to be removed from it
    BufferDataSet data;
    data.AddViewer(&viewer);
    EXPECT_EQ(data.MoveToRow(FetchAbsolute, 7, true), 0);
    EXPECT_EQ(viewer.followed, 7);
    EXPECT_EQ(data.MoveToRow(FetchAbsolute, 8, false), 0);
    data.SetFollowsRow(false);
    EXPECT_EQ(data.MoveToRow(FetchAbsolute, 9, true), 0);
    EXPECT_EQ(viewer.followed, 7);
    EXPECT_EQ(data.GetRow(), 9);
}

TEST(DataSet, ViewersAreToldOfChangesAndOfTheEnd)
{
    CountingViewer viewer;
    {
        BufferDataSet data;
        data.AddViewer(&viewer);
        data.AddViewer(&viewer);
        data.RefreshViews();
        EXPECT_EQ(viewer.changes, 1);
        EXPECT_EQ(data.GetRecordView(), nullptr);
    }
    EXPECT_EQ(viewer.deaths, 1);
}

TEST(ErrorHolder, AnErrorOfARowIsReplacedAndTakenAway)
{
    aCErrorHolder errors;
    errors.SetErrorKind(aCErrorHolder::Refused);
    errors.setRowError(5, 1022, 0, L"first");
    errors.setRowError(5, 1022, 0, L"second");
    EXPECT_EQ(errors.getRowError(5)->text, L"second");
    EXPECT_EQ(errors.rowErrorCount(), 1U);
    errors.SetErrorKind(aCErrorHolder::NoError);
    errors.setRowError(5, 0, 0, nullptr);
    EXPECT_EQ(errors.getRowError(5), nullptr);
}

TEST(ErrorHolder, OnlyTheErrorsOfTheLastThousandRowsAreKept)
{
    aCErrorHolder errors;
    errors.SetErrorKind(aCErrorHolder::OtherError);
    for (long row = 1; row <= 5000; ++row)
        errors.setRowError(row, 1, 0, L"x");
    EXPECT_EQ(errors.rowErrorCount(), 1000U);
    EXPECT_EQ(errors.getRowError(4000), nullptr);
    EXPECT_NE(errors.getRowError(4001), nullptr);
}

TEST(ErrorHolder, ErrorsAreNotRaisedUnlessAskedFor)
{
    aCErrorHolder errors;
    EXPECT_FALSE(errors.RaisesErrors());
    errors.SetRaiseErrors(true);
    EXPECT_TRUE(errors.RaisesErrors());
}

TEST(Column, ItsSevenArgumentsAreKept)
{
    const aCColumn column(L"n", 2, 4, L"title", 80, 20, aCColumn::DropDown);
    EXPECT_EQ(column.name, L"n");
    EXPECT_EQ(column.dataType, 2);
    EXPECT_EQ(column.size, 4);
    EXPECT_EQ(column.caption, L"title");
    EXPECT_EQ(column.width, 80);
    EXPECT_EQ(column.minWidth, 20);
    EXPECT_EQ(column.displayKind, 2);
    EXPECT_FALSE(column.customHeader);
    EXPECT_EQ(column.headerAlign & TextCenter, TextCenter);
}

TEST(Column, SizesCountCharactersOfTextAndBytesOfTheRest)
{
    EXPECT_EQ(aCColumn(L"", 1, 81, L"", 0, 0, 0).rowBytes(), 324U);
    EXPECT_EQ(aCColumn(L"", 1, 81, L"", 0, 0, 0).displaySize(), 80U);
    EXPECT_EQ(aCColumn(L"", 6, 522, L"", 0, 0, 0).rowBytes(), 2088U);
    EXPECT_EQ(aCColumn(L"", 12, 10, L"", 0, 0, 0).rowBytes(), 10U);
    EXPECT_EQ(aCColumn(L"", 12, 10, L"", 0, 0, 0).displaySize(), 20U);
    EXPECT_EQ(aCColumn(L"", 8, 8, L"", 0, 0, 0).displaySize(), 20U);
    EXPECT_EQ(aCColumn(L"", 1, -5, L"", 0, 0, 0).rowBytes(), 0U);
}

TEST(Column, EveryDisplayTextFitsItsDisplaySize)
{
    aCColumn date(L"", 7, 8, L"", 0, 0, 0);
    EXPECT_LE(formatDateTime(INT64_MIN + 1, defaultDateFormat).size(), date.displaySize());
    date.format = sqlDateFormat;
    EXPECT_LE(formatDateTime(INT64_MIN + 1, sqlDateFormat).size(), date.displaySize());
}
