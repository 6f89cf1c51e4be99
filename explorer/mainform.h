// The explorer's window.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <oviapi/tabcontrol.h>

#include "app/extform.h"
#include "explorer/actionbar.h"
#include "explorer/aliveprobe.h"
#include "explorer/command.h"
#include "explorer/databasesession.h"
#include "explorer/exploreroptions.h"
#include "explorer/machinedata.h"
#include "explorer/mainmenu.h"
#include "explorer/mainstatus.h"
#include "explorer/maintoolbar.h"
#include "explorer/monitorpane.h"
#include "explorer/opening.h"
#include "explorer/rowsarea.h"
#include "explorer/splitterbar.h"
#include "explorer/sqlpane.h"
#include "explorer/tablecounter.h"
#include "explorer/tablelist.h"

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
    // Asks whether the database still answers, unless something runs on its connection.
    void checkConnection();
    // Whether it was found that it does not.
    bool isLost() const { return m_lost; }
    // A transaction that is open is rolled back.
    void closeDatabase();
    // Reads the text and the history of the SQL window from a file, and writes them.
    void loadSql(const std::wstring& path);
    void saveSql(const std::wstring& path);

    void execute(Command command);
    void setLanguage(enum TypicalOptions::Language language);

    // Whether a database is being opened, a table read or counted, or a statement executed.
    bool isBusy() const
    {
        return m_opening.isRunning() || m_area.isBusy() || m_counter.isRunning() ||
               m_sql.isRunning();
    }
    DatabaseSession* session() const { return m_session.get(); }
    MainMenu& mainMenu() { return m_menu; }
    TableList& list() { return m_list; }
    RowsArea& area() { return m_area; }
    TablePane& pane() { return m_area.table(); }
    // On the screen while it watches.
    MonitorPane& monitor() { return m_monitor; }
    SqlPane& sqlPane() { return m_sql; }
    OviAPI::WTabControl& tabs() { return m_tabs; }
    ActionBar& lostBar() { return m_lostBar; }
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
    OviAPI::SlotResult onRowsChanged(OviAPI::Object*, size_t level);
    OviAPI::SlotResult onShowValue(OviAPI::Object*);
    OviAPI::SlotResult onKeepAlive(OviAPI::Object*);
    OviAPI::SlotResult onAlive(OviAPI::Object*, bool alive);
    OviAPI::SlotResult onLostAction(OviAPI::Object*, int);
    OviAPI::SlotResult onTab(OviAPI::Object*, int tab);
    OviAPI::SlotResult onSqlState(OviAPI::Object*);
    OviAPI::SlotResult onSplit(OviAPI::Object*, int left);

    bool buildSample();
    void askForDatabase();
    void connectToDatabase();
    void changeSettings();
    bool takeSession(std::unique_ptr<DatabaseSession> session, DatabaseSession::Open again);
    void useSession(std::unique_ptr<DatabaseSession> session);
    void reconnect();
    void setLost(bool lost);
    DatabaseTable currentTable();
    // Puts the list's focus on a table, which is not shown for that.
    void focusTable(const DatabaseTable& table);
    bool leaveDatabase(Command again);
    bool endTransaction(const char* sql);
    void showTables(const DatabaseTable& current);
    void showCurrentTable();
    void startCounting();
    void showChanges();
    void refresh();
    void goToRow();
    void addDetails();
    bool rowsShown() const { return m_tabs.currentTab() == RowsTab; }
    void showValue();
    void nextPane(int step);
    bool isSqlShown() const { return m_tabs.currentTab() == SqlTab; }
    void showTab(int tab);
    void switchMonitor(bool on);
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
    DatabaseSession::Open m_again; // opens the same database
    bool m_lost = false;
    AliveProbe m_probe;
    OviAPI::WTimer m_keepAlive;
    ActionBar m_lostBar;
    Opening m_opening;
    MainMenu m_menu;
    MainToolBar m_tools;
    TableList m_list;
    SplitterBar m_splitter;
    enum Tab : int { RowsTab = 0, SqlTab = 1, MonitorTab = 2 };
    OviAPI::WTabControl m_tabs;
    RowsArea m_area;
    SqlPane m_sql;
    MonitorPane m_monitor;
    MainStatus m_status;
    TableCounter m_counter;             // goes before the session does
    Command m_afterSql = Command::None; // to be done when the statement has ended
    bool m_filling = false;             // the list is being filled: its focus means nothing
};
