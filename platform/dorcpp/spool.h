// Rows in a temporary file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <dorcpp/rowblock.h>

namespace DorCPP {

// A file without a name: it goes when the object goes, whatever becomes of the process. Throws DorX
// (CodeDiskFull, CodeInputOutput). Made on the first write, in TMPDIR or the system's place.
class TempFile {
public:
    TempFile() = default;
    ~TempFile();
    TempFile(TempFile&& other) noexcept
        : m_file(std::exchange(other.m_file, -1))
        , m_size(std::exchange(other.m_size, 0))
    {
    }
    TempFile& operator=(TempFile&&) = delete;

    // Returns the offset where the bytes begin.
    uint64_t append(const void* data, size_t size);
    void read(uint64_t at, void* buffer, size_t size) const;
    uint64_t size() const { return m_size; }
    bool isOpen() const { return m_file >= 0; }
    // Of the open file.
    int descriptor() const { return m_file; }

private:
    void open();

    int m_file = -1;
    uint64_t m_size = 0;
};

// Rows are added from first to last, then finish; after that any row can be read. Blocks of up to
// 64 rows are written together; memory grows by 16 bytes a block. A long value lies outside its
// block. An answer that fits into one block never touches the disk.
class Spool {
public:
    explicit Spool(size_t columns);

    void beginRow();
    void addNull() { m_block.addNull(); }
    void addInteger(int64_t value) { m_block.addInteger(value); }
    void addReal(double value) { m_block.addReal(value); }
    void addBytes(Value::Kind kind, const void* data, size_t length);
    void finish();

    size_t columns() const { return m_block.columns(); }
    int64_t rows() const { return m_rows; }
    // Reads the block of a row, from 0; returns the row's number in it.
    size_t load(int64_t row)
    {
        if (row < m_begin || row >= m_end)
            read(row / m_rowsPerBlock);
        return static_cast<size_t>(row - m_begin);
    }
    // The block that was loaded last.
    const RowBlock& block() const { return m_block; }
    // row and column from 0. The bytes stay valid until the next call.
    Value value(int64_t row, size_t column);
    // Reads a piece of a text or blob; returns the bytes read, fewer only at its end.
    size_t piece(int64_t row, size_t column, uint64_t offset, void* buffer, size_t size);

private:
    struct Place {
        uint64_t at;
        uint64_t heap;
    };
    void flush();
    void read(int64_t block);

    static constexpr size_t maxInside = 2048; // bytes of a value kept in its block

    RowBlock m_block;
    int64_t m_rowsPerBlock;
    std::vector<Place> m_places;
    int64_t m_rows = 0;
    int64_t m_begin = 0; // the rows in m_block, once there are no more to add
    int64_t m_end = 0;
    TempFile m_file;
    std::vector<char> m_outside; // the head of the latest value that lay outside
};

} // namespace DorCPP
