#include <dorcpp/translate.h>

#include <algorithm>
#include <array>

#include <dorcpp/errors.h>
#include <dorcpp/types.h>
#include <dorcpp/value.h>
#include <oviapi/celltext.h>
#include <oviapi/text.h>

namespace DorCPP {

namespace {

constexpr size_t none = SIZE_MAX;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

DorX refusal(const SqlText& s, size_t token, const char* reason)
{
    DorX x = makeError(CodeSqlText, std::string_view(reason));
    x.setPosition(static_cast<int>(s.tokens()[token].from) + 1);
    return x;
}

[[noreturn]] void refuse(const SqlText& s, size_t token, const char* reason)
{
    throw refusal(s, token, reason);
}

// Tokens from `from` to the one before `to`; as a value, of a column of the table or none.
struct Item {
    size_t from;
    size_t to;
    size_t column = none;
};

// The value of a plain '..' literal; false when the literal does not end.
bool plainValue(std::string_view literal, std::string& value)
{
    for (size_t i = 1; i < literal.size(); ++i) {
        if (literal[i] == '\'') {
            if (i + 1 == literal.size())
                return true;
            ++i;
        }
        value += literal[i];
    }
    return false;
}

// 'dd/dd/dddd[:dd:dd:dd[.d..]]', whatever the numbers.
bool hasDateForm(std::string_view text)
{
    static constexpr std::string_view form = "00/00/0000:00:00:00";
    if (text.size() != 10 && text.size() < form.size())
        return false;
    const size_t fixed = std::min(text.size(), form.size());
    for (size_t i = 0; i < fixed; ++i) {
        if (form[i] == '0' ? !isDigit(text[i]) : text[i] != form[i])
            return false;
    }
    if (text.size() <= form.size())
        return true;
    return text[fixed] == '.' && text.size() > fixed + 1 &&
           std::all_of(text.begin() + static_cast<std::ptrdiff_t>(fixed) + 1, text.end(), isDigit);
}

int numberAt(std::string_view text, size_t at, size_t width)
{
    int value = 0;
    for (const char c : text.substr(at, width))
        value = value * 10 + (c - '0');
    return value;
}

// A text of the form above as ISO text; empty when there is no such time.
std::string isoDate(std::string_view text)
{
    OviAPI::DateTimeParts parts;
    parts.month = numberAt(text, 0, 2);
    parts.day = numberAt(text, 3, 2);
    parts.year = numberAt(text, 6, 4);
    const bool time = text.size() > 10;
    if (time) {
        parts.hour = numberAt(text, 11, 2);
        parts.minute = numberAt(text, 14, 2);
        parts.second = numberAt(text, 17, 2);
    }
    if (text.size() > 20) {
        const std::string_view fraction = text.substr(20);
        if (fraction.size() > 6)
            return {};
        parts.micros = numberAt(fraction, 0, 6);
        for (size_t i = fraction.size(); i < 6; ++i)
            parts.micros *= 10;
    }
    int64_t micros = 0;
    if (parts.year == 0 || !OviAPI::joinDateTime(parts, micros))
        return {};
    return time ? dateText(micros) : dateText(micros).substr(0, 10);
}

// Whether a word, or a literal, may have to be translated; most statements have none.
bool isCandidate(const SqlText& s, size_t i)
{
    const SqlToken& token = s.tokens()[i];
    if (token.kind == SqlToken::String)
        return token.to - token.from >= 12 && s.str(i)[3] == '/' && s.str(i)[6] == '/';
    if (token.kind != SqlToken::Word)
        return false;
    if (s.dialect() == SqlDialect::Sqlite && s.is(i, "default"))
        return !s.is(i + 1, "values");
    return s.isAny(i, {"hex", "extfile"}) && s.is(i + 1, "(");
}

bool endsClause(const SqlText& s, size_t i)
{
    return s.isAny(i, {"where", "returning", "order", "limit", "on"}) ||
           (s.is(i, "from") && !s.is(i - 1, "distinct"));
}

// The columns of the table whose name begins at the token.
std::shared_ptr<const TableColumns> targetColumns(const SqlText& s, size_t token,
                                                  const ColumnLookup& columnsOf)
{
    const bool qualified = s.is(token + 1, ".") && s.isName(token + 2);
    return columnsOf(qualified ? s.foldedName(token) : std::string(),
                     s.foldedName(qualified ? token + 2 : token));
}

// The column that the token names; none when it is no name, or of no column.
size_t findColumn(const TableColumns* columns, const SqlText& s, size_t token)
{
    if (!columns || !s.isName(token))
        return none;
    const std::string name = s.foldedName(token);
    for (size_t i = 0; i < columns->size(); ++i) {
        if (sameName((*columns)[i].name, name, s.dialect()))
            return i;
    }
    return none;
}

class Translator {
public:
    Translator(const SqlText& text, const ColumnLookup& columnsOf)
        : s(text)
        , m_sqlite(text.dialect() == SqlDialect::Sqlite)
        , m_column(text.count(), none)
    {
        markSubqueries();
        readTarget(columnsOf);
        if (s.is(0, "insert"))
            readInsert();
        else if (s.is(0, "update"))
            readAssignments(findOutside("set", m_next));
    }

    std::optional<std::string> run()
    {
        for (size_t i = 0; i < s.count();)
            i = translateAt(i);
        if (m_edits.empty())
            return std::nullopt;
        std::stable_sort(m_edits.begin(), m_edits.end(),
                         [](const Edit& a, const Edit& b) { return a.from < b.from; });
        std::string out;
        size_t at = 0;
        for (const Edit& edit : m_edits) {
            out.append(s.source(), at, edit.from - at);
            out += edit.text;
            at = edit.to;
        }
        return out.append(s.source(), at, s.tokens().back().to - at);
    }

private:
    struct Edit { // of the source, in bytes
        size_t from;
        size_t to;
        std::string text;
    };
    struct Literal {
        size_t end = none; // the token behind it; none: there is no literal
        std::string value;
        std::string source;
    };

    size_t begin(size_t token) const { return s.tokens()[token].from; }
    size_t end(size_t token) const { return s.tokens()[token - 1].to; } // of the token before
    // The text never joins a word or a literal beside it.
    void replace(size_t from, size_t to, std::string text)
    {
        if (begin(from) > 0 && joins(s.source()[begin(from) - 1]))
            text.insert(0, 1, ' ');
        if (end(to) < s.source().size() && joins(s.source()[end(to)]))
            text += ' ';
        m_edits.push_back({begin(from), end(to), std::move(text)});
    }
    static bool joins(char c)
    {
        return c == '\'' || c == '_' || c == '$' || isDigit(c) || (c & 0x80) != 0 ||
               ((c | 0x20) >= 'a' && (c | 0x20) <= 'z');
    }

    void markSubqueries()
    {
        std::vector<bool> open; // of the parentheses around, whether they hold a subquery
        m_inside.resize(s.count());
        for (size_t i = 0; i < s.count(); ++i) {
            if (s.is(i, ")") && !open.empty())
                open.pop_back();
            m_inside[i] = !open.empty() && open.back();
            if (s.is(i, "("))
                open.push_back(m_inside[i] || s.isAny(i + 1, {"select", "with"}));
        }
    }

    // The first such word outside parentheses from token i on; the count of tokens for none.
    size_t findOutside(std::string_view word, size_t i) const
    {
        while (i < s.count() && (s.tokens()[i].depth != 0 || !s.is(i, word)))
            ++i;
        return i;
    }

    void readTarget(const ColumnLookup& columnsOf)
    {
        size_t i = 1;
        if (s.is(i, "or"))
            i += 2;
        if (s.isAny(i, {"into", "from"}))
            ++i;
        if (s.is(i, "only") && s.isName(i + 1))
            ++i;
        m_next = i;
        if (!s.isName(i))
            return;
        m_columns = targetColumns(s, i, columnsOf);
        i += s.is(i + 1, ".") && s.isName(i + 2) ? 3 : 1;
        if (s.is(i, "as"))
            i += 2;
        m_next = i;
    }

    size_t columnNamed(size_t token) const { return findColumn(m_columns.get(), s, token); }

    // The parts between the commas of a parenthesis at token `open`; close gets its end.
    std::vector<Item> itemsOf(size_t open, size_t& close) const
    {
        std::vector<Item> items;
        const int depth = s.tokens()[open].depth + 1;
        size_t from = open + 1;
        size_t i = from;
        for (; i < s.count() && s.tokens()[i].depth >= depth; ++i) {
            if (s.is(i, ",") && s.tokens()[i].depth == depth) {
                items.push_back({from, i});
                from = i + 1;
            }
        }
        items.push_back({from, i});
        close = i;
        return items;
    }

    void addItem(Item item)
    {
        for (size_t i = item.from; i < item.to; ++i)
            m_column[i] = item.column;
        m_items.push_back(item);
    }

    void readInsert()
    {
        size_t i = m_next;
        std::vector<Item> list;
        size_t listEnd = 0;
        if (s.is(i, "(") && !s.isAny(i + 1, {"select", "with", "values"})) {
            list = itemsOf(i, listEnd);
            i = std::min(listEnd + 1, s.count());
            for (Item& item : list)
                item.column = columnNamed(item.from);
        }
        while (i < s.count() && (s.tokens()[i].depth != 0 || !s.isAny(i, {"values", "select"})))
            ++i;
        if (s.is(i, "values") && !s.is(i - 1, "default"))
            i = readRows(i, list);
        else if (s.is(i, "select"))
            i = readSelectLists(i, list);
        for (; i < s.count(); ++i) { // ON CONFLICT .. DO UPDATE SET
            if (s.tokens()[i].depth == 0 && s.is(i, "update") && s.is(i + 1, "set"))
                i = readAssignments(i + 1);
        }
    }

    size_t columnAt(size_t place, const std::vector<Item>& list) const
    {
        if (!list.empty())
            return place < list.size() ? list[place].column : none;
        return m_columns && place < m_columns->size() ? place : none;
    }

    size_t readRows(size_t values, const std::vector<Item>& list)
    {
        std::vector<std::vector<Item>> rows;
        size_t i = values + 1;
        while (s.is(i, "(")) {
            size_t close = 0;
            rows.push_back(itemsOf(i, close));
            if (close >= s.count()) // the engine says so
                return close;
            for (size_t k = 0; k < rows.back().size(); ++k) {
                rows.back()[k].column = columnAt(k, list);
                addItem(rows.back()[k]);
            }
            i = close + 1;
            if (!s.is(i, ","))
                break;
            ++i;
        }
        if (m_sqlite)
            dropDefaults(values, list, rows);
        return i;
    }

    size_t readSelectLists(size_t select, const std::vector<Item>& list)
    {
        size_t place = none; // in the list being read
        size_t from = select;
        size_t i = select;
        const auto finish = [&] {
            if (place != none)
                addItem({from, i, columnAt(place, list)});
        };
        for (; i < s.count(); ++i) {
            if (s.tokens()[i].depth != 0)
                continue;
            if (s.is(i, "select")) {
                place = 0;
                from = i + (s.isAny(i + 1, {"all", "distinct"}) ? 2 : 1);
            } else if (s.is(i, "*") &&
                       (i == from || s.is(i - 1, "."))) { // as many columns as the other table has
                place = none;
            } else if (s.is(i, ",")) {
                finish();
                place = place == none ? none : place + 1;
                from = i + 1;
            } else if (s.isAny(i, {"union", "except", "intersect"}) || endsClause(s, i)) {
                finish();
                place = none;
                if (s.is(i, "on") && s.is(i + 1, "conflict"))
                    return i;
            }
        }
        finish();
        return i;
    }

    // Returns the token behind the assignments.
    size_t readAssignments(size_t set)
    {
        size_t i = set + 1;
        while (i < s.count()) {
            std::vector<Item> names;
            size_t equals = i;
            if (s.is(i, "("))
                names = itemsOf(i, equals);
            while (equals < s.count() && (s.tokens()[equals].depth != 0 || !s.is(equals, "=")))
                ++equals;
            Item value{std::min(equals + 1, s.count()), 0, names.empty() ? columnNamed(i) : none};
            i = value.from;
            while (i < s.count() &&
                   (s.tokens()[i].depth != 0 || (!s.is(i, ",") && !endsClause(s, i))))
                ++i;
            value.to = i;
            addAssignment(value, names);
            if (!s.is(i, ","))
                break;
            ++i;
        }
        return i;
    }

    void addAssignment(const Item& value, const std::vector<Item>& names)
    {
        const size_t open = value.from + (s.is(value.from, "row") ? 1 : 0);
        size_t close = 0;
        if (names.empty()) {
            addItem(value);
        } else if (s.is(open, "(")) {
            std::vector<Item> values = itemsOf(open, close);
            for (size_t k = 0; k < values.size(); ++k) {
                values[k].column = k < names.size() ? columnNamed(names[k].from) : none;
                addItem(values[k]);
            }
        }
        if (m_sqlite)
            replaceDefaults(value);
    }

    bool isDefault(const Item& item) const
    {
        return item.to == item.from + 1 && s.is(item.from, "default");
    }

    void replaceDefaults(const Item& value)
    {
        for (const Item& item : m_items) {
            if (item.from < value.from || !isDefault(item) || item.column == none)
                continue;
            const std::string& expression = (*m_columns)[item.column].defaultText;
            replace(item.from, item.to, expression.empty() ? "NULL" : '(' + expression + ')');
        }
    }

    // Leaves the items out, with one comma each; some other item stays.
    void leaveOut(const std::vector<Item>& items, const std::vector<bool>& out)
    {
        size_t last = items.size();
        while (out[last - 1])
            --last;
        for (size_t k = 0; k + 1 < last; ++k) {
            if (out[k])
                m_edits.push_back({begin(items[k].from), begin(items[k + 1].from), {}});
        }
        if (last < items.size())
            m_edits.push_back({end(items[last - 1].to), end(items.back().to), {}});
    }

    void dropDefaults(size_t values, const std::vector<Item>& list,
                      const std::vector<std::vector<Item>>& rows)
    {
        const size_t width = !list.empty() ? list.size() : m_columns ? m_columns->size() : 0;
        if (!list.empty() && list.back().to + 1 != values) // the engine says so
            return;
        std::vector<bool> out;
        for (const std::vector<Item>& row : rows) {
            std::vector<bool> defaults(row.size());
            std::transform(row.begin(), row.end(), defaults.begin(),
                           [&](const Item& item) { return isDefault(item); });
            if (row.size() != width) // the engine says so
                return;
            if (!out.empty() && defaults != out)
                refuse(s, row.front().from,
                       "DEFAULT must stand for the same columns in all rows of VALUES");
            out = std::move(defaults);
        }
        const auto count = std::count(out.begin(), out.end(), true);
        if (count == 0)
            return;
        for (size_t k = 0; k < list.size(); ++k) { // a wrong name must not go unseen
            if (out[k] && (list[k].column == none || list[k].to != list[k].from + 1))
                refuse(s, values, "DEFAULT stands for a column that the table does not have");
        }
        if (static_cast<size_t>(count) < width) {
            writeColumns(values, list, out);
            for (const std::vector<Item>& row : rows)
                leaveOut(row, out);
            return;
        }
        if (rows.size() > 1)
            refuse(s, values, "a row without a value must be the only one of its statement");
        const size_t from = list.empty() ? values : list.front().from - 1;
        replace(from, rows.front().back().to + 1, " DEFAULT VALUES");
    }

    void writeColumns(size_t values, const std::vector<Item>& list, const std::vector<bool>& out)
    {
        if (!list.empty()) {
            leaveOut(list, out);
            return;
        }
        std::string names;
        for (size_t k = 0; k < out.size(); ++k) {
            if (!out[k])
                names += (names.empty() ? "(" : ", ") + quoteName((*m_columns)[k].name);
        }
        m_edits.push_back({begin(values), begin(values), names + ") "});
    }

    bool isJoined(size_t i) const // to the token before, as in x'..'
    {
        return i > 0 && s.tokens()[i - 1].to == s.tokens()[i].from &&
               (s.tokens()[i - 1].kind == SqlToken::Word || s.is(i - 1, "&"));
    }
    bool isString(size_t i) const
    {
        return i < s.count() && s.tokens()[i].kind == SqlToken::String;
    }
    bool isCall(size_t i, std::string_view name) const
    {
        return s.is(i, name) && s.is(i + 1, "(") && !(i > 0 && s.is(i - 1, "."));
    }

    // The literal at token i: '..', or EXTFILE(..) around one.
    Literal literalAt(size_t i) const
    {
        Literal literal;
        if (isCall(i, "extfile")) {
            literal = literalAt(i + 2);
            literal.end = literal.end != none && s.is(literal.end, ")") ? literal.end + 1 : none;
        } else if (isString(i) && s.str(i)[0] == '\'' && !isJoined(i) && !isString(i + 1) &&
                   !(i > 0 && isString(i - 1)) && plainValue(s.str(i), literal.value)) {
            literal.end = i + 1;
            literal.source = s.str(i);
        }
        return literal;
    }

    // The column that the value at token i is compared with: name = value.
    size_t comparedColumn(size_t i) const
    {
        if (m_inside[i] || i == 0)
            return none;
        size_t k = i;
        while (k > 0 && s.isAny(k - 1, {"=", "<", ">", "!"}))
            --k;
        if (k == i && s.is(i - 1, "is"))
            k = i - 1;
        else if (k == i && i > 1 && s.is(i - 1, "not") && s.is(i - 2, "is"))
            k = i - 2;
        return k < i && k > 0 ? columnNamed(k - 1) : none;
    }

    int typeOf(size_t column) const { return column == none ? 0 : (*m_columns)[column].type; }
    int typeAt(size_t i) const
    {
        const size_t compared = comparedColumn(i);
        if (compared != none || m_inside[i])
            return typeOf(compared);
        return typeOf(m_column[i]);
    }

    // Whether tokens from i to the one before `to` are the whole value of a DATE column.
    bool isDateValue(size_t i, size_t to) const
    {
        const size_t compared = comparedColumn(i);
        if (compared != none || m_inside[i])
            return typeOf(compared) == TypeDate;
        return std::any_of(m_items.begin(), m_items.end(), [&](const Item& item) {
            return item.from == i && typeOf(item.column) == TypeDate &&
                   (item.to == to || s.is(to, "::"));
        });
    }

    std::string quoted(const std::string& text) const
    {
        const bool escape = !m_sqlite && text.find('\\') != std::string::npos;
        std::string out = escape ? "E'" : "'";
        for (const char c : text) {
            out += c;
            if (c == '\'' || (escape && c == '\\'))
                out += c;
        }
        return out + '\'';
    }

    std::string hexLiteral(const std::string& digits, int type, size_t token) const
    {
        if (digits.size() % 2 != 0 ||
            std::any_of(digits.begin(), digits.end(), [](char c) { return hexDigit(c) < 0; }))
            refuse(s, token, "Hex needs an even number of hexadecimal digits");
        const std::array texts = {TypeChar, TypeVarchar, TypeNchar, TypeNvarchar, TypeExtfile};
        if (std::find(texts.begin(), texts.end(), type) == texts.end())
            return m_sqlite ? "x'" + digits + '\'' : "'\\x" + digits + "'::bytea";
        if (digits.size() % 4 != 0)
            refuse(s, token, "Hex needs four hexadecimal digits for every character of a text");
        std::u16string units;
        for (size_t i = 0; i < digits.size(); i += 4) {
            const auto byte = [&](size_t at) {
                return hexDigit(digits[at]) * 16 + hexDigit(digits[at + 1]);
            };
            units += static_cast<char16_t>(byte(i) | byte(i + 2) << 8);
        }
        const std::wstring wide = OviAPI::utf16ToWide(units);
        if (units.find(u'\0') != std::u16string::npos || OviAPI::wideToUtf16(wide) != units)
            refuse(s, token, "the digits of Hex are no text in UTF-16");
        return quoted(OviAPI::wideToUtf8(wide));
    }

    // Translates what begins at token i; returns the token to go on with.
    size_t translateAt(size_t i)
    {
        if (isCall(i, "hex")) {
            const Literal digits = literalAt(i + 2);
            if (digits.end == none || !s.is(digits.end, ")"))
                return i + 1;
            replace(i, digits.end + 1, hexLiteral(digits.value, typeAt(i), i));
            return digits.end + 1;
        }
        const Literal literal = literalAt(i);
        if (literal.end == none)
            return i + 1;
        if (hasDateForm(literal.value) && isDateValue(i, literal.end)) {
            const std::string iso = isoDate(literal.value);
            if (iso.empty())
                refuse(s, i, "there is no such date or time");
            replace(i, literal.end, '\'' + iso + '\'');
        } else if (literal.end > i + 1) {
            replace(i, literal.end, literal.source);
        }
        return literal.end;
    }

    const SqlText& s;
    const bool m_sqlite;
    std::shared_ptr<const TableColumns> m_columns;
    size_t m_next = 0;            // the token behind the target table
    std::vector<size_t> m_column; // of every token, the column whose value it belongs to
    std::vector<bool> m_inside;   // of every token, whether it lies in a subquery
    std::vector<Item> m_items;
    std::vector<Edit> m_edits;
};

} // namespace

std::optional<std::string> translated(const SqlText& text, const ColumnLookup& columnsOf)
{
    if (!text.isAny(0, {"insert", "update", "delete"}))
        return std::nullopt;
    bool candidate = false;
    for (size_t i = 1; i < text.count() && !candidate; ++i)
        candidate = isCandidate(text, i);
    return candidate ? Translator(text, columnsOf).run() : std::nullopt;
}

bool translateValues(BareText& bare, const SqlText& text, const ColumnLookup& columnsOf)
{
    std::shared_ptr<const TableColumns> columns;
    for (size_t i = 0; i < bare.values.size(); ++i) {
        Parameter& value = bare.values[i].second;
        if (value.kind != Value::Text || !hasDateForm(value.bytes))
            continue;
        if (!columns)
            columns = targetColumns(text, bare.table, columnsOf);
        const size_t column = findColumn(columns.get(), text, bare.columns[i]);
        if (column == none || (*columns)[column].type != TypeDate)
            continue;
        value.bytes = isoDate(value.bytes);
        if (value.bytes.empty())
            return false;
    }
    return true;
}

} // namespace DorCPP
