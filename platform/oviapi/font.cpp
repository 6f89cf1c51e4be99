#include <oviapi/font.h>

namespace OviAPI {

Font::Font(std::wstring name, int size, bool bold, bool italic, bool underline, bool strikeout)
    : m_name(std::move(name))
    , m_size(size)
    , m_bold(bold)
    , m_italic(italic)
    , m_underline(underline)
    , m_strikeout(strikeout)
{
}

} // namespace OviAPI
