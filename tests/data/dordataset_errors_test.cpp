#include "data/dordataset.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "database.h"

using DorCPP::DorX;
using OviAPI::aCErrorHolder;

namespace {

DorX errorOf(int code, int systemCode = 0, const char* text = "trouble")
{
    DorX x(-1, code, text);
    x.setSystemCode(systemCode);
    return x;
}

int kindOf(int operation, int code, int systemCode = 0)
{
    xCDorvexDataSet data;
    data.ErrorHandler(operation, errorOf(code, systemCode), 1);
    const aCErrorHolder::RowError* error = data.getRowError(1);
    EXPECT_EQ(error ? error->kind : 0, data.GetErrorKind());
    return data.GetErrorKind();
}

constexpr int fetching = xCDorvexDataSet::Fetching;
constexpr int modifying = xCDorvexDataSet::Modifying;

} // namespace

TEST(CriticalError, IsOneOfTheseCodesExactlyWhenTheSystemCodeIsZero)
{
    const long ranges[][2] = {
        {10, 12},     {16, 17},     {19, 20},     {73, 78},     {80, 82},     {98, 98},
        {101, 105},   {107, 117},   {121, 121},   {130, 134},   {136, 137},   {140, 142},
        {300, 304},   {400, 402},   {501, 513},   {600, 607},   {700, 708},   {1000, 1016},
        {1043, 1046}, {1061, 1064}, {1069, 1069}, {2202, 2202}, {4000, 4447}, {4500, 4500},
        {6712, 6714}, {7030, 7033}, {8888, 8888},
    };
    long code = -100;
    for (const auto& range : ranges) {
        for (; code < range[0]; ++code)
            EXPECT_FALSE(xCDorvexDataSet::IsCriticalError(code, 0)) << code;
        for (; code <= range[1]; ++code)
            EXPECT_TRUE(xCDorvexDataSet::IsCriticalError(code, 0)) << code;
    }
    for (; code < 10000; ++code)
        EXPECT_FALSE(xCDorvexDataSet::IsCriticalError(code, 0)) << code;
}

TEST(CriticalError, IsEveryCodeOutside2000To3000WithASystemCode)
{
    for (const long systemCode : {1L, -1L, 28L}) {
        for (const long code : {-5L, 0L, 1L, 2L, 129L, 135L, 1022L, 1999L, 3001L, 9999L})
            EXPECT_TRUE(xCDorvexDataSet::IsCriticalError(code, systemCode)) << code;
        for (const long code : {2000L, 2001L, 2162L, 2201L, 2203L, 3000L})
            EXPECT_FALSE(xCDorvexDataSet::IsCriticalError(code, systemCode)) << code;
        EXPECT_TRUE(xCDorvexDataSet::IsCriticalError(2202, systemCode));
    }
}

TEST(ErrorHandler, GivesEachCodeItsKind)
{
    for (const int operation : {fetching, modifying}) {
        EXPECT_EQ(kindOf(operation, 0), aCErrorHolder::NoError);
        EXPECT_EQ(kindOf(operation, 1), aCErrorHolder::NoSuchRow);
        EXPECT_EQ(kindOf(operation, 2), aCErrorHolder::NoSuchRow);
        EXPECT_EQ(kindOf(operation, 129), aCErrorHolder::Locked);
        EXPECT_EQ(kindOf(operation, 135), aCErrorHolder::Locked);
        EXPECT_EQ(kindOf(operation, 2162), aCErrorHolder::Refused);
        EXPECT_EQ(kindOf(operation, 3), aCErrorHolder::OtherError);
        EXPECT_EQ(kindOf(operation, 128), aCErrorHolder::OtherError);
        EXPECT_EQ(kindOf(operation, 2001), aCErrorHolder::OtherError);
        EXPECT_EQ(kindOf(operation, -1), aCErrorHolder::OtherError);
        EXPECT_EQ(kindOf(operation, 1001), aCErrorHolder::Critical);
        EXPECT_EQ(kindOf(operation, 10), aCErrorHolder::Critical);
    }
}

TEST(ErrorHandler, CallsARefusalRefusedOnlyWhenSomethingWasModified)
{
    EXPECT_EQ(kindOf(modifying, 1022), aCErrorHolder::Refused);
    EXPECT_EQ(kindOf(fetching, 1022), aCErrorHolder::OtherError);
}

TEST(ErrorHandler, ASystemCodeMakesAnErrorCritical)
{
    EXPECT_EQ(kindOf(fetching, 2, 28), aCErrorHolder::Critical);
    EXPECT_EQ(kindOf(fetching, 0, 28), aCErrorHolder::Critical);
    EXPECT_EQ(kindOf(modifying, 1022, 19), aCErrorHolder::Critical);
    EXPECT_EQ(kindOf(modifying, 2162, 5), aCErrorHolder::Refused);
}

TEST(ErrorHandler, RecordsTheRowsErrorAndTheLastText)
{
    xCDorvexDataSet data;
    EXPECT_TRUE(data.ErrorHandler(fetching, errorOf(135, 0, "locked"), 7));
    const aCErrorHolder::RowError* error = data.getRowError(7);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, aCErrorHolder::Locked);
    EXPECT_EQ(error->code, 135);
    EXPECT_EQ(error->systemCode, 0);
    EXPECT_EQ(error->text, L"locked");
    OviAPI::aCString last;
    data.GetLastErrorText(last);
    EXPECT_EQ(last, L"locked");
}

TEST(ErrorHandler, HasNoTextForNoError)
{
    xCDorvexDataSet data;
    data.ErrorHandler(fetching, errorOf(135), 7);
    data.ErrorHandler(fetching, errorOf(0, 0, "nothing at all"), 7);
    EXPECT_EQ(data.getRowError(7), nullptr);
    OviAPI::aCString last = L"x";
    data.GetLastErrorText(last);
    EXPECT_EQ(last, L"");
}

TEST(ErrorHandler, KeepsTheTextsOfNestedErrors)
{
    DorX x = errorOf(2001, 0, "outer");
    x.addNested(errorOf(2002, 0, "inner"));
    xCDorvexDataSet data;
    data.ErrorHandler(fetching, x, 1);
    OviAPI::aCString last;
    data.GetLastErrorText(last);
    EXPECT_NE(last.find(L"outer"), std::wstring::npos);
    EXPECT_NE(last.find(L"inner"), std::wstring::npos);
}

TEST(ErrorHandler, CutsAVeryLongMessage)
{
    const std::string text(100'000, 'x');
    xCDorvexDataSet data;
    data.ErrorHandler(fetching, errorOf(2001, 0, text.c_str()), 1);
    OviAPI::aCString last;
    data.GetLastErrorText(last);
    EXPECT_EQ(last.size(), 65535U);
}

TEST(ErrorHandler, AnswersWhetherToGoOnQuietly)
{
    xCDorvexDataSet data;
    EXPECT_TRUE(data.ErrorHandler(fetching, errorOf(1), 1));
    data.SetRaiseErrors(true);
    EXPECT_FALSE(data.ErrorHandler(fetching, errorOf(1), 1));
}

TEST(ErrorHandler, StaysSmallWhenEveryRowFails)
{
    xCDorvexDataSet data;
    for (int row = 0; row < 5000; ++row)
        data.ErrorHandler(fetching, errorOf(2), row);
    EXPECT_LE(data.rowErrorCount(), 1000U);
}

using DataSetErrors = Database;

TEST_F(DataSetErrors, OpenRecordsABadStatementAndLeavesTheDataSetUsable)
{
    run({"create table t(a integer)", "insert into t values(5)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * frm t", 0, true);
    ASSERT_NE(data.getRowError(0), nullptr);
    EXPECT_EQ(data.getRowError(0)->kind, aCErrorHolder::OtherError);
    EXPECT_EQ(data.GetRowCount(), 0);
    EXPECT_EQ(data.GetColCount(), 0);
    EXPECT_EQ(data.GetDBCursor(), nullptr);

    data.Open(channel, L"select * from t", 0, true);
    EXPECT_EQ(data.getRowError(0), nullptr);
    EXPECT_EQ(cell(data, 1, 1), L"5");
}

TEST_F(DataSetErrors, OpenThrowsABadStatementWhenErrorsAreToBeRaised)
{
    xCDorvexDataSet data;
    data.SetRaiseErrors(true);
    EXPECT_THROW(data.Open(channel, L"select * frm t", 0, true), DorX);
    EXPECT_NE(data.getRowError(0), nullptr);
}

TEST_F(DataSetErrors, OpenRecordsAChannelThatDoesNotExist)
{
    xCDorvexDataSet data;
    data.Open(channel + 1000, L"select 1", 0, true);
    ASSERT_NE(data.getRowError(0), nullptr);
    EXPECT_EQ(data.getRowError(0)->kind, aCErrorHolder::Critical);
}

TEST_F(DataSetErrors, ReOpenWithABadStatementKeepsTheOldCursorReadable)
{
    run({"create table t(a integer)", "insert into t values(5),(6)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    DorCPP::DorCursor* cursor = data.GetDBCursor();
    EXPECT_EQ(data.ReOpen(L"select * from nowhere"), 1);
    EXPECT_EQ(data.GetDBCursor(), cursor);
    EXPECT_EQ(data.GetRowCount(), 2);
    EXPECT_EQ(cell(data, 1, 2), L"6");
    EXPECT_NE(data.getRowError(0), nullptr);
}

// Kept: 0 also for a failure that is to be raised, which ReOpen itself never throws.
TEST_F(DataSetErrors, KeptReOpenAnswersZeroForAnErrorToBeRaised)
{
    run({"create table t(a integer)", "insert into t values(5)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.SetRaiseErrors(true);
    EXPECT_EQ(data.ReOpen(L"select * from nowhere"), 0);
    EXPECT_NE(data.GetErrorKind(), aCErrorHolder::NoError);
    EXPECT_EQ(cell(data, 1, 1), L"5");
    EXPECT_EQ(data.ReOpen(L"select a + 1 from t"), 0);
    EXPECT_EQ(cell(data, 1, 1), L"6");
}

TEST_F(DataSetErrors, ARowDeletedByAnotherSessionIsAnErrorOfThatRowOnly)
{
    run({"create table t(a integer primary key)", "insert into t values(1),(2),(3)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t order by a", 0, true);
    DorCPP::DorConnect other;
    openOther(other);
    runOn(other, "delete from t where a = 2");

    EXPECT_EQ(cell(data, 1, 1), L"1");
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 2, false), 1);
    EXPECT_EQ(data.GetErrorKind(), aCErrorHolder::NoSuchRow);
    ASSERT_NE(data.getRowError(2), nullptr);
    EXPECT_EQ(data.getRowError(2)->kind, aCErrorHolder::NoSuchRow);
    EXPECT_EQ(cell(data, 1, 2), L"");
    EXPECT_EQ(cell(data, 1, 3), L"3");
    EXPECT_EQ(data.getRowError(3), nullptr);
    EXPECT_EQ(data.GetRowCount(), 3);
}

TEST_F(DataSetErrors, ARowThatCannotBeReadHasNoValuesOfTheRowBefore)
{
    run({"create table t(a integer primary key, b varchar(10))",
         "insert into t values(1, 'one'),(2, 'two')"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t order by a", 0, true);
    run("delete from t where a = 2");
    EXPECT_EQ(cell(data, 2, 1), L"one");
    data.ToRow(OviAPI::FetchAbsolute, 2, false);
    const auto* bytes = static_cast<const char*>(data.GetRowData());
    EXPECT_EQ(std::string(bytes, data.GetRowLength()), std::string(data.GetRowLength(), '\0'));
    EXPECT_TRUE(data.IsColumnNull(1));
}

// Kept: ToRow never throws; an error that is to be raised answers 0 and is told by the kind alone.
TEST_F(DataSetErrors, KeptToRowAnswersZeroForAnErrorToBeRaised)
{
    run({"create table t(a integer)", "insert into t values(1)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.SetRaiseErrors(true);
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 99, false), 0);
    EXPECT_EQ(data.GetErrorKind(), aCErrorHolder::NoSuchRow);
    EXPECT_EQ(data.SetRow(1), 0);
}

TEST_F(DataSetErrors, ARowBeyondTheCountIsNoSuchRow)
{
    run({"create table t(a integer)", "insert into t values(1)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    for (const long row : {0L, 2L, -1L, 1L << 40}) {
        EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, row, false), 1) << row;
        EXPECT_EQ(data.GetErrorKind(), aCErrorHolder::NoSuchRow) << row;
    }
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 1, false), 0);
    EXPECT_EQ(data.GetErrorKind(), aCErrorHolder::NoError);
}

TEST_F(DataSetErrors, ALockedTableIsAnErrorOfTheRowAndGoesAwayWithTheLock)
{
    run({"create table t(a integer primary key)", "insert into t values(1),(2)"});
    DorCPP::DorConnect reader;
    openOther(reader);
    xCDorvexDataSet data;
    data.Open(reader.channel(), L"select * from t", 0, true);
    run("begin exclusive");
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 2, false), 1);
    EXPECT_EQ(data.GetErrorKind(), aCErrorHolder::Locked);
    ASSERT_NE(data.getRowError(2), nullptr);
    run("commit");
    EXPECT_EQ(cell(data, 1, 2), L"2");
    EXPECT_EQ(data.getRowError(2), nullptr);
}

TEST_F(DataSetErrors, AnErrorOfStoringARowOutlivesReadingTheRow)
{
    run({"create table t(a integer)", "insert into t values(1)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.ErrorHandler(modifying, errorOf(1022), 1);
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 1, false), 0);
    ASSERT_NE(data.getRowError(1), nullptr);
    EXPECT_EQ(data.getRowError(1)->kind, aCErrorHolder::Refused);
}

TEST_F(DataSetErrors, ErrorsOfRowsAreForgottenWhenTheRowsAreNumberedAnew)
{
    run({"create table t(a integer)", "insert into t values(1)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.ErrorHandler(modifying, errorOf(1022), 0);
    data.ErrorHandler(modifying, errorOf(1022), 1);
    data.ResetDataSet(false);
    EXPECT_EQ(data.getRowError(1), nullptr);
    ASSERT_NE(data.getRowError(0), nullptr);
    EXPECT_EQ(data.getRowError(0)->kind, aCErrorHolder::Refused);
}

TEST_F(DataSetErrors, ADamagedFileIsCritical)
{
    run({"create table t(a integer primary key, b varchar(1000))",
         "insert into t with recursive n(i) as (select 1 union all select i + 1 from n where i < "
         "2000) select i, hex(zeroblob(400)) from n"});
    connection.close();
    {
        std::fstream file(path(), std::ios::binary | std::ios::in | std::ios::out);
        const std::string garbage(4096, '\x5A');
        const auto size = static_cast<long>(std::filesystem::file_size(path()));
        for (long at = 4096; at + 4096 <= size; at += 4096) {
            file.seekp(at);
            file.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
        }
    }
    channel = connection.createCS(nullptr, nullptr, path().c_str(), nullptr, 0, false, true);
    xCDorvexDataSet data;
    data.Open(channel, L"select b from t", 0, true);
    ASSERT_NE(data.getRowError(0), nullptr);
    EXPECT_EQ(data.getRowError(0)->kind, aCErrorHolder::Critical);
    EXPECT_EQ(data.getRowError(0)->code, DorCPP::CodeCorruptFile);
}

TEST_F(DataSetErrors, ADroppedTableLeavesTheDataSetWithErrorsNotWithWrongValues)
{
    run({"create table t(a integer primary key)", "insert into t values(1),(2)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    run("drop table t");
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 1, false), 1);
    EXPECT_NE(data.getRowError(1), nullptr);
    data.ResetDataSet(true);
    EXPECT_NE(data.getRowError(0), nullptr);
    run({"create table t(a integer primary key)", "insert into t values(9)"});
    data.ResetDataSet(true);
    EXPECT_EQ(data.getRowError(0), nullptr);
    EXPECT_EQ(cell(data, 1, 1), L"9");
}

TEST_F(DataSetErrors, AClosedSessionIsCritical)
{
    run({"create table t(a integer)", "insert into t values(1)"});
    xCDorvexDataSet data;
    data.Open(channel, L"select * from t", 0, true);
    data.DestroyDBCursor();
    connection.close();
    EXPECT_EQ(data.ReOpen(nullptr), 1);
    EXPECT_EQ(data.GetErrorKind(), aCErrorHolder::Critical);
}
