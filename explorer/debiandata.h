// What Debian's package manager knows about this machine: packages and their dependencies.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// One package that another one names. All texts are UTF-8.
struct PackageDependency {
    std::string kind;     // the field that names it: "Depends", "Recommends", ...
    int group = 0;        // from 1; members of one group are alternatives of each other
    std::string package;  // without architecture qualifier
    std::string relation; // "<<", "<=", "=", ">=", ">>", or empty
    std::string version;  // empty when any will do
};

struct DebianPackage {
    std::string name;
    std::string version;
    std::string architecture;
    std::string section;
    std::string source; // name of the source package; the package's own name when it has no other
    std::string priority;
    std::string maintainer;
    std::string homepage;
    std::string summary;     // first line of the description
    std::string description; // the other lines, blanks and dots of the field form taken off
    bool essential = false;
    std::optional<int64_t> installedKib;
    std::vector<PackageDependency> dependencies;
};

// The installed packages of a dpkg status file, in its order. Paragraphs without a name, and those
// whose status does not say installed, are left out; unknown fields are ignored.
std::vector<DebianPackage> parseDpkgStatus(std::string_view text);

// The members of a dependency field: "a (>= 1) | b, c:any" gives groups 1, 1, 2. Members without a
// name are left out.
std::vector<PackageDependency> parseDependencies(std::string_view kind, std::string_view text);
