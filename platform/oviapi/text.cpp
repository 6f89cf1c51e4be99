#include <oviapi/text.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace OviAPI {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isScalar(char32_t c)
{
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

// Reads one code point at text[i] and moves i behind it. A byte that starts no valid sequence gives
// U+FFFD and moves i by the length of the longest part that could have begun one.
char32_t nextUtf8(std::string_view text, size_t& i, bool& valid)
{
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned first = byte(i++);
    if (first < 0x80)
        return first;
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4) {
        valid = false;
        return replacement;
    }
    char32_t c = first & (0x3FU >> more);
    for (int k = 0; k < more; ++k) {
        unsigned low = 0x80;
        unsigned high = 0xBF;
        if (k == 0) {
            low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
            high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
        }
        if (i >= text.size() || byte(i) < low || byte(i) > high) {
            valid = false;
            return replacement;
        }
        c = c << 6 | (byte(i++) & 0x3FU);
    }
    return c;
}

} // namespace

std::string wideToUtf8(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const wchar_t w : text) {
        auto c = static_cast<char32_t>(w);
        if (!isScalar(c))
            c = replacement;
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | c >> 18);
            out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::wstring utf8ToWide(std::string_view text)
{
    std::wstring out;
    out.reserve(text.size());
    bool valid = true;
    for (size_t i = 0; i < text.size();)
        out += static_cast<wchar_t>(nextUtf8(text, i, valid));
    return out;
}

bool isValidUtf8(std::string_view text)
{
    bool valid = true;
    for (size_t i = 0; i < text.size() && valid;)
        nextUtf8(text, i, valid);
    return valid;
}

std::u16string wideToUtf16(std::wstring_view text)
{
    std::u16string out;
    out.reserve(text.size());
    for (const wchar_t w : text) {
        auto c = static_cast<char32_t>(w);
        if (!isScalar(c))
            c = replacement;
        if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

std::wstring utf16ToWide(std::u16string_view text)
{
    const auto isHigh = [](char16_t c) { return c >= 0xD800 && c <= 0xDBFF; };
    const auto isLow = [](char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; };
    std::wstring out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1])) {
            c = 0x10000 + ((c & 0x3FFU) << 10) + (text[i + 1] & 0x3FFU);
            ++i;
        } else if (!isScalar(c)) {
            c = replacement;
        }
        out += static_cast<wchar_t>(c);
    }
    return out;
}

std::string wideToLocale(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    char bytes[MB_LEN_MAX];
    std::mbstate_t state{};
    for (const wchar_t c : text) {
        const std::mbstate_t before = state;
        size_t n = std::wcrtomb(bytes, c, &state);
        if (n == static_cast<size_t>(-1)) {
            state = before;
            bytes[0] = '?';
            n = 1;
        }
        out.append(bytes, n);
    }
    return out;
}

std::wstring localeToWide(std::string_view text)
{
    std::wstring out;
    out.reserve(text.size());
    std::mbstate_t state{};
    for (size_t i = 0; i < text.size();) {
        wchar_t c = 0;
        const size_t n = std::mbrtowc(&c, text.data() + i, text.size() - i, &state);
        if (n > text.size() - i) { // invalid, or cut in the middle of a character
            state = std::mbstate_t{};
            out += static_cast<wchar_t>(replacement);
            ++i;
            continue;
        }
        out += c;
        i += std::max<size_t>(n, 1); // 0 for the zero character, one byte long
    }
    return out;
}

size_t copyText(wchar_t* buffer, size_t size, std::wstring_view text)
{
    if (size == 0)
        return 0;
    const size_t n = std::min(size - 1, text.size());
    std::wmemcpy(buffer, text.data(), n);
    buffer[n] = 0;
    return n;
}

std::wstring substitute(std::wstring_view format, std::wstring_view argument)
{
    std::wstring out;
    bool used = false;
    for (size_t i = 0; i < format.size(); ++i) {
        const std::wstring_view rest = format.substr(i);
        if (rest.starts_with(L"%%")) {
            out += L'%';
            ++i;
        } else if (!used && (rest.starts_with(L"%ls") || rest.starts_with(L"%s"))) {
            out += argument;
            used = true;
            i += rest[1] == L'l' ? 2 : 1;
        } else {
            out += format[i];
        }
    }
    return out;
}

} // namespace OviAPI
