#include "explorer/changelog.h"

#include <algorithm>
#include <cctype>

#include "explorer/textscan.h"

namespace {

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

std::string urgencyOf(std::string_view options)
{
    constexpr std::string_view key = "urgency=";
    const std::string lower = lowerCase(options);
    const size_t start = lower.find(key);
    if (start == std::string::npos)
        return {};
    const std::string_view value = std::string_view(lower).substr(start + key.size());
    return std::string(value.substr(0, value.find_first_of(" ,\t\r")));
}

std::optional<ChangelogRelease> headerOf(std::string_view line)
{
    const size_t semicolon = line.find(';');
    if (semicolon == std::string_view::npos)
        return std::nullopt;
    std::string_view rest = line.substr(0, semicolon);
    const std::string_view source = trimmed(takeUntil(rest, '('));
    const size_t close = rest.find(')');
    if (source.empty() || source.find(' ') != std::string_view::npos || close == 0 ||
        close == std::string_view::npos)
        return std::nullopt;
    ChangelogRelease release;
    release.source = source;
    release.version = trimmed(rest.substr(0, close));
    release.distribution = trimmed(rest.substr(close + 1));
    release.urgency = urgencyOf(line.substr(semicolon + 1));
    return release;
}

} // namespace

std::optional<ChangelogRelease> ChangelogReader::line(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    if (text.front() != ' ' && text.front() != '\t') {
        if (auto header = headerOf(text))
            m_open = std::move(header);
        return std::nullopt;
    }
    if (text.substr(0, 4) != " -- " || !m_open)
        return std::nullopt;
    text.remove_prefix(4);
    m_open->maintainer = trimmed(takeUntil(text, '<'));
    takeUntil(text, '>');
    m_open->released = parseMailDate(text);
    auto release = std::move(m_open);
    m_open.reset();
    return release;
}
