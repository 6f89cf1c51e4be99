#include <oviapi/srctokens.h>

#include <algorithm>

namespace OviAPI {

namespace {

// States other than the numbers of dollar quotes.
enum Inside : SrcState {
    Nothing = 0,
    InComment,
    InString,
    InEscapeString, // E'..'
    InQuotedName,
    InDollarQuote, // the first tag; the others follow
};

constexpr std::wstring_view keywordList =
    L"ABORT ADD AFTER ALL ALTER ANALYZE AND ANY ARRAY AS ASC ATTACH AUTOINCREMENT BEFORE "
    L"BEGIN BETWEEN BIGINT BLOB BOOLEAN BY BYTEA CALL CASCADE CASE CAST CHAR CHARACTER CHECK "
    L"CLOB CLOSE COLLATE COLUMN COMMENT COMMIT CONFLICT CONSTRAINT COPY CREATE CROSS CURRENT "
    L"CURRENT_DATE CURRENT_TIME CURRENT_TIMESTAMP CURSOR DATABASE DATE DECIMAL DECLARE "
    L"DEFAULT DEFERRABLE DEFERRED DELETE DESC DETACH DISTINCT DO DOUBLE DROP EACH ELSE END "
    L"ESCAPE EXCEPT EXCLUDE EXCLUSIVE EXECUTE EXISTS EXPLAIN EXTFILE FALSE FETCH FILTER "
    L"FIRST FLOAT FOLLOWING FOR FOREIGN FROM FULL FUNCTION GLOB GRANT GROUP GROUPS HAVING IF "
    L"ILIKE IMMEDIATE IN INDEX INDEXED INITIALLY INNER INSERT INSTEAD INT INTEGER INTERSECT "
    L"INTERVAL INTO IS ISNULL JOIN JSON JSONB KEY LAST LATERAL LEFT LIKE LIMIT LOCK MATCH "
    L"MATERIALIZED MERGE NATURAL NCHAR NEXT NO NOT NOTHING NOTNULL NULL NULLS NUMERIC "
    L"NVARCHAR OF OFFSET ON ONLY OR ORDER OTHERS OUTER OVER PARTITION PRAGMA PRECEDING "
    L"PRECISION PREPARE PRIMARY PROCEDURE RAISE RANGE REAL RECURSIVE REFERENCES REGEXP "
    L"REINDEX RELEASE RENAME REPLACE RESTRICT RETURNING RETURNS REVOKE RIGHT ROLLBACK ROW "
    L"ROWS SAVEPOINT SCHEMA SELECT SEQUENCE SET SHOW SIMILAR SMALLINT SOME STRICT TABLE TEMP "
    L"TEMPORARY TEXT THEN TIES TIME TIMESTAMP TO TRANSACTION TRIGGER TRUE TRUNCATE UNBOUNDED "
    L"UNION UNIQUE UPDATE USING VACUUM VALUES VARBYTE VARCHAR VIEW VIRTUAL WHEN WHERE WINDOW "
    L"WITH WITHIN WITHOUT WORK ZONE";
constexpr size_t longestKeyword = 17;

// In upper case and sorted.
const std::vector<std::wstring_view>& keywords()
{
    static const std::vector<std::wstring_view> sorted = [] {
        std::vector<std::wstring_view> words;
        for (size_t from = 0; from < keywordList.size();) {
            const size_t end = std::min(keywordList.find(L' ', from), keywordList.size());
            words.push_back(keywordList.substr(from, end - from));
            from = end + 1;
        }
        std::sort(words.begin(), words.end());
        return words;
    }();
    return sorted;
}

bool isBlank(wchar_t c)
{
    return c == L' ' || (c >= L'\t' && c <= L'\r') || c == 0xA0 || c == 0x3000;
}

bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool isWordStart(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || c == L'_' ||
           (static_cast<uint32_t>(c) >= 0x80 && !isBlank(c));
}

bool isWordChar(wchar_t c)
{
    return isWordStart(c) || isDigit(c) || c == L'$';
}

wchar_t upper(wchar_t c)
{
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

bool sameWord(std::wstring_view word, std::wstring_view upperWord)
{
    return word.size() == upperWord.size() &&
           std::equal(word.begin(), word.end(), upperWord.begin(),
                      [](wchar_t a, wchar_t b) { return upper(a) == b; });
}

} // namespace

bool isSqlKeyword(std::wstring_view word)
{
    if (word.size() < 2 || word.size() > longestKeyword)
        return false;
    wchar_t buffer[longestKeyword];
    std::transform(word.begin(), word.end(), buffer, upper);
    const std::vector<std::wstring_view>& known = keywords();
    return std::binary_search(known.begin(), known.end(), std::wstring_view(buffer, word.size()));
}

class SrcTokenizer::Reader {
public:
    Reader(SrcTokenizer& tokenizer, std::wstring_view line, std::vector<SrcToken>* tokens)
        : m_tokenizer(tokenizer)
        , m_line(line)
        , m_tokens(tokens)
    {
    }

    SrcState run(SrcState state)
    {
        m_state = state;
        if (m_state != Nothing)
            goOn(0);
        while (m_at < m_line.size()) {
            if (isBlank(m_line[m_at]))
                ++m_at;
            else
                token();
        }
        return m_state;
    }

private:
    wchar_t at(size_t i) const { return i < m_line.size() ? m_line[i] : L'\0'; }

    void add(SrcKind kind, size_t from, size_t to)
    {
        m_at = to;
        if (m_tokens && to > from)
            m_tokens->push_back({static_cast<int>(from), static_cast<int>(to), kind});
    }

    // Reads on inside of what m_state says; the token began at from.
    void goOn(size_t from)
    {
        const SrcState inside = m_state;
        switch (inside) {
        case InComment:
            closeAt(m_line.find(L"*/", m_at), 2);
            add(SrcKind::Comment, from, m_at);
            return;
        case InString:
        case InEscapeString:
        case InQuotedName:
            quoted(inside == InQuotedName ? L'"' : L'\'', inside == InEscapeString);
            add(inside == InQuotedName ? SrcKind::QuotedName : SrcKind::String, from, m_at);
            return;
        default:
            break;
        }
        const auto number = static_cast<size_t>(inside - InDollarQuote);
        if (number >= m_tokenizer.m_tags.size()) { // the state of another tokenizer
            m_state = Nothing;
            return;
        }
        const std::wstring& tag = m_tokenizer.m_tags[number];
        closeAt(m_line.find(tag, m_at), tag.size());
        add(SrcKind::String, from, m_at);
    }

    void closeAt(size_t found, size_t length)
    {
        const bool closed = found != std::wstring_view::npos;
        m_at = closed ? found + length : m_line.size();
        if (closed)
            m_state = Nothing;
    }

    void quoted(wchar_t quote, bool backslash)
    {
        while (m_at < m_line.size()) {
            const wchar_t c = m_line[m_at];
            if (backslash && c == L'\\') {
                m_at = std::min(m_at + 2, m_line.size());
            } else if (c != quote) {
                ++m_at;
            } else if (at(m_at + 1) == quote) {
                m_at += 2;
            } else {
                ++m_at;
                m_state = Nothing;
                return;
            }
        }
    }

    void open(SrcState inside, size_t length)
    {
        const size_t from = m_at;
        m_state = inside;
        m_at += length;
        goOn(from);
    }

    size_t wordEnd(size_t i) const
    {
        while (i < m_line.size() && isWordChar(m_line[i]))
            ++i;
        return i;
    }

    // The end of the tag of a dollar quote that starts here, or 0.
    size_t dollarTag() const
    {
        size_t e = m_at + 1;
        while (e < m_line.size() &&
               (isWordStart(m_line[e]) || (e > m_at + 1 && isDigit(m_line[e]))))
            ++e;
        return at(e) == L'$' ? e + 1 : 0;
    }

    void number()
    {
        const size_t from = m_at;
        size_t i = m_at;
        const bool hex = at(i) == L'0' && upper(at(i + 1)) == L'X';
        while (i < m_line.size()) {
            const wchar_t c = m_line[i];
            const bool sign = (c == L'+' || c == L'-') && i > from && !hex &&
                              upper(m_line[i - 1]) == L'E' && isDigit(at(i + 1));
            if (!isWordChar(c) && c != L'.' && !sign)
                break;
            ++i;
        }
        add(SrcKind::Number, from, i);
    }

    void parameter()
    {
        const size_t from = m_at;
        if (m_line[from] == L':' && at(from + 1) == L':') {
            add(SrcKind::Operator, from, from + 2);
            return;
        }
        const size_t end = wordEnd(from + 1);
        const bool named = end > from + 1 || m_line[from] == L'?';
        add(named ? SrcKind::Parameter : SrcKind::Operator, from, end);
    }

    void token()
    {
        const wchar_t c = m_line[m_at];
        if (c == L'-' && at(m_at + 1) == L'-') {
            add(SrcKind::Comment, m_at, m_line.size());
        } else if (c == L'/' && at(m_at + 1) == L'*') {
            open(InComment, 2);
        } else if (c == L'\'') {
            open(InString, 1);
        } else if (upper(c) == L'E' && at(m_at + 1) == L'\'') {
            open(InEscapeString, 2);
        } else if (c == L'"') {
            open(InQuotedName, 1);
        } else if (const size_t end = c == L'$' ? dollarTag() : 0) {
            open(m_tokenizer.stateOf(m_line.substr(m_at, end - m_at)), end - m_at);
        } else if (c == L'?' || c == L':' || c == L'@' || c == L'$') {
            parameter();
        } else if (isDigit(c) || (c == L'.' && isDigit(at(m_at + 1)))) {
            number();
        } else if (isWordStart(c)) {
            const size_t behind = wordEnd(m_at);
            const bool keyword = m_tokens && isSqlKeyword(m_line.substr(m_at, behind - m_at));
            add(keyword ? SrcKind::Keyword : SrcKind::Word, m_at, behind);
        } else {
            add(SrcKind::Operator, m_at, m_at + 1);
        }
    }

    SrcTokenizer& m_tokenizer;
    std::wstring_view m_line;
    std::vector<SrcToken>* m_tokens; // null: only the state is wanted
    size_t m_at = 0;
    SrcState m_state = Nothing;
};

SrcState SrcTokenizer::read(std::wstring_view line, SrcState before, std::vector<SrcToken>& tokens)
{
    return Reader(*this, line, &tokens).run(before);
}

SrcState SrcTokenizer::skip(std::wstring_view line, SrcState before)
{
    return Reader(*this, line, nullptr).run(before);
}

SrcState SrcTokenizer::stateOf(std::wstring_view tag)
{
    const auto found = std::find(m_tags.begin(), m_tags.end(), tag);
    const auto number = found - m_tags.begin();
    if (found == m_tags.end())
        m_tags.emplace_back(tag);
    return InDollarQuote + static_cast<SrcState>(number);
}

bool SrcSplitter::feed(std::wstring_view line, const SrcToken& token)
{
    const std::wstring_view text =
        line.substr(static_cast<size_t>(token.from), static_cast<size_t>(token.to - token.from));
    if (token.kind == SrcKind::Operator && text == L";" && (!m_body || m_closed)) {
        *this = SrcSplitter();
        return true;
    }
    m_closed = false;
    const bool word = token.kind == SrcKind::Word || token.kind == SrcKind::Keyword;
    switch (m_head) {
    case Head::Start:
        m_head = word && sameWord(text, L"CREATE") ? Head::Create : Head::Other;
        break;
    case Head::Create:
        if (word && sameWord(text, L"TRIGGER"))
            m_head = Head::Trigger;
        else if (!word || (!sameWord(text, L"TEMP") && !sameWord(text, L"TEMPORARY")))
            m_head = Head::Other;
        break;
    case Head::Trigger:
        if (!word)
            break;
        if (sameWord(text, L"BEGIN")) {
            m_body = true;
        } else if (sameWord(text, L"CASE")) {
            ++m_cases;
        } else if (sameWord(text, L"END")) {
            m_closed = m_cases == 0;
            m_cases = std::max(0, m_cases - 1);
        }
        break;
    case Head::Other:
        break;
    }
    return false;
}

} // namespace OviAPI
