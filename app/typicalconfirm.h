// The remembered answer to one yes/no question.
#pragma once

#include <cstdint>

#include <xmlutils/serializable.h>

#include "app/export.h"

class OVIEXT_API TypicalConfirm : public XMLUtils::IXMLSerializableA {
public:
    // What to do where the question would be asked.
    enum Answer : int32_t {
        Ask = 1,
        Yes = 2, // always do it
        No = 3,  // never do it
    };

    void serialize(XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) const override;
    // Anything but an answer gives Ask.
    void deserialize(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) override;
    virtual ~TypicalConfirm() = default;

    bool operator==(const TypicalConfirm& other) const { return Value == other.Value; }

    int32_t Value = Ask;
};
