#include "native.h"

#include <utility>

#include <QAbstractScrollArea>
#include <QApplication>
#include <QHash>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QResizeEvent>

#include "convert.h"
#include "keys.h"
#include "paintdevice.h"

namespace OviAPI {

namespace {

LocalLoop* innermost = nullptr;
std::vector<std::exception_ptr> orphans; // kept while no loop ran

// While a widget is being destroyed the toolkit moves focus and mouse to others: no handler is
// called, since the object around it may be half destroyed.
int destroying = 0;

QHash<const QObject*, Native*>& natives()
{
    static QHash<const QObject*, Native*> map;
    return map;
}

void forget(const QObject* object, const Native& native)
{
    if (natives().value(object) == &native)
        natives().remove(object);
}

QWidget* defaultSurface(QWidget* widget)
{
    if (auto* area = qobject_cast<QAbstractScrollArea*>(widget))
        return area->viewport();
    return widget;
}

// A widget without reactions of its own: what its owner leaves is done with. The viewport of a
// scroll area only looks like one.
bool isPlain(const QWidget* surface)
{
    const auto* area = qobject_cast<const QAbstractScrollArea*>(surface->parentWidget());
    return surface->metaObject() == &QWidget::staticMetaObject &&
           !(area && area->viewport() == surface);
}

} // namespace

int HandlerScope::s_depth = 0;

LocalLoop::LocalLoop(std::function<void()> leave)
    : m_leave(std::move(leave))
    , m_outer(std::exchange(innermost, this))
{
    if (!m_outer)
        m_kept.swap(orphans);
}

LocalLoop::~LocalLoop()
{
    innermost = m_outer;
    if (m_kept.empty())
        return;
    auto& rest = m_outer ? m_outer->m_kept : orphans;
    rest.insert(rest.end(), m_kept.begin(), m_kept.end());
    if (m_outer)
        m_outer->m_leave();
}

void LocalLoop::rethrow()
{
    if (m_kept.empty())
        return;
    const std::exception_ptr first = m_kept.front();
    m_kept.erase(m_kept.begin());
    std::rethrow_exception(first);
}

void LocalLoop::keep(std::exception_ptr exception) noexcept
{
    if (!innermost) {
        orphans.push_back(std::move(exception));
        return;
    }
    innermost->m_kept.push_back(std::move(exception));
    innermost->m_leave();
}

Native::Native(WVisualObject& object, std::unique_ptr<QWidget> made)
    : Native(object, std::move(made), nullptr)
{
}

Native::Native(WVisualObject& object, std::unique_ptr<QWidget> made, QWidget* inside)
    : owner(object)
    , widget(made.release())
    , surface(inside ? inside : defaultSurface(widget))
{
    natives().insert(widget, this);
    widget->installEventFilter(this);
    if (surface != widget) {
        natives().insert(surface, this);
        surface->installEventFilter(this);
    }
    surface->setMouseTracking(true);
}

Native::~Native()
{
    if (widget && surface) {
        forget(widget, *this);
        forget(surface, *this);
    } else { // the toolkit has destroyed one of them: its address is not known any more
        natives().removeIf([this](QHash<const QObject*, Native*>::iterator entry) {
            return entry.value() == this;
        });
    }
    if (surface)
        surface->removeEventFilter(this);
    if (!widget)
        return;
    widget->removeEventFilter(this);
    discardWidget(widget);
}

void discardWidget(QWidget* widget)
{
    ++destroying;
    if (!HandlerScope::active()) {
        delete widget;
    } else {
        // The toolkit may still be inside a function of this widget.
        QWidget* focused = QApplication::focusWidget();
        if (focused && (focused == widget || widget->isAncestorOf(focused)))
            focused->clearFocus();
        widget->hide();
        widget->setParent(nullptr);
        widget->deleteLater();
    }
    --destroying;
}

bool Native::eventFilter(QObject* object, QEvent* event)
{
    if (destroying > 0)
        return false;
    const QPointer<Native> alive(this);
    bool done = true; // a handler that throws has dealt with the event
    const bool onSurface = object == surface;
    barrier([&] {
        bool answer = onSurface && filterSurface(event);
        if (!answer && alive && object == widget)
            answer = filterWidget(event);
        done = answer;
    });
    return done || !alive;
}

bool Native::filterSurface(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return mouse(static_cast<QMouseEvent*>(event));
    case QEvent::Wheel:
        return wheel(static_cast<QWheelEvent*>(event));
    case QEvent::Leave:
        return dispatch<&VisualObject::onMouseLeave>(owner).bySlot;
    case QEvent::Paint:
        return paint(static_cast<QPaintEvent*>(event));
    case QEvent::Resize:
        if (surface != widget)
            checkClientSize();
        return false;
    default:
        return false;
    }
}

bool Native::filterWidget(QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return key(static_cast<QKeyEvent*>(event));
    case QEvent::FocusIn:
        dispatch<&VisualObject::onGetFocus>(owner);
        return false;
    case QEvent::FocusOut:
        dispatch<&VisualObject::onLostFocus>(owner);
        return false;
    case QEvent::ApplicationPaletteChange:
        owner.applyColors();
        return false;
    case QEvent::EnabledChange:
        dispatch<&VisualObject::onEnable>(owner, widget->isEnabled());
        return false;
    case QEvent::Move:
    case QEvent::Resize:
        if (!placing && widget->isVisible())
            owner.geometryChanged(fromQRect(QRect(widget->pos(), widget->size())));
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return surface != widget; // left over by the surface, which was asked already
    default:
        return false;
    }
}

bool Native::key(QKeyEvent* event)
{
    const QPointer<Native> alive(this);
    const VirtualKey pressed = toVirtualKey(*event);
    if (event->type() == QEvent::KeyRelease) {
        if (event->isAutoRepeat()) // the key is still held
            return false;
        const auto result = dispatch<&VisualObject::onKeyUp>(owner, pressed);
        return !alive || result.bySlot || result.value;
    }
    const auto result = dispatch<&VisualObject::onKeyDown>(owner, pressed);
    if (!alive || result.bySlot || result.value)
        return true;
    for (const wchar_t character : fromQString(event->text())) {
        if (character < 32 || character == 127)
            continue;
        const auto typed = dispatch<&VisualObject::onChar>(owner, character);
        if (!alive || typed.bySlot || typed.value)
            return true;
    }
    return unhandledKey(event);
}

bool Native::mouse(QMouseEvent* event)
{
    // What a control leaves is not for the container around it.
    surface->setAttribute(Qt::WA_NoMousePropagation, true);
    if (!surface->isEnabled())
        return true;
    const QPointer<Native> alive(this);
    const int x = event->position().toPoint().x();
    const int y = event->position().toPoint().y();
    const long flags = toMouseFlags(event->buttons(), event->modifiers());
    const bool left = event->button() == Qt::LeftButton;
    const bool right = event->button() == Qt::RightButton;
    Dispatched<bool> result;
    switch (event->type()) {
    case QEvent::MouseMove:
        result = dispatch<&VisualObject::onMouseMove>(owner, x, y, flags);
        break;
    case QEvent::MouseButtonRelease:
        if (left)
            result = dispatch<&VisualObject::onLButtonUp>(owner, x, y, flags);
        else if (right)
            result = dispatch<&VisualObject::onRButtonUp>(owner, x, y, flags);
        break;
    case QEvent::MouseButtonDblClick:
        if (left)
            result = dispatch<&VisualObject::onLButtonDblClk>(owner, x, y, flags);
        else if (right)
            result = dispatch<&VisualObject::onRButtonDblClk>(owner, x, y, flags);
        if (!alive || result.bySlot || result.value)
            return true;
        [[fallthrough]];
    default:
        if (left)
            result = dispatch<&VisualObject::onLButtonDown>(owner, x, y, flags);
        else if (right)
            result = dispatch<&VisualObject::onRButtonDown>(owner, x, y, flags);
    }
    return !alive || result.bySlot || result.value || isPlain(surface);
}

bool Native::wheel(QWheelEvent* event)
{
    surface->setAttribute(Qt::WA_NoMousePropagation, false);
    if (!surface->isEnabled())
        return false;
    const QPointer<Native> alive(this);
    const QPoint at = event->position().toPoint();
    const auto result =
        dispatch<&VisualObject::onMouseWheel>(owner, at.x(), at.y(), event->angleDelta().y(),
                                              toMouseFlags(event->buttons(), event->modifiers()));
    return !alive || result.bySlot || result.value;
}

bool Native::paint(QPaintEvent* event)
{
    PaintSession session(surface, event->region().boundingRect());
    return owner.doPaint(&session.device());
}

void Native::layOut()
{
    // A scroll area places its viewport when it is resized; hidden ones are told when shown.
    if (qobject_cast<QAbstractScrollArea*>(widget) && !widget->isVisible()) {
        QResizeEvent resize(widget->size(), widget->size());
        QCoreApplication::sendEvent(widget, &resize);
    }
}

void Native::checkClientSize()
{
    if (!surface || surface->size() == clientSize)
        return;
    clientSize = surface->size();
    dispatch<&VisualObject::onSize>(owner);
}

QWidget* widgetOf(const WVisualObject* object)
{
    return object && object->native() ? object->native()->widget.data() : nullptr;
}

WVisualObject* objectOf(const QWidget* widget)
{
    for (; widget; widget = widget->parentWidget()) {
        if (const Native* native = natives().value(widget))
            return &native->owner;
    }
    return nullptr;
}

} // namespace OviAPI
