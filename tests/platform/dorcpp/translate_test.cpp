// Translation of what the engines do not know.
#include <dorcpp/translate.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include <dorcpp/charset.h>
#include <dorcpp/cursor.h>
#include <oviapi/celltext.h>
#include <oviapi/text.h>
#include <sqlite3.h>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

const TableColumns columns = {
    {"id", TypeBigint, ""},  {"name", TypeVarchar, "'none'"},      {"bin", TypeVarbyte, ""},
    {"u", TypeNvarchar, ""}, {"d", TypeDate, "CURRENT_TIMESTAMP"}, {"f", TypeExtfile, ""},
};

std::shared_ptr<const TableColumns> lookUp(const std::string&, const std::string& table)
{
    return std::make_shared<const TableColumns>(table == "t" ? columns : TableColumns());
}

// The text that the engine gets.
std::string sent(const std::string& sql, SqlDialect dialect = SqlDialect::Sqlite)
{
    return translated(SqlText(sql, dialect), lookUp).value_or(sql);
}

std::string sentToServer(const std::string& sql)
{
    return sent(sql, SqlDialect::Postgresql);
}

int refusal(const std::string& sql)
{
    return codeOf([&] { sent(sql); });
}

} // namespace

TEST(Translate, ATextWithNothingToTranslateIsLeftAlone)
{
    int lookups = 0;
    const auto counting = [&](const std::string& schema, const std::string& table) {
        ++lookups;
        return lookUp(schema, table);
    };
    for (const char* sql :
         {"", ";", "SELECT Hex('41')", "INSERT INTO t VALUES (1, 'a''b', ?, NULL);",
          "UPDATE t SET name = 'Hex(''41'')' WHERE id = 1 -- Hex('41')",
          "INSERT INTO t DEFAULT VALUES", "DELETE FROM t WHERE \"hex\" = 1",
          "EXPLAIN UPDATE t SET bin = Hex('41')"})
        EXPECT_FALSE(translated(SqlText(sql, SqlDialect::Sqlite), counting)) << sql;
    EXPECT_EQ(lookups, 0);
}

TEST(Translate, HexBecomesTheLiteralOfItsColumn)
{
    EXPECT_EQ(sent("UPDATE t SET bin = Hex('00fF')"), "UPDATE t SET bin = x'00fF'");
    EXPECT_EQ(sentToServer("UPDATE t SET bin = HEX('00fF')"),
              "UPDATE t SET bin = '\\x00fF'::bytea");
    EXPECT_EQ(sent("UPDATE t SET u = hex ( '4100' )"), "UPDATE t SET u = 'A'");
    EXPECT_EQ(sent("UPDATE t SET u=Hex('27002700')"), "UPDATE t SET u=''''''");
    EXPECT_EQ(sentToServer("UPDATE t SET u=Hex('5C002700')"), "UPDATE t SET u=E'\\\\'''");
    EXPECT_EQ(sent("UPDATE t SET bin=Hex(''), u=Hex('')"), "UPDATE t SET bin=x'', u=''");
    EXPECT_EQ(sent("insert into \"main\".\"t\" (\"bin\",\"u\") values (Hex('41'),Hex('4200'))"),
              "insert into \"main\".\"t\" (\"bin\",\"u\") values (x'41','B')");
    EXPECT_EQ(sent("INSERT INTO t VALUES (1, 'n', Hex('41'), Hex('4200'))"),
              "INSERT INTO t VALUES (1, 'n', x'41', 'B')");
    EXPECT_EQ(sent("INSERT INTO t(u, bin) SELECT Hex('4200'), Hex('4200')"),
              "INSERT INTO t(u, bin) SELECT 'B', x'4200'");
    EXPECT_EQ(sent("DELETE FROM t WHERE u = Hex('4200') AND t.bin IS NOT Hex('42');"),
              "DELETE FROM t WHERE u = 'B' AND t.bin IS NOT x'42'");
    EXPECT_EQ(sent("INSERT INTO t(id, u) VALUES (1, Hex('4200')) ON CONFLICT DO UPDATE SET "
                   "bin = Hex('42'), u = Hex('4300')"),
              "INSERT INTO t(id, u) VALUES (1, 'B') ON CONFLICT DO UPDATE SET "
              "bin = x'42', u = 'C'");
}

TEST(Translate, HexInsideOtherExpressionsAndTablesHoldsBytesOfTheColumn)
{
    EXPECT_EQ(sent("UPDATE t SET u = coalesce(NULL, Hex('4200'))"),
              "UPDATE t SET u = coalesce(NULL, 'B')");
    EXPECT_EQ(sent("UPDATE t SET u = (SELECT x FROM y WHERE u = Hex('4200'))"),
              "UPDATE t SET u = (SELECT x FROM y WHERE u = x'4200')");
    EXPECT_EQ(sent("UPDATE nowhere SET u = Hex('4200')"), "UPDATE nowhere SET u = x'4200'");
    EXPECT_EQ(sent("UPDATE t SET (u, bin) = (Hex('4200'), Hex('42'))"),
              "UPDATE t SET (u, bin) = ('B', x'42')");
}

TEST(Translate, WhatOnlyLooksLikeHexStays)
{
    for (const char* sql : {"UPDATE t SET bin = hex(bin)", "UPDATE t SET bin = x.hex('41')",
                            "UPDATE t SET bin = \"hex\"('41')", "UPDATE t SET bin = hex(?)",
                            "UPDATE t SET bin = hex('41' || '42')", "UPDATE t SET bin = hex('41"})
        EXPECT_EQ(sent(sql), sql);
    EXPECT_EQ(sentToServer("UPDATE t SET name = $$Hex('41')$$"),
              "UPDATE t SET name = $$Hex('41')$$");
}

TEST(Translate, DigitsThatAreNoneAreRefused)
{
    for (const char* digits : {"4", "4G", "hello", "41 42", "0x41"})
        EXPECT_EQ(refusal("UPDATE t SET bin = Hex('" + std::string(digits) + "')"), CodeSqlText);
    for (const char* digits : {"41", "410042", "0000", "00D8", "00DC00D8"}) // no UTF-16 text
        EXPECT_EQ(refusal("UPDATE t SET u = Hex('" + std::string(digits) + "')"), CodeSqlText);
}

TEST(Translate, ExtfileBecomesItsText)
{
    EXPECT_EQ(sent("UPDATE t SET f = EXTFILE('/tmp/a''b')"), "UPDATE t SET f = '/tmp/a''b'");
    EXPECT_EQ(sent("UPDATE t SET f = extfile(NULL)"), "UPDATE t SET f = extfile(NULL)");
    EXPECT_EQ(sent("insert into t (f) values (EXTFILE('x'))"), "insert into t (f) values ('x')");
}

TEST(Translate, DatesOfTheClientBecomeIsoForDateColumns)
{
    EXPECT_EQ(sent("UPDATE t SET d='03/04/2005:06:07:08.09'"),
              "UPDATE t SET d='2005-03-04 06:07:08.09'");
    EXPECT_EQ(sentToServer("UPDATE t SET d='12/31/1999:23:59:59.999999'"),
              "UPDATE t SET d='1999-12-31 23:59:59.999999'");
    EXPECT_EQ(sent("UPDATE t SET d='02/29/2000'"), "UPDATE t SET d='2000-02-29'");
    EXPECT_EQ(sent("UPDATE t SET d='03/04/2005:06:07:08'"), "UPDATE t SET d='2005-03-04 06:07:08'");
    EXPECT_EQ(sent("DELETE FROM t WHERE d >= '03/04/2005:00:00:00.00'"),
              "DELETE FROM t WHERE d >= '2005-03-04 00:00:00'");
    EXPECT_EQ(sent("INSERT INTO t(d, name) VALUES ('03/04/2005', '03/04/2005')"),
              "INSERT INTO t(d, name) VALUES ('2005-03-04', '03/04/2005')");
    for (const char* sql :
         {"UPDATE t SET name='03/04/2005:06:07:08.09'", "UPDATE t SET d='2005-03-04'",
          "UPDATE t SET d='03/04/2005 06:07'", "UPDATE t SET d='03/04/2005:06:07:08.'",
          "UPDATE t SET d=strftime('%s', '03/04/2005')"})
        EXPECT_EQ(sent(sql), sql);
}

TEST(Translate, DatesThatDoNotExistAreRefused)
{
    for (const char* date :
         {"02/30/2005", "13/01/2005", "00/01/2005", "02/29/1900", "01/01/0000",
          "01/01/2005:24:00:00", "01/01/2005:00:60:00.00", "01/01/2005:00:00:00.1234567"})
        EXPECT_EQ(refusal("UPDATE t SET d='" + std::string(date) + "'"), CodeSqlText) << date;
}

TEST(Translate, ADefaultLeavesBothListsOfAnInsert)
{
    EXPECT_EQ(sent("insert into t (id,name,u) values (DEFAULT,'a',default)"),
              "insert into t (name) values ('a')");
    EXPECT_EQ(sent("INSERT INTO t(id, name) VALUES (1, DEFAULT)"), "INSERT INTO t(id) VALUES (1)");
    EXPECT_EQ(sent("insert into \"main\".\"t\" (\"id\",\"name\") values (DEFAULT,DEFAULT)"),
              "insert into \"main\".\"t\"  DEFAULT VALUES");
    EXPECT_EQ(sent("INSERT INTO t VALUES (1, DEFAULT, x'', 'u', NULL, DEFAULT)"),
              "INSERT INTO t (\"id\", \"bin\", \"u\", \"d\") VALUES (1, x'', 'u', NULL)");
    EXPECT_EQ(sent("INSERT INTO t(id, d) VALUES (1, DEFAULT), (2, DEFAULT)"),
              "INSERT INTO t(id) VALUES (1), (2)");
    EXPECT_EQ(sent("INSERT INTO t(id, name, d) VALUES (f(1, 2), DEFAULT, 'DEFAULT')"),
              "INSERT INTO t(id, d) VALUES (f(1, 2), 'DEFAULT')");
    EXPECT_EQ(refusal("INSERT INTO t(id, d) VALUES (1, DEFAULT), (2, '2005-01-01')"), CodeSqlText);
    EXPECT_EQ(refusal("INSERT INTO t(d) VALUES (DEFAULT), (DEFAULT)"), CodeSqlText);
    const char* server = "INSERT INTO t(id, d) VALUES (1, DEFAULT)";
    EXPECT_EQ(sentToServer(server), server);
}

TEST(Translate, ADefaultInAnUpdateIsTheColumnsExpression)
{
    EXPECT_EQ(sent("UPDATE t SET name = DEFAULT, d=default, u = DEFAULT WHERE id = 1"),
              "UPDATE t SET name = ('none'), d=(CURRENT_TIMESTAMP), u = NULL WHERE id = 1");
    EXPECT_EQ(sent("UPDATE t SET (name, u) = (DEFAULT, 'x')"),
              "UPDATE t SET (name, u) = (('none'), 'x')");
}

TEST(Translate, NamesAreLookedUpAsTheEngineFoldsThem)
{
    std::vector<std::string> asked;
    const auto asking = [&](const std::string& schema, const std::string& table) {
        asked.push_back(schema + '.' + table);
        return lookUp(schema, table);
    };
    for (const SqlDialect dialect : {SqlDialect::Sqlite, SqlDialect::Postgresql})
        translated(SqlText("UPDATE S.\"T\" SET U = Hex('4100')", dialect), asking);
    translated(SqlText("INSERT OR IGNORE INTO T(U) VALUES (Hex('4100'))", SqlDialect::Sqlite),
               asking);
    EXPECT_EQ(asked, (std::vector<std::string>{"S.T", "s.T", ".T"}));
    EXPECT_EQ(sent("UPDATE t SET U = Hex('4100')"), "UPDATE t SET U = 'A'");
    EXPECT_EQ(sentToServer("UPDATE T SET U = Hex('4100')"), "UPDATE T SET U = 'A'");
    EXPECT_EQ(sentToServer("UPDATE t SET \"U\" = Hex('4100')"),
              "UPDATE t SET \"U\" = '\\x4100'::bytea");
}

TEST(Translate, NothingJoinsTheLiteralBesideIt)
{
    EXPECT_EQ(sent("UPDATE t SET u = 'a'EXTFILE('b')"), "UPDATE t SET u = 'a' 'b'");
    EXPECT_EQ(sent("UPDATE t SET u = EXTFILE('b')'a'"), "UPDATE t SET u = 'b' 'a'");
}

TEST(Translate, WhatADatasetWritesTheEngineReadsBackTheSame)
{
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> owner(db, sqlite3_close);
    sqlite3_exec(db, "CREATE TABLE t(id, name, bin, u, d, f); INSERT INTO t(id) VALUES (1)",
                 nullptr, nullptr, nullptr);
    const auto stored = [&](const std::string& sql, const char* column) {
        EXPECT_EQ(sqlite3_exec(db, sent(sql).c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
        sqlite3_stmt* s = nullptr;
        const std::string query = "SELECT " + std::string(column) + " FROM t";
        sqlite3_prepare_v2(db, query.c_str(), -1, &s, nullptr);
        sqlite3_step(s);
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(s, 0));
        std::string value(bytes ? bytes : "", static_cast<size_t>(sqlite3_column_bytes(s, 0)));
        sqlite3_finalize(s);
        return value;
    };
    std::mt19937 random(20261121);
    const std::wstring alphabet = L"aZ'\"\\$?;%_-/*\n\t\u00e9\u20ac\U0001F600\U0010FFFD ";
    for (int i = 0; i < 1000; ++i) {
        std::wstring wide;
        std::string bytes;
        for (size_t n = random() % 12; n > 0; --n) {
            wide += random() % 3 ? alphabet[random() % alphabet.size()]
                                 : static_cast<wchar_t>(1 + random() % 0xD000);
            bytes += static_cast<char>(random());
        }
        std::vector<char16_t> units(wide.size() * 2 + 1);
        const int count =
            RCHARToUnicode(units.data(), wide.c_str(), static_cast<int>(units.size()), true);
        const auto hex = [](const void* data, size_t size) {
            return OviAPI::wideToUtf8(OviAPI::DumpToHexText(data, size));
        };
        const std::string text = OviAPI::wideToUtf8(wide);
        ASSERT_EQ(stored("UPDATE t SET u=Hex('" +
                             hex(units.data(), static_cast<size_t>(count) * 2) + "') WHERE id = 1;",
                         "u"),
                  text);
        ASSERT_EQ(stored("UPDATE t SET bin=Hex('" + hex(bytes.data(), bytes.size()) + "')", "bin"),
                  bytes);
        std::string quoted;
        for (const char c : text)
            quoted += c == '\'' ? std::string("''") : std::string(1, c);
        ASSERT_EQ(stored("UPDATE t SET f=EXTFILE('" + quoted + "')", "f"), text);
        ASSERT_EQ(stored("UPDATE t SET name='" + quoted + "';", "name"), text);
    }
}
