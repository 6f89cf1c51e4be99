// The control in which a cell of a record view is edited, and the sentence beside it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/font.h>
#include <oviapi/geometry.h>
#include <oviapi/string.h>
#include <oviapi/virtualkey.h>

namespace OviAPI {

class aCRecordView;

// A sentence over the client area of a view, read out by assistive technology. Lets the mouse
// through. Dies before the native part of the view.
class CellTip {
public:
    enum class Kind { Note, Fault };

    // Read out when it is first placed.
    CellTip(aCRecordView& view, const std::wstring& sentence, Kind kind);
    ~CellTip();

    // place: what it is said of, without width when that is out of sight; bounds: where it may
    // stand.
    void place(const Rect& place, const Rect& bounds);

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

// A line of text of the toolkit, with its menu, its undo and its input methods, over the client
// area of a view that has a native part. It has the keyboard focus in the name of the view, which
// counts as focused meanwhile. Dies before the native part of the view; may be destroyed by
// whatever it calls.
class CellField {
public:
    enum class Answer {
        Typing, // the key is for the control
        Used,
        Pass, // the key is for the view
    };

    class User {
    public:
        virtual ~User() = default;
        virtual Answer onFieldKey(VirtualKey key) = 0;
        virtual void onFieldText() = 0; // it has been changed
        // The focus has gone to another part of the window.
        virtual void onFieldLeft() = 0;
        // A composition has been given up before anything was typed.
        virtual void onFieldUnused() = 0;
    };

    struct Look {
        Font font;
        bool right = false;            // where the text stands
        std::vector<aCString> choices; // any: it has a list as well
        std::wstring name;             // for assistive technology
        int mostChars = 32767;
    };

    CellField(aCRecordView& view, User& user, const Look& look);
    ~CellField();

    std::wstring text() const;
    // Replaces the text and puts the caret behind it. Calls nothing.
    void setText(std::wstring_view text);
    // Puts it where the caret is, as if it had been typed.
    void insert(std::wstring_view text);
    void selectAll();
    void takeFocus();
    void dropList();
    void setFont(const Font& font);
    // A rectangle without width hides it.
    void place(const Rect& field);
    // What assistive technology says of the text. A fault colours the frame.
    void describe(const std::wstring& sentence, CellTip::Kind kind);

    // A part of a view's native part: compositions of an input method that begin in the view are
    // carried on in an editor.
    static void watchCompositions(aCRecordView& view);
    static void acceptCompositions(aCRecordView& view, bool accept);

private:
    friend struct Composer;
    struct Native;
    std::unique_ptr<Native> m_native;
};

// The text on the clipboard, empty for none.
std::wstring clipboardText();

} // namespace OviAPI
