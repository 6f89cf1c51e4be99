// Statements that are executed without their literals: nobody can tell.
#include <dorcpp/baretext.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include <dorcpp/cursor.h>
#include <dorcpp/driver.h>
#include <dorcpp/monitor.h>
#include <dorcpp/value.h>
#include <sqlite3.h>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

// Whether the literals of the statement are taken out.
bool isBare(const std::string& sql)
{
    return withoutLiterals(SqlText(sql, SqlDialect::Sqlite)).has_value();
}

struct CloseEngine {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};

// Another connection to the file.
class Beside {
public:
    explicit Beside(const std::string& path)
    {
        sqlite3* db = nullptr;
        EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
        m_db.reset(db);
    }
    void execute(const std::string& sql)
    {
        EXPECT_EQ(sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_db.get());
    }
    // Every cell of the answer with its type, real numbers to the last bit.
    std::string cells(const std::string& sql)
    {
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_db.get());
        const std::unique_ptr<sqlite3_stmt, FinalizeStatement> owner(statement);
        std::string all;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(statement); ++i)
                all += cell(statement, i) + '|';
            all += '\n';
        }
        return all;
    }

private:
    static std::string cell(sqlite3_stmt* statement, int i)
    {
        switch (sqlite3_column_type(statement, i)) {
        case SQLITE_INTEGER:
            return "integer " + std::to_string(sqlite3_column_int64(statement, i));
        case SQLITE_FLOAT: {
            const double real = sqlite3_column_double(statement, i);
            uint64_t bits = 0;
            std::memcpy(&bits, &real, sizeof bits);
            return "real " + std::to_string(bits);
        }
        case SQLITE_NULL:
            return "null";
        default: {
            const bool text = sqlite3_column_type(statement, i) == SQLITE_TEXT;
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, i));
            const auto size = static_cast<size_t>(sqlite3_column_bytes(statement, i));
            return (text ? "text " : "blob ") + (bytes ? std::string(bytes, size) : "");
        }
        }
    }
    std::unique_ptr<sqlite3, CloseEngine> m_db;
};

// A session on a file with tables that look closely at what they get. While a monitor is set the
// client sends every statement as it stands.
class Side {
public:
    Side(const std::string& path, bool literally, const std::string& encoding)
        : m_literally(literally)
        , m_path(path)
    {
        open(m_connection, path);
        m_cursor.create(m_connection, 0, nullptr, true);
        m_row.create(m_connection, 0, nullptr, true);
        m_cursor.execute(("PRAGMA encoding = '" + encoding + '\'').c_str());
        m_cursor.execute("BEGIN");
        for (const char* sql : tables)
            m_cursor.execute(sql);
    }

    // What came of the statement: all that an application can see.
    std::string execute(const std::string& sql)
    {
        return outcome([&] {
            m_cursor.execute(sql.c_str());
            return std::to_string(m_cursor.changedRowCount());
        });
    }
    // The same on the row of a cursor.
    std::string executeOnRow(const std::string& assignments)
    {
        return outcome([&] {
            if (m_row.selectRowCount() == 0) // a comment can hide the end of the statement before
                m_row.execute("SELECT * FROM plain WHERE rowid = 1");
            m_row.fetchAnew(1);
            m_row.execute(("UPDATE plain SET " + assignments + " WHERE CURRENT OF CURSOR").c_str());
            std::string row;
            for (int i = 2; i <= m_row.columnCount(); ++i)
                row += text(m_row, i) + '|';
            return row;
        });
    }
    std::string stored()
    {
        m_row.close();
        m_cursor.execute("COMMIT");
        Beside beside(m_path);
        std::string all;
        for (const char* table : {"plain", "strict", "checked", "keyed", "once", "wide", "log"})
            all += beside.cells(std::string("SELECT * FROM ") + table);
        return all;
    }

    static constexpr const char* columns[][2] = {
        {"plain", "i"},     {"plain", "r"},     {"plain", "n"},      {"plain", "t"},
        {"plain", "b"},     {"plain", "x"},     {"plain", "d"},      {"plain", "ts"},
        {"plain", "f"},     {"plain", "dec"},   {"strict", "i"},     {"strict", "r"},
        {"strict", "t"},    {"strict", "b"},    {"strict", "a"},     {"checked", "x"},
        {"keyed", "id"},    {"keyed", "rowid"}, {"once", "u"},       {"wide", "x"},
        {"seen", "x"},      {"missing", "x"},   {"plain", "nobody"}, {"plain", "order"},
        {"plain", "order"},
    };

private:
    static constexpr const char* tables[] = {
        "CREATE TABLE plain(i INTEGER, r REAL, n NUMERIC, t TEXT, b BLOB, x, d DATE, ts TIMESTAMP,"
        " f BOOLEAN, dec DECIMAL(10, 2))",
        "INSERT INTO plain(i) VALUES (-1)",
        "CREATE TABLE strict(i INT, r REAL, t TEXT, b BLOB, a ANY) STRICT",
        "CREATE TABLE checked(x NOT NULL DEFAULT 1 CHECK (typeof(x) <> 'real' AND x <> 'no'),"
        " g AS (typeof(x) || quote(x)) STORED, k INTEGER AS (x + 1))",
        "CREATE TABLE keyed(id INTEGER PRIMARY KEY, x DEFAULT 5)",
        "CREATE TABLE once(u TEXT COLLATE NOCASE DEFAULT 'one' PRIMARY KEY) WITHOUT ROWID",
        "CREATE TABLE wide(x CHAR(3), y)",
        "CREATE TABLE log(what, kind, value)",
        "CREATE TRIGGER before BEFORE INSERT ON wide BEGIN"
        " INSERT INTO log VALUES ('before', typeof(new.x), new.x); END",
        "CREATE TRIGGER after AFTER UPDATE OF x ON wide BEGIN"
        " INSERT INTO log VALUES ('after', typeof(new.x), new.x || '!');"
        " SELECT RAISE(ABORT, 'not this one') WHERE new.x = 'no'; END",
        "CREATE VIEW seen AS SELECT x, y FROM wide",
        "CREATE TRIGGER instead INSTEAD OF INSERT ON seen BEGIN"
        " INSERT INTO log VALUES ('instead', typeof(new.x), new.x);"
        " INSERT INTO wide(y) VALUES (new.x); END",
        "CREATE TRIGGER updated INSTEAD OF UPDATE ON seen BEGIN"
        " INSERT INTO log VALUES ('updated', typeof(new.x), new.x); END",
    };

    template<class Work>
    std::string outcome(const Work& work)
    {
        if (m_literally)
            setMonitor([](const MonitorRecord&) {});
        std::string result;
        try {
            result = "done " + work();
        } catch (const DorX& x) {
            result = "error " + std::to_string(x.code()) + ' ' + std::to_string(x.engineCode()) +
                     " at " + std::to_string(x.position()) + ": " + x.what();
        }
        if (m_literally)
            setMonitor({});
        return result;
    }

    const bool m_literally;
    const std::string m_path;
    DorConnect m_connection;
    DorCursor m_cursor;
    DorCursor m_row;
};

// Both ways of one statement, on files of their own.
class Sameness : public ::testing::TestWithParam<const char*> {
protected:
    Sameness()
        : m_asText(m_folder.file("text.db"), true, GetParam())
        , m_asValues(m_folder.file("values.db"), false, GetParam())
    {
    }
    void compare(const std::string& sql)
    {
        m_bare += isBare(sql);
        EXPECT_EQ(m_asValues.execute(sql), m_asText.execute(sql)) << sql;
    }
    void compareOnRow(const std::string& assignments)
    {
        m_bare += isBare("UPDATE plain SET " + assignments);
        const std::string found = m_asValues.executeOnRow(assignments);
        m_done += found.starts_with("done");
        EXPECT_EQ(found, m_asText.executeOnRow(assignments)) << assignments;
    }
    // Keeps what the column holds now, with its type, and makes the table empty: the engine gives
    // rows behind the last number numbers by chance.
    void noteAndClear(const std::string& table, const std::string& column)
    {
        compare("INSERT INTO log SELECT '" + table + "', typeof(" + column + "), " + column +
                " FROM " + table);
        compare("DELETE FROM " + table);
    }
    // Shows what begins with the first difference: all of it would be much.
    void compareStored()
    {
        const std::string values = m_asValues.stored();
        const std::string texts = m_asText.stored();
        const auto differ =
            std::mismatch(values.begin(), values.end(), texts.begin(), texts.end()).first;
        const auto at = static_cast<size_t>(differ - values.begin());
        EXPECT_EQ(values.substr(at, 200), texts.substr(at, 200));
    }
    int bareCount() const { return m_bare; }
    int doneOnRow() const { return m_done; }

private:
    Folder m_folder;
    Side m_asText;
    Side m_asValues;
    int m_bare = 0;
    int m_done = 0;
};

const char* const hostile[] = {
    // numbers
    "0", "-0", "007", "-1", "12", "9223372036854775807", "9223372036854775808",
    "-9223372036854775808", "-9223372036854775809", "999999999999999999", "1000000000000000000",
    "-999999999999999999", "0x10", "-0x10", "0xFFFFFFFFFFFFFFFF", "0x", "+5", "- 5", "--5", "1e5",
    "1E+5", "1e-5", "1e400", "-1e400", "1e-400", ".5", "5.", "-.5", "5.e3", "1.5.5", "1_000",
    "5abc", "0.1", "2.5", "-0.0", "0.0", "1e", "1e+", "123456789012345678901234567890.5",
    "1.7976931348623157e308", "4.9e-324", "0.30000000000000004", "9007199254740993.0",
    "2.2250738585072011e-308", "179769313486231580793e289", "3.0", "1e18", "9223372036854775807.0",
    "59122.15802377", "-41123.98330317", "14063.899826309208729e-40",
    // texts
    "''", "'a'", "'O''Brien'", "''''", "'line\nbreak'", "'\xC3\xBC \xF0\x9F\x98\x80'", "'\xFF\xC3'",
    "'12'", "' 12 '", "'12abc'", "'1e5'", "'0x10'", "'9223372036854775808'", "'0.1'", "'-0'",
    "'null'", "'true'", "'?1'", "':a'", "'a--b'", "'a/*b*/'", "'a;b'", "'a\\b'", "'no'", "'NO'",
    "'open", "'a' 'b'", "'a''b", "'inf'", "'nan'",
    // names and bytes
    "\"abc\"", "[abc]", "`abc`", "abc", "x''", "X'41'", "x'4'", "x'4g'", "x '41'", "x'41'", "x",
    "x'00ff80'", "x'C3BC'",
    // words
    "NULL", "null", "TRUE", "false", "DEFAULT", "NOT NULL", "i", "rowid",
    // what the client translates
    "Hex('41')", "Hex('4100')", "Hex('4')", "EXTFILE('x')", "'03/04/2005'", "'03/04/2005:06:07:08'",
    "'13/45/2005'", "'02/30/2005:00:00:00'", "'03/04/0000'", "'03/04/2005:06:07:08.123456'",
    "'03/04/2005:06:07:08.1234567'", "'03/04/2005 06:07:08'", "'2005-03-04'", "'03/04/2005:6'",
    // anything else
    "abs(-1)", "1+1", "'a'||'b'", "CAST('1' AS INTEGER)", "(1)", "(SELECT 1)", "NOT 1", "~1", "?",
    "?1", ":x", "1, 2", "1; SELECT 1", "1 -- one", "/* one */ 1", "1\v", "", ")",
    "'a' COLLATE NOCASE"};

} // namespace

TEST_P(Sameness, OfEveryHostileLiteralInEveryKindOfColumn)
{
    for (const auto& [table, column] : Side::columns) {
        const std::string name = table;
        for (const char* value : hostile) {
            compare("INSERT INTO " + name + " (" + column + ") VALUES (" + value + ')');
            noteAndClear(name, column);
            compare("INSERT INTO " + name + " DEFAULT VALUES");
            compare("UPDATE main." + name + " SET " + column + " = " + value);
            noteAndClear(name, column);
        }
    }
    EXPECT_GT(bareCount(), 2500);
    compareStored();
}

TEST_P(Sameness, OfEveryHostileLiteralOnTheRowOfACursor)
{
    for (const auto& [table, column] : Side::columns) {
        if (std::string_view(table) != "plain")
            continue;
        for (const char* value : hostile)
            compareOnRow(std::string(column) + " = " + value);
    }
    EXPECT_GT(bareCount(), 500);
    EXPECT_GT(doneOnRow(), 500);
    compareStored();
}

namespace {

// Statements made of pieces, most of them right.
class Maker {
public:
    std::string insert()
    {
        const auto& [table, column] = Side::columns[below(std::size(Side::columns))];
        std::string names = column;
        std::string values = value();
        if (below(3) == 0) {
            names += std::string(", ") + Side::columns[below(std::size(Side::columns))][1];
            values += ',' + value();
        }
        return "INSERT" + gap() + "INTO" + gap() + '"' + table + "\" (" + names + ')' + gap() +
               "VALUES (" + values + ')' + (below(9) == 0 ? gap() + ';' : "");
    }
    std::string assignments()
    {
        constexpr size_t columnsOfPlain = 10;
        std::string text;
        for (size_t i = 0; i == 0 || below(3) == 0; ++i)
            text += (i == 0 ? "" : ", ") + std::string(Side::columns[below(columnsOfPlain)][1]) +
                    '=' + value();
        return text;
    }

private:
    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(m_random); }
    std::string from(std::string_view signs, size_t most)
    {
        std::string text;
        for (size_t i = below(most + 1); i > 0; --i)
            text += signs[below(signs.size())];
        return text;
    }
    std::string gap()
    {
        static constexpr const char* gaps[] = {"\t",      "\n", "\r\n", " /* x */ ",
                                               " -- x\n", "\f", "\v"};
        return below(10) == 0 ? gaps[below(std::size(gaps))] : " ";
    }
    std::string value()
    {
        switch (below(8)) {
        case 0:
            return hostile[below(std::size(hostile))];
        case 1:
            return (below(2) ? "-" : "") + from("0123456789", 20);
        case 2:
        case 3: // every way to write a real number, and some that are none
            return (below(2) ? "-" : "") + from("0123456789", 19) + '.' + from("0123456789", 19) +
                   (below(2) ? "e" + from("+-", 1) + from("0123456789", 3) : "");
        case 4:
            return "x'" + from("0123456789abcdefABCDEF", 8) + '\'';
        case 5:
            return '\'' + from("0123456789./:- ", 24) + '\'';
        case 6:
            return "'0" + from("123456789", 1) + "/1" + from("0123456789", 1) + "/200" +
                   from("0123456789", 1) +
                   (below(2) ? ":12:1" + from("0123456789", 1) + ":5" + from("0123456789", 1)
                             : "") +
                   '\'';
        default:
            return '\'' + from("ab'\"\\;?-/*\n\x80\xC3\xBC", 12) + '\'';
        }
    }

    std::mt19937 m_random{20'061'103};
};

} // namespace

TEST_P(Sameness, OfThousandsOfRandomStatements)
{
    Maker maker;
    for (int i = 0; i < 4000; ++i) {
        compare(maker.insert());
        compare("DELETE FROM keyed WHERE id = 9223372036854775807"); // as above
        if (i % 4 == 0)
            compareOnRow(maker.assignments());
    }
    EXPECT_GT(bareCount(), 2000);
    compareStored();
}

INSTANTIATE_TEST_SUITE_P(Utf8, Sameness, ::testing::Values("UTF-8"));
INSTANTIATE_TEST_SUITE_P(Utf16, Sameness, ::testing::Values("UTF-16le"));

namespace {

// Another connection changes the file between two insertions that have one bare text.
class KeptStatement : public Database {
protected:
    KeptStatement()
        : m_beside(path())
    {
        execute("CREATE TABLE t(x TEXT)");
        insert("1");
    }
    void insert(const std::string& value)
    {
        const std::string sql = "INSERT INTO t (x) VALUES (" + value + ')';
        ASSERT_TRUE(isBare(sql));
        execute(sql);
    }
    void beside(const std::string& sql) { m_beside.execute(sql); }
    std::string stored() { return m_beside.cells("SELECT x FROM t"); }

private:
    Beside m_beside;
};

} // namespace

TEST_F(KeptStatement, TakesTheTypeThatAColumnHasGot)
{
    beside("DROP TABLE t; CREATE TABLE t(x INTEGER)");
    insert("'2'");
    EXPECT_EQ(stored(), "integer 2|\n");
}

TEST_F(KeptStatement, TellsWhereATableIsMissingUntilItIsThereAgain)
{
    beside("DROP TABLE t");
    try {
        insert("2");
        FAIL();
    } catch (const DorX& x) {
        EXPECT_EQ(x.code(), CodeSqlText);
        EXPECT_STREQ(x.detail(), "no such table: t");
    }
    beside("CREATE TABLE t(y, x)");
    insert("3");
    EXPECT_EQ(stored(), "integer 3|\n");
}

TEST_F(KeptStatement, PutsAFaultWhereItStandsInTheStatement)
{
    const std::string sql = "UPDATE t SET x = 'a long text', order = 1";
    ASSERT_TRUE(isBare(sql));
    try {
        execute(sql);
        FAIL();
    } catch (const DorX& x) {
        EXPECT_EQ(x.position(), static_cast<int>(sql.find("order")) + 1);
    }
}

TEST_F(KeptStatement, FiresATriggerThatWasAdded)
{
    beside("CREATE TRIGGER g AFTER INSERT ON t BEGIN UPDATE t SET x = x || '!'; END");
    insert("2");
    EXPECT_EQ(stored(), "text 1!|\ntext 2!|\n");
}

TEST_F(KeptStatement, ChecksAConstraintThatWasAdded)
{
    beside("CREATE UNIQUE INDEX one ON t(x)");
    EXPECT_EQ(codeOf([&] { execute("INSERT INTO t (x) VALUES (1)"); }), CodeRefused);
}

TEST_F(KeptStatement, FindsATemporaryTableThatHidesTheOther)
{
    execute("CREATE TEMP TABLE t(x)");
    insert("2");
    EXPECT_EQ(stored(), "text 1|\n");
    execute("DROP TABLE temp.t");
    insert("3");
    EXPECT_EQ(stored(), "text 1|\ntext 3|\n");
}

TEST_F(KeptStatement, ObeysASettingThatWasMade)
{
    execute("CREATE TABLE c(x CHECK (x > 0))");
    const auto negative = [&] { execute("INSERT INTO c (x) VALUES (-1)"); };
    EXPECT_NE(codeOf(negative), 0);
    execute("PRAGMA ignore_check_constraints = ON");
    EXPECT_EQ(codeOf(negative), 0);
    execute("PRAGMA ignore_check_constraints = OFF");
    EXPECT_NE(codeOf(negative), 0);
}

TEST_F(KeptStatement, IsNotUsedWhileAnotherDatabaseIsAttached)
{
    Target target;
    target.path = path();
    const std::unique_ptr<Driver> driver = openSqlite(target);
    const SqlText sql("INSERT INTO t (x) VALUES (1)", SqlDialect::Sqlite);
    EXPECT_TRUE(driver->withoutLiterals(sql));
    driver->run("ATTACH ':memory:' AS other", {}, false);
    EXPECT_FALSE(driver->withoutLiterals(sql));
    driver->run("DETACH other", {}, false);
    EXPECT_TRUE(driver->withoutLiterals(sql));
}

TEST_F(KeptStatement, IsShownToAMonitorWithItsLiterals)
{
    std::string seen;
    setMonitor([&](const MonitorRecord& record) { seen += record.text; });
    insert("'seen'");
    setMonitor({});
    EXPECT_EQ(seen, "INSERT INTO t (x) VALUES ('seen')");
}

TEST_F(Database, StoresEveryRealNumberAsItIsWritten)
{
    execute("CREATE TABLE t(id INTEGER PRIMARY KEY, r REAL, x, b BLOB)");
    std::mt19937_64 random(1103);
    std::vector<double> numbers{7.324379665221355e-299,   59122.15802377, 1.1291327020899217e-296,
                                -2.7478983796477538e-306, 4.9e-324,       1.7976931348623157e308};
    while (numbers.size() < 500) {
        const auto bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        if (std::isfinite(number))
            numbers.push_back(number);
    }
    std::string expected;
    for (size_t i = 0; i < numbers.size(); ++i) {
        const std::string text = numberText(numbers[i]);
        const std::string id = std::to_string(i + 1);
        switch (i % 3) {
        case 0:
            execute("INSERT INTO t (id, r, x) VALUES (" + id + ", " + text + ", " + text + ')');
            break;
        case 1: // with what stays in the text
            execute("INSERT INTO t VALUES (" + id + ", " + text + ", 0 + " + text + ", Hex('41'))");
            break;
        default:
            setMonitor([](const MonitorRecord&) {});
            execute("INSERT INTO t (id, r) VALUES (" + id + ", 1)");
            execute("SELECT id, r, x FROM t WHERE id = " + id);
            cursor.fetch(FetchFirst, 0);
            execute("UPDATE t SET r = " + text + ", x = " + text + " WHERE CURRENT OF CURSOR");
            setMonitor({});
        }
        uint64_t bits = 0;
        std::memcpy(&bits, &numbers[i], sizeof bits);
        expected += "real " + std::to_string(bits) + "|real " + std::to_string(bits) + "|\n";
    }
    EXPECT_EQ(Beside(path()).cells("SELECT r, x FROM t ORDER BY id"), expected);
}
