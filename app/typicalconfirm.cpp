#include "app/typicalconfirm.h"

#include <xmlutils/element.h>
#include <xmlutils/exception.h>

void TypicalConfirm::serialize(XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding) const
{
    element.setAttribute("ClassName", "TypicalConfirm");
    element.setAttribute("ClassVersion", 1);
    element.addChild("Value").setInteger(Value);
}

void TypicalConfirm::deserialize(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding)
{
    Value = Ask;
    try {
        const int32_t value = element.getChild("Value").getInteger();
        if (value >= Ask && value <= No)
            Value = value;
    } catch (const XMLUtils::XMLException&) {
        // No answer has been remembered: the question is asked.
    }
}
