// Pages behind each other, chosen by their tabs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/container.h>
#include <oviapi/export.h>
#include <oviapi/picture.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// Tabs are numbered from 0. The page of a tab is a child of the control, usually a panel: it fills
// the client area and is shown while its tab is the current one. A tab may do without a page and
// leave showing and hiding to the signals. Owns no page. Numbers out of range do nothing.
//
// The keyboard: arrows, Home and End on the tabs, Ctrl+Tab, Ctrl+Shift+Tab, Ctrl+Page Down and
// Ctrl+Page Up from anywhere inside, mnemonics, Ctrl+F4 and Ctrl+W where tabs have close boxes.
class OVIAPI_API WTabControl : public virtual WTypicalControl, public virtual Container {
public:
    // Style bits; none at first.
    enum TabStyle : long {
        Bottom = 16,     // the tabs stand below the pages
        CloseBoxes = 32, // on every tab
    };

    WTabControl();
    ~WTabControl() override;

    // The user wants another tab. from: -1 when there is none. True: it stays as it is.
    virtual bool onTabChanging(int from, int to);
    // The user has chosen another tab; its page is shown. setCurrentTab does not call it.
    virtual bool onTabChanged(int tab);
    // The close box of a tab has been pressed. The default handling leaves the tab there.
    virtual bool onTabClose(int tab);

    // Inserts before the tab with this number; -1 appends. Returns the number of the new tab. '&'
    // marks the mnemonic as on buttons. The page becomes a child of the control; null for none. The
    // first tab becomes the current one; the current one stays it under its new number.
    int insertTab(const wchar_t* caption, WVisualObject* page = nullptr,
                  const Picture* picture = nullptr, int before = -1);
    int addTab(const wchar_t* caption, WVisualObject* page = nullptr,
               const Picture* picture = nullptr)
    {
        return insertTab(caption, page, picture);
    }
    // Hides the page and takes it out of the control. When the current tab goes, the one behind it
    // becomes the current one, else the one before it; no signal tells so.
    void removeTab(int tab);
    void clear();
    // The tab gets the number to; the ones between make room.
    void moveTab(int tab, int to);
    int tabCount() const { return static_cast<int>(m_tabs.size()); }

    // Empty text and null for numbers out of range.
    std::wstring caption(int tab) const;
    void setCaption(int tab, const wchar_t* caption);
    // Null takes it away.
    void setPicture(int tab, const Picture* picture);
    // The page, null when there is none or it has been destroyed.
    WVisualObject* page(int tab) const;
    // -1 when there is none.
    int findPage(const WVisualObject* page) const;
    // A disabled tab cannot be chosen by the user; the current one stays the current one.
    void enableTab(int tab, bool enabled);
    bool isTabEnabled(int tab) const;
    // Plain text; without one, a caption that is cut shows itself.
    void setTabToolTip(int tab, const wchar_t* text);

    // -1 when there is no tab.
    int currentTab() const { return m_current; }
    void setCurrentTab(int tab);
    WVisualObject* currentPage() const { return page(m_current); }

    // The number of the tab at a point; -1 when there is none. In pixels of the client area, above
    // or below which the tabs lie.
    int tabAt(int x, int y) const;
    // In the same coordinates; empty before it is created and out of range.
    Rect tabRect(int tab) const;

    struct TabNative; // for the framework's own code

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    struct Tab {
        std::wstring caption;
        std::wstring toolTip;
        Picture picture;
        WVisualObject* page = nullptr;
        std::weak_ptr<const void> pageLife;
        bool enabled = true;
    };

    void childrenChanged() override;
    bool inRange(int tab) const { return tab >= 0 && tab < tabCount(); }
    TabNative* tabNative() const;
    void placePages();
    void applyTab(int tab);
    void applyTo(TabNative& shown, int tab) const;
    void becomeCurrent(int tab);
    // Called by the native part.
    void userChose(int tab);
    void userCloses(int tab);
    bool userSteps(int step);

    std::vector<Tab> m_tabs;
    int m_current = -1;
    bool m_placing = false;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WTabControl, onTabChanging);
OVIAPI_SIGNAL(OviAPI::WTabControl, onTabChanged);
OVIAPI_SIGNAL(OviAPI::WTabControl, onTabClose);
