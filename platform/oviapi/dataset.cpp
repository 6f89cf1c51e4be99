// Columns, rows and the values of the current row; what is handed over and stored stands in
// datasetdata.cpp.
#include <oviapi/dataset.h>

#include <algorithm>
#include <cstring>

#include <oviapi/phrases.h>

namespace OviAPI {

namespace {

constexpr size_t cacheLimit = size_t{16} << 20; // bytes
constexpr size_t rowsAlwaysCached = 64;

// Length in bytes of the text at the beginning of the space, without its terminator.
size_t textBytes(std::span<const std::byte> space)
{
    size_t at = 0;
    for (; at + sizeof(wchar_t) <= space.size(); at += sizeof(wchar_t)) {
        wchar_t c = 0;
        std::memcpy(&c, space.data() + at, sizeof c);
        if (c == 0)
            break;
    }
    return at;
}

} // namespace

aCDataSetViewer::~aCDataSetViewer() = default;

void aCDataSetViewer::onRowChanged(long)
{
    onDataSetChanged();
}

aCDataSet::aCDataSet()
    : m_cacheEdition(phraseEdition())
{
    m_stamps[StampNull] = L"NULL";
    m_stamps[StampDefault] = L"DEFAULT";
    m_stamps[StampUntouched] = L"DEFAULT";
    m_stamps[StampServer] = L"DEFAULT";
}

aCDataSet::~aCDataSet()
{
    // A viewer lets go of the dataset, and out of the list, while it is told.
    while (!m_viewers.empty()) {
        aCDataSetViewer* viewer = m_viewers.back();
        m_viewers.pop_back();
        viewer->onDataSetDestroyed();
    }
}

aCColumn* aCDataSet::GetColInfo(int column) const
{
    return column < 1 || column > GetColCount() ? nullptr
                                                : m_columns[static_cast<size_t>(column) - 1].get();
}

aCColumn& aCDataSet::col(int column) const
{
    aCColumn* info = GetColInfo(column);
    if (!info)
        throw aCDataFailure(aCDataFailure::IndexOutOfRange);
    return *info;
}

int aCDataSet::AddColDef(aCColumn* column, int position)
{
    std::unique_ptr<aCColumn> owned(column);
    if (!owned)
        throw aCDataFailure(aCDataFailure::IndexOutOfRange);
    const int last = GetColCount() + 1;
    const int number = position < 1 || position > last ? last : position;
    m_columns.insert(m_columns.begin() + (number - 1), std::move(owned));
    CountColumns();
    ColumnAdded(number);
    return number;
}

void aCDataSet::DeleteColDef(int column)
{
    col(column);
    ColumnDeleted(column);
    m_columns.erase(m_columns.begin() + (column - 1));
    CountColumns();
}

void aCDataSet::DeleteAllColDef()
{
    while (GetColCount() > 0)
        DeleteColDef(GetColCount());
}

void aCDataSet::CountColumns()
{
    m_offsets.assign(1, 0);
    for (const auto& column : m_columns)
        m_offsets.push_back(m_offsets.back() + column->rowBytes());
    ClearRowCache();
    m_unpacked.clear();
}

size_t aCDataSet::GetColOffset(int column) const
{
    col(column);
    return m_offsets[static_cast<size_t>(column) - 1];
}

void aCDataSet::ColumnAdded(int) {}

void aCDataSet::ColumnDeleted(int) {}

long aCDataSet::GetRowCount()
{
    return m_rowCount + (HasVirtualRow() ? 1 : 0);
}

long aCDataSet::GetVirtualRow()
{
    return HasVirtualRow() ? GetRowCount() : 0;
}

void aCDataSet::SetCurrentRow(long row)
{
    m_currentRow = row;
    m_record = nullptr;
    m_stale = false;
    m_rowTold = true;
}

// Reasons that lie in the cache are in the language of the time when their rows were fetched.
void aCDataSet::dropOldPhrases()
{
    if (const unsigned long now = phraseEdition(); m_cacheEdition != now) {
        ClearRowCache();
        m_cacheEdition = now;
    }
}

short aCDataSet::SetRow(long row)
{
    dropOldPhrases();
    if (row == m_currentRow && row != 0 && !m_stale)
        return 0;
    SetCurrentRow(0);
    if (row < 1 || row > GetRowCount())
        return 1;
    if (IsVirtualRow(row)) {
        m_record = m_virtualRow.get();
        m_currentRow = row;
        return 0;
    }
    if (const auto it = m_cache.find(row); it != m_cache.end()) {
        m_cacheUse.splice(m_cacheUse.begin(), m_cacheUse, it->second.used);
        m_record = &it->second.record;
        m_currentRow = row;
        return 0;
    }
    m_errorKind = NoError;
    if (ToRow(FetchAbsolute, row, false) != 0 || m_errorKind != NoError) {
        SetCurrentRow(0);
        return 1;
    }
    m_currentRow = row;
    if (m_cacheOn && !m_record)
        CacheCurrentRow();
    return 0;
}

short aCDataSet::ToRow(short, long, bool)
{
    return 1;
}

short aCDataSet::ToRowAnew(long row)
{
    return ToRow(FetchAbsolute, row, false);
}

short aCDataSet::RefreshRow(long row)
{
    if (IsVirtualRow(row))
        return SetRow(row);
    SetCurrentRow(0);
    dropCached(row);
    m_errorKind = NoError;
    if (row < 1 || row > GetRowCount())
        return 1;
    if (ToRowAnew(row) != 0 || m_errorKind != NoError) {
        SetCurrentRow(0);
        return 1;
    }
    m_currentRow = row;
    clearRowError(row);
    if (m_cacheOn && !m_record)
        CacheCurrentRow();
    return 0;
}

short aCDataSet::MoveToRow(short direction, long row, bool follow)
{
    m_errorKind = NoError;
    m_rowTold = false; // the row stays known meanwhile: the next one is counted from it
    const short result = ToRow(direction, row, follow);
    if (result != 0 || m_errorKind != NoError) {
        SetCurrentRow(0);
        return 1;
    }
    if (!m_rowTold)
        SetCurrentRow(direction == FetchAbsolute ? row : 0);
    if (follow && m_followRow && m_currentRow != 0) {
        const std::vector<aCDataSetViewer*> viewers = m_viewers;
        for (aCDataSetViewer* viewer : viewers)
            viewer->onRowFollowed(m_currentRow);
    }
    return 0;
}

const void* aCDataSet::GetRowData()
{
    if (!m_record)
        return nullptr;
    m_unpacked.assign(GetRowLength(), std::byte{0});
    for (int i = 1; i <= GetColCount(); ++i) {
        const RowRecord::Cell cell = m_record->cell(static_cast<size_t>(i) - 1);
        const auto value =
            (cell.stamp & StampText) != 0 ? std::span<const std::byte>() : cell.value;
        const size_t count = std::min(value.size(), col(i).rowBytes());
        if (count != 0)
            std::memcpy(m_unpacked.data() + GetColOffset(i), value.data(), count);
    }
    return m_unpacked.data();
}

aCRow* aCDataSet::GetRowInfo(long row)
{
    const auto it = m_rowDefs.find(row);
    return it == m_rowDefs.end() ? nullptr : &it->second;
}

aCCell* aCDataSet::GetCellInfo(int, long)
{
    return nullptr;
}

aCRow& aCDataSet::AddRowDef(long row)
{
    return m_rowDefs[row];
}

void aCDataSet::DeleteRowDef(long row)
{
    m_rowDefs.erase(row);
    std::map<long, aCRow> moved;
    for (auto it = m_rowDefs.upper_bound(row); it != m_rowDefs.end(); it = m_rowDefs.erase(it))
        moved.emplace(it->first - 1, std::move(it->second));
    m_rowDefs.merge(moved);
}

void aCDataSet::DeleteAllRowDef()
{
    m_rowDefs.clear();
}

bool aCDataSet::IsColumnNull(int)
{
    return false;
}

unsigned aCDataSet::ColumnState(int)
{
    return 0;
}

aCString aCDataSet::ColumnReason(int)
{
    return {};
}

bool aCDataSet::ColumnText(int, aCString&)
{
    return false;
}

long aCDataSet::ColumnDataLen(int)
{
    return -1;
}

bool aCDataSet::IsNull(int column)
{
    return (CellState(column) & StampNull) != 0;
}

unsigned aCDataSet::CellState(int column)
{
    col(column);
    if (m_currentRow == 0)
        return StampNull;
    if (m_record)
        return m_record->cell(static_cast<size_t>(column) - 1).stamp & ~unsigned{StampText};
    const unsigned state = ColumnState(column);
    return IsColumnNull(column) ? state | StampNull : state;
}

aCString aCDataSet::CellReason(int column)
{
    col(column);
    if (m_currentRow == 0)
        return {};
    if (m_record)
        return aCString(m_record->cell(static_cast<size_t>(column) - 1).reason);
    return ColumnReason(column);
}

std::span<const std::byte> aCDataSet::CellBytes(int column)
{
    col(column);
    if (m_currentRow == 0)
        return {};
    if (m_record) {
        const RowRecord::Cell cell = m_record->cell(static_cast<size_t>(column) - 1);
        return (cell.stamp & StampText) != 0 ? std::span<const std::byte>() : cell.value;
    }
    return bufferBytes(column);
}

std::span<const std::byte> aCDataSet::bufferBytes(int column)
{
    const auto* data = static_cast<const std::byte*>(GetRowData());
    if (!data)
        return {};
    const aCColumn& info = col(column);
    std::span<const std::byte> bytes(data + GetColOffset(column), info.rowBytes());
    if (isTextType(info.dataType))
        return bytes.first(textBytes(bytes));
    if (info.dataType == static_cast<unsigned char>(DataType::Bytes)) {
        const long length = ColumnDataLen(column);
        if (length >= 0)
            return bytes.first(std::min(bytes.size(), static_cast<size_t>(length)));
    }
    return bytes;
}

// The text of a value that is not of the column's type.
bool aCDataSet::otherText(int column, aCString& text)
{
    if (!m_record)
        return ColumnText(column, text);
    const RowRecord::Cell cell = m_record->cell(static_cast<size_t>(column) - 1);
    if ((cell.stamp & StampText) == 0)
        return false;
    text = valueToText(static_cast<unsigned char>(DataType::Text), cell.value);
    return true;
}

aCString aCDataSet::CellText(int column, size_t maxChars)
{
    const aCColumn& info = col(column);
    const unsigned state = CellState(column);
    if ((state & (StampNull | defaultStamps)) != 0)
        return {};
    if (aCString text; (state & StampInvalid) != 0 && otherText(column, text))
        return text.substr(0, maxChars);
    return valueToText(info.dataType, CellBytes(column), info.format, maxChars);
}

size_t aCDataSet::GetCellText(int column, long row, wchar_t* text, size_t size)
{
    if (size == 0)
        return 0;
    col(column);
    const aCString cell = SetRow(row) == 0 ? CellText(column, size - 1) : aCString();
    cell.copy(text, cell.size());
    text[cell.size()] = 0;
    return cell.size();
}

aCString aCDataSet::GetCellText(int column, long row)
{
    col(column);
    return SetRow(row) == 0 ? CellText(column) : aCString();
}

double aCDataSet::GetCellNumber(int column, long row, short* state)
{
    const aCColumn& info = col(column);
    double number = 0.0;
    constexpr unsigned none = StampNull | StampInvalid | defaultStamps;
    const bool known = SetRow(row) == 0 && (CellState(column) & none) == 0 &&
                       valueToNumber(info.dataType, CellBytes(column), number);
    if (state)
        *state = known ? 0 : 1;
    return known ? number : 0.0;
}

const void* aCDataSet::GetCellData(int column, long row)
{
    col(column);
    return SetRow(row) == 0 ? CellBytes(column).data() : nullptr;
}

void aCDataSet::SetStamp(unsigned kind, const wchar_t* text)
{
    m_stamps[kind] = text ? text : L"";
}

const aCString& aCDataSet::GetStamp(unsigned kind) const
{
    static const aCString none;
    const auto it = m_stamps.find(kind);
    return it == m_stamps.end() ? none : it->second;
}

void aCDataSet::SetRowCache(bool on)
{
    m_cacheOn = on;
    if (!on)
        ClearRowCache();
}

RowRecord aCDataSet::recordOfCurrent()
{
    std::vector<RowRecord::Cell> cells;
    std::vector<aCString> reasons(m_columns.size()); // the cells point to them and to the texts
    std::vector<aCString> texts(m_columns.size());
    cells.reserve(m_columns.size());
    for (int i = 1; i <= GetColCount(); ++i) {
        RowRecord::Cell cell;
        cell.stamp = CellState(i);
        if ((cell.stamp & StampNull) == 0)
            cell.value = CellBytes(i);
        const size_t index = static_cast<size_t>(i) - 1;
        if ((cell.stamp & (StampCut | StampInvalid)) != 0)
            cell.reason = reasons[index] = CellReason(i);
        if ((cell.stamp & StampInvalid) != 0 && otherText(i, texts[index])) {
            cell.value = std::as_bytes(std::span(texts[index]));
            cell.stamp |= StampText;
        }
        cells.push_back(cell);
    }
    return RowRecord(cells);
}

void aCDataSet::CacheCurrentRow()
{
    if (!m_cacheOn || m_currentRow == 0 || IsVirtualRow(m_currentRow))
        return;
    const auto [it, added] = m_cache.try_emplace(m_currentRow);
    // A current row that lies in the cache already is read from there, into itself.
    RowRecord record = recordOfCurrent();
    if (added) {
        m_cacheUse.push_front(m_currentRow);
        it->second.used = m_cacheUse.begin();
    } else {
        m_cacheBytes -= it->second.record.bytes();
    }
    it->second.record = std::move(record);
    m_cacheBytes += it->second.record.bytes();
    trimCache();
}

void aCDataSet::trimCache()
{
    while (m_cacheBytes > cacheLimit && m_cache.size() > rowsAlwaysCached) {
        const auto oldest = m_cache.find(m_cacheUse.back());
        if (m_record == &oldest->second.record)
            SetCurrentRow(0);
        m_cacheBytes -= oldest->second.record.bytes();
        m_cache.erase(oldest);
        m_cacheUse.pop_back();
    }
}

void aCDataSet::dropCached(long row)
{
    const auto cached = m_cache.find(row);
    if (cached == m_cache.end())
        return;
    if (m_record == &cached->second.record)
        SetCurrentRow(0);
    m_cacheBytes -= cached->second.record.bytes();
    m_cacheUse.erase(cached->second.used);
    m_cache.erase(cached);
}

void aCDataSet::ClearRowCache()
{
    if (m_record && m_record != m_virtualRow.get())
        SetCurrentRow(0);
    m_cache.clear();
    m_cacheUse.clear();
    m_cacheBytes = 0;
}

void aCDataSet::AddViewer(aCDataSetViewer* viewer)
{
    if (viewer && std::find(m_viewers.begin(), m_viewers.end(), viewer) == m_viewers.end())
        m_viewers.push_back(viewer);
}

void aCDataSet::RemoveViewer(aCDataSetViewer* viewer)
{
    std::erase(m_viewers, viewer);
}

// One viewer may have gone while another was told.
template<class Tell>
void aCDataSet::tellViewers(Tell tell)
{
    m_stale = true;
    const std::vector<aCDataSetViewer*> viewers = m_viewers;
    for (aCDataSetViewer* viewer : viewers)
        if (std::find(m_viewers.begin(), m_viewers.end(), viewer) != m_viewers.end())
            tell(*viewer);
}

void aCDataSet::RefreshViews()
{
    tellViewers([](aCDataSetViewer& viewer) { viewer.onDataSetChanged(); });
}

void aCDataSet::RefreshRowInViews(long row)
{
    tellViewers([row](aCDataSetViewer& viewer) { viewer.onRowChanged(row); });
}

aCRecordView* aCDataSet::GetRecordView() const
{
    for (aCDataSetViewer* viewer : m_viewers)
        if (aCRecordView* view = viewer->recordView())
            return view;
    return nullptr;
}

} // namespace OviAPI
