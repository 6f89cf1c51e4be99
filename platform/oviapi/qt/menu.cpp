#include <oviapi/menu.h>

#include <algorithm>

#include <QEventLoop>
#include <QMenu>
#include <QPointer>

#include <oviapi/form.h>
#include <oviapi/wvisualobject.h>

#include "convert.h"
#include "formnative.h"
#include "menunative.h"
#include "native.h"
#include "toolkit.h"

namespace OviAPI {

// A popup that is open.
struct Tracking {
    QEventLoop loop;
    WMenuItem* chosen = nullptr;
    bool menuDied = false;
};

struct WMenuItem::Native {
    QObject context; // ends the connection to the action
    QPointer<QAction> action;
    QPointer<QMenu> sub;

    ~Native()
    {
        if (sub)
            discardWidget(sub);
        if (action)
            action->deleteLater();
    }
};

struct WMenu::Native {
    QPointer<QMenu> root;
    Tracking* tracking = nullptr;

    ~Native()
    {
        if (tracking) {
            tracking->menuDied = true;
            tracking->loop.quit();
        }
        if (root)
            discardWidget(root);
    }
};

QList<QAction*> MenuAccess::actions(WMenu& menu)
{
    menu.build();
    return menu.m_native->root ? menu.m_native->root->actions() : QList<QAction*>();
}

WMenuItem::WMenuItem(WMenu& menu, WMenuItem* above)
    : m_menu(menu)
    , m_above(above)
{
}

WMenuItem::~WMenuItem()
{
    if (m_menu.m_native && m_menu.m_native->tracking && m_menu.m_native->tracking->chosen == this)
        m_menu.m_native->tracking->chosen = nullptr;
}

bool WMenuItem::onClick()
{
    return false;
}

WMenu::WMenu()
    : m_native(std::make_unique<Native>())
{
}

WMenu::~WMenu()
{
    if (m_form)
        m_form->setMenu(nullptr);
    m_items.clear();
}

WMenuItem* WMenu::insert(WMenuItem* above)
{
    auto& list = above ? above->m_items : m_items;
    list.push_back(std::unique_ptr<WMenuItem>(new WMenuItem(*this, above)));
    return list.back().get();
}

WMenuItem* WMenu::insertItem(WMenuItem* above, const wchar_t* text, bool enabled)
{
    WMenuItem* item = insert(above);
    item->m_text = text ? text : L"";
    item->m_enabled = enabled;
    itemAdded(*item);
    return item;
}

WMenuItem* WMenu::insertSeparator(WMenuItem* above)
{
    WMenuItem* item = insert(above);
    item->m_separator = true;
    itemAdded(*item);
    return item;
}

void WMenu::itemAdded(WMenuItem& item)
{
    if (m_native->root)
        buildItem(item);
    refreshBar();
}

void WMenu::refreshBar()
{
    if (m_form && m_form->native())
        static_cast<WForm::FormNative*>(m_form->native())->fillBar();
}

void WMenu::removeItem(WMenuItem* item)
{
    if (!item || &item->m_menu != this)
        return;
    auto& list = item->m_above ? item->m_above->m_items : m_items;
    std::erase_if(list, [item](const auto& each) { return each.get() == item; });
    refreshBar();
}

void WMenu::clear()
{
    m_items.clear();
    refreshBar();
}

void WMenu::setItem(WMenuItem* item, const wchar_t* text)
{
    item->m_text = text ? text : L"";
    update(*item);
}

void WMenu::check(WMenuItem* item, bool checked)
{
    item->m_checked = checked;
    update(*item);
}

void WMenu::enable(WMenuItem* item, bool enabled)
{
    item->m_enabled = enabled;
    update(*item);
}

void WMenu::setShortcut(WMenuItem* item, const wchar_t* keys)
{
    item->m_shortcut = keys ? keys : L"";
    update(*item);
}

void WMenu::update(WMenuItem& item)
{
    QAction* action = item.m_native ? item.m_native->action.data() : nullptr;
    if (!action)
        return;
    action->setText(toQString(item.m_text));
    action->setSeparator(item.m_separator);
    action->setEnabled(item.m_enabled);
    action->setCheckable(item.m_checked);
    action->setChecked(item.m_checked);
    action->setShortcut(QKeySequence(toQString(item.m_shortcut)));
}

void WMenu::build()
{
    if (m_native->root || !Toolkit::current())
        return;
    m_native->root = new QMenu; // destroyed by Native, or by the toolkit when it ends
    Toolkit::current()->adopt(m_native->root);
    for (const auto& item : m_items)
        buildItem(*item);
}

void WMenu::buildItem(WMenuItem& item)
{
    QMenu* menu = m_native->root;
    if (item.m_above) {
        auto& above = *item.m_above->m_native;
        if (!above.sub) {
            above.sub = new QMenu(m_native->root); // owned by the root
            above.action->setMenu(above.sub);
        }
        menu = above.sub;
    }
    item.m_native = std::make_unique<WMenuItem::Native>();
    item.m_native->action = menu->addAction(QString());
    update(item);
    QObject::connect(item.m_native->action, &QAction::triggered, &item.m_native->context,
                     [this, &item] {
                         update(item); // the toolkit has toggled the check mark
                         if (m_native->tracking)
                             m_native->tracking->chosen = &item;
                         barrier([&] { dispatch<&WMenuItem::onClick>(item); });
                     });
    for (const auto& below : item.m_items)
        buildItem(*below);
}

WMenuItem* WMenu::trackPopupMenu(WVisualObject& object, int x, int y)
{
    build();
    QMenu* root = m_native->root;
    if (!root || !object.isCreated() || m_native->tracking || root->isEmpty())
        return nullptr;
    const Point at = object.toScreen({x, y});
    Tracking tracking;
    m_native->tracking = &tracking;
    LocalLoop local([&] { tracking.loop.quit(); });
    // An item is chosen after the menu was hidden, in the same event.
    QObject::connect(root, &QMenu::aboutToHide, &tracking.loop, &QEventLoop::quit);
    root->popup(toQPoint(at));
    if (!local.failed() && root->isVisible())
        tracking.loop.exec();
    if (!tracking.menuDied) {
        m_native->tracking = nullptr;
        root->hide();
    }
    local.rethrow();
    return tracking.chosen;
}

void WMenu::dismiss()
{
    if (m_native->root)
        m_native->root->hide();
}

} // namespace OviAPI
