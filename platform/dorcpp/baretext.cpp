#include <dorcpp/baretext.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace DorCPP {

namespace {

constexpr size_t maxText = 64 << 10; // bytes; a longer one takes its time in any case
constexpr size_t maxValues = 1000;   // the engine takes any number of literals, but not of these
constexpr size_t maxDigits = 18;     // of an integer that surely has 64 bits

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

size_t skipDigits(std::string_view text, size_t at)
{
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

// digits with a point among them, or an exponent behind them, or both.
bool isReal(std::string_view text)
{
    size_t at = skipDigits(text, 0);
    size_t digits = at;
    const bool point = at < text.size() && text[at] == '.';
    if (point) {
        const size_t end = skipDigits(text, at + 1);
        digits += end - at - 1;
        at = end;
    }
    if (digits == 0)
        return false;
    if (at == text.size())
        return point;
    if (text[at] != 'e' && text[at] != 'E')
        return false;
    ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        ++at;
    const size_t end = skipDigits(text, at);
    return end > at && end == text.size();
}

// The nearest value of a real number; nothing for one out of range.
std::optional<double> nearestReal(std::string_view digits)
{
    double value = 0;
    const char* end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, value);
    return read.ec == std::errc() && read.ptr == end ? std::optional(value) : std::nullopt;
}

// The text of a '..' literal; false when the literal does not end.
bool readString(std::string_view literal, std::string& text)
{
    for (size_t i = 1; i < literal.size(); ++i) {
        if (literal[i] == '\'') {
            if (i + 1 == literal.size())
                return true;
            ++i;
        }
        text += literal[i];
    }
    return false;
}

// The bytes of the '..' behind an x.
bool readBytes(std::string_view literal, std::string& bytes)
{
    if (literal.size() < 2 || literal.size() % 2 != 0 || literal.back() != '\'')
        return false;
    for (size_t i = 1; i + 1 < literal.size(); i += 2) {
        const int high = hexDigit(literal[i]);
        const int low = hexDigit(literal[i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes += static_cast<char>(high * 16 + low);
    }
    return true;
}

// Reads the statement from its first token to its last; every step is false for one that is none
// of the two forms.
class Reader {
public:
    explicit Reader(const SqlText& text)
        : s(text)
    {
        m_bare.text.reserve(s.source().size());
    }

    bool read() { return isPlain() && (insert() || update()) && m_at == s.count(); }
    BareText take() { return std::move(m_bare); }

private:
    // Whether there is nothing but plain blanks around the tokens.
    bool isPlain() const
    {
        size_t end = 0;
        for (const SqlToken& token : s.tokens()) {
            if (!isBlank(end, token.from, " \t\r\n"))
                return false;
            end = token.to;
        }
        return isBlank(end, s.source().size(), " \t\r\n;");
    }
    bool isBlank(size_t from, size_t to, std::string_view blanks) const
    {
        const std::string_view gap = std::string_view(s.source()).substr(from, to - from);
        return gap.find_first_not_of(blanks) == std::string_view::npos;
    }

    bool keep()
    {
        m_bare.text.append(s.str(m_at++)).append(1, ' ');
        return true;
    }
    bool word(std::string_view wanted) { return s.is(m_at, wanted) && keep(); }
    bool name() { return s.isName(m_at) && keep(); }
    bool table()
    {
        m_bare.table = m_at;
        return name() && (!word(".") || name());
    }

    bool insert()
    {
        return word("insert") && word("into") && table() && word("(") && columns() &&
               word("values") && word("(") && values() && word(")");
    }
    bool columns()
    {
        do {
            m_columns.push_back(m_at);
            if (!name())
                return false;
        } while (word(","));
        return word(")");
    }
    bool values()
    {
        m_bare.values.reserve(m_columns.size());
        m_bare.columns.reserve(m_columns.size());
        for (size_t i = 0; i < m_columns.size(); ++i) {
            if ((i > 0 && !word(",")) || !value(m_columns[i]))
                return false;
        }
        return true;
    }
    bool update()
    {
        if (!word("update") || !table() || !word("set"))
            return false;
        do {
            const size_t column = m_at;
            if (!name() || !word("=") || !value(column))
                return false;
        } while (word(","));
        return true;
    }

    bool value(size_t column)
    {
        if (m_bare.values.size() == maxValues || m_at >= s.count())
            return false;
        if (s.isAny(m_at, {"true", "false"}))
            return keep();
        Parameter parameter;
        if (!literal(parameter))
            return false;
        const int number = static_cast<int>(m_bare.values.size()) + 1;
        m_bare.text.append(numberedParameter(s.dialect(), number)).append(1, ' ');
        m_bare.values.emplace_back(number, std::move(parameter));
        m_bare.columns.push_back(column);
        return true;
    }
    bool literal(Parameter& parameter)
    {
        const SqlToken::Kind kind = s.tokens()[m_at].kind;
        if (kind == SqlToken::String) {
            parameter.kind = Value::Text;
            return readString(s.str(m_at++), parameter.bytes);
        }
        if (kind != SqlToken::Word)
            return number(parameter);
        if (s.is(m_at, "null")) {
            ++m_at;
            return true;
        }
        if (!s.is(m_at, "x") || !isStringJoined(m_at + 1))
            return false;
        parameter.kind = Value::Blob;
        m_at += 2;
        return readBytes(s.str(m_at - 1), parameter.bytes);
    }
    bool isStringJoined(size_t i) const // to the token before
    {
        return i < s.count() && s.tokens()[i].kind == SqlToken::String &&
               s.tokens()[i].from == s.tokens()[i - 1].to;
    }
    bool number(Parameter& parameter)
    {
        const bool negative = s.is(m_at, "-");
        if (negative)
            ++m_at;
        if (m_at >= s.count() || s.tokens()[m_at].kind != SqlToken::Number)
            return false;
        const std::string_view digits = s.str(m_at++);
        if (digits.size() <= maxDigits && skipDigits(digits, 0) == digits.size()) {
            parameter.kind = Value::Integer;
            std::from_chars(digits.data(), digits.data() + digits.size(), parameter.integer);
            if (negative)
                parameter.integer = -parameter.integer;
            return true;
        }
        const std::optional<double> real = isReal(digits) ? nearestReal(digits) : std::nullopt;
        if (!real)
            return false;
        parameter.kind = Value::Real;
        parameter.real = negative ? -*real : *real;
        return true;
    }

    const SqlText& s;
    size_t m_at = 0;
    std::vector<size_t> m_columns; // of an INSERT, the tokens that name them
    BareText m_bare;
};

} // namespace

std::optional<BareText> withoutLiterals(const SqlText& sql)
{
    const std::string& source = sql.source();
    if (source.size() > maxText || source.find('\0') != std::string::npos)
        return std::nullopt;
    Reader reader(sql);
    if (!reader.read())
        return std::nullopt;
    return reader.take();
}

std::optional<BareText> withExactReals(const SqlText& sql, const RealReader& realOf)
{
    BareText exact;
    size_t copied = 0;
    for (const SqlToken& token : sql.tokens()) {
        if (token.kind == SqlToken::Parameter)
            return std::nullopt;
        if (token.kind != SqlToken::Number)
            continue;
        const std::string digits = sql.source().substr(token.from, token.to - token.from);
        const std::optional<double> real = isReal(digits) ? nearestReal(digits) : std::nullopt;
        if (!real || realOf(digits) == *real)
            continue;
        const int number = static_cast<int>(exact.values.size()) + 1;
        exact.text.append(sql.source(), copied, token.from - copied);
        exact.text += numberedParameter(sql.dialect(), number);
        copied = token.to;
        Parameter value;
        value.kind = Value::Real;
        value.real = *real;
        exact.values.emplace_back(number, std::move(value));
    }
    if (exact.values.empty())
        return std::nullopt;
    exact.text.append(sql.source(), copied);
    return exact;
}

} // namespace DorCPP
