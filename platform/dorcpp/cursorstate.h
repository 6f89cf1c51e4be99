// What the objects of one cursor share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/answer.h>
#include <dorcpp/bigvalue.h>
#include <dorcpp/execution.h>

namespace DorCPP {

// Columns are numbered from 0 here, rows from 1. Throws DorX.
struct CursorState {
    enum class Row { None, Here, Gone };
    // A value that is being replaced.
    struct Pending {
        size_t column = 0;
        Value::Kind kind = Value::Null;
        std::unique_ptr<BigValue> value;
    };
    // What getData found.
    struct Found {
        ValueState state = ValueState::Exact;
        uint64_t reading = 0; // number of the reading of the row
    };

    std::shared_ptr<Session> session;
    int handle = 0;
    int mode = 0;
    std::string name;
    std::shared_ptr<Execution> execution; // the latest asynchronous one
    bool answerTaken = true;
    bool onRow = false; // the execution changes the row of the position and has the answer
    Answer answer;
    DorX error;
    int64_t position = 0; // 0 before the first row, count + 1 behind the last
    Row row = Row::None;  // at the position
    uint64_t reading = 1;
    std::vector<Found> found; // one for each column of the answer
    std::unique_ptr<Pending> pending;

    void take(Answer&& a);
    // Takes over what the finished execution left.
    void takeFinished();
    // After the row of the position was read or changed.
    void noteRow();
    int64_t rowCount() const { return answer.rows ? answer.rows->count() : 0; }

    // Index of a column, from its number.
    size_t columnAt(int column) const
    {
        if (column < 1 || static_cast<size_t>(column) > found.size())
            throwNoColumn(column);
        return static_cast<size_t>(column) - 1;
    }
    void requireRow() const
    {
        if (row != Row::Here)
            throwNoRow();
    }
    // The rows of the answer, at the current one, for a value of that column.
    RowSource& rowsFor(size_t column)
    {
        if (pending && pending->column == column)
            writePending();
        requireRow();
        return *answer.rows;
    }
    Value valueAt(size_t column) { return rowsFor(column).value(column); }
    // Rows of the answer can be changed.
    bool isUpdatable() const;
    void writePending();

    void execute(StatementText statement, DorCursor::Handler* handler);
    // Drops the answer; a running statement is cancelled.
    void drop();

private:
    [[noreturn]] void throwNoColumn(int column) const;
    [[noreturn]] void throwNoRow() const;
    void executeNow(const StatementText& statement);
    void executeOnRow(StatementText statement, DorCursor::Handler* handler);
};

} // namespace DorCPP
