// The arithmetic of a record view: where columns stand, how a scroll bar counts rows, what is
// selected. Nothing here knows a window.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

// A scroll bar counts in 32 bits; this maps positions of any range onto it. Both ends of the range
// are always reached exactly.
class OVIAPI_API ScrollMap {
public:
    static constexpr int maxSlider = 1 << 30;

    // Positions 0..last; a negative last counts as 0.
    explicit ScrollMap(int64_t last = 0)
        : m_last(last < 0 ? 0 : last)
    {
    }

    int64_t last() const { return m_last; }
    int sliderMax() const { return m_last < maxSlider ? static_cast<int>(m_last) : maxSlider; }
    int sliderFor(int64_t position) const;
    int64_t positionFor(int slider) const;
    // The page step of the slider, one at least.
    int sliderPage(int64_t page) const;
    int64_t clamped(int64_t position) const;

private:
    int64_t m_last;
};

// Columns side by side, counted from 0; pixels from the left edge of the first one. Finding a
// column takes the logarithm of their number.
class OVIAPI_API ColumnLayout {
public:
    // Negative widths count as 0. Returns whether anything has changed.
    bool setWidths(std::span<const int> widths);

    int count() const { return static_cast<int>(m_edges.size()) - 1; }
    int64_t left(int column) const { return m_edges[static_cast<size_t>(column)]; }
    int64_t right(int column) const { return m_edges[static_cast<size_t>(column) + 1]; }
    int width(int column) const { return static_cast<int>(right(column) - left(column)); }
    int64_t total() const { return m_edges.back(); }

    // The column that holds the pixel, -1 left of the first and right of the last one.
    int columnAt(int64_t x) const;
    // The first column of which something lies at x or right of it; count() for none.
    int firstFrom(int64_t x) const;
    // The column whose right edge is at most tolerance pixels away, -1 for none. Of several the
    // nearest; of hidden columns (width 0) at one place the last, so that it can be opened again.
    int edgeAt(int64_t x, int tolerance) const;

private:
    std::vector<int64_t> m_edges{0};
};

// The focused cell and the cells selected with it. Columns and rows are counted from 1; a column or
// row of 0 is none. Where whole rows or columns are selected, rows added later belong to them.
class OVIAPI_API RecordSelection {
public:
    struct Range {
        int firstCol = 0;
        int lastCol = -1;
        int64_t firstRow = 0;
        int64_t lastRow = -1;

        bool isEmpty() const { return lastCol < firstCol || lastRow < firstRow; }
        bool isSingle() const { return firstCol == lastCol && firstRow == lastRow; }
        bool operator==(const Range&) const = default;
    };

    int col() const { return m_col; }
    int64_t row() const { return m_row; }

    // Only this cell.
    void moveTo(int col, int64_t row);
    // From the cell that was focused first to this one.
    void extendTo(int col, int64_t row);
    // Whole rows or columns of what is selected now.
    void extendToRows() { m_wholeRows = true; }
    void extendToColumns() { m_wholeColumns = true; }
    void selectAll();
    // Back to the focused cell.
    void collapse() { moveTo(m_col, m_row); }

    Range range(int columns, int64_t rows) const;
    bool contains(int col, int64_t row) const;
    // More than the focused cell.
    bool isRange() const;
    bool wholeRows() const { return m_wholeRows; }
    bool wholeColumns() const { return m_wholeColumns; }

private:
    int m_col = 0;
    int64_t m_row = 0;
    int m_anchorCol = 0;
    int64_t m_anchorRow = 0;
    bool m_wholeRows = false;
    bool m_wholeColumns = false;
};

} // namespace OviAPI
