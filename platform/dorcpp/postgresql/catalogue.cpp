// What the server knows of its tables.
#include <dorcpp/postgresql/driver.h>
#include <dorcpp/postgresql/keys.h>

namespace DorCPP::Postgresql {

namespace {

// The table that a name stands for, if rows of it can be told apart: one that is stored itself
// ("r") or in partitions ("p"), without heirs, whose rows would repeat its keys. A table of the
// engine's own is shown, never edited. Then whether it has the system columns.
constexpr const char* findTable =
    "SELECT c.oid::int8, c.relkind = 'p',"
    " EXISTS(SELECT 1 FROM pg_catalog.pg_attribute a WHERE a.attrelid = c.oid"
    " AND a.attname = 'xmin' AND a.attnum < 0),"
    " EXISTS(SELECT 1 FROM pg_catalog.pg_attribute a WHERE a.attrelid = c.oid"
    " AND a.attname = 'ctid' AND a.attnum < 0)"
    " FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace"
    " WHERE c.oid = pg_catalog.to_regclass($1) AND c.relkind IN ('r', 'p')"
    " AND n.nspname NOT IN ('pg_catalog', 'information_schema', 'pg_toast')"
    " AND (c.relkind = 'p' OR NOT EXISTS(SELECT 1 FROM pg_catalog.pg_inherits h"
    " WHERE h.inhparent = c.oid))";

// The columns of the primary key, else of a unique index that holds for every row at every moment.
constexpr const char* findKey =
    "SELECT a.attname, a.atttypid::int8, pg_catalog.format_type(a.atttypid, -1)"
    " FROM pg_catalog.pg_index i"
    " CROSS JOIN LATERAL unnest(i.indkey::int2[]) WITH ORDINALITY AS k(number, place)"
    " JOIN pg_catalog.pg_attribute a ON a.attrelid = i.indrelid AND a.attnum = k.number"
    " WHERE k.place <= i.indnkeyatts AND i.indexrelid ="
    " (SELECT u.indexrelid FROM pg_catalog.pg_index u WHERE u.indrelid = $1::int8::oid"
    " AND u.indisunique AND u.indimmediate AND u.indisvalid AND u.indisready AND u.indislive"
    " AND u.indpred IS NULL AND u.indexprs IS NULL"
    " AND NOT EXISTS(SELECT 1 FROM pg_catalog.pg_attribute n WHERE n.attrelid = u.indrelid"
    " AND n.attnum = ANY ((u.indkey::int2[])[0:u.indnkeyatts - 1]) AND NOT n.attnotnull)"
    " ORDER BY u.indisprimary DESC, u.indnkeyatts, u.indexrelid LIMIT 1)"
    " ORDER BY k.place";

constexpr const char* findNames =
    "SELECT c.oid::int8, n.nspname, c.relname, a.attnum::int4, a.attname"
    " FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace"
    " JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid"
    " WHERE c.oid = ANY ($1::int8[]::oid[]) AND a.attnum > 0 AND NOT a.attisdropped";

// A name may have been written in capitals without quotes. A domain counts as what it is made of.
constexpr const char* findColumns =
    "SELECT a.attname, CASE t.typtype WHEN 'd' THEN t.typbasetype ELSE t.oid END::int8,"
    " CASE t.typtype WHEN 'd' THEN t.typtypmod ELSE a.atttypmod END::int4,"
    " pg_catalog.pg_get_expr(d.adbin, d.adrelid)"
    " FROM pg_catalog.pg_attribute a JOIN pg_catalog.pg_type t ON t.oid = a.atttypid"
    " LEFT JOIN pg_catalog.pg_attrdef d ON d.adrelid = a.attrelid AND d.adnum = a.attnum"
    " WHERE a.attnum > 0 AND NOT a.attisdropped AND a.attrelid ="
    " (SELECT c.oid FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n"
    " ON n.oid = c.relnamespace WHERE c.relname IN ($2::text, lower($2::text))"
    " AND c.relkind IN ('r', 'p', 'v', 'm', 'f')"
    " AND CASE WHEN $1::text = '' THEN pg_catalog.pg_table_is_visible(c.oid)"
    " ELSE n.nspname IN ($1::text, lower($1::text)) END"
    " ORDER BY n.nspname = $1::text DESC, c.relname = $2::text DESC LIMIT 1)"
    " ORDER BY a.attnum";

int64_t numberAt(const Result& result, int row, int column)
{
    std::string own;
    return valueAt(result.get(), row, column, own).integer;
}

bool isInteger(int64_t type)
{
    return type == Int2Type || type == Int4Type || type == Int8Type;
}

// The table's name as the statement writes it.
std::string writtenName(const KeyedSelect& select)
{
    const SqlText from(select.from, SqlDialect::Postgresql);
    std::string name(from.str(0));
    if (from.is(1, "."))
        name += '.' + std::string(from.str(2));
    return name;
}

} // namespace

TableKey PostgresqlDriver::keyOf(const KeyedSelect& select)
{
    TableKey key;
    Values name(1);
    name.set(1, writtenName(select));
    const Result table = query(findTable, name);
    if (PQntuples(table.get()) == 0)
        return key;
    const bool partitioned = numberAt(table, 0, 1) != 0;
    const bool hasVersion = numberAt(table, 0, 2) != 0;
    const bool hasPlace = numberAt(table, 0, 3) != 0;
    Values oid(1);
    oid.set(1, std::to_string(numberAt(table, 0, 0)));
    const Result columns = query(findKey, oid);
    const int count = PQntuples(columns.get());
    for (int i = 0; i < count; ++i) {
        key.columns.push_back(quoteName(textAt(columns.get(), i, 0)));
        key.types.push_back(textAt(columns.get(), i, 2));
    }
    if (count > 0) {
        key.rowId = count == 1 && isInteger(numberAt(columns, 0, 1));
        key.version = hasVersion ? "xmin" : "";
    } else if (!partitioned && hasVersion && hasPlace) { // a place is one in each partition
        key.columns = placeKey();
        key.types = {"tid", "int8"};
    }
    return key;
}

void PostgresqlDriver::learnTables(const std::vector<DescribedColumn>& columns)
{
    std::string unknown;
    for (const DescribedColumn& column : columns) {
        if (column.table != 0 && m_tables.emplace(column.table, TableName()).second)
            unknown += (unknown.empty() ? "" : ",") + std::to_string(column.table);
    }
    if (unknown.empty())
        return;
    Values oids(1);
    oids.set(1, '{' + unknown + '}');
    const Result found = query(findNames, oids);
    for (int i = 0; i < PQntuples(found.get()); ++i) {
        TableName& table = m_tables[static_cast<Oid>(numberAt(found, i, 0))];
        table.schema = textAt(found.get(), i, 1);
        table.name = textAt(found.get(), i, 2);
        table.columns[static_cast<int>(numberAt(found, i, 3))] = textAt(found.get(), i, 4);
    }
}

std::vector<ColumnInfo> PostgresqlDriver::columnInfos(const std::vector<DescribedColumn>& columns)
{
    if (m_link->transaction() != PQTRANS_INERROR)
        learnTables(columns);
    std::vector<ColumnInfo> infos;
    for (const DescribedColumn& column : columns) {
        ColumnInfo& info = infos.emplace_back();
        info.label = column.label;
        const ColumnType type = columnType(column.type, column.modifier);
        info.type = type.type;
        info.length = type.length;
        const auto table = m_tables.find(column.table);
        if (column.table == 0 || table == m_tables.end())
            continue;
        const auto name = table->second.columns.find(column.number);
        if (name == table->second.columns.end()) // a system column
            continue;
        info.owner = table->second.schema;
        info.table = table->second.name;
        info.column = name->second;
    }
    return infos;
}

std::vector<TableColumn> PostgresqlDriver::tableColumns(const std::string& schema,
                                                        const std::string& table)
{
    Values names(2);
    names.set(1, schema);
    names.set(2, table);
    const Result found = query(findColumns, names);
    std::vector<TableColumn> columns;
    for (int i = 0; i < PQntuples(found.get()); ++i) {
        TableColumn& column = columns.emplace_back();
        column.name = textAt(found.get(), i, 0);
        column.type = columnType(static_cast<Oid>(numberAt(found, i, 1)),
                                 static_cast<int>(numberAt(found, i, 2)))
                          .type;
        column.defaultText = textAt(found.get(), i, 3);
    }
    return columns;
}

std::string PostgresqlDriver::tableListText() const
{
    return "SELECT n.nspname AS schema, c.relname AS name,"
           " CASE WHEN c.relkind IN ('v', 'm') THEN 'view' ELSE 'table' END AS kind"
           " FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace"
           " WHERE c.relkind IN ('r', 'p', 'v', 'm', 'f')"
           " AND n.nspname NOT IN ('pg_catalog', 'information_schema')"
           " AND n.nspname NOT LIKE 'pg\\_toast%'"
           " AND (pg_catalog.has_table_privilege(c.oid, 'SELECT')"
           " OR pg_catalog.has_any_column_privilege(c.oid, 'SELECT'))"
           " ORDER BY n.nspname <> 'public', n.nspname, c.relname";
}

// A key between partitioned tables is repeated for the partitions on both sides.
std::string PostgresqlDriver::foreignKeyListText() const
{
    return "SELECT k.conname AS name, cn.nspname AS child_schema, c.relname AS child_table,"
           " ca.attname AS child_column, pn.nspname AS parent_schema, p.relname AS parent_table,"
           " pa.attname AS parent_column, u.place::int4 AS place"
           " FROM pg_catalog.pg_constraint k"
           " CROSS JOIN LATERAL unnest(k.conkey, k.confkey)"
           " WITH ORDINALITY AS u(child, parent, place)"
           " JOIN pg_catalog.pg_class c ON c.oid = k.conrelid"
           " JOIN pg_catalog.pg_namespace cn ON cn.oid = c.relnamespace"
           " JOIN pg_catalog.pg_attribute ca ON ca.attrelid = c.oid AND ca.attnum = u.child"
           " JOIN pg_catalog.pg_class p ON p.oid = k.confrelid"
           " JOIN pg_catalog.pg_namespace pn ON pn.oid = p.relnamespace"
           " JOIN pg_catalog.pg_attribute pa ON pa.attrelid = p.oid AND pa.attnum = u.parent"
           " WHERE k.contype = 'f' AND k.conparentid = 0"
           " AND (pg_catalog.has_table_privilege(c.oid, 'SELECT')"
           " OR pg_catalog.has_any_column_privilege(c.oid, 'SELECT'))"
           " AND (pg_catalog.has_table_privilege(p.oid, 'SELECT')"
           " OR pg_catalog.has_any_column_privilege(p.oid, 'SELECT'))"
           " ORDER BY cn.nspname, c.relname, k.oid, u.place";
}

} // namespace DorCPP::Postgresql
