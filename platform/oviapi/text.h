// Conversions between wide text, UTF-8, UTF-16 and the multibyte text of the process locale. None
// of them fails: what cannot be converted becomes a replacement character, '?' in a multibyte
// locale that has no better one, U+FFFD in the Unicode forms.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace OviAPI {

OVIAPI_API std::string wideToUtf8(std::wstring_view text);
OVIAPI_API std::wstring utf8ToWide(std::string_view text);

// UTF-16 in the byte order of the machine, without a byte order mark.
OVIAPI_API std::u16string wideToUtf16(std::wstring_view text);
OVIAPI_API std::wstring utf16ToWide(std::u16string_view text);

// Multibyte text of the process locale (LC_CTYPE). A zero character ends neither direction.
OVIAPI_API std::string wideToLocale(std::wstring_view text);
OVIAPI_API std::wstring localeToWide(std::string_view text);

// True when the bytes are UTF-8 without surrogates, overlong forms or code points over U+10FFFF.
OVIAPI_API bool isValidUtf8(std::string_view text);

// Copies at most size - 1 characters and always ends the buffer with a zero; size 0 copies nothing.
// Returns the number of characters copied.
OVIAPI_API size_t copyText(wchar_t* buffer, size_t size, std::wstring_view text);

// Puts the argument in the place of the first "%ls" or "%s" of a text that comes from resources.
// "%%" becomes "%"; every other per cent sign is plain text, and so is a second placeholder.
OVIAPI_API std::wstring substitute(std::wstring_view format, std::wstring_view argument);

} // namespace OviAPI
