// Statements for the row that a cursor stands on.
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support.h"
#include "waiter.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

class Positioned : public Database {
protected:
    Positioned()
    {
        execute("CREATE TABLE t(i INTEGER PRIMARY KEY, a TEXT, b BLOB, u NVARCHAR(20), d DATETIME,"
                " n INT DEFAULT 7)");
        execute("INSERT INTO t(i, a) VALUES (1, 'one'), (2, 'two'), (3, 'three')");
        other.createCS("", "", path().c_str(), "", 0, false, true);
        stranger.create(other, 0, nullptr, true);
    }
    void select(const char* sql = "SELECT i, a, b, u, d, n FROM t ORDER BY i")
    {
        execute(sql);
        cursor.fetch(FetchAbsolute, 2);
    }
    int codeOfExecute(const std::string& sql)
    {
        return codeOf([&] { execute(sql); });
    }
    // The values of column a, as another session sees them.
    std::vector<std::string> stored()
    {
        stranger.execute("SELECT a FROM t ORDER BY i");
        return rows(stranger);
    }
    void expectUnchanged() { EXPECT_EQ(stored(), Texts({"one", "two", "three"})); }
    using Texts = std::vector<std::string>;

    DorConnect other; // another session on the same file
    DorCursor stranger;
};

const char* const setNew = "UPDATE \"main\".\"t\" SET \"a\"='new' WHERE CURRENT OF CURSOR;";
const char* const deleteRow = "DELETE FROM \"main\".\"t\"  WHERE CURRENT OF CURSOR;";

} // namespace

TEST_F(Positioned, AnUpdateChangesTheRowOfTheCursorAlone)
{
    select();
    execute("UPDATE \"main\".\"t\" SET \"a\"='O''Brien' WHERE CURRENT OF CURSOR;");
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(cursor.position(), 2);
    EXPECT_EQ(cursor.selectRowCount(), 3);
    EXPECT_EQ(text(cursor, 2), "O'Brien");
    EXPECT_EQ(stored(), Texts({"one", "O'Brien", "three"}));
}

TEST_F(Positioned, ADeleteLeavesAHoleAndTheOtherRows)
{
    select();
    execute(deleteRow);
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(codeOf([&] { text(cursor, 2); }), CodeRowGone);
    EXPECT_EQ(codeOfExecute(setNew), CodeRowGone);
    EXPECT_EQ(codeOfExecute(deleteRow), CodeRowGone);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 2); }), CodeRowGone);
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(text(cursor, 2), "three");
    EXPECT_EQ(stored(), Texts({"one", "three"}));
}

TEST_F(Positioned, SpacingCaseCommentsAndSemicolonsDoNotMatter)
{
    for (const char* sql :
         {"update T set A='x' where current of cursor",
          "UPDATE main.t SET a='x' WHERE CURRENT OF CURSOR ; ;",
          "/* c */ UPDATE t SET a='x' -- WHERE\n WHERE/**/CURRENT\tOF\nCURSOR -- end",
          "UPDATE [t] SET a='x'\n\nWhere Current Of Cursor"}) {
        execute("UPDATE t SET a = 'two' WHERE i = 2");
        select();
        EXPECT_EQ(codeOfExecute(sql), 0) << sql;
        EXPECT_EQ(stored(), Texts({"one", "x", "three"})) << sql;
    }
}

TEST_F(Positioned, TheWordsInsideStringsNamesAndCommentsDoNotCount)
{
    for (const char* sql :
         {"UPDATE t SET a='x WHERE CURRENT OF CURSOR' WHERE i = 2",
          "UPDATE t SET a='x WHERE CURRENT OF CURSOR' /* WHERE CURRENT OF CURSOR */"
          " WHERE i = 2 -- WHERE CURRENT OF CURSOR"}) {
        select();
        execute(sql);
        EXPECT_EQ(cursor.columnCount(), 0) << sql; // a statement of its own
        EXPECT_EQ(stored(), Texts({"one", "x WHERE CURRENT OF CURSOR", "three"}));
    }
    EXPECT_EQ(codeOfExecute("UPDATE t SET a=1 WHERE CURRENT OF \"CURSOR\""), CodeSqlText);
}

TEST_F(Positioned, FormsThatAreNotUnderstoodNeverReachTheEngine)
{
    const struct {
        const char* sql;
        int code;
    } refused[] = {
        {"UPDATE t AS x SET a='x' WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE t x SET a='x' WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE OR REPLACE t SET a='x' WHERE CURRENT OF CURSOR", CodeSqlText},
        {"DELETE FROM t AS x WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE t SET a='x' WHERE 1 OR 1 WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE t SET a='x' FROM t AS y WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE t SET a='x' WHERE CURRENT OF CURSOR OR 1", CodeSqlText},
        {"UPDATE t SET a='x' WHERE CURRENT OF CURSOR RETURNING a", CodeSqlText},
        {"UPDATE t SET a=(SELECT 'x' WHERE CURRENT OF CURSOR", CodeSqlText},
        {"DELETE FROM t WHERE CURRENT OF CURSOR; DELETE FROM t", CodeSeveralStatements},
        {"DELETE FROM t; DELETE FROM t WHERE CURRENT OF CURSOR", CodeSeveralStatements},
        {"SELECT * FROM t WHERE CURRENT OF CURSOR", CodeSqlText},
        {"WITH x AS (SELECT 1) DELETE FROM t WHERE CURRENT OF CURSOR", CodeSqlText},
    };
    for (const auto& [sql, code] : refused) {
        select();
        EXPECT_EQ(codeOfExecute(sql), code) << sql;
        EXPECT_EQ(text(cursor, 2), "two") << sql; // the answer stays
    }
    expectUnchanged();
}

TEST_F(Positioned, ARowMustHaveBeenFetched)
{
    EXPECT_EQ(codeOfExecute(setNew), CodeBadCall);
    execute("SELECT * FROM t");
    EXPECT_EQ(codeOfExecute(setNew), CodeBadCall);
    cursor.fetch(FetchLast, 0);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeNoRow);
    EXPECT_EQ(codeOfExecute(deleteRow), CodeNoRow);
    expectUnchanged();
}

TEST_F(Positioned, AnotherTableOrAnAnswerWithoutKeysIsNotUpdatable)
{
    execute("CREATE TABLE u(a)");
    select();
    EXPECT_EQ(codeOfExecute("DELETE FROM u WHERE CURRENT OF CURSOR"), CodeNotUpdatable);
    EXPECT_EQ(codeOfExecute("DELETE FROM temp.t WHERE CURRENT OF CURSOR"), CodeNotUpdatable);
    select("SELECT DISTINCT a FROM t");
    EXPECT_EQ(codeOfExecute(setNew), CodeNotUpdatable);
    select("SELECT a || '' FROM t"); // nothing would tell the row from another with its key
    EXPECT_EQ(codeOfExecute(setNew), CodeNotUpdatable);
    cursor.create(connection, ModeReadOnly, nullptr, false);
    select();
    EXPECT_EQ(codeOfExecute(setNew), CodeNotUpdatable);
    EXPECT_EQ(text(cursor, 2), "two");
    expectUnchanged();
}

TEST_F(Positioned, ATemporaryTableOfTheSameNameIsNotHit)
{
    select("SELECT i, a FROM main.t ORDER BY i");
    change("CREATE TEMP TABLE t(i INTEGER PRIMARY KEY, a TEXT)");
    change("INSERT INTO temp.t VALUES (2, 'two')");
    execute("UPDATE t SET a = 'new' WHERE CURRENT OF CURSOR");
    EXPECT_EQ(stored(), Texts({"one", "new", "three"}));
}

TEST_F(Positioned, AStatementWithValuesRunsOnTheRow)
{
    select();
    DorStatement statement;
    statement.create(connection, "UPDATE t SET a = ?, b = ?2 WHERE CURRENT OF CURSOR;", true);
    EXPECT_EQ(statement.paramCount(), 2);
    for (const std::string value : {"first'; --", "second"}) {
        BindMap binds;
        binds.bind(1, {TypeChar, value.data(), value.size(), 0});
        binds.bind(2, {TypeByte, "\x01\x02", 2, 0});
        cursor.execute(statement, &binds);
        EXPECT_EQ(text(cursor, 2), value);
        EXPECT_EQ(text(cursor, 3), "0102");
    }
    EXPECT_EQ(stored(), Texts({"one", "second", "three"}));
}

TEST_F(Positioned, WhatTheEngineMadeOfTheRowIsSeen)
{
    change("CREATE TRIGGER up AFTER UPDATE OF a ON t BEGIN UPDATE t SET n = n + 1, u = upper(new.a)"
           " WHERE i = new.i; END");
    select();
    execute(setNew);
    EXPECT_EQ(text(cursor, 4), "NEW");
    EXPECT_EQ(text(cursor, 6), "8");
    execute(setNew); // the guard goes by what was read anew
    EXPECT_EQ(text(cursor, 6), "9");
}

TEST_F(Positioned, AChangedKeyIsFollowed)
{
    select();
    execute("UPDATE t SET i = 20 WHERE CURRENT OF CURSOR");
    execute("UPDATE t SET a = 'moved' WHERE CURRENT OF CURSOR");
    EXPECT_EQ(text(cursor, 1), "20");
    EXPECT_EQ(stored(), Texts({"one", "three", "moved"}));
}

TEST_F(Positioned, ARowThatAnotherSessionChangedIsLeftAlone)
{
    select();
    stranger.execute("UPDATE t SET a = 'theirs' WHERE i = 2");
    EXPECT_EQ(codeOfExecute(setNew), CodeRowChanged);
    EXPECT_EQ(codeOfExecute(deleteRow), CodeRowChanged);
    EXPECT_EQ(cursor.changedRowCount(), 0);
    EXPECT_EQ(stored(), Texts({"one", "theirs", "three"}));
    cursor.fetch(FetchAbsolute, 2); // reads again, so the next change is of what is seen
    EXPECT_EQ(text(cursor, 2), "theirs");
    execute(setNew);
    EXPECT_EQ(stored(), Texts({"one", "new", "three"}));
}

TEST_F(Positioned, ARowThatAnotherSessionDeletedIsGone)
{
    select();
    stranger.execute("DELETE FROM t WHERE i = 2");
    EXPECT_EQ(codeOfExecute(setNew), CodeRowGone);
    EXPECT_EQ(codeOfExecute(deleteRow), CodeRowGone);
    EXPECT_EQ(stored(), Texts({"one", "three"}));
}

TEST_F(Positioned, ARowThatGotTheKeyOfADeletedOneIsLeftAlone)
{
    for (const char* sql : {setNew, deleteRow}) {
        select();
        stranger.execute("DELETE FROM t WHERE i = 2");
        stranger.execute("INSERT INTO t(i, a) VALUES (2, 'reused')");
        EXPECT_EQ(codeOfExecute(sql), CodeRowChanged);
        EXPECT_EQ(stored(), Texts({"one", "reused", "three"}));
        stranger.execute("UPDATE t SET a = 'two' WHERE i = 2");
    }
}

TEST_F(Positioned, ASecondChangeOfAnotherSessionMeetsTheFirst)
{
    select();
    stranger.execute("SELECT * FROM t ORDER BY i");
    stranger.fetch(FetchAbsolute, 2);
    execute(setNew);
    EXPECT_EQ(codeOf([&] { stranger.execute(setNew); }), CodeRowChanged);
    EXPECT_EQ(codeOf([&] { stranger.execute(deleteRow); }), CodeRowChanged);
    execute(deleteRow);
    EXPECT_EQ(codeOf([&] { stranger.execute(setNew); }), CodeRowGone);
    EXPECT_EQ(stored(), Texts({"one", "three"}));
}

TEST_F(Positioned, AnOwnChangeDoesNotReadOtherRowsAnew)
{
    select();
    stranger.execute("UPDATE t SET a = 'theirs' WHERE i = 3");
    execute(setNew);
    cursor.fetch(FetchAbsolute, 3);
    EXPECT_EQ(text(cursor, 2), "three"); // as it was shown, so the change is refused
    EXPECT_EQ(codeOfExecute(setNew), CodeRowChanged);
    EXPECT_EQ(stored(), Texts({"one", "new", "theirs"}));
}

TEST_F(Positioned, AChangeOfTheSameSessionDoesNotReadTheShownRowAnew)
{
    select();
    change("UPDATE t SET a = 'mine' WHERE i = 2");
    EXPECT_EQ(text(cursor, 2), "two");
    EXPECT_EQ(codeOfExecute(setNew), CodeRowChanged);
    cursor.fetch(FetchAbsolute, 2);
    EXPECT_EQ(text(cursor, 2), "mine");
}

TEST_F(Positioned, LongValuesGuardTheRowToo)
{
    change(
        "UPDATE t SET b = zeroblob(100000) || x'01', u = printf('%.*c', 90000, 'u') WHERE i = 2");
    select();
    execute(setNew);
    EXPECT_EQ(text(cursor, 2), "new");
    stranger.execute("UPDATE t SET b = x'07' || substr(b, 2) WHERE i = 2");
    EXPECT_EQ(codeOfExecute("UPDATE t SET a='again' WHERE CURRENT OF CURSOR"), CodeRowChanged);
    cursor.fetch(FetchAbsolute, 2);
    stranger.execute("UPDATE t SET u = u || 'u' WHERE i = 2");
    EXPECT_EQ(codeOfExecute("UPDATE t SET a='again' WHERE CURRENT OF CURSOR"), CodeRowChanged);
}

TEST_F(Positioned, AWideRowIsGuardedByAllItsColumns)
{
    std::string columns;
    for (int i = 0; i < 1500; ++i)
        columns += (i ? ", c" : "c") + std::to_string(i);
    execute("CREATE TABLE wide(" + columns + ")");
    execute("INSERT INTO wide(c0, c1499) VALUES ('first', 'last')");
    execute("SELECT * FROM wide");
    cursor.fetch(FetchFirst, 0);
    execute("UPDATE wide SET c0 = 'x' WHERE CURRENT OF CURSOR");
    EXPECT_EQ(text(cursor, 1), "x");
    stranger.execute("UPDATE wide SET c1499 = 'theirs'");
    EXPECT_EQ(codeOfExecute("UPDATE wide SET c0 = 'y' WHERE CURRENT OF CURSOR"), CodeRowChanged);
}

TEST_F(Positioned, ARefusedChangeLeavesRowAndAnswer)
{
    change("CREATE UNIQUE INDEX t_a ON t(a)");
    select();
    EXPECT_EQ(codeOfExecute("UPDATE t SET a='one' WHERE CURRENT OF CURSOR"), CodeRefused);
    EXPECT_EQ(codeOfExecute("UPDATE t SET nowhere=1 WHERE CURRENT OF CURSOR"), CodeSqlText);
    EXPECT_EQ(codeOfExecute("UPDATE t SET b=Hex('0') WHERE CURRENT OF CURSOR"), CodeSqlText);
    EXPECT_EQ(text(cursor, 2), "two");
    expectUnchanged();
}

TEST_F(Positioned, TheTextsOfADatasetAreTranslated)
{
    select();
    execute("UPDATE \"main\".\"t\" SET \"b\"=Hex('00FF') WHERE CURRENT OF CURSOR;");
    EXPECT_EQ(text(cursor, 3), "00FF");
    execute("UPDATE \"main\".\"t\" SET \"u\"=Hex('4F0427003DD800DE') WHERE CURRENT OF CURSOR;");
    EXPECT_EQ(text(cursor, 4), "\xD1\x8F'\xF0\x9F\x98\x80");
    execute("UPDATE \"main\".\"t\" SET \"d\"='03/04/2005:06:07:08.09' WHERE CURRENT OF CURSOR;");
    EXPECT_EQ(text(cursor, 5), "2005-03-04 06:07:08.09");
    execute("UPDATE \"main\".\"t\" SET \"n\"=NULL WHERE CURRENT OF CURSOR;");
    EXPECT_EQ(text(cursor, 6), "NULL");
    execute("UPDATE \"main\".\"t\" SET \"n\"=DEFAULT WHERE CURRENT OF CURSOR;");
    EXPECT_EQ(text(cursor, 6), "7");
}

TEST_F(Positioned, HostileValuesAreStoredAsTheyAre)
{
    select();
    for (const std::string value :
         {"'; DROP TABLE t; --", "WHERE CURRENT OF CURSOR;", "/* */", "--", "\\", "\\'", "$$",
          "$a$ b $a$", "\"main\".\"t\"", "Hex('41')", "EXTFILE('x')", "DEFAULT", "'' ''",
          "03/04/2005:06:07:08.09", "\xF4\x8F\xBF\xBD \xE2\x82\xAC \xC3\xBF \x7F", "?1 :a @b $c",
          "%s%n%ls", "\n\r\t"}) {
        std::string literal;
        for (const char c : value)
            literal += c == '\'' ? std::string("''") : std::string(1, c);
        execute("UPDATE \"main\".\"t\" SET \"a\"='" + literal + "' WHERE CURRENT OF CURSOR;");
        EXPECT_EQ(text(cursor, 2), value);
        EXPECT_EQ(stored(), Texts({"one", value, "three"}));
    }
}

TEST_F(Positioned, AHandlerIsToldTheEndAndTheAnswerComesBack)
{
    select();
    Waiter waiter;
    cursor.execute(setNew, &waiter);
    waiter.wait();
    EXPECT_EQ(waiter.status, 0);
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(cursor.position(), 2);
    EXPECT_EQ(text(cursor, 2), "new");
    Waiter second;
    cursor.execute(deleteRow, &second);
    second.wait();
    EXPECT_EQ(codeOf([&] { text(cursor, 2); }), CodeRowGone);
    cursor.fetch(FetchFirst, 0);
    Waiter third;
    stranger.execute("UPDATE t SET a = 'theirs' WHERE i = 1");
    cursor.execute(setNew, &third);
    third.wait();
    EXPECT_EQ(third.status, CodeRowChanged);
    EXPECT_EQ(cursor.lastError().code(), CodeRowChanged);
    EXPECT_EQ(text(cursor, 2), "one");
    EXPECT_EQ(third.calls, 1);
}

TEST_F(Positioned, AChangeThatWaitsForALockIsCancelledByClose)
{
    select();
    stranger.execute("BEGIN IMMEDIATE");
    Waiter waiter;
    cursor.execute(setNew, &waiter);
    EXPECT_EQ(codeOf([&] { cursor.position(); }), CodeBusy);
    cursor.close();
    EXPECT_EQ(cursor.columnCount(), 0);
    waiter.wait(); // the lock is still held
    EXPECT_EQ(waiter.status, CodeCancelled);
    stranger.execute("ROLLBACK");
    expectUnchanged();
}

TEST_F(Positioned, AKeyOfAnyLengthThatAChangeMadeIsKnownWhole)
{
    execute("CREATE TABLE w(k TEXT PRIMARY KEY, v TEXT) WITHOUT ROWID");
    execute("INSERT INTO w VALUES('short', 'old')");
    execute("SELECT k, v FROM w");
    cursor.fetch(FetchFirst, 0);
    const std::string key(100'000, 'k'); // longer than what a row keeps of a value
    execute("UPDATE w SET k = '" + key + "' WHERE CURRENT OF CURSOR");
    EXPECT_EQ(cursor.getBlobLen(1), 100'000);
    EXPECT_EQ(codeOfExecute("UPDATE w SET v = 'new' WHERE CURRENT OF CURSOR"), 0);
    EXPECT_EQ(text(cursor, 2), "new");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchFirst, 0); }), 0);
    stranger.execute("SELECT length(k), v FROM w");
    EXPECT_EQ(rows(stranger), Texts({"100000|new"}));
}
