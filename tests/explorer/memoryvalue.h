// A value for tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "explorer/valuestore.h"

// A value in memory that counts what is asked of it.
class MemoryValue : public ValueStore {
public:
    bool isNull() override { return null; }
    bool isText() const override { return text; }
    std::wstring typeName() const override { return L"BLOB"; }
    int64_t size() override { return static_cast<int64_t>(bytes.size()); }
    size_t read(int64_t offset, void* buffer, size_t size) override
    {
        ++reads;
        if (reads == failingRead)
            throw DorCPP::DorX(-1, DorCPP::CodeRowGone, "gone");
        const std::string part = bytes.substr(std::min(bytes.size(), size_t(offset)), size);
        longestRead = std::max(longestRead, size);
        part.copy(static_cast<char*>(buffer), part.size());
        return part.size();
    }
    std::wstring readOnlyReason() override { return reason; }
    using ValueStore::write;
    void write(const Pieces& next) override
    {
        std::string all;
        for (std::string_view piece = next(); !piece.empty(); piece = next())
            all += piece;
        bytes = all;
        null = false;
        ++writes;
    }
    void setNull() override { null = true; }

    std::string bytes;
    std::wstring reason;
    bool null = false;
    bool text = false;
    int reads = 0;
    int failingRead = 0;
    int writes = 0;
    size_t longestRead = 0;
};

// Bytes without a pattern that a mistake of a piece could hide in.
inline std::string noise(size_t size)
{
    std::string bytes(size, '\0');
    uint32_t state = 1;
    for (char& c : bytes) {
        state = state * 1664525U + 1013904223U;
        c = static_cast<char>(state >> 24);
    }
    return bytes;
}
