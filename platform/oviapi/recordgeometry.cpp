#include <oviapi/recordgeometry.h>

#include <algorithm>
#include <cmath>

namespace OviAPI {

namespace {

// a * b / c without overflow in between; the result must fit.
int64_t mulDiv(int64_t a, int64_t b, int64_t c)
{
    __extension__ using Wide = __int128;
    return static_cast<int64_t>(static_cast<Wide>(a) * b / c);
}

} // namespace

int64_t ScrollMap::clamped(int64_t position) const
{
    return std::clamp<int64_t>(position, 0, m_last);
}

int ScrollMap::sliderFor(int64_t position) const
{
    position = clamped(position);
    return m_last <= maxSlider ? static_cast<int>(position)
                               : static_cast<int>(mulDiv(position, maxSlider, m_last));
}

int64_t ScrollMap::positionFor(int slider) const
{
    const int at = std::clamp(slider, 0, sliderMax());
    if (m_last <= maxSlider)
        return at;
    // Rounded up, so that the slider for this position, rounded down, is this one again.
    const int64_t down = mulDiv(at, m_last, maxSlider);
    return sliderFor(down) == at ? down : down + 1;
}

int ScrollMap::sliderPage(int64_t page) const
{
    const int64_t whole = std::max<int64_t>(page, 1);
    if (m_last <= maxSlider)
        return static_cast<int>(std::min<int64_t>(whole, maxSlider));
    return std::max(1, sliderFor(whole));
}

bool ColumnLayout::setWidths(std::span<const int> widths)
{
    bool changed = widths.size() + 1 != m_edges.size();
    m_edges.resize(widths.size() + 1);
    int64_t edge = 0;
    for (size_t i = 0; i < widths.size(); ++i) {
        edge += std::max(widths[i], 0);
        changed = changed || m_edges[i + 1] != edge;
        m_edges[i + 1] = edge;
    }
    return changed;
}

int ColumnLayout::firstFrom(int64_t x) const
{
    const auto edge = std::upper_bound(m_edges.begin() + 1, m_edges.end(), x);
    return static_cast<int>(edge - m_edges.begin()) - 1;
}

int ColumnLayout::columnAt(int64_t x) const
{
    return x < 0 || x >= total() ? -1 : firstFrom(x);
}

int ColumnLayout::edgeAt(int64_t x, int tolerance) const
{
    int best = -1;
    int64_t bestDistance = int64_t{tolerance} + 1;
    const auto first = std::lower_bound(m_edges.begin() + 1, m_edges.end(), x - tolerance);
    for (auto edge = first; edge != m_edges.end() && *edge <= x + tolerance; ++edge) {
        const int64_t distance = std::abs(*edge - x);
        if (distance < bestDistance || (distance == bestDistance && *edge == *(edge - 1))) {
            bestDistance = distance;
            best = static_cast<int>(edge - m_edges.begin()) - 1;
        }
    }
    return best;
}

void RecordSelection::moveTo(int col, int64_t row)
{
    m_col = m_anchorCol = col;
    m_row = m_anchorRow = row;
    m_wholeRows = m_wholeColumns = false;
}

void RecordSelection::extendTo(int col, int64_t row)
{
    m_col = col;
    m_row = row;
    if (m_anchorCol == 0)
        m_anchorCol = col;
    if (m_anchorRow == 0)
        m_anchorRow = row;
}

void RecordSelection::selectAll()
{
    m_wholeRows = m_wholeColumns = true;
}

RecordSelection::Range RecordSelection::range(int columns, int64_t rows) const
{
    Range range;
    if (columns < 1 || rows < 1)
        return range;
    if (m_wholeRows) {
        range.firstCol = 1;
        range.lastCol = columns;
    } else if (m_col != 0) {
        range.firstCol = std::clamp(std::min(m_col, m_anchorCol), 1, columns);
        range.lastCol = std::clamp(std::max(m_col, m_anchorCol), 1, columns);
    }
    if (m_wholeColumns) {
        range.firstRow = 1;
        range.lastRow = rows;
    } else if (m_row != 0) {
        range.firstRow = std::clamp<int64_t>(std::min(m_row, m_anchorRow), 1, rows);
        range.lastRow = std::clamp<int64_t>(std::max(m_row, m_anchorRow), 1, rows);
    }
    return range;
}

bool RecordSelection::contains(int col, int64_t row) const
{
    const bool colIn =
        m_wholeRows || (col >= std::min(m_col, m_anchorCol) && col <= std::max(m_col, m_anchorCol));
    const bool rowIn = m_wholeColumns ||
                       (row >= std::min(m_row, m_anchorRow) && row <= std::max(m_row, m_anchorRow));
    return colIn && rowIn;
}

bool RecordSelection::isRange() const
{
    return m_wholeRows || m_wholeColumns || m_col != m_anchorCol || m_row != m_anchorRow;
}

} // namespace OviAPI
