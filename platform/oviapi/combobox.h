// Drop-down lists, with or without a field to type in.
#pragma once

#include <string>

#include <oviapi/export.h>
#include <oviapi/listbox.h>

namespace OviAPI {

// Shows the current line; the others drop down. Alt+Down and F4 open and close the list, Escape
// closes it and nothing else, typing chooses the next line that begins so.
//
// An editable one has a field besides. When its text changes, the first line with exactly this text
// becomes the current one, none when there is none; setCurrentLine(-1) leaves the text as it is.
// Every key goes to onKeyDown before the control or its field uses it.
class OVIAPI_API WComboBox : public virtual WLineList {
public:
    enum ComboStyle : long {
        Editable = 2, // read by create()
        NoFrame = 64, // for a combo box inside another control
    };

    WComboBox();
    ~WComboBox() override;

    // Another line has become the current one: chosen, typed or set.
    virtual bool onSelChanged();
    // The text in the field of an editable one has changed, by the user or by a call.
    virtual bool onTextChanged();
    // The list is about to drop down: the moment to fill it. True keeps it closed.
    virtual bool onDropDown();

    // The text that is shown: that of the field, else of the current line.
    std::wstring text() const;
    // Editable: any text. Else chooses the first line with this text, none when there is none.
    void setText(const wchar_t* text);
    // -1 when there is none.
    int findText(const wchar_t* text) const;
    // At most this many characters can be typed or pasted; 32,767 at first.
    void setMaxLength(int characters);
    int maxLength() const { return m_maxLength; }
    void selectAll();

    void setDropped(bool dropped);
    bool isDropped() const;

protected:
    std::unique_ptr<Native> makeNative() override;
    void insertNative(int line) override;
    void removeNative(int line) override;
    void setNativeText(int line) override;
    void setNativeCurrent(int line) override;

private:
    struct ComboNative;

    bool isEditable() const { return (style() & Editable) != 0; }
    void currentChanged() override;
    void nativeGoes() override;
    // The user has changed the text of the field.
    void fieldChanged(const std::wstring& text);

    std::wstring m_text;        // of the field
    bool m_textChanged = false; // and onTextChanged has not been told of it
    int m_maxLength = 32767;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WComboBox, onSelChanged);
OVIAPI_SIGNAL(OviAPI::WComboBox, onTextChanged);
OVIAPI_SIGNAL(OviAPI::WComboBox, onDropDown);
