// The source editor.
#pragma once

#include <memory>
#include <string>

#include <oviapi/export.h>
#include <oviapi/srccursor.h>
#include <oviapi/wvisualobject.h>

namespace OviAPI {

// A place between characters. Line and column count from 1, in characters of wide text.
struct SrcPosition {
    int line = 1;
    int column = 1;

    bool operator==(const SrcPosition&) const = default;
};

struct SrcRange {
    SrcPosition from;
    SrcPosition to; // just behind

    bool isEmpty() const { return from == to; }
    bool operator==(const SrcRange&) const = default;
};

// Edits SQL: numbers of lines, colours that follow the palette, undo, a find bar, a mark for an
// error. No control that takes the font of its form's controls: its font is a kind of its own.
// Positions outside the text are moved to the nearest one inside.
//
// Keys beside the usual ones of a text: Tab and Shift+Tab indent the lines of a selection, Ctrl+/
// comments them out and in, Ctrl+F opens the find bar, Ctrl+H with its replacing part, F3 and
// Shift+F3 find on, Ctrl+G asks for a line, Ctrl+plus, minus and 0 zoom, as does Ctrl with the
// wheel. Tab does not lead out of the editor; Ctrl+Tab and Ctrl+Shift+Tab do, and Ctrl+M lets Tab
// move the focus until it is pressed again.
//
// A text of 10 MB in 200,000 lines opens at once, and so does a line of 1,000,000 characters.
class OVIAPI_API CSrcEdit : public virtual WVisualObject {
public:
    CSrcEdit();
    ~CSrcEdit() override;

    // The text has changed, by the user or by a call.
    virtual bool onTextChanged();
    // It differs from the saved text from now on, or does so no more.
    virtual bool onModified(bool modified);
    // The caret or the selection has moved.
    virtual bool onCursorMoved();

    // Begins anew: nothing to undo, not modified, caret at the start. Null counts as empty. Line
    // ends become "\n".
    void setText(const wchar_t* text);
    std::wstring text() const;
    int lineCount() const;
    // Empty for numbers outside 1..lineCount().
    std::wstring lineText(int line) const;

    SrcPosition caret() const;
    void setCaret(SrcPosition position);
    // Shows the line in the middle of the view, with the caret at its start.
    void goToLine(int line);
    SrcRange selection() const;
    // The caret stands at range.to.
    void select(SrcRange range);
    void selectAll();
    std::wstring selectedText() const;
    std::wstring textOf(SrcRange range) const;

    // These act on a read-only text as well, and can be undone.
    void insert(const wchar_t* text); // in the place of the selection
    void replace(SrcRange range, const wchar_t* text);

    void undo();
    void redo();
    bool canUndo() const;
    bool canRedo() const;
    // At most so many changes are kept; 10,000 at first, none for 0.
    void setUndoLimit(int changes);

    // Nothing happens without a selection, or in a read-only text for cut and paste.
    void cut();
    void copy();
    void paste();

    // Keeps the user from changing the text.
    void setReadOnly(bool readOnly);
    bool isReadOnly() const;
    bool isModified() const;
    void setModified(bool modified);

    // Whether the text is no SQL: all of it has one colour. False at first.
    void setPlainText(bool plain);
    bool isPlainText() const;
    // Characters that a tab is wide, 1 to 16; 4 at first. Tab puts blanks in.
    void setTabWidth(int characters);
    int tabWidth() const;
    // Points added to the size of the font, -6 to 40.
    void setZoom(int points);
    int zoom() const;

    // flags: SrcFindFlags. See SrcCursor. False when the text is found nowhere.
    bool find(const wchar_t* what, int flags);
    bool replaceFound(const wchar_t* what, const wchar_t* with, int flags);
    int replaceAll(const wchar_t* what, const wchar_t* with, int flags);
    void showFindBar(bool withReplace = false);
    void hideFindBar();
    bool isFindBarShown() const;

    void indentSelection();
    void unindentSelection();
    void toggleComment();

    // Underlines the word at the place with a wave and marks its line in the margin; the message is
    // the tool tip of the mark. Gone with the next change of the text.
    void markError(SrcPosition position, const wchar_t* message = nullptr);
    void clearError();
    bool hasError() const;
    SrcPosition errorPosition() const;

    // The statement around the position, without blanks, comments and the semicolon around it. A
    // position between two statements belongs to the one behind it; in the line of a semicolon and
    // behind it, or behind the last statement, to the one before. Empty when there is none.
    SrcRange statementAt(SrcPosition position) const;
    SrcRange statementAtCaret() const { return statementAt(caret()); }

    void setFont(const Font& font) override;

    struct SrcNative; // for the framework's own code

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    struct State;
    struct Before;

    void nativeGoes() override;
    Before before() const;
    // Tells what has changed since. The object may be gone afterwards.
    void settle(const Before& then);
    template<class F>
    void change(F&& function);

    std::unique_ptr<State> m_state;
    SrcNative* m_view = nullptr; // the native part while there is one
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::CSrcEdit, onTextChanged);
OVIAPI_SIGNAL(OviAPI::CSrcEdit, onModified);
OVIAPI_SIGNAL(OviAPI::CSrcEdit, onCursorMoved);
