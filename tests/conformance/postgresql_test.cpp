// What only the server has: how it is reached, its keys, types and transactions.
#include <algorithm>
#include <cstdlib>

#include <oviapi/phrases.h>

#include "support.h"

using namespace Conformance;

namespace {

class Server : public OnPostgresql {
protected:
    std::string at(int direction, int64_t row, int column)
    {
        cursor.fetch(direction, row);
        return text(cursor, column);
    }
    bool isKeyed(const std::string& sql)
    {
        execute(sql);
        return cursor.isKeyed();
    }
    int edit(int column, const std::string& value)
    {
        return codeOf([&] {
            cursor.clearBlob(column);
            cursor.appendBlob(column, value.data(), value.size());
            cursor.getBlobLen(column); // writes
        });
    }
};

std::string address(const std::string& userAndPassword, const std::string& rest)
{
    return "postgresql://" + userAndPassword + server().at("host") + ':' + server().at("port") +
           '/' + rest;
}

// Tries to connect; the error, or an empty record.
DorX tried(const std::string& database, const char* user = "", const char* password = "")
{
    DorConnect connection;
    try {
        connection.createCS(user, password, database.c_str(), "", 0, false, false);
    } catch (const DorX& x) {
        return x;
    }
    return {};
}

} // namespace

TEST_F(Server, AnAddressAndKeywordsNameTheSameDatabase)
{
    const auto& s = server();
    const std::string who = s.at("user") + ':' + s.at("password") + '@';
    EXPECT_EQ(tried(address(who, s.at("database"))).code(), 0);
    EXPECT_EQ(
        tried("postgres://" + who + s.at("host") + ':' + s.at("port") + '/' + s.at("database"))
            .code(),
        0);
    EXPECT_EQ(
        tried(" dbname=" + s.at("database") + " port=" + s.at("port") + " host=" + s.at("socket"),
              s.at("user").c_str())
            .code(),
        0);
}

TEST_F(Server, TheArgumentsWinOverTheText)
{
    const auto& s = server();
    EXPECT_EQ(tried(address("nobody:wrong@", s.at("database")), s.at("user").c_str(),
                    s.at("password").c_str())
                  .code(),
              0);
    const DorX x = tried(address("nobody:wrong@", s.at("database")), s.at("user").c_str());
    EXPECT_EQ(x.code(), CodeCannotOpen);
    EXPECT_NE(std::string(x.what()).find(s.at("user")), std::string::npos);
}

TEST_F(Server, NoMessageHoldsThePassword)
{
    const auto& s = server();
    for (const std::string& text :
         {address("tester:hunter2@", "testdata"), address("tester:hunter2@", "nodata"),
          address("tester:hun/ter2@", "testdata"), address("tester:ter2#?@", "testdata"),
          address("tester:hunter2%@", "testdata"), address("tester:hunter2%zz@", "testdata"),
          std::string("postgresql://tester:hunter2@[::1/x"),
          std::string("postgresql://tester:hunter2@/x?port=hunter2"),
          std::string("host=127.0.0.1 password=hunter2 ter2"),
          std::string("host=127.0.0.1 password='hunter2 port=1"),
          std::string("host=127.0.0.1 user=x password=a ter2=y"),
          "host=127.0.0.1 port=" + s.at("port") + " password=hunter2 user=tester"}) {
        const DorX x = tried(text);
        EXPECT_EQ(x.code(), CodeCannotOpen) << text;
        const std::string said = x.what();
        EXPECT_EQ(said.find("ter2"), std::string::npos) << said;
        EXPECT_EQ(said.find("hun"), std::string::npos) << said;
    }
}

TEST_F(Server, AnErrorOfConnectingSaysWhy)
{
    const auto& s = server();
    const auto why = [](const DorX& x) { return std::string(x.what()); };
    const std::string who = s.at("user") + ':' + s.at("password") + '@';
    EXPECT_NE(why(tried(address(who, "nodata"))).find("\"nodata\" does not exist"),
              std::string::npos);
    EXPECT_NE(why(tried("host=127.0.0.1 port=1 dbname=x")).find("refused"), std::string::npos);
    EXPECT_NE(why(tried("service=nosuchservice")).find("nosuchservice"), std::string::npos);
}

TEST_F(Server, TlsIsWantedWhereTheServerIsNotOnThisMachine)
{
    // The server listens on 127.0.0.2 too, which does not count as this machine.
    const auto& s = server();
    const std::string rest = " port=" + s.at("port") + " dbname=" + s.at("database");
    const auto why = [&](const std::string& text) {
        return std::string(
            tried(text + rest, s.at("user").c_str(), s.at("password").c_str()).what());
    };
    EXPECT_EQ(why("host=localhost hostaddr=127.0.0.1"), "");
    EXPECT_EQ(why("host=db.example hostaddr=127.0.0.1"), "");
    EXPECT_NE(why("host=127.0.0.2").find("certificate"), std::string::npos);
    EXPECT_NE(why("host=localhost hostaddr=127.0.0.2").find("certificate"), std::string::npos);
    EXPECT_EQ(why("host=127.0.0.2 sslmode=disable"), "");
    EXPECT_EQ(why("host=127.0.0.2 sslmode=prefer"), "");
    const std::string trusted = " sslrootcert=" + s.at("certificate");
    EXPECT_EQ(why("host=127.0.0.2" + trusted), "");
    EXPECT_NE(why("host=db.example hostaddr=127.0.0.2" + trusted).find("db.example"),
              std::string::npos); // the certificate is another host's
    DorConnect secure;
    secure.createCS(s.at("user").c_str(), s.at("password").c_str(),
                    ("host=127.0.0.2" + trusted + rest).c_str(), "", 0, false, false);
    EXPECT_EQ(secure.info().cipher.substr(0, 4), "TLSv");
}

TEST_F(Server, TheConnectionIsDescribedWithoutItsPassword)
{
    const ConnectionInfo info = connection.info();
    EXPECT_EQ(info.host, server().at("host"));
    EXPECT_EQ(info.database, server().at("database"));
    EXPECT_EQ(info.user, server().at("user"));
    EXPECT_EQ(info.cipher, "");
    EXPECT_FALSE(info.readOnly);
    EXPECT_EQ(own.value("SHOW application_name"), "oviext");
    EXPECT_EQ(own.value("SHOW datestyle"), "ISO, MDY");
    EXPECT_EQ(own.value("SHOW lock_timeout"), "2s");
}

TEST_F(Server, SettingsThatTheDriverNeedsComeBack)
{
    execute("SET client_encoding = 'LATIN1'");
    EXPECT_EQ(own.value("SELECT '\xD0\x96'::text"), "\xD0\x96");
    execute("SET synchronize_seqscans = on");
    execute("DISCARD ALL");
    EXPECT_EQ(own.value("SHOW synchronize_seqscans"), "off");
    EXPECT_EQ(own.value("SHOW datestyle"), "ISO, MDY");
}

TEST_F(Server, ADateLiteralHasTheMonthFirst)
{
    EXPECT_EQ(own.value("SELECT '03/04/2005:06:07:08.09'::timestamp"), "2005-03-04 06:07:08.09");
}

TEST_F(Server, RowsAreKeyedByWhatTellsThemApart)
{
    execute("CREATE TABLE pk(id int8 PRIMARY KEY, s text)");
    execute("CREATE TABLE small(id int2 PRIMARY KEY, s text)");
    execute("CREATE TABLE named(k text PRIMARY KEY, s text)");
    execute("CREATE TABLE composite(a int, b timestamptz, c uuid, s text, PRIMARY KEY(a, b, c))");
    execute("CREATE TABLE uq(a int UNIQUE, b int NOT NULL UNIQUE, s text)");
    execute("CREATE TABLE none(s text)");
    execute("INSERT INTO pk SELECT i * 1000003, 's' || i FROM generate_series(1, 500) i");
    execute("INSERT INTO small SELECT i, 's' || i FROM generate_series(-250, 249) i");
    execute("INSERT INTO named SELECT 'k\"\\{},' || i, 's' || i FROM generate_series(1, 500) i");
    execute("INSERT INTO composite SELECT i % 7, now() + i * interval '1 us', "
            "gen_random_uuid(), 's' || i FROM generate_series(1, 500) i");
    execute("INSERT INTO uq SELECT NULL, i, 's' || i FROM generate_series(1, 500) i");
    execute("INSERT INTO none SELECT 's' || i FROM generate_series(1, 500) i");
    for (const char* table : {"pk", "small", "named", "composite", "uq", "none"}) {
        const std::string from = std::string("SELECT s FROM ") + table;
        for (const std::string& sql : {from, from + " ORDER BY s", from + " WHERE s > 's3'"}) {
            EXPECT_TRUE(isKeyed(sql)) << sql;
            auto keyed = rows(cursor);
            auto plain = own.answer("SELECT * FROM (" + sql + ") AS q");
            std::sort(keyed.begin(), keyed.end());
            std::sort(plain.begin(), plain.end());
            EXPECT_EQ(keyed, plain) << sql;
        }
        execute(from + " ORDER BY s DESC");
        cursor.fetch(FetchAbsolute, 100);
        const std::string old = text(cursor, 1);
        EXPECT_EQ(edit(1, "edited"), 0) << table;
        EXPECT_EQ(text(cursor, 1), "edited") << table;
        EXPECT_EQ(edit(1, "again"), 0) << table;
        const std::string count = std::string("SELECT count(*) FROM ") + table + " WHERE s = '";
        EXPECT_EQ(own.value(count + "again'"), "1") << table;
        EXPECT_EQ(own.value(count + old + "'"), "0") << table;
    }
}

TEST_F(Server, RowsThatNothingTellsApartAreReadAndNotEdited)
{
    execute("CREATE TABLE parent(id int PRIMARY KEY, s text)");
    execute("CREATE TABLE child() INHERITS (parent)");
    execute("CREATE TABLE parted(id int, s text) PARTITION BY LIST (id)");
    execute("CREATE TABLE parted1 PARTITION OF parted FOR VALUES IN (1)");
    execute("CREATE TABLE keyed(id int PRIMARY KEY, s text) PARTITION BY LIST (id)");
    execute("CREATE TABLE keyed1 PARTITION OF keyed FOR VALUES IN (1)");
    execute("INSERT INTO parent VALUES (1, 'a')");
    execute("INSERT INTO child VALUES (1, 'b')");
    execute("INSERT INTO parted VALUES (1, 'a')");
    execute("INSERT INTO keyed VALUES (1, 'a')");
    EXPECT_FALSE(isKeyed("SELECT * FROM parent"));
    EXPECT_EQ(cursor.selectRowCount(), 2);
    EXPECT_TRUE(isKeyed("SELECT * FROM child"));
    EXPECT_FALSE(isKeyed("SELECT * FROM parted"));
    EXPECT_FALSE(isKeyed("SELECT relname FROM pg_class"));
    EXPECT_TRUE(isKeyed("SELECT * FROM keyed"));
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(edit(2, "edited"), 0);
    EXPECT_EQ(own.value("SELECT s FROM keyed"), "edited");
}

TEST_F(Server, RowsAreFoundByTheirKeysWhereverTheListHasThem)
{
    execute("CREATE TABLE t(a INTEGER, k INTEGER PRIMARY KEY, b BYTEA)");
    execute("INSERT INTO t SELECT -i, i, 'x' FROM generate_series(1, 300) AS n(i)"
            " WHERE i % 7 <> 0");
    for (const char* list : {"a", "k, a", "a, k", "a, k, k", "a, b, k", "a, b, k AS a", "a, a AS k",
                             "a, b, k + 1000 AS k", "a, (SELECT 5 AS k) AS k", "a, b"}) {
        const std::string sql = std::string("SELECT ") + list + " FROM t";
        const int column = std::string(list).starts_with("k") ? 2 : 1;
        ASSERT_TRUE(isKeyed(sql)) << list;
        for (int64_t row = 1; row <= cursor.selectRowCount(); row += 13) {
            const int64_t key = row + (row - 1) / 6; // every seventh is missing
            EXPECT_EQ(at(FetchAbsolute, row, column), std::to_string(-key)) << list;
        }
    }
}

TEST_F(Server, ARowThatWentFromARangeIsMissedAndTheOthersKeepTheirPlaces)
{
    execute("CREATE TABLE t(k INTEGER PRIMARY KEY, a INTEGER)");
    execute("INSERT INTO t SELECT i, -i FROM generate_series(1, 200) AS n(i) WHERE i <> 70");
    for (const char* list : {"k, a", "a"}) {
        execute(std::string("SELECT ") + list + " FROM t");
        const int column = *list == 'k' ? 2 : 1;
        Client other(place);
        other.execute("DELETE FROM t WHERE k = 72");
        other.execute("INSERT INTO t VALUES(70, 0)");
        EXPECT_EQ(at(FetchAbsolute, 69, column), "-69");
        EXPECT_EQ(at(FetchNext, 0, column), "-71");
        EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeRowGone);
        EXPECT_EQ(at(FetchNext, 0, column), "-73");
        other.execute("DELETE FROM t WHERE k = 70");
        other.execute("INSERT INTO t VALUES(72, -72)");
    }
}

TEST_F(Server, RangesOfKeysAreReadWithOnePlan)
{
    execute("CREATE TABLE t(k INTEGER PRIMARY KEY, a TEXT)");
    execute("INSERT INTO t SELECT i, 'text' FROM generate_series(1, 20000) AS n(i)");
    execute("ANALYZE t");
    execute("SELECT * FROM t");
    while (cursor.position() < cursor.selectRowCount())
        cursor.fetch(FetchNext, 0);
    // Five plans are made to see what they cost.
    execute("SELECT custom_plans <= 5 AND generic_plans > custom_plans FROM pg_prepared_statements"
            " WHERE statement LIKE '%BETWEEN%LIMIT 512'");
    EXPECT_EQ(at(FetchFirst, 0, 1), "1");
}

TEST_F(Server, ADeferrableOrPartialOrExpressionIndexIsNoKey)
{
    execute("CREATE TABLE d(a int NOT NULL UNIQUE DEFERRABLE, b int NOT NULL, s text)");
    execute("CREATE UNIQUE INDEX ON d(b) WHERE b > 5");
    execute("CREATE UNIQUE INDEX ON d((b + 1))");
    execute("INSERT INTO d SELECT i, i % 5 + i / 1000, 's' || i FROM generate_series(1, 5) i");
    EXPECT_TRUE(isKeyed("SELECT s FROM d")); // by place and version
    cursor.fetch(FetchFirst, 0);
    Client other(place);
    other.execute("UPDATE d SET s = s || '!'");
    EXPECT_EQ(edit(1, "x"), CodeRowGone);
}

TEST_F(Server, SelectsThatCannotBeReadByKeysAreSpooled)
{
    execute("CREATE TABLE t(id int PRIMARY KEY, s text)");
    execute("INSERT INTO t VALUES (1, 'a'), (2, 'b')");
    EXPECT_FALSE(isKeyed("SELECT id, generate_series(1, 3) FROM t"));
    EXPECT_EQ(cursor.selectRowCount(), 6);
    EXPECT_FALSE(isKeyed("SELECT string_agg(s, ',') FROM t"));
    EXPECT_FALSE(isKeyed("SELECT count(*) FILTER (WHERE id > 1) FROM t"));
    EXPECT_FALSE(isKeyed("SELECT rank() OVER w FROM t WINDOW w AS (ORDER BY id)"));
    EXPECT_TRUE(isKeyed("SELECT (SELECT count(*) FROM t) AS n, id FROM t"));
    execute("BEGIN"); // a refused probe must not end the transaction
    EXPECT_FALSE(isKeyed("SELECT max(id) FROM t"));
    EXPECT_EQ(own.value("SELECT count(*) FROM t"), "2");
    execute("COMMIT");
}

TEST_F(Server, AQuestionMarkMayBeAnOperator)
{
    execute("CREATE TABLE j(id int PRIMARY KEY, b jsonb)");
    execute("INSERT INTO j VALUES (1, '{\"a\": 1}'), (2, '{\"b\": [2]}')");
    EXPECT_EQ(own.answer("SELECT id FROM j WHERE b ?? 'a'"), std::vector<std::string>{"1"});
    EXPECT_EQ(own.answer("SELECT id FROM j WHERE b ?| array['b','x']"),
              std::vector<std::string>{"2"});
    EXPECT_EQ(own.answer("SELECT id FROM j WHERE b @? '$.b'"), std::vector<std::string>{"2"});
    DorStatement statement;
    statement.create(connection, "SELECT '?' || ?||'?', '{\"x\":1}'::jsonb ?? ?", false);
    EXPECT_EQ(statement.paramCount(), 2);
    BindMap binds;
    binds.bind(1, {TypeText, "v", 1});
    binds.bind(2, {TypeText, "x", 1});
    cursor.execute(statement, &binds);
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"?v?|1"});
}

TEST_F(Server, EveryTypeIsShownAsTheServerWritesIt)
{
    execute("CREATE TYPE mood AS ENUM ('sad', 'happy')");
    const std::pair<const char*, const char*> cases[] = {
        {"'2005-03-04 06:07:08.09+00'::timestamptz AT TIME ZONE 'UTC'", "2005-03-04 06:07:08.09"},
        {"'infinity'::timestamp", "infinity"},
        {"'-infinity'::date", "-infinity"},
        {"'0044-03-15 BC'::date", "0044-03-15 BC"},
        {"'0044-03-15 12:00 BC'::timestamp", "0044-03-15 12:00:00 BC"},
        {"'12345-06-07 08:09:10'::timestamp", "12345-06-07 08:09:10"},
        {"'294276-12-31 23:59:59.999999'::timestamp", "294276-12-31 23:59:59.999999"},
        {"'5874897-12-31'::date", "5874897-12-31"},
        {"'2000-02-29'::date", "2000-02-29"},
        {"'24:00:00'::time", "24:00:00"},
        {"'01:02:03.4'::time", "01:02:03.4"},
        {"'{1,NULL,3}'::int[]", "{1,NULL,3}"},
        {"'happy'::mood", "happy"},
        {"'{\"a\": [1, 2.50]}'::jsonb", "{\"a\": [1, 2.50]}"},
        {"'{\"b\":1,  \"b\":2}'::json", "{\"b\":1,  \"b\":2}"},
        {"'A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11'::uuid", "a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11"},
        {"'ab'::char(4)", "ab  "},
        {"'10.0.0.1'::inet", "10.0.0.1"},
        {"'1 day 02:03'::interval", "1 day 02:03:00"},
        {"0.000000000000000000000000000001::numeric", "0.000000000000000000000000000001"},
        {"-10000.50::numeric(12,4)", "-10000.5000"},
        {"1e40::numeric", "10000000000000000000000000000000000000000"},
        {"'NaN'::numeric", "NaN"},
        {"0::numeric", "0"},
        {"0.00::numeric(5,2)", "0.00"},
        {"12345678::numeric", "12345678"},
        {"true", "1"},
        {"4294967295::oid", "4294967295"},
        {"B'101'", "101"},
        {"NULL::int[]", "NULL"},
    };
    for (const auto& [expression, shown] : cases) {
        const std::string value = expression;
        EXPECT_EQ(own.value("SELECT " + value + " AS v"), shown) << value;
        EXPECT_EQ(own.value("SELECT " + value + " AS v, '(1,2)'::point"), shown)
            << value << " beside a type that is read as text";
    }
    int64_t micros = 1;
    execute("SELECT 'infinity'::timestamp");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(cursor.getData(1, TypeDate, &micros, sizeof micros), ValueState::Mismatch);
}

TEST_F(Server, BinaryAndTextFormsAreTheSameValues)
{
    execute("CREATE TABLE f(id int PRIMARY KEY, a float4, b float8, c bytea, d numeric(38,12), "
            "e bool, g int2)");
    execute("INSERT INTO f VALUES (1, 0.1, 0.1, '\\x00ff', 3.14, false, -1)");
    for (const char* sql : {"SELECT a, b, c, d, e, g FROM f",
                            "SELECT a, b, c, d, e, g, '(1,2)'::point AS p FROM f"}) {
        execute(sql);
        cursor.fetch(FetchFirst, 0);
        float narrow = 0;
        double wide = 0;
        char raw[4] = "??";
        EXPECT_EQ(cursor.getData(1, TypeReal, &narrow, sizeof narrow), ValueState::Exact);
        EXPECT_EQ(narrow, 0.1F);
        EXPECT_EQ(cursor.getData(2, TypeDouble, &wide, sizeof wide), ValueState::Exact);
        EXPECT_EQ(wide, 0.1);
        cursor.getData(3, TypeByte, raw, sizeof raw);
        EXPECT_EQ(raw[1], '\xff');
        EXPECT_EQ(text(cursor, 4), "3.140000000000");
        EXPECT_EQ(text(cursor, 5), "0");
        EXPECT_EQ(text(cursor, 6), "-1");
    }
}

TEST_F(Server, ATextWithAZeroCannotBeStored)
{
    execute("CREATE TABLE z(id int PRIMARY KEY, s text)");
    DorStatement statement;
    statement.create(connection, "INSERT INTO z VALUES (1, $1)", false);
    BindMap binds;
    binds.bind(1, {TypeText, "a\0b", 3});
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), CodeBadBind);
    EXPECT_EQ(own.value("SELECT count(*) FROM z"), "0");
}

TEST_F(Server, ACommitThatUndoesIsAnError)
{
    execute("CREATE TABLE c(id int PRIMARY KEY)");
    execute("BEGIN");
    execute("INSERT INTO c VALUES (1)");
    EXPECT_EQ(codeOf([&] { execute("INSERT INTO c VALUES (1)"); }), CodeRefused);
    EXPECT_TRUE(connection.inTransaction());
    EXPECT_EQ(codeOf([&] { execute("SELECT * FROM c"); }), CodeUndone);
    EXPECT_EQ(codeOf([&] { execute("COMMIT"); }), CodeUndone);
    EXPECT_FALSE(connection.inTransaction());
    EXPECT_EQ(own.value("SELECT count(*) FROM c"), "0");
}

// The server answers such a statement first and commits it afterwards.
TEST_F(Server, WhatIsRefusedAtTheCommitOfItsOwnIsAnError)
{
    execute("CREATE TABLE p(id int PRIMARY KEY)");
    execute("CREATE TABLE d(id int PRIMARY KEY, p int REFERENCES p DEFERRABLE INITIALLY DEFERRED)");
    execute("INSERT INTO p VALUES (1)");
    execute("INSERT INTO d VALUES (1, 1)");
    EXPECT_EQ(codeOf([&] { execute("INSERT INTO d VALUES (2, 2)"); }), CodeRefused);
    EXPECT_EQ(codeOf([&] { execute("INSERT INTO d VALUES (2, 2) RETURNING id"); }), CodeRefused);
    EXPECT_FALSE(connection.inTransaction());

    execute("SELECT id, p FROM d");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(codeOf([&] { cursor.execute("UPDATE d SET p = 2 WHERE CURRENT OF CURSOR"); }),
              CodeRefused);
    EXPECT_EQ(own.value("SELECT string_agg(id || ':' || p, ',') FROM d"), "1:1");
}

TEST_F(Server, AProcedureThatFailsAfterItsCommitIsNotRepeated)
{
    execute("CREATE TABLE log(n int)");
    execute("CREATE PROCEDURE note() LANGUAGE plpgsql AS $$ BEGIN"
            " INSERT INTO log VALUES (1); COMMIT; EXECUTE 'SELECT * FROM nowhere'; END $$");
    DorStatement statement;
    statement.create(connection, "CALL note()", true);
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, nullptr); }), CodeSqlText);
    EXPECT_EQ(own.value("SELECT count(*) FROM log"), "1");
}

TEST_F(Server, SavepointsOfTheUserAreKept)
{
    execute("CREATE TABLE s(id int PRIMARY KEY, t text)");
    execute("INSERT INTO s VALUES (1, 'a')");
    execute("BEGIN");
    execute("SAVEPOINT mine");
    execute("SELECT id, t FROM s");
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(edit(2, "b"), 0);
    change("ROLLBACK TO SAVEPOINT mine");
    change("COMMIT");
    EXPECT_EQ(own.value("SELECT t FROM s"), "a");
}

TEST_F(Server, APlaceThatWasGivenToAnotherRowIsNotTakenForTheFirst)
{
    execute("CREATE TABLE p(s text)");
    execute("INSERT INTO p VALUES ('one'), ('two')");
    execute("SELECT s FROM p");
    EXPECT_EQ(at(FetchFirst, 0, 1), "one");
    Client other(place);
    other.execute("DELETE FROM p WHERE s = 'one'");
    other.execute("VACUUM p");
    other.execute("INSERT INTO p VALUES ('three')");
    EXPECT_EQ(other.value("SELECT ctid FROM p WHERE s = 'three'"), "(0,1)");
    EXPECT_EQ(edit(1, "mine"), CodeRowGone);
    change("DELETE FROM p WHERE false"); // what was read is read anew
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 1); }), CodeRowGone);
    EXPECT_EQ(other.answer("SELECT s FROM p ORDER BY s"),
              (std::vector<std::string>{"three", "two"}));
    other.execute("VACUUM FULL p");
    change("DELETE FROM p WHERE false");
    const int code = codeOf([&] { cursor.fetch(FetchAbsolute, 2); });
    EXPECT_TRUE(code == CodeRowGone || (code == 0 && text(cursor, 1) == "two")) << code;
}

TEST_F(Server, CopyWithTheClientIsRefusedAndTheConnectionGoesOn)
{
    execute("CREATE TABLE c(id int PRIMARY KEY)");
    for (const char* sql : {"COPY c FROM STDIN", "COPY c TO STDOUT",
                            "COPY (SELECT generate_series(1, 1000000)) TO STDOUT"})
        EXPECT_EQ(codeOf([&] { execute(sql); }), CodeSqlText) << sql;
    EXPECT_EQ(own.value("SELECT count(*) FROM c"), "0");
}

TEST_F(Server, StatementsThatGiveRowsBesideSelect)
{
    execute("CREATE TABLE r(id int PRIMARY KEY, d date)");
    EXPECT_EQ(own.answer("INSERT INTO r VALUES (1, '2001-02-03') RETURNING id, d"),
              std::vector<std::string>{"1|2001-02-03"});
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(own.answer("SHOW standard_conforming_strings"), std::vector<std::string>{"on"});
    EXPECT_EQ(own.answer("TABLE r"), std::vector<std::string>{"1|2001-02-03"});
    EXPECT_FALSE(own.answer("EXPLAIN SELECT * FROM r").empty());
    execute("DO $$ BEGIN RAISE NOTICE 'not on stderr'; END $$");
    execute("PREPARE q AS SELECT 5");
    EXPECT_EQ(own.answer("EXECUTE q"), std::vector<std::string>{"5"});
    execute("DEALLOCATE ALL");
    EXPECT_EQ(own.answer("TABLE r"), std::vector<std::string>{"1|2001-02-03"});
    execute("CREATE FUNCTION two() RETURNS int LANGUAGE sql BEGIN ATOMIC SELECT 1; SELECT 2; END");
    EXPECT_EQ(own.value("SELECT two()"), "2");
}

TEST_F(Server, AStatementPreparedForAnOlderTableIsPreparedAnew)
{
    execute("CREATE TABLE t(id int PRIMARY KEY, s text)");
    execute("INSERT INTO t VALUES (1, 'a')");
    DorStatement statement;
    statement.create(connection, "SELECT DISTINCT * FROM t WHERE id = $1", true);
    const int32_t one = 1;
    BindMap binds;
    binds.bind(1, {TypeInteger, &one, sizeof one});
    cursor.execute(statement, &binds);
    EXPECT_EQ(cursor.columnCount(), 2);
    Client other(place);
    other.execute("ALTER TABLE t ADD COLUMN more int DEFAULT 5");
    cursor.execute(statement, &binds);
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"1|a|5"});
}

TEST_F(Server, NamesAreFoundAsTheyAreWritten)
{
    execute("CREATE TABLE \"Odd Name\"(\"Id\" int PRIMARY KEY, \"a\"\"b\" text)");
    execute("INSERT INTO \"Odd Name\" VALUES (1, 'x')");
    EXPECT_TRUE(isKeyed("SELECT * FROM \"Odd Name\""));
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(edit(2, "y"), 0);
    execute("CREATE TABLE folded(id int PRIMARY KEY)");
    EXPECT_TRUE(isKeyed("SELECT * FROM FOLDED AS f"));
    EXPECT_TRUE(isKeyed("SELECT * FROM " + place.schema() + ".Folded"));
}

TEST_F(Server, ATriggerThatSuppressesAChangeIsNotTakenForSuccess)
{
    execute("CREATE TABLE g(id int PRIMARY KEY, s text)");
    execute("CREATE FUNCTION no() RETURNS trigger LANGUAGE plpgsql AS "
            "$$ BEGIN RETURN NULL; END $$");
    execute("CREATE TRIGGER t BEFORE UPDATE ON g FOR EACH ROW EXECUTE FUNCTION no()");
    execute("INSERT INTO g VALUES (1, 'a')");
    execute("SELECT id, s FROM g");
    cursor.fetch(FetchFirst, 0);
    EXPECT_NE(edit(2, "b"), 0);
    EXPECT_EQ(text(cursor, 2), "a");
}

TEST_F(Server, ARowKnownByItsPlaceIsMissedWhenATriggerMovesItAgain)
{
    execute("CREATE TABLE g(s text, n int)");
    execute("INSERT INTO g VALUES ('a', 1), ('b', 1)");
    execute("CREATE FUNCTION again() RETURNS trigger LANGUAGE plpgsql AS "
            "$$ BEGIN UPDATE g SET n = n + 1 WHERE s = NEW.s; RETURN NULL; END $$");
    execute("CREATE TRIGGER t AFTER UPDATE OF s ON g FOR EACH ROW EXECUTE FUNCTION again()");
    execute("SELECT s, n FROM g");
    cursor.fetch(FetchFirst, 0);
    execute("UPDATE g SET s = 'new' WHERE CURRENT OF CURSOR");
    EXPECT_EQ(cursor.changedRowCount(), 1);
    EXPECT_EQ(codeOf([&] { text(cursor, 1); }), CodeRowGone);
    EXPECT_EQ(codeOf([&] { execute("DELETE FROM g WHERE CURRENT OF CURSOR"); }), CodeRowGone);
    EXPECT_EQ(own.answer("SELECT s, n FROM g ORDER BY s"),
              (std::vector<std::string>{"b|1", "new|2"}));
}

TEST_F(Server, APreparedChangeShowsWhatTriggersMadeOfTheRow)
{
    const auto expectEdits = [&](const std::string& prepare, const std::string& shown) {
        execute("DROP TABLE IF EXISTS t CASCADE");
        execute("CREATE TABLE t(id int PRIMARY KEY, a text, n int)");
        execute("INSERT INTO t VALUES (1, 'one', 7)");
        execute(prepare);
        execute("SELECT id, a, n FROM t");
        cursor.fetch(FetchFirst, 0);
        DorStatement statement;
        statement.create(connection, "UPDATE t SET a = ? WHERE CURRENT OF CURSOR", true);
        for (const std::string value : {"first", "second"}) {
            BindMap binds;
            binds.bind(1, {TypeVarchar, value.data(), value.size(), 0});
            EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), 0) << prepare;
        }
        EXPECT_EQ(text(cursor, 2) + '|' + text(cursor, 3), shown) << prepare;
        Client fresh(place);
        EXPECT_EQ(fresh.answer("SELECT a, n FROM t"), std::vector<std::string>{shown}) << prepare;
    };
    execute("CREATE FUNCTION before_it() RETURNS trigger LANGUAGE plpgsql AS"
            " $$ BEGIN NEW.n := NEW.n + 1; RETURN NEW; END $$");
    execute("CREATE FUNCTION after_it() RETURNS trigger LANGUAGE plpgsql AS"
            " $$ BEGIN UPDATE t SET n = n + 10; RETURN NULL; END $$");
    expectEdits("CREATE TRIGGER b BEFORE UPDATE ON t FOR EACH ROW EXECUTE FUNCTION before_it()",
                "second|9");
    expectEdits("CREATE TRIGGER s AFTER UPDATE OF a ON t FOR EACH STATEMENT"
                " EXECUTE FUNCTION after_it()",
                "second|27");
    expectEdits("CREATE CONSTRAINT TRIGGER d AFTER UPDATE OF a ON t DEFERRABLE INITIALLY DEFERRED"
                " FOR EACH ROW EXECUTE FUNCTION after_it()",
                "second|27");
    expectEdits("CREATE TRIGGER none AFTER INSERT ON t FOR EACH ROW EXECUTE FUNCTION after_it()",
                "second|7");
}

TEST_F(Server, ABeforeTriggerThatSkipsAPreparedChangeRefusesIt)
{
    execute("CREATE TABLE t(id int PRIMARY KEY, a text)");
    execute("INSERT INTO t VALUES (1, 'one')");
    execute("CREATE FUNCTION skip() RETURNS trigger LANGUAGE plpgsql AS"
            " $$ BEGIN RETURN NULL; END $$");
    execute("CREATE TRIGGER s BEFORE UPDATE ON t FOR EACH ROW EXECUTE FUNCTION skip()");
    execute("SELECT id, a FROM t");
    cursor.fetch(FetchFirst, 0);
    DorStatement statement;
    statement.create(connection, "UPDATE t SET a = 'new' WHERE CURRENT OF CURSOR", true);
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, nullptr); }), CodeRowChanged);
    EXPECT_EQ(text(cursor, 2), "one");
}

TEST_F(Server, AColumnNamedInAnyWayIsShownAsItWasChanged)
{
    const std::string longName(63, 'l');
    execute("CREATE TABLE t(id int PRIMARY KEY, a text, \"B\" text, " + longName + " text)");
    execute("INSERT INTO t VALUES (1, '', '', '')");
    const std::string sets[] = {"a = ?",
                                "A = ?",
                                "\"a\" = ?",
                                "(a, \"B\") = (?1, ?1)",
                                "(\"B\", id) = ROW(?::text, 2)",
                                "U&\"\\0061\" = ?",
                                "U&\"\\0042\" = ?",
                                longName + "er = ?"};
    for (const std::string& set : sets) {
        execute("SELECT * FROM t");
        cursor.fetch(FetchFirst, 0);
        DorStatement statement;
        statement.create(connection, ("UPDATE t SET " + set + " WHERE CURRENT OF CURSOR").c_str(),
                         true);
        for (const std::string value : {"first", "second"}) {
            BindMap binds;
            binds.bind(1, {TypeVarchar, value.data(), value.size(), 0});
            EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), 0) << set;
            Client fresh(place);
            EXPECT_EQ(text(cursor, 1) + '|' + text(cursor, 2) + '|' + text(cursor, 3) + '|' +
                          text(cursor, 4),
                      fresh.answer("SELECT * FROM t").front())
                << set;
        }
    }
}

TEST_F(Server, APreparedChangeThatMovesARowToAnotherPartitionIsFollowed)
{
    execute("CREATE TABLE p(id int PRIMARY KEY, a text) PARTITION BY RANGE (id)");
    execute("CREATE TABLE p1 PARTITION OF p FOR VALUES FROM (0) TO (10)");
    execute("CREATE TABLE p2 PARTITION OF p FOR VALUES FROM (10) TO (20)");
    execute("INSERT INTO p VALUES (1, 'one')");
    execute("SELECT id, a FROM p");
    cursor.fetch(FetchFirst, 0);
    DorStatement statement;
    statement.create(connection, "UPDATE p SET id = ?, a = a || id WHERE CURRENT OF CURSOR", true);
    for (const int64_t key : {11, 2}) {
        BindMap binds;
        binds.bind(1, {TypeBigint, &key, sizeof key, 0});
        EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), 0);
        EXPECT_EQ(text(cursor, 1), std::to_string(key));
    }
    EXPECT_EQ(text(cursor, 2), "one111");
}
