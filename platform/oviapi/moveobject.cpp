#include <oviapi/moveobject.h>

#include <algorithm>

#include <oviapi/container.h>
#include <oviapi/form.h>
#include <oviapi/systemmetrics.h>
#include <oviapi/wvisualobject.h>

namespace OviAPI {

namespace {

// Start of a length centred over [from, to), inside [low, high).
int32_t centeredStart(int64_t length, int64_t from, int64_t to, int64_t low, int64_t high)
{
    const int64_t start = std::min(from + (to - from - length) / 2, high - length);
    return static_cast<int32_t>(std::max(start, low));
}

} // namespace

MoveObjectPositioner::MoveObjectPositioner() = default;
MoveObjectPositioner::~MoveObjectPositioner() = default;

bool MoveObjectPositioner::positionObject(WVisualObject*)
{
    return false;
}

Rect MoveObject::centered(Size size, const Rect& over, const Rect& limits)
{
    Rect rect;
    rect.left = centeredStart(size.width, over.left, over.right, limits.left, limits.right);
    rect.top = centeredStart(size.height, over.top, over.bottom, limits.top, limits.bottom);
    rect.right = rect.left + size.width;
    rect.bottom = rect.top + size.height;
    return rect;
}

void MoveObject::MoveInit(WVisualObject* object)
{
    if (!object)
        return;
    if (object->positioner() && object->positioner()->positionObject(object))
        return;
    const auto* above = dynamic_cast<WVisualObject*>(object->parent());
    Rect limits = SystemMetrics::getAvailableRect();
    Rect over = limits;
    if (dynamic_cast<WForm*>(object)) {
        if (above && above->isVisible())
            over = above->geometry();
    } else if (above) {
        limits = over = above->visibleClientRect();
    }
    const Rect place = centered({object->width(), object->height()}, over, limits);
    object->move(place.left, place.top, object->width(), object->height());
}

} // namespace OviAPI
