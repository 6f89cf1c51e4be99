#include <dorcpp/spool.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include <dorcpp/errors.h>

namespace DorCPP {

TempFile::~TempFile()
{
    if (m_file >= 0)
        ::close(m_file);
}

void TempFile::open()
{
    const char* named = std::getenv("TMPDIR");
    const std::string folder = named && *named ? named : "/tmp";
    m_file = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (m_file < 0) { // a file system without nameless files
        std::string path = folder + "/dorcppXXXXXX";
        m_file = ::mkostemp(path.data(), O_CLOEXEC);
        if (m_file >= 0)
            ::unlink(path.c_str());
    }
    if (m_file < 0)
        throw makeSystemError(errno, OviAPI::Phrase::DbDetailTempMake, folder);
}

uint64_t TempFile::append(const void* data, size_t size)
{
    if (m_file < 0)
        open();
    const uint64_t at = m_size;
    for (const char* from = static_cast<const char*>(data); size > 0;) {
        const ssize_t n = ::pwrite(m_file, from, size, static_cast<off_t>(m_size));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            throw makeSystemError(n < 0 ? errno : ENOSPC, OviAPI::Phrase::DbDetailTempWrite);
        from += n;
        size -= static_cast<size_t>(n);
        m_size += static_cast<uint64_t>(n);
    }
    return at;
}

void TempFile::read(uint64_t at, void* buffer, size_t size) const
{
    for (char* to = static_cast<char*>(buffer); size > 0;) {
        const ssize_t n = ::pread(m_file, to, size, static_cast<off_t>(at));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            throw makeSystemError(n < 0 ? errno : EIO, OviAPI::Phrase::DbDetailTempRead);
        to += n;
        size -= static_cast<size_t>(n);
        at += static_cast<uint64_t>(n);
    }
}

Spool::Spool(size_t columns)
    : m_block(columns)
    , m_rowsPerBlock(
          static_cast<int64_t>(std::clamp<size_t>(2048 / std::max<size_t>(columns, 1), 1, 64)))
{
}

void Spool::beginRow()
{
    if (static_cast<int64_t>(m_block.rows()) == m_rowsPerBlock)
        flush();
    m_block.beginRow();
    ++m_rows;
}

void Spool::addBytes(Value::Kind kind, const void* data, size_t length)
{
    if (length <= maxInside)
        m_block.addBytes(kind, data, length);
    else
        m_block.addOutside(kind, m_file.append(data, length), length);
}

void Spool::flush()
{
    const uint64_t at =
        m_file.append(m_block.cells(), m_block.cellCount() * sizeof(RowBlock::Cell));
    m_file.append(m_block.heap(), m_block.heapBytes());
    m_places.push_back({at, m_block.heapBytes()});
    m_block.clear();
}

void Spool::finish()
{
    if (!m_places.empty() && m_block.rows() > 0)
        flush();
    m_end = m_places.empty() ? m_rows : 0;
}

void Spool::read(int64_t block)
{
    const Place& place = m_places[static_cast<size_t>(block)];
    const int64_t begin = block * m_rowsPerBlock;
    const int64_t end = std::min(begin + m_rowsPerBlock, m_rows);
    m_begin = m_end = 0; // holds nothing until all was read
    m_block.resize(static_cast<size_t>(end - begin) * m_block.columns(), place.heap);
    const size_t cells = m_block.cellCount() * sizeof(RowBlock::Cell);
    m_file.read(place.at, m_block.cells(), cells);
    m_file.read(place.at + cells, m_block.heap(), place.heap);
    m_begin = begin;
    m_end = end;
}

Value Spool::value(int64_t row, size_t column)
{
    const size_t place = load(row);
    Value value = m_block.value(place, column);
    if (const RowBlock::Cell& cell = m_block.cell(place, column); cell.outside) {
        value.held = std::min<size_t>(cell.length, RowBlock::maxHeld);
        m_outside.resize(value.held);
        m_file.read(cell.at, m_outside.data(), value.held);
        value.data = m_outside.data();
    }
    return value;
}

size_t Spool::piece(int64_t row, size_t column, uint64_t offset, void* buffer, size_t size)
{
    const size_t place = load(row);
    const RowBlock::Cell& cell = m_block.cell(place, column);
    if (offset >= cell.length || (cell.kind != Value::Text && cell.kind != Value::Blob))
        return 0;
    const size_t n = std::min<size_t>(size, cell.length - offset);
    if (cell.outside)
        m_file.read(cell.at + offset, buffer, n);
    else
        std::memcpy(buffer, m_block.value(place, column).data + offset, n);
    return n;
}

} // namespace DorCPP
