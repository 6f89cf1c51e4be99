// Changing one row of a keyed answer in the embedded engine.
#include <algorithm>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/driver.h>
#include <dorcpp/sqlite/keys.h>

namespace DorCPP::Sqlite {

namespace {

// The values that were read, for the row must still hold them: its key alone may have been given to
// another row since. Of a value that is longer than what is kept of it, its kind, its length and
// its beginning.
struct Guard {
    std::string text;
    std::vector<Value> values;

    int next(int firstNumber) const { return firstNumber + static_cast<int>(values.size()); }
    // In groups, because the engine bounds the depth of an expression.
    void add(const std::string& term, const Value& value)
    {
        constexpr size_t groupSize = 50;
        const bool begins = values.size() % groupSize == 0;
        if (!begins)
            text.pop_back(); // the parenthesis
        text += (begins ? " AND (" : " AND ") + term + ')';
        values.push_back(value);
    }
};

void guardLong(Guard& guard, const std::string& name, const Value& old, int firstNumber, bool utf8)
{
    const bool text = old.kind == Value::Text;
    if (text && !utf8) // its length as bytes is that of another form
        return;
    const std::string bytes = text ? "CAST(" + name + " AS BLOB)" : name;
    const std::string number = std::to_string(guard.next(firstNumber));
    const std::string term = "typeof(" + name + ") = '" + (text ? "text" : "blob") +
                             "' AND length(" + bytes + ") = " + std::to_string(old.length) +
                             " AND substr(" + bytes + ", 1, " + std::to_string(old.held) +
                             ") IS ?" + number;
    Value head = old;
    head.kind = Value::Blob;
    guard.add(term, head);
}

Guard guardOf(const KeyedText& text, const RowBlock& seen, size_t place, int firstNumber, bool utf8)
{
    Guard guard;
    for (size_t i = 0; i < text.columns.size(); ++i) {
        if (text.columns[i].table.empty())
            continue;
        const Value old = seen.value(place, i);
        const std::string name = quoteName(text.columns[i].column);
        if (old.held < old.length) {
            guardLong(guard, name, old, firstNumber, utf8);
            continue;
        }
        guard.add(name + " IS ?" + std::to_string(guard.next(firstNumber)) + " COLLATE BINARY",
                  old);
    }
    return guard;
}

// The cells of a key. Unlike those of a row they are kept with all their bytes.
class KeyCells {
public:
    void addNull() { m_key.emplace_back(); }
    void addInteger(int64_t value) { add(Value::Integer).integer = value; }
    void addReal(double value) { add(Value::Real).real = value; }
    void addBytes(Value::Kind kind, const void* data, size_t length)
    {
        add(kind).bytes.assign(static_cast<const char*>(data), length);
    }
    std::vector<Parameter> take() { return std::move(m_key); }

private:
    Parameter& add(Value::Kind kind)
    {
        Parameter& part = m_key.emplace_back();
        part.kind = kind;
        return part;
    }
    std::vector<Parameter> m_key;
};

std::vector<Parameter> keyFrom(sqlite3_stmt* statement, size_t columns, bool utf8)
{
    KeyCells cells;
    takeCells(statement, 0, static_cast<int>(columns), utf8, cells);
    return cells.take();
}

} // namespace

void SqliteDriver::modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                             const RowStatement& statement, const RowBlock& seen, size_t place)
{
    const int ownParameters = prepare(statement.text, false);
    const int keyNumber = ownParameters + 1;
    const int guardNumber = keyNumber + static_cast<int>(text.key.columns.size());
    const Guard guard = guardOf(text, seen, place, guardNumber, m_utf8);
    const std::string sql =
        statement.text + whereKeyText(SqlDialect::Sqlite, text.key.columns, "", keyNumber) +
        guard.text + (statement.deletes ? " RETURNING 1" : returningText(text.key.columns));
    {
        // A text with values in it will not come again.
        const StatementPtr own =
            statement.parameters.empty() ? prepareOne(m_db.get(), sql, false) : nullptr;
        Use use(m_db.get(), own ? own.get() : m_cache.get(sql));
        use.bind(statement.parameters);
        bindKey(use, keyNumber, keys, row);
        for (size_t i = 0; i < guard.values.size(); ++i)
            use.bind(guardNumber + static_cast<int>(i), guard.values[i]);
        if (use.step()) {
            std::vector<Parameter> key;
            if (!statement.deletes)
                key = keyFrom(use.get(), text.key.columns.size(), m_utf8);
            while (use.step())
                ;
            use.reset();
            if (statement.deletes)
                keys.drop(row);
            else
                keys.replace(row, std::move(key));
            return;
        }
    }
    Use still(m_db.get(),
              m_cache.get("SELECT 1 FROM " + text.from +
                          whereKeyText(SqlDialect::Sqlite, text.key.columns, text.alias + '.', 1)));
    bindKey(still, 1, keys, row);
    throw makeError(still.step() ? CodeRowChanged : CodeRowGone);
}

} // namespace DorCPP::Sqlite
