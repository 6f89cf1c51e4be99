#include "app/terminaldesc.h"

#include <xmlutils/element.h>

TerminalDesc& TerminalDesc::current()
{
    static TerminalDesc terminal;
    return terminal;
}

void TerminalDesc::serialize(XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding) const
{
    element.setAttribute("ClassName", "TerminalDesc");
    element.setAttribute("ClassVersion", 1);
    element.addChild("ScreenWidth").setInteger(ScreenWidth);
    element.addChild("ScreenHeight").setInteger(ScreenHeight);
}

void TerminalDesc::deserialize(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding)
{
    const int32_t width = element.getChild("ScreenWidth").getInteger();
    const int32_t height = element.getChild("ScreenHeight").getInteger();
    ScreenWidth = width;
    ScreenHeight = height;
}
