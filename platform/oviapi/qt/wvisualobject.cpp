#include <oviapi/wvisualobject.h>

#include <algorithm>
#include <limits>

#include <QApplication>

#include <oviapi/application.h>
#include <oviapi/container.h>
#include <oviapi/typicalcontrol.h>

#include "convert.h"
#include "native.h"
#include "paintdevice.h"
#include "plaintext.h"
#include "toolkit.h"

namespace OviAPI {

namespace {

Qt::CursorShape toQtCursor(CursorShape shape)
{
    switch (shape) {
    case CursorShape::Wait:
        return Qt::WaitCursor;
    case CursorShape::IBeam:
        return Qt::IBeamCursor;
    case CursorShape::Hand:
        return Qt::PointingHandCursor;
    case CursorShape::Cross:
        return Qt::CrossCursor;
    case CursorShape::SizeHorizontal:
        return Qt::SizeHorCursor;
    case CursorShape::SizeVertical:
        return Qt::SizeVerCursor;
    case CursorShape::SizeNWSE:
        return Qt::SizeFDiagCursor;
    case CursorShape::SizeNESW:
        return Qt::SizeBDiagCursor;
    case CursorShape::SizeAll:
        return Qt::SizeAllCursor;
    case CursorShape::SplitHorizontal:
        return Qt::SplitHCursor;
    case CursorShape::SplitVertical:
        return Qt::SplitVCursor;
    case CursorShape::Arrow:
        break;
    }
    return Qt::ArrowCursor;
}

bool takesFocus(const QWidget& widget)
{
    return (widget.focusPolicy() & Qt::TabFocus) && widget.isVisible() && widget.isEnabled();
}

// Gives the focus to the first widget from this one on that takes it, unless one has it.
void focusNext(QWidget* window, QWidget* from)
{
    if (!window || window->focusWidget())
        return;
    QWidget* start = from ? from : window;
    QWidget* next = start;
    do {
        if (next != window && next->window() == window && takesFocus(*next)) {
            next->setFocus(Qt::OtherFocusReason);
            return;
        }
        next = next->nextInFocusChain();
    } while (next && next != start);
}

} // namespace

WVisualObject::WVisualObject()
    : m_textColor(ColorNumber::WindowText)
    , m_backColor(ColorNumber::Window)
{
}

WVisualObject::~WVisualObject()
{
    destroyNatives();
}

bool WVisualObject::create()
{
    if (m_native)
        return true;
    if (!Toolkit::current())
        return false;
    const WVisualObject* above = nativeParent();
    if (above && isChild() && !above->m_native)
        return false;
    m_native = makeNative();
    attachNative();
    if (parent() && isChild())
        parent()->childrenChanged();
    return true;
}

void WVisualObject::destroy()
{
    destroyNatives();
}

std::unique_ptr<Native> WVisualObject::makeNative()
{
    return std::make_unique<Native>(*this, std::make_unique<QWidget>());
}

WVisualObject* WVisualObject::nativeParent() const
{
    for (Container* above = parent(); above; above = above->parent()) {
        if (auto* object = dynamic_cast<WVisualObject*>(above))
            return object;
    }
    return nullptr;
}

void WVisualObject::attachNative()
{
    QWidget* widget = m_native->widget;
    if (!m_font.isEmpty())
        applyFont();
    applyColors();
    if (m_hasCursor)
        m_native->surface->setCursor(toQtCursor(m_cursor));
    widget->setEnabled(m_enabled);
    // Even an empty text makes the toolkit build what assistive technology asks of the widget.
    if (!m_accessibleName.empty())
        widget->setAccessibleName(toQString(m_accessibleName));
    if (!m_accessibleDescription.empty())
        widget->setAccessibleDescription(toQString(m_accessibleDescription));
    if (!m_toolTip.empty())
        applyToolTip();
    m_native->placing = true;
    widget->resize(width(), height());
    widget->move(x(), y());
    m_native->placing = false;
    adoptParent();
    m_native->layOut();
    m_native->clientSize = m_native->surface->size();
}

// Puts the widget of a child onto the surface of its parent and shows it there.
void WVisualObject::adoptParent()
{
    if (!isChild())
        return;
    QWidget* widget = m_native->widget;
    const WVisualObject* above = nativeParent();
    m_native->placing = true;
    if (above && above->m_native) {
        widget->setParent(above->m_native->surface);
        restack();
        widget->setVisible(m_shown);
    } else {
        widget->setParent(nullptr); // and hidden: a child is no window
    }
    m_native->placing = false;
}

// The toolkit's order of stacking follows that of the children.
void WVisualObject::restack()
{
    for (VisualObject* front = previousSibling(); front; front = front->previousSibling()) {
        const auto* object = dynamic_cast<WVisualObject*>(front);
        if (object && object->m_native) {
            m_native->widget->stackUnder(object->m_native->widget);
            return;
        }
    }
    m_native->widget->raise();
}

void WVisualObject::passFocusOn()
{
    QWidget* widget = m_native->widget;
    QWidget* focused = widget ? QApplication::focusWidget() : nullptr;
    if (!focused || (focused != widget && !widget->isAncestorOf(focused)) || widget->isWindow())
        return;
    const QPointer<QWidget> window = widget->window();
    const QPointer<QWidget> next = widget->nextInFocusChain();
    // Later: the object around this one may be half destroyed now.
    QMetaObject::invokeMethod(
        window, [window, next] { focusNext(window, next); }, Qt::QueuedConnection);
}

void WVisualObject::destroyNatives()
{
    if (auto* container = dynamic_cast<Container*>(this)) {
        for (VisualObject* child : container->m_children) {
            if (auto* object = dynamic_cast<WVisualObject*>(child))
                object->destroyNatives();
        }
    }
    if (!m_native)
        return;
    nativeGoes();
    passFocusOn();
    m_captured = false;
    m_native.reset();
}

void WVisualObject::setParent(Container* parent)
{
    if (parent == this->parent())
        return;
    VisualObject::setParent(parent);
    if (m_native)
        adoptParent();
}

bool WVisualObject::move(int left, int top, int w, int h)
{
    return doMove(left, top, w, h);
}

bool WVisualObject::doMove(int left, int top, int w, int h)
{
    // Right and bottom stay numbers.
    w = std::clamp(w, 0, std::numeric_limits<int>::max() - std::max(left, 0));
    h = std::clamp(h, 0, std::numeric_limits<int>::max() - std::max(top, 0));
    const Rect place{left, top, left + w, top + h};
    if (!m_native) {
        m_geometry = place;
        return true;
    }
    QWidget* widget = m_native->widget;
    m_native->placing = true;
    if (widget->isWindow() && widget->minimumSize() == widget->maximumSize())
        widget->setFixedSize(w, h);
    widget->resize(w, h);
    widget->move(left, top);
    m_native->placing = false;
    m_native->layOut();
    geometryChanged(place);
    return true;
}

void WVisualObject::geometryChanged(const Rect& now)
{
    if (now == m_geometry)
        return;
    const std::weak_ptr<const void> alive = life();
    m_geometry = now;
    dispatch<&VisualObject::onMove>(*this);
    if (alive.expired() || !m_native)
        return;
    m_native->checkClientSize();
    if (!alive.expired() && parent() && isChild())
        parent()->childrenChanged();
}

Size WVisualObject::clientSize() const
{
    if (!m_native || !m_native->surface)
        return {width(), height()};
    return fromQSize(m_native->surface->size());
}

Rect WVisualObject::visibleClientRect() const
{
    const Size size = clientSize();
    return {0, 0, size.width, size.height};
}

Point WVisualObject::toScreen(Point point) const
{
    return m_native ? fromQPoint(m_native->surface->mapToGlobal(toQPoint(point))) : point;
}

Point WVisualObject::fromScreen(Point point) const
{
    return m_native ? fromQPoint(m_native->surface->mapFromGlobal(toQPoint(point))) : point;
}

Point WVisualObject::mapTo(const WVisualObject& other, Point point) const
{
    return other.fromScreen(toScreen(point));
}

void WVisualObject::show(bool visible)
{
    const bool changed = m_shown != visible;
    m_shown = visible;
    if (!m_native)
        return;
    if (!isChild() || m_native->widget->parentWidget())
        m_native->widget->setVisible(visible);
    if (!changed)
        return;
    const std::weak_ptr<const void> alive = life();
    dispatch<&VisualObject::onShow>(*this, visible);
    if (!alive.expired() && parent() && isChild())
        parent()->childrenChanged();
}

bool WVisualObject::isVisible() const
{
    return m_native && m_shown;
}

void WVisualObject::setFont(const Font& font)
{
    m_font = font;
    if (m_native)
        applyFont();
}

void WVisualObject::applyFont()
{
    m_native->widget->setFont(m_font.isEmpty() ? QFont() : toQFont(m_font));
}

Font WVisualObject::font() const
{
    if (!m_font.isEmpty())
        return m_font;
    const WVisualObject* above = nativeParent();
    return above ? above->font() : Font();
}

void WVisualObject::setFontRole(int role)
{
    m_fontRole = role;
    Application* application = Application::instance();
    const Font* font = application ? application->fontForRole(role) : nullptr;
    if (font)
        setFont(*font);
}

void WVisualObject::enable(bool enabled)
{
    m_enabled = enabled;
    if (m_native)
        m_native->widget->setEnabled(enabled);
}

void WVisualObject::setFocus()
{
    if (m_native)
        m_native->widget->setFocus(Qt::OtherFocusReason);
}

bool WVisualObject::hasFocus() const
{
    return m_native && m_native->widget->hasFocus();
}

WVisualObject* WVisualObject::focusedObject()
{
    return Toolkit::current() ? objectOf(QApplication::focusWidget()) : nullptr;
}

void WVisualObject::repaint()
{
    if (m_native)
        m_native->surface->update();
}

void WVisualObject::repaint(const Rect& rect)
{
    if (m_native)
        m_native->surface->update(toQRect(rect));
}

PaintDevice WVisualObject::clientDevice() const
{
    return OviAPI::clientDevice(m_native ? m_native->surface.data() : nullptr);
}

void WVisualObject::setCursor(CursorShape shape)
{
    m_cursor = shape;
    m_hasCursor = true;
    if (m_native)
        m_native->surface->setCursor(toQtCursor(shape));
}

void WVisualObject::capture()
{
    if (!m_native)
        return;
    m_captured = true;
    // While a button is down the toolkit sends everything to where it went down.
    if (QApplication::mouseButtons() == Qt::NoButton)
        m_native->surface->grabMouse();
}

void WVisualObject::releaseCapture()
{
    m_captured = false;
    if (m_native && QWidget::mouseGrabber() == m_native->surface)
        m_native->surface->releaseMouse();
}

void WVisualObject::setTextColor(Color color)
{
    m_textColor = color;
    m_hasTextColor = true;
    if (m_native)
        applyColors();
}

void WVisualObject::setBackColor(Color color)
{
    m_backColor = color;
    m_hasBackColor = true;
    if (m_native)
        applyColors();
}

void WVisualObject::applyColors()
{
    if (!m_hasTextColor && !m_hasBackColor)
        return;
    QWidget* surface = m_native->surface;
    QPalette palette;
    if (m_hasTextColor) {
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(role, toQColor(m_textColor));
    }
    if (m_hasBackColor) {
        for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
            palette.setColor(role, toQColor(m_backColor));
        surface->setAutoFillBackground(true);
    }
    m_native->widget->setPalette(palette);
    surface->setPalette(palette);
}

void WVisualObject::setAccessibleName(const wchar_t* name)
{
    m_accessibleName = name ? name : L"";
    if (m_native)
        m_native->widget->setAccessibleName(toQString(m_accessibleName));
}

void WVisualObject::setAccessibleDescription(const wchar_t* description)
{
    m_accessibleDescription = description ? description : L"";
    if (m_native)
        m_native->widget->setAccessibleDescription(toQString(m_accessibleDescription));
}

void WVisualObject::setToolTip(const wchar_t* text)
{
    m_toolTip = text ? text : L"";
    if (m_native)
        applyToolTip();
}

void WVisualObject::applyToolTip()
{
    m_native->surface->setToolTip(plainToolTip(toQString(m_toolTip)));
}

bool WVisualObject::placeInFrontOf(WVisualObject& sibling)
{
    if (&sibling == this || !parent() || sibling.parent() != parent() || !isChild())
        return false;
    auto& list = parent()->m_children;
    std::erase(list, static_cast<VisualObject*>(this));
    list.insert(std::find(list.begin(), list.end(), static_cast<VisualObject*>(&sibling)), this);
    if (m_native)
        restack();
    return true;
}

void WVisualObject::bringToFront()
{
    if (!isChild()) {
        if (m_native && isVisible()) {
            m_native->widget->raise();
            m_native->widget->activateWindow();
        }
        return;
    }
    auto* front = parent() ? dynamic_cast<WVisualObject*>(parent()->firstChild()) : nullptr;
    if (front)
        placeInFrontOf(*front);
}

WTypicalControl::WTypicalControl() = default;
WTypicalControl::~WTypicalControl() = default;

} // namespace OviAPI
