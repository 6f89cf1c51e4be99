// Made-up readings of weather stations: the one table of the sample that every machine has.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>

#include "explorer/calendar.h"

struct Measurement {
    int station = 1; // 1..4
    CalendarTime taken;
    double temperature = 0;            // degrees Celsius
    std::optional<double> pressure;    // hPa; a sensor fails now and then
    std::optional<int> rainHundredths; // hundredths of a millimetre
    int visitors = 0;
    bool checked = false;
    std::optional<std::string> note;
    std::array<unsigned char, 8> frame{}; // as the station sent it
};

// Gives the same readings in every run and on every machine: one an hour, the four stations in
// turn, with the course of day and year in temperature and visitors.
class MeasurementSeries {
public:
    static constexpr int rows = 20000;

    // The next reading.
    Measurement next();

private:
    double uniform(double from, double to);

    std::mt19937 m_random{20260101};
    int m_row = 0;
};
