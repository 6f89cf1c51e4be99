// What needs no window: SQL texts, numbers, names, arguments, options.
#include <fstream>

#include <gtest/gtest.h>

#include <oviapi/text.h>
#include <xmlutils/element.h>

#include "explorer/arguments.h"
#include "explorer/exploreroptions.h"
#include "explorer/gotorowdialog.h"
#include "explorer/mainstatus.h"
#include "explorer/opendialog.h"
#include "explorer/sqltext.h"
#include "explorer/textlookup.h"
#include "explorer/tour.h"
#include "support.h"

namespace {

constexpr auto utf8 = static_cast<XMLUtils::XMLEncoding>(1);

TEST(SqlText, DoublesQuotesInsideNames)
{
    EXPECT_EQ(quotedName(L"package"), L"\"package\"");
    EXPECT_EQ(quotedName(L"a\"b"), L"\"a\"\"b\"");
    EXPECT_EQ(quotedName(L"\"\""), L"\"\"\"\"\"\"");
    EXPECT_EQ(quotedName(L""), L"\"\"");
}

TEST(SqlText, NamesTheTableOnceInEachStatement)
{
    EXPECT_EQ(selectAllText(tableReference(L"", L"x; drop table y")),
              L"SELECT * FROM \"x; drop table y\"");
    EXPECT_EQ(countText(tableReference(L"main", L"a\"b")),
              L"SELECT count(*) FROM \"main\".\"a\"\"b\"");
}

TEST(GroupedNumber, PutsNoBreakSpacesBetweenThousands)
{
    EXPECT_EQ(groupedNumber(0), L"0");
    EXPECT_EQ(groupedNumber(999), L"999");
    EXPECT_EQ(groupedNumber(1000), L"1\u00A0000");
    EXPECT_EQ(groupedNumber(1234567), L"1\u00A0234\u00A0567");
    EXPECT_EQ(groupedNumber(-1000), L"-1\u00A0000");
}

TEST(RowNumber, AcceptsNumbersOfTheTableOnly)
{
    EXPECT_EQ(rowNumberIn(L"1", 10), 1);
    EXPECT_EQ(rowNumberIn(L" 10 ", 10), 10);
    EXPECT_EQ(rowNumberIn(L"1\u00A0000", 1000), 1000);
    for (const wchar_t* text :
         {L"", L" ", L"0", L"11", L"-1", L"1.5", L"ten", L"99999999999999999999999999"})
        EXPECT_FALSE(rowNumberIn(text, 10)) << OviAPI::wideToUtf8(text);
    EXPECT_FALSE(rowNumberIn(L"7", 3));
    EXPECT_EQ(rowNumberIn(L"9223372036854775807", INT64_MAX), INT64_MAX);
}

TEST(DatabaseName, StartsRelativePathsAtTheDirectory)
{
    EXPECT_EQ(resolvedDatabaseName(L"a.db", L"/data"), L"/data/a.db");
    EXPECT_EQ(resolvedDatabaseName(L"a.db", L"/"), L"/a.db");
    EXPECT_EQ(resolvedDatabaseName(L"a.db", L""), L"a.db");
    EXPECT_EQ(resolvedDatabaseName(L"  /x/y z.db\n", L"/data"), L"/x/y z.db");
    EXPECT_EQ(resolvedDatabaseName(L"sqlite:b.db", L"/data"), L"sqlite:b.db");
    EXPECT_EQ(resolvedDatabaseName(L"postgresql://host/db", L"/data"), L"postgresql://host/db");
    EXPECT_EQ(resolvedDatabaseName(L" \t ", L"/data"), L"");
}

TEST(DatabaseName, TildeStandsForTheHomeFolder)
{
    setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(resolvedDatabaseName(L"~/a.db", L"/data"), L"/home/someone/a.db");
}

TEST(StatusFields, GetWhatTheyWantAndTheDatabaseTheRest)
{
    const auto widths = statusWidths({100, 50, 80, 60, 90}, 600);
    EXPECT_EQ(widths, (std::array<int, 5>{600 - 50 - 80 - 60 - 90, 50, 80, 60, 90}));
}

TEST(StatusFields, ShareWhatIsLeftWhenTheLineIsShort)
{
    const auto widths = statusWidths({900, 50, 80, 900, 70}, 500);
    EXPECT_EQ(widths[MainStatus::Database], 100);
    EXPECT_EQ(widths[MainStatus::Value], 200);
}

TEST(StatusFields, NeverTakeMoreThanThereIs)
{
    for (const int width : {0, 1, 100, 640}) {
        int all = 0;
        for (const int each : statusWidths({900, 500, 800, 900, 700}, width)) {
            EXPECT_GE(each, 0);
            all += each;
        }
        EXPECT_EQ(all, width);
    }
}

Arguments parsed(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "oviexplorer");
    return Arguments::parse(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Arguments, AreReadInAnyOrder)
{
    const Arguments all = parsed({"a b.db", "--config-dir=/c", "--tour=/t=1"});
    EXPECT_EQ(all.database, "a b.db");
    EXPECT_EQ(all.configDir, "/c");
    EXPECT_EQ(all.tour, "/t=1");
    EXPECT_EQ(all.fault, "");
}

TEST(Arguments, ADoubleHyphenEndsTheOptions)
{
    EXPECT_EQ(parsed({"--", "--tour=x"}).database, "--tour=x");
    EXPECT_EQ(parsed({"-"}).database, "-");
}

TEST(Arguments, FaultsAreNamed)
{
    EXPECT_NE(parsed({"--colour=red"}).fault, "");
    EXPECT_NE(parsed({"--tour="}).fault, "");
    EXPECT_NE(parsed({"--tour"}).fault, "");
    EXPECT_NE(parsed({"a.db", "b.db"}).fault, "");
}

TEST(TourFolder, IsMade)
{
    const TemporaryFolder folder;
    const auto path = folder.path() / "a" / "b";
    EXPECT_EQ(Tour::folderFault(path), "");
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST(TourFolder, IsRefusedWithAReasonWhereItCannotBeMade)
{
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "file") << "x";
    EXPECT_NE(Tour::folderFault(folder.path() / "file" / "below"), "");
    EXPECT_NE(Tour::folderFault(folder.path() / "file"), "");
    EXPECT_NE(Tour::folderFault("/proc/tour"), "");
}

TEST(ExplorerOptions, ComeBackAsTheyWereWritten)
{
    ExplorerOptions written;
    written.initDefaults();
    written.LastDatabase = L"/data/\u0431\u0430\u0437\u0430 <&>.db";
    written.Splitter = 333;
    written.FontGrid = {L"Courier", 14, true, false, true, false};
    written.setLastLoadDirectory(L"/data");
    XMLUtils::XMLElementA element("Options");
    written.serialize(element, utf8);
    ExplorerOptions read;
    read.deserialize(element, utf8);
    EXPECT_TRUE(read == written);
}

TEST(ExplorerOptions, KeepTheKeysOfTheirBase)
{
    ExplorerOptions options;
    options.initDefaults();
    XMLUtils::XMLElementA element("Options");
    options.serialize(element, utf8);
    EXPECT_EQ(element.getAttribute("ClassName"), "TypicalOptions");
    EXPECT_EQ(element.child(0).name(), "Language");
    EXPECT_NE(element.findChild("AdaptToTD"), nullptr);
    EXPECT_NE(element.findChild("Splitter"), nullptr);
}

TEST(ExplorerOptions, EveryBadKeyFallsBackAlone)
{
    ExplorerOptions options;
    options.initDefaults();
    options.LastDatabase = L"/kept.db";
    XMLUtils::XMLElementA element("Options");
    options.serialize(element, utf8);
    for (const char* bad : {"x", "5", "99999", ""}) {
        element.getChild("Splitter").setText(bad);
        element.getChild("FontGrid").getChild("Size").setText("x");
        ExplorerOptions read;
        read.deserialize(element, utf8);
        EXPECT_EQ(read.Splitter, ExplorerOptions::DefaultSplitter) << bad;
        EXPECT_EQ(read.FontGrid.size(), 10);
        EXPECT_EQ(read.LastDatabase, L"/kept.db");
    }
}

TEST(ExplorerOptions, AreCompleteWhenNothingCanBeRead)
{
    ExplorerOptions read;
    read.deserialize(XMLUtils::XMLElementA("Options"), utf8);
    EXPECT_EQ(read.LastDatabase, L"");
    EXPECT_EQ(read.Splitter, ExplorerOptions::DefaultSplitter);
    EXPECT_EQ(read.FontGrid.name(), L"Helvetica");
}

} // namespace
