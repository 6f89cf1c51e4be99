#include "explorer/connection.h"

#include <string_view>

#include <oviapi/text.h>

namespace {

// The form of RFC 3986 for a part of an address: everything but letters, digits and "-._~" as %XX
// of its UTF-8 bytes.
std::string percentEncoded(std::wstring_view text)
{
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : OviAPI::wideToUtf8(text)) {
        if (plain.find(c) != std::string_view::npos) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return encoded;
}

// An IPv6 address stands in brackets; a path to a socket is encoded.
std::string encodedHost(const std::wstring& host)
{
    const bool numeric = host.find(L':') != std::wstring::npos && host.front() != L'[';
    if (numeric)
        return "[" + OviAPI::wideToUtf8(host) + "]";
    return host.find(L'[') == 0 ? OviAPI::wideToUtf8(host) : percentEncoded(host);
}

} // namespace

std::wstring Connection::title() const
{
    if (isFile())
        return path;
    std::wstring text = user.empty() ? host : user + L"@" + host;
    if (port != 0)
        text += L":" + std::to_wstring(port);
    return text + L"/" + database;
}

std::string Connection::databaseName() const
{
    const std::string scheme = OviAPI::wideToUtf8(engine);
    if (isFile()) {
        std::string name = scheme + ":" + OviAPI::wideToLocale(path);
        if (readOnly)
            name += "?mode=ro";
        else if (path.find(L"?mode=") != std::wstring::npos)
            name += "?mode=rw"; // else the end of the path would be taken for a mode
        return name;
    }
    std::string name = scheme + "://";
    if (!user.empty())
        name += percentEncoded(user) + "@";
    name += encodedHost(host);
    if (port != 0)
        name += ":" + std::to_string(port);
    name += "/" + percentEncoded(database);
    constexpr const char* modes[] = {"", "disable", "require", "verify-full"};
    const char* separator = "?";
    if (encryption != AsUsual) {
        name += std::string("?sslmode=") + modes[encryption];
        separator = "&";
    }
    if (!parameters.empty())
        name += separator + OviAPI::wideToUtf8(parameters);
    return name;
}

std::string Connection::clientOptions() const
{
    constexpr int milliseconds = 1000;
    std::string options = readOnly ? "readonly" : "";
    if (isFile())
        options += " timeout=" + std::to_string(lockWait * milliseconds);
    return options;
}

void RecentConnections::add(const Connection& connection)
{
    std::erase_if(m_all, [&](const Connection& other) {
        return other.engine == connection.engine && other.title() == connection.title();
    });
    m_all.insert(m_all.begin(), connection);
    if (m_all.size() > Most)
        m_all.resize(Most);
}

void RecentConnections::remove(size_t index)
{
    if (index < m_all.size())
        m_all.erase(m_all.begin() + static_cast<std::ptrdiff_t>(index));
}
