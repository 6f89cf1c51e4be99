// Windows.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/container.h>
#include <oviapi/export.h>
#include <oviapi/picture.h>
#include <oviapi/wvisualobject.h>

namespace OviAPI {

class WButton;
class WMenu;

// What windows and areas like windows have in common: their signals and frame.
class OVIAPI_API Form : public virtual Container {
public:
    Form();
    ~Form() override;

    // The close box has been pressed. True closes: the window is hidden, and a modal loop that
    // still runs ends with 0. Default: true.
    virtual bool onClose();
    // maximized: false when the window leaves the maximized state.
    virtual bool onMaximize(bool maximized);
    virtual bool onMinimize();
    virtual bool onRestore();

    // The client area's upper left corner in the coordinates in which children are placed, and the
    // form's own. Equal where the frame lies outside these coordinates, as that of a window does.
    virtual Point clientOrigin() const { return {}; }
    virtual Point formOffset() const { return {}; }
};

// A top-level window. Style bits: FormStyle. The parent, if any, is another form: this one stays
// above it and is not one of its children.
class OVIAPI_API WForm : public virtual WVisualObject, public virtual Form {
public:
    enum FormStyle : long {
        SizingBorder = 2,
        MinimizeButton = 8,
        MaximizeButton = 16,
        DialogFrame = 32, // the frame of a dialog; the close box is always there
    };

    // Style SizingBorder, MinimizeButton and MaximizeButton.
    WForm();
    ~WForm() override;

    bool create() override;
    void show(bool visible) override;
    void setParent(Container* parent) override;

    void setTitle(const wchar_t* title);
    // The second text, when there is one, follows in the title: "title - second".
    void setTitle(const wchar_t* title, const wchar_t* second);
    const std::wstring& title() const { return m_title; }

    // A null picture takes the icon away. largeIcon is used where the desktop shows one.
    void setIcons(const Picture* smallIcon, const Picture* largeIcon);

    void maximize();
    void minimize();
    void restore();
    bool isMaximized() const;
    bool isMinimized() const;
    // The place and size of the window while it is neither maximized nor minimized.
    Rect normalGeometry() const;

    // Shows the form above everything, blocks the other forms, handles events until exitModal is
    // called or the form is closed or destroyed, hides it and returns the result. Creates the form
    // when that has not been done; 0 when it cannot be created or is modal already. Forms may be
    // modal inside each other: an outer one that is to end does so when the inner ones have.
    int execModal();
    // Ends the modal loop; does nothing without one. The first result counts. A text becomes the
    // value modalText returns, and the result 1, or 0 for null.
    void exitModal(int result);
    void exitModal(const wchar_t* result);
    bool isModal() const { return m_modal != nullptr; }
    const std::wstring& modalText() const { return m_modalText; }
    // The modal form on top; null when none is modal.
    static WForm* topModal();

    // Acts exactly as the close box does. True when the form has been closed.
    bool close();

    // Pressed by Enter when the object with the focus has no use for that key: an editor of several
    // lines has. While another button has the focus, Enter presses that one, and it looks like the
    // default button. Not owned.
    void setDefaultButton(WButton* button);
    WButton* defaultButton() const { return m_defaultButton; }

    // Tab goes through these in this order; those that have no native part are left out. All others
    // stand in the order in which they were created.
    void setTabOrder(const std::vector<WVisualObject*>& controls);

    // Shows the menu as the form's menu bar; null takes it away. Not owned.
    void setMenu(WMenu* menu);
    WMenu* menu() const { return m_menu; }

    struct FormNative; // for the framework's own code

protected:
    std::unique_ptr<Native> makeNative() override;
    bool isChild() const override { return false; }
    // Whether the window belongs to its parent like a dialog: no entry of its own in the task bar.
    virtual bool isDialog() const { return false; }

private:
    friend class WButton;
    friend class WMenu;
    struct ModalLoop;

    void nativeGoes() override;
    void applyTitle();
    void endModal(int result);

    std::wstring m_title;
    std::wstring m_modalText;
    Picture m_smallIcon;
    Picture m_largeIcon;
    WButton* m_defaultButton = nullptr;
    WMenu* m_menu = nullptr;
    ModalLoop* m_modal = nullptr;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::Form, onClose);
OVIAPI_SIGNAL(OviAPI::Form, onMaximize);
OVIAPI_SIGNAL(OviAPI::Form, onMinimize);
OVIAPI_SIGNAL(OviAPI::Form, onRestore);
