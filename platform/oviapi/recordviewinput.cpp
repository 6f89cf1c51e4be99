// Keyboard and mouse of a record view.
#include <oviapi/recordview.h>

#include <algorithm>

#include <oviapi/recordeditor.h>

namespace OviAPI {

namespace {

constexpr int rowsPerNotch = 3;
constexpr int notch = 120;

} // namespace

RecordSelection::Range aCRecordView::GetSelection() const
{
    if (m_listBox && m_selection.row() != 0)
        return {1, GetColCount(), m_selection.row(), m_selection.row()};
    return m_selection.range(GetColCount(), m_rows);
}

void aCRecordView::repaintRow(long row)
{
    const long below = row - m_firstRow;
    if (row < 1 || below < 0 || below > GetRowOnPage())
        return;
    Rect line = GetRowHeaderRect(row);
    line.right = clientWidth();
    repaint(line);
}

// Shows what a change of focus or selection has changed, then tells about it. Nothing may be
// touched behind it: a slot may have deleted the view.
void aCRecordView::afterFocus(int oldCol, long oldRow, bool repaintAll)
{
    const int col = m_selection.col();
    const long row = m_selection.row();
    if (repaintAll) {
        Rect rows = cellsArea();
        rows.left = 0;
        repaint(rows);
    } else {
        repaintRow(oldRow);
        repaintRow(row);
    }
    ScrollToCell(m_listBox ? 0 : col, row);
    tellFocus();
    const auto alive = life();
    if (row != oldRow)
        dispatch<&aCRecordView::onRowGetFocus>(*this, oldRow, row);
    if (!alive.expired() && (row != oldRow || col != oldCol))
        dispatch<&aCRecordView::onCellGetFocus>(*this, col, row);
    if (!alive.expired() && repaintAll)
        dispatch<&aCRecordView::onSelectionChanged>(*this);
}

bool aCRecordView::SetFocusCell(int col, long row)
{
    return col >= 1 && col <= GetColCount() && row >= 1 && row <= GetRowCount() &&
           moveFocus(col, row, false);
}

bool aCRecordView::ExtendTo(int col, long row)
{
    return col >= 1 && col <= GetColCount() && row >= 1 && row <= GetRowCount() &&
           moveFocus(col, row, true);
}

// False without cells, and when what would be left cannot be stored; a place outside is the nearest
// one inside.
bool aCRecordView::moveFocus(int col, long row, bool extend)
{
    const auto alive = life();
    if (syncLayout())
        updateBars();
    if (m_rows < 1 || GetColCount() < 1)
        return false;
    col = std::clamp(col, 1, GetColCount());
    row = std::clamp(row, 1L, m_rows);
    if (!m_editor->leave(col, row) || alive.expired())
        return false;
    // Storing may have changed the rows.
    if (syncLayout())
        updateBars();
    if (m_rows < 1 || GetColCount() < 1)
        return false;
    const int oldCol = m_selection.col();
    const long oldRow = m_selection.row();
    const bool wasRange = m_selection.isRange();
    col = std::clamp(col, 1, GetColCount());
    row = std::clamp(row, 1L, m_rows);
    if (extend && !m_listBox)
        m_selection.extendTo(col, row);
    else
        m_selection.moveTo(col, row);
    if (col == oldCol && row == oldRow && !wasRange) {
        ScrollToCell(m_listBox ? 0 : col, row);
        return true;
    }
    afterFocus(oldCol, oldRow, wasRange || m_selection.isRange());
    return true;
}

void aCRecordView::SelectAll()
{
    if (m_listBox || m_selection.row() == 0)
        return;
    m_selection.selectAll();
    repaint();
    dispatch<&aCRecordView::onSelectionChanged>(*this);
}

void aCRecordView::SelectRows()
{
    if (m_listBox || m_selection.row() == 0)
        return;
    m_selection.extendToRows();
    repaint();
    dispatch<&aCRecordView::onSelectionChanged>(*this);
}

void aCRecordView::SelectColumns()
{
    if (m_listBox || m_selection.row() == 0)
        return;
    m_selection.extendToColumns();
    repaint();
    dispatch<&aCRecordView::onSelectionChanged>(*this);
}

bool aCRecordView::moveKey(VirtualKey key)
{
    int col = m_selection.col();
    long row = m_selection.row();
    const long page = std::max(1L, GetRowOnPage() - 1);
    const bool far = key.control();
    switch (key.getKeyboardKey()) {
    case KeyUp:
        row = far ? 1 : row - 1;
        break;
    case KeyDown:
        row = far ? m_rows : row + 1;
        break;
    case KeyPageUp:
        row = far ? 1 : row - page;
        break;
    case KeyPageDown: // a sum that would overflow is far behind the last row anyway
        row = far || row > m_rows - page ? m_rows : row + page;
        break;
    case KeyLeft:
        col = far ? 1 : col - 1;
        break;
    case KeyRight:
        col = far ? GetColCount() : col + 1;
        break;
    case KeyHome:
        row = far || m_listBox ? 1 : row;
        col = 1;
        break;
    case KeyEnd:
        row = far || m_listBox ? m_rows : row;
        col = GetColCount();
        break;
    default:
        return false;
    }
    if (m_listBox && (key.getKeyboardKey() == KeyLeft || key.getKeyboardKey() == KeyRight)) {
        const long by = key.getKeyboardKey() == KeyLeft ? -2L : 2L;
        doScroll(GetScrollPos(HorizontalBar) + by * m_charWidth, m_firstRow - 1);
        return true;
    }
    moveFocus(col, row, key.shift());
    return true;
}

// Cell by cell; from the last one on, and in a list, the focus goes to the next control.
bool aCRecordView::tabKey(bool back)
{
    const int columns = GetColCount();
    int col = m_selection.col() + (back ? -1 : 1);
    long row = m_selection.row();
    if (col < 1 || col > columns) {
        col = back ? columns : 1;
        row += back ? -1 : 1;
    }
    if (m_listBox || row < 1 || row > m_rows)
        return false;
    moveFocus(col, row, false);
    return true;
}

bool aCRecordView::onKeyDown(VirtualKey key)
{
    if (syncLayout())
        updateBars();
    if (const std::optional<bool> answer = m_editor->keyDown(key))
        return *answer;
    if (m_selection.row() == 0 || key.alt())
        return false;
    switch (key.getKeyboardKey()) {
    case KeyTab:
        return !key.control() && tabKey(key.shift());
    case KeyA:
        if (!key.control())
            return false;
        SelectAll();
        return true;
    case KeyA + 2: // C
    case KeyInsert:
        if (!key.control())
            return false;
        Copy(key.shift());
        return true;
    case KeySpace:
        if (key.control() == key.shift())
            return false;
        if (key.control())
            SelectColumns();
        else
            SelectRows();
        return true;
    default:
        return moveKey(key);
    }
}

bool aCRecordView::onChar(wchar_t character)
{
    return m_editor->typed(character);
}

bool aCRecordView::beforeMouse(int x, int y, long flags, bool pressed)
{
    if (syncLayout())
        updateBars();
    if (pressed && m_editor->pressed(x, y))
        return true;
    const bool edge = GetEdgeFromPoint(x, y) != 0;
    if (pressed)
        m_suppressHeader = edge && (flags & MouseLeft) != 0;
    // The release may have been handled by somebody else.
    if (!pressed && m_drag != Drag::None && (flags & MouseLeft) == 0) {
        endDrag();
        return false; // a slot may have deleted the view
    }
    if (!pressed && m_drag == Drag::None && edge != m_overEdge) {
        m_overEdge = edge;
        setCursor(edge ? CursorShape::SplitHorizontal : CursorShape::Arrow);
    }
    return false;
}

void aCRecordView::pressCell(int x, int y, bool extend)
{
    const long row = GetRowFromPoint(x, y);
    const int col = GetColFromPoint(x, y);
    if (row == 0)
        return;
    const bool rows = x < m_broker->rowHeaderWidth;
    if (!rows && col == 0)
        return;
    m_drag = rows ? Drag::Rows : Drag::Cells;
    m_dragPoint = {x, y};
    const auto alive = life();
    const bool moved = moveFocus(rows ? std::max(m_selection.col(), 1) : col, row, extend);
    if (alive.expired())
        return;
    if (!moved)
        m_drag = Drag::None;
    else if (rows)
        SelectRows();
}

bool aCRecordView::onLButtonDown(int x, int y, long flags)
{
    m_drag = Drag::None;
    m_dragTimer.stop();
    const int edge = GetEdgeFromPoint(x, y);
    if (edge != 0) {
        m_drag = Drag::Edge;
        m_dragCol = edge;
        m_dragStart = x - m_columns.width(edge - 1);
        return true;
    }
    if (y >= m_broker->headerHeight) {
        pressCell(x, y, (flags & MouseShift) != 0);
        return true;
    }
    if (x < m_broker->rowHeaderWidth) {
        SelectAll();
        return true;
    }
    const int col = GetColFromPoint(x, y);
    if (col == 0)
        return false;
    const auto result = dispatch<&aCRecordView::onHeaderLButtonDown>(*this, col);
    return result.senderDied || result.bySlot || result.value;
}

bool aCRecordView::onLButtonUp(int, int, long)
{
    const bool dragged = m_drag != Drag::None;
    endDrag();
    return dragged;
}

bool aCRecordView::onLButtonDblClk(int x, int y, long)
{
    const int edge = GetEdgeFromPoint(x, y);
    if (edge != 0) {
        endDrag();
        const auto alive = life();
        FitColumn(edge);
        dispatch<&aCRecordView::onColResized>(*this, edge);
        if (!alive.expired())
            m_suppressHeader = false;
        return true;
    }
    const int col = GetColFromPoint(x, y);
    const long row = GetRowFromPoint(x, y);
    if (col == 0 || row == 0)
        return false;
    const auto result = dispatch<&aCRecordView::onCellDblClk>(*this, col, row);
    return result.senderDied || result.bySlot || result.value || m_editor->doubleClicked(col, row);
}

// Moves the focus to a cell outside the selection, so that a menu speaks of what is under it.
bool aCRecordView::onRButtonDown(int x, int y, long)
{
    const int col = GetColFromPoint(x, y);
    if (col == 0)
        return false;
    if (y < m_broker->headerHeight) {
        const auto result = dispatch<&aCRecordView::onHeaderRButtonDown>(*this, col);
        return result.senderDied || result.bySlot || result.value;
    }
    const long row = GetRowFromPoint(x, y);
    if (row != 0 && !m_selection.contains(col, row))
        moveFocus(col, row, false);
    return false;
}

bool aCRecordView::onMouseMove(int x, int y, long flags)
{
    if (m_drag == Drag::None || (flags & MouseLeft) == 0)
        return false;
    if (m_drag == Drag::Edge)
        SetColWidth(m_dragCol, x - m_dragStart);
    else
        dragTo(x, y);
    return true;
}

void aCRecordView::dragTo(int x, int y)
{
    m_dragPoint = {x, y};
    const Rect cells = cellsArea();
    const bool outside = y < cells.top || y >= cells.bottom || x < cells.left || x >= cells.right;
    if (outside && !m_dragTimer.isRunning())
        m_dragTimer.start();
    else if (!outside)
        m_dragTimer.stop();
    long row = GetRowFromPoint(cells.left, y);
    if (y < cells.top)
        row = m_firstRow - 1;
    else if (row == 0)
        row = std::min(m_rows, GetLastVisibleRow() + 1);
    int col = m_selection.col();
    if (m_drag == Drag::Cells) {
        const int inside = std::clamp(x, cells.left, std::max(cells.left, cells.right - 1));
        col = GetColFromPoint(inside, cells.top);
        if (col == 0)
            col = GetColCount();
        if (x < cells.left)
            --col;
        else if (x >= cells.right)
            ++col;
    }
    const auto alive = life();
    if (!moveFocus(col, row, true) && !alive.expired())
        endDrag();
}

SlotResult aCRecordView::dragTick(Object*)
{
    if (m_drag == Drag::Cells || m_drag == Drag::Rows)
        dragTo(m_dragPoint.x, m_dragPoint.y);
    else
        m_dragTimer.stop();
    return 1;
}

void aCRecordView::endDrag()
{
    const Drag drag = std::exchange(m_drag, Drag::None);
    m_dragTimer.stop();
    m_suppressHeader = false;
    if (drag == Drag::Edge)
        dispatch<&aCRecordView::onColResized>(*this, m_dragCol);
}

bool aCRecordView::onMouseWheel(int, int, int delta, long flags)
{
    if (delta == 0 || (flags & MouseControl) != 0)
        return false;
    const bool sideways = (flags & MouseShift) != 0;
    if (GetScrollRange(sideways ? HorizontalBar : VerticalBar) == 0)
        return false;
    m_wheelRest += delta * rowsPerNotch;
    const int steps = m_wheelRest / notch;
    m_wheelRest %= notch;
    const long left = GetScrollPos(HorizontalBar);
    if (sideways)
        doScroll(left - 2L * steps * m_charWidth, m_firstRow - 1);
    else
        doScroll(left, m_firstRow - 1 - steps);
    return true;
}

bool aCRecordView::onMouseLeave()
{
    if (m_drag == Drag::None && m_overEdge) {
        m_overEdge = false;
        setCursor(CursorShape::Arrow);
    }
    return false;
}

bool aCRecordView::onGetFocus()
{
    repaintRow(m_selection.row());
    return false;
}

bool aCRecordView::onLostFocus()
{
    repaintRow(m_selection.row());
    return false;
}

bool aCRecordView::onRowGetFocus(long, long)
{
    return false;
}

bool aCRecordView::onCellGetFocus(int, long)
{
    return false;
}

bool aCRecordView::onHeaderLButtonDown(int)
{
    return false;
}

bool aCRecordView::onHeaderRButtonDown(int)
{
    return false;
}

bool aCRecordView::onCellDblClk(int, long)
{
    return false;
}

bool aCRecordView::onColResized(int)
{
    return false;
}

bool aCRecordView::onSelectionChanged()
{
    return false;
}

} // namespace OviAPI
