#include "app/typicaloptions.h"

#include <limits>
#include <optional>

#include <oviapi/application.h>
#include <oviapi/systemmetrics.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>

#include "app/extapp.h"

namespace {

using OviAPI::Font;
using OviAPI::Rect;
using XMLUtils::XMLElementA;
using XMLUtils::XMLEncoding;

constexpr int64_t minVisible = 10;     // px of a window that must lie inside the available area
constexpr size_t maxFaceName = 1024;   // characters
constexpr int32_t defaultWidth = 1200; // the screen that the defaults were made for, px
constexpr int32_t defaultHeight = 900;
constexpr wchar_t defaultFace[] = L"Helvetica";
constexpr int defaultControlsSize = 10; // points
constexpr int defaultTextSize = 12;

Font defaultControlsFont()
{
    return {defaultFace, defaultControlsSize};
}

Font defaultTextFont()
{
    return {defaultFace, defaultTextSize};
}

enum TypicalOptions::Language defaultLanguage()
{
    const bool extended = dynamic_cast<ExtApp*>(OviAPI::Application::instance()) != nullptr;
    return extended ? ExtApp::getDefaultLang() : TypicalOptions::DefaultLanguage;
}

// Runs one step of reading. Whatever it throws concerns this key alone; false tells the caller to
// take the key's fallback.
template<class Step>
bool succeeds(Step step)
{
    try {
        return step();
    } catch (...) {
        return false;
    }
}

void setClass(XMLElementA& element, const char* name)
{
    element.setAttribute("ClassName", name);
    element.setAttribute("ClassVersion", 1);
}

int32_t integerOf(const XMLElementA& element, const char* child)
{
    return element.getChild(child).getInteger();
}

void writeRect(XMLElementA& element, const Rect& rect)
{
    setClass(element, "Rect");
    element.addChild("Left").setInteger(rect.left);
    element.addChild("Right").setInteger(rect.right);
    element.addChild("Top").setInteger(rect.top);
    element.addChild("Bottom").setInteger(rect.bottom);
}

Rect readRect(const XMLElementA& element)
{
    Rect rect;
    rect.left = integerOf(element, "Left");
    rect.right = integerOf(element, "Right");
    rect.top = integerOf(element, "Top");
    rect.bottom = integerOf(element, "Bottom");
    return rect;
}

// Moves the rectangle; nothing when a side would leave the range of its type.
std::optional<Rect> moved(const Rect& rect, int32_t dx, int32_t dy)
{
    const auto fits = [](int64_t v) {
        return v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max();
    };
    const int64_t sides[] = {int64_t{rect.left} + dx, int64_t{rect.top} + dy,
                             int64_t{rect.right} + dx, int64_t{rect.bottom} + dy};
    for (const int64_t side : sides)
        if (!fits(side))
            return std::nullopt;
    return Rect{static_cast<int32_t>(sides[0]), static_cast<int32_t>(sides[1]),
                static_cast<int32_t>(sides[2]), static_cast<int32_t>(sides[3])};
}

void writeFont(XMLElementA& element, const Font& font, XMLEncoding encoding)
{
    setClass(element, "Font");
    element.addChild("Name").setString(font.name().substr(0, maxFaceName), encoding);
    element.addChild("Size").setInteger(font.size());
    element.addChild("Bold").setBoolean(font.bold());
    element.addChild("Italic").setBoolean(font.italic());
    element.addChild("Underline").setBoolean(font.underline());
    element.addChild("Strikeout").setBoolean(font.strikeout());
}

Font readFont(const XMLElementA& element, XMLEncoding encoding)
{
    const auto flag = [&](const char* name) { return element.getChild(name).getBoolean(); };
    std::wstring name = element.getChild("Name").getString(encoding).substr(0, maxFaceName);
    const int32_t size = integerOf(element, "Size");
    const bool bold = flag("Bold");
    const bool italic = flag("Italic");
    const bool underline = flag("Underline");
    return {std::move(name), size, bold, italic, underline, flag("Strikeout")};
}

// Reads the font of that name into the field, or leaves the field as it is.
bool takeFont(const XMLElementA& element, const char* name, XMLEncoding encoding, Font& field)
{
    return succeeds([&] {
        field = readFont(element.getChild(name), encoding);
        return true;
    });
}

WCharString readText(const XMLElementA& element, const char* name, XMLEncoding encoding)
{
    WCharString text;
    succeeds([&] {
        text = element.getChild(name).getString(encoding);
        return true;
    });
    return text;
}

// Kept: the last two tests compare the size with the area's place, the ones before them the place
// with the area's size; where the area starts at 0, 0 this asks for 10 x 10 px.
bool isUsable(int64_t x, int64_t y, int64_t width, int64_t height)
{
    const Rect area = OviAPI::SystemMetrics::getAvailableRect();
    if (x + width < area.left + minVisible || y + height < area.top + minVisible)
        return false;
    if (width > 2 * area.width() || height > 2 * area.height())
        return false;
    if (x > area.width() - minVisible || y > area.height() - minVisible)
        return false;
    return width >= area.left + minVisible && height >= area.top + minVisible;
}

} // namespace

void TypicalOptions::serialize(XMLElementA& element, XMLEncoding encoding) const
{
    setClass(element, "TypicalOptions");
    element.addChild("Language").setInteger(Language);
    writeRect(element.addChild("MainFormRect"), MainFormRect);
    element.addChild("MainFormMaximized").setBoolean(MainFormMaximized);
    writeFont(element.addChild("FontControls"), FontControls, encoding);
    writeFont(element.addChild("FontTree"), FontTree, encoding);
    writeFont(element.addChild("FontEdits"), FontEdits, encoding);
    element.addChild("LastLoadDirectory").setString(LastLoadDirectory, encoding);
    element.addChild("LastSaveDirectory").setString(LastSaveDirectory, encoding);
    element.addChild("LastAction").setInteger(LastAction);
    TermDesc.serialize(element.addChild("TermDesc"), encoding);
    AdaptToTD.serialize(element.addChild("AdaptToTD"), encoding);
}

void TypicalOptions::deserialize(const XMLElementA& element, XMLEncoding encoding)
{
    if (!succeeds([&] {
            const int32_t language = integerOf(element, "Language");
            Language = language == Koi8Language ? Koi8Language : DefaultLanguage;
            return true;
        }))
        Language = defaultLanguage();
    if (!succeeds([&] {
            MainFormRect = readRect(element.getChild("MainFormRect"));
            return isValidGeometry(MainFormRect);
        }))
        initDefaultMainFormRect();
    if (!succeeds([&] {
            MainFormMaximized = element.getChild("MainFormMaximized").getBoolean();
            return true;
        }))
        initDefaultMainFormMaximized();
    if (!takeFont(element, "FontControls", encoding, FontControls))
        FontControls = defaultControlsFont();
    if (!takeFont(element, "FontTree", encoding, FontTree))
        FontTree = defaultTextFont();
    if (!takeFont(element, "FontEdits", encoding, FontEdits))
        FontEdits = defaultTextFont();
    LastLoadDirectory = readText(element, "LastLoadDirectory", encoding);
    LastSaveDirectory = readText(element, "LastSaveDirectory", encoding);
    if (!succeeds([&] {
            LastAction = integerOf(element, "LastAction");
            return static_cast<uint32_t>(LastAction) <= SaveAction;
        }))
        LastAction = NoAction;
    if (!succeeds([&] {
            TermDesc.deserialize(element.getChild("TermDesc"), encoding);
            return true;
        }))
        TermDesc = TerminalDesc(); // any screen differs from it
    if (!succeeds([&] {
            AdaptToTD.deserialize(element.getChild("AdaptToTD"), encoding);
            return true;
        }))
        AdaptToTD = TypicalConfirm();
}

void TypicalOptions::deserializeForTD(const XMLElementA& element, XMLEncoding encoding)
{
    succeeds([&] {
        const Rect area = OviAPI::SystemMetrics::getAvailableRect();
        const auto rect = moved(readRect(element.getChild("MainFormRect")), area.left, area.top);
        if (rect && isValidGeometry(*rect))
            MainFormRect = *rect;
        return true;
    });
    succeeds([&] {
        MainFormMaximized = element.getChild("MainFormMaximized").getBoolean();
        return true;
    });
    takeFont(element, "FontControls", encoding, FontControls);
    takeFont(element, "FontTree", encoding, FontTree);
    takeFont(element, "FontEdits", encoding, FontEdits);
}

void TypicalOptions::initDefaults()
{
    Language = defaultLanguage();
    initDefaultMainFormRect();
    initDefaultMainFormMaximized();
    FontControls = defaultControlsFont();
    FontTree = defaultTextFont();
    FontEdits = defaultTextFont();
    LastLoadDirectory.clear();
    LastSaveDirectory.clear();
    LastAction = NoAction;
    TermDesc.ScreenWidth = defaultWidth;
    TermDesc.ScreenHeight = defaultHeight;
    AdaptToTD.Value = TypicalConfirm::Ask;
}

void TypicalOptions::initDefaultMainFormRect()
{
    MainFormRect = {100, 100, 740, 580};
}

void TypicalOptions::initDefaultMainFormMaximized()
{
    MainFormMaximized = false;
}

bool TypicalOptions::isValidGeometry(int x, int y, int width, int height)
{
    return isUsable(x, y, width, height);
}

bool TypicalOptions::isValidGeometry(const Rect& rect)
{
    return isUsable(rect.left, rect.top, rect.width(), rect.height());
}

void TypicalOptions::setLastLoadDirectory(const wchar_t* dir)
{
    LastLoadDirectory = dir ? dir : L"";
    LastAction = LoadAction;
}

void TypicalOptions::setLastSaveDirectory(const wchar_t* dir)
{
    LastSaveDirectory = dir ? dir : L"";
    LastAction = SaveAction;
}

const wchar_t* TypicalOptions::lastUsedDirectory() const
{
    switch (LastAction) {
    case LoadAction:
        return LastLoadDirectory.c_str();
    case SaveAction:
        return LastSaveDirectory.c_str();
    default:
        return L"";
    }
}

bool TypicalOptions::operator==(const TypicalOptions& other) const
{
    return Language == other.Language && MainFormRect == other.MainFormRect &&
           MainFormMaximized == other.MainFormMaximized && FontControls == other.FontControls &&
           FontTree == other.FontTree && FontEdits == other.FontEdits &&
           LastLoadDirectory == other.LastLoadDirectory &&
           LastSaveDirectory == other.LastSaveDirectory && LastAction == other.LastAction &&
           TermDesc == other.TermDesc && AdaptToTD == other.AdaptToTD;
}
