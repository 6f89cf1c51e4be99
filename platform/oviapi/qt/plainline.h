// One line of plain text, laid out without shaping it.
#pragma once

#include <unordered_map>
#include <vector>

#include <QFontMetricsF>
#include <QRawFont>
#include <QString>

class QPainter;
class QPointF;

namespace OviAPI {

// The characters of one font and what stands between two of them. Shaping a line takes many times
// longer than drawing it, and a table shows the same few characters again and again: Latin and
// Cyrillic letters without combining marks are set side by side with the advances, kerning
// included, that shaping gave for each pair once. Everything else is left to the toolkit.
class PlainFont {
public:
    explicit PlainFont(const QFont& font);

    struct Line {
        std::vector<quint32> glyphs;
        std::vector<QPointF> places; // of the glyphs, from the start of the base line, px
        qreal width = 0;             // px

        void clear();
    };

    // False when the text needs shaping; the line says nothing then.
    bool layOut(const QString& text, Line& line);
    // Takes glyphs away until the line with an ellipsis fits into the width.
    void elide(Line& line, qreal width);
    // Lines added to one another are drawn by one call, which is faster than one call for each.
    static void add(Line& all, const Line& line, QPointF base);
    // The places count from the base point.
    void draw(QPainter& painter, QPointF base, const Line& line) const;

private:
    struct Glyph {
        quint32 index = 0;  // 0: the font does not have it
        qreal advance = -1; // px; negative: not measured yet
    };

    const Glyph& glyphOf(char16_t c);
    // What the first character of two takes, px.
    qreal pairAdvance(char16_t first, char16_t second);

    QFontMetricsF m_metrics;
    QRawFont m_raw;
    bool m_plain; // the font is drawn as it is, without lines or letters changed
    std::vector<Glyph> m_glyphs;
    std::unordered_map<quint32, qreal> m_pairs;
};

} // namespace OviAPI
