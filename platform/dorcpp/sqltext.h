// Reading of statement text by tokens: enough to tell what a statement is and to split a SELECT of
// one table. It never needs the full grammar: what it does not recognise it leaves to the engine.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace DorCPP {

// Where the engines' lexical rules differ: backticks and [names] on SQLite; dollar quotes, E'..'
// strings and nested comments on PostgreSQL.
enum class SqlDialect { Sqlite, Postgresql };

struct SqlToken {
    enum Kind { Word, QuotedName, String, Number, Parameter, Punctuation };
    Kind kind;
    size_t from; // byte offsets in the text
    size_t to;
    int depth; // of parentheses around the token; of a parenthesis itself, outside it
};

// The tokens of a text, without blanks and comments. Owns the text; trailing semicolons are left
// out. Token numbers start at 0, and every member takes numbers beyond the end.
class SqlText {
public:
    SqlText(std::string_view text, SqlDialect dialect);

    const std::string& source() const { return m_text; }
    SqlDialect dialect() const { return m_dialect; }
    const std::vector<SqlToken>& tokens() const { return m_tokens; }
    size_t count() const { return m_tokens.size(); }
    std::string_view str(size_t i) const;
    // Whether token i is this word or sign, in any case, and no quoted name or string.
    bool is(size_t i, std::string_view word) const;
    bool isAny(size_t i, std::initializer_list<std::string_view> words) const;
    bool isName(size_t i) const;
    // A name without its quotes.
    std::string name(size_t i) const;
    // A name as the engine looks it up: on PostgreSQL one without quotes is in lower case.
    std::string foldedName(size_t i) const;
    // The text from token i to the one before end, as written.
    std::string piece(size_t i, size_t end) const;

private:
    std::string m_text;
    SqlDialect m_dialect;
    std::vector<SqlToken> m_tokens;
};

enum class StatementKind {
    Empty,
    Query,        // gives rows and changes nothing
    Modify,       // INSERT, UPDATE, DELETE, REPLACE
    Define,       // DDL on permanent things, and maintenance
    Transaction,  // BEGIN, COMMIT, SAVEPOINT ...
    SessionState, // anything else: settings, temporary things
};
StatementKind kindOf(const SqlText& text);

// A SELECT of one table, in pieces. When it cannot be read by row keys, reason says why and the
// rest is empty.
struct KeyedSelect {
    bool keyable = false;
    const char* reason = "";
    std::string list;   // the select list
    std::string schema; // names without quotes; the schema may be empty
    std::string table;
    std::string from;    // the table as written, with its alias
    std::string alias;   // how the key is qualified, as written
    std::string rest;    // everything behind the FROM item
    std::string orderBy; // ORDER BY without a LIMIT behind it
    bool ordered = false;
    bool limited = false;
};
// Decides by tokens alone. Whether the table has a key, and whether the list holds an aggregate, is
// for the driver to find out.
KeyedSelect readSelect(const SqlText& text);

// Which of so many columns of the list come from a subquery, and so never from the row itself. A
// star stands for several columns.
std::vector<bool> subqueryColumns(const SqlText& list, size_t columns);

// The statement that gives the keys alone, in the order of the rows. key: expressions such as
// "rowid", without the alias.
std::string keyPassText(const KeyedSelect& select, const std::vector<std::string>& key);
// " WHERE t.k1 = ?n AND ..."; alias: with its point, or empty.
std::string whereKeyText(SqlDialect dialect, const std::vector<std::string>& key,
                         const std::string& alias, int firstNumber);
// " RETURNING k1, ..."
std::string returningText(const std::vector<std::string>& key);
// A statement without a row, unless the list holds an aggregate.
std::string probeText(const KeyedSelect& select, const std::vector<std::string>& key);

// How the text names a parameter by its number: "?1", "$1".
std::string numberedParameter(SqlDialect dialect, int number);

// Whether two names, as the engine looks them up, name the same thing: in any case on SQLite.
bool sameName(std::string_view a, std::string_view b, SqlDialect dialect);

// The name in double quotes.
std::string quoteName(std::string_view name);

} // namespace DorCPP
