// Push buttons.
#pragma once

#include <string>

#include <oviapi/export.h>
#include <oviapi/picture.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

class WForm;

// Style bits: ButtonStyle; 6 at first, an ordinary button.
class OVIAPI_API WButton : public virtual WTypicalControl {
public:
    enum ButtonStyle : long {
        TabStop = 2,
        Visible = 4,
        Flat = 16,        // no frame
        PictureOnly = 32, // shows the picture without the text, as far as it has one
    };

    WButton();
    ~WButton() override;

    // The button has been pressed: by the mouse, Space, Enter, its mnemonic or assistive
    // technology.
    virtual bool onPush();

    // '&' marks the next character as the mnemonic, "&&" is an ampersand.
    void setText(const wchar_t* text);
    const std::wstring& text() const { return m_text; }

    // The pictures for the normal, pressed, hot (under the mouse) and disabled state. A null
    // pointer or a null picture stands for the normal one.
    void setPictures(const Picture* normal, const Picture* pressed, const Picture* hot,
                     const Picture* disabled);
    const Picture& picture() const { return m_pictures[0]; }

    // Whether this is the button that Enter presses in its form.
    bool isDefault() const { return m_defaultOf != nullptr; }

    // Acts exactly as a press by the user; does nothing while it is disabled or hidden.
    void push();

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    friend class WForm;

    void setDefaultOf(WForm* form);
    void applyTo(Native& native);
    void apply();

    std::wstring m_text;
    Picture m_pictures[4];
    WForm* m_defaultOf = nullptr;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WButton, onPush);
