// The error record of the database client, thrown by its calls.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include <oviapi/export.h>
#include <oviapi/phrases.h>
#include <oviapi/vectorof.h>

namespace DorCPP {

// Values of DorX::code that this client gives. An error that leaves the session usable has system
// code 0 or a code of 2000 to 3000.
enum DorCode : int {
    CodeNoRow = 1,          // no row in that direction, or no such row number
    CodeRowGone = 2,        // the row has gone since the statement was executed
    CodeDeadlock = 129,     // deadlock, or the transaction cannot be serialized
    CodeLocked = 135,       // locked by another session
    CodeSessionLost = 1001, // closed, or the database file was moved away
    CodeServerStopped = 1002,
    CodeCorruptFile = 1003, // damaged, or not a database at all
    CodeDiskFull = 1004,
    CodeNoMemory = 1005,
    CodeInputOutput = 1006,
    CodeCannotOpen = 1007,
    CodeRefused = 1022, // a constraint or a missing right
    CodeSqlText = 2001, // the engine refused the statement text
    CodeSeveralStatements = 2002,
    CodeBadCall = 2003,          // a wrong argument, or a call out of order
    CodeStructureChanged = 2004, // the table is no longer what it was when the cursor read it
    CodeTooBig = 2005,           // text, value or number of parts over a limit
    CodeBadBind = 2006,          // a parameter number or value that the statement does not have
    CodeOther = 2199,
    CodeCancelled = 2050,
    CodeUndone = 2051, // stopped because the transaction was rolled back
    CodeBusy = 2060,   // another statement runs on this cursor or session
    CodeNotUpdatable = 2070,
    CodeRowChanged = 2162, // changed by another session since it was read
};

// Five codes, two texts (either may be null) and further errors chained to this one. A copy is
// deep. The texts are multibyte text of the process locale and hold no password.
class OVIAPI_API DorX : public std::exception {
public:
    // All codes 0, no texts, no nested records.
    DorX();
    // status: -1 for an error, 0 for none.
    DorX(int status, int code, const char* text, const char* detail = nullptr);
    // The text is a phrase.
    DorX(int status, int code, OviAPI::Phrase text, const char* detail = nullptr);
    DorX(const DorX& other);
    DorX(DorX&& other) noexcept;
    DorX& operator=(const DorX& other);
    DorX& operator=(DorX&& other) noexcept;
    ~DorX() override;

    int status() const { return m_status; }
    // Where the engine saw the fault in the statement text: byte number from 1, 0 when unknown.
    int position() const { return m_position; }
    // The DBMS error code, see DorCode.
    int code() const { return m_code; }
    // The secondary code; 0 for the errors that never end a session's work.
    int systemCode() const { return m_systemCode; }
    // The engine's own number, 0 when the error is the client's.
    int engineCode() const { return m_engineCode; }
    void setPosition(int position) { m_position = position; }
    void setSystemCode(int code) { m_systemCode = code; }
    void setEngineCode(int code) { m_engineCode = code; }

    // What happened in plain words, and the engine's own words. Plain words that are a phrase are
    // in the language of the time when the record was made.
    const char* text() const { return m_text ? m_text->c_str() : nullptr; }
    const char* detail() const { return m_detail ? m_detail->c_str() : nullptr; }

    const VectorOf<DorX>& nested() const { return m_nested; }
    void addNested(const DorX& x) { m_nested.append(x); }

    // Writes "<text>: <detail>", then the same of every nested record on lines of their own,
    // phrases in the present language. At most size - 1 bytes, cut between two characters, always
    // ended by a zero; size 0 writes nothing. Returns the number of bytes without the zero.
    int getMessage(char* buffer, int size) const;

    // "<text>: <detail>".
    const char* what() const noexcept override { return m_what.c_str(); }

private:
    void appendMessage(std::string& out) const;

    int m_status = 0;
    int m_position = 0;
    int m_code = 0;
    int m_systemCode = 0;
    int m_engineCode = 0;
    std::optional<OviAPI::Phrase> m_phrase; // what the text says
    std::optional<std::string> m_text;
    std::optional<std::string> m_detail;
    VectorOf<DorX> m_nested{0, 50};
    std::string m_what;
};

} // namespace DorCPP
