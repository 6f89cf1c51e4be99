#include "app/typicaloptions.h"

#include <limits>
#include <random>

#include <gtest/gtest.h>

#include <oviapi/systemmetrics.h>
#include <xmlutils/exception.h>

#include "tests/app/support.h"

namespace {

using XMLUtils::XMLElementA;
using XMLUtils::XMLEncoding;

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

OviAPI::Rect area()
{
    return OviAPI::SystemMetrics::getAvailableRect();
}

int areaWidth()
{
    return static_cast<int>(area().width());
}

int areaHeight()
{
    return static_cast<int>(area().height());
}

TypicalOptions defaults()
{
    TypicalOptions options;
    options.initDefaults();
    return options;
}

TypicalOptions readFrom(const std::string& content)
{
    TypicalOptions options;
    options.LastAction = TypicalOptions::SaveAction;
    options.LastLoadDirectory = L"before";
    options.MainFormRect = {1, 2, 3, 4};
    options.deserialize(parsed(element("Options", content)), XMLEncoding::Utf8);
    return options;
}

// What an "Options" element without any key gives.
TypicalOptions fallbacks()
{
    TypicalOptions options = defaults();
    options.TermDesc = TerminalDesc();
    return options;
}

OviAPI::Rect rectFrom(long long left, long long top, long long right, long long bottom)
{
    return readFrom(rectElement(left, top, right, bottom)).MainFormRect;
}

std::vector<std::string> childNames(const XMLElementA& e)
{
    std::vector<std::string> names;
    for (size_t i = 0; i < e.childCount(); ++i)
        names.push_back(e.child(i).name());
    return names;
}

XMLElementA serialized(const XMLUtils::IXMLSerializableA& record)
{
    XMLElementA e("Record");
    record.serialize(e, XMLEncoding::Utf8);
    return e;
}

TypicalOptions unusualOptions()
{
    TypicalOptions options = defaults();
    options.Language = TypicalOptions::Koi8Language;
    options.MainFormRect = {area().left + 5, area().top + 6, area().left + 105, area().top + 96};
    options.MainFormMaximized = true;
    options.FontControls = {L"Some face <&>", 7, true, false, true, false};
    options.FontTree = {L"\u0428\u0440\u0438\u0444\u0442", -1, false, true, false, true};
    options.FontEdits = {L"", 0};
    options.setLastLoadDirectory(L"/home/a b/\u0416 <x>\n");
    options.setLastSaveDirectory(L"  leading and trailing  ");
    options.TermDesc.ScreenWidth = 1920;
    options.TermDesc.ScreenHeight = 1080;
    options.AdaptToTD.Value = TypicalConfirm::No;
    return options;
}

} // namespace

TEST(TypicalOptions, ANewRecordIsEmptyAndAsks)
{
    const TypicalOptions options;
    EXPECT_EQ(options.Language, TypicalOptions::DefaultLanguage);
    EXPECT_TRUE(options.FontControls.isEmpty());
    EXPECT_TRUE(options.LastLoadDirectory.empty());
    EXPECT_EQ(options.TermDesc, TerminalDesc());
    EXPECT_EQ(options.AdaptToTD.Value, TypicalConfirm::Ask);
    EXPECT_STREQ(options.lastUsedDirectory(), L"");
}

TEST(TypicalOptions, TheDefaultsAreThoseOfAScreenOf1200By900)
{
    const TypicalOptions options = defaults();
    EXPECT_EQ(options.Language, TypicalOptions::DefaultLanguage);
    EXPECT_EQ(options.MainFormRect, (OviAPI::Rect{100, 100, 740, 580}));
    EXPECT_FALSE(options.MainFormMaximized);
    EXPECT_EQ(options.FontControls, OviAPI::Font(L"Helvetica", 10));
    EXPECT_EQ(options.FontTree, OviAPI::Font(L"Helvetica", 12));
    EXPECT_EQ(options.FontEdits, OviAPI::Font(L"Helvetica", 12));
    EXPECT_EQ(options.LastAction, TypicalOptions::NoAction);
    EXPECT_EQ(options.TermDesc.ScreenWidth, 1200);
    EXPECT_EQ(options.TermDesc.ScreenHeight, 900);
    EXPECT_EQ(options.AdaptToTD.Value, TypicalConfirm::Ask);
}

TEST(TypicalOptions, DefaultsReplaceEverythingThatWasSet)
{
    TypicalOptions options = unusualOptions();
    options.initDefaults();
    EXPECT_EQ(options, defaults());
}

TEST(TypicalOptions, ACopyEqualsItsOriginal)
{
    const TypicalOptions original = unusualOptions();
    const TypicalOptions copy = original;
    TypicalOptions assigned;
    assigned = original;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(assigned, original);
    EXPECT_FALSE(original == defaults());
}

TEST(TypicalOptions, ElementsAreWrittenInTheirFixedOrder)
{
    const XMLElementA e = serialized(unusualOptions());
    EXPECT_EQ(e.getAttribute("ClassName"), "TypicalOptions");
    EXPECT_EQ(e.getAttribute("ClassVersion"), "1");
    EXPECT_EQ(childNames(e), (std::vector<std::string>{
                                 "Language", "MainFormRect", "MainFormMaximized", "FontControls",
                                 "FontTree", "FontEdits", "LastLoadDirectory", "LastSaveDirectory",
                                 "LastAction", "TermDesc", "AdaptToTD"}));
    const XMLElementA& rect = e.getChild("MainFormRect");
    EXPECT_EQ(rect.getAttribute("ClassName"), "Rect");
    EXPECT_EQ(childNames(rect), (std::vector<std::string>{"Left", "Right", "Top", "Bottom"}));
    const XMLElementA& font = e.getChild("FontTree");
    EXPECT_EQ(font.getAttribute("ClassName"), "Font");
    EXPECT_EQ(childNames(font), (std::vector<std::string>{"Name", "Size", "Bold", "Italic",
                                                          "Underline", "Strikeout"}));
    const XMLElementA& terminal = e.getChild("TermDesc");
    EXPECT_EQ(terminal.getAttribute("ClassName"), "TerminalDesc");
    EXPECT_EQ(childNames(terminal), (std::vector<std::string>{"ScreenWidth", "ScreenHeight"}));
    const XMLElementA& confirm = e.getChild("AdaptToTD");
    EXPECT_EQ(confirm.getAttribute("ClassName"), "TypicalConfirm");
    EXPECT_EQ(childNames(confirm), (std::vector<std::string>{"Value"}));
    for (const XMLElementA* part : {&rect, &font, &terminal, &confirm})
        EXPECT_EQ(part->getAttribute("ClassVersion"), "1");
}

TEST(TypicalOptions, ValuesAreWrittenAsDecimalNumbersAndFlags)
{
    const XMLElementA e = serialized(unusualOptions());
    EXPECT_EQ(e.getChild("Language").text(), "1");
    EXPECT_EQ(e.getChild("MainFormMaximized").text(), "1");
    EXPECT_EQ(e.getChild("LastAction").text(), "2");
    EXPECT_EQ(e.getChild("FontTree").getChild("Size").text(), "-1");
    EXPECT_EQ(e.getChild("FontTree").getChild("Bold").text(), "0");
    EXPECT_EQ(e.getChild("FontTree").getChild("Italic").text(), "1");
    EXPECT_EQ(e.getChild("FontControls").getChild("Name").text(), "Some face <&>");
    EXPECT_EQ(e.getChild("TermDesc").getChild("ScreenWidth").text(), "1920");
    EXPECT_EQ(e.getChild("AdaptToTD").getChild("Value").text(), "3");
}

TEST(TypicalOptions, SerializingAndDeserializingGivesAnEqualRecord)
{
    const TypicalOptions original = unusualOptions();
    TypicalOptions read;
    read.deserialize(serialized(original), XMLEncoding::Utf8);
    EXPECT_EQ(read, original);
}

TEST(TypicalOptions, TheClassVersionIsNotLookedAt)
{
    XMLElementA e = serialized(unusualOptions());
    e.setAttribute("ClassVersion", 99);
    e.setAttribute("ClassName", "Other");
    TypicalOptions read;
    read.deserialize(e, XMLEncoding::Utf8);
    EXPECT_EQ(read, unusualOptions());
}

TEST(TypicalOptions, AnElementWithOnlyALanguageGivesDefaultsForEverythingElse)
{
    const TypicalOptions options = readFrom(number("Language", 5));
    EXPECT_EQ(options.Language, TypicalOptions::DefaultLanguage);
    EXPECT_EQ(options, fallbacks());
    EXPECT_EQ(options.TermDesc.ScreenWidth, 0);
    EXPECT_EQ(options.TermDesc.ScreenHeight, 0);
}

TEST(TypicalOptions, EveryNumberButOneIsTheFirstLanguage)
{
    EXPECT_EQ(readFrom(number("Language", 1)).Language, TypicalOptions::Koi8Language);
    for (const long long value : {0LL, 2LL, -1LL, 2147483647LL, 4294967297LL})
        EXPECT_EQ(readFrom(number("Language", value)).Language, TypicalOptions::DefaultLanguage);
}

TEST(TypicalOptions, EachKeyFallsBackOnItsOwn)
{
    const std::string bad = element("Language", "x") + element("MainFormRect", "") +
                            element("MainFormMaximized", " 1") +
                            element("FontControls", "<Name/>") + element("LastAction", "1e0") +
                            element("TermDesc", "") + element("AdaptToTD", element("Value", "two"));
    const std::string good =
        fontElement("FontTree", "Courier", 9) + element("LastSaveDirectory", "/save");
    TypicalOptions expected = fallbacks();
    expected.FontTree = {L"Courier", 9, true, false, true, false};
    expected.LastSaveDirectory = L"/save";
    EXPECT_EQ(readFrom(bad + good), expected);
}

TEST(TypicalOptions, NumbersThatAreNotPlainIntegersAreBad)
{
    for (const char* text : {"", " 5", "5 ", "5x", "+1", "1.0", "1e3", "-0", "01", "0x1",
                             "2147483648", "-2147483649", "99999999999999999999"})
        EXPECT_EQ(readFrom(element("LastAction", text)).LastAction, TypicalOptions::NoAction)
            << text;
}

TEST(TypicalOptions, AnyNumberButZeroMaximizes)
{
    for (const long long value : {1LL, 2LL, -1LL, 2147483647LL})
        EXPECT_TRUE(readFrom(number("MainFormMaximized", value)).MainFormMaximized) << value;
    EXPECT_FALSE(readFrom(number("MainFormMaximized", 0)).MainFormMaximized);
}

TEST(TypicalOptions, ARectangleThatIsTooSmallGivesTheDefaultRectangle)
{
    EXPECT_EQ(rectFrom(0, 0, 5, 5), (OviAPI::Rect{100, 100, 740, 580}));
}

TEST(TypicalOptions, ARectangleMayBeTwiceAsLargeAsTheAreaAndNoLarger)
{
    const int w = areaWidth();
    const int h = areaHeight();
    EXPECT_EQ(rectFrom(0, 0, 2 * w, 100), (OviAPI::Rect{0, 0, 2 * w, 100}));
    EXPECT_EQ(rectFrom(0, 0, 2 * w + 1, 100), defaults().MainFormRect);
    EXPECT_EQ(rectFrom(0, 0, 100, 2 * h), (OviAPI::Rect{0, 0, 100, 2 * h}));
    EXPECT_EQ(rectFrom(0, 0, 100, 2 * h + 1), defaults().MainFormRect);
}

TEST(TypicalOptions, AnIncompleteRectangleGivesTheDefaultRectangle)
{
    const std::string rect =
        element("MainFormRect", number("Left", 5) + number("Top", 5) + number("Right", 50));
    EXPECT_EQ(readFrom(rect).MainFormRect, defaults().MainFormRect);
}

TEST(TypicalOptions, RectanglesAtTheEndsOfTheRangeAreRefusedWithoutOverflow)
{
    for (const int32_t left : {lowest, -1, highest})
        for (const int32_t right : {lowest, 1, highest})
            for (const int32_t top : {lowest, highest})
                for (const int32_t bottom : {lowest, highest})
                    EXPECT_EQ(rectFrom(left, top, right, bottom), defaults().MainFormRect);
}

TEST(IsValidGeometry, TenPixelsMustBeInsideTheArea)
{
    const OviAPI::Rect a = area();
    const int w = areaWidth();
    const int h = areaHeight();
    const int size = a.left + a.top + 100; // over the minimum on any screen
    EXPECT_TRUE(TypicalOptions::isValidGeometry(a.left + 10 - size, a.top, size, size));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(a.left + 9 - size, a.top, size, size));
    EXPECT_TRUE(TypicalOptions::isValidGeometry(a.left, a.top + 10 - size, size, size));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(a.left, a.top + 9 - size, size, size));
    EXPECT_TRUE(TypicalOptions::isValidGeometry(w - 10, 0, size, size));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(w - 9, 0, size, size));
    EXPECT_TRUE(TypicalOptions::isValidGeometry(0, h - 10, size, size));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(0, h - 9, size, size));
}

TEST(IsValidGeometry, KeptTheMinimumSizeIsTenMoreThanWhereTheAreaStarts)
{
    // Kept: sizes are compared with the area's left and top, which are often 0.
    const OviAPI::Rect a = area();
    EXPECT_TRUE(TypicalOptions::isValidGeometry(a.left, a.top, a.left + 10, a.top + 10));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(a.left, a.top, a.left + 9, a.top + 10));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(a.left, a.top, a.left + 10, a.top + 9));
}

TEST(IsValidGeometry, ExtremeNumbersDoNotOverflow)
{
    for (const int x : {lowest, 0, highest})
        for (const int width : {lowest, -1, 0, highest})
            EXPECT_FALSE(TypicalOptions::isValidGeometry(x, 0, width, 100));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(OviAPI::Rect{lowest, lowest, highest, highest}));
    EXPECT_FALSE(TypicalOptions::isValidGeometry(OviAPI::Rect{highest, highest, lowest, lowest}));
}

TEST(TypicalOptions, LastActionsOutsideTheListBecomeNone)
{
    for (const long long value : {-1LL, 3LL, 2147483647LL, -2147483648LL})
        EXPECT_EQ(readFrom(number("LastAction", value)).LastAction, TypicalOptions::NoAction);
    EXPECT_EQ(readFrom(number("LastAction", 2)).LastAction, TypicalOptions::SaveAction);
}

TEST(TypicalConfirm, ValuesOutsideTheListBecomeAsk)
{
    for (const long long value : {0LL, 4LL, -1LL, 2147483647LL})
        EXPECT_EQ(readFrom(element("AdaptToTD", number("Value", value))).AdaptToTD.Value,
                  TypicalConfirm::Ask)
            << value;
    for (const long long value : {1LL, 2LL, 3LL})
        EXPECT_EQ(readFrom(element("AdaptToTD", number("Value", value))).AdaptToTD.Value, value);
}

TEST(TypicalConfirm, AMissingOrBadValueBecomesAsk)
{
    TypicalConfirm confirm;
    for (const char* content : {"<C/>", "<C><Value>x</Value></C>", "<C><Value/></C>"}) {
        confirm.Value = TypicalConfirm::Yes;
        confirm.deserialize(parsed(content), XMLEncoding::Utf8);
        EXPECT_EQ(confirm.Value, TypicalConfirm::Ask) << content;
    }
}

TEST(TerminalDesc, AMissingOrBadChildThrowsAndChangesNothing)
{
    TerminalDesc terminal;
    terminal.ScreenWidth = 7;
    terminal.ScreenHeight = 8;
    for (const char* content :
         {"<T/>", "<T><ScreenWidth>5</ScreenWidth></T>",
          "<T><ScreenWidth>5</ScreenWidth><ScreenHeight>x</ScreenHeight></T>"}) {
        EXPECT_THROW(terminal.deserialize(parsed(content), XMLEncoding::Utf8),
                     XMLUtils::XMLException);
        EXPECT_EQ(terminal.ScreenWidth, 7);
        EXPECT_EQ(terminal.ScreenHeight, 8);
    }
}

TEST(TerminalDesc, TheCurrentTerminalIsOneInstance)
{
    EXPECT_EQ(&TerminalDesc::current(), &TerminalDesc::current());
}

TEST(TypicalOptions, TheLastUsedDirectoryIsThatOfTheLastAction)
{
    TypicalOptions options = defaults();
    options.setLastLoadDirectory(L"/load");
    EXPECT_STREQ(options.lastUsedDirectory(), L"/load");
    EXPECT_EQ(options.LastAction, TypicalOptions::LoadAction);
    options.setLastSaveDirectory(L"/save");
    EXPECT_STREQ(options.lastUsedDirectory(), L"/save");
    options.LastAction = TypicalOptions::NoAction;
    EXPECT_STREQ(options.lastUsedDirectory(), L"");
    options.setLastLoadDirectory(nullptr);
    EXPECT_STREQ(options.lastUsedDirectory(), L"");
}

TEST(TypicalOptions, FontSizesAreTakenAsTheyAre)
{
    for (const int32_t size : {0, -1, lowest, highest})
        EXPECT_EQ(readFrom(fontElement("FontEdits", "Courier", size)).FontEdits.size(), size);
    EXPECT_EQ(readFrom(fontElement("FontEdits", "Courier", 2147483648LL)).FontEdits,
              defaults().FontEdits);
}

TEST(TypicalOptions, FaceNamesAreCutAt1024Characters)
{
    for (const size_t n : {1023U, 1024U, 1025U, 100000U}) {
        TypicalOptions options = defaults();
        options.FontTree = {std::wstring(n, L'\u0416'), 12};
        const XMLElementA e = serialized(options);
        EXPECT_EQ(e.getChild("FontTree").getChild("Name").getString(XMLEncoding::Utf8),
                  std::wstring(std::min<size_t>(n, 1024), L'\u0416'));
        const std::string face(n, 'f');
        EXPECT_EQ(readFrom(fontElement("FontTree", face.c_str(), 12)).FontTree.name().size(),
                  std::min<size_t>(n, 1024));
    }
}

TEST(TypicalOptions, DefaultsForATerminalAreRelativeToTheAvailableArea)
{
    TypicalOptions options = unusualOptions();
    options.deserializeForTD(parsed(element("Options", rectElement(10, 20, 210, 220))),
                             XMLEncoding::Utf8);
    const OviAPI::Rect a = area();
    EXPECT_EQ(options.MainFormRect,
              (OviAPI::Rect{a.left + 10, a.top + 20, a.left + 210, a.top + 220}));
}

TEST(TypicalOptions, DefaultsForATerminalReplaceGeometryAndFontsOnly)
{
    TypicalOptions options = unusualOptions();
    options.deserializeForTD(
        parsed(element(
            "Options",
            number("Language", 0) + rectElement(10, 20, 210, 220) + number("MainFormMaximized", 0) +
                fontElement("FontControls", "Courier", 11) +
                fontElement("FontTree", "Courier", 12) + fontElement("FontEdits", "Courier", 13) +
                element("LastLoadDirectory", "/other") + element("LastSaveDirectory", "/other") +
                number("LastAction", 0) + terminalElement(1, 2) +
                element("AdaptToTD", number("Value", 2)))),
        XMLEncoding::Utf8);
    TypicalOptions expected = unusualOptions();
    expected.MainFormRect = options.MainFormRect;
    expected.MainFormMaximized = false;
    expected.FontControls = {L"Courier", 11, true, false, true, false};
    expected.FontTree = {L"Courier", 12, true, false, true, false};
    expected.FontEdits = {L"Courier", 13, true, false, true, false};
    EXPECT_EQ(options, expected);
    EXPECT_FALSE(options.MainFormRect == unusualOptions().MainFormRect);
}

TEST(TypicalOptions, DefaultsForATerminalThatAreMissingOrBadChangeNothing)
{
    const std::string contents[] = {
        "",
        rectElement(0, 0, 5, 5),
        rectElement(lowest, lowest, highest, highest),
        rectElement(highest, highest, highest, highest),
        element("MainFormRect", number("Left", 0)),
        element("MainFormMaximized", "no"),
        element("FontControls", element("Name", "Courier") + number("Size", 5)),
        element("FontTree", "text"),
    };
    for (const std::string& content : contents) {
        TypicalOptions options = unusualOptions();
        options.deserializeForTD(parsed(element("Options", content)), XMLEncoding::Utf8);
        EXPECT_EQ(options, unusualOptions()) << content;
    }
}

TEST(TypicalOptions, RandomTreesAreReadWithoutAnException)
{
    std::mt19937 random(7);
    const char* names[] = {"Language", "MainFormRect", "Left",      "Right",    "Top",
                           "Bottom",   "FontTree",     "Name",      "Size",     "Bold",
                           "Italic",   "Underline",    "Strikeout", "TermDesc", "AdaptToTD",
                           "Value",    "ScreenWidth"};
    const char* texts[] = {"", "0", "1", "-1", "2147483647", "-2147483648", "x", "\xD0\x96"};
    for (int i = 0; i < 3000; ++i) {
        XMLElementA root("Options");
        std::vector<XMLElementA*> nodes{&root};
        for (int k = 0; k < 20; ++k) {
            XMLElementA& parent = *nodes[random() % nodes.size()];
            XMLElementA& child = parent.addChild(names[random() % std::size(names)]);
            child.setText(texts[random() % std::size(texts)]);
            nodes.push_back(&child);
        }
        TypicalOptions options;
        options.deserialize(root, XMLEncoding::Utf8);
        options.deserializeForTD(root, XMLEncoding::Utf8);
        EXPECT_TRUE(TypicalOptions::isValidGeometry(options.MainFormRect));
        EXPECT_LE(options.LastAction, 2);
    }
}
