#include "explorer/sqlhistory.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include <oviapi/atomicfile.h>
#include <oviapi/text.h>

namespace {

constexpr std::string_view head = "//SQL window\n";

// Each text is written as the number of its UTF-8 bytes on a line of its own, then the bytes and a
// line end, so that a text may hold anything.
void append(std::string& bytes, const std::wstring& text)
{
    const std::string utf8 = OviAPI::wideToUtf8(text);
    bytes += std::to_string(utf8.size()) + "\n" + utf8 + "\n";
}

// Takes the next text off the front; nothing at the end and where the bytes are no text.
std::optional<std::wstring> take(std::string_view& bytes)
{
    size_t size = 0;
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), size);
    if (error != std::errc())
        return std::nullopt;
    const auto digits = static_cast<size_t>(end - bytes.data());
    const size_t room = bytes.size() - digits;
    if (room < 2 || size > room - 2 || bytes[digits] != '\n' || bytes[digits + 1 + size] != '\n')
        return std::nullopt;
    std::wstring text = OviAPI::utf8ToWide(bytes.substr(digits + 1, size));
    bytes.remove_prefix(digits + size + 2);
    return text;
}

} // namespace

void SqlHistory::add(const std::wstring& statement)
{
    std::erase(m_statements, statement);
    m_statements.insert(m_statements.begin(), statement);
    if (m_statements.size() > Most)
        m_statements.resize(Most);
}

void SqlHistory::load(const std::wstring& path)
{
    std::ifstream file(OviAPI::wideToLocale(path), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    const std::string all = content.str();
    std::string_view bytes = all;
    if (!file || bytes.substr(0, head.size()) != head)
        return;
    bytes.remove_prefix(head.size());
    auto text = take(bytes);
    if (!text)
        return;
    m_text = *text;
    m_statements.clear();
    while (m_statements.size() < Most && (text = take(bytes)))
        m_statements.push_back(*text);
}

bool SqlHistory::save(const std::wstring& path) const
{
    std::string bytes(head);
    append(bytes, m_text);
    for (const std::wstring& statement : m_statements)
        append(bytes, statement);
    try {
        OviAPI::writeFileAtomically(path, bytes);
        return true;
    } catch (const std::system_error&) { // the result says so
        return false;
    }
}

std::wstring shortStatement(const std::wstring& statement, size_t characters)
{
    std::wstring line;
    for (const wchar_t c : statement) {
        const bool blank = c == L' ' || c == L'\t' || c == L'\n' || c == L'\r';
        if (blank && (line.empty() || line.back() == L' '))
            continue;
        if (line.size() == characters) {
            line.back() = L'\u2026';
            break;
        }
        line += blank ? L' ' : c;
    }
    return line;
}
