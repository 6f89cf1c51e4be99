#include <gtest/gtest.h>

#include <oviapi/memorydataset.h>

using namespace OviAPI;

namespace {

class MemoryDataSet : public testing::Test {
protected:
    MemoryDataSet()
    {
        data.AddColDef(new aCColumn(L"id", 2, 4, L"Number", 0, 0, 0));
        data.AddColDef(new aCColumn(L"name", 1, 11, L"Name", 0, 0, 0));
        data.AppendTexts({L"1", L"one"});
        data.AppendTexts({L"2", nullptr});
        data.AppendTexts({L"3", L""});
    }
    std::wstring column(int number)
    {
        std::wstring all;
        for (long row = 1; row <= data.GetRowCount(); ++row)
            all += data.GetCellText(number, row) + L",";
        return all;
    }
    std::unique_ptr<std::byte[]> rowOf(const wchar_t* id, const wchar_t* name)
    {
        auto row = data.AllocRowData();
        const wchar_t* texts[] = {id, name};
        for (int i = 1; i <= 2; ++i) {
            auto cell = data.AllocData(i, nullptr, ValueForm);
            data.TextToData(i, texts[i - 1], cell.get());
            data.ColDataIntoRow(i, cell.get(), row.get());
        }
        return row;
    }
    aCMemoryDataSet data;
};

} // namespace

TEST_F(MemoryDataSet, HoldsValuesNullsAndEmptyTexts)
{
    EXPECT_EQ(data.GetRowCount(), 3);
    EXPECT_EQ(data.GetCellText(2, 1), L"one");
    data.SetRow(2);
    EXPECT_TRUE(data.IsNull(2));
    data.SetRow(3);
    EXPECT_FALSE(data.IsNull(2));
}

TEST_F(MemoryDataSet, TextThatIsNoValueAddsNoRow)
{
    EXPECT_EQ(data.AppendTexts({L"x", L"four"}), TextFault::NotAnInteger);
    EXPECT_EQ(data.AppendTexts({L"4", L"longer than ten"}), TextFault::TooLong);
    EXPECT_EQ(data.GetRowCount(), 3);
    EXPECT_EQ(data.AppendTexts({L"4"}), TextFault::None) << "missing texts are NULL";
    EXPECT_THROW(data.AppendTexts({L"4", L"a", L"b"}), aCDataFailure);
}

TEST_F(MemoryDataSet, RowsAreInsertedBeforeAPositionOrAtTheEnd)
{
    EXPECT_EQ(data.AddRow(rowOf(L"9", L"nine").get(), 1), 0);
    EXPECT_EQ(data.AddRow(rowOf(L"8", L"eight").get(), 0), 0);
    EXPECT_EQ(column(1), L"9,1,2,3,8,");
}

TEST_F(MemoryDataSet, CellsAreChangedToValuesAndToNull)
{
    EXPECT_EQ(data.StoreText(2, 2, L"two"), 0);
    EXPECT_EQ(column(2), L"one,two,,");
    auto null = data.AllocData(2, nullptr, ValueForm);
    EXPECT_EQ(data.StoreCell(2, 1, null.get()), 0);
    data.SetRow(1);
    EXPECT_TRUE(data.IsNull(2));
}

TEST_F(MemoryDataSet, ACopyOfACellIsTheCell)
{
    data.SetRow(1);
    auto copy = data.CopyData(2);
    EXPECT_EQ(data.StoreCell(2, 3, copy.get()), 0);
    EXPECT_EQ(column(2), L"one,,one,");
}

TEST_F(MemoryDataSet, RowsAreDeletedAndMissingOnesLeftAlone)
{
    EXPECT_EQ(data.DeleteRow(2), 0);
    EXPECT_EQ(column(1), L"1,3,");
    EXPECT_EQ(data.DeleteRow(0), 0);
    EXPECT_EQ(data.DeleteRow(3), 0);
    EXPECT_EQ(column(1), L"1,3,");
    EXPECT_EQ(data.DeleteAllRow(), 0);
    EXPECT_EQ(data.GetRowCount(), 0);
}

TEST_F(MemoryDataSet, TheNewRowIsKeptApartUntilItIsPosted)
{
    EXPECT_EQ(data.AddRow(nullptr, 0), 0);
    EXPECT_EQ(data.GetRowCount(), 4);
    data.StoreText(1, 4, L"44");
    EXPECT_EQ(data.PostVirtualRow(), 0);
    EXPECT_FALSE(data.HasVirtualRow());
    EXPECT_EQ(column(1), L"1,2,3,44,");
    data.SetRow(4);
    EXPECT_TRUE(data.IsNull(2)) << "there is no server to know a default";
}

TEST_F(MemoryDataSet, ADeletedNewRowLeavesNothingBehind)
{
    data.AddRow(nullptr, 0);
    EXPECT_EQ(data.DeleteRow(4), 0);
    EXPECT_EQ(data.GetRowCount(), 3);
}

TEST_F(MemoryDataSet, ColumnsMayComeAndGoWhileThereAreRows)
{
    data.AddColDef(new aCColumn(L"new", 2, 4, L"", 0, 0, 0), 1);
    EXPECT_EQ(column(1), L",,,");
    EXPECT_EQ(column(2), L"1,2,3,");
    data.DeleteColDef(2);
    EXPECT_EQ(column(2), L"one,,,");
    data.DeleteAllColDef();
    EXPECT_EQ(data.GetRowCount(), 0);
}

TEST_F(MemoryDataSet, ItMovesInEveryDirection)
{
    EXPECT_EQ(data.MoveToRow(FetchLast, 0, false), 0);
    EXPECT_EQ(data.GetRow(), 3);
    EXPECT_EQ(data.MoveToRow(FetchFirst, 0, false), 0);
    EXPECT_EQ(data.GetRow(), 1);
    EXPECT_EQ(data.MoveToRow(FetchAbsolute, 2, false), 0);
    EXPECT_EQ(data.CellText(1), L"2");
    EXPECT_EQ(data.MoveToRow(FetchAbsolute, 4, false), 1);
}

TEST_F(MemoryDataSet, NextAndPreviousStartFromTheCurrentRow)
{
    data.SetRow(2);
    EXPECT_EQ(data.MoveToRow(FetchNext, 0, false), 0);
    EXPECT_EQ(data.GetRow(), 3);
    EXPECT_EQ(data.MoveToRow(FetchNext, 0, false), 1);
    data.SetRow(2);
    EXPECT_EQ(data.MoveToRow(FetchPrevious, 0, false), 0);
    EXPECT_EQ(data.GetRow(), 1);
}

TEST_F(MemoryDataSet, TheRowBufferOfAHeldRowIsMadeOnDemand)
{
    data.SetRow(1);
    const auto* row = static_cast<const std::byte*>(data.GetRowData());
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(valueToText(2, {row, 4}), L"1");
    EXPECT_EQ(valueToText(1, {row + data.GetColOffset(2), 44}), L"one");
}

TEST_F(MemoryDataSet, AMarkedCellKeepsItsValueAndReason)
{
    data.MarkCell(2, 1, StampCut, L"only the beginning");
    data.SetRow(1);
    EXPECT_EQ(data.CellText(2), L"one");
    EXPECT_EQ(data.CellState(2), StampCut);
    EXPECT_EQ(data.CellReason(2), L"only the beginning");
}

TEST_F(MemoryDataSet, ARowOfTwoThousandColumnsIsReadByColumn)
{
    aCMemoryDataSet wide;
    std::vector<std::wstring> numbers;
    std::vector<const wchar_t*> texts;
    for (int i = 0; i < 2000; ++i) {
        wide.AddColDef(new aCColumn(L"c", 2, 4, L"", 0, 0, 0));
        numbers.push_back(std::to_wstring(i * 3));
    }
    for (const std::wstring& number : numbers)
        texts.push_back(number.c_str());
    ASSERT_EQ(wide.AppendTexts(texts), TextFault::None);
    EXPECT_EQ(wide.GetCellText(1, 1), L"0");
    EXPECT_EQ(wide.GetCellText(2000, 1), L"5997");
}
