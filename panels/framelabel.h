// What the titles of the framed panels have in common.
#pragma once

#include <oviapi/container.h>
#include <oviapi/static.h>
#include <oviapi/wvisualobject.h>

// Makes the label hide the line of the frame that runs through it: its background is that of the
// parent.
inline void coverFrame(OviAPI::WStatic& label, const OviAPI::Container* parent)
{
    if (const auto* above = dynamic_cast<const OviAPI::WVisualObject*>(parent))
        label.setBackColor(above->backColor());
}
