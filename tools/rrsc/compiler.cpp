#include "compiler.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

#include <oviapi/text.h>

namespace Rrsc {

using namespace OviAPI::ResourceFormat;

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Takes the first word and the white space behind it off the text.
std::string_view takeWord(std::string_view& text)
{
    const size_t end = std::min(text.find_first_of(blanks), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

// 0 when it is not a number from 1 to maxId.
uint32_t toId(std::string_view word)
{
    uint32_t id = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), id);
    const bool valid = error == std::errc() && end == word.data() + word.size() && id <= maxId;
    return valid ? id : 0;
}

std::optional<std::string> unescaped(std::string_view text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += text[i];
            continue;
        }
        const char code = ++i < text.size() ? text[i] : '\0';
        if (code != 'n' && code != 't' && code != '\\')
            return std::nullopt;
        out += code == 'n' ? '\n' : code == 't' ? '\t' : '\\';
    }
    return out;
}

int placeholders(std::string_view text)
{
    int count = 0;
    for (size_t at = text.find('%'); at < text.size(); at = text.find('%', at)) {
        const std::string_view rest = text.substr(at);
        count += rest.starts_with("%s") || rest.starts_with("%ls");
        at += rest.starts_with("%%") ? 2 : 1;
    }
    return count;
}

struct PixelSize {
    uint32_t width = 0;
    uint32_t height = 0;
};

// From the first chunk of a PNG file; empty for anything else.
std::optional<PixelSize> pngSize(std::string_view bytes)
{
    constexpr std::string_view start{"\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR", 16};
    if (bytes.size() < start.size() + 8 || !bytes.starts_with(start))
        return std::nullopt;
    const auto number = [&](size_t at) {
        uint32_t n = 0;
        for (size_t i = 0; i < 4; ++i)
            n = n << 8 | static_cast<unsigned char>(bytes[at + i]);
        return n;
    };
    return PixelSize{number(16), number(20)};
}

void forEachLine(std::string_view content,
                 const std::function<void(size_t, std::string_view)>& action)
{
    for (size_t line = 1, from = 0; from < content.size(); ++line) {
        const size_t end = std::min(content.find('\n', from), content.size());
        const std::string_view text = trimmed(content.substr(from, end - from));
        if (!text.empty() && text.front() != '#')
            action(line, text);
        from = end + 1;
    }
}

std::string languageName(uint32_t language)
{
    return language == 1 ? "English" : "Russian";
}

} // namespace

void Compiler::fail(const Place& place, const std::string& sentence)
{
    m_errors.push_back(place.source + ":" + std::to_string(place.line) + ": " + sentence);
}

void Compiler::addEntry(const Key& key, std::string data, const Place& place)
{
    const auto [entry, added] = m_entries.try_emplace(key, Entry{std::move(data), place});
    if (added)
        return;
    const Place& first = entry->second.place;
    fail(place, std::to_string(key.id) + " stands already in " + first.source + ":" +
                    std::to_string(first.line));
}

void Compiler::addStrings(const std::string& name, std::string_view content, uint32_t language)
{
    forEachLine(content, [&](size_t line, std::string_view text) {
        addString({name, line}, text, language);
    });
}

void Compiler::addString(const Place& place, std::string_view line, uint32_t language)
{
    if (!OviAPI::isValidUtf8(line) || line.find('\0') != std::string_view::npos)
        return fail(place, "the line is not UTF-8 text");
    const std::string_view word = takeWord(line);
    const uint32_t id = toId(word);
    if (id == 0)
        return fail(place, "\"" + std::string(word) + "\" is not a number from 1 to 2147483647");
    if (line.empty())
        return fail(place, std::to_string(id) + " has no text");
    std::optional<std::string> text = unescaped(line);
    if (!text)
        return fail(place, "a backslash stands before something else than n, t or a backslash");
    addEntry({Kind::String, id, language, 0}, *std::move(text), place);
}

void Compiler::addPictures(const std::string& name, std::string_view content,
                           const std::filesystem::path& folder)
{
    forEachLine(content, [&](size_t line, std::string_view text) {
        addPicture({name, line}, text, folder);
    });
}

void Compiler::addPicture(const Place& place, std::string_view line,
                          const std::filesystem::path& folder)
{
    const std::string_view word = takeWord(line);
    const uint32_t id = toId(word);
    if (id == 0)
        return fail(place, "\"" + std::string(word) + "\" is not a number from 1 to 2147483647");
    if (line.empty())
        return fail(place, std::to_string(id) + " has no picture file");
    PixelSize single;
    for (uint32_t scale = 1; !line.empty(); ++scale) {
        const std::string file(takeWord(line));
        if (scale > maxScale)
            return fail(place, "more than three resolutions");
        std::ifstream stream(folder / file, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        const std::optional<PixelSize> size = pngSize(bytes);
        if (!size)
            return fail(place, "\"" + file + "\" is not a PNG file that can be read");
        if (scale == 1)
            single = *size;
        if (size->width != single.width * scale || size->height != single.height * scale)
            return fail(place, "\"" + file + "\" has not " + std::to_string(scale) +
                                   " times the size of the first file");
        addEntry({Kind::Picture, id, anyLanguage, scale}, std::move(bytes), place);
    }
}

void Compiler::checkLanguages()
{
    for (const auto& [key, entry] : m_entries) {
        if (key.kind != Kind::String)
            continue;
        const uint32_t other = key.language == 1 ? 2 : 1;
        const auto found = m_entries.find({Kind::String, key.id, other, 0});
        if (found == m_entries.end())
            fail(entry.place, std::to_string(key.id) + " is missing in " + languageName(other));
        else if (other == 1 && placeholders(entry.data) != placeholders(found->second.data))
            fail(entry.place,
                 std::to_string(key.id) + " has another number of placeholders than in English");
    }
}

std::string Compiler::result() const
{
    std::vector<std::pair<Key, std::string>> entries;
    for (const auto& [key, entry] : m_entries)
        entries.emplace_back(key, entry.data);
    return write(entries);
}

std::string write(const std::vector<std::pair<Key, std::string>>& entries)
{
    size_t offset = headerSize + entries.size() * entrySize;
    std::string index;
    std::string data;
    for (const auto& [key, bytes] : entries) {
        const size_t numbers[] = {
            static_cast<size_t>(key.kind), key.id, key.language, key.scale, offset, bytes.size()};
        for (const size_t number : numbers)
            putNumber(index, static_cast<uint32_t>(number));
        data += bytes;
        offset += bytes.size();
    }
    std::string out(magic);
    putNumber(out, version);
    putNumber(out, static_cast<uint32_t>(offset + checksumSize));
    putNumber(out, static_cast<uint32_t>(entries.size()));
    out += index;
    out += data;
    putNumber(out, crc32(out));
    return out;
}

} // namespace Rrsc
