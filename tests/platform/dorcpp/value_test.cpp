#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <dorcpp/value.h>

#include "support.h"

using namespace DorCPP;

namespace {

Value integer(int64_t i)
{
    Value v;
    v.kind = Value::Integer;
    v.integer = i;
    return v;
}

Value real(double d)
{
    Value v;
    v.kind = Value::Real;
    v.real = d;
    return v;
}

Value bytes(Value::Kind kind, std::string_view s)
{
    Value v;
    v.kind = kind;
    v.data = s.data();
    v.held = v.length = s.size();
    return v;
}

Value text(std::string_view s)
{
    return bytes(Value::Text, s);
}

struct Delivered {
    ValueState state;
    std::string text;
};

Delivered narrow(const Value& value, size_t capacity = 64)
{
    std::string buffer(capacity, 'x');
    size_t length = 0;
    const ValueState state = deliver(value, TypeText, buffer.data(), capacity, length);
    EXPECT_EQ(buffer[length], 0);
    return {state, buffer.substr(0, length)};
}

template<class T>
ValueState binary(const Value& value, int type, T& result)
{
    size_t length = 0;
    result = T(77);
    return deliver(value, type, &result, sizeof result, length);
}

int64_t dateOf(std::string_view s)
{
    int64_t micros = 0;
    EXPECT_EQ(dateFromText(s, micros), ValueState::Exact) << s;
    return micros;
}

bool isDate(std::string_view s)
{
    int64_t micros = 0;
    return dateFromText(s, micros) != ValueState::Mismatch;
}

} // namespace

TEST(ValueText, TextIsCutToTheCapacityOnACharacterBoundary)
{
    EXPECT_EQ(narrow(text("abc"), 4).text, "abc");
    EXPECT_EQ(narrow(text("abc"), 4).state, ValueState::Exact);
    EXPECT_EQ(narrow(text("abcd"), 4).text, "abc");
    EXPECT_EQ(narrow(text("abcd"), 4).state, ValueState::Cut);
    EXPECT_EQ(narrow(text("ab\xE2\x82\xAC"), 5).text, "ab");
    EXPECT_EQ(narrow(text("ab\xE2\x82\xAC"), 5).state, ValueState::Cut);
    EXPECT_EQ(narrow(text("abc"), 1).text, "");
}

TEST(ValueText, InvalidTextIsShownAsFarAsItGoesAndMarked)
{
    EXPECT_EQ(narrow(text("a\xFF"
                          "b"))
                  .text,
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(narrow(text("a\xFF"
                          "b"))
                  .state,
              ValueState::BadText);
    EXPECT_EQ(narrow(text("\xED\xA0\x80")).state, ValueState::BadText); // a surrogate
    EXPECT_EQ(narrow(text("abcdefgh\xC3")).state, ValueState::BadText);
}

TEST(ValueText, AZeroInsideATextIsMarked)
{
    const Delivered d = narrow(text(std::string_view("a\0b", 3)));
    EXPECT_EQ(d.state, ValueState::BadText);
    EXPECT_EQ(d.text, "a\xEF\xBF\xBD"
                      "b");
    EXPECT_EQ(narrow(text(std::string_view("abcdefg\0ijklmnopq", 17))).state, ValueState::BadText);
}

TEST(ValueText, EveryStoredKindIsShownAsItIs)
{
    EXPECT_EQ(narrow(integer(INT64_MIN)).text, "-9223372036854775808");
    EXPECT_EQ(narrow(real(0.1)).text, "0.1");
    EXPECT_EQ(narrow(real(3)).text, "3.0");
    EXPECT_EQ(narrow(real(1e300)).text, "1e+300");
    EXPECT_EQ(narrow(bytes(Value::Blob, "\x01\xFF")).text, "01FF");
    EXPECT_EQ(narrow(bytes(Value::Blob, "\x01\xFF")).state, ValueState::Mismatch);
    EXPECT_EQ(narrow(Value()).state, ValueState::Null);
    EXPECT_EQ(narrow(Value()).text, "");
}

TEST(ValueText, NumbersThatDoNotFitAreMarked)
{
    EXPECT_EQ(narrow(integer(12345), 4).state, ValueState::Cut);
}

TEST(ValueText, Utf16IsCutBetweenPairs)
{
    char16_t units[4];
    size_t length = 0;
    EXPECT_EQ(deliver(text("ab\xF0\x9F\x98\x80"), TypeNchar, units, 8, length), ValueState::Cut);
    EXPECT_EQ(length, 4U);
    EXPECT_EQ(std::u16string(units), u"ab");
    EXPECT_EQ(deliver(text("a\xF0\x9F\x98\x80"), TypeNchar, units, 8, length), ValueState::Exact);
    EXPECT_EQ(std::u16string(units), u"a\U0001F600");
    EXPECT_EQ(deliver(text("\xFF"), TypeNvarchar, units, 8, length), ValueState::BadText);
}

TEST(ValueBinary, IntegersOutOfRangeAreMarkedAndNeverCut)
{
    int16_t small = 0;
    EXPECT_EQ(binary(integer(-32768), TypeSmallint, small), ValueState::Exact);
    EXPECT_EQ(small, -32768);
    EXPECT_EQ(binary(integer(32768), TypeSmallint, small), ValueState::Mismatch);
    EXPECT_EQ(small, 0);
    int32_t medium = 0;
    EXPECT_EQ(binary(integer(INT64_C(1) << 31), TypeInteger, medium), ValueState::Mismatch);
    int64_t large = 0;
    EXPECT_EQ(binary(integer(INT64_MAX), TypeBigint, large), ValueState::Exact);
    EXPECT_EQ(large, INT64_MAX);
}

TEST(ValueBinary, ATextInANumberColumnIsMarkedUnlessItIsThatNumber)
{
    int64_t large = 0;
    EXPECT_EQ(binary(text("42"), TypeBigint, large), ValueState::Exact);
    EXPECT_EQ(large, 42);
    for (const char* s : {"", "abc", "42 ", "4.5", "99999999999999999999"})
        EXPECT_EQ(binary(text(s), TypeBigint, large), ValueState::Mismatch) << s;
    double d = 0;
    EXPECT_EQ(binary(text("n/a"), TypeDouble, d), ValueState::Mismatch);
    EXPECT_EQ(binary(bytes(Value::Blob, "1"), TypeDouble, d), ValueState::Mismatch);
}

TEST(ValueBinary, RealsAndIntegersBecomeEachOtherOnlyWithoutLoss)
{
    int64_t large = 0;
    EXPECT_EQ(binary(real(5), TypeBigint, large), ValueState::Exact);
    EXPECT_EQ(binary(real(5.5), TypeBigint, large), ValueState::Mismatch);
    EXPECT_EQ(binary(real(9223372036854775808.0), TypeBigint, large), ValueState::Mismatch);
    EXPECT_EQ(binary(real(std::numeric_limits<double>::infinity()), TypeBigint, large),
              ValueState::Mismatch);
    double d = 0;
    EXPECT_EQ(binary(integer(INT64_C(1) << 53), TypeDouble, d), ValueState::Exact);
    EXPECT_EQ(binary(integer((INT64_C(1) << 53) + 1), TypeDouble, d), ValueState::Mismatch);
    EXPECT_EQ(binary(integer(INT64_MAX), TypeDouble, d), ValueState::Mismatch);
    float f = 0;
    EXPECT_EQ(binary(real(0.5), TypeReal, f), ValueState::Exact);
    EXPECT_EQ(binary(real(0.1), TypeReal, f), ValueState::Cut);
    EXPECT_EQ(binary(real(1e300), TypeReal, f), ValueState::Mismatch);
}

TEST(ValueBinary, BooleansAreZeroOrOne)
{
    int8_t b = 0;
    EXPECT_EQ(binary(integer(1), TypeBoolean, b), ValueState::Exact);
    EXPECT_EQ(b, 1);
    EXPECT_EQ(binary(integer(2), TypeBoolean, b), ValueState::Mismatch);
    EXPECT_EQ(binary(text("true"), TypeBoolean, b), ValueState::Mismatch);
}

TEST(ValueBinary, DecimalsKeepEveryDigitOrAreMarked)
{
    char buffer[16];
    size_t length = 0;
    EXPECT_EQ(deliver(text("-12.3400"), TypeDecimal, buffer, 16, length), ValueState::Exact);
    EXPECT_STREQ(buffer, "-12.3400");
    EXPECT_EQ(deliver(text("1234567890123456"), TypeDecimal, buffer, 16, length),
              ValueState::Mismatch);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(deliver(text("12,5"), TypeDecimal, buffer, 16, length), ValueState::Mismatch);
    EXPECT_EQ(deliver(text("1e5"), TypeDecimal, buffer, 16, length), ValueState::Exact);
    EXPECT_EQ(deliver(text("."), TypeDecimal, buffer, 16, length), ValueState::Mismatch);
    EXPECT_EQ(deliver(real(2.5), TypeDecimal, buffer, 16, length), ValueState::Exact);
    EXPECT_STREQ(buffer, "2.5");
}

TEST(ValueBinary, BytesAreFilledUpWithZerosOrCut)
{
    char buffer[4] = {'x', 'x', 'x', 'x'};
    size_t length = 0;
    EXPECT_EQ(deliver(bytes(Value::Blob, "ab"), TypeByte, buffer, 4, length), ValueState::Exact);
    EXPECT_EQ(length, 2U);
    EXPECT_EQ(std::string(buffer, 4), std::string("ab\0\0", 4));
    EXPECT_EQ(deliver(bytes(Value::Blob, "abcde"), TypeByte, buffer, 4, length), ValueState::Cut);
    EXPECT_EQ(deliver(text("ab"), TypeVarbyte, buffer, 4, length), ValueState::Mismatch);
}

TEST(ValueBinary, NullGivesZerosInEveryForm)
{
    for (const int type : {TypeSmallint, TypeInteger, TypeBigint, TypeReal, TypeDouble, TypeDate,
                           TypeBoolean, TypeByte, TypeVarbyte, TypeDecimal, TypeText, TypeNchar}) {
        char buffer[16];
        std::memset(buffer, 'x', sizeof buffer);
        size_t length = 0;
        EXPECT_EQ(deliver(Value(), type, buffer, sizeof buffer, length), ValueState::Null) << type;
        EXPECT_EQ(buffer[0], 0) << type;
    }
}

TEST(ValueBinary, ASmallBufferOrAnUnknownTypeIsABadCall)
{
    char buffer[4];
    size_t length = 0;
    EXPECT_EQ(DorTest::codeOf([&] { deliver(integer(1), TypeBigint, buffer, 4, length); }),
              CodeBadCall);
    EXPECT_EQ(DorTest::codeOf([&] { deliver(text("a"), TypeText, buffer, 0, length); }),
              CodeBadCall);
    EXPECT_EQ(DorTest::codeOf([&] { deliver(text("a"), 99, buffer, 4, length); }), CodeBadCall);
}

TEST(ValueDate, IsoTextsAreMicrosecondsSince1970)
{
    EXPECT_EQ(dateOf("1970-01-01"), 0);
    EXPECT_EQ(dateOf("1970-01-02 00:00"), INT64_C(86'400'000'000));
    EXPECT_EQ(dateOf("1970-01-01T00:00:01.5"), 1'500'000);
    EXPECT_EQ(dateOf("1969-12-31 23:59:59.999999"), -1);
    EXPECT_EQ(dateOf("2000-02-29 12:34:56"), INT64_C(951'827'696'000'000));
}

TEST(ValueDate, WhatIsNoDateWithoutAZoneIsMarked)
{
    for (const char* s :
         {"", "2001", "2001-02-29", "2001-13-01", "2001-1-1", "2001-01-01 24:00", "12:30:00",
          "2001-01-01 10", "2001-01-01 10:00:00Z", "2001-01-01 10:00:00+03:00", "now",
          "2001-01-01 10:00:00.", "2001-01-01 10:00:00.1x", "01/02/2003"})
        EXPECT_FALSE(isDate(s)) << s;
    int64_t micros = 0;
    EXPECT_EQ(binary(integer(1'700'000'000), TypeDate, micros), ValueState::Mismatch);
}

TEST(ValueDate, MoreThanMicrosecondsAreCutAndMarked)
{
    int64_t micros = 0;
    EXPECT_EQ(dateFromText("1970-01-01 00:00:00.1234567", micros), ValueState::Cut);
    EXPECT_EQ(micros, 123'456);
    EXPECT_EQ(dateFromText("1970-01-01 00:00:00.123456000", micros), ValueState::Exact);
}

TEST(ValueParameter, BytesOfTheWrongSizeAreRefused)
{
    const int64_t eight = 5;
    EXPECT_EQ(parameterFrom(TypeBigint, &eight, 8).integer, 5);
    EXPECT_EQ(DorTest::codeOf([&] { parameterFrom(TypeBigint, &eight, 4); }), CodeBadBind);
    EXPECT_EQ(DorTest::codeOf([&] { parameterFrom(99, &eight, 8); }), CodeBadBind);
    EXPECT_EQ(parameterFrom(TypeNchar, u"\u0416", 2).bytes, "\xD0\x96");
}
