#include "explorer/noticepanel.h"

#include <algorithm>

#include <oviapi/painter.h>

namespace {

constexpr int margin = 24; // px
constexpr int widestText = 440;
constexpr int gap = 10;

} // namespace

void NoticePanel::setNotice(const std::wstring& heading, const std::wstring& hint)
{
    m_heading = heading;
    m_hint = hint;
    setAccessibleName(heading.c_str());
    setAccessibleDescription(hint.c_str());
    repaint();
}

bool NoticePanel::doPaint(OviAPI::PaintDevice* device)
{
    OviAPI::Painter painter(device);
    if (!painter)
        return false;
    const OviAPI::Size size = clientSize();
    painter.fillRect({0, 0, size.width, size.height}, OviAPI::Color(OviAPI::ColorNumber::Field));
    painter.setTextColor(OviAPI::Color(OviAPI::ColorNumber::FieldText));

    const OviAPI::Font plain = font();
    const int width = std::clamp(size.width - 2 * margin, 0, widestText);
    const int left = (size.width - width) / 2;
    const int top = std::max(margin, size.height / 3);
    painter.setFont({plain.name(), plain.size() + 2, true});
    const int headingHeight = painter.getTextHeight() * 2;
    painter.drawText({left, top - headingHeight, left + width, top}, m_heading,
                     OviAPI::TextCenter | OviAPI::TextBottom | OviAPI::TextWordWrap);
    painter.setFont(plain);
    painter.drawText({left, top + gap, left + width, size.height}, m_hint,
                     OviAPI::TextCenter | OviAPI::TextWordWrap);
    return true;
}
