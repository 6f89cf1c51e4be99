#include <dorcpp/dorx.h>

#include <cstring>
#include <utility>

#include <dorcpp/charset.h>

namespace DorCPP {

namespace {

char* copyOf(const char* text)
{
    if (!text)
        return nullptr;
    const size_t size = std::strlen(text) + 1;
    char* copy = new char[size]; // owned by the record, freed in its destructor
    std::memcpy(copy, text, size);
    return copy;
}

} // namespace

DorX::DorX() = default;

DorX::DorX(int status, int code, const char* text, const char* detail)
    : m_status(status)
    , m_code(code)
    , m_text(copyOf(text))
    , m_detail(copyOf(detail))
{
    m_what = text ? text : "";
    if (detail)
        m_what += (m_what.empty() ? "" : ": ") + std::string(detail);
}

DorX::DorX(const DorX& other)
    : std::exception(other)
    , m_status(other.m_status)
    , m_position(other.m_position)
    , m_code(other.m_code)
    , m_systemCode(other.m_systemCode)
    , m_engineCode(other.m_engineCode)
    , m_text(copyOf(other.m_text))
    , m_detail(copyOf(other.m_detail))
    , m_nested(other.m_nested)
    , m_what(other.m_what)
{
}

DorX::DorX(DorX&& other) noexcept
    : std::exception(other)
    , m_status(other.m_status)
    , m_position(other.m_position)
    , m_code(other.m_code)
    , m_systemCode(other.m_systemCode)
    , m_engineCode(other.m_engineCode)
    , m_text(std::exchange(other.m_text, nullptr))
    , m_detail(std::exchange(other.m_detail, nullptr))
    , m_nested(std::move(other.m_nested))
    , m_what(std::move(other.m_what))
{
}

DorX& DorX::operator=(DorX other) noexcept
{
    std::swap(m_status, other.m_status);
    std::swap(m_position, other.m_position);
    std::swap(m_code, other.m_code);
    std::swap(m_systemCode, other.m_systemCode);
    std::swap(m_engineCode, other.m_engineCode);
    std::swap(m_text, other.m_text);
    std::swap(m_detail, other.m_detail);
    std::swap(m_nested, other.m_nested);
    std::swap(m_what, other.m_what);
    return *this;
}

DorX::~DorX()
{
    m_nested = VectorOf<DorX>(0, 50);
    delete[] m_detail;
    delete[] m_text;
}

int DorX::getMessage(char* buffer, int size) const
{
    if (size <= 0)
        return 0;
    std::string message;
    appendMessage(message);
    const size_t n = mbs2mbs(buffer, static_cast<size_t>(size) - 1, getStdCharset(), message.data(),
                             message.size(), getStdCharset());
    buffer[n] = 0;
    return static_cast<int>(n);
}

void DorX::appendMessage(std::string& out) const
{
    if (!out.empty() && !m_what.empty())
        out += '\n';
    out += m_what;
    for (const DorX& x : m_nested)
        x.appendMessage(out);
}

} // namespace DorCPP
