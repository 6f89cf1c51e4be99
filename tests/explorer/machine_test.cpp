// What is read of the machine's own tables.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "explorer/calendar.h"
#include "explorer/changelog.h"
#include "explorer/debiandata.h"
#include "explorer/files.h"
#include "explorer/geodata.h"
#include "explorer/json.h"
#include "explorer/machinedata.h"
#include "explorer/measurements.h"
#include "support.h"

namespace fs = std::filesystem;

namespace {

MachineData fixtures()
{
    return MachineData(fixtureFolder() / "machine");
}

std::vector<ChangelogRelease> releasesOf(const fs::path& path)
{
    std::vector<ChangelogRelease> releases;
    LineFile file(path);
    ChangelogReader reader;
    for (std::string line; file.next(line);) {
        if (auto release = reader.line(line))
            releases.push_back(std::move(*release));
    }
    return releases;
}

TEST(DpkgStatus, KeepsInstalledPackagesOnly)
{
    const auto packages = fixtures().packages();
    ASSERT_EQ(packages.size(), 3U);
    EXPECT_EQ(packages[0].name, "apple");
    EXPECT_EQ(packages[1].name, "pear");
    EXPECT_EQ(packages[2].name, "quince");
}

TEST(DpkgStatus, ReadsTheFieldsOfAPackage)
{
    const DebianPackage apple = fixtures().packages().at(0);
    EXPECT_EQ(apple.version, "3.134");
    EXPECT_EQ(apple.section, "admin");
    EXPECT_EQ(apple.priority, "required");
    EXPECT_EQ(apple.architecture, "all");
    EXPECT_EQ(apple.maintainer, "Apple Growers <apple@example.org>");
    EXPECT_EQ(apple.homepage, "https://example.org/apple");
    EXPECT_TRUE(apple.essential);
    EXPECT_EQ(apple.installedKib, 686);
    EXPECT_EQ(apple.source, "apple");
}

TEST(DpkgStatus, UnfoldsTheDescription)
{
    const DebianPackage apple = fixtures().packages().at(0);
    EXPECT_EQ(apple.summary, "fruit that keeps the doctor away");
    EXPECT_EQ(apple.description, "The first line of the longer text.\n"
                                 " - a point, indented by one more blank\n"
                                 "\n"
                                 "After an empty line.");
}

TEST(DpkgStatus, TakesTheVersionOffTheSourceName)
{
    const auto packages = fixtures().packages();
    EXPECT_EQ(packages.at(1).source, "orchard");
    EXPECT_EQ(packages.at(2).source, "orchard");
}

TEST(DpkgStatus, ASizeThatIsNoNumberIsUnknown)
{
    const auto packages = fixtures().packages();
    EXPECT_FALSE(packages.at(1).installedKib);
    EXPECT_FALSE(packages.at(2).installedKib);
}

TEST(DpkgStatus, ReadsCarriageReturnsAndAMissingLastLineFeed)
{
    const auto packages = parseDpkgStatus("Package: a\r\nStatus: install ok installed\r\n\r\n"
                                          "Package: b\r\nStatus: hold ok installed");
    ASSERT_EQ(packages.size(), 2U);
    EXPECT_EQ(packages[1].name, "b");
}

TEST(DpkgStatus, NonsenseGivesNoPackages)
{
    EXPECT_TRUE(parseDpkgStatus("").empty());
    EXPECT_TRUE(parseDpkgStatus(" folded\n\n::\nno colon\n").empty());
}

TEST(Dependencies, AlternativesShareAGroup)
{
    const auto all = fixtures().packages().at(0).dependencies;
    ASSERT_EQ(all.size(), 6U);
    EXPECT_EQ(all[0].kind, "Pre-Depends");
    EXPECT_EQ(all[1].package, "pear");
    EXPECT_EQ(all[1].group, 1);
    EXPECT_EQ(all[1].relation, ">=");
    EXPECT_EQ(all[1].version, "1:2.0~rc1");
    EXPECT_EQ(all[2].package, "quince");
    EXPECT_EQ(all[2].group, 1);
    EXPECT_EQ(all[2].relation, "");
    EXPECT_EQ(all[3].package, "libcore"); // ":any" is taken off
    EXPECT_EQ(all[3].group, 2);
    EXPECT_EQ(all[4].package, "plum"); // on a folded line
    EXPECT_EQ(all[4].version, "9");
    EXPECT_EQ(all[5].kind, "Suggests");
}

TEST(Dependencies, EmptyMembersAreLeftOut)
{
    EXPECT_TRUE(parseDependencies("Depends", " , | ,(>= 1)").empty());
    EXPECT_EQ(parseDependencies("Depends", "a (").size(), 1U);
}

TEST(FileLists, AreFoundWithAndWithoutArchitecture)
{
    const MachineData machine = fixtures();
    const auto packages = machine.packages();
    EXPECT_EQ(machine.fileList(packages.at(0))->files, 4);
    EXPECT_EQ(machine.fileList(packages.at(1))->files, 2);
    EXPECT_FALSE(machine.fileList(packages.at(2)));
}

TEST(FileLists, ANameThatLeavesTheFolderIsNotFollowed)
{
    DebianPackage package;
    package.name = "../info/apple";
    package.architecture = "all";
    EXPECT_FALSE(fixtures().fileList(package));
    EXPECT_TRUE(fixtures().changelog(package).empty());
}

TEST(Changelog, ReadsReleasesOfAPlainFile)
{
    const MachineData machine = fixtures();
    const auto releases = releasesOf(machine.changelog(machine.packages().at(0)));
    ASSERT_EQ(releases.size(), 2U);
    EXPECT_EQ(releases[0].source, "apple");
    EXPECT_EQ(releases[0].version, "3.134");
    EXPECT_EQ(releases[0].distribution, "unstable");
    EXPECT_EQ(releases[0].urgency, "medium");
    EXPECT_EQ(releases[0].maintainer, "Apple Growers");
    EXPECT_EQ(isoText(releases[0].released.value()), "2022-11-15 07:12:31");
    EXPECT_EQ(releases[1].urgency, "low");
    EXPECT_EQ(isoText(releases[1].released.value()), "1969-12-31 23:30:00");
}

TEST(Changelog, ReadsACompressedFile)
{
    const MachineData machine = fixtures();
    const auto releases = releasesOf(machine.changelog(machine.packages().at(1)));
    ASSERT_EQ(releases.size(), 2U);
    EXPECT_EQ(releases[0].version, "1:2.1-3");
    EXPECT_EQ(isoText(releases[1].released.value()), "2020-03-01 04:59:59");
}

TEST(Changelog, ADayThatDoesNotExistGivesNoDate)
{
    const MachineData machine = fixtures();
    const auto releases = releasesOf(machine.changelog(machine.packages().at(1)));
    EXPECT_FALSE(releases.at(0).released);
}

TEST(MailDate, UnderstandsTheUsualForms)
{
    const CalendarTime noon{2004, 2, 29, 12, 0, 0};
    EXPECT_EQ(parseMailDate("Sun, 29 Feb 2004 12:00:00 +0000"), noon);
    EXPECT_EQ(parseMailDate("29 Feb 2004 12:00:00 +0000"), noon);
    EXPECT_EQ(parseMailDate("  Sun,  29 February  2004 12:00 GMT "), noon);
    EXPECT_EQ(parseMailDate("Sun, 29 Feb 2004 17:30:00 +0530"), noon);
}

TEST(MailDate, RefusesEverythingElse)
{
    for (const char* text : {"", "Sun,", "Sun, 31 Feb 2004 12:00:00 +0000", "1 Foo 2004 12:00:00",
                             "1 Jan 2004 24:00:00", "1 Jan 99999 12:00:00", "-1 Jan 2004 12:00:00",
                             "1 Jan 2004", "99999999999 Jan 2004 12:00:00"})
        EXPECT_FALSE(parseMailDate(text)) << text;
}

TEST(Calendar, TurnsSecondsIntoDatesAndBack)
{
    EXPECT_EQ(isoText(calendarTime(0)), "1970-01-01 00:00:00");
    EXPECT_EQ(isoText(calendarTime(-1)), "1969-12-31 23:59:59");
    EXPECT_EQ(isoText(calendarTime(951868799)), "2000-02-29 23:59:59");
    EXPECT_EQ(isoText(calendarTime(INT64_MIN)), "0001-01-01 00:00:00");
    EXPECT_EQ(isoText(calendarTime(INT64_MAX)), "9999-12-31 23:59:59");
    EXPECT_EQ(secondsOf(calendarTime(1234567890)), 1234567890);
}

TEST(LineFile, CutsLongLinesAndKeepsTheRest)
{
    const TemporaryFolder folder;
    const fs::path path = folder.path() / "long";
    std::ofstream(path) << std::string(5000, 'x') << "\nend";
    LineFile file(path);
    std::string line;
    ASSERT_TRUE(file.next(line));
    EXPECT_EQ(line.size(), 4095U);
    ASSERT_TRUE(file.next(line));
    EXPECT_EQ(line.size(), 905U);
    ASSERT_TRUE(file.next(line));
    EXPECT_EQ(line, "end");
    EXPECT_FALSE(file.next(line));
}

TEST(LineFile, DoesNotOpenFoldersPipesAndMissingFiles)
{
    const TemporaryFolder folder;
    const fs::path pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(LineFile(pipe).isOpen());
    EXPECT_FALSE(LineFile(folder.path()).isOpen());
    EXPECT_FALSE(LineFile(folder.path() / "none").isOpen());
    EXPECT_FALSE(readWholeFile(pipe, 100));
    EXPECT_FALSE(readWholeFile(folder.path() / "none", 100));
}

TEST(WholeFile, StopsAtItsLimit)
{
    const TemporaryFolder folder;
    const fs::path path = folder.path() / "file";
    std::ofstream(path) << "12345";
    EXPECT_EQ(readWholeFile(path, 5), "12345");
    EXPECT_FALSE(readWholeFile(path, 4));
}

TEST(Countries, ComeFromTheJsonTableFirst)
{
    const auto countries = fixtures().countries();
    ASSERT_EQ(countries.size(), 3U);
    EXPECT_EQ(countries[0].code3, "ARG");
    EXPECT_EQ(countries[0].officialName, "Argentine Republic");
    EXPECT_EQ(countries[0].flag, "\xF0\x9F\x87\xA6\xF0\x9F\x87\xB7"); // from surrogate pairs
    EXPECT_EQ(countries[1].officialName, "");
}

TEST(Countries, TheTextTableServesWithoutJson)
{
    const auto countries = parseCountryTable("# x\nCI\tC\xC3\xB4te d'Ivoire\nXXX\tlong\nAA\t\n");
    ASSERT_EQ(countries.size(), 1U);
    EXPECT_EQ(countries[0].name, "C\xC3\xB4te d'Ivoire");
}

TEST(Subdivisions, ReadNamesAndParents)
{
    const auto parts = fixtures().subdivisions();
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].name, "\xD0\x9C\xD0\xBE\xD1\x81\xD0\xBA\xD0\xB2\xD0\xB0");
    EXPECT_EQ(parts[1].parent, "AR-W");
}

TEST(Zones, ReadBothFormsOfCoordinates)
{
    const auto zones = fixtures().zones();
    ASSERT_EQ(zones.size(), 3U);
    EXPECT_NEAR(zones[0].latitude, 55.755833, 1e-6);
    EXPECT_NEAR(zones[0].longitude, 37.617778, 1e-6);
    EXPECT_NEAR(zones[1].latitude, -34.6, 1e-9);
    EXPECT_NEAR(zones[1].longitude, -58.45, 1e-9);
    EXPECT_EQ(zones[2].country, "AQ"); // the first of several
    EXPECT_EQ(zones[0].comment, "MSK+00 - Moscow area");
}

TEST(Zones, RefuseImpossibleCoordinates)
{
    double degrees = 0;
    for (const char* text : {"", "5545", "+55", "+5560", "+55456x", "+12345678", "+55-5"})
        EXPECT_FALSE(parseDegrees(text, degrees)) << text;
}

TEST(Zones, RulesStayBelowTheirFolder)
{
    TimeZone zone;
    zone.name = "Europe/Moscow";
    EXPECT_EQ(fixtures().zoneRules(zone), "TZif2-moscow");
    zone.name = "../zoneinfo/Europe/Moscow";
    EXPECT_EQ(fixtures().zoneRules(zone), "");
}

TEST(LeapSeconds, AddUp)
{
    const auto seconds = fixtures().leapSeconds();
    ASSERT_EQ(seconds.size(), 2U);
    EXPECT_EQ(seconds[1].sum, 2);
    EXPECT_EQ(isoText(seconds[1].inserted), "1972-12-31 00:00:00");
}

TEST(Machine, WithoutAnyTablesGivesNoRows)
{
    const TemporaryFolder folder;
    const MachineData machine(folder.path());
    EXPECT_TRUE(machine.packages().empty());
    EXPECT_TRUE(machine.countries().empty());
    EXPECT_TRUE(machine.subdivisions().empty());
    EXPECT_TRUE(machine.zones().empty());
    EXPECT_TRUE(machine.leapSeconds().empty());
}

TEST(JsonReader, ReadsEscapes)
{
    const auto json = Json::parse(R"( {"a": "\"\\\/\b\f\n\r\t\u00e9", "n": -1.5e3, "l": [true]} )");
    ASSERT_TRUE(json);
    EXPECT_EQ(json->text("a"), "\"\\/\b\f\n\r\t\xC3\xA9");
    EXPECT_EQ(json->text("n"), "");
    EXPECT_EQ(json->text("missing"), "");
    ASSERT_TRUE(json->member("l"));
    EXPECT_EQ(json->member("l")->array()->size(), 1U);
}

TEST(JsonReader, RefusesWhatIsNotJson)
{
    for (const char* text : {"", "{", "[1,", "{\"a\"}", "{\"a\":1}x", "\"open", "\"\\u12\"",
                             "\"\\x\"", "{1:2}", "[1 2]"})
        EXPECT_FALSE(Json::parse(text)) << text;
}

TEST(JsonReader, RefusesDeepNesting)
{
    EXPECT_TRUE(Json::parse(std::string(60, '[') + "1" + std::string(60, ']')));
    EXPECT_FALSE(Json::parse(std::string(300000, '[')));
}

TEST(Measurements, AreTheSameInEveryRun)
{
    MeasurementSeries first;
    MeasurementSeries second;
    for (int i = 0; i < 100; ++i) {
        const Measurement a = first.next();
        const Measurement b = second.next();
        EXPECT_EQ(a.temperature, b.temperature);
        EXPECT_EQ(a.pressure, b.pressure);
        EXPECT_EQ(a.frame, b.frame);
    }
}

TEST(Measurements, HaveGapsAndStayInRange)
{
    MeasurementSeries series;
    int withoutPressure = 0;
    int rainy = 0;
    for (int i = 0; i < MeasurementSeries::rows; ++i) {
        const Measurement reading = series.next();
        EXPECT_TRUE(std::abs(reading.temperature) < 50);
        EXPECT_GE(reading.visitors, 0);
        EXPECT_EQ(reading.station, i % 4 + 1);
        withoutPressure += reading.pressure ? 0 : 1;
        rainy += reading.rainHundredths.value_or(0) > 0 ? 1 : 0;
    }
    EXPECT_GT(withoutPressure, 300);
    EXPECT_GT(rainy, 1000);
}

} // namespace
