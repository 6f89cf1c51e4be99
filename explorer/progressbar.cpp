#include "explorer/progressbar.h"

#include <oviapi/painter.h>

void ProgressBar::setPercent(int percent)
{
    if (percent == m_percent)
        return;
    m_percent = percent;
    repaint();
}

bool ProgressBar::doPaint(OviAPI::PaintDevice* device)
{
    OviAPI::Painter painter(device);
    if (!painter)
        return false;
    const OviAPI::Size size = clientSize();
    painter.setPen(OviAPI::Pen(OviAPI::Color(OviAPI::ColorNumber::Shadow)));
    painter.setBrush(OviAPI::Brush(OviAPI::Color(OviAPI::ColorNumber::Field)));
    painter.drawRect({0, 0, size.width, size.height});
    painter.fillRect({2, 2, 2 + (size.width - 4) * m_percent / 100, size.height - 2},
                     OviAPI::Color(OviAPI::ColorNumber::Highlight));
    return true;
}
