// One row of a dataset in little space: the values that it has, not the space they might need.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

// What is to be said of a cell besides its value; bits, so that a cell may be cut and invalid.
enum CellStamp : unsigned {
    StampNull = 1,       // no value
    StampCut = 2,        // the source has more than the row shows
    StampInvalid = 4,    // not a value of its type, shown as far as it goes
    StampDefault = 8,    // to be left to the server's default, chosen by the user
    StampUntouched = 16, // of a new row, nothing entered yet: left to the server's default
    StampServer = 32,    // made by the server when the row is stored
    StampText = 64,      // inside a record only: the value is text, whatever the column's type
};
inline constexpr unsigned defaultStamps = StampDefault | StampUntouched | StampServer;

// Text is held without a terminator, other values as celltext.h lays them out. Columns are counted
// from 0 here. Reading a column takes the same time in a row of 2,000 columns as in one of two.
class OVIAPI_API RowRecord {
public:
    struct Cell {
        std::span<const std::byte> value;
        unsigned stamp = 0;
        std::wstring_view reason = {}; // why it is cut or invalid
    };

    RowRecord() = default;
    explicit RowRecord(std::span<const Cell> cells);

    size_t columnCount() const { return m_columns; }
    // An empty NULL for a column behind the last one.
    Cell cell(size_t column) const;
    // Replaces one cell; a column behind the last one is added, with NULLs before it.
    void setCell(size_t column, const Cell& cell);
    // Whether both have the same columns with the same values and stamps, whatever the reasons.
    bool sameValues(const RowRecord& other) const;
    // Bytes that the row takes.
    size_t bytes() const;

private:
    struct Entry {
        uint32_t end; // of the value in the bytes behind the entries
        uint32_t stamp;
    };

    const Entry* entries() const { return reinterpret_cast<const Entry*>(m_data.get()); }

    std::unique_ptr<std::byte[]> m_data; // entries, then values
    uint32_t m_columns = 0;
    uint32_t m_valueBytes = 0;
    // Few cells have a reason.
    std::unique_ptr<std::vector<std::pair<uint32_t, std::wstring>>> m_reasons;
};

} // namespace OviAPI
