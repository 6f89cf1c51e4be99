// How a source editor is drawn.

#include <algorithm>
#include <cmath>

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>

#include "convert.h"
#include "srcview.h"

namespace OviAPI {

namespace {

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

SrcToken wholeLine(const std::wstring& line)
{
    return {0, static_cast<int>(line.size()), SrcKind::Word};
}

} // namespace

void CSrcEdit::SrcNative::paint(QPaintEvent* event)
{
    const QRect dirty = event->rect();
    const SrcColors colors(area->palette());
    QPainter painter(surface);
    painter.fillRect(dirty, colors.background);
    const int first = area->verticalScrollBar()->value();
    const int height = layout.lineHeight();
    for (int row = std::max(0, dirty.top() / height); row <= dirty.bottom() / height; ++row) {
        if (first + row < state.text.lineCount())
            paintLine(painter, colors, first + row, row * height);
    }
    painter.setClipRect(QRect(marginWidth, 0, surface->width(), surface->height()));
    paintCaret(painter, colors);
    painter.setClipping(false);
    const QRect margin(0, dirty.top(), marginWidth, dirty.height());
    if (!margin.intersects(dirty))
        return;
    painter.fillRect(margin, colors.margin);
    for (int row = std::max(0, dirty.top() / height); row <= dirty.bottom() / height; ++row) {
        if (first + row < state.text.lineCount())
            paintMargin(painter, colors, first + row, row * height);
    }
}

void CSrcEdit::SrcNative::paintLine(QPainter& painter, const SrcColors& colors, int line, int y)
{
    const QRect row(marginWidth, y, surface->width() - marginWidth, layout.lineHeight());
    painter.setClipRect(row);
    if (line == state.cursor.caret().line && area->isEnabled())
        painter.fillRect(row, colors.caretLine);
    paintBrackets(painter, colors, line, y);
    const std::wstring& text = state.text.line(line);
    const std::vector<SrcToken> tokens =
        state.plain ? std::vector{wholeLine(text)} : state.text.tokens(line);
    const QColor disabled =
        area->isEnabled() ? QColor() : area->palette().color(QPalette::Disabled, QPalette::Text);
    const double left = marginWidth - textLeft();
    layout.draw(painter, QPointF(textLeft(), y), text, tokens, colors, left, left + row.width(),
                disabled);
    paintSelection(painter, colors, line, y, tokens);
    paintError(painter, colors, line, y);
    painter.setClipping(false);
}

void CSrcEdit::SrcNative::paintBrackets(QPainter& painter, const SrcColors& colors, int line, int y)
{
    if (!m_brackets)
        return;
    const auto box = [&](SrcPoint at) {
        if (at.line != line)
            return;
        const std::wstring& text = state.text.line(line);
        const double from = layout.xOf(text, at.column);
        const double to = layout.xOf(text, at.column + 1);
        const QRectF rect(textLeft() + from, y, to - from, layout.lineHeight());
        if (m_brackets->partner) {
            painter.fillRect(rect, colors.bracket);
        } else {
            painter.setPen(colors.error);
            painter.drawRect(rect.adjusted(0, 0, -1, -1));
        }
    };
    box(m_brackets->here);
    if (m_brackets->partner)
        box(*m_brackets->partner);
}

void CSrcEdit::SrcNative::paintSelection(QPainter& painter, const SrcColors& colors, int line,
                                         int y, const std::vector<SrcToken>& tokens)
{
    const SrcSpan span = state.cursor.selection();
    if (span.isEmpty() || line < span.from.line || line > span.to.line)
        return;
    const std::wstring& text = state.text.line(line);
    const double from = line == span.from.line ? layout.xOf(text, span.from.column) : 0;
    const bool toEnd = line < span.to.line; // with a stub for the line end
    const double to =
        toEnd ? layout.width(text) + layout.digitWidth() : layout.xOf(text, span.to.column);
    const QRectF visible(marginWidth, y, surface->width() - marginWidth, layout.lineHeight());
    const QRectF rect =
        QRectF(textLeft() + from, y, to - from, layout.lineHeight()).intersected(visible);
    painter.save();
    painter.setClipRect(rect);
    painter.fillRect(rect, colors.selection);
    layout.draw(painter, QPointF(textLeft(), y), text, tokens, colors, rect.left() - textLeft(),
                rect.right() - textLeft(), colors.selectedText);
    painter.restore();
}

void CSrcEdit::SrcNative::paintError(QPainter& painter, const SrcColors& colors, int line, int y)
{
    if (!state.hasError || line != state.error.line)
        return;
    const std::wstring& text = state.text.line(line);
    SrcSpan word = state.cursor.wordAt(state.error);
    word.from = std::max(word.from, state.error);
    const double from = textLeft() + layout.xOf(text, word.from.column);
    const double width =
        std::max(layout.xOf(text, word.to.column) + textLeft() - from, 2 * layout.digitWidth());
    const double left = std::max(from, static_cast<double>(marginWidth) - 4);
    const double right = std::min(from + width, static_cast<double>(surface->width()));
    const double base = y + layout.lineHeight() - 2.5;
    QPainterPath wave(QPointF(left, base));
    bool up = true;
    for (double x = left + 2; x <= right; x += 2, up = !up)
        wave.lineTo(x, base - (up ? 2 : 0));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors.error, 1.3));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(wave);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void CSrcEdit::SrcNative::paintMargin(QPainter& painter, const SrcColors& colors, int line, int y)
{
    const bool current = line == state.cursor.caret().line;
    const QRect box(0, y, marginWidth, layout.lineHeight());
    if (current && area->isEnabled())
        painter.fillRect(box, colors.caretLine);
    painter.setFont(layout.font());
    painter.setPen(current ? colors.text : colors.number);
    const QString number = QString::number(line + 1);
    const double width = layout.digitWidth() * static_cast<double>(number.size());
    painter.drawText(QPointF(marginWidth - srcGap - width, y + layout.ascent()), number);
    if (!state.hasError || line != state.error.line)
        return;
    const double size = layout.lineHeight() * 0.5;
    const QRectF dot(2, y + (layout.lineHeight() - size) / 2, size, size);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.error);
    painter.drawEllipse(dot);
    painter.setPen(QPen(colors.background, std::max(1.2, size / 7)));
    painter.drawLine(dot.center() - QPointF(0, size * 0.28),
                     dot.center() + QPointF(0, size * 0.05));
    painter.drawPoint(dot.center() + QPointF(0, size * 0.28));
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void CSrcEdit::SrcNative::paintCaret(QPainter& painter, const SrcColors& colors)
{
    const QRect caret = caretRect();
    if (caret.bottom() < 0 || caret.top() > surface->height())
        return;
    int width = 0;
    if (!preedit.isEmpty()) {
        painter.setFont(layout.font());
        width = QFontMetrics(layout.font()).horizontalAdvance(preedit);
        const QRect box(caret.x(), caret.y(), width, caret.height());
        painter.fillRect(box, colors.caretLine);
        painter.setPen(colors.text);
        painter.drawText(caret.x(), caret.y() + layout.ascent(), preedit);
        painter.drawLine(box.left(), box.bottom() - 1, box.right(), box.bottom() - 1);
    }
    if (!area->hasFocus() || !m_caretShown || !area->isEnabled())
        return;
    const int thickness = isDark(area->palette()) ? 2 : 1;
    if (overwrite && preedit.isEmpty())
        painter.fillRect(caret.x(), caret.bottom() - 2, static_cast<int>(layout.digitWidth()), 3,
                         colors.text);
    else
        painter.fillRect(caret.x() + width, caret.y(), thickness, caret.height(), colors.text);
}

} // namespace OviAPI
