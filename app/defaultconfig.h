// The default settings by screen size of "gui_default_settings.xml".
#pragma once

#include <cstdint>
#include <memory>

#include <oviapi/string.h>
#include <xmlutils/adder.h>
#include <xmlutils/element.h>

#include "app/export.h"
#include "app/myhash.h"
#include "app/terminaldesc.h"

// The settings for one screen size, gathered from every config of that size.
class OVIEXT_API DefaultConfigSection {
public:
    // The first element of that name, or null.
    XMLUtils::XMLElementA* find(const char* name);

    TerminalDesc terminal;
    VectorOf<XMLUtils::XMLElementA> elements{50, 50}; // at most one of each name
    XMLUtils::XMLEncoding encoding{};                 // of the file they were read from
};

// Owns its entries; they stand in the order in which the sizes were first met.
class OVIEXT_API DefaultConfigSectionVector : public VectorOf<DefaultConfigSection*> {
public:
    DefaultConfigSectionVector()
        : VectorOf(50, 50)
    {
    }
    ~DefaultConfigSectionVector();
    DefaultConfigSectionVector(const DefaultConfigSectionVector&) = delete;
    DefaultConfigSectionVector& operator=(const DefaultConfigSectionVector&) = delete;

    // The entry of a screen size, or null.
    DefaultConfigSection* find(const TerminalDesc& terminal) const;
    // Takes the entry at index i out.
    std::unique_ptr<DefaultConfigSection> take(uint32_t i);
};

// Takes each config of the file as it is read and adds its settings to the result list.
class OVIEXT_API DefaultConfigSectionAdder : public XMLUtils::IXMLAdderA {
public:
    // appName: names the application's own section, in UTF-8. sections: owned by the caller.
    DefaultConfigSectionAdder(const CharString& appName, DefaultConfigSectionVector* sections,
                              XMLUtils::XMLEncoding encoding);

    // A config without a valid terminal is ignored.
    void addElement(const XMLUtils::XMLElementA& config) const override;
    virtual ~DefaultConfigSectionAdder() = default;

    VectorOf<CharString> sectionNames{50, 50};
    DefaultConfigSectionVector* sections;
    XMLUtils::XMLEncoding encoding;
};

// How far settings made for one screen are from another one: the square of the distance between
// their sizes in px, farthestScreen when they were made for a screen that is larger in a direction.
inline constexpr double farthestScreen = 1e10;
OVIEXT_API double screenDistance(const TerminalDesc& madeFor, const TerminalDesc& screen);
