// A value that is collected in pieces before it is sent.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <dorcpp/spool.h>

namespace DorCPP {

// Lies in memory up to 8 MB, then in a temporary file. Throws DorX (CodeDiskFull, CodeInputOutput,
// CodeNoMemory).
class BigValue {
public:
    static constexpr size_t maxInMemory = 8 << 20; // bytes

    BigValue() = default;
    ~BigValue();
    BigValue(const BigValue&) = delete;
    BigValue& operator=(const BigValue&) = delete;

    void append(const void* data, size_t size);
    size_t size() const { return m_inFile ? static_cast<size_t>(m_file.size()) : m_bytes.size(); }
    bool isInFile() const { return m_inFile; }
    // The whole value, valid until the next call; a file is mapped into memory.
    std::string_view bytes();

private:
    void unmap();

    std::string m_bytes;
    TempFile m_file;
    bool m_inFile = false;
    void* m_map = nullptr;
    size_t m_mapped = 0;
};

} // namespace DorCPP
