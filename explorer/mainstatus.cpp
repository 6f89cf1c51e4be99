#include "explorer/mainstatus.h"

#include <algorithm>
#include <numeric>

#include <oviapi/painter.h>

namespace {

constexpr int besideText = 16; // px that a pane takes more than its text

} // namespace

std::array<int, MainStatus::FieldCount>
statusWidths(const std::array<int, MainStatus::FieldCount>& wanted, int width)
{
    std::array<int, MainStatus::FieldCount> widths = wanted;
    widths[MainStatus::Database] = widths[MainStatus::Value] = 0;
    const int first = std::accumulate(widths.begin(), widths.end(), 0);
    const int room = width * 3 / 4;
    if (first > room) {
        for (int& each : widths)
            each = static_cast<int>(int64_t{each} * room / first);
    }
    const int rest = std::max(0, width - std::accumulate(widths.begin(), widths.end(), 0));
    widths[MainStatus::Value] = std::min(
        wanted[MainStatus::Value], std::max(rest - wanted[MainStatus::Database], rest * 2 / 3));
    widths[MainStatus::Database] = rest - widths[MainStatus::Value];
    return widths;
}

void MainStatus::setField(Field field, const std::wstring& text)
{
    if (m_texts[field] == text)
        return;
    const bool samePanes = m_texts[field].empty() == text.empty();
    m_texts[field] = text;
    if (!samePanes || m_shown.empty())
        rebuild();
    std::wstring all;
    for (size_t pane = 0; pane < m_shown.size(); ++pane) {
        const std::wstring& part = m_texts[m_shown[pane]];
        setPaneText(static_cast<int>(pane), part.c_str());
        all += (all.empty() ? L"" : L"\n") + part;
    }
    setToolTip(all.c_str());
    setAccessibleName(all.c_str());
    fit();
}

void MainStatus::rebuild()
{
    clear();
    m_shown.clear();
    for (int i = 0; i < FieldCount; ++i) {
        const auto field = static_cast<Field>(i);
        if (m_texts[field].empty())
            continue;
        m_shown.push_back(field);
        addPane(0);
    }
}

void MainStatus::fit()
{
    std::array<int, FieldCount> wanted{};
    for (const Field field : m_shown)
        wanted[field] = OviAPI::GetTextSize(font(), m_texts[field]).width + besideText;
    const auto widths = statusWidths(wanted, width());
    for (size_t pane = 0; pane < m_shown.size(); ++pane) {
        const Field field = m_shown[pane];
        // The database's is as wide as the others leave it.
        setPaneWidth(static_cast<int>(pane), field == Database ? 0 : std::max(1, widths[field]));
    }
}
