// Short forms for tests over documents in memory.
#pragma once

#include <xmlutils/adder.h>
#include <xmlutils/document.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline XMLUtils::XMLElementA parse(std::string_view document, std::string_view whiteSpace = {})
{
    XMLUtils::XMLElementA root;
    XMLUtils::readDocument(document, XMLUtils::detectEncoding(document), whiteSpace, root);
    return root;
}

// What is thrown for a document; nothing when it is read.
inline std::optional<XMLUtils::XMLException> faultOf(std::string_view document)
{
    try {
        parse(document);
    } catch (const XMLUtils::XMLException& error) {
        return error;
    }
    return std::nullopt;
}

inline std::wstring messageOf(std::string_view document)
{
    const auto fault = faultOf(document);
    return fault ? fault->message() : L"";
}

// Keeps copies of what it is handed.
class CollectingAdder final : public XMLUtils::IXMLAdderA {
public:
    void addElement(const XMLUtils::XMLElementA& element) const override
    {
        elements.push_back(element);
    }
    mutable std::vector<XMLUtils::XMLElementA> elements;
};
