#include "tools/rrsc/compiler.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <gtest/gtest.h>

#include <oviapi/phrases.h>
#include <oviapi/picture.h>
#include <oviapi/resourcefile.h>
#include <oviapi/resourcemanager.h>
#include <oviapi/text.h>

namespace fs = std::filesystem;
using OviAPI::Picture;
using OviAPI::ResourceFile;
using OviAPI::ResourceManager;
using Rrsc::Compiler;
using namespace OviAPI::ResourceFormat;

namespace {

std::vector<std::string> errorsOf(const std::string& english, const std::string& russian)
{
    Compiler compiler;
    compiler.addStrings("en", english, 1);
    compiler.addStrings("ru", russian, 2);
    compiler.checkLanguages();
    return compiler.errors();
}

using Errors = std::vector<std::string>;

TEST(ResourceCompiler, ReadsNumbersTextsEscapesAndComments)
{
    Compiler compiler;
    compiler.addStrings("en", "# a comment\n\n  10 \t two\\nlines\\tand \\\\  \r\n11 # no comment",
                        1);
    ASSERT_TRUE(compiler.errors().empty());
    std::wstring error;
    const auto file = ResourceFile::parse(compiler.result(), error);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->find({Kind::String, 10, 1, 0}), "two\nlines\tand \\");
    EXPECT_EQ(file->find({Kind::String, 11, 1, 0}), "# no comment");
}

TEST(ResourceCompiler, GathersSeveralSources)
{
    Compiler compiler;
    compiler.addStrings("one", "2 two", 1);
    compiler.addStrings("two", "1 one", 1);
    std::wstring error;
    const auto file = ResourceFile::parse(compiler.result(), error);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->find({Kind::String, 1, 1, 0}), "one");
}

TEST(ResourceCompiler, NamesBothPlacesOfANumberThatOccursTwice)
{
    EXPECT_EQ(errorsOf("1 a\n2 b\n1 c\n", "1 d\n2 e\n"), Errors{"en:3: 1 stands already in en:1"});
}

TEST(ResourceCompiler, NamesWhatIsNotANumber)
{
    const auto error = [](const std::string& word) {
        return Errors{"en:1: \"" + word + "\" is not a number from 1 to 2147483647"};
    };
    for (const char* word : {"x", "0", "-1", "1x", "2147483648", "99999999999999999999", "1.5"})
        EXPECT_EQ(errorsOf(word + std::string(" text"), ""), error(word));
    EXPECT_TRUE(errorsOf("2147483647 a", "2147483647 b").empty());
}

TEST(ResourceCompiler, NamesANumberWithoutText)
{
    EXPECT_EQ(errorsOf("5  \n", ""), Errors{"en:1: 5 has no text"});
}

TEST(ResourceCompiler, NamesBadEscapes)
{
    const Errors error{"en:1: a backslash stands before something else than n, t or a backslash"};
    EXPECT_EQ(errorsOf("1 a\\x", ""), error);
    EXPECT_EQ(errorsOf("1 a\\", ""), error);
}

TEST(ResourceCompiler, NamesTextThatIsNotUtf8)
{
    EXPECT_EQ(errorsOf("1 \xFF", ""), Errors{"en:1: the line is not UTF-8 text"});
}

TEST(ResourceCompiler, NamesNumbersThatStandInOneLanguageOnly)
{
    EXPECT_EQ(errorsOf("1 a\n2 b\n", "2 c\n3 d\n"),
              (Errors{"en:1: 1 is missing in Russian", "ru:2: 3 is missing in English"}));
}

TEST(ResourceCompiler, NamesPlaceholdersThatAreNotTranslated)
{
    const Errors error{"ru:1: 1 has another number of placeholders than in English"};
    EXPECT_EQ(errorsOf("1 save %ls?", "1 save?"), error);
    EXPECT_EQ(errorsOf("1 save %ls?", "1 save %%ls?"), error);
    EXPECT_TRUE(errorsOf("1 100 %, %%s %ls", "1 %s").empty());
}

class PictureList : public testing::Test {
protected:
    PictureList()
    {
        std::string name = (fs::temp_directory_path() / "ovi-rrsc-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        savePng("a.png", 4, 2);
        savePng("a2.png", 8, 4);
        savePng("a3.png", 12, 6);
        std::ofstream(m_folder / "text.png") << "text";
    }
    ~PictureList() override { fs::remove_all(m_folder); }

    void savePng(const char* name, int width, int height) const
    {
        const Picture picture({width, height}, OviAPI::Color::Green);
        ASSERT_TRUE(picture.savePng((m_folder / name).wstring()));
    }
    Errors errorsOfList(const std::string& list) const
    {
        Compiler compiler;
        compiler.addPictures("list", list, m_folder);
        return compiler.errors();
    }

    fs::path m_folder;
};

TEST_F(PictureList, GivesOnePictureWithItsResolutions)
{
    Compiler compiler;
    compiler.addPictures("list", "# id file\n77 a.png a2.png a3.png\n", m_folder);
    ASSERT_TRUE(compiler.errors().empty());
    const fs::path path = m_folder / "out.rrs";
    std::ofstream(path, std::ios::binary) << compiler.result();
    const ResourceManager manager(path.wstring().c_str());
    Picture picture;
    ASSERT_TRUE(manager.loadPicture(77, &picture));
    EXPECT_EQ(picture.size(), (OviAPI::Size{4, 2}));
    EXPECT_EQ(picture.pixel(3, 1), 0xFF00FF00U);
    EXPECT_TRUE(manager.loadPicture(77, &picture, 2));
    EXPECT_TRUE(manager.loadTransparentPicture(77, &picture, OviAPI::Color::Green));
    EXPECT_EQ(picture.pixel(3, 1), 0U);
}

TEST_F(PictureList, NamesItsFaults)
{
    EXPECT_EQ(errorsOfList("x a.png"),
              Errors{"list:1: \"x\" is not a number from 1 to 2147483647"});
    EXPECT_EQ(errorsOfList("\n1"), Errors{"list:2: 1 has no picture file"});
    EXPECT_EQ(errorsOfList("1 none.png"),
              Errors{"list:1: \"none.png\" is not a PNG file that can be read"});
    EXPECT_EQ(errorsOfList("1 text.png"),
              Errors{"list:1: \"text.png\" is not a PNG file that can be read"});
    EXPECT_EQ(errorsOfList("1 a.png a3.png"),
              Errors{"list:1: \"a3.png\" has not 2 times the size of the first file"});
    EXPECT_EQ(errorsOfList("1 a.png a2.png a3.png a.png"),
              Errors{"list:1: more than three resolutions"});
    EXPECT_EQ(errorsOfList("1 a.png\n1 a.png"), Errors{"list:2: 1 stands already in list:1"});
}

class RrscProgram : public PictureList {
protected:
    int run(const std::string& arguments) const
    {
        const std::string command =
            std::string(RRSC_PROGRAM) + " " + arguments + " 2>" + (m_folder / "errors").string();
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string path(const char* name) const { return (m_folder / name).string(); }
    std::string errors() const
    {
        std::ifstream stream(m_folder / "errors");
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(RrscProgram, CompilesItsSources)
{
    std::ofstream(path("en")) << "1 one\n";
    std::ofstream(path("ru")) << "1 odin\n";
    std::ofstream(path("list")) << "5 a.png a2.png\n";
    EXPECT_EQ(run(path("out") + " --english " + path("en") + " --russian " + path("ru") +
                  " --pictures " + path("list")),
              0);
    EXPECT_EQ(errors(), "");
    EXPECT_FALSE(ResourceManager((m_folder / "out").wstring().c_str()).failed());
}

TEST_F(RrscProgram, NamesFaultsAndWritesNothing)
{
    std::ofstream(path("en")) << "1 one\n1 two\n";
    EXPECT_EQ(run(path("out") + " --english " + path("en")), 1);
    EXPECT_EQ(errors(), path("en") + ":2: 1 stands already in " + path("en") + ":1\n" + path("en") +
                            ":1: 1 is missing in Russian\n");
    EXPECT_FALSE(fs::exists(path("out")));
    EXPECT_EQ(run(path("out") + " --english " + path("missing")), 1);
    EXPECT_EQ(errors(), path("missing") + ":1: the file cannot be read\n");
    EXPECT_EQ(run(""), 2);
}

TEST_F(RrscProgram, AnOutputThatCannotBeWrittenIsReportedAndStays)
{
    fs::create_directory(path("folder"));
    EXPECT_EQ(run(path("folder") + " --english"), 1);
    EXPECT_EQ(errors(), path("folder") + ": the file cannot be written\n");
    EXPECT_TRUE(fs::is_directory(path("folder")));
}

// The file that the build made.
class TypicalResources : public testing::Test {
protected:
    const ResourceManager m_manager{OviAPI::utf8ToWide(TYPICAL_RRS).c_str()};
};

TEST_F(TypicalResources, HoldEveryTextOfTheLibraryInBothLanguages)
{
    const int ids[] = {60001,   60003,   60005,   60011,   60012,   60013,   60014,   60203,
                       60221,   60504,   222105,  222106,  222107,  222108,  222109,  2222125,
                       2222126, 2222127, 2222128, 2222129, 2222130, 2222131, 2222139, 2222140,
                       2222141, 2222142, 2222143, 2222144, 2222153, 2222154, 2222155, 2222156,
                       2222157, 2222158, 2222159, 2222172, 2222175, 2222176, 2222180, 2222181,
                       2222182, 2222201, 2222202, 2222301};
    ASSERT_FALSE(m_manager.failed()) << OviAPI::wideToUtf8(m_manager.failure());
    for (const int id : ids) {
        wchar_t english[4096];
        wchar_t russian[4096];
        EXPECT_TRUE(m_manager.loadString(id, english, 4096, 1)) << id;
        EXPECT_TRUE(m_manager.loadString(id, russian, 4096, 2)) << id;
        EXPECT_STRNE(english, L"") << id;
        const bool differ = std::wcscmp(english, russian) != 0;
        EXPECT_TRUE(differ) << id << ": both texts are the same";
    }
}

// What is built in for programs without resources is what the resources say.
TEST_F(TypicalResources, HoldEveryPhraseOfThePlatformInBothLanguages)
{
    for (const OviAPI::EnglishPhrase& each : OviAPI::englishPhrases()) {
        const int id = static_cast<int>(each.phrase);
        wchar_t english[4096] = L"";
        wchar_t russian[4096] = L"";
        ASSERT_TRUE(m_manager.loadString(id, english, 4096, 1)) << id;
        ASSERT_TRUE(m_manager.loadString(id, russian, 4096, 2)) << id;
        EXPECT_STREQ(english, each.text) << id;
        const std::wstring translated = russian;
        EXPECT_NE(translated, english) << id;
        const bool placeholder = std::wstring_view(english).find(L"%ls") != std::wstring::npos;
        EXPECT_EQ(translated.find(L"%ls") != std::wstring::npos, placeholder) << id;
        EXPECT_EQ(std::count(translated.begin(), translated.end(), L'%'), placeholder) << id;
    }
}

TEST_F(TypicalResources, ThePlaceholderOfTheSaveQuestionTakesAName)
{
    for (const int language : {1, 2}) {
        wchar_t format[4096];
        ASSERT_TRUE(m_manager.loadString(60504, format, 4096, language));
        const std::wstring text = OviAPI::substitute(format, L"Trend 1");
        EXPECT_NE(text.find(L"\"Trend 1\"?"), std::wstring::npos);
        EXPECT_EQ(text.find(L'%'), std::wstring::npos);
    }
}

TEST_F(TypicalResources, HoldEveryPictureInTheSizeThatItsPlaceNeeds)
{
    const std::pair<int, OviAPI::Size> pictures[] = {
        {222000, {16, 16}}, {222001, {16, 16}}, {222002, {16, 16}}, {222003, {16, 16}},
        {222012, {48, 16}}, {50001, {16, 16}},  {50101, {32, 32}},  {50201, {64, 64}}};
    for (const auto& [id, size] : pictures) {
        Picture picture;
        EXPECT_TRUE(m_manager.loadTransparentPicture(id, &picture)) << id;
        EXPECT_EQ(picture.size(), size) << id;
        EXPECT_EQ(picture.pixel(0, 0) >> 24, 0U) << id << ": the corner is not transparent";
    }
}

TEST_F(TypicalResources, TheCheckMarksDiffer)
{
    Picture strip;
    ASSERT_TRUE(m_manager.loadTransparentPicture(222012, &strip));
    std::set<uint32_t> middles;
    for (int i = 0; i < 3; ++i) {
        const Picture mark = strip.copy({i * 16, 0, i * 16 + 16, 16});
        ASSERT_EQ(mark.width(), 16);
        middles.insert(mark.pixel(6, 8) ^ mark.pixel(6, 6) << 1);
    }
    EXPECT_EQ(middles.size(), 3U);
}

} // namespace
