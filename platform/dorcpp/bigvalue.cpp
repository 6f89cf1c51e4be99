#include <dorcpp/bigvalue.h>

#include <cerrno>

#include <sys/mman.h>

#include <dorcpp/errors.h>

namespace DorCPP {

BigValue::~BigValue()
{
    unmap();
}

void BigValue::unmap()
{
    if (m_map)
        ::munmap(m_map, m_mapped);
    m_map = nullptr;
}

void BigValue::append(const void* data, size_t size)
{
    unmap();
    if (!m_inFile && size <= maxInMemory - m_bytes.size()) {
        m_bytes.append(static_cast<const char*>(data), size);
        return;
    }
    if (!m_inFile) {
        m_file.append(m_bytes.data(), m_bytes.size());
        m_inFile = true;
        m_bytes = std::string();
    }
    m_file.append(data, size);
}

std::string_view BigValue::bytes()
{
    if (!m_inFile)
        return m_bytes;
    if (!m_map) {
        m_mapped = static_cast<size_t>(m_file.size());
        void* map = ::mmap(nullptr, m_mapped, PROT_READ, MAP_PRIVATE, m_file.descriptor(), 0);
        if (map == MAP_FAILED)
            throw makeSystemError(errno, OviAPI::Phrase::DbDetailTempRead);
        m_map = map;
    }
    return {static_cast<const char*>(m_map), m_mapped};
}

} // namespace DorCPP
