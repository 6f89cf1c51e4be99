// Executing a statement: the choice of how its answer is read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/rowsource.h>

namespace DorCPP {

// A positioned statement as the engine gets it.
struct PositionedChange {
    std::string source; // as it was given; empty: none
    std::string text;   // without its WHERE clause
    bool deletes = false;
};

struct Answer {
    std::vector<ColumnInfo> columns;
    std::unique_ptr<RowSource> rows; // null: the statement gave none
    int64_t changed = 0;
    PositionedChange latest; // of the prepared ones, when nothing in it had to be translated
};

// A statement (UTF-8) with its values.
struct StatementText {
    SqlText sql;
    Parameters parameters;
    bool prepared = false;
};

// Executes the statement through the driver, which may be the session's own or one beside it.
// Throws DorX.
Answer executeStatement(const std::shared_ptr<Session>& session, Driver& driver,
                        const StatementText& statement);

// Executes a positioned statement on the row that the answer's rows were moved to last; the answer
// and its other rows stay. Throws DorX: CodeNotUpdatable when the rows cannot be changed or are not
// of the table that the statement names, CodeRowGone, CodeRowChanged.
void changeRow(Session& session, Driver& driver, const StatementText& statement, Answer& answer);

// The statement as the engine gets it: translated; a positioned one without its WHERE clause.
std::string engineText(Session& session, Driver& driver, const SqlText& sql);

} // namespace DorCPP
