#include "explorer/files.h"

#include <array>
#include <fstream>
#include <system_error>

#include <zlib.h>

namespace {

gzFile handle(void* file)
{
    return static_cast<gzFile>(file);
}

} // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& path, size_t limit)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    std::string bytes;
    std::array<char, 65536> piece;
    while (file.read(piece.data(), piece.size()), file.gcount() > 0) {
        bytes.append(piece.data(), static_cast<size_t>(file.gcount()));
        if (bytes.size() > limit)
            return std::nullopt;
    }
    return bytes;
}

void LineFile::Closer::operator()(void* file) const
{
    gzclose(handle(file));
}

LineFile::LineFile(const std::filesystem::path& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return;
    m_file.reset(gzopen(path.c_str(), "rbe"));
    if (m_file)
        gzbuffer(handle(m_file.get()), 65536);
}

LineFile::~LineFile() = default;

bool LineFile::next(std::string& line)
{
    std::array<char, 4096> text;
    if (!m_file || !gzgets(handle(m_file.get()), text.data(), static_cast<int>(text.size())))
        return false;
    line = text.data();
    if (!line.empty() && line.back() == '\n')
        line.pop_back();
    return true;
}
