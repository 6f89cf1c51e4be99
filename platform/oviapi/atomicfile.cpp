#include <oviapi/atomicfile.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <oviapi/systemfile.h>
#include <oviapi/text.h>

namespace OviAPI {

namespace {

constexpr int maxLinks = 40;
constexpr size_t maxStem = 200; // bytes of the target's name in a temporary name (a name holds 255)
constexpr std::string_view suffix = ".tmp";

[[noreturn]] void fail(int code, const std::string& path)
{
    throw std::system_error(code, std::generic_category(),
                            "The file \"" + path + "\" could not be written");
}

// A write beyond the size limit of the process is an error to report, not a reason to end.
class SizeSignalBlocker {
public:
    SizeSignalBlocker()
    {
        sigemptyset(&m_size);
        sigaddset(&m_size, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &m_size, &m_before);
    }
    ~SizeSignalBlocker()
    {
        if (sigismember(&m_before, SIGXFSZ) == 0) {
            const timespec now{};
            while (sigtimedwait(&m_size, nullptr, &now) == SIGXFSZ) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    SizeSignalBlocker(const SizeSignalBlocker&) = delete;
    SizeSignalBlocker& operator=(const SizeSignalBlocker&) = delete;

private:
    sigset_t m_size;
    sigset_t m_before;
};

// Making a temporary file and locking it is one step for the clean-up of the same process.
std::mutex& creation()
{
    static std::mutex mutex;
    return mutex;
}

std::string narrowPath(const std::wstring& path)
{
    const std::optional<std::string> narrow = systemPath(path);
    if (path.empty() || !narrow)
        fail(path.empty() ? ENOENT : EILSEQ, wideToUtf8(path));
    return *narrow;
}

std::string folderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

// Follows symbolic links to the file that is meant; it need not exist.
std::string resolveLinks(std::string path)
{
    for (int links = 0; links < maxLinks; ++links) {
        char target[4096];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return path; // not a link, or not there
        const std::string text(target, static_cast<size_t>(length));
        path = text.starts_with('/') ? text : folderOf(path) + "/" + text;
    }
    fail(ELOOP, path);
}

std::string temporaryStem(const std::string& target)
{
    std::string stem = nameOf(target).substr(0, maxStem);
    stem.insert(stem.begin(), '.');
    stem += '.';
    return stem;
}

// A temporary file that is removed unless it was renamed.
class Temporary {
public:
    explicit Temporary(const std::string& target)
        : m_file(create(target))
    {
    }
    ~Temporary()
    {
        if (!m_path.empty())
            ::unlink(m_path.c_str());
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    int file() const { return m_file.get(); }

    // The file is closed before it is renamed, since some errors are only told then; a second
    // descriptor keeps the lock until the name is gone.
    void renameTo(const std::string& target)
    {
        const Descriptor lock(::fcntl(m_file.get(), F_DUPFD_CLOEXEC, 0));
        if (!m_file.close() || ::rename(m_path.c_str(), target.c_str()) != 0)
            fail(errno, target);
        m_path.clear();
    }

private:
    // ".<name>.<process>-<number>.tmp"; locked, so that others can tell that its writer lives.
    int create(const std::string& target)
    {
        const std::lock_guard guard(creation());
        const std::string stem = folderOf(target) + "/" + temporaryStem(target);
        for (unsigned number = 0;; ++number) {
            m_path = stem + std::to_string(::getpid()) + "-" + std::to_string(number) +
                     std::string(suffix);
            const int fd = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
            if (fd >= 0) {
                ::flock(fd, LOCK_EX | LOCK_NB);
                return fd;
            }
            const int code = errno;
            m_path.clear();
            if (code != EEXIST)
                fail(code, target);
        }
    }

    std::string m_path;
    Descriptor m_file;
};

// Owner and permissions of the file that is replaced. The owner only where the system allows it.
void takeRights(int fd, const struct stat& old, const std::string& target)
{
    struct stat now {};
    if (::fstat(fd, &now) != 0)
        fail(errno, target);
    if (now.st_uid != old.st_uid || now.st_gid != old.st_gid) {
        const bool owner = ::fchown(fd, old.st_uid, old.st_gid) == 0;
        [[maybe_unused]] const bool group = owner || ::fchown(fd, now.st_uid, old.st_gid) == 0;
    }
    if (::fchmod(fd, old.st_mode & 0777) != 0)
        fail(errno, target);
}

void writeAll(int fd, std::string_view bytes, const std::string& target)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written > 0)
            bytes.remove_prefix(static_cast<size_t>(written));
        else if (written == 0 || errno != EINTR)
            fail(written == 0 ? EIO : errno, target);
    }
}

void flush(int fd, const std::string& target)
{
    if (::fsync(fd) != 0)
        fail(errno, target);
}

void flushFolder(const std::string& target)
{
    const Descriptor folder(::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.get() < 0)
        return; // a folder that may be written but not read cannot be flushed
    if (::fsync(folder.get()) != 0 && errno != EINVAL)
        fail(errno, target);
}

// The process in a temporary file's name; 0 when it is not the name of one.
pid_t processOf(std::string_view name, std::string_view stem)
{
    if (!name.starts_with(stem) || !name.ends_with(suffix) ||
        name.size() < stem.size() + suffix.size())
        return 0;
    name.remove_prefix(stem.size());
    pid_t process = 0;
    const char* last = name.data() + name.size() - suffix.size();
    const auto first = std::from_chars(name.data(), last, process);
    if (first.ec != std::errc() || first.ptr == last || *first.ptr != '-')
        return 0;
    unsigned number = 0;
    const auto second = std::from_chars(first.ptr + 1, last, number);
    return second.ec == std::errc() && second.ptr == last && process > 0 ? process : 0;
}

bool isAlive(pid_t process)
{
    return process != ::getpid() && (::kill(process, 0) == 0 || errno != ESRCH);
}

// A file whose process number lives on in another program, or on another machine, is locked.
bool isLocked(const std::string& path)
{
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    return file.get() >= 0 && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0;
}

} // namespace

struct AtomicFileWriter::State {
    explicit State(std::string resolved)
        : target(std::move(resolved))
        , temporary(target)
    {
    }

    std::string target;
    Temporary temporary;
};

AtomicFileWriter::AtomicFileWriter(const std::wstring& path)
{
    const std::string target = resolveLinks(narrowPath(path));
    struct stat old {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode))
        fail(S_ISDIR(old.st_mode) ? EISDIR : EINVAL, target);
    if (exists && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
        fail(errno, target);
    m_state = std::make_unique<State>(target);
    if (exists)
        takeRights(m_state->temporary.file(), old, target);
}

AtomicFileWriter::~AtomicFileWriter() = default;

void AtomicFileWriter::append(std::string_view bytes)
{
    const SizeSignalBlocker blocker;
    writeAll(m_state->temporary.file(), bytes, m_state->target);
}

void AtomicFileWriter::commit()
{
    flush(m_state->temporary.file(), m_state->target);
    m_state->temporary.renameTo(m_state->target);
    flushFolder(m_state->target);
}

void writeFileAtomically(const std::wstring& path, std::string_view bytes)
{
    AtomicFileWriter file(path);
    file.append(bytes);
    file.commit();
}

int cleanStaleTemporaries(const std::wstring& path)
{
    std::string target;
    try {
        target = resolveLinks(narrowPath(path));
    } catch (const std::system_error&) {
        return 0; // nothing was ever written under such a path
    }
    const std::lock_guard guard(creation());
    const std::string folder = folderOf(target);
    DIR* entries = ::opendir(folder.c_str());
    if (!entries)
        return 0;
    int removed = 0;
    while (const dirent* entry = ::readdir(entries)) {
        const pid_t process = processOf(entry->d_name, temporaryStem(target));
        const std::string file = folder + "/" + entry->d_name;
        if (process == 0 || isAlive(process) || isLocked(file))
            continue;
        if (::unlink(file.c_str()) == 0)
            ++removed;
    }
    ::closedir(entries);
    return removed;
}

} // namespace OviAPI
