// Check boxes.
#pragma once

#include <string>

#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

class OVIAPI_API WCheckBox : public virtual WTypicalControl {
public:
    WCheckBox();
    ~WCheckBox() override;

    // The user has ticked or unticked the box. setChecked does not call it.
    virtual bool onCheck();

    // '&' marks the mnemonic as on buttons.
    void setText(const wchar_t* text);
    const std::wstring& text() const { return m_text; }

    void setChecked(bool checked);
    bool isChecked() const { return m_checked; }

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    std::wstring m_text;
    bool m_checked = false;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WCheckBox, onCheck);
