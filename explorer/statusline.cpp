#include "explorer/statusline.h"

#include <algorithm>

#include <oviapi/painter.h>

namespace {

constexpr int padding = 8; // px left and right of a text
constexpr int spare = 2;   // px that a text may take more than it measures
constexpr int border = 5;  // px above and below it

} // namespace

std::array<int, StatusLine::FieldCount>
statusFieldEnds(const std::array<int, StatusLine::FieldCount>& wanted, int width)
{
    const int middle = wanted[StatusLine::Rows] + wanted[StatusLine::Place];
    const int rest = std::max(0, width - middle);
    // The last field matters more: it gets up to two thirds when both cannot have what they want.
    const int last = std::min(wanted[StatusLine::Value],
                              std::max(rest - wanted[StatusLine::Database], rest * 2 / 3));
    const int first = rest - last;
    return {first, first + wanted[StatusLine::Rows], first + middle, width};
}

void StatusLine::setField(Field field, const std::wstring& text)
{
    if (m_texts[field] == text)
        return;
    m_texts[field] = text;
    std::wstring all;
    for (const std::wstring& part : m_texts) {
        if (!part.empty())
            all += (all.empty() ? L"" : L"\n") + part;
    }
    setToolTip(all.c_str());
    setAccessibleName(all.c_str());
    repaint();
}

int StatusLine::wantedHeight() const
{
    return OviAPI::GetTextSize(font(), L"Xg").height + 2 * border;
}

bool StatusLine::doPaint(OviAPI::PaintDevice* device)
{
    OviAPI::Painter painter(device);
    if (!painter)
        return false;
    const OviAPI::Size size = clientSize();
    painter.fillRect({0, 0, size.width, size.height}, OviAPI::Color(OviAPI::ColorNumber::Window));
    painter.setPen(OviAPI::Pen(OviAPI::Color(OviAPI::ColorNumber::GridLine)));
    painter.drawLine(0, 0, size.width, 0);
    painter.setTextColor(OviAPI::Color(OviAPI::ColorNumber::WindowText));

    std::array<int, FieldCount> wanted{};
    for (size_t i = 0; i < wanted.size(); ++i) {
        const int width = OviAPI::GetTextSize(painter, m_texts[i]).width;
        wanted[i] = m_texts[i].empty() ? 0 : width + 2 * padding + spare;
    }
    const auto ends = statusFieldEnds(wanted, size.width);
    int left = 0;
    for (size_t i = 0; i < wanted.size(); ++i) {
        if (left > 0 && !m_texts[i].empty())
            painter.drawLine(left, border, left, size.height - border);
        painter.drawText({left + padding, 1, ends[i] - padding, size.height}, m_texts[i],
                         OviAPI::TextVCenter | OviAPI::TextElide);
        left = ends[i];
    }
    return true;
}
