#include <xmlutils/encoding.h>

#include <algorithm>

#include <oviapi/text.h>
#include <xmlutils/exception.h>

namespace XMLUtils {

namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view opening = "<?xml";

bool isUtf16(XMLEncoding encoding)
{
    return encoding == XMLEncoding::Utf16LE || encoding == XMLEncoding::Utf16BE;
}

XMLEncoding encodingOfMark(std::string_view document)
{
    if (document.starts_with("\xEF\xBB\xBF"))
        return XMLEncoding::Utf8;
    if (document.starts_with("\xFF\xFE"))
        return XMLEncoding::Utf16LE;
    if (document.starts_with("\xFE\xFF"))
        return XMLEncoding::Utf16BE;
    return XMLEncoding::Unknown;
}

// The XML declaration at the beginning of the document as ASCII text, up to and with its '>'; some
// part of the document when it has none.
std::string declarationOf(std::string_view document, XMLEncoding mark)
{
    const bool wide = isUtf16(mark);
    const size_t unit = wide ? 2 : 1;
    const size_t low = mark == XMLEncoding::Utf16BE ? 1 : 0;
    document.remove_prefix(wide ? 2 : mark == XMLEncoding::Utf8 ? 3 : 0);
    std::string text;
    for (size_t i = 0; i + unit <= document.size() && !text.ends_with('>'); i += unit) {
        const char c = document[i + low];
        if (static_cast<unsigned char>(c) >= 0x80 || (wide && document[i + 1 - low] != 0))
            break;
        text += c;
        if (text.size() == opening.size() && text != opening)
            break;
    }
    return text;
}

// The value of encoding="..." in the XML declaration; empty without one. Whether the declaration is
// well-formed is left to the parser.
std::string declaredEncoding(std::string_view text)
{
    if (!text.starts_with(opening) || text.size() == opening.size() ||
        blanks.find(text[opening.size()]) == std::string_view::npos)
        return {};
    text.remove_prefix(opening.size());
    constexpr std::string_view key = "encoding";
    for (size_t at = text.find(key); at != std::string_view::npos; at = text.find(key, at + 1)) {
        if (blanks.find(text[at - 1]) == std::string_view::npos)
            continue;
        const size_t equals = text.find_first_not_of(blanks, at + key.size());
        if (equals == std::string_view::npos || text[equals] != '=')
            continue;
        const size_t open = text.find_first_not_of(blanks, equals + 1);
        if (open == std::string_view::npos || (text[open] != '"' && text[open] != '\''))
            continue;
        const size_t close = text.find(text[open], open + 1);
        if (close != std::string_view::npos)
            return std::string(text.substr(open + 1, close - open - 1));
    }
    return {};
}

std::string upperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return text;
}

// mark decides between the two byte orders of UTF-16.
XMLEncoding encodingOfName(const std::string& name, XMLEncoding mark)
{
    const std::string upper = upperCase(name);
    if (upper == "UTF-8")
        return XMLEncoding::Utf8;
    if (upper == "KOI8-R")
        return XMLEncoding::Koi8R;
    if (upper == "WINDOWS-1251")
        return XMLEncoding::Windows1251;
    if (upper == "UTF-16LE")
        return XMLEncoding::Utf16LE;
    if (upper == "UTF-16BE")
        return XMLEncoding::Utf16BE;
    if (upper == "UTF-16")
        return mark == XMLEncoding::Utf16BE ? mark : XMLEncoding::Utf16LE;
    return XMLEncoding::Unknown;
}

} // namespace

XMLEncoding detectEncoding(std::string_view document)
{
    const XMLEncoding mark = encodingOfMark(document);
    // The parser would guess UTF-16 here.
    if (mark == XMLEncoding::Unknown && document.substr(0, 2).find('\0') != std::string_view::npos)
        throw XMLException(L"The document has no byte order mark", 1, 1);
    const std::string name = declaredEncoding(declarationOf(document, mark));
    if (name.empty())
        return mark == XMLEncoding::Unknown ? XMLEncoding::Utf8 : mark;

    const std::wstring shown = L"\"" + OviAPI::utf8ToWide(name.substr(0, 80)) + L"\"";
    const XMLEncoding declared = encodingOfName(name, mark);
    if (declared == XMLEncoding::Unknown)
        throw XMLException(L"Unknown encoding " + shown, 1, 1);
    const bool agrees = mark == XMLEncoding::Unknown ? !isUtf16(declared) : mark == declared;
    if (!agrees)
        throw XMLException(L"The document is not in the declared encoding " + shown, 1, 1);
    return declared;
}

const char* encodingName(XMLEncoding encoding)
{
    switch (encoding) {
    case XMLEncoding::Utf8:
        return "UTF-8";
    case XMLEncoding::Koi8R:
        return "KOI8-R";
    case XMLEncoding::Windows1251:
        return "windows-1251";
    case XMLEncoding::Utf16LE:
    case XMLEncoding::Utf16BE:
        return "UTF-16";
    case XMLEncoding::Unknown:
        break;
    }
    throw XMLException(L"The code " + std::to_wstring(static_cast<int>(encoding)) +
                       L" is not an XML encoding");
}

} // namespace XMLUtils
