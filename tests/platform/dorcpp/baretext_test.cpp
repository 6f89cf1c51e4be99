// Statements without their literals: what they are.
#include <dorcpp/baretext.h>

#include <optional>
#include <string>

#include <gtest/gtest.h>

using namespace DorCPP;

namespace {

std::optional<BareText> bare(const std::string& sql)
{
    return withoutLiterals(SqlText(sql, SqlDialect::Sqlite));
}

std::string bareText(const std::string& sql)
{
    const std::optional<BareText> found = bare(sql);
    return found ? found->text : "none";
}

// The value that a literal becomes, as "kind value"; "none" when it stays.
std::string bound(const std::string& literal)
{
    const std::optional<BareText> found = bare("UPDATE t SET c = " + literal);
    if (!found || found->values.size() != 1)
        return "none";
    const Parameter& value = found->values[0].second;
    switch (value.kind) {
    case Value::Integer:
        return "integer " + std::to_string(value.integer);
    case Value::Real:
        return "real " + std::to_string(value.real);
    case Value::Text:
        return "text " + value.bytes;
    case Value::Blob:
        return "blob " + value.bytes;
    default:
        return "null";
    }
}

} // namespace

TEST(BareText, TheLiteralsOfARowBecomeParameters)
{
    EXPECT_EQ(bareText("insert into \"o\".\"t\" (\"a\",\"b\") values (1,'x')"),
              "insert into \"o\" . \"t\" ( \"a\" , \"b\" ) values ( ?1 , ?2 ) ");
    EXPECT_EQ(bareText("UPDATE \"o\".\"t\" SET \"c\"='v', d = NULL;"),
              "UPDATE \"o\" . \"t\" SET \"c\" = ?1 , d = ?2 ");
}

TEST(BareText, StatementsThatDifferInTheirValuesOnlyHaveOneText)
{
    const std::string text = bareText("INSERT INTO t (a, b) VALUES (1, 'secret')");
    EXPECT_EQ(bareText("INSERT INTO t(a,b)VALUES(-2.5,x'00');"), text);
    EXPECT_EQ(bareText("INSERT INTO t (a, b) VALUES (NULL, '''')"), text);
    EXPECT_EQ(text.find("secret"), std::string::npos);
}

TEST(BareText, APlainLiteralBecomesItsValue)
{
    EXPECT_EQ(bound("0"), "integer 0");
    EXPECT_EQ(bound("-007"), "integer -7");
    EXPECT_EQ(bound("999999999999999999"), "integer 999999999999999999");
    EXPECT_EQ(bound("2.5"), "real 2.500000");
    EXPECT_EQ(bound("-.5e1"), "real -5.000000");
    EXPECT_EQ(bound("5."), "real 5.000000");
    EXPECT_EQ(bound("1E+2"), "real 100.000000");
    EXPECT_EQ(bound("'O''Brien'"), "text O'Brien");
    EXPECT_EQ(bound("''"), "text ");
    EXPECT_EQ(bound("X'4a4B'"), "blob JK");
    EXPECT_EQ(bound("x''"), "blob ");
    EXPECT_EQ(bound("NULL"), "null");
}

TEST(BareText, WhatIsNoPlainLiteralStays)
{
    for (const char* value : {"1000000000000000000",
                              "0x10",
                              "1_000",
                              "5abc",
                              "1.5.5",
                              "1e",
                              ".",
                              "+5",
                              "--5",
                              "1+1",
                              "(1)",
                              "-'1'",
                              "- -1",
                              "'a' 'b'",
                              "'open",
                              "\"name\"",
                              "x'4'",
                              "x'4g'",
                              "x '41'",
                              "x",
                              "DEFAULT",
                              "Hex('41')",
                              "EXTFILE('f')",
                              "CURRENT_TIMESTAMP",
                              "abs(1)",
                              "?",
                              "?1",
                              ":a",
                              "'a'||'b'",
                              "1 -- one",
                              "/* one */ 1",
                              "1\v",
                              "",
                              "'a' COLLATE NOCASE"})
        EXPECT_EQ(bound(value), "none") << value;
    EXPECT_EQ(bareText("UPDATE t SET c = true"), "UPDATE t SET c = true ");
}

TEST(BareText, AnyOtherStatementStays)
{
    for (const char* sql : {"",
                            "SELECT 1",
                            "DELETE FROM t",
                            "INSERT INTO t VALUES (1)",
                            "INSERT INTO t DEFAULT VALUES",
                            "INSERT OR REPLACE INTO t (a) VALUES (1)",
                            "REPLACE INTO t (a) VALUES (1)",
                            "INSERT INTO t (a) VALUES (1), (2)",
                            "INSERT INTO t (a) VALUES (1, 2)",
                            "INSERT INTO t (a, b) VALUES (1)",
                            "INSERT INTO t (a) VALUES (1) RETURNING a",
                            "INSERT INTO t (a) VALUES (1) ON CONFLICT DO NOTHING",
                            "INSERT INTO t (a) SELECT 1",
                            "INSERT INTO t AS u (a) VALUES (1)",
                            "INSERT INTO 't' (a) VALUES (1)",
                            "INSERT INTO t (a) VALUES (1",
                            "INSERT INTO t (a) VALUES (1); SELECT 2",
                            "UPDATE t SET a = 1 WHERE b = 2",
                            "UPDATE OR FAIL t SET a = 1",
                            "UPDATE t SET a = b",
                            "UPDATE t SET (a, b) = (1, 2)",
                            "UPDATE t SET a = 1 FROM u",
                            "UPDATE t SET",
                            "WITH u AS (SELECT 1) UPDATE t SET a = 1"})
        EXPECT_EQ(bareText(sql), "none") << sql;
}

TEST(BareText, ATextThatWouldFillACacheStays)
{
    EXPECT_EQ(bound('\'' + std::string(60'000, 'a') + '\'').size(), 60'005U);
    EXPECT_EQ(bound('\'' + std::string(70'000, 'a') + '\''), "none");
    std::string assignments = "a = 1";
    for (int i = 1; i < 1000; ++i)
        assignments += ", a = 1";
    EXPECT_NE(bareText("UPDATE t SET " + assignments), "none");
    EXPECT_EQ(bareText("UPDATE t SET " + assignments + ", a = 1"), "none");
}

TEST(BareText, OfRealNumbersOnlyThoseThatAreReadOtherwiseAreTakenOut)
{
    const auto exact = [](const std::string& sql) {
        return withExactReals(SqlText(sql, SqlDialect::Sqlite), [](const std::string& digits) {
            return digits == "2.5" ? 2.5 : 0.125;
        });
    };
    const auto found = exact("UPDATE t SET a = -1.5 + f(2.5, '3.5'), b=4.5e1 WHERE c = 5");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->text, "UPDATE t SET a = -?1 + f(2.5, '3.5'), b=?2 WHERE c = 5");
    ASSERT_EQ(found->values.size(), 2U);
    EXPECT_EQ(found->values[0].second.real, 1.5);
    EXPECT_EQ(found->values[1].second.real, 45);
    EXPECT_FALSE(exact("UPDATE t SET a = 2.5, b = 1, c = 1e999, d = 1.5x"));
    EXPECT_FALSE(exact("UPDATE t SET a = 1.5, b = ?")) << "its parameters have their numbers";
}
