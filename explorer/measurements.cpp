#include "explorer/measurements.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int64_t firstHour = 1577836800; // 2020-01-01 00:00:00
constexpr int stations = 4;
constexpr double hoursPerYear = 365.25 * 24;

double wave(double hour, double period, double peakAt)
{
    return std::cos((hour - peakAt) / period * 2 * std::numbers::pi);
}

} // namespace

// Spelled out because the distributions of the standard library differ between implementations.
double MeasurementSeries::uniform(double from, double to)
{
    return from + (to - from) * (static_cast<double>(m_random()) / 4294967296.0);
}

Measurement MeasurementSeries::next()
{
    const int row = m_row++;
    const int hours = row / stations;
    Measurement reading;
    reading.station = row % stations + 1;
    reading.taken = calendarTime(firstHour + int64_t{hours} * 3600);

    const double warmth = wave(hours, hoursPerYear, 200 * 24) * 11 + wave(hours, 24, 15) * 4;
    reading.temperature =
        std::round((9 + warmth + reading.station * 0.7 + uniform(-1.5, 1.5)) * 100) / 100;
    if (uniform(0, 1) > 0.03)
        reading.pressure = std::round((1013 + wave(hours, 170, 0) * 14 + uniform(-2, 2)) * 10) / 10;
    const bool rains = uniform(0, 1) < 0.12;
    if (uniform(0, 1) > 0.02)
        reading.rainHundredths = rains ? static_cast<int>(uniform(5, 900)) : 0;
    const double daylight = std::max(0.0, wave(hours, 24, 14));
    reading.visitors = static_cast<int>(daylight * uniform(20, 90) * (rains ? 0.3 : 1));
    reading.checked = uniform(0, 1) < 0.85;
    if (!reading.pressure)
        reading.note = "pressure sensor silent";
    else if (rains && reading.rainHundredths.value_or(0) > 800)
        reading.note = "heavy rain";
    for (unsigned char& byte : reading.frame)
        byte = static_cast<unsigned char>(m_random() & 255U);
    return reading;
}
