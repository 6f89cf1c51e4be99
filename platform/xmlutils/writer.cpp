#include <xmlutils/writer.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include <oviapi/atomicfile.h>
#include <oviapi/text.h>
#include <xmlutils/codepage.h>
#include <xmlutils/document.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>
#include <xmlutils/limits.h>

namespace XMLUtils {

namespace {

constexpr std::string_view unnamedRoot = "Root";

// The characters of a name, first those that may begin it (XML 1.0, fifth edition, section 2.3).
struct Range {
    char32_t first;
    char32_t last;
};
constexpr std::array<Range, 16> nameStart{{{':', ':'},
                                           {'A', 'Z'},
                                           {'_', '_'},
                                           {'a', 'z'},
                                           {0xC0, 0xD6},
                                           {0xD8, 0xF6},
                                           {0xF8, 0x2FF},
                                           {0x370, 0x37D},
                                           {0x37F, 0x1FFF},
                                           {0x200C, 0x200D},
                                           {0x2070, 0x218F},
                                           {0x2C00, 0x2FEF},
                                           {0x3001, 0xD7FF},
                                           {0xF900, 0xFDCF},
                                           {0xFDF0, 0xFFFD},
                                           {0x10000, 0xEFFFF}}};
constexpr std::array<Range, 5> nameMore{
    {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}}};

template<size_t N>
bool isIn(const std::array<Range, N>& ranges, char32_t c)
{
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](Range range) { return c >= range.first && c <= range.last; });
}

bool isName(std::wstring_view text)
{
    const auto begins = [](wchar_t c) { return isIn(nameStart, static_cast<char32_t>(c)); };
    const auto follows = [&](wchar_t c) {
        return begins(c) || isIn(nameMore, static_cast<char32_t>(c));
    };
    return !text.empty() && begins(text.front()) &&
           std::all_of(text.begin() + 1, text.end(), follows);
}

bool isXmlCharacter(char32_t c)
{
    return c == '\t' || c == '\n' || c == '\r' ||
           (c >= 0x20 && c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF);
}

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// The bytes of a document under construction.
class Output {
public:
    explicit Output(XMLEncoding encoding)
        : m_encoding(encoding)
        , m_page(codePageOf(encoding))
    {
        if (isUtf16())
            putUnit(0xFEFF);
    }

    // False when the encoding lacks the character.
    bool has(char32_t c) const { return c < 0x80 || !m_page || byteOf(c) >= 0; }
    // A character that the encoding has.
    void put(char32_t c);
    void put(std::string_view ascii)
    {
        for (const char c : ascii)
            put(static_cast<char32_t>(c));
    }
    void putReference(char32_t c) { put("&#" + std::to_string(static_cast<unsigned>(c)) + ";"); }

    std::string take() { return std::move(m_bytes); }

private:
    bool isUtf16() const
    {
        return m_encoding == XMLEncoding::Utf16LE || m_encoding == XMLEncoding::Utf16BE;
    }
    int byteOf(char32_t c) const
    {
        const auto found = std::find(m_page->begin() + 0x80, m_page->end(), static_cast<int>(c));
        return found == m_page->end() ? -1 : static_cast<int>(found - m_page->begin());
    }
    void putUnit(char16_t unit);
    void checkSize() const
    {
        if (m_bytes.size() > maxDocumentSize)
            throw XMLException(L"The document is too large to be written");
    }

    XMLEncoding m_encoding;
    const CodePage* m_page;
    std::string m_bytes;
};

void Output::put(char32_t c)
{
    const auto wide = static_cast<wchar_t>(c);
    if (isUtf16()) {
        for (const char16_t unit : OviAPI::wideToUtf16({&wide, 1}))
            putUnit(unit);
    } else if (c < 0x80) {
        m_bytes += static_cast<char>(c);
    } else if (m_page) {
        m_bytes += static_cast<char>(byteOf(c));
    } else {
        m_bytes += OviAPI::wideToUtf8({&wide, 1});
    }
    checkSize();
}

void Output::putUnit(char16_t unit)
{
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    m_bytes += m_encoding == XMLEncoding::Utf16LE ? low : high;
    m_bytes += m_encoding == XMLEncoding::Utf16LE ? high : low;
}

// Writes a tree. Its recursion is as deep as the tree, which is bounded.
class DocumentWriter {
public:
    explicit DocumentWriter(XMLEncoding encoding)
        : m_out(encoding)
    {
        m_out.put("<?xml version=\"1.0\" encoding=\"");
        m_out.put(encodingName(encoding));
        m_out.put("\"?>\n");
    }

    // depth: of the element, from 1. Without indentation the element follows what stands before.
    void writeElement(const XMLElementA& element, std::string_view name, size_t depth,
                      bool indented);

    std::string take() { return m_out.take(); }

private:
    void writeName(std::string_view name);
    void writeText(std::string_view text, std::string_view escaped);
    void writeAttributes(const XMLElementA& element);
    void writeContent(const XMLElementA& element, size_t depth, bool indented);
    void indent(size_t depth) { m_out.put(std::string(2 * (depth - 1), ' ')); }

    Output m_out;
    size_t m_elements = 0;
};

void DocumentWriter::writeName(std::string_view name)
{
    const std::wstring wide = OviAPI::utf8ToWide(name);
    if (!OviAPI::isValidUtf8(name) || !isName(wide))
        throw XMLException(L"\"" + wide + L"\" is not an XML name");
    for (const wchar_t c : wide) {
        if (!m_out.has(static_cast<char32_t>(c)))
            throw XMLException(L"The encoding has no characters for the name \"" + wide + L"\"");
        m_out.put(static_cast<char32_t>(c));
    }
}

// escaped: the ASCII characters that become references.
void DocumentWriter::writeText(std::string_view text, std::string_view escaped)
{
    for (const wchar_t w : OviAPI::utf8ToWide(text)) {
        auto c = static_cast<char32_t>(w);
        if (!isXmlCharacter(c))
            c = 0xFFFD;
        const bool isSpecial =
            c < 0x80 && escaped.find(static_cast<char>(c)) != std::string_view::npos;
        if (c == '&')
            m_out.put("&amp;");
        else if (c == '<')
            m_out.put("&lt;");
        else if (isSpecial || !m_out.has(c))
            m_out.putReference(c);
        else
            m_out.put(c);
    }
}

void DocumentWriter::writeAttributes(const XMLElementA& element)
{
    for (const XMLAttribute& attribute : element.attributes()) {
        m_out.put(" ");
        writeName(attribute.name);
        m_out.put("=\"");
        writeText(attribute.value,
                  "\"\t\r\n"); // a parser turns bare line ends and tabs into blanks
        m_out.put("\"");
    }
}

void DocumentWriter::writeElement(const XMLElementA& element, std::string_view name, size_t depth,
                                  bool indented)
{
    if (++m_elements > maxElements)
        throw XMLException(L"There are too many elements to be written");
    if (depth > maxDepth)
        throw XMLException(L"The elements are nested too deeply to be written");
    if (indented)
        indent(depth);
    m_out.put("<");
    writeName(name);
    writeAttributes(element);
    if (element.text().empty() && !element.hasChildren()) {
        m_out.put("/>");
    } else {
        m_out.put(">");
        writeContent(element, depth, indented);
        m_out.put("</");
        writeName(name);
        m_out.put(">");
    }
    if (indented)
        m_out.put("\n");
}

// White space may be added only where no text stands: not in an element with text of its own, nor
// anywhere inside it.
void DocumentWriter::writeContent(const XMLElementA& element, size_t depth, bool indented)
{
    const bool hasText = !element.hasChildren() || !isBlank(element.text());
    if (hasText)
        writeText(element.text(), ">\r"); // ">" for "]]>"; a bare "\r" would be read as "\n"
    const bool indentChildren = indented && !hasText;
    if (indentChildren)
        m_out.put("\n");
    for (size_t i = 0; i < element.childCount(); ++i)
        writeElement(element.child(i), element.child(i).name(), depth + 1, indentChildren);
    if (indentChildren)
        indent(depth);
}

} // namespace

std::string writeDocument(const XMLElementA& root, XMLEncoding encoding)
{
    DocumentWriter writer(encoding);
    writer.writeElement(root, root.name().empty() ? unnamedRoot : root.name(), 1, true);
    std::string document = writer.take();
    if (hasTooManyAttributes(document))
        throw XMLException(L"There are too many attributes to be written");
    return document;
}

XMLFILEWriterA::XMLFILEWriterA(std::wstring path, XMLEncoding encoding)
    : m_path(std::move(path))
    , m_encoding(encoding)
{
    encodingName(encoding); // refuses what is not an encoding
}

void XMLFILEWriterA::write(const XMLElementA& root) const
{
    constexpr wchar_t notWritten[] = L"could not be written";
    try {
        OviAPI::writeFileAtomically(m_path, writeDocument(root, m_encoding));
    } catch (const XMLException& fault) {
        throw fault.ofFile(m_path, notWritten);
    } catch (const std::system_error& error) {
        const std::wstring reason = OviAPI::localeToWide(error.code().message());
        throw XMLException(reason).ofFile(m_path, notWritten);
    }
}

} // namespace XMLUtils
