#include "app/xcstring.h"

#include <clocale>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tests/app/locales.h"

namespace {

std::string text(const xCString& s)
{
    return {s.c_str(), s.GetLength()};
}

class XCString : public testing::Test {
protected:
    ScopedLocale m_locale{"C.UTF-8"};
};

} // namespace

TEST_F(XCString, ANewStringIsEmptyAndEveryOperationAcceptsIt)
{
    xCString s;
    s.Trim();
    s.TrimLeft();
    s.TrimRight();
    s.ReleaseBuffer();
    s.ReleaseBuffer(0);
    s.AnsiToOem();
    s.KoiToAnsi();
    s += static_cast<const char*>(nullptr);
    s += xCString();
    EXPECT_FALSE(s.SetAt(0, 'x'));
    EXPECT_FALSE(s.SetAt(-1, 'x'));
    EXPECT_EQ(text(s.Mid(0)), "");
    EXPECT_EQ(text(s.Mid(1, 1)), "");
    EXPECT_EQ(s.GetLength(), 0U);
    EXPECT_STREQ(s.c_str(), "");
    EXPECT_TRUE(s == xCString(""));
}

TEST_F(XCString, NullTextGivesTheEmptyString)
{
    EXPECT_EQ(xCString(static_cast<const char*>(nullptr)).GetLength(), 0U);
    EXPECT_EQ(xCString(static_cast<const wchar_t*>(nullptr)).GetLength(), 0U);
    EXPECT_EQ(xCString(nullptr, 5U).GetLength(), 0U);
    xCString s("abc");
    s = static_cast<const char*>(nullptr);
    EXPECT_TRUE(s.IsEmpty());
    s = "abc";
    s = static_cast<const wchar_t*>(nullptr);
    EXPECT_TRUE(s.IsEmpty());
}

TEST_F(XCString, ACountedCopyHasTheCountAsItsLengthEvenWhenTheTextIsShorter)
{
    const xCString s("ab", 5U);
    EXPECT_EQ(text(s), std::string("ab\0\0\0", 5));
    EXPECT_EQ(text(xCString("abcdef", 3U)), "abc");
    EXPECT_EQ(text(xCString("abc", 0U)), "");
}

TEST_F(XCString, KeptWideTextIsCutToOneByteACharacter)
{
    // Kept: one byte is reserved for each wide character.
    EXPECT_EQ(text(xCString(L"abc")), "abc");
    EXPECT_EQ(text(xCString(L"\u00e9")), "");
    EXPECT_EQ(text(xCString(L"a\u00e9")), "a");
    EXPECT_EQ(text(xCString(L"\u00e9a")), "\xC3\xA9");
    xCString s;
    s = L"\u0416\u0416\u0416";
    EXPECT_EQ(text(s), "\xD0\x96");
}

TEST_F(XCString, TheFrameworksStringIsConvertedWhole)
{
    const xCString s(OviAPI::aCString(L"\u00e9\u0416\U0001F600"));
    EXPECT_EQ(text(s), "\xC3\xA9\xD0\x96\xF0\x9F\x98\x80");
    EXPECT_EQ(s.GetLength(), 8U);
    EXPECT_EQ(text(xCString(OviAPI::aCString(L"ab\0cd", 5))), "ab");
}

TEST_F(XCString, ACharacterThatCannotBeConvertedBecomesAQuestionMark)
{
    EXPECT_EQ(text(xCString(L"a\xD800z")), "a?z");
    EXPECT_EQ(text(xCString(OviAPI::aCString(L"\xDFFF"))), "?");
    const ScopedLocale c("C");
    EXPECT_EQ(text(xCString(L"a\u00e9z")), "a?z");
    EXPECT_EQ(text(xCString(OviAPI::aCString(L"\u0416\u0416"))), "??");
}

TEST_F(XCString, MidTakesTheMiddle)
{
    const xCString s("abcdef");
    EXPECT_EQ(text(s.Mid(1, 3)), "bcd");
    EXPECT_EQ(text(s.Mid(5, 10)), "f");
    EXPECT_EQ(text(s.Mid(6, 1)), "");
    EXPECT_EQ(text(s.Mid(1, 0)), "");
    EXPECT_EQ(text(s.Mid(1, -1)), "");
    EXPECT_EQ(text(s.Mid(-1, 2)), "");
    EXPECT_EQ(text(s.Mid(5, 2147483647)), "f");
    EXPECT_EQ(text(s.Mid(2147483647, 2147483647)), "");
    EXPECT_EQ(text(s.Mid(0)), "abcdef");
    EXPECT_EQ(text(s.Mid(2)), "cdef");
    EXPECT_EQ(text(s.Mid(6)), "");
    EXPECT_EQ(text(s.Mid(-1)), "");
}

TEST_F(XCString, KeptMidWithACountIsEmptyForStartZero)
{
    // Kept: the first character cannot be taken with a count.
    EXPECT_EQ(text(xCString("abcdef").Mid(0, 3)), "");
}

TEST_F(XCString, ReleaseBufferWithMoreThanTheLengthChangesNothing)
{
    xCString s("abc");
    s.ReleaseBuffer(4);
    EXPECT_EQ(text(s), "abc");
    s.ReleaseBuffer(2147483647);
    EXPECT_EQ(text(s), "abc");
    s.ReleaseBuffer(-2);
    EXPECT_EQ(text(s), "abc");
    s.ReleaseBuffer(3);
    EXPECT_EQ(text(s), "abc");
    s.ReleaseBuffer(1);
    EXPECT_EQ(text(s), "a");
    s.ReleaseBuffer(0);
    EXPECT_EQ(text(s), "");
}

TEST_F(XCString, GetBufferGivesZeroBytesToWriteTo)
{
    xCString s("abc");
    char* buffer = s.GetBuffer(6);
    EXPECT_EQ(text(s), std::string("abc\0\0\0", 6));
    std::memcpy(buffer, "xy", 3);
    s.ReleaseBuffer(-1);
    EXPECT_EQ(text(s), "xy");
    s.GetBuffer(1);
    EXPECT_EQ(text(s), "x");
    EXPECT_NE(s.GetBuffer(0), nullptr);
    EXPECT_EQ(text(s), "");
}

TEST_F(XCString, AFullBufferWithoutAZeroByteIsReleasedWhole)
{
    xCString s;
    std::memset(s.GetBuffer(4), 'x', 4);
    s.ReleaseBuffer(-1);
    EXPECT_EQ(text(s), "xxxx");
}

TEST_F(XCString, GetBufferSetLengthRefusesLengthsBelowOne)
{
    xCString s("abc");
    EXPECT_EQ(s.GetBufferSetLength(0), nullptr);
    EXPECT_EQ(s.GetBufferSetLength(-5), nullptr);
    EXPECT_EQ(text(s), "abc");
    EXPECT_NE(s.GetBufferSetLength(2), nullptr);
    EXPECT_EQ(text(s), "ab");
}

TEST_F(XCString, SetAtChangesOnlyBytesOfTheString)
{
    xCString s("abc");
    EXPECT_TRUE(s.SetAt(2, 'z'));
    EXPECT_FALSE(s.SetAt(3, 'z'));
    EXPECT_FALSE(s.SetAt(-1, 'z'));
    EXPECT_EQ(text(s), "abz");
}

TEST_F(XCString, AppendingGrowsTheString)
{
    xCString s;
    s += 'a';
    s += "bc";
    xCString zero("d#e");
    zero.SetAt(1, 0);
    s += zero;
    EXPECT_EQ(text(s), std::string("abcd\0e", 6));
    EXPECT_EQ(text(s.Mid(3)), std::string("d\0e", 3));
    EXPECT_EQ(text(s.Mid(3, 3)), std::string("d\0e", 3));
    EXPECT_EQ(text(xCString(s)), text(s));
}

TEST_F(XCString, AStringCanBeAppendedAndAssignedToItself)
{
    xCString s("abc");
    s += s;
    EXPECT_EQ(text(s), "abcabc");
    s += s.c_str() + 4;
    EXPECT_EQ(text(s), "abcabcbc");
    s = s.c_str() + 5;
    EXPECT_EQ(text(s), "cbc");
    const xCString& same = s;
    s = same;
    EXPECT_EQ(text(s), "cbc");
}

TEST_F(XCString, TwentyThousandAppendedCharactersAreAllThere)
{
    xCString s;
    for (int i = 0; i < 20000; ++i)
        s += static_cast<char>('a' + i % 26);
    EXPECT_EQ(s.GetLength(), 20000U);
    EXPECT_EQ(s.c_str()[19999], 'a' + 19999 % 26);
}

TEST_F(XCString, TrimTakesOffSpacesAndNothingElse)
{
    xCString s("  \ta b\t  ");
    s.TrimLeft();
    EXPECT_EQ(text(s), "\ta b\t  ");
    s.TrimRight();
    EXPECT_EQ(text(s), "\ta b\t");
    xCString spaces("   ");
    spaces.Trim();
    EXPECT_EQ(text(spaces), "");
    xCString both("  x ");
    both.Trim();
    EXPECT_EQ(text(both), "x");
}

TEST_F(XCString, FormatFillsInItsArguments)
{
    xCString s("old");
    s.Format("%s-%d", "x", 5);
    EXPECT_EQ(text(s), "x-5");
    s.Format("[%s]", s.c_str());
    EXPECT_EQ(text(s), "[x-5]");
}

TEST_F(XCString, FormatCutsTextThatDoesNotFit)
{
    for (const size_t n : {4094U, 4095U, 4096U, 4097U, 100000U}) {
        xCString s;
        s.Format("%s", std::string(n, 'x').c_str());
        EXPECT_EQ(s.GetLength(), std::min<size_t>(n, 4095)) << n;
        EXPECT_EQ(std::strlen(s.c_str()), s.GetLength()) << n;
    }
}

TEST_F(XCString, FormatCutsBehindAWholeCharacter)
{
    std::string pairs = "a";
    for (int i = 0; i < 3000; ++i)
        pairs += "\xC3\xA9";
    xCString s;
    s.Format("%s", pairs.c_str());
    EXPECT_EQ(s.GetLength(), 4095U);
    s.Format("%s", pairs.c_str() + 1);
    EXPECT_EQ(s.GetLength(), 4094U);
}

TEST_F(XCString, FormatOfALoneSurrogateKeepsAValidLength)
{
    xCString s("before");
    const wchar_t lone[] = {L'a', 0xD800, 0};
    s.Format("%ls", lone);
    EXPECT_LE(s.GetLength(), 4095U);
    EXPECT_EQ(std::strlen(s.c_str()), s.GetLength());
}

TEST_F(XCString, BytesAreConvertedBetweenTheThreeCodePages)
{
    // The Russian letter Zhe: C6 in the ANSI page, 86 in the OEM page, F6 in KOI8-R.
    xCString s("a\xC6");
    s.AnsiToOem();
    EXPECT_EQ(text(s), "a\x86");
    s.OemToKoi();
    EXPECT_EQ(text(s), "a\xF6");
    s.KoiToAnsi();
    EXPECT_EQ(text(s), "a\xC6");
    s.AnsiToKoi();
    EXPECT_EQ(text(s), "a\xF6");
    s.KoiToOem();
    EXPECT_EQ(text(s), "a\x86");
    s.OemToAnsi();
    EXPECT_EQ(text(s), "a\xC6");
}

TEST_F(XCString, TheNarrowStringBecomesTheFrameworksString)
{
    OviAPI::aCString wide = L"old";
    xCString narrow("a\xC3\xA9\xD0\x96");
    convertXCtoAC(wide, narrow);
    EXPECT_EQ(wide, L"a\u00e9\u0416");
    xCString none;
    convertXCtoAC(wide, none);
    EXPECT_EQ(wide, L"");
    xCString bad("a\xFFz");
    convertXCtoAC(wide, bad);
    EXPECT_EQ(wide, L"a\xFFFDz");
}

TEST_F(XCString, KeptTheFrameworksStringIsConvertedIntoAsManyBytesAsItHasCharacters)
{
    // Kept: the room is the source length, also where characters need more bytes.
    xCString narrow("old");
    OviAPI::aCString wide = L"abc";
    convertACtoXC(narrow, wide);
    EXPECT_EQ(text(narrow), "abc");
    wide = L"a\u00e9\u00e9";
    convertACtoXC(narrow, wide);
    EXPECT_EQ(text(narrow), "a\xC3\xA9");
    wide.clear();
    convertACtoXC(narrow, wide);
    EXPECT_EQ(text(narrow), "");
}
