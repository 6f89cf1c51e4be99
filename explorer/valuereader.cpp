#include "explorer/valuereader.h"

#include <algorithm>

ValueReader::ValueReader(ValueStore& store)
    : m_store(store)
{
    reset();
}

void ValueReader::reset()
{
    m_pages.clear();
    m_size = m_store.isNull() ? 0 : m_store.size();
}

std::string ValueReader::bytes(int64_t offset, size_t count)
{
    std::string found;
    while (found.size() < count && offset >= 0 && offset < m_size) {
        const Page& page = pageAt(offset);
        const auto from = static_cast<size_t>(offset - page.offset);
        if (from >= page.bytes.size())
            break; // the value has become shorter meanwhile
        const std::string_view part =
            std::string_view(page.bytes).substr(from, count - found.size());
        found += part;
        offset += static_cast<int64_t>(part.size());
    }
    return found;
}

const ValueReader::Page& ValueReader::pageAt(int64_t offset)
{
    constexpr auto pageSize = static_cast<int64_t>(ValueStore::PieceSize);
    const int64_t start = offset - offset % pageSize;
    const auto known = std::find_if(m_pages.begin(), m_pages.end(),
                                    [start](const Page& page) { return page.offset == start; });
    if (known != m_pages.end()) {
        m_pages.splice(m_pages.begin(), m_pages, known);
        return m_pages.front();
    }
    Page page{start, std::string(ValueStore::PieceSize, '\0')};
    page.bytes.resize(m_store.read(start, page.bytes.data(), page.bytes.size()));
    m_pages.push_front(std::move(page));
    if (m_pages.size() > KeptPages)
        m_pages.pop_back();
    return m_pages.front();
}
