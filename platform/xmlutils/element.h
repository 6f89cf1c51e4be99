// The element of an XML document in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <oviapi/export.h>
#include <xmlutils/encoding.h>

namespace XMLUtils {

class IXMLAdderA;

struct XMLAttribute {
    std::string name;
    std::string value;

    friend bool operator==(const XMLAttribute&, const XMLAttribute&) = default;
};

// A name, attributes, text and child elements, the last three in the order of the document. Owns
// its children; points to its adder. Copies are deep. References to a child stay valid while
// other children are added. Names and text are UTF-8.
//
// The text is all character data directly inside the element, in one piece. In an element that has
// children, text of nothing but white space is indentation: it is neither read nor written.
//
// Trees of any depth are copied, compared, merged and destroyed without recursion.
class OVIAPI_API XMLElementA {
public:
    XMLElementA() = default;
    explicit XMLElementA(std::string_view name)
        : m_name(name)
    {
    }
    XMLElementA(const XMLElementA& other);
    XMLElementA(XMLElementA&& other) noexcept = default;
    // May be given a part of the element itself.
    XMLElementA& operator=(XMLElementA other) noexcept;
    ~XMLElementA();

    // Names are checked when the element is written.
    const std::string& name() const { return m_name; }
    void setName(std::string_view name) { m_name = name; }

    const std::string& text() const { return m_text; }
    void setText(std::string_view text) { m_text = text; }

    // The text as a 32-bit number in plain decimal: "0", or digits that do not begin with 0, with
    // or without a minus sign in front. Anything else (blanks, a plus sign, "-0", "05", a number
    // out of range, no text) is not an integer and throws XMLException.
    int32_t getInteger() const;
    void setInteger(int32_t value);

    // Written as 0 or 1; every integer but 0 is true. Throws XMLException as getInteger.
    bool getBoolean() const;
    void setBoolean(bool value);

    // The text as wide text. The encoding is that of the file to which the element goes, or from
    // which it came. Since elements hold Unicode text, every encoding gives the same string, and
    // none loses a character: what the file's encoding has no code for is written as a character
    // reference. Both throw XMLException when it is not an encoding. In setString a wide character
    // that is no Unicode character becomes U+FFFD.
    std::wstring getString(XMLEncoding encoding) const;
    void setString(std::wstring_view text, XMLEncoding encoding);

    const std::vector<XMLAttribute>& attributes() const { return m_attributes; }
    // Null when there is none of that name.
    const std::string* findAttribute(std::string_view name) const;
    // Throws XMLException when there is none of that name.
    const std::string& getAttribute(std::string_view name) const;
    // Replaces the value of an attribute or appends a new one.
    void setAttribute(std::string_view name, std::string_view value);
    void setAttribute(std::string_view name, int32_t value);
    // Replaces all attributes; no two may have the same name.
    void setAttributes(std::vector<XMLAttribute> attributes);

    size_t childCount() const { return m_children.size(); }
    bool hasChildren() const { return !m_children.empty(); }
    // index: from 0, below childCount.
    XMLElementA& child(size_t index) { return *m_children[index]; }
    const XMLElementA& child(size_t index) const { return *m_children[index]; }
    // The first child of that name, or null.
    XMLElementA* findChild(std::string_view name);
    const XMLElementA* findChild(std::string_view name) const;
    // The first child of that name. Throws XMLException when there is none.
    XMLElementA& getChild(std::string_view name);
    const XMLElementA& getChild(std::string_view name) const;
    // Appends a child and returns it.
    XMLElementA& addChild(std::string_view name);
    XMLElementA& addChild(XMLElementA element);

    // Lays the settings of another element over this one:
    // - its attributes replace those of the same name, others are appended;
    // - its text replaces the text, also by an empty one; but text is left alone by an element that
    //   has children and no text;
    // - its children are merged into the children of the same name, the second of a name into the
    //   second and so on; those without a counterpart are appended.
    // The name and the adder stay. Merging an element into its copy changes nothing. The other
    // element may be a part of this one, or this one itself.
    void merge(const XMLElementA& other);

    // Borrowed; null for none. Only that of the root element handed to the reader is used. Copied
    // with the element, no part of a comparison.
    void setAdder(const IXMLAdderA* adder) { m_adder = adder; }
    const IXMLAdderA* adder() const { return m_adder; }

    // Name, text, attributes and children are equal, all in the same order.
    OVIAPI_API friend bool operator==(const XMLElementA& left, const XMLElementA& right);

private:
    using PairsToMerge = std::vector<std::pair<XMLElementA*, XMLElementA*>>; // into, from

    void mergeChildren(XMLElementA& from, PairsToMerge& pending);

    std::string m_name;
    std::string m_text;
    std::vector<XMLAttribute> m_attributes;
    std::vector<std::unique_ptr<XMLElementA>> m_children;
    const IXMLAdderA* m_adder = nullptr;
};

} // namespace XMLUtils
