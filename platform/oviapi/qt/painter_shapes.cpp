// Lines, areas and pictures. They are drawn in device pixels, so that lines and edges are equally
// sharp and wide at every scale.
#include <oviapi/painter.h>

#include <algorithm>
#include <cmath>

#include <QTransform>

#include <oviapi/picture.h>

#include "convert.h"
#include "painter_native.h"

namespace OviAPI {

namespace {

constexpr int hatchSpacing = 8;   // pixels
constexpr double farAway = 16000; // device pixels; beyond it Qt's own arithmetic is at its limit

// While it lives, coordinates are device pixels.
class DevicePixels {
public:
    DevicePixels(QPainter& qt, double ratio)
        : m_qt(qt)
    {
        m_qt.setTransform(QTransform::fromScale(1 / ratio, 1 / ratio));
    }
    ~DevicePixels() { m_qt.resetTransform(); }
    DevicePixels(const DevicePixels&) = delete;
    DevicePixels& operator=(const DevicePixels&) = delete;

private:
    QPainter& m_qt;
};

int toDevice(double logical, double ratio)
{
    return static_cast<int>(std::lround(std::clamp(logical * ratio, -farAway, farAway)));
}

QRect deviceRect(const Rect& rect, double ratio)
{
    const QPoint from(toDevice(rect.left, ratio), toDevice(rect.top, ratio));
    const QPoint to(toDevice(rect.right, ratio), toDevice(rect.bottom, ratio));
    return QRect(from, QSize(to.x() - from.x(), to.y() - from.y()));
}

// Whether a hatching covers a device pixel of its tile.
bool isHatched(Brush::HatchStyle hatch, int x, int y, int size, int thickness)
{
    const bool falling = (x - y + size) % size < thickness;
    const bool rising = (x + y) % size < thickness;
    switch (hatch) {
    case Brush::Horizontal:
        return y < thickness;
    case Brush::Vertical:
        return x < thickness;
    case Brush::ForwardDiagonal:
        return falling;
    case Brush::BackwardDiagonal:
        return rising;
    case Brush::Cross:
        return x < thickness || y < thickness;
    case Brush::DiagonalCross:
        return falling || rising;
    case Brush::NoHatch:
        break;
    }
    return true;
}

// Cuts a line to the square that Qt can draw in; false when none of it lies inside.
bool cutToReach(QLineF& line)
{
    double from = 0;
    double to = 1;
    const auto cut = [&](double start, double delta) {
        if (delta == 0)
            return std::abs(start) <= farAway;
        const double a = (-farAway - start) / delta;
        const double b = (farAway - start) / delta;
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
        return from <= to;
    };
    if (!cut(line.x1(), line.dx()) || !cut(line.y1(), line.dy()))
        return false;
    const QLineF whole = line;
    if (from > 0)
        line.setP1(whole.pointAt(from));
    if (to < 1)
        line.setP2(whole.pointAt(to));
    return true;
}

// A line in device pixels through the middles of what the two points cover.
QLineF deviceLine(Point from, Point to, double ratio, int thickness)
{
    const double half = thickness > 1 && ratio > 1 ? ratio / 2 : 0;
    return {std::floor(from.x * ratio) + half, std::floor(from.y * ratio) + half,
            std::floor(to.x * ratio) + half, std::floor(to.y * ratio) + half};
}

// A horizontal or vertical solid line as an area.
QRect straightLine(Point from, Point to, double ratio, int width, int thickness)
{
    const int before = width > 1 ? width / 2 : 0;
    const Rect ends{std::min(from.x, to.x), std::min(from.y, to.y), std::max(from.x, to.x),
                    std::max(from.y, to.y)};
    if (from.y == to.y) {
        const int left = toDevice(ends.left, ratio);
        const int right = toDevice(double{1} + ends.right, ratio);
        return QRect(left, toDevice(double(ends.top) - before, ratio), right - left, thickness);
    }
    const int top = toDevice(ends.top, ratio);
    const int bottom = toDevice(double{1} + ends.bottom, ratio);
    return QRect(toDevice(double(ends.left) - before, ratio), top, thickness, bottom - top);
}

// Draws the segments one by one: a stroker that is given them as one outline takes a time that
// grows with the square of their number. Dashes run on from one segment into the next.
void drawSegments(QPainter& qt, const QList<QLineF>& lines, QPen pen)
{
    if (pen.style() == Qt::SolidLine) {
        qt.setPen(pen);
        qt.drawLines(lines);
        return;
    }
    double run = 0;
    for (const QLineF& line : lines) {
        pen.setDashOffset(run / pen.widthF());
        qt.setPen(pen);
        qt.drawLine(line);
        run = std::fmod(run + line.length(), 1000 * pen.widthF() * 24);
    }
}

void fillFrame(QPainter& qt, const QRect& outer, int thickness, const QColor& color)
{
    const int t = std::min({thickness, outer.width(), outer.height()});
    qt.fillRect(QRect(outer.left(), outer.top(), outer.width(), t), color);
    qt.fillRect(QRect(outer.left(), outer.top() + outer.height() - t, outer.width(), t), color);
    qt.fillRect(QRect(outer.left(), outer.top(), t, outer.height()), color);
    qt.fillRect(QRect(outer.left() + outer.width() - t, outer.top(), t, outer.height()), color);
}

Brush orNumber(const Brush& brush, ColorNumber number)
{
    return brush.isNull() ? Brush(Color(number)) : brush;
}

} // namespace

QBrush toQBrush(const Brush& brush, double ratio)
{
    if (brush.isNull())
        return QBrush(Qt::NoBrush);
    const QColor color = toQColor(brush.color());
    if (brush.hatch() <= Brush::NoHatch || brush.hatch() > Brush::DiagonalCross)
        return QBrush(color);
    // Qt's own patterns do not grow with the resolution.
    const int size = std::max(hatchSpacing, static_cast<int>(std::lround(hatchSpacing * ratio)));
    const int thickness = std::max(1, static_cast<int>(ratio));
    QImage tile(size, size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x)
            tile.setPixel(x, y, isHatched(brush.hatch(), x, y, size, thickness) ? color.rgb() : 0);
    }
    return QBrush(tile);
}

int Painter::Native::thickness() const
{
    constexpr int widest = 1000;
    const int width = std::clamp(state.pen.width(), 1, widest);
    const double exact = width * ratio();
    return std::max(1, static_cast<int>(width == 1 ? std::floor(exact) : std::round(exact)));
}

QPen Painter::Native::linePen() const
{
    // Round ends make better joints where they are large enough to be seen; they take 4 times
    // longer.
    constexpr int roundFrom = 4;
    const Qt::PenCapStyle ends = thickness() >= roundFrom ? Qt::RoundCap : Qt::SquareCap;
    QPen pen(toQColor(state.pen.color()), thickness(), Qt::SolidLine, ends, Qt::MiterJoin);
    pen.setCosmetic(true);
    switch (state.pen.style()) {
    case Pen::Dash:
        pen.setStyle(Qt::DashLine);
        break;
    case Pen::Dot:
        pen.setStyle(Qt::DotLine);
        break;
    case Pen::DashDot:
        pen.setStyle(Qt::DashDotLine);
        break;
    case Pen::DashDotDot:
        pen.setStyle(Qt::DashDotDotLine);
        break;
    case Pen::Fine:
        pen.setDashPattern({1, 1});
        break;
    case Pen::None:
        pen.setStyle(Qt::NoPen);
        break;
    case Pen::Solid:
        break;
    }
    if (pen.style() != Qt::SolidLine)
        pen.setCapStyle(Qt::FlatCap); // other caps close the gaps
    return pen;
}

std::optional<Painter::Native::Lines> Painter::Native::lines()
{
    QPainter* qt = begin();
    if (!qt || state.pen.style() == Pen::None)
        return std::nullopt;
    return Lines{qt, linePen(), ratio(), thickness()};
}

void Painter::drawLine(int x1, int y1, int x2, int y2)
{
    const Point ends[] = {{x1, y1}, {x2, y2}};
    drawLines(ends);
}

void Painter::drawLines(std::span<const Point> points)
{
    const auto tools = m_native ? m_native->lines() : std::nullopt;
    if (!tools)
        return;
    const auto& [qt, pen, ratio, thickness] = *tools;
    const DevicePixels scope(*qt, ratio);
    for (size_t i = 0; i + 1 < points.size(); i += 2) {
        const Point from = points[i];
        const Point to = points[i + 1];
        if (pen.style() == Qt::SolidLine && (from.x == to.x || from.y == to.y)) {
            const int width = m_native->state.pen.width();
            qt->fillRect(straightLine(from, to, ratio, width, thickness), pen.color());
            continue;
        }
        QLineF line = deviceLine(from, to, ratio, thickness);
        if (cutToReach(line))
            drawSegments(*qt, {line}, pen);
    }
}

void Painter::drawPolyline(std::span<const Point> points)
{
    const auto tools = m_native ? m_native->lines() : std::nullopt;
    if (!tools)
        return;
    const auto& [qt, pen, ratio, thickness] = *tools;
    QList<QLineF> lines;
    lines.reserve(static_cast<qsizetype>(points.size()));
    for (size_t i = 0; i + 1 < points.size(); ++i) {
        QLineF line = deviceLine(points[i], points[i + 1], ratio, thickness);
        if (cutToReach(line))
            lines.append(line);
    }
    const DevicePixels scope(*qt, ratio);
    drawSegments(*qt, lines, pen);
}

void Painter::drawRect(const Rect& rect)
{
    QPainter* qt = m_native ? m_native->begin() : nullptr;
    if (!qt || rect.isEmpty())
        return;
    const double ratio = m_native->ratio();
    const QRect outer = deviceRect(rect, ratio);
    const QPen pen = m_native->linePen();
    const DevicePixels scope(*qt, ratio);
    qt->fillRect(outer, toQBrush(m_native->state.brush, ratio));
    if (pen.style() == Qt::SolidLine) {
        fillFrame(*qt, outer, m_native->thickness(), pen.color());
    } else if (pen.style() != Qt::NoPen) {
        const int t = m_native->thickness();
        qt->setPen(pen);
        qt->setBrush(Qt::NoBrush);
        qt->drawRect(outer.adjusted(t / 2, t / 2, -(t + 1) / 2, -(t + 1) / 2));
    }
}

void Painter::drawEllipse(const Rect& rect)
{
    QPainter* qt = m_native ? m_native->begin() : nullptr;
    if (!qt || rect.isEmpty())
        return;
    const double ratio = m_native->ratio();
    const QPen pen = m_native->linePen();
    QRectF outer = deviceRect(rect, ratio);
    if (pen.style() != Qt::NoPen) {
        const double half = m_native->thickness() / 2.0;
        outer.adjust(half, half, -half, -half);
        if (!m_native->state.smooth && m_native->thickness() == 1)
            outer.translate(-0.5, -0.5); // whole device pixels
    }
    const DevicePixels scope(*qt, ratio);
    qt->setPen(pen);
    qt->setBrush(toQBrush(m_native->state.brush, ratio));
    qt->drawEllipse(outer);
}

void Painter::fillRect(const Rect& rect, const Brush& brush)
{
    QPainter* qt = m_native ? m_native->begin() : nullptr;
    if (!qt || rect.isEmpty() || brush.isNull())
        return;
    const double ratio = m_native->ratio();
    const DevicePixels scope(*qt, ratio);
    qt->fillRect(deviceRect(rect, ratio), toQBrush(brush, ratio));
}

void Painter::fillRect(int x, int y, int width, int height)
{
    if (m_native && width > 0 && height > 0)
        fillRect(fromQRect(QRect(x, y, width, height)), m_native->state.brush);
}

void Painter::drawPicture(int x, int y, const Picture& picture)
{
    stretchPicture(fromQRect(QRect(QPoint(x, y), toQSize(picture.size()))), picture);
}

void Painter::stretchPicture(const Rect& rect, const Picture& picture)
{
    QPainter* qt = m_native ? m_native->begin() : nullptr;
    if (!qt || rect.isEmpty() || picture.isNull())
        return;
    const double ratio = m_native->ratio();
    const QRect target = deviceRect(rect, ratio);
    const QImage image = toQImage(picture, static_cast<double>(target.width()) / picture.width());
    const DevicePixels scope(*qt, ratio);
    qt->drawImage(target, image, QRect(QPoint(0, 0), image.size()));
}

void Draw3DRisedBox(Painter& painter, const Rect& rect, const BoxBrush& brushes, bool fill)
{
    if (rect.isEmpty())
        return;
    const auto [l, t, r, b] = rect;
    if (fill)
        painter.fillRect(rect, Color(ColorNumber::ButtonFace));
    painter.fillRect({l, t, r, t + 1}, orNumber(brushes.top, ColorNumber::Light));
    painter.fillRect({l, t, l + 1, b}, orNumber(brushes.left, ColorNumber::Light));
    painter.fillRect({r - 1, t, r, b}, orNumber(brushes.right, ColorNumber::Shadow));
    painter.fillRect({l, b - 1, r, b}, orNumber(brushes.bottom, ColorNumber::Shadow));
}

} // namespace OviAPI
