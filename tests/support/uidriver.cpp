#include "tests/support/uidriver.h"

#include <deque>
#include <memory>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
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

using Mouse = InputDriver::Mouse;

Point placeIn(const WVisualObject& object, int x, int y)
{
    const QWidget* surface = object.native() ? object.native()->surface.data() : nullptr;
    if (!surface)
        return {};
    return {x == -1 ? surface->width() / 2 : x, y == -1 ? surface->height() / 2 : y};
}

QWindow* windowOf(const WVisualObject& object)
{
    const QWidget* surface = object.native() ? object.native()->surface.data() : nullptr;
    return surface ? surface->window()->windowHandle() : nullptr;
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
std::vector<Font> boxFonts;

QMessageBox* openBox()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    return box && box->isVisible() ? box : nullptr;
}

Font fontOf(const QFont& font)
{
    return {font.family().toStdWString(),
            font.pointSize(),
            font.bold(),
            font.italic(),
            font.underline(),
            font.strikeOut()};
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
    boxFonts.clear();
    if (const auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        boxFonts.push_back(fontOf(label->font()));
    for (QAbstractButton* each : box->buttons())
        boxFonts.push_back(fontOf(each->font()));
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
    Mouse(object, modifiers).press(placeIn(object, x, y), button);
    QCoreApplication::processEvents();
}

void release(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    Mouse(object, modifiers).release(placeIn(object, x, y), button);
    QCoreApplication::processEvents();
}

void click(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    // The object may be gone after the press.
    Mouse mouse(object, modifiers);
    const Point place = placeIn(object, x, y);
    mouse.press(place, button);
    QCoreApplication::processEvents();
    mouse.release(place, button);
    QCoreApplication::processEvents();
}

void doubleClick(WVisualObject& object, int x, int y, Button button, int modifiers)
{
    Mouse(object, modifiers).doubleClick(placeIn(object, x, y), button);
    QCoreApplication::processEvents();
}

void moveTo(WVisualObject& object, int x, int y, int modifiers)
{
    Mouse(object, modifiers).move(placeIn(object, x, y));
    QCoreApplication::processEvents();
}

void drag(WVisualObject& object, Point from, Point to, Button button, int modifiers)
{
    Mouse mouse(object, modifiers);
    constexpr int steps = 4;
    mouse.press(from, button);
    for (int i = 1; i <= steps; ++i) {
        QCoreApplication::processEvents();
        mouse.move({from.x + (to.x - from.x) * i / steps, from.y + (to.y - from.y) * i / steps});
    }
    mouse.release(to, button);
    QCoreApplication::processEvents();
}

void wheel(WVisualObject& object, int x, int y, int notches, int modifiers)
{
    QWindow* window = windowOf(object);
    if (!window)
        return;
    const Point place = placeIn(object, x, y);
    const QWidget* surface = object.native()->surface;
    const QPointF at = surface->mapTo(surface->window(), QPoint(place.x, place.y));
    Qt::KeyboardModifiers held;
    held.setFlag(Qt::ShiftModifier, (modifiers & ModifierShift) != 0);
    held.setFlag(Qt::ControlModifier, (modifiers & ModifierControl) != 0);
    held.setFlag(Qt::AltModifier, (modifiers & ModifierAlt) != 0);
    QWheelEvent event(at, window->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      held, Qt::NoScrollPhase, false);
    // Only what seems to come from outside goes up to the parents.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(window, &event);
    QCoreApplication::processEvents();
}

void keyDown(WVisualObject& object, int keyboardKey, int modifiers)
{
    InputDriver::pressKey(object, {keyboardKey, modifiers});
}

void keyUp(WVisualObject& object, int keyboardKey, int modifiers)
{
    InputDriver::releaseKey(object, {keyboardKey, modifiers});
}

void key(WVisualObject& object, int keyboardKey, int modifiers)
{
    const auto life = object.life();
    keyDown(object, keyboardKey, modifiers);
    if (!life.expired())
        keyUp(object, keyboardKey, modifiers);
}

void type(WVisualObject& object, std::wstring_view text)
{
    InputDriver::typeNow(object, text);
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
    const QWidget* widget = form.native() ? form.native()->widget.data() : nullptr;
    if (widget) // a window manager answers later
        waitUntil([&] { return widget->size() == QSize(width, height); });
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

std::vector<Font> lastBoxFonts()
{
    return boxFonts;
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

int accessibleRole(WVisualObject& object)
{
    QAccessibleInterface* interface =
        object.native() ? QAccessible::queryAccessibleInterface(object.native()->widget) : nullptr;
    return interface ? interface->role() : 0;
}

WVisualObject* focused()
{
    return WVisualObject::focusedObject();
}

} // namespace UiDriver
