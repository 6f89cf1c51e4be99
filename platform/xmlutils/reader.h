// Reads XML files.
#pragma once

#include <string>
#include <string_view>

#include <oviapi/export.h>
#include <xmlutils/encoding.h>

namespace XMLUtils {

class XMLElementA;

// Takes a whole file into memory and builds elements from it.
//
// What it refuses with XMLException, having touched no other file: what is not a regular file (a
// pipe or a device is not even opened), more than the bounds in <xmlutils/limits.h>, any document
// type declaration (and with it every entity but the five of XML itself), bytes that are no
// characters in the document's encoding, and everything that is not well-formed. The exception
// names the file.
class OVIAPI_API XMLFILEReaderA {
public:
    // whiteSpace: characters (ASCII) cut off at both ends of every element's text. Without them
    // text comes as it stands in the file, which is what a file needs that a program has written; a
    // file written by hand is read with " \t\r\n". Throws XMLException when the file cannot be read
    // or its encoding is not known.
    explicit XMLFILEReaderA(const std::wstring& path, std::string_view whiteSpace = {});

    XMLEncoding encoding() const { return m_encoding; }

    // Reads the whole document into the root, which stands for the document element: it takes over
    // its name, attributes, text and children in place of its own. A root that has a name accepts a
    // document element of that name only. A root that has an adder gets no children: each is handed
    // to the adder. When XMLException is thrown the root is as it was before.
    void read(XMLElementA& root) const;

private:
    std::wstring m_path;
    std::string m_document;
    std::string m_whiteSpace;
    XMLEncoding m_encoding;
};

} // namespace XMLUtils
