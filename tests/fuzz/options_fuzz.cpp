// Bytes as the content of an options file, through the XML reader into the options record.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

#include <oviapi/application.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>
#include <xmlutils/reader.h>

#include "app/typicaloptions.h"

namespace {

// The folder's file, rewritten for each input and removed at the end of the program.
class InputFile {
public:
    InputFile()
        : m_path("/dev/shm/options_fuzz." + std::to_string(::getpid()))
    {
    }
    ~InputFile() { std::remove(m_path.c_str()); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::wstring written(const uint8_t* data, size_t size) const
    {
        FILE* file = std::fopen(m_path.c_str(), "wb");
        if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0)
            std::abort();
        return std::filesystem::path(m_path).wstring();
    }

private:
    std::string m_path;
};

// Whether reading what was written gives the record again, as far as its geometry is valid.
void checkRoundTrip(const TypicalOptions& options)
{
    if (!TypicalOptions::isValidGeometry(options.MainFormRect))
        return;
    XMLUtils::XMLElementA element("Options");
    options.serialize(element, XMLUtils::XMLEncoding::Utf8);
    TypicalOptions again;
    again.deserialize(element, XMLUtils::XMLEncoding::Utf8);
    if (!(again == options))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // The engine ends with exit(): by then the toolkit's own statics are gone, so this one stays.
    static auto* application = new OviAPI::Application;
    application->start(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const InputFile file;
    XMLUtils::XMLElementA root;
    XMLUtils::XMLEncoding encoding{};
    try {
        const XMLUtils::XMLFILEReaderA reader(file.written(data, size));
        encoding = reader.encoding();
        reader.read(root);
    } catch (const XMLUtils::XMLException&) {
        return 0; // refused, as it should be
    }
    const XMLUtils::XMLElementA* element = root.findChild("Options");
    if (!element)
        return 0;
    TypicalOptions options;
    options.deserialize(*element, encoding);
    checkRoundTrip(options);
    options.deserializeForTD(*element, encoding);
    checkRoundTrip(options);
    return 0;
}
