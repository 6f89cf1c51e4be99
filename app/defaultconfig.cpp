#include "app/defaultconfig.h"

#include <string_view>
#include <utility>

#include <xmlutils/exception.h>

namespace {

constexpr char commonSection[] = "OVIAPI"; // settings that all applications share

XMLUtils::XMLElementA* findIn(VectorOf<XMLUtils::XMLElementA>& elements, std::string_view name)
{
    for (XMLUtils::XMLElementA& element : elements)
        if (element.name() == name)
            return &element;
    return nullptr;
}

} // namespace

XMLUtils::XMLElementA* DefaultConfigSection::find(const char* name)
{
    return findIn(elements, name);
}

DefaultConfigSectionVector::~DefaultConfigSectionVector()
{
    for (const DefaultConfigSection* section : *this)
        delete section;
}

DefaultConfigSection* DefaultConfigSectionVector::find(const TerminalDesc& terminal) const
{
    for (DefaultConfigSection* section : *this)
        if (section->terminal == terminal)
            return section;
    return nullptr;
}

std::unique_ptr<DefaultConfigSection> DefaultConfigSectionVector::take(uint32_t i)
{
    std::unique_ptr<DefaultConfigSection> section((*this)[i]);
    remove(i);
    return section;
}

DefaultConfigSectionAdder::DefaultConfigSectionAdder(const CharString& appName,
                                                     DefaultConfigSectionVector* result,
                                                     XMLUtils::XMLEncoding fileEncoding)
    : sections(result)
    , encoding(fileEncoding)
{
    sectionNames.append(commonSection);
    sectionNames.append(appName);
}

void DefaultConfigSectionAdder::addElement(const XMLUtils::XMLElementA& config) const
{
    TerminalDesc terminal;
    try {
        terminal.deserialize(config.getChild("TermDesc"), encoding);
    } catch (const XMLUtils::XMLException&) {
        return; // nothing says for which screen the settings are
    }
    for (const CharString& name : sectionNames) {
        const XMLUtils::XMLElementA* section = config.findChild(name);
        if (!section || !section->hasChildren())
            continue;
        DefaultConfigSection* entry = sections->find(terminal);
        if (!entry) {
            auto made = std::make_unique<DefaultConfigSection>();
            made->terminal = terminal;
            made->encoding = encoding;
            entry = made.get();
            sections->append(entry);
            static_cast<void>(made.release()); // owned by the list now
        }
        for (size_t i = 0; i < section->childCount(); ++i) {
            const XMLUtils::XMLElementA& child = section->child(i);
            if (XMLUtils::XMLElementA* present = findIn(entry->elements, child.name()))
                present->merge(child);
            else
                entry->elements.append(child);
        }
    }
}

double screenDistance(const TerminalDesc& madeFor, const TerminalDesc& screen)
{
    const int64_t dx = int64_t{screen.ScreenWidth} - madeFor.ScreenWidth;
    const int64_t dy = int64_t{screen.ScreenHeight} - madeFor.ScreenHeight;
    if (dx < 0 || dy < 0)
        return farthestScreen;
    return static_cast<double>(dx) * static_cast<double>(dx) +
           static_cast<double>(dy) * static_cast<double>(dy);
}
