#include "explorer/debiandata.h"

#include <algorithm>
#include <charconv>

#include "explorer/textscan.h"

namespace {

// The fields of one paragraph. A folded field keeps its line feeds.
class Paragraph {
public:
    void line(std::string_view text)
    {
        if (text.front() == ' ' || text.front() == '\t') {
            if (!m_fields.empty())
                m_fields.back().value.append("\n").append(text);
            return;
        }
        const size_t colon = text.find(':');
        if (colon == std::string_view::npos)
            return;
        m_fields.push_back(
            {std::string(text.substr(0, colon)), std::string(trimmed(text.substr(colon + 1)))});
    }
    std::string_view value(std::string_view name) const
    {
        const auto field = std::find_if(m_fields.begin(), m_fields.end(),
                                        [name](const Field& f) { return f.name == name; });
        return field == m_fields.end() ? std::string_view() : std::string_view(field->value);
    }
    bool isEmpty() const { return m_fields.empty(); }

private:
    struct Field {
        std::string name;
        std::string value;
    };
    std::vector<Field> m_fields;
};

std::optional<int64_t> wholeNumber(std::string_view text)
{
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

// The lines behind the first: one leading blank belongs to the field form, a lone dot stands for
// an empty line.
std::string longDescription(std::string_view folded)
{
    std::string text;
    takeUntil(folded, '\n');
    forEachLine(folded, [&text](std::string_view line) {
        line.remove_prefix(line.empty() ? 0 : 1);
        if (!text.empty())
            text += '\n';
        if (line != ".")
            text += line;
    });
    return text;
}

DebianPackage packageOf(const Paragraph& fields)
{
    DebianPackage package;
    package.name = fields.value("Package");
    package.version = fields.value("Version");
    package.architecture = fields.value("Architecture");
    package.section = fields.value("Section");
    package.priority = fields.value("Priority");
    package.maintainer = fields.value("Maintainer");
    package.homepage = fields.value("Homepage");
    package.essential = fields.value("Essential") == "yes";
    package.installedKib = wholeNumber(fields.value("Installed-Size"));

    std::string_view source = fields.value("Source"); // "name" or "name (version)"
    source = trimmed(takeUntil(source, '('));
    package.source = source.empty() ? package.name : std::string(source);

    std::string_view description = fields.value("Description");
    package.description = longDescription(description);
    package.summary = trimmed(takeUntil(description, '\n'));

    for (const char* kind : {"Pre-Depends", "Depends", "Recommends", "Suggests"}) {
        auto found = parseDependencies(kind, fields.value(kind));
        package.dependencies.insert(package.dependencies.end(),
                                    std::make_move_iterator(found.begin()),
                                    std::make_move_iterator(found.end()));
    }
    return package;
}

// The third word of "install ok installed".
bool isInstalled(std::string_view status)
{
    return status.size() >= 10 && status.substr(status.size() - 10) == " installed";
}

} // namespace

std::vector<DebianPackage> parseDpkgStatus(std::string_view text)
{
    std::vector<DebianPackage> packages;
    Paragraph paragraph;
    const auto finish = [&packages, &paragraph] {
        if (!paragraph.value("Package").empty() && isInstalled(paragraph.value("Status")))
            packages.push_back(packageOf(paragraph));
        paragraph = {};
    };
    forEachLine(text, [&](std::string_view line) {
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (!line.empty())
            paragraph.line(line);
        else if (!paragraph.isEmpty())
            finish();
    });
    finish();
    return packages;
}

std::vector<PackageDependency> parseDependencies(std::string_view kind, std::string_view text)
{
    std::vector<PackageDependency> all;
    int group = 0;
    while (!text.empty()) {
        std::string_view alternatives = takeUntil(text, ',');
        if (trimmed(alternatives).empty())
            continue;
        ++group;
        while (!alternatives.empty()) {
            std::string_view member = takeUntil(alternatives, '|');
            std::string_view name = takeUntil(member, '(');
            name = name.substr(0, name.find_first_of(":["));
            const size_t start = name.find_first_not_of(" \t\r\n");
            if (start == std::string_view::npos)
                continue;
            name = name.substr(start, name.find_last_not_of(" \t\r\n") - start + 1);
            PackageDependency dependency{std::string(kind), group, std::string(name), {}, {}};
            const std::string_view condition = trimmed(takeUntil(member, ')'));
            const size_t relationEnd = condition.find_first_not_of("<>=");
            if (relationEnd != std::string_view::npos && relationEnd > 0) {
                dependency.relation = condition.substr(0, relationEnd);
                dependency.version = trimmed(condition.substr(relationEnd));
            }
            all.push_back(std::move(dependency));
        }
    }
    return all;
}
