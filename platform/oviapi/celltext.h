// Values of cells and their text, exact both ways.
//
// A value lies in a row as plain bytes (not aligned), in a form that its data type fixes:
//
//     Text, NationalText, ExternalFile   wchar_t characters up to a zero or to the end of the space
//     Int16, Int32, Int64, UInt64        two's complement, byte order of the machine
//     Float, Double                      IEEE 754
//     DateTime                           int64, microseconds since 1970-01-01 00:00:00, no time
//     zone Decimal                            ASCII characters of the number, up to a zero or the
//     end Boolean                            zero is false Bytes                              as
//     they are LargeObject                        no value in the row
//
// No text made here depends on the locale: the decimal sign is always a point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

enum class DataType : unsigned char {
    None = 0,
    Text = 1,
    Int32 = 2,
    Int16 = 3,
    Float = 4,
    Double = 5,
    ExternalFile = 6,
    DateTime = 7,
    Int64 = 8,
    LargeObject = 9,
    Decimal = 10,
    NationalText = 11,
    Bytes = 12,
    UInt64 = 13,
    Boolean = 14,
};

// The framework's data type of a column that the database client describes with this type code;
// 0 for a code it does not know.
OVIAPI_API unsigned char DorToApsType(unsigned char clientType);

// Text made of wchar_t characters.
constexpr bool isTextType(unsigned char type)
{
    return type == static_cast<unsigned char>(DataType::Text) ||
           type == static_cast<unsigned char>(DataType::ExternalFile) ||
           type == static_cast<unsigned char>(DataType::NationalText);
}

// A number, drawn to the right: types 2, 3, 4, 5, 8, 10 and 13.
OVIAPI_API bool isNumberType(unsigned char type);

// Bytes that a value of the type always has; 0 where the length depends on the column.
OVIAPI_API size_t fixedValueSize(unsigned char type);

// The display text of a value. format: of DateTime, empty for the default. A number or date in less
// space than its type needs gives an empty text.
OVIAPI_API std::wstring valueToText(unsigned char type, std::span<const std::byte> value,
                                    std::wstring_view format = {});

// The same of the first characters only: what is left out of a long text is never converted.
OVIAPI_API std::wstring valueToText(unsigned char type, std::span<const std::byte> value,
                                    std::wstring_view format, size_t maxChars);

// The value as a number; false when it is none. A Decimal and a 64-bit integer are rounded to the
// nearest double.
OVIAPI_API bool valueToNumber(unsigned char type, std::span<const std::byte> value, double& number);

// Why a text is not a value of a column.
enum class TextFault {
    None,
    NotANumber,
    NotAnInteger,
    OutOfRange, // a number that the type cannot hold
    NotADate,   // does not follow the format, or no such day or time
    NotABoolean,
    NotHexadecimal,
    TooLong, // more characters, digits or bytes than the column has space for
    NotText, // a column whose values have no text
};

// A sentence for the user; empty for None.
OVIAPI_API std::wstring faultText(TextFault fault);

// Makes the value of a text. space: bytes the column has for it. Blanks around a number, date or
// truth value do not count; text is taken as it is. On a fault the value is left empty.
OVIAPI_API TextFault textToValue(unsigned char type, std::wstring_view text, size_t space,
                                 std::wstring_view format, std::vector<std::byte>& value);

// Date and time. In a format these letters stand for parts, everything else for itself:
//
//     yyyy  year, four digits at least      mi  minute
//     mm    month 01 to 12                  ss  second
//     dd    day                             ff  fraction, as many digits as it needs, two at least
//     hh    hour 00 to 23                   f   point and fraction, nothing when it is zero
//
inline constexpr std::wstring_view defaultDateFormat = L"yyyy-mm-dd hh:mi:ssf";
inline constexpr std::wstring_view sqlDateFormat = L"mm/dd/yyyy:hh:mi:ss.ff";

struct DateTimeParts {
    int64_t year = 1970; // 0 is the year before 1
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int micros = 0;

    bool operator==(const DateTimeParts&) const = default;
};

// The two ends of the range stand for times before and behind every other; their texts are
// "-infinity" and "infinity" in every format.
inline constexpr int64_t dateBeforeAll = INT64_MIN;
inline constexpr int64_t dateAfterAll = INT64_MAX;

OVIAPI_API DateTimeParts splitDateTime(int64_t micros);
// False when there is no such day or time, or it lies outside the range.
OVIAPI_API bool joinDateTime(const DateTimeParts& parts, int64_t& micros);
OVIAPI_API std::wstring formatDateTime(int64_t micros, std::wstring_view format);
// Parts that the format does not name are those of 1970-01-01 00:00:00. A fraction of more than six
// digits, a part left out and text behind the end are refused.
OVIAPI_API bool parseDateTime(std::wstring_view text, std::wstring_view format, int64_t& micros);

// Two hexadecimal digits a byte, in capital letters.
OVIAPI_API std::wstring DumpToHexText(const void* bytes, size_t count);

} // namespace OviAPI
