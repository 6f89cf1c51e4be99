#include "data/orderbycolumn.h"

#include <gtest/gtest.h>

using OviAPI::Color;
using OviAPI::Point;
using OviAPI::Rect;

namespace {

void expectLine(const OrderTriangle::Line& line, Point from, Point to, Color color)
{
    EXPECT_EQ(line.from, from);
    EXPECT_EQ(line.to, to);
    EXPECT_EQ(line.color, color);
}

} // namespace

TEST(OrderByColumn, StartsWithoutAnOrderAndDrawsItsOwnHeader)
{
    const xCOrderByColumn plain;
    const xCOrderByColumn described(L"n", 2, 4, L"t", 10, 5, 0);
    EXPECT_EQ(plain.m_order, xCOrderByColumn::NoOrder);
    EXPECT_EQ(described.m_order, xCOrderByColumn::NoOrder);
    EXPECT_TRUE(plain.customHeader);
    EXPECT_TRUE(described.customHeader);
}

TEST(OrderByColumn, PassesItsArgumentsOn)
{
    const xCOrderByColumn column(L"price", 5, 8, L"Price", 70, 20, 3);
    EXPECT_EQ(column.name, L"price");
    EXPECT_EQ(column.dataType, 5);
    EXPECT_EQ(column.size, 8);
    EXPECT_EQ(column.caption, L"Price");
    EXPECT_EQ(column.width, 70);
    EXPECT_EQ(column.minWidth, 20);
    EXPECT_EQ(column.displayKind, 3);
}

// inside: 100 wide, 20 high; caption 41 by 13: s = 6, g = 7, x0 = 10 + 29 + 41 + 7, y0 = 5 + 7
TEST(OrderTriangle, PointsDownForAscending)
{
    const OrderTriangle t(Rect{10, 5, 110, 25}, {41, 13}, xCOrderByColumn::Ascending);
    expectLine(t.lines[0], {90, 18}, {93, 12}, Color::White);
    expectLine(t.lines[1], {87, 12}, {93, 12}, Color::Gray);
    expectLine(t.lines[2], {87, 12}, {90, 18}, Color::Gray);
}

TEST(OrderTriangle, PointsUpForDescendingAndEveryOtherOrder)
{
    for (const int order : {2, 3, -1}) {
        const OrderTriangle t(Rect{10, 5, 110, 25}, {41, 13}, order);
        expectLine(t.lines[0], {90, 12}, {93, 18}, Color::White);
        expectLine(t.lines[1], {87, 18}, {90, 12}, Color::Gray);
        expectLine(t.lines[2], {87, 18}, {93, 18}, Color::White);
    }
}

// width 20 - caption 41 = -21, halved to -10; height 4 - s 7 = -3, halved to -1
TEST(OrderTriangle, TruncatesNegativeDivisionsTowardZero)
{
    const OrderTriangle t(Rect{0, 0, 20, 4}, {41, 15}, xCOrderByColumn::Ascending);
    expectLine(t.lines[1], {30, -1}, {37, -1}, Color::Gray);
    expectLine(t.lines[2], {30, -1}, {33, 6}, Color::Gray);
}
