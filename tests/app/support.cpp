#include "tests/app/support.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include <oviapi/picture.h>
#include <oviapi/resourceformat.h>
#include <oviapi/text.h>
#include <xmlutils/reader.h>

namespace fs = std::filesystem;

TempFolder::TempFolder()
{
    std::string name = (fs::temp_directory_path() / "app_test.XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("cannot make a folder");
    m_path = name;
}

TempFolder::~TempFolder()
{
    std::error_code ignored; // a folder that stays behind does not change a result
    fs::remove_all(m_path, ignored);
}

void writeFile(const fs::path& path, std::string_view bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void ResourceBuilder::addString(uint32_t id, const wchar_t* text, uint32_t language)
{
    const auto kind = static_cast<uint32_t>(OviAPI::ResourceFormat::Kind::String);
    m_entries[{kind, id, language, 0}] = OviAPI::wideToUtf8(text);
}

void ResourceBuilder::addPicture(uint32_t id, int size)
{
    const TempFolder folder;
    const fs::path file = folder.path() / "picture.png";
    OviAPI::Picture({size, size}, OviAPI::Color::Red).savePng(file.wstring());
    const auto kind = static_cast<uint32_t>(OviAPI::ResourceFormat::Kind::Picture);
    m_entries[{kind, id, OviAPI::ResourceFormat::anyLanguage, 1}] = readFile(file);
}

std::string ResourceBuilder::compiled() const
{
    namespace Format = OviAPI::ResourceFormat;
    size_t offset = Format::headerSize + Format::entrySize * m_entries.size();
    size_t total = offset + Format::checksumSize;
    for (const auto& [key, data] : m_entries)
        total += data.size();
    std::string out(Format::magic);
    Format::putNumber(out, Format::version);
    Format::putNumber(out, static_cast<uint32_t>(total));
    Format::putNumber(out, static_cast<uint32_t>(m_entries.size()));
    for (const auto& [key, data] : m_entries) {
        const auto& [kind, id, language, scale] = key;
        for (const uint32_t value : {kind, id, language, scale})
            Format::putNumber(out, value);
        Format::putNumber(out, static_cast<uint32_t>(offset));
        Format::putNumber(out, static_cast<uint32_t>(data.size()));
        offset += data.size();
    }
    for (const auto& [key, data] : m_entries)
        out += data;
    Format::putNumber(out, Format::crc32(out));
    return out;
}

void TestApp::step(const char* now)
{
    steps.emplace_back(now);
    if (onStep)
        onStep(now);
}

void TestApp::parseParameters(int argc, wchar_t** argv)
{
    step("parseParameters");
    ExtApp::parseParameters(argc, argv);
}

void TestApp::initBeforeOptions()
{
    step("initBeforeOptions");
}

void TestApp::initAfterOptions()
{
    step("initAfterOptions");
}

void TestApp::deInitAfterOptions()
{
    step("deInitAfterOptions");
}

void TestApp::loadOptions()
{
    step("loadOptions");
    ExtApp::loadOptions();
}

void TestApp::saveOptions()
{
    step("saveOptions");
    ExtApp::saveOptions();
}

void TestApp::initResourceManager()
{
    step("initResourceManager");
    ExtApp::initResourceManager();
}

bool TestApp::adaptToTD()
{
    step("adaptToTD");
    return ExtApp::adaptToTD();
}

TestFolders::TestFolders()
    : m_configHome("XDG_CONFIG_HOME", config().c_str())
{
    fs::create_directories(program());
    fs::create_directories(config());
    OviAPI::Application::setExecutablePath(program().wstring().c_str());
}

TestFolders::~TestFolders()
{
    OviAPI::Application::setExecutablePath(nullptr);
}

void TestFolders::writeOptions(std::string_view bytes) const
{
    writeFile(optionsFile(), bytes);
}

void TestFolders::writeResources(const ResourceBuilder& resources) const
{
    writeFile(program() / "typical.rrs", resources.compiled());
}

ResourceBuilder frameResources()
{
    ResourceBuilder resources;
    resources.addString(60001, L"Failure");
    resources.addString(60001, L"\u041E\u0448\u0438\u0431\u043A\u0430", ResourceBuilder::russian);
    resources.addString(60003, L"Question");
    resources.addString(60005, L"Confirm");
    resources.addString(60013, L"&Yes");
    resources.addString(60014, L"&No");
    resources.addString(60203, L"Adapt to this screen?");
    resources.addString(60221, L"&Remember");
    resources.addString(60504, L"Save changes to %ls?");
    resources.addString(50001, L"first of the low range");
    resources.addString(59999, L"last of the low range");
    resources.addString(69999, L"last of the high range");
    for (const uint32_t id : {50000U, 60000U, 70000U, 1U})
        resources.addString(id, L"outside");
    return resources;
}

std::string element(const std::string& name, const std::string& content)
{
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string number(const char* name, long long value)
{
    return element(name, std::to_string(value));
}

std::string rectElement(long long left, long long top, long long right, long long bottom)
{
    return element("MainFormRect", number("Left", left) + number("Right", right) +
                                       number("Top", top) + number("Bottom", bottom));
}

std::string fontElement(const char* name, const char* face, long long size)
{
    return element(name, element("Name", face) + number("Size", size) + number("Bold", 1) +
                             number("Italic", 0) + number("Underline", 5) + number("Strikeout", 0));
}

std::string terminalElement(long long width, long long height)
{
    return element("TermDesc", number("ScreenWidth", width) + number("ScreenHeight", height));
}

std::string document(const std::string& content, const std::string& root)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + element(root, content);
}

XMLUtils::XMLElementA parsed(const std::string& text)
{
    const TempFolder folder;
    const fs::path file = folder.path() / "element.xml";
    writeFile(file, text);
    XMLUtils::XMLElementA root;
    XMLUtils::XMLFILEReaderA(file.wstring()).read(root);
    return root;
}
