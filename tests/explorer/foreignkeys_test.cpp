// How tables refer to each other.
#include <gtest/gtest.h>

#include <dorcpp/cursor.h>
#include <oviapi/text.h>

#include "application.h"
#include "database.h"
#include "explorer/databasesession.h"
#include "explorer/foreignkeys.h"
#include "support.h"

namespace {

using Pair = ForeignKey::Pair;

DatabaseTable table(const wchar_t* name, const wchar_t* schema = L"main")
{
    return {name, false, schema};
}

ForeignKey key(const wchar_t* detail, std::vector<Pair> columns, const wchar_t* master = L"m",
               const wchar_t* schema = L"main")
{
    return {L"k", table(detail, schema), table(master), std::move(columns)};
}

std::vector<std::wstring> captions(const std::vector<DetailTable>& details)
{
    std::vector<std::wstring> found;
    for (const DetailTable& detail : details)
        found.push_back(detail.caption);
    return found;
}

using Captions = std::vector<std::wstring>;

TEST(DetailTables, AreNamedAfterTheirTableAndTheColumnsThatRefer)
{
    ForeignKeys keys;
    keys.setKeys({key(L"packages", {{L"section", L"id"}}), key(L"other", {{L"x", L"id"}}, L"n"),
                  key(L"parts", {{L"a", L"id"}, {L"b", L"no"}})});
    EXPECT_EQ(captions(keys.detailsOf(table(L"m"))),
              (Captions{L"packages (section)", L"parts (a, b)"}));
    EXPECT_TRUE(keys.detailsOf(table(L"packages")).empty());
    EXPECT_TRUE(keys.detailsOf(table(L"m", L"elsewhere")).empty());
}

TEST(DetailTables, CaptionsStayUniqueWhateverTheNamesAre)
{
    ForeignKeys keys;
    keys.setKeys({key(L"d", {{L"a", L"id"}}), key(L"d", {{L"b", L"id"}}),
                  key(L"d", {{L"a", L"code"}}), key(L"d", {{L"a", L"name"}}),
                  key(L"d", {{L"a", L"id"}}, L"m", L"aux")});
    EXPECT_EQ(captions(keys.detailsOf(table(L"m"))),
              (Captions{L"d (a)", L"d (b)", L"d (a) 2", L"d (a) 3", L"aux.d (a)"}));
}

TEST(DetailTables, ATableMayBeItsOwnDetail)
{
    ForeignKeys keys;
    keys.setKeys({key(L"m", {{L"above", L"id"}})});
    const auto details = keys.detailsOf(table(L"m"));
    ASSERT_EQ(details.size(), 1U);
    EXPECT_EQ(details[0].key.detail, table(L"m"));
}

TEST(MasterTable, IsFoundByColumnAndByTheKeyOfThisColumnAloneFirst)
{
    ForeignKeys keys;
    keys.setKeys(
        {key(L"d", {{L"a", L"x"}, {L"b", L"y"}}, L"wide"), key(L"d", {{L"a", L"id"}}, L"narrow")});
    ASSERT_TRUE(keys.masterOf(table(L"d"), L"a"));
    EXPECT_EQ(keys.masterOf(table(L"d"), L"a")->master.name, L"narrow");
    ASSERT_TRUE(keys.masterOf(table(L"d"), L"b"));
    EXPECT_EQ(keys.masterOf(table(L"d"), L"b")->master.name, L"wide");
    EXPECT_FALSE(keys.masterOf(table(L"d"), L"c"));
    EXPECT_FALSE(keys.masterOf(table(L"wide"), L"x"));
}

TEST(DetailQuery, HasAParameterForEachColumnOfTheKey)
{
    EXPECT_EQ(detailQueryText(key(L"t", {{L"a", L"x"}, {L"b", L"y"}}, L"m", L"s")),
              L"SELECT * FROM \"s\".\"t\" WHERE \"a\"=? AND \"b\"=?");
    EXPECT_EQ(detailQueryText(key(L"the \"t\"", {{L"it's", L"id"}})),
              L"SELECT * FROM \"main\".\"the \"\"t\"\"\" WHERE \"it's\"=?");
}

class ReadForeignKeys : public testing::Test {
protected:
    std::filesystem::path path() const { return m_folder.path() / "a.db"; }
    bool read(ForeignKeys& keys, DatabaseSession& session)
    {
        keys.start(session.connection());
        return waitFor([&] { return !keys.isRunning(); });
    }

    TemporaryFolder m_folder;
};

TEST_F(ReadForeignKeys, ComeFromTheDatabaseInTheOrderOfTheirColumns)
{
    TestDatabase made(path());
    made.execute("CREATE TABLE \"m \"\"x\" (a INTEGER, b INTEGER, PRIMARY KEY (b, a))");
    made.execute("CREATE TABLE d (id INTEGER PRIMARY KEY, p INTEGER, q INTEGER,"
                 " up INTEGER REFERENCES d, FOREIGN KEY (q, p) REFERENCES \"M \"\"X\")");
    DatabaseSession session(path().string());
    ForeignKeys keys;
    ASSERT_TRUE(read(keys, session));
    EXPECT_EQ(keys.error().code(), 0);
    ASSERT_EQ(keys.all().size(), 2U);
    EXPECT_EQ(keys.all()[0].columns, (std::vector<Pair>{{L"up", L"id"}}));
    EXPECT_EQ(keys.all()[1].columns, (std::vector<Pair>{{L"q", L"b"}, {L"p", L"a"}}));
    for (const DatabaseTable& each : session.tables()) { // they are named as the list names them
        EXPECT_EQ(keys.detailsOf(each).size(), 1U) << OviAPI::wideToUtf8(each.name);
    }
}

TEST_F(ReadForeignKeys, TheDetailQueryGivesTheRowsOfOneMasterRow)
{
    TestDatabase made(path());
    made.execute("CREATE TABLE m (a INTEGER, b TEXT, PRIMARY KEY (a, b))");
    made.execute("CREATE TABLE d (n INTEGER, x INTEGER, y TEXT, FOREIGN KEY (x, y) REFERENCES m)");
    made.execute("INSERT INTO d VALUES (1, 7, 'p'), (2, 7, 'q'), (3, 8, 'p'), (4, 7, 'p')");
    DatabaseSession session(path().string());
    ForeignKeys keys;
    ASSERT_TRUE(read(keys, session));
    const auto details = keys.detailsOf(table(L"m"));
    ASSERT_EQ(details.size(), 1U);
    DorCPP::DorStatement statement;
    statement.create(session.connection(),
                     OviAPI::wideToUtf8(detailQueryText(details[0].key)).c_str(), false);
    ASSERT_EQ(statement.paramCount(), 2);
    DorCPP::BindMap binds;
    const int32_t a = 7;
    binds.bind(1, {DorCPP::TypeInteger, &a, sizeof a});
    binds.bind(2, {DorCPP::TypeVarchar, "p", 1});
    DorCPP::DorCursor cursor;
    cursor.create(session.connection(), 0, nullptr, false);
    cursor.execute(statement, &binds);
    EXPECT_EQ(cursor.selectRowCount(), 2);
    EXPECT_TRUE(cursor.isKeyed()) << "details can be edited";
}

TEST_F(ReadForeignKeys, AnEndThatIsAnErrorIsToldAsWell)
{
    TestDatabase made(path());
    made.execute("CREATE TABLE d (id INTEGER PRIMARY KEY)");
    ForeignKeys keys;
    int told = 0;
    OviAPI::connect<&ForeignKeys::onForeignKeys>(keys, keys,
                                                 [&](OviAPI::Object*) -> OviAPI::SlotResult {
                                                     ++told;
                                                     return 1;
                                                 });
    DorCPP::DorConnect closed;
    keys.start(closed);
    ASSERT_TRUE(waitFor([&] { return told == 1; }));
    EXPECT_EQ(keys.error().code(), DorCPP::CodeSessionLost);
    EXPECT_TRUE(keys.all().empty());
    DatabaseSession session(path().string());
    ASSERT_TRUE(read(keys, session));
    EXPECT_EQ(keys.error().code(), 0);
    EXPECT_EQ(told, 2);
}

} // namespace
