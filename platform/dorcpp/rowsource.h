// The rows of an answer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/session.h>

namespace DorCPP {

// Rows and columns are numbered from 0 here. Throws DorX.
class RowSource {
public:
    virtual ~RowSource() = default;
    virtual int64_t count() const = 0;
    // Makes the row ready for value; false when it has gone.
    virtual bool seek(int64_t row) = 0;
    // A value of the row sought last; its bytes stay valid until the next call.
    virtual Value value(size_t column) = 0;
    // A piece of a text or blob of that row.
    virtual size_t piece(size_t column, uint64_t offset, void* buffer, size_t size) = 0;
    virtual bool isKeyed() const = 0;
    // Changes or deletes that row.
    virtual void modify(const RowStatement& statement) = 0;
    // What a positioned statement has to name; null where no row can be changed.
    virtual const KeyedText* keyedText() const = 0;
};

// Rows copied when the statement was executed.
class SpooledRows final : public RowSource {
public:
    explicit SpooledRows(std::unique_ptr<Spool> rows)
        : m_rows(std::move(rows))
    {
    }
    int64_t count() const override { return m_rows->rows(); }
    bool seek(int64_t row) override;
    Value value(size_t column) override { return m_rows->value(m_row, column); }
    size_t piece(size_t column, uint64_t offset, void* buffer, size_t size) override;
    bool isKeyed() const override { return false; }
    void modify(const RowStatement& statement) override;
    const KeyedText* keyedText() const override { return nullptr; }

private:
    std::unique_ptr<Spool> m_rows;
    int64_t m_row = 0;
};

// Rows read by their keys when they are asked for, in blocks of 64 rows that double to 512 while
// the rows are read on. A few blocks stay; they are dropped when the session changed rows.
class KeyedRows final : public RowSource {
public:
    KeyedRows(std::shared_ptr<Session> session, KeyedText text, RowKeys keys);
    int64_t count() const override { return m_count; }
    bool seek(int64_t row) override;
    // The same through a driver that the caller has.
    bool seek(int64_t row, Driver& driver);
    Value value(size_t column) override;
    size_t piece(size_t column, uint64_t offset, void* buffer, size_t size) override;
    bool isKeyed() const override { return true; }
    void modify(const RowStatement& statement) override;
    const KeyedText* keyedText() const override { return &m_text; }

private:
    struct Block {
        int64_t first = 0;
        std::vector<int> places;
        RowBlock rows;
        uint64_t lastUse = 0;

        int64_t end() const { return first + static_cast<int64_t>(places.size()); }
        bool holds(int64_t row) const { return row >= first && row < end(); }
    };
    bool findLoaded(int64_t row);
    void load(int64_t row, Driver& driver);
    bool use(int64_t row);

    static constexpr int64_t smallBlock = 64;
    static constexpr int64_t largeBlock = 512;

    std::shared_ptr<Session> m_session;
    KeyedText m_text;
    RowKeys m_keys;
    int64_t m_count;
    std::array<Block, 4> m_blocks;
    Block* m_current;
    int64_t m_row = 0;
    int m_place = -1;
    int64_t m_size = smallBlock;
    uint64_t m_clock = 0;
    uint64_t m_changes = 0; // the session's count when the blocks were read
};

} // namespace DorCPP
