// Rows copied out of an engine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace DorCPP {

// One value as the engine stored it. Text is UTF-8. held bytes of a text or blob lie at data, which
// stays valid until the row source is used again; length counts the whole value.
struct Value {
    enum Kind : uint8_t { Null, Integer, Real, Text, Blob };
    Kind kind = Null;
    int64_t integer = 0;
    double real = 0;
    const char* data = nullptr;
    size_t held = 0;
    size_t length = 0;

    std::string_view bytes() const { return {data, held}; }
};

// Cells of 16 bytes each, texts and blobs in one heap. Memory is kept when the block is cleared.
class RowBlock {
public:
    struct Cell {
        Value::Kind kind;
        bool outside;    // bytes lie elsewhere, at `at`; the heap holds none of them
        uint32_t length; // of the whole value
        union {
            int64_t integer;
            double real;
            uint64_t at;
        };
    };
    // Of a longer value only so many bytes are kept.
    static constexpr size_t maxHeld = 65536;

    explicit RowBlock(size_t columns = 0)
        : m_columns(columns)
    {
    }

    size_t columns() const { return m_columns; }
    size_t rows() const { return m_columns ? m_used / m_columns : 0; }
    size_t heapBytes() const { return m_heapUsed; }
    size_t cellCount() const { return m_used; }

    void clear() { m_used = m_heapUsed = 0; }
    // Takes the row back that was begun and not finished, or finished last.
    void dropRow(size_t rowsBefore, size_t heapBefore)
    {
        m_used = rowsBefore * m_columns;
        m_heapUsed = heapBefore;
    }
    // Makes room for one row; each of its cells is then added in order.
    void beginRow()
    {
        if (m_used + m_columns > m_cells.size())
            m_cells.resize(m_cells.size() * 2 + m_columns);
    }
    void addNull() { add(Value::Null, 0).integer = 0; }
    void addInteger(int64_t value) { add(Value::Integer, 0).integer = value; }
    void addReal(double value) { add(Value::Real, 0).real = value; }
    // length: of the whole value, of which the first maxHeld bytes lie at data.
    void addBytes(Value::Kind kind, const void* data, size_t length)
    {
        const size_t held = length < maxHeld ? length : maxHeld;
        if (m_heapUsed + held > m_heap.size())
            m_heap.resize(m_heap.size() * 2 + held + 4096);
        if (held)
            std::memcpy(m_heap.data() + m_heapUsed, data, held);
        add(kind, length).at = m_heapUsed;
        m_heapUsed += held;
    }
    void addOutside(Value::Kind kind, uint64_t at, size_t length)
    {
        Cell& cell = add(kind, length);
        cell.outside = true;
        cell.at = at;
    }

    const Cell& cell(size_t row, size_t column) const { return m_cells[row * m_columns + column]; }
    // The first cell of a row; the others follow.
    const Cell* row(size_t row) const { return m_cells.data() + row * m_columns; }
    // Whether the heap has all bytes of a text or blob, and where.
    bool isWhole(const Cell& c) const { return !c.outside && c.length <= maxHeld; }
    const char* bytes(const Cell& c) const { return m_heap.data() + c.at; }
    Value value(size_t row, size_t column) const { return value(cell(row, column)); }
    // The value of a cell of this block, without the bytes that lie outside.
    Value value(const Cell& c) const
    {
        Value v;
        v.kind = c.kind;
        switch (c.kind) {
        case Value::Null:
            break;
        case Value::Integer:
            v.integer = c.integer;
            break;
        case Value::Real:
            v.real = c.real;
            break;
        case Value::Text:
        case Value::Blob:
            v.length = c.length;
            if (!c.outside) {
                v.held = c.length < maxHeld ? c.length : maxHeld;
                v.data = bytes(c);
            }
            break;
        }
        return v;
    }

    // The plain memory, to write it to a file and read it back.
    Cell* cells() { return m_cells.data(); }
    char* heap() { return m_heap.data(); }
    void resize(size_t cellCount, size_t heapCount)
    {
        if (m_cells.size() < cellCount)
            m_cells.resize(cellCount);
        if (m_heap.size() < heapCount)
            m_heap.resize(heapCount);
        m_used = cellCount;
        m_heapUsed = heapCount;
    }

private:
    Cell& add(Value::Kind kind, size_t length)
    {
        Cell& c = m_cells[m_used++];
        c.kind = kind;
        c.outside = false;
        c.length = static_cast<uint32_t>(length);
        return c;
    }

    size_t m_columns;
    std::vector<Cell> m_cells;
    std::vector<char> m_heap;
    size_t m_used = 0; // cells and heap bytes in use; the vectors only grow
    size_t m_heapUsed = 0;
};

} // namespace DorCPP
