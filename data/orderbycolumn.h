// A column that shows in its header how the query is sorted by it.
#pragma once

#include <array>

#include <oviapi/color.h>
#include <oviapi/column.h>
#include <oviapi/geometry.h>

#include "app/export.h"

// The order is a state of the column alone: who builds the query reads it.
class OVIEXT_API xCOrderByColumn : public OviAPI::aCColumn {
public:
    enum OrderKind : int { NoOrder = 0, Ascending = 1, Descending = 2 };

    xCOrderByColumn();
    // The arguments of aCColumn.
    xCOrderByColumn(const wchar_t* columnName, unsigned char type, long columnSize,
                    const wchar_t* title, short columnWidth, short columnMinWidth, int kind);

    // A raised box with the caption and, for a sorted column, a triangle to the right of it.
    void DrawHeader(OviAPI::Painter* painter, int col, OviAPI::aCRecordView* view) override;

    OrderKind m_order = NoOrder;
};

// The engraved triangle of a header, as lines in the order in which they are drawn.
struct OVIEXT_API OrderTriangle {
    struct Line {
        OviAPI::Point from;
        OviAPI::Point to;
        OviAPI::Color color;
    };

    // inside: where the caption stands. caption: its size. Lengths in pixels; half a pixel is
    // dropped:
    //
    //     s  half the caption's height: width and height of the triangle's box
    //     g  (height of inside - s) / 2: gap above the box, and between a centred caption and it
    //
    // Ascending points down, any other order up.
    OrderTriangle(const OviAPI::Rect& inside, OviAPI::Size caption, int order);

    std::array<Line, 3> lines;
};
