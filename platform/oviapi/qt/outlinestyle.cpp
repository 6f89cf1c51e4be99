#include "outlinestyle.h"

#include <cstdlib>
#include <utility>

#include <QApplication>
#include <QStyleFactory>
#include <QStyleOption>

#include "colormix.h"

namespace OviAPI {

namespace {

constexpr char styleName[] = "fusion";
constexpr int darkestWindow = 30; // lightness, of 255, from which on outlines are seen
const QColor outlineSource(215, 215, 215);
const QColor thumbFace(110, 110, 110);

// Draws with another colour of the palette in the option, which is given back.
template<class Draw>
void drawWith(const QStyleOption* option, QPalette::ColorRole role, const QColor& color, Draw draw)
{
    auto* changed = const_cast<QStyleOption*>(option); // made by the caller for this call
    const QPalette before = changed->palette;
    changed->palette.setColor(role, color);
    draw();
    changed->palette = before;
}

int distance(const QColor& a, const QColor& b)
{
    return std::abs(a.lightness() - b.lightness());
}

} // namespace

void liftDisabledTexts()
{
    constexpr int leastDistance = 40; // lightness, of 255
    constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::Text, QPalette::Base}};
    const QPalette palette = QApplication::palette();
    QPalette lifted = palette; // says explicitly what it was told explicitly
    bool needed = false;
    for (const auto& [text, ground] : texts) {
        const QColor below = palette.color(QPalette::Disabled, ground);
        if (distance(palette.color(QPalette::Disabled, text), below) >= leastDistance)
            continue;
        const QColor above = palette.color(QPalette::Active, text);
        lifted.setColor(QPalette::Disabled, text, mix(below, above, 1, 2));
        needed = true;
    }
    if (needed)
        QApplication::setPalette(lifted); // all else goes on following the desktop
}

void OutlineStyle::installIfNeeded()
{
    const QColor window = QApplication::palette().color(QPalette::Window);
    if (QApplication::style()->name() == QLatin1String(styleName) &&
        window.lightness() < darkestWindow)
        QApplication::setStyle(new OutlineStyle(QStyleFactory::create(styleName))); // it owns it
}

OutlineStyle::OutlineStyle(QStyle* base)
    : QProxyStyle(base)
{
}

void OutlineStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const
{
    const auto draw = [&] { QProxyStyle::drawPrimitive(element, option, painter, widget); };
    switch (element) {
    case PE_Frame:
    case PE_FrameLineEdit:
    case PE_PanelLineEdit:
    case PE_IndicatorCheckBox:
    case PE_IndicatorRadioButton:
    case PE_PanelButtonCommand:
    case PE_FrameTabWidget:
        return drawWith(option, QPalette::Window, outlineSource, draw);
    default:
        return draw();
    }
}

void OutlineStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const
{
    const auto draw = [&] { QProxyStyle::drawComplexControl(control, option, painter, widget); };
    switch (control) {
    case CC_ComboBox:
    case CC_SpinBox:
        return drawWith(option, QPalette::Window, outlineSource, draw);
    case CC_ScrollBar:
        return drawWith(option, QPalette::Button, thumbFace, draw);
    default:
        return draw();
    }
}

} // namespace OviAPI
