#include <xmlutils/element.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <unordered_map>
#include <utility>

#include <oviapi/text.h>
#include <xmlutils/exception.h>

namespace XMLUtils {

namespace {

// Text or a name for a message: a long one is cut.
std::wstring quoted(std::string_view text)
{
    constexpr size_t longest = 80;
    std::wstring wide = OviAPI::utf8ToWide(text.substr(0, 4 * longest));
    if (wide.size() > longest)
        wide = wide.substr(0, longest) + L"...";
    return L"\"" + wide + L"\"";
}

bool isPlainInteger(std::string_view text)
{
    if (text == "0")
        return true;
    const std::string_view digits = text.starts_with('-') ? text.substr(1) : text;
    return !digits.empty() && digits.front() != '0' &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
}

void mergeAttributes(std::vector<XMLAttribute>& into, std::vector<XMLAttribute>& from)
{
    std::unordered_map<std::string, size_t> indexes;
    for (size_t i = 0; i < into.size(); ++i)
        indexes.emplace(into[i].name, i);
    for (XMLAttribute& attribute : from) {
        const auto found = indexes.find(attribute.name);
        if (found == indexes.end())
            into.push_back(std::move(attribute));
        else
            into[found->second].value = std::move(attribute.value);
    }
}

} // namespace

XMLElementA::XMLElementA(const XMLElementA& other)
{
    std::vector<std::pair<const XMLElementA*, XMLElementA*>> pending{{&other, this}};
    while (!pending.empty()) {
        const auto [from, to] = pending.back();
        pending.pop_back();
        to->m_name = from->m_name;
        to->m_text = from->m_text;
        to->m_attributes = from->m_attributes;
        to->m_adder = from->m_adder;
        to->m_children.reserve(from->m_children.size());
        for (const auto& child : from->m_children) {
            to->m_children.push_back(std::make_unique<XMLElementA>());
            pending.emplace_back(child.get(), to->m_children.back().get());
        }
    }
}

XMLElementA& XMLElementA::operator=(XMLElementA other) noexcept
{
    std::swap(m_name, other.m_name);
    std::swap(m_text, other.m_text);
    std::swap(m_attributes, other.m_attributes);
    std::swap(m_children, other.m_children);
    std::swap(m_adder, other.m_adder);
    return *this;
}

// Takes the tree apart level by level, so that the destructor of a child has none to destroy.
XMLElementA::~XMLElementA()
{
    std::vector<std::unique_ptr<XMLElementA>> pending = std::move(m_children);
    while (!pending.empty()) {
        const std::unique_ptr<XMLElementA> element = std::move(pending.back());
        pending.pop_back();
        if (!element) // moved out by a merge
            continue;
        std::move(element->m_children.begin(), element->m_children.end(),
                  std::back_inserter(pending));
        element->m_children.clear();
    }
}

int32_t XMLElementA::getInteger() const
{
    int32_t value = 0;
    const char* end = m_text.data() + m_text.size();
    if (!isPlainInteger(m_text) || std::from_chars(m_text.data(), end, value).ec != std::errc())
        throw XMLException(L"The text " + quoted(m_text) + L" of element " + quoted(m_name) +
                           L" is not a 32-bit integer");
    return value;
}

void XMLElementA::setInteger(int32_t value)
{
    m_text = std::to_string(value);
}

bool XMLElementA::getBoolean() const
{
    return getInteger() != 0;
}

void XMLElementA::setBoolean(bool value)
{
    setInteger(value ? 1 : 0);
}

std::wstring XMLElementA::getString(XMLEncoding encoding) const
{
    encodingName(encoding); // refuses what is not an encoding
    return OviAPI::utf8ToWide(m_text);
}

void XMLElementA::setString(std::wstring_view text, XMLEncoding encoding)
{
    encodingName(encoding); // refuses what is not an encoding
    m_text = OviAPI::wideToUtf8(text);
}

const std::string* XMLElementA::findAttribute(std::string_view name) const
{
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(),
                                    [&](const XMLAttribute& a) { return a.name == name; });
    return found == m_attributes.end() ? nullptr : &found->value;
}

const std::string& XMLElementA::getAttribute(std::string_view name) const
{
    if (const std::string* value = findAttribute(name))
        return *value;
    throw XMLException(L"Element " + quoted(m_name) + L" has no attribute " + quoted(name));
}

void XMLElementA::setAttribute(std::string_view name, std::string_view value)
{
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(),
                                    [&](const XMLAttribute& a) { return a.name == name; });
    if (found != m_attributes.end())
        found->value = value;
    else
        m_attributes.push_back({std::string(name), std::string(value)});
}

void XMLElementA::setAttribute(std::string_view name, int32_t value)
{
    setAttribute(name, std::to_string(value));
}

void XMLElementA::setAttributes(std::vector<XMLAttribute> attributes)
{
    m_attributes = std::move(attributes);
}

const XMLElementA* XMLElementA::findChild(std::string_view name) const
{
    const auto found = std::find_if(m_children.begin(), m_children.end(),
                                    [&](const auto& child) { return child->m_name == name; });
    return found == m_children.end() ? nullptr : found->get();
}

XMLElementA* XMLElementA::findChild(std::string_view name)
{
    return const_cast<XMLElementA*>(std::as_const(*this).findChild(name));
}

const XMLElementA& XMLElementA::getChild(std::string_view name) const
{
    if (const XMLElementA* found = findChild(name))
        return *found;
    throw XMLException(L"Element " + quoted(m_name) + L" has no child " + quoted(name));
}

XMLElementA& XMLElementA::getChild(std::string_view name)
{
    return const_cast<XMLElementA&>(std::as_const(*this).getChild(name));
}

XMLElementA& XMLElementA::addChild(std::string_view name)
{
    return addChild(XMLElementA(name));
}

XMLElementA& XMLElementA::addChild(XMLElementA element)
{
    return *m_children.emplace_back(std::make_unique<XMLElementA>(std::move(element)));
}

void XMLElementA::merge(const XMLElementA& other)
{
    XMLElementA source(other); // the parts are moved out of it; the other may be a part of this
    PairsToMerge pending{{this, &source}};
    while (!pending.empty()) {
        const auto [into, from] = pending.back();
        pending.pop_back();
        mergeAttributes(into->m_attributes, from->m_attributes);
        if (!from->m_text.empty() || from->m_children.empty())
            into->m_text = std::move(from->m_text);
        into->mergeChildren(*from, pending);
    }
}

void XMLElementA::mergeChildren(XMLElementA& from, PairsToMerge& pending)
{
    // Children of each name that have no counterpart yet, the first one last.
    std::unordered_map<std::string_view, std::vector<XMLElementA*>> open;
    for (auto child = m_children.rbegin(); child != m_children.rend(); ++child)
        open[(*child)->m_name].push_back(child->get());
    for (std::unique_ptr<XMLElementA>& child : from.m_children) {
        const auto found = open.find(child->m_name);
        if (found == open.end() || found->second.empty()) {
            m_children.push_back(std::move(child));
            continue;
        }
        pending.emplace_back(found->second.back(), child.get());
        found->second.pop_back();
    }
}

bool operator==(const XMLElementA& left, const XMLElementA& right)
{
    std::vector<std::pair<const XMLElementA*, const XMLElementA*>> pending{{&left, &right}};
    while (!pending.empty()) {
        const auto [a, b] = pending.back();
        pending.pop_back();
        if (a->m_name != b->m_name || a->m_text != b->m_text ||
            a->m_attributes != b->m_attributes || a->m_children.size() != b->m_children.size())
            return false;
        for (size_t i = 0; i < a->m_children.size(); ++i)
            pending.emplace_back(a->m_children[i].get(), b->m_children[i].get());
    }
    return true;
}

} // namespace XMLUtils
