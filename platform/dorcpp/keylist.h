// The 64-bit keys of an answer, in the order of its rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace DorCPP {

// Packed in chunks of 1024: as a run (first key, each one more than the one before), as 32-bit
// distances from the lowest, or plain. A million keys of a table read in order take 24 kB, keys in
// any order 4 MB.
class KeyList {
public:
    KeyList() { m_open.reserve(chunkSize); }

    void add(int64_t key)
    {
        m_open.push_back(key);
        if (m_open.size() == chunkSize)
            seal();
    }
    size_t size() const { return m_chunks.size() * chunkSize + m_open.size(); }
    // The key at index i, from 0.
    int64_t operator[](size_t i) const
    {
        if (i / chunkSize == m_chunks.size())
            return m_open[i % chunkSize];
        const Chunk& chunk = m_chunks[i / chunkSize];
        const auto place = static_cast<uint64_t>(i % chunkSize);
        if (chunk.narrow)
            return static_cast<int64_t>(chunk.base + chunk.narrow[place]);
        return chunk.wide ? chunk.wide[place] : static_cast<int64_t>(chunk.base + place);
    }

private:
    static constexpr size_t chunkSize = 1024;
    struct Chunk {
        uint64_t base = 0; // unsigned: distances may pass the signed range
        std::unique_ptr<uint32_t[]> narrow;
        std::unique_ptr<int64_t[]> wide;
    };
    void seal();

    std::vector<Chunk> m_chunks;
    std::vector<int64_t> m_open; // the chunk being filled
};

} // namespace DorCPP
