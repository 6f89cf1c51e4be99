// The keys of a keyed answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <variant>
#include <vector>

#include <dorcpp/keylist.h>
#include <dorcpp/parameter.h>
#include <dorcpp/spool.h>

namespace DorCPP {

// One key a row, in row order; rows are numbered from 0. A key is one 64-bit integer, packed, or a
// value for each key column. Keys are added first; later single ones are replaced by what the
// cursor's own statements made of them.
class RowKeys {
public:
    // Packed integers.
    RowKeys() = default;
    // So many values a key.
    explicit RowKeys(size_t columns)
        : m_keys(std::in_place_type<Spool>, columns)
    {
    }

    // Where the key pass adds keys: the list of packed ones, else null; the spool of the others.
    KeyList* list() { return std::get_if<KeyList>(&m_keys); }
    Spool& spool() { return std::get<Spool>(m_keys); }

    bool isPacked() const { return std::holds_alternative<KeyList>(m_keys); }
    size_t columns() const { return isPacked() ? 1 : std::get<Spool>(m_keys).columns(); }
    size_t size() const;

    // Whether the cursor itself deleted the row: its key may belong to another row by now.
    bool isGone(size_t row) const { return !m_changed.empty() && wasDropped(row); }
    // The key of a packed row.
    int64_t packed(size_t row) const
    {
        return m_changed.empty() ? std::get<KeyList>(m_keys)[row] : changedOrPacked(row);
    }
    // The value of a key column, with all its bytes.
    Parameter part(size_t row, size_t column);

    void replace(size_t row, std::vector<Parameter> key);
    void drop(size_t row) { m_changed[row] = std::nullopt; }

private:
    bool wasDropped(size_t row) const;
    int64_t changedOrPacked(size_t row) const;

    std::variant<KeyList, Spool> m_keys;
    std::map<size_t, std::optional<std::vector<Parameter>>> m_changed; // nothing: deleted
};

} // namespace DorCPP
