// Between the framework's values and Qt's.
#pragma once

#include <string>
#include <string_view>

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QString>

#include <oviapi/color.h>
#include <oviapi/font.h>
#include <oviapi/geometry.h>
#include <oviapi/picture.h>

namespace OviAPI {

// Lone surrogates and code points beyond Unicode become U+FFFD.
QString toQString(std::wstring_view text);
std::wstring fromQString(const QString& text);

// The application's font for an empty font, its face for an empty name, its size for size 0; sizes
// are limited to 1..400 points. A face that is not installed is replaced when text is drawn.
QFont toQFont(const Font& font);
QFont toQFont(const Font& font, const QFont& base);
Font fromQFont(const QFont& font);

// Colours by number are looked up in the palette.
QColor toQColor(Color color);
Color fromQColor(const QColor& color);

// A rectangle with right before left, or wider than a 32-bit number, is cut to what fits.
QRect toQRect(const Rect& rect);
Rect fromQRect(const QRect& rect);
inline QPoint toQPoint(Point point)
{
    return {point.x, point.y};
}
inline Point fromQPoint(const QPoint& point)
{
    return {point.x(), point.y()};
}
inline QSize toQSize(Size size)
{
    return {size.width, size.height};
}
inline Size fromQSize(const QSize& size)
{
    return {size.width(), size.height()};
}

// The image whose resolution fits the ratio best, with its device pixel ratio set; a null image for
// a null picture.
QImage toQImage(const Picture& picture, double ratio);
QPixmap toQPixmap(const Picture& picture, double ratio);
// Holds every resolution of the picture.
QIcon toQIcon(const Picture& picture);
// Takes the image's device pixel ratio over.
Picture fromQImage(const QImage& image);

} // namespace OviAPI
