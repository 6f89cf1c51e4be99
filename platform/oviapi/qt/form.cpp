#include <oviapi/form.h>

#include <algorithm>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPointer>
#include <QWindow>

#include <oviapi/button.h>
#include <oviapi/dialog.h>
#include <oviapi/menu.h>

#include "accessiblerole.h"
#include "controlnames.h"
#include "convert.h"
#include "formnative.h"
#include "menunative.h"
#include "native.h"
#include "toolkit.h"

namespace OviAPI {

struct WForm::ModalLoop {
    explicit ModalLoop(WForm& modal)
        : form(&modal)
        , outer(std::exchange(top, this))
    {
    }
    ~ModalLoop() { top = outer; }
    ModalLoop(const ModalLoop&) = delete;
    ModalLoop& operator=(const ModalLoop&) = delete;

    QEventLoop loop;
    WForm* form; // null: destroyed
    ModalLoop* outer;
    int result = 0;
    bool ended = false;

    static inline ModalLoop* top = nullptr;
};

WForm::FormNative::FormNative(WForm& owning, std::unique_ptr<QWidget> window, QWidget* inside)
    : Native(owning, std::move(window), inside)
    , form(owning)
{
}

void WForm::FormNative::layOut()
{
    const int barHeight = bar ? bar->heightForWidth(widget->width()) : 0;
    if (bar)
        bar->setGeometry(0, 0, widget->width(), barHeight);
    const QPointer<Native> alive(this);
    int upper = barHeight;
    int lower = widget->height();
    placeStrips(Edge::Upper, upper, lower);
    if (alive)
        placeStrips(Edge::Lower, upper, lower);
    if (alive)
        surface->setGeometry(0, upper, widget->width(), std::max(0, lower - upper));
}

// Handlers of the bars may take any of them, or the form, away.
void WForm::FormNative::placeStrips(Edge edge, int& upper, int& lower)
{
    const QPointer<Native> alive(this);
    const std::vector<Strip> strips = m_strips;
    for (const Strip& strip : strips) {
        if (strip.edge != edge || !isDocked(*strip.object))
            continue;
        const QWidget* shown = widgetOf(strip.object);
        if (!shown || shown->isHidden())
            continue;
        const int height = shown->sizeHint().height();
        lower -= edge == Edge::Lower ? height : 0;
        const int top = edge == Edge::Lower ? lower : upper;
        upper += edge == Edge::Upper ? height : 0;
        strip.object->WVisualObject::doMove(0, top, widget->width(), height);
        if (!alive)
            return;
    }
}

WForm::FormNative* WForm::FormNative::around(const WVisualObject& strip)
{
    auto* form = dynamic_cast<WForm*>(strip.parent());
    return form ? static_cast<FormNative*>(form->native()) : nullptr;
}

bool WForm::FormNative::isDocked(const WVisualObject& strip) const
{
    return std::any_of(m_strips.begin(), m_strips.end(),
                       [&](const Strip& each) { return each.object == &strip; });
}

void WForm::FormNative::dock(WVisualObject& strip, Edge edge)
{
    // Behind all siblings, whose order of stacking is that of widgets on the surface.
    while (auto* behind = dynamic_cast<WVisualObject*>(strip.nextSibling())) {
        if (!behind->placeInFrontOf(strip))
            break;
    }
    QWidget* shown = widgetOf(&strip);
    const bool hidden = shown->isHidden();
    shown->setParent(widget);
    shown->setVisible(!hidden);
    m_strips.push_back({&strip, edge});
    layOutAgain();
}

void WForm::FormNative::undock(const WVisualObject& strip)
{
    // Later: the form may be going as well.
    if (std::erase_if(m_strips, [&](const Strip& each) { return each.object == &strip; }) > 0)
        QCoreApplication::postEvent(widget, new QEvent(QEvent::LayoutRequest));
}

void WForm::FormNative::layOutAgain()
{
    const QPointer<Native> alive(this);
    layOut();
    if (alive)
        checkClientSize();
}

void WForm::FormNative::fillBar()
{
    const QPointer<QMenuBar> old = bar;
    bar = nullptr;
    if (old)
        discardWidget(old);
    if (WMenu* menu = form.menu()) {
        bar = new QMenuBar(widget); // owned by the window
        bar->setNativeMenuBar(false);
        bar->addActions(MenuAccess::actions(*menu));
        bar->show();
    }
    layOutAgain();
}

bool WForm::FormNative::filterWidget(QEvent* event)
{
    const QPointer<Native> alive(this);
    switch (event->type()) {
    case QEvent::Close:
        event->ignore(); // closing is done here, and hides
        form.close();
        return true;
    case QEvent::Resize:
        layOut();
        return !alive || Native::filterWidget(event);
    case QEvent::FontChange:
    case QEvent::LayoutRequest: // the menu bar, or another one, has another height
        layOutAgain();
        return !alive || Native::filterWidget(event);
    case QEvent::WindowStateChange:
        stateChanged(static_cast<QWindowStateChangeEvent*>(event)->oldState());
        return false;
    default:
        return Native::filterWidget(event);
    }
}

void WForm::FormNative::stateChanged(Qt::WindowStates before)
{
    const QPointer<Native> alive(this);
    const Qt::WindowStates now = widget->windowState();
    const Qt::WindowStates changed = before ^ now;
    if (changed & Qt::WindowMinimized) {
        if (now & Qt::WindowMinimized)
            dispatch<&Form::onMinimize>(form);
        else
            dispatch<&Form::onRestore>(form);
    }
    if (alive && (changed & Qt::WindowMaximized))
        dispatch<&Form::onMaximize>(form, (now & Qt::WindowMaximized) != 0);
}

bool WForm::FormNative::unhandledKey(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter || (event->modifiers() & ~Qt::KeypadModifier))
        return false;
    auto* button = dynamic_cast<WButton*>(objectOf(QApplication::focusWidget()));
    if (!button)
        button = form.m_defaultButton;
    if (!button)
        return false;
    button->push();
    return true;
}

Form::Form() = default;
Form::~Form() = default;

bool Form::onClose()
{
    return true;
}
bool Form::onMaximize(bool)
{
    return false;
}
bool Form::onMinimize()
{
    return false;
}
bool Form::onRestore()
{
    return false;
}

WForm::WForm()
{
    setStyle(SizingBorder | MinimizeButton | MaximizeButton);
    setShown(false);
}

WForm::~WForm()
{
    setDefaultButton(nullptr);
    if (m_menu)
        m_menu->m_form = nullptr;
    if (m_modal) {
        endModal(0);
        m_modal->form = nullptr;
    }
}

std::unique_ptr<Native> WForm::makeNative()
{
    const bool dialog = isDialog() || (style() & DialogFrame);
    Qt::WindowFlags flags = dialog ? Qt::Dialog : Qt::Window;
    flags |= Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
             Qt::WindowCloseButtonHint;
    if (style() & MinimizeButton)
        flags |= Qt::WindowMinimizeButtonHint;
    if (style() & MaximizeButton)
        flags |= Qt::WindowMaximizeButtonHint;
    auto window = std::make_unique<QWidget>(nullptr, flags);
    setRole(*window, dialog ? QAccessible::Dialog : QAccessible::Window);
    auto* inside = new QWidget(window.get()); // owned by the window
    return std::make_unique<FormNative>(*this, std::move(window), inside);
}

bool WForm::create()
{
    if (isCreated())
        return true;
    if (!WVisualObject::create())
        return false;
    QWidget* window = native()->widget;
    if (!(style() & SizingBorder))
        window->setFixedSize(window->size());
    applyTitle();
    setIcons(&m_smallIcon, &m_largeIcon);
    setMenu(m_menu);
    return true;
}

void WForm::nativeGoes()
{
    endModal(0);
}

void WForm::show(bool visible)
{
    if (visible && native()) {
        QWidget* window = native()->widget;
        const QWidget* above = widgetOf(nativeParent());
        if (!above && isModal())
            above = QApplication::activeWindow();
        window->winId(); // makes the window handle
        if (QWindow* handle = window->windowHandle())
            handle->setTransientParent(
                above && above->window() != window ? above->window()->windowHandle() : nullptr);
        joinLabels(native()->surface);
        nameControls(native()->surface);
    }
    WVisualObject::show(visible);
}

void WForm::setParent(Container* parent)
{
    WVisualObject::setParent(parent);
}

void WForm::setTitle(const wchar_t* title)
{
    setTitle(title, nullptr);
}

void WForm::setTitle(const wchar_t* title, const wchar_t* second)
{
    m_title = title ? title : L"";
    if (second && *second)
        m_title += m_title.empty() ? second : L" - " + std::wstring(second);
    if (native())
        applyTitle();
}

void WForm::applyTitle()
{
    // "[*]" would be replaced by the toolkit.
    native()->widget->setWindowTitle(toQString(m_title).replace("[*]", "[*][*]"));
}

void WForm::setIcons(const Picture* smallIcon, const Picture* largeIcon)
{
    m_smallIcon = smallIcon ? Picture(*smallIcon) : Picture();
    m_largeIcon = largeIcon ? Picture(*largeIcon) : Picture();
    if (!native())
        return;
    QIcon icon;
    for (const Picture& picture : {m_smallIcon, m_largeIcon}) {
        if (!picture.isNull())
            icon.addPixmap(toQPixmap(picture, 1.0));
    }
    native()->widget->setWindowIcon(icon);
}

void WForm::maximize()
{
    if (native())
        native()->widget->setWindowState(native()->widget->windowState() | Qt::WindowMaximized);
}

void WForm::minimize()
{
    if (native())
        native()->widget->setWindowState(native()->widget->windowState() | Qt::WindowMinimized);
}

void WForm::restore()
{
    if (native())
        native()->widget->setWindowState(native()->widget->windowState() &
                                         ~(Qt::WindowMaximized | Qt::WindowMinimized));
}

bool WForm::isMaximized() const
{
    return native() && native()->widget->isMaximized();
}

bool WForm::isMinimized() const
{
    return native() && native()->widget->isMinimized();
}

Rect WForm::normalGeometry() const
{
    if (!isMaximized() && !isMinimized())
        return geometry();
    return fromQRect(native()->widget->normalGeometry());
}

int WForm::execModal()
{
    if (m_modal || !create())
        return 0;
    const std::weak_ptr<const void> alive = life();
    ModalLoop modal(*this);
    LocalLoop local([&] { modal.loop.quit(); });
    m_modal = &modal;
    m_modalText.clear();
    const QPointer<QWidget> before = QApplication::activeWindow();
    native()->widget->hide(); // modality is taken when a window is shown
    native()->widget->setWindowModality(Qt::ApplicationModal);
    show(true);
    if (!modal.ended && !local.failed())
        modal.loop.exec();
    if (modal.form) {
        m_modal = nullptr;
        show(false);
    }
    if (!alive.expired() && native())
        native()->widget->setWindowModality(Qt::NonModal);
    // Not every window manager gives the focus back by itself.
    const QWidget* active = QApplication::activeWindow();
    if (before && before->isVisible() && (!active || !active->isVisible()))
        before->activateWindow();
    local.rethrow();
    return modal.result;
}

void WForm::endModal(int result)
{
    if (!m_modal || m_modal->ended)
        return;
    m_modal->ended = true;
    m_modal->result = result;
    m_modal->loop.quit();
}

void WForm::exitModal(int result)
{
    endModal(result);
}

void WForm::exitModal(const wchar_t* result)
{
    if (m_modal && !m_modal->ended)
        m_modalText = result ? result : L"";
    endModal(result ? 1 : 0);
}

WForm* WForm::topModal()
{
    return ModalLoop::top ? ModalLoop::top->form : nullptr;
}

bool WForm::close()
{
    const std::weak_ptr<const void> alive = life();
    const auto result = dispatch<&Form::onClose>(*this);
    if (alive.expired())
        return true;
    if (result.bySlot || !result.value)
        return false;
    show(false);
    if (alive.expired())
        return true;
    if (m_modal)
        endModal(0);
    else if (Toolkit* toolkit = Toolkit::current())
        toolkit->formClosed(*this);
    return true;
}

void WForm::setDefaultButton(WButton* button)
{
    if (button == m_defaultButton)
        return;
    if (WButton* old = std::exchange(m_defaultButton, nullptr))
        old->setDefaultOf(nullptr);
    if (button)
        button->setDefaultOf(this);
    m_defaultButton = button;
}

void WForm::setTabOrder(const std::vector<WVisualObject*>& controls)
{
    QWidget* before = nullptr;
    for (const WVisualObject* control : controls) {
        QWidget* widget = widgetOf(control);
        if (!widget)
            continue;
        if (before)
            QWidget::setTabOrder(before, widget);
        before = widget;
    }
}

void WForm::setMenu(WMenu* menu)
{
    if (m_menu && m_menu != menu)
        m_menu->m_form = nullptr;
    if (menu && menu->m_form && menu->m_form != this)
        menu->m_form->setMenu(nullptr);
    m_menu = menu;
    if (menu)
        menu->m_form = this;
    if (native())
        static_cast<FormNative*>(native())->fillBar();
}

WDialog::WDialog()
{
    setStyle(0);
}

WDialog::~WDialog() = default;

} // namespace OviAPI
