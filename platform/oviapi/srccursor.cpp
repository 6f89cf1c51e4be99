#include <oviapi/srccursor.h>

#include <algorithm>
#include <cwctype>
#include <iterator>

namespace OviAPI {

namespace {

constexpr int bracketLines = 2000;       // looked through for the partner of a bracket
constexpr int bracketLineLength = 65536; // longer lines are not looked through

bool isBlank(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == 0xA0 || c == 0x3000;
}

enum class CharClass { Blank, Word, Sign };

CharClass classOf(wchar_t c)
{
    if (isBlank(c))
        return CharClass::Blank;
    const bool word = c == L'_' || std::iswalnum(static_cast<wint_t>(c)) != 0;
    return word ? CharClass::Word : CharClass::Sign;
}

// A mark that stands on the character before it; the caret does not go between the two.
bool isMark(wchar_t c)
{
    return (c >= 0x300 && c <= 0x36F) || (c >= 0x1AB0 && c <= 0x1AFF) ||
           (c >= 0x20D0 && c <= 0x20FF) || (c >= 0xFE00 && c <= 0xFE0F) || c == 0x200D;
}

wchar_t lower(wchar_t c)
{
    return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
}

int blanksBefore(const std::wstring& line)
{
    const auto found =
        std::find_if(line.begin(), line.end(), [](wchar_t c) { return !isBlank(c); });
    return static_cast<int>(found - line.begin());
}

wchar_t charAt(const std::wstring& line, int column)
{
    const bool inside = column >= 0 && column < std::ssize(line);
    return inside ? line[static_cast<size_t>(column)] : L'\0';
}

// The other bracket of the pair; 0 for any other sign.
wchar_t partnerSign(wchar_t sign)
{
    constexpr std::wstring_view open = L"([{";
    constexpr std::wstring_view close = L")]}";
    if (const size_t i = open.find(sign); i != open.npos)
        return close[i];
    if (const size_t i = close.find(sign); i != close.npos)
        return open[i];
    return L'\0';
}

bool opens(wchar_t sign)
{
    return sign == L'(' || sign == L'[' || sign == L'{';
}

} // namespace

SrcSpan SrcCursor::selection() const
{
    return {std::min(m_anchor, m_caret), std::max(m_anchor, m_caret)};
}

void SrcCursor::setCaret(SrcPoint point, bool keepAnchor)
{
    m_text.breakTyping();
    m_caret = m_text.clamped(point);
    if (!keepAnchor)
        m_anchor = m_caret;
}

void SrcCursor::select(const SrcSpan& span)
{
    m_text.breakTyping();
    m_anchor = m_text.clamped(span.from);
    m_caret = m_text.clamped(span.to);
}

void SrcCursor::clamp()
{
    m_anchor = m_text.clamped(m_anchor);
    m_caret = m_text.clamped(m_caret);
}

void SrcCursor::move(SrcMove move, bool keepAnchor)
{
    SrcPoint to = m_caret;
    const std::wstring& line = m_text.line(to.line);
    const int last = m_text.lineCount() - 1;
    const auto nextClass = [&] { return classOf(charAt(line, to.column)); };
    const auto previousClass = [&] { return classOf(charAt(line, to.column - 1)); };
    switch (move) {
    case SrcMove::Left:
        if (hasSelection() && !keepAnchor) {
            to = selection().from;
        } else if (to.column > 0) {
            --to.column;
            while (to.column > 0 && isMark(charAt(line, to.column)))
                --to.column;
        } else if (to.line > 0) {
            to = {to.line - 1, m_text.length(to.line - 1)};
        }
        break;
    case SrcMove::Right:
        if (hasSelection() && !keepAnchor) {
            to = selection().to;
        } else if (to.column < std::ssize(line)) {
            ++to.column;
            while (isMark(charAt(line, to.column)))
                ++to.column;
        } else if (to.line < last) {
            to = {to.line + 1, 0};
        }
        break;
    case SrcMove::WordLeft:
        if (to.column == 0 && to.line > 0) {
            to = {to.line - 1, m_text.length(to.line - 1)};
            break;
        }
        while (to.column > 0 && previousClass() == CharClass::Blank)
            --to.column;
        if (to.column > 0) {
            const CharClass run = previousClass();
            while (to.column > 0 && previousClass() == run)
                --to.column;
        }
        break;
    case SrcMove::WordRight:
        if (to.column == std::ssize(line)) {
            if (to.line < last)
                to = {to.line + 1, 0};
            break;
        }
        if (const CharClass run = nextClass(); run != CharClass::Blank) {
            while (to.column < std::ssize(line) && nextClass() == run)
                ++to.column;
        }
        while (to.column < std::ssize(line) && nextClass() == CharClass::Blank)
            ++to.column;
        break;
    case SrcMove::LineStart: {
        const int first = blanksBefore(line);
        to.column = to.column == first ? 0 : first;
        break;
    }
    case SrcMove::LineEnd:
        to.column = static_cast<int>(line.size());
        break;
    case SrcMove::TextStart:
        to = {0, 0};
        break;
    case SrcMove::TextEnd:
        to = m_text.end();
        break;
    }
    setCaret(to, keepAnchor);
}

SrcSpan SrcCursor::wordAt(SrcPoint point) const
{
    point = m_text.clamped(point);
    const std::wstring& line = m_text.line(point.line);
    if (line.empty())
        return {point, point};
    // Behind the last character of a word the word is meant.
    int column = std::min(point.column, static_cast<int>(line.size()) - 1);
    if (column > 0 && column == point.column && classOf(charAt(line, column)) != CharClass::Word &&
        classOf(charAt(line, column - 1)) == CharClass::Word)
        --column;
    const CharClass run = classOf(charAt(line, column));
    int from = column;
    int to = column;
    while (from > 0 && classOf(charAt(line, from - 1)) == run)
        --from;
    while (to < std::ssize(line) && classOf(charAt(line, to)) == run)
        ++to;
    return {{point.line, from}, {point.line, to}};
}

void SrcCursor::insert(std::wstring_view text, bool typing)
{
    if (typing && !text.empty() && isBlank(text.front()))
        m_text.breakTyping(); // a word is undone at a time
    m_caret = m_text.replace(selection(), text, typing);
    m_anchor = m_caret;
}

void SrcCursor::overwrite(std::wstring_view text)
{
    if (!hasSelection() && m_caret.column < m_text.length(m_caret.line))
        m_anchor = {m_caret.line, m_caret.column + 1};
    insert(text);
}

void SrcCursor::newLine()
{
    const SrcPoint at = selection().from;
    const std::wstring& line = m_text.line(at.line);
    const int blanks = std::min(blanksBefore(line), at.column);
    insert(L"\n" + line.substr(0, static_cast<size_t>(blanks)));
}

void SrcCursor::removeTo(SrcPoint point)
{
    m_caret = m_text.replace({m_caret, point}, {});
    m_anchor = m_caret;
}

void SrcCursor::removeLeft()
{
    if (hasSelection())
        return insert({});
    if (m_caret.column > 0) // marks one by one, so that an accent can be mended
        return removeTo({m_caret.line, m_caret.column - 1});
    if (m_caret.line > 0)
        removeTo({m_caret.line - 1, m_text.length(m_caret.line - 1)});
}

void SrcCursor::removeRight()
{
    if (hasSelection())
        return insert({});
    const SrcPoint from = m_caret;
    move(SrcMove::Right, true);
    removeTo(from);
}

void SrcCursor::removeWordLeft()
{
    if (hasSelection())
        return insert({});
    const SrcPoint from = m_caret;
    move(SrcMove::WordLeft, true);
    removeTo(from);
}

void SrcCursor::removeWordRight()
{
    if (hasSelection())
        return insert({});
    const SrcPoint from = m_caret;
    move(SrcMove::WordRight, true);
    removeTo(from);
}

SrcCursor::Lines SrcCursor::selectedLines() const
{
    const SrcSpan span = selection();
    // A selection that ends at the start of a line does not hold that line.
    const bool without = span.to.column == 0 && span.to.line > span.from.line;
    return {span.from.line, span.to.line - (without ? 1 : 0)};
}

void SrcCursor::indent(int tabWidth)
{
    const SrcSpan span = selection();
    const auto blanks = [](int count) { return std::wstring(static_cast<size_t>(count), L' '); };
    if (span.from.line == span.to.line) {
        int width = 0; // in front of the caret
        for (int i = 0; i < span.from.column; ++i) {
            const bool tab = charAt(m_text.line(span.from.line), i) == L'\t';
            width += tab ? tabWidth - width % tabWidth : 1;
        }
        return insert(blanks(tabWidth - width % tabWidth));
    }
    const Lines lines = selectedLines();
    m_text.beginGroup();
    for (int i = lines.first; i <= lines.last; ++i) {
        if (m_text.length(i) > 0)
            m_text.replace({{i, 0}, {i, 0}}, blanks(tabWidth));
    }
    m_text.endGroup();
    for (SrcPoint* point : {&m_anchor, &m_caret}) {
        if (point->column > 0 && point->line <= lines.last)
            point->column += tabWidth;
    }
    clamp();
}

void SrcCursor::unindent(int tabWidth)
{
    const Lines lines = selectedLines();
    m_text.beginGroup();
    for (int i = lines.first; i <= lines.last; ++i) {
        const std::wstring& line = m_text.line(i);
        int blanks = 0;
        while (blanks < tabWidth && charAt(line, blanks) == L' ')
            ++blanks;
        if (blanks < tabWidth && charAt(line, blanks) == L'\t')
            ++blanks;
        m_text.replace({{i, 0}, {i, blanks}}, {});
        for (SrcPoint* point : {&m_anchor, &m_caret}) {
            if (point->line == i)
                point->column = std::max(0, point->column - blanks);
        }
    }
    m_text.endGroup();
    clamp();
}

void SrcCursor::toggleComment()
{
    const Lines lines = selectedLines();
    bool all = true;
    bool any = false;
    int column = -1; // where the marks go: in front of the least indented line
    for (int i = lines.first; i <= lines.last; ++i) {
        const std::wstring& line = m_text.line(i);
        const int blanks = blanksBefore(line);
        if (blanks == std::ssize(line))
            continue;
        any = true;
        all = all && line.compare(static_cast<size_t>(blanks), 2, L"--") == 0;
        column = column < 0 ? blanks : std::min(column, blanks);
    }
    if (!any)
        return;
    m_text.beginGroup();
    for (int i = lines.first; i <= lines.last; ++i) {
        const std::wstring& line = m_text.line(i);
        const int blanks = blanksBefore(line);
        if (blanks == std::ssize(line))
            continue;
        const int at = all ? blanks : column;
        const int length = charAt(line, at + 2) == L' ' ? 3 : 2;
        m_text.replace({{i, at}, {i, at + (all ? length : 0)}}, all ? L"" : L"-- ");
        for (SrcPoint* point : {&m_anchor, &m_caret}) {
            if (point->line == i && point->column > at)
                point->column = all ? std::max(at, point->column - length) : point->column + 3;
        }
    }
    m_text.endGroup();
    clamp();
}

bool SrcCursor::undo()
{
    SrcSpan changed;
    if (!m_text.undo(&changed))
        return false;
    m_anchor = m_caret = m_text.clamped(changed.to);
    return true;
}

bool SrcCursor::redo()
{
    SrcSpan changed;
    if (!m_text.redo(&changed))
        return false;
    m_anchor = m_caret = m_text.clamped(changed.to);
    return true;
}

bool SrcCursor::matches(int line, int column, std::wstring_view what, int flags) const
{
    const std::wstring& text = m_text.line(line);
    const auto length = static_cast<int>(what.size());
    if (column < 0 || column + length > std::ssize(text))
        return false;
    const auto same = [&](wchar_t a, wchar_t b) {
        return a == b || (!(flags & FindMatchCase) && lower(a) == lower(b));
    };
    if (!std::equal(what.begin(), what.end(), text.begin() + column, same))
        return false;
    const auto isWord = [&](int c) { return classOf(charAt(text, c)) == CharClass::Word; };
    return !(flags & FindWholeWord) || (!isWord(column - 1) && !isWord(column + length));
}

// The first place in the line that begins in from..to; the last one for FindBackward.
std::optional<int> SrcCursor::findInLine(int line, int from, int to, std::wstring_view what,
                                         int flags) const
{
    to = std::min(to, m_text.length(line) - static_cast<int>(what.size()));
    if (flags & FindBackward) {
        for (int i = to; i >= from; --i) {
            if (matches(line, i, what, flags))
                return i;
        }
        return {};
    }
    for (int i = from; i <= to; ++i) {
        if (matches(line, i, what, flags))
            return i;
    }
    return {};
}

bool SrcCursor::find(std::wstring_view what, int flags, bool* wrapped)
{
    if (wrapped)
        *wrapped = false;
    if (what.empty() || what.find_first_of(L"\r\n") != what.npos)
        return false;
    const bool backward = (flags & FindBackward) != 0;
    const SrcSpan span = selection();
    const SrcPoint start = backward ? span.from : span.to;
    const int count = m_text.lineCount();
    // The line of the start comes twice: its one part first, the other after all other lines.
    for (int step = 0; step <= count; ++step) {
        const int distance = backward ? -step : step;
        const bool around =
            start.line + distance < 0 || start.line + distance >= count || step == count;
        if (around && !(flags & FindWrap))
            return false;
        const int line = ((start.line + distance) % count + count) % count;
        int from = 0;
        int to = m_text.length(line);
        if (step == 0 && backward)
            to = start.column - static_cast<int>(what.size());
        else if (step == 0)
            from = start.column;
        if (const auto column = findInLine(line, from, to, what, flags)) {
            select({{line, *column}, {line, *column + static_cast<int>(what.size())}});
            if (wrapped)
                *wrapped = around;
            return true;
        }
    }
    return false;
}

bool SrcCursor::replace(std::wstring_view what, std::wstring_view with, int flags)
{
    const SrcSpan span = selection();
    const bool found = !what.empty() && span.from.line == span.to.line &&
                       span.to.column - span.from.column == std::ssize(what) &&
                       matches(span.from.line, span.from.column, what, flags);
    if (found) {
        insert(with);
        if (flags & FindBackward)
            setCaret(span.from);
    }
    find(what, flags);
    return found;
}

int SrcCursor::replaceAll(std::wstring_view what, std::wstring_view with, int flags)
{
    if (what.empty() || what.find_first_of(L"\r\n") != what.npos)
        return 0;
    flags &= ~FindBackward;
    // One replacement of everything from the first place to the last: a place costs no more than
    // its characters, however many there are.
    int count = 0;
    SrcSpan place;
    std::wstring result;
    for (int line = 0; line < m_text.lineCount(); ++line) {
        const std::wstring& text = m_text.line(line);
        int from = 0;
        while (const auto column = findInLine(line, from, m_text.length(line), what, flags)) {
            const SrcPoint at{line, *column};
            if (count++ == 0)
                place = {at, at};
            result += m_text.text({place.to, at});
            result += with;
            place.to = {line, *column + static_cast<int>(what.size())};
            from = place.to.column;
            if (from > std::ssize(text))
                break;
        }
    }
    if (count == 0)
        return 0;
    m_text.breakTyping();
    m_caret = m_text.replace(place, result);
    m_anchor = m_caret;
    return count;
}

std::optional<SrcPoint> SrcCursor::partnerOf(SrcPoint bracket, wchar_t sign) const
{
    const wchar_t partner = partnerSign(sign);
    const int step = opens(sign) ? 1 : -1;
    int depth = 0;
    for (int line = bracket.line;
         line >= 0 && line < m_text.lineCount() && std::abs(line - bracket.line) < bracketLines;
         line += step) {
        const std::wstring& text = m_text.line(line);
        if (text.size() > bracketLineLength)
            return {};
        std::vector<SrcToken> tokens = m_text.tokens(line);
        if (step < 0)
            std::reverse(tokens.begin(), tokens.end());
        for (const SrcToken& token : tokens) {
            if (token.kind != SrcKind::Operator)
                continue;
            if (line == bracket.line && (token.from - bracket.column) * step <= 0)
                continue;
            const wchar_t c = charAt(text, token.from);
            if (c == sign)
                ++depth;
            else if (c == partner && depth-- == 0)
                return SrcPoint{line, token.from};
        }
    }
    return {};
}

std::optional<SrcCursor::Brackets> SrcCursor::brackets() const
{
    const std::wstring& line = m_text.line(m_caret.line);
    if (line.size() > bracketLineLength)
        return {};
    // The one behind the caret counts before the one in front of it.
    for (const int column : {m_caret.column, m_caret.column - 1}) {
        const wchar_t sign = charAt(line, column);
        if (sign == L'\0' || partnerSign(sign) == L'\0')
            continue;
        for (const SrcToken& token : m_text.tokens(m_caret.line)) {
            const SrcPoint here{m_caret.line, column};
            if (token.from == column && token.kind == SrcKind::Operator)
                return Brackets{here, partnerOf(here, sign)};
        }
    }
    return {};
}

} // namespace OviAPI
