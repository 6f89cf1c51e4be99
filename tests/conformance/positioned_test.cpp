// Statements for the row that a cursor stands on, as datasets write them.
#include <random>

#include <dorcpp/monitor.h>
#include <oviapi/text.h>

#include "support.h"

using namespace Conformance;

namespace {

using Texts = std::vector<std::string>;

// The table's name in the texts of a dataset.
std::string tableName(const DorCursor& cursor)
{
    t_ParamDesc d;
    cursor.answerDesc(1, d);
    return '"' + std::string(d.owner) + "\".\"" + d.table + '"';
}

std::string setText(const DorCursor& cursor, const std::string& column, const std::string& value)
{
    return "UPDATE " + tableName(cursor) + " SET \"" + column + "\"=" + value +
           " WHERE CURRENT OF CURSOR;";
}

std::string deleteText(const DorCursor& cursor)
{
    return "DELETE FROM " + tableName(cursor) + "  WHERE CURRENT OF CURSOR;";
}

std::string literal(const std::string& value)
{
    std::string text = "'";
    for (const char c : value)
        text += c == '\'' ? std::string("''") : std::string(1, c);
    return text + '\'';
}

class RowStatements : public OnEngine {
protected:
    RowStatements()
        : stranger(place)
    {
        execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a VARCHAR(400), b " + bytesType() +
                ", d TIMESTAMP, n INTEGER DEFAULT 7)");
        execute("INSERT INTO t(id, a) VALUES (1, 'one'), (2, 'two'), (3, 'three')");
        stand(cursor);
    }
    // Reads the table and stands on the second row.
    static void stand(DorCursor& c, const char* sql = "SELECT id, a, b, d, n FROM t ORDER BY id")
    {
        c.execute(sql);
        c.fetch(FetchAbsolute, 2);
    }
    int set(const std::string& column, const std::string& value)
    {
        return codeOfExecute(setText(cursor, column, value));
    }
    int codeOfExecute(const std::string& sql)
    {
        return codeOf([&] { execute(sql); });
    }
    // What another session sees.
    Texts stored(const std::string& sql = "SELECT a FROM t ORDER BY id")
    {
        return Client(place).answer(sql);
    }
    void expectUnchanged() { EXPECT_EQ(stored(), (Texts{"one", "two", "three"})); }
    // Lets the engine change a row again that a statement has just changed.
    void makeTrigger()
    {
        const std::string action =
            "UPDATE t SET n = n + 1, d = '2001-02-03 04:05:06' WHERE id = NEW.id; ";
        const std::string trigger = "CREATE TRIGGER up AFTER UPDATE OF a ON t";
        if (!isServer()) {
            change(trigger + " BEGIN " + action + "END");
            return;
        }
        change("CREATE FUNCTION up() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN " + action +
               "RETURN NULL; END $$");
        change(trigger + " FOR EACH ROW EXECUTE FUNCTION up()");
    }

    Client stranger;
};

// Counts the readings of rows while it lives.
class Readings {
public:
    Readings()
    {
        setMonitor([this](const MonitorRecord& record) {
            m_count += record.purpose == MonitorPurpose::Rows ? 1 : 0;
        });
    }
    ~Readings() { setMonitor({}); }
    Readings(const Readings&) = delete;
    Readings& operator=(const Readings&) = delete;
    int count() const { return m_count; }

private:
    std::atomic<int> m_count = 0;
};

// One prepared statement that gives a column of the cursor's row a value.
class PreparedSet {
public:
    PreparedSet(DorConnect& connection, DorCursor& cursor, const std::string& column)
        : m_cursor(cursor)
    {
        m_statement.create(connection, setText(cursor, column, "?").c_str(), true);
    }
    int operator()(const std::string& value)
    {
        BindMap binds;
        binds.bind(1, {TypeVarchar, value.data(), value.size(), 0});
        return execute(binds);
    }
    int operator()(int64_t value)
    {
        BindMap binds;
        binds.bind(1, {TypeBigint, &value, sizeof value, 0});
        return execute(binds);
    }

private:
    int execute(const BindMap& binds)
    {
        return codeOf([&] { m_cursor.execute(m_statement, &binds); });
    }
    DorCursor& m_cursor;
    DorStatement m_statement;
};

Texts rowOf(DorCursor& cursor)
{
    Texts row;
    for (int i = 1; i <= cursor.columnCount(); ++i)
        row.push_back(text(cursor, i));
    return row;
}

// Changes of rows by prepared statements, which take the row as they leave it.
class PreparedChanges : public RowStatements {
protected:
    // The row that the cursor shows is the one that a fresh cursor reads.
    void expectShown(const char* sql)
    {
        Client fresh(place);
        stand(fresh.cursor, sql);
        EXPECT_EQ(rowOf(cursor), rowOf(fresh.cursor)) << sql;
    }
};

} // namespace

ON_BOTH_ENGINES(RowStatements);
ON_BOTH_ENGINES(PreparedChanges);

TEST_P(RowStatements, AnUpdateChangesTheRowOfTheCursorAlone)
{
    EXPECT_EQ(tableName(cursor), '"' + place.schema() + "\".\"t\"");
    EXPECT_EQ(set("a", "'O''Brien'"), 0);
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(cursor.position(), 2);
    EXPECT_EQ(cursor.selectRowCount(), 3);
    EXPECT_EQ(text(cursor, 2), "O'Brien");
    EXPECT_EQ(stored(), (Texts{"one", "O'Brien", "three"}));
}

TEST_P(RowStatements, ADeletedRowIsAHoleThatNoStatementHits)
{
    EXPECT_EQ(codeOfExecute(deleteText(cursor)), 0);
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(codeOfExecute(deleteText(cursor)), CodeRowGone);
    EXPECT_EQ(set("a", "'new'"), CodeRowGone);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 2); }), CodeRowGone);
    EXPECT_EQ(set("a", "'new'"), CodeRowGone);
    EXPECT_EQ(stored(), (Texts{"one", "three"}));
    stranger.execute("DELETE FROM t WHERE id = 3");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), 0); // as the block was read
    EXPECT_EQ(codeOfExecute(deleteText(cursor)), CodeRowGone);
    EXPECT_EQ(stored(), Texts{"one"});
}

TEST_P(RowStatements, HexIsBytesOrTextByItsColumn)
{
    EXPECT_EQ(set("b", "Hex('00FF275C')"), 0);
    EXPECT_EQ(text(cursor, 3), "00FF275C");
    EXPECT_EQ(set("a", "Hex('4F0427003DD800DE')"), 0);
    EXPECT_EQ(text(cursor, 2), "\xD1\x8F'\xF0\x9F\x98\x80");
    const std::string name = tableName(cursor);
    change("insert into " + name + " (\"id\",\"a\",\"b\",\"d\",\"n\") values (4,Hex('41002700')," +
           "Hex('5C00'),'03/04/2005:06:07:08.09',DEFAULT)");
    EXPECT_EQ(stored("SELECT id, a, b, d, n FROM t WHERE id IN (2, 4) ORDER BY id"),
              (Texts{"2|\xD1\x8F'\xF0\x9F\x98\x80|00FF275C|NULL|7",
                     "4|A'|5C00|2005-03-04 06:07:08.09|7"}));
    for (const char* wrong : {"Hex('0')", "Hex('0G')"})
        EXPECT_EQ(set("b", wrong), CodeSqlText) << wrong;
    EXPECT_EQ(text(cursor, 3), "00FF275C");
}

TEST_P(RowStatements, DefaultAndNullAreWritten)
{
    execute("CREATE TABLE w(n INTEGER DEFAULT 7, s VARCHAR(9) DEFAULT 'given')");
    change("insert into \"" + place.schema() + "\".\"w\" (\"n\",\"s\") values (DEFAULT,NULL)");
    change("insert into \"" + place.schema() + "\".\"w\" (\"n\",\"s\") values (1,DEFAULT)");
    change("insert into \"" + place.schema() + "\".\"w\" (\"n\",\"s\") values (DEFAULT,DEFAULT)");
    EXPECT_EQ(stored("SELECT n, s FROM w ORDER BY n, s DESC"),
              (isServer() ? Texts{"1|given", "7|NULL", "7|given"}
                          : Texts{"1|given", "7|given", "7|NULL"}));
    stand(cursor);
    EXPECT_EQ(set("n", "NULL"), 0);
    EXPECT_EQ(text(cursor, 5), "NULL");
    EXPECT_EQ(set("n", "DEFAULT"), 0);
    EXPECT_EQ(text(cursor, 5), "7");
    EXPECT_EQ(set("a", "DEFAULT"), 0); // a column without one
    EXPECT_EQ(stored(), (Texts{"one", "NULL", "three"}));
}

TEST_P(RowStatements, DatesKeepTheirMicroseconds)
{
    const std::pair<const char*, const char*> dates[] = {
        {"03/04/2005:06:07:08.000001", "2005-03-04 06:07:08.000001"},
        {"12/31/1969:23:59:59.999999", "1969-12-31 23:59:59.999999"},
        {"02/29/2004:00:00:00.50", "2004-02-29 00:00:00.5"},
        {"01/01/0001:00:00:00.00", "0001-01-01 00:00:00"},
        {"12/31/9999:23:59:59.999999", "9999-12-31 23:59:59.999999"},
    };
    for (const auto& [written, read] : dates) {
        EXPECT_EQ(set("d", literal(written)), 0) << written;
        EXPECT_EQ(text(cursor, 4), read);
        EXPECT_EQ(stored("SELECT d FROM t WHERE id = 2"), Texts{read});
    }
    for (const char* wrong : {"02/30/2005:00:00:00.00", "13/01/2005:00:00:00.00",
                              "01/01/2005:24:00:00.01", "02/29/2005:00:00:00.00"})
        EXPECT_EQ(set("d", literal(wrong)), CodeSqlText) << wrong;
    EXPECT_EQ(stored("SELECT d FROM t WHERE id = 2"), Texts{dates[4].second});
}

TEST_P(RowStatements, HostileTextsAreStoredAsTheyAre)
{
    for (const std::string value : {"O'Brien",
                                    "'; DROP TABLE t; --",
                                    "WHERE CURRENT OF CURSOR;",
                                    "' WHERE CURRENT OF CURSOR",
                                    "/* */",
                                    "/*",
                                    "--",
                                    "\\",
                                    "\\'",
                                    "$$",
                                    "$a$ b $a$",
                                    "\"t\"",
                                    "Hex('41')",
                                    "EXTFILE('x')",
                                    "DEFAULT",
                                    "'' ''",
                                    "'",
                                    "03/04/2005:06:07:08.09",
                                    "?",
                                    "??",
                                    "?1 :a @b $1",
                                    "%s%n%ls",
                                    "\n\r\t",
                                    "E'\\n'",
                                    "",
                                    " ",
                                    "NULL"}) {
        EXPECT_EQ(set("a", literal(value)), 0) << value;
        EXPECT_EQ(text(cursor, 2), value);
        EXPECT_EQ(stored(), (Texts{"one", value, "three"}));
    }
}

TEST_P(RowStatements, TextsOfEveryPlaneAreStoredAsTheyAre)
{
    std::mt19937 random(20261121);
    RecordProperty("seed", 20261121);
    const std::wstring odd = L"'\"\\$?;%_-/*:@\n\r\t {}[]()\x7F\u00E9\u0416\u200F\u202E\u0301"
                             L"\uFEFF\uFFFD\uFFFF\U0001F600\U0010FFFF";
    const auto any = [&](size_t count) { return random() % count; };
    for (int i = 0; i < 200; ++i) {
        std::wstring wide;
        for (size_t n = any(30); n > 0; --n) {
            const auto c = static_cast<wchar_t>(1 + any(0x10FFFF));
            const bool surrogate = c >= 0xD800 && c < 0xE000;
            wide += surrogate || any(2) == 0 ? odd[any(odd.size())] : c;
        }
        const std::string value = OviAPI::wideToUtf8(wide);
        ASSERT_EQ(set("a", literal(value)), 0) << value;
        ASSERT_EQ(text(cursor, 2), value);
        stranger.execute("SELECT a FROM t WHERE id = 2");
        stranger.cursor.fetch(FetchFirst, 0);
        ASSERT_EQ(text(stranger.cursor, 1), value);
    }
    EXPECT_EQ(stored("SELECT a FROM t WHERE id <> 2 ORDER BY id"), (Texts{"one", "three"}));
}

TEST_P(RowStatements, OfTwoSessionsTheSecondIsRefusedInEveryOrder)
{
    const struct {
        bool firstDeletes;
        bool secondDeletes;
        int code;
    } orders[] = {{false, false, CodeRowChanged},
                  {false, true, CodeRowChanged},
                  {true, false, CodeRowGone},
                  {true, true, CodeRowGone}};
    const auto act = [](DorCursor& who, bool deletes, const std::string& value) {
        const std::string sql = deletes ? deleteText(who) : setText(who, "a", literal(value));
        return codeOf([&] { who.execute(sql.c_str()); });
    };
    for (const auto& order : orders) {
        for (const bool ownFirst : {true, false}) {
            change("DELETE FROM t");
            change("INSERT INTO t(id, a) VALUES (1, 'one'), (2, 'two'), (3, 'three')");
            stand(cursor);
            stand(stranger.cursor);
            DorCursor& first = ownFirst ? cursor : stranger.cursor;
            DorCursor& second = ownFirst ? stranger.cursor : cursor;
            EXPECT_EQ(act(first, order.firstDeletes, "first"), 0);
            EXPECT_EQ(act(second, order.secondDeletes, "second"), order.code);
            EXPECT_EQ(second.changedRowCount(), 0);
            EXPECT_EQ(second.position(), 2);
            EXPECT_EQ(stored(), (order.firstDeletes ? Texts{"one", "three"}
                                                    : Texts{"one", "first", "three"}));
            second.fetch(FetchNext, 0); // and the cursor stays usable
            EXPECT_EQ(act(second, false, "after"), 0);
        }
    }
}

TEST_P(RowStatements, ARowThatGotTheKeyOfADeletedOneIsNeverHit)
{
    for (const bool deletes : {false, true}) {
        stand(cursor);
        stranger.execute("DELETE FROM t WHERE id = 2");
        stranger.execute("INSERT INTO t(id, a) VALUES (2, 'another')");
        EXPECT_EQ(deletes ? codeOfExecute(deleteText(cursor)) : set("a", "'mine'"), CodeRowChanged);
        EXPECT_EQ(stored(), (Texts{"one", "another", "three"}));
        stranger.execute("UPDATE t SET a = 'two' WHERE id = 2");
    }
}

TEST_P(RowStatements, ARowThatGotThePlaceOfADeletedOneIsNeverHit)
{
    execute("CREATE TABLE p(s VARCHAR(9))"); // without a key
    execute("INSERT INTO p VALUES ('one'), ('two')");
    for (const bool deletes : {false, true}) {
        stand(cursor, "SELECT s FROM p");
        ASSERT_TRUE(cursor.isKeyed());
        EXPECT_EQ(text(cursor, 1), "two");
        stranger.execute("DELETE FROM p WHERE s = 'two'");
        if (isServer())
            stranger.execute("VACUUM p"); // else the place stays taken
        stranger.execute("INSERT INTO p VALUES ('another')");
        const int code = deletes ? codeOfExecute(deleteText(cursor)) : set("s", "'mine'");
        EXPECT_EQ(code, isServer() ? CodeRowGone : CodeRowChanged);
        EXPECT_EQ(stored("SELECT s FROM p"), (Texts{"one", "another"}));
        stranger.execute("DELETE FROM p WHERE s = 'another'");
        if (isServer())
            stranger.execute("VACUUM p");
        stranger.execute("INSERT INTO p VALUES ('two')");
    }
}

TEST_P(RowStatements, NothingIsExecutedWhereNoRowIsNamed)
{
    execute("CREATE TABLE u(id INTEGER PRIMARY KEY, a VARCHAR(9))");
    execute("INSERT INTO u VALUES (2, 'two')");
    stand(cursor);
    const std::string update = setText(cursor, "a", "'new'");
    const std::string remove = deleteText(cursor);
    const std::string foreign =
        "DELETE FROM \"" + place.schema() + "\".\"u\"  WHERE CURRENT OF CURSOR;";
    const auto expectRefused = [&](int code) {
        EXPECT_EQ(codeOfExecute(update), code);
        EXPECT_EQ(codeOfExecute(remove), code);
    };
    EXPECT_EQ(codeOfExecute(foreign), CodeNotUpdatable);
    cursor.close();
    expectRefused(CodeBadCall);
    execute("SELECT id, a FROM t");
    expectRefused(CodeBadCall); // before the first fetch
    cursor.fetch(FetchLast, 0);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeNoRow);
    expectRefused(CodeNoRow);
    for (const char* spooled :
         {"SELECT DISTINCT id, a FROM t", "SELECT t.id, t.a FROM t JOIN u ON u.id <= t.id",
          "SELECT id, a FROM t UNION SELECT 9, 'x'", "SELECT max(id), max(a) FROM t"}) {
        execute(spooled);
        cursor.fetch(FetchLast, 0);
        expectRefused(CodeNotUpdatable);
        EXPECT_EQ(codeOfExecute(foreign), CodeNotUpdatable);
    }
    execute("SELECT id, a FROM u");
    cursor.fetch(FetchFirst, 0);
    expectRefused(CodeNotUpdatable);
    expectUnchanged();
    EXPECT_EQ(stored("SELECT a FROM u"), Texts{"two"});
}

TEST_P(RowStatements, FormsThatAreNotUnderstoodNeverReachTheEngine)
{
    const std::string name = tableName(cursor);
    const std::pair<std::string, int> refused[] = {
        {"UPDATE " + name + " AS x SET a='x' WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE " + name + " SET a='x' WHERE 1=1 OR 1=1 WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE " + name + " SET a='x' WHERE CURRENT OF CURSOR OR 1=1", CodeSqlText},
        {"UPDATE " + name + " SET a='x' WHERE CURRENT OF CURSOR RETURNING a", CodeSqlText},
        {"UPDATE " + name + " SET a='x WHERE CURRENT OF CURSOR", CodeSqlText},
        {"DELETE FROM t WHERE CURRENT OF CURSOR; DELETE FROM t", CodeSeveralStatements},
        {"DELETE FROM t; DELETE FROM t WHERE CURRENT OF CURSOR", CodeSeveralStatements},
        {"SELECT * FROM t WHERE CURRENT OF CURSOR", CodeSqlText},
        {"UPDATE " + name + " SET nowhere=1 WHERE CURRENT OF CURSOR", CodeSqlText},
    };
    for (const auto& [sql, code] : refused) {
        stand(cursor);
        EXPECT_EQ(codeOfExecute(sql), code) << sql;
    }
    expectUnchanged();
}

TEST_P(RowStatements, WhatTriggersMadeOfTheRowIsShown)
{
    makeTrigger();
    EXPECT_EQ(set("a", "'new'"), 0);
    EXPECT_EQ(text(cursor, 5), "8");
    EXPECT_EQ(text(cursor, 4), "2001-02-03 04:05:06");
    EXPECT_EQ(set("a", "'newer'"), 0); // guarded by what the trigger left
    EXPECT_EQ(text(cursor, 5), "9");
    EXPECT_EQ(stored("SELECT a, n FROM t ORDER BY id"), (Texts{"one|7", "newer|9", "three|7"}));
}

TEST_P(RowStatements, RowsThatTookOverKeysOfOthersAreFoundInAnyOrder)
{
    stand(cursor, "SELECT id, a, b, d, n FROM t ORDER BY a DESC"); // two, three, one
    cursor.fetch(FetchAbsolute, 1);
    EXPECT_EQ(set("id", "50"), 0);
    cursor.fetch(FetchAbsolute, 3);
    EXPECT_EQ(set("id", "2"), 0);
    cursor.fetch(FetchAbsolute, 2);
    EXPECT_EQ(set("id", "-7"), 0);
    change("UPDATE t SET n = id"); // read again, by the new keys
    Texts read;
    for (int row = 1; row <= 3; ++row) {
        cursor.fetch(FetchAbsolute, row);
        read.push_back(text(cursor, 1) + ' ' + text(cursor, 2) + ' ' + text(cursor, 5));
    }
    EXPECT_EQ(read, (Texts{"50 two 50", "-7 three -7", "2 one 2"}));
}

TEST_P(RowStatements, ValuesComeFromParameters)
{
    DorStatement statement;
    const std::string name = tableName(cursor);
    statement.create(
        connection,
        ("UPDATE " + name + " SET a = ?, b = ?2, n = ? WHERE CURRENT OF CURSOR;").c_str(), true);
    EXPECT_EQ(statement.paramCount(), 3);
    const int64_t number = 11;
    for (const std::string value : {"first'; --", "WHERE CURRENT OF CURSOR"}) {
        BindMap binds;
        binds.bind(1, {TypeVarchar, value.data(), value.size(), 0});
        binds.bind(2, {TypeByte, "\x01\x00", 2, 0});
        binds.bind(3, {TypeBigint, &number, sizeof number, 0});
        cursor.execute(statement, &binds);
        EXPECT_EQ(text(cursor, 2), value);
        EXPECT_EQ(text(cursor, 3), "0100");
        EXPECT_EQ(stored("SELECT a, n FROM t ORDER BY id"),
                  (Texts{"one|7", value + "|11", "three|7"}));
    }
    stranger.execute("UPDATE t SET n = 12 WHERE id = 2");
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, nullptr); }), CodeRowChanged);
}

TEST_P(RowStatements, ATextWithAZeroIsStoredWholeOrNotAtAll)
{
    DorStatement statement;
    statement.create(connection, setText(cursor, "a", "?").c_str(), false);
    BindMap binds;
    binds.bind(1, {TypeVarchar, "a\0b", 3, 0});
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), isServer() ? CodeBadBind : 0);
    if (isServer()) {
        EXPECT_EQ(text(cursor, 2), "two");
        expectUnchanged();
    } else {
        EXPECT_EQ(stored("SELECT CAST(a AS BLOB) FROM t WHERE id = 2"), Texts{"610062"});
    }
}

TEST_P(RowStatements, AStatementGoesWithItsTransaction)
{
    change("BEGIN");
    EXPECT_EQ(set("a", "'inside'"), 0);
    EXPECT_EQ(set("n", "8"), 0);
    EXPECT_EQ(set("n", "DEFAULT + nowhere"), CodeSqlText); // and the transaction goes on
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(codeOfExecute(deleteText(cursor)), 0);
    EXPECT_EQ(own.connection.inTransaction(), true);
    expectUnchanged();
    change("ROLLBACK");
    expectUnchanged();
    stand(cursor);
    EXPECT_EQ(text(cursor, 2), "two");
    change("BEGIN");
    EXPECT_EQ(set("a", "'kept'"), 0);
    change("COMMIT");
    EXPECT_EQ(set("a", "'kept too'"), 0);
    EXPECT_EQ(stored(), (Texts{"one", "kept too", "three"}));
}

TEST_P(RowStatements, ALockIsToldAndWhatFollowsItDecides)
{
    Client impatient(place, "timeout=100");
    stand(impatient.cursor);
    const std::string sql = setText(impatient.cursor, "a", "'mine'");
    const auto code = [&] { return codeOf([&] { impatient.cursor.execute(sql.c_str()); }); };
    stranger.execute("BEGIN");
    stranger.execute("UPDATE t SET a = 'theirs' WHERE id = 2");
    EXPECT_EQ(code(), CodeLocked);
    stranger.execute("ROLLBACK");
    EXPECT_EQ(code(), 0);
    stranger.execute("BEGIN");
    stranger.execute("UPDATE t SET a = 'theirs' WHERE id = 2");
    EXPECT_EQ(code(), CodeLocked);
    stranger.execute("COMMIT");
    EXPECT_EQ(code(), CodeRowChanged);
    EXPECT_EQ(stored(), (Texts{"one", "theirs", "three"}));
}

TEST_P(RowStatements, AStatementThatWaitsForAnotherSessionMeetsItsChange)
{
    const std::string sql = setText(cursor, "a", "'mine'");
    for (const bool commits : {true, false}) {
        stranger.execute("BEGIN");
        stranger.execute("UPDATE t SET a = 'theirs' WHERE id = 2");
        Waiter waiter;
        cursor.execute(sql.c_str(), &waiter);
        stranger.execute(commits ? "COMMIT" : "ROLLBACK");
        ASSERT_TRUE(waiter.wait());
        EXPECT_EQ(waiter.status, commits ? CodeRowChanged : 0);
        EXPECT_EQ(stored(), (Texts{"one", commits ? "theirs" : "mine", "three"}));
        stand(cursor);
    }
}

TEST_P(PreparedChanges, TheChangedRowComesWithItsStatement)
{
    PreparedSet set(connection, cursor, "a");
    const Readings readings;
    for (const std::string value : {"first", "", "third"}) {
        ASSERT_EQ(set(value), 0);
        EXPECT_EQ(text(cursor, 2), value);
    }
    EXPECT_EQ(readings.count(), 0);
    stranger.execute("UPDATE t SET n = 12 WHERE id = 2");
    EXPECT_EQ(set("refused"), CodeRowChanged);
    cursor.fetch(FetchAbsolute, 2);
    EXPECT_EQ(text(cursor, 5), "12");
    EXPECT_EQ(set("again"), 0);
    expectShown("SELECT id, a, b, d, n FROM t ORDER BY id");
    stranger.execute("DELETE FROM t WHERE id = 2");
    EXPECT_EQ(set("refused"), CodeRowGone);
}

TEST_P(PreparedChanges, WhatTriggersMadeOfTheRowIsShown)
{
    PreparedSet set(connection, cursor, "a");
    EXPECT_EQ(set("before"), 0);
    EXPECT_EQ(text(cursor, 5), "7");
    makeTrigger(); // in the same session
    for (const std::string number : {"8", "9"}) {
        EXPECT_EQ(set("new" + number), 0);
        EXPECT_EQ(text(cursor, 5), number);
        expectShown("SELECT id, a, b, d, n FROM t ORDER BY id");
    }
}

TEST_P(PreparedChanges, ATriggerOfAnotherSessionIsNeverLaidOver)
{
    PreparedSet set(connection, cursor, "a");
    EXPECT_EQ(set("before"), 0);
    stranger.execute(isServer() ? "CREATE FUNCTION count_up() RETURNS trigger LANGUAGE plpgsql AS "
                                  "$$ BEGIN UPDATE t SET n = n + 1 WHERE id = NEW.id; "
                                  "RETURN NULL; END $$"
                                : "SELECT 1");
    const std::string trigger = "CREATE TRIGGER up AFTER UPDATE OF a ON t ";
    stranger.execute(trigger + (isServer()
                                    ? "FOR EACH ROW EXECUTE FUNCTION count_up()"
                                    : "BEGIN UPDATE t SET n = n + 1 WHERE id = NEW.id; END"));
    EXPECT_EQ(set("first"), 0);
    const int second = set("second");
    EXPECT_TRUE(second == 0 || second == CodeRowChanged) << second;
    cursor.fetch(FetchAbsolute, 2);
    EXPECT_EQ(set("third"), 0);
    expectShown("SELECT id, a, b, d, n FROM t ORDER BY id");
    EXPECT_EQ(stored("SELECT a, n FROM t WHERE id = 2"),
              Texts{second == 0 ? "third|10" : "third|9"});
}

TEST_P(PreparedChanges, AColumnComputedFromTheChangedOneIsShown)
{
    execute("CREATE TABLE g(id INTEGER PRIMARY KEY, a INTEGER,"
            " twice INTEGER GENERATED ALWAYS AS (a * 2) STORED)");
    execute("INSERT INTO g(id, a) VALUES (1, 1), (2, 2)");
    for (const char* sql : {"SELECT id, a, twice FROM g ORDER BY id", "SELECT * FROM g"}) {
        stand(cursor, sql);
        PreparedSet set(connection, cursor, "a");
        const Readings readings;
        for (const int64_t value : {5, 6}) {
            EXPECT_EQ(set(value), 0);
            EXPECT_EQ(text(cursor, 3), std::to_string(2 * value));
        }
        EXPECT_EQ(readings.count(), 0);
        expectShown(sql);
    }
}

TEST_P(PreparedChanges, AChangedKeyNamesTheRowFromThenOn)
{
    PreparedSet setKey(connection, cursor, "id");
    PreparedSet set(connection, cursor, "a");
    for (const int64_t key : {20, 30}) {
        EXPECT_EQ(setKey(key), 0);
        EXPECT_EQ(text(cursor, 1), std::to_string(key));
        EXPECT_EQ(set("row " + std::to_string(key)), 0);
        EXPECT_EQ(stored("SELECT id, a FROM t WHERE id > 3"),
                  Texts{std::to_string(key) + "|row " + std::to_string(key)});
    }
    EXPECT_EQ(setKey(1), CodeRefused);
    EXPECT_EQ(text(cursor, 1), "30");
    EXPECT_EQ(set("at last"), 0);
    EXPECT_EQ(stored("SELECT a FROM t WHERE id = 30"), Texts{"at last"});
}

TEST_P(PreparedChanges, ListsOfAllKindsShowTheRowAsItIs)
{
    const char* lists[] = {"id, a, upper(a), length(a) + n",
                           "a, a, id, a AS other",
                           "t.*, n",
                           "n, (SELECT max(s.n) FROM t s), id",
                           "x.a, x.id",
                           "CASE WHEN a = 'two' THEN 1 ELSE 0 END, n, a"};
    for (const char* list : lists) {
        const bool named = std::string(list) == "x.a, x.id";
        const std::string sql =
            "SELECT " + std::string(list) + " FROM t" + (named ? " x" : "") + " ORDER BY id";
        stand(cursor, sql.c_str());
        ASSERT_TRUE(cursor.isKeyed()) << list;
        const std::string name = '"' + place.schema() + "\".\"t\"";
        DorStatement statement;
        statement.create(connection,
                         ("UPDATE " + name + " SET a = ?, n = ? WHERE CURRENT OF CURSOR").c_str(),
                         true);
        for (const int64_t number : {40, 41}) {
            const std::string value = "value " + std::to_string(number);
            BindMap binds;
            binds.bind(1, {TypeVarchar, value.data(), value.size(), 0});
            binds.bind(2, {TypeBigint, &number, sizeof number, 0});
            EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), 0) << list;
            expectShown(sql.c_str());
        }
    }
}

TEST_P(PreparedChanges, LongValuesAreShownByTheirHeads)
{
    execute("CREATE TABLE l(id INTEGER PRIMARY KEY, s TEXT, b " + bytesType() + ", n INTEGER)");
    execute("INSERT INTO l VALUES (1, '', NULL, 1), (2, '" + std::string(100'000, 'x') + "', " +
            bytes(std::string(140'000, 'A')) + ", 2)");
    const char* sql = "SELECT id, s, b, n FROM l ORDER BY id";
    stand(cursor, sql);
    PreparedSet setNumber(connection, cursor, "n");
    PreparedSet setText(connection, cursor, "s");
    const auto expectLengths = [&](int64_t text, int64_t blob) {
        EXPECT_EQ(cursor.getBlobLen(2), text);
        EXPECT_EQ(cursor.getBlobLen(3), blob);
    };
    const Readings readings;
    EXPECT_EQ(setNumber(3), 0);
    expectLengths(100'000, 70'000);
    EXPECT_EQ(setText(std::string(90'000, 'y')), 0);
    expectLengths(90'000, 70'000);
    EXPECT_EQ(setText(std::string(80'000, 'z')), 0);
    EXPECT_EQ(setNumber(4), 0);
    expectLengths(80'000, 70'000);
    EXPECT_EQ(setText("short"), 0);
    expectLengths(5, 70'000);
    EXPECT_EQ(readings.count(), 0);
    expectShown(sql);
}

TEST_P(PreparedChanges, WhatATransactionDidMeanwhileIsShown)
{
    PreparedSet set(connection, cursor, "a");
    EXPECT_EQ(set("outside"), 0);
    change("BEGIN");
    change("UPDATE t SET n = 50 WHERE id = 2");
    cursor.fetch(FetchAbsolute, 2);
    change("UPDATE t SET n = 51 WHERE id = 2");
    change("COMMIT");
    const int code = set("after"); // of the same version on the server, of other values elsewhere
    EXPECT_EQ(code, isServer() ? 0 : CodeRowChanged);
    if (code != 0) {
        cursor.fetch(FetchAbsolute, 2);
        EXPECT_EQ(set("after"), 0);
    }
    EXPECT_EQ(text(cursor, 5), "51");
    expectShown("SELECT id, a, b, d, n FROM t ORDER BY id");
}

TEST_P(PreparedChanges, AColumnOfAnotherTypeIsNotTakenForTheOldOne)
{
    PreparedSet set(connection, cursor, "a");
    EXPECT_EQ(set("one"), 0);
    EXPECT_EQ(set("two"), 0);
    stranger.execute(isServer() ? "ALTER TABLE t ALTER COLUMN a TYPE text"
                                : "ALTER TABLE t RENAME COLUMN d TO e");
    EXPECT_EQ(set("three"), isServer() ? 0 : CodeRowChanged);
    EXPECT_EQ(stored("SELECT a FROM t WHERE id = 2"), Texts{isServer() ? "three" : "two"});
}

TEST_P(PreparedChanges, WhatAForeignKeyCarriesBackIntoTheRowIsShown)
{
    if (!isServer())
        change("PRAGMA foreign_keys = ON");
    execute("CREATE TABLE c(id INTEGER PRIMARY KEY, above INTEGER REFERENCES c(id)"
            " ON UPDATE CASCADE)");
    execute("INSERT INTO c VALUES (1, 1), (2, 2), (3, 3)");
    stand(cursor, "SELECT id, above FROM c ORDER BY id");
    PreparedSet set(connection, cursor, "id");
    for (const int64_t key : {20, 30}) {
        EXPECT_EQ(set(key), 0);
        EXPECT_EQ(text(cursor, 2), std::to_string(key));
    }
}

TEST_P(PreparedChanges, EveryKindOfValueIsShownAsItIsReadAgain)
{
    const std::string real = isServer() ? "DOUBLE PRECISION" : "REAL";
    execute("CREATE TABLE k(id INTEGER PRIMARY KEY, r " + real + ", d DECIMAL(12,2), b BIGINT," +
            " s VARCHAR(40), v " + real + ")");
    execute("INSERT INTO k VALUES (1, 1, 1, 1, '1', 1), (2, 2, 2, 2, '2', 2)");
    const char* sql = "SELECT id, r, d, b, s, v FROM k ORDER BY id";
    stand(cursor, sql);
    const std::string name = '"' + place.schema() + "\".\"k\"";
    DorStatement statement;
    statement.create(
        connection,
        ("UPDATE " + name + " SET r = ?, d = ?, b = ?, s = ? WHERE CURRENT OF CURSOR").c_str(),
        true);
    for (const int64_t whole : {int64_t(0), int64_t(-7), int64_t(1) << 31, int64_t(1234567890)}) {
        const double number = static_cast<double>(whole);
        const std::string digits = std::to_string(whole);
        BindMap binds;
        binds.bind(1, {TypeDouble, &number, sizeof number, 0});
        binds.bind(2, {TypeBigint, &whole, sizeof whole, 0});
        binds.bind(3, {TypeBigint, &whole, sizeof whole, 0});
        binds.bind(4, {TypeVarchar, digits.data(), digits.size(), 0});
        {
            const Readings readings;
            EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), 0) << whole;
            EXPECT_EQ(readings.count(), 0);
        }
        expectShown(sql);
    }
}
