// Default settings by screen size and the adaptation of the options to the screen.
#include <ctime>
#include <limits>

#include <gtest/gtest.h>

#include <oviapi/systemmetrics.h>

#include "tests/app/dialogs.h"
#include "tests/app/support.h"

namespace {

using XMLUtils::XMLElementA;
using XMLUtils::XMLEncoding;

int screenWidth()
{
    return static_cast<int>(OviAPI::SystemMetrics::getAvailableRect().width());
}

int screenHeight()
{
    return static_cast<int>(OviAPI::SystemMetrics::getAvailableRect().height());
}

TerminalDesc terminal(int width, int height)
{
    TerminalDesc t;
    t.ScreenWidth = width;
    t.ScreenHeight = height;
    return t;
}

TerminalDesc present()
{
    return terminal(screenWidth(), screenHeight());
}

std::string config(long long width, long long height, const std::string& sections)
{
    return element("Config", terminalElement(width, height) + sections);
}

// A section that makes the main form as wide as the number.
std::string section(const char* name, int width)
{
    return element(name, element("Options", rectElement(0, 0, width, 100)));
}

std::string index(const std::string& configs)
{
    return document("\n" + configs, "ConfigsIndex");
}

class Adapt : public testing::Test {
protected:
    // Options of the user's own, made for this screen.
    void useOwnOptions(const TerminalDesc& madeFor)
    {
        m_app.ownRecord.initDefaults();
        m_app.ownRecord.TermDesc = madeFor;
        m_app.freshOptions = false;
    }
    void useFreshOptions()
    {
        m_app.ownRecord.initDefaults();
        m_app.freshOptions = true;
    }
    long long formWidth() const { return m_app.ownRecord.MainFormRect.width(); }

    TestFolders m_folders;
    TestApp m_app;
    int m_asked = 0;
};

class AdaptWithStrings : public Adapt {
protected:
    AdaptWithStrings()
    {
        m_folders.writeResources(frameResources());
        m_app.initResourceManager();
    }
    void answer(const wchar_t* button, bool remember)
    {
        answerConfirmation(m_asked, [button, remember](YesNoConfirmDlg& dialog) {
            EXPECT_NE(childWithText<OviAPI::WStatic>(dialog, L"Adapt to this screen?"), nullptr);
            if (remember)
                UiDriver::click(*childWithText<OviAPI::WCheckBox>(dialog, L"&Remember"), 8);
            childWithText<OviAPI::WButton>(dialog, button)->push();
        });
    }
};

} // namespace

TEST(ScreenDistance, IsTheSquareOfTheDifferenceOfTheSizes)
{
    EXPECT_EQ(screenDistance(terminal(797, 796), terminal(800, 800)), 25);
    EXPECT_EQ(screenDistance(terminal(800, 800), terminal(800, 800)), 0);
}

TEST(ScreenDistance, ALargerScreenIsFarthestAway)
{
    EXPECT_EQ(screenDistance(terminal(801, 800), terminal(800, 800)), farthestScreen);
    EXPECT_EQ(screenDistance(terminal(1, 801), terminal(800, 800)), farthestScreen);
}

TEST(ScreenDistance, ExtremeSizesDoNotOverflow)
{
    constexpr int lowest = std::numeric_limits<int32_t>::min();
    constexpr int highest = std::numeric_limits<int32_t>::max();
    EXPECT_GT(screenDistance(terminal(lowest, lowest), terminal(highest, highest)), 3e19);
    EXPECT_EQ(screenDistance(terminal(highest, 0), terminal(lowest, 0)), farthestScreen);
}

TEST_F(Adapt, TheSearchWithoutAFileFindsNothing)
{
    EXPECT_EQ(m_app.searchDefaultConfigSection(), nullptr);
}

TEST_F(Adapt, TheSearchInABadFileFindsNothing)
{
    const std::string good = config(100, 100, section("OVIAPI", 300));
    const std::string contents[] = {
        "",
        "<ConfigsIndex>",
        document(good, "Other"),
        index(good) + "<More/>",
        index(good + "<Config>"),
        index(""),
        "<?xml version=\"1.0\" encoding=\"no-such-code\"?>" + element("ConfigsIndex", good),
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>" + element("ConfigsIndex", good),
    };
    for (const std::string& content : contents) {
        m_folders.writeDefaults(content);
        EXPECT_EQ(m_app.searchDefaultConfigSection(), nullptr) << content;
    }
}

TEST_F(Adapt, TheSearchTakesTheClosestScreen)
{
    m_folders.writeDefaults(
        index(config(100, 100, section("OVIAPI", 301)) +
              config(screenWidth() - 5, screenHeight(), section("OVIAPI", 302)) +
              config(200, 200, section("OVIAPI", 303))));
    const auto found = m_app.searchDefaultConfigSection();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->terminal, terminal(screenWidth() - 5, screenHeight()));
    EXPECT_EQ(found->encoding, XMLEncoding::Utf8);
}

TEST_F(Adapt, ASectionForAScreenOnePixelWiderIsNeverTaken)
{
    m_folders.writeDefaults(
        index(config(screenWidth() + 1, screenHeight(), section("OVIAPI", 301)) +
              config(screenWidth(), screenHeight() + 1, section("OVIAPI", 302))));
    EXPECT_EQ(m_app.searchDefaultConfigSection(), nullptr);
    m_folders.writeDefaults(
        index(config(screenWidth() + 1, screenHeight(), section("OVIAPI", 301)) +
              config(1, 1, section("OVIAPI", 302))));
    const auto found = m_app.searchDefaultConfigSection();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->terminal, terminal(1, 1));
}

TEST_F(Adapt, OfTwoScreensAtEqualDistanceTheFirstWins)
{
    const std::string narrow =
        config(screenWidth() - 3, screenHeight() - 4, section("OVIAPI", 301));
    const std::string low = config(screenWidth() - 4, screenHeight() - 3, section("OVIAPI", 302));
    m_folders.writeDefaults(index(narrow + low));
    EXPECT_EQ(m_app.searchDefaultConfigSection()->terminal,
              terminal(screenWidth() - 3, screenHeight() - 4));
    m_folders.writeDefaults(index(low + narrow));
    EXPECT_EQ(m_app.searchDefaultConfigSection()->terminal,
              terminal(screenWidth() - 4, screenHeight() - 3));
}

TEST_F(Adapt, ConfigsOfOneScreenGatherIntoOneEntry)
{
    const std::string first = element(
        "OVIAPI", element("Options", number("A", 1) + number("B", 2)) + element("Other", "x"));
    const std::string second =
        element("OVIAPI", element("Options", number("B", 3) + number("C", 4)));
    m_folders.writeDefaults(index(config(50, 50, first) + config(60, 1, section("OVIAPI", 5)) +
                                  config(50, 50, second)));
    const auto found = m_app.searchDefaultConfigSection();
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->terminal, terminal(50, 50));
    ASSERT_EQ(found->elements.count(), 2U);
    EXPECT_EQ(found->elements[0],
              parsed(element("Options", number("A", 1) + number("B", 3) + number("C", 4))));
    EXPECT_EQ(found->elements[1].name(), "Other");
    EXPECT_EQ(found->find("Other"), &found->elements[1]);
    EXPECT_EQ(found->find("None"), nullptr);
}

TEST_F(Adapt, TheApplicationsOwnSectionIsMergedIntoTheCommonOne)
{
    m_folders.writeDefaults(
        index(config(50, 50,
                     element("sample", element("Options", number("B", 3))) +
                         element("OVIAPI", element("Options", number("A", 1) + number("B", 2))) +
                         element("foreign", element("Options", number("D", 9))))));
    const auto found = m_app.searchDefaultConfigSection();
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->elements.count(), 1U);
    EXPECT_EQ(found->elements[0], parsed(element("Options", number("A", 1) + number("B", 3))));
}

TEST_F(Adapt, ConfigsWithoutATerminalOrSettingsAreLeftOut)
{
    const std::string configs =
        element("Config", section("OVIAPI", 1)) +
        element("Config", element("TermDesc", number("ScreenWidth", 5)) + section("OVIAPI", 2)) +
        element("Config",
                element("TermDesc", number("ScreenWidth", 5) + element("ScreenHeight", "5x")) +
                    section("OVIAPI", 3)) +
        config(6, 6, "") + config(7, 7, element("OVIAPI", "text")) +
        config(8, 8, section("foreign", 4));
    m_folders.writeDefaults(index(configs));
    EXPECT_EQ(m_app.searchDefaultConfigSection(), nullptr);
}

TEST_F(Adapt, TheNameOfTheApplicationIsCutAt256Bytes)
{
    for (const size_t n : {255U, 256U, 257U, 1000U}) {
        m_app.name = std::wstring(n, L'n');
        const std::string used(std::min<size_t>(n, 256), 'n');
        m_folders.writeDefaults(index(config(50, 50, section(used.c_str(), 5))));
        EXPECT_NE(m_app.searchDefaultConfigSection(), nullptr) << n;
    }
    m_app.name = std::wstring(1, L'a') + std::wstring(200, L'\u0416'); // 401 bytes
    std::string cut = "a";
    for (int i = 0; i < 127; ++i)
        cut += "\xD0\x96";
    m_folders.writeDefaults(index(config(50, 50, section(cut.c_str(), 5))));
    EXPECT_NE(m_app.searchDefaultConfigSection(), nullptr);
}

TEST_F(Adapt, TheNameOfTheApplicationIsFoundInEveryLocale)
{
    m_app.name = L"\u0416\u00e9";
    m_folders.writeDefaults(index(config(50, 50, section("\xD0\x96\xC3\xA9", 5))));
    for (const char* name : {"C.UTF-8", "C"}) {
        const ScopedLocale locale(name);
        EXPECT_NE(m_app.searchDefaultConfigSection(), nullptr) << name;
    }
}

TEST_F(Adapt, TenThousandConfigsAreSearchedInBoundedTime)
{
    std::string configs;
    for (int i = 0; i < 10000; ++i)
        configs += config(i % 700, i / 700, section("OVIAPI", 200));
    m_folders.writeDefaults(index(configs));
    const std::clock_t start = std::clock(); // processor time
    const auto found = m_app.searchDefaultConfigSection();
    const std::clock_t taken = std::clock() - start;
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->terminal.ScreenWidth, 699);
    EXPECT_LT(taken, 10 * CLOCKS_PER_SEC);
}

TEST_F(Adapt, TheDefaultsFileCutAtAnyByteIsReadOrRefused)
{
    const std::string whole =
        index(config(50, 50, section("OVIAPI", 300) + section("sample", 310)));
    for (size_t length = 0; length < whole.size(); ++length) {
        m_folders.writeDefaults(std::string_view(whole).substr(0, length));
        useFreshOptions();
        EXPECT_FALSE(m_app.adaptToTD()) << length;
    }
    m_folders.writeDefaults(whole);
    useFreshOptions();
    EXPECT_TRUE(m_app.adaptToTD());
    EXPECT_EQ(formWidth(), 310);
}

TEST_F(Adapt, HostileTerminalsAndRectanglesAreRefused)
{
    constexpr long long lowest = std::numeric_limits<int32_t>::min();
    constexpr long long highest = std::numeric_limits<int32_t>::max();
    const std::string far =
        element("OVIAPI", element("Options", rectElement(lowest, lowest, highest, highest)));
    m_folders.writeDefaults(index(config(lowest, lowest, far) + config(highest, highest, far) +
                                  config(lowest, highest, far) + config(1, 1, far)));
    useFreshOptions();
    EXPECT_TRUE(m_app.adaptToTD());
    EXPECT_EQ(m_app.ownRecord.MainFormRect, (OviAPI::Rect{100, 100, 740, 580}));
}

TEST_F(Adapt, OptionsMadeForThisScreenAreKeptWithoutReadingTheDefaults)
{
    m_folders.writeDefaults(index(config(screenWidth(), screenHeight(), section("OVIAPI", 300))));
    useOwnOptions(present());
    m_app.nameAsked = 0;
    EXPECT_FALSE(m_app.adaptToTD());
    EXPECT_EQ(m_app.nameAsked, 0);
    EXPECT_EQ(formWidth(), 640);
}

TEST_F(Adapt, TheCurrentTerminalIsSet)
{
    TerminalDesc::current() = TerminalDesc();
    useOwnOptions(present());
    m_app.adaptToTD();
    EXPECT_EQ(TerminalDesc::current(), present());
}

TEST_F(Adapt, OnAFirstRunTheDefaultsAreTakenWithoutAQuestion)
{
    m_folders.writeDefaults(index(config(10, 10, section("OVIAPI", 300))));
    useFreshOptions();
    EXPECT_TRUE(m_app.adaptToTD());
    EXPECT_EQ(formWidth(), 300);
    EXPECT_EQ(m_app.ownRecord.TermDesc, present());
    EXPECT_TRUE(m_app.freshOptions);
    EXPECT_EQ(m_app.adaptDecision, TypicalConfirm::Ask);
}

TEST_F(Adapt, OnAFirstRunDefaultsThatAreExactlyAsCloseAreTaken)
{
    m_folders.writeDefaults(
        index(config(screenWidth() - 3, screenHeight() - 4, section("OVIAPI", 300))));
    useFreshOptions();
    m_app.ownRecord.TermDesc = terminal(screenWidth() - 4, screenHeight() - 3);
    EXPECT_TRUE(m_app.adaptToTD());
    EXPECT_EQ(formWidth(), 300);
}

TEST_F(Adapt, OnAFirstRunOnAScreenThatFitsTheDefaultsExactlyTheyAreTaken)
{
    m_folders.writeDefaults(index(config(screenWidth(), screenHeight(), section("OVIAPI", 300))));
    useFreshOptions();
    m_app.ownRecord.TermDesc = present();
    EXPECT_TRUE(m_app.adaptToTD());
    EXPECT_EQ(formWidth(), 300);
}

TEST_F(Adapt, OnAFirstRunWithoutFittingDefaultsTheOptionsBecomeThoseOfThisScreen)
{
    const std::string contents[] = {
        "",
        index(config(screenWidth() + 1, 1, section("OVIAPI", 300))),
        index(config(10, 10, element("OVIAPI", element("Other", "x")))),
    };
    for (const std::string& content : contents) {
        m_folders.writeDefaults(content);
        useFreshOptions();
        EXPECT_FALSE(m_app.adaptToTD()) << content;
        EXPECT_FALSE(m_app.freshOptions);
        EXPECT_EQ(m_app.ownRecord.TermDesc, present());
        EXPECT_EQ(formWidth(), 640);
    }
}

TEST_F(Adapt, OwnOptionsThatAreCloserThanTheDefaultsAreKept)
{
    m_folders.writeDefaults(
        index(config(screenWidth() - 3, screenHeight() - 4, section("OVIAPI", 300))));
    for (const TerminalDesc& madeFor : {terminal(screenWidth() - 1, screenHeight()),
                                        terminal(screenWidth() - 4, screenHeight() - 3)}) {
        useOwnOptions(madeFor);
        m_app.adaptDecision = TypicalConfirm::Yes;
        EXPECT_FALSE(m_app.adaptToTD());
        EXPECT_EQ(formWidth(), 640);
        EXPECT_EQ(m_app.ownRecord.TermDesc, present());
    }
}

TEST_F(Adapt, WithoutAnOptionsRecordNothingIsAdapted)
{
    m_app.record = nullptr;
    EXPECT_FALSE(m_app.adaptToTD());
    EXPECT_FALSE(m_app.confirmAdaptToTD());
    EXPECT_EQ(m_app.adaptDecision, TypicalConfirm::Ask);
}

TEST_F(AdaptWithStrings, OwnOptionsAreAdaptedWhenTheUserSaysYes)
{
    m_folders.writeDefaults(index(config(10, 10, section("OVIAPI", 300))));
    useOwnOptions(terminal(screenWidth() + 1, 1));
    answer(L"&Yes", false);
    EXPECT_TRUE(m_app.adaptToTD());
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(formWidth(), 300);
    EXPECT_EQ(m_app.ownRecord.TermDesc, present());
    EXPECT_EQ(m_app.adaptDecision, TypicalConfirm::Yes);
    EXPECT_EQ(m_app.ownRecord.AdaptToTD.Value, TypicalConfirm::Ask);
    EXPECT_FALSE(m_app.freshOptions);
}

TEST_F(AdaptWithStrings, OwnOptionsAreKeptWhenTheUserSaysNo)
{
    m_folders.writeDefaults(index(config(10, 10, section("OVIAPI", 300))));
    useOwnOptions(TerminalDesc());
    answer(L"&No", false);
    EXPECT_FALSE(m_app.adaptToTD());
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(formWidth(), 640);
    EXPECT_EQ(m_app.ownRecord.TermDesc, present());
    EXPECT_EQ(m_app.adaptDecision, TypicalConfirm::No);
}

TEST_F(AdaptWithStrings, TheUserIsAskedOnceInARun)
{
    useOwnOptions(TerminalDesc());
    answer(L"&Yes", false);
    EXPECT_TRUE(m_app.confirmAdaptToTD());
    EXPECT_TRUE(m_app.confirmAdaptToTD());
    m_app.adaptDecision = TypicalConfirm::No;
    EXPECT_FALSE(m_app.confirmAdaptToTD());
    EXPECT_EQ(m_asked, 1);
}

TEST_F(AdaptWithStrings, ARememberedAnswerIsSavedWithTheOptions)
{
    const std::pair<const wchar_t*, int> answers[] = {{L"&Yes", TypicalConfirm::Yes},
                                                      {L"&No", TypicalConfirm::No}};
    for (const auto& [button, expected] : answers) {
        m_app.adaptDecision = TypicalConfirm::Ask;
        useOwnOptions(TerminalDesc());
        answer(button, true);
        EXPECT_EQ(m_app.confirmAdaptToTD(), expected == TypicalConfirm::Yes);
        m_app.saveOptions();
        m_app.loadOptions();
        EXPECT_EQ(m_app.ownRecord.AdaptToTD.Value, expected);
    }
    EXPECT_EQ(m_asked, 2);
}

TEST_F(Adapt, AnAnswerOfTheOptionsIsTakenWithoutAQuestion)
{
    for (const int stored : {TypicalConfirm::Yes, TypicalConfirm::No}) {
        m_app.adaptDecision = TypicalConfirm::Ask;
        useOwnOptions(TerminalDesc());
        m_app.ownRecord.AdaptToTD.Value = stored;
        EXPECT_EQ(m_app.confirmAdaptToTD(), stored == TypicalConfirm::Yes);
        EXPECT_EQ(m_app.adaptDecision, stored);
    }
}

TEST_F(AdaptWithStrings, ClosingTheQuestionKeepsTheOptions)
{
    useOwnOptions(TerminalDesc());
    answerConfirmation(m_asked, [](YesNoConfirmDlg& dialog) { UiDriver::closeWindow(dialog); });
    EXPECT_FALSE(m_app.confirmAdaptToTD());
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(m_app.adaptDecision, TypicalConfirm::No);
}

TEST_F(AdaptWithStrings, StartUpAdaptsTheOptionsOfAnotherScreen)
{
    m_folders.writeDefaults(index(config(10, 10, section("sample", 333))));
    TypicalOptions saved;
    saved.initDefaults();
    saved.TermDesc = terminal(screenWidth() + 200, screenHeight());
    m_app.ownRecord = saved;
    m_app.saveOptions();
    answer(L"&Yes", false);
    EXPECT_TRUE(m_app.initApplication(0, nullptr));
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(formWidth(), 333);
}
