#include "explorer/geodata.h"

#include <charconv>
#include <optional>

#include "explorer/json.h"
#include "explorer/textscan.h"

namespace {

bool isComment(std::string_view line)
{
    return line.empty() || line.front() == '#';
}

std::optional<int> digits(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || text.front() == '-' || error != std::errc() ||
        end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::string_view nextWord(std::string_view& line)
{
    const size_t start = line.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return {};
    line.remove_prefix(start);
    const size_t end = line.find_first_of(" \t");
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(word.size());
    return word;
}

std::optional<int> monthOf(std::string_view name)
{
    constexpr std::string_view names = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const size_t at = name.size() == 3 ? names.find(name) : std::string_view::npos;
    if (at == std::string_view::npos || at % 3 != 0)
        return std::nullopt;
    return static_cast<int>(at / 3) + 1;
}

// Calls the function for every item of the list of this name in the top object.
template<class Function>
void forEachItem(std::string_view text, std::string_view name, Function&& function)
{
    const auto root = Json::parse(text);
    const Json* list = root ? root->member(name) : nullptr;
    if (!list || !list->array())
        return;
    for (const Json& item : *list->array())
        function(item);
}

} // namespace

std::vector<Country> parseCountryTable(std::string_view text)
{
    std::vector<Country> countries;
    forEachLine(text, [&countries](std::string_view line) {
        if (isComment(line))
            return;
        Country country;
        country.code = takeUntil(line, '\t');
        country.name = trimmed(line);
        if (country.code.size() == 2 && !country.name.empty())
            countries.push_back(std::move(country));
    });
    return countries;
}

std::vector<Country> parseCountryJson(std::string_view text)
{
    std::vector<Country> countries;
    forEachItem(text, "3166-1", [&countries](const Json& item) {
        Country country{item.text("alpha_2"), item.text("alpha_3"),       item.text("numeric"),
                        item.text("name"),    item.text("official_name"), item.text("flag")};
        if (country.code.size() == 2 && !country.name.empty())
            countries.push_back(std::move(country));
    });
    return countries;
}

std::vector<Subdivision> parseSubdivisionJson(std::string_view text)
{
    std::vector<Subdivision> parts;
    forEachItem(text, "3166-2", [&parts](const Json& item) {
        Subdivision part{item.text("code"), item.text("name"), item.text("type"),
                         item.text("parent")};
        if (part.code.size() < 4 || part.code[2] != '-' || part.name.empty())
            return;
        if (!part.parent.empty() && part.parent.find('-') == std::string::npos)
            part.parent = part.code.substr(0, 3) + part.parent;
        parts.push_back(std::move(part));
    });
    return parts;
}

std::vector<TimeZone> parseZoneTable(std::string_view text)
{
    std::vector<TimeZone> zones;
    forEachLine(text, [&zones](std::string_view line) {
        if (isComment(line))
            return;
        TimeZone zone;
        zone.country = takeUntil(line, '\t').substr(0, 2);
        const std::string_view place = takeUntil(line, '\t');
        zone.name = trimmed(takeUntil(line, '\t'));
        zone.comment = trimmed(line);
        const size_t second = place.find_first_of("+-", 1);
        if (zone.name.empty() || second == std::string_view::npos ||
            !parseDegrees(place.substr(0, second), zone.latitude) ||
            !parseDegrees(place.substr(second), zone.longitude))
            return;
        zones.push_back(std::move(zone));
    });
    return zones;
}

std::vector<LeapSecond> parseLeapSeconds(std::string_view text)
{
    std::vector<LeapSecond> seconds;
    int sum = 0;
    forEachLine(text, [&](std::string_view line) {
        if (nextWord(line) != "Leap")
            return;
        const auto year = digits(nextWord(line));
        const auto month = monthOf(nextWord(line));
        const auto day = digits(nextWord(line));
        nextWord(line); // always the last second of the day
        const std::string_view sign = nextWord(line);
        if (!year || !month || !day || *day < 1 || *day > 31 || (sign != "+" && sign != "-"))
            return;
        sum += sign == "+" ? 1 : -1;
        seconds.push_back({{*year, *month, *day}, sum});
    });
    return seconds;
}

bool parseDegrees(std::string_view text, double& degrees)
{
    if (text.empty() || (text.front() != '+' && text.front() != '-'))
        return false;
    const double sign = text.front() == '-' ? -1 : 1;
    text.remove_prefix(1);
    const size_t degreeDigits = 2 + text.size() % 2; // 4 or 6 digits: two, 5 or 7: three
    if (text.size() < 4 || text.size() > 7)
        return false;
    const auto whole = digits(text.substr(0, degreeDigits));
    const auto minutes = digits(text.substr(degreeDigits, 2));
    const auto seconds = text.size() > 5 ? digits(text.substr(degreeDigits + 2)) : std::optional(0);
    if (!whole || !minutes || !seconds || *minutes > 59 || *seconds > 59)
        return false;
    degrees = sign * (*whole + *minutes / 60.0 + *seconds / 3600.0);
    return true;
}
