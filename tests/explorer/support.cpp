#include "support.h"

#include <cstdlib>
#include <stdexcept>

namespace fs = std::filesystem;

fs::path fixtureFolder()
{
    return OVI_FIXTURES;
}

TemporaryFolder::TemporaryFolder()
{
    std::string name = (fs::temp_directory_path() / "explorer-test-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    m_path = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored; // a file left behind in the temporary folder harms no test
    fs::remove_all(m_path, ignored);
}
