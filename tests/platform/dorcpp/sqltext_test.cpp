#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dorcpp/sqltext.h>

using namespace DorCPP;

namespace {

std::vector<std::string> words(std::string_view sql, SqlDialect dialect = SqlDialect::Sqlite)
{
    const SqlText text(sql, dialect);
    std::vector<std::string> all;
    for (size_t i = 0; i < text.count(); ++i)
        all.emplace_back(text.str(i));
    return all;
}

KeyedSelect read(std::string_view sql)
{
    return readSelect(SqlText(sql, SqlDialect::Sqlite));
}

StatementKind kind(std::string_view sql)
{
    return kindOf(SqlText(sql, SqlDialect::Sqlite));
}

using Words = std::vector<std::string>;

} // namespace

TEST(SqlText, StringsNamesAndCommentsAreOneTokenOrNone)
{
    EXPECT_EQ(words("a'it''s; --'\"b\"\"c\" `d` [e]] -- f\n/* ' */g"),
              (Words{"a", "'it''s; --'", "\"b\"\"c\"", "`d`", "[e]", "]", "g"}));
}

TEST(SqlText, UnendedPiecesReachToTheEnd)
{
    EXPECT_EQ(words("'abc"), Words{"'abc"});
    EXPECT_EQ(words("\"abc"), Words{"\"abc"});
    EXPECT_EQ(words("[abc"), Words{"[abc"});
    EXPECT_EQ(words("/* abc"), Words{});
    EXPECT_EQ(words("a -- b"), Words{"a"});
}

TEST(SqlText, NumbersParametersAndSigns)
{
    EXPECT_EQ(
        words("1.5e-3+x ?2 :n @p $q a::int 0x1e-2"),
        (Words{"1.5e-3", "+", "x", "?2", ":n", "@p", "$q", "a", "::", "int", "0x1e", "-", "2"}));
}

TEST(SqlText, DollarQuotesAreStringsOnPostgresqlOnly)
{
    EXPECT_EQ(words("$t$ a ; $t$ b", SqlDialect::Postgresql), (Words{"$t$ a ; $t$", "b"}));
    EXPECT_EQ(words("$t union $t").size(), 3U);
    EXPECT_EQ(words("e'a\\'b' c", SqlDialect::Postgresql), (Words{"e'a\\'b'", "c"}));
    EXPECT_EQ(words("/* a /* b */ c */ d", SqlDialect::Postgresql), Words{"d"});
}

TEST(SqlText, TrailingSemicolonsAreLeftOut)
{
    EXPECT_EQ(words("select 1 ; ;-- x"), (Words{"select", "1"}));
    EXPECT_EQ(kind("  ;; /* nothing */"), StatementKind::Empty);
}

TEST(SqlText, ANameLosesItsQuotes)
{
    const SqlText text("\"a\"\"b\" [c\"d] `e``f` g", SqlDialect::Sqlite);
    EXPECT_EQ(text.name(0), "a\"b");
    EXPECT_EQ(text.name(1), "c\"d");
    EXPECT_EQ(text.name(2), "e`f");
    EXPECT_EQ(text.name(3), "g");
    EXPECT_EQ(quoteName("a\"b"), "\"a\"\"b\"");
}

TEST(SqlText, StatementsAreToldByTheirFirstWords)
{
    EXPECT_EQ(kind("select 1"), StatementKind::Query);
    EXPECT_EQ(kind("with q as (select 1) select * from q"), StatementKind::Query);
    EXPECT_EQ(kind("with q as (select 1) delete from t"), StatementKind::Modify);
    EXPECT_EQ(kind("REPLACE into t values(1)"), StatementKind::Modify);
    EXPECT_EQ(kind("create table t(a)"), StatementKind::Define);
    EXPECT_EQ(kind("create temp table t(a)"), StatementKind::SessionState);
    EXPECT_EQ(kind("begin immediate"), StatementKind::Transaction);
    EXPECT_EQ(kind("pragma foreign_keys=on"), StatementKind::SessionState);
    EXPECT_EQ(kind("attach 'x' as y"), StatementKind::SessionState);
}

TEST(SqlText, ASelectOfOneTableFallsIntoItsPieces)
{
    const KeyedSelect k =
        read("SELECT a, 'x from y' AS b FROM main.\"my t\" AS q INDEXED BY i WHERE a > 1 "
             "ORDER BY 2 LIMIT 3;");
    ASSERT_TRUE(k.keyable) << k.reason;
    EXPECT_EQ(k.list, "a, 'x from y' AS b");
    EXPECT_EQ(k.schema, "main");
    EXPECT_EQ(k.table, "my t");
    EXPECT_EQ(k.from, "main.\"my t\" AS q");
    EXPECT_EQ(k.alias, "q");
    EXPECT_EQ(k.rest, "INDEXED BY i WHERE a > 1 ORDER BY 2 LIMIT 3");
    EXPECT_EQ(k.orderBy, "ORDER BY 2");
    EXPECT_TRUE(k.ordered);
    EXPECT_TRUE(k.limited);
}

TEST(SqlText, WhatIsNotOnePlainSelectIsRefused)
{
    for (const char* sql : {"select distinct a from t",
                            "select a from t group by a",
                            "select a from t, u",
                            "select a from t join u",
                            "select a from t left join u using(a)",
                            "select a from t natural join u",
                            "select a from t union select a from u",
                            "select a from (select 1)",
                            "with q as (select 1) select a from q",
                            "values(1)",
                            "select 1",
                            "select a, row_number() over (order by a) from t",
                            "select sum(a) over w from t window w as (order by a)",
                            "select a from f(1)",
                            "select ?1, a from t",
                            "select random(), a from t",
                            "select current_date from t",
                            "select date('now') from t",
                            "select strftime('%s') from t",
                            "select a into b from t",
                            "select a from t; delete from t",
                            "select a from t for update",
                            "select a from"}) {
        EXPECT_FALSE(read(sql).keyable) << sql;
    }
}

TEST(SqlText, WordsInsideParenthesesAndStringsDecideNothing)
{
    for (const char* sql :
         {"select (select max(x) from u group by y) from t",
          "select a from t where b in (select c from u union select d from v)",
          "select 'group by', \"union\" from t", "select date(a), strftime('%Y', a) from t",
          "select a from t where b = ? and c = random()", "select all a from t",
          "select a from t -- , u\n where a = 1 /* group by */"}) {
        EXPECT_TRUE(read(sql).keyable) << sql << ": " << read(sql).reason;
    }
}

TEST(SqlText, TheKeyPassReadsKeysAloneInTheOrderOfTheRows)
{
    EXPECT_EQ(keyPassText(read("select a, b from t x where b > 1"), {"rowid"}),
              "SELECT \"row key 1\" FROM (SELECT a, b, x.rowid AS \"row key 1\" FROM t x "
              "where b > 1 ORDER BY x.rowid) AS \"row keys\"");
    EXPECT_EQ(keyPassText(read("select a from t order by 1"), {"rowid"}),
              "SELECT \"row key 1\" FROM (SELECT a, t.rowid AS \"row key 1\" FROM t order by 1) "
              "AS \"row keys\"");
    EXPECT_EQ(keyPassText(read("select * from t"), {"\"k\"", "\"l\""}),
              "SELECT \"row key 1\", \"row key 2\" FROM (SELECT *, t.\"k\" AS \"row key 1\", "
              "t.\"l\" AS \"row key 2\" FROM t ORDER BY t.\"k\", t.\"l\") AS \"row keys\"");
}

TEST(SqlText, ALimitWithoutAnOrderKeepsTheWholeListInTheKeyPass)
{
    EXPECT_EQ(keyPassText(read("select a from t limit 5"), {"rowid"}),
              "SELECT a, t.rowid AS \"row key 1\" FROM t limit 5");
}

TEST(SqlText, TheProbeMatchesNoRow)
{
    EXPECT_EQ(probeText(read("select a from t where b order by count(*) limit ?"), {"rowid"}),
              "SELECT a, t.rowid AS \"row key 1\" FROM t WHERE 1 = 0 order by count(*)");
}

TEST(SqlText, ColumnsOfSubqueriesAreKnownAlsoBesideAStar)
{
    const auto columns = [](std::string_view list, size_t count) {
        return subqueryColumns(SqlText(list, SqlDialect::Sqlite), count);
    };
    EXPECT_EQ(columns("a, (select b from u), a*2", 3), (std::vector<bool>{false, true, false}));
    EXPECT_EQ(columns("t.*, (select b from u)", 4), (std::vector<bool>{false, false, false, true}));
    EXPECT_EQ(columns("*, t.*", 4), (std::vector<bool>{false, false, false, false}));
}
