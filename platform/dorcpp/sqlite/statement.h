// Prepared statements of the embedded engine.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include <dorcpp/driver.h>
#include <sqlite3.h>

namespace DorCPP::Sqlite {

struct Finalize {
    void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, Finalize>;

// Prepares the one statement of the text; null when the text holds none. Throws DorX, also for
// several statements.
StatementPtr prepareOne(sqlite3* db, const std::string& sql, bool longLived);

// Statements kept ready by their text, the latest used ones. All are reset between uses, so none
// holds a lock.
class StatementCache {
public:
    explicit StatementCache(sqlite3* db)
        : m_db(db)
    {
    }
    sqlite3_stmt* get(const std::string& sql);
    void clear();

private:
    static constexpr size_t maxCount = 32;
    struct Entry {
        std::string sql;
        StatementPtr statement;
    };
    sqlite3* m_db;
    std::list<Entry> m_entries; // latest used first
    std::unordered_map<std::string_view, std::list<Entry>::iterator> m_bySql;
};

// A statement in use: reset, without its values, when the object goes.
class Use {
public:
    Use(sqlite3* db, sqlite3_stmt* statement)
        : m_db(db)
        , m_statement(statement)
    {
    }
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    sqlite3_stmt* get() const { return m_statement; }
    void bind(int number, int64_t value);
    void bind(int number, const std::string& text);
    // Copies the bytes.
    void bind(int number, const Value& value);
    void bind(int number, const Parameter& value);
    // Leave the bytes where they are: they must outlive this object.
    void bindInPlace(int number, const Value& value);
    void bind(const Parameters& parameters);
    // False at the end. Throws DorX.
    bool step();
    // Ends the statement and tells its errors, such as a COMMIT that could not be done.
    void reset();

private:
    void check(int result);
    void bindValue(int number, const Value& value, sqlite3_destructor_type owner);
    sqlite3* m_db;
    sqlite3_stmt* m_statement;
};

// The text of a column of the current row; empty for null.
std::string textOf(sqlite3_stmt* statement, int column);
// An engine's text, empty for none.
std::string orEmpty(const char* text);

// Adds the columns from first on of the current row as cells. Cells are read through
// sqlite3_column_value, which does not lock: the connection belongs to one thread at a time.
template<class Target>
void takeCells(sqlite3_stmt* statement, int first, int count, bool utf8, Target& target)
{
    for (int i = first; i < first + count; ++i) {
        sqlite3_value* value = sqlite3_column_value(statement, i);
        switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER:
            target.addInteger(sqlite3_value_int64(value));
            break;
        case SQLITE_FLOAT:
            target.addReal(sqlite3_value_double(value));
            break;
        case SQLITE_TEXT: {
            // In a UTF-16 database the text is converted first; else its bytes are taken as they
            // are.
            const void* text = utf8 ? sqlite3_value_blob(value) : sqlite3_value_text(value);
            target.addBytes(Value::Text, text, static_cast<size_t>(sqlite3_value_bytes(value)));
            break;
        }
        case SQLITE_BLOB: {
            const void* bytes = sqlite3_value_blob(value);
            target.addBytes(Value::Blob, bytes, static_cast<size_t>(sqlite3_value_bytes(value)));
            break;
        }
        default:
            target.addNull();
            break;
        }
    }
}

} // namespace DorCPP::Sqlite
