// A database file in a folder of its own, for one test.
#pragma once

#include <clocale>
#include <filesystem>
#include <initializer_list>
#include <string>

#include <dorcpp/connect.h>
#include <dorcpp/cursor.h>
#include <gtest/gtest.h>
#include <oviapi/dataset.h>

class Database : public ::testing::Test {
protected:
    Database()
    {
        setlocale(LC_ALL, "C.UTF-8"); // as a started application does
        std::string name = (std::filesystem::temp_directory_path() / "data-XXXXXX").string();
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        m_folder = name;
        channel = connection.createCS(nullptr, nullptr, path().c_str(), "create", 0, false, true);
    }
    ~Database() override
    {
        connection.close();
        std::error_code ignored; // a folder that stays behind fails no test
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::string path() const { return m_folder + "/test.db"; }

    static void runOn(const DorCPP::DorConnect& session, const std::string& sql)
    {
        DorCPP::DorCursor cursor;
        cursor.create(session, 0, nullptr, false);
        cursor.execute(sql.c_str());
    }
    void run(const std::string& sql) const { runOn(connection, sql); }
    void run(std::initializer_list<std::string> statements) const
    {
        for (const std::string& sql : statements)
            run(sql);
    }
    // A second session on the same file.
    void openOther(DorCPP::DorConnect& other) const
    {
        other.createCS(nullptr, nullptr, path().c_str(), "timeout=1", 0, false, true);
    }

    DorCPP::DorConnect connection;
    int channel = 0; // of the connection

private:
    std::string m_folder;
};

// The text of one cell as a view asks for it.
inline std::wstring cell(OviAPI::aCDataSet& data, int column, long row)
{
    return data.GetCellText(column, row);
}
