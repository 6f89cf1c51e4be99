// Says why there is no table to be seen, and what to do about it.
#pragma once

#include <string>

#include "app/extpanel.h"

class NoticePanel : public WExtPanel {
public:
    void setNotice(const std::wstring& heading, const std::wstring& hint);
    const std::wstring& heading() const { return m_heading; }
    const std::wstring& hint() const { return m_hint; }

    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    std::wstring m_heading;
    std::wstring m_hint;
};
