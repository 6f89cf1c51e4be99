#include "app/xcstring.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <utility>

#include <dorcpp/charset.h>
#include <oviapi/text.h>

#include "app/routines.h"

namespace {

constexpr size_t formatSize = 4096;

// The multibyte form of the text, at most limit bytes of it, cut behind a whole character.
std::string toLocale(std::wstring_view text, size_t limit)
{
    std::string bytes = OviAPI::wideToLocale(text);
    bytes.resize(wholeCharacters(bytes, limit));
    return bytes;
}

} // namespace

xCString::xCString(const char* s, unsigned n)
{
    if (s)
        assign(s, strnlen(s, n), n);
}

xCString::xCString(const char* s)
{
    if (s)
        assign(s, std::strlen(s), std::strlen(s));
}

xCString::xCString(const wchar_t* s)
{
    *this = s;
}

xCString::xCString(const OviAPI::aCString& s)
{
    const std::string bytes = OviAPI::wideToLocale(s.c_str());
    assign(bytes.data(), bytes.size(), bytes.size());
}

xCString::xCString(const xCString& other)
{
    if (other.m_buffer)
        assign(other.m_buffer, other.m_length, other.m_length);
}

xCString::xCString(xCString&& other) noexcept
    : m_buffer(std::exchange(other.m_buffer, nullptr))
    , m_length(std::exchange(other.m_length, 0))
{
}

xCString::~xCString()
{
    std::free(m_buffer);
}

xCString& xCString::operator=(const xCString& other)
{
    if (this == &other)
        return *this;
    if (other.m_buffer)
        assign(other.m_buffer, other.m_length, other.m_length);
    else
        clear();
    return *this;
}

xCString& xCString::operator=(xCString&& other) noexcept
{
    std::swap(m_buffer, other.m_buffer);
    std::swap(m_length, other.m_length);
    return *this;
}

xCString& xCString::operator=(const char* s)
{
    if (s)
        assign(s, std::strlen(s), std::strlen(s));
    else
        clear();
    return *this;
}

xCString& xCString::operator=(const wchar_t* s)
{
    if (!s) {
        clear();
        return *this;
    }
    // Kept: one byte is reserved for each wide character, so that text outside ASCII is cut.
    const std::string bytes = toLocale(s, std::wcslen(s));
    assign(bytes.data(), bytes.size(), bytes.size());
    return *this;
}

xCString& xCString::operator+=(char c)
{
    append(&c, 1);
    return *this;
}

xCString& xCString::operator+=(const char* s)
{
    if (s)
        append(s, std::strlen(s));
    return *this;
}

xCString& xCString::operator+=(const xCString& other)
{
    append(other.m_buffer, other.m_length);
    return *this;
}

bool xCString::operator==(const xCString& other) const
{
    return m_length == other.m_length && std::memcmp(c_str(), other.c_str(), m_length) == 0;
}

char* xCString::GetBuffer(int n)
{
    return resize(n < 0 ? 0 : static_cast<size_t>(n));
}

void xCString::ReleaseBuffer(int n)
{
    if (!m_buffer || n < -1)
        return;
    const size_t length = n == -1 ? strnlen(m_buffer, m_length) : static_cast<size_t>(n);
    if (length <= m_length)
        resize(length);
}

char* xCString::GetBufferSetLength(int n)
{
    return n < 1 ? nullptr : GetBuffer(n);
}

bool xCString::SetAt(int i, char c)
{
    if (!m_buffer || i < 0 || static_cast<uint32_t>(i) >= m_length)
        return false;
    m_buffer[i] = c;
    return true;
}

xCString xCString::Mid(int start) const
{
    if (start < 0 || static_cast<uint32_t>(start) >= m_length)
        return {};
    return piece(static_cast<uint32_t>(start), m_length);
}

xCString xCString::Mid(int start, int count) const
{
    // Kept: start 0 gives the empty string; callers rely on it as it is.
    if (count < 1 || start < 1 || static_cast<uint32_t>(start) >= m_length)
        return {};
    return piece(static_cast<uint32_t>(start), static_cast<uint32_t>(count));
}

void xCString::Trim()
{
    TrimRight();
    TrimLeft();
}

void xCString::TrimLeft()
{
    uint32_t n = 0;
    while (n < m_length && m_buffer[n] == ' ')
        ++n;
    if (n == 0)
        return;
    std::memmove(m_buffer, m_buffer + n, m_length - n);
    resize(m_length - n);
}

void xCString::TrimRight()
{
    uint32_t length = m_length;
    while (length > 0 && m_buffer[length - 1] == ' ')
        --length;
    if (length < m_length)
        resize(length);
}

void xCString::Format(const char* format, ...)
{
    // The bytes behind the limit show whether a character stands across it.
    char text[formatSize + MB_LEN_MAX] = {};
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    const size_t length = wholeCharacters(text, formatSize - 1);
    assign(text, length, length);
}

void xCString::AnsiToOem()
{
    DorCPP::Ansi2Oem(m_buffer, m_buffer, m_length);
}

void xCString::OemToAnsi()
{
    DorCPP::Oem2Ansi(m_buffer, m_buffer, m_length);
}

void xCString::OemToKoi()
{
    DorCPP::Oem2Koi(m_buffer, m_buffer, m_length);
}

void xCString::KoiToOem()
{
    DorCPP::Koi2Oem(m_buffer, m_buffer, m_length);
}

void xCString::AnsiToKoi()
{
    DorCPP::Ansi2Koi(m_buffer, m_buffer, m_length);
}

void xCString::KoiToAnsi()
{
    DorCPP::Koi2Ansi(m_buffer, m_buffer, m_length);
}

// Takes count bytes and zero bytes up to the length. The bytes may be the string's own.
void xCString::assign(const char* bytes, size_t count, size_t length)
{
    if (length > std::numeric_limits<uint32_t>::max())
        return;
    auto* buffer = static_cast<char*>(std::calloc(length + 1, 1));
    if (!buffer)
        return;
    std::memcpy(buffer, bytes, count);
    std::free(std::exchange(m_buffer, buffer));
    m_length = static_cast<uint32_t>(length);
}

// The bytes may be the string's own.
void xCString::append(const char* bytes, size_t count)
{
    if (count == 0)
        return;
    const uint32_t before = m_length;
    const bool own = m_buffer && std::less_equal<>()(static_cast<const char*>(m_buffer), bytes) &&
                     std::less_equal<>()(bytes, static_cast<const char*>(m_buffer + m_length));
    const size_t offset = own ? static_cast<size_t>(bytes - m_buffer) : 0;
    if (resize(before + count))
        std::memcpy(m_buffer + before, own ? m_buffer + offset : bytes, count);
}

// At most count bytes from start, which is below the length.
xCString xCString::piece(uint32_t start, uint32_t count) const
{
    xCString result;
    const uint32_t length = std::min(count, m_length - start);
    result.assign(m_buffer + start, length, length);
    return result;
}

// Makes the string length bytes long; new bytes are zero. Null, with nothing changed, when memory
// is exhausted.
char* xCString::resize(size_t length)
{
    if (length > std::numeric_limits<uint32_t>::max())
        return nullptr;
    auto* buffer = static_cast<char*>(std::realloc(m_buffer, length + 1));
    if (!buffer)
        return nullptr;
    if (length > m_length)
        std::memset(buffer + m_length, 0, length - m_length);
    buffer[length] = 0;
    m_buffer = buffer;
    m_length = static_cast<uint32_t>(length);
    return m_buffer;
}

void xCString::clear()
{
    std::free(std::exchange(m_buffer, nullptr));
    m_length = 0;
}

void convertACtoXC(xCString& dst, OviAPI::aCString& src)
{
    dst = xCString();
    if (src.empty())
        return;
    // Kept: as many bytes as the text has characters.
    const std::string bytes = toLocale(src.c_str(), src.size());
    dst = xCString(bytes.data(), static_cast<unsigned>(bytes.size()));
}

void convertXCtoAC(OviAPI::aCString& dst, xCString& src)
{
    dst = OviAPI::localeToWide(src.c_str());
}
