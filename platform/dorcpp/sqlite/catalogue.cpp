// What the embedded engine knows of its tables.
#include <strings.h>

#include <dorcpp/sqlite/driver.h>
#include <dorcpp/sqlite/types.h>

namespace DorCPP::Sqlite {

namespace {

bool startsWithSqlite(const std::string& name)
{
    return strncasecmp(name.c_str(), "sqlite_", 7) == 0;
}

// The name of the schema that a table's name is looked up in; empty when there is no such table.
// Names without a schema are looked up in the temporary schema, then main, then the others.
constexpr const char* findTable = "SELECT l.schema, l.type, l.wr FROM pragma_table_list(?1) AS l"
                                  " JOIN pragma_database_list AS d ON d.name = l.schema"
                                  " WHERE ?2 = '' OR l.schema = ?2 COLLATE NOCASE"
                                  " ORDER BY d.seq <> 1, d.seq LIMIT 1";

} // namespace

TableKey SqliteDriver::keyOf(const KeyedSelect& select)
{
    TableKey key;
    if (startsWithSqlite(select.table)) // the engine's own tables are shown, never edited
        return key;
    Use table(m_db.get(), m_cache.get(findTable));
    table.bind(1, select.table);
    table.bind(2, select.schema);
    if (!table.step() || textOf(table.get(), 1) != "table")
        return key;
    const std::string schema = textOf(table.get(), 0);
    const bool withoutRowId = sqlite3_column_int(table.get(), 2) != 0;

    Use column(m_db.get(), m_cache.get("SELECT name, pk FROM pragma_table_xinfo(?1, ?2)"
                                       " ORDER BY pk"));
    column.bind(1, select.table);
    column.bind(2, schema);
    std::vector<std::string> free = {"rowid", "oid", "_rowid_"};
    while (column.step()) {
        const std::string name = textOf(column.get(), 0);
        std::erase_if(
            free, [&](const std::string& f) { return strcasecmp(f.c_str(), name.c_str()) == 0; });
        if (withoutRowId && sqlite3_column_int(column.get(), 1) > 0)
            key.columns.push_back(quoteName(name));
    }
    if (!withoutRowId && !free.empty()) {
        key.columns.push_back(free.front());
        key.rowId = true;
    }
    return key;
}

std::vector<TableColumn> SqliteDriver::tableColumns(const std::string& schema,
                                                    const std::string& table)
{
    std::vector<TableColumn> columns;
    std::string found;
    {
        Use place(m_db.get(), m_cache.get(findTable));
        place.bind(1, table);
        place.bind(2, schema);
        if (!place.step())
            return columns;
        found = textOf(place.get(), 0);
    }
    Use column(m_db.get(), m_cache.get("SELECT name, type, dflt_value FROM"
                                       " pragma_table_xinfo(?1, ?2) WHERE hidden = 0"
                                       " ORDER BY cid"));
    column.bind(1, table);
    column.bind(2, found);
    while (column.step()) {
        TableColumn& entry = columns.emplace_back();
        entry.name = textOf(column.get(), 0);
        entry.type = columnType(textOf(column.get(), 1).c_str()).type;
        entry.defaultText = textOf(column.get(), 2);
    }
    return columns;
}

std::string SqliteDriver::tableListText() const
{
    return "SELECT schema, name, CASE type WHEN 'view' THEN 'view' ELSE 'table' END"
           " FROM pragma_table_list"
           " WHERE type <> 'shadow' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'"
           " ORDER BY schema <> 'main', schema, name";
}

// A parent lies in the schema of its child. The engine takes a key as it was written and looks for
// what it names when rows are changed; it finds nothing unless all columns of the key are there.
std::string SqliteDriver::foreignKeyListText() const
{
    return "SELECT key, child_schema, child_table, child_column,"
           " parent_schema, parent_table, parent_column, place FROM"
           " (SELECT CAST(k.id AS TEXT) AS key, c.schema AS child_schema, c.name AS child_table,"
           " k.\"from\" AS child_column, p.schema AS parent_schema, p.name AS parent_table,"
           " a.name AS parent_column, k.seq + 1 AS place, k.id AS id, k.\"to\" AS named,"
           " count(*) OVER one AS wanted, count(a.name) OVER one AS found"
           " FROM pragma_table_list AS c"
           " JOIN pragma_foreign_key_list(c.name, c.schema) AS k"
           " JOIN pragma_table_list(k.\"table\") AS p ON p.schema = c.schema"
           " LEFT JOIN pragma_table_xinfo(p.name, p.schema) AS a ON"
           " CASE WHEN k.\"to\" IS NULL THEN a.pk = k.seq + 1"
           " ELSE a.name = k.\"to\" COLLATE NOCASE END"
           " WHERE c.type = 'table'"
           " WINDOW one AS (PARTITION BY c.schema, c.name, k.id))"
           " WHERE found = wanted AND (named IS NOT NULL OR wanted ="
           " (SELECT max(pk) FROM pragma_table_info(parent_table, parent_schema)))"
           " ORDER BY child_schema <> 'main', child_schema, child_table, id DESC, place";
}

} // namespace DorCPP::Sqlite
