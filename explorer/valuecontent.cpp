#include "explorer/valuecontent.h"

#include <algorithm>
#include <array>

#include <dorcpp/charset.h>
#include <oviapi/text.h>

namespace {

using Byte = unsigned char;

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view littleMark = "\xFF\xFE";
constexpr std::string_view bigMark = "\xFE\xFF";
constexpr size_t longestCharacter = 4; // bytes of UTF-8

std::string_view markOf(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return utf8Mark;
    case TextEncoding::Utf16Little:
        return littleMark;
    case TextEncoding::Utf16Big:
        return bigMark;
    default:
        return {};
    }
}

bool isWide(TextEncoding encoding)
{
    return encoding == TextEncoding::Utf16Little || encoding == TextEncoding::Utf16Big;
}

std::u16string unitsOf(std::string_view bytes, TextEncoding encoding)
{
    const size_t low = encoding == TextEncoding::Utf16Little ? 0 : 1;
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        units += static_cast<char16_t>(static_cast<Byte>(bytes[i + low]) |
                                       static_cast<Byte>(bytes[i + 1 - low]) << 8);
    if (bytes.size() % 2 != 0)
        units += u'\uFFFD';
    return units;
}

std::string bytesOf(std::u16string_view units, TextEncoding encoding)
{
    std::string bytes;
    bytes.reserve(units.size() * 2);
    for (const char16_t unit : units) {
        const auto low = static_cast<char>(unit & 0xFF);
        const auto high = static_cast<char>(unit >> 8);
        bytes += encoding == TextEncoding::Utf16Little ? low : high;
        bytes += encoding == TextEncoding::Utf16Little ? high : low;
    }
    return bytes;
}

DorCPP::Charset charsetOf(TextEncoding encoding)
{
    return encoding == TextEncoding::Koi8 ? DorCPP::Charset::Koi8 : DorCPP::Charset::Ansi;
}

std::wstring converted(std::string_view bytes, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return OviAPI::utf8ToWide(bytes);
    case TextEncoding::Utf16Little:
    case TextEncoding::Utf16Big:
        return OviAPI::utf16ToWide(unitsOf(bytes, encoding));
    case TextEncoding::Koi8:
    case TextEncoding::Windows1251:
        return DorCPP::widen(bytes, charsetOf(encoding));
    case TextEncoding::Latin1:
        break;
    }
    std::wstring text;
    text.reserve(bytes.size());
    for (const char c : bytes)
        text += static_cast<wchar_t>(static_cast<Byte>(c));
    return text;
}

// What the encoding lacks becomes something else.
std::string convertedBack(std::wstring_view text, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return OviAPI::wideToUtf8(text);
    case TextEncoding::Utf16Little:
    case TextEncoding::Utf16Big:
        return bytesOf(OviAPI::wideToUtf16(text), encoding);
    case TextEncoding::Koi8:
    case TextEncoding::Windows1251:
        return DorCPP::narrow(text, charsetOf(encoding));
    case TextEncoding::Latin1:
        break;
    }
    std::string bytes;
    bytes.reserve(text.size());
    for (const wchar_t c : text)
        bytes += c <= 0xFF ? static_cast<char>(c) : '?';
    return bytes;
}

bool isControl(Byte c)
{
    return (c < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f') || c == 0x7F;
}

bool hasControls(std::string_view bytes)
{
    return std::any_of(bytes.begin(), bytes.end(),
                       [](char c) { return isControl(static_cast<Byte>(c)); });
}

bool isValidStart(const ValueStart& start)
{
    if (start.isWhole)
        return OviAPI::isValidUtf8(start.bytes);
    return OviAPI::isValidUtf8(
        start.bytes.substr(0, wholeCharacters(start.bytes, TextEncoding::Utf8)));
}

// What speaks for one byte a character: where the letters beyond ASCII stand, and beside what.
struct HighBytes {
    size_t count = 0;
    size_t lower = 0;    // 0xC0 to 0xDF: small letters in KOI8-R, capitals in windows-1251
    size_t upper = 0;    // 0xE0 to 0xFF: the other way round
    size_t together = 0; // beside another one: a word of such letters
    size_t mixed = 0;    // beside an ASCII letter

    explicit HighBytes(std::string_view bytes)
    {
        Byte before = 0;
        for (const char c : bytes) {
            const auto now = static_cast<Byte>(c);
            if (now >= 0x80) {
                ++count;
                lower += now >= 0xC0 && now < 0xE0;
                upper += now >= 0xE0;
            }
            if (now >= 0xC0 && before >= 0xC0)
                ++together;
            else if ((now >= 0xC0 && isAsciiLetter(before)) ||
                     (isAsciiLetter(now) && before >= 0xC0))
                ++mixed;
            before = now;
        }
    }
    static bool isAsciiLetter(Byte c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    // Nine of ten are letters in each of the three sets.
    bool areLetters() const { return (lower + upper) * 10 >= count * 9; }
};

bool startsWith(std::string_view bytes, std::string_view magic)
{
    return bytes.substr(0, magic.size()) == magic;
}

uint32_t littleNumber(std::string_view bytes, size_t place)
{
    uint32_t number = 0;
    for (size_t i = 4; i > 0; --i)
        number = number << 8 | static_cast<Byte>(bytes[place + i - 1]);
    return number;
}

// Two letters begin many a text; a bitmap goes on with the size of one of its headers.
bool isBitmap(std::string_view bytes)
{
    constexpr size_t headerPlace = 14;
    constexpr std::array<uint32_t, 7> headers = {12, 40, 52, 56, 64, 108, 124};
    if (!startsWith(bytes, "BM") || bytes.size() < headerPlace + 4)
        return false;
    return std::find(headers.begin(), headers.end(), littleNumber(bytes, headerPlace)) !=
           headers.end();
}

bool isImage(std::string_view bytes)
{
    return startsWith(bytes, "\x89PNG\r\n\x1A\n") || startsWith(bytes, "\xFF\xD8\xFF") ||
           isBitmap(bytes);
}

} // namespace

const wchar_t* nameOf(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return L"UTF-8";
    case TextEncoding::Utf16Little:
        return L"UTF-16 LE";
    case TextEncoding::Utf16Big:
        return L"UTF-16 BE";
    case TextEncoding::Koi8:
        return L"KOI8-R";
    case TextEncoding::Windows1251:
        return L"windows-1251";
    case TextEncoding::Latin1:
        break;
    }
    return L"ISO 8859-1";
}

TextEncoding guessEncoding(const ValueStart& start)
{
    for (const TextEncoding encoding :
         {TextEncoding::Utf8, TextEncoding::Utf16Little, TextEncoding::Utf16Big}) {
        if (startsWith(start.bytes, markOf(encoding)))
            return encoding;
    }
    if (isValidStart(start))
        return TextEncoding::Utf8;
    const HighBytes high(start.bytes);
    if (!high.areLetters() || hasControls(start.bytes))
        return TextEncoding::Utf8;
    if (high.together <= high.mixed)
        return TextEncoding::Latin1;
    return high.lower > high.upper ? TextEncoding::Koi8 : TextEncoding::Windows1251;
}

ValueForm guessForm(const ValueStart& start, bool isText)
{
    if (isImage(start.bytes))
        return ValueForm::Image;
    if (isText)
        return ValueForm::Text;
    const TextEncoding encoding = guessEncoding(start);
    if (isWide(encoding))
        return ValueForm::Text;
    if (hasControls(start.bytes))
        return ValueForm::Hex;
    return encoding != TextEncoding::Utf8 || isValidStart(start) ? ValueForm::Text : ValueForm::Hex;
}

TextStyle styleOf(std::string_view bytes, TextEncoding encoding)
{
    TextStyle style{encoding};
    const std::string_view mark = markOf(encoding);
    style.mark = !mark.empty() && startsWith(bytes, mark);
    const std::wstring text = converted(bytes, encoding);
    size_t lines = 0;
    size_t returns = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        lines += text[i] == L'\n';
        returns += text[i] == L'\n' && i > 0 && text[i - 1] == L'\r';
    }
    style.returns = lines > 0 && returns == lines;
    return style;
}

std::wstring decodedText(std::string_view bytes, const TextStyle& style)
{
    if (style.mark)
        bytes.remove_prefix(markOf(style.encoding).size());
    std::wstring text = converted(bytes, style.encoding);
    if (!style.returns)
        return text;
    std::wstring plain;
    plain.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'\r' || i + 1 == text.size() || text[i + 1] != L'\n')
            plain += text[i];
    }
    return plain;
}

std::optional<std::string> encodedText(std::wstring_view text, const TextStyle& style)
{
    std::wstring lines;
    if (style.returns) {
        lines.reserve(text.size());
        for (const wchar_t c : text) {
            if (c == L'\n')
                lines += L'\r';
            lines += c;
        }
        text = lines;
    }
    const std::string bytes = convertedBack(text, style.encoding);
    if (converted(bytes, style.encoding) != text)
        return std::nullopt;
    return style.mark ? std::string(markOf(style.encoding)) + bytes : bytes;
}

size_t wholeCharacters(std::string_view bytes, TextEncoding encoding)
{
    size_t size = bytes.size();
    if (isWide(encoding)) {
        size -= size % 2;
        if (size < 2)
            return size;
        const std::u16string last = unitsOf(bytes.substr(size - 2, 2), encoding);
        return last[0] >= 0xD800 && last[0] < 0xDC00 ? size - 2 : size;
    }
    if (encoding != TextEncoding::Utf8)
        return size;
    for (size_t back = 1; back <= std::min(size, longestCharacter - 1); ++back) {
        const auto c = static_cast<Byte>(bytes[size - back]);
        if (c >= 0xC0) { // the first byte of a character
            const size_t length = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
            return length > back ? size - back : size;
        }
        if (c < 0x80)
            break;
    }
    return size;
}

bool Utf8Check::add(std::string_view piece)
{
    m_rest += piece;
    const size_t whole = wholeCharacters(m_rest, TextEncoding::Utf8);
    const std::string_view bytes(m_rest.data(), whole);
    if (bytes.find('\0') != std::string_view::npos || !OviAPI::isValidUtf8(bytes))
        return false;
    m_rest.erase(0, whole);
    return true;
}
