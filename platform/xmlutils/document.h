// Documents as bytes in memory: what the file reader and writer do between opening and closing.
// Not exported.
#pragma once

#include <string>
#include <string_view>

#include <xmlutils/encoding.h>

namespace XMLUtils {

class XMLElementA;

// See XMLFILEReaderA::read. The encoding is the one that detectEncoding found.
void readDocument(std::string_view document, XMLEncoding encoding, std::string_view whiteSpace,
                  XMLElementA& root);

// See XMLFILEWriterA::write.
std::string writeDocument(const XMLElementA& root, XMLEncoding encoding);

// Whether a document exceeds maxAttributes.
bool hasTooManyAttributes(std::string_view document);

} // namespace XMLUtils
