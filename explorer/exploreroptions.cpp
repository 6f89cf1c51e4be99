#include "explorer/exploreroptions.h"

#include <algorithm>

#include <oviapi/systemmetrics.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>

namespace {

constexpr int defaultWidth = 1040; // px
constexpr int defaultHeight = 680;

OviAPI::Font defaultGridFont()
{
    return {L"Helvetica", 10};
}

void writeFont(XMLUtils::XMLElementA& element, const OviAPI::Font& font,
               XMLUtils::XMLEncoding encoding)
{
    element.setAttribute("ClassName", "Font");
    element.setAttribute("ClassVersion", 1);
    element.addChild("Name").setString(font.name(), encoding);
    element.addChild("Size").setInteger(font.size());
    element.addChild("Bold").setBoolean(font.bold());
    element.addChild("Italic").setBoolean(font.italic());
    element.addChild("Underline").setBoolean(font.underline());
    element.addChild("Strikeout").setBoolean(font.strikeout());
}

OviAPI::Font readFont(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding)
{
    return {
        element.getChild("Name").getString(encoding), element.getChild("Size").getInteger(),
        element.getChild("Bold").getBoolean(),        element.getChild("Italic").getBoolean(),
        element.getChild("Underline").getBoolean(),   element.getChild("Strikeout").getBoolean()};
}

// Runs one reading step; a key that is missing or bad gives the fallback.
template<class Read, class Fallback>
void readOr(Read read, Fallback fallback)
{
    try {
        read();
    } catch (const XMLUtils::XMLException&) {
        fallback();
    }
}

} // namespace

void ExplorerOptions::serialize(XMLUtils::XMLElementA& element,
                                XMLUtils::XMLEncoding encoding) const
{
    TypicalOptions::serialize(element, encoding);
    element.addChild("LastDatabase").setString(LastDatabase, encoding);
    element.addChild("Splitter").setInteger(Splitter);
    writeFont(element.addChild("FontGrid"), FontGrid, encoding);
}

void ExplorerOptions::deserialize(const XMLUtils::XMLElementA& element,
                                  XMLUtils::XMLEncoding encoding)
{
    TypicalOptions::deserialize(element, encoding);
    readOr([&] { LastDatabase = element.getChild("LastDatabase").getString(encoding); },
           [&] { LastDatabase.clear(); });
    readOr([&] { Splitter = element.getChild("Splitter").getInteger(); },
           [&] { Splitter = DefaultSplitter; });
    if (Splitter < MinSplitter || Splitter > MaxSplitter)
        Splitter = DefaultSplitter;
    readOr([&] { FontGrid = readFont(element.getChild("FontGrid"), encoding); },
           [&] { FontGrid = defaultGridFont(); });
}

void ExplorerOptions::initDefaults()
{
    TypicalOptions::initDefaults();
    LastDatabase.clear();
    Splitter = DefaultSplitter;
    FontGrid = defaultGridFont();
}

void ExplorerOptions::initDefaultMainFormRect()
{
    const OviAPI::Rect area = OviAPI::SystemMetrics::getAvailableRect();
    const auto width = static_cast<int32_t>(std::min<int64_t>(defaultWidth, area.width()));
    const auto height = static_cast<int32_t>(std::min<int64_t>(defaultHeight, area.height()));
    MainFormRect.left = area.left + static_cast<int32_t>((area.width() - width) / 2);
    MainFormRect.top = area.top + static_cast<int32_t>((area.height() - height) / 2);
    MainFormRect.right = MainFormRect.left + width;
    MainFormRect.bottom = MainFormRect.top + height;
}

bool ExplorerOptions::operator==(const ExplorerOptions& other) const
{
    return TypicalOptions::operator==(other) && LastDatabase == other.LastDatabase &&
           Splitter == other.Splitter && FontGrid == other.FontGrid;
}
