// Parts of the driver for PostgreSQL that are not seen from outside.
#include <set>

#include <dorcpp/errors.h>
#include <dorcpp/postgresql/driver.h>
#include <dorcpp/postgresql/errors.h>
#include <dorcpp/postgresql/keys.h>
#include <dorcpp/postgresql/types.h>

#include "support.h"

using namespace Conformance;
using namespace DorCPP::Postgresql;

namespace {

struct State {
    const char* state;
    int code;
    bool critical; // whether a dataset takes it for the end of the session's work
};

class NativeState : public ::testing::TestWithParam<State> {};

bool isCritical(const DorX& x)
{
    const bool harmless = x.code() >= 2000 && x.code() <= 3000;
    return (x.systemCode() != 0 && !harmless) || (x.code() >= 1000 && x.code() <= 1016);
}

Target target(bool readOnly = false)
{
    const auto& s = server();
    Target t;
    t.engine = SqlDialect::Postgresql;
    t.server = Secret("host=" + s.at("host") + " port=" + s.at("port") +
                      " dbname=" + s.at("database") + " sslmode=disable");
    t.user = s.at("user");
    t.password = Secret(s.at("password"));
    t.readOnly = readOnly;
    return t;
}

} // namespace

TEST_P(NativeState, BecomesItsDbmsCodeAndIsCriticalOnlyWhereItMustBe)
{
    const State& row = GetParam();
    const DorX x = errorFor(row.state, "native words");
    EXPECT_EQ(x.code(), row.code);
    EXPECT_EQ(x.engineCode(), numberOf(row.state));
    EXPECT_NE(x.engineCode(), 0);
    EXPECT_EQ(isCritical(x), row.critical);
    EXPECT_STREQ(x.detail(), "native words");
}

INSTANTIATE_TEST_SUITE_P(
    Postgresql, NativeState,
    ::testing::Values(
        State{"23505", 1022, false}, State{"23502", 1022, false}, State{"23503", 1022, false},
        State{"23514", 1022, false}, State{"42501", 1022, false}, State{"25006", 1022, false},
        State{"22001", 1022, false}, State{"44000", 1022, false}, State{"2BP01", 1022, false},
        State{"P0001", 1022, false}, State{"40001", 129, false}, State{"40P01", 129, false},
        State{"55P03", 135, false}, State{"55006", 135, false}, State{"42601", 2001, false},
        State{"42P01", 2001, false}, State{"42703", 2001, false}, State{"22012", 2001, false},
        State{"22P02", 2001, false}, State{"0A000", 2001, false}, State{"57014", 2050, false},
        State{"25P02", 2051, false}, State{"08P01", 2006, false}, State{"54000", 2005, false},
        State{"26000", 2004, false}, State{"57P01", 1001, true}, State{"57P02", 1002, true},
        State{"57P03", 1002, true}, State{"57P05", 1001, true}, State{"25P03", 1001, true},
        State{"08006", 1001, true}, State{"53100", 1004, true}, State{"53200", 1005, true},
        State{"53300", 1007, true}, State{"58030", 1006, true}, State{"XX001", 1003, true},
        State{"XX000", 2199, false}));

TEST(NativeStates, EveryRowOfTheTableHasPlainWords)
{
    std::set<std::string_view> seen;
    for (const Postgresql::ErrorRow& row : errorTable()) {
        EXPECT_TRUE(seen.insert(row.state).second) << row.state;
        EXPECT_NE(phraseOf(row.code), OviAPI::Phrase::DbOther) << row.state;
    }
}

TEST(ServerTexts, ParametersAreNumbered)
{
    const auto text = [](const std::string& sql) { return ServerText(sql).text(); };
    EXPECT_EQ(text("a = ? and b=?"), "a = $1 and b=$2");
    EXPECT_EQ(text("?3, ?, ?1"), "$3, $4, $1");
    EXPECT_EQ(text("$2, ?"), "$2, $3");
    EXPECT_EQ(text("'?' || \"?\" -- ?\n/* ? */ || $q$?$q$"),
              "'?' || \"?\" -- ?\n/* ? */ || $q$?$q$");
    EXPECT_EQ(text("a ?? b, a ?| b, a ?& b, a @? b"), "a ? b, a ?| b, a ?& b, a @? b");
    EXPECT_EQ(text("'x'||?||?"), "'x'||$1||$2");
    EXPECT_EQ(text("a::int[1:2], :name"), "a::int[1:2], :name");
    EXPECT_EQ(ServerText("?7").parameters(), 7);
    EXPECT_EQ(codeOf([] { ServerText("?0"); }), CodeBadBind);
    EXPECT_EQ(codeOf([] { ServerText("?99999999999"); }), CodeBadBind);
}

TEST(ServerTexts, APlaceInTheServersTextIsFoundInTheClients)
{
    const ServerText server("\xD0\x96 ?? ?1 x");
    EXPECT_EQ(server.text(), "\xD0\x96 ? $1 x");
    EXPECT_EQ(server.clientByte(1), 1);
    EXPECT_EQ(server.clientByte(8), 10); // the x, behind a letter of two bytes and "??"
    EXPECT_EQ(ServerText("abc").clientByte(3), 3);
}

TEST(ColumnTypes, ModifiersBecomeLengths)
{
    const auto length = [](Oid type, int modifier) { return columnType(type, modifier).length; };
    EXPECT_EQ(length(VarcharType, 24), 80);
    EXPECT_EQ(length(VarcharType, -1), 4000);
    EXPECT_EQ(length(VarcharType, 100'004), 65532);
    EXPECT_EQ(length(BpcharType, 5), 4);
    EXPECT_EQ(columnType(BpcharType, 5).type, TypeChar);
    EXPECT_EQ(columnType(BpcharType, -1).type, TypeVarchar);
    EXPECT_EQ(length(NumericType, (38 << 16 | 12) + 4), 48);
    EXPECT_EQ(length(NumericType, (2 << 16 | (-3 & 0x7FF)) + 4), 43);
    EXPECT_EQ(columnType(999'999, -1).type, TypeVarchar);
}

TEST(ColumnTypes, AnUnexpectedBinaryFormIsShownAsItsBytes)
{
    std::string own;
    const Value value = Postgresql::valueOf({Int4Type, true, "\1\2", 2}, own);
    EXPECT_EQ(value.kind, Value::Blob);
    EXPECT_EQ(value.length, 2U);
    EXPECT_EQ(Postgresql::valueOf({NumericType, true, "\0\1", 2}, own).kind, Value::Blob);
}

TEST(Keys, TheValuesGuardARowWhereTheEngineCountsNoVersions)
{
    const Place place(Conformance::Engine::Postgresql);
    PostgresqlDriver driver(target());
    const std::string name = place.schema() + ".t";
    driver.run("CREATE TABLE " + name + "(id int PRIMARY KEY, a text, b float8)", {}, false);
    driver.run("INSERT INTO " + name + " VALUES (1, NULL, 0.1), (2, 'x', 2)", {}, false);
    KeyedText text;
    text.list = "id, a, b";
    text.from = text.alias = name;
    text.key.columns = {"\"id\""};
    text.key.types = {"int4"};
    text.key.rowId = true;
    text.columns = driver.describe("SELECT " + text.list + " FROM " + text.from);
    RowKeys keys;
    driver.readKeys("SELECT id FROM " + name + " ORDER BY id", {}, text.key, keys);
    RowBlock block(3);
    std::vector<int> places(2, -1);
    driver.readRows(text, keys, 0, block, places);
    ASSERT_EQ(places, (std::vector<int>{0, 1}));
    RowStatement statement;
    statement.text = "UPDATE " + name + " SET a = $1";
    statement.parameters = {{1, {Value::Text, 0, 0, "new"}}};
    RowBlock now(3);
    std::unique_ptr<ChangePlan> plan;
    const auto modify = [&](size_t row) {
        now.clear();
        driver.modifyRow(text, keys, row, statement, {block, row, false, now, plan});
    };
    modify(0);
    ASSERT_EQ(now.rows(), 1U);
    EXPECT_EQ(now.value(0, 1).bytes(), "new");
    EXPECT_EQ(now.value(0, 2).real, 0.1);
    EXPECT_EQ(codeOf([&] { modify(0); }), CodeRowChanged);
    driver.run("DELETE FROM " + name + " WHERE id = 2", {}, false);
    EXPECT_EQ(codeOf([&] { modify(1); }), CodeRowGone);
}

TEST(Keys, AKeyPassBeginsWithItsHeader)
{
    PostgresqlDriver driver(target(true));
    TableKey key;
    key.columns = {"\"i\""};
    key.rowId = true;
    RowKeys keys;
    driver.readKeys("SELECT i % 3 AS other, (i - 5)::int2 AS i FROM generate_series(1, 2000) i", {},
                    key, keys);
    ASSERT_EQ(keys.size(), 2000U);
    EXPECT_EQ(keys.packed(0), -4);
    EXPECT_EQ(keys.packed(1999), 1995);
    RowKeys none;
    driver.readKeys("SELECT 1::int8 WHERE false", {}, key, none);
    EXPECT_EQ(none.size(), 0U);
    RowKeys some;
    driver.readKeys("SELECT i::int8 FROM generate_series(1, ?::int4) i",
                    {{1, {Value::Integer, 30, 0, ""}}}, key, some);
    EXPECT_EQ(some.size(), 30U);
}

TEST(Catalogue, ColumnsOfATableHaveTypesAndDefaults)
{
    const Place place(Conformance::Engine::Postgresql);
    PostgresqlDriver driver(target());
    driver.run("CREATE DOMAIN " + place.schema() + ".short AS varchar(3)", {}, false);
    driver.run("CREATE TABLE " + place.schema() + ".t(a int DEFAULT 1 + 2, b bytea, c " +
                   place.schema() + ".short DEFAULT 'x', gone int)",
               {}, false);
    driver.run("ALTER TABLE " + place.schema() + ".t DROP COLUMN gone", {}, false);
    const auto columns = driver.tableColumns(place.schema(), "t");
    ASSERT_EQ(columns.size(), 3U);
    EXPECT_EQ(columns[0].name, "a");
    EXPECT_EQ(columns[0].type, TypeInteger);
    EXPECT_EQ(columns[0].defaultText, "(1 + 2)");
    EXPECT_EQ(columns[1].type, TypeBlob);
    EXPECT_EQ(columns[2].type, TypeVarchar);
    EXPECT_TRUE(driver.tableColumns(place.schema(), "none").empty());
    EXPECT_TRUE(driver.tableColumns("", "t").empty()); // not on the search path
    EXPECT_FALSE(driver.tableColumns("", "pg_class").empty());
    const StatementResult list = driver.run(driver.tableListText(), {}, false);
    ASSERT_EQ(list.columns.size(), 3U);
    bool found = false;
    for (int64_t row = 0; row < list.rows->rows(); ++row)
        found = found || (list.rows->value(row, 0).bytes() == place.schema() &&
                          list.rows->value(row, 1).bytes() == "t" &&
                          list.rows->value(row, 2).bytes() == "table");
    EXPECT_TRUE(found);
}
