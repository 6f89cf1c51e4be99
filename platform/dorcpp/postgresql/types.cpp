#include <dorcpp/postgresql/types.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include <dorcpp/types.h>

namespace DorCPP::Postgresql {

namespace {

constexpr int maxLength = 65532;
constexpr int defaultCharacters = 1000;
constexpr int modifierHeader = 4; // a modifier counts itself
constexpr int64_t dayMicros = 86'400'000'000;
constexpr int64_t daysTo2000 = 10957; // since 1970

int textLength(int characters)
{
    return std::min(characters, maxLength / 4) * 4;
}

ColumnType numericType(int modifier)
{
    if (modifier < modifierHeader)
        return {TypeDecimal, defaultCharacters};
    const int packed = modifier - modifierHeader;
    const int precision = packed >> 16;
    const int scale = ((packed & 0x7FF) ^ 0x400) - 0x400; // 11 bits with a sign
    // sign, point, a leading zero and the end
    return {TypeDecimal,
            std::max(precision, 30) + std::max(scale - precision, 0) + std::max(-scale, 0) + 10};
}

Value integerValue(int64_t integer)
{
    Value value;
    value.kind = Value::Integer;
    value.integer = integer;
    return value;
}

Value realValue(double real)
{
    Value value;
    value.kind = Value::Real;
    value.real = real;
    return value;
}

Value bytesValue(Value::Kind kind, std::string_view bytes)
{
    Value value;
    value.kind = kind;
    value.data = bytes.data();
    value.held = value.length = bytes.size();
    return value;
}

void appendPadded(std::string& out, int64_t number, size_t width)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const auto count = static_cast<size_t>(end - digits.data());
    out.append(width > count ? width - count : 0, '0');
    out.append(digits.data(), count);
}

// The text of a date or time while it is made.
class DateText {
public:
    // A number that is not negative, with leading zeros.
    void number(int64_t value, int width)
    {
        for (int i = width; i-- > 0; value /= 10)
            m_text[m_length + static_cast<size_t>(i)] = static_cast<char>('0' + value % 10);
        m_length += static_cast<size_t>(width);
    }
    void text(std::string_view piece)
    {
        std::copy(piece.begin(), piece.end(), m_text.begin() + static_cast<ptrdiff_t>(m_length));
        m_length += piece.size();
    }
    void dropZeros()
    {
        while (m_text[m_length - 1] == '0')
            --m_length;
    }
    std::string_view get() const { return {m_text.data(), m_length}; }

private:
    std::array<char, 64> m_text; // the longest has 32
    size_t m_length = 0;
};

// Adds the date; true for a year before the first, whose text ends in " BC".
bool addDate(DateText& out, int64_t daysSince1970)
{
    // Civil date of a day number, counted in eras of 400 years that begin in March.
    const int64_t z = daysSince1970 + 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t dayOfEra = z - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shifted = (5 * dayOfYear + 2) / 153;
    const int64_t month = shifted < 10 ? shifted + 3 : shifted - 9;
    const int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    const int64_t shown = year > 0 ? year : 1 - year;
    int width = 4;
    for (int64_t limit = 10'000; shown >= limit; limit *= 10)
        ++width;
    out.number(shown, width);
    out.text("-");
    out.number(month, 2);
    out.text("-");
    out.number(dayOfYear - (153 * shifted + 2) / 5 + 1, 2);
    return year <= 0;
}

void addTime(DateText& out, int64_t micros)
{
    const int64_t seconds = micros / 1'000'000;
    out.number(seconds / 3600, 2);
    out.text(":");
    out.number(seconds / 60 % 60, 2);
    out.text(":");
    out.number(seconds % 60, 2);
    if (const int64_t fraction = micros % 1'000'000) {
        out.text(".");
        out.number(fraction, 6);
        out.dropZeros();
    }
}

template<class T>
bool addInfinity(DateText& out, T number)
{
    if (number == std::numeric_limits<T>::max())
        out.text("infinity");
    else if (number == std::numeric_limits<T>::min())
        out.text("-infinity");
    else
        return false;
    return true;
}

void addTimestamp(DateText& out, int64_t micros)
{
    if (addInfinity(out, micros))
        return;
    int64_t days = micros / dayMicros;
    int64_t time = micros % dayMicros;
    if (time < 0) {
        time += dayMicros;
        --days;
    }
    const bool early = addDate(out, days + daysTo2000);
    out.text(" ");
    addTime(out, time);
    if (early)
        out.text(" BC");
}

void addDay(DateText& out, int32_t days)
{
    if (!addInfinity(out, days) && addDate(out, days + daysTo2000))
        out.text(" BC");
}

// The text of a date or time in its binary form, in own.
Value dateValue(const Field& f, std::string& own)
{
    DateText text;
    if (f.type == DateType)
        addDay(text, bigEndian<int32_t>(f.data));
    else if (f.type == TimeType)
        addTime(text, bigEndian<int64_t>(f.data));
    else
        addTimestamp(text, bigEndian<int64_t>(f.data));
    own = text.get();
    return bytesValue(Value::Text, own);
}

// Digits in groups of four, as the server sends them.
bool appendNumeric(std::string& out, const char* data, size_t length)
{
    if (length < 8)
        return false;
    const int count = bigEndian<uint16_t>(data);
    const int weight = bigEndian<int16_t>(data + 2); // of the first group, in groups
    const int sign = bigEndian<uint16_t>(data + 4);
    const int scale = bigEndian<uint16_t>(data + 6); // digits behind the point
    if (length != 8 + 2 * static_cast<size_t>(count))
        return false;
    switch (sign) {
    case 0x0000:
        break;
    case 0x4000:
        out += '-';
        break;
    case 0xC000:
        out += "NaN";
        return true;
    case 0xD000:
        out += "Infinity";
        return true;
    case 0xF000:
        out += "-Infinity";
        return true;
    default:
        return false;
    }
    const auto group = [&](int i) -> int64_t {
        return i >= 0 && i < count ? bigEndian<uint16_t>(data + 8 + ptrdiff_t(2) * i) : 0;
    };
    appendPadded(out, group(weight < 0 ? -1 : 0), 1);
    for (int i = 1; i <= weight; ++i)
        appendPadded(out, group(i), 4);
    if (scale == 0)
        return true;
    out += '.';
    const size_t end = out.size() + static_cast<size_t>(scale);
    for (int i = weight + 1; out.size() < end; ++i)
        appendPadded(out, group(i), 4);
    out.resize(end);
    return true;
}

void appendHex(std::string& out, const char* data, size_t length)
{
    static constexpr char digits[] = "0123456789abcdef";
    for (size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        out += {digits[byte >> 4], digits[byte & 15]};
    }
}

void appendUuid(std::string& out, const char* data)
{
    for (size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            out += '-';
        appendHex(out, data + i, 1);
    }
}

// The size of the binary form; 0: any.
size_t binarySize(Oid type)
{
    switch (type) {
    case BoolType:
        return 1;
    case Int2Type:
        return 2;
    case Int4Type:
    case OidType:
    case XidType:
    case Float4Type:
    case DateType:
        return 4;
    case TidType:
        return 6;
    case Int8Type:
    case Float8Type:
    case TimeType:
    case TimestampType:
        return 8;
    case UuidType:
        return 16;
    default:
        return 0;
    }
}

Value valueFromBinary(const Field& f, std::string& own)
{
    const size_t size = binarySize(f.type);
    if (size != 0 && size != f.length)
        return bytesValue(Value::Blob, {f.data, f.length}); // no form that this driver knows
    switch (f.type) {
    case BoolType:
        return integerValue(f.data[0] != 0);
    case Int2Type:
        return integerValue(bigEndian<int16_t>(f.data));
    case Int4Type:
        return integerValue(bigEndian<int32_t>(f.data));
    case OidType:
    case XidType:
        return integerValue(bigEndian<uint32_t>(f.data));
    case Int8Type:
        return integerValue(bigEndian<int64_t>(f.data));
    case Float4Type:
        return realValue(static_cast<double>(std::bit_cast<float>(bigEndian<uint32_t>(f.data))));
    case Float8Type:
        return realValue(std::bit_cast<double>(bigEndian<uint64_t>(f.data)));
    case ByteaType:
        return bytesValue(Value::Blob, {f.data, f.length});
    case DateType:
    case TimeType:
    case TimestampType:
        return dateValue(f, own);
    case UuidType:
        own.clear();
        appendUuid(own, f.data);
        return bytesValue(Value::Text, own);
    case TidType:
        own = '(' + std::to_string(bigEndian<uint32_t>(f.data)) + ',' +
              std::to_string(bigEndian<uint16_t>(f.data + 4)) + ')';
        return bytesValue(Value::Text, own);
    case NumericType:
        own.clear();
        if (!appendNumeric(own, f.data, f.length))
            return bytesValue(Value::Blob, {f.data, f.length});
        return bytesValue(Value::Text, own);
    case JsonbType: // a version in front
        return bytesValue(Value::Text,
                          {f.data + (f.length ? 1 : 0), f.length - (f.length ? 1 : 0)});
    default:
        return bytesValue(Value::Text, {f.data, f.length});
    }
}

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

Value bytesFromText(const Field& f, std::string& own)
{
    own.clear();
    if (f.length >= 2 && f.data[0] == '\\' && f.data[1] == 'x') {
        own.reserve(f.length / 2);
        for (size_t i = 2; i + 1 < f.length; i += 2)
            own += static_cast<char>(digitOf(f.data[i]) << 4 | digitOf(f.data[i + 1]));
    } else { // the form of older servers, which a session may ask for
        size_t size = 0;
        unsigned char* bytes =
            PQunescapeBytea(reinterpret_cast<const unsigned char*>(f.data), &size);
        if (bytes)
            own.assign(reinterpret_cast<const char*>(bytes), size);
        PQfreemem(bytes);
    }
    return bytesValue(Value::Blob, own);
}

Value valueFromText(const Field& f, std::string& own)
{
    switch (f.type) {
    case BoolType:
        return integerValue(f.length > 0 && f.data[0] == 't');
    case Int2Type:
    case Int4Type:
    case Int8Type:
    case OidType:
    case XidType: {
        int64_t number = 0;
        if (std::from_chars(f.data, f.data + f.length, number).ptr == f.data + f.length)
            return integerValue(number);
        break;
    }
    case Float4Type:
    case Float8Type: {
        float narrow = 0;
        double number = 0;
        const auto end = f.type == Float4Type
                             ? std::from_chars(f.data, f.data + f.length, narrow).ptr
                             : std::from_chars(f.data, f.data + f.length, number).ptr;
        if (end == f.data + f.length)
            return realValue(f.type == Float4Type ? static_cast<double>(narrow) : number);
        break;
    }
    case ByteaType:
        return bytesFromText(f, own);
    default:
        break;
    }
    return bytesValue(Value::Text, {f.data, f.length});
}

} // namespace

ColumnType columnType(Oid type, int modifier)
{
    switch (type) {
    case BoolType:
        return {TypeBoolean, 1};
    case Int2Type:
        return {TypeSmallint, 2};
    case Int4Type:
        return {TypeInteger, 4};
    case Int8Type:
    case OidType:
    case XidType:
        return {TypeBigint, 8};
    case Float4Type:
        return {TypeReal, 4};
    case Float8Type:
        return {TypeDouble, 8};
    case NumericType:
        return numericType(modifier);
    case DateType:
    case TimestampType:
        return {TypeDate, 8};
    case ByteaType:
        return {TypeBlob, 0};
    case SingleCharType:
        return {TypeChar, 4};
    case BpcharType:
        if (modifier > modifierHeader)
            return {TypeChar, textLength(modifier - modifierHeader)};
        break;
    case VarcharType:
        if (modifier > modifierHeader)
            return {TypeVarchar, textLength(modifier - modifierHeader)};
        break;
    case NameType:
        return {TypeVarchar, textLength(63)};
    case UuidType:
        return {TypeVarchar, textLength(36)};
    case TimeType:
        return {TypeVarchar, textLength(15)};
    case TimestamptzType:
        return {TypeVarchar, textLength(40)};
    default:
        break;
    }
    return {TypeVarchar, textLength(defaultCharacters)};
}

bool hasBinaryForm(Oid type)
{
    switch (type) {
    case ByteaType:
    case SingleCharType:
    case NameType:
    case TextType:
    case JsonType:
    case UnknownType:
    case BpcharType:
    case VarcharType:
    case NumericType:
    case JsonbType:
        return true;
    default:
        return binarySize(type) != 0;
    }
}

PlainForm plainForm(Oid type, bool binary)
{
    if (!binary)
        return PlainForm::None;
    switch (type) {
    case Int4Type:
        return PlainForm::Integer4;
    case Int8Type:
        return PlainForm::Integer8;
    case Float8Type:
        return PlainForm::Real8;
    case TextType:
    case VarcharType:
    case BpcharType:
        return PlainForm::Text;
    case ByteaType:
        return PlainForm::Bytes;
    default:
        return PlainForm::None;
    }
}

bool isUnbounded(Oid type, int modifier)
{
    switch (type) {
    case ByteaType:
    case TextType:
    case JsonType:
    case JsonbType:
        return true;
    case VarcharType:
        return modifier < modifierHeader;
    default:
        return false;
    }
}

Value valueOf(const Field& field, std::string& own)
{
    return field.binary ? valueFromBinary(field, own) : valueFromText(field, own);
}

} // namespace DorCPP::Postgresql
