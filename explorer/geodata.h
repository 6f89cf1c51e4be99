// Countries, their parts and time zones from the tables that the system carries.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "explorer/calendar.h"

// All texts are UTF-8.
struct Country {
    std::string code;  // two letters
    std::string code3; // three letters, empty when the table has none
    std::string numeric;
    std::string name;
    std::string officialName; // empty when it is the name
    std::string flag;         // two regional indicator characters, may be empty
};

struct Subdivision {
    std::string code; // "RU-MOW"; the country's code stands before the hyphen
    std::string name;
    std::string kind;
    std::string parent; // code of the larger part, may be empty
};

struct TimeZone {
    std::string country;
    std::string name; // "Europe/Moscow"
    double latitude = 0;
    double longitude = 0;
    std::string comment;
};

struct LeapSecond {
    CalendarTime inserted; // the day at whose end it stands
    int sum = 0;           // seconds inserted up to here, this one counted
};

// "ISO6709 code<TAB>name" lines.
std::vector<Country> parseCountryTable(std::string_view text);
// The JSON forms of the same with more names, and of the parts of countries. Empty when the text is
// not what is expected.
std::vector<Country> parseCountryJson(std::string_view text);
std::vector<Subdivision> parseSubdivisionJson(std::string_view text);

// "codes<TAB>coordinates<TAB>name<TAB>comment" lines; of several countries the first is taken.
// Lines whose coordinates cannot be read are left out.
std::vector<TimeZone> parseZoneTable(std::string_view text);

// "Leap YEAR MONTH DAY HH:MM:SS CORR R/S" lines.
std::vector<LeapSecond> parseLeapSeconds(std::string_view text);

// Degrees of "+DDMM", "+DDMMSS", "+DDDMM" or "+DDDMMSS". False when the text is none of them.
bool parseDegrees(std::string_view text, double& degrees);
