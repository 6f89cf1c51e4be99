// What the user's locale decides.
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/app/support.h"

namespace {

// The locales that the build has made, under more names in a folder of their own, so that no
// installed one is needed.
class LocaleTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_folder = new TempFolder; // deleted by TearDownTestSuite
        for (const char* name : {"ru_RU.KOI8-R", "ru_RU.koi8r", "ru_RU.Koi8R", "KOI8-R"})
            link(name, "ru_RU.KOI8-R");
        link("ru_RU.CP1251", "ru_RU.CP1251");
        link("de_DE.UTF-8", "de_DE.UTF-8");
    }
    static void TearDownTestSuite()
    {
        delete s_folder;
        s_folder = nullptr;
    }
    static void link(const char* name, const char* made)
    {
        const std::filesystem::path locale = std::filesystem::path(OVI_LOCALES) / made;
        ASSERT_TRUE(exists(locale / "LC_CTYPE")) << locale;
        create_directory_symlink(locale, s_folder->path() / name);
    }
    static enum TypicalOptions::Language languageIn(const char* locale)
    {
        const ScopedVariable all("LC_ALL", locale);
        return ExtApp::getDefaultLang();
    }

    static TempFolder* s_folder;
    ScopedVariable m_path{"LOCPATH", s_folder->path().c_str()};
};

TempFolder* LocaleTest::s_folder = nullptr;

} // namespace

TEST_F(LocaleTest, ACodeSetNamedKoi8SelectsItsLanguageInAnyCase)
{
    for (const char* name : {"ru_RU.KOI8-R", "ru_RU.koi8r", "ru_RU.Koi8R"})
        EXPECT_EQ(languageIn(name), TypicalOptions::Koi8Language) << name;
}

TEST_F(LocaleTest, NoOtherCodeSetSelectsIt)
{
    for (const char* name : {"ru_RU.CP1251", "de_DE.UTF-8", "C.UTF-8", "C"})
        EXPECT_EQ(languageIn(name), TypicalOptions::DefaultLanguage) << name;
}

TEST_F(LocaleTest, ANameWithoutADotIsComparedWhole)
{
    EXPECT_EQ(languageIn("KOI8-R"), TypicalOptions::Koi8Language);
    EXPECT_EQ(languageIn("POSIX"), TypicalOptions::DefaultLanguage);
}

TEST_F(LocaleTest, AskingForTheLanguageLeavesTheLocaleAsItWas)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    languageIn("ru_RU.KOI8-R");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

TEST_F(LocaleTest, AnUnknownLocaleCountsAsTheOneInForce)
{
    const ScopedLocale inForce("C.UTF-8");
    EXPECT_EQ(languageIn("no_SUCH.KOI8-R"), TypicalOptions::DefaultLanguage);
}

TEST_F(LocaleTest, DefaultsTakeTheLanguageFromTheApplication)
{
    const ScopedVariable all("LC_ALL", "ru_RU.KOI8-R");
    TypicalOptions options;
    options.initDefaults();
    EXPECT_EQ(options.Language, TypicalOptions::DefaultLanguage) << "no ExtApp runs";
    const TestFolders folders;
    TestApp app;
    options.initDefaults();
    EXPECT_EQ(options.Language, TypicalOptions::Koi8Language);
    options.Language = TypicalOptions::DefaultLanguage;
    options.deserialize(parsed("<Options/>"), XMLUtils::XMLEncoding::Utf8);
    EXPECT_EQ(options.Language, TypicalOptions::Koi8Language);
}

TEST_F(LocaleTest, OptionsAreTheSameFileInEveryLocale)
{
    const TestFolders folders;
    TestApp app;
    app.ownRecord.initDefaults();
    app.ownRecord.setLastSaveDirectory(L"/\u0416\u00e9\u4E2D");
    const TypicalOptions saved = app.ownRecord;
    std::string first;
    for (const char* name : {"C.UTF-8", "C", "de_DE.UTF-8", "ru_RU.KOI8-R"}) {
        const ScopedLocale locale(name);
        ASSERT_TRUE(locale.isSet()) << name;
        app.ownRecord = saved;
        app.saveOptions();
        app.ownRecord = TypicalOptions();
        app.loadOptions();
        EXPECT_EQ(app.ownRecord, saved) << name;
        const std::string bytes = readFile(folders.optionsFile());
        EXPECT_EQ(bytes, first.empty() ? bytes : first) << name;
        first = bytes;
    }
}
