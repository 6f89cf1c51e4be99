// Points in time as the sample database stores them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Universal time in the Gregorian calendar.
struct CalendarTime {
    int year = 1970;
    int month = 1; // 1..12
    int day = 1;   // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0; // 0..60

    bool operator==(const CalendarTime&) const = default;
};

// seconds: since 1970-01-01 00:00, years 1 to 9999; clamped to that range.
CalendarTime calendarTime(int64_t seconds);
int64_t secondsOf(const CalendarTime& time);

// "yyyy-mm-dd hh:mi:ss"
std::string isoText(const CalendarTime& time);

// Reads the date form of mail headers, "Tue, 15 Nov 1994 08:12:31 +0100", into universal time. The
// day's name may be missing or wrong. Nothing for anything else, and for days that do not exist.
std::optional<CalendarTime> parseMailDate(std::string_view text);
