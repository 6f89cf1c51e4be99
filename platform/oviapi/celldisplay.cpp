#include <oviapi/celldisplay.h>

namespace OviAPI {

namespace {

wchar_t sign(wchar_t c)
{
    constexpr wchar_t controlPictures = 0x2400;
    if (c == L'\n' || c == 0x85 || c == 0x2028 || c == 0x2029)
        return 0x21B5; // arrow of the Enter key
    if (c == L'\t')
        return 0x21E5; // arrow to a bar
    if (c < L' ')
        return static_cast<wchar_t>(controlPictures + c);
    if (c == 0x7F)
        return 0x2421;
    return 0xFFFD;
}

bool isPlain(wchar_t c)
{
    if (c < 0x7F)
        return c >= L' ';
    const bool control = c <= 0x9F;
    const bool lineEnd = c == 0x2028 || c == 0x2029;
    const bool turnsAround = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    return !control && !lineEnd && !turnsAround;
}

} // namespace

std::wstring shownLine(std::wstring_view text)
{
    std::wstring line(text.substr(0, maxShownChars));
    for (wchar_t& c : line)
        if (!isPlain(c))
            c = sign(c);
    return line;
}

} // namespace OviAPI
