#include <cstring>
#include <string>

#include <sqlite3.h>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

class GetData : public Database {
protected:
    // Puts one value into a column of this type and fetches it by its key.
    void store(const std::string& type, const std::string& value)
    {
        execute("DROP TABLE IF EXISTS t");
        execute("CREATE TABLE t(v " + type + ")");
        execute("INSERT INTO t VALUES(" + value + ")");
        execute("SELECT v FROM t");
        cursor.fetch(FetchFirst, 0);
    }
    template<class T>
    T get(int type)
    {
        T value{};
        state = cursor.getData(1, type, &value, sizeof value);
        return value;
    }
    ValueState state = ValueState::Null;
};

} // namespace

TEST_F(GetData, BinaryFormsAreThoseOfTheDeclaredType)
{
    store("SMALLINT", "-5");
    EXPECT_EQ(get<int16_t>(TypeSmallint), -5);
    store("INT4", "123456");
    EXPECT_EQ(get<int32_t>(TypeInteger), 123456);
    store("INTEGER", "9223372036854775807");
    EXPECT_EQ(get<int64_t>(TypeBigint), INT64_MAX);
    store("DOUBLE", "0.1");
    EXPECT_EQ(get<double>(TypeDouble), 0.1);
    store("TIMESTAMP", "'1970-01-01 00:00:01.000001'");
    EXPECT_EQ(get<int64_t>(TypeDate), 1'000'001);
    store("BOOLEAN", "1");
    EXPECT_EQ(get<int8_t>(TypeBoolean), 1);
    EXPECT_EQ(state, ValueState::Exact);
}

TEST_F(GetData, TheIndicatorTellsNull)
{
    store("INTEGER", "NULL");
    int64_t value = 7;
    short indicator = 5;
    size_t length = 9;
    EXPECT_EQ(cursor.getData(1, TypeBigint, &value, sizeof value, &indicator, &length),
              ValueState::Null);
    EXPECT_EQ(indicator, 1);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(cursor.isNull(1));
    store("INTEGER", "0");
    cursor.getData(1, TypeBigint, &value, sizeof value, &indicator, &length);
    EXPECT_EQ(indicator, 0);
    EXPECT_EQ(length, 8U);
}

TEST_F(GetData, ATextInAnIntegerColumnIsMarkedAndItsTextCanBeHad)
{
    store("INTEGER", "'many'");
    EXPECT_EQ(get<int64_t>(TypeBigint), 0);
    EXPECT_EQ(state, ValueState::Mismatch);
    EXPECT_EQ(cursor.valueState(1), ValueState::Mismatch);
    EXPECT_EQ(text(cursor, 1), "many");
    EXPECT_EQ(cursor.valueState(1), ValueState::Exact);
}

TEST_F(GetData, AnIntegerInADateColumnIsMarkedNotInterpreted)
{
    store("DATETIME", "1700000000");
    EXPECT_EQ(get<int64_t>(TypeDate), 0);
    EXPECT_EQ(state, ValueState::Mismatch);
    EXPECT_EQ(text(cursor, 1), "1700000000");
}

TEST_F(GetData, TheStateIsForgottenWithTheRow)
{
    execute("CREATE TABLE t(v VARCHAR(2))");
    execute("INSERT INTO t VALUES('long text'), ('ok'), (NULL)");
    execute("SELECT v FROM t");
    char buffer[3];
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(cursor.getData(1, TypeText, buffer, sizeof buffer), ValueState::Cut);
    EXPECT_EQ(cursor.valueState(1), ValueState::Cut);
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(cursor.valueState(1), ValueState::Exact);
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(cursor.valueState(1), ValueState::Null);
}

TEST_F(GetData, TextOfAnyLengthNeverOverrunsTheScratchBuffer)
{
    for (const size_t length : {65533U, 65534U, 65535U, 65536U, 65537U, 200000U}) {
        store("VARCHAR(100000)", "'" + std::string(length, 'x') + "'");
        t_ParamDesc desc;
        cursor.answerDesc(1, desc);
        const size_t capacity = static_cast<size_t>(desc.length) + 1;
        ASSERT_LE(capacity, 65535U);
        std::vector<char> scratch(65535, '#');
        const ValueState s = cursor.getData(1, TypeText, scratch.data(), capacity);
        EXPECT_EQ(s, length < capacity ? ValueState::Exact : ValueState::Cut) << length;
        EXPECT_EQ(std::strlen(scratch.data()), std::min(length, capacity - 1));
    }
}

TEST_F(GetData, ABufferLargerThanWhatIsCachedGetsTheWholeValue)
{
    for (const char* select :
         {"SELECT v FROM t", "SELECT DISTINCT v FROM t", "SELECT v || '' FROM t"}) {
        store("TEXT", "'" + std::string(99999, 'x') + "y" + std::string(100000, 'z') + "'");
        execute(select);
        cursor.fetch(FetchFirst, 0);
        std::string buffer(300000, 0);
        size_t length = 0;
        EXPECT_EQ(cursor.getData(1, TypeText, buffer.data(), buffer.size(), nullptr, &length),
                  ValueState::Exact);
        EXPECT_EQ(length, 200000U);
        EXPECT_EQ(buffer[99999], 'y');
    }
}

TEST_F(GetData, Utf16DatabasesGiveTheSameText)
{
    {
        DorConnect making;
        open(making, folder.file("wide.db"));
        DorCursor c;
        c.create(making, 0, nullptr, true);
        c.execute("PRAGMA encoding = 'UTF-16le'");
        c.execute("CREATE TABLE t(k TEXT PRIMARY KEY, v TEXT) WITHOUT ROWID");
        c.execute("INSERT INTO t VALUES('a\xD0\x96', '\xD0\x96\xE2\x82\xAC')");
    }
    DorConnect wide;
    open(wide, folder.file("wide.db"));
    DorCursor again;
    again.create(wide, 0, nullptr, true);
    again.execute("SELECT k, v FROM t");
    EXPECT_EQ(rows(again), std::vector<std::string>{"a\xD0\x96|\xD0\x96\xE2\x82\xAC"});
    char piece[8];
    EXPECT_EQ(again.getBlobLen(2), 5);
    EXPECT_EQ(again.getBlob(2, 2, piece, sizeof piece), 3U);
}

TEST_F(GetData, NationalTextComesAsUtf16)
{
    store("NVARCHAR(3)", "'a\xF0\x9F\x98\x80'");
    t_ParamDesc desc;
    cursor.answerDesc(1, desc);
    EXPECT_EQ(desc.type, TypeNvarchar);
    char16_t units[8];
    EXPECT_EQ(cursor.getData(1, TypeNchar, units, sizeof units), ValueState::Exact);
    EXPECT_EQ(std::u16string(units), u"a\U0001F600");
}

TEST_F(GetData, BlobsAreReadInPieces)
{
    execute("CREATE TABLE t(v BLOB, w TEXT)");
    execute("INSERT INTO t VALUES(zeroblob(3000000) , 'short')");
    execute("UPDATE t SET v = CAST(v AS BLOB) || x'414243'");
    execute("SELECT v, w FROM t");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(cursor.blobType(1), TypeBlob);
    const int64_t length = cursor.getBlobLen(1);
    std::string all;
    std::string piece(65536, 0);
    while (const size_t n =
               cursor.getBlob(1, static_cast<int64_t>(all.size()), piece.data(), piece.size()))
        all.append(piece.data(), n);
    EXPECT_EQ(static_cast<int64_t>(all.size()), length);
    EXPECT_EQ(all.substr(all.size() - 3), "ABC");
    EXPECT_EQ(cursor.getBlob(1, length, piece.data(), 10), 0U);
    EXPECT_EQ(cursor.getBlob(1, -1, piece.data(), 10), 0U);
    EXPECT_EQ(cursor.getBlob(2, 2, piece.data(), 10), 3U);
    EXPECT_EQ(piece.substr(0, 3), "ort");
}

TEST_F(GetData, BlobsOfRowsWithoutARowIdAreReadInPiecesToo)
{
    execute("CREATE TABLE t(k TEXT, l BLOB, v BLOB, PRIMARY KEY(k, l)) WITHOUT ROWID");
    execute("INSERT INTO t VALUES('a', x'00', zeroblob(200000) || x'4142'), ('" +
            std::string(70000, 'k') + "', x'01', zeroblob(100000) || x'4344')");
    execute("SELECT v FROM t ORDER BY l");
    for (int64_t row = 1; row <= 2; ++row) {
        cursor.fetch(FetchAbsolute, row);
        const int64_t length = cursor.getBlobLen(1);
        char piece[8] = {};
        EXPECT_EQ(cursor.getBlob(1, length - 2, piece, sizeof piece), 2U);
        EXPECT_STREQ(piece, row == 1 ? "AB" : "CD");
    }
}

TEST_F(GetData, ABlobIsReplacedAndExtended)
{
    execute("CREATE TABLE t(i INTEGER PRIMARY KEY, v BLOB, w TEXT)");
    execute("INSERT INTO t VALUES(1, x'00', 'old'), (2, x'01', 'other')");
    execute("SELECT v, w, i + 1 FROM t");
    cursor.fetch(FetchFirst, 0);
    cursor.clearBlob(1);
    cursor.appendBlob(1, "AB", 2);
    cursor.appendBlob(1, "C", 1);
    EXPECT_EQ(cursor.getBlobLen(1), 3);
    cursor.appendBlob(2, "er", 2);
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(codeOf([&] { cursor.clearBlob(3); }), CodeNotUpdatable);
    execute("SELECT v, w, typeof(v), typeof(w) FROM t");
    EXPECT_EQ(rows(cursor),
              (std::vector<std::string>{"414243|older|blob|text", "01|other|blob|text"}));
    execute("SELECT DISTINCT v FROM t");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(codeOf([&] { cursor.clearBlob(1); }), CodeNotUpdatable);
}

TEST_F(GetData, ABlobOfARowThatAnotherSessionChangedIsNotWritten)
{
    execute("CREATE TABLE t(v BLOB, w TEXT)");
    execute("INSERT INTO t VALUES(x'00', 'a')");
    execute("SELECT v, w FROM t");
    cursor.fetch(FetchFirst, 0);
    cursor.clearBlob(1);
    sqlite3* other = nullptr;
    sqlite3_open(path().c_str(), &other);
    sqlite3_exec(other, "DELETE FROM t; INSERT INTO t VALUES(x'07', 'another row, same row id')",
                 nullptr, nullptr, nullptr);
    sqlite3_close(other);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchFirst, 0); }), CodeRowChanged);
    execute("SELECT v FROM t");
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"07"});
}

TEST_F(GetData, ABlobOfAVanishedRowIsNotWritten)
{
    execute("CREATE TABLE t(i INTEGER PRIMARY KEY, v BLOB)");
    execute("INSERT INTO t VALUES(1, x'00')");
    execute("SELECT v FROM t");
    cursor.fetch(FetchFirst, 0);
    cursor.clearBlob(1);
    change("DELETE FROM t");
    EXPECT_EQ(codeOf([&] { cursor.close(); }), CodeRowGone);
    EXPECT_EQ(cursor.columnCount(), 0);
}
