#include "explorer/calendar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

#include "explorer/textscan.h"

namespace {

constexpr int64_t secondsPerDay = 86400;
constexpr int64_t firstSecond = -62135596800; // 0001-01-01 00:00:00
constexpr int64_t lastSecond = 253402300799;  // 9999-12-31 23:59:59

std::optional<int> number(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::optional<int> monthNumber(std::string_view name)
{
    constexpr std::array<std::string_view, 12> names = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto found = std::find(names.begin(), names.end(), name.substr(0, 3));
    if (found == names.end())
        return std::nullopt;
    return static_cast<int>(found - names.begin()) + 1;
}

std::string_view takeWord(std::string_view& text)
{
    text = trimmed(text);
    return takeUntil(text, ' ');
}

// Seconds of "hh:mi" or "hh:mi:ss".
std::optional<int> secondOfDay(std::string_view text)
{
    const auto hour = number(takeUntil(text, ':'));
    const auto minute = number(takeUntil(text, ':'));
    const auto second = text.empty() ? std::optional(0) : number(text);
    if (!hour || !minute || !second || *hour < 0 || *hour > 23 || *minute < 0 || *minute > 59 ||
        *second < 0 || *second > 60)
        return std::nullopt;
    return *hour * 3600 + *minute * 60 + *second;
}

// Seconds east of Greenwich of "+hhmm"; other forms count as 0.
int zoneOffset(std::string_view text)
{
    if (text.size() != 5 || (text[0] != '+' && text[0] != '-'))
        return 0;
    const auto hhmm = number(text.substr(1));
    if (!hhmm || *hhmm < 0)
        return 0;
    const int offset = (*hhmm / 100 * 60 + *hhmm % 100) * 60;
    return text[0] == '-' ? -offset : offset;
}

} // namespace

CalendarTime calendarTime(int64_t seconds)
{
    using namespace std::chrono;
    seconds = std::clamp(seconds, firstSecond, lastSecond);
    int64_t day = seconds / secondsPerDay;
    if (seconds % secondsPerDay < 0)
        --day;
    const int rest = static_cast<int>(seconds - day * secondsPerDay);
    const year_month_day date{sys_days{days{day}}};
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

int64_t secondsOf(const CalendarTime& time)
{
    using namespace std::chrono;
    const sys_days date{year{time.year} / time.month / time.day};
    return int64_t{date.time_since_epoch().count()} * secondsPerDay + int64_t{time.hour} * 3600 +
           int64_t{time.minute} * 60 + time.second;
}

std::string isoText(const CalendarTime& time)
{
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    return text.data();
}

std::optional<CalendarTime> parseMailDate(std::string_view text)
{
    std::string_view word = takeWord(text);
    if (!word.empty() && !number(word))
        word = takeWord(text); // behind the day's name
    const auto day = number(word);
    const auto month = monthNumber(takeWord(text));
    const auto year = number(takeWord(text));
    const auto second = secondOfDay(takeWord(text));
    if (!day || !month || !year || !second || *year < 1 || *year > 9999)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{*year} / *month / *day};
    if (*day < 1 || !date.ok())
        return std::nullopt;
    const int64_t midnight = secondsOf({*year, *month, *day});
    return calendarTime(midnight + *second - zoneOffset(takeWord(text)));
}
