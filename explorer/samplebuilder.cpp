#include "explorer/samplebuilder.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>

#include <csignal>
#include <pwd.h>
#include <unistd.h>

#include "explorer/changelog.h"
#include "explorer/files.h"
#include "explorer/sampleschema.h"

namespace fs = std::filesystem;

namespace {

constexpr size_t packagesPerStep = 50;
constexpr int measurementsPerStep = 1000;
constexpr const char* temporaryEnd = ".part";

// Percentages at which the stages end.
constexpr int packagesEnd = 25;
constexpr int releasesEnd = 75;
constexpr int placesEnd = 85;
constexpr int measurementsEnd = 97;

fs::path homeFolder()
{
    if (const char* home = std::getenv("HOME"); home && *home == '/')
        return home;
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

bool isRunning(long process)
{
    return kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
}

// Temporary files of this target that a killed program has left.
void removeStale(const fs::path& target)
{
    const std::string start = target.filename().string() + ".";
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(target.parent_path(), error)) {
        const std::string name = entry.path().filename().string();
        if (name.compare(0, start.size(), start) != 0 || entry.path().extension() != temporaryEnd)
            continue;
        long process = 0;
        const char* digits = name.data() + start.size();
        const auto parsed = std::from_chars(digits, name.data() + name.size(), process);
        if (parsed.ec == std::errc() && parsed.ptr != digits && !isRunning(process))
            fs::remove(entry.path(), error);
    }
}

std::string decimalText(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string hundredthsText(int value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%d.%02d", value / 100, value % 100);
    return text;
}

std::optional<int64_t> numberIn(std::string_view text)
{
    int64_t number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || parsed.ec != std::errc())
        return std::nullopt;
    return number;
}

} // namespace

fs::path sampleDatabasePath()
{
    const char* data = std::getenv("XDG_DATA_HOME");
    const fs::path folder = data && *data == '/' ? fs::path(data) : homeFolder() / ".local/share";
    return folder / "oviexplorer" / "sample.db";
}

struct SampleBuilder::Writers {
    Writers(const DorCPP::DorConnect& connection, DorCPP::DorCursor& cursor)
        : section(connection, cursor, "INSERT INTO section (id, name) VALUES (?, ?)")
        , source(connection, cursor, "INSERT INTO source (id, name) VALUES (?, ?)")
        , package(connection, cursor,
                  "INSERT INTO package (id, name, version, section_id, source_id, architecture, "
                  "priority, essential, size_kib, size_mib, files, installed, summary, maintainer, "
                  "homepage, description) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        , dependency(connection, cursor,
                     "INSERT INTO dependency (package_id, kind, alternative, name, relation, "
                     "version, target_id) VALUES (?, ?, ?, ?, ?, ?, ?)")
        , release(connection, cursor,
                  "INSERT OR IGNORE INTO release (source_id, version, released, distribution, "
                  "urgency, maintainer) VALUES (?, ?, ?, ?, ?, ?)")
        , measurement(connection, cursor,
                      "INSERT INTO measurement (station_id, taken, temperature, pressure, rain, "
                      "visitors, checked, remark, frame) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")
    {
    }

    RowWriter section;
    RowWriter source;
    RowWriter package;
    RowWriter dependency;
    RowWriter release;
    RowWriter measurement;
};

SampleBuilder::SampleBuilder(MachineData machine, fs::path target)
    : m_machine(std::move(machine))
    , m_target(std::move(target))
    , m_temporary(m_target.string() + "." + std::to_string(getpid()) + temporaryEnd)
{
}

SampleBuilder::~SampleBuilder()
{
    m_writers.reset();
    m_cursor.reset();
    if (!m_connection)
        return;
    m_connection.reset();
    std::error_code ignored; // the temporary file is removed by the next builder then
    if (m_stage != Stage::Done)
        fs::remove(m_temporary, ignored);
    fs::remove(m_temporary.string() + "-journal", ignored);
}

bool SampleBuilder::step()
{
    switch (m_stage) {
    case Stage::Packages:
        if (m_connection)
            writeNextPackages();
        else
            begin();
        break;
    case Stage::Releases:
        readNextChangelog();
        break;
    case Stage::Places:
        writeNextPlaces();
        break;
    case Stage::Measurements:
        writeNextMeasurements();
        break;
    case Stage::Indexes:
        finish();
        break;
    case Stage::Done:
        break;
    }
    return m_stage != Stage::Done;
}

void SampleBuilder::begin()
{
    const fs::path folder = m_target.parent_path();
    if (!fs::exists(folder)) {
        fs::create_directories(folder);
        fs::permissions(folder, fs::perms::owner_all);
    }
    removeStale(m_target);
    fs::remove(m_temporary);
    auto connection = std::make_unique<DorCPP::DorConnect>();
    connection->createCS("", "", m_temporary.c_str(), "create", 0, false, false);
    m_connection = std::move(connection);
    m_cursor = std::make_unique<DorCPP::DorCursor>();
    m_cursor->create(*m_connection, 0, nullptr, false);
    m_cursor->execute("BEGIN");
    for (const char* sql : sampleTables())
        m_cursor->execute(sql);
    m_writers = std::make_unique<Writers>(*m_connection, *m_cursor);

    m_packages = m_machine.packages();
    for (size_t i = 0; i < m_packages.size(); ++i)
        m_packageIds.emplace(m_packages[i].name, static_cast<int64_t>(i) + 1);
}

// References to packages behind this one are checked by the end of the transaction only where
// foreign keys are enforced, which this session does not ask for.
void SampleBuilder::writeNextPackages()
{
    for (size_t i = 0; i < packagesPerStep && m_next < m_packages.size(); ++i, ++m_next) {
        writePackage(m_packages[m_next]);
        writeDependencies(m_packages[m_next]);
    }
    setPercent(m_next, m_packages.size(), 0, packagesEnd);
    if (m_next < m_packages.size())
        return;
    m_stage = Stage::Releases;
    m_next = 0;
}

int64_t SampleBuilder::numberOf(std::map<std::string, int64_t>& numbers, const std::string& name,
                                RowWriter& writer)
{
    const auto [place, added] = numbers.try_emplace(name, static_cast<int64_t>(numbers.size()) + 1);
    if (added)
        writer.integer(place->second).text(name).store();
    return place->second;
}

void SampleBuilder::writePackage(const DebianPackage& package)
{
    constexpr double kibPerMib = 1024;
    const std::string section = package.section.empty() ? "(none)" : package.section;
    const int64_t sectionId = numberOf(m_sections, section, m_writers->section);
    const int64_t sourceId = numberOf(m_sources, package.source, m_writers->source);
    const auto list = m_machine.fileList(package);
    m_writers->package.integer(static_cast<int64_t>(m_next) + 1)
        .text(package.name)
        .text(package.version.empty() ? "?" : package.version)
        .integer(sectionId)
        .integer(sourceId)
        .text(package.architecture.empty() ? "?" : package.architecture)
        .text(package.priority)
        .boolean(package.essential)
        .integer(package.installedKib)
        .decimal(package.installedKib
                     ? decimalText(static_cast<double>(*package.installedKib) / kibPerMib, 3)
                     : std::string())
        .integer(list ? std::optional(list->files) : std::nullopt)
        .date(list ? std::optional(calendarTime(list->written)) : std::nullopt)
        .text(package.summary)
        .text(package.maintainer)
        .text(package.homepage)
        .text(package.description)
        .store();
}

void SampleBuilder::writeDependencies(const DebianPackage& package)
{
    for (const PackageDependency& dependency : package.dependencies) {
        const auto target = m_packageIds.find(dependency.package);
        m_writers->dependency.integer(static_cast<int64_t>(m_next) + 1)
            .text(dependency.kind)
            .integer(dependency.group)
            .text(dependency.package)
            .text(dependency.relation)
            .text(dependency.version)
            .integer(target == m_packageIds.end() ? std::nullopt : std::optional(target->second))
            .store();
    }
}

// Binary packages of one source share its change log.
void SampleBuilder::readNextChangelog()
{
    for (bool read = false; !read && m_next < m_packages.size(); ++m_next) {
        const DebianPackage& package = m_packages[m_next];
        if (m_changelogsRead.contains(package.source))
            continue;
        LineFile file(m_machine.changelog(package));
        if (!file.isOpen())
            continue;
        read = true;
        m_changelogsRead.insert(package.source);
        ChangelogReader reader;
        for (std::string line; file.next(line);) {
            const auto release = reader.line(line);
            if (!release)
                continue;
            const int64_t source = numberOf(m_sources, release->source, m_writers->source);
            m_writers->release.integer(source)
                .text(release->version)
                .date(release->released)
                .text(release->distribution)
                .text(release->urgency)
                .text(release->maintainer)
                .store();
        }
    }
    setPercent(m_next, m_packages.size(), packagesEnd, releasesEnd);
    if (m_next < m_packages.size())
        return;
    m_stage = Stage::Places;
    m_next = 0;
}

void SampleBuilder::writeNextPlaces()
{
    constexpr size_t steps = 3;
    if (m_next == 0)
        writeCountries();
    else if (m_next == 1)
        writeSubdivisions();
    else
        writeZonesAndStations();
    ++m_next;
    setPercent(m_next, steps, releasesEnd, placesEnd);
    if (m_next < steps)
        return;
    m_stage = Stage::Measurements;
    m_next = 0;
}

void SampleBuilder::writeCountries()
{
    RowWriter writer(*m_connection, *m_cursor,
                     "INSERT INTO country (code, code3, number, name, official_name, flag) "
                     "VALUES (?, ?, ?, ?, ?, ?)");
    for (const Country& country : m_machine.countries()) {
        if (!m_countries.insert(country.code).second)
            continue;
        writer.text(country.code)
            .text(country.code3)
            .integer(numberIn(country.numeric))
            .text(country.name)
            .text(country.officialName)
            .text(country.flag)
            .store();
    }
}

void SampleBuilder::writeSubdivisions()
{
    RowWriter writer(*m_connection, *m_cursor,
                     "INSERT OR IGNORE INTO subdivision (code, country, name, kind, parent) "
                     "VALUES (?, ?, ?, ?, ?)");
    for (const Subdivision& part : m_machine.subdivisions()) {
        const std::string country = part.code.substr(0, 2);
        if (m_countries.contains(country))
            writer.text(part.code)
                .text(country)
                .text(part.name)
                .text(part.kind)
                .text(part.parent)
                .store();
    }
}

void SampleBuilder::writeZonesAndStations()
{
    RowWriter writer(*m_connection, *m_cursor,
                     "INSERT OR IGNORE INTO zone (name, country, latitude, longitude, remark, "
                     "rules) VALUES (?, ?, ?, ?, ?, ?)");
    for (const TimeZone& zone : m_machine.zones()) {
        writer.text(zone.name)
            .text(m_countries.contains(zone.country) ? zone.country : std::string())
            .real(zone.latitude)
            .real(zone.longitude)
            .text(zone.comment)
            .bytes(m_machine.zoneRules(zone))
            .store();
    }
    RowWriter leap(*m_connection, *m_cursor,
                   "INSERT OR IGNORE INTO leap_second (inserted, total) VALUES (?, ?)");
    for (const LeapSecond& second : m_machine.leapSeconds())
        leap.date(second.inserted).integer(second.sum).store();

    RowWriter station(*m_connection, *m_cursor,
                      "INSERT INTO station (id, name, height) VALUES (?, ?, ?)");
    int64_t id = 0;
    for (const auto& [name, height] : {std::pair("Harbour", 3.5), std::pair("Old Town", 41.0),
                                       std::pair("Airfield", 118.25), std::pair("Summit", 1240.0)})
        station.integer(++id).text(name).real(height).store();
}

void SampleBuilder::writeNextMeasurements()
{
    for (int i = 0; i < measurementsPerStep && m_next < MeasurementSeries::rows; ++i, ++m_next) {
        const Measurement reading = m_series.next();
        m_writers->measurement.integer(reading.station)
            .date(reading.taken)
            .real(reading.temperature)
            .real(reading.pressure)
            .decimal(reading.rainHundredths ? hundredthsText(*reading.rainHundredths)
                                            : std::string())
            .integer(reading.visitors)
            .boolean(reading.checked)
            .text(reading.note.value_or(std::string()))
            .bytes({reinterpret_cast<const char*>(reading.frame.data()), reading.frame.size()})
            .store();
    }
    setPercent(m_next, MeasurementSeries::rows, placesEnd, measurementsEnd);
    if (m_next == MeasurementSeries::rows)
        m_stage = Stage::Indexes;
}

void SampleBuilder::finish()
{
    m_writers.reset();
    for (const char* sql : sampleIndexesAndViews())
        m_cursor->execute(sql);
    m_cursor->execute("COMMIT");
    m_cursor.reset();
    m_connection->close();
    fs::rename(m_temporary, m_target);
    m_percent = 100;
    m_stage = Stage::Done;
}

void SampleBuilder::setPercent(size_t done, size_t all, int from, int to)
{
    const double part = all == 0 ? 1 : static_cast<double>(done) / static_cast<double>(all);
    m_percent = from + static_cast<int>(part * (to - from));
}
