#include "explorer/splitterbar.h"

#include <oviapi/painter.h>

namespace {

constexpr int keyStep = 16; // px
constexpr int gripLength = 24;

} // namespace

SplitterBar::SplitterBar(Direction direction)
    : m_direction(direction)
{
    setStyle(TabStop);
    setCursor(isUpright() ? OviAPI::CursorShape::SplitHorizontal
                          : OviAPI::CursorShape::SplitVertical);
}

bool SplitterBar::onSplit(int)
{
    return false;
}

bool SplitterBar::onLButtonDown(int x, int y, long)
{
    m_grip = isUpright() ? x : y;
    capture();
    return true;
}

bool SplitterBar::onLButtonUp(int, int, long)
{
    m_grip = -1;
    releaseCapture();
    return true;
}

bool SplitterBar::onMouseMove(int x, int y, long)
{
    if (m_grip < 0)
        return false;
    const int at = isUpright() ? x : y;
    if (at != m_grip)
        OviAPI::dispatch<&SplitterBar::onSplit>(*this, place() + at - m_grip);
    return true;
}

bool SplitterBar::onKeyDown(OviAPI::VirtualKey key)
{
    const int code = key.getKeyboardKey();
    const int back = isUpright() ? OviAPI::KeyLeft : OviAPI::KeyUp;
    const int forth = isUpright() ? OviAPI::KeyRight : OviAPI::KeyDown;
    if (code != back && code != forth)
        return false;
    OviAPI::dispatch<&SplitterBar::onSplit>(*this, place() + (code == back ? -keyStep : keyStep));
    return true;
}

bool SplitterBar::onGetFocus()
{
    repaint();
    return false;
}

bool SplitterBar::onLostFocus()
{
    repaint();
    return false;
}

bool SplitterBar::doPaint(OviAPI::PaintDevice* device)
{
    OviAPI::Painter painter(device);
    if (!painter)
        return false;
    const OviAPI::Size size = clientSize();
    const auto back = hasFocus() ? OviAPI::ColorNumber::Highlight : OviAPI::ColorNumber::Window;
    painter.fillRect({0, 0, size.width, size.height}, OviAPI::Color(back));
    const auto line = hasFocus() ? OviAPI::ColorNumber::HighlightText : OviAPI::ColorNumber::Shadow;
    painter.setPen(OviAPI::Pen(OviAPI::Color(line)));
    const int x = size.width / 2;
    const int y = size.height / 2;
    if (isUpright())
        painter.drawLine(x, y - gripLength / 2, x, y + gripLength / 2);
    else
        painter.drawLine(x - gripLength / 2, y, x + gripLength / 2, y);
    return true;
}
