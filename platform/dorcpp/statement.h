// Statements with parameters, and the values for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <dorcpp/connect.h>
#include <oviapi/export.h>

namespace DorCPP {

// One parameter value, not owned: the bytes must stay until the statement was executed.
struct BindValue {
    // A client type in its own form (types.h). Text of TypeChar, TypeVarchar and TypeText needs no
    // terminating zero, and has one only as part of the value; UTF-16 text and bytes likewise.
    int type = TypeChar;
    const void* data = nullptr;
    size_t length = 0;   // bytes
    short indicator = 0; // 1: null, the other fields but the type do not count
};

// Parameter values by parameter number, from 1. A parameter without a value is null.
class OVIAPI_API BindMap {
public:
    // A second value for the same number replaces the first.
    void bind(int parameter, const BindValue& value) { m_values[parameter] = value; }
    void clear() { m_values.clear(); }
    const std::map<int, BindValue>& values() const { return m_values; }

private:
    std::map<int, BindValue> m_values;
};

// A statement text that was checked by the engine and can be executed many times with different
// values. The engine keeps it prepared.
class OVIAPI_API DorStatement {
public:
    // Throws DorX: CodeSqlText, CodeSeveralStatements. An empty text has no parameters and does
    // nothing when it is executed. longLived: the statement is for many executions.
    void create(const DorConnect& connection, const char* sql, bool longLived);

    bool isCreated() const { return m_created; }
    // Highest parameter number of the text; 0 when it has none.
    int paramCount() const { return m_paramCount; }
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
    int m_paramCount = 0;
    bool m_created = false;
};

} // namespace DorCPP
