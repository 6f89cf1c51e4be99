// A titled panel with a small button in its lower right corner.
#pragma once

#include <oviapi/button.h>

#include "panels/titledpanel.h"

// What the button does is the application's: connect OviAPI::WButton::onPush of button(). A picture
// has no text: give the button an accessible name and a tool tip as well.
class OVIEXT_API HideableTitledPanel : public TitledPanel {
public:
    // The picture stands for every state of the button; without it the button is empty.
    HideableTitledPanel(OviAPI::ResourceManager* rm, int pictureId);
    ~HideableTitledPanel() override;

    bool create() override;
    bool move(int x, int y, int w, int h) override;

    OviAPI::WButton& button() { return hideButton; }

protected:
    int32_t pictureId;
    OviAPI::WButton hideButton;
};
