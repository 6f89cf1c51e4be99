#include <xmlutils/document.h>

#include <expat.h>

#include <exception>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include <oviapi/text.h>
#include <xmlutils/adder.h>
#include <xmlutils/codepage.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>
#include <xmlutils/limits.h>

namespace XMLUtils {

namespace {

constexpr std::string_view xmlBlanks = " \t\r\n";

struct ParserFree {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPtr = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree>;

// The name that makes the parser read this encoding whatever the document declares.
const char* parserName(XMLEncoding encoding)
{
    switch (encoding) {
    case XMLEncoding::Utf16LE:
        return "UTF-16LE";
    case XMLEncoding::Utf16BE:
        return "UTF-16BE";
    default:
        return encodingName(encoding);
    }
}

void setAttributes(XMLElementA& element, const XML_Char** attributes)
{
    std::vector<XMLAttribute> list;
    for (; *attributes; attributes += 2)
        list.push_back({attributes[0], attributes[1]});
    element.setAttributes(std::move(list));
}

// Builds a tree from what the parser reports. An exception thrown on the way is kept, since it may
// not pass through the parser, and stops the parser; run throws it again.
class TreeBuilder {
public:
    TreeBuilder(XMLEncoding encoding, std::string_view whiteSpace, const XMLElementA& root);

    XMLElementA run(std::string_view document);

private:
    // An element that has begun and not ended. The pointer is to the document element, to a child
    // owned by the element above, or to the child that waits for the adder.
    struct Open {
        XMLElementA* element;
        std::string text;
    };

    // The callbacks of the parser; the first argument is the builder.
    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL onEnd(void* self, const XML_Char* name);
    static void XMLCALL onText(void* self, const XML_Char* text, int length);
    static void XMLCALL onDoctype(void* self, const XML_Char* name, const XML_Char* systemId,
                                  const XML_Char* publicId, int hasInternalSubset);
    static int XMLCALL onEncoding(void* data, const XML_Char* name, XML_Encoding* info);

    // Does the work of a callback unless an earlier one has failed.
    template<class Work>
    void guard(Work work) noexcept;
    [[noreturn]] void fail(std::wstring_view reason) const;

    XMLElementA& beginElement(std::string_view name);
    void endElement();
    std::string_view trimmed(const Open& open) const;

    ParserPtr m_parser;
    std::string_view m_whiteSpace;
    std::string m_expectedName;
    const IXMLAdderA* m_adder;
    XMLElementA m_document;
    XMLElementA m_forAdder;
    std::vector<Open> m_open;
    size_t m_elements = 0;
    std::exception_ptr m_failure;
};

TreeBuilder::TreeBuilder(XMLEncoding encoding, std::string_view whiteSpace, const XMLElementA& root)
    : m_parser(XML_ParserCreate(parserName(encoding)))
    , m_whiteSpace(whiteSpace)
    , m_expectedName(root.name())
    , m_adder(root.adder())
{
    if (!m_parser)
        throw std::bad_alloc();
    m_document.setAdder(m_adder);
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(m_parser.get(), onText);
    XML_SetStartDoctypeDeclHandler(m_parser.get(), onDoctype);
    XML_SetUnknownEncodingHandler(m_parser.get(), onEncoding,
                                  const_cast<CodePage*>(codePageOf(encoding)));
}

XMLElementA TreeBuilder::run(std::string_view document)
{
    if (document.size() > maxDocumentSize)
        throw XMLException(L"The document is too large");
    // Not left to the callbacks: the parser reports a tag after it has stored all its attributes.
    if (hasTooManyAttributes(document))
        throw XMLException(L"The document has too many attributes");
    const XML_Status status =
        XML_Parse(m_parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (status != XML_STATUS_OK) {
        const XML_Error error = XML_GetErrorCode(m_parser.get());
        if (error == XML_ERROR_NO_MEMORY)
            throw std::bad_alloc();
        fail(L"Not well-formed: " + OviAPI::utf8ToWide(XML_ErrorString(error)));
    }
    return std::move(m_document);
}

template<class Work>
void TreeBuilder::guard(Work work) noexcept
{
    if (m_failure)
        return;
    try {
        work();
    } catch (...) {
        m_failure = std::current_exception();
        XML_StopParser(m_parser.get(), XML_FALSE);
    }
}

void TreeBuilder::fail(std::wstring_view reason) const
{
    throw XMLException(reason, static_cast<int>(XML_GetCurrentLineNumber(m_parser.get())),
                       static_cast<int>(XML_GetCurrentColumnNumber(m_parser.get())) + 1);
}

void XMLCALL TreeBuilder::onStart(void* self, const XML_Char* name, const XML_Char** attributes)
{
    auto& builder = *static_cast<TreeBuilder*>(self);
    builder.guard([&] { setAttributes(builder.beginElement(name), attributes); });
}

void XMLCALL TreeBuilder::onEnd(void* self, const XML_Char*)
{
    auto& builder = *static_cast<TreeBuilder*>(self);
    builder.guard([&] { builder.endElement(); });
}

void XMLCALL TreeBuilder::onText(void* self, const XML_Char* text, int length)
{
    auto& builder = *static_cast<TreeBuilder*>(self);
    builder.guard([&] { builder.m_open.back().text.append(text, static_cast<size_t>(length)); });
}

// Settings need none, and without one there is no entity to expand, no default attribute to
// multiply and no file to fetch.
void XMLCALL TreeBuilder::onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*,
                                    int)
{
    auto& builder = *static_cast<TreeBuilder*>(self);
    builder.guard([&] { builder.fail(L"A document type declaration is not accepted"); });
}

int XMLCALL TreeBuilder::onEncoding(void* data, const XML_Char*, XML_Encoding* info)
{
    if (!data)
        return XML_STATUS_ERROR;
    const auto& page = *static_cast<const CodePage*>(data);
    for (size_t i = 0; i < page.size(); ++i)
        info->map[i] = page[i];
    info->data = nullptr;
    info->convert = nullptr;
    info->release = nullptr;
    return XML_STATUS_OK;
}

XMLElementA& TreeBuilder::beginElement(std::string_view name)
{
    if (++m_elements > maxElements)
        fail(L"The document has too many elements");
    if (m_open.size() == maxDepth)
        fail(L"Elements are nested too deeply");
    XMLElementA* element = nullptr;
    if (m_open.empty()) {
        if (!m_expectedName.empty() && m_expectedName != name)
            fail(L"The document element is not \"" + OviAPI::utf8ToWide(m_expectedName) + L"\"");
        m_document.setName(name);
        element = &m_document;
    } else if (m_open.size() == 1 && m_adder) {
        m_forAdder = XMLElementA(name);
        element = &m_forAdder;
    } else {
        element = &m_open.back().element->addChild(name);
    }
    m_open.push_back({element, {}});
    return *element;
}

void TreeBuilder::endElement()
{
    const Open& open = m_open.back();
    open.element->setText(trimmed(open));
    m_open.pop_back();
    if (m_adder && m_open.size() == 1) {
        m_adder->addElement(m_forAdder);
        m_forAdder = XMLElementA();
    }
}

std::string_view TreeBuilder::trimmed(const Open& open) const
{
    std::string_view text = open.text;
    const size_t first = text.find_first_not_of(m_whiteSpace);
    if (first == std::string_view::npos)
        return {};
    text = text.substr(first, text.find_last_not_of(m_whiteSpace) - first + 1);
    const bool isIndentation = text.find_first_not_of(xmlBlanks) == std::string_view::npos;
    const bool hasChildren =
        open.element->hasChildren() || (m_adder && open.element == &m_document);
    return isIndentation && hasChildren ? std::string_view{} : text;
}

} // namespace

void readDocument(std::string_view document, XMLEncoding encoding, std::string_view whiteSpace,
                  XMLElementA& root)
{
    root = TreeBuilder(encoding, whiteSpace, root).run(document);
}

} // namespace XMLUtils
