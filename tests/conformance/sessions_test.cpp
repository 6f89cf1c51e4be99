// Several sessions on one database, transactions, read-only sessions, errors.
#include "support.h"

using namespace Conformance;

namespace {

class Sessions : public OnEngine {};

// Replaces the text of the current row; the code of the error.
int edit(DorCursor& cursor, int column, const std::string& value)
{
    return codeOf([&] {
        cursor.clearBlob(column);
        cursor.appendBlob(column, value.data(), value.size());
        cursor.getBlobLen(column); // writes
    });
}

} // namespace

ON_BOTH_ENGINES(Sessions);

TEST_P(Sessions, WhoeverComesSecondIsToldOfTheFirst)
{
    fill(6);
    Client other(place);
    const char* const select = "SELECT id, s FROM n ORDER BY id";
    execute(select);
    other.execute(select);
    cursor.fetch(FetchFirst, 0);
    other.cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(edit(cursor, 2, "mine"), 0);
    EXPECT_EQ(edit(other.cursor, 2, "yours"), CodeRowChanged);
    cursor.fetch(FetchNext, 0);
    other.cursor.fetch(FetchNext, 0);
    change("DELETE FROM n WHERE id = 2");
    EXPECT_EQ(edit(other.cursor, 2, "yours"), CodeRowGone);
    cursor.fetch(FetchNext, 0);
    other.cursor.fetch(FetchNext, 0);
    EXPECT_EQ(edit(other.cursor, 2, "yours"), 0);
    EXPECT_EQ(edit(cursor, 2, "mine"), CodeRowChanged);
    EXPECT_EQ(own.answer("SELECT s FROM n WHERE id < 4 ORDER BY id"),
              (std::vector<std::string>{"mine", "yours"}));
}

TEST_P(Sessions, ARowThatWasDeletedAndMadeAnewIsNotOverwritten)
{
    fill(3);
    execute("SELECT id, s FROM n");
    cursor.fetch(FetchAbsolute, 2);
    Client other(place);
    other.execute("DELETE FROM n WHERE id = 2");
    other.execute("INSERT INTO n VALUES(2, 'another row')");
    EXPECT_EQ(edit(cursor, 2, "mine"), CodeRowChanged);
    EXPECT_EQ(other.value("SELECT s FROM n WHERE id = 2"), "another row");
}

TEST_P(Sessions, ARefusedEditIsTakenAgainAfterReadingAnew)
{
    fill(3);
    execute("SELECT id, s FROM n");
    cursor.fetch(FetchAbsolute, 2);
    Client other(place);
    other.execute("UPDATE n SET s = 'theirs' WHERE id = 2");
    EXPECT_EQ(edit(cursor, 2, "mine"), CodeRowChanged);
    execute("SELECT id, s FROM n");
    cursor.fetch(FetchAbsolute, 2);
    EXPECT_EQ(text(cursor, 2), "theirs");
    EXPECT_EQ(edit(cursor, 2, "mine"), 0);
    EXPECT_EQ(edit(cursor, 2, "mine again"), 0);
    EXPECT_EQ(other.value("SELECT s FROM n WHERE id = 2"), "mine again");
}

TEST_P(Sessions, AnOpenCursorHoldsNoLock)
{
    fill(3000);
    execute("SELECT id, s FROM n");
    for (int i = 0; i < 700; ++i) // also while the next rows are asked for ahead
        cursor.fetch(FetchNext, 0);
    Client other(place, "timeout=500");
    other.execute("UPDATE n SET s = 'changed' WHERE id > 2000");
    other.execute("ALTER TABLE n ADD COLUMN more INTEGER");
    const int read = codeOf([&] { cursor.fetch(FetchAbsolute, 2500); });
    EXPECT_TRUE(read == 0 || read == CodeStructureChanged) << read;
    if (read == 0) {
        EXPECT_EQ(text(cursor, 2), "changed");
    }
    other.execute("DROP TABLE n");
    EXPECT_NE(codeOf([&] { cursor.fetch(FetchAbsolute, 1); }), 0);
    EXPECT_EQ(own.value("SELECT 7"), "7");
}

TEST_P(Sessions, AColumnThatWasReplacedIsNotReadAsTheOldOne)
{
    fill(3);
    execute("SELECT * FROM n");
    Client other(place);
    other.execute("ALTER TABLE n RENAME COLUMN s TO other");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchFirst, 0); }), CodeStructureChanged);
    execute("SELECT * FROM n");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(text(cursor, 2), "row 1");
}

TEST_P(Sessions, AChangeOfTheOwnSessionIsSeenAtOnce)
{
    fill(2000);
    execute("SELECT id, s FROM n");
    for (int i = 0; i < 192; ++i) // the end of a block: the next has been asked for
        cursor.fetch(FetchNext, 0);
    change("UPDATE n SET s = 'changed'");
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(text(cursor, 2), "changed");
}

TEST_P(Sessions, ATransactionIsKeptOrTakenBack)
{
    fill(2);
    EXPECT_FALSE(connection.inTransaction());
    execute("BEGIN");
    EXPECT_TRUE(connection.inTransaction());
    execute("DELETE FROM n");
    Client other(place);
    EXPECT_EQ(other.value("SELECT count(*) FROM n"), "2");
    execute("ROLLBACK");
    EXPECT_FALSE(connection.inTransaction());
    EXPECT_EQ(own.value("SELECT count(*) FROM n"), "2");
    execute("BEGIN");
    execute("DELETE FROM n WHERE id = 1");
    execute("COMMIT");
    EXPECT_EQ(other.value("SELECT count(*) FROM n"), "1");
}

TEST_P(Sessions, LookingOpensNoTransaction)
{
    fill(500);
    execute("SELECT id, s FROM n");
    for (int i = 0; i < 300; ++i)
        cursor.fetch(FetchNext, 0);
    EXPECT_FALSE(connection.inTransaction());
}

TEST_P(Sessions, EditsInsideATransactionGoWithIt)
{
    fill(3);
    execute("BEGIN");
    execute("SELECT id, s FROM n");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(edit(cursor, 2, "one"), 0);
    EXPECT_EQ(edit(cursor, 2, "two"), 0);
    EXPECT_EQ(own.value("SELECT s FROM n WHERE id = 1"), "two");
    execute("ROLLBACK");
    EXPECT_EQ(own.value("SELECT s FROM n WHERE id = 1"), "row 1");
}

TEST_P(Sessions, ARefusedEditLeavesTheTransactionUsable)
{
    execute("CREATE TABLE u(id INTEGER PRIMARY KEY, s VARCHAR(20) NOT NULL UNIQUE)");
    execute("INSERT INTO u VALUES(1, 'a'), (2, 'b')");
    execute("BEGIN");
    change("INSERT INTO u VALUES(3, 'c')");
    execute("SELECT id, s FROM u ORDER BY id");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(edit(cursor, 2, "b"), CodeRefused);
    EXPECT_EQ(edit(cursor, 2, "d"), 0);
    execute("COMMIT");
    EXPECT_EQ(own.answer("SELECT s FROM u ORDER BY id"), (std::vector<std::string>{"d", "b", "c"}));
}

TEST_P(Sessions, ASessionForReadingRefusesChanges)
{
    fill(3);
    for (const bool byMode : {true, false}) {
        Client reader(place, byMode ? "" : "readonly", byMode ? ModeReadOnly : 0);
        EXPECT_EQ(reader.value("SELECT count(*) FROM n"), "3");
        EXPECT_EQ(codeOf([&] { reader.execute("DELETE FROM n"); }), CodeRefused);
        EXPECT_EQ(codeOf([&] { reader.execute("CREATE TABLE no(a INTEGER)"); }), CodeRefused);
        EXPECT_NE(reader.connection.mode(true) & ModeReadOnly, 0);
        EXPECT_TRUE(reader.connection.info().readOnly);
        reader.execute("SELECT id, s FROM n");
        reader.cursor.fetch(FetchFirst, 0);
        EXPECT_EQ(edit(reader.cursor, 2, "x"), CodeRefused);
    }
    EXPECT_EQ(connection.mode(true) & ModeReadOnly, 0);
}

TEST_P(Sessions, AttachSharesTheSession)
{
    execute("BEGIN");
    DorConnect second;
    second.attach(connection.channel(), false);
    EXPECT_TRUE(second.inTransaction());
    execute("ROLLBACK");
    EXPECT_FALSE(second.inTransaction());
    EXPECT_EQ(second.info().engine, isServer() ? "PostgreSQL" : "SQLite");
    EXPECT_FALSE(second.info().version.empty());
}

TEST_P(Sessions, ConstraintsAreRefusalsThatNeverEndTheSession)
{
    execute("CREATE TABLE p(id INTEGER PRIMARY KEY, a INTEGER NOT NULL UNIQUE, b INTEGER "
            "CHECK (b > 0))");
    execute("INSERT INTO p VALUES(1, 1, 1)");
    for (const char* sql : {"INSERT INTO p VALUES(1, 2, 1)", "INSERT INTO p VALUES(2, 1, 1)",
                            "INSERT INTO p VALUES(2, NULL, 1)", "INSERT INTO p VALUES(2, 2, 0)"}) {
        try {
            execute(sql);
            ADD_FAILURE() << sql;
        } catch (const DorX& x) {
            EXPECT_EQ(x.code(), CodeRefused) << sql;
            EXPECT_EQ(x.systemCode(), 0) << sql;
            EXPECT_NE(x.engineCode(), 0) << sql;
            EXPECT_STRNE(x.detail(), "") << sql;
        }
    }
    EXPECT_EQ(own.value("SELECT count(*) FROM p"), "1");
}

TEST_P(Sessions, AWrongTextIsToldWithItsPlace)
{
    fill(1);
    try {
        execute("SELECT '\xD0\x96', ids FROM n");
        FAIL();
    } catch (const DorX& x) {
        EXPECT_EQ(x.code(), CodeSqlText);
        EXPECT_EQ(x.position(), 14);
        EXPECT_NE(std::string(x.what()).find("ids"), std::string::npos);
    }
    EXPECT_EQ(codeOf([&] { execute("SELEC 1"); }), CodeSqlText);
    EXPECT_EQ(codeOf([&] { execute("SELECT * FROM nowhere"); }), CodeSqlText);
    EXPECT_EQ(codeOf([&] { execute("SELECT 1; SELECT 2"); }), CodeSeveralStatements);
    EXPECT_EQ(codeOf([&] { execute("DELETE FROM n; DELETE FROM n"); }), CodeSeveralStatements);
    EXPECT_EQ(own.value("SELECT count(*) FROM n;"), "1");
}

TEST_P(Sessions, ATextWithoutAStatementDoesNothing)
{
    fill(1);
    for (const char* sql : {"", " \n\t", ";", " ; ;", "-- only said", "/* only said */", "--\n;"}) {
        execute("SELECT id FROM n");
        execute(sql);
        EXPECT_EQ(cursor.columnCount(), 0) << sql;
        EXPECT_EQ(cursor.changedRowCount(), 0) << sql;
        Waiter waiter;
        cursor.execute(sql, &waiter);
        ASSERT_TRUE(waiter.wait());
        EXPECT_EQ(waiter.status, 0) << sql;
    }
    cursor.execute(static_cast<const char*>(nullptr));
    EXPECT_EQ(cursor.columnCount(), 0);
}

TEST_P(Sessions, HalfATextIsRefusedAndNothingIsExecuted)
{
    fill(2);
    for (const bool inside : {false, true}) {
        for (const char* sql :
             {"DELETE", "DELETE FROM", "DELETE FROM n WHERE", "DELETE FROM n WHERE id IN (1",
              "DELETE FROM n WHERE s = 'row", "DELETE FROM \"n", "UPDATE n SET",
              "UPDATE n SET s =", "INSERT INTO n VALUES(3, 'a'", "INSERT INTO n(id,", "SELECT (",
              "SELECT 'a", "UPDATE n SET s = Hex('41", "UPDATE n SET s = Hex(",
              "DELETE FROM n WHERE CURRENT OF"}) {
            if (inside)
                change("BEGIN");
            EXPECT_EQ(codeOf([&] { execute(sql); }), CodeSqlText) << sql;
            if (inside)
                change("ROLLBACK");
            EXPECT_FALSE(connection.inTransaction()) << sql;
        }
    }
    EXPECT_EQ(own.answer("SELECT s FROM n ORDER BY id"),
              (std::vector<std::string>{"row 1", "row 2"}));
}

TEST_P(Sessions, ADatabaseThatTakesNoChangesRefusesEveryOne)
{
    fill(3);
    DorConnect reading; // of a database that is so by itself, not by the client's wish
    const std::string text = isServer() ? place.database() + "\\ -cdefault_transaction_read_only=on"
                                        : "sqlite:" + place.database() + "?mode=ro";
    reading.createCS(isServer() ? server().at("user").c_str() : "",
                     isServer() ? server().at("password").c_str() : "", text.c_str(), "", 0, false,
                     false);
    DorCursor reader;
    reader.create(reading, 0, nullptr, true);
    const auto code = [&](const char* sql) { return codeOf([&] { reader.execute(sql); }); };
    EXPECT_EQ(code("DELETE FROM n"), CodeRefused);
    EXPECT_EQ(code("CREATE TABLE no(a INTEGER)"), CodeRefused);
    reader.execute("SELECT id, s FROM n");
    reader.fetch(FetchFirst, 0);
    EXPECT_EQ(code("UPDATE n SET s='x' WHERE CURRENT OF CURSOR;"), CodeRefused);
    EXPECT_EQ(code("DELETE FROM n  WHERE CURRENT OF CURSOR;"), CodeRefused);
    EXPECT_EQ(edit(reader, 2, "x"), CodeRefused);
    EXPECT_EQ(DorTest::text(reader, 2), "row 1");
    EXPECT_EQ(own.value("SELECT count(*) FROM n WHERE s LIKE 'row %'"), "3");
}

TEST_P(Sessions, ALockOfAnotherSessionIsToldAfterTheTime)
{
    fill(2);
    Client other(place);
    other.execute("BEGIN");
    other.execute("UPDATE n SET s = 'theirs' WHERE id = 1");
    Client impatient(place, "timeout=100");
    const Stopwatch watch;
    EXPECT_EQ(codeOf([&] { impatient.execute("UPDATE n SET s = 'mine' WHERE id = 1"); }),
              CodeLocked);
    EXPECT_LT(watch.ms(), 2000);
    other.execute("COMMIT");
    impatient.execute("UPDATE n SET s = 'mine' WHERE id = 1");
    EXPECT_EQ(own.value("SELECT s FROM n WHERE id = 1"), "mine");
}
