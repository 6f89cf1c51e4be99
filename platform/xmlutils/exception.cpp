#include <xmlutils/exception.h>

#include <oviapi/text.h>

namespace XMLUtils {

namespace {

std::wstring withPlace(std::wstring_view reason, int line, int column)
{
    std::wstring message(reason);
    if (line > 0)
        message +=
            L" (line " + std::to_wstring(line) + L", column " + std::to_wstring(column) + L")";
    return message;
}

} // namespace

XMLException::XMLException(std::wstring_view reason, int line, int column)
    : m_message(withPlace(reason, line, column))
    , m_what(OviAPI::wideToUtf8(m_message))
    , m_line(line)
    , m_column(column)
{
}

XMLException::~XMLException() = default;

XMLException XMLException::ofFile(const std::wstring& path, std::wstring_view failed) const
{
    XMLException named(*this);
    named.m_file = path;
    named.m_message = L"The file \"" + path + L"\" " + std::wstring(failed) + L": " + m_message;
    named.m_what = OviAPI::wideToUtf8(named.m_message);
    return named;
}

} // namespace XMLUtils
