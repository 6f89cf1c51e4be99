// Receives elements of a document while it is read.
#pragma once

#include <oviapi/export.h>

namespace XMLUtils {

class XMLElementA;

// Set on a root element (XMLElementA::setAdder), it is handed each child of the document element
// as soon as the child has been read whole, and the child is then dropped: a long list passes
// through without standing in memory. An exception thrown by addElement ends the reading and comes
// out of the reader. Elements handed over before a fault was found in the document stay handed
// over.
// Not for deleting through: the destructor is not virtual, so that the operations stand in the
// first slots.
class OVIAPI_API IXMLAdderA {
public:
    virtual void addElement(const XMLElementA& element) const = 0;

protected:
    ~IXMLAdderA() = default;
};

} // namespace XMLUtils
