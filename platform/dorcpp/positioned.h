// Statements for the row that a cursor stands on.
#pragma once

#include <string>

#include <dorcpp/sqltext.h>

namespace DorCPP {

// "UPDATE t SET .. WHERE CURRENT OF CURSOR" or "DELETE FROM t WHERE CURRENT OF CURSOR" in pieces.
struct PositionedText {
    std::string schema; // as the engine looks it up; may be empty
    std::string table;
    std::string target; // the two as written
    std::string change; // from SET to the WHERE; empty for a DELETE
    bool deletes = false;

    // The statement without its WHERE clause, for this target.
    std::string textFor(const std::string& name) const;
};

// Whether the text speaks of the cursor's row anywhere outside strings, quoted names and comments.
// Such a text is never for the engine.
bool isPositioned(const SqlText& text);

// Throws DorX: CodeSqlText for any other form than the two, CodeSeveralStatements.
PositionedText readPositioned(const SqlText& text);

} // namespace DorCPP
