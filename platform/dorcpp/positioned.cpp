#include <dorcpp/positioned.h>

#include <dorcpp/errors.h>

namespace DorCPP {

namespace {

// The number of the token WHERE in front of CURRENT OF CURSOR; the count of tokens for none.
size_t findClause(const SqlText& s)
{
    for (size_t i = 0; i < s.count(); ++i) {
        if (s.is(i, "where") && s.is(i + 1, "current") && s.is(i + 2, "of") &&
            s.is(i + 3, "cursor"))
            return i;
    }
    return s.count();
}

[[noreturn]] void refuse(const SqlText& s, size_t token, const char* reason)
{
    DorX x = makeError(CodeSqlText, std::string_view(reason));
    if (token < s.count())
        x.setPosition(static_cast<int>(s.tokens()[token].from) + 1);
    throw x;
}

// Refuses what would end the assignments before the clause.
void checkAssignments(const SqlText& s, size_t from, size_t clause)
{
    for (size_t i = from; i < clause; ++i) {
        if (s.tokens()[i].depth != 0)
            continue;
        const bool distinctFrom = s.is(i, "from") && s.is(i - 1, "distinct");
        if (s.isAny(i, {"where", "returning", "order", "limit"}) ||
            (s.is(i, "from") && !distinctFrom))
            refuse(s, i, "only WHERE CURRENT OF CURSOR may follow the assignments");
    }
}

} // namespace

std::string PositionedText::textFor(const std::string& name) const
{
    return deletes ? "DELETE FROM " + name : "UPDATE " + name + ' ' + change;
}

bool isPositioned(const SqlText& text)
{
    return findClause(text) < text.count();
}

PositionedText readPositioned(const SqlText& s)
{
    const size_t clause = findClause(s);
    for (size_t i = 0; i < s.count(); ++i) {
        if (s.is(i, ";"))
            throw makeError(CodeSeveralStatements);
    }
    PositionedText p;
    p.deletes = s.is(0, "delete") && s.is(1, "from");
    if (!p.deletes && !s.is(0, "update"))
        refuse(s, 0, "only UPDATE and DELETE can name the row of a cursor");
    if (clause + 4 != s.count() || s.tokens()[clause].depth != 0)
        refuse(s, clause, "WHERE CURRENT OF CURSOR must end the statement");
    size_t i = p.deletes ? 2 : 1;
    const size_t name = i;
    if (!s.isName(i) || s.isAny(i, {"set", "where"}))
        refuse(s, i, "the name of a table is missing");
    p.table = s.foldedName(i++);
    if (s.is(i, ".") && s.isName(i + 1)) {
        p.schema = p.table;
        p.table = s.foldedName(i + 1);
        i += 2;
    }
    p.target = s.piece(name, i);
    if (p.deletes ? i != clause : !s.is(i, "set"))
        refuse(s, i, "the table of a positioned statement has no alias and no other clause");
    if (!p.deletes) {
        checkAssignments(s, i, clause);
        p.change = s.piece(i, clause);
    }
    return p;
}

} // namespace DorCPP
