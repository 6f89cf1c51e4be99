// Compiles readable sources into a resource file.
//
// A text source is UTF-8, one string a line: its number, white space, its text. In the text \n, \t
// and \\ stand for a line end, a tab and a backslash. A picture list has lines of a number and the
// names of PNG files, drawn for 1, 2 and 3 times the resolution, beside the list; the size at 2 and
// 3 times must be exactly that. Empty lines and lines that begin with # are left out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/resourceformat.h>

namespace Rrsc {

class Compiler {
public:
    // The content of one source. name is what messages call it.
    void addStrings(const std::string& name, std::string_view content, uint32_t language);
    // folder: where the files of the list lie.
    void addPictures(const std::string& name, std::string_view content,
                     const std::filesystem::path& folder);

    // Every string must exist in both languages and hold the same number of placeholders there.
    void checkLanguages();

    // "<source>:<line>: <sentence>", in the order in which they were found.
    const std::vector<std::string>& errors() const { return m_errors; }

    // The compiled file. Only when there are no errors.
    std::string result() const;

private:
    using Key = OviAPI::ResourceFormat::Key;
    struct Place {
        std::string source;
        size_t line = 0;
    };
    struct Entry {
        std::string data;
        Place place;
    };

    void addString(const Place& place, std::string_view line, uint32_t language);
    void addPicture(const Place& place, std::string_view line, const std::filesystem::path& folder);
    void addEntry(const Key& key, std::string data, const Place& place);
    void fail(const Place& place, const std::string& sentence);

    std::map<Key, Entry> m_entries;
    std::vector<std::string> m_errors;
};

// A file as compiled from its entries, without a check: tests make wrong files with it.
std::string write(const std::vector<std::pair<OviAPI::ResourceFormat::Key, std::string>>& entries);

} // namespace Rrsc
