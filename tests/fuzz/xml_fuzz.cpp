// Reads any bytes as an XML document. What is read must come back equal from what the writer makes
// of it, in every encoding, and merging it into itself must change nothing.
#include <xmlutils/document.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace XMLUtils;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

XMLElementA parse(std::string_view document, std::string_view whiteSpace)
{
    XMLElementA root;
    readDocument(document, detectEncoding(document), whiteSpace, root);
    return root;
}

// Nothing when the document is refused.
std::optional<XMLElementA> tryParse(std::string_view document, std::string_view whiteSpace)
{
    try {
        return parse(document, whiteSpace);
    } catch (const XMLException& error) {
        require(!error.message().empty());
        return std::nullopt;
    }
}

void readAsNumber(const XMLElementA& element)
{
    try {
        require(std::to_string(element.getInteger()) == element.text());
    } catch (const XMLException&) {
        // most texts are not numbers
    }
}

void checkElement(const XMLElementA& root)
{
    readAsNumber(root);
    for (size_t i = 0; i < root.childCount(); ++i)
        readAsNumber(root.child(i));

    XMLElementA merged = root;
    merged.merge(root);
    require(merged == root);
    require(parse(writeDocument(root, XMLEncoding::Utf8), {}) == root);
    for (const XMLEncoding encoding : {XMLEncoding::Koi8R, XMLEncoding::Windows1251,
                                       XMLEncoding::Utf16LE, XMLEncoding::Utf16BE}) {
        std::string document;
        try {
            document = writeDocument(root, encoding);
        } catch (const XMLException&) {
            continue; // a name outside the encoding
        }
        require(parse(document, {}) == root);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    if (const auto exact = tryParse(document, {}))
        checkElement(*exact);
    if (const auto trimmed = tryParse(document, " \t\r\n"))
        checkElement(*trimmed);
    return 0;
}
