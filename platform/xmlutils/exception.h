// The exception of the XML reader, writer and elements.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace XMLUtils {

// Says in a sentence what is wrong with a document, a file or an element, and for a document where.
class OVIAPI_API XMLException : public std::exception {
public:
    // line, column: place in the document, from 1, in characters; 0 when unknown.
    explicit XMLException(std::wstring_view reason, int line = 0, int column = 0);
    ~XMLException() override;

    // A copy that names the file: its message is 'The file "PATH" FAILED: ' and this message.
    // failed: as in "could not be read".
    [[nodiscard]] XMLException ofFile(const std::wstring& path, std::wstring_view failed) const;

    // The reason, followed by " (line 3, column 14)" when the place is known.
    const std::wstring& message() const { return m_message; }
    // The message in UTF-8.
    const char* what() const noexcept override { return m_what.c_str(); }

    int line() const { return m_line; }
    int column() const { return m_column; }
    // The path of the file that could not be read or written; empty for a document in memory.
    const std::wstring& file() const { return m_file; }

private:
    std::wstring m_message;
    std::string m_what;
    std::wstring m_file;
    int m_line;
    int m_column;
};

} // namespace XMLUtils
