#include <oviapi/picture.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include <oviapi/paintdevice.h>
#include <oviapi/painter.h>

#include "platform/oviapi/qt/convert.h"

namespace fs = std::filesystem;
using namespace OviAPI;

namespace {

std::string bytesOf(const Picture& picture)
{
    std::string name = (fs::temp_directory_path() / "ovi-picture-XXXXXX").string();
    const fs::path folder = ::mkdtemp(name.data());
    EXPECT_TRUE(picture.savePng((folder / "a.png").wstring()));
    std::string bytes;
    {
        std::ifstream stream(folder / "a.png", std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(stream), {});
    }
    fs::remove_all(folder);
    return bytes;
}

TEST(Picture, IsNullAtFirst)
{
    const Picture picture;
    EXPECT_TRUE(picture.isNull());
    EXPECT_EQ(picture.size(), (Size{0, 0}));
    EXPECT_EQ(picture.pixel(0, 0), 0U);
    EXPECT_FALSE(picture.savePng(L"nowhere.png"));
    EXPECT_TRUE(picture.copy({0, 0, 5, 5}).isNull());
}

TEST(Picture, IsFilledWithItsColor)
{
    const Picture picture({3, 2}, Color(10, 20, 30));
    EXPECT_EQ(picture.size(), (Size{3, 2}));
    EXPECT_EQ(picture.pixel(2, 1), 0xFF0A141EU);
    EXPECT_EQ(picture.pixel(3, 1), 0U);
    EXPECT_EQ(picture.pixel(2, 2), 0U);
    EXPECT_EQ(picture.pixel(-1, 0), 0U);
}

TEST(Picture, OfAnImpossibleSizeIsNull)
{
    for (const Size size : {Size{0, 5}, Size{5, -1}, Size{INT_MAX, INT_MAX}, Size{INT_MAX, 1}})
        EXPECT_TRUE(Picture(size, Color::Red).isNull()) << size.width << "x" << size.height;
}

TEST(Picture, CopiesShareUntilOneIsDrawnOn)
{
    Picture first({4, 4}, Color::Red);
    const Picture second = first;
    EXPECT_EQ(first.native(), second.native());
    PaintDevice device(first);
    const Picture during = first;
    {
        Painter painter(device);
        painter.fillRect({0, 0, 4, 4}, Color::Blue);
    }
    EXPECT_EQ(first.pixel(1, 1), 0xFF0000FFU);
    EXPECT_EQ(second.pixel(1, 1), 0xFFFF0000U);
    EXPECT_EQ(during.pixel(1, 1), 0xFFFF0000U);
}

TEST(Picture, GoesThroughAPngFileUnchanged)
{
    Picture picture({5, 3}, Color::Green);
    {
        PaintDevice device(picture);
        Painter painter(device);
        painter.fillRect({0, 0, 1, 1}, Color(1, 2, 3));
    }
    picture.setTransparentColor(Color::Green);
    const Picture back = Picture::fromFileBytes(bytesOf(picture));
    ASSERT_EQ(back.size(), (Size{5, 3}));
    EXPECT_EQ(back.pixel(0, 0), 0xFF010203U);
    EXPECT_EQ(back.pixel(4, 2), 0U);
}

TEST(Picture, BytesThatAreNoImageGiveANullPicture)
{
    EXPECT_TRUE(Picture::fromFileBytes("").isNull());
    EXPECT_TRUE(Picture::fromFileBytes("text").isNull());
    EXPECT_TRUE(Picture::fromFileBytes("<svg xmlns='http://www.w3.org/2000/svg'/>").isNull());
    EXPECT_TRUE(Picture::fromFileBytes("/* XPM */").isNull());
}

TEST(Picture, AFileCutAtAnyByteNeverHarms)
{
    const std::string bytes = bytesOf(Picture({9, 9}, Color::Red));
    for (size_t length = 0; length < bytes.size(); ++length) {
        const Picture picture = Picture::fromFileBytes(std::string_view(bytes).substr(0, length));
        EXPECT_TRUE(picture.isNull() || picture.size() == (Size{9, 9})) << length;
    }
}

TEST(Picture, AHugeImageIsRefusedBeforeItIsDecoded)
{
    std::string bytes = bytesOf(Picture({1, 1}, Color::Red));
    bytes.replace(16, 8, std::string("\x00\x01\x86\xA0\x00\x01\x86\xA0", 8)); // 100000 x 100000
    EXPECT_TRUE(Picture::fromFileBytes(bytes).isNull());
}

TEST(Picture, ItsTransparentColorBecomesAlphaAndNoOtherDoes)
{
    Picture picture({2, 1}, Color::LtGray);
    {
        PaintDevice device(picture);
        Painter painter(device);
        painter.fillRect({1, 0, 2, 1}, Color(192, 192, 193));
    }
    picture.setTransparentColor(Color::LtGray);
    EXPECT_EQ(picture.pixel(0, 0), 0U);
    EXPECT_EQ(picture.pixel(1, 0), 0xFFC0C0C1U);
}

TEST(Picture, IsCutIntoParts)
{
    Picture strip({48, 16}, Color::Red);
    {
        PaintDevice device(strip);
        Painter painter(device);
        painter.fillRect({16, 0, 32, 16}, Color::Green);
        painter.fillRect({32, 0, 48, 16}, Color::Blue);
    }
    const Picture middle = strip.copy({16, 0, 32, 16});
    EXPECT_EQ(middle.size(), (Size{16, 16}));
    EXPECT_EQ(middle.pixel(0, 0), 0xFF00FF00U);
    EXPECT_EQ(middle.pixel(15, 15), 0xFF00FF00U);
    EXPECT_EQ(strip.copy({40, 8, 100, 100}).size(), (Size{8, 8}));
    EXPECT_TRUE(strip.copy({48, 0, 64, 16}).isNull());
    EXPECT_TRUE(strip.copy({8, 8, 8, 8}).isNull());
}

TEST(Picture, HoldsSeveralResolutionsAndGivesTheOneThatFits)
{
    Picture picture({4, 4}, Color::Red);
    EXPECT_TRUE(picture.addVariant(Picture({4, 4}, Color::Blue, 3.0)));
    EXPECT_TRUE(picture.addVariant(Picture({4, 4}, Color::Green, 2.0)));
    EXPECT_FALSE(picture.addVariant(Picture({5, 4}, Color::Green, 2.0)));
    EXPECT_FALSE(picture.addVariant(Picture()));
    EXPECT_FALSE(Picture().addVariant(picture));
    EXPECT_EQ(picture.size(), (Size{4, 4}));
    EXPECT_EQ(picture.pixel(3, 3), 0xFFFF0000U);
    EXPECT_EQ(toQImage(picture, 1.0).width(), 4);
    EXPECT_EQ(toQImage(picture, 1.5).width(), 8);
    EXPECT_EQ(toQImage(picture, 2.0).width(), 8);
    EXPECT_EQ(toQImage(picture, 7.0).width(), 12);
    EXPECT_EQ(toQImage(picture.copy({1, 1, 3, 3}), 3.0).width(), 6);
}

TEST(Picture, DrawsItsFittingResolution)
{
    Picture picture({4, 4}, Color::Red);
    ASSERT_TRUE(picture.addVariant(Picture({4, 4}, Color::Green, 2.0)));
    for (const double ratio : {1.0, 2.0}) {
        Picture target({10, 10}, Color::White, ratio);
        {
            PaintDevice device(target);
            Painter painter(device);
            painter.drawPicture(2, 2, picture);
        }
        EXPECT_EQ(target.pixel(2, 2), ratio == 1.0 ? 0xFFFF0000U : 0xFF00FF00U);
        EXPECT_EQ(target.pixel(5, 5), ratio == 1.0 ? 0xFFFF0000U : 0xFF00FF00U);
        EXPECT_EQ(target.pixel(1, 2), 0xFFFFFFFFU);
        EXPECT_EQ(target.pixel(6, 5), 0xFFFFFFFFU);
    }
}

TEST(Picture, IsStretchedIntoARectangle)
{
    Picture target({20, 20}, Color::White);
    {
        PaintDevice device(target);
        Painter painter(device);
        painter.stretchPicture({5, 5, 15, 17}, Picture({3, 3}, Color::Red));
        painter.stretchPicture({0, 0, 0, 5}, Picture({3, 3}, Color::Red));
        painter.drawPicture(0, 0, Picture());
    }
    EXPECT_EQ(target.pixel(5, 5), 0xFFFF0000U);
    EXPECT_EQ(target.pixel(14, 16), 0xFFFF0000U);
    EXPECT_EQ(target.pixel(4, 5), 0xFFFFFFFFU);
    EXPECT_EQ(target.pixel(14, 17), 0xFFFFFFFFU);
    EXPECT_EQ(target.pixel(0, 0), 0xFFFFFFFFU);
}

TEST(Picture, AFileThatCannotBeWrittenIsReported)
{
    EXPECT_FALSE(Picture({1, 1}, Color::Red).savePng(L"/nowhere/at/all.png"));
}

} // namespace
