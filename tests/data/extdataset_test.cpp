#include "data/extdataset.h"

#include <gtest/gtest.h>

namespace {

struct Field {
    const wchar_t* name;
    int kind;
    long size;
};
using Row = std::vector<const wchar_t*>; // null: NULL

class Source : public xDataSource {
public:
    Source(std::vector<Field> fields, std::vector<Row> rows)
        : m_fields(std::move(fields))
        , m_rows(std::move(rows))
    {
    }
    int FieldCount() const override { return static_cast<int>(m_fields.size()); }
    std::wstring FieldName(int field) const override { return at(field).name; }
    int GetFieldKind(int field) const override { return at(field).kind; }
    long FieldSize(int field) const override { return at(field).size; }
    void Rewind() override { m_at = 0; }
    bool Next() override { return ++m_at <= m_rows.size(); }
    std::optional<std::wstring> FieldText(int field) const override
    {
        const wchar_t* text = m_rows[m_at - 1][static_cast<size_t>(field) - 1];
        return text ? std::optional<std::wstring>(text) : std::nullopt;
    }
    std::vector<Row>& rows() { return m_rows; }

private:
    const Field& at(int field) const { return m_fields[static_cast<size_t>(field) - 1]; }

    std::vector<Field> m_fields;
    std::vector<Row> m_rows;
    size_t m_at = 0;
};

} // namespace

TEST(ExtDataSet, MapsTheTenFieldKindsToDataTypesAndAnyOtherToNone)
{
    const int expected[] = {0, 2, 8, 1, 1, 3, 9, 5, 4, 6, 7, 0};
    for (int kind = 0; kind < 12; ++kind)
        EXPECT_EQ(WExtDataSet::DataTypeOfKind(kind), expected[kind]) << kind;
    EXPECT_EQ(WExtDataSet::DataTypeOfKind(-1), 0);
}

TEST(ExtDataSet, MakesAColumnForEachFieldWithItsNameAsTitle)
{
    Source source({{L"id", 1, 0}, {L"text", 3, 20}, {L"when", 10, 0}, {L"odd", 77, 4}}, {});
    WExtDataSet data;
    data.InitByDataSource(&source);
    ASSERT_EQ(data.GetColCount(), 4);
    EXPECT_EQ(data.GetColInfo(2)->name, L"text");
    EXPECT_EQ(data.GetColInfo(2)->caption, L"text");
    EXPECT_EQ(data.GetColInfo(2)->size, 21);
    EXPECT_EQ(data.GetColInfo(3)->size, 8);
    EXPECT_EQ(data.GetColInfo(4)->dataType, 0);
    data.InitByDataSource(&source);
    EXPECT_EQ(data.GetColCount(), 4);
}

TEST(ExtDataSet, ReadsTheRowsOfItsSourceAnewEachTime)
{
    Source source(
        {{L"id", 1, 0}, {L"text", 3, 20}, {L"when", 10, 0}, {L"d", 7, 0}},
        {{L"1", L"one", L"2005-03-04 06:07:08.5", L"0.1"}, {L"2", L"", nullptr, L"-1e300"}});
    WExtDataSet data;
    data.InitByDataSource(&source);
    EXPECT_EQ(data.GetData(), 2);
    EXPECT_EQ(data.GetCellText(1, 2), L"2");
    EXPECT_EQ(data.GetCellText(3, 1), L"2005-03-04 06:07:08.5");
    EXPECT_EQ(data.GetCellText(4, 2), L"-1e+300");
    data.SetRow(2);
    EXPECT_FALSE(data.IsNull(2));
    EXPECT_TRUE(data.IsNull(3));
    source.rows().pop_back();
    EXPECT_EQ(data.GetData(), 1);
    EXPECT_EQ(data.GetRowCount(), 1);
}

TEST(ExtDataSet, MarksATextThatIsNoValueOfItsColumn)
{
    Source source({{L"id", 5, 0}, {L"text", 3, 3}}, {{L"40000", L"abcd"}, {L"x", L"abc"}});
    WExtDataSet data;
    data.InitByDataSource(&source);
    data.GetData();
    data.SetRow(1);
    EXPECT_EQ(data.CellState(1), OviAPI::StampNull | OviAPI::StampInvalid);
    EXPECT_EQ(data.CellReason(1), OviAPI::faultText(OviAPI::TextFault::OutOfRange));
    EXPECT_EQ(data.CellReason(2), OviAPI::faultText(OviAPI::TextFault::TooLong));
    data.SetRow(2);
    EXPECT_EQ(data.CellReason(1), OviAPI::faultText(OviAPI::TextFault::NotAnInteger));
    EXPECT_EQ(data.CellText(2), L"abc");
}

TEST(ExtDataSet, WithoutASourceHasNothing)
{
    WExtDataSet data;
    EXPECT_THROW(data.GetData(), OviAPI::aCDataFailure);
    data.InitByDataSource(nullptr);
    EXPECT_EQ(data.GetColCount(), 0);
}
