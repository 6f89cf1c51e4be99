#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include <oviapi/imagelist.h>
#include <oviapi/resourcemanager.h>

namespace {

using namespace OviAPI;

constexpr uint32_t red = 0xFFFF0000;
constexpr uint32_t blue = 0xFF0000FF;

Picture square(int side, Color color, double ratio = 1.0)
{
    return Picture(Size{side, side}, color, ratio);
}

// The width of the image of the highest resolution, in device pixels.
int finestWidth(const Picture& picture)
{
    const std::string path = testing::TempDir() + "imagelist_" + std::to_string(getpid()) + ".png";
    EXPECT_TRUE(picture.savePng(std::wstring(path.begin(), path.end())));
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    std::remove(path.c_str());
    return Picture::fromFileBytes(bytes).width();
}

} // namespace

TEST(ImageList, TakesTheSizeOfTheFirstPictureAndRefusesOthers)
{
    ImageList images;
    EXPECT_EQ(images.size(), Size());
    EXPECT_EQ(images.add(Picture()), -1);
    EXPECT_EQ(images.add(square(16, Color(255, 0, 0))), 0);
    EXPECT_EQ(images.add(square(24, Color(255, 0, 0))), -1);
    EXPECT_EQ(images.add(square(16, Color(0, 0, 255))), 1);
    EXPECT_EQ(images.size(), (Size{16, 16}));
    EXPECT_EQ(images.count(), 2);
    EXPECT_EQ(images.get(0).pixel(3, 3), red);
    EXPECT_EQ(images.get(1).pixel(3, 3), blue);
}

TEST(ImageList, ASizeGivenBeforehandHoldsForTheFirstPictureToo)
{
    ImageList images({24, 24});
    EXPECT_EQ(images.add(square(16, Color(255, 0, 0))), -1);
    EXPECT_EQ(images.add(square(24, Color(255, 0, 0))), 0);
    ImageList free({-1, 7});
    EXPECT_EQ(free.add(square(16, Color(255, 0, 0))), 0);
}

TEST(ImageList, AStripIsCutIntoPicturesAndItsRestIsDropped)
{
    const Picture strip({50, 16}, Color(255, 0, 0));
    ImageList images;
    EXPECT_EQ(images.addStrip(strip, 16), 3);
    EXPECT_EQ(images.count(), 3);
    EXPECT_EQ(images.size(), (Size{16, 16}));
    EXPECT_EQ(images.addStrip(strip, 0), 0);
    EXPECT_EQ(images.addStrip(strip, -5), 0);
    EXPECT_EQ(images.addStrip(strip, 51), 0);
    EXPECT_EQ(images.addStrip(Picture(), 16), 0);
    EXPECT_EQ(images.addStrip(Picture({32, 20}, Color(0, 0, 0)), 16), 0) << "another height";
    EXPECT_EQ(images.count(), 3);
}

TEST(ImageList, EveryResolutionOfAStripIsCut)
{
    Picture strip({48, 16}, Color(255, 0, 0));
    ASSERT_TRUE(strip.addVariant(Picture({48, 16}, Color(0, 0, 255), 2.0)));
    ImageList images;
    ASSERT_EQ(images.addStrip(strip, 16), 3);
    EXPECT_EQ(images.get(2).width(), 16);
    EXPECT_EQ(finestWidth(images.get(2)), 32);
    EXPECT_EQ(images.get(2).pixel(0, 0), red);
}

TEST(ImageList, NumbersOutOfRangeGiveNothingAndChangeNothing)
{
    ImageList images;
    images.add(square(16, Color(255, 0, 0)));
    for (const int index : {-1, 1, 2147483647, -2147483647 - 1}) {
        EXPECT_TRUE(images.get(index).isNull());
        EXPECT_FALSE(images.replace(index, square(16, Color(0, 0, 255))));
        images.remove(index);
        images.setName(index, L"x");
        EXPECT_EQ(images.name(index), L"");
    }
    EXPECT_EQ(images.count(), 1);
}

TEST(ImageList, APictureIsReplacedByOneOfTheSameSizeOnly)
{
    ImageList images;
    images.add(square(16, Color(255, 0, 0)));
    EXPECT_FALSE(images.replace(0, square(24, Color(0, 0, 255))));
    EXPECT_FALSE(images.replace(0, Picture()));
    EXPECT_EQ(images.get(0).pixel(0, 0), red);
    EXPECT_TRUE(images.replace(0, square(16, Color(0, 0, 255))));
    EXPECT_EQ(images.get(0).pixel(0, 0), blue);
}

TEST(ImageList, RemovingMovesTheOthersUpAndClearingKeepsTheSize)
{
    ImageList images;
    images.add(square(16, Color(255, 0, 0)));
    images.add(square(16, Color(0, 0, 255)));
    images.setName(1, L"blue");
    images.remove(0);
    EXPECT_EQ(images.get(0).pixel(0, 0), blue);
    EXPECT_EQ(images.name(0), L"blue");
    images.setName(0, nullptr);
    EXPECT_EQ(images.name(0), L"");
    images.clear();
    EXPECT_EQ(images.count(), 0);
    EXPECT_EQ(images.add(square(24, Color(255, 0, 0))), -1);
}

TEST(ImageList, ACopyDoesNotFollowLaterChanges)
{
    ImageList images;
    images.add(square(16, Color(255, 0, 0)));
    const ImageList copy = images;
    images.replace(0, square(16, Color(0, 0, 255)));
    EXPECT_EQ(copy.get(0).pixel(0, 0), red);
}

TEST(ImageList, PicturesComeFromResourcesOneByOneOrAsAStrip)
{
    const ResourceManager resources(L"" TYPICAL_RRS);
    ASSERT_FALSE(resources.failed());
    ImageList images;
    Picture any;
    int id = 0;
    for (id = 222000; id < 222100 && !resources.loadPicture(id, &any); ++id) {
    }
    ASSERT_FALSE(any.isNull()) << "the resources hold pictures";
    EXPECT_EQ(images.load(resources, id), 1);
    EXPECT_EQ(images.size(), any.size());
    ImageList halves;
    EXPECT_EQ(halves.load(resources, id, any.width() / 2), 2);
    EXPECT_EQ(images.load(resources, 1, 16), 0) << "no such picture";
}
