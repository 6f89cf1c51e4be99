// What the readers and writers of files share. Not exported.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include <unistd.h>

#include <oviapi/text.h>

namespace OviAPI {

// An open file of the system; a negative number is none.
class Descriptor {
public:
    explicit Descriptor(int fd)
        : m_fd(fd)
    {
    }
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_fd; }
    // Tells what the system only finds out when the file is closed.
    bool close() { return ::close(std::exchange(m_fd, -1)) == 0; }

private:
    int m_fd;
};

// The path as the system takes it; nothing when its character set cannot write the name.
inline std::optional<std::string> systemPath(const std::wstring& path)
{
    std::string narrow = wideToLocale(path);
    if (localeToWide(narrow) != path || narrow.find('\0') != std::string::npos)
        return std::nullopt;
    return narrow;
}

} // namespace OviAPI
