// The exception of the framework and of the library's own errors.
#pragma once

#include <exception>
#include <string>

#include <oviapi/export.h>

// Names the place that found the error, as a source unit and a line, and says what is wrong in a
// sentence for the user. Either text may be empty.
class OVIAPI_API LException : public std::exception {
public:
    // source: name of the source unit; null counts as empty. line: from 1, 0 when unknown.
    LException(const char* source, int line, const wchar_t* message);
    ~LException() override;

    const std::string& source() const { return m_source; }
    int line() const { return m_line; }
    const std::wstring& message() const { return m_message; }
    bool hasMessage() const { return !m_message.empty(); }

    // The message, then the place on a line of its own: "<message>\n(<source>, line <line>)".
    // Only the message when the source is empty.
    std::wstring fullMessage() const;

    // fullMessage in UTF-8.
    const char* what() const noexcept override { return m_what.c_str(); }

private:
    std::string m_source;
    int m_line;
    std::wstring m_message;
    std::string m_what;
};

namespace OviAPI {
using ::LException;
}
