// Pictures of windows.
#pragma once

#include <oviapi/export.h>
#include <oviapi/picture.h>

namespace OviAPI {

class WVisualObject;

// The window that holds the object and every window that stands in front of it - dialogs, message
// boxes, open menus, tool tips -, each but the last two with its title in a strip above it, as on a
// desktop. Paints what waits to be painted. Null when the object has no window that can be seen.
// User-interface thread only.
OVIAPI_API Picture captureWindow(const WVisualObject& object);

// The same of the program's active window.
OVIAPI_API Picture captureActiveWindow();

} // namespace OviAPI
