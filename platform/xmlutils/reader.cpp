#include <xmlutils/reader.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <oviapi/systemfile.h>
#include <oviapi/text.h>
#include <xmlutils/document.h>
#include <xmlutils/exception.h>
#include <xmlutils/limits.h>

namespace XMLUtils {

namespace {

constexpr wchar_t notRead[] = L"could not be read";

[[noreturn]] void fail(const std::wstring& path, std::wstring_view reason)
{
    throw XMLException(reason).ofFile(path, notRead);
}

// Calls the function; what it finds wrong with a document is wrong with the file.
template<class Function>
auto naming(const std::wstring& path, Function&& function)
{
    try {
        return function();
    } catch (const XMLException& fault) {
        if (!fault.file().empty())
            throw;
        throw fault.ofFile(path, notRead);
    }
}

[[noreturn]] void failWith(const std::wstring& path, int code)
{
    fail(path, OviAPI::localeToWide(std::strerror(code)));
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
    const std::optional<std::string> narrow = OviAPI::systemPath(path);
    if (!narrow)
        fail(path, L"the name cannot be written in the character set of the system");
    struct stat status {};
    if (::stat(narrow->c_str(), &status) != 0)
        failWith(path, errno);
    requireRegular(path, status);
    const int fd = ::open(narrow->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        failWith(path, errno);
    return fd;
}

std::string readWhole(const std::wstring& path)
{
    const OviAPI::Descriptor file(openRegular(path));
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
    : m_path(path)
    , m_document(readWhole(path))
    , m_whiteSpace(whiteSpace)
    , m_encoding(naming(path, [&] { return detectEncoding(m_document); }))
{
}

void XMLFILEReaderA::read(XMLElementA& root) const
{
    naming(m_path, [&] { readDocument(m_document, m_encoding, m_whiteSpace, root); });
}

} // namespace XMLUtils
