#include "tests/panels/inspect.h"

#include <QAccessible>
#include <QImage>
#include <QPixmap>

#include <oviapi/qt/native.h>

bool isAccessibleGroup(const OviAPI::WVisualObject& object)
{
    if (!object.native())
        return false;
    QAccessibleInterface* interface =
        QAccessible::queryAccessibleInterface(object.native()->widget);
    return interface && interface->role() == QAccessible::Grouping;
}

namespace {

int linesAlong(const QImage& image, QPoint from, QPoint step)
{
    const QRgb background = image.pixel(from);
    int lines = 0;
    bool inside = false;
    for (QPoint at = from; image.rect().contains(at); at += step) {
        const bool other = image.pixel(at) != background;
        lines += other && !inside ? 1 : 0;
        inside = other;
    }
    return lines;
}

} // namespace

std::vector<int> linesInColumns(const OviAPI::WVisualObject& form, const std::vector<int>& columns)
{
    const QImage image = form.native()->widget->grab().toImage();
    std::vector<int> lines;
    for (const int x : columns)
        lines.push_back(linesAlong(image, QPoint(qRound(x * image.devicePixelRatio()), 0), {0, 1}));
    return lines;
}

std::vector<int> linesInRows(const OviAPI::WVisualObject& form, const std::vector<int>& rows)
{
    const QImage image = form.native()->widget->grab().toImage();
    std::vector<int> lines;
    for (const int y : rows)
        lines.push_back(linesAlong(image, QPoint(0, qRound(y * image.devicePixelRatio())), {1, 0}));
    return lines;
}
