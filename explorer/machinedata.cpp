#include "explorer/machinedata.h"

#include <algorithm>
#include <sys/stat.h>

#include "explorer/files.h"

namespace fs = std::filesystem;

namespace {

constexpr size_t largestTable = size_t{256} << 20; // bytes
constexpr size_t largestRules = size_t{1} << 20;

// A name that stays inside the folder it is looked for in.
bool isPlainName(const std::string& name)
{
    return !name.empty() && name.front() != '.' && name.find('/') == std::string::npos;
}

bool isPlainPath(const std::string& path)
{
    return !path.empty() && path.front() != '/' && path.find("..") == std::string::npos;
}

} // namespace

std::string MachineData::text(const char* path) const
{
    return readWholeFile(m_root / path, largestTable).value_or(std::string());
}

std::vector<DebianPackage> MachineData::packages() const
{
    return parseDpkgStatus(text("var/lib/dpkg/status"));
}

std::optional<MachineData::FileList> MachineData::fileList(const DebianPackage& package) const
{
    if (!isPlainName(package.name) || !isPlainName(package.architecture))
        return std::nullopt;
    const fs::path folder = m_root / "var/lib/dpkg/info";
    for (const std::string& stem : {package.name, package.name + ":" + package.architecture}) {
        const fs::path path = folder / (stem + ".list");
        const auto list = readWholeFile(path, largestTable);
        struct stat status {};
        if (!list || stat(path.c_str(), &status) != 0)
            continue;
        return FileList{std::count(list->begin(), list->end(), '\n'), status.st_mtime};
    }
    return std::nullopt;
}

fs::path MachineData::changelog(const DebianPackage& package) const
{
    if (!isPlainName(package.name))
        return {};
    const fs::path folder = m_root / "usr/share/doc" / package.name;
    std::error_code error;
    for (const char* name : {"changelog.Debian.gz", "changelog.Debian", "changelog.gz"}) {
        if (fs::is_regular_file(folder / name, error))
            return folder / name;
    }
    return {};
}

std::vector<Country> MachineData::countries() const
{
    auto countries = parseCountryJson(text("usr/share/iso-codes/json/iso_3166-1.json"));
    if (countries.empty())
        countries = parseCountryTable(text("usr/share/zoneinfo/iso3166.tab"));
    return countries;
}

std::vector<Subdivision> MachineData::subdivisions() const
{
    return parseSubdivisionJson(text("usr/share/iso-codes/json/iso_3166-2.json"));
}

std::vector<TimeZone> MachineData::zones() const
{
    auto zones = parseZoneTable(text("usr/share/zoneinfo/zone.tab"));
    if (zones.empty())
        zones = parseZoneTable(text("usr/share/zoneinfo/zone1970.tab"));
    return zones;
}

std::string MachineData::zoneRules(const TimeZone& zone) const
{
    if (!isPlainPath(zone.name))
        return {};
    return readWholeFile(m_root / "usr/share/zoneinfo" / zone.name, largestRules)
        .value_or(std::string());
}

std::vector<LeapSecond> MachineData::leapSeconds() const
{
    return parseLeapSeconds(text("usr/share/zoneinfo/leapseconds"));
}
