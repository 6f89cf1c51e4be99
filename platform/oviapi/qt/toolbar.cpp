#include <oviapi/toolbar.h>

#include <algorithm>

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

#include <oviapi/celldisplay.h>

#include "convert.h"
#include "dockedbar.h"
#include "menunative.h"
#include "plaintext.h"

namespace OviAPI {

namespace {

constexpr int widestCaption = 200; // px; longer ones are cut

Qt::ToolButtonStyle buttonStyle(long style)
{
    if (style & WToolBar::CaptionsBelow)
        return Qt::ToolButtonTextUnderIcon;
    return style & WToolBar::Captions ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonIconOnly;
}

} // namespace

struct WToolBar::ToolNative : public BarNative {
    ToolNative(WToolBar& tools, std::unique_ptr<QToolBar> made)
        : BarNative(tools, std::move(made))
        , bar(as<QToolBar>())
        , m_tools(tools)
    {
        bar->setMovable(false);
        bar->setFloatable(false);
        bar->setContextMenuPolicy(Qt::PreventContextMenu);
        bar->setToolButtonStyle(buttonStyle(tools.style()));
        for (QToolButton* overflow : bar->findChildren<QToolButton*>()) { // there is one
            overflow->installEventFilter(this);
            overflow->setArrowType(Qt::RightArrow); // the toolkit's picture is black on dark
            overflow->setAccessibleName(QString(QChar(0x2026)));
        }
    }

    void add(size_t number)
    {
        const Button& from = m_tools.m_buttons[number];
        QAction* action = from.separator ? bar->addSeparator() : bar->addAction(QString());
        actions.push_back(action);
        if (from.separator)
            return;
        QObject::connect(action, &QAction::triggered, this, [this, number] {
            if (number >= m_tools.m_buttons.size())
                return;
            update(number); // the toolkit has toggled the check mark
            barrier([this, number] { m_tools.userPressed(number); });
        });
        bar->widgetForAction(action)->installEventFilter(this);
        update(number);
    }

    void update(size_t number)
    {
        const Button& from = m_tools.m_buttons[number];
        QAction* action = actions[number];
        const QString caption = toQString(shownLine(from.caption));
        action->setText(caption);
        action->setIconText(
            bar->fontMetrics().elidedText(withoutMnemonic(caption), Qt::ElideRight, widestCaption));
        action->setIcon(toQIcon(from.picture));
        action->setCheckable(from.checked);
        action->setChecked(from.checked);
        action->setEnabled(from.enabled);
        action->setToolTip(hint(from));
        auto* button = static_cast<QToolButton*>(bar->widgetForAction(action));
        button->setAccessibleName(withoutMnemonic(caption));
        if ((from.menu != nullptr) != (action->menu() != nullptr))
            setMenu(*action, number, from.menu != nullptr);
        chooseStop();
    }

    void clear()
    {
        for (QAction* action : actions) {
            bar->removeAction(action);
            action->deleteLater(); // it may be the one that is being pressed
        }
        actions.clear();
    }

    // The arrows lead from one to the next.
    std::vector<QToolButton*> reachable() const
    {
        std::vector<QToolButton*> buttons;
        for (QToolButton* button : bar->findChildren<QToolButton*>(Qt::FindDirectChildrenOnly)) {
            if (!button->isHidden() && button->isEnabledTo(bar))
                buttons.push_back(button);
        }
        std::sort(buttons.begin(), buttons.end(),
                  [](const QWidget* a, const QWidget* b) { return a->x() < b->x(); });
        return buttons;
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* button = qobject_cast<QToolButton*>(object);
        if (!button || object == widget)
            return BarNative::eventFilter(object, event);
        switch (event->type()) {
        case QEvent::KeyPress:
            return moveFocus(*button, *static_cast<QKeyEvent*>(event));
        case QEvent::FocusIn:
            m_stop = button;
            chooseStop();
            return false;
        case QEvent::Show:
        case QEvent::Hide:
            chooseStop();
            return false;
        default:
            return false;
        }
    }

    QToolBar* bar;
    std::vector<QAction*> actions; // of the buttons and separators, in their order

private:
    static QString hint(const Button& from)
    {
        QString text = toQString(from.toolTip);
        if (text.isEmpty())
            text = withoutMnemonic(toQString(from.caption));
        if (!from.shortcut.empty())
            text += " (" + toQString(from.shortcut) + ")";
        return plainToolTip(text.left(maxShownChars));
    }

    void setMenu(QAction& action, size_t number, bool wanted)
    {
        QMenu* menu = action.menu();
        if (wanted) {
            menu = new QMenu(bar); // owned by the bar
            QObject::connect(menu, &QMenu::aboutToShow, this,
                             [this, menu, number] { fillMenu(*menu, number); });
            action.setMenu(menu);
            static_cast<QToolButton*>(bar->widgetForAction(&action))
                ->setPopupMode(QToolButton::MenuButtonPopup);
        } else {
            action.setMenu(static_cast<QMenu*>(nullptr));
            menu->deleteLater(); // it may be open
        }
    }

    void fillMenu(QMenu& menu, size_t number)
    {
        const QPointer<QMenu> alive(&menu);
        const QPointer<Native> self(this);
        barrier([this, number] { m_tools.userOpens(number); });
        if (!alive || !self)
            return;
        menu.clear();
        if (number < m_tools.m_buttons.size() && m_tools.m_buttons[number].menu)
            menu.addActions(MenuAccess::actions(*m_tools.m_buttons[number].menu));
    }

    // One button takes part in the order of Tab: the one that had the focus last.
    void chooseStop()
    {
        const std::vector<QToolButton*> buttons = reachable();
        if (std::find(buttons.begin(), buttons.end(), m_stop) == buttons.end())
            m_stop = buttons.empty() ? nullptr : buttons.front();
        for (QToolButton* button : buttons)
            button->setFocusPolicy(button == m_stop ? Qt::TabFocus : Qt::NoFocus);
    }

    bool moveFocus(QToolButton& from, const QKeyEvent& event)
    {
        const std::vector<QToolButton*> buttons = reachable();
        const auto at = std::find(buttons.begin(), buttons.end(), &from);
        if (at == buttons.end() || (event.modifiers() & ~Qt::KeypadModifier))
            return false;
        const bool reversed = bar->isRightToLeft();
        auto to = at;
        switch (event.key()) {
        case Qt::Key_Left:
        case Qt::Key_Right:
            if ((event.key() == Qt::Key_Right) != reversed)
                to = at + 1 == buttons.end() ? at : at + 1;
            else
                to = at == buttons.begin() ? at : at - 1;
            break;
        case Qt::Key_Home:
            to = buttons.begin();
            break;
        case Qt::Key_End:
            to = buttons.end() - 1;
            break;
        case Qt::Key_Down:
            from.showMenu(); // if it has one
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            from.click();
            return true;
        default:
            return false;
        }
        (*to)->setFocus(Qt::OtherFocusReason);
        return true;
    }

    WToolBar& m_tools;
    QPointer<QToolButton> m_stop;
};

WToolBar::WToolBar() = default;

WToolBar::~WToolBar()
{
    destroy(); // it takes itself out of the form
}

bool WToolBar::onCommand(int)
{
    return false;
}
bool WToolBar::onDropDown(int)
{
    return false;
}

WToolBar::ToolNative* WToolBar::toolNative() const
{
    return static_cast<ToolNative*>(native());
}

std::unique_ptr<Native> WToolBar::makeNative()
{
    auto made = std::make_unique<ToolNative>(*this, std::make_unique<QToolBar>());
    made->bar->setIconSize(QSize(m_pictureSize, m_pictureSize));
    for (size_t i = 0; i < m_buttons.size(); ++i)
        made->add(i);
    return made;
}

bool WToolBar::create()
{
    if (isCreated())
        return true;
    if (!WTypicalControl::create())
        return false;
    toolNative()->dock(BarNative::Upper);
    return true;
}

void WToolBar::nativeGoes()
{
    toolNative()->undock();
}

void WToolBar::setParent(Container* parent)
{
    if (parent == this->parent())
        return;
    if (native())
        toolNative()->undock();
    WTypicalControl::setParent(parent);
    if (native())
        toolNative()->dock(BarNative::Upper);
}

bool WToolBar::doMove(int x, int y, int width, int height)
{
    if (native() && toolNative()->isDocked())
        return false;
    return WTypicalControl::doMove(x, y, width, height);
}

void WToolBar::append(Button button)
{
    m_buttons.push_back(std::move(button));
    if (ToolNative* shown = toolNative())
        shown->add(m_buttons.size() - 1);
}

void WToolBar::addButton(int command, const Picture* picture, const wchar_t* caption)
{
    Button button;
    button.command = command;
    button.caption = caption ? caption : L"";
    if (picture)
        button.picture = *picture;
    append(std::move(button));
}

void WToolBar::addSeparator()
{
    Button button;
    button.separator = true;
    append(std::move(button));
}

void WToolBar::clear()
{
    m_buttons.clear();
    if (ToolNative* shown = toolNative())
        shown->clear();
}

int WToolBar::buttonCount() const
{
    return static_cast<int>(std::count_if(m_buttons.begin(), m_buttons.end(),
                                          [](const Button& each) { return !each.separator; }));
}

int WToolBar::find(int command) const
{
    const auto found =
        std::find_if(m_buttons.begin(), m_buttons.end(), [command](const Button& each) {
            return !each.separator && each.command == command;
        });
    return found == m_buttons.end() ? -1 : static_cast<int>(found - m_buttons.begin());
}

template<class F>
void WToolBar::change(int command, F&& apply)
{
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        if (m_buttons[i].separator || m_buttons[i].command != command)
            continue;
        apply(m_buttons[i]);
        if (ToolNative* shown = toolNative())
            shown->update(i);
    }
}

void WToolBar::setPicture(int command, const Picture* picture)
{
    change(command, [picture](Button& button) { button.picture = picture ? *picture : Picture(); });
}

void WToolBar::setCaption(int command, const wchar_t* caption)
{
    change(command, [caption](Button& button) { button.caption = caption ? caption : L""; });
}

void WToolBar::setButtonToolTip(int command, const wchar_t* text, const wchar_t* shortcut)
{
    change(command, [text, shortcut](Button& button) {
        button.toolTip = text ? text : L"";
        button.shortcut = shortcut ? shortcut : L"";
    });
}

void WToolBar::enableButton(int command, bool enabled)
{
    change(command, [enabled](Button& button) { button.enabled = enabled; });
}

bool WToolBar::isButtonEnabled(int command) const
{
    const int found = find(command);
    return found >= 0 && m_buttons[static_cast<size_t>(found)].enabled;
}

void WToolBar::checkButton(int command, bool checked)
{
    change(command, [checked](Button& button) { button.checked = checked; });
}

bool WToolBar::isButtonChecked(int command) const
{
    const int found = find(command);
    return found >= 0 && m_buttons[static_cast<size_t>(found)].checked;
}

void WToolBar::setDropDown(int command, WMenu* menu)
{
    change(command, [menu](Button& button) { button.menu = menu; });
}

void WToolBar::setPictureSize(int size)
{
    m_pictureSize = std::clamp(size, 8, 128);
    if (ToolNative* shown = toolNative())
        shown->bar->setIconSize(QSize(m_pictureSize, m_pictureSize));
}

int WToolBar::preferredHeight() const
{
    const ToolNative* shown = toolNative();
    return shown ? shown->bar->sizeHint().height() : 0;
}

Rect WToolBar::buttonRect(int command) const
{
    const int found = find(command);
    const ToolNative* shown = toolNative();
    if (found < 0 || !shown)
        return {};
    const QWidget* button = shown->bar->widgetForAction(shown->actions[static_cast<size_t>(found)]);
    return button && !button->isHidden() ? fromQRect(button->geometry()) : Rect();
}

void WToolBar::userPressed(size_t button)
{
    if (button < m_buttons.size())
        dispatch<&WToolBar::onCommand>(*this, m_buttons[button].command);
}

void WToolBar::userOpens(size_t button)
{
    if (button < m_buttons.size())
        dispatch<&WToolBar::onDropDown>(*this, m_buttons[button].command);
}

} // namespace OviAPI
