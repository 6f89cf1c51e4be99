#include <dorcpp/sqlite/statement.h>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/errors.h>

namespace DorCPP::Sqlite {

StatementPtr prepareOne(sqlite3* db, const std::string& sql, bool longLived)
{
    if (sql.size() > static_cast<size_t>(sqlite3_limit(db, SQLITE_LIMIT_SQL_LENGTH, -1)))
        throw makeEngineError(CodeTooBig, SQLITE_TOOBIG, "the statement text");
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    const int result = sqlite3_prepare_v3(
        db, sql.c_str(), static_cast<int>(sql.size() + 1), // with its end: no copy
        longLived ? SQLITE_PREPARE_PERSISTENT : 0, &statement, &tail);
    StatementPtr owner(statement);
    if (result != SQLITE_OK)
        throw lastError(db);
    const std::string_view rest =
        std::string_view(sql).substr(static_cast<size_t>(tail - sql.c_str()));
    if (SqlText(rest, SqlDialect::Sqlite).count() != 0)
        throw makeError(CodeSeveralStatements);
    return owner;
}

sqlite3_stmt* StatementCache::get(const std::string& sql)
{
    if (const auto at = m_bySql.find(sql); at != m_bySql.end()) {
        m_entries.splice(m_entries.begin(), m_entries, at->second);
        return m_entries.front().statement.get();
    }
    StatementPtr statement = prepareOne(m_db, sql, true);
    if (m_entries.size() == maxCount) {
        m_bySql.erase(m_entries.back().sql);
        m_entries.pop_back();
    }
    m_entries.push_front({sql, std::move(statement)});
    m_bySql[m_entries.front().sql] = m_entries.begin();
    return m_entries.front().statement.get();
}

void StatementCache::clear()
{
    m_bySql.clear();
    m_entries.clear();
}

std::string orEmpty(const char* text)
{
    return text ? text : "";
}

std::string textOf(sqlite3_stmt* statement, int column)
{
    return orEmpty(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
}

Use::~Use()
{
    sqlite3_reset(m_statement); // repeats the error of the last step, which was told
    sqlite3_clear_bindings(m_statement);
}

void Use::check(int result)
{
    if (result != SQLITE_OK)
        throw lastError(m_db);
}

void Use::bind(int number, int64_t value)
{
    check(sqlite3_bind_int64(m_statement, number, value));
}

void Use::bind(int number, const std::string& text)
{
    check(sqlite3_bind_text64(m_statement, number, text.data(), text.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
}

void Use::bind(int number, const Value& value)
{
    bindValue(number, value, SQLITE_TRANSIENT);
}

void Use::bind(int number, const Parameter& value)
{
    bindValue(number, valueOf(value), SQLITE_TRANSIENT);
}

void Use::bindInPlace(int number, const Value& value)
{
    bindValue(number, value, SQLITE_STATIC);
}

void Use::bind(const Parameters& parameters)
{
    for (const auto& [number, parameter] : parameters)
        bindValue(number, valueOf(parameter), SQLITE_STATIC);
}

void Use::bindValue(int number, const Value& value, sqlite3_destructor_type owner)
{
    const char* data = value.data ? value.data : ""; // a null pointer would bind NULL
    switch (value.kind) {
    case Value::Null:
        check(sqlite3_bind_null(m_statement, number));
        break;
    case Value::Integer:
        check(sqlite3_bind_int64(m_statement, number, value.integer));
        break;
    case Value::Real:
        check(sqlite3_bind_double(m_statement, number, value.real));
        break;
    case Value::Text:
        check(sqlite3_bind_text64(m_statement, number, data, value.held, owner, SQLITE_UTF8));
        break;
    case Value::Blob:
        check(sqlite3_bind_blob64(m_statement, number, data, value.held, owner));
        break;
    }
}

bool Use::step()
{
    switch (sqlite3_step(m_statement)) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        throw lastError(m_db);
    }
}

void Use::reset()
{
    check(sqlite3_reset(m_statement));
}

} // namespace DorCPP::Sqlite
