#include "app/routines.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include <dorcpp/charset.h>
#include <oviapi/assertion.h>

namespace {

constexpr char lineFeed = 10;
constexpr char carriageReturn = 13;
constexpr size_t utf8Size = 6; // bytes reserved for a wide character in UTF-8

constexpr wchar_t replacement = 0xFFFD;

// The text in UTF-8 in a buffer of size bytes with its zero, 0 for one that is large enough.
std::string toUtf8(const wchar_t* str, size_t size)
{
    const size_t length = std::wcslen(str);
    const size_t room = size == 0 ? utf8Size * length : size - 1;
    std::string bytes(std::min(room, utf8Size * length), 0);
    bytes.resize(DorCPP::wcs2mbs(bytes.data(), bytes.size(), str, length, DorCPP::Charset::Utf8));
    return bytes;
}

// Names this source unit in the message, whatever path it was compiled from.
#define ROUTINES_ASSERT(condition)                                                                 \
    do {                                                                                           \
        if (!(condition))                                                                          \
            OviAPI::assertionFailed(#condition, "routines", __LINE__, __func__);                   \
    } while (false)

} // namespace

size_t wholeCharacters(std::string_view text, size_t limit)
{
    const size_t end = std::min(limit, text.size());
    if (end == text.size())
        return end;
    std::mbstate_t state{};
    size_t length = 0;
    while (length < end) {
        size_t n = std::mbrlen(text.data() + length, text.size() - length, &state);
        if (n > text.size() - length) { // not a character: counts as a byte
            state = std::mbstate_t{};
            n = 1;
        }
        n = std::max<size_t>(n, 1);
        if (length + n > end)
            break;
        length += n;
    }
    return length;
}

void writeln(FILE* f, const wchar_t* str)
{
    ROUTINES_ASSERT(f);
    ROUTINES_ASSERT(str);
    std::fprintf(f, "%s\n", toUtf8(str, 0).c_str());
}

int readln(FILE* f, wchar_t* str, int size)
{
    ROUTINES_ASSERT(f);
    ROUTINES_ASSERT(str);
    // Kept: the result of reading a byte is not examined, so the byte stays as it was at the end of
    // the file; callers test feof before the call.
    char byte = carriageReturn;
    const auto read = [&] { static_cast<void>(std::fscanf(f, "%c", &byte) == 1); };
    while (byte == carriageReturn)
        read();
    std::string line;
    if (byte != lineFeed && size > 0) {
        line += byte;
        while (line.size() < static_cast<size_t>(size)) {
            read();
            if (byte == lineFeed)
                break;
            line += byte;
        }
    }
    const size_t count =
        DorCPP::mbs2wcs(str, line.size(), line.data(), line.size(), DorCPP::Charset::Utf8);
    str[count] = 0;
    return static_cast<int>(count);
}

void writelnUCS2(FILE* f, const wchar_t* str)
{
    if (!f || !str || *str == 0)
        return;
    std::wstring line = str;
    line += L'\n';
    // Kept: as many units as the text has characters, so one that needs two units is replaced.
    std::replace_if(
        line.begin(), line.end(), [](wchar_t c) { return c > 0xFFFF; }, replacement);
    std::vector<char16_t> units(line.size() + 1);
    DorCPP::RCHARToUnicode(units.data(), line.c_str(), static_cast<int>(units.size()), true);
    std::fwrite(units.data(), sizeof units[0], line.size(), f);
}

void writeUTF8(FILE* f, const wchar_t* str, size_t size)
{
    if (!f || !str)
        return;
    const std::string bytes = toUtf8(str, size);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
}

void writeUTF8(FILE* f, const char* str, size_t len, bool trimRight)
{
    if (!f || !str)
        return;
    size_t length = trimRight ? strnlen(str, len) : std::strlen(str);
    while (trimRight && length > 0 && str[length - 1] == ' ')
        --length;
    std::string bytes(length * utf8Size, 0);
    bytes.resize(DorCPP::mbs2mbs(bytes.data(), bytes.size(), DorCPP::Charset::Utf8, str, length,
                                 DorCPP::getStdCharset()));
    std::fwrite(bytes.data(), 1, bytes.size(), f);
}

int getlinexUCS2(FILE* f, wchar_t* str, int size, char delim, bool swap)
{
    if (!f || !str || size < 1)
        return 0;
    std::vector<char16_t> units;
    unsigned char bytes[2];
    while (units.size() < static_cast<size_t>(size) && std::fread(bytes, 1, 2, f) == 2) {
        if (swap)
            std::swap(bytes[0], bytes[1]);
        if (bytes[0] == static_cast<unsigned char>(delim) && bytes[1] == 0)
            break;
        units.push_back(static_cast<char16_t>(bytes[0] | bytes[1] << 8));
    }
    const auto count = static_cast<int>(units.size());
    const int stored = DorCPP::UnicodeToRCHAR(str, units.data(), count, false);
    if (stored < size)
        str[stored] = 0;
    return count;
}

int isBackward(FILE* f, bool* backward)
{
    unsigned char mark[2] = {};
    if (std::fread(mark, 1, sizeof mark, f) != sizeof mark)
        return 1;
    const bool little = mark[0] == 0xFF && mark[1] == 0xFE;
    const bool big = mark[0] == 0xFE && mark[1] == 0xFF;
    if (!little && !big)
        return 1;
    *backward = big;
    return 0;
}

wchar_t* findParam(int argc, wchar_t** argv, const wchar_t* name)
{
    if (argc <= 0 || !name)
        return nullptr;
    int i = argc - 1;
    wchar_t* p = nullptr;
    for (; i >= 0; --i) {
        p = argv[i] ? std::wcsstr(argv[i], name) : nullptr;
        if (p)
            break;
    }
    if (!p)
        return nullptr;
    p += std::wcslen(name);
    if (*p == L'=')
        ++p;
    if (*p == 0 && i + 1 < argc && argv[i + 1])
        return argv[i + 1];
    return p;
}

void addExtention(wchar_t* path, int maxLen, const wchar_t* ext)
{
    const size_t length = std::wcslen(path);
    if (length == 0 || maxLen < 0 || length > static_cast<size_t>(maxLen))
        return;
    // Kept: only the first place that contains the extension is compared, so that "x.txt.txt" gets
    // another ".txt".
    const wchar_t* found = std::wcsstr(path, ext);
    if (found && std::wcscmp(found, ext) == 0)
        return;
    std::wcsncat(path, ext, static_cast<size_t>(maxLen));
}
