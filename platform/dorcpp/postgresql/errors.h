// Errors of the server as error records.
#pragma once

#include <span>
#include <string_view>

#include <dorcpp/dorx.h>
#include <libpq-fe.h>

namespace DorCPP::Postgresql {

// A SQLSTATE, whole or its class (two characters), and the DBMS code it becomes.
struct ErrorRow {
    std::string_view state;
    int code;
};
// The table; a state that is not in it goes by its class.
std::span<const ErrorRow> errorTable();

// The DBMS code of a SQLSTATE; CodeOther when it is not in the table.
int codeOf(std::string_view state);

// The SQLSTATE as a number, its five characters read with the base 36; 0 for none.
int numberOf(std::string_view state);

// state may be empty. detail: the server's words.
DorX errorFor(std::string_view state, std::string_view detail);
// The error that a result holds, with the server's detail and hint.
DorX errorFor(const PGresult* result);
std::string_view stateOf(const PGresult* result);
// The server's words, with the SQLSTATE behind the first sentence.
std::string wordsOf(const PGresult* result);

} // namespace DorCPP::Postgresql
