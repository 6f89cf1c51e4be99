#include <oviapi/lexception.h>

#include <oviapi/text.h>

LException::LException(const char* source, int line, const wchar_t* message)
    : m_source(source ? source : "")
    , m_line(line)
    , m_message(message ? message : L"")
    , m_what(OviAPI::wideToUtf8(fullMessage()))
{
}

LException::~LException() = default;

std::wstring LException::fullMessage() const
{
    if (m_source.empty())
        return m_message;
    return m_message + L"\n(" + OviAPI::utf8ToWide(m_source) + L", line " +
           std::to_wstring(m_line) + L")";
}
