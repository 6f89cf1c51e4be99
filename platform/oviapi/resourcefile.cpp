#include <oviapi/resourcefile.h>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <oviapi/text.h>

namespace OviAPI {

using namespace ResourceFormat;

namespace {

// Reads at most one byte more than the file may have, so that a file that grows is noticed.
bool readAll(int fd, std::string& bytes)
{
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<uint64_t>(status.st_size) > maxFileSize)
        return false;
    bytes.resize(static_cast<size_t>(status.st_size) + 1);
    size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = ::read(fd, bytes.data() + filled, bytes.size() - filled);
        if (got == 0)
            break;
        if (got < 0 && errno != EINTR)
            return false;
        filled += got > 0 ? static_cast<size_t>(got) : 0;
    }
    const bool whole = filled < bytes.size();
    bytes.resize(filled);
    return whole;
}

const char* checkHeader(std::string_view bytes)
{
    if (bytes.size() < headerSize + checksumSize || !bytes.starts_with(magic))
        return "It is not a resource file.";
    if (getNumber(bytes, 8) != version)
        return "It was made for another version of the program.";
    if (bytes.size() > maxFileSize || getNumber(bytes, 12) != bytes.size())
        return "Its length is wrong.";
    const size_t room = bytes.size() - headerSize - checksumSize;
    if (getNumber(bytes, 16) > room / entrySize)
        return "Its index is longer than the file.";
    const size_t end = bytes.size() - checksumSize;
    if (getNumber(bytes, end) != crc32(bytes.substr(0, end)))
        return "Its checksum is wrong.";
    return nullptr;
}

bool isKnown(const Key& key)
{
    if (key.id == 0 || key.id > maxId || key.language > maxLanguage)
        return false;
    if (key.kind == Kind::String)
        return key.language != anyLanguage && key.scale == 0;
    return key.kind == Kind::Picture && key.scale >= 1 && key.scale <= maxScale;
}

} // namespace

std::optional<ResourceFile> ResourceFile::read(const std::wstring& path, std::wstring& error)
{
    const int fd = ::open(wideToLocale(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    std::string bytes;
    const bool read = fd >= 0 && readAll(fd, bytes);
    if (fd >= 0)
        ::close(fd);
    if (!read) {
        error = L"The resource file \"" + path + L"\" could not be read.";
        return std::nullopt;
    }
    std::optional<ResourceFile> file = parse(std::move(bytes), error);
    if (!file)
        error = L"The resource file \"" + path + L"\" is damaged. " + error;
    return file;
}

std::optional<ResourceFile> ResourceFile::parse(std::string bytes, std::wstring& error)
{
    ResourceFile file;
    const char* fault = checkHeader(bytes);
    if (!fault) {
        file.m_bytes = std::move(bytes);
        fault = file.readIndex(getNumber(file.m_bytes, 16));
    }
    if (!fault)
        return file;
    error = utf8ToWide(fault);
    return std::nullopt;
}

const char* ResourceFile::readIndex(uint32_t count)
{
    const size_t end = m_bytes.size() - checksumSize;
    size_t next = headerSize + count * entrySize; // where the data of the next entry must begin
    m_entries.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const size_t at = headerSize + i * entrySize;
        const auto number = [&](size_t n) { return getNumber(m_bytes, at + 4 * n); };
        const Key key{Kind{number(0)}, number(1), number(2), number(3)};
        const Entry entry{key, number(4), number(5)};
        if (entry.offset != next || entry.length > end - next)
            return "An entry lies outside its place.";
        if (const char* fault = checkEntry(entry))
            return fault;
        m_entries.push_back(entry);
        next += entry.length;
    }
    return next == end ? nullptr : "It holds data that belongs to no entry.";
}

const char* ResourceFile::checkEntry(const Entry& entry) const
{
    if (!isKnown(entry.key))
        return "An entry is of an unknown kind.";
    if (!m_entries.empty() && entry.key <= m_entries.back().key)
        return "An entry occurs twice or out of order.";
    if (entry.key.kind != Kind::String)
        return nullptr;
    const std::string_view text = std::string_view(m_bytes).substr(entry.offset, entry.length);
    const bool valid = isValidUtf8(text) && text.find('\0') == std::string_view::npos;
    return valid ? nullptr : "A text is not valid.";
}

std::optional<std::string_view> ResourceFile::find(const Key& key) const
{
    const auto below = [](const Entry& entry, const Key& wanted) { return entry.key < wanted; };
    const auto found = std::lower_bound(m_entries.begin(), m_entries.end(), key, below);
    if (found == m_entries.end() || found->key != key)
        return std::nullopt;
    return std::string_view(m_bytes).substr(found->offset, found->length);
}

} // namespace OviAPI
