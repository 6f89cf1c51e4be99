// Keys and mouse buttons pressed by a program, for tours and tests.
#pragma once

#include <memory>
#include <string_view>

#include <oviapi/export.h>
#include <oviapi/geometry.h>
#include <oviapi/virtualkey.h>

namespace OviAPI {

class WVisualObject;

// Everything goes through the window system layer, so that the same happens as when a user does it:
// shortcuts, mnemonics, default buttons, focus, blocking by modal windows. A key that has no
// character types what it stands for (see VirtualKey). User-interface thread only.
class OVIAPI_API InputDriver {
public:
    // --- from the event loop: the calls return at once, and the loop carries them out in their
    // order, a local loop as well

    // Presses and releases a key in the window in front: an open menu, else a modal window, else
    // the active one.
    static void key(VirtualKey key);
    // A key for each character.
    static void type(std::wstring_view text);

    // Presses and releases the left button at a point of the object's client area.
    static void click(const WVisualObject& object, Point point, int modifiers = ModifierNone);
    // The second press follows at once.
    static void doubleClick(const WVisualObject& object, Point point);
    // Presses the left button at one point, moves the mouse and releases it at the other.
    static void drag(const WVisualObject& object, Point from, Point to);

    // --- now: the calls return when the handlers have run; the object may be gone then

    // In the object's window, for what has the focus there.
    static void pressKey(const WVisualObject& object, VirtualKey key);
    static void releaseKey(const WVisualObject& object, VirtualKey key);
    static void typeNow(const WVisualObject& object, std::wstring_view text);

    enum class Button { Left, Right, Middle };
    class Mouse;
};

// A mouse over the client area of an object, in the place that this has when the mouse is made; the
// object may move or go afterwards. A button that has been pressed stays down until it is released,
// whichever Mouse does it.
class OVIAPI_API InputDriver::Mouse {
public:
    explicit Mouse(const WVisualObject& object, int modifiers = ModifierNone);
    ~Mouse();
    Mouse(Mouse&& other) noexcept;
    Mouse& operator=(Mouse&& other) noexcept;

    void press(Point point, Button button = Button::Left);
    void move(Point point);
    // A press that follows it is the first of its own click.
    void release(Point point, Button button = Button::Left);
    void doubleClick(Point point, Button button = Button::Left);

private:
    struct Native;
    std::unique_ptr<Native> m_native; // null when the object has no native part
};

} // namespace OviAPI
