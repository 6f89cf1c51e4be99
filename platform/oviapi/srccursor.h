// Caret, selection and the commands of a source editor, without a window.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <oviapi/export.h>
#include <oviapi/srctext.h>

namespace OviAPI {

enum class SrcMove {
    Left,
    Right,
    WordLeft,
    WordRight,
    LineStart, // the first character that is no blank, then column 0
    LineEnd,
    TextStart,
    TextEnd,
};

// How a text is looked for.
enum SrcFindFlags : int {
    FindMatchCase = 1,
    FindWholeWord = 2,
    FindWrap = 4, // goes on at the other end
    FindBackward = 8,
};

// Points to the text and does not own it. The selection lies between the anchor and the caret.
class OVIAPI_API SrcCursor {
public:
    explicit SrcCursor(SrcText& text)
        : m_text(text)
    {
    }

    SrcPoint caret() const { return m_caret; }
    SrcPoint anchor() const { return m_anchor; }
    SrcSpan selection() const;
    bool hasSelection() const { return m_caret != m_anchor; }
    void setCaret(SrcPoint point, bool keepAnchor = false);
    void select(const SrcSpan& span);
    // Moves caret and selection back to where there is text.
    void clamp();

    void move(SrcMove move, bool keepAnchor);
    // The word, or the run of signs or blanks, around the point.
    SrcSpan wordAt(SrcPoint point) const;

    // In the place of the selection.
    void insert(std::wstring_view text, bool typing = false);
    // Replaces the character behind the caret, unless the line ends there.
    void overwrite(std::wstring_view text);
    // A new line that begins with the blanks of this one.
    void newLine();
    void removeLeft();
    void removeRight();
    void removeWordLeft();
    void removeWordRight();

    // The lines of the selection, or blanks up to the next tab stop when it lies in one line.
    void indent(int tabWidth);
    void unindent(int tabWidth);
    // Puts "--" before every line of the selection, or takes it away when all have it.
    void toggleComment();

    bool undo();
    bool redo();

    // Selects the next place; false when there is none. A text with a line end is not found. The
    // number of wraps that it took, 0 or 1, is left in wrapped.
    bool find(std::wstring_view what, int flags, bool* wrapped = nullptr);
    // Replaces the selection when it is such a place, then selects the next one. Returns whether it
    // has replaced.
    bool replace(std::wstring_view what, std::wstring_view with, int flags);
    // Everywhere, as one change. Returns the number of places.
    int replaceAll(std::wstring_view what, std::wstring_view with, int flags);

    // The two brackets, when the caret stands at one: the one at the caret, and its partner.
    struct Brackets {
        SrcPoint here;
        std::optional<SrcPoint> partner; // none in the lines that were looked at
    };
    std::optional<Brackets> brackets() const;

private:
    struct Lines {
        int first;
        int last;
    };
    Lines selectedLines() const;
    void removeTo(SrcPoint point);
    bool matches(int line, int column, std::wstring_view what, int flags) const;
    std::optional<int> findInLine(int line, int from, int to, std::wstring_view what,
                                  int flags) const;
    std::optional<SrcPoint> partnerOf(SrcPoint bracket, wchar_t sign) const;

    SrcText& m_text;
    SrcPoint m_caret;
    SrcPoint m_anchor;
};

} // namespace OviAPI
