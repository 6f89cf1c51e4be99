// The explorer's window.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "app/extform.h"
#include "explorer/command.h"
#include "explorer/databasesession.h"
#include "explorer/exploreroptions.h"
#include "explorer/machinedata.h"
#include "explorer/mainmenu.h"
#include "explorer/mainstatus.h"
#include "explorer/maintoolbar.h"
#include "explorer/opening.h"
#include "explorer/splitterbar.h"
#include "explorer/tablecounter.h"
#include "explorer/tablelist.h"
#include "explorer/tablepane.h"

// A list of tables on the left, the rows of the chosen one on the right. Points to the options,
// keeps them true while it lives and puts its place and size into them when it is closed.
class MainForm : public WExtForm {
public:
    MainForm(ExplorerOptions& options, OviAPI::ResourceManager* resources);
    ~MainForm() override;

    // Where the sample database lies, or is made, and of what; for tests.
    void setSample(const MachineData& machine, const std::filesystem::path& path);

    bool create() override;

    // Opens a database and shows its tables; handles events meanwhile. False when the user
    // stops it and when it fails, which a box tells; what was open stays then. name: in multibyte
    // text.
    bool openDatabase(const std::string& name);
    // Opens the sample database; makes it first where it is not there yet.
    bool openSample();
    // Opens what was open at the end of the last run, the sample where that was nothing.
    void openLast();
    void closeDatabase();

    void execute(Command command);
    void setLanguage(enum TypicalOptions::Language language);

    // Whether a database is being opened, or a table read or counted.
    bool isBusy() const
    {
        return m_opening.isRunning() || m_pane.isLoading() || m_counter.isRunning();
    }
    DatabaseSession* session() const { return m_session.get(); }
    MainMenu& mainMenu() { return m_menu; }
    TableList& list() { return m_list; }
    TablePane& pane() { return m_pane; }
    SplitterBar& splitter() { return m_splitter; }
    MainToolBar& toolBar() { return m_tools; }
    MainStatus& status() { return m_status; }

    bool onClose() override;
    bool onSize() override;
    bool onKeyDown(OviAPI::VirtualKey key) override;
    using WExtForm::onCharsetChanged;
    OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender,
                                        OviAPI::ResourceManager* rm) override;

private:
    OviAPI::SlotResult onMenuCommand(OviAPI::Object*, Command command);
    OviAPI::SlotResult onToolCommand(OviAPI::Object*, int command);
    OviAPI::SlotResult onListRow(OviAPI::Object*, long previous, long row);
    OviAPI::SlotResult onPlaceChanged(OviAPI::Object*);
    OviAPI::SlotResult onSplit(OviAPI::Object*, int left);

    bool buildSample();
    void askForDatabase();
    void connectToDatabase();
    void changeSettings();
    void takeSession(std::unique_ptr<DatabaseSession> session);
    void showTables(const std::wstring& current);
    void showCurrentTable();
    void startCounting();
    void refresh();
    void goToRow();
    void nextPane(int step);
    void showToolBar(bool shown);
    void resizeText(int kind, int step);
    void normalText();
    void applySettings();
    void applyFonts();
    void loadTexts();
    void updateTitle();
    void updateStatus();
    void updateMenu();
    void layOut();
    void showError(TextId format, const std::wstring& reason);

    ExplorerOptions& m_options;
    MachineData m_machine;
    std::filesystem::path m_samplePath;
    std::unique_ptr<DatabaseSession> m_session;
    Opening m_opening;
    MainMenu m_menu;
    MainToolBar m_tools;
    TableList m_list;
    SplitterBar m_splitter;
    TablePane m_pane;
    MainStatus m_status;
    TableCounter m_counter; // goes before the session does
    bool m_filling = false; // the list is being filled: its focus means nothing
};
