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
    // Makes the row ready for value; false when it has gone. The row stays as it was read until the
    // next seek or modify.
    virtual bool seek(int64_t row) = 0;
    // Reads the row sought last anew; false when it has gone.
    virtual bool refresh() = 0;
    // Whether the row sought last is there; modify may have ended it.
    virtual bool isThere() const = 0;
    // A value of that row; its bytes stay valid until the next call.
    Value value(size_t column)
    {
        return m_cells && !m_cells[column].outside ? m_block->value(m_cells[column]) : read(column);
    }
    // The same as a cell of block(); null where there is none.
    const RowBlock::Cell* cell(size_t column) const { return m_cells ? m_cells + column : nullptr; }
    const RowBlock& block() const { return *m_block; }
    // A piece of a text or blob of that row.
    virtual size_t piece(size_t column, uint64_t offset, void* buffer, size_t size) = 0;
    virtual bool isKeyed() const = 0;
    // Changes or deletes that row, if it still is what was read; then reads it anew.
    virtual void modify(const RowStatement& statement, Driver& driver) = 0;
    // What a positioned statement has to name; null where no row can be changed.
    virtual const KeyedText* keyedText() const = 0;

protected:
    // A value that has no cell, or whose bytes lie outside.
    virtual Value read(size_t column) = 0;
    // The row sought last lies in this block, which stays as it is until the next seek or modify.
    void standOn(const RowBlock& block, size_t row)
    {
        m_block = &block;
        m_cells = block.row(row);
    }
    void standNowhere() { m_cells = nullptr; }

private:
    const RowBlock* m_block = nullptr;
    const RowBlock::Cell* m_cells = nullptr; // of the row sought last; null: none
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
    bool refresh() override { return true; }
    bool isThere() const override { return true; }
    size_t piece(size_t column, uint64_t offset, void* buffer, size_t size) override;
    bool isKeyed() const override { return false; }
    void modify(const RowStatement& statement, Driver& driver) override;
    const KeyedText* keyedText() const override { return nullptr; }

protected:
    Value read(size_t column) override { return m_rows->value(m_row, column); }

private:
    std::unique_ptr<Spool> m_rows;
    int64_t m_row = 0;
};

// Rows read by their keys when they are asked for, in blocks of 64 rows that double to 512 while
// the rows are read on. A few blocks stay.
//
// What guards a change is what the row was when it was sought last, so a row is never read anew
// behind the back of who has seen it: only seek reads, again when the session has changed rows
// since the block was read (its own statements, not another session's). A change through modify
// leaves all other rows as they were read; only the changed one is taken from the statement or,
// where something else may have changed it too, read anew, so that what the engine made of it is
// seen. A change that was refused because the row is not what was read lets
// the next seek read.
class KeyedRows final : public RowSource {
public:
    KeyedRows(std::shared_ptr<Session> session, KeyedText text, RowKeys keys);
    int64_t count() const override { return m_count; }
    bool seek(int64_t row) override;
    // The same through a driver that the caller has.
    bool seek(int64_t row, Driver& driver);
    bool refresh() override;
    bool isThere() const override { return m_place >= 0; }
    size_t piece(size_t column, uint64_t offset, void* buffer, size_t size) override;
    bool isKeyed() const override { return true; }
    void modify(const RowStatement& statement, Driver& driver) override;
    const KeyedText* keyedText() const override { return &m_text; }

protected:
    Value read(size_t column) override;

private:
    struct Block {
        int64_t first = 0;
        std::vector<int> places;
        RowBlock rows;
        uint64_t lastUse = 0;
        uint64_t changes = 0; // the session's count when the block was read
        bool settled = false; // everything in it was read outside a transaction

        int64_t end() const { return first + static_cast<int64_t>(places.size()); }
        bool holds(int64_t row) const { return row >= first && row < end(); }
    };
    bool findLoaded(int64_t row);
    void load(int64_t row, Driver& driver);
    bool use(int64_t row);
    void readAnew(Driver& driver);
    void replaceRow(const RowBlock& from, int place);
    void forgetCopies();
    void setPlace(int place);

    static constexpr int64_t smallBlock = 64;
    static constexpr int64_t largeBlock = 512;
    static constexpr uint64_t outdated = UINT64_MAX; // changes of a block to be read again

    std::shared_ptr<Session> m_session;
    KeyedText m_text;
    RowKeys m_keys;
    std::unique_ptr<ChangePlan> m_plan; // of the latest change
    RowBlock m_changed;                 // the row that it left
    int64_t m_count;
    std::array<Block, 4> m_blocks;
    Block* m_current;
    int64_t m_row = 0;
    int m_place = -1;
    int64_t m_size = smallBlock;
    uint64_t m_clock = 0;
};

} // namespace DorCPP
