#include <cstring>
#include <string>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

class Statement : public Database {
protected:
    Statement()
    {
        execute("CREATE TABLE t(i INTEGER PRIMARY KEY, a TEXT, b BLOB, c DOUBLE, d DATETIME)");
    }
    DorStatement statement;
    BindMap binds;
};

BindValue textValue(std::string_view s)
{
    return {TypeChar, s.data(), s.size(), 0};
}

} // namespace

TEST_F(Statement, ParametersAreCounted)
{
    statement.create(connection, "SELECT * FROM t WHERE i = ? AND a = ?", false);
    EXPECT_EQ(statement.paramCount(), 2);
    statement.create(connection, "SELECT * FROM t WHERE i = ?3", true);
    EXPECT_EQ(statement.paramCount(), 3);
    statement.create(connection, "SELECT 1", false);
    EXPECT_EQ(statement.paramCount(), 0);
    statement.create(connection, "-- nothing", false);
    EXPECT_EQ(statement.paramCount(), 0);
    cursor.execute(statement, nullptr);
    EXPECT_EQ(cursor.columnCount(), 0);
}

TEST_F(Statement, AWrongTextIsRefusedWhenItIsCreated)
{
    EXPECT_EQ(codeOf([&] { statement.create(connection, "SELEC", false); }), CodeSqlText);
    EXPECT_FALSE(statement.isCreated());
    EXPECT_EQ(codeOf([&] { statement.create(connection, "SELECT 1; SELECT 2", true); }),
              CodeSeveralStatements);
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, nullptr); }), CodeBadCall);
}

TEST_F(Statement, ValuesOfEveryClientTypeArriveWhole)
{
    statement.create(connection, "INSERT INTO t VALUES(?, ?, ?, ?, ?)", true);
    const int64_t i = INT64_MIN;
    const double c = 0.1;
    const int64_t d = 1'500'000;
    binds.bind(1, {TypeBigint, &i, sizeof i, 0});
    binds.bind(2, textValue(std::string_view("O'Brien\0x", 9)));
    binds.bind(3, {TypeByte, "\x00\xFF", 2, 0});
    binds.bind(4, {TypeDouble, &c, sizeof c, 0});
    binds.bind(5, {TypeDate, &d, sizeof d, 0});
    cursor.execute(statement, &binds);
    EXPECT_EQ(cursor.changedRowCount(), 1);
    execute("SELECT i, hex(a), hex(b), c, d, typeof(b) FROM t");
    EXPECT_EQ(rows(cursor),
              std::vector<std::string>{
                  "-9223372036854775808|4F27427269656E0078|00FF|0.1|1970-01-01 00:00:01.5|blob"});
}

TEST_F(Statement, ANullIsTheIndicatorNotAnEmptyText)
{
    statement.create(connection, "INSERT INTO t(a, b, c) VALUES(?, ?, ?)", false);
    BindValue null = textValue("ignored");
    null.indicator = 1;
    binds.bind(1, null);
    binds.bind(2, textValue(""));
    cursor.execute(statement, &binds); // the third has no value at all
    execute("SELECT a IS NULL, b = '', c IS NULL FROM t");
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"1|1|1"});
}

TEST_F(Statement, ASelectWithParametersIsKeyedAndExecutedAgain)
{
    execute("INSERT INTO t(a) VALUES('x'), ('y'), ('x')");
    statement.create(connection, "SELECT i, a FROM t WHERE a = ? ORDER BY i DESC LIMIT ?", true);
    binds.bind(1, textValue("x"));
    binds.bind(2, textValue("5"));
    cursor.execute(statement, &binds);
    EXPECT_TRUE(cursor.isKeyed());
    EXPECT_EQ(rows(cursor), (std::vector<std::string>{"3|x", "1|x"}));
    binds.bind(1, textValue("y"));
    cursor.execute(statement, &binds);
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"2|y"});
}

TEST_F(Statement, AParameterInTheListIsSpooled)
{
    execute("INSERT INTO t(a) VALUES('x')");
    statement.create(connection, "SELECT ?1 || a FROM t WHERE a = ?2", false);
    binds.bind(1, textValue("1"));
    binds.bind(2, textValue("x"));
    cursor.execute(statement, &binds);
    EXPECT_FALSE(cursor.isKeyed());
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"1x"});
}

TEST_F(Statement, AParameterNumberThatDoesNotExistIsRefused)
{
    statement.create(connection, "SELECT * FROM t WHERE i = ?", false);
    binds.bind(2, textValue("x"));
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), CodeBadBind);
    binds.clear();
    binds.bind(0, textValue("x"));
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), CodeBadBind);
}

TEST_F(Statement, ManyRowsAreInsertedThroughOneStatementAndThroughTexts)
{
    execute("BEGIN");
    statement.create(connection, "INSERT INTO t(i, a) VALUES(?, ?)", true);
    for (int64_t i = 1; i <= 5000; ++i) {
        const std::string a = std::to_string(i);
        binds.bind(1, {TypeBigint, &i, sizeof i, 0});
        binds.bind(2, textValue(a));
        cursor.execute(statement, &binds);
    }
    for (int i = 5001; i <= 10000; ++i)
        execute("INSERT INTO t(i, a) VALUES(" + std::to_string(i) + ", '" + std::to_string(i) +
                "')");
    execute("COMMIT");
    execute("SELECT count(*), sum(i = CAST(a AS INTEGER)) FROM t");
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"10000|10000"});
}

TEST_F(Statement, AStatementOutlivesAChangeOfTheSchema)
{
    execute("INSERT INTO t(a) VALUES('x')");
    statement.create(connection, "SELECT * FROM t", true);
    cursor.execute(statement, nullptr);
    EXPECT_EQ(cursor.columnCount(), 5);
    execute("ALTER TABLE t ADD COLUMN e TEXT DEFAULT 'new'");
    cursor.execute(statement, nullptr);
    EXPECT_EQ(cursor.columnCount(), 6);
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(text(cursor, 6), "new");
}
