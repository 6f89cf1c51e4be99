// Character-set conversions of the database client. None of them fails: what has no counterpart
// becomes '?' in a one-byte set and U+FFFD in a Unicode form. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace DorCPP {

enum class Charset {
    Utf8 = 1,
    Ansi = 2,   // windows-1251
    Oem = 3,    // CP866
    Koi8 = 4,   // KOI8-R
    Locale = 5, // multibyte text of the process locale, whatever its set
};

// The set of narrow text in this process: the set of LC_CTYPE when it is one of the first four,
// Utf8 for the plain C locale, else Locale.
OVIAPI_API Charset getStdCharset();

// Convert length characters or bytes of a text into a buffer of the given capacity and return how
// many bytes or characters were stored. A text that does not fit is cut between two characters. No
// terminating zero is written, and a zero inside the text is an ordinary character.
OVIAPI_API size_t wcs2mbs(char* to, size_t capacity, const wchar_t* from, size_t length,
                          Charset charset);
OVIAPI_API size_t mbs2wcs(wchar_t* to, size_t capacity, const char* from, size_t length,
                          Charset charset);
OVIAPI_API size_t mbs2mbs(char* to, size_t capacity, Charset toCharset, const char* from,
                          size_t length, Charset fromCharset);

// The same for whole texts.
OVIAPI_API std::string convert(std::string_view text, Charset from, Charset to);
OVIAPI_API std::string narrow(std::wstring_view text, Charset to);
OVIAPI_API std::wstring widen(std::string_view text, Charset from);

// Convert length bytes between the one-byte sets. The buffers may be the same.
OVIAPI_API void Ansi2Oem(const char* from, char* to, size_t length);
OVIAPI_API void Oem2Ansi(const char* from, char* to, size_t length);
OVIAPI_API void Oem2Koi(const char* from, char* to, size_t length);
OVIAPI_API void Koi2Oem(const char* from, char* to, size_t length);
OVIAPI_API void Ansi2Koi(const char* from, char* to, size_t length);
OVIAPI_API void Koi2Ansi(const char* from, char* to, size_t length);

// Remove blanks (' ') of a zero-terminated text in place; null stays null. Return the text.
OVIAPI_API char* LTrim(char* text);
OVIAPI_API char* RTrim(char* text);
OVIAPI_API char* Trim(char* text);

// Wide text to UTF-16 units in the byte order of the machine. With `terminated` the text ends at
// its first zero and the result gets a zero unit behind it; without, exactly `capacity` characters
// are read. At most `capacity` units are written, the zero included; a pair is never cut in two.
// The target need not be aligned. Returns the number of units without the zero.
OVIAPI_API int RCHARToUnicode(void* to, const wchar_t* from, int capacity, bool terminated);

// UTF-16 units to wide text, by the same rules: `capacity` counts wide characters, and without
// `terminated` exactly that many units are read. Neither buffer need be aligned. Returns the number
// of characters without the zero.
OVIAPI_API int UnicodeToRCHAR(void* to, const void* from, int capacity, bool terminated);

// Turns the value of an EXTFILE column, a zero-terminated wide text, into the path that is shown:
// the statement form EXTFILE('a''b') becomes a'b, and trailing blanks go. In place; the result is
// never longer. The buffer need not be aligned.
OVIAPI_API void ConvertExtfileRCHAR(void* text);

} // namespace DorCPP
