#include "app/extapp.h"

#include <strings.h>

#include <clocale>
#include <string>

#include <oviapi/lexception.h>
#include <oviapi/msgbox.h>
#include <oviapi/phrases.h>
#include <oviapi/text.h>
#include <xmlutils/exception.h>
#include <xmlutils/reader.h>
#include <xmlutils/writer.h>

namespace {

using OviAPI::MsgBox;
using XMLUtils::XMLElementA;
using XMLUtils::XMLEncoding;
using XMLUtils::XMLException;

constexpr wchar_t optionsFile[] = L"options.dat";
constexpr char optionsElement[] = "Options";
constexpr int forReading = 0;
constexpr int forWriting = 1;

// Strings of "typical.rrs".
enum StringId : int {
    ErrorTitle = 60001,
    AskToSaveTitle = 60003,
    ConfirmTitle = 60005,
    AskToSaveFormat = 60504,
};

// Buffers, in wide characters.
constexpr int titleSize = 256;
constexpr int textSize = 4096;
constexpr int questionSize = 8192;

void showError(const LException& e)
{
    if (e.hasMessage())
        MsgBox::show(L"Error", e.fullMessage().c_str(), MsgBox::Ok);
}

void showWarning(const wchar_t* what, const XMLException& e)
{
    MsgBox::show(L"Warning", (what + e.message()).c_str(), MsgBox::Ok);
}

bool affirmed(const wchar_t* title, const wchar_t* question)
{
    return MsgBox::show(title, question, MsgBox::Yes | MsgBox::No) == MsgBox::Yes;
}

// Whether the library's range of strings has the id: 50000, 60000 and 70000 belong to none.
bool isLibraryString(int id)
{
    return (id > 50000 && id < 60000) || (id > 60000 && id < 70000);
}

} // namespace

ExtApp::ExtApp() = default;

ExtApp::~ExtApp()
{
    OviAPI::loadPhrases(nullptr);
}

bool ExtApp::initApplication(int argc, wchar_t** argv)
{
    try {
        parseParameters(argc, argv);
        initBeforeOptions();
        loadOptions();
        initResourceManager();
        adaptToTD();
        initAfterOptions();
        return true;
    } catch (const LException& e) {
        showError(e);
        return false;
    }
}

void ExtApp::deInitApplication()
{
    try {
        saveOptions();
        deInitAfterOptions();
    } catch (const LException& e) {
        showError(e);
    }
}

void ExtApp::onResolutionChanged() {}

OviAPI::Font* ExtApp::fontForRole(int role)
{
    TypicalOptions* record = options();
    if (!record)
        return nullptr;
    switch (role) {
    case ControlFont:
        return &record->FontControls;
    case EditFont:
        return &record->FontEdits;
    case TreeFont:
        return &record->FontTree;
    default:
        return nullptr;
    }
}

bool ExtApp::loadRRSString(int id, wchar_t* buf, int size, int lang)
{
    return isLibraryString(id) && resourceManager &&
           resourceManager->loadString(id, buf, size, lang);
}

bool ExtApp::loadRRSPicture(int, OviAPI::Picture*, int)
{
    return false;
}

bool ExtApp::loadRRSBitmap(int, OviAPI::Bitmap*, int)
{
    return false;
}

void ExtApp::parseParameters(int, wchar_t**) {}

void ExtApp::optionsAdaptedToTD() {}

void ExtApp::loadOptions()
{
    if (!options())
        throw LException("extapp", 148, L"Error while loading options");
    XMLEncoding encoding{};
    XMLElementA root;
    const std::wstring path = getConfigFilePath(optionsFile, forReading);
    const XMLElementA* element = getXMLElement(path.c_str(), encoding, root, optionsElement);
    if (!element) {
        options()->initDefaults();
        return;
    }
    try {
        options()->deserialize(*element, encoding);
        freshOptions = false;
    } catch (const XMLException& e) {
        showWarning(L"Can not read options file\n", e);
        options()->initDefaults();
    }
}

void ExtApp::saveOptions()
{
    if (!options())
        throw LException("extapp", 204, L"Internal error");
    try {
        XMLElementA root;
        options()->serialize(root.addChild(optionsElement), XMLEncoding::Utf8);
        const XMLUtils::XMLFILEWriterA writer(getConfigFilePath(optionsFile, forWriting),
                                              XMLEncoding::Utf8);
        writer.write(root);
    } catch (const XMLException& e) {
        showWarning(L"Can't write options file\n", e);
    }
}

XMLElementA* ExtApp::getXMLElement(const wchar_t* path, XMLEncoding& enc, XMLElementA& root,
                                   const char* name)
{
    try {
        const XMLUtils::XMLFILEReaderA reader(path);
        enc = reader.encoding();
        reader.read(root);
        return &root.getChild(name);
    } catch (const XMLException&) {
        return nullptr; // the caller has defaults
    }
}

void ExtApp::initResourceManager()
{
    wchar_t folder[textSize] = L"";
    const bool known = getExecutablePath(folder, textSize);
    auto manager =
        std::make_unique<OviAPI::ResourceManager>((std::wstring(folder) + L"/typical.rrs").c_str());
    if (!known || manager->failed())
        throw LException("extapp", 235, L"Error while reading resources file");
    resourceManager = std::move(manager);
    setLanguage(options() ? options()->Language : TypicalOptions::DefaultLanguage);
}

void ExtApp::setLanguage(enum TypicalOptions::Language lang)
{
    if (!resourceManager)
        return;
    resourceManager->setLanguage(getRRSLang(lang));
    OviAPI::loadPhrases([this](int number) {
        wchar_t text[textSize] = L"";
        loadRRSString(number, text, textSize, OviAPI::ResourceManager::CurrentLanguage);
        return std::wstring(text);
    });
}

int ExtApp::getRRSLang(enum TypicalOptions::Language lang) const
{
    return lang == TypicalOptions::Koi8Language ? OviAPI::ResourceManager::Russian
                                                : OviAPI::ResourceManager::English;
}

enum TypicalOptions::Language ExtApp::getDefaultLang()
{
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, "");
    const std::string name = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, before.c_str());
    const size_t dot = name.find('.');
    const char* codeSet = name.c_str() + (dot == std::string::npos ? 0 : dot + 1);
    const bool koi8 = strcasecmp(codeSet, "KOI8-R") == 0 || strcasecmp(codeSet, "KOI8R") == 0;
    return koi8 ? TypicalOptions::Koi8Language : TypicalOptions::DefaultLanguage;
}

void ExtApp::showTypicalError(int textId)
{
    wchar_t title[titleSize] = L"";
    wchar_t text[textSize] = L"";
    if (loadRRSString(ErrorTitle, title, titleSize, OviAPI::ResourceManager::CurrentLanguage) &&
        loadRRSString(textId, text, textSize, OviAPI::ResourceManager::CurrentLanguage))
        MsgBox::show(title, text, MsgBox::Ok);
}

bool ExtApp::requestConfirm(int textId)
{
    wchar_t title[titleSize] = L"";
    wchar_t text[textSize] = L"";
    return loadRRSString(ConfirmTitle, title, titleSize,
                         OviAPI::ResourceManager::CurrentLanguage) &&
           loadRRSString(textId, text, textSize, OviAPI::ResourceManager::CurrentLanguage) &&
           affirmed(title, text);
}

bool ExtApp::askToSave(const wchar_t* name)
{
    wchar_t title[titleSize] = L"";
    wchar_t format[textSize] = L"";
    loadRRSString(AskToSaveTitle, title, titleSize, OviAPI::ResourceManager::CurrentLanguage);
    loadRRSString(AskToSaveFormat, format, textSize, OviAPI::ResourceManager::CurrentLanguage);
    wchar_t question[questionSize];
    OviAPI::copyText(question, questionSize, OviAPI::substitute(format, name ? name : L""));
    return affirmed(title, question);
}
