// What a test does and sees in windows: the calls of InputDriver with the answers to message boxes
// and menus, waiting and looking. A modal form blocks the others, shortcuts work and the focus
// decides where keys go.
//
// Link ui_driver. The test's main makes an Application and calls start() before it runs the tests.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/font.h>
#include <oviapi/geometry.h>
#include <oviapi/inputdriver.h>
#include <oviapi/virtualkey.h>

namespace OviAPI {
class WForm;
class WMenuItem;
class WVisualObject;
} // namespace OviAPI

namespace UiDriver {

using Button = OviAPI::InputDriver::Button;

// Mouse. x, y: pixels in the object's client area, -1 for its middle. modifiers:
// OviAPI::KeyModifier.
void click(OviAPI::WVisualObject& object, int x = -1, int y = -1, Button button = Button::Left,
           int modifiers = 0);
void doubleClick(OviAPI::WVisualObject& object, int x = -1, int y = -1,
                 Button button = Button::Left, int modifiers = 0);
void press(OviAPI::WVisualObject& object, int x, int y, Button button = Button::Left,
           int modifiers = 0);
void release(OviAPI::WVisualObject& object, int x, int y, Button button = Button::Left,
             int modifiers = 0);
// Moves the pointer; buttons that press() pushed down and release() did not let go stay down.
void moveTo(OviAPI::WVisualObject& object, int x, int y, int modifiers = 0);
// Press, move in steps, release.
void drag(OviAPI::WVisualObject& object, OviAPI::Point from, OviAPI::Point to,
          Button button = Button::Left, int modifiers = 0);
// notches: positive away from the user.
void wheel(OviAPI::WVisualObject& object, int x, int y, int notches, int modifiers = 0);

// Keyboard. Keys go to the window of the object, there to what has the focus. keyboardKey:
// OviAPI::KeyboardKey.
void key(OviAPI::WVisualObject& object, int keyboardKey, int modifiers = 0);
void keyDown(OviAPI::WVisualObject& object, int keyboardKey, int modifiers = 0);
void keyUp(OviAPI::WVisualObject& object, int keyboardKey, int modifiers = 0);
void type(OviAPI::WVisualObject& object, std::wstring_view text);

// Presses the close box of the window.
void closeWindow(OviAPI::WForm& form);
// Gives the window another size, as its user does by the border.
void resizeWindow(OviAPI::WForm& form, int width, int height);

// Presses a button (OviAPI::MsgBox::Button; 0 the close box, -1 Escape) of the next message box
// that appears, from the event loop. Several calls answer several boxes in order.
void answerMessageBox(int button);
inline void pressMessageBoxButton(int button)
{
    answerMessageBox(button);
}
// Title, text and button captions of the box answered last.
std::wstring lastBoxTitle();
std::wstring lastBoxText();
std::wstring lastBoxButtons();            // joined by '|'
std::vector<OviAPI::Font> lastBoxFonts(); // of its text and of each button
// How many answers still wait for their box.
int unansweredBoxes();

// Chooses the line with this text of the next popup menu that appears, from the event loop; an
// empty text presses Escape.
void answerPopupMenu(std::wstring_view text);
// Chooses an item of a form's menu bar.
void clickMenuItem(OviAPI::WForm& form, OviAPI::WMenuItem& item);

// Calls the function from the event loop, after so many milliseconds.
void later(std::function<void()> function, int milliseconds = 0);

// Shows the form and waits until it is exposed and active.
void showAndActivate(OviAPI::WForm& form);
// Handles events until none is pending.
void processEvents();
// Handles events until the condition holds; false when it does not within the time.
bool waitUntil(const std::function<bool()>& condition, int milliseconds = 5000);

// Writes what the object looks like to a PNG file.
bool grab(OviAPI::WVisualObject& object, const std::string& path);
// 0xAARRGGBB of one pixel of what the object looks like now.
uint32_t pixel(OviAPI::WVisualObject& object, int x, int y);

// What assistive technology is told.
std::wstring accessibleName(OviAPI::WVisualObject& object);
// The toolkit's number of its role, 0 for none.
int accessibleRole(OviAPI::WVisualObject& object);
// The object with the focus in the active window; null when there is none.
OviAPI::WVisualObject* focused();

} // namespace UiDriver
