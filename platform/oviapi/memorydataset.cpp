#include <oviapi/memorydataset.h>

#include <algorithm>

namespace OviAPI {

long aCMemoryDataSet::GetRowCount()
{
    m_rowCount = static_cast<long>(m_rows.size());
    return aCDataSet::GetRowCount();
}

short aCMemoryDataSet::ToRow(short direction, long row, bool)
{
    const auto last = static_cast<long>(m_rows.size());
    long target = row;
    if (direction == FetchFirst)
        target = 1;
    else if (direction == FetchLast)
        target = last;
    else if (direction == FetchNext)
        target = GetRow() + 1;
    else if (direction == FetchPrevious)
        target = GetRow() - 1;
    if (target < 1 || target > last)
        return 1;
    SetCurrentRow(target);
    UseRecord(&m_rows[static_cast<size_t>(target) - 1]);
    return 0;
}

short aCMemoryDataSet::IntoCol(int column, void* data)
{
    const short result = aCDataSet::IntoCol(column, data);
    if (result == 0)
        RefreshViews();
    return result;
}

short aCMemoryDataSet::AddRow(void* data, long position)
{
    if (!data)
        return aCDataSet::AddRow(nullptr, position);
    std::vector<std::unique_ptr<std::byte[]>> values; // the cells point into them
    std::vector<RowRecord::Cell> cells;
    for (int i = 1; i <= GetColCount(); ++i) {
        values.push_back(ColDataOfRow(i, data));
        RowRecord::Cell cell = CellOfData(i, values.back().get());
        if ((cell.stamp & defaultStamps) != 0) // nobody here knows another default
            cell.stamp = StampNull;
        cells.push_back(cell);
    }
    const auto count = static_cast<long>(m_rows.size());
    const long place = position < 1 || position > count ? count : position - 1;
    SetCurrentRow(0);
    m_rows.insert(m_rows.begin() + place, RowRecord(cells));
    RefreshViews();
    return 0;
}

short aCMemoryDataSet::DeleteRow(long row)
{
    if (row < 1 || row > GetRowCount())
        return 0;
    if (IsVirtualRow(row)) {
        aCDataSet::DeleteRow(row);
    } else {
        SetCurrentRow(0);
        m_rows.erase(m_rows.begin() + (row - 1));
        DeleteRowDef(row);
        clearRowErrors(); // the numbers behind the row have changed
    }
    RefreshViews();
    return 0;
}

short aCMemoryDataSet::DeleteAllRow()
{
    SetCurrentRow(0);
    DeleteVirtualRow();
    m_rows.clear();
    DeleteAllRowDef();
    clearRowErrors();
    RefreshViews();
    return 0;
}

TextFault aCMemoryDataSet::AppendTexts(std::initializer_list<const wchar_t*> texts)
{
    return AppendTexts(std::vector<const wchar_t*>(texts));
}

TextFault aCMemoryDataSet::AppendTexts(const std::vector<const wchar_t*>& texts)
{
    if (texts.size() > static_cast<size_t>(GetColCount()))
        throw aCDataFailure(aCDataFailure::IndexOutOfRange);
    const auto columns = static_cast<size_t>(GetColCount());
    std::vector<std::vector<std::byte>> values(columns); // the cells point into them
    std::vector<RowRecord::Cell> cells(columns, {{}, StampNull});
    for (size_t i = 0; i < texts.size(); ++i) {
        if (!texts[i])
            continue;
        const aCColumn& info = *GetColInfo(static_cast<int>(i) + 1);
        const TextFault fault =
            textToValue(info.dataType, texts[i], info.rowBytes(), info.format, values[i]);
        if (fault != TextFault::None)
            return fault;
        cells[i] = {values[i], 0};
    }
    AppendCells(cells);
    return TextFault::None;
}

void aCMemoryDataSet::AppendCells(std::span<const RowRecord::Cell> cells)
{
    SetCurrentRow(0); // the rows may move
    m_rows.emplace_back(cells);
}

void aCMemoryDataSet::Reserve(long rows)
{
    SetCurrentRow(0);
    m_rows.reserve(static_cast<size_t>(std::max(rows, 0L)));
}

void aCMemoryDataSet::MarkCell(int column, long row, unsigned stamp, const wchar_t* reason)
{
    if (!GetColInfo(column) || row < 1 || row > static_cast<long>(m_rows.size()))
        throw aCDataFailure(aCDataFailure::IndexOutOfRange);
    RowRecord& record = m_rows[static_cast<size_t>(row) - 1];
    RowRecord::Cell cell = record.cell(static_cast<size_t>(column) - 1);
    cell.stamp = stamp;
    cell.reason = reason ? reason : L"";
    if ((stamp & (StampNull | defaultStamps)) != 0)
        cell.value = {};
    record.setCell(static_cast<size_t>(column) - 1, cell);
}

void aCMemoryDataSet::ColumnAdded(int column)
{
    SetCurrentRow(0);
    for (RowRecord& row : m_rows) {
        std::vector<RowRecord::Cell> cells;
        for (size_t i = 0; i < row.columnCount(); ++i)
            cells.push_back(row.cell(i));
        const size_t place = std::min(static_cast<size_t>(column) - 1, cells.size());
        cells.insert(cells.begin() + static_cast<std::ptrdiff_t>(place), {{}, StampNull});
        row = RowRecord(cells);
    }
}

void aCMemoryDataSet::ColumnDeleted(int column)
{
    SetCurrentRow(0);
    if (GetColCount() == 1)
        m_rows.clear();
    for (RowRecord& row : m_rows) {
        std::vector<RowRecord::Cell> cells;
        for (size_t i = 0; i < row.columnCount(); ++i)
            if (i != static_cast<size_t>(column) - 1)
                cells.push_back(row.cell(i));
        row = RowRecord(cells);
    }
}

} // namespace OviAPI
