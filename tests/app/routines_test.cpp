#include "app/routines.h"

#include <sys/time.h>

#include <csignal>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/app/locales.h"

namespace {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File fileWith(std::string_view bytes)
{
    File f(std::tmpfile(), std::fclose);
    if (!bytes.empty())
        std::fwrite(bytes.data(), 1, bytes.size(), f.get());
    std::rewind(f.get());
    return f;
}

File emptyFile()
{
    return fileWith({});
}

std::string contentOf(const File& f)
{
    std::rewind(f.get());
    std::string bytes;
    for (int c = std::fgetc(f.get()); c != EOF; c = std::fgetc(f.get()))
        bytes += static_cast<char>(c);
    return bytes;
}

struct Line {
    int count;
    std::wstring text;
    bool operator==(const Line&) const = default;
};

Line nextLine(const File& f, int size)
{
    std::vector<wchar_t> buffer(static_cast<size_t>(std::max(size, 0)) + 1, L'#');
    const int count = readln(f.get(), buffer.data(), size);
    return {count, buffer.data()};
}

Line nextUnits(const File& f, int size, bool swap = false)
{
    std::vector<wchar_t> buffer(static_cast<size_t>(size), L'#');
    const int count = getlinexUCS2(f.get(), buffer.data(), size, '\n', swap);
    std::wstring text(buffer.data(), wcsnlen(buffer.data(), buffer.size()));
    return {count, text};
}

std::string_view bytesOf(const char16_t* units, size_t count)
{
    return {reinterpret_cast<const char*>(units), 2 * count};
}

// findParam over arguments that must be writable.
class Arguments {
public:
    explicit Arguments(std::vector<std::wstring> texts)
        : m_texts(std::move(texts))
    {
        for (std::wstring& t : m_texts)
            m_pointers.push_back(t.data());
    }
    const wchar_t* find(const wchar_t* name)
    {
        return findParam(static_cast<int>(m_pointers.size()), m_pointers.data(), name);
    }

private:
    std::vector<std::wstring> m_texts;
    std::vector<wchar_t*> m_pointers;
};

std::wstring extended(const wchar_t* path, int maxLen, const wchar_t* ext)
{
    std::wstring buffer(path);
    buffer.resize(std::wcslen(path) + std::wcslen(ext) + 1);
    addExtention(buffer.data(), maxLen, ext);
    return buffer.c_str();
}

// Ends the program by a signal when the call takes longer.
void readAtTheEndFor100Milliseconds()
{
    const File f = emptyFile();
    itimerval soon{};
    soon.it_value.tv_usec = 100000;
    setitimer(ITIMER_PROF, &soon, nullptr);
    nextLine(f, 5);
}

class Routines : public testing::Test {
protected:
    ScopedLocale m_locale{"C.UTF-8"};
};
using RoutinesDeathTest = Routines;

} // namespace

TEST_F(Routines, ReadlnSkipsLeadingCarriageReturnsAndKeepsTheOthers)
{
    const File f = fileWith("\r\rabc\r\nz\n");
    EXPECT_EQ(nextLine(f, 100), (Line{4, L"abc\r"}));
    EXPECT_EQ(nextLine(f, 100), (Line{1, L"z"}));
}

TEST_F(Routines, ReadlnOfALoneLineFeedGivesAnEmptyLine)
{
    const File f = fileWith("\n\r\n");
    EXPECT_EQ(nextLine(f, 10), (Line{0, L""}));
    EXPECT_EQ(nextLine(f, 10), (Line{0, L""}));
}

TEST_F(Routines, ReadlnLeavesTheRestOfALongLineToTheNextCall)
{
    const File f = fileWith("abcd\n");
    EXPECT_EQ(nextLine(f, 2), (Line{2, L"ab"}));
    EXPECT_EQ(nextLine(f, 2), (Line{2, L"cd"}));
    EXPECT_EQ(nextLine(f, 2), (Line{0, L""}));
}

TEST_F(Routines, ReadlnOfLinesRoundTheSizeNeverStoresMoreThanTheSize)
{
    for (const size_t n : {9U, 10U, 11U}) {
        const File f = fileWith(std::string(n, 'x') + "\n\n");
        const Line line = nextLine(f, 10);
        EXPECT_EQ(line.count, static_cast<int>(std::min<size_t>(n, 10)));
        EXPECT_EQ(line.text, std::wstring(std::min<size_t>(n, 10), L'x'));
    }
}

TEST_F(Routines, ReadlnWithoutRoomTakesOneByteAndGivesAnEmptyLine)
{
    const File f = fileWith("abc\n");
    EXPECT_EQ(nextLine(f, 0), (Line{0, L""}));
    EXPECT_EQ(nextLine(f, -3), (Line{0, L""}));
    EXPECT_EQ(nextLine(f, 10), (Line{1, L"c"}));
}

TEST_F(Routines, ReadlnReadsUtf8WhateverTheLocaleIs)
{
    const ScopedLocale c("C");
    const File f = fileWith("\xD0\x96\xC3\xA9\xF0\x9F\x98\x80\nbad\xFF!\n");
    EXPECT_EQ(nextLine(f, 100), (Line{3, L"\u0416\u00e9\U0001F600"}));
    EXPECT_EQ(nextLine(f, 100), (Line{5, L"bad\xFFFD!"}));
}

TEST_F(Routines, KeptReadlnFillsALastLineWithoutLineFeedWithItsLastByte)
{
    // Kept: the result of reading a byte is not examined.
    const File f = fileWith("ab");
    EXPECT_EQ(nextLine(f, 5), (Line{5, L"abbbb"}));
    EXPECT_TRUE(std::feof(f.get()));
}

TEST_F(RoutinesDeathTest, KeptReadlnAtTheEndOfTheFileDoesNotReturn)
{
    // Kept: a caller must test feof before each call.
    EXPECT_EXIT(readAtTheEndFor100Milliseconds(), testing::KilledBySignal(SIGPROF), "");
}

TEST_F(RoutinesDeathTest, NullArgumentsOfTheLineRoutinesStopTheProgram)
{
    wchar_t buffer[4] = L"";
    const File f = emptyFile();
    EXPECT_DEATH(readln(nullptr, buffer, 3), "routines:[0-9]+: readln: Assertion `f' failed");
    EXPECT_DEATH(readln(f.get(), nullptr, 3), "routines:[0-9]+: readln: Assertion `str' failed");
    EXPECT_DEATH(writeln(nullptr, L"x"), "routines:[0-9]+: writeln: Assertion `f' failed");
    EXPECT_DEATH(writeln(f.get(), nullptr), "routines:[0-9]+: writeln: Assertion `str' failed");
}

TEST_F(Routines, WritelnWritesUtf8AndALineFeed)
{
    const File f = emptyFile();
    writeln(f.get(), L"\u0416%s\u00e9\U0001F600");
    writeln(f.get(), L"");
    EXPECT_EQ(contentOf(f), "\xD0\x96%s\xC3\xA9\xF0\x9F\x98\x80\n\n");
}

TEST_F(Routines, WritelnReplacesWhatIsNoCharacter)
{
    const File f = emptyFile();
    writeln(f.get(), L"a\xD800z");
    EXPECT_EQ(contentOf(f), "a\xEF\xBF\xBDz\n");
}

TEST_F(Routines, WhatWritelnWroteReadlnReads)
{
    const std::wstring lines[] = {L"", L"plain", L"\u0416\u4E2D\U0001F600",
                                  std::wstring(5000, L'x')};
    const File f = emptyFile();
    for (const std::wstring& line : lines)
        writeln(f.get(), line.c_str());
    std::rewind(f.get());
    for (const std::wstring& line : lines)
        EXPECT_EQ(nextLine(f, 6000).text, line);
}

TEST_F(Routines, WritelnUcs2WritesSixteenBitUnitsAndALineFeed)
{
    const File f = emptyFile();
    writelnUCS2(f.get(), L"a\u0416");
    EXPECT_EQ(contentOf(f), bytesOf(u"a\u0416\n", 3));
}

TEST_F(Routines, KeptWritelnUcs2WritesOneUnitACharacterAndTheLineEnd)
{
    // Kept: a character that needs two units is replaced, so that the line end is never cut off.
    const File f = emptyFile();
    writelnUCS2(f.get(), L"a\U0001F600z\xD800");
    EXPECT_EQ(contentOf(f), bytesOf(u"a\uFFFDz\uFFFD\n", 5));
}

TEST_F(Routines, WritelnUcs2OfAnEmptyTextWritesNothing)
{
    const File f = emptyFile();
    writelnUCS2(f.get(), L"");
    EXPECT_EQ(contentOf(f), "");
}

TEST_F(Routines, WriteUtf8WritesNoLineEnd)
{
    const File f = emptyFile();
    writeUTF8(f.get(), L"a\u0416", 0);
    EXPECT_EQ(contentOf(f), "a\xD0\x96");
}

TEST_F(Routines, WriteUtf8CutsBehindACharacterWhatDoesNotFit)
{
    const std::pair<size_t, std::string> cases[] = {
        {1, ""}, {2, "a"}, {3, "a"}, {4, "a\xD0\x96"}, {5, "a\xD0\x96z"}, {6, "a\xD0\x96z"}};
    for (const auto& [size, expected] : cases) {
        const File f = emptyFile();
        writeUTF8(f.get(), L"a\u0416z", size);
        EXPECT_EQ(contentOf(f), expected) << size;
    }
}

TEST_F(Routines, WriteUtf8OfMultibyteTextCanTrimTheRightEnd)
{
    const File f = emptyFile();
    writeUTF8(f.get(), "ab  cd", 4, true);
    writeUTF8(f.get(), "    ", 4, true);
    writeUTF8(f.get(), "", 0, true);
    EXPECT_EQ(contentOf(f), "ab");
}

TEST_F(Routines, WriteUtf8OfMultibyteTextWithoutTrimmingTakesTheWholeText)
{
    const File f = emptyFile();
    writeUTF8(f.get(), "ab  ", 1, false);
    EXPECT_EQ(contentOf(f), "ab  ");
}

TEST_F(Routines, GetlinexUcs2ReadsUpToTheDelimiter)
{
    const File f = fileWith(bytesOf(u"a\u0416\n\nz", 5));
    EXPECT_EQ(nextUnits(f, 10), (Line{2, L"a\u0416"}));
    EXPECT_EQ(nextUnits(f, 10), (Line{0, L""}));
    EXPECT_EQ(nextUnits(f, 10), (Line{1, L"z"}));
    EXPECT_EQ(nextUnits(f, 10), (Line{0, L""}));
}

TEST_F(Routines, GetlinexUcs2ExchangesTheBytesOfABigEndianFile)
{
    const File f = fileWith(std::string_view("\0a\x04\x16\0\n\x0A\0", 8));
    EXPECT_EQ(nextUnits(f, 10, true), (Line{2, L"a\u0416"}));
    EXPECT_EQ(nextUnits(f, 10, true), (Line{1, L"\u0A00"}));
}

TEST_F(Routines, GetlinexUcs2TakesOnlyTheUnitOfTheDelimiterForItsEnd)
{
    const File f = fileWith(bytesOf(u"\u040A\u0A0A\n", 3));
    EXPECT_EQ(nextUnits(f, 10), (Line{2, L"\u040A\u0A0A"}));
}

TEST_F(Routines, GetlinexUcs2StopsAtItsSize)
{
    const File f = fileWith(bytesOf(u"abcd\n", 5));
    EXPECT_EQ(nextUnits(f, 2), (Line{2, L"ab"}));
    EXPECT_EQ(nextUnits(f, 3), (Line{2, L"cd"}));
}

TEST_F(Routines, GetlinexUcs2LeavesOutHalfAUnitAtTheEnd)
{
    const File f = fileWith(std::string_view("a\0b", 3));
    EXPECT_EQ(nextUnits(f, 10), (Line{1, L"a"}));
}

TEST_F(Routines, WhatWritelnUcs2WroteGetlinexUcs2Reads)
{
    const File f = emptyFile();
    writelnUCS2(f.get(), L"\u0416\u4E2D z");
    std::rewind(f.get());
    EXPECT_EQ(nextUnits(f, 20), (Line{4, L"\u0416\u4E2D z"}));
}

TEST_F(Routines, IsBackwardReadsTheByteOrderMark)
{
    bool backward = true;
    EXPECT_EQ(isBackward(fileWith("\xFF\xFE").get(), &backward), 0);
    EXPECT_FALSE(backward);
    EXPECT_EQ(isBackward(fileWith("\xFE\xFF").get(), &backward), 0);
    EXPECT_TRUE(backward);
}

TEST_F(Routines, IsBackwardWithoutAMarkLeavesTheAnswerAndTakesTheBytes)
{
    for (const bool before : {false, true}) {
        bool backward = before;
        const File f = fileWith("abc");
        EXPECT_EQ(isBackward(f.get(), &backward), 1);
        EXPECT_EQ(backward, before);
        EXPECT_EQ(std::fgetc(f.get()), 'c');
        EXPECT_EQ(isBackward(fileWith("\xFF").get(), &backward), 1);
        EXPECT_EQ(isBackward(emptyFile().get(), &backward), 1);
        EXPECT_EQ(backward, before);
    }
}

TEST_F(Routines, FindParamGivesTheValueInEachOfItsForms)
{
    EXPECT_STREQ(Arguments({L"prog", L"-db", L"main"}).find(L"-db"), L"main");
    EXPECT_STREQ(Arguments({L"prog", L"-db=main"}).find(L"-db"), L"main");
    EXPECT_STREQ(Arguments({L"prog", L"-dbmain"}).find(L"-db"), L"main");
    EXPECT_STREQ(Arguments({L"prog", L"-db=", L"main"}).find(L"-db"), L"main");
}

TEST_F(Routines, FindParamWithoutAValueGivesTheEmptyText)
{
    EXPECT_STREQ(Arguments({L"prog", L"-db="}).find(L"-db"), L"");
    EXPECT_STREQ(Arguments({L"prog", L"-db"}).find(L"-db"), L"");
}

TEST_F(Routines, FindParamTakesTheLastArgumentThatContainsTheName)
{
    EXPECT_STREQ(Arguments({L"prog", L"-db=a", L"-db=b", L"x"}).find(L"-db"), L"b");
    EXPECT_STREQ(Arguments({L"prog", L"--my-db=c"}).find(L"-db"), L"c");
    EXPECT_STREQ(Arguments({L"prog-db", L"x"}).find(L"-db"), L"x");
}

TEST_F(Routines, FindParamOfAMissingNameIsNull)
{
    EXPECT_EQ(Arguments({L"prog", L"-user=x"}).find(L"-db"), nullptr);
    EXPECT_EQ(Arguments({L"prog"}).find(nullptr), nullptr);
    EXPECT_EQ(findParam(0, nullptr, L"-db"), nullptr);
}

TEST_F(Routines, AddExtentionAppendsAMissingExtension)
{
    EXPECT_EQ(extended(L"report", 100, L".txt"), L"report.txt");
    EXPECT_EQ(extended(L"report.txt", 100, L".txt"), L"report.txt");
    EXPECT_EQ(extended(L"report.txt.bak", 100, L".txt"), L"report.txt.bak.txt");
}

TEST_F(Routines, KeptAddExtentionComparesOnlyTheFirstPlaceThatContainsTheExtension)
{
    // Kept: later occurrences are not looked at.
    EXPECT_EQ(extended(L"a.txt.txt", 100, L".txt"), L"a.txt.txt.txt");
    EXPECT_EQ(extended(L"a.txt/b.txt", 100, L".txt"), L"a.txt/b.txt.txt");
}

TEST_F(Routines, AddExtentionLeavesAPathThatIsEmptyOrTooLong)
{
    EXPECT_EQ(extended(L"", 100, L".txt"), L"");
    EXPECT_EQ(extended(L"report", 5, L".txt"), L"report");
    EXPECT_EQ(extended(L"report", 6, L".txt"), L"report.txt");
    EXPECT_EQ(extended(L"report", 7, L".txt"), L"report.txt");
    EXPECT_EQ(extended(L"report", -1, L".txt"), L"report");
    EXPECT_EQ(extended(L"ab", 2, L".txt"), L"ab.t");
}

TEST_F(Routines, APrefixOfWholeCharactersIsNeverLongerThanItsLimit)
{
    const std::string_view text = "a\xD0\x96\xF0\x9F\x98\x80z";
    const size_t expected[] = {0, 1, 1, 3, 3, 3, 3, 7, 8, 8};
    for (size_t limit = 0; limit < std::size(expected); ++limit)
        EXPECT_EQ(wholeCharacters(text, limit), expected[limit]) << limit;
    EXPECT_EQ(wholeCharacters("a\xFF\xFEz", 2), 2U);
    EXPECT_EQ(wholeCharacters(std::string_view("a\0bc", 4), 3), 3U);
}
