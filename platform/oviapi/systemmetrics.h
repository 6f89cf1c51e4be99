// Sizes of the desktop, in device-independent pixels.
#pragma once

#include <oviapi/export.h>
#include <oviapi/geometry.h>

namespace OviAPI {

// Everything is 0 before the application is started.
class OVIAPI_API SystemMetrics {
public:
    // The part of the main screen that panels and docks leave free, and the whole of it.
    static Rect getAvailableRect();
    static Rect getScreenRect();
    static int getScrollBarWidth();  // of a vertical scroll bar
    static int getScrollBarHeight(); // of a horizontal one
    // Two presses closer than this are a double click.
    static int getDoubleClickTime(); // ms
    static int getDragDistance();    // a press that has moved this far is a drag
    static int getSmallIconSize();
    static int getLargeIconSize();
    // Device pixels per pixel of the main screen.
    static double getPixelRatio();
};

} // namespace OviAPI
