// A screen size.
#pragma once

#include <cstdint>

#include <xmlutils/serializable.h>

#include "app/export.h"

// The size of a screen's available area, in pixels; 0 x 0 stands for no screen.
class OVIEXT_API TerminalDesc : public XMLUtils::IXMLSerializableA {
public:
    // The screen the program runs on: one instance, 0 x 0 until ExtApp::adaptToTD sets it.
    static TerminalDesc& current();

    void serialize(XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) const override;
    // Throws XMLException when a child is missing or not an integer; nothing is changed then.
    void deserialize(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) override;
    virtual ~TerminalDesc() = default;

    bool operator==(const TerminalDesc& other) const
    {
        return ScreenHeight == other.ScreenHeight && ScreenWidth == other.ScreenWidth;
    }

    int32_t ScreenHeight = 0;
    int32_t ScreenWidth = 0;
};
