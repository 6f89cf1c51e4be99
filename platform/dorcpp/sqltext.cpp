#include <dorcpp/sqltext.h>

#include <algorithm>
#include <cstring>

#include <strings.h>

namespace DorCPP {

namespace {

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isWordStart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c & 0x80) != 0;
}

bool isWordChar(char c)
{
    return isWordStart(c) || isDigit(c) || c == '$';
}

bool sameWord(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

class Tokenizer {
public:
    Tokenizer(std::string_view text, SqlDialect dialect)
        : m_text(text)
        , m_postgresql(dialect == SqlDialect::Postgresql)
    {
    }

    std::vector<SqlToken> run()
    {
        m_tokens.reserve(std::min<size_t>(m_text.size() / 4 + 1, 256)); // enough for most texts
        while (m_at < m_text.size()) {
            if (!skip())
                token();
        }
        return std::move(m_tokens);
    }

private:
    char at(size_t i) const { return i < m_text.size() ? m_text[i] : '\0'; }

    void add(SqlToken::Kind kind, size_t end)
    {
        m_tokens.push_back({kind, m_at, std::min(end, m_text.size()), m_depth});
        m_at = m_tokens.back().to;
    }

    bool skip()
    {
        if (isBlank(m_text[m_at])) {
            ++m_at;
            return true;
        }
        if (m_text.substr(m_at, 2) == "--") {
            m_at = std::min(m_text.find('\n', m_at), m_text.size());
            return true;
        }
        if (m_text.substr(m_at, 2) != "/*")
            return false;
        int open = 1;
        for (m_at += 2; m_at < m_text.size() && open > 0;) {
            const std::string_view two = m_text.substr(m_at, 2);
            if (two == "*/")
                --open;
            else if (two == "/*" && m_postgresql)
                ++open;
            m_at += two == "*/" || (two == "/*" && m_postgresql) ? 2 : 1;
        }
        return true;
    }

    // The end of a quoted piece that starts at i, where the quote is doubled to stand for itself.
    size_t quoted(size_t i, bool backslash = false) const
    {
        const char quote = m_text[i];
        for (++i; i < m_text.size(); ++i) {
            const bool escaped = backslash && m_text[i] == '\\';
            if (escaped || (m_text[i] == quote && at(i + 1) == quote))
                ++i;
            else if (m_text[i] == quote)
                return i + 1;
        }
        return m_text.size();
    }

    size_t word(size_t i) const
    {
        while (i < m_text.size() && isWordChar(m_text[i]))
            ++i;
        return i;
    }

    // The end of a dollar-quoted string that starts here, or 0.
    size_t dollarQuoted() const
    {
        size_t e = m_at + 1;
        while (e < m_text.size() &&
               (isWordStart(m_text[e]) || (e > m_at + 1 && isDigit(m_text[e]))))
            ++e;
        if (at(e) != '$')
            return 0;
        const std::string_view tag = m_text.substr(m_at, e - m_at + 1);
        const size_t end = m_text.find(tag, e + 1);
        return end == std::string_view::npos ? m_text.size() : end + tag.size();
    }

    void number()
    {
        size_t i = m_at;
        while (i < m_text.size() &&
               (isWordChar(m_text[i]) || m_text[i] == '.' ||
                ((m_text[i] == '+' || m_text[i] == '-') && (at(i - 1) | 0x20) == 'e' &&
                 isDigit(at(i + 1)) && (at(m_at + 1) | 0x20) != 'x')))
            ++i;
        add(SqlToken::Number, i);
    }

    void parameter()
    {
        const char c = m_text[m_at];
        if (c == ':' && at(m_at + 1) == ':') {
            add(SqlToken::Punctuation, m_at + 2);
            return;
        }
        const size_t end = word(m_at + 1);
        add(end > m_at + 1 || c == '?' ? SqlToken::Parameter : SqlToken::Punctuation, end);
    }

    void token()
    {
        const char c = m_text[m_at];
        if (c == '\'') {
            add(SqlToken::String, quoted(m_at));
        } else if (m_postgresql && (c | 0x20) == 'e' && at(m_at + 1) == '\'') {
            add(SqlToken::String, quoted(m_at + 1, true));
        } else if (c == '"' || (c == '`' && !m_postgresql)) {
            add(SqlToken::QuotedName, quoted(m_at));
        } else if (c == '[' && !m_postgresql) {
            const size_t end = m_text.find(']', m_at);
            add(SqlToken::QuotedName, end == std::string_view::npos ? m_text.size() : end + 1);
        } else if (const size_t end = c == '$' && m_postgresql ? dollarQuoted() : 0) {
            add(SqlToken::String, end);
        } else if (c == '?' || c == ':' || c == '@' || c == '$') {
            parameter();
        } else if (isDigit(c) || (c == '.' && isDigit(at(m_at + 1)))) {
            number();
        } else if (isWordStart(c)) {
            add(SqlToken::Word, word(m_at));
        } else {
            if (c == ')')
                --m_depth;
            add(SqlToken::Punctuation, m_at + 1);
            if (c == '(')
                ++m_depth;
        }
    }

    std::string_view m_text;
    bool m_postgresql;
    size_t m_at = 0;
    int m_depth = 0;
    std::vector<SqlToken> m_tokens;
};

// Whether a date function at token i reads the clock: it does for 'now' and without a time value.
bool readsClock(const SqlText& s, size_t i)
{
    const int depth = s.tokens()[i].depth;
    size_t arguments = s.is(i + 2, ")") ? 0 : 1;
    for (size_t k = i + 2; k < s.count() && s.tokens()[k].depth > depth; ++k) {
        if (sameWord(s.str(k), "'now'"))
            return true;
        if (s.is(k, ",") && s.tokens()[k].depth == depth + 1)
            ++arguments;
    }
    return arguments < (s.is(i, "strftime") ? 2 : 1);
}

// Whether token i is a function whose value differs from one reading to the next.
bool isVolatile(const SqlText& s, size_t i)
{
    if (s.isAny(i, {"current_timestamp", "current_date", "current_time"}))
        return true;
    if (!s.is(i + 1, "("))
        return false;
    if (s.isAny(i, {"date", "time", "datetime", "julianday", "unixepoch", "strftime"}))
        return readsClock(s, i);
    return s.isAny(i,
                   {"random", "randomblob", "changes", "total_changes", "last_insert_rowid", "now",
                    "clock_timestamp", "nextval", "lastval", "currval", "gen_random_uuid"});
}

// Reads the pieces of a SELECT; every step returns null, or why the text cannot be keyed.
class SelectReader {
public:
    explicit SelectReader(const SqlText& text)
        : s(text)
    {
    }

    KeyedSelect read()
    {
        const char* reason = head();
        if (!reason)
            reason = table();
        if (!reason)
            reason = tail();
        if (reason) {
            k = KeyedSelect();
            k.reason = reason;
            return std::move(k);
        }
        k.list = s.piece(m_list, m_from);
        k.keyable = true;
        return std::move(k);
    }

private:
    const char* head()
    {
        if (!s.is(0, "select"))
            return "not a plain SELECT";
        if (s.is(1, "distinct"))
            return "DISTINCT";
        m_list = s.is(1, "all") ? 2 : 1;
        for (size_t i = m_list; i < s.count(); ++i) {
            if (s.is(i, "over") && (s.is(i + 1, "(") || s.isName(i + 1)))
                return "window function";
            if (!m_from && isVolatile(s, i))
                return "a function that changes from reading to reading";
            if (!m_from && s.tokens()[i].kind == SqlToken::Parameter)
                return "parameter in the list";
            if (s.tokens()[i].depth != 0)
                continue;
            if (s.isAny(i, {"union", "intersect", "except"}))
                return "compound";
            if (s.isAny(i, {"group", "having", "window"}))
                return "grouping";
            if (s.is(i, "into") || s.is(i, ";"))
                return "not one plain SELECT";
            if (s.is(i, "from") && !m_from)
                m_from = i;
        }
        return m_from > m_list ? nullptr : "no FROM";
    }

    bool endsFrom(size_t i) const
    {
        return i >= s.count() || s.isAny(i, {"where", "order", "limit", "offset", "fetch", "for"});
    }

    const char* table()
    {
        size_t i = m_from + 1;
        if (!s.isName(i))
            return "no plain table";
        if (s.isAny(i, {"only", "lateral"}) && s.isName(i + 1))
            return "unusual FROM";
        k.table = s.name(i++);
        if (s.is(i, ".")) {
            if (!s.isName(i + 1))
                return "unusual FROM";
            k.schema = k.table;
            k.table = s.name(i + 1);
            i += 2;
        }
        if (s.is(i, "("))
            return "table function";
        k.alias = s.piece(m_from + 1, i);
        if (s.is(i, "as")) {
            if (!s.isName(i + 1))
                return "unusual FROM";
            k.alias = s.piece(i + 1, i + 2);
            i += 2;
        } else if (s.isName(i) && !endsFrom(i) &&
                   !s.isAny(i, {"indexed", "not", "join", "inner", "left", "right", "full", "cross",
                                "natural", "tablesample"})) {
            k.alias = s.piece(i, i + 1);
            ++i;
        }
        k.from = s.piece(m_from + 1, i);
        m_rest = i;
        if (s.is(i, "indexed") && s.is(i + 1, "by"))
            i += 3;
        else if (s.is(i, "not") && s.is(i + 1, "indexed"))
            i += 2;
        return endsFrom(i) ? nullptr : "several tables";
    }

    const char* tail()
    {
        size_t order = s.count();
        size_t limit = s.count();
        for (size_t i = m_rest; i < s.count(); ++i) {
            if (s.tokens()[i].depth != 0)
                continue;
            if (s.is(i, "for"))
                return "FOR clause";
            if (s.is(i, "order"))
                order = std::min(order, i);
            if (s.isAny(i, {"limit", "offset", "fetch"}))
                limit = std::min(limit, i);
        }
        k.ordered = order < s.count();
        k.limited = limit < s.count();
        if (order < limit)
            k.orderBy = s.piece(order, limit);
        k.rest = s.piece(m_rest, s.count());
        return nullptr;
    }

    const SqlText& s;
    KeyedSelect k;
    size_t m_list = 0;
    size_t m_from = 0;
    size_t m_rest = 0;
};

std::string keyName(size_t i)
{
    return "\"row key " + std::to_string(i + 1) + '"';
}

std::string selectWithKey(const KeyedSelect& select, const std::vector<std::string>& key)
{
    std::string text = "SELECT " + select.list;
    for (size_t i = 0; i < key.size(); ++i)
        text += ", " + select.alias + '.' + key[i] + " AS " + keyName(i);
    return text + " FROM " + select.from;
}

} // namespace

SqlText::SqlText(std::string_view text, SqlDialect dialect)
    : m_text(text)
    , m_dialect(dialect)
{
    m_tokens = Tokenizer(m_text, dialect).run();
    while (!m_tokens.empty() && str(m_tokens.size() - 1) == ";")
        m_tokens.pop_back();
}

std::string_view SqlText::str(size_t i) const
{
    if (i >= m_tokens.size())
        return {};
    return std::string_view(m_text).substr(m_tokens[i].from, m_tokens[i].to - m_tokens[i].from);
}

bool SqlText::is(size_t i, std::string_view word) const
{
    return i < m_tokens.size() && m_tokens[i].kind != SqlToken::QuotedName &&
           m_tokens[i].kind != SqlToken::String && sameWord(str(i), word);
}

bool SqlText::isAny(size_t i, std::initializer_list<std::string_view> words) const
{
    return std::any_of(words.begin(), words.end(), [&](auto word) { return is(i, word); });
}

bool SqlText::isName(size_t i) const
{
    return i < m_tokens.size() &&
           (m_tokens[i].kind == SqlToken::Word || m_tokens[i].kind == SqlToken::QuotedName);
}

std::string SqlText::name(size_t i) const
{
    const std::string_view s = str(i);
    if (i >= m_tokens.size() || m_tokens[i].kind != SqlToken::QuotedName || s.size() < 2)
        return std::string(s);
    std::string plain;
    for (size_t k = 1; k + 1 < s.size(); ++k) {
        plain += s[k];
        if (s[k] == s[0] && s[0] != '[')
            ++k;
    }
    return plain;
}

std::string SqlText::foldedName(size_t i) const
{
    std::string folded = name(i);
    if (m_dialect == SqlDialect::Postgresql && i < m_tokens.size() &&
        m_tokens[i].kind == SqlToken::Word)
        std::transform(folded.begin(), folded.end(), folded.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
    return folded;
}

std::string SqlText::piece(size_t i, size_t end) const
{
    end = std::min(end, m_tokens.size());
    if (i >= end)
        return {};
    return m_text.substr(m_tokens[i].from, m_tokens[end - 1].to - m_tokens[i].from);
}

StatementKind kindOf(const SqlText& s)
{
    if (s.count() == 0)
        return StatementKind::Empty;
    if (s.is(0, "with")) { // what stands behind the common table expressions
        for (size_t i = 1; i < s.count(); ++i) {
            if (s.tokens()[i].depth == 0 && s.isAny(i, {"insert", "update", "delete", "replace"}))
                return StatementKind::Modify;
        }
        return StatementKind::Query;
    }
    if (s.isAny(0, {"select", "values", "explain", "table"}))
        return StatementKind::Query;
    if (s.isAny(0, {"insert", "update", "delete", "replace", "merge"}))
        return StatementKind::Modify;
    if (s.isAny(0,
                {"begin", "start", "commit", "end", "rollback", "savepoint", "release", "abort"}))
        return StatementKind::Transaction;
    if (s.is(0, "create") && s.isAny(1, {"temp", "temporary", "local", "global"}))
        return StatementKind::SessionState;
    if (s.isAny(0, {"create", "drop", "alter", "analyze", "reindex", "vacuum", "truncate"}))
        return StatementKind::Define;
    return StatementKind::SessionState;
}

KeyedSelect readSelect(const SqlText& text)
{
    return SelectReader(text).read();
}

std::vector<bool> subqueryColumns(const SqlText& list, size_t columns)
{
    struct Item {
        bool star = false;
        bool subquery = false;
    };
    std::vector<Item> items(1);
    for (size_t i = 0; i < list.count(); ++i) {
        const bool outside = list.tokens()[i].depth == 0;
        if (outside && list.is(i, ","))
            items.emplace_back();
        else if (outside && list.is(i, "*") &&
                 (i == 0 || list.is(i - 1, ",") || list.is(i - 1, ".")))
            items.back().star = true;
        else if (list.is(i, "select"))
            items.back().subquery = true;
    }
    const auto stars = static_cast<size_t>(
        std::count_if(items.begin(), items.end(), [](const Item& item) { return item.star; }));
    const size_t single = items.size() - stars;
    const size_t wide = stars ? (columns - std::min(single, columns)) / stars : 0;
    std::vector<bool> result;
    for (const Item& item : items)
        result.insert(result.end(), item.star ? wide : 1, item.subquery);
    result.resize(columns, true);
    return result;
}

std::string keyPassText(const KeyedSelect& select, const std::vector<std::string>& key)
{
    std::string inner = selectWithKey(select, key);
    if (!select.rest.empty())
        inner += ' ' + select.rest;
    // Without an order of its own the engine would answer from any covering index, in its order.
    if (!select.ordered && !select.limited) {
        for (size_t i = 0; i < key.size(); ++i)
            inner += (i == 0 ? " ORDER BY " : ", ") + select.alias + '.' + key[i];
    }
    // A LIMIT without an order keeps the whole list, so that the engine chooses the same rows.
    if (select.limited && !select.ordered)
        return inner;
    std::string text = "SELECT ";
    for (size_t i = 0; i < key.size(); ++i)
        text += (i == 0 ? "" : ", ") + keyName(i);
    return text + " FROM (" + inner + ") AS \"row keys\"";
}

std::string whereKeyText(SqlDialect dialect, const std::vector<std::string>& key,
                         const std::string& alias, int firstNumber)
{
    std::string text;
    for (const std::string& column : key) {
        text += (text.empty() ? " WHERE " : " AND ") + alias + column + " = " +
                numberedParameter(dialect, firstNumber++);
    }
    return text;
}

std::string returningText(const std::vector<std::string>& key)
{
    std::string text;
    for (const std::string& column : key)
        text += (text.empty() ? " RETURNING " : ", ") + column;
    return text;
}

std::string probeText(const KeyedSelect& select, const std::vector<std::string>& key)
{
    std::string text = selectWithKey(select, key) + " WHERE 1 = 0";
    return select.orderBy.empty() ? text : text + ' ' + select.orderBy;
}

std::string numberedParameter(SqlDialect dialect, int number)
{
    return (dialect == SqlDialect::Sqlite ? '?' : '$') + std::to_string(number);
}

bool sameName(std::string_view a, std::string_view b, SqlDialect dialect)
{
    return dialect == SqlDialect::Sqlite ? sameWord(a, b) : a == b;
}

std::string quoteName(std::string_view name)
{
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"')
            quoted += c;
    }
    return quoted + '"';
}

} // namespace DorCPP
