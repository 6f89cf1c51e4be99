#include <dorcpp/cursorstate.h>

#include <dorcpp/errors.h>
#include <dorcpp/positioned.h>

namespace DorCPP {

void CursorState::take(Answer&& a)
{
    answer = std::move(a);
    position = 0;
    row = Row::None;
    found.assign(answer.columns.size(), Found());
}

void CursorState::takeFinished()
{
    answerTaken = true;
    error = execution->error();
    if (!onRow) {
        take(execution->takeAnswer());
        return;
    }
    onRow = false;
    answer = execution->takeAnswer();
    noteRow();
}

void CursorState::noteRow()
{
    ++reading;
    row = answer.rows->isThere() ? Row::Here : Row::Gone;
}

bool CursorState::isUpdatable() const
{
    return answer.rows && answer.rows->isKeyed() && !(mode & ModeReadOnly);
}

void CursorState::throwNoColumn(int column) const
{
    throw makeError(CodeBadCall, "there is no column " + std::to_string(column));
}

void CursorState::throwNoRow() const
{
    if (row == Row::Gone)
        throw makeError(CodeRowGone, OviAPI::Phrase::DbDetailRow, std::to_string(position));
    throw makeError(position == 0 ? CodeBadCall : CodeNoRow, "no row was fetched");
}

void CursorState::writePending()
{
    const auto written = std::move(pending);
    if (!written)
        return;
    const ColumnInfo& column = answer.columns[written->column];
    RowStatement statement;
    statement.text = "UPDATE " + quoteName(column.owner) + '.' + quoteName(column.table) + " SET " +
                     quoteName(column.column) + " = " + numberedParameter(session->dialect(), 1);
    Parameter value;
    value.kind = written->kind;
    value.outside = written->value->bytes();
    if (!value.outside.data())
        value.outside = "";
    statement.parameters = {{1, std::move(value)}};
    const Session::Use driver(*session);
    answer.rows->modify(statement, *driver);
    noteRow();
}

void CursorState::execute(StatementText statement, DorCursor::Handler* handler)
{
    writePending();
    error = DorX();
    if (isPositioned(statement.sql)) {
        executeOnRow(std::move(statement), handler);
    } else if (!handler) {
        executeNow(statement);
    } else {
        take(Answer());
        execution = Execution::start(session, std::move(statement), *handler);
        answerTaken = false;
    }
}

void CursorState::executeNow(const StatementText& statement)
{
    take(Answer());
    const StatementKind kind = kindOf(statement.sql);
    if (kind == StatementKind::Empty)
        return;
    const Session::Use driver(*session);
    Answer a = executeStatement(session, *driver, statement);
    session->noteExecuted(kind);
    take(std::move(a));
}

void CursorState::executeOnRow(StatementText statement, DorCursor::Handler* handler)
{
    answer.changed = 0;
    requireRow();
    if (mode & ModeReadOnly)
        throw makeError(CodeNotUpdatable, "the cursor is for reading only");
    if (handler) {
        execution = Execution::startOnRow(session, std::move(statement), answer, *handler);
        answerTaken = false;
        onRow = true;
        return;
    }
    const Session::Use driver(*session);
    changeRow(*session, *driver, statement, answer);
    noteRow();
}

void CursorState::drop()
{
    if (execution && !execution->isFinished())
        execution->cancel();
    execution = nullptr;
    answerTaken = true;
    onRow = false;
    take(Answer());
}

} // namespace DorCPP
