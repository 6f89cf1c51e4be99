#include "recordaccessible.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "apswnd_native.h"
#include "convert.h"

namespace OviAPI {

class RecordAccessible::Cell : public QAccessibleInterface, public QAccessibleTableCellInterface {
public:
    Cell(const RecordAccessible* table, int col, long row)
        : m_table(const_cast<RecordAccessible*>(table))
        , m_view(table->m_view)
        , m_col(col)
        , m_row(row)
    {
    }

    int col() const { return m_col; }
    long row() const { return m_row; }

    bool isValid() const override
    {
        return m_table->isValid() && m_col <= m_view.GetColCount() && m_row <= m_view.GetRowCount();
    }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override { return m_table; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override
    {
        return isHeader() ? QAccessible::ColumnHeader : QAccessible::Cell;
    }
    void setText(QAccessible::Text, const QString&) override {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        const bool table = type == QAccessible::TableCellInterface && !isHeader();
        return table ? static_cast<QAccessibleTableCellInterface*>(this) : nullptr;
    }

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        if (kind == QAccessible::Description)
            return isHeader() ? QString() : toQString(reason());
        if (kind != QAccessible::Name && kind != QAccessible::Value)
            return {};
        if (isHeader())
            return toQString(m_view.GetDataSet()->GetColInfo(m_col)->caption);
        const aCString fault = m_view.GetRowFault(m_row);
        if (!fault.empty())
            return toQString(fault);
        const aCString word = m_view.GetCellWord(m_col, m_row);
        return toQString(word.empty() ? m_view.GetCellText(m_col, m_row) : word);
    }

    QRect rect() const override
    {
        Rect place;
        const bool seen = isHeader() ? m_view.GetColRect(m_col, place, nullptr, true)
                                     : m_view.GetClientCellRect(m_col, m_row, place);
        if (!seen)
            return {};
        const Point corner = m_view.toScreen({place.left, place.top});
        return {corner.x, corner.y, static_cast<int>(place.width()),
                static_cast<int>(place.height())};
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (isHeader())
            return state;
        state.selectable = state.focusable = true;
        state.selected = isSelected();
        state.focused = m_view.hasFocus() && m_view.GetCol() == m_col && m_view.GetRow() == m_row;
        state.readOnly = !reason().empty();
        state.editable = !m_view.IsReadOnly() && !state.readOnly && isUpdatable();
        return state;
    }

    bool isSelected() const override
    {
        const auto range = m_view.GetSelection();
        return m_col >= range.firstCol && m_col <= range.lastCol && m_row >= range.firstRow &&
               m_row <= range.lastRow;
    }
    QList<QAccessibleInterface*> columnHeaderCells() const override
    {
        return {m_table->at(m_col, 0)};
    }
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return m_col - 1; }
    int rowIndex() const override
    {
        return static_cast<int>(std::min<long>(m_row - 1, std::numeric_limits<int>::max()));
    }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return m_table; }

private:
    bool isHeader() const { return m_row == 0; }

    // Why the cell cannot be changed.
    aCString reason() const
    {
        if (!isValid() || !m_view.GetRowFault(m_row).empty())
            return {};
        return m_view.GetDataSet()->SetRow(m_row) == 0 ? m_view.GetDataSet()->ReadOnlyReason(m_col)
                                                       : aCString();
    }

    bool isUpdatable() const { return isValid() && m_view.GetDataSet()->IsUpdatable(m_col); }

    RecordAccessible* m_table;
    aCRecordView& m_view;
    int m_col;
    long m_row;
};

RecordAccessible::RecordAccessible(ScrollArea* area, aCRecordView& view)
    : QAccessibleWidget(area, QAccessible::Table)
    , m_view(view)
{
}

RecordAccessible::~RecordAccessible()
{
    for (const auto& [place, id] : m_cells)
        QAccessible::deleteAccessibleInterface(id);
}

void RecordAccessible::install()
{
    QAccessible::installFactory(&make);
}

QAccessibleInterface* RecordAccessible::make(const QString&, QObject* object)
{
    auto* area = dynamic_cast<ScrollArea*>(object);
    auto* view = area ? dynamic_cast<aCRecordView*>(&area->owner) : nullptr;
    return view ? new RecordAccessible(area, *view) : nullptr; // the toolkit owns it
}

void* RecordAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

RecordAccessible::Page RecordAccessible::page() const
{
    Page page;
    const int left = m_view.GetBroker()->rowHeaderWidth;
    page.firstCol = std::max(1, m_view.GetColFromPoint(left, 0));
    const int last = m_view.GetColFromPoint(m_view.clientWidth() - 1, 0);
    page.columns = std::max(0, (last == 0 ? m_view.GetColCount() : last) - page.firstCol + 1);
    page.firstRow = m_view.GetFirstShownRow();
    page.rows = std::max(0L, m_view.GetLastVisibleRow() - page.firstRow + 1);
    return page;
}

int RecordAccessible::childCount() const
{
    return pageCells() + (field() ? 1 : 0);
}

int RecordAccessible::pageCells() const
{
    const Page now = page();
    return now.columns * static_cast<int>(1 + now.rows);
}

QAccessibleInterface* RecordAccessible::field() const
{
    // It has the focus in the name of the view.
    QWidget* control = m_view.IsEditing() ? widget()->focusProxy() : nullptr;
    return control ? QAccessible::queryAccessibleInterface(control) : nullptr;
}

QAccessibleInterface* RecordAccessible::child(int index) const
{
    const Page now = page();
    if (index < 0 || index > pageCells())
        return nullptr;
    if (index == pageCells())
        return field();
    const long line = index / now.columns;
    return at(now.firstCol + index % now.columns, line == 0 ? 0 : now.firstRow + line - 1);
}

QAccessibleInterface* RecordAccessible::at(int col, long row) const
{
    const std::pair<long, int> place(row, col);
    auto it = m_cells.find(place);
    if (it == m_cells.end()) {
        dropOld();
        auto* cell = new Cell(this, col, row); // the toolkit owns it
        it = m_cells.emplace(place, QAccessible::registerAccessibleInterface(cell)).first;
    }
    return QAccessible::accessibleInterface(it->second);
}

void RecordAccessible::dropOld() const
{
    constexpr size_t most = 4096;
    if (m_cells.size() < std::max(most, 2 * static_cast<size_t>(pageCells())))
        return;
    const Page now = page();
    for (auto it = m_cells.begin(); it != m_cells.end();) {
        const auto [row, col] = it->first;
        const bool seen = row == 0 || (row >= now.firstRow && row < now.firstRow + now.rows &&
                                       col >= now.firstCol && col < now.firstCol + now.columns);
        if (!seen)
            QAccessible::deleteAccessibleInterface(it->second);
        it = seen ? std::next(it) : m_cells.erase(it);
    }
}

QAccessibleInterface* RecordAccessible::childAt(int x, int y) const
{
    const Point point = m_view.fromScreen({x, y});
    const int col = m_view.GetColFromPoint(point.x, point.y);
    const bool header = point.y < m_view.GetBroker()->headerHeight;
    const long row = m_view.GetRowFromPoint(point.x, point.y);
    return col == 0 || (row == 0 && !header) ? nullptr : at(col, row);
}

int RecordAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* cell = dynamic_cast<const Cell*>(child);
    if (!cell)
        return child && child == field() ? pageCells() : -1;
    const Page now = page();
    const long line = cell->row() == 0 ? 0 : cell->row() - now.firstRow + 1;
    const int col = cell->col() - now.firstCol;
    if (line < 0 || line > now.rows || col < 0 || col >= now.columns)
        return -1;
    return static_cast<int>(line) * now.columns + col;
}

QAccessibleInterface* RecordAccessible::focusChild() const
{
    if (!m_view.hasFocus() || m_view.GetRow() == 0)
        return nullptr;
    QAccessibleInterface* editor = field();
    return editor ? editor : at(m_view.GetCol(), m_view.GetRow());
}

QAccessibleInterface* RecordAccessible::cellAt(int row, int column) const
{
    const bool inside = row >= 0 && row < rowCount() && column >= 0 && column < columnCount();
    return inside ? at(column + 1, row + 1L) : nullptr;
}

int RecordAccessible::selectedCellCount() const
{
    const auto range = m_view.GetSelection();
    if (range.isEmpty())
        return 0;
    const int64_t rows = range.lastRow - range.firstRow + 1;
    const int64_t columns = range.lastCol - range.firstCol + 1;
    const int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(most, rows > most / columns ? most : rows * columns));
}

QList<QAccessibleInterface*> RecordAccessible::selectedCells() const
{
    QList<QAccessibleInterface*> cells; // those on the screen
    for (int i = 0, n = pageCells(); i < n; ++i) {
        auto* cell = static_cast<Cell*>(child(i));
        if (cell->row() != 0 && cell->isSelected())
            cells.append(cell);
    }
    return cells;
}

QString RecordAccessible::columnDescription(int column) const
{
    const aCColumn* info =
        m_view.GetDataSet() ? m_view.GetDataSet()->GetColInfo(column + 1) : nullptr;
    return info ? toQString(info->caption) : QString();
}

QString RecordAccessible::rowDescription(int row) const
{
    return row >= 0 && row < rowCount() ? toQString(m_view.GetRowCaption(row + 1L)) : QString();
}

int RecordAccessible::columnCount() const
{
    return m_view.GetColCount();
}

int RecordAccessible::rowCount() const
{
    return static_cast<int>(std::min<long>(m_view.GetRowCount(), std::numeric_limits<int>::max()));
}

bool RecordAccessible::selectRow(int row)
{
    if (!m_view.SetRow(row + 1L))
        return false;
    m_view.SelectRows();
    return true;
}

bool RecordAccessible::selectColumn(int column)
{
    if (!m_view.SetFocusCell(column + 1, std::max(1L, m_view.GetRow())))
        return false;
    m_view.SelectColumns();
    return true;
}

} // namespace OviAPI
