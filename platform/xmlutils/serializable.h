// A record that can be written into an XML element and read back from it.
#pragma once

#include <oviapi/export.h>
#include <xmlutils/encoding.h>

namespace XMLUtils {

class XMLElementA;

// The encoding is that of the file which the element goes to or comes from. The caller has named
// the element. Reading throws XMLException when the element does not hold such a record and the
// record has no fallback of its own.
// Not for deleting through: the destructor is not virtual, so that the operations stand in the
// first slots.
class OVIAPI_API IXMLSerializableA {
public:
    virtual void serialize(XMLElementA& element, XMLEncoding encoding) const = 0;
    virtual void deserialize(const XMLElementA& element, XMLEncoding encoding) = 0;

protected:
    ~IXMLSerializableA() = default;
};

} // namespace XMLUtils
