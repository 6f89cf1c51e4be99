#include <oviapi/spinbox.h>

#include <algorithm>
#include <limits>

namespace OviAPI {

namespace {

constexpr int maxDigits = 18;

bool isBlank(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == 0xA0;
}

std::wstring_view trimmed(std::wstring_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// Takes the digits at the start away.
std::wstring_view takeDigits(std::wstring_view& text)
{
    const auto end =
        std::find_if(text.begin(), text.end(), [](wchar_t c) { return c < L'0' || c > L'9'; });
    const std::wstring_view digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

} // namespace

std::optional<int64_t> readUnits(std::wstring_view text, int digits, std::wstring_view suffix)
{
    digits = std::clamp(digits, 0, maxDigits);
    text = trimmed(text);
    suffix = trimmed(suffix);
    if (!suffix.empty() && text.ends_with(suffix))
        text = trimmed(text.substr(0, text.size() - suffix.size()));
    bool negative = false;
    if (!text.empty() && (text.front() == L'-' || text.front() == L'+')) {
        negative = text.front() == L'-';
        text.remove_prefix(1);
    }
    const std::wstring_view whole = takeDigits(text);
    std::wstring_view decimals;
    if (!text.empty() && (text.front() == L'.' || text.front() == L',')) {
        text.remove_prefix(1);
        decimals = takeDigits(text);
    }
    if (!text.empty() || whole.size() + decimals.size() == 0)
        return {};
    constexpr auto largest = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    const uint64_t limit = largest + (negative ? 1 : 0);
    uint64_t value = 0;
    const auto shift = [&](wchar_t digit) {
        const auto d = static_cast<uint64_t>(digit - L'0');
        value = value > (limit - d) / 10 ? limit : value * 10 + d;
    };
    for (const wchar_t digit : whole)
        shift(digit);
    for (size_t i = 0; i < static_cast<size_t>(digits); ++i)
        shift(i < decimals.size() ? decimals[i] : L'0');
    const auto next = static_cast<size_t>(digits);
    if (next < decimals.size() && decimals[next] >= L'5' && value < limit)
        ++value;
    // In unsigned numbers, so that the least number has no positive one to pass through.
    return static_cast<int64_t>(negative ? uint64_t{0} - value : value);
}

std::wstring writeUnits(int64_t units, int digits)
{
    digits = std::clamp(digits, 0, maxDigits);
    const bool negative = units < 0;
    const auto bits = static_cast<uint64_t>(units);
    std::wstring text = std::to_wstring(negative ? uint64_t{0} - bits : bits);
    const auto least = static_cast<size_t>(digits) + 1;
    if (text.size() < least)
        text.insert(0, least - text.size(), L'0');
    if (digits > 0)
        text.insert(text.size() - static_cast<size_t>(digits), 1, L'.');
    return negative ? L'-' + text : text;
}

} // namespace OviAPI
