#include <oviapi/spinbox.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace OviAPI;

constexpr int64_t most = std::numeric_limits<int64_t>::max();
constexpr int64_t least = std::numeric_limits<int64_t>::min();

} // namespace

TEST(SpinText, NumbersAreReadExactly)
{
    EXPECT_EQ(readUnits(L" 12 ", 0), 12);
    EXPECT_EQ(readUnits(L"-0.05", 2), -5);
    EXPECT_EQ(readUnits(L"1,5", 2), 150) << "a comma is a point";
    EXPECT_EQ(readUnits(L".5", 1), 5);
    EXPECT_EQ(readUnits(L"5.", 1), 50);
    EXPECT_EQ(readUnits(L"+7 px", 0, L" px"), 7);
    EXPECT_EQ(readUnits(L"1.005", 2), 101) << "rounded, half away from zero";
    EXPECT_EQ(readUnits(L"-1.5", 0), -2);
    EXPECT_EQ(readUnits(L"123456789012345678", 0), 123456789012345678);
}

TEST(SpinText, WhatIsNoNumberIsNone)
{
    for (const wchar_t* text :
         {L"", L" ", L"-", L".", L"abc", L"1x", L"1.2.3", L"1e5", L"--1", L"0x10", L"1 2", L"px"})
        EXPECT_FALSE(readUnits(text, 2, L"px")) << text;
}

TEST(SpinText, TooLargeNumbersBecomeTheLargest)
{
    EXPECT_EQ(readUnits(L"9223372036854775807", 0), most);
    EXPECT_EQ(readUnits(L"9223372036854775808", 0), most);
    EXPECT_EQ(readUnits(L"-9223372036854775808", 0), least);
    EXPECT_EQ(readUnits(std::wstring(500, L'9'), 18), most);
    EXPECT_EQ(readUnits(L"-" + std::wstring(500, L'9'), 0), least);
    EXPECT_EQ(readUnits(L"9223372036854775807.9", 0), most);
}

TEST(SpinText, NumbersAreWrittenWithAllTheirDecimals)
{
    EXPECT_EQ(writeUnits(1250, 2), L"12.50");
    EXPECT_EQ(writeUnits(-5, 2), L"-0.05");
    EXPECT_EQ(writeUnits(0, 3), L"0.000");
    EXPECT_EQ(writeUnits(least, 0), L"-9223372036854775808");
    EXPECT_EQ(writeUnits(least, 18), L"-9.223372036854775808");
    for (const int64_t units : {int64_t{0}, int64_t{-1}, most, least, int64_t{1000}}) {
        for (const int digits : {0, 1, 18})
            EXPECT_EQ(readUnits(writeUnits(units, digits), digits), units);
    }
}
