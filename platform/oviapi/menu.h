// Menus.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/object.h>

namespace OviAPI {

class WForm;
class WMenu;
class WVisualObject;

// A line of a menu: a text to click, a sub-menu when it has items of its own, or a separator.
// Belongs to its menu.
class OVIAPI_API WMenuItem : public virtual Object {
public:
    ~WMenuItem() override;

    // The user has chosen the item. It may delete the menu.
    virtual bool onClick();

    const std::wstring& text() const { return m_text; }
    bool isChecked() const { return m_checked; }
    bool isEnabled() const { return m_enabled; }
    bool isSeparator() const { return m_separator; }
    const std::vector<std::unique_ptr<WMenuItem>>& items() const { return m_items; }

private:
    friend class WMenu;
    struct Native;
    WMenuItem(WMenu& menu, WMenuItem* above);

    WMenu& m_menu;
    WMenuItem* m_above; // null at the top level
    std::wstring m_text;
    std::wstring m_shortcut;
    std::vector<std::unique_ptr<WMenuItem>> m_items;
    std::unique_ptr<Native> m_native;
    bool m_checked = false;
    bool m_enabled = true;
    bool m_separator = false;
};

// A popup menu, or the menu bar of the form it is set for. Owns its items. Can be filled before the
// application is started.
class OVIAPI_API WMenu : public virtual Object {
public:
    WMenu();
    ~WMenu() override;

    // Adds a line at the end of the top level (above null) or of the item's sub-menu. '&' marks the
    // mnemonic as on buttons.
    WMenuItem* insertItem(WMenuItem* above, const wchar_t* text, bool enabled = true);
    WMenuItem* insertSeparator(WMenuItem* above);
    void removeItem(WMenuItem* item);
    void clear();

    void setItem(WMenuItem* item, const wchar_t* text);
    void check(WMenuItem* item, bool checked);
    void enable(WMenuItem* item, bool enabled);
    // Keys that choose the item from anywhere in the form, as a text: "Ctrl+O". For menu bars.
    void setShortcut(WMenuItem* item, const wchar_t* keys);

    const std::vector<std::unique_ptr<WMenuItem>>& items() const { return m_items; }

    // Opens the menu at a point of the object's client area and handles events until it is closed.
    // Returns the item that was chosen, after its onClick has run; null when the menu was dismissed
    // or the item is gone.
    WMenuItem* trackPopupMenu(WVisualObject& object, int x, int y);
    // Closes the popup, if it is open.
    void dismiss();

private:
    friend class WForm;
    friend class WMenuItem;
    friend struct MenuAccess;
    struct Native;

    WMenuItem* insert(WMenuItem* above);
    void itemAdded(WMenuItem& item);
    void refreshBar();
    void update(WMenuItem& item);
    void build();
    void buildItem(WMenuItem& item);

    std::vector<std::unique_ptr<WMenuItem>> m_items;
    std::unique_ptr<Native> m_native;
    WForm* m_form = nullptr; // whose menu bar this is
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WMenuItem, onClick);
