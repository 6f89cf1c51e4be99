// The characters of one-byte character sets, as the system knows them. Not exported.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include <iconv.h>

namespace OviAPI {

// The Unicode character of each byte; -1 for a byte that stands for none.
using ByteCodes = std::array<int, 256>;

// Nothing when the system has no conversion from the set of this name.
inline std::optional<ByteCodes> byteCodesOf(const char* name)
{
    iconv_t converter = iconv_open("WCHAR_T", name);
    if (converter == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    ByteCodes codes{};
    for (std::size_t i = 0; i < codes.size(); ++i) {
        char byte = static_cast<char>(i);
        wchar_t character = 0;
        char* in = &byte;
        char* out = reinterpret_cast<char*>(&character);
        std::size_t inLeft = 1;
        std::size_t outLeft = sizeof character;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const std::size_t result = iconv(converter, &in, &inLeft, &out, &outLeft);
        const bool converted = result != static_cast<std::size_t>(-1) && outLeft == 0;
        codes[i] = converted ? static_cast<int>(character) : -1;
    }
    iconv_close(converter);
    return codes;
}

} // namespace OviAPI
