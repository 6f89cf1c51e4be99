// Where the characters of a line of source text stand, and how they are drawn.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QColor>
#include <QFont>
#include <QHash>
#include <QPalette>
#include <QPointF>

#include <oviapi/srctokens.h>

class QPainter;
class QTextLayout;

namespace OviAPI {

// The colours of an editor, made of a palette: text of every kind has a contrast of 4.5 at least
// against the background and the line of the caret.
struct SrcColors {
    explicit SrcColors(const QPalette& palette);

    QColor of(SrcKind kind) const { return kinds[static_cast<size_t>(kind)]; }

    QColor background;
    QColor text;
    QColor caretLine;
    QColor selection;
    QColor selectedText;
    QColor margin;
    QColor number;
    QColor bracket; // behind a pair of brackets
    QColor error;
    QColor kinds[8];
};

// The wanted colour, mixed with white or black until the contrast is reached against both.
QColor readable(const QColor& wanted, const QColor& background, const QColor& other);

// Lays a line out from its start, in runs: characters of simple scripts by a table of their widths,
// all others by the toolkit's shaping, at most 1,024 at a time. So a line of any length costs a few
// nanoseconds a character, and only what is seen is shaped. Control characters and those that turn
// the direction of text are shown as signs.
class SrcLayout {
public:
    void setFont(const QFont& font, int tabWidth);

    const QFont& font() const { return m_font; }
    int lineHeight() const { return m_lineHeight; }
    int ascent() const { return m_ascent; }
    double digitWidth() const { return m_digit; }

    // Pixels from the start of the line to the left side of the column, from 0.
    double xOf(const std::wstring& line, int column);
    int columnAt(const std::wstring& line, double x);
    double width(const std::wstring& line) { return xOf(line, static_cast<int>(line.size())); }

    // Draws what lies between left and right, pixels from the start of the line. start: where the
    // line starts, at the top. A colour that is valid stands in for those of the tokens.
    void draw(QPainter& painter, QPointF start, const std::wstring& line,
              const std::vector<SrcToken>& tokens, const SrcColors& colors, double left,
              double right, const QColor& only = {});

private:
    struct Run {
        int from;
        int to;
        double x;
        double width;
        bool simple;
    };
    // Until the function returns false.
    void visit(const std::wstring& line, const std::function<bool(const Run&)>& function);
    double advance(wchar_t shown);
    void shape(QTextLayout& layout) const;

    QFont m_font;
    std::vector<double> m_low; // widths of the first characters; below 0: not asked for yet
    QHash<uint, double> m_high;
    double m_tab = 32;
    double m_digit = 8;
    int m_lineHeight = 16;
    int m_ascent = 12;
};

} // namespace OviAPI
