// The options file: reading, writing, and what it may contain.
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <random>

#include <gtest/gtest.h>

#include <oviapi/lexception.h>
#include <xmlutils/exception.h>

#include "tests/app/support.h"
#include "tests/support/smalldisk.h"
#include "tests/support/uidriver.h"

namespace {

namespace fs = std::filesystem;

using XMLUtils::XMLElementA;
using XMLUtils::XMLEncoding;

class OptionsFile : public testing::Test {
protected:
    TypicalOptions loaded(std::string_view bytes)
    {
        m_folders.writeOptions(bytes);
        m_app.freshOptions = true;
        m_app.ownRecord = TypicalOptions();
        m_app.loadOptions();
        return m_app.ownRecord;
    }
    TypicalOptions defaults() const
    {
        TypicalOptions options;
        options.initDefaults();
        return options;
    }
    std::string savedFile()
    {
        m_app.ownRecord.initDefaults();
        m_app.ownRecord.setLastSaveDirectory(L"/home/\u0416");
        m_app.saveOptions();
        return readFile(m_folders.optionsFile());
    }

    TestFolders m_folders;
    TestApp m_app;
};

// Fails while it is read.
struct FailingOptions : TypicalOptions {
    void deserialize(const XMLElementA&, XMLEncoding) override
    {
        LastAction = SaveAction;
        throw XMLUtils::XMLException(L"no such key");
    }
};

// Cannot be written.
struct UnwritableOptions : TypicalOptions {
    void serialize(XMLElementA& element, XMLEncoding) const override
    {
        element.addChild("not a name");
    }
};

// Processor time, which other programs do not lengthen.
double secondsSince(std::clock_t start)
{
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// A sanitizer takes several times as long as the program of a user, which stays under a second.
constexpr double limit = 3.0;

std::string nested(size_t depth)
{
    std::string text;
    for (size_t i = 0; i < depth; ++i)
        text += "<a>";
    for (size_t i = 0; i < depth; ++i)
        text += "</a>";
    return text;
}

} // namespace

TEST_F(OptionsFile, AMissingFileGivesDefaultsAndLeavesTheOptionsFresh)
{
    m_app.loadOptions();
    EXPECT_EQ(m_app.ownRecord, defaults());
    EXPECT_TRUE(m_app.freshOptions);
}

TEST_F(OptionsFile, WhatWasSavedIsLoaded)
{
    savedFile();
    const TypicalOptions saved = m_app.ownRecord;
    m_app.ownRecord = TypicalOptions();
    m_app.loadOptions();
    EXPECT_EQ(m_app.ownRecord, saved);
    EXPECT_FALSE(m_app.freshOptions);
}

TEST_F(OptionsFile, TheRootOfTheFileHoldsOneElementOptions)
{
    savedFile();
    XMLElementA root;
    XMLEncoding encoding{};
    XMLElementA* options =
        m_app.getXMLElement(m_folders.optionsFile().wstring().c_str(), encoding, root, "Options");
    ASSERT_NE(options, nullptr);
    EXPECT_EQ(encoding, XMLEncoding::Utf8);
    EXPECT_EQ(root.childCount(), 1U);
    EXPECT_EQ(options->getAttribute("ClassName"), "TypicalOptions");
}

TEST_F(OptionsFile, TheFileIsForItsUserAlone)
{
    savedFile();
    struct stat state {};
    ASSERT_EQ(::stat(m_folders.optionsFile().c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777, 0600U);
}

TEST_F(OptionsFile, SavingReplacesTheFileAsAWholeAndLeavesNoOther)
{
    savedFile();
    savedFile();
    size_t files = 0;
    for ([[maybe_unused]] const auto& entry :
         fs::directory_iterator(m_folders.optionsFile().parent_path()))
        ++files;
    EXPECT_EQ(files, 1U);
}

TEST_F(OptionsFile, WithoutARecordLoadingThrows)
{
    m_app.record = nullptr;
    try {
        m_app.loadOptions();
        FAIL() << "no exception";
    } catch (const LException& e) {
        EXPECT_EQ(e.source(), "extapp");
        EXPECT_EQ(e.line(), 148);
        EXPECT_EQ(e.message(), L"Error while loading options");
    }
}

TEST_F(OptionsFile, WithoutARecordSavingThrows)
{
    m_app.record = nullptr;
    try {
        m_app.saveOptions();
        FAIL() << "no exception";
    } catch (const LException& e) {
        EXPECT_EQ(e.source(), "extapp");
        EXPECT_EQ(e.line(), 204);
        EXPECT_EQ(e.message(), L"Internal error");
    }
}

TEST_F(OptionsFile, FilesThatAreNotOptionsGiveDefaultsSilently)
{
    const std::string utf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    const std::string contents[] = {
        "",
        "\n",
        "not XML",
        document(""),
        document("", "Options"),
        document("<Other/>"),
        document(element("options", number("Language", 1))),
        utf8 + "<a>",
        utf8 + "<a></b>",
        "<?xml version=\"1.0\" encoding=\"no-such-code\"?><a><Options/></a>",
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a><Options/></a>",
        utf8 + "<a><Options>\xFF\xFE\xFD</Options></a>",
        utf8 + std::string("<a><Options>\0</Options></a>", 27),
        utf8 +
            "<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><a><Options>&x;</Options></a>",
        utf8 +
            "<!DOCTYPE a [<!ENTITY x \"yy\"><!ENTITY z \"&x;&x;\">]><a><Options>&z;</Options></a>",
        std::string("\xFF\xFE<", 3),
    };
    for (const std::string& content : contents) {
        EXPECT_EQ(loaded(content), defaults()) << content;
        EXPECT_TRUE(m_app.freshOptions) << content;
    }
}

TEST_F(OptionsFile, OptionsInOtherEncodingsAreRead)
{
    const std::string body =
        "<Root><Options><LastSaveDirectory>\xF6</LastSaveDirectory></Options></Root>";
    EXPECT_EQ(loaded("<?xml version=\"1.0\" encoding=\"KOI8-R\"?>" + body).LastSaveDirectory,
              L"\u0416");
    EXPECT_EQ(loaded("<?xml version=\"1.0\" encoding=\"windows-1251\"?>" + body).LastSaveDirectory,
              L"\u0446");
}

TEST_F(OptionsFile, AFileCutAtAnyByteGivesDefaultsOrTheWholeOptions)
{
    const std::string whole = savedFile();
    const TypicalOptions saved = m_app.ownRecord;
    ASSERT_GT(whole.size(), 1000U);
    const auto start = std::clock();
    for (size_t length = 0; length < whole.size(); ++length) {
        const TypicalOptions options = loaded(std::string_view(whole).substr(0, length));
        ASSERT_TRUE(options == defaults() || options == saved) << length;
        ASSERT_EQ(m_app.freshOptions, !(options == saved)) << length;
    }
    EXPECT_LT(secondsSince(start), 60);
}

TEST_F(OptionsFile, RandomBytesAndRandomChangesNeverThrow)
{
    std::mt19937 random(3);
    const std::string whole = savedFile();
    for (int i = 0; i < 500; ++i) {
        std::string bytes = whole;
        if (i % 2 == 0) {
            bytes.resize(random() % 300);
            for (char& c : bytes)
                c = static_cast<char>(random());
        }
        for (int k = 0; k < 5 && !bytes.empty(); ++k)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        const TypicalOptions options = loaded(bytes);
        EXPECT_TRUE(TypicalOptions::isValidGeometry(options.MainFormRect));
        EXPECT_LE(options.AdaptToTD.Value, TypicalConfirm::No);
    }
}

TEST_F(OptionsFile, HostileContentIsReadOrRefusedInBoundedTime)
{
    std::string attributes = "<Root><Options";
    for (int i = 0; i < 200000; ++i)
        attributes += " a" + std::to_string(i) + "=\"\"";
    attributes += "/></Root>";
    std::string names = "<Root><Options>";
    for (int i = 0; i < 200000; ++i)
        names += "<Language>x</Language>";
    names += "</Options></Root>";
    const std::string contents[] = {
        document(element("Options", nested(300000))),
        document(element("Options", element("LastLoadDirectory", std::string(12 << 20, 'x')))),
        attributes,
        names,
        std::string(20 << 20, '<'),
    };
    for (const std::string& content : contents) {
        m_folders.writeOptions(content);
        const auto start = std::clock();
        m_app.loadOptions();
        EXPECT_LT(secondsSince(start), limit) << content.substr(0, 40) << " " << content.size();
        EXPECT_EQ(m_app.ownRecord.MainFormRect, defaults().MainFormRect);
    }
}

TEST_F(OptionsFile, AFolderOrAPipeInItsPlaceGivesDefaults)
{
    fs::create_directories(m_folders.optionsFile());
    m_app.loadOptions();
    EXPECT_EQ(m_app.ownRecord, defaults());
    fs::remove(m_folders.optionsFile());
    ASSERT_EQ(::mkfifo(m_folders.optionsFile().c_str(), 0600), 0);
    m_app.ownRecord = TypicalOptions();
    m_app.loadOptions();
    EXPECT_EQ(m_app.ownRecord, defaults());
}

TEST_F(OptionsFile, OptionsThatThrowAreReportedAndReplacedByDefaults)
{
    FailingOptions failing;
    m_app.record = &failing;
    m_folders.writeOptions(document(element("Options", "")));
    UiDriver::answerMessageBox(1);
    m_app.loadOptions();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Warning");
    EXPECT_EQ(UiDriver::lastBoxText(), L"Can not read options file\nno such key");
    EXPECT_EQ(failing, defaults());
    EXPECT_TRUE(m_app.freshOptions);
}

TEST_F(OptionsFile, OptionsThatCannotBeWrittenAreReportedAndTheProgramGoesOn)
{
    UnwritableOptions unwritable;
    m_app.record = &unwritable;
    UiDriver::answerMessageBox(1);
    m_app.deInitApplication();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Warning");
    EXPECT_TRUE(UiDriver::lastBoxText().starts_with(L"Can't write options file\n"));
    EXPECT_GT(UiDriver::lastBoxText().size(), 26U);
    EXPECT_EQ(m_app.steps, (std::vector<std::string>{"saveOptions", "deInitAfterOptions"}));
}

TEST_F(OptionsFile, AFolderThatCannotBeWrittenIsReportedAndTheProgramGoesOn)
{
    // A file stands where the folder would be made: refused to every user, the system's as well.
    writeFile(m_folders.config() / "sample", "in the way");
    m_app.ownRecord.initDefaults();
    UiDriver::answerMessageBox(1);
    m_app.deInitApplication();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Warning");
    EXPECT_TRUE(UiDriver::lastBoxText().starts_with(L"Can't write options file\n"));
    EXPECT_EQ(m_app.steps.back(), "deInitAfterOptions");
}

TEST_F(OptionsFile, AReadOnlyFolderKeepsTheOldFileAndIsReported)
{
    const std::string before = savedFile();
    const fs::path folder = m_folders.optionsFile().parent_path();
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    const bool refused = ::access(folder.c_str(), W_OK) != 0; // not to the system's user
    m_app.ownRecord.LastAction = TypicalOptions::LoadAction;
    if (refused)
        UiDriver::answerMessageBox(1);
    m_app.saveOptions();
    fs::permissions(folder, fs::perms::owner_all);
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(readFile(m_folders.optionsFile()) == before, refused);
}

TEST_F(OptionsFile, AReadOnlyFileKeepsItsContentAndIsReported)
{
    const std::string before = savedFile();
    fs::permissions(m_folders.optionsFile(), fs::perms::owner_read);
    const bool refused = ::access(m_folders.optionsFile().c_str(), W_OK) != 0;
    m_app.ownRecord.LastAction = TypicalOptions::LoadAction;
    if (refused)
        UiDriver::answerMessageBox(1);
    m_app.saveOptions();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(readFile(m_folders.optionsFile()) == before, refused);
}

TEST_F(OptionsFile, AFullDiskKeepsTheOldFileIsReportedAndTheProgramGoesOn)
{
    if (!SmallDisk::isHere()) {
        if (!SmallDisk::isPossible())
            GTEST_SKIP() << "this user may mount nothing here, not even in a namespace of its own";
        EXPECT_EQ(SmallDisk::runThisTest(), 0);
        return;
    }
    const std::string before = savedFile();
    const fs::path folder = m_folders.optionsFile().parent_path();
    SmallDisk::fill(m_folders.program());
    m_app.ownRecord.LastAction = TypicalOptions::LoadAction;
    UiDriver::answerMessageBox(1);
    m_app.deInitApplication();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Warning");
    EXPECT_TRUE(UiDriver::lastBoxText().starts_with(L"Can't write options file\n"));
    EXPECT_GT(UiDriver::lastBoxText().size(), 26U);
    EXPECT_EQ(m_app.steps.back(), "deInitAfterOptions");
    EXPECT_EQ(readFile(m_folders.optionsFile()), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
    SmallDisk::empty(m_folders.program());
    m_app.saveOptions();
    EXPECT_NE(readFile(m_folders.optionsFile()), before);
}

TEST_F(OptionsFile, AnElementIsReadByItsName)
{
    const fs::path file = m_folders.config() / "any.xml";
    writeFile(file, document(element("First", "1") + element("Second", "2")));
    XMLElementA root;
    XMLEncoding encoding{};
    const std::wstring path = file.wstring();
    const XMLElementA* second = m_app.getXMLElement(path.c_str(), encoding, root, "Second");
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->text(), "2");
    EXPECT_EQ(second, root.findChild("Second"));
    EXPECT_EQ(m_app.getXMLElement(path.c_str(), encoding, root, "Third"), nullptr);
    EXPECT_EQ(m_app.getXMLElement(L"/no/such/file", encoding, root, "Second"), nullptr);
}
