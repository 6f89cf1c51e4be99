#include "convert.h"

#include <algorithm>
#include <cmath>

#include <QGuiApplication>

#include <oviapi/text.h>

#include "picture_native.h"

namespace OviAPI {

namespace {

constexpr int minPoints = 1;
constexpr int maxPoints = 400;

const QImage& bestVariant(const std::vector<QImage>& variants, double ratio)
{
    const auto fits = [ratio](const QImage& image) { return image.devicePixelRatio() >= ratio; };
    const auto found = std::find_if(variants.begin(), variants.end(), fits);
    return found != variants.end() ? *found : variants.back();
}

} // namespace

QString toQString(std::wstring_view text)
{
    const std::u16string units = wideToUtf16(text);
    return QString::fromUtf16(units.data(), static_cast<qsizetype>(units.size()));
}

std::wstring fromQString(const QString& text)
{
    return utf16ToWide(
        {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<size_t>(text.size())});
}

QFont toQFont(const Font& font)
{
    return toQFont(font, QGuiApplication::font());
}

QFont toQFont(const Font& font, const QFont& base)
{
    if (font.isEmpty())
        return base;
    QFont out = base;
    if (!font.name().empty())
        out.setFamilies({toQString(font.name())});
    if (font.size() != 0)
        out.setPointSize(std::clamp(font.size(), minPoints, maxPoints));
    out.setBold(font.bold());
    out.setItalic(font.italic());
    out.setUnderline(font.underline());
    out.setStrikeOut(font.strikeout());
    return out;
}

Font fromQFont(const QFont& font)
{
    const int points = font.pointSizeF() > 0 ? static_cast<int>(std::lround(font.pointSizeF())) : 0;
    return Font(fromQString(font.family()), points, font.bold(), font.italic(), font.underline(),
                font.strikeOut());
}

QColor toQColor(Color color)
{
    return QColor::fromRgb(0xFF000000U | color.rgb());
}

Color fromQColor(const QColor& color)
{
    return Color(color.red(), color.green(), color.blue());
}

QRect toQRect(const Rect& rect)
{
    constexpr int64_t most = INT32_MAX;
    return QRect(rect.left, rect.top, static_cast<int>(std::clamp<int64_t>(rect.width(), 0, most)),
                 static_cast<int>(std::clamp<int64_t>(rect.height(), 0, most)));
}

Rect fromQRect(const QRect& rect)
{
    return {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
}

QImage toQImage(const Picture& picture, double ratio)
{
    return picture.isNull() ? QImage() : bestVariant(picture.native()->variants, ratio);
}

QPixmap toQPixmap(const Picture& picture, double ratio)
{
    return picture.isNull() ? QPixmap() : QPixmap::fromImage(toQImage(picture, ratio));
}

QIcon toQIcon(const Picture& picture)
{
    QIcon icon;
    if (picture.isNull())
        return icon;
    for (const QImage& image : picture.native()->variants)
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}

Picture fromQImage(const QImage& image)
{
    if (image.isNull())
        return Picture();
    auto native = std::make_shared<Picture::Native>();
    native->variants.push_back(image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    return Picture(std::move(native));
}

} // namespace OviAPI
