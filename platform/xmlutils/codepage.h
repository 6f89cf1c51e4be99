// The character tables of the encodings that have one byte a character. Not exported.
#pragma once

#include <array>
#include <string>

#include <xmlutils/encoding.h>

namespace XMLUtils {

// The Unicode character of each byte; -1 where the encoding has none.
using CodePage = std::array<int, 256>;

// Null for an encoding that has not one byte a character. Throws XMLException when the system
// cannot convert from the encoding. Made on first use.
const CodePage* codePageOf(XMLEncoding encoding);

} // namespace XMLUtils
