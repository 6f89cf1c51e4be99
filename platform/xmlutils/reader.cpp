#include <xmlutils/reader.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <oviapi/text.h>
#include <xmlutils/document.h>
#include <xmlutils/exception.h>
#include <xmlutils/limits.h>

namespace XMLUtils {

namespace {

[[noreturn]] void fail(const std::wstring& path, std::wstring_view reason)
{
    throw XMLException(L"The file \"" + path + L"\" could not be read: " + std::wstring(reason));
}

[[noreturn]] void failWith(const std::wstring& path, int code)
{
    fail(path, OviAPI::localeToWide(std::strerror(code)));
}

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

private:
    int m_fd;
};

std::string narrowPath(const std::wstring& path)
{
    std::string narrow = OviAPI::wideToLocale(path);
    if (OviAPI::localeToWide(narrow) != path || narrow.find('\0') != std::string::npos)
        fail(path, L"the name cannot be written in the character set of the system");
    return narrow;
}

void requireRegular(const std::wstring& path, const struct stat& status)
{
    if (S_ISDIR(status.st_mode))
        failWith(path, EISDIR);
    if (!S_ISREG(status.st_mode))
        fail(path, L"it is not a regular file");
}

void requireSize(const std::wstring& path, size_t size)
{
    if (size > maxDocumentSize)
        fail(path, L"it is too large");
}

// The kind is looked at before opening, since opening alone can wait (pipe) or act (device), and
// again behind it, since the file may have been replaced in between.
int openRegular(const std::wstring& path)
{
    const std::string narrow = narrowPath(path);
    struct stat status {};
    if (::stat(narrow.c_str(), &status) != 0)
        failWith(path, errno);
    requireRegular(path, status);
    const int fd = ::open(narrow.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        failWith(path, errno);
    return fd;
}

std::string readWhole(const std::wstring& path)
{
    const Descriptor file(openRegular(path));
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        failWith(path, errno);
    requireRegular(path, status);
    requireSize(path, static_cast<size_t>(status.st_size));

    // The size is only a hint: the file may grow or shrink, and some files report 0.
    std::string bytes(static_cast<size_t>(status.st_size) + 1, '\0');
    size_t length = 0;
    for (;;) {
        const ssize_t got = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            failWith(path, errno);
        if (got == 0)
            break;
        length += static_cast<size_t>(got);
        requireSize(path, length);
        if (length == bytes.size())
            bytes.resize(length + 65536);
    }
    bytes.resize(length);
    return bytes;
}

} // namespace

XMLFILEReaderA::XMLFILEReaderA(const std::wstring& path, std::string_view whiteSpace)
    : m_document(readWhole(path))
    , m_whiteSpace(whiteSpace)
    , m_encoding(detectEncoding(m_document))
{
}

void XMLFILEReaderA::read(XMLElementA& root) const
{
    readDocument(m_document, m_encoding, m_whiteSpace, root);
}

} // namespace XMLUtils
