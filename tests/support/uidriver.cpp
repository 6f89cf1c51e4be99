#include "tests/support/uidriver.h"

#include <deque>
#include <memory>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <oviapi/form.h>
#include <oviapi/menu.h>
#include <oviapi/qt/native.h>

namespace UiDriver {

namespace {

using namespace OviAPI;

constexpr int pollInterval = 5; // ms between two looks for a box or a menu

Qt::KeyboardModifiers toQt(int modifiers)
{
    Qt::KeyboardModifiers qt = Qt::NoModifier;
    if (modifiers & ModifierShift)
        qt |= Qt::ShiftModifier;
    if (modifiers & ModifierControl)
        qt |= Qt::ControlModifier;
    if (modifiers & ModifierAlt)
        qt |= Qt::AltModifier;
    return qt;
}

Qt::MouseButton toQt(Button button)
{
    switch (button) {
    case Button::Right:
        return Qt::RightButton;
    case Button::Middle:
        return Qt::MiddleButton;
    case Button::Left:
        break;
    }
    return Qt::LeftButton;
}

Qt::Key toQtKey(int key)
{
    if (key >= Key0 && key <= Key9)
        return static_cast<Qt::Key>(Qt::Key_0 + key - Key0);
    if (key >= KeyA && key <= KeyZ)
        return static_cast<Qt::Key>(Qt::Key_A + key - KeyA);
    if (key >= KeyF1 && key <= KeyF24)
        return static_cast<Qt::Key>(Qt::Key_F1 + key - KeyF1);
    switch (key) {
    case KeyEscape:
        return Qt::Key_Escape;
    case KeyBackspace:
        return Qt::Key_Backspace;
    case KeyDelete:
        return Qt::Key_Delete;
    case KeyEnter:
        return Qt::Key_Return;
    case KeyInsert:
        return Qt::Key_Insert;
    case KeyHome:
        return Qt::Key_Home;
    case KeyEnd:
        return Qt::Key_End;
    case KeyLeft:
        return Qt::Key_Left;
    case KeyUp:
        return Qt::Key_Up;
    case KeyRight:
        return Qt::Key_Right;
    case KeyDown:
        return Qt::Key_Down;
    case KeyPageUp:
        return Qt::Key_PageUp;
    case KeyPageDown:
        return Qt::Key_PageDown;
    case KeyShift:
        return Qt::Key_Shift;
    case KeyControl:
        return Qt::Key_Control;
    case KeyAlt:
        return Qt::Key_Alt;
    case KeyMenu:
        return Qt::Key_Menu;
    case KeySpace:
        return Qt::Key_Space;
    case KeyMinus:
        return Qt::Key_Minus;
    case KeyEqual:
        return Qt::Key_Equal;
    case KeyPlus:
        return Qt::Key_Plus;
    case KeyAsterisk:
        return Qt::Key_Asterisk;
    case KeyTab:
        return Qt::Key_Tab;
    default:
        return Qt::Key_unknown;
    }
}

// What a key types; 0 for a key that types nothing.
char typedBy(int key, int modifiers)
{
    if (modifiers & (ModifierControl | ModifierAlt))
        return 0;
    if (key >= KeyA && key <= KeyZ)
        return static_cast<char>((modifiers & ModifierShift ? 'A' : 'a') + key - KeyA);
    if (key >= Key0 && key <= Key9)
        return static_cast<char>('0' + key - Key0);
    switch (key) {
    case KeySpace:
        return ' ';
    case KeyMinus:
        return '-';
    case KeyEqual:
        return '=';
    case KeyPlus:
        return '+';
    case KeyAsterisk:
        return '*';
    default:
        return 0;
    }
}

QWidget* surfaceOf(WVisualObject& object)
{
    return object.native() ? object.native()->surface.data() : nullptr;
}

QWindow* windowOf(WVisualObject& object)
{
    QWidget* surface = surfaceOf(object);
    return surface ? surface->window()->windowHandle() : nullptr;
}

// A place in the object's window.
struct Target {
    QPointer<QWindow> window;
    QPoint at;
};

Target target(WVisualObject& object, int x, int y)
{
    QWidget* surface = surfaceOf(object);
    if (!surface)
        return {};
    const QPoint inside(x == -1 ? surface->width() / 2 : x, y == -1 ? surface->height() / 2 : y);
    return {windowOf(object), surface->mapTo(surface->window(), inside)};
}

void mouse(QTest::MouseAction action, const Target& where, Qt::MouseButton button, int modifiers)
{
    if (where.window)
        QTest::mouseEvent(action, where.window, button, toQt(modifiers), where.at);
}

// Buttons that are down stay down.
void moveMouse(const Target& where, int modifiers)
{
    mouse(QTest::MouseMove, where, Qt::NoButton, modifiers);
}

struct BoxAnswer {
    int button;
};

std::deque<BoxAnswer>& boxAnswers()
{
    static std::deque<BoxAnswer> answers;
    return answers;
}

QString boxTitle;
QString boxText;
QString boxButtons;

QMessageBox* openBox()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    return box && box->isVisible() ? box : nullptr;
}

QString bare(QString text)
{
    return text.remove('&');
}

// The buttons stand in the box as their role says.
QAbstractButton* boxButton(QMessageBox& box, int button)
{
    const auto role = button == 1   ? QMessageBox::AcceptRole
                      : button == 2 ? QMessageBox::RejectRole
                      : button == 4 ? QMessageBox::YesRole
                                    : QMessageBox::NoRole;
    for (QAbstractButton* each : box.buttons()) {
        if (box.buttonRole(each) == role)
            return each;
    }
    return nullptr;
}

void answerBox()
{
    QMessageBox* box = openBox();
    if (!box || boxAnswers().empty()) {
        if (!boxAnswers().empty())
            QTimer::singleShot(pollInterval, qApp, answerBox);
        return;
    }
    const BoxAnswer answer = boxAnswers().front();
    boxAnswers().pop_front();
    if (!boxAnswers().empty())
        QTimer::singleShot(pollInterval, qApp, answerBox);
    boxTitle = box->windowTitle();
    boxText = box->text();
    QStringList captions;
    for (QAbstractButton* each : box->buttons())
        captions += bare(each->text());
    boxButtons = captions.join('|');
    if (answer.button == 0)
        box->close();
    else if (answer.button < 0)
        QTest::keyClick(box->windowHandle(), Qt::Key_Escape);
    else if (QAbstractButton* button = boxButton(*box, answer.button))
        QTest::mouseClick(box->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          button->mapTo(box, button->rect().center()));
}

void answerMenu(const QString& text)
{
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!menu) {
        QTimer::singleShot(pollInterval, qApp, [text] { answerMenu(text); });
        return;
    }
    if (text.isEmpty()) {
        QTest::keyClick(menu->windowHandle(), Qt::Key_Escape);
        return;
    }
    for (QAction* action : menu->actions()) {
        if (bare(action->text()) != text)
            continue;
        QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          menu->actionGeometry(action).center());
        return;
    }
}

} // namespace

void press(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    mouse(QTest::MousePress, target(object, x, y), toQt(button), modifiers);
}

void release(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    mouse(QTest::MouseRelease, target(object, x, y), toQt(button), modifiers);
}

void click(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    // The object may be gone after the press.
    const Target where = target(object, x, y);
    mouse(QTest::MousePress, where, toQt(button), modifiers);
    mouse(QTest::MouseRelease, where, toQt(button), modifiers);
}

void doubleClick(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    mouse(QTest::MouseDClick, target(object, x, y), toQt(button), modifiers);
}

void moveTo(WVisualObject& object, int x, int y, int modifiers)
{
    moveMouse(target(object, x, y), modifiers);
}

void drag(WVisualObject& object, Point from, Point to, Button button, int modifiers)
{
    // Places in the window: the object may move under the pointer.
    const Target start = target(object, from.x, from.y);
    const Target end = target(object, to.x, to.y);
    constexpr int steps = 4;
    press(object, from.x, from.y, button, modifiers);
    for (int i = 1; i <= steps; ++i)
        moveMouse({start.window, start.at + (end.at - start.at) * i / steps}, modifiers);
    mouse(QTest::MouseRelease, end, toQt(button), modifiers);
}

void wheel(WVisualObject& object, int x, int y, int notches, int modifiers)
{
    const Target where = target(object, x, y);
    if (!where.window)
        return;
    QWheelEvent event(where.at, where.window->mapToGlobal(QPointF(where.at)), QPoint(),
                      QPoint(0, 120 * notches), Qt::NoButton, toQt(modifiers), Qt::NoScrollPhase,
                      false);
    // Only what seems to come from outside goes up to the parents.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(where.window, &event);
    QCoreApplication::processEvents();
}

void keyDown(WVisualObject& object, int keyboardKey, int modifiers)
{
    QWindow* window = windowOf(object);
    if (!window)
        return;
    const char typed = typedBy(keyboardKey, modifiers);
    QTest::sendKeyEvent(QTest::Press, window, toQtKey(keyboardKey),
                        typed ? QString(QChar::fromLatin1(typed)) : QString(), toQt(modifiers));
}

void keyUp(WVisualObject& object, int keyboardKey, int modifiers)
{
    if (QWindow* window = windowOf(object))
        QTest::sendKeyEvent(QTest::Release, window, toQtKey(keyboardKey), QString(),
                            toQt(modifiers));
}

void key(WVisualObject& object, int keyboardKey, int modifiers)
{
    const QPointer<QWindow> window = windowOf(object);
    if (!window)
        return;
    const char typed = typedBy(keyboardKey, modifiers);
    const QString text = typed ? QString(QChar::fromLatin1(typed)) : QString();
    QTest::sendKeyEvent(QTest::Press, window, toQtKey(keyboardKey), text, toQt(modifiers));
    if (window) // the press may have destroyed it
        QTest::sendKeyEvent(QTest::Release, window, toQtKey(keyboardKey), text, toQt(modifiers));
}

void type(WVisualObject& object, std::wstring_view text)
{
    const QPointer<QWindow> window = windowOf(object);
    for (const QChar& c : QString::fromWCharArray(text.data(), static_cast<int>(text.size()))) {
        if (window)
            QTest::sendKeyEvent(QTest::Click, window, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
}

void closeWindow(WForm& form)
{
    if (QWindow* window = windowOf(form))
        window->close();
    QCoreApplication::processEvents();
}

void resizeWindow(WForm& form, int width, int height)
{
    if (QWindow* window = windowOf(form))
        window->resize(width, height);
    QCoreApplication::processEvents();
}

void answerMessageBox(int button)
{
    boxAnswers().push_back({button});
    if (boxAnswers().size() == 1)
        QTimer::singleShot(0, qApp, answerBox);
}

std::wstring lastBoxTitle()
{
    return boxTitle.toStdWString();
}

std::wstring lastBoxText()
{
    return boxText.toStdWString();
}

std::wstring lastBoxButtons()
{
    return boxButtons.toStdWString();
}

int unansweredBoxes()
{
    return static_cast<int>(boxAnswers().size());
}

void answerPopupMenu(std::wstring_view text)
{
    const QString wanted = QString::fromWCharArray(text.data(), static_cast<int>(text.size()));
    QTimer::singleShot(0, qApp, [wanted] { answerMenu(wanted); });
}

void clickMenuItem(WForm& form, WMenuItem& item)
{
    auto* bar = form.native() ? form.native()->widget->findChild<QMenuBar*>() : nullptr;
    if (!bar)
        return;
    const QString wanted = QString::fromStdWString(item.text());
    for (QAction* top : bar->actions()) {
        if (top->text() == wanted) {
            QTest::mouseClick(form.native()->widget->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                              bar->mapTo(bar->window(), bar->actionGeometry(top).center()));
            return;
        }
        for (QAction* action : top->menu() ? top->menu()->actions() : QList<QAction*>()) {
            if (action->text() != wanted)
                continue;
            QTest::mouseClick(form.native()->widget->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                              bar->mapTo(bar->window(), bar->actionGeometry(top).center()));
            QMenu* menu = top->menu();
            waitUntil([menu] { return menu->isVisible(); });
            QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                              menu->actionGeometry(action).center());
            return;
        }
    }
}

void later(std::function<void()> function, int milliseconds)
{
    QTimer::singleShot(milliseconds, qApp, [function = std::move(function)] { function(); });
}

void showAndActivate(WForm& form)
{
    form.show(true);
    form.bringToFront();
    const QWidget* window = form.native() ? form.native()->widget.data() : nullptr;
    waitUntil([&] { return !window || window->isActiveWindow(); });
}

void processEvents()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
}

bool waitUntil(const std::function<bool()>& condition, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > milliseconds)
            return false;
        QTimer wake;
        wake.start(10);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

bool grab(WVisualObject& object, const std::string& path)
{
    return object.native() &&
           object.native()->widget->grab().save(QString::fromStdString(path), "PNG");
}

uint32_t pixel(WVisualObject& object, int x, int y)
{
    if (!object.native())
        return 0;
    return object.native()->widget->grab().toImage().pixel(x, y);
}

std::wstring accessibleName(WVisualObject& object)
{
    QAccessibleInterface* interface =
        object.native() ? QAccessible::queryAccessibleInterface(object.native()->widget) : nullptr;
    return interface ? interface->text(QAccessible::Name).toStdWString() : std::wstring();
}

WVisualObject* focused()
{
    return WVisualObject::focusedObject();
}

} // namespace UiDriver
