#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include <oviapi/celltext.h>

using namespace OviAPI;

namespace {

constexpr unsigned char code(DataType type)
{
    return static_cast<unsigned char>(type);
}

template<class T>
std::vector<std::byte> raw(T value)
{
    std::vector<std::byte> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// Text, value, text again; the fault in brackets when there is one.
std::wstring again(DataType type, std::wstring_view text, size_t space = 64,
                   std::wstring_view format = {})
{
    std::vector<std::byte> value;
    const TextFault fault = textToValue(code(type), text, space, format, value);
    if (fault != TextFault::None)
        return L"[" + std::to_wstring(static_cast<int>(fault)) + L"]";
    return valueToText(code(type), value, format);
}

std::wstring failing(TextFault fault)
{
    return L"[" + std::to_wstring(static_cast<int>(fault)) + L"]";
}

template<class T>
void roundTrip(DataType type, T value)
{
    const std::wstring text = valueToText(code(type), raw(value));
    std::vector<std::byte> back;
    ASSERT_EQ(textToValue(code(type), text, sizeof(T), {}, back), TextFault::None);
    EXPECT_EQ(back, raw(value)) << std::string(text.begin(), text.end());
}

} // namespace

TEST(CellText, ClientTypesMapToFrameworkTypes)
{
    const int expected[] = {0, 1, 3, 2, 8, 4, 12, 9, 5, 7, 10, 1, 12, 14, 0, 0, 11, 11, 6};
    for (unsigned char type = 0; type < std::size(expected); ++type)
        EXPECT_EQ(DorToApsType(type), expected[type]) << int{type};
    EXPECT_EQ(DorToApsType(19), 0);
    EXPECT_EQ(DorToApsType(255), 0);
}

TEST(CellText, IntegersKeepBothEndsOfTheirRange)
{
    roundTrip(DataType::Int16, std::numeric_limits<int16_t>::min());
    roundTrip(DataType::Int16, std::numeric_limits<int16_t>::max());
    roundTrip(DataType::Int32, std::numeric_limits<int32_t>::min());
    roundTrip(DataType::Int64, std::numeric_limits<int64_t>::min());
    roundTrip(DataType::Int64, std::numeric_limits<int64_t>::max());
    roundTrip(DataType::UInt64, std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(valueToText(code(DataType::UInt64), raw(UINT64_MAX)), L"18446744073709551615");
    EXPECT_EQ(valueToText(code(DataType::Int64), raw(INT64_MIN)), L"-9223372036854775808");
}

TEST(CellText, AnIntegerOutsideItsTypeIsRefused)
{
    EXPECT_EQ(again(DataType::Int16, L"32768"), failing(TextFault::OutOfRange));
    EXPECT_EQ(again(DataType::Int16, L"-32769"), failing(TextFault::OutOfRange));
    EXPECT_EQ(again(DataType::Int32, L"2147483648"), failing(TextFault::OutOfRange));
    EXPECT_EQ(again(DataType::Int64, L"9223372036854775808"), failing(TextFault::OutOfRange));
    EXPECT_EQ(again(DataType::UInt64, L"18446744073709551616"), failing(TextFault::OutOfRange));
    EXPECT_EQ(again(DataType::UInt64, L"-1"), failing(TextFault::OutOfRange));
}

TEST(CellText, WhatIsNoIntegerIsRefused)
{
    for (const wchar_t* text : {L"", L" ", L"1.5", L"1e3", L"12a", L"a12", L"0x10", L"+-1", L"++1",
                                L"+", L"-", L"1 2", L"\x0661", L"1\x00A0"})
        EXPECT_EQ(again(DataType::Int32, text), failing(TextFault::NotAnInteger));
}

TEST(CellText, BlanksAndAPlusSignBelongToNoNumber)
{
    EXPECT_EQ(again(DataType::Int32, L" +42\t"), L"42");
    EXPECT_EQ(again(DataType::Double, L" +0.5 "), L"0.5");
    EXPECT_EQ(again(DataType::Decimal, L"+7.10"), L"7.10");
}

TEST(CellText, FloatingNumbersComeBackExactly)
{
    for (const double value : {0.1, 1.0 / 3, 1e300, DBL_MIN, DBL_MAX, 5e-324, -0.0, 123456789.125})
        roundTrip(DataType::Double, value);
    for (const float value : {0.1F, 1.0F / 3, FLT_MAX, FLT_MIN, 1e-45F, 16777217.0F})
        roundTrip(DataType::Float, value);
    EXPECT_EQ(valueToText(code(DataType::Double), raw(0.1)), L"0.1");
    EXPECT_EQ(valueToText(code(DataType::Float), raw(0.1F)), L"0.1");
}

TEST(CellText, FloatingNumbersThatAreNoneComeBackToo)
{
    roundTrip(DataType::Double, std::numeric_limits<double>::infinity());
    roundTrip(DataType::Double, -std::numeric_limits<double>::infinity());
    EXPECT_EQ(again(DataType::Double, L"nan"), L"nan");
}

TEST(CellText, ANumberNeverHasACommaWhateverTheLocaleSays)
{
    EXPECT_EQ(again(DataType::Double, L"1,5"), failing(TextFault::NotANumber));
    EXPECT_EQ(valueToText(code(DataType::Double), raw(1.5)), L"1.5");
}

TEST(CellText, AFloatingNumberOutsideItsTypeIsRefused)
{
    EXPECT_EQ(again(DataType::Double, L"1e309"), failing(TextFault::OutOfRange));
    EXPECT_EQ(again(DataType::Float, L"1e39"), failing(TextFault::OutOfRange));
}

TEST(CellText, DecimalsKeepEveryDigitAndTrailingZeros)
{
    const std::wstring digits = L"-123456789012345678901234567890.12345678901234567890";
    EXPECT_EQ(again(DataType::Decimal, digits), digits);
    EXPECT_EQ(again(DataType::Decimal, L"1.5000"), L"1.5000");
    EXPECT_EQ(again(DataType::Decimal, L".5"), L".5");
    EXPECT_EQ(again(DataType::Decimal, L"1e-10"), L"1e-10");
}

TEST(CellText, ADecimalLongerThanItsColumnIsRefused)
{
    EXPECT_EQ(again(DataType::Decimal, L"12345", 5), L"12345");
    EXPECT_EQ(again(DataType::Decimal, L"123456", 5), failing(TextFault::TooLong));
}

TEST(CellText, WhatIsNoDecimalIsRefused)
{
    for (const wchar_t* text : {L"", L".", L"-", L"1.2.3", L"1e", L"1e+", L"1,5", L"--1", L"one"})
        EXPECT_EQ(again(DataType::Decimal, text), failing(TextFault::NotANumber));
}

TEST(CellText, ADecimalAsANumberIsTheNearestDouble)
{
    const auto number = [](const char* digits) {
        std::vector<std::byte> value(std::strlen(digits));
        std::memcpy(value.data(), digits, value.size());
        double result = -1;
        EXPECT_TRUE(valueToNumber(code(DataType::Decimal), value, result));
        return result;
    };
    EXPECT_EQ(number("0.1"), 0.1);
    EXPECT_EQ(number("-12345678901234567890"), -12345678901234567890.0);
    EXPECT_EQ(number("1e999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(number("0.1e999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(number("-1e-999"), 0.0);
}

TEST(CellText, TextHasNoNumber)
{
    double number = 0;
    EXPECT_FALSE(valueToNumber(code(DataType::Text), raw(L'1'), number));
    EXPECT_FALSE(valueToNumber(code(DataType::Double), {}, number));
}

TEST(CellText, AValueInTooLittleSpaceIsNeverReadBeyondIt)
{
    const std::vector<std::byte> three(3);
    for (int type = 0; type <= 15; ++type)
        valueToText(static_cast<unsigned char>(type), three); // the address sanitizer watches
    EXPECT_EQ(valueToText(code(DataType::Int32), three), L"");
    EXPECT_EQ(valueToText(code(DataType::DateTime), three), L"");
}

TEST(CellText, TextEndsAtItsTerminatorOrWithItsSpace)
{
    const wchar_t text[] = {L'a', L'b', 0, L'c'};
    const auto bytes = std::as_bytes(std::span(text));
    EXPECT_EQ(valueToText(code(DataType::Text), bytes), L"ab");
    EXPECT_EQ(valueToText(code(DataType::Text), bytes.first(4)), L"a");
    EXPECT_EQ(valueToText(code(DataType::Text), bytes.first(7)), L"a");
    std::vector<std::byte> moved(1 + bytes.size()); // not aligned
    std::copy(bytes.begin(), bytes.end(), moved.begin() + 1);
    EXPECT_EQ(valueToText(code(DataType::Text), std::span(moved).subspan(1)), L"ab");
}

TEST(CellText, OnlyTheFirstCharactersAreConvertedWhenNoMoreAreWanted)
{
    const std::wstring longText(100'000, L'x');
    const auto bytes = std::as_bytes(std::span(longText));
    EXPECT_EQ(valueToText(code(DataType::Text), bytes, {}, 1024).size(), 1024U);
    EXPECT_EQ(valueToText(code(DataType::Bytes), bytes, {}, 5).size(), 5U);
}

TEST(CellText, TextIsTakenAsItIsAndNeedsRoomForItsTerminator)
{
    EXPECT_EQ(again(DataType::Text, L"  a b  "), L"  a b  ");
    EXPECT_EQ(again(DataType::Text, L""), L"");
    EXPECT_EQ(again(DataType::Text, L"abc", 16), L"abc");
    EXPECT_EQ(again(DataType::Text, L"abcd", 16), failing(TextFault::TooLong));
}

TEST(CellText, TruthValuesAreWords)
{
    EXPECT_EQ(again(DataType::Boolean, L"true"), L"true");
    EXPECT_EQ(again(DataType::Boolean, L" 0 "), L"false");
    EXPECT_EQ(again(DataType::Boolean, L"maybe"), failing(TextFault::NotABoolean));
    EXPECT_EQ(valueToText(code(DataType::Boolean), raw<uint32_t>(256)), L"true");
}

TEST(CellText, BytesArePairsOfHexadecimalDigits)
{
    EXPECT_EQ(again(DataType::Bytes, L"00ff7A"), L"00FF7A");
    EXPECT_EQ(again(DataType::Bytes, L""), L"");
    EXPECT_EQ(again(DataType::Bytes, L"0"), failing(TextFault::NotHexadecimal));
    EXPECT_EQ(again(DataType::Bytes, L"0g"), failing(TextFault::NotHexadecimal));
    EXPECT_EQ(again(DataType::Bytes, L"0011", 1), failing(TextFault::TooLong));
}

TEST(CellText, LargeObjectsHaveNoText)
{
    EXPECT_EQ(valueToText(code(DataType::LargeObject), raw(uint64_t{7})), L"");
    EXPECT_EQ(again(DataType::LargeObject, L"x"), failing(TextFault::NotText));
}

TEST(CellText, EveryFaultHasASentence)
{
    EXPECT_TRUE(faultText(TextFault::None).empty());
    for (int fault = 1; fault <= static_cast<int>(TextFault::NotText); ++fault)
        EXPECT_EQ(faultText(static_cast<TextFault>(fault)).back(), L'.') << fault;
}

TEST(DateTime, MicrosecondsSurviveTheSqlForm)
{
    int64_t micros = 0;
    ASSERT_TRUE(joinDateTime({2026, 11, 21, 13, 5, 9, 123456}, micros));
    EXPECT_EQ(formatDateTime(micros, sqlDateFormat), L"11/21/2026:13:05:09.123456");
    EXPECT_EQ(again(DataType::DateTime, L"11/21/2026:13:05:09.123456", 8, sqlDateFormat),
              L"11/21/2026:13:05:09.123456");
}

TEST(DateTime, TheFractionHasTwoDigitsAtLeast)
{
    EXPECT_EQ(formatDateTime(0, sqlDateFormat), L"01/01/1970:00:00:00.00");
    EXPECT_EQ(formatDateTime(500'000, L"ff"), L"50");
    EXPECT_EQ(formatDateTime(1, L"ff"), L"000001");
}

TEST(DateTime, TheDefaultFormShowsAFractionOnlyWhenThereIsOne)
{
    EXPECT_EQ(formatDateTime(0, defaultDateFormat), L"1970-01-01 00:00:00");
    EXPECT_EQ(formatDateTime(120'000, defaultDateFormat), L"1970-01-01 00:00:00.12");
    EXPECT_EQ(again(DataType::DateTime, L"2024-02-29 23:59:59.000001"),
              L"2024-02-29 23:59:59.000001");
}

TEST(DateTime, ADayAloneIsEnoughInTheDefaultForm)
{
    EXPECT_EQ(again(DataType::DateTime, L" 2024-02-29 "), L"2024-02-29 00:00:00");
    EXPECT_EQ(again(DataType::DateTime, L"2024-02-29 07:30"), L"2024-02-29 07:30:00");
}

TEST(DateTime, EveryDayOfFourCenturiesComesBack)
{
    constexpr int64_t day = 86'400'000'000;
    for (int64_t n = -800 * 366; n < 400 * 366; ++n) {
        int64_t back = 0;
        ASSERT_TRUE(joinDateTime(splitDateTime(n * day + 1), back));
        ASSERT_EQ(back, n * day + 1);
    }
}

TEST(DateTime, BothEndsOfTheRangeComeBack)
{
    for (const int64_t micros : {INT64_MIN + 1, INT64_MAX - 1, int64_t{-1}}) {
        int64_t back = 0;
        ASSERT_TRUE(parseDateTime(formatDateTime(micros, sqlDateFormat), sqlDateFormat, back));
        EXPECT_EQ(back, micros);
    }
}

TEST(DateTime, TimesBeforeAndBehindEveryOtherHaveWords)
{
    EXPECT_EQ(again(DataType::DateTime, L"infinity"), L"infinity");
    EXPECT_EQ(again(DataType::DateTime, L"-infinity", 8, sqlDateFormat), L"-infinity");
}

TEST(DateTime, ADayOrTimeThatDoesNotExistIsRefused)
{
    for (const wchar_t* text :
         {L"2023-02-29 00:00:00", L"2024-13-01 00:00:00", L"2024-00-01 00:00:00",
          L"2024-01-00 00:00:00", L"2024-04-31 00:00:00", L"2024-01-01 24:00:00",
          L"2024-01-01 00:60:00", L"2024-01-01 00:00:60", L"300000-01-01 00:00:00",
          L"2024-01-01 00:00:00.1234567", L"2024-01-01 00:00:00.", L"2024-01-01 00:00:00x", L"",
          L"today"})
        EXPECT_EQ(again(DataType::DateTime, text), failing(TextFault::NotADate));
    EXPECT_EQ(again(DataType::DateTime, L"1900-02-29"), failing(TextFault::NotADate));
    EXPECT_EQ(again(DataType::DateTime, L"2000-02-29"), L"2000-02-29 00:00:00");
}

TEST(DateTime, YearsBeforeTheFirstHaveASign)
{
    EXPECT_EQ(again(DataType::DateTime, L"-0044-03-15"), L"-0044-03-15 00:00:00");
    EXPECT_EQ(again(DataType::DateTime, L"0000-01-01"), L"0000-01-01 00:00:00");
}
