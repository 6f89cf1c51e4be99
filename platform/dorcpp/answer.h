// Executing a statement: the choice of how its answer is read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/rowsource.h>

namespace DorCPP {

struct Answer {
    std::vector<ColumnInfo> columns;
    std::unique_ptr<RowSource> rows; // null: the statement gave none
    int64_t changed = 0;
};

// A statement text (UTF-8) with its values.
struct StatementText {
    std::string sql;
    Parameters parameters;
    bool prepared = false;
};

// Executes the statement through the driver, which may be the session's own or one beside it.
// Throws DorX.
Answer executeStatement(const std::shared_ptr<Session>& session, Driver& driver,
                        const StatementText& statement);

} // namespace DorCPP
