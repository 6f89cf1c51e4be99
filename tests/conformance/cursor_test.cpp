// Answers: moving, counting, holes, long values in pieces.
#include <algorithm>

#include "support.h"

using namespace Conformance;

namespace {

class Cursors : public OnEngine {
protected:
    std::string at(int direction, int64_t row = 0)
    {
        cursor.fetch(direction, row);
        return text(cursor, 2);
    }
};

} // namespace

ON_BOTH_ENGINES(Cursors);

TEST_P(Cursors, RowsAreReachedInFiveDirections)
{
    fill(2000);
    execute("SELECT id, s FROM n");
    EXPECT_EQ(cursor.selectRowCount(), 2000);
    EXPECT_TRUE(cursor.isKeyed());
    EXPECT_EQ(at(FetchFirst), "row 1");
    EXPECT_EQ(at(FetchNext), "row 2");
    EXPECT_EQ(at(FetchLast), "row 2000");
    EXPECT_EQ(at(FetchPrevious), "row 1999");
    EXPECT_EQ(at(FetchAbsolute, 777), "row 777");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 2001); }), CodeNoRow);
    EXPECT_EQ(cursor.position(), 777);
    at(FetchLast);
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeNoRow);
    EXPECT_EQ(at(FetchPrevious), "row 2000");
}

TEST_P(Cursors, ReadingOnGivesEveryRowOnceForwardsAndBackwards)
{
    fill(3000);
    execute("SELECT id, s FROM n ORDER BY (id * 7919) % 3001");
    EXPECT_TRUE(cursor.isKeyed());
    std::vector<std::string> forward;
    for (int i = 0; i < 3000; ++i)
        forward.push_back(at(FetchNext));
    std::vector<std::string> backward(1, forward.back());
    for (int i = 1; i < 3000; ++i)
        backward.push_back(at(FetchPrevious));
    std::reverse(backward.begin(), backward.end());
    EXPECT_EQ(forward, backward);
    std::sort(forward.begin(), forward.end());
    EXPECT_EQ(std::unique(forward.begin(), forward.end()), forward.end());
}

TEST_P(Cursors, AnAnswerThatIsNotKeyedIsReadTheSame)
{
    fill(3000);
    execute("SELECT DISTINCT id, s FROM n ORDER BY id");
    EXPECT_FALSE(cursor.isKeyed());
    EXPECT_EQ(cursor.selectRowCount(), 3000);
    EXPECT_EQ(at(FetchAbsolute, 2999), "row 2999");
    EXPECT_EQ(at(FetchFirst), "row 1");
}

TEST_P(Cursors, AnEmptyAnswerHasColumnsAndNoRow)
{
    fill(1);
    for (const char* sql : {"SELECT id, s FROM n WHERE id > 5", "SELECT DISTINCT id FROM n "
                                                                "WHERE id > 5"}) {
        execute(sql);
        EXPECT_GT(cursor.columnCount(), 0) << sql;
        EXPECT_EQ(cursor.selectRowCount(), 0) << sql;
        EXPECT_EQ(codeOf([&] { cursor.fetch(FetchFirst, 0); }), CodeNoRow) << sql;
    }
}

TEST_P(Cursors, ChangedRowsAreCounted)
{
    fill(10);
    execute("UPDATE n SET s = 'x' WHERE id > 4");
    EXPECT_EQ(cursor.changedRowCount(), 6);
    execute("DELETE FROM n WHERE id = 99");
    EXPECT_EQ(cursor.changedRowCount(), 0);
    execute("SELECT * FROM n");
    EXPECT_EQ(cursor.changedRowCount(), 0);
}

TEST_P(Cursors, SelectsAreKeyedWhereARowOfTheAnswerIsARowOfATable)
{
    fill(20);
    execute("CREATE TABLE two(a INTEGER, b VARCHAR(5), c INTEGER, PRIMARY KEY(a, b))");
    execute("INSERT INTO two SELECT id % 3, 'k' || id, id FROM n");
    execute("CREATE VIEW seen AS SELECT id FROM n");
    const std::pair<const char*, bool> cases[] = {
        {"SELECT * FROM n", true},
        {"SELECT s FROM n WHERE id > 3 ORDER BY s", true},
        {"SELECT x.id + 1, (SELECT max(c) FROM two) FROM n AS x WHERE id IN (SELECT c FROM two)",
         true},
        {"SELECT * FROM n ORDER BY id LIMIT 5 OFFSET 2", true},
        {"SELECT * FROM two ORDER BY c", true},
        {"SELECT count(*) FROM n", false},
        {"SELECT max(id) FROM n", false},
        {"SELECT s, count(*) FROM n GROUP BY s", false},
        {"SELECT n.id FROM n, two WHERE n.id = two.c", false},
        {"SELECT id FROM n UNION SELECT c FROM two", false},
        {"SELECT * FROM (SELECT * FROM n) AS q", false},
        {"SELECT id, row_number() OVER (ORDER BY id) FROM n", false},
        {"SELECT * FROM seen", false},
        {"WITH q AS (SELECT * FROM n) SELECT * FROM q", false},
        {"VALUES (1, 2)", false},
    };
    for (const auto& [sql, keyed] : cases) {
        execute(sql);
        EXPECT_EQ(cursor.isKeyed(), keyed) << sql;
        EXPECT_FALSE(rows(cursor).empty()) << sql;
    }
    EXPECT_EQ(own.answer("SELECT c FROM two ORDER BY c LIMIT 3"),
              (std::vector<std::string>{"1", "2", "3"}));
}

TEST_P(Cursors, ARowThatHasGoneIsAHole)
{
    fill(300);
    execute("SELECT id, s FROM n");
    Client other(place);
    other.execute("DELETE FROM n WHERE id IN (5, 200)");
    EXPECT_EQ(at(FetchAbsolute, 4), "row 4");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchNext, 0); }), CodeRowGone);
    EXPECT_EQ(cursor.position(), 5);
    EXPECT_EQ(at(FetchNext), "row 6");
    EXPECT_EQ(codeOf([&] { cursor.fetch(FetchAbsolute, 200); }), CodeRowGone);
    EXPECT_EQ(cursor.selectRowCount(), 300);
    EXPECT_EQ(at(FetchLast), "row 300");
}

TEST_P(Cursors, AKeyThatWasGivenAwayIsAnotherRowOfTheSameKey)
{
    fill(3);
    execute("SELECT id, s FROM n");
    change("DELETE FROM n WHERE id = 2");
    change("INSERT INTO n VALUES(2, 'second')");
    EXPECT_EQ(at(FetchAbsolute, 2), "second");
}

TEST_P(Cursors, ALongValueIsReadInPieces)
{
    std::string all;
    for (int i = 0; all.size() < 3'000'000; ++i)
        all += "\xD0\x96" + std::to_string(i) + "\xF0\x9F\x98\x80";
    for (const std::string& type : {std::string("TEXT"), bytesType()}) {
        execute("DROP TABLE IF EXISTS long");
        execute("CREATE TABLE long(id INTEGER PRIMARY KEY, v " + type + ")");
        DorStatement insert;
        insert.create(connection, "INSERT INTO long VALUES(1, ?)", false);
        BindMap binds;
        binds.bind(1, {type == "TEXT" ? TypeText : TypeBlob, all.data(), all.size()});
        cursor.execute(insert, &binds);
        for (const char* sql : {"SELECT id, v FROM long", "SELECT DISTINCT id, v FROM long"}) {
            execute(sql);
            cursor.fetch(FetchFirst, 0);
            EXPECT_EQ(cursor.getBlobLen(2), static_cast<int64_t>(all.size())) << type << sql;
            std::string read;
            std::vector<char> piece(100'001);
            for (size_t n = 1; n > 0;) {
                n = cursor.getBlob(2, static_cast<int64_t>(read.size()), piece.data(),
                                   piece.size());
                read.append(piece.data(), n);
            }
            EXPECT_TRUE(read == all) << type << sql << read.size();
            EXPECT_EQ(cursor.getBlob(2, 1'500'001, piece.data(), 7), 7U);
            EXPECT_EQ(std::string(piece.data(), 7), all.substr(1'500'001, 7));
            EXPECT_EQ(cursor.getBlob(2, static_cast<int64_t>(all.size()) - 2, piece.data(), 9), 2U);
            char head[50];
            EXPECT_EQ(cursor.getData(2, type == "TEXT" ? TypeText : TypeByte, head, sizeof head),
                      ValueState::Cut);
        }
    }
}

TEST_P(Cursors, PiecesReadAheadAreNotShownOnceTheValueHasChanged)
{
    execute("CREATE TABLE long(id INTEGER PRIMARY KEY, v " + bytesType() + ")");
    execute("INSERT INTO long VALUES(1, NULL), (2, NULL)");
    execute("SELECT id, v FROM long");
    const auto write = [&](DorCursor& c, int row, char fill) {
        c.fetch(FetchAbsolute, row);
        c.clearBlob(2);
        c.appendBlob(2, std::string(9'000'000, fill).data(), 9'000'000);
        c.getBlobLen(2);
    };
    const auto at = [&](int64_t offset) {
        char byte = 0;
        cursor.getBlob(2, offset, &byte, 1);
        return byte;
    };
    write(cursor, 1, 'a');
    write(cursor, 2, 'b');
    EXPECT_EQ(at(0), 'b');
    EXPECT_EQ(at(1'048'570), 'b');
    cursor.fetch(FetchAbsolute, 1);
    EXPECT_EQ(at(1'048'571), 'a');
    EXPECT_EQ(at(1'048'572), 'a');
    EXPECT_EQ(at(8'999'999), 'a');
    write(cursor, 1, 'c');
    EXPECT_EQ(at(8'999'998), 'c');
    EXPECT_EQ(at(3'000'000), 'c');
    Client other(place);
    other.execute("SELECT id, v FROM long");
    write(other.cursor, 1, 'd');
    execute("SELECT id, v FROM long");
    cursor.fetch(FetchAbsolute, 1);
    EXPECT_EQ(at(3'000'001), 'd');
}

TEST_P(Cursors, ALargeObjectIsReplacedAndAppended)
{
    execute("CREATE TABLE blobs(id INTEGER PRIMARY KEY, v " + bytesType() + ", s VARCHAR(20))");
    execute("INSERT INTO blobs VALUES(1, " + bytes("0102") + ", 'a'), (2, NULL, 'b')");
    execute("SELECT id, v, s FROM blobs");
    cursor.fetch(FetchFirst, 0);
    cursor.appendBlob(2, "\x03\x04", 2);
    cursor.appendBlob(2, std::string(100'000, 'z').data(), 100'000);
    EXPECT_EQ(cursor.getBlobLen(2), 100'004);
    char start[5];
    EXPECT_EQ(cursor.getBlob(2, 0, start, 5), 5U);
    EXPECT_EQ(std::string(start, 5), "\x01\x02\x03\x04z");
    cursor.clearBlob(2);
    cursor.appendBlob(2, "", 0);
    cursor.fetch(FetchNext, 0);
    cursor.clearBlob(3);
    cursor.appendBlob(3, "new", 3);
    cursor.close();
    EXPECT_EQ(own.answer("SELECT id, coalesce(length(v), -1), s FROM blobs ORDER BY id"),
              (std::vector<std::string>{"1|0|a", "2|-1|new"}));
}

TEST_P(Cursors, WideRowsAreReadInBlocksThatFit)
{
    std::string columns;
    std::string values;
    for (int i = 0; i < 300; ++i) {
        columns += ", c" + std::to_string(i) + " VARCHAR(200)";
        values += ", '" + std::string(150, static_cast<char>('a' + i % 26)) + "'";
    }
    fill(600);
    execute("CREATE TABLE wide(id INTEGER PRIMARY KEY" + columns + ")");
    execute("INSERT INTO wide SELECT id" + values + " FROM n");
    execute("SELECT * FROM wide");
    for (int i = 1; i <= 600; ++i) {
        cursor.fetch(FetchNext, 0);
        ASSERT_EQ(text(cursor, 1), std::to_string(i));
    }
    EXPECT_EQ(text(cursor, 301), std::string(150, static_cast<char>('a' + 299 % 26)));
}
