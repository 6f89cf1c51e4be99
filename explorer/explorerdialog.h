// The base of the explorer's dialogs: sizes that follow the font, buttons along the bottom.
#pragma once

#include <initializer_list>
#include <string>

#include <oviapi/button.h>
#include <oviapi/static.h>

#include "app/extdialog.h"
#include "explorer/textlookup.h"

// A dialog gives its texts in loadTexts and places its controls in layout; both are called again
// when the language changes. Owned by the code that runs it.
class ExplorerDialog : public WExtDialog {
public:
    // above: the window the dialog belongs to.
    explicit ExplorerDialog(WExtForm& above);

    // Makes the window and its controls, sized for its texts and placed over the window above.
    bool create() override;
    bool onClose() override;
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
    // px between the margins
    virtual int contentWidth() const { return 440; }

    void add(OviAPI::WTypicalControl& control);
    int textHeight() const;
    int fieldHeight() const { return textHeight() + 12; }
    // Of a text broken to a width.
    int wrappedHeight(const std::wstring& text, int width) const;
    // Places the buttons at the right end of a row whose top is given; the last one stands at the
    // right. Returns the bottom of the row.
    int layoutButtons(std::initializer_list<OviAPI::WButton*> buttons, int width, int top);

private:
    void arrange();
};
