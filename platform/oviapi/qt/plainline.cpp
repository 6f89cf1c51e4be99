#include "plainline.h"

#include <QGlyphRun>
#include <QPainter>

namespace OviAPI {

namespace {

constexpr char16_t ellipsis = u'\u2026';

constexpr char16_t lastLetter = 0x52F;
constexpr size_t ellipsisPlace = lastLetter + 1; // in the table of glyphs

bool isPlain(char16_t c)
{
    const auto within = [c](char16_t first, char16_t last) { return c >= first && c <= last; };
    return within(0x20, 0x7E) || (within(0xA0, 0x24F) && c != 0xAD) || within(0x400, 0x481) ||
           within(0x48A, lastLetter) || c == ellipsis;
}

bool isDrawnAsItIs(const QFont& font)
{
    return !font.underline() && !font.overline() && !font.strikeOut() &&
           font.capitalization() == QFont::MixedCase && font.letterSpacing() == 0 &&
           font.wordSpacing() == 0;
}

} // namespace

void PlainFont::Line::clear()
{
    glyphs.clear();
    places.clear();
    width = 0;
}

PlainFont::PlainFont(const QFont& font)
    : m_metrics(font)
    , m_raw(QRawFont::fromFont(font))
    , m_plain(m_raw.isValid() && isDrawnAsItIs(font))
    , m_glyphs(ellipsisPlace + 1)
{
}

const PlainFont::Glyph& PlainFont::glyphOf(char16_t c)
{
    Glyph& glyph = m_glyphs[c == ellipsis ? ellipsisPlace : c];
    if (glyph.advance >= 0)
        return glyph;
    const QChar text(c);
    int count = 1;
    if (!m_raw.glyphIndexesForChars(&text, 1, &glyph.index, &count) || count != 1)
        glyph.index = 0;
    glyph.advance = m_metrics.horizontalAdvance(text);
    return glyph;
}

qreal PlainFont::pairAdvance(char16_t first, char16_t second)
{
    const quint32 key = (quint32{first} << 16) | second;
    const auto [place, fresh] = m_pairs.try_emplace(key);
    if (fresh) {
        const QChar pair[] = {QChar(first), QChar(second)};
        place->second = m_metrics.horizontalAdvance(QString(pair, 2)) - glyphOf(second).advance;
    }
    return place->second;
}

bool PlainFont::layOut(const QString& text, Line& line)
{
    line.clear();
    if (!m_plain)
        return false;
    char16_t before = 0;
    qreal x = 0;
    for (const QChar each : text) {
        const char16_t c = each.unicode();
        if (!isPlain(c))
            return false;
        const Glyph& glyph = glyphOf(c);
        if (glyph.index == 0)
            return false;
        if (before != 0)
            x += pairAdvance(before, c);
        line.glyphs.push_back(glyph.index);
        line.places.emplace_back(x, 0);
        line.width = x + glyph.advance;
        before = c;
    }
    return true;
}

void PlainFont::elide(Line& line, qreal width)
{
    const Glyph& dots = glyphOf(ellipsis);
    while (!line.glyphs.empty() && line.places.back().x() + dots.advance > width) {
        line.glyphs.pop_back();
        line.places.pop_back();
    }
    if (line.glyphs.empty()) {
        line.places.emplace_back();
        line.glyphs.push_back(dots.index);
    } else {
        line.glyphs.back() = dots.index; // in the place of the last one that would fit
    }
    line.width = line.places.back().x() + dots.advance;
}

void PlainFont::add(Line& all, const Line& line, QPointF base)
{
    all.glyphs.insert(all.glyphs.end(), line.glyphs.begin(), line.glyphs.end());
    for (const QPointF& place : line.places)
        all.places.push_back(base + place);
}

void PlainFont::draw(QPainter& painter, QPointF base, const Line& line) const
{
    QGlyphRun run;
    run.setRawFont(m_raw);
    run.setRawData(line.glyphs.data(), line.places.data(), static_cast<int>(line.glyphs.size()));
    painter.drawGlyphRun(base, run);
}

} // namespace OviAPI
