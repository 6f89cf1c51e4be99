#include <oviapi/celltext.h>

namespace OviAPI {

namespace {

constexpr int64_t microsPerSecond = 1'000'000;
constexpr int64_t microsPerDay = 86'400 * microsPerSecond;

enum class Part { Literal, Year, Month, Day, Hour, Minute, Second, Fraction, OptionalFraction };

struct Token {
    Part part;
    size_t length;
};

// The part that stands at the beginning of a format that is not empty.
Token nextToken(std::wstring_view format)
{
    struct Name {
        std::wstring_view letters;
        Part part;
    };
    static constexpr Name names[] = {
        {L"yyyy", Part::Year},   {L"mm", Part::Month},           {L"dd", Part::Day},
        {L"hh", Part::Hour},     {L"mi", Part::Minute},          {L"ss", Part::Second},
        {L"ff", Part::Fraction}, {L"f", Part::OptionalFraction},
    };
    for (const Name& name : names)
        if (format[0] == name.letters[0] && format.starts_with(name.letters))
            return {name.part, name.letters.size()};
    return {Part::Literal, 1};
}

// Days from 1970-01-01 in the proleptic Gregorian calendar, by counting in eras of 400 years that
// begin with a March.
int64_t daysFromCivil(int64_t year, int month, int day)
{
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146'097 + dayOfEra - 719'468;
}

void civilFromDays(int64_t days, DateTimeParts& parts)
{
    days += 719'468;
    const int64_t era = (days >= 0 ? days : days - 146'096) / 146'097;
    const int64_t dayOfEra = days - era * 146'097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shifted = (5 * dayOfYear + 2) / 153;
    parts.day = static_cast<int>(dayOfYear - (153 * shifted + 2) / 5 + 1);
    parts.month = static_cast<int>(shifted < 10 ? shifted + 3 : shifted - 9);
    parts.year = yearOfEra + era * 400 + (parts.month <= 2);
}

int daysInMonth(int64_t year, int month)
{
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month == 2 && leap ? 29 : days[month - 1];
}

void appendNumber(std::wstring& text, int64_t number, size_t digits)
{
    wchar_t plain[20]; // from its end
    wchar_t* from = std::end(plain);
    for (int64_t rest = number < 0 ? -number : number; rest != 0; rest /= 10)
        *--from = static_cast<wchar_t>(L'0' + rest % 10);
    const auto count = static_cast<size_t>(std::end(plain) - from);
    if (number < 0)
        text += L'-';
    text.append(count < digits ? digits - count : 0, L'0');
    text.append(from, count);
}

// The fraction without trailing zeros, but least digits at least.
void appendFraction(std::wstring& text, int micros, size_t least)
{
    std::wstring digits;
    appendNumber(digits, micros, 6);
    while (digits.size() > least && digits.back() == L'0')
        digits.pop_back();
    text += digits;
}

void appendPart(std::wstring& text, Part part, const DateTimeParts& parts)
{
    switch (part) {
    case Part::Year:
        return appendNumber(text, parts.year, 4);
    case Part::Month:
        return appendNumber(text, parts.month, 2);
    case Part::Day:
        return appendNumber(text, parts.day, 2);
    case Part::Hour:
        return appendNumber(text, parts.hour, 2);
    case Part::Minute:
        return appendNumber(text, parts.minute, 2);
    case Part::Second:
        return appendNumber(text, parts.second, 2);
    case Part::Fraction:
        return appendFraction(text, parts.micros, 2);
    case Part::OptionalFraction:
        if (parts.micros != 0) {
            text += L'.';
            appendFraction(text, parts.micros, 1);
        }
        return;
    case Part::Literal:
        return;
    }
}

bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// Takes the digits at the beginning of the text, at most a number of them.
std::wstring_view takeDigits(std::wstring_view& text, size_t most)
{
    size_t n = 0;
    while (n < text.size() && n < most && isDigit(text[n]))
        ++n;
    const std::wstring_view digits = text.substr(0, n);
    text.remove_prefix(n);
    return digits;
}

int64_t numberOf(std::wstring_view digits)
{
    int64_t number = 0;
    for (const wchar_t c : digits)
        number = number * 10 + (c - L'0');
    return number;
}

bool takeNumber(std::wstring_view& text, int& number)
{
    const std::wstring_view digits = takeDigits(text, 2);
    number = static_cast<int>(numberOf(digits));
    return !digits.empty();
}

bool takeYear(std::wstring_view& text, int64_t& year)
{
    const bool negative = text.starts_with(L'-');
    if (negative)
        text.remove_prefix(1);
    const std::wstring_view digits = takeDigits(text, 6);
    year = negative ? -numberOf(digits) : numberOf(digits);
    return !digits.empty();
}

bool takeFraction(std::wstring_view& text, int& micros)
{
    std::wstring digits(takeDigits(text, SIZE_MAX));
    if (digits.empty() || digits.size() > 6)
        return false;
    digits.append(6 - digits.size(), L'0');
    micros = static_cast<int>(numberOf(digits));
    return true;
}

bool takePart(std::wstring_view& text, Part part, wchar_t literal, DateTimeParts& parts)
{
    switch (part) {
    case Part::Year:
        return takeYear(text, parts.year);
    case Part::Month:
        return takeNumber(text, parts.month);
    case Part::Day:
        return takeNumber(text, parts.day);
    case Part::Hour:
        return takeNumber(text, parts.hour);
    case Part::Minute:
        return takeNumber(text, parts.minute);
    case Part::Second:
        return takeNumber(text, parts.second);
    case Part::Fraction:
        return takeFraction(text, parts.micros);
    case Part::OptionalFraction:
        if (!text.starts_with(L'.'))
            return true;
        text.remove_prefix(1);
        return takeFraction(text, parts.micros);
    case Part::Literal:
        if (text.empty() || text[0] != literal)
            return false;
        text.remove_prefix(1);
        return true;
    }
    return false;
}

} // namespace

DateTimeParts splitDateTime(int64_t micros)
{
    int64_t days = micros / microsPerDay;
    int64_t rest = micros % microsPerDay;
    if (rest < 0) {
        rest += microsPerDay;
        --days;
    }
    DateTimeParts parts;
    civilFromDays(days, parts);
    parts.micros = static_cast<int>(rest % microsPerSecond);
    const auto seconds = static_cast<int>(rest / microsPerSecond);
    parts.hour = seconds / 3600;
    parts.minute = seconds / 60 % 60;
    parts.second = seconds % 60;
    return parts;
}

bool joinDateTime(const DateTimeParts& parts, int64_t& micros)
{
    if (parts.year < -300'000 || parts.year > 300'000 || parts.month < 1 || parts.month > 12 ||
        parts.day < 1 || parts.day > daysInMonth(parts.year, parts.month))
        return false;
    if (parts.hour < 0 || parts.hour > 23 || parts.minute < 0 || parts.minute > 59 ||
        parts.second < 0 || parts.second > 59 || parts.micros < 0 ||
        parts.micros >= microsPerSecond)
        return false;
    const int64_t seconds = (parts.hour * 60 + parts.minute) * 60 + parts.second;
    int64_t days = daysFromCivil(parts.year, parts.month, parts.day);
    int64_t time = seconds * microsPerSecond + parts.micros;
    if (days < 0) { // towards zero, so that the first day of the range does not overflow half-way
        ++days;
        time -= microsPerDay;
    }
    return !__builtin_mul_overflow(days, microsPerDay, &micros) &&
           !__builtin_add_overflow(micros, time, &micros);
}

std::wstring formatDateTime(int64_t micros, std::wstring_view format)
{
    if (micros == dateBeforeAll)
        return L"-infinity";
    if (micros == dateAfterAll)
        return L"infinity";
    const DateTimeParts parts = splitDateTime(micros);
    std::wstring text;
    while (!format.empty()) {
        const Token token = nextToken(format);
        if (token.part == Part::Literal)
            text += format[0];
        else
            appendPart(text, token.part, parts);
        format.remove_prefix(token.length);
    }
    return text;
}

bool parseDateTime(std::wstring_view text, std::wstring_view format, int64_t& micros)
{
    if (text == L"infinity" || text == L"-infinity") {
        micros = text[0] == L'-' ? dateBeforeAll : dateAfterAll;
        return true;
    }
    DateTimeParts parts;
    while (!format.empty()) {
        const Token token = nextToken(format);
        if (!takePart(text, token.part, format[0], parts))
            return false;
        format.remove_prefix(token.length);
    }
    return text.empty() && joinDateTime(parts, micros);
}

} // namespace OviAPI
