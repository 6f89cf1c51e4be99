// The part of the application object that fits the options to the screen.
#include <algorithm>
#include <string>

#include <oviapi/systemmetrics.h>
#include <oviapi/text.h>
#include <xmlutils/exception.h>
#include <xmlutils/reader.h>

#include "app/extapp.h"
#include "app/yesnoconfirmdlg.h"

namespace {

using XMLUtils::XMLElementA;

constexpr char whiteSpace[] = " \t\r\n";
constexpr int folderSize = 4096;    // wide characters
constexpr int questionSize = 4096;  // wide characters
constexpr size_t appNameSize = 256; // bytes
constexpr int adaptQuestion = 60203;

TerminalDesc presentScreen()
{
    const OviAPI::Rect area = OviAPI::SystemMetrics::getAvailableRect();
    TerminalDesc screen;
    screen.ScreenWidth = static_cast<int32_t>(area.width());
    screen.ScreenHeight = static_cast<int32_t>(area.height());
    return screen;
}

// The name of the application's section in UTF-8, as elements are named, cut behind a character.
CharString sectionName(const wchar_t* appName)
{
    CharString name = OviAPI::wideToUtf8(appName ? appName : L"");
    size_t length = std::min(name.size(), appNameSize);
    while (length > 0 && length < name.size() && (name[length] & 0xC0) == 0x80)
        --length;
    name.resize(length);
    return name;
}

} // namespace

std::unique_ptr<DefaultConfigSection> ExtApp::searchDefaultConfigSection()
{
    wchar_t folder[folderSize] = L"";
    if (!getExecutablePath(folder, folderSize))
        return nullptr;
    DefaultConfigSectionVector sections;
    try {
        const XMLUtils::XMLFILEReaderA reader(std::wstring(folder) + L"/gui_default_settings.xml",
                                              whiteSpace);
        const DefaultConfigSectionAdder adder(sectionName(appName()), &sections, reader.encoding());
        XMLElementA root("ConfigsIndex");
        root.setAdder(&adder);
        reader.read(root);
    } catch (const XMLUtils::XMLException&) {
        return nullptr; // the file is optional
    }
    const TerminalDesc screen = presentScreen();
    double best = farthestScreen;
    uint32_t bestIndex = 0;
    for (uint32_t i = 0; i < sections.count(); ++i) {
        const double distance = screenDistance(sections[i]->terminal, screen);
        if (distance < best) {
            best = distance;
            bestIndex = i;
        }
    }
    return best < farthestScreen ? sections.take(bestIndex) : nullptr;
}

bool ExtApp::adaptToTD()
{
    TerminalDesc& screen = TerminalDesc::current();
    screen = presentScreen();
    TypicalOptions* record = options();
    if (!record)
        return false;
    const double present = screenDistance(record->TermDesc, screen);
    if (present == 0 && !freshOptions)
        return false;
    if (const auto section = searchDefaultConfigSection()) {
        const double found = screenDistance(section->terminal, screen);
        const bool closer = found < present || (freshOptions && found == present);
        const XMLElementA* element = closer ? section->find("Options") : nullptr;
        if (element && (freshOptions || confirmAdaptToTD())) {
            record->deserializeForTD(*element, section->encoding);
            record->TermDesc = screen;
            return true;
        }
    }
    freshOptions = false;
    record->TermDesc = screen;
    return false;
}

bool ExtApp::confirmAdaptToTD()
{
    if (adaptDecision != TypicalConfirm::Ask)
        return adaptDecision == TypicalConfirm::Yes;
    TypicalOptions* record = options();
    if (!record)
        return false;
    if (record->AdaptToTD.Value != TypicalConfirm::Ask) {
        adaptDecision = record->AdaptToTD.Value;
        return adaptDecision == TypicalConfirm::Yes;
    }
    wchar_t question[questionSize] = L"";
    loadRRSString(adaptQuestion, question, questionSize, OviAPI::ResourceManager::CurrentLanguage);
    YesNoConfirmDlg dialog(0, nullptr, question);
    const bool yes = dialog.create() && dialog.execModal() == 1;
    adaptDecision = yes ? TypicalConfirm::Yes : TypicalConfirm::No;
    if (dialog.rememberChoice)
        record->AdaptToTD.Value = adaptDecision;
    return yes;
}
