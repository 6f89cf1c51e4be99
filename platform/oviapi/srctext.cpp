#include <oviapi/srctext.h>

#include <algorithm>
#include <utility>

namespace OviAPI {

namespace {

// The lines of a text; one at least.
std::vector<std::wstring> split(std::wstring_view text)
{
    std::vector<std::wstring> lines;
    lines.reserve(static_cast<size_t>(std::count(text.begin(), text.end(), L'\n')) + 1);
    size_t from = 0;
    for (;;) {
        const size_t end = std::min(text.find_first_of(L"\r\n", from), text.size());
        lines.emplace_back(text.substr(from, end - from));
        if (end == text.size())
            return lines;
        from = text.substr(end, 2) == L"\r\n" ? end + 2 : end + 1;
    }
}

size_t characters(const std::vector<std::wstring>& lines)
{
    size_t sum = 0;
    for (const std::wstring& line : lines)
        sum += line.size();
    return sum;
}

// Where a text ends that begins at the point.
SrcPoint endOf(SrcPoint from, std::wstring_view text)
{
    const auto breaks = static_cast<int>(std::count(text.begin(), text.end(), L'\n'));
    if (breaks == 0)
        return {from.line, from.column + static_cast<int>(text.size())};
    return {from.line + breaks, static_cast<int>(text.size() - text.rfind(L'\n') - 1)};
}

} // namespace

SrcText::SrcText()
    : m_lines(1)
{
}

void SrcText::set(std::wstring_view text)
{
    m_lines = split(text);
    m_characters = characters(m_lines);
    m_states.clear();
    m_tokenizer = SrcTokenizer();
    m_changes.clear();
    m_done = 0;
    m_kept = 0;
    m_position = 0;
    m_saved = 0;
    m_savedLost = false;
    m_typing = false;
    m_groupOpen = false;
    ++m_revision;
}

std::wstring SrcText::text() const
{
    return text({{0, 0}, end()});
}

std::wstring SrcText::text(const SrcSpan& span) const
{
    const SrcPoint from = clamped(std::min(span.from, span.to));
    const SrcPoint to = clamped(std::max(span.from, span.to));
    const auto column = [](int c) { return static_cast<size_t>(c); };
    if (from.line == to.line)
        return line(from.line).substr(column(from.column), column(to.column - from.column));
    size_t room = 0;
    for (int i = from.line; i <= to.line; ++i)
        room += line(i).size() + 1;
    std::wstring all;
    all.reserve(room);
    all += line(from.line).substr(column(from.column));
    for (int i = from.line + 1; i < to.line; ++i)
        (all += L'\n') += line(i);
    return (all += L'\n') += line(to.line).substr(0, column(to.column));
}

SrcPoint SrcText::end() const
{
    return {lineCount() - 1, length(lineCount() - 1)};
}

SrcPoint SrcText::clamped(SrcPoint point) const
{
    if (point.line < 0)
        return {0, 0};
    if (point.line >= lineCount())
        return end();
    return {point.line, std::clamp(point.column, 0, length(point.line))};
}

size_t SrcText::offset(SrcPoint point) const
{
    point = clamped(point);
    size_t sum = static_cast<size_t>(point.column) + static_cast<size_t>(point.line);
    for (int i = 0; i < point.line; ++i)
        sum += line(i).size();
    return sum;
}

SrcPoint SrcText::point(size_t offset) const
{
    for (int i = 0; i < lineCount(); ++i) {
        if (offset <= line(i).size())
            return {i, static_cast<int>(offset)};
        offset -= line(i).size() + 1;
    }
    return end();
}

void SrcText::invalidate(int line)
{
    // The line itself begins as before; what follows may not.
    m_states.resize(std::min(m_states.size(), static_cast<size_t>(line) + 1));
    ++m_revision;
}

SrcPoint SrcText::put(const SrcSpan& span, std::wstring_view with)
{
    std::vector<std::wstring> added = split(with);
    const SrcPoint end{span.from.line + static_cast<int>(added.size()) - 1,
                       static_cast<int>(added.back().size()) +
                           (added.size() == 1 ? span.from.column : 0)};
    m_characters += characters(added);
    for (int i = span.from.line; i <= span.to.line; ++i)
        m_characters -= line(i).size();
    std::wstring& first = m_lines[static_cast<size_t>(span.from.line)];
    const std::wstring& last = m_lines[static_cast<size_t>(span.to.line)];
    m_characters +=
        static_cast<size_t>(span.from.column) + last.size() - static_cast<size_t>(span.to.column);
    if (added.size() == 1 && span.from.line == span.to.line) {
        first.replace(static_cast<size_t>(span.from.column),
                      static_cast<size_t>(span.to.column - span.from.column), added.front());
        invalidate(span.from.line);
        return end;
    }
    added.back() += last.substr(static_cast<size_t>(span.to.column));
    added.front().insert(0, first, 0, static_cast<size_t>(span.from.column));
    const auto at = m_lines.begin() + span.from.line;
    const auto same =
        std::min<std::ptrdiff_t>(span.to.line - span.from.line + 1, std::ssize(added));
    std::move(added.begin(), added.begin() + same, at);
    if (same < std::ssize(added))
        m_lines.insert(at + same, std::make_move_iterator(added.begin() + same),
                       std::make_move_iterator(added.end()));
    else
        m_lines.erase(at + same, m_lines.begin() + span.to.line + 1);
    invalidate(span.from.line);
    return end;
}

SrcPoint SrcText::replace(const SrcSpan& span, std::wstring_view with, bool typing)
{
    const SrcSpan place{clamped(std::min(span.from, span.to)),
                        clamped(std::max(span.from, span.to))};
    std::wstring removed = text(place);
    if (removed.empty() && with.empty())
        return place.from;
    const SrcPoint end = put(place, with);
    record({place.from, std::move(removed), text({place.from, end})}, typing);
    return end;
}

void SrcText::record(Edit edit, bool typing)
{
    const size_t size = edit.removed.size() + edit.added.size();
    while (m_changes.size() > m_done) { // what was undone cannot be done again
        m_kept -= m_changes.back().characters;
        m_changes.pop_back();
        if (m_saved > m_position)
            m_savedLost = true;
    }
    const bool inGroup = m_group > 0 && m_groupOpen;
    bool goesOn = inGroup;
    if (!inGroup && typing && m_typing && !m_changes.empty() && m_saved != m_position) {
        Edit& before = m_changes.back().edits.back();
        goesOn = edit.removed.empty() && endOf(before.at, before.added) == edit.at;
        if (goesOn) {
            before.added += edit.added;
            m_changes.back().characters += size;
            m_kept += size;
            trim();
            return;
        }
    }
    if (!goesOn) {
        m_changes.emplace_back();
        ++m_done;
        ++m_position;
    }
    m_changes.back().edits.push_back(std::move(edit));
    m_changes.back().characters += size;
    m_kept += size;
    m_typing = typing && m_group == 0;
    m_groupOpen = m_group > 0;
    trim();
}

void SrcText::trim()
{
    while (!m_changes.empty() && (m_changes.size() > m_maxChanges || m_kept > m_maxCharacters)) {
        if (m_done == 0) { // what can be redone begins with the first of them
            m_savedLost = m_savedLost || m_saved > m_position;
            m_changes.clear();
            break;
        }
        m_savedLost = m_savedLost || m_saved <= m_position - static_cast<long>(m_done);
        m_kept -= m_changes.front().characters;
        m_changes.pop_front();
        --m_done;
    }
    if (m_changes.empty()) {
        m_kept = 0;
        m_typing = false;
        m_groupOpen = false;
    }
}

void SrcText::beginGroup()
{
    if (m_group++ == 0)
        m_groupOpen = false;
    m_typing = false;
}

void SrcText::endGroup()
{
    if (m_group > 0 && --m_group == 0)
        m_groupOpen = false;
}

void SrcText::setUndoLimit(size_t changes, size_t limit)
{
    m_maxChanges = changes;
    m_maxCharacters = limit;
    trim();
}

bool SrcText::undo(SrcSpan* changed)
{
    if (!canUndo())
        return false;
    const Change& change = m_changes[--m_done];
    --m_position;
    m_typing = false;
    SrcSpan place;
    for (auto edit = change.edits.rbegin(); edit != change.edits.rend(); ++edit)
        place = {edit->at, put({edit->at, endOf(edit->at, edit->added)}, edit->removed)};
    if (changed)
        *changed = place;
    return true;
}

bool SrcText::redo(SrcSpan* changed)
{
    if (!canRedo())
        return false;
    const Change& change = m_changes[m_done++];
    ++m_position;
    m_typing = false;
    SrcSpan place;
    for (const Edit& edit : change.edits)
        place = {edit.at, put({edit.at, endOf(edit.at, edit.removed)}, edit.added)};
    if (changed)
        *changed = place;
    return true;
}

void SrcText::setModified(bool modified)
{
    m_savedLost = modified;
    m_saved = m_position;
    m_typing = false;
}

SrcState SrcText::stateBefore(int line)
{
    if (m_states.empty())
        m_states.push_back(0);
    const auto wanted = static_cast<size_t>(std::clamp(line, 0, lineCount() - 1));
    while (m_states.size() <= wanted)
        m_states.push_back(m_tokenizer.skip(m_lines[m_states.size() - 1], m_states.back()));
    return m_states[wanted];
}

std::vector<SrcToken> SrcText::tokens(int line)
{
    std::vector<SrcToken> tokens;
    m_tokenizer.read(this->line(line), stateBefore(line), tokens);
    return tokens;
}

SrcSpan SrcText::statementAt(SrcPoint point) const
{
    point = clamped(point);
    SrcTokenizer tokenizer;
    SrcSplitter splitter;
    SrcState state = 0;
    SrcSpan statement;  // read so far
    SrcSpan before;     // the one before
    SrcPoint beforeEnd; // behind its semicolon
    bool open = false;
    std::vector<SrcToken> tokens;
    for (int i = 0; i < lineCount(); ++i) {
        tokens.clear();
        state = tokenizer.read(line(i), state, tokens);
        for (const SrcToken& token : tokens) {
            if (token.kind == SrcKind::Comment)
                continue;
            if (splitter.feed(line(i), token)) {
                if (open) {
                    before = statement;
                    beforeEnd = {i, token.to};
                }
                open = false;
                if (point <= SrcPoint{i, token.to})
                    return before;
                continue;
            }
            if (!open) {
                // In the line of the semicolon the blanks behind it are still the statement's.
                const SrcPoint start{i, token.from};
                if (!before.isEmpty() && point < start && point.line == beforeEnd.line)
                    return before;
                statement.from = start;
                open = true;
            }
            statement.to = {i, token.to};
        }
    }
    return open ? statement : before;
}

} // namespace OviAPI
