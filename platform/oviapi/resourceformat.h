// The layout of a compiled resource file, shared by its reader and its compiler.
//
//     bytes          content (numbers are 32 bits, little end first)
//     0..7           magic
//     8              version, 1
//     12             length of the file
//     16             number of entries n
//     20..           n entries of 24 bytes: kind, id, language, scale, offset, length
//     20 + 24 n..    the data of the entries, in their order, without gaps
//     length - 4     CRC-32 of all bytes before
//
// Entries ascend by (kind, id, language, scale) and none occurs twice. Strings are UTF-8 without
// zero characters, in a language of their own, scale 0. Pictures are PNG files; their language may
// be 0 (any), their scale is 1, 2 or 3.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace OviAPI::ResourceFormat {

inline constexpr std::string_view magic{"\x89RRS\r\n\x1A\n", 8};
inline constexpr uint32_t version = 1;
inline constexpr size_t headerSize = 20;
inline constexpr size_t entrySize = 24;
inline constexpr size_t checksumSize = 4;
inline constexpr size_t maxFileSize = size_t{64} << 20;
inline constexpr uint32_t maxId = 0x7FFFFFFF;
inline constexpr uint32_t anyLanguage = 0;
inline constexpr uint32_t maxLanguage = 2;
inline constexpr uint32_t maxScale = 3;

enum class Kind : uint32_t { String = 1, Picture = 2 };

struct Key {
    Kind kind = Kind::String;
    uint32_t id = 0;
    uint32_t language = anyLanguage;
    uint32_t scale = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the 0 inside the comparison for one
    auto operator<=>(const Key&) const = default;
};

// The CRC-32 of ISO 3309 (polynomial 0x04C11DB7, reflected), as PNG and ZIP use it.
inline uint32_t crc32(std::string_view bytes)
{
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < t.size(); ++i) {
            uint32_t c = i;
            for (int bit = 0; bit < 8; ++bit)
                c = c & 1 ? c >> 1 ^ 0xEDB88320U : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    uint32_t crc = 0xFFFFFFFFU;
    for (const char c : bytes)
        crc = crc >> 8 ^ table[(crc ^ static_cast<unsigned char>(c)) & 0xFFU];
    return ~crc;
}

inline void putNumber(std::string& out, uint32_t number)
{
    for (int shift = 0; shift < 32; shift += 8)
        out += static_cast<char>(number >> shift & 0xFFU);
}

// The caller has checked that four bytes stand there.
inline uint32_t getNumber(std::string_view bytes, size_t at)
{
    uint32_t number = 0;
    for (size_t i = 4; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

} // namespace OviAPI::ResourceFormat
