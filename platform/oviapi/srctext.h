// The text of a source editor: lines, a record of changes, and the state each line begins in.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/srctokens.h>

namespace OviAPI {

// A place between characters. Line and column count from 0.
struct SrcPoint {
    int line = 0;
    int column = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the 0 inside the comparison for one
    auto operator<=>(const SrcPoint&) const = default;
};

struct SrcSpan {
    SrcPoint from;
    SrcPoint to;

    bool isEmpty() const { return from == to; }
    bool operator==(const SrcSpan&) const = default;
};

// Lines end with "\n"; "\r\n" and "\r" are read as such. There is always one line at least. Points
// that lie outside are moved to the nearest place inside. Opening and changing cost no more than
// the characters that are moved, whatever the number of lines: states are computed when asked for.
class OVIAPI_API SrcText {
public:
    SrcText();

    // Forgets every change.
    void set(std::wstring_view text);
    std::wstring text() const;
    std::wstring text(const SrcSpan& span) const;
    // Number of characters, line ends as one each.
    size_t size() const { return m_characters + m_lines.size() - 1; }

    int lineCount() const { return static_cast<int>(m_lines.size()); }
    const std::wstring& line(int line) const { return m_lines[static_cast<size_t>(line)]; }
    int length(int line) const { return static_cast<int>(this->line(line).size()); }
    SrcPoint end() const;
    SrcPoint clamped(SrcPoint point) const;

    // Characters before the point, line ends as one each, and back.
    size_t offset(SrcPoint point) const;
    SrcPoint point(size_t offset) const;

    // Puts the text in the place of the span, as a change that can be undone. Returns the end of
    // what has been put in. Typing: goes on with the change before when that was typing and ended
    // here.
    SrcPoint replace(const SrcSpan& span, std::wstring_view with, bool typing = false);

    // Changes between begin and end are undone as one.
    void beginGroup();
    void endGroup();
    // Typing begins a change of its own from now on.
    void breakTyping() { m_typing = false; }

    // At most so many changes are kept, and so many characters of them; 10,000 and 33,554,432.
    void setUndoLimit(size_t changes, size_t characters);
    bool canUndo() const { return m_done > 0; }
    bool canRedo() const { return m_done < m_changes.size(); }
    // Where the change was, as it is now: removed and put in again. False when there is none.
    bool undo(SrcSpan* changed = nullptr);
    bool redo(SrcSpan* changed = nullptr);

    // Whether it differs from the text that was there at the last setModified(false) or set.
    bool isModified() const { return m_savedLost || m_saved != m_position; }
    void setModified(bool modified);

    // Counts the changes of the text.
    unsigned long revision() const { return m_revision; }

    // What the line begins inside of.
    SrcState stateBefore(int line);
    std::vector<SrcToken> tokens(int line);

    // The statement around the point, without blanks, comments and the semicolon around it. A point
    // in the blanks between two statements belongs to the one behind it, one in the line of a
    // semicolon and behind it, or behind the last statement, to the one before. Empty when there is
    // none.
    SrcSpan statementAt(SrcPoint point) const;

private:
    struct Edit {
        SrcPoint at;
        std::wstring removed;
        std::wstring added;
    };
    struct Change {
        std::vector<Edit> edits;
        size_t characters = 0;
    };

    SrcPoint put(const SrcSpan& span, std::wstring_view with);
    void record(Edit edit, bool typing);
    void trim();
    void invalidate(int line);

    std::vector<std::wstring> m_lines;
    std::vector<SrcState> m_states; // of the first lines, as far as they have been computed
    SrcTokenizer m_tokenizer;
    size_t m_characters = 0;

    std::deque<Change> m_changes;
    size_t m_done = 0; // changes that are in the text; those behind can be redone
    size_t m_kept = 0; // characters in all changes
    size_t m_maxChanges = 10000;
    size_t m_maxCharacters = size_t{1} << 25;
    long m_position = 0; // number of changes since set, those that were let go included
    long m_saved = 0;
    bool m_savedLost = false; // the changes that lead back to the saved text are gone
    bool m_typing = false;
    int m_group = 0;
    bool m_groupOpen = false; // the group has a change already
    unsigned long m_revision = 0;
};

} // namespace OviAPI
