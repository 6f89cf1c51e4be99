// Says something about what stands below, with the buttons that go with it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/button.h>
#include <oviapi/static.h>

#include "app/extpanel.h"

// A strip with a sentence and a few buttons behind it.
class ActionBar : public WExtPanel {
public:
    explicit ActionBar(int buttons = 1);

    bool create() override;
    // A button has been pressed. button: from 0.
    virtual bool onAction(int button);

    // captions: of the buttons, in their order; an empty one hides its button.
    void setTexts(const std::wstring& sentence, const std::vector<std::wstring>& captions);
    const std::wstring& text() const { return m_text.text(); }
    OviAPI::WButton& button(int number = 0) { return *m_buttons[static_cast<size_t>(number)]; }
    // Pixels that the strip needs in its font at this width.
    int wantedHeight(int width) const;

    bool onSize() override;
    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    int buttonsWidth() const;
    int textLines(int room) const;
    void layOut();

    OviAPI::WStatic m_text;
    std::vector<std::unique_ptr<OviAPI::WButton>> m_buttons;
};

OVIAPI_SIGNAL(ActionBar, onAction);
