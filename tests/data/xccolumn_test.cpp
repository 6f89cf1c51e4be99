#include "data/xccolumn.h"

#include <gtest/gtest.h>

TEST(ChartColumn, HasNineDefaultColors)
{
    const OviAPI::Color expected[] = {
        {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {180, 0, 0}, {0, 180, 0},
        {0, 0, 180}, {100, 0, 0}, {0, 100, 0}, {0, 0, 100},
    };
    ASSERT_EQ(xCColumn::defColorsCount, 9);
    for (int i = 0; i < xCColumn::defColorsCount; ++i)
        EXPECT_EQ(xCColumn::defColors[i], expected[i]) << i;
}

TEST(ChartColumn, TakesTheNextColorInBothConstructors)
{
    const unsigned start = xCColumn::m_defaultColor;
    for (unsigned i = 0; i < 20; i += 2) {
        const xCColumn first;
        const xCColumn second(L"n", 2, 4, L"t", 10, 5, 0);
        EXPECT_EQ(first.color, xCColumn::defColors[(start + i) % 9]);
        EXPECT_EQ(second.color, xCColumn::defColors[(start + i + 1) % 9]);
    }
    // Kept: the counter is the program's and is never reset.
    EXPECT_EQ(xCColumn::m_defaultColor, start + 20);
}

TEST(ChartColumn, SetDefaultColorTakesTheNextColor)
{
    xCColumn column;
    const unsigned next = xCColumn::m_defaultColor;
    column.setDefaultColor();
    EXPECT_EQ(column.color, xCColumn::defColors[next % 9]);
    EXPECT_EQ(xCColumn::m_defaultColor, next + 1);
}

TEST(ChartColumn, ACopyKeepsTheColorOfItsSource)
{
    const xCColumn column;
    const unsigned count = xCColumn::m_defaultColor;
    const xCColumn copy(column);
    EXPECT_EQ(copy.color, column.color);
    EXPECT_EQ(xCColumn::m_defaultColor, count);
}

TEST(ChartColumn, PassesItsArgumentsOn)
{
    const xCColumn column(L"price", 5, 8, L"Price", 70, 20, 3);
    EXPECT_EQ(column.name, L"price");
    EXPECT_EQ(column.dataType, 5);
    EXPECT_EQ(column.size, 8);
    EXPECT_EQ(column.caption, L"Price");
    EXPECT_EQ(column.width, 70);
    EXPECT_EQ(column.minWidth, 20);
    EXPECT_EQ(column.displayKind, OviAPI::aCColumn::CheckMark);
}
