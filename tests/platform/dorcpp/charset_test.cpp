#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <dorcpp/charset.h>

using namespace DorCPP;

namespace {

using Routine = void (*)(const char*, char*, size_t);

std::string through(Routine routine, std::string text)
{
    routine(text.data(), text.data(), text.size());
    return text;
}

const std::string ansi = "\xCF\xF0\xE8\xE2\xE5\xF2"; // a Russian greeting in the three sets
const std::string oem = "\x8F\xE0\xA8\xA2\xA5\xE2";
const std::string koi = "\xF0\xD2\xC9\xD7\xC5\xD4";

} // namespace

TEST(Charset, CodePagesAreConvertedIntoEachOtherInPlace)
{
    EXPECT_EQ(through(Ansi2Oem, ansi), oem);
    EXPECT_EQ(through(Oem2Ansi, oem), ansi);
    EXPECT_EQ(through(Oem2Koi, oem), koi);
    EXPECT_EQ(through(Koi2Oem, koi), oem);
    EXPECT_EQ(through(Ansi2Koi, ansi), koi);
    EXPECT_EQ(through(Koi2Ansi, koi), ansi);
}

TEST(Charset, AByteWithoutCounterpartBecomesAQuestionMark)
{
    EXPECT_EQ(through(Ansi2Oem, "a\x80z"), "a?z"); // a letter that CP866 does not have
    EXPECT_EQ(through(Koi2Ansi, "\x80"), "?");     // a box drawing line
    EXPECT_EQ(through(Ansi2Koi, "\x98"), "?");     // not assigned at all
}

TEST(Charset, AsciiBytesAreTheSameInEverySet)
{
    std::string ascii;
    for (char c = 0; c < 127; ++c)
        ascii += c;
    for (const Routine routine : {Ansi2Oem, Oem2Ansi, Oem2Koi, Koi2Oem, Ansi2Koi, Koi2Ansi})
        EXPECT_EQ(through(routine, ascii), ascii);
}

TEST(Charset, WideTextIsStoredAsUtf8AndCutBetweenCharacters)
{
    char buffer[8];
    const std::wstring text = L"a\u20ACb"; // 1 + 3 + 1 bytes
    EXPECT_EQ(wcs2mbs(buffer, sizeof buffer, text.data(), text.size(), Charset::Utf8), 5U);
    EXPECT_EQ(std::string(buffer, 5), "a\xE2\x82\xAC"
                                      "b");
    EXPECT_EQ(wcs2mbs(buffer, 3, text.data(), text.size(), Charset::Utf8), 1U);
    EXPECT_EQ(wcs2mbs(buffer, 0, text.data(), text.size(), Charset::Utf8), 0U);
}

TEST(Charset, Utf8IsReadIntoAtMostTheGivenNumberOfCharacters)
{
    wchar_t buffer[4] = {1, 1, 1, 1};
    EXPECT_EQ(mbs2wcs(buffer, 2, "\xD0\x96\xD0\x97z", 5, Charset::Utf8), 2U);
    EXPECT_EQ(buffer[0], 0x416);
    EXPECT_EQ(buffer[1], 0x417);
    EXPECT_EQ(buffer[2], 1);
}

TEST(Charset, AZeroInsideATextIsAnOrdinaryCharacter)
{
    char buffer[4];
    EXPECT_EQ(mbs2mbs(buffer, 4, Charset::Utf8, "a\0b", 3, Charset::Ansi), 3U);
    EXPECT_EQ(std::memcmp(buffer, "a\0b", 3), 0);
}

TEST(Charset, InvalidUtf8BecomesReplacementCharacters)
{
    EXPECT_EQ(convert("a\xFFz", Charset::Utf8, Charset::Utf8), "a\xEF\xBF\xBDz");
    EXPECT_EQ(convert("a\xFFz", Charset::Utf8, Charset::Koi8), "a?z");
}

TEST(Charset, TheSetOfThePlainLocaleIsUtf8)
{
    EXPECT_EQ(getStdCharset(), Charset::Utf8);
}

TEST(Charset, OnlyBlanksAreTrimmed)
{
    char text[] = "  \ta b  ";
    EXPECT_STREQ(RTrim(text), "  \ta b");
    EXPECT_STREQ(LTrim(text), "\ta b");
    char blanks[] = "   ";
    EXPECT_STREQ(Trim(blanks), "");
    EXPECT_EQ(Trim(nullptr), nullptr);
}

TEST(Charset, Utf16GoesThereAndBackWithPairs)
{
    char16_t units[8];
    EXPECT_EQ(RCHARToUnicode(units, L"a\U0001F600", 8, true), 3);
    EXPECT_EQ(std::u16string(units), u"a\U0001F600");
    wchar_t wide[8];
    EXPECT_EQ(UnicodeToRCHAR(wide, units, 8, true), 2);
    EXPECT_EQ(std::wstring(wide), L"a\U0001F600");
}

TEST(Charset, APairIsNeverCutInTwo)
{
    char16_t units[4] = {1, 1, 1, 1};
    EXPECT_EQ(RCHARToUnicode(units, L"a\U0001F600", 3, true),
              1); // room for "a", one unit, the zero
    EXPECT_EQ(units[1], 0);
    EXPECT_EQ(units[2], 1);
    const char16_t source[] = u"\U0001F600z";
    wchar_t wide[4] = {1, 1, 1, 1};
    EXPECT_EQ(UnicodeToRCHAR(wide, source, 2, true), 1);
    EXPECT_EQ(wide[0], 0x1F600);
    EXPECT_EQ(wide[1], 0);
}

TEST(Charset, WithoutATerminatorExactlyTheGivenNumberIsRead)
{
    const char16_t source[] = {u'a', 0, u'b', u'c'};
    wchar_t wide[4] = {9, 9, 9, 9};
    EXPECT_EQ(UnicodeToRCHAR(wide, source, 3, false), 3);
    EXPECT_EQ(std::wstring(wide, 4), std::wstring({L'a', 0, L'b', 9}));
}

TEST(Charset, Utf16IsWrittenToAnyAddress)
{
    char buffer[64];
    EXPECT_EQ(RCHARToUnicode(buffer + 1, L"xy", 3, true), 2);
    EXPECT_EQ(UnicodeToRCHAR(buffer + 21, buffer + 1, 3, true), 2);
    wchar_t wide[3];
    std::memcpy(wide, buffer + 21, sizeof wide);
    EXPECT_STREQ(wide, L"xy");
}

TEST(Charset, ALoneSurrogateBecomesAReplacementCharacter)
{
    const char16_t source[] = {0xD800, u'z', 0};
    wchar_t wide[4];
    EXPECT_EQ(UnicodeToRCHAR(wide, source, 4, true), 2);
    EXPECT_EQ(wide[0], 0xFFFD);
}

TEST(Charset, AnExternalFileIsShownAsItsPath)
{
    const auto shown = [](const wchar_t* text) {
        wchar_t buffer[64];
        std::wcscpy(buffer, text);
        ConvertExtfileRCHAR(buffer);
        return std::wstring(buffer);
    };
    EXPECT_EQ(shown(L"/data/a.txt   "), L"/data/a.txt");
    EXPECT_EQ(shown(L"EXTFILE('it''s.txt')"), L"it's.txt");
    EXPECT_EQ(shown(L"EXTFILE('x"), L"EXTFILE('x");
    EXPECT_EQ(shown(L""), L"");
}
