#include <string>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

#include <dorcpp/dorx.h>
#include <dorcpp/spool.h>

#include "support.h"

using namespace DorCPP;

namespace {

void addRow(Spool& spool, int64_t i, const std::string& text)
{
    spool.beginRow();
    spool.addInteger(i);
    spool.addBytes(Value::Text, text.data(), text.size());
    if (i % 3 == 0)
        spool.addNull();
    else
        spool.addReal(static_cast<double>(i) / 2);
}

std::string textOf(int64_t i)
{
    return std::string(static_cast<size_t>(i % 50), static_cast<char>('a' + i % 26));
}

} // namespace

TEST(Spool, EveryRowIsReadBackInAnyOrder)
{
    Spool spool(3);
    for (int64_t i = 0; i < 1000; ++i)
        addRow(spool, i, textOf(i));
    spool.finish();
    ASSERT_EQ(spool.rows(), 1000);
    for (int64_t k = 0; k < 1000; ++k) {
        const int64_t i = k * 617 % 1000;
        EXPECT_EQ(spool.value(i, 0).integer, i);
        EXPECT_EQ(spool.value(i, 1).bytes(), textOf(i));
        EXPECT_EQ(spool.value(i, 2).kind, i % 3 == 0 ? Value::Null : Value::Real);
    }
}

TEST(Spool, ALongValueLiesOutsideAndIsReadInPieces)
{
    std::string longText(200'000, 'x');
    longText[150'000] = 'y';
    Spool spool(3);
    for (int64_t i = 0; i < 200; ++i)
        addRow(spool, i, i == 100 ? longText : textOf(i));
    spool.finish();
    const Value value = spool.value(100, 1);
    EXPECT_EQ(value.length, longText.size());
    EXPECT_EQ(value.held, RowBlock::maxHeld);
    EXPECT_EQ(value.bytes(), longText.substr(0, RowBlock::maxHeld));
    char piece[4];
    EXPECT_EQ(spool.piece(100, 1, 149'999, piece, 4), 4U);
    EXPECT_EQ(std::string(piece, 4), "xyxx");
    EXPECT_EQ(spool.piece(100, 1, 199'998, piece, 4), 2U);
    EXPECT_EQ(spool.piece(100, 1, 200'000, piece, 4), 0U);
    EXPECT_EQ(spool.value(101, 0).integer, 101);
}

TEST(Spool, NoRowsAndFewRowsNeedNoFile)
{
    Spool empty(1);
    empty.finish();
    EXPECT_EQ(empty.rows(), 0);
    ::setenv("TMPDIR", "/nowhere/at/all", 1);
    Spool few(3);
    for (int64_t i = 0; i < 64; ++i)
        addRow(few, i, "t");
    few.finish();
    EXPECT_EQ(few.value(63, 0).integer, 63);
    ::unsetenv("TMPDIR");
}

TEST(Spool, AMissingTemporaryFolderIsAnErrorWithItsName)
{
    ::setenv("TMPDIR", "/nowhere/at/all", 1);
    Spool spool(1);
    const std::string message = DorTest::messageOf([&] {
        for (int64_t i = 0; i < 65; ++i) {
            spool.beginRow();
            spool.addInteger(i);
        }
    });
    ::unsetenv("TMPDIR");
    EXPECT_NE(message.find("/nowhere/at/all"), std::string::npos) << message;
}

TEST(Spool, AFullDiskIsAnError)
{
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 4096;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    TempFile file;
    const std::string bytes(10'000, 'x');
    const int code = DorTest::codeOf([&] { file.append(bytes.data(), bytes.size()); });
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(code, CodeDiskFull);
}
