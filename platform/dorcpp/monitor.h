// Watching what the database client sends to its engines.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace DorCPP {

// Why something was sent.
enum class MonitorPurpose : int {
    Statement = 1, // a statement of the application
    Keys = 2,      // finds the rows of an answer
    Rows = 3,      // reads rows that a cursor was moved to
    Change = 4,    // changes or deletes the row of a cursor
    Piece = 5,     // reads a piece of a large value
    Check = 6,     // asks what a statement or a table is, or whether the engine is alive
};

// Something that was sent to an engine, after its end. Texts are valid during the call.
struct MonitorRecord {
    int channel = 0;     // of the session
    bool beside = false; // on a connection beside the session's own
    MonitorPurpose purpose = MonitorPurpose::Statement;
    // The statement in UTF-8, with its literals: see maskedText. Of rows, changes and pieces the
    // engine adds the condition that names the rows by their keys.
    std::string_view text;
    std::chrono::system_clock::time_point start;
    int64_t micros = 0;       // duration
    int64_t rows = 0;         // given, or changed
    int code = 0;             // DorCode of the error, 0 for none
    std::string_view message; // of the error, multibyte text of the process locale
};
using Monitor = std::function<void(const MonitorRecord&)>;

// Sets the function that is told of everything sent from now on, on the thread that sent it:
// several threads may be in it at once. It must not use the client nor set another monitor; what it
// throws is lost. An empty one ends the watching; when this call returns no thread is in the former
// function.
OVIAPI_API void setMonitor(Monitor monitor);

// The statement with '?' in the place of every string, number, hexadecimal and dollar-quoted
// literal, also of one that does not end, and a blank in the place of comments. engine: the name of
// the engine whose rules count, "SQLite" or "PostgreSQL", in any case.
OVIAPI_API std::string maskedText(std::string_view sql, std::string_view engine);

} // namespace DorCPP
