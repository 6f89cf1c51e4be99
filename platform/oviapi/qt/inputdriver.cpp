#include <oviapi/inputdriver.h>

#include <functional>

#include <QApplication>
#include <QEvent>
#include <QMetaObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include "keys.h"
#include "native.h"

// Exported by Qt for its test library, which declares them in the same way.
QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString& text,
                                    bool repeated, ushort count);
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons buttons, Qt::MouseButton button,
                                      QEvent::Type type, Qt::KeyboardModifiers modifiers,
                                      int timestamp);
QT_END_NAMESPACE

namespace OviAPI {

namespace {

void later(std::function<void()> work)
{
    if (qApp)
        QMetaObject::invokeMethod(qApp, std::move(work), Qt::QueuedConnection);
}

Qt::KeyboardModifiers qtModifiers(int modifiers)
{
    Qt::KeyboardModifiers flags;
    flags.setFlag(Qt::ShiftModifier, (modifiers & ModifierShift) != 0);
    flags.setFlag(Qt::ControlModifier, (modifiers & ModifierControl) != 0);
    flags.setFlag(Qt::AltModifier, (modifiers & ModifierAlt) != 0);
    flags.setFlag(Qt::MetaModifier, (modifiers & ModifierSuper) != 0);
    flags.setFlag(Qt::KeypadModifier, (modifiers & ModifierKeypad) != 0);
    return flags;
}

QWidget* frontWidget()
{
    for (QWidget* widget : {QApplication::activePopupWidget(), QApplication::activeModalWidget(),
                            QApplication::activeWindow()}) {
        if (widget && widget->isVisible())
            return widget->window();
    }
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowType() != Qt::ToolTip)
            return window;
    }
    return nullptr;
}

// Without a window manager the window behind a dialog or menu that has gone is not made the active
// one again; shortcuts need that.
QWindow* frontWindow()
{
    QWidget* widget = frontWidget();
    if (!widget)
        return nullptr;
    if (widget->windowType() != Qt::Popup && QApplication::activeWindow() != widget)
        QApplication::setActiveWindow(widget);
    return widget->windowHandle();
}

// What a key types; 0 for a key that types nothing.
wchar_t typedBy(VirtualKey key)
{
    if (key.character() != 0)
        return key.character();
    if ((key.modifiers() & (ModifierControl | ModifierAlt)) != 0)
        return 0;
    const int code = key.getKeyboardKey();
    const bool shift = (key.modifiers() & ModifierShift) != 0;
    if (code >= KeyA && code <= KeyZ)
        return static_cast<wchar_t>((shift ? L'A' : L'a') + code - KeyA);
    if (code >= Key0 && code <= Key9)
        return static_cast<wchar_t>(L'0' + code - Key0);
    switch (code) {
    case KeySpace:
        return L' ';
    case KeyMinus:
        return L'-';
    case KeyEqual:
        return L'=';
    case KeyPlus:
        return L'+';
    case KeyAsterisk:
        return L'*';
    default:
        return 0;
    }
}

// A key as the toolkit tells it.
struct Stroke {
    int key;
    Qt::KeyboardModifiers modifiers;
    QString text;

    explicit Stroke(VirtualKey from)
        : key(qtKey(from.getKeyboardKey()))
        , modifiers(qtModifiers(from.modifiers()))
    {
        if (const wchar_t typed = typedBy(from))
            text = QString::fromWCharArray(&typed, 1);
    }
    explicit Stroke(wchar_t character)
        : text(QString::fromWCharArray(&character, 1))
    {
        key = text.at(0).toUpper().unicode();
    }

    void send(QWindow* window, QEvent::Type type) const
    {
        if (window)
            qt_handleKeyEvent(window, type, key, modifiers, text, false, 1);
    }
    void sendToFront() const
    {
        // The window may be another one, or none, after the press.
        send(frontWindow(), QEvent::KeyPress);
        send(frontWindow(), QEvent::KeyRelease);
    }
};

QWidget* surfaceOf(const WVisualObject& object)
{
    return object.native() ? object.native()->surface.data() : nullptr;
}

QWindow* windowOf(const WVisualObject& object)
{
    const QWidget* surface = surfaceOf(object);
    return surface ? surface->window()->windowHandle() : nullptr;
}

Qt::MouseButton toQt(InputDriver::Button button)
{
    switch (button) {
    case InputDriver::Button::Right:
        return Qt::RightButton;
    case InputDriver::Button::Middle:
        return Qt::MiddleButton;
    case InputDriver::Button::Left:
        break;
    }
    return Qt::LeftButton;
}

// Runs work(mouse) from the event loop, on the object's client area as it is then.
template<class Work>
void withMouse(const WVisualObject& object, int modifiers, Work work)
{
    later([&object, life = object.life(), modifiers, work] {
        if (life.expired())
            return;
        InputDriver::Mouse mouse(object, modifiers);
        work(mouse);
    });
}

} // namespace

// A mouse as the window system reports it: every event has a time of its own, and stands where it
// was meant to be even when the widget has moved in between.
struct InputDriver::Mouse::Native {
    QPointer<QWindow> window;
    QPoint origin; // of the widget, on the screen
    Qt::KeyboardModifiers modifiers;

    static inline Qt::MouseButtons down;
    static inline int time = 0; // ms

    void send(QEvent::Type type, Point point, Qt::MouseButton button)
    {
        if (type != QEvent::MouseMove)
            down.setFlag(button, type == QEvent::MouseButtonPress);
        if (!window)
            return;
        const QPoint global = origin + QPoint(point.x, point.y);
        qt_handleMouseEvent(window, window->mapFromGlobal(global), global, down, button, type,
                            modifiers, ++time);
    }
};

InputDriver::Mouse::Mouse(const WVisualObject& object, int modifiers)
{
    if (const QWidget* surface = surfaceOf(object))
        m_native = std::make_unique<Native>(
            Native{windowOf(object), surface->mapToGlobal(QPoint()), qtModifiers(modifiers)});
}

InputDriver::Mouse::~Mouse() = default;
InputDriver::Mouse::Mouse(Mouse&& other) noexcept = default;
InputDriver::Mouse& InputDriver::Mouse::operator=(Mouse&& other) noexcept = default;

void InputDriver::Mouse::press(Point point, Button button)
{
    if (m_native)
        m_native->send(QEvent::MouseButtonPress, point, toQt(button));
}

void InputDriver::Mouse::move(Point point)
{
    if (m_native)
        m_native->send(QEvent::MouseMove, point, Qt::NoButton);
}

void InputDriver::Mouse::release(Point point, Button button)
{
    if (!m_native)
        return;
    m_native->send(QEvent::MouseButtonRelease, point, toQt(button));
    Native::time += 2 * QApplication::doubleClickInterval();
}

void InputDriver::Mouse::doubleClick(Point point, Button button)
{
    press(point, button);
    if (m_native)
        m_native->send(QEvent::MouseButtonRelease, point, toQt(button));
    press(point, button);
    release(point, button);
}

void InputDriver::key(VirtualKey key)
{
    later([stroke = Stroke(key)] { stroke.sendToFront(); });
}

void InputDriver::type(std::wstring_view text)
{
    for (const wchar_t character : text)
        later([stroke = Stroke(character)] { stroke.sendToFront(); });
}

void InputDriver::click(const WVisualObject& object, Point point, int modifiers)
{
    withMouse(object, modifiers, [point](Mouse& mouse) {
        mouse.press(point);
        mouse.release(point);
    });
}

void InputDriver::doubleClick(const WVisualObject& object, Point point)
{
    withMouse(object, ModifierNone, [point](Mouse& mouse) { mouse.doubleClick(point); });
}

void InputDriver::drag(const WVisualObject& object, Point from, Point to)
{
    withMouse(object, ModifierNone, [from, to](Mouse& mouse) {
        mouse.press(from);
        mouse.move({(from.x + to.x) / 2, (from.y + to.y) / 2});
        mouse.move(to);
        mouse.release(to);
    });
}

void InputDriver::pressKey(const WVisualObject& object, VirtualKey key)
{
    Stroke(key).send(windowOf(object), QEvent::KeyPress);
}

void InputDriver::releaseKey(const WVisualObject& object, VirtualKey key)
{
    Stroke(key).send(windowOf(object), QEvent::KeyRelease);
}

void InputDriver::typeNow(const WVisualObject& object, std::wstring_view text)
{
    const QPointer<QWindow> window = windowOf(object);
    for (const wchar_t character : text) {
        const Stroke stroke(character);
        stroke.send(window, QEvent::KeyPress);
        stroke.send(window, QEvent::KeyRelease);
    }
}

} // namespace OviAPI
