#include "app/extstatic.h"

#include <algorithm>

#include <oviapi/painter.h>

namespace {

constexpr int textSize = 256; // wide characters

} // namespace

WExtStatic::WExtStatic() = default;

WExtStatic::~WExtStatic() = default;

void WExtStatic::setText(const wchar_t* text)
{
    OviAPI::WStatic::setText(text);
    // A label without an area is not painted, and would never take the size of its text.
    if (width() <= 0 || height() <= 0)
        move(x(), y(), std::max(width(), 1), std::max(height(), 1));
    repaint();
}

bool WExtStatic::doPaint(OviAPI::PaintDevice* device)
{
    wchar_t text[textSize] = L"";
    getText(text, textSize);
    {
        OviAPI::Painter painter(device);
        if (!painter)
            return false;
        painter.setFont(font());
        const OviAPI::Rect rect = painter.getTextRect(x(), y(), text, -1);
        move(rect.left, rect.top, static_cast<int>(rect.width()), static_cast<int>(rect.height()));
    }
    return OviAPI::WStatic::doPaint(device);
}
