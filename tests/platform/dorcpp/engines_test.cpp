// The list of engines says what can be opened.
#include <dorcpp/engines.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <dorcpp/connect.h>
#include <unistd.h>

using namespace DorCPP;

TEST(Engines, DatabasesInFilesAreOpenedByTheirScheme)
{
    const auto file = std::filesystem::temp_directory_path() /
                      ("engines_test." + std::to_string(getpid()) + ".db");
    for (const Engine& engine : engines()) {
        if (engine.place != Engine::File)
            continue;
        DorConnect connection;
        const std::string name = engine.scheme + std::string(":") + file.string();
        EXPECT_GT(connection.createCS("", "", name.c_str(), "create", 0, false, false), 0) << name;
        connection.close();
        EXPECT_TRUE(std::filesystem::remove(file)) << name;
    }
}

TEST(Engines, TheEmbeddedOneIsOfferedFirst)
{
    ASSERT_FALSE(engines().empty());
    EXPECT_STREQ(engines().front().scheme, "sqlite");
    EXPECT_EQ(engines().front().place, Engine::File);
}

TEST(Engines, EachIsListedOnce)
{
    std::vector<std::string> schemes;
    for (const Engine& engine : engines()) {
        EXPECT_STRNE(engine.title, "");
        schemes.emplace_back(engine.scheme);
    }
    std::sort(schemes.begin(), schemes.end());
    EXPECT_EQ(std::adjacent_find(schemes.begin(), schemes.end()), schemes.end());
}

TEST(Engines, AServerWithoutADriverIsRefusedByName)
{
    DorConnect connection;
    try {
        connection.createCS("", "", "nosuchengine://host/db", "", 0, false, false);
        FAIL() << "opened";
    } catch (const DorX& x) {
        EXPECT_EQ(x.code(), CodeCannotOpen);
        EXPECT_NE(std::string(x.what()).find("nosuchengine"), std::string::npos) << x.what();
    }
}
