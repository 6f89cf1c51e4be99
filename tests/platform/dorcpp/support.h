// What the tests of the database client share.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <dorcpp/cursor.h>

namespace DorTest {

// A folder of the test's own, removed with everything in it.
class Folder {
public:
    Folder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "dorcpp_XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder");
        m_path = pattern;
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string file(std::string_view name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

inline void writeFile(const std::string& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// The code of the DorX that a call throws, 0 when it throws none.
template<class F>
int codeOf(F&& call)
{
    try {
        call();
    } catch (const DorCPP::DorX& x) {
        return x.code();
    }
    return 0;
}

template<class F>
std::string messageOf(F&& call)
{
    try {
        call();
    } catch (const DorCPP::DorX& x) {
        char text[65536];
        x.getMessage(text, sizeof text);
        return text;
    }
    return {};
}

inline void open(DorCPP::DorConnect& connection, const std::string& path,
                 const char* options = "create", int mode = 0)
{
    connection.createCS("user", "secret", path.c_str(), options, mode, false, true);
}

// The text of a column of the current row; "NULL" for null.
inline std::string text(DorCPP::DorCursor& cursor, int column)
{
    char buffer[4096];
    short null = 0;
    cursor.getData(column, DorCPP::TypeText, buffer, sizeof buffer, &null);
    return null ? "NULL" : buffer;
}

// Every row as its texts joined by '|'.
inline std::vector<std::string> rows(DorCPP::DorCursor& cursor)
{
    std::vector<std::string> all;
    for (int64_t row = 1; row <= cursor.selectRowCount(); ++row) {
        cursor.fetch(DorCPP::FetchAbsolute, row);
        std::string line;
        for (int i = 1; i <= cursor.columnCount(); ++i)
            line += (i == 1 ? "" : "|") + text(cursor, i);
        all.push_back(line);
    }
    return all;
}

// A session on a new file with a cursor on it.
class Database : public ::testing::Test {
protected:
    Database()
    {
        open(connection, folder.file("test.db"));
        cursor.create(connection, 0, nullptr, true);
    }
    void execute(const std::string& sql) { cursor.execute(sql.c_str()); }
    // Executes on another cursor, so that the answer of the first stays.
    void change(const std::string& sql)
    {
        DorCPP::DorCursor other;
        other.create(connection, 0, nullptr, true);
        other.execute(sql.c_str());
    }
    std::string path() const { return folder.file("test.db"); }

    Folder folder;
    DorCPP::DorConnect connection;
    DorCPP::DorCursor cursor;
};

} // namespace DorTest
