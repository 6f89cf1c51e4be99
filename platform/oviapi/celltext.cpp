#include <oviapi/celltext.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include <oviapi/phrases.h>

namespace OviAPI {

namespace {

using Bytes = std::vector<std::byte>;

DataType typeOf(unsigned char type)
{
    return static_cast<DataType>(type);
}

template<class T>
bool load(std::span<const std::byte> value, T& out)
{
    if (value.size() < sizeof(T))
        return false;
    std::memcpy(&out, value.data(), sizeof(T));
    return true;
}

template<class T>
TextFault store(T number, size_t space, Bytes& value)
{
    if (space < sizeof(T))
        return TextFault::TooLong;
    value.resize(sizeof(T));
    std::memcpy(value.data(), &number, sizeof(T));
    return TextFault::None;
}

// Only ASCII comes out of to_chars and into from_chars.
std::wstring widen(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

template<class T>
std::wstring numberText(std::span<const std::byte> value)
{
    T number{};
    if (!load(value, number))
        return {};
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
    return widen({buffer, static_cast<size_t>(end - buffer)});
}

std::wstring wideText(std::span<const std::byte> value, size_t maxChars)
{
    const size_t room = std::min(value.size() / sizeof(wchar_t), maxChars);
    std::wstring text(room, L'\0');
    if (room != 0)
        std::memcpy(text.data(), value.data(), room * sizeof(wchar_t));
    if (const size_t end = text.find(L'\0'); end != std::wstring::npos)
        text.resize(end);
    return text;
}

std::string decimalDigits(std::span<const std::byte> value)
{
    std::string digits(value.size(), '\0');
    if (!digits.empty())
        std::memcpy(digits.data(), value.data(), digits.size());
    if (const size_t end = digits.find('\0'); end != std::string::npos)
        digits.resize(end);
    return digits;
}

bool isTrue(std::span<const std::byte> value)
{
    return std::any_of(value.begin(), value.end(), [](std::byte b) { return b != std::byte{0}; });
}

std::wstring_view trimmed(std::wstring_view text)
{
    const auto blank = [](wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

// The ASCII form of a text that can only be a number when it is ASCII; empty when it is not.
// from_chars knows no leading plus sign.
std::string numberAscii(std::wstring_view text)
{
    text = trimmed(text);
    if (text.size() > 1 && text[0] == L'+' && text[1] != L'-' && text[1] != L'+')
        text.remove_prefix(1);
    std::string ascii;
    for (const wchar_t c : text) {
        if (c <= L' ' || c > L'~')
            return {};
        ascii += static_cast<char>(c);
    }
    return ascii;
}

template<class T>
TextFault parseNumber(std::wstring_view text, size_t space, Bytes& value)
{
    const std::string ascii = numberAscii(text);
    const char* end = ascii.data() + ascii.size();
    T number{};
    auto [at, error] = std::from_chars(ascii.data(), end, number);
    constexpr auto wrong = std::is_integral_v<T> ? TextFault::NotAnInteger : TextFault::NotANumber;
    if (error == std::errc::result_out_of_range && at == end)
        return TextFault::OutOfRange;
    // "-1" is a number, though none of an unsigned type.
    if (std::is_unsigned_v<T> && error != std::errc() && ascii.size() > 1 && ascii[0] == '-' &&
        std::all_of(ascii.begin() + 1, ascii.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return TextFault::OutOfRange;
    if (error != std::errc() || at != end)
        return wrong;
    return store(number, space, value);
}

size_t countDigits(std::string_view text, size_t from)
{
    size_t n = 0;
    while (from + n < text.size() && text[from + n] >= '0' && text[from + n] <= '9')
        ++n;
    return n;
}

// [-] digits [. digits] [e [+-] digits], with a digit before or behind the point.
bool isDecimal(std::string_view text)
{
    size_t i = text.starts_with('-') ? 1 : 0;
    size_t digits = countDigits(text, i);
    i += digits;
    if (i < text.size() && text[i] == '.') {
        const size_t behind = countDigits(text, i + 1);
        digits += behind;
        i += 1 + behind;
    }
    if (digits == 0)
        return false;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-'))
            ++i;
        const size_t exponent = countDigits(text, i);
        i += exponent;
        if (exponent == 0)
            return false;
    }
    return i == text.size();
}

TextFault parseDecimal(std::wstring_view text, size_t space, Bytes& value)
{
    const std::string ascii = numberAscii(text);
    if (!isDecimal(ascii) && ascii != "NaN" && ascii != "Infinity" && ascii != "-Infinity")
        return TextFault::NotANumber;
    if (ascii.size() > space)
        return TextFault::TooLong;
    value.resize(ascii.size());
    std::memcpy(value.data(), ascii.data(), ascii.size());
    return TextFault::None;
}

TextFault parseWide(std::wstring_view text, size_t space, Bytes& value)
{
    if (const size_t end = text.find(L'\0'); end != std::wstring_view::npos)
        text = text.substr(0, end);
    // The terminator needs its place in the row, too.
    if ((text.size() + 1) * sizeof(wchar_t) > space)
        return TextFault::TooLong;
    value.resize(text.size() * sizeof(wchar_t));
    if (!text.empty())
        std::memcpy(value.data(), text.data(), value.size());
    return TextFault::None;
}

TextFault parseDate(std::wstring_view text, size_t space, std::wstring_view format, Bytes& value)
{
    int64_t micros = 0;
    const std::wstring_view pattern = format.empty() ? defaultDateFormat : format;
    text = trimmed(text);
    bool ok = parseDateTime(text, pattern, micros);
    // A day without a time is a date as people write it.
    if (!ok && format.empty())
        ok = parseDateTime(text, L"yyyy-mm-dd", micros) ||
             parseDateTime(text, L"yyyy-mm-dd hh:mi", micros);
    return ok ? store(micros, space, value) : TextFault::NotADate;
}

TextFault parseBoolean(std::wstring_view text, size_t space, Bytes& value)
{
    text = trimmed(text);
    const bool yes = text == L"true" || text == L"1";
    if (!yes && text != L"false" && text != L"0")
        return TextFault::NotABoolean;
    if (space == 0)
        return TextFault::TooLong;
    value.assign(1, std::byte{yes});
    return TextFault::None;
}

int hexDigit(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

TextFault parseBytes(std::wstring_view text, size_t space, Bytes& value)
{
    text = trimmed(text);
    if (text.size() % 2 != 0)
        return TextFault::NotHexadecimal;
    Bytes bytes;
    bytes.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2) {
        const int high = hexDigit(text[i]);
        const int low = hexDigit(text[i + 1]);
        if (high < 0 || low < 0)
            return TextFault::NotHexadecimal;
        bytes.push_back(static_cast<std::byte>(high << 4 | low));
    }
    if (bytes.size() > space)
        return TextFault::TooLong;
    value = std::move(bytes);
    return TextFault::None;
}

template<class T>
bool asDouble(std::span<const std::byte> value, double& number)
{
    T plain{};
    if (!load(value, plain))
        return false;
    number = static_cast<double>(plain);
    return true;
}

bool decimalNumber(std::span<const std::byte> value, double& number)
{
    const std::string digits = decimalDigits(value);
    const char* end = digits.data() + digits.size();
    const auto [at, error] = std::from_chars(digits.data(), end, number);
    if (error == std::errc::result_out_of_range) { // as large or as small as a double gets
        const size_t e = digits.find_first_of("eE");
        const bool small =
            e == std::string::npos ? digits.find("0.") <= 1 : digits.substr(e + 1, 1) == "-";
        number = small ? 0.0 : std::numeric_limits<double>::infinity();
        if (digits[0] == '-')
            number = -number;
        return true;
    }
    return error == std::errc() && at == end;
}

} // namespace

unsigned char DorToApsType(unsigned char clientType)
{
    static constexpr DataType types[] = {
        DataType::None,         DataType::Text,         DataType::Int16,
        DataType::Int32,        DataType::Int64,        DataType::Float,
        DataType::Bytes,        DataType::LargeObject,  DataType::Double,
        DataType::DateTime,     DataType::Decimal,      DataType::Text,
        DataType::Bytes,        DataType::Boolean,      DataType::None,
        DataType::None,         DataType::NationalText, DataType::NationalText,
        DataType::ExternalFile,
    };
    const size_t index = clientType < std::size(types) ? clientType : 0;
    return static_cast<unsigned char>(types[index]);
}

bool isNumberType(unsigned char type)
{
    switch (typeOf(type)) {
    case DataType::Int16:
    case DataType::Int32:
    case DataType::Int64:
    case DataType::UInt64:
    case DataType::Float:
    case DataType::Double:
    case DataType::Decimal:
        return true;
    default:
        return false;
    }
}

size_t fixedValueSize(unsigned char type)
{
    switch (typeOf(type)) {
    case DataType::Int16:
        return sizeof(int16_t);
    case DataType::Int32:
    case DataType::Float:
        return sizeof(int32_t);
    case DataType::Int64:
    case DataType::UInt64:
    case DataType::Double:
    case DataType::DateTime:
        return sizeof(int64_t);
    default:
        return 0;
    }
}

std::wstring valueToText(unsigned char type, std::span<const std::byte> value,
                         std::wstring_view format)
{
    return valueToText(type, value, format, SIZE_MAX);
}

std::wstring valueToText(unsigned char type, std::span<const std::byte> value,
                         std::wstring_view format, size_t maxChars)
{
    std::wstring text;
    switch (typeOf(type)) {
    case DataType::Text:
    case DataType::NationalText:
    case DataType::ExternalFile:
        return wideText(value, maxChars);
    case DataType::Int16:
        text = numberText<int16_t>(value);
        break;
    case DataType::Int32:
        text = numberText<int32_t>(value);
        break;
    case DataType::Int64:
        text = numberText<int64_t>(value);
        break;
    case DataType::UInt64:
        text = numberText<uint64_t>(value);
        break;
    case DataType::Float:
        text = numberText<float>(value);
        break;
    case DataType::Double:
        text = numberText<double>(value);
        break;
    case DataType::DateTime:
        if (int64_t micros = 0; load(value, micros))
            text = formatDateTime(micros, format.empty() ? defaultDateFormat : format);
        break;
    case DataType::Decimal:
        text = widen(decimalDigits(value.first(std::min(value.size(), maxChars))));
        break;
    case DataType::Boolean:
        text = value.empty() ? L"" : isTrue(value) ? L"true" : L"false";
        break;
    case DataType::Bytes:
        text = DumpToHexText(value.data(), std::min(value.size(), maxChars / 2 + 1));
        break;
    case DataType::None:
    case DataType::LargeObject:
        break;
    }
    if (text.size() > maxChars)
        text.resize(maxChars);
    return text;
}

bool valueToNumber(unsigned char type, std::span<const std::byte> value, double& number)
{
    switch (typeOf(type)) {
    case DataType::Int16:
        return asDouble<int16_t>(value, number);
    case DataType::Int32:
        return asDouble<int32_t>(value, number);
    case DataType::Int64:
        return asDouble<int64_t>(value, number);
    case DataType::UInt64:
        return asDouble<uint64_t>(value, number);
    case DataType::Float:
        return asDouble<float>(value, number);
    case DataType::Double:
        return asDouble<double>(value, number);
    case DataType::Decimal:
        return decimalNumber(value, number);
    case DataType::Boolean:
        number = isTrue(value) ? 1.0 : 0.0;
        return !value.empty();
    default:
        return false;
    }
}

std::wstring faultText(TextFault fault)
{
    switch (fault) {
    case TextFault::None:
        return {};
    case TextFault::NotANumber:
        return phrase(Phrase::NotANumber);
    case TextFault::NotAnInteger:
        return phrase(Phrase::NotAnInteger);
    case TextFault::OutOfRange:
        return phrase(Phrase::OutOfRange);
    case TextFault::NotADate:
        return phrase(Phrase::NotADate);
    case TextFault::NotABoolean:
        return phrase(Phrase::NotABoolean);
    case TextFault::NotHexadecimal:
        return phrase(Phrase::NotHexadecimal);
    case TextFault::TooLong:
        return phrase(Phrase::TooLong);
    case TextFault::NotText:
        return phrase(Phrase::NotText);
    }
    return {};
}

TextFault textToValue(unsigned char type, std::wstring_view text, size_t space,
                      std::wstring_view format, std::vector<std::byte>& value)
{
    value.clear();
    switch (typeOf(type)) {
    case DataType::Text:
    case DataType::NationalText:
    case DataType::ExternalFile:
        return parseWide(text, space, value);
    case DataType::Int16:
        return parseNumber<int16_t>(text, space, value);
    case DataType::Int32:
        return parseNumber<int32_t>(text, space, value);
    case DataType::Int64:
        return parseNumber<int64_t>(text, space, value);
    case DataType::UInt64:
        return parseNumber<uint64_t>(text, space, value);
    case DataType::Float:
        return parseNumber<float>(text, space, value);
    case DataType::Double:
        return parseNumber<double>(text, space, value);
    case DataType::DateTime:
        return parseDate(text, space, format, value);
    case DataType::Decimal:
        return parseDecimal(text, space, value);
    case DataType::Boolean:
        return parseBoolean(text, space, value);
    case DataType::Bytes:
        return parseBytes(text, space, value);
    case DataType::None:
    case DataType::LargeObject:
        break;
    }
    return TextFault::NotText;
}

std::wstring DumpToHexText(const void* bytes, size_t count)
{
    static constexpr wchar_t digits[] = L"0123456789ABCDEF";
    const auto* at = static_cast<const unsigned char*>(bytes);
    std::wstring text;
    text.reserve(2 * count);
    for (size_t i = 0; i < count; ++i) {
        text += digits[at[i] >> 4];
        text += digits[at[i] & 15U];
    }
    return text;
}

} // namespace OviAPI
