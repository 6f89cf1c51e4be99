#include <dorcpp/value.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include <dorcpp/charset.h>
#include <dorcpp/errors.h>
#include <oviapi/celltext.h>
#include <oviapi/text.h>

namespace DorCPP {

namespace {

constexpr int textLength = 4000; // a text without a declared length: 1,000 characters

// Whether the eight bytes are ASCII and none is zero.
bool isPlainWord(const char* bytes)
{
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return (((word - 0x0101010101010101U) | word) & 0x8080808080808080U) == 0;
}

// Leading bytes that are ASCII and not zero.
size_t plainPrefix(std::string_view text)
{
    size_t i = 0;
    while (i + 8 <= text.size() && isPlainWord(text.data() + i))
        i += 8;
    if (text.size() >= 8 && i + 8 > text.size() && isPlainWord(text.data() + text.size() - 8))
        return text.size();
    while (i < text.size() && text[i] > 0)
        ++i;
    return i;
}

// Copies a text that is ASCII without a zero; false when it is not.
bool copyPlain(const char* text, size_t length, char* to)
{
    constexpr size_t word = 8;
    if (length < word) {
        for (size_t i = 0; i < length; ++i) {
            if (text[i] <= 0)
                return false;
            to[i] = text[i];
        }
        return true;
    }
    for (size_t i = 0;; i = std::min(i + word, length - word)) { // the last ones overlap
        if (!isPlainWord(text + i))
            return false;
        std::memcpy(to + i, text + i, word);
        if (i == length - word)
            return true;
    }
}

bool isNarrowText(int clientType)
{
    return clientType == TypeText || clientType == TypeVarchar || clientType == TypeChar ||
           clientType == TypeExtfile;
}

bool isBytes(int clientType)
{
    return clientType == TypeByte || clientType == TypeVarbyte || clientType == TypeBlob;
}

// Valid UTF-8 without a zero.
bool isPlain(std::string_view text)
{
    const std::string_view rest = text.substr(plainPrefix(text));
    return rest.empty() || (rest.find('\0') == std::string_view::npos && OviAPI::isValidUtf8(rest));
}

// At most n bytes, not ending inside a character.
std::string_view cutUtf8(std::string_view text, size_t n)
{
    if (text.size() <= n)
        return text;
    size_t end = n;
    while (end > 0 && n - end < 4 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    const bool start = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
    return text.substr(0, start ? end : n);
}

// Wide text with a replacement character for every byte that is not text.
std::wstring wideOf(std::string_view text)
{
    std::wstring wide = OviAPI::utf8ToWide(text);
    std::replace(wide.begin(), wide.end(), L'\0', static_cast<wchar_t>(0xFFFD));
    return wide;
}

// The text that a value is shown as, and whether it is that value.
struct Shown {
    std::string own;       // where it had to be made
    std::string_view text; // UTF-8
    ValueState state = ValueState::Exact;
};

Shown shownText(const Value& value, size_t capacity)
{
    Shown shown;
    switch (value.kind) {
    case Value::Null:
        shown.state = ValueState::Null;
        break;
    case Value::Integer:
        shown.own = numberText(value.integer);
        break;
    case Value::Real:
        shown.own = numberText(value.real);
        break;
    case Value::Text:
        // What is held may end inside a character when there is more of the value.
        shown.text = value.length > value.held && value.held > 4
                         ? cutUtf8(value.bytes(), value.held - 4)
                         : value.bytes();
        if (shown.text.size() < value.length)
            shown.state = ValueState::Cut;
        return shown;
    case Value::Blob:
        shown.state = ValueState::Mismatch;
        for (size_t i = 0; i < value.held && shown.own.size() < capacity; ++i) {
            static constexpr char digits[] = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(value.data[i]);
            shown.own += {digits[byte >> 4], digits[byte & 15]};
        }
        break;
    }
    shown.text = shown.own;
    return shown;
}

ValueState narrowText(const Value& value, char* buffer, size_t capacity, size_t& length)
{
    if (capacity == 0)
        throw makeError(CodeBadCall, "a text buffer needs at least one byte");
    const Shown shown = shownText(value, capacity);
    const ValueState state = shown.state;
    const size_t space = capacity - 1;
    const Charset charset = getStdCharset();
    const bool utf8 = charset == Charset::Utf8;
    // Other sets need fewer bytes for a character than UTF-8 does, down to a quarter.
    const std::string_view part = cutUtf8(shown.text, utf8 ? space : space * 4);
    bool whole = part.size() == shown.text.size();
    bool good = isPlain(part);
    if (utf8 && good) {
        std::copy_n(part.data(), part.size(), buffer);
        length = part.size();
    } else {
        const std::wstring wide = wideOf(part);
        const std::string bytes = narrow(wide, charset);
        length = wcs2mbs(buffer, space, wide.data(), wide.size(), charset);
        whole = whole && length == bytes.size();
        good = good && (utf8 || widen(bytes, charset) == wide);
    }
    buffer[length] = 0;
    if (state == ValueState::Mismatch || state == ValueState::Null)
        return state;
    if (!good)
        return ValueState::BadText;
    return whole ? state : ValueState::Cut;
}

ValueState wideText(const Value& value, char* buffer, size_t capacity, size_t& length)
{
    if (capacity < sizeof(char16_t))
        throw makeError(CodeBadCall, "a UTF-16 buffer needs at least two bytes");
    const Shown shown = shownText(value, capacity);
    const ValueState state = shown.state;
    // A unit comes from three bytes at most, so what is left out here would not fit.
    const std::string_view part = cutUtf8(shown.text, capacity * 2);
    const std::u16string units = OviAPI::wideToUtf16(wideOf(part));
    size_t n = std::min(units.size(), capacity / sizeof(char16_t) - 1);
    if (n < units.size() && n > 0 && (units[n] & 0xFC00) == 0xDC00)
        --n;
    length = n * sizeof(char16_t);
    std::memcpy(buffer, units.data(), length);
    std::memset(buffer + length, 0, sizeof(char16_t));
    if (state == ValueState::Mismatch || state == ValueState::Null)
        return state;
    if (!isPlain(part))
        return ValueState::BadText;
    return n < units.size() ? ValueState::Cut : state;
}

ValueState byteForm(const Value& value, char* buffer, size_t capacity, size_t& length)
{
    std::string own;
    std::string_view bytes = value.bytes();
    ValueState state = value.kind == Value::Blob ? ValueState::Exact : ValueState::Mismatch;
    if (value.kind == Value::Integer)
        bytes = own = numberText(value.integer);
    else if (value.kind == Value::Real)
        bytes = own = numberText(value.real);
    else if (value.kind == Value::Null)
        state = ValueState::Null;
    length = std::min(bytes.size(), capacity);
    std::copy_n(bytes.data(), length, buffer);
    std::memset(buffer + length, 0, capacity - length);
    const size_t whole = value.kind == Value::Blob ? value.length : bytes.size();
    return state == ValueState::Exact && length < whole ? ValueState::Cut : state;
}

template<class T>
ValueState parsed(std::string_view text, T& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? ValueState::Exact
                                                                    : ValueState::Mismatch;
}

ValueState toInteger(const Value& value, int64_t& number)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    switch (value.kind) {
    case Value::Integer:
        number = value.integer;
        return ValueState::Exact;
    case Value::Real:
        if (!(value.real >= -limit && value.real < limit) || value.real != std::trunc(value.real))
            return ValueState::Mismatch;
        number = static_cast<int64_t>(value.real);
        return ValueState::Exact;
    case Value::Text:
        return parsed(value.bytes(), number);
    default:
        return ValueState::Mismatch;
    }
}

ValueState toReal(const Value& value, double& number)
{
    switch (value.kind) {
    case Value::Integer: {
        number = static_cast<double>(value.integer);
        Value back;
        back.kind = Value::Real;
        back.real = number;
        int64_t again = 0;
        const bool exact = toInteger(back, again) == ValueState::Exact && again == value.integer;
        return exact ? ValueState::Exact : ValueState::Mismatch;
    }
    case Value::Real:
        number = value.real;
        return ValueState::Exact;
    case Value::Text:
        return parsed(value.bytes(), number);
    default:
        return ValueState::Mismatch;
    }
}

bool isDecimal(std::string_view text)
{
    size_t i = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    size_t digits = 0;
    bool point = false;
    for (; i < text.size() && ((text[i] >= '0' && text[i] <= '9') || (text[i] == '.' && !point));
         ++i) {
        if (text[i] == '.')
            point = true;
        else
            ++digits;
    }
    if (digits == 0)
        return false;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '-' || text[i] == '+'))
            ++i;
        const size_t from = i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9')
            ++i;
        return i == text.size() && i > from;
    }
    return i == text.size();
}

ValueState decimalForm(const Value& value, char* buffer, size_t capacity, size_t& length)
{
    const Shown shown = shownText(value, capacity);
    std::memset(buffer, 0, capacity);
    length = 0;
    if (shown.state != ValueState::Exact || !isDecimal(shown.text) || shown.text.size() >= capacity)
        return ValueState::Mismatch;
    std::copy_n(shown.text.data(), shown.text.size(), buffer);
    length = shown.text.size();
    return ValueState::Exact;
}

// The numbers of the binary forms; a Mismatch leaves the number as it was.

template<class T>
ValueState integerForm(const Value& value, T& number)
{
    int64_t wide = 0;
    const ValueState state = toInteger(value, wide);
    if (state != ValueState::Exact || wide != static_cast<T>(wide))
        return ValueState::Mismatch;
    number = static_cast<T>(wide);
    return state;
}

ValueState floatForm(const Value& value, float& number)
{
    double wide = 0;
    const ValueState state = toReal(value, wide);
    if (state != ValueState::Exact || (std::isfinite(wide) && std::abs(wide) > 3.4028234e38))
        return ValueState::Mismatch;
    number = static_cast<float>(wide);
    return static_cast<double>(number) == wide ? ValueState::Exact : ValueState::Cut;
}

ValueState realForm(const Value& value, double& number)
{
    double real = 0;
    const ValueState state = toReal(value, real);
    if (state == ValueState::Exact)
        number = real;
    return state;
}

ValueState dateForm(const Value& value, int64_t& micros)
{
    if (value.kind != Value::Text || value.held < value.length)
        return ValueState::Mismatch;
    int64_t date = 0;
    const ValueState state = dateFromText(value.bytes(), date);
    if (state != ValueState::Mismatch)
        micros = date;
    return state;
}

ValueState booleanForm(const Value& value, char& number)
{
    if (value.kind != Value::Integer || value.integer < 0 || value.integer > 1)
        return ValueState::Mismatch;
    number = static_cast<char>(value.integer);
    return ValueState::Exact;
}

[[noreturn]] void throwSmallBuffer()
{
    throw makeError(CodeBadCall, "the buffer is too small for the value");
}

[[noreturn]] void throwUnknownType(int clientType)
{
    throw makeError(CodeBadCall, "client type " + std::to_string(clientType));
}

// Writes a binary form, and zeros behind it and for what has none.
template<class T, ValueState (*form)(const Value&, T&)>
ValueState fixedForm(const Value& value, char* buffer, size_t capacity, size_t& length)
{
    if (capacity < sizeof(T))
        throwSmallBuffer();
    T number = 0;
    const ValueState state = value.kind == Value::Null ? ValueState::Null : form(value, number);
    std::memcpy(buffer, &number, sizeof number);
    if (capacity > sizeof number)
        std::memset(buffer + sizeof number, 0, capacity - sizeof number);
    length = sizeof number;
    return state;
}

// Reads fixed-width numbers and separators of a text, in order.
class Digits {
public:
    explicit Digits(std::string_view text)
        : m_text(text)
    {
    }
    template<size_t width>
    bool number(int& value)
    {
        if (m_text.size() < width)
            return false;
        value = 0;
        for (size_t i = 0; i < width; ++i) {
            const int digit = m_text[i] - '0';
            if (digit < 0 || digit > 9)
                return false;
            value = value * 10 + digit;
        }
        m_text.remove_prefix(width);
        return true;
    }
    bool sign(char c)
    {
        if (m_text.empty() || m_text[0] != c)
            return false;
        m_text.remove_prefix(1);
        return true;
    }
    bool atEnd() const { return m_text.empty(); }
    // Digits to the end; false when there is none or something else. more: over six that count.
    bool fraction(int& micros, bool& more)
    {
        if (m_text.empty())
            return false;
        micros = 0;
        more = false;
        for (size_t i = 0; i < std::max<size_t>(m_text.size(), 6); ++i) {
            const char c = i < m_text.size() ? m_text[i] : '0';
            if (c < '0' || c > '9')
                return false;
            if (i < 6)
                micros = micros * 10 + (c - '0');
            else
                more = more || c != '0';
        }
        m_text = {};
        return true;
    }

private:
    std::string_view m_text;
};

} // namespace

ValueState deliver(const Value& value, int clientType, void* buffer, size_t capacity,
                   size_t& length)
{
    char* to = static_cast<char*>(buffer);
    switch (clientType) {
    case TypeChar:
    case TypeVarchar:
    case TypeText:
    case TypeExtfile:
        return narrowText(value, to, capacity, length);
    case TypeNchar:
    case TypeNvarchar:
        return wideText(value, to, capacity, length);
    case TypeByte:
    case TypeVarbyte:
    case TypeBlob:
        return byteForm(value, to, capacity, length);
    case TypeDecimal: {
        const ValueState state = decimalForm(value, to, capacity, length);
        return value.kind == Value::Null ? ValueState::Null : state;
    }
    case TypeSmallint:
        return fixedForm<int16_t, integerForm>(value, to, capacity, length);
    case TypeInteger:
        return fixedForm<int32_t, integerForm>(value, to, capacity, length);
    case TypeBigint:
        return fixedForm<int64_t, integerForm>(value, to, capacity, length);
    case TypeReal:
        return fixedForm<float, floatForm>(value, to, capacity, length);
    case TypeDouble:
        return fixedForm<double, realForm>(value, to, capacity, length);
    case TypeDate:
        return fixedForm<int64_t, dateForm>(value, to, capacity, length);
    case TypeBoolean:
        return fixedForm<char, booleanForm>(value, to, capacity, length);
    default:
        throwUnknownType(clientType);
    }
}

bool deliverPlain(const RowBlock& block, const RowBlock::Cell& cell, int clientType, void* buffer,
                  size_t capacity, size_t& length)
{
    char* to = static_cast<char*>(buffer);
    const auto put = [&](auto number) {
        std::memcpy(to, &number, sizeof number);
        length = sizeof number;
        return true;
    };
    switch (cell.kind) {
    case Value::Integer: {
        const auto narrow = static_cast<int32_t>(cell.integer);
        if (clientType == TypeBigint && capacity == sizeof cell.integer)
            return put(cell.integer);
        return clientType == TypeInteger && capacity == sizeof narrow && narrow == cell.integer &&
               put(narrow);
    }
    case Value::Real:
        return clientType == TypeDouble && capacity == sizeof cell.real && put(cell.real);
    case Value::Text:
        if (!block.isWhole(cell))
            return false;
        if (clientType == TypeDate) {
            int64_t micros = 0;
            return capacity == sizeof micros &&
                   dateFromText({block.bytes(cell), cell.length}, micros) == ValueState::Exact &&
                   put(micros);
        }
        if (!isNarrowText(clientType) || cell.length >= capacity ||
            !copyPlain(block.bytes(cell), cell.length, to)) // ASCII is the same in every set
            return false;
        to[cell.length] = 0;
        length = cell.length;
        return true;
    case Value::Blob:
        if (!isBytes(clientType) || cell.length > capacity || !block.isWhole(cell))
            return false;
        length = cell.length;
        std::copy_n(block.bytes(cell), length, to);
        std::memset(to + length, 0, capacity - length);
        return true;
    case Value::Null:
        break;
    }
    return false;
}

void typeFromValue(ColumnInfo& column, const Value& value)
{
    switch (value.kind) {
    case Value::Integer:
        column.type = TypeBigint;
        column.length = 8;
        break;
    case Value::Real:
        column.type = TypeDouble;
        column.length = 8;
        break;
    case Value::Blob:
        column.type = TypeBlob;
        column.length = 0;
        break;
    case Value::Null:
    case Value::Text:
        column.type = TypeVarchar;
        column.length = textLength;
        break;
    }
}

std::string numberText(int64_t value)
{
    return std::to_string(value);
}

std::string numberText(double value)
{
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    std::string out(text.data(), end);
    if (std::isfinite(value) && out.find_first_of(".e") == std::string::npos)
        out += ".0";
    return out;
}

ValueState dateFromText(std::string_view text, int64_t& micros)
{
    Digits in(text);
    OviAPI::DateTimeParts parts;
    int year = 0;
    bool more = false;
    if (!in.number<4>(year) || !in.sign('-') || !in.number<2>(parts.month) || !in.sign('-') ||
        !in.number<2>(parts.day))
        return ValueState::Mismatch;
    parts.year = year;
    if (!in.atEnd()) {
        if ((!in.sign(' ') && !in.sign('T')) || !in.number<2>(parts.hour) || !in.sign(':') ||
            !in.number<2>(parts.minute))
            return ValueState::Mismatch;
        if (in.sign(':')) {
            if (!in.number<2>(parts.second))
                return ValueState::Mismatch;
            if (in.sign('.') && !in.fraction(parts.micros, more))
                return ValueState::Mismatch;
        }
    }
    if (!in.atEnd() || !OviAPI::joinDateTime(parts, micros))
        return ValueState::Mismatch;
    return more ? ValueState::Cut : ValueState::Exact;
}

std::string dateText(int64_t micros)
{
    return OviAPI::wideToUtf8(OviAPI::formatDateTime(micros, OviAPI::defaultDateFormat));
}

std::string fromClient(std::string_view text)
{
    const Charset charset = getStdCharset();
    return charset == Charset::Utf8 ? std::string(text) : convert(text, charset, Charset::Utf8);
}

Parameter parameterFrom(int clientType, const void* data, size_t length)
{
    const char* bytes = static_cast<const char*>(data);
    const auto take = [&]<class T>(T value) {
        if (length != sizeof value)
            throw makeError(CodeBadBind, std::to_string(length) + " bytes for client type " +
                                             std::to_string(clientType));
        std::memcpy(&value, bytes, sizeof value);
        return value;
    };
    Parameter p;
    p.kind = Value::Integer;
    switch (clientType) {
    case TypeChar:
    case TypeVarchar:
    case TypeText:
    case TypeExtfile:
    case TypeDecimal:
        p.kind = Value::Text;
        p.bytes = fromClient(std::string_view(bytes, length));
        break;
    case TypeNchar:
    case TypeNvarchar: {
        std::u16string units(length / sizeof(char16_t), 0);
        std::memcpy(units.data(), bytes, units.size() * sizeof(char16_t));
        p.kind = Value::Text;
        p.bytes = OviAPI::wideToUtf8(OviAPI::utf16ToWide(units));
        break;
    }
    case TypeByte:
    case TypeVarbyte:
    case TypeBlob:
        p.kind = Value::Blob;
        p.bytes.assign(bytes, length);
        break;
    case TypeSmallint:
        p.integer = take(int16_t());
        break;
    case TypeInteger:
        p.integer = take(int32_t());
        break;
    case TypeBigint:
        p.integer = take(int64_t());
        break;
    case TypeBoolean:
        p.integer = take(int8_t()) != 0;
        break;
    case TypeReal:
        p.kind = Value::Real;
        p.real = static_cast<double>(take(float()));
        break;
    case TypeDouble:
        p.kind = Value::Real;
        p.real = take(double());
        break;
    case TypeDate:
        p.kind = Value::Text;
        p.bytes = dateText(take(int64_t()));
        break;
    default:
        throw makeError(CodeBadBind, "client type " + std::to_string(clientType));
    }
    return p;
}

} // namespace DorCPP
