// Changing one row of a keyed answer in the embedded engine.
#include <algorithm>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/driver.h>
#include <dorcpp/sqlite/keys.h>

namespace DorCPP::Sqlite {

namespace {

constexpr size_t maxGuardBytes = 4096; // longer values do not guard a change

// The values that were read, for the row must still hold them: its key alone may have been given to
// another row since.
struct Guard {
    std::string text;
    std::vector<Value> values;
};

Guard guardOf(const KeyedText& text, const RowBlock& seen, size_t place, int firstNumber)
{
    Guard guard;
    for (size_t i = 0; i < text.columns.size(); ++i) {
        const Value old = seen.value(place, i);
        if (text.columns[i].table.empty() || old.held < old.length || old.length > maxGuardBytes)
            continue;
        guard.text += " AND " + quoteName(text.columns[i].column) + " IS ?" +
                      std::to_string(firstNumber++) + " COLLATE BINARY";
        guard.values.push_back(old);
    }
    return guard;
}

std::string returning(const TableKey& key)
{
    std::string text;
    for (const std::string& column : key.columns)
        text += (text.empty() ? " RETURNING " : ", ") + column;
    return text;
}

std::vector<Parameter> keyFrom(sqlite3_stmt* statement, size_t columns, bool utf8)
{
    RowBlock row(columns);
    row.beginRow();
    takeCells(statement, 0, static_cast<int>(columns), utf8, row);
    std::vector<Parameter> key(columns);
    for (size_t i = 0; i < columns; ++i) {
        const Value value = row.value(0, i);
        key[i].kind = value.kind;
        key[i].integer = value.integer;
        key[i].real = value.real;
        key[i].bytes = value.bytes();
    }
    return key;
}

} // namespace

void SqliteDriver::modifyRow(const KeyedText& text, RowKeys& keys, size_t row,
                             const RowStatement& statement, const RowBlock& seen, size_t place)
{
    const int ownParameters = prepare(statement.text, false);
    const int keyNumber = ownParameters + 1;
    const int guardNumber = keyNumber + static_cast<int>(text.key.columns.size());
    const Guard guard = guardOf(text, seen, place, guardNumber);
    {
        Use use(m_db.get(),
                m_cache.get(statement.text + whereKey(text.key, "", keyNumber) + guard.text +
                            (statement.deletes ? " RETURNING 1" : returning(text.key))));
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
            else if (!keys.isPacked() || key.front().integer != keys.packed(row))
                keys.replace(row, std::move(key));
            return;
        }
    }
    Use still(m_db.get(),
              m_cache.get("SELECT 1 FROM " + text.from + whereKey(text.key, text.alias + '.', 1)));
    bindKey(still, 1, keys, row);
    throw makeError(still.step() ? CodeRowChanged : CodeRowGone);
}

} // namespace DorCPP::Sqlite
