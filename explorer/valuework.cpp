#include "explorer/valuework.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <oviapi/text.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace {

int percentOf(int64_t done, int64_t all)
{
    return all <= 0 ? 100 : static_cast<int>(std::min<int64_t>(done, all) * 100 / all);
}

} // namespace

// --- saving

// Written by the thread until its end.
struct ValueSaver::Ending {
    std::exception_ptr failure;
};

ValueSaver::ValueSaver(ValueStore& store, const std::wstring& path)
    : m_store(store)
    , m_size(store.size())
    , m_piece(ValueStore::PieceSize, '\0')
{
    OviAPI::cleanStaleTemporaries(path);
    m_file = std::make_shared<OviAPI::AtomicFileWriter>(path);
}

ValueWork::State ValueSaver::step()
{
    if (m_task) {
        if (!m_task->isDone())
            return State::Waiting;
        if (m_ending->failure)
            std::rethrow_exception(m_ending->failure);
        return State::Done;
    }
    const size_t read = m_store.read(m_done, m_piece.data(), m_piece.size());
    m_file->append({m_piece.data(), read});
    m_done += static_cast<int64_t>(read);
    if (read == m_piece.size())
        return State::Going;
    m_ending = std::make_shared<Ending>();
    m_task = std::make_unique<BackgroundTask>([file = std::move(m_file), ending = m_ending] {
        try {
            file->commit();
        } catch (...) { // thrown again by step
            ending->failure = std::current_exception();
        }
    });
    return State::Waiting;
}

int ValueSaver::percent() const
{
    return percentOf(m_done, m_size);
}

// --- loading

class ValueLoader::File {
public:
    // Never waits, as opening a named pipe would.
    explicit File(const std::wstring& path)
        : m_name(OviAPI::wideToLocale(path))
        , m_fd(::open(m_name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
    {
        if (m_fd < 0)
            fail();
        struct stat status {};
        if (::fstat(m_fd, &status) != 0 || !S_ISREG(status.st_mode)) {
            ::close(m_fd);
            throw ValueFault(TextValueNoFile);
        }
        m_size = status.st_size;
    }
    ~File() { ::close(m_fd); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int64_t size() const { return m_size; }
    void rewind() { ::lseek(m_fd, 0, SEEK_SET); }
    // Fills the buffer; less at the end of the file only.
    size_t read(std::string& buffer)
    {
        size_t all = 0;
        while (all < buffer.size()) {
            const ssize_t got = ::read(m_fd, buffer.data() + all, buffer.size() - all);
            if (got == 0)
                break;
            if (got > 0)
                all += static_cast<size_t>(got);
            else if (errno != EINTR)
                fail();
        }
        return all;
    }

private:
    [[noreturn]] void fail() const
    {
        throw std::system_error(errno, std::generic_category(), m_name);
    }

    std::string m_name;
    int m_fd;
    int64_t m_size = 0;
};

ValueLoader::ValueLoader(ValueStore& store, const std::wstring& path)
    : m_store(store)
    , m_file(std::make_unique<File>(path))
    , m_size(m_file->size())
    , m_piece(ValueStore::PieceSize, '\0')
{
}

ValueLoader::~ValueLoader() = default;

ValueWork::State ValueLoader::step()
{
    if (m_checked) {
        store();
        return State::Done;
    }
    look();
    return State::Going;
}

void ValueLoader::look()
{
    const size_t read = m_file->read(m_piece);
    const std::string_view bytes(m_piece.data(), read);
    if (m_store.isText() && !m_check.add(bytes))
        throw ValueFault(TextValueNotText);
    m_sum = crc32_z(m_sum, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    m_done += static_cast<int64_t>(read);
    if (read == m_piece.size())
        return;
    if (m_store.isText() && !m_check.isComplete())
        throw ValueFault(TextValueNotText);
    m_checked = true;
}

// What is there now may be another content than what was looked at.
void ValueLoader::store()
{
    m_file->rewind();
    unsigned long sum = 0;
    int64_t done = 0;
    m_store.write([&]() -> std::string_view {
        const std::string_view bytes(m_piece.data(), m_file->read(m_piece));
        sum = crc32_z(sum, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
        done += static_cast<int64_t>(bytes.size());
        if (bytes.empty() && (sum != m_sum || done != m_done))
            throw ValueFault(TextValueFileChanged);
        return bytes;
    });
}

int ValueLoader::percent() const
{
    return percentOf(m_done, m_size);
}

// --- reading whole

ValueCollector::ValueCollector(ValueStore& store)
    : m_store(store)
    , m_size(store.size())
{
    m_bytes.reserve(static_cast<size_t>(m_size));
}

ValueWork::State ValueCollector::step()
{
    const size_t before = m_bytes.size();
    m_bytes.resize(before + ValueStore::PieceSize);
    const size_t read =
        m_store.read(static_cast<int64_t>(before), m_bytes.data() + before, ValueStore::PieceSize);
    m_bytes.resize(before + read);
    return read == ValueStore::PieceSize ? State::Going : State::Done;
}

int ValueCollector::percent() const
{
    return percentOf(static_cast<int64_t>(m_bytes.size()), m_size);
}

// --- finding

ValueFinder::ValueFinder(ValueReader& reader, std::string what, int64_t from)
    : m_reader(reader)
    , m_what(std::move(what))
    , m_from(from)
    , m_at(from)
{
}

// The pieces overlap by what a find may reach over.
ValueWork::State ValueFinder::step()
{
    const std::string bytes = m_reader.bytes(m_at, ValueStore::PieceSize + m_what.size() - 1);
    const size_t place = bytes.find(m_what);
    if (place != std::string::npos) {
        m_found = m_at + static_cast<int64_t>(place);
        return State::Done;
    }
    m_at += static_cast<int64_t>(ValueStore::PieceSize);
    return m_at < m_reader.size() ? State::Going : State::Done;
}

int ValueFinder::percent() const
{
    return percentOf(m_at - m_from, m_reader.size() - m_from);
}
