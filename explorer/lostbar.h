// Says that the connection to the database is lost.
#pragma once

#include <oviapi/button.h>
#include <oviapi/static.h>

#include "app/extpanel.h"

// A strip with a text and a button.
class LostBar : public WExtPanel {
public:
    LostBar();

    bool create() override;
    // The user wants to connect again.
    virtual bool onReconnect();

    OviAPI::WButton& button() { return m_button; }
    const std::wstring& text() const { return m_text.text(); }
    // Pixels that the strip needs in its font.
    int wantedHeight() const;
    void loadTexts();

    bool onSize() override;
    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    OviAPI::SlotResult onPush(OviAPI::Object*);
    void layOut();

    OviAPI::WStatic m_text;
    OviAPI::WButton m_button;
};

OVIAPI_SIGNAL(LostBar, onReconnect);
