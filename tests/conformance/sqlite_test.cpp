// What only a file has: a disk that is full under it, pages that are damaged.
#include <filesystem>
#include <fstream>

#include "../support/smalldisk.h"
#include "support.h"

using namespace Conformance;

namespace {

class File : public ::testing::Test {
protected:
    File()
        : place(Engine::Sqlite)
        , own(place)
        , other(place)
    {
        own.execute("CREATE TABLE n(id INTEGER PRIMARY KEY, s VARCHAR(400))");
        own.execute("INSERT INTO n WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c "
                    "WHERE i < 100) SELECT i, 'row ' || i FROM c");
    }
    int codeOfExecute(const std::string& sql)
    {
        return codeOf([&] { own.execute(sql); });
    }
    std::filesystem::path folder() const
    {
        return std::filesystem::path(place.database()).parent_path();
    }

    Place place;
    Client own;
    Client other;
};

} // namespace

TEST_F(File, AFullDiskIsToldAndWhatWasThereStays)
{
    if (!SmallDisk::isHere()) {
        if (!SmallDisk::isPossible())
            GTEST_SKIP() << "this user may mount nothing here, not even in a namespace of its own";
        EXPECT_EQ(SmallDisk::runThisTest(), 0);
        return;
    }
    const std::string large = "INSERT INTO n VALUES (200, '" + std::string(30'000, 'x') + "')";
    own.execute("SELECT id, s FROM n");
    own.cursor.fetch(FetchFirst, 0);
    SmallDisk::fill(folder());
    EXPECT_EQ(codeOf([&] {
                  own.cursor.execute(
                      ("UPDATE n SET s='" + std::string(30'000, 'x') + "' WHERE CURRENT OF CURSOR;")
                          .c_str());
              }),
              CodeDiskFull);
    EXPECT_EQ(text(own.cursor, 2), "row 1");
    EXPECT_EQ(codeOfExecute(large), CodeDiskFull);
    EXPECT_EQ(own.value("SELECT count(*) FROM n WHERE s LIKE 'row %'"), "100");
    SmallDisk::empty(folder());
    own.execute("BEGIN");
    own.execute("DELETE FROM n WHERE id = 100");
    SmallDisk::fill(folder());
    EXPECT_EQ(codeOfExecute(large), CodeDiskFull);
    EXPECT_FALSE(own.connection.inTransaction()); // the engine has rolled it back
    EXPECT_EQ(other.value("SELECT count(*) FROM n"), "100");
    SmallDisk::empty(folder());
    own.execute(large);
    EXPECT_EQ(other.value("SELECT count(*) FROM n"), "101");
}

TEST_F(File, ADamagedPageIsToldWhereItIsMet)
{
    own.execute("UPDATE n SET s = substr('" + std::string(300, 'x') + "', 1, 300) || id");
    other.execute("SELECT id, s FROM n");
    other.cursor.fetch(FetchFirst, 0);
    const auto size = std::filesystem::file_size(place.database());
    constexpr size_t damaged = 8192; // bytes, the pages of the last rows
    ASSERT_GT(size, 2 * damaged);
    std::fstream file(place.database(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(size - damaged));
    file << std::string(damaged, '\xFF');
    file.close();
    own.execute("CREATE TABLE more(a)"); // the other session's pages are old now
    EXPECT_EQ(codeOf([&] { other.cursor.fetch(FetchAbsolute, 100); }), CodeCorruptFile);
    EXPECT_EQ(codeOf([&] { other.execute("DELETE FROM n WHERE id = 100"); }), CodeCorruptFile);
    Client fresh(place);
    EXPECT_EQ(codeOf([&] { fresh.execute("SELECT id, s FROM n"); }), CodeCorruptFile);
    EXPECT_EQ(fresh.answer("SELECT id FROM n WHERE id = 1"), std::vector<std::string>{"1"});
}
