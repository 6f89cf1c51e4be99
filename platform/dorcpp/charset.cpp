#include <dorcpp/charset.h>

#include <langinfo.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cstring>

#include <oviapi/bytecodes.h>
#include <oviapi/text.h>

namespace DorCPP {

namespace {

constexpr wchar_t replacement = 0xFFFD;

// A one-byte set: the character of every byte, and the bytes of all characters sorted by character.
struct ByteSet {
    struct Entry {
        wchar_t character;
        unsigned char byte;
    };
    std::array<wchar_t, 256> wide{};
    std::array<Entry, 256> bytes{};

    explicit ByteSet(const char* name)
    {
        const auto codes = OviAPI::byteCodesOf(name);
        for (size_t i = 0; i < wide.size(); ++i) {
            const int code = codes ? (*codes)[i] : -1;
            wide[i] = code >= 0  ? static_cast<wchar_t>(code)
                      : i < 0x80 ? static_cast<wchar_t>(i)
                                 : replacement;
            bytes[i] = {wide[i], static_cast<unsigned char>(i)};
        }
        std::stable_sort(bytes.begin(), bytes.end(),
                         [](Entry a, Entry b) { return a.character < b.character; });
    }

    char byteOf(wchar_t c) const
    {
        const auto at = std::lower_bound(bytes.begin(), bytes.end(), c,
                                         [](Entry e, wchar_t w) { return e.character < w; });
        if (at == bytes.end() || at->character != c || c == replacement)
            return '?';
        return static_cast<char>(at->byte);
    }
};

const ByteSet& byteSet(Charset charset)
{
    static const ByteSet ansi("WINDOWS-1251");
    static const ByteSet oem("CP866");
    static const ByteSet koi("KOI8-R");
    return charset == Charset::Ansi ? ansi : charset == Charset::Oem ? oem : koi;
}

bool isByteSet(Charset charset)
{
    return charset == Charset::Ansi || charset == Charset::Oem || charset == Charset::Koi8;
}

// Converts bytes between two one-byte sets, by a table made on first use.
template<Charset From, Charset To>
void translate(const char* from, char* to, size_t length)
{
    static const std::array<char, 256> table = [] {
        std::array<char, 256> bytes{};
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = byteSet(To).byteOf(byteSet(From).wide[i]);
        return bytes;
    }();
    for (size_t i = 0; i < length; ++i)
        to[i] = table[static_cast<unsigned char>(from[i])];
}

// Bytes of the text that fit into a capacity without cutting a character.
size_t fitting(std::string_view text, size_t capacity, Charset charset)
{
    if (text.size() <= capacity)
        return text.size();
    if (charset == Charset::Utf8) {
        while (capacity > 0 && (static_cast<unsigned char>(text[capacity]) & 0xC0) == 0x80)
            --capacity;
    }
    return capacity;
}

Charset charsetNamed(const char* name)
{
    struct Name {
        const char* name;
        Charset charset;
    };
    static constexpr Name names[] = {
        {"UTF-8", Charset::Utf8},  {"ANSI_X3.4-1968", Charset::Utf8}, {"US-ASCII", Charset::Utf8},
        {"CP1251", Charset::Ansi}, {"WINDOWS-1251", Charset::Ansi},   {"CP866", Charset::Oem},
        {"IBM866", Charset::Oem},  {"KOI8-R", Charset::Koi8},
    };
    for (const Name& n : names) {
        if (strcasecmp(name, n.name) == 0)
            return n.charset;
    }
    return Charset::Locale;
}

wchar_t wideAt(const void* text, size_t i)
{
    wchar_t c;
    std::memcpy(&c, static_cast<const char*>(text) + i * sizeof c, sizeof c);
    return c;
}

void putWide(void* text, size_t i, wchar_t c)
{
    std::memcpy(static_cast<char*>(text) + i * sizeof c, &c, sizeof c);
}

} // namespace

Charset getStdCharset()
{
    // Asked for every text cell, and the answer rarely changes.
    constexpr size_t longest = 31; // characters that are compared; longer names have no set here
    thread_local char name[longest + 1] = "UTF-8";
    thread_local Charset charset = Charset::Utf8;
    const char* codeset = nl_langinfo(CODESET);
    if (std::strncmp(name, codeset, longest) != 0) {
        std::strncpy(name, codeset, longest);
        charset = charsetNamed(codeset);
    }
    return charset;
}

std::string narrow(std::wstring_view text, Charset to)
{
    if (to == Charset::Utf8)
        return OviAPI::wideToUtf8(text);
    if (!isByteSet(to))
        return OviAPI::wideToLocale(text);
    std::string out(text.size(), 0);
    std::transform(text.begin(), text.end(), out.begin(),
                   [&](wchar_t c) { return byteSet(to).byteOf(c); });
    return out;
}

std::wstring widen(std::string_view text, Charset from)
{
    if (from == Charset::Utf8)
        return OviAPI::utf8ToWide(text);
    if (!isByteSet(from))
        return OviAPI::localeToWide(text);
    std::wstring out(text.size(), 0);
    std::transform(text.begin(), text.end(), out.begin(),
                   [&](char c) { return byteSet(from).wide[static_cast<unsigned char>(c)]; });
    return out;
}

std::string convert(std::string_view text, Charset from, Charset to)
{
    if (from == to && (isByteSet(from) || OviAPI::isValidUtf8(text)))
        return std::string(text);
    return narrow(widen(text, from), to);
}

size_t wcs2mbs(char* to, size_t capacity, const wchar_t* from, size_t length, Charset charset)
{
    if (charset == Charset::Locale) { // no rule finds a character's start: add one by one
        size_t n = 0;
        for (size_t i = 0; i < length; ++i) {
            const std::string bytes = OviAPI::wideToLocale(std::wstring_view(from + i, 1));
            if (bytes.size() > capacity - n)
                break;
            std::copy(bytes.begin(), bytes.end(), to + n);
            n += bytes.size();
        }
        return n;
    }
    const std::string bytes = narrow(std::wstring_view(from, length), charset);
    const size_t n = fitting(bytes, capacity, charset);
    std::copy_n(bytes.data(), n, to);
    return n;
}

size_t mbs2wcs(wchar_t* to, size_t capacity, const char* from, size_t length, Charset charset)
{
    const std::wstring wide = widen(std::string_view(from, length), charset);
    const size_t n = std::min(capacity, wide.size());
    std::copy_n(wide.data(), n, to);
    return n;
}

size_t mbs2mbs(char* to, size_t capacity, Charset toCharset, const char* from, size_t length,
               Charset fromCharset)
{
    const std::wstring wide = widen(std::string_view(from, length), fromCharset);
    return wcs2mbs(to, capacity, wide.data(), wide.size(), toCharset);
}

void Ansi2Oem(const char* from, char* to, size_t length)
{
    translate<Charset::Ansi, Charset::Oem>(from, to, length);
}

void Oem2Ansi(const char* from, char* to, size_t length)
{
    translate<Charset::Oem, Charset::Ansi>(from, to, length);
}

void Oem2Koi(const char* from, char* to, size_t length)
{
    translate<Charset::Oem, Charset::Koi8>(from, to, length);
}

void Koi2Oem(const char* from, char* to, size_t length)
{
    translate<Charset::Koi8, Charset::Oem>(from, to, length);
}

void Ansi2Koi(const char* from, char* to, size_t length)
{
    translate<Charset::Ansi, Charset::Koi8>(from, to, length);
}

void Koi2Ansi(const char* from, char* to, size_t length)
{
    translate<Charset::Koi8, Charset::Ansi>(from, to, length);
}

char* LTrim(char* text)
{
    if (text) {
        const char* from = text + std::strspn(text, " ");
        std::memmove(text, from, std::strlen(from) + 1);
    }
    return text;
}

char* RTrim(char* text)
{
    if (text) {
        size_t n = std::strlen(text);
        while (n > 0 && text[n - 1] == ' ')
            --n;
        text[n] = 0;
    }
    return text;
}

char* Trim(char* text)
{
    return LTrim(RTrim(text));
}

int RCHARToUnicode(void* to, const wchar_t* from, int capacity, bool terminated)
{
    if (capacity <= 0)
        return 0;
    const auto limit = static_cast<size_t>(capacity) - (terminated ? 1 : 0);
    size_t length = 0;
    while (length < limit && (!terminated || from[length] != 0))
        ++length;
    const std::u16string units = OviAPI::wideToUtf16(std::wstring_view(from, length));
    size_t n = std::min(limit, units.size());
    if (n < units.size() && n > 0 && (units[n] & 0xFC00) == 0xDC00)
        --n;
    std::memcpy(to, units.data(), n * sizeof(char16_t));
    if (terminated)
        std::memset(static_cast<char*>(to) + n * sizeof(char16_t), 0, sizeof(char16_t));
    return static_cast<int>(n);
}

int UnicodeToRCHAR(void* to, const void* from, int capacity, bool terminated)
{
    if (capacity <= 0)
        return 0;
    const auto limit = static_cast<size_t>(capacity) - (terminated ? 1 : 0);
    std::u16string units;
    size_t whole = 0; // characters read so far
    for (const auto* at = static_cast<const char*>(from); whole < limit; at += sizeof(char16_t)) {
        char16_t unit;
        std::memcpy(&unit, at, sizeof unit);
        if (terminated && unit == 0)
            break;
        const bool second =
            !units.empty() && (unit & 0xFC00) == 0xDC00 && (units.back() & 0xFC00) == 0xD800;
        units += unit;
        if (terminated ? !second : true)
            ++whole;
    }
    if (terminated && whole == limit && limit > 0 && (units.back() & 0xFC00) == 0xD800) {
        char16_t next; // the pair that the last character needs
        std::memcpy(&next, static_cast<const char*>(from) + units.size() * sizeof next,
                    sizeof next);
        if ((next & 0xFC00) == 0xDC00)
            units += next;
    }
    const std::wstring wide = OviAPI::utf16ToWide(units);
    const size_t n = std::min(limit, wide.size());
    std::memcpy(to, wide.data(), n * sizeof(wchar_t));
    if (terminated)
        putWide(to, n, 0);
    return static_cast<int>(n);
}

void ConvertExtfileRCHAR(void* text)
{
    std::wstring value;
    while (const wchar_t c = wideAt(text, value.size()))
        value += c;
    while (!value.empty() && value.back() == L' ')
        value.pop_back();
    constexpr std::wstring_view head = L"EXTFILE('";
    constexpr std::wstring_view tail = L"')";
    if (value.size() >= head.size() + tail.size() && value.starts_with(head) &&
        value.ends_with(tail)) {
        std::wstring path;
        for (size_t i = head.size(); i < value.size() - tail.size(); ++i) {
            path += value[i];
            if (value[i] == L'\'' && value[i + 1] == L'\'')
                ++i;
        }
        value = path;
    }
    for (size_t i = 0; i <= value.size(); ++i)
        putWide(text, i, i < value.size() ? value[i] : 0);
}

} // namespace DorCPP
