#include "data/dordataset.h"

#include <climits>
#include <clocale>
#include <cstring>

#include "database.h"

namespace {

class DataSetReading : public Database {
protected:
    void open(const wchar_t* sql) { data.Open(channel, sql, 0, true); }
    std::wstring at(int column, long row) { return cell(data, column, row); }
    unsigned state(int column, long row)
    {
        EXPECT_EQ(data.SetRow(row), 0);
        return data.CellState(column);
    }

    xCDorvexDataSet data;
};

using OviAPI::StampCut;
using OviAPI::StampInvalid;
using OviAPI::StampNull;

std::string repeated(size_t count, const std::string& text)
{
    std::string all;
    for (size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

} // namespace

TEST_F(DataSetReading, IntegersToTheEndsOf64Bits)
{
    run({"create table t(a bigint, b integer, c smallint)",
         "insert into t values(9223372036854775807, 2147483647, 32767)",
         "insert into t values(-9223372036854775807 - 1, -2147483648, -32768)",
         "insert into t values(9007199254740993, 0, -1)"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"9223372036854775807");
    EXPECT_EQ(at(1, 2), L"-9223372036854775808");
    EXPECT_EQ(at(1, 3), L"9007199254740993");
    EXPECT_EQ(at(2, 1), L"2147483647");
    EXPECT_EQ(at(2, 2), L"-2147483648");
    EXPECT_EQ(at(3, 1), L"32767");
    EXPECT_EQ(at(3, 2), L"-32768");
    for (int column = 1; column <= 3; ++column)
        EXPECT_EQ(state(column, 2), 0U);
}

TEST_F(DataSetReading, FloatingPointNumbersExactly)
{
    run({"create table t(a double)",
         "insert into t values(0.1), (1e300), (-5e-324), (123456789.123456789)"});
    open(L"select * from t");
    EXPECT_EQ(data.GetCellNumber(1, 1), 0.1);
    EXPECT_EQ(data.GetCellNumber(1, 2), 1e300);
    EXPECT_EQ(data.GetCellNumber(1, 3), -5e-324);
    EXPECT_EQ(data.GetCellNumber(1, 4), 123456789.123456789);
    EXPECT_EQ(at(1, 1), L"0.1");
}

TEST_F(DataSetReading, DatesToTheMicrosecond)
{
    run({"create table t(a timestamp)", "insert into t values('2026-03-04 05:06:07.123456')",
         "insert into t values('1969-12-31 23:59:59.999999'), ('0001-01-01 00:00:00')"});
    open(L"select * from t");
    EXPECT_EQ(data.GetColInfo(1)->dataType, static_cast<int>(OviAPI::DataType::DateTime));
    EXPECT_EQ(at(1, 1), L"2026-03-04 05:06:07.123456");
    EXPECT_EQ(at(1, 2), L"1969-12-31 23:59:59.999999");
    EXPECT_EQ(at(1, 3), L"0001-01-01 00:00:00");
    int64_t micros = 0;
    std::memcpy(&micros, data.GetCellData(1, 2), sizeof micros);
    EXPECT_EQ(micros, -1);
}

TEST_F(DataSetReading, DecimalsBooleansAndBytes)
{
    run({"create table t(a decimal(12, 3), b boolean, c binary(8))",
         "insert into t values(1234.5, 1, x'00FF10')", "insert into t values(-7, 0, x'')"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"1234.5");
    EXPECT_EQ(at(1, 2), L"-7");
    EXPECT_EQ(data.GetCellNumber(1, 1), 1234.5);
    EXPECT_NE(at(2, 1), at(2, 2));
    EXPECT_EQ(at(3, 1), L"00FF10");
    EXPECT_EQ(at(3, 2), L"");
}

TEST_F(DataSetReading, ConvertsDecimalsWithTheClientWhenAskedTo)
{
    run({"create table t(a decimal(12, 3), b integer)",
         "insert into t values(1234.5, 3), (null, null)"});
    open(L"select * from t");
    data.SetDecimalNumbers(true);
    short none = 7;
    EXPECT_EQ(data.GetCellNumber(1, 1, &none), 1234.5);
    EXPECT_EQ(none, 0);
    EXPECT_EQ(data.GetCellNumber(2, 1, &none), 3.0);
    EXPECT_EQ(none, 0);
    EXPECT_EQ(data.GetCellNumber(1, 2, &none), 0.0);
    EXPECT_EQ(none, 1);
    EXPECT_EQ(data.GetCellNumber(1, 99, &none), 0.0);
    EXPECT_EQ(none, 1);
    EXPECT_THROW(data.GetCellNumber(3, 1), OviAPI::aCDataFailure);
}

TEST_F(DataSetReading, NullIsNotAnEmptyText)
{
    run({"create table t(a varchar(5), b integer)", "insert into t values(null, null), ('', 0)"});
    open(L"select * from t");
    EXPECT_EQ(state(1, 1), StampNull);
    EXPECT_EQ(state(2, 1), StampNull);
    EXPECT_EQ(state(1, 2), 0U);
    EXPECT_EQ(at(2, 2), L"0");
    EXPECT_EQ(at(2, 1), L"");
}

TEST_F(DataSetReading, TextOfAllPlanes)
{
    run({"create table t(a varchar(6))",
         "insert into t values('caf\xC3\xA9'), "
         "('\xD0\x9F\xD1\x80\xD0\xB8'), ('\xE4\xB8\xAD\xF0\x9F\x98\x80'), ('12345678')"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"caf\u00E9");
    EXPECT_EQ(at(1, 2), L"\u041F\u0440\u0438");
    EXPECT_EQ(at(1, 3), L"\u4E2D\U0001F600");
    EXPECT_EQ(at(1, 4), L"12345678");
}

TEST_F(DataSetReading, ATextAsLongAsItsColumnIsWhole)
{
    run({"create table t(a varchar(4))",
         "insert into t values('" + repeated(4, "\xF0\x9F\x98\x80") + "')"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), std::wstring(4, L'\U0001F600'));
    EXPECT_EQ(state(1, 1), 0U);
}

TEST_F(DataSetReading, ATextLongerThanItsColumnIsCutAndMarked)
{
    run({"create table t(a varchar(4))",
         "insert into t values('" + std::string(17, 'x') + "'), ('" + std::string(16, 'y') + "')"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), std::wstring(16, L'x'));
    EXPECT_EQ(state(1, 1), StampCut);
    EXPECT_NE(data.CellReason(1), L"");
    EXPECT_EQ(at(1, 2), std::wstring(16, L'y'));
    EXPECT_EQ(state(1, 2), 0U);
    EXPECT_EQ(data.CellReason(1), L"");
}

TEST_F(DataSetReading, ATextOfAMebibyteIsCutAndMarkedAndReadWholeInPieces)
{
    run({"create table t(a integer primary key, b text)",
         "insert into t values(1, '" + std::string(1 << 20, 'z') + "')"});
    open(L"select * from t");
    const std::wstring shown = at(2, 1);
    EXPECT_EQ(shown, std::wstring(shown.size(), L'z'));
    EXPECT_LT(shown.size(), 65536U);
    EXPECT_EQ(state(2, 1), StampCut);
    EXPECT_EQ(data.GetBlobSize(2), 1 << 20);
    std::string whole(1 << 20, '\0');
    EXPECT_EQ(data.GetBlob(2, 0, whole.data(), whole.size()), whole.size());
    EXPECT_EQ(whole, std::string(1 << 20, 'z'));
}

TEST_F(DataSetReading, TextThatIsNotUtf8IsShownWithMarksAndMarked)
{
    run({"create table t(a varchar(10))", "insert into t values(cast(x'61FF62' as text))",
         "insert into t values(cast(x'C3' as text)), (cast(x'EDA080' as text))"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"a\uFFFDb");
    for (long row = 1; row <= 3; ++row) {
        EXPECT_NE(at(1, row).find(L'\uFFFD'), std::wstring::npos);
        EXPECT_EQ(state(1, row), StampInvalid);
        EXPECT_NE(data.CellReason(1), L"");
    }
}

TEST_F(DataSetReading, ATextWithAZeroInItIsShownToItsEndAndMarked)
{
    run({"create table t(a varchar(10))", "insert into t values(cast(x'610062' as text))"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"a\uFFFDb");
    EXPECT_EQ(state(1, 1), StampInvalid);
}

TEST_F(DataSetReading, AValueOfAnotherStorageClassIsMarkedAndItsTextTold)
{
    run({"create table t(a integer, b varchar(20), c double)",
         "insert into t values('hello', x'4142', 'world'), (x'4142', 5, 1)"});
    open(L"select * from t");
    EXPECT_EQ(state(1, 1), StampInvalid);
    EXPECT_EQ(at(1, 1), L"hello");
    EXPECT_NE(data.CellReason(1).find(L"hello"), std::wstring::npos);
    EXPECT_EQ(state(2, 1), StampInvalid);
    EXPECT_EQ(at(2, 1), L"4142");
    EXPECT_EQ(state(3, 1), StampInvalid);
    EXPECT_EQ(at(3, 1), L"world");
    EXPECT_NE(data.CellReason(3).find(L"world"), std::wstring::npos);
    EXPECT_EQ(state(1, 2), StampInvalid);
    EXPECT_NE(data.CellReason(1).find(L"4142"), std::wstring::npos);
    short none = 0;
    data.GetCellNumber(1, 1, &none); // the zeros that stand for it are not its value
    EXPECT_EQ(none, 1);
}

TEST_F(DataSetReading, ATextInAColumnOfNumbersIsShownAsItIsWithAndWithoutTheCache)
{
    run({"create table t(a integer, b decimal(9, 2), c date, d boolean, e binary(9))",
         "insert into t values('\xD0\x96 %s', 'n/a', 'soon', 'maybe', 'ab'), (5, 1, null, 1, "
         "x'01')"});
    for (const bool cached : {false, true}) {
        data.SetRowCache(cached);
        open(L"select * from t order by rowid");
        for (int pass = 0; pass < 2; ++pass) {
            EXPECT_EQ(at(1, 1), L"\u0416 %s");
            EXPECT_EQ(at(2, 1), L"n/a");
            EXPECT_EQ(at(3, 1), L"soon");
            EXPECT_EQ(at(4, 1), L"maybe");
            EXPECT_EQ(at(5, 1), L"6162"); // the bytes of the text
            for (int column = 1; column <= 5; ++column)
                EXPECT_EQ(state(column, 1), StampInvalid) << column;
            EXPECT_EQ(at(1, 2), L"5"); // nothing of the row before
            EXPECT_EQ(state(1, 2), 0U);
            EXPECT_EQ(at(3, 2), L"");
        }
    }
}

TEST_F(DataSetReading, AnOddValueIsShownEvenWhenTheCursorHasMovedOn)
{
    run({"create table t(a integer)", "insert into t values('first'), ('second')"});
    open(L"select * from t order by rowid");
    ASSERT_EQ(data.SetRow(1), 0);
    data.GetDBCursor()->fetch(DorCPP::FetchLast, 0);
    EXPECT_EQ(data.CellText(1), L"first");
    EXPECT_NE(data.CellReason(1).find(L"first"), std::wstring::npos);
}

TEST_F(DataSetReading, AReasonIsShortWhateverIsStored)
{
    run({"create table t(a integer)", "insert into t values('" + std::string(100'000, 'q') + "')"});
    open(L"select * from t");
    EXPECT_EQ(state(1, 1), StampInvalid);
    EXPECT_LT(data.CellReason(1).size(), 300U);
    EXPECT_NE(data.CellReason(1).find(L"qqq"), std::wstring::npos);
}

// Kept: a large object is not fetched with its row; its space stays zero.
TEST_F(DataSetReading, KeptALargeObjectReadsAsZerosAfterEveryFetch)
{
    run({"create table t(a integer primary key, b blob, c integer)",
         "insert into t values(1, x'FFFFFFFF', 7), (2, x'AAAA', 8)"});
    open(L"select * from t");
    for (long row = 1; row <= 2; ++row) {
        ASSERT_EQ(data.SetRow(row), 0);
        const auto* bytes = static_cast<const char*>(data.GetRowData()) + data.GetColOffset(2);
        const size_t length = data.GetColInfo(2)->rowBytes();
        EXPECT_EQ(std::string(bytes, length), std::string(length, '\0'));
        EXPECT_EQ(at(3, row), std::to_wstring(6 + row));
    }
}

TEST_F(DataSetReading, ALargeObjectInPieces)
{
    run({"create table t(a integer primary key, b blob)",
         "insert into t values(1, zeroblob(100000)), (2, x'0102030405'), (3, null)"});
    open(L"select * from t");
    ASSERT_EQ(data.SetRow(2), 0);
    EXPECT_EQ(data.GetBlobType(2), DorCPP::TypeBlob);
    EXPECT_EQ(data.GetBlobSize(2), 5);
    EXPECT_EQ(data.GetFisicalBlobSize(2), 5);
    unsigned char piece[4] = {};
    EXPECT_EQ(data.GetBlob(2, 0, piece, 4), 4U);
    EXPECT_EQ(piece[3], 4);
    EXPECT_EQ(data.GetBlob(2, 4, piece, 4), 1U);
    EXPECT_EQ(piece[0], 5);
    EXPECT_EQ(data.GetBlob(2, 5, piece, 4), 0U);
    EXPECT_EQ(data.GetErrorKind(), 0);
    ASSERT_EQ(data.SetRow(1), 0);
    EXPECT_EQ(data.GetBlobSize(2), 100'000);
    ASSERT_EQ(data.SetRow(3), 0);
    EXPECT_TRUE(data.IsNull(2));
    EXPECT_TRUE(data.IsColumnNull(2));
    EXPECT_FALSE(data.IsColumnNull(1));
    EXPECT_EQ(data.GetBlobSize(2), 0);
}

TEST_F(DataSetReading, ALargeObjectOfACachedRowIsThatRows)
{
    run({"create table t(a integer primary key, b blob)",
         "insert into t values(1, x'01'), (2, x'0202')"});
    data.SetRowCache(true);
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"1");
    EXPECT_EQ(at(1, 2), L"2");
    ASSERT_EQ(data.SetRow(1), 0); // from the cache: the cursor stands on row 2
    EXPECT_EQ(data.GetBlobSize(2), 1);
    EXPECT_EQ(at(1, 1), L"1");
}

TEST_F(DataSetReading, TheNewRowsLargeObjectIsWhatItsColumnSays)
{
    run({"create table t(a integer primary key, b blob)", "insert into t values(1, x'0102')"});
    open(L"select * from t");
    data.GetColInfo(2)->blobType = 42;
    data.GetColInfo(2)->blobSize = 777;
    data.aCDataSet::AddRow(nullptr, 0);
    ASSERT_EQ(data.SetRow(2), 0);
    EXPECT_EQ(data.GetBlobType(2), 42);
    EXPECT_EQ(data.GetBlobSize(2), 777);
    char byte = 0;
    EXPECT_EQ(data.GetBlob(2, 0, &byte, 1), 0U);
    ASSERT_EQ(data.SetRow(1), 0);
    EXPECT_EQ(data.GetBlobType(2), DorCPP::TypeBlob);
    EXPECT_EQ(data.GetBlobSize(2), 2);
}

TEST_F(DataSetReading, ALargeObjectOfARowThatHasGoneIsARowError)
{
    run({"create table t(a integer primary key, b blob)",
         "insert into t values(1, zeroblob(1000000))"});
    open(L"select * from t");
    ASSERT_EQ(data.SetRow(1), 0);
    DorCPP::DorConnect other;
    openOther(other);
    runOn(other, "delete from t");
    char byte = 0;
    EXPECT_EQ(data.GetBlob(2, 900'000, &byte, 1), 0U);
    EXPECT_NE(data.GetErrorKind(), 0);
    EXPECT_NE(data.getRowError(1), nullptr);
    data.SetRaiseErrors(true);
    EXPECT_THROW(data.GetBlob(2, 900'000, &byte, 1), DorCPP::DorX);
}

TEST_F(DataSetReading, ALargeObjectOfAColumnThatIsNotThereIsARowError)
{
    run({"create table t(a integer)", "insert into t values(1)"});
    open(L"select * from t");
    ASSERT_EQ(data.SetRow(1), 0);
    char byte = 0;
    EXPECT_EQ(data.GetFisicalBlobSize(9), 0);
    EXPECT_NE(data.GetErrorKind(), 0);
    EXPECT_EQ(data.GetBlob(9, 0, &byte, 1), 0U);
    EXPECT_NE(data.getRowError(1), nullptr);
    data.SetRaiseErrors(true);
    EXPECT_THROW(data.GetFisicalBlobSize(9), DorCPP::DorX);
}

TEST_F(DataSetReading, MovesInEveryDirection)
{
    run({"create table t(a integer primary key)", "insert into t values(1),(2),(3),(4)"});
    open(L"select * from t");
    const auto here = [&] { return std::to_wstring(data.GetRow()) + L":" + data.CellText(1); };
    EXPECT_EQ(data.ToRow(OviAPI::FetchFirst, 0, false), 0);
    EXPECT_EQ(here(), L"1:1");
    EXPECT_EQ(data.ToRow(OviAPI::FetchNext, 0, false), 0);
    EXPECT_EQ(here(), L"2:2");
    EXPECT_EQ(data.ToRow(OviAPI::FetchLast, 0, false), 0);
    EXPECT_EQ(here(), L"4:4");
    EXPECT_EQ(data.ToRow(OviAPI::FetchPrevious, 0, false), 0);
    EXPECT_EQ(here(), L"3:3");
    EXPECT_EQ(data.ToRow(OviAPI::FetchAbsolute, 2, false), 0);
    EXPECT_EQ(here(), L"2:2");
    EXPECT_EQ(data.ToRow(99, 2, false), 1);
    EXPECT_NE(data.GetErrorKind(), 0);
}

TEST_F(DataSetReading, ARowLeavesNothingOfTheRowBefore)
{
    run({"create table t(a integer primary key, b varchar(20), c binary(20), d decimal(20, 5), "
         "e double)",
         "insert into t values(1, 'a long enough text', x'FFFFFFFFFFFFFFFF', 12345678.12345, 1.5)",
         "insert into t values(2, 'b', x'EE', 7, 2.5), (3, null, null, null, null)"});
    open(L"select * from t");
    ASSERT_EQ(data.SetRow(1), 0);
    ASSERT_EQ(data.SetRow(2), 0);
    const auto inside = [&](int column) {
        const auto* bytes = static_cast<const char*>(data.GetRowData()) + data.GetColOffset(column);
        return std::string(bytes, data.GetColInfo(column)->rowBytes());
    };
    std::string text(data.GetColInfo(2)->rowBytes(), '\0');
    text[0] = 'b';
    EXPECT_EQ(inside(2), text);
    std::string bytes(20, '\0');
    bytes[0] = '\xEE';
    EXPECT_EQ(inside(3), bytes);
    EXPECT_EQ(at(4, 2), L"7");
    ASSERT_EQ(data.SetRow(3), 0);
    for (int column = 2; column <= 5; ++column)
        EXPECT_EQ(inside(column), std::string(inside(column).size(), '\0')) << column;
}

TEST_F(DataSetReading, AnEmptyTable)
{
    run("create table t(a integer primary key, b varchar(5))");
    open(L"select * from t");
    EXPECT_EQ(data.GetErrorKind(), 0);
    EXPECT_EQ(data.GetRowCount(), 0);
    EXPECT_EQ(data.GetColCount(), 2);
    EXPECT_EQ(at(1, 1), L"");
    EXPECT_EQ(data.ToRow(OviAPI::FetchFirst, 0, false), 1);
    EXPECT_EQ(data.GetErrorKind(), OviAPI::aCErrorHolder::NoSuchRow);
}

TEST_F(DataSetReading, AViewAJoinAndAnAggregate)
{
    run({"create table t(a integer primary key, b varchar(5))",
         "insert into t values(1, 'one'), (2, 'two')",
         "create view v as select b, a * 2 as d from t"});
    open(L"select * from v order by d");
    EXPECT_EQ(data.GetRowCount(), 2);
    EXPECT_EQ(at(1, 2), L"two");
    EXPECT_EQ(at(2, 2), L"4");
    open(L"select x.a, y.b from t x join t y on x.a < y.a");
    EXPECT_EQ(data.GetRowCount(), 1);
    EXPECT_EQ(at(2, 1), L"two");
    open(L"select count(*), max(b), avg(a) from t");
    EXPECT_EQ(at(1, 1), L"2");
    EXPECT_EQ(at(2, 1), L"two");
    EXPECT_EQ(at(3, 1), L"1.5");
}

TEST_F(DataSetReading, ColumnsWithoutADeclaredType)
{
    run({"create table t(a, b, c nonsense type)",
         "insert into t values(1, 'two', 3.5), ('x', null, x'0A')"});
    open(L"select * from t");
    EXPECT_EQ(data.GetColCount(), 3);
    EXPECT_EQ(at(2, 1), L"two");
    EXPECT_EQ(state(2, 2), StampNull);
    for (int column = 1; column <= 3; ++column) {
        ASSERT_EQ(data.SetRow(1), 0);
        EXPECT_NE(data.CellText(column) + data.CellReason(column), L"") << column;
    }
}

TEST_F(DataSetReading, TwoThousandColumnsOfAThousandCharacters)
{
    constexpr int columns = 2000;
    std::string names = "c1 varchar(1000)";
    std::string values = "'v1'";
    for (int i = 2; i <= columns; ++i) {
        names += ", c" + std::to_string(i) + " varchar(1000)";
        values += ", 'v" + std::to_string(i) + "'";
    }
    run({("create table t(" + names + ")").c_str(),
         ("insert into t values(" + values + ")").c_str(), "insert into t values(" + values + ")"});
    open(L"select * from t");
    ASSERT_EQ(data.GetColCount(), columns);
    EXPECT_EQ(data.GetRowBufferLength(data.GetDBCursor()), columns * (4000 * 4 + 4));
    EXPECT_EQ(at(1, 1), L"v1");
    EXPECT_EQ(at(1000, 2), L"v1000");
    EXPECT_EQ(at(2000, 1), L"v2000");
    EXPECT_EQ(state(2000, 2), 0U);
}

TEST_F(DataSetReading, AColumnLongerThanTheScratchBuffer)
{
    run({"create table t(a varchar(1000000), b integer)",
         "insert into t values('" + std::string(200'000, 'w') + "', 5)"});
    open(L"select * from t");
    EXPECT_LE(at(1, 1).size(), 65534U);
    EXPECT_GE(at(1, 1).size(), 65000U);
    EXPECT_EQ(state(1, 1), StampCut);
    EXPECT_EQ(at(2, 1), L"5");
}

TEST_F(DataSetReading, NationalTextIsCutAtTheEndOfItsColumnAndMarked)
{
    run({"create table t(a nchar(2), b nvarchar(3))",
         "insert into t values('ab', '\xF0\x9F\x98\x80\xF0\x9F\x98\x80\xF0\x9F\x98\x80')",
         "insert into t values('abcdefgh', '" + repeated(20, "\xF0\x9F\x98\x80") + "')"});
    open(L"select * from t");
    ASSERT_EQ(data.GetColInfo(1)->dbmsType, 16);
    ASSERT_EQ(data.GetColInfo(2)->dbmsType, 17);
    EXPECT_EQ(at(1, 1), L"ab");
    EXPECT_EQ(at(2, 1), std::wstring(3, L'\U0001F600'));
    EXPECT_EQ(state(1, 1), 0U);
    EXPECT_EQ(state(2, 1), 0U);
    EXPECT_EQ(at(1, 2), L"abcd"); // space for two units a character
    EXPECT_EQ(state(1, 2), StampCut);
    EXPECT_EQ(at(2, 2), std::wstring(6, L'\U0001F600'));
    EXPECT_EQ(state(2, 2), StampCut);
}

TEST_F(DataSetReading, AnExternalFileShowsItsPath)
{
    run({"create table t(a extfile)", "insert into t values('EXTFILE(''/tmp/a''''b'')'), ('/x')"});
    open(L"select * from t");
    ASSERT_EQ(data.GetColInfo(1)->dbmsType, 18);
    EXPECT_EQ(data.GetColInfo(1)->size, 2088 / 4);
    EXPECT_EQ(at(1, 1), L"/tmp/a'b");
    EXPECT_EQ(at(1, 2), L"/x");
}

TEST_F(DataSetReading, ColumnsThatTheApplicationMadeLargerThanTheAnswerReadNoForeignMemory)
{
    run({"create table t(a integer)", "insert into t values(5)"});
    open(L"select * from t");
    EXPECT_EQ(at(1, 1), L"5");
    auto* extra = new OviAPI::aCColumn(L"x", 1, 5000, L"x", 0, 0, 0); // the dataset owns it
    data.AddColDef(extra);
    EXPECT_EQ(at(1, 1), L"5");
    EXPECT_EQ(at(2, 1), L"");
    EXPECT_TRUE(data.IsNull(2));
    EXPECT_EQ(data.SetRow(0), 1);
    EXPECT_EQ(at(1, 1), L"5");
}

TEST_F(DataSetReading, CachedRowsKeepValuesStatesAndReasons)
{
    run({"create table t(a integer, b varchar(2), c binary(4))",
         "insert into t values('odd', 'longer than eight', x'0102'), (null, null, null)"});
    data.SetRowCache(true);
    open(L"select * from t");
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(at(2, 1), L"longer t");
        EXPECT_EQ(state(2, 1), StampCut);
        EXPECT_EQ(state(1, 1), StampInvalid);
        EXPECT_NE(data.CellReason(1).find(L"odd"), std::wstring::npos);
        EXPECT_EQ(at(3, 1), L"0102");
        EXPECT_EQ(state(1, 2), StampNull);
    }
    EXPECT_TRUE(data.IsRowCached(1));
    const void* row = nullptr;
    ASSERT_EQ(data.SetRow(1), 0);
    row = data.GetRowData(); // of the cached row, not of the one that was fetched last
    wchar_t first = 0;
    std::memcpy(&first, static_cast<const char*>(row) + data.GetColOffset(2), sizeof first);
    EXPECT_EQ(first, L'l');
}

TEST_F(DataSetReading, ReadsTheSameTextInTheLocaleOfAPlainProgram)
{
    run({"create table t(a varchar(10))", "insert into t values('caf\xC3\xA9')"});
    ASSERT_NE(setlocale(LC_ALL, "C"), nullptr);
    open(L"select a, '\u00E9' from t");
    EXPECT_EQ(at(1, 1), L"caf\u00E9");
    EXPECT_EQ(at(2, 1), L"\u00E9");
}

using DataSetReadingDeathTest = DataSetReading;

// A derived dataset whose row is shorter than its columns.
class ShortRow : public xCDorvexDataSet {
public:
    int64_t GetRowBufferLength(DorCPP::DorCursor*) override { return 3; }
};

TEST_F(DataSetReadingDeathTest, ARowBufferThatIsTooShortEndsTheProcess)
{
    ShortRow shortRow;
    shortRow.Open(channel, L"select 1", 0, false);
    EXPECT_DEATH(shortRow.ToRow(OviAPI::FetchFirst, 0, false),
                 "dordataset:547: virtual short int xCDorvexDataSet::ToRow\\(short int, long int, "
                 "bool\\): Assertion `size \\+ colSize <= RowLength' failed");
}
