// What lies ahead of a long value that is read in pieces.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace DorCPP {

// Engines find a place in a long value by going there from its beginning, so few large pieces are
// read of it: twice as much each time while it is read on, up to 32 MB.
class PieceBuffer {
public:
    // Whether these bytes of the value are here, as many as there are.
    bool holds(const std::string& value, uint64_t offset, size_t size) const
    {
        return value == m_value && offset >= m_offset && offset <= end() &&
               (m_isLast || size <= end() - offset);
    }
    // How much to read, when these bytes are asked for.
    size_t sizeFor(const std::string& value, uint64_t offset, size_t size) const
    {
        const bool readingOn = value == m_value && offset >= m_offset && offset <= end();
        return std::max(size, readingOn ? std::min(m_bytes.size() * 2, maxSize) : minSize);
    }
    // asked: for how many bytes; fewer have come at the end of the value.
    void put(const std::string& value, uint64_t offset, std::string bytes, size_t asked)
    {
        m_value = value;
        m_offset = offset;
        m_isLast = bytes.size() < asked;
        m_bytes = std::move(bytes);
    }
    // Copies bytes that are held; returns how many. Nothing is kept behind the end of the value.
    size_t copy(uint64_t offset, void* buffer, size_t size)
    {
        const size_t n = std::min<size_t>(size, end() - offset);
        std::memcpy(buffer, m_bytes.data() + (offset - m_offset), n);
        if (m_isLast && offset + n == end())
            clear();
        return n;
    }
    void clear() { *this = PieceBuffer(); }

private:
    static constexpr size_t minSize = 1 << 20;
    static constexpr size_t maxSize = 32 << 20;

    uint64_t end() const { return m_offset + m_bytes.size(); }

    std::string m_value; // what tells it from others
    uint64_t m_offset = 0;
    std::string m_bytes;
    bool m_isLast = false; // the value ends here
};

} // namespace DorCPP
