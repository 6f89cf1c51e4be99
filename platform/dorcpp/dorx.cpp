#include <dorcpp/dorx.h>

#include <dorcpp/charset.h>

namespace DorCPP {

namespace {

std::optional<std::string> copyOf(const char* text)
{
    return text ? std::optional<std::string>(text) : std::nullopt;
}

std::string joined(std::string text, const char* detail)
{
    if (detail)
        text += (text.empty() ? "" : ": ") + std::string(detail);
    return text;
}

std::string textOf(OviAPI::Phrase phrase)
{
    return narrow(OviAPI::phrase(phrase), getStdCharset());
}

} // namespace

DorX::DorX() = default;

DorX::DorX(int status, int code, const char* text, const char* detail)
    : m_status(status)
    , m_code(code)
    , m_text(copyOf(text))
    , m_detail(copyOf(detail))
{
    m_what = joined(text ? text : "", detail);
}

DorX::DorX(int status, int code, OviAPI::Phrase text, const char* detail)
    : DorX(status, code, textOf(text).c_str(), detail)
{
    m_phrase = text;
}

DorX::DorX(const DorX& other) = default;
DorX::DorX(DorX&& other) noexcept = default;
DorX& DorX::operator=(const DorX& other) = default;
DorX& DorX::operator=(DorX&& other) noexcept = default;
DorX::~DorX() = default;

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
    const std::string own = m_phrase ? joined(textOf(*m_phrase), detail()) : m_what;
    if (!out.empty() && !own.empty())
        out += '\n';
    out += own;
    for (const DorX& x : m_nested)
        x.appendMessage(out);
}

} // namespace DorCPP
