#include <dorcpp/piecebuffer.h>

#include <gtest/gtest.h>

using DorCPP::PieceBuffer;

namespace {

constexpr size_t mega = 1 << 20;

std::string text(PieceBuffer& buffer, uint64_t offset, size_t size)
{
    std::string bytes(size, '\0');
    bytes.resize(buffer.copy(offset, bytes.data(), size));
    return bytes;
}

} // namespace

TEST(PieceBuffer, GivesWhatLiesInIt)
{
    PieceBuffer buffer;
    EXPECT_FALSE(buffer.holds("v", 0, 1));
    buffer.put("v", 10, "0123456789", 10);
    EXPECT_TRUE(buffer.holds("v", 10, 10));
    EXPECT_TRUE(buffer.holds("v", 19, 1));
    EXPECT_FALSE(buffer.holds("v", 9, 1));
    EXPECT_FALSE(buffer.holds("v", 19, 2)) << "there may be more of the value";
    EXPECT_FALSE(buffer.holds("w", 10, 1));
    EXPECT_EQ(text(buffer, 13, 3), "345");
}

TEST(PieceBuffer, KnowsTheEndOfTheValue)
{
    PieceBuffer buffer;
    buffer.put("v", 10, "0123", 5);
    EXPECT_TRUE(buffer.holds("v", 12, 100));
    EXPECT_TRUE(buffer.holds("v", 14, 1));
    EXPECT_FALSE(buffer.holds("v", 15, 1));
    EXPECT_EQ(text(buffer, 11, 2), "12");
    EXPECT_EQ(text(buffer, 12, 100), "23");
    EXPECT_FALSE(buffer.holds("v", 12, 1)) << "nothing is kept behind the end";
}

TEST(PieceBuffer, AValueThatEndsWithAPieceIsFoundToEndBehindIt)
{
    PieceBuffer buffer;
    buffer.put("v", 0, "0123", 4);
    EXPECT_EQ(text(buffer, 0, 4), "0123");
    EXPECT_FALSE(buffer.holds("v", 4, 1));
    buffer.put("v", 4, "", 8);
    EXPECT_TRUE(buffer.holds("v", 4, 1));
    EXPECT_EQ(text(buffer, 4, 1), "");
}

TEST(PieceBuffer, MoreIsReadEachTimeWhileReadingOn)
{
    PieceBuffer buffer;
    EXPECT_EQ(buffer.sizeFor("v", 0, 10), mega);
    uint64_t end = 0;
    for (const size_t size : {1U, 2U, 4U, 8U, 16U, 32U, 32U}) {
        EXPECT_EQ(buffer.sizeFor("v", end, 10), size * mega);
        buffer.put("v", end, std::string(size * mega, 'x'), size * mega);
        end += size * mega;
    }
    EXPECT_EQ(buffer.sizeFor("v", 0, 10), mega) << "from the beginning";
    EXPECT_EQ(buffer.sizeFor("w", end, 10), mega) << "another value";
    EXPECT_EQ(buffer.sizeFor("v", end, 40 * mega), 40 * mega);
}
