// Keys and mouse buttons pressed by a program, for tours and tests.
#pragma once

#include <string_view>

#include <oviapi/export.h>
#include <oviapi/geometry.h>
#include <oviapi/virtualkey.h>

namespace OviAPI {

class WVisualObject;

// Everything goes through the window system layer, so that the same happens as when a user does it:
// shortcuts, mnemonics, default buttons, focus, blocking by modal windows. The calls return at
// once; the event loop carries them out in their order, a local loop as well. User-interface thread
// only.
class OVIAPI_API InputDriver {
public:
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
};

} // namespace OviAPI
