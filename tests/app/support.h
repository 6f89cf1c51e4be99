// An application, its folders and its resources for tests of the application frame.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <xmlutils/element.h>

#include "app/extapp.h"
#include "tests/app/locales.h"

// A folder of its own, removed with everything in it.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

void writeFile(const std::filesystem::path& path, std::string_view bytes);
std::string readFile(const std::filesystem::path& path);

// Builds a compiled resource file.
class ResourceBuilder {
public:
    static constexpr uint32_t english = 1;
    static constexpr uint32_t russian = 2;

    void addString(uint32_t id, const wchar_t* text, uint32_t language = english);
    // A square of one colour, the same in all languages.
    void addPicture(uint32_t id, int size);
    std::string compiled() const;

private:
    using Key = std::tuple<uint32_t, uint32_t, uint32_t, uint32_t>;
    std::map<Key, std::string> m_entries;
};

// Runs its own steps into a list and lets a test make one of them fail.
class TestApp : public ExtApp {
public:
    const wchar_t* appName() override
    {
        ++nameAsked;
        return name.c_str();
    }
    void parseParameters(int argc, wchar_t** argv) override;
    void initBeforeOptions() override;
    void initAfterOptions() override;
    void deInitAfterOptions() override;
    void loadOptions() override;
    void saveOptions() override;
    void initResourceManager() override;
    bool adaptToTD() override;
    TypicalOptions* options() override { return record; }

    using ExtApp::adaptDecision;
    using ExtApp::freshOptions;
    using ExtApp::resourceManager;

    std::vector<std::string> steps;
    std::function<void(const std::string& step)> onStep;
    std::wstring name = L"sample";
    int nameAsked = 0;
    TypicalOptions ownRecord;
    TypicalOptions* record = &ownRecord;

private:
    void step(const char* now);
};

// A user without settings and a program folder without files, for the life of the object.
class TestFolders {
public:
    TestFolders();
    ~TestFolders();
    TestFolders(const TestFolders&) = delete;
    TestFolders& operator=(const TestFolders&) = delete;

    std::filesystem::path program() const { return m_root.path() / "program"; }
    std::filesystem::path config() const { return m_root.path() / "config"; }
    std::filesystem::path optionsFile() const { return config() / "sample" / "options.dat"; }
    std::filesystem::path defaultsFile() const { return program() / "gui_default_settings.xml"; }

    void writeOptions(std::string_view bytes) const;
    void writeDefaults(std::string_view bytes) const { writeFile(defaultsFile(), bytes); }
    void writeResources(const ResourceBuilder& resources) const;

private:
    TempFolder m_root;
    ScopedVariable m_configHome;
};

// The strings that the application frame uses.
ResourceBuilder frameResources();

// Parts of documents.
std::string element(const std::string& name, const std::string& content);
std::string number(const char* name, long long value);
std::string rectElement(long long left, long long top, long long right, long long bottom);
std::string fontElement(const char* name, const char* face, long long size);
std::string terminalElement(long long width, long long height);
// A document with one root element.
std::string document(const std::string& content, const std::string& root = "Root");
// The element of a text, read by the XML reader.
XMLUtils::XMLElementA parsed(const std::string& text);
