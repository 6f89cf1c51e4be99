#include "srclayout.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <oviapi/palette.h>

#include "colormix.h"
#include "convert.h"

namespace OviAPI {

namespace {

constexpr double wantedContrast = 4.5;
constexpr int mixSteps = 64;
constexpr int simpleRun = 256; // characters
constexpr int shapedRun = 1024;
constexpr size_t lowCharacters = 0x600;

bool within(char32_t c, char32_t from, char32_t to)
{
    return c >= from && c <= to;
}

// A character that turns the direction of text, joins nothing visible or cannot be drawn.
bool isTreacherous(char32_t c)
{
    return within(c, 0x80, 0x9F) || c == 0xAD || c == 0x61C || c == 0x200B || c == 0x200E ||
           c == 0x200F || within(c, 0x2028, 0x202E) || within(c, 0x2060, 0x206F) ||
           within(c, 0xD800, 0xDFFF) || c == 0xFEFF || c > 0x10FFFF;
}

// The character that stands for one of the text; always one for one.
wchar_t shown(wchar_t character)
{
    const auto c = static_cast<char32_t>(character);
    if (c < 0x20)
        return static_cast<wchar_t>(0x2400 + c);
    if (c == 0x7F)
        return 0x2421;
    return isTreacherous(c) ? wchar_t{0xFFFD} : character;
}

// Characters that stand side by side whatever their neighbours are.
bool isSimple(wchar_t character)
{
    const auto c = static_cast<char32_t>(character);
    return within(c, 0x20, 0x7E) || within(c, 0xA0, 0x2FF) || within(c, 0x370, 0x482) ||
           within(c, 0x48A, 0x52F) || within(c, 0x1E00, 0x1FFF) || within(c, 0x2010, 0x2027) ||
           within(c, 0x2030, 0x205E) || within(c, 0x20A0, 0x20BF) || within(c, 0x2190, 0x21FF) ||
           within(c, 0x2200, 0x22FF) || within(c, 0x2400, 0x2426) || within(c, 0x2500, 0x259F) ||
           within(c, 0x3000, 0x3029) || within(c, 0x3041, 0x3096) || within(c, 0x30A0, 0x30FF) ||
           within(c, 0x3400, 0x9FFF) || within(c, 0xAC00, 0xD7A3) || within(c, 0xFF01, 0xFF60) ||
           c == 0xFFFD;
}

bool isSimpleAt(const std::wstring& line, size_t i)
{
    if (line[i] == L'\t' || !isSimple(shown(line[i])))
        return false;
    // A mark on a character is shaped together with it.
    return i + 1 >= line.size() || line[i + 1] == L'\t' || isSimple(shown(line[i + 1]));
}

QString shownText(const std::wstring& line, int from, int to)
{
    std::wstring text = line.substr(static_cast<size_t>(from), static_cast<size_t>(to - from));
    std::transform(text.begin(), text.end(), text.begin(), shown);
    return toQString(text);
}

// Positions in UTF-16 of a part of a line.
int units(const std::wstring& line, int from, int column)
{
    int count = 0;
    for (int i = from; i < column; ++i)
        count += static_cast<uint32_t>(shown(line[static_cast<size_t>(i)])) > 0xFFFF ? 2 : 1;
    return count;
}

} // namespace

QColor readable(const QColor& wanted, const QColor& background, const QColor& other)
{
    const auto worst = [&](const QColor& color) {
        return std::min(contrast(fromQColor(color), fromQColor(background)),
                        contrast(fromQColor(color), fromQColor(other)));
    };
    const QColor end = worst(Qt::white) > worst(Qt::black) ? Qt::white : Qt::black;
    for (int part = 0; part < mixSteps; ++part) {
        const QColor mixed = mix(wanted, end, part, mixSteps);
        if (worst(mixed) >= wantedContrast)
            return mixed;
    }
    return end;
}

SrcColors::SrcColors(const QPalette& palette)
    : background(palette.color(QPalette::Base))
    , selection(palette.color(QPalette::Highlight))
    , selectedText(palette.color(QPalette::HighlightedText))
{
    const QColor plain = palette.color(QPalette::Text);
    caretLine = mix(background, plain, 1, 16);
    margin = mix(background, plain, 1, 24);
    bracket = mix(background, plain, 1, 4);
    text = readable(plain, background, caretLine);
    number = readable(mix(plain, background, 1, 3), margin, caretLine);
    error = readable(QColor(200, 0, 0), background, caretLine);
    const auto color = [&](SrcKind kind, const QColor& wanted) {
        kinds[static_cast<size_t>(kind)] = readable(wanted, background, caretLine);
    };
    color(SrcKind::Word, plain);
    color(SrcKind::Keyword, QColor(0, 51, 179));
    color(SrcKind::Number, QColor(0, 115, 90));
    color(SrcKind::String, QColor(163, 60, 20));
    color(SrcKind::QuotedName, QColor(110, 30, 130));
    color(SrcKind::Comment, mix(plain, background, 2, 5));
    color(SrcKind::Parameter, QColor(170, 0, 110));
    color(SrcKind::Operator, plain);
}

void SrcLayout::setFont(const QFont& font, int tabWidth)
{
    m_font = font;
    m_font.setKerning(false);
    const QFontMetricsF metrics(m_font);
    // A pixel above, and two below for underscores that reach under the descent.
    m_ascent = static_cast<int>(std::ceil(metrics.ascent())) + 1;
    m_lineHeight = m_ascent + static_cast<int>(std::ceil(metrics.descent())) + 2;
    m_digit = metrics.horizontalAdvance(QLatin1Char('0'));
    m_tab = std::max(1.0, metrics.horizontalAdvance(QLatin1Char(' ')) * tabWidth);
    m_low.assign(lowCharacters, -1.0);
    m_high.clear();
}

double SrcLayout::advance(wchar_t character)
{
    const auto c = static_cast<char32_t>(character);
    double& known = c < lowCharacters ? m_low[c] : m_high[c];
    if ((c < lowCharacters && known < 0) || (c >= lowCharacters && known == 0))
        known = std::max(
            0.01, QFontMetricsF(m_font).horizontalAdvance(toQString(std::wstring(1, character))));
    return known;
}

void SrcLayout::shape(QTextLayout& layout) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(Qt::LeftToRight);
    layout.setTextOption(option);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
}

void SrcLayout::visit(const std::wstring& line, const std::function<bool(const Run&)>& function)
{
    const auto size = static_cast<int>(line.size());
    double x = 0;
    for (int from = 0; from < size;) {
        Run run{from, from, x, 0, isSimpleAt(line, static_cast<size_t>(from))};
        if (line[static_cast<size_t>(from)] == L'\t') {
            run.to = from + 1;
            run.simple = true;
            run.width = m_tab * (std::floor(x / m_tab + 1e-6) + 1) - x;
        } else if (run.simple) {
            while (run.to < size && run.to - from < simpleRun &&
                   isSimpleAt(line, static_cast<size_t>(run.to)))
                run.width += advance(shown(line[static_cast<size_t>(run.to++)]));
        } else {
            while (run.to < size && run.to - from < shapedRun &&
                   line[static_cast<size_t>(run.to)] != L'\t' &&
                   !isSimpleAt(line, static_cast<size_t>(run.to)))
                ++run.to;
            QTextLayout layout(shownText(line, run.from, run.to), m_font);
            shape(layout);
            run.width = layout.lineAt(0).naturalTextWidth();
        }
        if (!function(run))
            return;
        from = run.to;
        x += run.width;
    }
}

double SrcLayout::xOf(const std::wstring& line, int column)
{
    double x = 0;
    visit(line, [&](const Run& run) {
        if (column <= run.from)
            return false;
        x = run.x + run.width;
        if (column >= run.to)
            return true;
        if (run.simple) {
            x = run.x;
            for (int i = run.from; i < column; ++i)
                x += advance(shown(line[static_cast<size_t>(i)]));
        } else {
            QTextLayout layout(shownText(line, run.from, run.to), m_font);
            shape(layout);
            x = run.x + layout.lineAt(0).cursorToX(units(line, run.from, column));
        }
        return false;
    });
    return x;
}

int SrcLayout::columnAt(const std::wstring& line, double x)
{
    int column = 0;
    visit(line, [&](const Run& run) {
        column = run.to;
        if (x >= run.x + run.width)
            return true;
        if (!run.simple) {
            QTextLayout layout(shownText(line, run.from, run.to), m_font);
            shape(layout);
            const int unit = layout.lineAt(0).xToCursor(x - run.x);
            column = run.from;
            while (column < run.to && units(line, run.from, column) < unit)
                ++column;
            return false;
        }
        double left = run.x;
        for (column = run.from; column < run.to; ++column) {
            const bool tab = line[static_cast<size_t>(column)] == L'\t';
            const double width =
                tab ? run.width : advance(shown(line[static_cast<size_t>(column)]));
            if (x < left + width / 2)
                break;
            left += width;
        }
        return false;
    });
    return column;
}

void SrcLayout::draw(QPainter& painter, QPointF start, const std::wstring& line,
                     const std::vector<SrcToken>& tokens, const SrcColors& colors, double left,
                     double right, const QColor& only)
{
    painter.setFont(m_font);
    const auto firstToken = [&](int column) {
        return std::partition_point(tokens.begin(), tokens.end(),
                                    [=](const SrcToken& token) { return token.to <= column; });
    };
    const auto colorOf = [&](SrcKind kind) { return only.isValid() ? only : colors.of(kind); };
    visit(line, [&](const Run& run) {
        if (run.x > right)
            return false;
        if (run.x + run.width < left || line[static_cast<size_t>(run.from)] == L'\t')
            return true;
        auto token = firstToken(run.from);
        if (!run.simple) {
            QTextLayout layout(shownText(line, run.from, run.to), m_font);
            QList<QTextLayout::FormatRange> formats;
            for (; token != tokens.end() && token->from < run.to; ++token) {
                const int from = units(line, run.from, std::max(token->from, run.from));
                const int to = units(line, run.from, std::min(token->to, run.to));
                QTextLayout::FormatRange range{from, to - from, {}};
                range.format.setForeground(colorOf(token->kind));
                formats.push_back(range);
            }
            layout.setFormats(formats);
            shape(layout);
            painter.setPen(only.isValid() ? only : colors.text);
            layout.draw(&painter,
                        {start.x() + run.x, start.y() + m_ascent - layout.lineAt(0).ascent()});
            return true;
        }
        double x = run.x;
        int column = run.from;
        for (; token != tokens.end() && token->from < run.to; ++token) {
            for (; column < token->from; ++column)
                x += advance(shown(line[static_cast<size_t>(column)]));
            const int end = std::min(token->to, run.to);
            painter.setPen(colorOf(token->kind));
            painter.drawText(QPointF(start.x() + x, start.y() + m_ascent),
                             shownText(line, column, end));
            for (; column < end; ++column)
                x += advance(shown(line[static_cast<size_t>(column)]));
        }
        return true;
    });
}

} // namespace OviAPI
