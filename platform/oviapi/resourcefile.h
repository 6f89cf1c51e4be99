// A compiled resource file in memory, checked as a whole before anything of it is used.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/resourceformat.h>

namespace OviAPI {

class ResourceFile {
public:
    // Reads a regular file of at most 64 MiB. Empty when it cannot be read or is not valid; then
    // error is a sentence.
    static std::optional<ResourceFile> read(const std::wstring& path, std::wstring& error);

    // Checks magic, version, length, checksum and every entry.
    static std::optional<ResourceFile> parse(std::string bytes, std::wstring& error);

    // The data of an entry, valid as long as the file; empty when there is none.
    std::optional<std::string_view> find(const ResourceFormat::Key& key) const;

    size_t count() const { return m_entries.size(); }
    const ResourceFormat::Key& key(size_t index) const { return m_entries[index].key; }

private:
    struct Entry {
        ResourceFormat::Key key;
        uint32_t offset;
        uint32_t length;
    };

    const char* readIndex(uint32_t count);
    const char* checkEntry(const Entry& entry) const;

    std::string m_bytes;
    std::vector<Entry> m_entries; // ascending
};

} // namespace OviAPI
