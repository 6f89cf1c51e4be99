// Where this machine keeps the data that the sample database is made of.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "explorer/debiandata.h"
#include "explorer/geodata.h"

// Files and folders below one root, "/" for the machine itself. Whatever is missing gives no rows.
class MachineData {
public:
    explicit MachineData(std::filesystem::path root = "/")
        : m_root(std::move(root))
    {
    }

    std::vector<DebianPackage> packages() const;

    // From the list of a package's files: how many they are, and when it was last installed.
    struct FileList {
        int64_t files = 0;
        int64_t written = 0; // seconds since 1970
    };
    std::optional<FileList> fileList(const DebianPackage& package) const;

    // The change log of a package; empty when it has none (systems without documentation).
    std::filesystem::path changelog(const DebianPackage& package) const;

    std::vector<Country> countries() const;
    std::vector<Subdivision> subdivisions() const;
    std::vector<TimeZone> zones() const;
    // The compiled rules of a zone, empty when they are missing.
    std::string zoneRules(const TimeZone& zone) const;
    std::vector<LeapSecond> leapSeconds() const;

private:
    std::string text(const char* path) const;

    std::filesystem::path m_root;
};
