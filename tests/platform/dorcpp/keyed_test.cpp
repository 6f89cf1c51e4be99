// Which SELECTs are read by row keys, and that they give the rows of the plain reading.
#include <string>
#include <vector>

#include <sqlite3.h>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

const char* const schema[] = {
    "CREATE TABLE t(a INT, b TEXT, c REAL, d BLOB)",
    "CREATE TABLE u(id INTEGER PRIMARY KEY, a INT, e TEXT)",
    "CREATE TABLE w(k1 INT, k2 TEXT, v TEXT, PRIMARY KEY(k1, k2)) WITHOUT ROWID",
    "CREATE TABLE r(rowid TEXT, oid INT, x INT)",
    "CREATE TABLE z(rowid TEXT, oid INT, _rowid_ INT)",
    "CREATE VIEW vw AS SELECT a, b FROM t WHERE a > 3",
    "CREATE INDEX t_a ON t(a)",
    "CREATE INDEX t_all ON t(b, a, c, d)",
    ("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 299) INSERT INTO t "
     "SELECT i * 7919 % 300 % 10, 's' || i % 17, i * 0.5, CASE i % 2 WHEN 0 THEN x'41' END FROM n"),
    "INSERT INTO u(a, e) SELECT a, b FROM t",
    "INSERT INTO w SELECT rowid * 7919 % 300, b, 'v' || rowid FROM t",
    "INSERT INTO r SELECT b, 1, a FROM t",
    "INSERT INTO z SELECT b, 1, 2 FROM t",
};

struct Query {
    bool keyed;
    const char* sql;
};

class Keyed : public ::testing::TestWithParam<Query> {
protected:
    static void SetUpTestSuite()
    {
        folder = new Folder; // freed by TearDownTestSuite
        DorConnect connection;
        open(connection, folder->file("k.db"));
        DorCursor cursor;
        cursor.create(connection, 0, nullptr, true);
        for (const char* sql : schema)
            cursor.execute(sql);
    }
    static void TearDownTestSuite() { delete folder; }

    static std::vector<std::string> plain(const char* sql)
    {
        sqlite3* db = nullptr;
        sqlite3_open(folder->file("k.db").c_str(), &db);
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &s, nullptr);
        std::vector<std::string> all;
        while (sqlite3_step(s) == SQLITE_ROW) {
            std::string line;
            for (int i = 0; i < sqlite3_column_count(s); ++i) {
                const bool blob = sqlite3_column_type(s, i) == SQLITE_BLOB;
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, i));
                line += (i ? "|" : "") + std::string(!text ? "NULL" : blob ? "41" : text);
            }
            all.push_back(line);
        }
        sqlite3_finalize(s);
        sqlite3_close(db);
        return all;
    }

    static inline Folder* folder = nullptr;
};

} // namespace

TEST_P(Keyed, TheRowsAreThoseOfThePlainReading)
{
    DorConnect connection;
    open(connection, folder->file("k.db"), "");
    DorCursor cursor;
    cursor.create(connection, 0, nullptr, true);
    cursor.execute(GetParam().sql);
    EXPECT_EQ(cursor.isKeyed(), GetParam().keyed);
    EXPECT_EQ(rows(cursor), plain(GetParam().sql));
}

INSTANTIATE_TEST_SUITE_P(
    Queries, Keyed,
    ::testing::Values(
        Query{true, "select * from t"}, Query{true, "select b from t order by rowid"},
        Query{true, "select a, b from t where a > 5 order by 2 desc, 1, rowid"},
        Query{true, "select t.*, a+c as ac from \"t\" order by 5, rowid"},
        Query{true, "select x.* from main.t as x where x.a=3 order by rowid"},
        Query{true, "select * from t x order by b, c limit 20 offset 5"},
        Query{true, "select * from t limit 10"}, Query{true, "select a from t limit 10 offset 3"},
        Query{true, "select * from t indexed by t_a where a=2 order by rowid"},
        Query{true, "select * from t not indexed"},
        Query{true, "select b, (select max(e) from u where u.a=t.a) from t order by rowid"},
        Query{true, "select * from t where a in (select a from u group by a) order by rowid"},
        Query{true, "select * from u"}, Query{true, "select * from w order by v"},
        Query{true, "select * from w"}, Query{true, "select x from r"},
        Query{true, "select max(a, c) from t order by rowid"},
        Query{true, "select upper(b) as B2, length(d) from t where exists(select 1 from u where "
                    "u.a=t.a) order by rowid"},
        Query{true, "select 'from u group by', a from t order by rowid;"},
        Query{true, "select a from t where a > (select avg(a) from u) order by rowid"},
        Query{true, "select a as q from t where q = 4 order by c"},
        Query{true, "select * from t where 0"}, Query{false, "select * from z"},
        Query{false, "select distinct a from t"},
        Query{false, "select a, count(*) from t group by a"},
        Query{false, "select count(*) from t"}, Query{false, "select max(a) from t"},
        Query{false, "select sum(a)+1 from t where a>4"},
        Query{false, "select *, row_number() over (order by a, c) from t"},
        Query{false, "select t.c, u.id from t, u where t.a=u.a and u.id < 3 order by 1, 2"},
        Query{false, "select a from t union select a from u"},
        Query{false, "select * from (select * from t)"},
        Query{false, "with q as (select * from t) select * from q"},
        Query{false, "select * from vw"}, Query{false, "values(1,2)"},
        Query{false, "select value from json_each('[1,2]')"}, Query{false, "select 1"},
        Query{false, "select a, group_concat(b) from t"},
        Query{false, "select min(b), max(a) from t order by 1 limit 3"},
        Query{false, "select (select count(*) from u) n, count(a) from t"},
        Query{false, "select name from sqlite_schema order by name"},
        Query{false, "select name, type from pragma_table_list order by 1"}));
