// A font by face name, size in points and style. A value: copying it is cheap.
#pragma once

#include <string>

#include <oviapi/export.h>

namespace OviAPI {

// A face that is not installed is replaced by the system's nearest one when text is drawn; the name
// stays as it was given. Sizes are used between 1 and 400 points, whatever was asked for.
class OVIAPI_API Font {
public:
    Font() = default;
    Font(std::wstring name, int size, bool bold = false, bool italic = false,
         bool underline = false, bool strikeout = false);

    const std::wstring& name() const { return m_name; }
    int size() const { return m_size; }
    bool bold() const { return m_bold; }
    bool italic() const { return m_italic; }
    bool underline() const { return m_underline; }
    bool strikeout() const { return m_strikeout; }

    // A font without a name and size: controls keep the desktop's font.
    bool isEmpty() const { return m_name.empty() && m_size == 0; }

    bool operator==(const Font&) const = default;

private:
    std::wstring m_name;
    int m_size = 0;
    bool m_bold = false;
    bool m_italic = false;
    bool m_underline = false;
    bool m_strikeout = false;
};

} // namespace OviAPI
