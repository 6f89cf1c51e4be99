// Writes XML files.
#pragma once

#include <string>

#include <oviapi/export.h>
#include <xmlutils/encoding.h>

namespace XMLUtils {

class XMLElementA;

// Writes a document in one step: the file is either the old one or the whole new one.
//
// An XML declaration with the encoding, then one element a line, indented by two blanks a level.
// Elements with text are written without added white space, so that the file reads back equal to
// what was written. A character that XML cannot hold (a control character, U+FFFE, U+FFFF, a byte
// that is not UTF-8) becomes U+FFFD; one that the encoding lacks becomes a character reference.
class OVIAPI_API XMLFILEWriterA {
public:
    // Throws XMLException when the code is not an encoding. The file is not touched yet.
    explicit XMLFILEWriterA(std::wstring path, XMLEncoding encoding = XMLEncoding::Utf8);

    // The root becomes the document element; a root without a name is written as "Root". Throws
    // XMLException, and leaves the file as it was, when a name is not an XML name or has characters
    // that the encoding lacks, when the document would exceed the bounds in <xmlutils/limits.h>, or
    // when the file cannot be written.
    void write(const XMLElementA& root) const;

private:
    std::wstring m_path;
    XMLEncoding m_encoding;
};

} // namespace XMLUtils
