#include "data/dordataset.h"

#include <type_traits>

#include "data/orderbycolumn.h"
#include "data/xccolumn.h"
#include "database.h"

namespace {

class Probe : public xCDorvexDataSet {
public:
    using xCDorvexDataSet::columnDesc;
    using xCDorvexDataSet::m_cursorMode;
    using xCDorvexDataSet::m_query;
    using xCDorvexDataSet::m_rowBufferSize;
};

class DataSetOpening : public Database {
protected:
    DataSetOpening()
    {
        run({"create table t(a integer primary key, b varchar(10), c double)",
             "insert into t values(1, 'one', 1.5), (2, 'two', 2.5), (3, 'three', 3.5)"});
    }

    // A cursor that has executed the text.
    std::unique_ptr<DorCPP::DorCursor> executed(const char* sql) const
    {
        auto cursor = std::make_unique<DorCPP::DorCursor>();
        cursor->create(connection, 0, nullptr, false);
        cursor->execute(sql);
        return cursor;
    }
};

// Tells when it is destroyed.
class Watched : public DorCPP::DorCursor {
public:
    explicit Watched(bool& alive)
        : m_alive(alive)
    {
        m_alive = true;
    }
    ~Watched() override { m_alive = false; }

private:
    bool& m_alive;
};

} // namespace

TEST(DataSet, ShowsDefaultForEveryValueLeftToTheServer)
{
    const xCDorvexDataSet data;
    EXPECT_EQ(data.GetStamp(8), L"DEFAULT");
    EXPECT_EQ(data.GetStamp(16), L"DEFAULT");
    EXPECT_EQ(data.GetStamp(32), L"DEFAULT");
}

TEST(DataSet, WithoutACursorHasNoRowsAndNoRowBuffer)
{
    xCDorvexDataSet data;
    EXPECT_EQ(data.GetRowCount(), 0);
    EXPECT_EQ(data.GetRowData(), nullptr);
    EXPECT_EQ(data.GetDBCursor(), nullptr);
    EXPECT_EQ(data.ToRow(OviAPI::FetchFirst, 0, false), 0);
    EXPECT_FALSE(data.DestroyDBCursor());
    EXPECT_TRUE(data.IsColumnNull(1));
    EXPECT_EQ(data.GetFisicalBlobSize(1), 0);
}

TEST(DataSet, WithoutACursorMakesNoColumns)
{
    xCDorvexDataSet data;
    try {
        data.AutoCreateColumns();
        FAIL() << "nothing was thrown";
    } catch (const OviAPI::aCDataFailure& failure) {
        EXPECT_EQ(failure.code(), 9);
    }
}

TEST(DataSet, ConvertsTheFiveDirectionsUnchanged)
{
    for (short direction = 1; direction <= 5; ++direction)
        EXPECT_EQ(xCDorvexDataSet::ConvertDirection(direction), direction);
    EXPECT_EQ(xCDorvexDataSet::ConvertDirection(6), 0);
    EXPECT_EQ(xCDorvexDataSet::ConvertDirection(-1), 0);
}

TEST(DataSet, SizesAColumnInTheRowBufferByItsType)
{
    for (const long length : {0L, 1L, 20L, 65535L}) {
        for (const uint8_t type : std::initializer_list<uint8_t>{1, 11})
            EXPECT_EQ(xCDorvexDataSet::GetDataLenFromType(type, length), length * 4 + 4);
        for (const uint8_t type : std::initializer_list<uint8_t>{16, 17})
            EXPECT_EQ(xCDorvexDataSet::GetDataLenFromType(type, length), length / 2 * 4 + 4);
        EXPECT_EQ(xCDorvexDataSet::GetDataLenFromType(18, length), 2088);
        for (const uint8_t type :
             std::initializer_list<uint8_t>{0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 13, 14, 15, 19, 255})
            EXPECT_EQ(xCDorvexDataSet::GetDataLenFromType(type, length), length) << int{type};
    }
}

TEST_F(DataSetOpening, OpenShowsTheRowsOfAQuery)
{
    Probe data;
    data.Open(channel, L"select * from t order by a", 1024, true);
    EXPECT_EQ(data.GetErrorKind(), 0);
    EXPECT_EQ(data.GetRowCount(), 3);
    EXPECT_EQ(data.GetColCount(), 3);
    EXPECT_EQ(cell(data, 1, 3), L"3");
    EXPECT_EQ(cell(data, 2, 2), L"two");
    EXPECT_EQ(cell(data, 3, 1), L"1.5");
    EXPECT_EQ(data.m_query, "select * from t order by a");
    EXPECT_EQ(data.m_cursorMode, 1024);
    EXPECT_TRUE(data.WritesBack());
}

TEST_F(DataSetOpening, OpenWithoutAutoColumnsMakesNone)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, false);
    EXPECT_EQ(data.GetColCount(), 0);
    EXPECT_EQ(data.GetRowCount(), 3);
    data.AutoCreateColumns();
    EXPECT_EQ(data.GetColCount(), 3);
    data.AutoCreateColumns();
    EXPECT_EQ(data.GetColCount(), 3);
}

TEST_F(DataSetOpening, OpenAgainShowsTheNewQueryOnly)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    cell(data, 1, 1);
    data.Open(channel, L"select b from t where a = 2", 0, true);
    EXPECT_EQ(data.GetColCount(), 1);
    EXPECT_EQ(data.GetRowCount(), 1);
    EXPECT_EQ(cell(data, 1, 1), L"two");
}

TEST_F(DataSetOpening, AStatementWithoutAnAnswerGivesADataSetWithoutColumnsAndRows)
{
    xCDorvexDataSet data;
    data.Open(channel, L"delete from t where a = 3", 0, true);
    EXPECT_EQ(data.GetErrorKind(), 0);
    EXPECT_EQ(data.GetColCount(), 0);
    EXPECT_EQ(data.GetRowCount(), 0);
    EXPECT_EQ(data.ToRow(OviAPI::FetchFirst, 0, false), 0);
    data.Open(channel, nullptr, 0, true);
    EXPECT_EQ(data.GetColCount(), 0);
}

TEST_F(DataSetOpening, ConvertsTheQueryToTheClientsText)
{
    Probe data;
    data.Open(channel, L"select '\u00E9\u4E2D\U0001F600' as x", 0, true);
    EXPECT_EQ(data.m_query, "select '\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80' as x");
    EXPECT_EQ(cell(data, 1, 1), L"\u00E9\u4E2D\U0001F600");
}

TEST_F(DataSetOpening, OpenUsingCursorLeavesTheCursorToItsOwner)
{
    bool alive = false;
    Watched cursor(alive);
    cursor.create(connection, 0, nullptr, false);
    cursor.execute("select * from t order by a");
    {
        xCDorvexDataSet data;
        data.OpenUsingCursor(channel, L"select * from t order by a", &cursor, true);
        EXPECT_EQ(data.GetDBCursor(), &cursor);
        EXPECT_TRUE(data.WritesBack());
        EXPECT_EQ(data.GetRowCount(), 3);
        EXPECT_EQ(cell(data, 2, 3), L"three");
        EXPECT_TRUE(data.DestroyDBCursor());
        EXPECT_TRUE(alive);
        EXPECT_EQ(data.GetRowCount(), 0);
        data.OpenUsingCursor(channel, L"select * from t order by a", &cursor, true);
    }
    EXPECT_TRUE(alive);
    EXPECT_EQ(cursor.selectRowCount(), 3);
}

TEST_F(DataSetOpening, OpenUsingStatementExecutesTheStatementWithItsBindsOnReset)
{
    DorCPP::DorStatement statement;
    statement.create(connection, "select b from t where a > ? order by a", false);
    DorCPP::BindMap binds;
    binds.bind(1, {DorCPP::TypeChar, "1", 1, 0});
    auto cursor = std::make_unique<DorCPP::DorCursor>();
    cursor->create(connection, 0, nullptr, false);
    cursor->execute(statement, &binds);
    {
        xCDorvexDataSet data;
        data.OpenUsingStatement(channel, cursor.get(), &statement, &binds, true);
        EXPECT_EQ(data.GetRowCount(), 2);
        EXPECT_EQ(cell(data, 1, 1), L"two");
        binds.bind(1, {DorCPP::TypeChar, "2", 1, 0});
        data.ResetDataSet(false);
        EXPECT_EQ(data.GetRowCount(), 1);
        EXPECT_EQ(cell(data, 1, 1), L"three");
    }
    EXPECT_EQ(cursor->selectRowCount(), 1);
}

TEST_F(DataSetOpening, OpenByCursorSharesACursorForReadingOnly)
{
    const auto cursor = executed("select * from t order by a");
    for (const bool keep : {true, false}) {
        xCDorvexDataSet data;
        data.OpenByCursor(channel, cursor->handle(), keep);
        EXPECT_EQ(data.IsOpenByCursor(), keep);
        EXPECT_FALSE(data.WritesBack());
        EXPECT_EQ(data.GetColCount(), 3);
        EXPECT_EQ(cell(data, 2, 2), L"two");
        data.ResetDataSet(false); // its statement is not known: the answer stays
        EXPECT_EQ(cell(data, 2, 3), L"three");
    }
    EXPECT_EQ(cursor->selectRowCount(), 3);
}

TEST_F(DataSetOpening, OpenByCursorPassesAnUnknownHandleOn)
{
    xCDorvexDataSet data;
    EXPECT_THROW(data.OpenByCursor(channel, 123456, true), DorCPP::DorX);
    EXPECT_FALSE(data.WritesBack());
}

TEST_F(DataSetOpening, SetDBCursorDestroysTheCursorItOwned)
{
    bool first = false;
    bool second = false;
    auto* a = new Watched(first); // the dataset owns both
    auto* b = new Watched(second);
    a->create(connection, 0, nullptr, false);
    b->create(connection, 0, nullptr, false);
    a->execute("select 1");
    b->execute("select 2, 3");
    xCDorvexDataSet data;
    data.OpenUsingCursor(channel, L"select 1", a, true);
    data.SetDBCursor(a, true);
    EXPECT_TRUE(first);
    data.SetDBCursor(b, true);
    EXPECT_FALSE(first);
    EXPECT_TRUE(second);
    data.AutoCreateColumns();
    EXPECT_EQ(cell(data, 2, 1), L"3");
    EXPECT_TRUE(data.DestroyDBCursor());
    EXPECT_FALSE(second);
    EXPECT_EQ(data.GetDBCursor(), nullptr);
    EXPECT_FALSE(data.DestroyDBCursor());
}

TEST_F(DataSetOpening, SetDBCursorThatFailsLeavesNoCursor)
{
    bool alive = false;
    auto* cursor = new Watched(alive); // never created: it cannot be described
    Probe data;
    data.Open(channel, L"select 1", 0, true);
    EXPECT_THROW(data.SetDBCursor(cursor, true), DorCPP::DorX);
    EXPECT_FALSE(alive);
    EXPECT_EQ(data.GetDBCursor(), nullptr);
    EXPECT_EQ(data.GetRowCount(), 0);
}

TEST_F(DataSetOpening, ReOpenWithTheNewTextReplacesTheCursor)
{
    Probe data;
    data.Open(channel, L"select * from t", 0, true);
    EXPECT_EQ(cell(data, 1, 1), L"1");
    EXPECT_EQ(data.ReOpen(L"select * from t order by 1 desc"), 0);
    EXPECT_EQ(cell(data, 1, 1), L"3");
    EXPECT_EQ(data.m_query, "select * from t order by 1 desc");
}

TEST_F(DataSetOpening, ReOpenWithoutATextExecutesTheStoredOne)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t where a < 3", 0, true);
    run("insert into t values(0, 'zero', 0.5)");
    EXPECT_EQ(data.ReOpen(nullptr), 0);
    EXPECT_EQ(data.GetRowCount(), 3);
    EXPECT_EQ(data.ReOpen(L""), 0);
    EXPECT_EQ(data.GetRowCount(), 0);
}

TEST_F(DataSetOpening, ReOpenForgetsCachedRows)
{
    xCDorvexDataSet data;
    data.SetRowCache(true);
    data.Open(channel, L"select b from t order by a", 0, true);
    EXPECT_EQ(cell(data, 1, 1), L"one");
    EXPECT_TRUE(data.IsRowCached(1));
    EXPECT_EQ(data.ReOpen(L"select b from t order by a desc"), 0);
    EXPECT_FALSE(data.IsRowCached(1));
    EXPECT_EQ(cell(data, 1, 1), L"three");
}

TEST_F(DataSetOpening, ReOpenWithFewerOrMoreColumnsThanTheDataSetReadsNoForeignMemory)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select a, b, c, b, b from t order by a", 0, true);
    EXPECT_EQ(data.ReOpen(L"select a from t order by a"), 0);
    EXPECT_EQ(cell(data, 1, 2), L"2");
    EXPECT_EQ(cell(data, 5, 2), L"");
    EXPECT_EQ(data.ReOpen(L"select a, b, c, b, b, b, b from t order by a"), 0);
    EXPECT_EQ(cell(data, 5, 2), L"two");
}

TEST_F(DataSetOpening, ResetDataSetExecutesTheQueryAgain)
{
    xCDorvexDataSet data;
    data.SetRowCache(true);
    data.Open(channel, L"select * from t", 0, true);
    EXPECT_EQ(cell(data, 2, 1), L"one");
    run({"insert into t values(4, 'four', 4.5)", "update t set b = 'uno' where a = 1"});
    EXPECT_EQ(data.GetRowCount(), 3);
    data.ResetDataSet(false);
    EXPECT_EQ(data.GetRowCount(), 4);
    EXPECT_EQ(cell(data, 2, 1), L"uno");
    EXPECT_EQ(cell(data, 2, 4), L"four");
}

TEST_F(DataSetOpening, ResetDataSetTellsTheViewsWhenAskedTo)
{
    struct Viewer : OviAPI::aCDataSetViewer {
        void onDataSetChanged() override { ++changes; }
        void onDataSetDestroyed() override {}
        int changes = 0;
    };
    Viewer viewer;
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.AddViewer(&viewer);
    data.ResetDataSet(false);
    EXPECT_EQ(viewer.changes, 0);
    data.ResetDataSet(true);
    EXPECT_EQ(viewer.changes, 1);
    data.RemoveViewer(&viewer);
}

TEST_F(DataSetOpening, CountsTheNewRow)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.aCDataSet::AddRow(nullptr, 0);
    EXPECT_EQ(data.GetRowCount(), 4);
    EXPECT_EQ(data.GetVirtualRow(), 4);
    data.DeleteVirtualRow();
    EXPECT_EQ(data.GetRowCount(), 3);
}

TEST_F(DataSetOpening, MakesTheInsertCursorOnFirstUseAndKeepsIt)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    DorCPP::DorCursor* cursor = data.GetDBInsCursor();
    ASSERT_NE(cursor, nullptr);
    EXPECT_NE(cursor, data.GetDBCursor());
    EXPECT_EQ(data.GetDBInsCursor(), cursor);
    cursor->execute("insert into t values(4, 'four', 4.5)");
    data.ResetDataSet(false);
    EXPECT_EQ(data.GetRowCount(), 4);
}

TEST_F(DataSetOpening, GivesADescriptorForNumbersFromZeroToTheCount)
{
    Probe data;
    data.Open(channel, L"select * from t", 0, true);
    EXPECT_STREQ(data.columnDesc(3).column, "c");
    // Kept: number 0 is allowed although columns are counted from 1; its descriptor is empty.
    EXPECT_STREQ(data.columnDesc(0).column, "");
    for (const int column : {-1, 4, 1000}) {
        try {
            data.columnDesc(column);
            FAIL() << column;
        } catch (const OviAPI::aCDataFailure& failure) {
            EXPECT_EQ(failure.code(), 2);
        }
    }
}

TEST_F(DataSetOpening, MakesColumnsOfTheAnswersNamesTypesAndSizes)
{
    run("create table types(c char(5), s smallint, i integer, g bigint, r real, y binary(7), "
        "l blob, d double, t timestamp, n decimal(10, 2), v varchar(20), b boolean)");
    Probe data;
    data.Open(channel, L"select * from types", 0, true);
    const int types = data.GetColCount();
    ASSERT_EQ(types, 12);
    for (int i = 1; i <= types; ++i) {
        const t_ParamDesc& desc = data.columnDesc(i);
        const OviAPI::aCColumn& column = *data.GetColInfo(i);
        EXPECT_EQ(column.name, std::wstring(desc.column, desc.column + desc.columnLength));
        EXPECT_EQ(column.caption, column.name);
        EXPECT_EQ(column.dbmsType, desc.type);
        EXPECT_EQ(column.dataType, OviAPI::DorToApsType(desc.type));
        EXPECT_EQ(column.format, L"");
        EXPECT_EQ(column.blobType, 0);
        EXPECT_EQ(column.rowBytes(),
                  static_cast<size_t>(xCDorvexDataSet::GetDataLenFromType(desc.type, desc.length)))
            << i;
    }
    const OviAPI::aCColumn& text = *data.GetColInfo(11);
    EXPECT_EQ(text.name, L"v");
    EXPECT_EQ(text.size, 20 * 4 + 1); // a byte for each of four in a character, and the end
    EXPECT_EQ(data.GetColInfo(2)->size, 2);
    EXPECT_EQ(data.GetColInfo(4)->size, 8);
    EXPECT_EQ(static_cast<int64_t>(data.GetRowLength()),
              data.GetRowBufferLength(data.GetDBCursor()));
}

TEST_F(DataSetOpening, MakesTheKindOfColumnsThatIsAskedFor)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    EXPECT_EQ(dynamic_cast<xCColumn*>(data.GetColInfo(1)), nullptr);
    EXPECT_EQ(dynamic_cast<xCOrderByColumn*>(data.GetColInfo(1)), nullptr);
    data.SetCreatesOrderByColumns(true);
    data.AutoCreateColumns();
    EXPECT_NE(dynamic_cast<xCOrderByColumn*>(data.GetColInfo(1)), nullptr);
    data.SetCreatesExtendedColumns(true);
    data.AutoCreateColumns();
    EXPECT_NE(dynamic_cast<xCColumn*>(data.GetColInfo(1)), nullptr);
    EXPECT_EQ(dynamic_cast<xCOrderByColumn*>(data.GetColInfo(1)), nullptr);
}

TEST_F(DataSetOpening, ColorsOfColumnsContinueAcrossDataSets)
{
    const unsigned start = xCColumn::m_defaultColor;
    xCDorvexDataSet first;
    xCDorvexDataSet second;
    first.SetCreatesExtendedColumns(true);
    second.SetCreatesExtendedColumns(true);
    first.Open(channel, L"select * from t", 0, true);
    second.Open(channel, L"select * from t", 0, true);
    const auto* column = dynamic_cast<xCColumn*>(second.GetColInfo(1));
    ASSERT_NE(column, nullptr);
    EXPECT_EQ(column->color, xCColumn::defColors[(start + 3) % 9]);
}

TEST_F(DataSetOpening, SaysWhyACellCannotBeEdited)
{
    run("create table l(a integer, b blob)");
    xCDorvexDataSet data;
    data.Open(channel, L"select * from l", 0, true);
    EXPECT_TRUE(data.IsUpdatable(1));
    EXPECT_FALSE(data.IsUpdatable(2));
    EXPECT_EQ(data.ReadOnlyReason(1), L"");
    EXPECT_NE(data.ReadOnlyReason(2), L"");
    EXPECT_THROW(data.ReadOnlyReason(3), OviAPI::aCDataFailure);
}

TEST_F(DataSetOpening, HasNoNameTrailingBlanks)
{
    xCDorvexDataSet data;
    data.Open(channel, L"select a as \"x  \" , a + 1 as \"  y  \" from t", 0, true);
    EXPECT_EQ(data.GetColInfo(2)->name, L"  y");
}
