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

void sendKey(int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        // The window may be another one, or none, after the press.
        if (QWindow* window = frontWindow())
            qt_handleKeyEvent(window, type, key, modifiers, text, false, 1);
    }
}

// A mouse as the window system reports it: every event has a time of its own, and stands where it
// was meant to be even when the widget has moved in between.
class Mouse {
public:
    Mouse(QWidget& widget, Qt::KeyboardModifiers modifiers)
        : m_window(widget.window()->windowHandle())
        , m_origin(widget.mapToGlobal(QPoint()))
        , m_modifiers(modifiers)
    {
    }

    void press(Point point) { send(QEvent::MouseButtonPress, point, Qt::LeftButton); }
    void move(Point point) { send(QEvent::MouseMove, point, Qt::LeftButton); }
    void release(Point point) { send(QEvent::MouseButtonRelease, point, Qt::NoButton); }

private:
    void send(QEvent::Type type, Point point, Qt::MouseButtons buttons)
    {
        static int time = 0;
        if (!m_window)
            return;
        const QPoint global = m_origin + QPoint(point.x, point.y);
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        qt_handleMouseEvent(m_window, m_window->mapFromGlobal(global), global, buttons, button,
                            type, m_modifiers, ++time);
    }

    QPointer<QWindow> m_window;
    QPoint m_origin; // of the widget, on the screen
    Qt::KeyboardModifiers m_modifiers;
};

QWidget* surfaceOf(const WVisualObject& object)
{
    return object.native() ? object.native()->surface.data() : nullptr;
}

// Runs work(mouse) from the event loop, on the object's client area.
template<class Work>
void withMouse(const WVisualObject& object, int modifiers, Work work)
{
    later([surface = QPointer<QWidget>(surfaceOf(object)), modifiers, work] {
        if (!surface)
            return;
        Mouse mouse(*surface, qtModifiers(modifiers));
        work(mouse);
    });
}

} // namespace

void InputDriver::key(VirtualKey key)
{
    const Qt::Key code = qtKey(key.getKeyboardKey());
    const wchar_t character = key.character();
    const QString text = character ? QString::fromWCharArray(&character, 1) : QString();
    later(
        [code, modifiers = qtModifiers(key.modifiers()), text] { sendKey(code, modifiers, text); });
}

void InputDriver::type(std::wstring_view text)
{
    for (const wchar_t character : text) {
        const QString one = QString::fromWCharArray(&character, 1);
        later([one] { sendKey(one.at(0).toUpper().unicode(), Qt::NoModifier, one); });
    }
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
    withMouse(object, ModifierNone, [point](Mouse& mouse) {
        for (int i = 0; i < 2; ++i) {
            mouse.press(point);
            mouse.release(point);
        }
    });
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

} // namespace OviAPI
