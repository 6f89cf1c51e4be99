// What a record view shows and where; its input stands in recordviewinput.cpp, fitting and texts in
// recordviewcells.cpp, painting and the desktop's part in qt/.
#include <oviapi/recordview.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <oviapi/painter.h>
#include <oviapi/phrases.h>
#include <oviapi/recordeditor.h>

namespace OviAPI {

namespace {

constexpr int dragTickMs = 50;

// A 64-bit place as a coordinate; what is far outside the window stays far outside.
int toPixel(int64_t place)
{
    return static_cast<int>(std::clamp<int64_t>(place, -(1 << 28), 1 << 28));
}

} // namespace

aCRecordView::aCRecordView()
    : m_broker(std::make_unique<aCClientAreaBroker>(this))
    , m_editor(std::make_unique<RecordEditor>(*this))
    , m_dragTimer(dragTickMs)
{
    setStyle(long{TabStop} | long{ThinFrame});
    setOpaque();
    m_broker->headerHeight = m_fontHeight + 6;
    m_broker->rowHeight = m_fontHeight + 4;
    connect<&WTimer::onTimer>(m_dragTimer, *this, &aCRecordView::dragTick);
    connect<&WTimer::onTimer>(m_layoutTimer, *this, &aCRecordView::layoutTick);
}

aCRecordView::~aCRecordView()
{
    destroy();
    if (m_dataSet)
        m_dataSet->RemoveViewer(this);
}

bool aCRecordView::create()
{
    const bool fresh = !isCreated();
    if (!aCApsWnd::create())
        return false;
    if (fresh)
        m_editor->nativeComes();
    measureFont();
    initWidths();
    syncLayout();
    updateBars();
    return true;
}

bool aCRecordView::SetDataSet(aCDataSet* dataSet, bool show)
{
    m_editor->drop();
    if (m_dataSet)
        m_dataSet->RemoveViewer(this);
    m_dataSet = dataSet;
    if (m_dataSet)
        m_dataSet->AddViewer(this);
    endDrag();
    m_faults.clear();
    m_rows = -1; // not known
    m_firstRow = 1;
    SetScrollPos(HorizontalBar, 0);
    syncLayout();
    keepSelection(true);
    initWidths();
    syncLayout();
    updateBars();
    if (show)
        repaint();
    return m_dataSet != nullptr;
}

int aCRecordView::GetColCount() const
{
    return m_dataSet ? m_dataSet->GetColCount() : 0;
}

long aCRecordView::GetRowCount() const
{
    return m_dataSet ? m_dataSet->GetRowCount() : 0;
}

bool aCRecordView::SetFont(Font font, short repaintNow)
{
    setFont(font);
    if (repaintNow != 0)
        repaint();
    return true;
}

void aCRecordView::setFont(const Font& font)
{
    aCApsWnd::setFont(font);
    measureFont();
    updateBars();
}

void aCRecordView::measureFont()
{
    if (!isCreated()) // nothing can be measured yet
        return;
    const Size digit = GetTextSize(font(), L"0");
    m_charWidth = std::max(digit.width, 1);
    m_fontHeight = std::max(digit.height, 1);
    m_broker->headerHeight = m_fontHeight + 6;
    m_broker->rowHeight = m_fontHeight + 4;
    m_rows = -1; // the row header is measured with the rows
    syncLayout();
}

bool aCRecordView::syncLayout()
{
    const int count = GetColCount();
    std::vector<int> widths(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        widths[static_cast<size_t>(i)] = m_dataSet->GetColInfo(i + 1)->width;
    bool changed = m_columns.setWidths(widths);
    const long rows = GetRowCount();
    if (rows != m_rows) {
        m_rows = rows;
        changed = true;
        if (m_rowHeaders) {
            const auto digits = static_cast<int>(std::to_wstring(std::max(rows, 99L)).size());
            const int marker = 14;
            m_broker->rowHeaderWidth =
                std::max(m_broker->rowHeaderWidth, digits * m_charWidth + 8 + marker);
        }
    }
    return changed;
}

long aCRecordView::GetRowOnPage() const
{
    const int height = clientHeight() - m_broker->headerHeight;
    return std::max(1L, static_cast<long>(height / std::max(m_broker->rowHeight, 1)));
}

long aCRecordView::lastFirstRow() const
{
    return std::max(1L, m_rows - GetRowOnPage() + 1);
}

long aCRecordView::GetLastVisibleRow() const
{
    return std::max(0L, std::min(m_rows, m_firstRow + GetRowOnPage() - 1));
}

// A bar that comes or goes changes the room for the other one and is told as a new size; two bars
// have settled after three rounds, and columns that follow the room may never do.
void aCRecordView::updateBars()
{
    m_barsStale = true;
    if (std::exchange(m_placingBars, true))
        return;
    for (int round = 0; round < 3 && std::exchange(m_barsStale, false); ++round)
        placeBars();
    m_placingBars = false;
    m_editor->place();
}

void aCRecordView::placeBars()
{
    const int width = std::max(0, clientWidth() - m_broker->rowHeaderWidth);
    const long page = GetRowOnPage();
    const long first = std::clamp(m_firstRow, 1L, lastFirstRow());
    const long left = GetScrollPos(HorizontalBar);
    SetScrollSteps(HorizontalBar, 2L * m_charWidth, std::max(width, 1));
    SetScrollRange(HorizontalBar, std::max<int64_t>(0, m_columns.total() - width));
    SetScrollSteps(VerticalBar, 1, std::max(page - 1, 1L));
    SetScrollRange(VerticalBar, lastFirstRow() - 1);
    SetScrollPos(VerticalBar, first - 1);
    if (first != m_firstRow || left != GetScrollPos(HorizontalBar)) {
        m_firstRow = first;
        repaint();
    }
}

bool aCRecordView::onVisClientSize()
{
    updateBars();
    if (m_editor->isOpen())
        ScrollToCell(m_selection.col(), m_selection.row());
    return false;
}

void aCRecordView::keepSelection(bool toStart)
{
    const int columns = GetColCount();
    if (columns == 0 || m_rows < 1) {
        m_selection.moveTo(0, 0);
        return;
    }
    const int col = m_selection.col();
    const long row = m_selection.row();
    if (toStart || col == 0 || row == 0)
        m_selection.moveTo(1, 1);
    else if (col > columns || row > m_rows)
        m_selection.moveTo(std::min(col, columns), std::min(row, m_rows));
}

void aCRecordView::ReShow(short part, bool toStart, bool layout, bool repaintNow, const Rect* area)
{
    const auto alive = life();
    if (toStart && !m_editor->finish())
        toStart = false; // what could not be stored keeps its place
    if (alive.expired())
        return;
    const long oldRow = m_selection.row();
    m_faults.clear();
    if (toStart) {
        m_firstRow = 1;
        SetScrollPos(HorizontalBar, 0);
    }
    if (layout) {
        measureFont();
        initWidths();
    }
    syncLayout();
    m_editor->followRows();
    keepSelection(toStart);
    updateBars();
    if (repaintNow) {
        Rect all{0, 0, clientWidth(), clientHeight()};
        if (part == 1)
            all.bottom = m_broker->headerHeight;
        else if (part == 2)
            all.top = m_broker->headerHeight;
        repaint(area ? *area : all);
    }
    if (m_selection.row() != oldRow)
        dispatch<&aCRecordView::onRowGetFocus>(*this, oldRow, m_selection.row());
}

void aCRecordView::onDataSetChanged()
{
    if (!m_editor->waitsWithChange())
        ReShow(0, false, true, true, nullptr);
}

void aCRecordView::onRowChanged(long row)
{
    if (!m_editor->waitsWithRow(row))
        showRowAnew(row);
}

void aCRecordView::showRowAnew(long row)
{
    m_faults.erase(row);
    repaintRow(row);
}

void aCRecordView::onDataSetDestroyed()
{
    m_dataSet = nullptr;
    SetDataSet(nullptr, true);
}

void aCRecordView::onRowFollowed(long row)
{
    SetRow(row);
}

void aCRecordView::SetListBoxMode(bool on, int mode)
{
    m_listBox = on && mode == OneWholeRow;
    m_selection.collapse();
    repaint();
}

void aCRecordView::SetBroker(std::unique_ptr<aCClientAreaBroker> broker)
{
    if (!broker)
        return;
    broker->headerHeight = m_broker->headerHeight;
    broker->rowHeight = m_broker->rowHeight;
    broker->rowHeaderWidth = m_broker->rowHeaderWidth;
    broker->SetView(this);
    m_broker = std::move(broker);
}

void aCRecordView::ShowRowHeaders(bool shown)
{
    m_rowHeaders = shown;
    m_broker->rowHeaderWidth = 0;
    m_rows = -1;
    syncLayout();
    updateBars();
    repaint();
}

bool aCRecordView::fetchRow(long row)
{
    if (!m_dataSet || m_faults.contains(row))
        return false;
    try {
        if (m_dataSet->SetRow(row) == 0)
            return true;
    } catch (...) {
        // What the dataset threw is its row error, too; a view that is being painted has nobody to
        // throw it to.
    }
    constexpr size_t most = 1000;
    if (m_faults.size() >= most)
        m_faults.clear();
    const auto* error = m_dataSet->getRowError(row);
    m_faults[row] = error && !error->text.empty() ? error->text : phrase(Phrase::RowNotRead);
    return false;
}

int64_t aCRecordView::columnX(int col) const
{
    return m_broker->rowHeaderWidth + m_columns.left(col - 1) - GetScrollPos(HorizontalBar);
}

Rect aCRecordView::cellsArea() const
{
    return {m_broker->rowHeaderWidth, m_broker->headerHeight, clientWidth(), clientHeight()};
}

bool aCRecordView::GetColRect(int col, Rect& rect, Rect* visible, bool header) const
{
    if (col < 1 || col > m_columns.count())
        return false;
    const int64_t left = columnX(col);
    rect.left = toPixel(left);
    rect.right = toPixel(left + m_columns.width(col - 1));
    rect.top = header ? 0 : m_broker->headerHeight;
    rect.bottom = header ? m_broker->headerHeight : clientHeight();
    if (visible) {
        *visible = rect;
        visible->left = std::max(rect.left, m_broker->rowHeaderWidth);
        visible->right = std::max(visible->left, std::min(rect.right, clientWidth()));
    }
    return true;
}

bool aCRecordView::GetClientCellRect(int col, long row, Rect& rect) const
{
    const long below = row - m_firstRow;
    if (row < 1 || row > m_rows || below < 0 || below > GetRowOnPage() ||
        !GetColRect(col, rect, nullptr, false))
        return false;
    rect.top = m_broker->headerHeight + static_cast<int>(below) * m_broker->rowHeight;
    rect.bottom = rect.top + m_broker->rowHeight;
    return true;
}

Rect aCRecordView::GetRowHeaderRect(long row) const
{
    const long below = std::clamp(row - m_firstRow, -1L, GetRowOnPage() + 1);
    const int top = m_broker->headerHeight + static_cast<int>(below) * m_broker->rowHeight;
    return {0, top, m_broker->rowHeaderWidth, top + m_broker->rowHeight};
}

int aCRecordView::GetColFromPoint(int x, int y) const
{
    if (x < m_broker->rowHeaderWidth || x >= clientWidth() || y < 0 || y >= clientHeight())
        return 0;
    return m_columns.columnAt(x - m_broker->rowHeaderWidth + GetScrollPos(HorizontalBar)) + 1;
}

long aCRecordView::GetRowFromPoint(int x, int y) const
{
    if (x < 0 || x >= clientWidth() || y < m_broker->headerHeight || y >= clientHeight())
        return 0;
    const long row = m_firstRow + (y - m_broker->headerHeight) / std::max(m_broker->rowHeight, 1);
    return row > m_rows ? 0 : row;
}

int aCRecordView::GetEdgeFromPoint(int x, int y) const
{
    constexpr int tolerance = 4; // pixels
    if (y < 0 || y >= m_broker->headerHeight || x < m_broker->rowHeaderWidth - tolerance)
        return 0;
    const int64_t place = x - m_broker->rowHeaderWidth + GetScrollPos(HorizontalBar);
    const int col = m_columns.edgeAt(place, tolerance) + 1;
    // An edge that has been scrolled under the row header is not there.
    if (col == 0 || columnX(col) + m_columns.width(col - 1) < m_broker->rowHeaderWidth)
        return 0;
    const aCColumn* column = m_dataSet ? m_dataSet->GetColInfo(col) : nullptr;
    return column && !column->fixedWidth ? col : 0;
}

void aCRecordView::ScrollToRow(long row)
{
    doScroll(GetScrollPos(HorizontalBar), row - 1);
}

void aCRecordView::ScrollToCell(int col, long row)
{
    long first = m_firstRow;
    if (row < first)
        first = row;
    else if (row > m_firstRow + GetRowOnPage() - 1)
        first = row - GetRowOnPage() + 1;
    long left = GetScrollPos(HorizontalBar);
    if (col >= 1 && col <= m_columns.count()) {
        const long width = std::max(0, clientWidth() - m_broker->rowHeaderWidth);
        // The beginning of a column wider than the window counts.
        left = std::max<long>(left, m_columns.right(col - 1) - width);
        left = std::min<long>(left, m_columns.left(col - 1));
    }
    doScroll(left, first - 1);
}

void aCRecordView::doScroll(long horizontal, long vertical)
{
    const auto alive = life();
    const long wantedLeft = std::clamp(horizontal, 0L, GetScrollRange(HorizontalBar));
    const long wantedFirst = std::clamp(vertical, 0L, GetScrollRange(VerticalBar)) + 1;
    const bool allowed = m_editor->scroll(wantedLeft, wantedFirst);
    if (alive.expired())
        return;
    if (!allowed) { // the bars go back
        horizontal = GetScrollPos(HorizontalBar);
        vertical = m_firstRow - 1;
    }
    const long oldLeft = GetScrollPos(HorizontalBar);
    const long oldFirst = m_firstRow;
    SetScrollPos(HorizontalBar, horizontal);
    SetScrollPos(VerticalBar, vertical);
    m_firstRow = GetScrollPos(VerticalBar) + 1;
    const long right = oldLeft - GetScrollPos(HorizontalBar);
    const long down = oldFirst - m_firstRow;
    if (right == 0 && down == 0)
        return;
    const Rect cells = cellsArea();
    const Rect rows{0, cells.top, cells.right, cells.bottom};
    const Rect columns{cells.left, 0, cells.right, cells.bottom};
    m_editor->place();
    if ((right != 0 && down != 0) || m_editor->coversCells())
        repaint();
    else if (down != 0 && std::abs(down) < GetRowOnPage())
        ScrollPixels(rows, 0, static_cast<int>(down) * m_broker->rowHeight);
    else if (down != 0)
        repaint(rows);
    else if (std::abs(right) < columns.width())
        ScrollPixels(columns, static_cast<int>(right), 0);
    else
        repaint(columns);
}

SlotResult aCRecordView::layoutTick(Object*)
{
    m_layoutTimer.stop();
    updateBars();
    return 1;
}

} // namespace OviAPI
