// Data that is handed over to a dataset: buffers, stamps, and the ways into the rows.
#include <oviapi/dataset.h>

#include <algorithm>
#include <cstring>

#include <oviapi/phrases.h>
#include <oviapi/text.h>

namespace OviAPI {

// What the bytes of a value do not tell; stands behind them, not aligned.
struct aCDataSet::Trailer {
    uint32_t length; // bytes
    uint32_t stamp;

    static Trailer at(const void* place)
    {
        Trailer trailer;
        std::memcpy(&trailer, place, sizeof trailer);
        return trailer;
    }
    void put(void* place) const { std::memcpy(place, this, sizeof *this); }
};

namespace {

const std::byte* bytesOf(const void* data)
{
    return static_cast<const std::byte*>(data);
}

std::byte* bytesOf(void* data)
{
    return static_cast<std::byte*>(data);
}

} // namespace

std::unique_ptr<std::byte[]> aCDataSet::AllocData(int column, size_t* size, short form) const
{
    const aCColumn& info = col(column);
    if (form == TextForm) {
        const size_t chars = info.displaySize() + 1;
        if (size)
            *size = chars;
        return std::make_unique<std::byte[]>(chars * sizeof(wchar_t));
    }
    const size_t bytes = info.rowBytes() + sizeof(Trailer);
    if (size)
        *size = bytes;
    auto data = std::make_unique<std::byte[]>(bytes);
    Trailer{0, StampNull}.put(data.get() + info.rowBytes());
    return data;
}

unsigned aCDataSet::GetDataStamp(int column, const void* data) const
{
    return data ? Trailer::at(bytesOf(data) + col(column).rowBytes()).stamp : StampNull;
}

bool aCDataSet::IsDataNull(int column, const void* data) const
{
    return (GetDataStamp(column, data) & StampNull) != 0;
}

bool aCDataSet::IsDataEmpty(int column, const void* data) const
{
    return (GetDataStamp(column, data) & defaultStamps) != 0;
}

void aCDataSet::SetDataStamp(int column, void* data, unsigned stamp) const
{
    const size_t space = col(column).rowBytes();
    Trailer trailer = Trailer::at(bytesOf(data) + space);
    trailer.stamp = stamp;
    if ((stamp & (StampNull | defaultStamps)) != 0) {
        std::memset(data, 0, space);
        trailer.length = 0;
    }
    trailer.put(bytesOf(data) + space);
}

std::span<const std::byte> aCDataSet::GetDataBytes(int column, const void* data) const
{
    const size_t space = col(column).rowBytes();
    if (!data)
        return {};
    const size_t length = Trailer::at(bytesOf(data) + space).length;
    return {bytesOf(data), std::min(length, space)};
}

bool aCDataSet::SetDataBytes(int column, void* data, std::span<const std::byte> value) const
{
    const aCColumn& info = col(column);
    const size_t terminator = isTextType(info.dataType) ? sizeof(wchar_t) : 0;
    const size_t space = info.rowBytes();
    std::memset(data, 0, space);
    if (value.size() + terminator > space) {
        Trailer{0, StampNull}.put(bytesOf(data) + space);
        return false;
    }
    if (!value.empty())
        std::memcpy(data, value.data(), value.size());
    Trailer{static_cast<uint32_t>(value.size()), 0}.put(bytesOf(data) + space);
    return true;
}

aCString aCDataSet::DataToText(int column, const void* data) const
{
    const aCColumn& info = col(column);
    if (IsDataNull(column, data) || IsDataEmpty(column, data))
        return {};
    return valueToText(info.dataType, GetDataBytes(column, data), info.format);
}

size_t aCDataSet::DataToText(int column, const void* data, wchar_t* text, size_t size) const
{
    return copyText(text, size, DataToText(column, data));
}

TextFault aCDataSet::TextToData(int column, std::wstring_view text, void* data) const
{
    const aCColumn& info = col(column);
    std::vector<std::byte> value;
    const TextFault fault = textToValue(info.dataType, text, info.rowBytes(), info.format, value);
    if (fault != TextFault::None) {
        SetDataStamp(column, data, StampNull);
        return fault;
    }
    return SetDataBytes(column, data, value) ? TextFault::None : TextFault::TooLong;
}

std::unique_ptr<std::byte[]> aCDataSet::CopyData(int column)
{
    auto data = AllocData(column, nullptr, ValueForm);
    const unsigned stamp = CellState(column);
    if ((stamp & (StampNull | defaultStamps)) == 0)
        SetDataBytes(column, data.get(), CellBytes(column));
    SetDataStamp(column, data.get(), stamp);
    return data;
}

std::unique_ptr<std::byte[]> aCDataSet::AllocRowData() const
{
    const size_t length = GetRowLength();
    auto row = std::make_unique<std::byte[]>(length + m_columns.size() * sizeof(Trailer));
    for (size_t i = 0; i < m_columns.size(); ++i)
        Trailer{0, StampUntouched}.put(row.get() + length + i * sizeof(Trailer));
    return row;
}

std::unique_ptr<std::byte[]> aCDataSet::ColDataOfRow(int column, const void* rowData) const
{
    size_t size = 0;
    auto data = AllocData(column, &size, ValueForm);
    const size_t space = size - sizeof(Trailer);
    const size_t trailer = GetRowLength() + (static_cast<size_t>(column) - 1) * sizeof(Trailer);
    if (space != 0)
        std::memcpy(data.get(), bytesOf(rowData) + GetColOffset(column), space);
    std::memcpy(data.get() + space, bytesOf(rowData) + trailer, sizeof(Trailer));
    return data;
}

void aCDataSet::ColDataIntoRow(int column, const void* data, void* rowData) const
{
    const size_t space = col(column).rowBytes();
    const size_t trailer = GetRowLength() + (static_cast<size_t>(column) - 1) * sizeof(Trailer);
    if (space != 0)
        std::memcpy(bytesOf(rowData) + GetColOffset(column), data, space);
    std::memcpy(bytesOf(rowData) + trailer, bytesOf(data) + space, sizeof(Trailer));
}

RowRecord::Cell aCDataSet::CellOfData(int column, const void* data) const
{
    return {GetDataBytes(column, data), GetDataStamp(column, data)};
}

short aCDataSet::IntoCol(int column, void* data)
{
    const RowRecord::Cell cell = CellOfData(column, data);
    const auto index = static_cast<size_t>(column) - 1;
    if (m_currentRow == 0)
        return 1;
    if (m_record)
        m_record->setCell(index, cell);
    const auto cached = m_cache.find(m_currentRow);
    if (cached != m_cache.end() && m_record != &cached->second.record)
        cached->second.record.setCell(index, cell);
    if (m_record)
        return 0;
    // The row buffer belongs to the derived class, which has made it to be written.
    auto* row = static_cast<std::byte*>(const_cast<void*>(GetRowData()));
    if (!row)
        return 1;
    std::memcpy(row + GetColOffset(column), data, col(column).rowBytes());
    return 0;
}

short aCDataSet::AddRow(void* data, long)
{
    if (data || HasVirtualRow())
        return 1;
    const std::vector<RowRecord::Cell> cells(m_columns.size(), {{}, StampUntouched});
    m_virtualRow = std::make_unique<RowRecord>(cells);
    RefreshViews();
    return 0;
}

short aCDataSet::DeleteRow(long row)
{
    if (!IsVirtualRow(row))
        return 1;
    DeleteVirtualRow();
    return 0;
}

short aCDataSet::DeleteAllRow()
{
    return 1;
}

bool aCDataSet::IsUpdatable(int column)
{
    const aCColumn* info = GetColInfo(column);
    return info && !info->readOnly;
}

aCString aCDataSet::ReadOnlyReason(int column)
{
    const aCColumn& info = col(column);
    if (info.readOnly)
        return phrase(Phrase::ColumnReadOnly);
    if (!IsUpdatable(column))
        return phrase(info.dataType == static_cast<unsigned char>(DataType::LargeObject)
                          ? Phrase::LargeObjectOpened
                          : Phrase::SourceReadOnly);
    if ((CellState(column) & (StampCut | StampInvalid)) != 0) {
        const aCString reason = CellReason(column);
        return reason.empty() ? phrase(Phrase::ValueInPart) : reason;
    }
    return {};
}

short aCDataSet::StoreCell(int column, long row, void* data)
{
    col(column);
    if (IsVirtualRow(row)) {
        m_virtualRow->setCell(static_cast<size_t>(column) - 1, CellOfData(column, data));
        RefreshRowInViews(row);
        return 0;
    }
    if (PutSourceOnRow(row) != 0)
        return 1;
    const short result = IntoCol(column, data);
    if (result == 0 && row == m_editedRow)
        BeginEdit(row);
    return result;
}

void aCDataSet::BeginEdit(long row)
{
    EndEdit();
    if (IsVirtualRow(row) || SetRow(row) != 0)
        return;
    m_shown = recordOfCurrent();
    m_editedRow = row;
}

void aCDataSet::EndEdit()
{
    m_editedRow = 0;
    m_shown = RowRecord();
}

// The current row has just been put into the row buffer by its source.
bool aCDataSet::isAsShown(long row)
{
    if (row == m_editedRow)
        return m_shown.sameValues(recordOfCurrent());
    const auto cached = m_cache.find(row);
    return cached == m_cache.end() || cached->second.record.sameValues(recordOfCurrent());
}

short aCDataSet::PutSourceOnRow(long row)
{
    m_errorKind = NoError;
    SetCurrentRow(0);
    if (row < 1 || row > GetRowCount())
        return 1;
    if (ToRow(FetchAbsolute, row, false) != 0 || m_errorKind != NoError)
        return 1;
    m_currentRow = row;
    return isAsShown(row) ? 0 : RefuseStaleRow(row);
}

short aCDataSet::RefuseStaleRow(long row)
{
    constexpr long changedByAnother = 2162; // as the database client says it
    m_errorKind = Refused;
    setRowError(row, changedByAnother, 0, phrase(Phrase::DbRowChanged).c_str());
    return 1;
}

short aCDataSet::StoreText(int column, long row, std::wstring_view text, aCString* reason)
{
    auto data = AllocData(column, nullptr, ValueForm);
    const TextFault fault = TextToData(column, text, data.get());
    if (fault != TextFault::None) {
        if (reason)
            *reason = faultText(fault);
        return 1;
    }
    const short result = StoreCell(column, row, data.get());
    if (result != 0 && reason) {
        const RowError* error = getRowError(row);
        *reason = error ? error->text : ReadOnlyReason(column);
    }
    return result;
}

void aCDataSet::DeleteVirtualRow()
{
    if (!HasVirtualRow())
        return;
    if (m_record == m_virtualRow.get())
        SetCurrentRow(0);
    m_virtualRow.reset();
    RefreshViews();
}

std::unique_ptr<std::byte[]> aCDataSet::VirtualRowData() const
{
    if (!HasVirtualRow())
        return nullptr;
    auto row = AllocRowData();
    for (int i = 1; i <= GetColCount(); ++i) {
        const RowRecord::Cell cell = m_virtualRow->cell(static_cast<size_t>(i) - 1);
        auto data = AllocData(i, nullptr, ValueForm);
        if ((cell.stamp & (StampNull | defaultStamps)) == 0)
            SetDataBytes(i, data.get(), cell.value);
        SetDataStamp(i, data.get(), cell.stamp);
        ColDataIntoRow(i, data.get(), row.get());
    }
    return row;
}

short aCDataSet::PostVirtualRow()
{
    const auto row = VirtualRowData();
    if (!row)
        return 1;
    // Out of the way while the row is stored: the source counts its own rows then.
    std::unique_ptr<RowRecord> pending = std::move(m_virtualRow);
    SetCurrentRow(0);
    short result = 1;
    try {
        result = AddRow(row.get(), 0);
    } catch (...) {
        m_virtualRow = std::move(pending);
        throw;
    }
    if (result != 0)
        m_virtualRow = std::move(pending);
    RefreshViews();
    return result;
}

} // namespace OviAPI
