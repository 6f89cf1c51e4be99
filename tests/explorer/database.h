// Databases that tests make and look into.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <dorcpp/connect.h>

class TestDatabase {
public:
    // Makes the file when it is missing.
    explicit TestDatabase(const std::filesystem::path& path);

    void execute(const std::string& sql);
    // The rows of an answer, their values as texts joined by "|".
    std::vector<std::string> rows(const std::string& sql);
    std::string value(const std::string& sql) { return rows(sql).at(0); }

private:
    DorCPP::DorConnect m_connection;
};
