#include "explorer/imageview.h"

#include <algorithm>

#include <oviapi/painter.h>

OviAPI::Rect fittedRect(OviAPI::Size picture, OviAPI::Size area)
{
    if (picture.width <= 0 || picture.height <= 0 || area.width <= 0 || area.height <= 0)
        return {};
    const double scale =
        std::min({1.0, double(area.width) / picture.width, double(area.height) / picture.height});
    const int width = std::max(1, static_cast<int>(picture.width * scale));
    const int height = std::max(1, static_cast<int>(picture.height * scale));
    const int left = (area.width - width) / 2;
    const int top = (area.height - height) / 2;
    return {left, top, left + width, top + height};
}

void ImageView::setPicture(OviAPI::Picture picture)
{
    m_picture = std::move(picture);
    repaint();
}

bool ImageView::doPaint(OviAPI::PaintDevice* device)
{
    OviAPI::Painter painter(device);
    if (!painter)
        return false;
    const OviAPI::Size size = clientSize();
    painter.fillRect({0, 0, size.width, size.height}, OviAPI::Color(OviAPI::ColorNumber::Field));
    if (!m_picture.isNull())
        painter.stretchPicture(fittedRect(m_picture.size(), size), m_picture);
    return true;
}

bool ImageView::onSize()
{
    repaint();
    return false;
}
