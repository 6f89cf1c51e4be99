#include <gtest/gtest.h>

#include <oviapi/memorydataset.h>
#include <oviapi/recordcopy.h>

using namespace OviAPI;

namespace {

class RecordCopyTest : public testing::Test {
protected:
    RecordCopyTest()
    {
        data.AddColDef(new aCColumn(L"id", 2, 4, L"No.", 0, 0, 0));
        data.AddColDef(new aCColumn(L"name", 1, 101, L"The \"name\"", 0, 0, 0));
        data.AppendTexts({L"1", L"plain"});
        data.AppendTexts({L"2", L"tab\there"});
        data.AppendTexts({L"3", L"say \"hi\"\nthere"});
        data.AppendTexts({nullptr, L""});
        data.AppendTexts({L"5", nullptr});
    }
    aCMemoryDataSet data;
};

} // namespace

TEST_F(RecordCopyTest, CellsAreSeparatedByTabsAndRowsEndWithALineFeed)
{
    EXPECT_EQ(RecordCopy::make(data, {1, 2, 1, 1}, false).text, L"1\tplain\n");
}

TEST_F(RecordCopyTest, CellsWithSeparatorsStandInQuotes)
{
    EXPECT_EQ(RecordCopy::make(data, {1, 2, 2, 3}, false).text,
              L"2\t\"tab\there\"\n3\t\"say \"\"hi\"\"\nthere\"\n");
}

TEST_F(RecordCopyTest, NullIsNothingAndEmptyTextIsTwoQuotes)
{
    EXPECT_EQ(RecordCopy::make(data, {1, 2, 4, 5}, false).text, L"\t\"\"\n5\t\n");
}

TEST_F(RecordCopyTest, ASingleCellIsItsPlainText)
{
    EXPECT_EQ(RecordCopy::make(data, {2, 2, 3, 3}, false).text, L"say \"hi\"\nthere");
    EXPECT_EQ(RecordCopy::make(data, {2, 2, 4, 4}, false).text, L"");
}

TEST_F(RecordCopyTest, CaptionsComeFirstWhenAskedFor)
{
    const RecordCopy copy = RecordCopy::make(data, {1, 2, 1, 1}, true);
    EXPECT_EQ(copy.text, L"No.\t\"The \"\"name\"\"\"\n1\tplain\n");
    EXPECT_NE(copy.html.find(L"<tr><th>No.</th><th>The &quot;name&quot;</th></tr>"),
              std::wstring::npos);
}

TEST_F(RecordCopyTest, TheTableOfTheHtmlEscapesWhatItHolds)
{
    EXPECT_EQ(RecordCopy::escaped(L"<b>&\"\n\x01"), L"&lt;b&gt;&amp;&quot;<br>");
    const RecordCopy copy = RecordCopy::make(data, {1, 2, 3, 3}, false);
    EXPECT_NE(copy.html.find(L"<tr><td>3</td><td>say &quot;hi&quot;<br>there</td></tr>"),
              std::wstring::npos);
}

TEST_F(RecordCopyTest, AnEmptyRangeCopiesNothing)
{
    const RecordCopy copy = RecordCopy::make(data, {}, false);
    EXPECT_EQ(copy.rows, 0);
    EXPECT_TRUE(copy.text.empty());
}

TEST_F(RecordCopyTest, ARowThatCannotBeReadEndsTheCopyAndIsSaid)
{
    const RecordCopy copy = RecordCopy::make(data, {1, 2, 4, 99}, false);
    EXPECT_EQ(copy.rows, 2);
    EXPECT_TRUE(copy.cut);
}

TEST(RecordCopy, MoreThanAMillionCellsAreCut)
{
    class Endless : public aCDataSet {
    public:
        Endless()
        {
            m_rowCount = 1'000'000'000'000;
            AddColDef(new aCColumn(L"n", 14, 1, L"", 0, 0, 0));
            AddColDef(new aCColumn(L"m", 14, 1, L"", 0, 0, 0));
        }
        short ToRow(short, long, bool) override { return 0; }
        const void* GetRowData() override { return bytes; }
        char bytes[2] = {};
    } data;
    const RecordCopy copy = RecordCopy::make(data, {1, 2, 1, 1'000'000'000'000}, false);
    EXPECT_EQ(copy.rows, 500'000);
    EXPECT_TRUE(copy.cut);
}
