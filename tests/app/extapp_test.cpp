// Start-up and shut-down, resource strings, role fonts, message boxes.
#include "app/extapp.h"

#include <gtest/gtest.h>

#include <oviapi/lexception.h>
#include <oviapi/msgbox.h>
#include <oviapi/phrases.h>

#include "tests/app/support.h"
#include "tests/support/uidriver.h"

namespace {

using OviAPI::MsgBox;
using Steps = std::vector<std::string>;

class ExtAppTest : public testing::Test {
protected:
    bool started()
    {
        m_app.steps.clear();
        return m_app.initApplication(0, nullptr);
    }
    // Lets the step throw.
    void failAt(const std::string& step, const wchar_t* message)
    {
        m_app.onStep = [step, message](const std::string& now) {
            if (now == step)
                throw LException("sample", 12, message);
        };
    }
    void openResources(const ResourceBuilder& resources)
    {
        m_folders.writeResources(resources);
        m_app.initResourceManager();
    }
    std::wstring string(int id, int lang = -1)
    {
        wchar_t buffer[100] = L"untouched";
        m_app.loadRRSString(id, buffer, 100, lang);
        return buffer;
    }

    TestFolders m_folders;
    TestApp m_app;
};

} // namespace

TEST_F(ExtAppTest, StartUpRunsItsStepsInOrder)
{
    m_folders.writeResources(frameResources());
    EXPECT_TRUE(started());
    EXPECT_EQ(m_app.steps, (Steps{"parseParameters", "initBeforeOptions", "loadOptions",
                                  "initResourceManager", "adaptToTD", "initAfterOptions"}));
    EXPECT_NE(m_app.resources(), nullptr);
}

TEST_F(ExtAppTest, TheParametersReachTheApplication)
{
    struct Parsing : TestApp {
        void parseParameters(int argc, wchar_t** argv) override { seen = argv[argc - 1]; }
        std::wstring seen;
    } app;
    m_folders.writeResources(frameResources());
    std::wstring program = L"prog";
    std::wstring last = L"-db=main";
    wchar_t* arguments[] = {program.data(), last.data()};
    EXPECT_TRUE(app.initApplication(2, arguments));
    EXPECT_EQ(app.seen, L"-db=main");
}

TEST_F(ExtAppTest, AStepThatFailsEndsStartUpWithAnErrorBox)
{
    m_folders.writeResources(frameResources());
    const Steps order{"parseParameters",     "initBeforeOptions", "loadOptions",
                      "initResourceManager", "adaptToTD",         "initAfterOptions"};
    for (size_t i = 0; i < order.size(); ++i) {
        failAt(order[i], L"it failed");
        UiDriver::answerMessageBox(MsgBox::Ok);
        EXPECT_FALSE(started());
        EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
        EXPECT_EQ(UiDriver::lastBoxTitle(), L"Error");
        EXPECT_EQ(UiDriver::lastBoxText(), LException("sample", 12, L"it failed").fullMessage());
        EXPECT_EQ(m_app.steps,
                  Steps(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(i) + 1));
    }
}

TEST_F(ExtAppTest, AFailureWithoutAMessageEndsStartUpSilently)
{
    m_folders.writeResources(frameResources());
    failAt("initBeforeOptions", L"");
    EXPECT_FALSE(started());
    EXPECT_EQ(m_app.steps.back(), "initBeforeOptions");
}

TEST_F(ExtAppTest, OtherExceptionsPassThroughStartUp)
{
    m_app.onStep = [](const std::string&) { throw std::runtime_error("other"); };
    EXPECT_THROW(started(), std::runtime_error);
    EXPECT_THROW(m_app.deInitApplication(), std::runtime_error);
}

TEST_F(ExtAppTest, StartUpWithoutAnOptionsRecordFails)
{
    m_app.record = nullptr;
    UiDriver::answerMessageBox(MsgBox::Ok);
    EXPECT_FALSE(started());
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxText(),
              LException("extapp", 148, L"Error while loading options").fullMessage());
    EXPECT_EQ(m_app.steps.back(), "loadOptions");
}

TEST_F(ExtAppTest, ShutDownSavesTheOptionsAndRunsTheLastStep)
{
    m_app.ownRecord.initDefaults();
    m_app.deInitApplication();
    EXPECT_EQ(m_app.steps, (Steps{"saveOptions", "deInitAfterOptions"}));
    EXPECT_TRUE(std::filesystem::exists(m_folders.optionsFile()));
}

TEST_F(ExtAppTest, ShutDownWithoutAnOptionsRecordShowsAnErrorBoxAndSkipsTheLastStep)
{
    m_app.record = nullptr;
    UiDriver::answerMessageBox(MsgBox::Ok);
    m_app.deInitApplication();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Error");
    EXPECT_EQ(UiDriver::lastBoxText(), LException("extapp", 204, L"Internal error").fullMessage());
    EXPECT_EQ(m_app.steps, (Steps{"saveOptions"}));
}

TEST_F(ExtAppTest, AFailingLastStepIsShownAndNotPassedOn)
{
    m_app.ownRecord.initDefaults();
    failAt("deInitAfterOptions", L"late");
    UiDriver::answerMessageBox(MsgBox::Ok);
    m_app.deInitApplication();
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxText(), LException("sample", 12, L"late").fullMessage());
}

TEST_F(ExtAppTest, AMissingOrBadResourceFileEndsStartUp)
{
    const std::string good = frameResources().compiled();
    const std::string contents[] = {"", "bad", good.substr(0, good.size() - 1), good + "x"};
    for (const std::string& content : contents) {
        if (!content.empty())
            writeFile(m_folders.program() / "typical.rrs", content);
        try {
            m_app.initResourceManager();
            FAIL() << "no exception";
        } catch (const LException& e) {
            EXPECT_EQ(e.source(), "extapp");
            EXPECT_EQ(e.line(), 235);
            EXPECT_EQ(e.message(), L"Error while reading resources file");
        }
        EXPECT_EQ(m_app.resources(), nullptr);
    }
    UiDriver::answerMessageBox(MsgBox::Ok);
    EXPECT_FALSE(started());
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Error");
    EXPECT_EQ(m_app.steps.back(), "initResourceManager");
}

TEST_F(ExtAppTest, TheResourceLanguageFollowsTheOptions)
{
    EXPECT_EQ(m_app.getRRSLang(TypicalOptions::DefaultLanguage), 1);
    EXPECT_EQ(m_app.getRRSLang(TypicalOptions::Koi8Language), 2);
    EXPECT_EQ(m_app.getRRSLang(static_cast<enum TypicalOptions::Language>(7)), 1);
    m_app.ownRecord.Language = TypicalOptions::Koi8Language;
    openResources(frameResources());
    EXPECT_EQ(string(60001), L"\u041E\u0448\u0438\u0431\u043A\u0430");
    m_app.setLanguage(TypicalOptions::DefaultLanguage);
    EXPECT_EQ(string(60001), L"Failure");
    EXPECT_EQ(string(60001, 2), L"\u041E\u0448\u0438\u0431\u043A\u0430");
}

TEST_F(ExtAppTest, SettingTheLanguageWithoutResourcesDoesNothing)
{
    m_app.setLanguage(TypicalOptions::Koi8Language);
    EXPECT_EQ(m_app.resources(), nullptr);
}

TEST_F(ExtAppTest, ThePhrasesOfThePlatformFollowTheLanguageAndEndWithTheApplication)
{
    ResourceBuilder resources = frameResources();
    resources.addString(61002, L"nothing");
    resources.addString(61002, L"\u041D\u0435\u0442", ResourceBuilder::russian);
    {
        TestApp app;
        m_folders.writeResources(resources);
        EXPECT_EQ(phrase(OviAPI::Phrase::NoRows), L"No rows");
        app.initResourceManager();
        EXPECT_EQ(phrase(OviAPI::Phrase::NoRows), L"nothing");
        app.setLanguage(TypicalOptions::Koi8Language);
        EXPECT_EQ(phrase(OviAPI::Phrase::NoRows), L"\u041D\u0435\u0442");
        EXPECT_EQ(phrase(OviAPI::Phrase::NoColumns), L"No columns"); // not in these resources
    }
    EXPECT_EQ(phrase(OviAPI::Phrase::NoRows), L"No rows");
}

TEST_F(ExtAppTest, OnlyStringsOfTheTwoRangesAreLookedUp)
{
    openResources(frameResources());
    wchar_t buffer[50] = L"untouched";
    for (const int id : {50000, 60000, 70000, 1, 0, -1, 2147483647, -2147483647 - 1}) {
        EXPECT_FALSE(m_app.loadRRSString(id, buffer, 50, -1)) << id;
        EXPECT_STREQ(buffer, L"untouched");
    }
    EXPECT_EQ(string(50001), L"first of the low range");
    EXPECT_EQ(string(59999), L"last of the low range");
    EXPECT_EQ(string(60001), L"Failure");
    EXPECT_EQ(string(69999), L"last of the high range");
    EXPECT_FALSE(m_app.loadRRSString(55555, buffer, 50, -1));
}

TEST_F(ExtAppTest, StringsAreCutToTheBuffer)
{
    openResources(frameResources());
    for (const int size : {7, 8, 9}) {
        wchar_t buffer[12];
        std::fill(std::begin(buffer), std::end(buffer), L'#');
        EXPECT_TRUE(m_app.loadRRSString(60001, buffer, size, -1));
        EXPECT_EQ(std::wstring(buffer),
                  std::wstring(L"Failure").substr(0, static_cast<size_t>(size - 1)));
        EXPECT_EQ(buffer[size], L'#');
    }
}

TEST_F(ExtAppTest, WithoutResourcesThereAreNoStringsPicturesOrBitmaps)
{
    wchar_t buffer[10] = L"before";
    EXPECT_FALSE(m_app.loadRRSString(60001, buffer, 10, -1));
    EXPECT_STREQ(buffer, L"before");
    openResources(frameResources());
    OviAPI::Picture picture;
    EXPECT_FALSE(m_app.loadRRSPicture(60001, &picture, -1));
    EXPECT_FALSE(m_app.loadRRSBitmap(60001, &picture, -1));
}

TEST_F(ExtAppTest, KeptRolesAreNotInTheOrderOfTheFonts)
{
    // Kept: role 2 is the third font of the record and role 3 the second.
    EXPECT_EQ(m_app.fontForRole(1), &m_app.ownRecord.FontControls);
    EXPECT_EQ(m_app.fontForRole(2), &m_app.ownRecord.FontEdits);
    EXPECT_EQ(m_app.fontForRole(3), &m_app.ownRecord.FontTree);
}

TEST_F(ExtAppTest, OtherRolesHaveNoFont)
{
    for (const int role : {0, 4, -1, 2147483647})
        EXPECT_EQ(m_app.fontForRole(role), nullptr);
    m_app.record = nullptr;
    EXPECT_EQ(m_app.fontForRole(1), nullptr);
}

TEST_F(ExtAppTest, ATypicalErrorShowsItsTitleAndText)
{
    openResources(frameResources());
    UiDriver::answerMessageBox(MsgBox::Ok);
    m_app.showTypicalError(69999);
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Failure");
    EXPECT_EQ(UiDriver::lastBoxText(), L"last of the high range");
    EXPECT_EQ(UiDriver::lastBoxButtons().find(L'|'), std::wstring::npos);
}

TEST_F(ExtAppTest, ATypicalErrorWithoutItsStringsShowsNothing)
{
    openResources(frameResources());
    m_app.showTypicalError(55555);
    ResourceBuilder untitled;
    untitled.addString(60002, L"text");
    openResources(untitled);
    m_app.showTypicalError(60002);
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
}

TEST_F(ExtAppTest, AConfirmationIsTrueForYesOnly)
{
    openResources(frameResources());
    const std::pair<int, bool> answers[] = {{MsgBox::Yes, true}, {MsgBox::No, false}, {-1, false}};
    for (const auto& [button, expected] : answers) {
        UiDriver::answerMessageBox(button);
        EXPECT_EQ(m_app.requestConfirm(50001), expected);
        EXPECT_EQ(UiDriver::lastBoxTitle(), L"Confirm");
        EXPECT_EQ(UiDriver::lastBoxText(), L"first of the low range");
        EXPECT_NE(UiDriver::lastBoxButtons().find(L'|'), std::wstring::npos);
    }
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
}

TEST_F(ExtAppTest, AConfirmationWithoutItsStringsAnswersNoWithoutAsking)
{
    openResources(frameResources());
    EXPECT_FALSE(m_app.requestConfirm(55555));
    ResourceBuilder untitled;
    untitled.addString(60002, L"text");
    openResources(untitled);
    EXPECT_FALSE(m_app.requestConfirm(60002));
}

TEST_F(ExtAppTest, AskingToSaveNamesTheThing)
{
    openResources(frameResources());
    UiDriver::answerMessageBox(MsgBox::Yes);
    EXPECT_TRUE(m_app.askToSave(L"table 1"));
    EXPECT_EQ(UiDriver::lastBoxTitle(), L"Question");
    EXPECT_EQ(UiDriver::lastBoxText(), L"Save changes to table 1?");
    UiDriver::answerMessageBox(MsgBox::No);
    EXPECT_FALSE(m_app.askToSave(nullptr));
    EXPECT_EQ(UiDriver::lastBoxText(), L"Save changes to ?");
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
}

TEST_F(ExtAppTest, AskingToSaveWithoutItsStringsShowsEmptyText)
{
    openResources(ResourceBuilder());
    UiDriver::answerMessageBox(MsgBox::Yes);
    EXPECT_TRUE(m_app.askToSave(L"table 1"));
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
    EXPECT_EQ(UiDriver::lastBoxText(), L"");
}

TEST_F(ExtAppTest, AFormatFromTheResourcesIsNeverAProgram)
{
    const std::pair<const wchar_t*, const wchar_t*> formats[] = {
        {L"%n%n %d %100000000d %ls %ls", L"%n%n %d %100000000d %s%n %ls"},
        {L"no placeholder", L"no placeholder"},
        {L"100%% of %s, %", L"100% of %s%n, %"},
    };
    for (const auto& [format, expected] : formats) {
        ResourceBuilder resources;
        resources.addString(60504, format);
        openResources(resources);
        UiDriver::answerMessageBox(MsgBox::No);
        m_app.askToSave(L"%s%n");
        EXPECT_EQ(UiDriver::lastBoxText(), expected);
    }
}

TEST_F(ExtAppTest, AQuestionIsCutAt8191Characters)
{
    ResourceBuilder resources;
    resources.addString(60504, L"%ls");
    openResources(resources);
    for (const size_t n : {8190U, 8191U, 8192U, 50000U}) {
        UiDriver::answerMessageBox(MsgBox::No);
        m_app.askToSave(std::wstring(n, L'x').c_str());
        EXPECT_EQ(UiDriver::lastBoxText().size(), std::min<size_t>(n, 8191)) << n;
    }
}

TEST_F(ExtAppTest, LongTitlesAndTextsAreCutToTheirBuffers)
{
    ResourceBuilder resources;
    resources.addString(60001, std::wstring(300, L't').c_str());
    resources.addString(60002, std::wstring(5000, L'x').c_str());
    openResources(resources);
    UiDriver::answerMessageBox(MsgBox::Ok);
    m_app.showTypicalError(60002);
    EXPECT_EQ(UiDriver::lastBoxTitle().size(), 255U);
    EXPECT_EQ(UiDriver::lastBoxText().size(), 4095U);
}
