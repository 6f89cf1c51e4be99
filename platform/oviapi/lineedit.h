// Edit fields of one line.
#pragma once

#include <string>

#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// Positions count characters from 0. Line breaks in a text are shown as spaces.
class OVIAPI_API WLineEdit : public virtual WTypicalControl {
public:
    WLineEdit();
    ~WLineEdit() override;

    // The text has changed, by the user or by setText.
    virtual bool onTextChanged();

    void setText(const wchar_t* text);
    std::wstring text() const;
    // Copies at most size - 1 characters and ends them with a zero.
    void getText(wchar_t* buf, int size) const;

    // At most this many characters can be typed or pasted; 32,767 at first.
    void setMaxLength(int characters);
    int maxLength() const { return m_maxLength; }
    void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }
    // Shows dots in the place of characters, and keeps the text off the clipboard.
    void setPassword(bool password);

    // Takes the selection away.
    void setCaret(int position);
    int caret() const;
    void setCaretToEnd();
    // A length below 0 selects to the end.
    void select(int start, int length);
    std::wstring selectedText() const;

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    void nativeGoes() override;

    std::wstring m_text; // while there is no native part
    int m_maxLength = 32767;
    bool m_readOnly = false;
    bool m_password = false;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WLineEdit, onTextChanged);
