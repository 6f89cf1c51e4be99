#include <dorcpp/postgresql/errors.h>

#include <algorithm>
#include <charconv>
#include <string>

#include <dorcpp/errors.h>

namespace DorCPP::Postgresql {

namespace {

constexpr ErrorRow table[] = {
    {"08", CodeSessionLost},
    {"08P01", CodeBadBind}, // on a connection that lives: values that the statement does not take
    {"0A", CodeSqlText},
    {"21", CodeSqlText},
    {"22", CodeSqlText},
    {"22001", CodeRefused}, // too long for its column
    {"23", CodeRefused},
    {"24", CodeSqlText},
    {"25", CodeSqlText},
    {"25006", CodeRefused},
    {"25P02", CodeUndone},
    {"25P03", CodeSessionLost},
    {"26", CodeStructureChanged},
    {"28", CodeRefused},
    {"2B", CodeRefused},
    {"2D", CodeSqlText},
    {"2F", CodeSqlText},
    {"34", CodeSqlText},
    {"38", CodeSqlText},
    {"39", CodeSqlText},
    {"3B", CodeSqlText},
    {"3D", CodeSqlText},
    {"3F", CodeSqlText},
    {"40", CodeUndone},
    {"40001", CodeDeadlock},
    {"40P01", CodeDeadlock},
    {"42", CodeSqlText},
    {"42501", CodeRefused},
    {"44", CodeRefused},
    {"53", CodeNoMemory},
    {"53100", CodeDiskFull},
    {"53300", CodeCannotOpen},
    {"54", CodeTooBig},
    {"55", CodeSqlText},
    {"55006", CodeLocked},
    {"55P03", CodeLocked},
    {"57014", CodeCancelled},
    {"57P01", CodeSessionLost},
    {"57P02", CodeServerStopped},
    {"57P03", CodeServerStopped},
    {"57P04", CodeSessionLost},
    {"57P05", CodeSessionLost},
    {"58", CodeInputOutput},
    {"P0", CodeSqlText},
    {"P0001", CodeRefused}, // raised by a trigger or a function of the application
    {"XX001", CodeCorruptFile},
    {"XX002", CodeCorruptFile},
};

const char* field(const PGresult* result, int code)
{
    const char* text = PQresultErrorField(result, code);
    return text ? text : "";
}

} // namespace

std::span<const ErrorRow> errorTable()
{
    return table;
}

int codeOf(std::string_view state)
{
    for (const std::string_view wanted : {state, state.substr(0, 2)}) {
        const auto* row = std::find_if(std::begin(table), std::end(table),
                                       [&](const ErrorRow& r) { return r.state == wanted; });
        if (row != std::end(table))
            return row->code;
    }
    return CodeOther;
}

int numberOf(std::string_view state)
{
    int number = 0;
    std::from_chars(state.data(), state.data() + state.size(), number, 36);
    return number;
}

DorX errorFor(std::string_view state, std::string_view detail)
{
    return makeEngineError(codeOf(state), numberOf(state), detail);
}

std::string_view stateOf(const PGresult* result)
{
    return field(result, PG_DIAG_SQLSTATE);
}

std::string wordsOf(const PGresult* result)
{
    std::string words = field(result, PG_DIAG_MESSAGE_PRIMARY);
    if (words.empty()) { // the client library's own
        words = PQresultErrorMessage(result);
        words.erase(words.find_last_not_of(" \n") + 1);
    }
    if (const std::string_view state = stateOf(result); !state.empty())
        words += " (SQLSTATE " + std::string(state) + ')';
    for (const int part : {PG_DIAG_MESSAGE_DETAIL, PG_DIAG_MESSAGE_HINT}) {
        if (const std::string more = field(result, part); !more.empty())
            words += '\n' + more;
    }
    return words;
}

DorX errorFor(const PGresult* result)
{
    return errorFor(stateOf(result), wordsOf(result));
}

} // namespace DorCPP::Postgresql
