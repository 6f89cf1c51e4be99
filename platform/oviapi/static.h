// Labels.
#pragma once

#include <memory>
#include <string>

#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// A text that cannot be edited.
class OVIAPI_API WStatic : public virtual WTypicalControl {
public:
    // Style bits.
    enum StaticStyle : long {
        WordWrap = 2, // breaks lines to the width
        AlignRight = 16,
        AlignCenter = 32,
    };

    WStatic();
    ~WStatic() override;

    // Plain text; line breaks are kept. '&' marks the mnemonic as on buttons: it moves the focus to
    // the buddy, without one to the control beside or below it, else to the next one by Tab.
    void setText(const wchar_t* text);
    const std::wstring& text() const { return m_text; }
    // Copies at most size - 1 characters and ends them with a zero.
    void getText(wchar_t* buf, int size) const;

    // The control that this label names: the mnemonic moves the focus to it, and assistive
    // technology reads the text as its name. Without one, a control that needs a name takes it from
    // the label on its left, else from the one above it. Not owned; null for none.
    void setBuddy(WVisualObject* control);
    WVisualObject* buddy() const { return m_buddyLife.expired() ? nullptr : m_buddy; }

    // Paints the text at the top left of the label, from the top.
    bool doPaint(PaintDevice* device) override;

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    std::wstring m_text;
    WVisualObject* m_buddy = nullptr;
    std::weak_ptr<const void> m_buddyLife;
};

} // namespace OviAPI
