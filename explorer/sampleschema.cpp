#include "explorer/sampleschema.h"

namespace {

constexpr const char* tables[] = {
    "CREATE TABLE section (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    name VARCHAR(60) NOT NULL UNIQUE)",

    "CREATE TABLE source (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    name VARCHAR(80) NOT NULL UNIQUE)",

    "CREATE TABLE package (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    name VARCHAR(80) NOT NULL,\n"
    "    version VARCHAR(60) NOT NULL,\n"
    "    section_id INTEGER NOT NULL REFERENCES section (id),\n"
    "    source_id INTEGER NOT NULL REFERENCES source (id),\n"
    "    architecture VARCHAR(12) NOT NULL,\n"
    "    priority VARCHAR(12),\n"
    "    essential BOOLEAN NOT NULL,\n"
    "    size_kib INTEGER,\n"
    "    size_mib DECIMAL(12,3),\n"
    "    files INTEGER,\n"
    "    installed DATE,\n"
    "    summary VARCHAR(120),\n"
    "    maintainer VARCHAR(120),\n"
    "    homepage VARCHAR(160),\n"
    "    description TEXT)",

    "CREATE TABLE dependency (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    package_id INTEGER NOT NULL REFERENCES package (id),\n"
    "    kind VARCHAR(12) NOT NULL,\n"
    "    alternative INTEGER NOT NULL,\n"
    "    name VARCHAR(80) NOT NULL,\n"
    "    relation VARCHAR(2),\n"
    "    version VARCHAR(60),\n"
    "    target_id INTEGER REFERENCES package (id))",

    "CREATE TABLE release (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    source_id INTEGER NOT NULL REFERENCES source (id),\n"
    "    version VARCHAR(60) NOT NULL,\n"
    "    released DATE,\n"
    "    distribution VARCHAR(40),\n"
    "    urgency VARCHAR(12),\n"
    "    maintainer VARCHAR(80),\n"
    "    UNIQUE (source_id, version))",

    "CREATE TABLE country (\n"
    "    code CHAR(2) PRIMARY KEY NOT NULL,\n"
    "    code3 CHAR(3),\n"
    "    number SMALLINT,\n"
    "    name NVARCHAR(80) NOT NULL,\n"
    "    official_name NVARCHAR(120),\n"
    "    flag NVARCHAR(4))",

    "CREATE TABLE subdivision (\n"
    "    code VARCHAR(6) PRIMARY KEY NOT NULL,\n"
    "    country CHAR(2) NOT NULL REFERENCES country (code),\n"
    "    name NVARCHAR(120) NOT NULL,\n"
    "    kind VARCHAR(60),\n"
    "    parent VARCHAR(6))",

    "CREATE TABLE zone (\n"
    "    name VARCHAR(40) PRIMARY KEY NOT NULL,\n"
    "    country CHAR(2) REFERENCES country (code),\n"
    "    latitude DOUBLE NOT NULL,\n"
    "    longitude DOUBLE NOT NULL,\n"
    "    remark VARCHAR(80),\n"
    "    rules BLOB)",

    "CREATE TABLE leap_second (\n"
    "    inserted DATE PRIMARY KEY NOT NULL,\n"
    "    total SMALLINT NOT NULL)",

    "CREATE TABLE station (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    name VARCHAR(20) NOT NULL,\n"
    "    height REAL NOT NULL)",

    "CREATE TABLE measurement (\n"
    "    id INTEGER PRIMARY KEY,\n"
    "    station_id INTEGER NOT NULL REFERENCES station (id),\n"
    "    taken DATE NOT NULL,\n"
    "    temperature DOUBLE NOT NULL,\n"
    "    pressure REAL,\n"
    "    rain DECIMAL(6,2),\n"
    "    visitors INTEGER NOT NULL,\n"
    "    checked BOOLEAN NOT NULL,\n"
    "    remark VARCHAR(40) DEFAULT 'none',\n"
    "    frame VARBYTE(8))",
};

constexpr const char* indexesAndViews[] = {
    "CREATE INDEX package_name ON package (name)",
    "CREATE INDEX package_section ON package (section_id)",
    "CREATE INDEX dependency_package ON dependency (package_id)",
    "CREATE INDEX dependency_target ON dependency (target_id)",
    "CREATE INDEX release_date ON release (released)",
    "CREATE INDEX subdivision_country ON subdivision (country)",
    "CREATE INDEX zone_country ON zone (country)",
    "CREATE INDEX measurement_taken ON measurement (taken)",

    "CREATE VIEW package_overview AS\n"
    "SELECT package.name, package.version, section.name AS section, source.name AS source,\n"
    "       package.size_mib, package.installed, package.summary\n"
    "FROM package JOIN section ON section.id = package.section_id\n"
    "             JOIN source ON source.id = package.source_id",

    "CREATE VIEW size_by_section AS\n"
    "SELECT section.name AS section, count(*) AS packages, sum(package.size_kib) AS size_kib\n"
    "FROM package JOIN section ON section.id = package.section_id\n"
    "GROUP BY section.name ORDER BY size_kib DESC",

    "CREATE VIEW releases_by_month AS\n"
    "SELECT substr(released, 1, 7) AS month, count(*) AS releases\n"
    "FROM release WHERE released IS NOT NULL GROUP BY month ORDER BY month",

    "CREATE VIEW most_needed AS\n"
    "SELECT package.name, count(DISTINCT dependency.package_id) AS needed_by\n"
    "FROM dependency JOIN package ON package.id = dependency.target_id\n"
    "WHERE dependency.kind IN ('Depends', 'Pre-Depends')\n"
    "GROUP BY package.id ORDER BY needed_by DESC, package.name",

    "CREATE VIEW measurement_by_day AS\n"
    "SELECT substr(taken, 1, 10) AS day, round(avg(temperature), 2) AS temperature,\n"
    "       round(sum(rain), 2) AS rain, sum(visitors) AS visitors\n"
    "FROM measurement GROUP BY day ORDER BY day",
};

} // namespace

std::span<const char* const> sampleTables()
{
    return tables;
}

std::span<const char* const> sampleIndexesAndViews()
{
    return indexesAndViews;
}
