#include "explorer/mainmenu.h"

#include <algorithm>

#include "explorer/textlookup.h"

namespace {

// An entry stands below the last one before it that lies one level higher. A level of 0 is the bar.
struct Entry {
    int level;
    int textId; // 0 for a separator
    Command command = Command::None;
    const wchar_t* keys = nullptr;
    const wchar_t* keysOfView = nullptr; // shown only: the record view itself knows them
};

constexpr Entry entries[] = {
    {0, TextMenuFile},
    {1, TextMenuOpen, Command::Open, L"Ctrl+O"},
    {1, TextMenuConnect, Command::Connect, L"Ctrl+Shift+O"},
    {1, TextMenuSample, Command::Sample},
    {1, TextMenuReconnect, Command::Reconnect},
    {1, TextMenuClose, Command::Close, L"Ctrl+W"},
    {1, 0},
    {1, TextMenuExit, Command::Exit, L"Ctrl+Q"},
    {0, TextMenuView},
    {1, TextMenuRefresh, Command::Refresh, L"F5"},
    {1, TextMenuFit, Command::FitColumns, L"Ctrl+Shift+E"},
    {1, TextMenuGoToRow, Command::GoToRow, L"Ctrl+G"},
    {1, TextMenuShowValue, Command::ShowValue, L"F4"},
    {1, 0},
    {1, TextMenuNextPane, Command::NextPane, L"F6"},
    {1, TextMenuPreviousPane, Command::PreviousPane, L"Shift+F6"},
    {1, 0},
    {1, TextMenuToolBar, Command::ToolBar},
    {1, TextMenuMonitor, Command::Monitor, L"F8"},
    {0, TextMenuRows},
    {1, TextMenuNewRow, Command::NewRow, nullptr, L"Ins"},
    {1, TextMenuDeleteRow, Command::DeleteRow, nullptr, L"Ctrl+Del"},
    {1, TextMenuSetNull, Command::SetNull, nullptr, L"Ctrl+0"},
    {1, TextMenuSetDefault, Command::SetDefault, nullptr, L"Ctrl+Shift+0"},
    {1, 0},
    {1, TextMenuAddDetails, Command::AddDetails, L"Ctrl+D"},
    {1, TextMenuRemoveDetails, Command::RemoveDetails, L"Ctrl+Shift+D"},
    {0, TextMenuSql},
    {1, TextMenuSqlWindow, Command::SqlWindow, L"Ctrl+E"},
    {1, 0},
    {1, TextMenuSqlRun, Command::SqlRun},
    {1, TextMenuSqlRunAll, Command::SqlRunAll, L"Shift+F5"},
    {1, TextMenuSqlStop, Command::SqlStop},
    {1, 0},
    {1, TextMenuCommit, Command::Commit},
    {1, TextMenuRollBack, Command::RollBack},
    {0, TextMenuOptions},
    {1, TextMenuLanguage},
    {2, TextMenuEnglish, Command::English},
    {2, TextMenuRussian, Command::Russian},
    {2, 0},
    {2, TextMenuOtherLanguage, Command::SwitchLanguage, L"Ctrl+L"},
    {1, TextMenuTextSize},
    {2, TextMenuLarger, Command::Larger, L"Ctrl++"},
    {2, TextMenuSmaller, Command::Smaller, L"Ctrl+-"},
    {2, TextMenuNormal, Command::NormalSize, L"Ctrl+Alt+0"},
    {2, 0},
    {2, TextMenuControlsLarger, Command::ControlsLarger},
    {2, TextMenuControlsSmaller, Command::ControlsSmaller},
    {2, TextMenuTablesLarger, Command::TablesLarger},
    {2, TextMenuTablesSmaller, Command::TablesSmaller},
    {1, 0},
    {1, TextMenuSettings, Command::Settings, L"Ctrl+,"},
    {0, TextMenuHelp},
    {1, TextMenuKeys, Command::Keys, L"F1"},
    {1, TextMenuAbout, Command::About},
};

} // namespace

MainMenu::MainMenu()
{
    std::vector<OviAPI::WMenuItem*> above{nullptr}; // by level
    for (const Entry& entry : entries) {
        const auto level = static_cast<size_t>(entry.level);
        above.resize(level + 1);
        if (entry.textId == 0) {
            m_menu.insertSeparator(above[level]);
            continue;
        }
        OviAPI::WMenuItem* item = m_menu.insertItem(above[level], L"");
        above.push_back(item);
        m_items.push_back({entry.command, entry.textId, item, entry.keysOfView});
        if (entry.command == Command::None)
            continue;
        if (entry.keys)
            m_menu.setShortcut(item, entry.keys);
        OviAPI::connect<&OviAPI::WMenuItem::onClick>(
            *item, *this, [this, command = entry.command](OviAPI::Object*) -> OviAPI::SlotResult {
                OviAPI::dispatch<&MainMenu::onCommand>(*this, command);
                return 1;
            });
    }
    loadTexts();
}

bool MainMenu::onCommand(Command)
{
    return false;
}

void MainMenu::loadTexts()
{
    for (const Item& item : m_items) {
        std::wstring text = textOf(static_cast<TextId>(item.textId));
        if (item.keysOfView)
            text += std::wstring(L"\t") + item.keysOfView;
        m_menu.setItem(item.item, text.c_str());
    }
}

std::wstring MainMenu::caption(Command command) const
{
    const OviAPI::WMenuItem* item = itemOf(command);
    return item ? item->text() : std::wstring();
}

const wchar_t* MainMenu::shortcut(Command command)
{
    const auto found = std::find_if(std::begin(entries), std::end(entries),
                                    [command](const Entry& e) { return e.command == command; });
    return found == std::end(entries) ? nullptr : found->keys;
}

void MainMenu::setShortcut(Command command, const wchar_t* keys)
{
    m_menu.setShortcut(itemOf(command), keys);
}

void MainMenu::enable(Command command, bool enabled)
{
    m_menu.enable(itemOf(command), enabled);
}

void MainMenu::check(Command command, bool checked)
{
    m_menu.check(itemOf(command), checked);
}

OviAPI::WMenuItem* MainMenu::itemOf(Command command) const
{
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [command](const Item& i) { return i.command == command; });
    return found == m_items.end() ? nullptr : found->item;
}
