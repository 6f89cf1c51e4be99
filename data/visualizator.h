// How one series or one element of a chart is drawn.
#pragma once

#include <cstdio>

#include <oviapi/color.h>
#include <oviapi/object.h>
#include <oviapi/pen.h>

#include "app/export.h"

// A record: applications and dialogs read and write its fields. Copying takes the four fields and
// leaves the connections of the object alone.
//
// As text it is a block of seven lines: width, style, shown (1 or 0), the word "color", and the
// red, green and blue component of the colour.
class OVIEXT_API xCVisualizator : public OviAPI::Object {
public:
    xCVisualizator() = default;
    xCVisualizator(OviAPI::Color lineColor, int lineWidth, int lineStyle, bool isShown)
        : penWidth(lineWidth)
        , penStyle(lineStyle)
        , shown(isShown)
        , color(lineColor)
    {
    }
    xCVisualizator(const xCVisualizator& other);
    xCVisualizator& operator=(const xCVisualizator& other);

    // Writes the block; false when the file did not take it.
    bool save(FILE* file) const;
    // Reads a block. Line breaks between the numbers are not checked, the fourth line is not
    // compared with anything, and a number that cannot be read leaves its field as it was.
    void load(FILE* file);

    // The pen that draws it; a style that no pen has draws solid.
    OviAPI::Pen pen() const
    {
        return OviAPI::Pen(color, penWidth, static_cast<OviAPI::Pen::Style>(penStyle));
    }

    int penWidth = 1;                  // pixels
    int penStyle = OviAPI::Pen::Solid; // OviAPI::Pen::Style; of a bar, OviAPI::Brush::HatchStyle
    bool shown = true;
    OviAPI::Color color;
};
