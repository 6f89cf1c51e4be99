#include <oviapi/lexception.h>
#include <oviapi/text.h>

#include <gtest/gtest.h>

#include <clocale>

namespace {

using namespace OviAPI;

TEST(Text, Utf8KeepsCharactersOfEveryPlane)
{
    const std::wstring text = L"a\u00e9\u0416\u20ac\U0001F600\U0010FFFF";
    EXPECT_EQ(utf8ToWide(wideToUtf8(text)), text);
    EXPECT_TRUE(isValidUtf8(wideToUtf8(text)));
}

TEST(Text, InvalidUtf8BecomesReplacementCharacters)
{
    EXPECT_EQ(utf8ToWide("a\xFF"
                         "b"),
              L"a\uFFFDb");
    EXPECT_EQ(utf8ToWide("\xE2\x82"), L"\uFFFD");
    EXPECT_EQ(utf8ToWide("\xED\xA0\x80").size(), 3U) << "an encoded surrogate is no character";
    EXPECT_EQ(utf8ToWide("\xC0\x80"), L"\uFFFD\uFFFD") << "overlong";
    EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));
}

TEST(Text, LoneSurrogatesNeverGiveALengthOfMinusOne)
{
    const std::wstring lone{L'a', static_cast<wchar_t>(0xD800), L'b'};
    EXPECT_EQ(wideToUtf8(lone), "a\xEF\xBF\xBD"
                                "b");
    EXPECT_EQ(wideToUtf16(lone), u"a\uFFFDb");
    EXPECT_EQ(utf16ToWide(std::u16string{u'a', char16_t{0xDC00}, u'b'}), L"a\uFFFDb");
    EXPECT_EQ(wideToLocale(lone), "a?b");
}

TEST(Text, Utf16KeepsCharactersOfEveryPlane)
{
    const std::wstring text = L"\u0416\U0001F600x";
    EXPECT_EQ(wideToUtf16(text).size(), 4U);
    EXPECT_EQ(utf16ToWide(wideToUtf16(text)), text);
}

TEST(Text, WhatTheLocaleCannotWriteBecomesAQuestionMark)
{
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(wideToLocale(L"a\u0416b"), "a?b");
    EXPECT_EQ(localeToWide("ab"), L"ab");
    std::setlocale(LC_CTYPE, before.c_str());
}

TEST(Text, AZeroCharacterEndsNoConversion)
{
    const std::wstring text(L"a\0b", 3);
    EXPECT_EQ(localeToWide(wideToLocale(text)), text);
    EXPECT_EQ(utf8ToWide(wideToUtf8(text)), text);
}

TEST(Text, CopyTextCutsAndTerminates)
{
    wchar_t buffer[4] = {L'x', L'x', L'x', L'x'};
    EXPECT_EQ(copyText(buffer, 4, L"abcdef"), 3U);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(copyText(buffer, 1, L"abc"), 0U);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(copyText(buffer, 0, L"abc"), 0U);
}

TEST(Text, SubstituteFillsOnePlaceholderAndTreatsTheRestAsText)
{
    EXPECT_EQ(substitute(L"Save \"%ls\"?", L"a%s"), L"Save \"a%s\"?");
    EXPECT_EQ(substitute(L"Save %s?", L"x"), L"Save x?");
    EXPECT_EQ(substitute(L"%ls and %ls", L"x"), L"x and %ls");
    EXPECT_EQ(substitute(L"%n %d %*d %9999999ls 100%% %", L"x"), L"%n %d %*d %9999999ls 100% %");
    EXPECT_EQ(substitute(L"", L"x"), L"");
}

TEST(LExceptionText, TheFullMessageNamesThePlaceAfterTheMessage)
{
    const LException error("extapp", 148, L"Error while loading options");
    EXPECT_EQ(error.fullMessage(), L"Error while loading options\n(extapp, line 148)");
    EXPECT_STREQ(error.what(), "Error while loading options\n(extapp, line 148)");
    EXPECT_TRUE(error.hasMessage());
    EXPECT_FALSE(LException("extapp", 1, nullptr).hasMessage());
    EXPECT_EQ(LException(nullptr, 0, L"x").fullMessage(), L"x");
}

} // namespace
