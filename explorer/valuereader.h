// Any place of a long value, a page at a time.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "explorer/valuestore.h"

// Keeps the pages that were read last. Points to the store. Throws DorX.
class ValueReader {
public:
    static constexpr size_t KeptPages = 4; // of ValueStore::PieceSize bytes

    explicit ValueReader(ValueStore& store);

    // The length of the value as it was when it was read first, in bytes.
    int64_t size() const { return m_size; }
    // Bytes from an offset on, fewer at the end of the value.
    std::string bytes(int64_t offset, size_t count);
    // Reads everything anew, after the value was replaced.
    void reset();

private:
    struct Page {
        int64_t offset;
        std::string bytes;
    };

    const Page& pageAt(int64_t offset);

    ValueStore& m_store;
    int64_t m_size = 0;
    std::list<Page> m_pages; // the one used last in front
};
