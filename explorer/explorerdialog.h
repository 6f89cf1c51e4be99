// The base of the explorer's dialogs: sizes that follow the font, buttons along the bottom.
#pragma once

#include <initializer_list>
#include <string>

#include <oviapi/button.h>
#include <oviapi/scrollview.h>
#include <oviapi/static.h>

#include "app/extdialog.h"
#include "explorer/textlookup.h"

// A dialog gives its texts in loadTexts and places its controls in layout; both are called again
// when the language changes, and layout when the font of controls does. A dialog that is larger
// than the screen takes the room there is and scrolls. Owned by the code that runs it.
class ExplorerDialog : public WExtDialog {
public:
    // above: the window the dialog belongs to.
    explicit ExplorerDialog(WExtForm& above);

    // Makes the window and its controls, sized for its texts and placed over the window above.
    bool create() override;
    // Stays in this rectangle, in pixels of the screen, instead of on the whole screen.
    void setScreen(const OviAPI::Rect& screen) { m_screen = screen; }
    // The area with the controls.
    OviAPI::WScrollView& content() { return m_content; }
    bool onClose() override;
    bool onSize() override;
    using WExtDialog::onCharsetChanged;
    OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender) override;

protected:
    static constexpr int Margin = 14; // px around the content
    static constexpr int Gap = 8;     // px between controls

    // Makes the controls, which have no text yet.
    virtual void createControls() = 0;
    virtual void loadTexts() = 0;
    // Places the controls between the margins and gives the height that they take.
    virtual int layout(int width) = 0;
    // px between the margins, before the screen limits it
    virtual int contentWidth() const { return scaled(440); }

    void add(OviAPI::WTypicalControl& control) { add(control, m_content); }
    void add(OviAPI::WTypicalControl& control, OviAPI::Container& parent);
    // Sizes the dialog for its texts and font anew, and keeps it on the screen.
    void arrange();
    // The dialog's font, made as much smaller as the text needs to fit, 6 points at least.
    OviAPI::Font fittedFont(const std::wstring& text, OviAPI::Size room) const;
    int textHeight() const;
    int fieldHeight() const { return textHeight() + 12; }
    // Room for text that takes so many px at the usual size, for the dialog's font.
    int scaled(int px) const;
    // What a button takes for its text, and a row of them.
    int buttonWidth(const OviAPI::WButton& button) const;
    int rowWidth(std::initializer_list<OviAPI::WButton*> buttons) const;
    // Of a text broken to a width.
    int wrappedHeight(const std::wstring& text, int width) const;
    // Places the buttons at the right end of a row whose top is given; the last one stands at the
    // right. The dialog becomes wider when there is no room for them. Returns the bottom of the
    // row.
    int layoutButtons(std::initializer_list<OviAPI::WButton*> buttons, int width, int top);

private:
    OviAPI::SlotResult onFormFontChanged(OviAPI::Object*, FontKind kind, OviAPI::Font font);
    OviAPI::Rect screen() const;

    OviAPI::WScrollView m_content;
    OviAPI::Rect m_screen; // empty: the screen's
    int m_missing = 0;     // px that the buttons need beside the width
};
