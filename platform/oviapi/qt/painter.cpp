#include <oviapi/painter.h>

#include <algorithm>

#include <QFontMetrics>
#include <QGuiApplication>

#include "convert.h"
#include "painter_native.h"

namespace OviAPI {

namespace {

QString limited(std::wstring_view text, int count)
{
    return toQString(count < 0 ? text : text.substr(0, static_cast<size_t>(count)));
}

QFont deviceFont(const PaintDevice::Native& device)
{
    return device.widget ? device.widget->font() : QFont();
}

QSize textSize(const QFontMetrics& metrics, const QString& text)
{
    int width = 0;
    int lines = 0;
    for (qsizetype from = 0; from <= text.size(); ++lines) {
        qsizetype end = text.indexOf(u'\n', from);
        if (end < 0)
            end = text.size();
        width = std::max(width, metrics.horizontalAdvance(text.mid(from, end - from)));
        from = end + 1;
    }
    return {width, metrics.height() + (lines - 1) * metrics.lineSpacing()};
}

int qtFlags(uint32_t flags)
{
    int out = Qt::AlignAbsolute;
    out |= flags & TextCenter  ? Qt::AlignHCenter
           : flags & TextRight ? Qt::AlignRight
                               : Qt::AlignLeft;
    out |= flags & TextVCenter  ? Qt::AlignVCenter
           : flags & TextBottom ? Qt::AlignBottom
                                : Qt::AlignTop;
    if (flags & (TextSingleLine | TextElide))
        out |= Qt::TextSingleLine;
    else if (flags & TextWordWrap)
        out |= Qt::TextWordWrap;
    return out;
}

} // namespace

Painter::Native::~Native()
{
    changed();
}

void Painter::Native::changed()
{
    if (PaintDevice::Native* target = device->drawable(); target && target->current == this)
        target->current = nullptr;
}

QPainter* Painter::Native::begin()
{
    if (!device->isUsable())
        return nullptr;
    PaintDevice::Native* target = device->drawable();
    if (!target) {
        if (!asked)
            device->widget->update();
        asked = true;
        return nullptr;
    }
    if (target->current == this)
        return &target->qt;
    QPainter& qt = target->qt;
    qt.resetTransform();
    qt.setFont(state.qfont);
    qt.setRenderHint(QPainter::Antialiasing, state.smooth);
    qt.setRenderHint(QPainter::SmoothPixmapTransform);
    if (state.clip)
        qt.setClipRect(*state.clip);
    else
        qt.setClipping(false);
    target->current = this;
    return &qt;
}

double Painter::Native::ratio() const
{
    return device->isUsable() ? device->device()->devicePixelRatio() : 1.0;
}

Painter::Painter(PaintDevice* device)
{
    if (!device || device->isNull() || !device->native()->isUsable())
        return;
    m_native = std::make_unique<Native>();
    m_native->device = device->native();
    m_native->state.qfont = deviceFont(*m_native->device);
}

Painter::~Painter() = default;

bool Painter::valid() const
{
    return m_native && m_native->device->isUsable();
}

double Painter::pixelRatio() const
{
    return m_native ? m_native->ratio() : 1.0;
}

void Painter::setFont(const Font& font)
{
    if (!valid())
        return;
    m_native->state.font = font;
    m_native->state.qfont = toQFont(font, deviceFont(*m_native->device));
    m_native->changed();
}

Font Painter::font() const
{
    return m_native ? m_native->state.font : Font();
}

void Painter::setPen(const Pen& pen)
{
    if (m_native)
        m_native->state.pen = pen;
}

Pen Painter::pen() const
{
    return m_native ? m_native->state.pen : Pen();
}

void Painter::setBrush(const Brush& brush)
{
    if (m_native)
        m_native->state.brush = brush;
}

Brush Painter::brush() const
{
    return m_native ? m_native->state.brush : Brush();
}

void Painter::setTextColor(Color color)
{
    if (m_native)
        m_native->state.text = color;
}

Color Painter::textColor() const
{
    return m_native ? m_native->state.text : Color();
}

void Painter::setBackgroundColor(Color color)
{
    if (m_native)
        m_native->state.background = color;
}

void Painter::clearBackgroundColor()
{
    if (m_native)
        m_native->state.background.reset();
}

void Painter::setSmooth(bool smooth)
{
    if (!m_native)
        return;
    m_native->state.smooth = smooth;
    m_native->changed();
}

void Painter::setClipRect(const Rect& rect)
{
    if (!m_native)
        return;
    m_native->state.clip = toQRect(rect);
    m_native->changed();
}

void Painter::clearClipRect()
{
    if (!m_native)
        return;
    m_native->state.clip.reset();
    m_native->changed();
}

Rect Painter::clipRect() const
{
    if (!valid())
        return {};
    const Rect whole = PaintDevice(m_native->device).clipRect();
    const std::optional<QRect>& clip = m_native->state.clip;
    return clip ? fromQRect(toQRect(whole) & *clip) : whole;
}

void Painter::save()
{
    if (m_native)
        m_native->saved.push_back(m_native->state);
}

void Painter::restore()
{
    if (!m_native || m_native->saved.empty())
        return;
    m_native->state = std::move(m_native->saved.back());
    m_native->saved.pop_back();
    m_native->changed();
}

void Painter::drawText(int x, int y, std::wstring_view text, int count)
{
    QPainter* qt = m_native ? m_native->begin() : nullptr;
    if (!qt)
        return;
    if (m_native->state.background)
        fillRect(getTextRect(x, y, text, count), *m_native->state.background);
    const QFontMetrics metrics(m_native->state.qfont, m_native->device->device());
    qt->setPen(toQColor(m_native->state.text));
    int64_t base = int64_t{y} + metrics.ascent();
    for (const QString& line : limited(text, count).split(u'\n')) {
        qt->drawText(QPointF(x, static_cast<double>(base)), line);
        base += metrics.lineSpacing();
    }
}

void Painter::drawText(const Rect& rect, std::wstring_view text, uint32_t flags)
{
    QPainter* qt = m_native ? m_native->begin() : nullptr;
    const QRect box = toQRect(rect);
    if (!qt || box.isEmpty())
        return;
    QString shown = toQString(text);
    if (flags & TextElide) {
        const QFontMetrics metrics(m_native->state.qfont, m_native->device->device());
        shown = metrics.elidedText(shown.replace(u'\n', u' '), Qt::ElideRight, box.width());
    }
    if (m_native->state.background) {
        const QRect covered = qt->boundingRect(box, qtFlags(flags), shown) & box;
        fillRect(fromQRect(covered), *m_native->state.background);
    }
    qt->setPen(toQColor(m_native->state.text));
    qt->drawText(box, qtFlags(flags), shown);
}

Rect Painter::getTextRect(int x, int y, std::wstring_view text, int count) const
{
    if (!valid())
        return {};
    const QFontMetrics metrics(m_native->state.qfont, m_native->device->device());
    return fromQRect(QRect(QPoint(x, y), textSize(metrics, limited(text, count))));
}

int Painter::getMaxCharWidth() const
{
    if (!valid())
        return 0;
    const QFontMetrics metrics(m_native->state.qfont, m_native->device->device());
    int widest = 0;
    for (const char16_t c : u"MW0@")
        widest = std::max(widest, c ? metrics.horizontalAdvance(QChar(c)) : 0);
    return widest;
}

int Painter::getTextHeight() const
{
    return valid() ? QFontMetrics(m_native->state.qfont, m_native->device->device()).height() : 0;
}

int Painter::getTextAscent() const
{
    return valid() ? QFontMetrics(m_native->state.qfont, m_native->device->device()).ascent() : 0;
}

std::wstring Painter::elidedText(std::wstring_view text, int width) const
{
    if (!valid())
        return std::wstring(text);
    const QFontMetrics metrics(m_native->state.qfont, m_native->device->device());
    return fromQString(metrics.elidedText(toQString(text), Qt::ElideRight, width));
}

Size GetTextSize(const Painter& painter, std::wstring_view text, int count)
{
    const Rect rect = painter.getTextRect(0, 0, text, count);
    return {rect.right, rect.bottom};
}

Size GetTextSize(const Font& font, std::wstring_view text, int count)
{
    if (!qGuiApp)
        return {};
    return fromQSize(textSize(QFontMetrics(toQFont(font)), limited(text, count)));
}

} // namespace OviAPI
