#include <cstring>
#include <set>
#include <string>

#include <sqlite3.h>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

class Cursor : public Database {
protected:
    // A table n(i, s) with rows 1 to count.
    void fill(int count)
    {
        execute("CREATE TABLE n(i INTEGER PRIMARY KEY, s VARCHAR(20))");
        execute("WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < " +
                std::to_string(count) + ") INSERT INTO n SELECT i, 'row ' || i FROM c");
    }
    t_ParamDesc describe(int i)
    {
        t_ParamDesc desc;
        std::memset(&desc, 0x55, sizeof desc);
        cursor.answerDesc(i, desc);
        return desc;
    }
};

using Strings = std::vector<std::string>;

} // namespace

TEST_F(Cursor, AnEmptyTextDoesNothingAndKeepsNoAnswer)
{
    execute("SELECT 1");
    for (const char* sql : {"", "  ", ";", "-- nothing", "/* nothing */ ;"}) {
        execute(sql);
        EXPECT_EQ(cursor.columnCount(), 0);
        EXPECT_EQ(cursor.selectRowCount(), 0);
    }
}

TEST_F(Cursor, SeveralStatementsAreRefusedAndNoneIsExecuted)
{
    execute("CREATE TABLE t(a)");
    for (const char* sql : {"INSERT INTO t VALUES(1); INSERT INTO t VALUES(2)",
                            "SELECT 1; DROP TABLE t", "SELECT a FROM t; SELECT a FROM t"})
        EXPECT_EQ(codeOf([&] { execute(sql); }), CodeSeveralStatements) << sql;
    execute("SELECT * FROM t");
    EXPECT_EQ(cursor.selectRowCount(), 0);
    execute("INSERT INTO t VALUES(1); -- and a comment\n ;");
}

TEST_F(Cursor, ATriggerIsOneStatement)
{
    execute("CREATE TABLE t(a)");
    execute("CREATE TRIGGER g AFTER INSERT ON t BEGIN UPDATE t SET a = a + 1; UPDATE t SET a = a * "
            "2; END");
    execute("INSERT INTO t VALUES(1)");
    EXPECT_EQ(cursor.changedRowCount(), 1);
    execute("SELECT a FROM t");
    EXPECT_EQ(rows(cursor), Strings{"4"});
}

TEST_F(Cursor, RowsAreFetchedInFiveDirections)
{
    fill(3);
    execute("SELECT i FROM n");
    ASSERT_EQ(cursor.selectRowCount(), 3);
    int64_t reached = 0;
    int64_t count = 0;
    cursor.fetch(FetchLast, 0, &reached, &count);
    EXPECT_EQ(reached, 3);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(text(cursor, 1), "3");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(text(cursor, 1), "1");
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(text(cursor, 1), "2");
    cursor.fetch(FetchPrevious, 0);
    EXPECT_EQ(text(cursor, 1), "1");
    cursor.fetch(FetchAbsolute, 3);
    EXPECT_EQ(cursor.position(), 3);
}

TEST_F(Cursor, MovingPastAnEndSaysNoRowAndComesBack)
{
    fill(2);
    execute("SELECT i FROM n");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchPrevious, 0); }), CodeNoRow);
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(text(cursor, 1), "1");
    cursor.fetch(FetchLast, 0);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeNoRow);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeNoRow);
    EXPECT_EQ(codeOf([&] { text(cursor, 1); }), CodeNoRow);
    cursor.fetch(FetchPrevious, 0);
    EXPECT_EQ(text(cursor, 1), "2");
}

TEST_F(Cursor, AWrongRowNumberLeavesThePosition)
{
    fill(2);
    execute("SELECT i FROM n");
    cursor.fetch(FetchAbsolute, 2);
    for (const int64_t row : {INT64_C(0), INT64_C(-1), INT64_C(3), INT64_MAX, INT64_MIN})
        EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, row); }), CodeNoRow) << row;
    EXPECT_EQ(text(cursor, 1), "2");
    EXPECT_EQ(codeOf([&] { cursor.fetch(6, 1); }), CodeBadCall);
}

TEST_F(Cursor, AnEmptyAnswerHasColumnsAndNoRows)
{
    fill(1);
    execute("SELECT i, s FROM n WHERE i > 5");
    EXPECT_EQ(cursor.columnCount(), 2);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchFirst, 0); }), CodeNoRow);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchLast, 0); }), CodeNoRow);
}

TEST_F(Cursor, CallsOutOfOrderAreErrors)
{
    DorCursor none;
    EXPECT_EQ(codeOf([&] { none.execute("SELECT 1"); }), CodeBadCall);
    EXPECT_EQ(codeOf([&] { none.columnCount(); }), CodeBadCall);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchFirst, 0); }), CodeBadCall);
    execute("SELECT 1");
    EXPECT_EQ(codeOf([&] { text(cursor, 1); }), CodeBadCall);
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(codeOf([&] { text(cursor, 2); }), CodeBadCall);
    EXPECT_EQ(codeOf([&] { text(cursor, 0); }), CodeBadCall);
    t_ParamDesc desc;
    EXPECT_EQ(codeOf([&] { cursor.answerDesc(0, desc); }), CodeBadCall);
    none.close();
}

TEST_F(Cursor, EveryBlockOfALongAnswerIsReadRightInAnyOrder)
{
    fill(5000);
    for (const char* sql : {"SELECT i, s FROM n", "SELECT i, s FROM n ORDER BY i * 7919 % 5003"}) {
        execute(sql);
        ASSERT_TRUE(cursor.isKeyed());
        std::set<std::string> seen;
        for (int64_t row = 5000; row >= 1; --row) {
            cursor.fetch(FetchAbsolute, row);
            ASSERT_EQ(text(cursor, 2), "row " + text(cursor, 1));
            seen.insert(text(cursor, 1));
        }
        EXPECT_EQ(seen.size(), 5000U);
        for (int64_t k = 0; k < 3000; ++k) {
            cursor.fetch(FetchAbsolute, k * 617 % 5000 + 1);
            ASSERT_EQ(text(cursor, 2), "row " + text(cursor, 1));
        }
    }
}

TEST_F(Cursor, AVanishedRowIsAHoleAndTheCursorStaysUsable)
{
    fill(200);
    for (const char* sql : {"SELECT i FROM n", "SELECT i FROM n ORDER BY s"}) {
        execute(sql);
        cursor.fetch(FetchAbsolute, 150);
        const std::string gone = text(cursor, 1);
        change("DELETE FROM n WHERE i = " + gone);
        EXPECT_EQ(text(cursor, 1), gone); // as it was fetched
        EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 150); }), CodeRowGone);
        EXPECT_EQ(codeOf([&] { text(cursor, 1); }), CodeRowGone);
        EXPECT_EQ(cursor.position(), 150);
        cursor.fetch(FetchNext, 0);
        EXPECT_EQ(cursor.position(), 151);
        EXPECT_NE(text(cursor, 1), gone);
        EXPECT_EQ(codeOf([&] { cursor.fetch(FetchPrevious, 0); }), CodeRowGone);
        cursor.fetch(FetchPrevious, 0);
        EXPECT_EQ(cursor.position(), 149);
    }
    EXPECT_EQ(cursor.selectRowCount(), 199);
}

TEST_F(Cursor, AnotherWriterIsNeverLockedOutByAnOpenCursor)
{
    fill(2000);
    sqlite3* other = nullptr;
    sqlite3_open(path().c_str(), &other);
    for (const char* sql :
         {"SELECT i FROM n", "SELECT i FROM n ORDER BY s", "SELECT max(i) FROM n"}) {
        execute(sql);
        for (int64_t row = 1; row <= cursor.selectRowCount(); row += 300) {
            cursor.fetch(FetchAbsolute, row);
            EXPECT_EQ(
                sqlite3_exec(other, "UPDATE n SET s = s WHERE i = 1", nullptr, nullptr, nullptr),
                SQLITE_OK);
        }
    }
    EXPECT_EQ(sqlite3_exec(other, "DROP TABLE n", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
}

TEST_F(Cursor, AChangedTableIsSaidToBeChanged)
{
    fill(200);
    execute("SELECT * FROM n");
    cursor.fetch(FetchFirst, 0);
    change("ALTER TABLE n ADD COLUMN x INTEGER DEFAULT 7");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 150); }), CodeStructureChanged);
    change("DROP TABLE n");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 150); }), CodeSqlText);
    execute("SELECT 5");
    EXPECT_EQ(rows(cursor), Strings{"5"});
}

TEST_F(Cursor, AChangeOfTheSessionIsSeenWhenTheRowIsFetchedAgain)
{
    fill(10);
    execute("SELECT s FROM n");
    cursor.fetch(FetchAbsolute, 4);
    EXPECT_EQ(text(cursor, 1), "row 4");
    change("UPDATE n SET s = 'new' WHERE i = 4");
    EXPECT_EQ(text(cursor, 1), "row 4");
    cursor.fetch(FetchAbsolute, 4);
    EXPECT_EQ(text(cursor, 1), "new");
}

TEST_F(Cursor, ASpooledAnswerDoesNotChange)
{
    fill(200);
    execute("SELECT DISTINCT s FROM n ORDER BY i");
    EXPECT_FALSE(cursor.isKeyed());
    change("DELETE FROM n");
    ASSERT_EQ(cursor.selectRowCount(), 200);
    cursor.fetch(FetchAbsolute, 123);
    EXPECT_EQ(text(cursor, 1), "row 123");
}

TEST_F(Cursor, TablesAndViewsAreListed)
{
    execute("CREATE TABLE t(a)");
    execute("CREATE VIEW v AS SELECT a FROM t");
    execute("SELECT name, type FROM sqlite_schema WHERE type IN ('table', 'view') ORDER BY name");
    EXPECT_EQ(rows(cursor), (Strings{"t|table", "v|view"}));
}

TEST_F(Cursor, StatementsThatGiveRowsAreSpooledWhateverTheirKind)
{
    execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a TEXT)");
    execute("INSERT INTO t(a) VALUES('x'), ('y') RETURNING id, a");
    EXPECT_EQ(rows(cursor), (Strings{"1|x", "2|y"}));
    EXPECT_EQ(cursor.changedRowCount(), 2);
    execute("PRAGMA table_info(t)");
    EXPECT_EQ(cursor.selectRowCount(), 2);
    execute("EXPLAIN SELECT 1");
    EXPECT_GT(cursor.selectRowCount(), 0);
}

TEST_F(Cursor, ChangedRowsAreCountedPerStatement)
{
    fill(5);
    EXPECT_EQ(cursor.changedRowCount(), 5);
    execute("UPDATE n SET s = 'x' WHERE i > 3");
    EXPECT_EQ(cursor.changedRowCount(), 2);
    execute("CREATE TABLE other(a)");
    EXPECT_EQ(cursor.changedRowCount(), 0);
}

TEST_F(Cursor, TransactionsAreTheUsersOwn)
{
    execute("CREATE TABLE t(a)");
    execute("BEGIN");
    EXPECT_TRUE(connection.inTransaction());
    execute("INSERT INTO t VALUES(1)");
    execute("SELECT * FROM t ORDER BY a");
    EXPECT_EQ(rows(cursor), Strings{"1"});
    execute("ROLLBACK");
    EXPECT_FALSE(connection.inTransaction());
    execute("SELECT * FROM t");
    EXPECT_EQ(cursor.selectRowCount(), 0);
}

TEST_F(Cursor, AnErrorTellsCodePositionAndTheEnginesWords)
{
    execute("CREATE TABLE t(a UNIQUE NOT NULL)");
    try {
        execute("SELECT nonsense FROM t");
        FAIL();
    } catch (const DorX& x) {
        EXPECT_EQ(x.status(), -1);
        EXPECT_EQ(x.code(), CodeSqlText);
        EXPECT_EQ(x.systemCode(), SQLITE_ERROR);
        EXPECT_EQ(x.position(), 8);
        EXPECT_NE(std::string(x.what()).find("no such column: nonsense"), std::string::npos);
    }
    execute("INSERT INTO t VALUES(1)");
    try {
        execute("INSERT INTO t VALUES(1)");
        FAIL();
    } catch (const DorX& x) {
        EXPECT_EQ(x.code(), CodeRefused);
        EXPECT_EQ(x.systemCode(), 0);
        EXPECT_EQ(x.engineCode(), SQLITE_CONSTRAINT_UNIQUE);
    }
}

TEST_F(Cursor, AFailedStatementLeavesNoAnswerAndTheCursorUsable)
{
    execute("SELECT 1");
    EXPECT_NE(codeOf([&] { execute("SELEC 1"); }), 0);
    EXPECT_EQ(cursor.columnCount(), 0);
    EXPECT_NE(codeOf([&] { execute("SELECT abs(-9223372036854775808)"); }), 0);
    execute("SELECT 2");
    EXPECT_EQ(rows(cursor), Strings{"2"});
}

TEST_F(Cursor, TextsOverTheLimitsAreErrors)
{
    EXPECT_EQ(codeOf([&] { execute("SELECT '" + std::string(65 << 20, 'x') + "'"); }), CodeTooBig);
    std::string deep = "1";
    for (int i = 0; i < 600; ++i)
        deep = "(" + deep + "+1)";
    EXPECT_NE(codeOf([&] { execute("SELECT " + deep); }), 0);
    execute("SELECT '" + std::string(1 << 20, 'x') + "'");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(cursor.getBlobLen(1), 1 << 20);
}

TEST_F(Cursor, ALostTransactionIsSaid)
{
    execute("CREATE TABLE t(a UNIQUE)");
    execute("INSERT INTO t VALUES(1)");
    execute("BEGIN");
    const std::string message = messageOf([&] { execute("INSERT OR ROLLBACK INTO t VALUES(1)"); });
    EXPECT_NE(message.find("the whole transaction has been rolled back"), std::string::npos);
    EXPECT_FALSE(connection.inTransaction());
}

TEST_F(Cursor, DescriptorsNameTheSourceOfAKeyedColumn)
{
    execute("CREATE TABLE \"my t\"(id INTEGER PRIMARY KEY, name VARCHAR(20), other VARCHAR(5))");
    execute("SELECT name AS n, id + 1 AS sum, (SELECT other FROM \"my t\" LIMIT 1) FROM \"my t\"");
    const t_ParamDesc d = describe(1);
    EXPECT_STREQ(d.owner, "main");
    EXPECT_EQ(d.ownerLength, 4);
    EXPECT_STREQ(d.table, "my t");
    EXPECT_STREQ(d.column, "name");
    EXPECT_STREQ(d.label, "n");
    EXPECT_EQ(d.type, TypeVarchar);
    EXPECT_EQ(d.length, 80);
    const t_ParamDesc expression = describe(2);
    EXPECT_STREQ(expression.owner, "");
    EXPECT_EQ(expression.ownerLength, 0);
    EXPECT_STREQ(expression.table, "");
    EXPECT_STREQ(expression.column, "sum");
    EXPECT_STREQ(describe(3).table, "");
}

TEST_F(Cursor, ASpooledColumnHasNoSource)
{
    fill(3);
    execute("SELECT DISTINCT s FROM n");
    const t_ParamDesc d = describe(1);
    EXPECT_STREQ(d.owner, "");
    EXPECT_STREQ(d.table, "");
    EXPECT_STREQ(d.column, "s");
    EXPECT_EQ(d.length, 80);
}

TEST_F(Cursor, ANameLongerThanItsFieldIsCutAndNamesNoSource)
{
    const std::string name = std::string(62, 'c') + "\xD0\x96"; // 64 bytes
    execute("CREATE TABLE t(\"" + name + "\" INTEGER, " + std::string(63, 'd') + " INTEGER)");
    execute("SELECT * FROM t");
    const t_ParamDesc cut = describe(1);
    EXPECT_EQ(cut.column, std::string(62, 'c'));
    EXPECT_EQ(cut.columnLength, 62);
    EXPECT_STREQ(cut.owner, "");
    EXPECT_STREQ(cut.table, "");
    const t_ParamDesc whole = describe(2);
    EXPECT_EQ(whole.column, std::string(63, 'd'));
    EXPECT_STREQ(whole.table, "t");
    const std::string table(64, 't');
    execute("CREATE TABLE " + table + "(a)");
    execute("SELECT a FROM " + table);
    EXPECT_STREQ(describe(1).table, "");
    EXPECT_STREQ(describe(1).column, "a");
}

TEST_F(Cursor, TheTypeOfAnExpressionIsThatOfItsFirstValue)
{
    execute("CREATE TABLE t(a, j JSON)");
    execute("INSERT INTO t VALUES(1.5, '{}')");
    execute("INSERT INTO t VALUES('x', NULL)");
    execute("SELECT a, j, 1 + 1, NULL, x'00', 'text' FROM t");
    const int types[] = {TypeDouble, TypeVarchar, TypeBigint, TypeVarchar, TypeBlob, TypeVarchar};
    for (int i = 1; i <= 6; ++i)
        EXPECT_EQ(describe(i).type, types[i - 1]) << i;
    EXPECT_EQ(describe(6).length, 4000);
    execute("SELECT count(*) FROM t");
    EXPECT_EQ(describe(1).type, TypeBigint);
    execute("SELECT a FROM t WHERE 0");
    EXPECT_EQ(describe(1).type, TypeVarchar);
}

TEST_F(Cursor, AnAttachedCursorSharesAnswerAndPosition)
{
    fill(5);
    execute("SELECT i FROM n");
    cursor.fetch(FetchAbsolute, 3);
    {
        DorCursor other;
        other.attach(cursor.handle(), false);
        EXPECT_EQ(text(other, 1), "3");
        other.fetch(FetchNext, 0);
    }
    EXPECT_EQ(text(cursor, 1), "4");
    {
        DorCursor other;
        other.attach(cursor.handle(), true);
    }
    EXPECT_EQ(cursor.columnCount(), 0);
    EXPECT_EQ(codeOf([] { DorCursor().attach(999999, false); }), CodeBadCall);
}

TEST_F(Cursor, OptionsTellNullAndBlobType)
{
    execute("CREATE TABLE t(a INTEGER, b BLOB)");
    execute("INSERT INTO t VALUES(NULL, x'00')");
    execute("SELECT a, b FROM t");
    cursor.fetch(FetchFirst, 0);
    int32_t value = -1;
    const int handle = cursor.handle();
    EXPECT_EQ(DORVEX_GetCursorOption(handle, CursorOptionNull, 1, &value, 4), 0);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(DORVEX_GetCursorOption(handle, CursorOptionNull, 2, &value, 4), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(DORVEX_GetCursorOption(handle, CursorOptionBlobType, 2, &value, 4), 0);
    EXPECT_EQ(value, TypeBlob);
    EXPECT_EQ(DORVEX_GetCursorOption(handle, 1, 1, &value, 4), CodeBadCall);
    EXPECT_EQ(DORVEX_GetCursorOption(handle, CursorOptionNull, 3, &value, 4), CodeBadCall);
    EXPECT_EQ(DORVEX_GetCursorOption(handle, CursorOptionNull, 1, &value, 2), CodeBadCall);
    EXPECT_EQ(DORVEX_GetCursorOption(999999, CursorOptionNull, 1, &value, 4), CodeBadCall);
}

TEST_F(Cursor, ACursorKeepsItsSessionOpen)
{
    fill(100);
    execute("SELECT i FROM n");
    connection.close();
    cursor.fetch(FetchAbsolute, 90);
    EXPECT_EQ(text(cursor, 1), "90");
}

TEST_F(Cursor, AWideTableIsReadInSmallerBlocks)
{
    std::string columns;
    std::string values;
    for (int i = 0; i < 1500; ++i) {
        columns += (i ? "," : "") + std::string("c") + std::to_string(i) + " TEXT";
        values += (i ? "," : "") + std::string("i || '-") + std::to_string(i) + "'";
    }
    execute("CREATE TABLE wide(" + columns + ")");
    execute("WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < 300) INSERT "
            "INTO wide SELECT " +
            values + " FROM c");
    execute("SELECT * FROM wide");
    for (const int64_t row : {1, 300, 150, 151, 299}) {
        cursor.fetch(FetchAbsolute, row);
        EXPECT_EQ(text(cursor, 1500), std::to_string(row) + "-1499");
    }
}

TEST_F(Cursor, LongRowsAreReadFewerAtATime)
{
    execute("CREATE TABLE b(i INTEGER PRIMARY KEY, x BLOB)");
    execute("WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < 200) INSERT "
            "INTO b SELECT i, zeroblob(70000 + i) FROM c");
    for (const char* sql : {"SELECT i, x FROM b", "SELECT i, x FROM b ORDER BY i % 7, i"}) {
        execute(sql);
        std::set<int64_t> seen;
        for (int64_t row = 200; row >= 1; --row) {
            cursor.fetch(FetchAbsolute, row);
            int64_t i = 0;
            cursor.getData(1, TypeBigint, &i, sizeof i);
            ASSERT_EQ(cursor.getBlobLen(2), 70000 + i);
            seen.insert(i);
        }
        EXPECT_EQ(seen.size(), 200U);
    }
}
