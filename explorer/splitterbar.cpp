#include "explorer/splitterbar.h"

#include <oviapi/painter.h>

namespace {

constexpr int keyStep = 16; // px
constexpr int gripLength = 24;

} // namespace

SplitterBar::SplitterBar()
{
    setStyle(TabStop);
    setCursor(OviAPI::CursorShape::SplitHorizontal);
}

bool SplitterBar::onSplit(int)
{
    return false;
}

bool SplitterBar::onLButtonDown(int x, int, long)
{
    m_grip = x;
    capture();
    return true;
}

bool SplitterBar::onLButtonUp(int, int, long)
{
    m_grip = -1;
    releaseCapture();
    return true;
}

bool SplitterBar::onMouseMove(int x, int, long)
{
    if (m_grip < 0)
        return false;
    if (x != m_grip)
        OviAPI::dispatch<&SplitterBar::onSplit>(*this, geometry().left + x - m_grip);
    return true;
}

bool SplitterBar::onKeyDown(OviAPI::VirtualKey key)
{
    const int code = key.getKeyboardKey();
    if (code != OviAPI::KeyLeft && code != OviAPI::KeyRight)
        return false;
    const int step = code == OviAPI::KeyLeft ? -keyStep : keyStep;
    OviAPI::dispatch<&SplitterBar::onSplit>(*this, geometry().left + step);
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
    const int height = clientHeight();
    const auto back = hasFocus() ? OviAPI::ColorNumber::Highlight : OviAPI::ColorNumber::Window;
    painter.fillRect({0, 0, clientWidth(), height}, OviAPI::Color(back));
    const auto line = hasFocus() ? OviAPI::ColorNumber::HighlightText : OviAPI::ColorNumber::Shadow;
    painter.setPen(OviAPI::Pen(OviAPI::Color(line)));
    const int x = clientWidth() / 2;
    painter.drawLine(x, (height - gripLength) / 2, x, (height + gripLength) / 2);
    return true;
}
