#include "explorer/maintoolbar.h"

#include "explorer/textlookup.h"

namespace {

constexpr int pictureWidth = 20; // px

struct Entry {
    Command command; // None for a separator
    int picture = 0; // its number in the resources
};

constexpr Entry entries[] = {
    {Command::Open, 50301},    {Command::Connect, 50302},  {Command::None},
    {Command::Refresh, 50303}, {Command::GoToRow, 50304},  {Command::SqlWindow, 50305},
    {Command::None},           {Command::Settings, 50306},
};

// A caption of the menu without its mnemonic and the points behind it.
std::wstring plainCaption(std::wstring text)
{
    std::erase(text, L'&');
    const size_t points = text.find(L"...");
    return points == std::wstring::npos ? text : text.substr(0, points);
}

} // namespace

MainToolBar::MainToolBar(const OviAPI::ResourceManager* resources, const MainMenu& menu)
{
    setPictureSize(pictureWidth);
    for (const Entry& entry : entries) {
        if (entry.command == Command::None) {
            addSeparator();
            continue;
        }
        OviAPI::Picture picture;
        const bool found = resources && resources->loadTransparentPicture(entry.picture, &picture);
        addButton(static_cast<int>(entry.command), found ? &picture : nullptr, L"");
    }
    loadTexts(menu);
}

void MainToolBar::loadTexts(const MainMenu& menu)
{
    for (const Entry& entry : entries) {
        if (entry.command == Command::None)
            continue;
        const auto command = static_cast<int>(entry.command);
        const std::wstring caption = plainCaption(menu.caption(entry.command));
        setCaption(command, caption.c_str());
        setButtonToolTip(command, caption.c_str(), MainMenu::shortcut(entry.command));
    }
}

void MainToolBar::enableCommand(Command command, bool enabled)
{
    enableButton(static_cast<int>(command), enabled);
}

void MainToolBar::checkCommand(Command command, bool checked)
{
    checkButton(static_cast<int>(command), checked);
}
