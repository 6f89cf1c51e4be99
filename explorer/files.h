// Reading files that others wrote: whole, in lines, compressed or not.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

// The bytes of a regular file of at most limit bytes; nothing for anything else. Never waits, as
// opening a named pipe would.
std::optional<std::string> readWholeFile(const std::filesystem::path& path, size_t limit);

// Reads the lines of a regular file, plain or compressed with gzip. A file that cannot be opened
// or is damaged ends there.
class LineFile {
public:
    explicit LineFile(const std::filesystem::path& path);
    ~LineFile();
    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    bool isOpen() const { return m_file != nullptr; }
    // The next line without its line feed, cut at 4095 bytes; what is left of a longer line comes
    // with the next call. False at the end.
    bool next(std::string& line);

private:
    struct Closer {
        void operator()(void* file) const;
    };
    std::unique_ptr<void, Closer> m_file;
};
