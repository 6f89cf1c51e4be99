// Values that are written in pieces.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support.h"

using namespace DorCPP;
using namespace DorTest;

namespace {

class LargeObject : public Database {
protected:
    LargeObject()
    {
        execute("CREATE TABLE t(i INTEGER PRIMARY KEY, b BLOB, a TEXT)");
        execute("INSERT INTO t VALUES (1, x'01', 'one'), (2, x'02', 'two')");
        other.createCS("", "", path().c_str(), "", 0, false, true);
        stranger.create(other, 0, nullptr, true);
        execute("SELECT i, b, a FROM t");
        cursor.fetch(FetchFirst, 0);
    }
    std::string storedSizes()
    {
        stranger.execute("SELECT length(b), length(a) FROM t ORDER BY i");
        const std::vector<std::string> all = rows(stranger);
        return all[0] + ' ' + all[1];
    }

    DorConnect other;
    DorCursor stranger;
};

} // namespace

TEST_F(LargeObject, ALongValueIsWrittenOnceWhenTheCursorMoves)
{
    const std::string piece(1 << 20, 'p');
    cursor.clearBlob(2);
    for (int i = 0; i < 20; ++i) // well over what stays in memory
        cursor.appendBlob(2, piece.data(), piece.size());
    cursor.appendBlob(2, "end", 3);
    EXPECT_EQ(storedSizes(), "1|3 1|3");
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(storedSizes(), std::to_string((20 << 20) + 3) + "|3 1|3");
    cursor.fetch(FetchFirst, 0);
    char end[8] = {};
    EXPECT_EQ(cursor.getBlob(2, (20 << 20) - 1, end, sizeof end), 4U);
    EXPECT_STREQ(end, "pend");
}

TEST_F(LargeObject, PiecesAreAddedToTheValueThereIs)
{
    const std::string piece(5 << 20, 'x');
    cursor.appendBlob(2, piece.data(), piece.size());
    cursor.fetch(FetchFirst, 0);
    cursor.appendBlob(2, piece.data(), piece.size());
    EXPECT_EQ(cursor.getBlobLen(2), (10 << 20) + 1);
    char first = 0;
    EXPECT_EQ(cursor.getBlob(2, 0, &first, 1), 1U);
    EXPECT_EQ(first, 1);
}

TEST_F(LargeObject, ExecutingReadingAndClosingWriteIt)
{
    cursor.clearBlob(3);
    cursor.appendBlob(3, "read", 4);
    EXPECT_EQ(text(cursor, 3), "read");
    cursor.clearBlob(3);
    EXPECT_FALSE(cursor.isNull(3)); // empty, not null
    cursor.appendBlob(3, "executed", 8);
    execute("UPDATE t SET b = x'0102' WHERE CURRENT OF CURSOR");
    EXPECT_EQ(storedSizes(), "2|8 1|3");
    cursor.appendBlob(3, "+", 1);
    cursor.close();
    EXPECT_EQ(storedSizes(), "2|9 1|3");
}

TEST_F(LargeObject, AFailedWriteAtCloseIsToldAndTheCursorIsClosed)
{
    cursor.clearBlob(2);
    cursor.appendBlob(2, "mine", 4);
    stranger.execute("UPDATE t SET a = 'theirs' WHERE i = 1");
    EXPECT_EQ(codeOf([&] { cursor.close(); }), CodeRowChanged);
    EXPECT_EQ(cursor.columnCount(), 0);
    EXPECT_EQ(codeOf([&] { cursor.close(); }), 0);
    EXPECT_EQ(storedSizes(), "1|6 1|3");
}

TEST_F(LargeObject, AFailedWriteInTheDestructorIsSwallowed)
{
    auto mine = std::make_unique<DorCursor>();
    mine->create(connection, 0, nullptr, true);
    mine->execute("SELECT i, b FROM t");
    mine->fetch(FetchFirst, 0);
    mine->appendBlob(2, "mine", 4);
    stranger.execute("DELETE FROM t WHERE i = 1");
    EXPECT_NO_THROW(mine.reset());
}

TEST_F(LargeObject, AFullTemporaryPlaceIsToldAndNothingIsWritten)
{
    const char* before = std::getenv("TMPDIR");
    const std::string saved = before ? before : "";
    ::setenv("TMPDIR", folder.file("nowhere").c_str(), 1);
    const std::string piece(9 << 20, 'p');
    cursor.clearBlob(2);
    EXPECT_NE(codeOf([&] { cursor.appendBlob(2, piece.data(), piece.size()); }), 0);
    before ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_EQ(storedSizes(), "1|3 1|3");
}

TEST_F(LargeObject, AValueThatIsGivenUpIsNeverWritten)
{
    const std::string piece(9 << 20, 'p');
    cursor.clearBlob(2);
    cursor.appendBlob(2, piece.data(), piece.size());
    cursor.giveUpBlob();
    cursor.fetch(FetchNext, 0);
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(cursor.getBlobLen(2), 1);
    EXPECT_NO_THROW(cursor.giveUpBlob()) << "there is nothing to give up any more";
    cursor.clearBlob(2);
    cursor.appendBlob(2, "new", 3);
    cursor.fetch(FetchNext, 0);
    EXPECT_EQ(storedSizes(), "3|3 1|3");
}

TEST_F(LargeObject, AValueOfWhichAPieceWasLostIsNotWrittenLater)
{
    const char* before = std::getenv("TMPDIR");
    const std::string saved = before ? before : "";
    ::setenv("TMPDIR", folder.file("nowhere").c_str(), 1);
    const std::string piece(5 << 20, 'p');
    cursor.clearBlob(2);
    cursor.appendBlob(2, piece.data(), piece.size());
    EXPECT_NE(codeOf([&] { cursor.appendBlob(2, piece.data(), piece.size()); }), 0);
    before ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    cursor.fetch(FetchNext, 0);
    cursor.fetch(FetchFirst, 0);
    EXPECT_EQ(storedSizes(), "1|3 1|3");
}
