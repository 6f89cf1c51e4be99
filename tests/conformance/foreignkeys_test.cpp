// What the catalogue says of foreign keys.
#include <algorithm>

#include <dorcpp/catalogue.h>

#include "support.h"

using namespace Conformance;

namespace {

class ForeignKeyList : public OnEngine {
protected:
    // The rows between tables of the test's own schema, without names and schemas:
    // "child.column parent.column place".
    std::vector<std::string> list()
    {
        std::vector<std::string> found;
        readList([&](const std::vector<std::string>& row) {
            if (row[1] == place.schema())
                found.push_back(row[2] + "." + row[3] + " " + row[5] + "." + row[6] + " " + row[7]);
        });
        return found;
    }
    template<class F>
    void readList(F take)
    {
        DorCursor keys;
        keys.create(connection, ModeReadOnly, nullptr, false);
        keys.execute(foreignKeyListText(connection).c_str());
        ASSERT_EQ(keys.columnCount(), 8);
        for (int64_t row = 1; row <= keys.selectRowCount(); ++row) {
            keys.fetch(FetchAbsolute, row);
            std::vector<std::string> values;
            for (int column = 1; column <= 8; ++column)
                values.push_back(text(keys, column));
            take(values);
        }
    }
    std::vector<std::string> names(const std::string& table)
    {
        std::vector<std::string> found;
        readList([&](const std::vector<std::string>& row) {
            if (row[1] == place.schema() && row[2] == table)
                found.push_back(row[0]);
        });
        return found;
    }
};

using Lines = std::vector<std::string>;

} // namespace

ON_BOTH_ENGINES(ForeignKeyList);

TEST_P(ForeignKeyList, ADatabaseWithoutForeignKeysHasNone)
{
    execute("CREATE TABLE alone (id integer PRIMARY KEY)");
    EXPECT_EQ(list(), Lines());
}

TEST_P(ForeignKeyList, AKeyOfOneColumnIsOneRow)
{
    execute("CREATE TABLE master (id integer PRIMARY KEY)");
    execute("CREATE TABLE detail (id integer PRIMARY KEY, m integer REFERENCES master(id))");
    EXPECT_EQ(list(), Lines{"detail.m master.id 1"});
    readList([&](const std::vector<std::string>& row) {
        EXPECT_EQ(row[4], row[1]) << "both tables lie in the same schema";
    });
}

TEST_P(ForeignKeyList, TheColumnsOfACompositeKeyStandInTheirOrder)
{
    execute("CREATE TABLE master (a integer, b integer, c integer, PRIMARY KEY (c, a))");
    execute("CREATE TABLE detail (x integer, y integer,"
            " FOREIGN KEY (y, x) REFERENCES master (c, a))");
    EXPECT_EQ(list(), (Lines{"detail.y master.c 1", "detail.x master.a 2"}));
    const Lines name = names("detail");
    ASSERT_EQ(name.size(), 2U);
    EXPECT_EQ(name[0], name[1]);
}

TEST_P(ForeignKeyList, SeveralKeysBetweenTheSameTablesAreToldApart)
{
    execute("CREATE TABLE person (id integer PRIMARY KEY)");
    execute("CREATE TABLE letter (sender integer REFERENCES person(id),"
            " receiver integer REFERENCES person(id))");
    EXPECT_EQ(list(), (Lines{"letter.sender person.id 1", "letter.receiver person.id 1"}));
    const Lines name = names("letter");
    ASSERT_EQ(name.size(), 2U);
    EXPECT_NE(name[0], name[1]);
}

TEST_P(ForeignKeyList, ATableMayReferToItself)
{
    execute("CREATE TABLE folder (id integer PRIMARY KEY, above integer REFERENCES folder(id))");
    EXPECT_EQ(list(), Lines{"folder.above folder.id 1"});
}

TEST_P(ForeignKeyList, AKeyThatNamesNoColumnsRefersToThePrimaryKey)
{
    execute("CREATE TABLE one (id integer PRIMARY KEY)");
    execute("CREATE TABLE two (a integer, b integer, PRIMARY KEY (b, a))");
    execute("CREATE TABLE detail (o integer REFERENCES one, x integer, y integer,"
            " FOREIGN KEY (x, y) REFERENCES two)");
    EXPECT_EQ(list(), (Lines{"detail.o one.id 1", "detail.x two.b 1", "detail.y two.a 2"}));
}

TEST_P(ForeignKeyList, NamesStandAsTheyAreWhateverTheKeySays)
{
    execute("CREATE TABLE \"the \"\"big\"\" one\" (\" i d\" integer PRIMARY KEY)");
    execute("CREATE TABLE plain (id integer PRIMARY KEY)");
    execute("CREATE TABLE \"it's\" (\"a.b\" integer REFERENCES \"the \"\"big\"\" one\"(\" i d\"),"
            " p integer REFERENCES PLAIN(ID))");
    EXPECT_EQ(list(), (Lines{"it's.a.b the \"big\" one. i d 1", "it's.p plain.id 1"}));
}

TEST_P(ForeignKeyList, KeysOfOtherSchemasAreListedWithThem)
{
    const std::string other = isServer() ? place.schema() + "_b" : "b";
    execute(isServer() ? "CREATE SCHEMA " + other : "ATTACH ':memory:' AS b");
    execute("CREATE TABLE " + other + ".master (id integer PRIMARY KEY)");
    execute("CREATE TABLE " + other + ".detail (m integer, FOREIGN KEY (m) REFERENCES " +
            (isServer() ? other + "." : std::string()) + "master(id))");
    Lines found;
    readList([&](const std::vector<std::string>& row) {
        if (row[1] == other)
            found.push_back(row[2] + " " + row[4] + "." + row[5]);
    });
    EXPECT_EQ(found, Lines{"detail " + other + ".master"});
    if (isServer())
        execute("DROP SCHEMA " + other + " CASCADE");
}

TEST_P(ForeignKeyList, TheTextSendsNothingAndNeedsAnOpenConnection)
{
    EXPECT_FALSE(foreignKeyListText(connection).empty());
    EXPECT_EQ(codeOf([] { foreignKeyListText(DorConnect()); }), CodeSessionLost);
}

namespace {

class ForeignKeyListOfServer : public OnPostgresql {};

} // namespace

TEST_F(ForeignKeyListOfServer, PartitionsDoNotRepeatTheKeysOfTheirTable)
{
    execute("CREATE TABLE master (id integer PRIMARY KEY) PARTITION BY RANGE (id)");
    execute("CREATE TABLE master_1 PARTITION OF master FOR VALUES FROM (0) TO (10)");
    execute("CREATE TABLE detail (m integer REFERENCES master(id)) PARTITION BY RANGE (m)");
    execute("CREATE TABLE detail_1 PARTITION OF detail FOR VALUES FROM (0) TO (10)");
    DorCursor keys;
    keys.create(connection, ModeReadOnly, nullptr, false);
    keys.execute(foreignKeyListText(connection).c_str());
    int found = 0;
    for (int64_t row = 1; row <= keys.selectRowCount(); ++row) {
        keys.fetch(FetchAbsolute, row);
        if (text(keys, 2) != place.schema())
            continue;
        ++found;
        EXPECT_EQ(text(keys, 3), "detail");
        EXPECT_EQ(text(keys, 6), "master");
    }
    EXPECT_EQ(found, 1);
}

TEST(ForeignKeyListOfFile, KeysThatReferToNothingAreLeftOut)
{
    const Place place(Engine::Sqlite);
    Client own(place);
    own.execute("CREATE TABLE master (id integer PRIMARY KEY, x integer)");
    own.execute("CREATE TABLE keyless (x integer)");
    own.execute("CREATE TABLE detail (a integer REFERENCES nowhere(id),"
                " b integer REFERENCES master(none), c integer REFERENCES keyless,"
                " d integer, FOREIGN KEY (a, b) REFERENCES master,"
                " FOREIGN KEY (c, d) REFERENCES master(x, none))");
    own.execute(foreignKeyListText(own.connection));
    EXPECT_EQ(own.cursor.selectRowCount(), 0);
    own.execute("CREATE TABLE nowhere (id integer PRIMARY KEY)");
    own.execute(foreignKeyListText(own.connection));
    EXPECT_EQ(own.cursor.selectRowCount(), 1) << "the parent may be made later";
}
