// The sample database, made of the fixtures.
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include <dorcpp/dorx.h>
#include <oviapi/text.h>

#include "database.h"
#include "explorer/samplebuilder.h"
#include "support.h"

namespace fs = std::filesystem;

namespace {

class SampleDatabase : public testing::Test {
protected:
    static void build(const fs::path& root, const fs::path& target)
    {
        SampleBuilder builder{MachineData(root), target};
        int percent = 0;
        while (builder.step()) {
            EXPECT_GE(builder.percent(), percent);
            percent = builder.percent();
        }
        EXPECT_EQ(builder.percent(), 100);
    }
    fs::path path() const { return m_folder.path() / "data" / "sample.db"; }
    void buildFixtures() { build(fixtureFolder() / "machine", path()); }

    TemporaryFolder m_folder;
};

TEST_F(SampleDatabase, HoldsPackagesWithTheirSectionsAndSources)
{
    buildFixtures();
    TestDatabase database(path());
    EXPECT_EQ(database.rows("SELECT package.name, section.name, source.name, essential, size_kib, "
                            "size_mib, files FROM package "
                            "JOIN section ON section.id = section_id "
                            "JOIN source ON source.id = source_id ORDER BY package.id"),
              (std::vector<std::string>{"apple|admin|apple|1|686|0.67|4",
                                        "pear|libs|orchard|0|NULL|NULL|2",
                                        "quince|libs|orchard|0|NULL|NULL|NULL"}));
}

TEST_F(SampleDatabase, LinksDependenciesToInstalledPackages)
{
    buildFixtures();
    TestDatabase database(path());
    EXPECT_EQ(
        database.rows("SELECT dependency.name, package.name FROM dependency "
                      "LEFT JOIN package ON package.id = target_id WHERE kind = 'Depends' "
                      "ORDER BY dependency.id"),
        (std::vector<std::string>{"pear|pear", "quince|quince", "libcore|NULL", "plum|NULL"}));
}

TEST_F(SampleDatabase, ReadsTheChangeLogOfASourceOnce)
{
    buildFixtures();
    TestDatabase database(path());
    EXPECT_EQ(database.rows("SELECT source.name, version, released FROM release "
                            "JOIN source ON source.id = source_id ORDER BY release.id"),
              (std::vector<std::string>{"apple|3.134|2022-11-15 07:12:31",
                                        "apple|3.133|1969-12-31 23:30:00", "orchard|1:2.1-3|NULL",
                                        "orchard|1:2.0-1|2020-03-01 04:59:59"}));
}

TEST_F(SampleDatabase, HoldsPlacesInTheirOwnScripts)
{
    buildFixtures();
    TestDatabase database(path());
    EXPECT_EQ(database.value("SELECT name FROM subdivision WHERE code = 'RU-MOW'"),
              OviAPI::wideToLocale(L"\u041C\u043E\u0441\u043A\u0432\u0430"));
    EXPECT_EQ(database.value("SELECT count(*) FROM country"), "3");
    EXPECT_EQ(database.value("SELECT country, length(rules) FROM zone "
                             "WHERE name = 'Europe/Moscow'"),
              "RU|12");
    EXPECT_EQ(database.value("SELECT max(total) FROM leap_second"), "2");
}

TEST_F(SampleDatabase, HoldsMeasurementsOnEveryMachine)
{
    build(m_folder.path() / "nothing", path());
    TestDatabase database(path());
    EXPECT_EQ(database.value("SELECT count(*), count(DISTINCT station_id) FROM measurement"),
              "20000|4");
    EXPECT_EQ(database.value("SELECT count(*) FROM package"), "0");
    EXPECT_EQ(database.value("SELECT count(*) > 300 FROM measurement WHERE pressure IS NULL"), "1");
    EXPECT_EQ(database.value("SELECT min(taken) FROM measurement"), "2020-01-01 00:00:00");
}

TEST_F(SampleDatabase, KeepsItsForeignKeys)
{
    buildFixtures();
    TestDatabase database(path());
    EXPECT_TRUE(database
                    .rows("SELECT * FROM dependency WHERE package_id NOT IN "
                          "(SELECT id FROM package)")
                    .empty());
    EXPECT_TRUE(database
                    .rows("SELECT * FROM release WHERE source_id NOT IN "
                          "(SELECT id FROM source)")
                    .empty());
    EXPECT_TRUE(database
                    .rows("SELECT * FROM zone WHERE country NOT IN "
                          "(SELECT code FROM country)")
                    .empty());
}

TEST_F(SampleDatabase, HasViewsThatAnswer)
{
    buildFixtures();
    TestDatabase database(path());
    EXPECT_EQ(database.rows("SELECT section, packages FROM size_by_section"),
              (std::vector<std::string>{"admin|1", "libs|2"}));
    EXPECT_EQ(database.rows("SELECT * FROM most_needed"),
              (std::vector<std::string>{"pear|1", "quince|1"}));
    EXPECT_FALSE(database.rows("SELECT * FROM measurement_by_day").empty());
    EXPECT_FALSE(database.rows("SELECT * FROM releases_by_month").empty());
    EXPECT_EQ(database.rows("SELECT name, source FROM package_overview").size(), 3U);
}

TEST_F(SampleDatabase, TakesItsNameOnlyWhenItIsComplete)
{
    {
        SampleBuilder builder{MachineData(fixtureFolder() / "machine"), path()};
        builder.step();
        builder.step();
        EXPECT_FALSE(fs::exists(path()));
        EXPECT_FALSE(fs::is_empty(path().parent_path()));
    }
    EXPECT_TRUE(fs::is_empty(path().parent_path())); // nothing is left of the unfinished one
}

TEST_F(SampleDatabase, ReplacesTheOneBefore)
{
    buildFixtures();
    TestDatabase(path()).execute("DELETE FROM package");
    buildFixtures();
    EXPECT_EQ(TestDatabase(path()).value("SELECT count(*) FROM package"), "3");
}

TEST_F(SampleDatabase, RemovesWhatKilledProgramsLeft)
{
    fs::create_directories(path().parent_path());
    const fs::path stale = path().string() + ".999999999.part";
    const fs::path living = path().string() + "." + std::to_string(getppid()) + ".part";
    const fs::path foreign = path().string() + ".mine.part";
    for (const fs::path& file : {stale, living, foreign})
        std::ofstream(file) << "x";
    buildFixtures();
    EXPECT_FALSE(fs::exists(stale));
    EXPECT_TRUE(fs::exists(living));
    EXPECT_TRUE(fs::exists(foreign));
}

TEST_F(SampleDatabase, CannotBeMadeWhereAFileStandsInTheWay)
{
    std::ofstream(m_folder.path() / "data") << "not a folder";
    SampleBuilder builder{MachineData(fixtureFolder() / "machine"), path()};
    EXPECT_ANY_THROW(builder.step());
}

TEST(SamplePath, FollowsTheDesktopsRules)
{
    setenv("XDG_DATA_HOME", "/somewhere", 1);
    EXPECT_EQ(sampleDatabasePath(), "/somewhere/oviexplorer/sample.db");
    setenv("XDG_DATA_HOME", "relative", 1);
    setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(sampleDatabasePath(), "/home/someone/.local/share/oviexplorer/sample.db");
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(sampleDatabasePath(), "/home/someone/.local/share/oviexplorer/sample.db");
}

} // namespace
