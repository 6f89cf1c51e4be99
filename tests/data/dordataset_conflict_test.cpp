// Two sessions on the same rows, in every order: nothing is overwritten unseen.
#include <cstdio>
#include <map>
#include <random>
#include <tuple>

#include <oviapi/phrases.h>

#include "editing.h"

using namespace Editing;
using OviAPI::Phrase;

namespace {

// One of two who work on the same rows: a dataset on a session of its own.
struct Worker {
    explicit Worker(const Conformance::Place& place)
        : client(place, "timeout=200")
    {
    }
    void open(bool cached)
    {
        data.SetRowCache(cached);
        data.Open(client.connection.channel(), L"SELECT id, a, n FROM t ORDER BY id", 0, true);
        see();
    }
    // Looks at the first rows, as a view does.
    void see()
    {
        for (long row = 1; row <= 10; ++row)
            data.GetCellText(2, row);
    }
    short edit(long row, std::wstring_view text) { return store(data, 2, row, text); }
    short insert(std::wstring_view id, std::wstring_view text)
    {
        auto row = data.AllocRowData();
        data.ColDataIntoRow(1, dataOf(data, 1, id).get(), row.get());
        data.ColDataIntoRow(2, dataOf(data, 2, text).get(), row.get());
        return data.AddRow(row.get(), 0);
    }

    Client client;
    Recorder data;
};

class Conflicts : public ::testing::TestWithParam<std::tuple<Engine, bool>> {
protected:
    Conflicts()
        : place(std::get<0>(GetParam()))
        , cached(std::get<1>(GetParam()))
        , mine(place)
        , theirs(place)
        , owner(place)
    {
        setlocale(LC_ALL, "C.UTF-8"); // as a started application does
        owner.execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a VARCHAR(40), n INTEGER)");
        owner.execute("INSERT INTO t WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM "
                      "c WHERE i < 1000) SELECT i, 'row ' || i, 0 FROM c");
        mine.open(cached);
        theirs.open(cached);
    }
    std::string stored(long id)
    {
        const Texts found = owner.answer("SELECT a, n FROM t WHERE id = " + std::to_string(id));
        return found.empty() ? "none" : found[0];
    }
    // Reads so many other rows that the client keeps nothing of the first ones.
    void readFarAway(xCDorvexDataSet& data) const
    {
        for (const long row : {200L, 400L, 600L, 800L, 1000L})
            data.ToRow(OviAPI::FetchAbsolute, row, false);
    }

    Conformance::Place place;
    bool cached;
    Worker mine;
    Worker theirs;
    Client owner;
};

INSTANTIATE_TEST_SUITE_P(On, Conflicts,
                         ::testing::Combine(::testing::Values(Engine::Sqlite, Engine::Postgresql),
                                            ::testing::Bool()),
                         [](const auto& on) {
                             const bool file = std::get<0>(on.param) == Engine::Sqlite;
                             return std::string(file ? "Sqlite" : "Postgresql") +
                                    (std::get<1>(on.param) ? "Cached" : "Uncached");
                         });

} // namespace

TEST_P(Conflicts, TheSecondOfTwoEditsIsRefusedWithTheClientsWords)
{
    EXPECT_EQ(theirs.edit(2, L"theirs"), 0);
    mine.data.BeginEdit(2);
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 2), changed);
    EXPECT_EQ(mine.data.GetErrorKind(), changed.first);
    ASSERT_NE(mine.data.getRowError(2), nullptr);
    EXPECT_TRUE(mine.data.getRowError(2)->text.starts_with(OviAPI::phrase(Phrase::DbRowChanged)));
    EXPECT_EQ(mine.edit(2, L"mine"), 1) << "a plain retry overwrites nothing";
    EXPECT_EQ(stored(2), "theirs|0");
}

TEST_P(Conflicts, AChangeOfAnotherColumnIsAConflictAsWell)
{
    owner.execute("UPDATE t SET n = 5 WHERE id = 2");
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 2), changed);
    EXPECT_EQ(stored(2), "row 2|5");
}

TEST_P(Conflicts, ARowThatIsReadAnewCanBeStoredAgain)
{
    mine.data.BeginEdit(2);
    theirs.edit(2, L"theirs");
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(mine.data.RefreshRow(2), 0);
    EXPECT_EQ(errorOf(mine.data, 2), noError);
    EXPECT_EQ(mine.data.CellText(2), L"theirs");
    EXPECT_EQ(mine.edit(2, L"mine"), 1) << "the row as it was shown is still kept";
    EXPECT_EQ(mine.data.RefreshRow(2), 0);
    mine.data.BeginEdit(2);
    EXPECT_EQ(mine.edit(2, L"mine"), 0);
    EXPECT_EQ(stored(2), "mine|0");
}

TEST_P(Conflicts, WhatTheClientReadsAgainMeanwhileIsNotOverwritten)
{
    mine.data.BeginEdit(2);
    theirs.edit(2, L"theirs");
    readFarAway(mine.data);
    mine.data.sent.clear();
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_TRUE(mine.data.sent.empty());
    EXPECT_EQ(errorOf(mine.data, 2), changed);
    mine.data.EndEdit();
    EXPECT_EQ(mine.data.GetEditedRow(), 0);
    EXPECT_EQ(mine.edit(2, L"mine"), cached ? 1 : 0) << "the cache keeps what was shown";
    EXPECT_EQ(stored(2), cached ? "theirs|0" : "mine|0");
}

TEST_P(Conflicts, AnUnchangedRowIsStoredHoweverOftenItIsReadMeanwhile)
{
    mine.data.BeginEdit(2);
    theirs.edit(3, L"theirs");
    readFarAway(mine.data);
    EXPECT_EQ(mine.edit(2, L"mine"), 0);
    readFarAway(mine.data);
    EXPECT_EQ(mine.edit(2, L"mine again"), 0);
    EXPECT_EQ(stored(2), "mine again|0");
}

TEST_P(Conflicts, AnotherRowThanTheEditedOneIsNotComparedWithIt)
{
    mine.data.BeginEdit(2);
    EXPECT_EQ(mine.edit(3, L"mine"), 0);
    EXPECT_EQ(mine.data.GetEditedRow(), 2);
    EXPECT_EQ(stored(3), "mine|0");
}

TEST_P(Conflicts, AnEditOfADeletedRowFindsNoRow)
{
    EXPECT_EQ(theirs.data.DeleteRow(2), 0);
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 2), gone);
    EXPECT_EQ(mine.data.RefreshRow(2), 1);
    EXPECT_EQ(errorOf(mine.data, 2), gone);
    EXPECT_EQ(stored(2), "none");
    EXPECT_EQ(mine.edit(3, L"mine"), 0) << "the rows behind it keep their numbers";
    EXPECT_EQ(stored(3), "mine|0");
}

TEST_P(Conflicts, NoStatementIsSentForARowThatCannotBeReached)
{
    owner.execute("DELETE FROM t WHERE id = 2");
    mine.data.ToRow(OviAPI::FetchAbsolute, 900, false);
    readFarAway(mine.data);
    mine.data.sent.clear();
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 2), gone);
    EXPECT_EQ(mine.data.DeleteRow(2), 1);
    EXPECT_EQ(errorOf(mine.data, 2), gone);
    EXPECT_TRUE(mine.data.sent.empty());
}

TEST_P(Conflicts, ADeletionOfAnEditedRowIsRefused)
{
    EXPECT_EQ(theirs.edit(2, L"theirs"), 0);
    EXPECT_EQ(mine.data.DeleteRow(2), 1);
    EXPECT_EQ(errorOf(mine.data, 2), changed);
    EXPECT_EQ(stored(2), "theirs|0");
    EXPECT_EQ(mine.data.GetCellText(2, 2), L"theirs") << "what there is, is shown";
    EXPECT_EQ(mine.data.DeleteRow(2), 0);
    EXPECT_EQ(stored(2), "none");
}

TEST_P(Conflicts, ADeletionOfARowThatIsReadAgainMeanwhileIsRefused)
{
    mine.data.BeginEdit(2);
    theirs.edit(2, L"theirs");
    readFarAway(mine.data);
    EXPECT_EQ(mine.data.DeleteRow(2), 1);
    EXPECT_EQ(errorOf(mine.data, 2), changed);
    EXPECT_EQ(stored(2), "theirs|0");
}

TEST_P(Conflicts, ADeletionOfADeletedRowFindsNoRow)
{
    theirs.data.DeleteRow(2);
    EXPECT_EQ(mine.data.DeleteRow(2), 1);
    EXPECT_EQ(errorOf(mine.data, 2), gone);
    EXPECT_EQ(owner.value("SELECT count(*) FROM t"), "999");
}

TEST_P(Conflicts, ADeletedRowWhoseKeyIsGivenAgainIsNotTheSameRow)
{
    owner.execute("DELETE FROM t WHERE id = 2");
    owner.execute("INSERT INTO t VALUES (2, 'another', 1)");
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 2), changed);
    EXPECT_EQ(stored(2), "another|1");
    EXPECT_EQ(theirs.data.DeleteRow(2), 1);
    EXPECT_EQ(errorOf(theirs.data, 2), changed);
    EXPECT_EQ(stored(2), "another|1");
}

TEST_P(Conflicts, TheSecondOfTwoEqualInsertionsIsRefused)
{
    EXPECT_EQ(theirs.insert(L"5000", L"theirs"), 0);
    EXPECT_EQ(mine.insert(L"5000", L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 0), std::pair(2, 1022L));
    EXPECT_EQ(mine.insert(L"5001", L"mine"), 0);
    EXPECT_EQ(mine.data.GetRowCount(), 1002);
    EXPECT_EQ(stored(5000), "theirs|NULL");
    EXPECT_EQ(stored(5001), "mine|NULL");
}

TEST_P(Conflicts, AnInsertionAndTheDeletionOfAllRowsMeetInEitherOrder)
{
    EXPECT_EQ(theirs.insert(L"5000", L"theirs"), 0);
    EXPECT_EQ(mine.data.DeleteAllRow(), 0);
    EXPECT_EQ(mine.data.GetRowCount(), 0);
    EXPECT_EQ(owner.value("SELECT count(*) FROM t"), "0");
    EXPECT_EQ(theirs.insert(L"5001", L"later"), 0);
    EXPECT_EQ(owner.value("SELECT count(*) FROM t"), "1");
    EXPECT_EQ(theirs.edit(1, L"edited"), 0);
    EXPECT_EQ(stored(5001), "edited|NULL");
}

TEST_P(Conflicts, ARowThatIsLockedIsLockedAndNotChanged)
{
    theirs.client.execute("BEGIN");
    theirs.client.execute("UPDATE t SET n = 3 WHERE id = 2");
    EXPECT_EQ(mine.edit(2, L"mine"), 1);
    EXPECT_EQ(errorOf(mine.data, 2).first, OviAPI::aCErrorHolder::Locked);
    theirs.client.execute("ROLLBACK");
    EXPECT_EQ(mine.edit(2, L"mine"), 0);
    EXPECT_EQ(stored(2), "mine|0");
}

TEST_P(Conflicts, AnEditInsideATransactionGoesWithIt)
{
    mine.client.execute("BEGIN");
    EXPECT_EQ(mine.edit(2, L"mine"), 0);
    EXPECT_EQ(store(mine.data, 1, 3, L"4"), 1) << "refused by the key";
    EXPECT_EQ(mine.edit(4, L"mine too"), 0) << "the transaction is still good";
    mine.client.execute("ROLLBACK");
    EXPECT_EQ(stored(2), "row 2|0");
    EXPECT_EQ(mine.data.RefreshRow(2), 0);
    EXPECT_EQ(mine.data.CellText(2), L"row 2");
}

TEST_P(Conflicts, ARefreshedRowIsReadFromTheDatabaseItself)
{
    owner.execute("UPDATE t SET a = 'new' WHERE id = 2");
    EXPECT_EQ(mine.data.GetCellText(2, 2), L"row 2");
    EXPECT_EQ(mine.data.RefreshRow(2), 0);
    EXPECT_EQ(mine.data.GetCellText(2, 2), L"new");
    EXPECT_EQ(mine.data.GetCellText(2, 3), L"row 3");
    EXPECT_EQ(mine.data.RefreshRow(0), 1);
    EXPECT_EQ(mine.data.RefreshRow(1001), 1);
}

TEST_P(Conflicts, ARowInSeveralOverlappingBlocksIsTheSameInAll)
{
    // Blocks 101 to 164 and, read back from 164, 101 to 164 again with more before it.
    mine.data.ToRow(OviAPI::FetchAbsolute, 101, false);
    mine.data.ToRow(OviAPI::FetchAbsolute, 300, false);
    for (long row = 299; row > 90; --row)
        mine.data.ToRow(OviAPI::FetchAbsolute, row, false);
    EXPECT_EQ(mine.edit(110, L"mine"), 0);
    mine.data.ClearRowCache();
    for (const long row : {700L, 110L, 300L, 110L, 164L, 110L}) {
        EXPECT_EQ(mine.data.ToRow(OviAPI::FetchAbsolute, row, false), 0);
        if (row == 110) {
            EXPECT_EQ(mine.data.CellText(2), L"mine");
        }
    }
}

TEST_P(Conflicts, TheNewRowCannotBeChangedByAnotherSession)
{
    mine.data.AddRow(nullptr, 0);
    const long row = mine.data.GetVirtualRow();
    mine.data.BeginEdit(row);
    EXPECT_EQ(mine.data.GetEditedRow(), 0);
    EXPECT_EQ(store(mine.data, 1, row, L"6000"), 0);
    EXPECT_EQ(mine.data.RefreshRow(row), 0);
    EXPECT_EQ(mine.data.CellText(1), L"6000");
}

// Two sessions take random steps. Every edit says what its row held, so that one that was laid over
// another is found.
TEST_P(Conflicts, NoEditOfManyIsLost)
{
    const int steps = Conformance::isLong() ? 20'000 : 400;
    std::mt19937 random(7);
    std::map<long, int> expected; // edits of a row that were acknowledged
    int refused = 0;
    for (int i = 0; i < steps; ++i) {
        Worker& worker = random() % 2 == 0 ? mine : theirs;
        const long row = 1 + static_cast<long>(random() % 5);
        switch (random() % 4) {
        case 0:
            worker.data.RefreshRow(row);
            break;
        case 1:
            worker.data.BeginEdit(row);
            break;
        case 2:
            if (random() % 8 == 0)
                readFarAway(worker.data);
            break;
        default:
            worker.data.BeginEdit(row);
            const long count = std::wcstol(worker.data.GetCellText(3, row).c_str(), nullptr, 10);
            if (random() % 3 == 0)
                readFarAway(worker.data);
            if (store(worker.data, 3, row, std::to_wstring(count + 1)) == 0) {
                ++expected[row];
            } else {
                EXPECT_EQ(errorOf(worker.data, row), changed);
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 0);
    for (long row = 1; row <= 5; ++row)
        EXPECT_EQ(stored(row), "row " + std::to_string(row) + "|" + std::to_string(expected[row]));
    std::printf("%d steps, %d edits refused, none lost\n", steps, refused);
}
