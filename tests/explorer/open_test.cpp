// Opening what is and what is not a database.
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <oviapi/text.h>

#include "database.h"
#include "explorer/databasesession.h"
#include "support.h"

namespace fs = std::filesystem;

namespace {

class Opening : public testing::Test {
protected:
    fs::path file(const char* name) const { return m_folder.path() / name; }
    fs::path fileWith(const char* name, const std::string& bytes) const
    {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }
    // The reason of the failure; 0 when it was opened.
    static int reasonOf(const std::string& name)
    {
        try {
            DatabaseSession session(name);
            return 0;
        } catch (const OpenFailure& failure) {
            return failure.reason();
        }
    }

    TemporaryFolder m_folder;
};

TEST_F(Opening, AMissingFileIsNamed)
{
    EXPECT_EQ(reasonOf(file("none.db")), TextErrorMissing);
    EXPECT_FALSE(fs::exists(file("none.db"))); // and not made
    EXPECT_EQ(reasonOf(fileWith("plain", "x").string() + "/below.db"), TextErrorMissing);
}

TEST_F(Opening, AnEmptyNameIsNamed)
{
    EXPECT_EQ(reasonOf(""), TextErrorEmptyName);
}

TEST_F(Opening, AFolderIsNamed)
{
    EXPECT_EQ(reasonOf(m_folder.path()), TextErrorFolder);
}

TEST_F(Opening, APipeIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(reasonOf(file("pipe")), TextErrorNotFile);
    EXPECT_EQ(reasonOf("/dev/null"), TextErrorNotFile);
}

TEST_F(Opening, ATextFileIsNotADatabase)
{
    EXPECT_EQ(reasonOf(fileWith("text", std::string(5000, 'x'))), TextErrorNotDatabase);
}

TEST_F(Opening, ADamagedDatabaseIsRefused)
{
    std::string bytes = std::string("SQLite format 3") + '\0' + std::string(8000, '\xFF');
    EXPECT_EQ(reasonOf(fileWith("damaged", bytes)), TextErrorNotDatabase);
}

TEST_F(Opening, AnEmptyFileIsADatabaseWithoutTables)
{
    DatabaseSession session(fileWith("empty", "").string());
    EXPECT_TRUE(session.tables().empty());
}

TEST_F(Opening, ALockedDatabaseIsReportedInTime)
{
    TestDatabase other(file("locked.db"));
    other.execute("CREATE TABLE t (a INTEGER)");
    other.execute("BEGIN EXCLUSIVE");
    EXPECT_EQ(reasonOf(file("locked.db")), TextErrorLocked);
}

// Root may read everything, so another user looks at the file.
TEST_F(Opening, AFileWithoutTheRightToReadItIsRefused)
{
    const fs::path path = fileWith("secret", "");
    fs::permissions(path, fs::perms::none);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        if (getuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
            _exit(1);
        _exit(reasonOf(path) == TextErrorPermission ? 0 : 2);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(Opening, AFolderThatMayNotBeEnteredIsRefused)
{
    fs::create_directory(file("closed"));
    fs::permissions(file("closed"), fs::perms::none);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        if (getuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
            _exit(1);
        _exit(reasonOf(file("closed") / "a.db") == TextErrorPermission ? 0 : 2);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(Opening, ListsTablesBeforeViewsByName)
{
    TestDatabase made(file("a.db"));
    made.execute("CREATE TABLE zebra (a INTEGER)");
    made.execute("CREATE TABLE \"Apple \"\"pie\"\"\" (a INTEGER PRIMARY KEY AUTOINCREMENT)");
    made.execute("CREATE VIEW aview AS SELECT * FROM zebra");
    made.execute("CREATE INDEX i ON zebra (a)");
    DatabaseSession session(file("a.db"));
    EXPECT_EQ(session.tables(), (std::vector<DatabaseTable>{{L"Apple \"pie\"", false, L"main"},
                                                            {L"zebra", false, L"main"},
                                                            {L"aview", true, L"main"}}));
}

TEST_F(Opening, KeepsTheAbsolutePath)
{
    TestDatabase(file("b.db")).execute("CREATE TABLE t (a INTEGER)");
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    DatabaseSession plain("./b.db");
    DatabaseSession scheme("sqlite:b.db");
    fs::current_path(before);
    EXPECT_EQ(plain.name(), file("b.db").string());
    EXPECT_EQ(scheme.name(), "sqlite:" + file("b.db").string());
    EXPECT_EQ(scheme.path(), file("b.db").string());
    EXPECT_EQ(plain.displayName(), L"b.db");
}

TEST_F(Opening, AcceptsNamesOfEveryScript)
{
    const fs::path path = file("\xD0\xB1\xD0\xB0\xD0\xB7\xD0\xB0 & 100%.db");
    TestDatabase(path).execute("CREATE TABLE t (a INTEGER)");
    DatabaseSession session(path);
    EXPECT_EQ(session.tables().size(), 1U);
}

TEST(DatabasePath, IsWhatStandsBehindTheScheme)
{
    EXPECT_EQ(databasePath("/a/b.db"), "/a/b.db");
    EXPECT_EQ(databasePath("sqlite:/a/b.db"), "/a/b.db");
    EXPECT_EQ(databasePath("sqlite:/a/b.db?mode=ro"), "/a/b.db");
    EXPECT_EQ(databasePath("postgresql://host/db"), "");
}

} // namespace
