#include "database.h"

#include <array>

#include <dorcpp/cursor.h>

TestDatabase::TestDatabase(const std::filesystem::path& path)
{
    m_connection.createCS("", "", path.c_str(), "create", 0, false, false);
}

void TestDatabase::execute(const std::string& sql)
{
    DorCPP::DorCursor cursor;
    cursor.create(m_connection, 0, nullptr, false);
    cursor.execute(sql.c_str());
}

std::vector<std::string> TestDatabase::rows(const std::string& sql)
{
    DorCPP::DorCursor cursor;
    cursor.create(m_connection, DorCPP::ModeReadOnly, nullptr, false);
    cursor.execute(sql.c_str());
    std::vector<std::string> rows;
    for (int64_t row = 1; row <= cursor.selectRowCount(); ++row) {
        cursor.fetch(DorCPP::FetchAbsolute, row);
        std::string& text = rows.emplace_back();
        for (int column = 1; column <= cursor.columnCount(); ++column) {
            std::array<char, 4096> value{};
            short null = 0;
            cursor.getData(column, DorCPP::TypeText, value.data(), value.size(), &null);
            text += (column > 1 ? "|" : "") + std::string(null ? "NULL" : value.data());
        }
    }
    return rows;
}
