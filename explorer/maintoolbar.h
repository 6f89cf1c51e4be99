// The tool bar of the main window.
#pragma once

#include <oviapi/resourcemanager.h>
#include <oviapi/toolbar.h>

#include "explorer/command.h"
#include "explorer/mainmenu.h"

// A button for each command that is needed most. Captions are read out and shown in the tool tips,
// with the keys that the menu has for the command.
class MainToolBar : public OviAPI::WToolBar {
public:
    // Point to nothing afterwards. resources: of the pictures; a button without one shows its
    // caption.
    MainToolBar(const OviAPI::ResourceManager* resources, const MainMenu& menu);

    // Gives every button its texts in the present language.
    void loadTexts(const MainMenu& menu);
    void enableCommand(Command command, bool enabled);
    void checkCommand(Command command, bool checked);
};
