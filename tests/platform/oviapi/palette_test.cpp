#include <oviapi/palette.h>

#include <gtest/gtest.h>

#include "drawing_support.h"

using OviAPI::Color;
using OviAPI::ColorNumber;

namespace {

TEST(ColorByNumber, FollowsThePalette)
{
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, QColor(1, 2, 3));
    palette.setColor(QPalette::Base, QColor(4, 5, 6));
    palette.setColor(QPalette::Highlight, QColor(7, 8, 9));
    const Color window(1);
    const Drawing::PaletteScope scope(palette);
    EXPECT_EQ(window.rgb(), 0x010203U);
    EXPECT_EQ(Color(6).rgb(), 0x040506U);
    EXPECT_EQ(Color(9).rgb(), 0x070809U);
    EXPECT_EQ(window.red(), 1);
    EXPECT_EQ(window.green(), 2);
    EXPECT_EQ(window.blue(), 3);
}

TEST(ColorByNumber, OfAnUnlistedNumberIsBlack)
{
    EXPECT_EQ(Color(999).rgb(), 0U);
    EXPECT_EQ(Color(-1).rgb(), 0U);
}

TEST(ColorByNumber, TextCanBeReadOnItsGround)
{
    const std::pair<ColorNumber, ColorNumber> pairs[] = {
        {ColorNumber::Window, ColorNumber::WindowText},
        {ColorNumber::Field, ColorNumber::FieldText},
        {ColorNumber::ButtonFace, ColorNumber::ButtonText},
        {ColorNumber::ToolTip, ColorNumber::ToolTipText},
    };
    for (const auto& [ground, text] : pairs)
        EXPECT_GE(contrast(Color(ground), Color(text)), 4.5) << static_cast<int>(ground);
}

TEST(ColorByNumber, EveryListedNumberButTextIsNotBlackOnALightDesktop)
{
    for (const int number : {1, 3, 5, 6, 9, 11, 12, 13, 15, 16})
        EXPECT_NE(Color(number).rgb(), 0U) << number;
}

TEST(DarkPalette, IsToldByItsFields)
{
    EXPECT_FALSE(OviAPI::isDarkPalette());
    const Drawing::PaletteScope scope(Drawing::darkPalette());
    EXPECT_TRUE(OviAPI::isDarkPalette());
}

TEST(DarkPalette, ContrastRunsFrom1To21)
{
    EXPECT_DOUBLE_EQ(OviAPI::contrast(Color::Red, Color::Red), 1.0);
    EXPECT_NEAR(OviAPI::contrast(Color::Black, Color::White), 21.0, 1e-9);
    EXPECT_DOUBLE_EQ(OviAPI::contrast(Color::White, Color::Blue),
                     OviAPI::contrast(Color::Blue, Color::White));
}

TEST(DarkPalette, LightensAColorJustAsFarAsItMust)
{
    const Color dark(35, 35, 35);
    EXPECT_EQ(OviAPI::lightenedAgainst(Color::White, dark), Color::White);
    EXPECT_EQ(OviAPI::lightenedAgainst(Color::Green, dark), Color::Green);
    const Color blue = OviAPI::lightenedAgainst(Color::Blue, dark);
    EXPECT_NE(blue, Color::Blue);
    EXPECT_GE(OviAPI::contrast(blue, dark), 3.0);
    EXPECT_LT(OviAPI::contrast(blue, dark), 3.5);
    EXPECT_EQ(blue.blue(), 255);
    EXPECT_EQ(OviAPI::lightenedAgainst(Color::Black, Color::White), Color::Black);
}

TEST(DarkPalette, NothingIsLightEnoughAgainstWhite)
{
    EXPECT_EQ(OviAPI::lightenedAgainst(Color::White, Color::White), Color::White);
}

TEST(DarkPalette, ChangesFixedChartColorsOnly)
{
    EXPECT_EQ(OviAPI::chartColor(Color::Blue), Color::Blue);
    const Drawing::PaletteScope scope(Drawing::darkPalette());
    EXPECT_NE(OviAPI::chartColor(Color::Blue), Color::Blue);
    EXPECT_EQ(OviAPI::chartColor(Color(2)), Color(2));
}

} // namespace
