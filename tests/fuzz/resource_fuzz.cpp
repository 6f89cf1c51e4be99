// Reads any bytes as a compiled resource file, as they are and with length and checksum made good,
// and as a source text of the resource compiler, whose result must be readable.
#include <oviapi/resourcefile.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/rrsc/compiler.h"

namespace {

using OviAPI::ResourceFile;
using namespace OviAPI::ResourceFormat;

constexpr size_t lengthAt = 12;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

// Every entry must be found under its key, inside the file.
void checkFile(std::string bytes)
{
    const size_t size = bytes.size();
    std::wstring error;
    const auto file = ResourceFile::parse(std::move(bytes), error);
    require(file.has_value() == error.empty());
    size_t data = 0;
    for (size_t i = 0; file && i < file->count(); ++i) {
        const auto found = file->find(file->key(i));
        require(found.has_value());
        for (const char c : *found)
            data += c != '\0';
    }
    require(data <= size);
}

std::string repaired(std::string bytes)
{
    if (bytes.size() < headerSize + checksumSize)
        return bytes;
    std::string number;
    putNumber(number, static_cast<uint32_t>(bytes.size()));
    bytes.replace(lengthAt, number.size(), number);
    number.clear();
    putNumber(number, crc32(std::string_view(bytes).substr(0, bytes.size() - checksumSize)));
    return bytes.replace(bytes.size() - checksumSize, checksumSize, number);
}

void checkSource(std::string_view source)
{
    Rrsc::Compiler compiler;
    compiler.addStrings("english", source, 1);
    compiler.addStrings("russian", source, 2);
    compiler.checkLanguages();
    if (!compiler.errors().empty())
        return;
    std::wstring error;
    require(ResourceFile::parse(compiler.result(), error).has_value());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    checkFile(bytes);
    checkFile(repaired(bytes));
    checkSource(bytes);
    return 0;
}
