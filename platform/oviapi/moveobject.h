// Placing windows.
#pragma once

#include <oviapi/export.h>
#include <oviapi/geometry.h>

namespace OviAPI {

class WVisualObject;

// Places objects in its own way: registered by WVisualObject::setPositioner.
class OVIAPI_API MoveObjectPositioner {
public:
    MoveObjectPositioner();
    virtual ~MoveObjectPositioner();
    MoveObjectPositioner(const MoveObjectPositioner&) = default;
    MoveObjectPositioner& operator=(const MoveObjectPositioner&) = default;

    // True when the object has been placed; false leaves it to the framework.
    virtual bool positionObject(WVisualObject* object);
};

class OVIAPI_API MoveObject {
public:
    // Places an object for the first time: as its positioner does, else centred. A form is centred
    // over its parent form while that can be seen, else on the screen, and always inside the
    // available part of the screen; a child in the visible part of its parent.
    static void MoveInit(WVisualObject* object);

    // The rectangle of this size centred over another one, then moved into the limits; its upper
    // left corner stays inside them when it does not fit.
    static Rect centered(Size size, const Rect& over, const Rect& limits);
};

} // namespace OviAPI
