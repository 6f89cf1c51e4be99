#include "data/orderbycolumn.h"

#include <oviapi/painter.h>
#include <oviapi/pen.h>
#include <oviapi/recordview.h>

using OviAPI::Color;
using OviAPI::Point;
using OviAPI::Rect;
using OviAPI::Size;

xCOrderByColumn::xCOrderByColumn()
{
    customHeader = true;
}

xCOrderByColumn::xCOrderByColumn(const wchar_t* columnName, unsigned char type, long columnSize,
                                 const wchar_t* title, short columnWidth, short columnMinWidth,
                                 int kind)
    : aCColumn(columnName, type, columnSize, title, columnWidth, columnMinWidth, kind)
{
    customHeader = true;
}

void xCOrderByColumn::DrawHeader(OviAPI::Painter* painter, int col, OviAPI::aCRecordView* view)
{
    Rect rect;
    if (!painter || !view || !view->GetColRect(col, rect, nullptr, true))
        return;
    OviAPI::Draw3DRisedBox(*painter, rect, OviAPI::BoxBrush(), true);
    rect.inflate(-3, -2);

    painter->save();
    painter->setFont(view->GetHeaderFont(col));
    painter->setTextColor(headerColor);
    painter->setBackgroundColor(headerBackground);
    painter->drawText(rect, caption, headerAlign);
    if (m_order != NoOrder) {
        const Rect text = painter->getTextRect(0, 0, caption);
        const Size covered{static_cast<int32_t>(text.width()), static_cast<int32_t>(text.height())};
        for (const OrderTriangle::Line& line : OrderTriangle(rect, covered, m_order).lines) {
            painter->setPen(OviAPI::Pen(line.color, 1, OviAPI::Pen::Solid));
            painter->drawLine(line.from, line.to);
        }
    }
    painter->restore();
}

OrderTriangle::OrderTriangle(const Rect& inside, Size caption, int order)
{
    const auto width = static_cast<int32_t>(inside.width());
    const auto height = static_cast<int32_t>(inside.height());
    const int32_t s = caption.height / 2;
    const int32_t gap = (height - s) / 2;
    const int32_t left = inside.left + (width - caption.width) / 2 + caption.width + gap;
    const int32_t top = inside.top + gap;
    const int32_t middle = left + s / 2;
    const Point topLeft{left, top};
    const Point topRight{left + s, top};
    const Point bottomLeft{left, top + s};
    const Point bottomRight{left + s, top + s};
    const Point topMiddle{middle, top};
    const Point bottomMiddle{middle, top + s};
    if (order == xCOrderByColumn::Ascending) {
        lines = {{{bottomMiddle, topRight, Color::White},
                  {topLeft, topRight, Color::Gray},
                  {topLeft, bottomMiddle, Color::Gray}}};
    } else {
        lines = {{{topMiddle, bottomRight, Color::White},
                  {bottomLeft, topMiddle, Color::Gray},
                  {bottomLeft, bottomRight, Color::White}}};
    }
}
