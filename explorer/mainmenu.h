// The menu bar of the main window.
#pragma once

#include <vector>

#include <oviapi/menu.h>

#include "explorer/command.h"

class MainMenu : public OviAPI::Object {
public:
    MainMenu();

    // An item has been chosen.
    virtual bool onCommand(Command command);

    OviAPI::WMenu& menu() { return m_menu; }
    // Gives every item its text in the present language.
    void loadTexts();
    // Of the item of a command, with the mark of its mnemonic.
    std::wstring caption(Command command) const;
    // The keys that a command has at first; null for none.
    static const wchar_t* shortcut(Command command);
    // Gives the item of a command other keys; empty for none.
    void setShortcut(Command command, const wchar_t* keys);
    void enable(Command command, bool enabled);
    void check(Command command, bool checked);

private:
    struct Item {
        Command command;
        int textId;
        OviAPI::WMenuItem* item;
        const wchar_t* keysOfView; // null for none
    };

    OviAPI::WMenuItem* itemOf(Command command) const;

    OviAPI::WMenu m_menu;
    std::vector<Item> m_items;
};

OVIAPI_SIGNAL(MainMenu, onCommand);
