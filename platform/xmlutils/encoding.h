// The encodings of XML documents.
#pragma once

#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace XMLUtils {

// The encoding of a document as bytes. Elements in memory hold Unicode text whatever it is.
enum class XMLEncoding : int {
    Unknown = 0,
    Utf8 = 1, // with or without a byte order mark; written without
    Koi8R = 2,
    Windows1251 = 3,
    Utf16LE = 4, // UTF-16 is known by its byte order mark and written with it
    Utf16BE = 5,
};

// The encoding of a document's bytes: its byte order mark, else the encoding that its XML
// declaration names, else UTF-8. Throws XMLException when the declaration names an encoding that
// is not one of the above, or another one than the byte order mark.
OVIAPI_API XMLEncoding detectEncoding(std::string_view document);

// The name in an XML declaration, "UTF-16" for both byte orders. Throws XMLException for Unknown
// and for numbers that are no encoding.
OVIAPI_API const char* encodingName(XMLEncoding encoding);

} // namespace XMLUtils
