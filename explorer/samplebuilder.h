// Makes the sample database from the data of this machine.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <dorcpp/connect.h>
#include <dorcpp/cursor.h>

#include "explorer/machinedata.h"
#include "explorer/measurements.h"
#include "explorer/rowwriter.h"

// $XDG_DATA_HOME/oviexplorer/sample.db, below ~/.local/share where that is not set.
std::filesystem::path sampleDatabasePath();

// Works in short steps, so that a window stays alive beside it. Everything is written to a
// temporary file in the folder of the target, in one transaction, and takes the target's name when
// it is complete; a builder that goes before that removes the temporary file.
class SampleBuilder {
public:
    enum class Stage { Packages, Releases, Places, Measurements, Indexes, Done };

    SampleBuilder(MachineData machine, std::filesystem::path target);
    ~SampleBuilder();
    SampleBuilder(const SampleBuilder&) = delete;
    SampleBuilder& operator=(const SampleBuilder&) = delete;

    // Does the next piece of work, some milliseconds long. False when the database is complete.
    // Throws DorX, and std::filesystem::filesystem_error for folders that cannot be made; the
    // builder is of no further use then.
    bool step();
    Stage stage() const { return m_stage; }
    // Of the whole work, 0 to 100; never falls.
    int percent() const { return m_percent; }

private:
    void begin();
    void writeNextPackages();
    void writePackage(const DebianPackage& package);
    void writeDependencies(const DebianPackage& package);
    void readNextChangelog();
    void writeNextPlaces();
    void writeCountries();
    void writeSubdivisions();
    void writeZonesAndStations();
    void writeNextMeasurements();
    void finish();
    void setPercent(size_t done, size_t all, int from, int to);
    int64_t numberOf(std::map<std::string, int64_t>& numbers, const std::string& name,
                     RowWriter& writer);

    MachineData m_machine;
    std::filesystem::path m_target;
    std::filesystem::path m_temporary;
    Stage m_stage = Stage::Packages;
    int m_percent = 0;

    std::unique_ptr<DorCPP::DorConnect> m_connection;
    std::unique_ptr<DorCPP::DorCursor> m_cursor;
    struct Writers;
    std::unique_ptr<Writers> m_writers;

    std::vector<DebianPackage> m_packages;
    std::map<std::string, int64_t> m_packageIds;
    std::map<std::string, int64_t> m_sections;
    std::map<std::string, int64_t> m_sources;
    std::set<std::string> m_changelogsRead; // names of sources
    std::set<std::string> m_countries;      // codes
    MeasurementSeries m_series;
    size_t m_next = 0; // of what the stage goes through
};
