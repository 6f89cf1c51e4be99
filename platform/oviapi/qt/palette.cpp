#include <oviapi/palette.h>

#include <algorithm>
#include <cmath>

#include <QGuiApplication>
#include <QPalette>

#include "colormix.h"
#include "convert.h"

namespace OviAPI {

namespace {

constexpr double wantedContrast = 3.0;
constexpr int mixSteps = 32;

QColor roleColor(const QPalette& palette, ColorNumber number)
{
    switch (number) {
    case ColorNumber::Window:
        return palette.color(QPalette::Window);
    case ColorNumber::WindowText:
        return palette.color(QPalette::WindowText);
    case ColorNumber::ButtonFace:
        return palette.color(QPalette::Button);
    case ColorNumber::ButtonText:
        return palette.color(QPalette::ButtonText);
    case ColorNumber::Highlight:
    case ColorNumber::Caption:
        return palette.color(QPalette::Active, QPalette::Highlight);
    case ColorNumber::Field:
        return palette.color(QPalette::Base);
    case ColorNumber::FieldText:
        return palette.color(QPalette::Text);
    case ColorNumber::HighlightText:
    case ColorNumber::CaptionText:
        return palette.color(QPalette::Active, QPalette::HighlightedText);
    case ColorNumber::Shadow:
        return palette.color(QPalette::Dark);
    case ColorNumber::Light:
        return palette.color(QPalette::Light);
    case ColorNumber::InactiveCaption:
        return mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 1, 3);
    case ColorNumber::DisabledText:
        return palette.color(QPalette::Disabled, QPalette::Text);
    case ColorNumber::GridLine:
        return mix(palette.color(QPalette::Base), palette.color(QPalette::Text), 1, 5);
    case ColorNumber::ToolTip:
        return palette.color(QPalette::ToolTipBase);
    case ColorNumber::ToolTipText:
        return palette.color(QPalette::ToolTipText);
    }
    return QColor(Qt::black);
}

double luminance(Color color)
{
    const auto linear = [](int component) {
        const double c = component / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red()) + 0.7152 * linear(color.green()) +
           0.0722 * linear(color.blue());
}

} // namespace

uint32_t Color::rgb() const
{
    if (m_number == 0)
        return m_rgb;
    if (!qGuiApp)
        return 0;
    return roleColor(QGuiApplication::palette(), ColorNumber{m_number}).rgb() & 0xFFFFFFU;
}

bool isDarkPalette()
{
    if (!qGuiApp)
        return false;
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

double contrast(Color a, Color b)
{
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

Color lightenedAgainst(Color color, Color background)
{
    for (int part = 0; part < mixSteps; ++part) {
        const Color mixed = fromQColor(mix(toQColor(color), QColor(Qt::white), part, mixSteps));
        if (contrast(mixed, background) >= wantedContrast)
            return mixed;
    }
    return Color::White;
}

Color chartColor(Color color)
{
    if (color.number() != 0 || !isDarkPalette())
        return color;
    return lightenedAgainst(color, Color(ColorNumber::Field));
}

} // namespace OviAPI
