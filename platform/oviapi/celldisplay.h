// Text of a cell as one line of a table shows it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace OviAPI {

// A cell lays out at most this many characters.
inline constexpr size_t maxShownChars = 1024;

// Line breaks, tabs and other control characters become visible signs, characters that would turn
// the direction of the text around become U+FFFD; what is longer than maxShownChars is cut.
OVIAPI_API std::wstring shownLine(std::wstring_view text);

} // namespace OviAPI
