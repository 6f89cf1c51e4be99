// The character tables of the encodings that have one byte a character. Not exported.
#pragma once

#include <oviapi/bytecodes.h>
#include <xmlutils/encoding.h>

namespace XMLUtils {

// The Unicode character of each byte; -1 where the encoding has none.
using CodePage = OviAPI::ByteCodes;

// Null for an encoding that has not one byte a character. Throws XMLException when the system
// cannot convert from the encoding. Made on first use.
const CodePage* codePageOf(XMLEncoding encoding);

} // namespace XMLUtils
