// Bars of buttons.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/picture.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

class WMenu;

// A row of buttons, each of which stands for a command of the application. Buttons that do not fit
// move into a menu at its right end. As a child of a form it lies below the menu bar, over the
// whole width, and the form's client area begins below it; several lie below each other in the
// order of their creation. As a child of anything else it is placed by move.
//
// It takes part in the order of Tab with one button; the arrows, Home and End lead to the others,
// Space and Enter press, Down opens a drop-down menu. The mouse leaves the focus where it is.
class OVIAPI_API WToolBar : public virtual WTypicalControl {
public:
    // Style bits; none at first.
    enum ToolBarStyle : long {
        Captions = 16,      // stand beside the pictures
        CaptionsBelow = 32, // stand below the pictures
    };

    WToolBar();
    ~WToolBar() override;

    // A button with this command has been pressed.
    virtual bool onCommand(int command);
    // A drop-down menu is about to be opened: the place to check and enable its items.
    virtual bool onDropDown(int command);

    // Appends a button. The caption names it where it is not shown; '&' in it is a mnemonic and not
    // shown. Without a picture (null) the caption is shown. Several buttons may have one command.
    void addButton(int command, const Picture* picture, const wchar_t* caption);
    void addSeparator();
    // Takes all buttons and separators away.
    void clear();
    // Without separators.
    int buttonCount() const;

    // Each concerns every button with this command; others are left alone.
    void setPicture(int command, const Picture* picture);
    void setCaption(int command, const wchar_t* caption);
    // Plain text, without one the caption. shortcut: keys shown behind it, such as "Ctrl+O"; they
    // work through the menu item that has them.
    void setButtonToolTip(int command, const wchar_t* text, const wchar_t* shortcut = nullptr);
    void enableButton(int command, bool enabled);
    bool isButtonEnabled(int command) const;
    // Stays pressed while it is checked. Pressing does not change it.
    void checkButton(int command, bool checked);
    bool isButtonChecked(int command) const;
    // An arrow beside the button opens the menu; null takes it away. Not owned: it outlives the
    // button, or is taken away before.
    void setDropDown(int command, WMenu* menu);

    // In pixels, 16 at first. Larger pictures are shown at this size, smaller ones at their own.
    void setPictureSize(int size);
    int pictureSize() const { return m_pictureSize; }

    // The height that shows everything; 0 before it is created.
    int preferredHeight() const;
    // Where the first button with this command is; empty while it is in the overflow menu.
    Rect buttonRect(int command) const;

    bool create() override;
    bool doMove(int x, int y, int width, int height) override;
    void setParent(Container* parent) override;

    struct ToolNative; // for the framework's own code

protected:
    std::unique_ptr<Native> makeNative() override;
    void nativeGoes() override;

private:
    struct Button {
        int command = 0;
        bool separator = false;
        bool enabled = true;
        bool checked = false;
        Picture picture;
        std::wstring caption;
        std::wstring toolTip;
        std::wstring shortcut;
        WMenu* menu = nullptr;
    };

    ToolNative* toolNative() const;
    void append(Button button);
    // -1 when there is none.
    int find(int command) const;
    template<class F>
    void change(int command, F&& apply);
    // Called by the native part.
    void userPressed(size_t button);
    void userOpens(size_t button);

    std::vector<Button> m_buttons;
    int m_pictureSize = 16;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WToolBar, onCommand);
OVIAPI_SIGNAL(OviAPI::WToolBar, onDropDown);
