#include <dorcpp/keylist.h>

#include <algorithm>

namespace DorCPP {

void KeyList::seal()
{
    const auto distance = [](int64_t from, int64_t to) {
        return static_cast<uint64_t>(to) - static_cast<uint64_t>(from);
    };
    Chunk chunk;
    bool run = true;
    for (size_t i = 1; i < chunkSize && run; ++i)
        run = distance(m_open[0], m_open[i]) == i;
    const auto [low, high] = std::minmax_element(m_open.begin(), m_open.end());
    if (run) {
        chunk.base = static_cast<uint64_t>(m_open[0]);
    } else if (distance(*low, *high) <= UINT32_MAX) {
        chunk.base = static_cast<uint64_t>(*low);
        chunk.narrow = std::make_unique<uint32_t[]>(chunkSize);
        for (size_t i = 0; i < chunkSize; ++i)
            chunk.narrow[i] = static_cast<uint32_t>(distance(*low, m_open[i]));
    } else {
        chunk.wide = std::make_unique<int64_t[]>(chunkSize);
        std::copy(m_open.begin(), m_open.end(), chunk.wide.get());
    }
    m_chunks.push_back(std::move(chunk));
    m_open.clear();
}

} // namespace DorCPP
