#include <dorcpp/rowkeys.h>

namespace DorCPP {

size_t RowKeys::size() const
{
    if (const auto* list = std::get_if<KeyList>(&m_keys))
        return list->size();
    return static_cast<size_t>(std::get<Spool>(m_keys).rows());
}

void RowKeys::replace(size_t row, std::vector<Parameter> key)
{
    if (!isPacked() || key.front().integer != packed(row))
        m_changed[row] = std::move(key);
}

bool RowKeys::wasDropped(size_t row) const
{
    const auto at = m_changed.find(row);
    return at != m_changed.end() && !at->second;
}

int64_t RowKeys::changedOrPacked(size_t row) const
{
    const auto at = m_changed.find(row);
    if (at != m_changed.end() && at->second)
        return at->second->front().integer;
    return std::get<KeyList>(m_keys)[row];
}

Parameter RowKeys::part(size_t row, size_t column)
{
    Parameter part;
    const auto at = m_changed.find(row);
    if (at != m_changed.end() && at->second) {
        part = (*at->second)[column];
    } else if (isPacked()) {
        part.kind = Value::Integer;
        part.integer = std::get<KeyList>(m_keys)[row];
    } else {
        Spool& keys = spool();
        const auto r = static_cast<int64_t>(row);
        const Value value = keys.value(r, column);
        part = parameterOf(value);
        if (value.held < value.length) {
            part.bytes.resize(value.length);
            keys.piece(r, column, 0, part.bytes.data(), part.bytes.size());
        }
    }
    return part;
}

} // namespace DorCPP
