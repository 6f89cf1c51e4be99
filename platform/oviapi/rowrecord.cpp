#include <oviapi/rowrecord.h>

#include <algorithm>
#include <cstring>

namespace OviAPI {

RowRecord::RowRecord(std::span<const Cell> cells)
{
    size_t total = 0;
    for (const Cell& cell : cells)
        total += cell.value.size();
    m_columns = static_cast<uint32_t>(cells.size());
    m_valueBytes = static_cast<uint32_t>(total);
    // Every byte is written below.
    m_data = std::make_unique_for_overwrite<std::byte[]>(m_columns * sizeof(Entry) + total);
    auto* entry = reinterpret_cast<Entry*>(m_data.get());
    std::byte* values = m_data.get() + m_columns * sizeof(Entry);
    uint32_t end = 0;
    for (uint32_t i = 0; i < m_columns; ++i) {
        const Cell& cell = cells[i];
        if (!cell.value.empty())
            std::memcpy(values + end, cell.value.data(), cell.value.size());
        end += static_cast<uint32_t>(cell.value.size());
        entry[i] = {end, cell.stamp};
        if (cell.reason.empty())
            continue;
        if (!m_reasons)
            m_reasons = std::make_unique<std::vector<std::pair<uint32_t, std::wstring>>>();
        m_reasons->emplace_back(i, cell.reason);
    }
}

RowRecord::Cell RowRecord::cell(size_t column) const
{
    if (column >= m_columns)
        return {{}, StampNull};
    const Entry& entry = entries()[column];
    const uint32_t begin = column == 0 ? 0 : entries()[column - 1].end;
    Cell cell{{m_data.get() + m_columns * sizeof(Entry) + begin, entry.end - begin}, entry.stamp};
    if (!m_reasons)
        return cell;
    for (const auto& [index, reason] : *m_reasons)
        if (index == column)
            cell.reason = reason;
    return cell;
}

void RowRecord::setCell(size_t column, const Cell& cell)
{
    std::vector<Cell> cells;
    const size_t count = std::max<size_t>(m_columns, column + 1);
    cells.reserve(count);
    for (size_t i = 0; i < count; ++i)
        cells.push_back(i == column ? cell : this->cell(i));
    *this = RowRecord(cells);
}

bool RowRecord::sameValues(const RowRecord& other) const
{
    if (m_columns != other.m_columns || m_valueBytes != other.m_valueBytes)
        return false;
    const size_t size = m_columns * sizeof(Entry) + m_valueBytes;
    return size == 0 || std::memcmp(m_data.get(), other.m_data.get(), size) == 0;
}

size_t RowRecord::bytes() const
{
    size_t total = sizeof(RowRecord) + m_columns * sizeof(Entry) + m_valueBytes;
    if (m_reasons)
        for (const auto& [index, reason] : *m_reasons)
            total += sizeof(index) + sizeof(std::wstring) + reason.size() * sizeof(wchar_t);
    return total;
}

} // namespace OviAPI
