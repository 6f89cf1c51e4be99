// Asks how to open a database, and opens it.
#pragma once

#include <memory>
#include <vector>

#include <dorcpp/engines.h>
#include <oviapi/checkbox.h>
#include <oviapi/combobox.h>
#include <oviapi/lineedit.h>
#include <oviapi/spinbox.h>

#include "explorer/databasesession.h"
#include "explorer/explorerdialog.h"
#include "explorer/exploreroptions.h"
#include "explorer/opening.h"
#include "panels/groupbox.h"
#include "panels/hideabletitledpanel.h"

// Says in its own window why a database cannot be opened, and stays; execModal gives 1 when it is
// open. Points to the options: keeps the list of recent connections in them.
class ConnectDialog : public ExplorerDialog {
public:
    // engines: what can be chosen from, at least one.
    ConnectDialog(WExtForm& above, ExplorerOptions& options,
                  std::vector<DorCPP::Engine> engines = DorCPP::engines());

    bool onClose() override;

    // How to open it once more; with the password, which is overwritten when the last copy goes.
    const DatabaseSession::Open& openAgain() const { return m_again; }
    // What was opened; null unless execModal gave 1.
    std::unique_ptr<DatabaseSession> takeSession() { return std::move(m_session); }

    // Whether an attempt to open it has not ended yet.
    bool isOpening() const { return m_opening.isRunning(); }

    // What the controls say now.
    Connection connection() const;
    // The answer to the last attempt; empty before one.
    const std::wstring& message() const { return m_message.text(); }

    OviAPI::WComboBox& recentList() { return m_recent; }
    OviAPI::WButton& removeButton() { return m_remove; }
    OviAPI::WComboBox& engineList() { return m_engine; }
    GroupBox& fileGroup() { return m_file; }
    GroupBox& serverGroup() { return m_server; }
    OviAPI::WLineEdit& pathLine() { return m_path; }
    OviAPI::WLineEdit& hostLine() { return m_host; }
    OviAPI::WLineEdit& passwordLine() { return m_password; }
    OviAPI::WButton& browseButton() { return m_browse; }
    OviAPI::WButton& advancedButton() { return m_more; }
    HideableTitledPanel& advanced() { return m_advanced; }
    OviAPI::WLineEdit& userLine() { return m_user; }
    OviAPI::WLineEdit& databaseLine() { return m_database; }
    OviAPI::WComboBox& encryptionList() { return m_encryption; }
    OviAPI::WCheckBox& readOnlyBox() { return m_readOnly; }
    OviAPI::WButton& testButton() { return m_test; }
    OviAPI::WButton& cancelButton() { return m_cancel; }

protected:
    void createControls() override;
    void loadTexts() override;
    int layout(int width) override;
    int contentWidth() const override { return scaled(500); }

private:
    // A line of a form: what is asked for and where the answer goes; nulls for an empty line.
    struct Row {
        OviAPI::WStatic* label = nullptr;
        OviAPI::WTypicalControl* field = nullptr;
    };

    OviAPI::SlotResult onRecent(OviAPI::Object*);
    OviAPI::SlotResult onRemovePush(OviAPI::Object*);
    OviAPI::SlotResult onEngine(OviAPI::Object*);
    OviAPI::SlotResult onBrowsePush(OviAPI::Object*);
    OviAPI::SlotResult onMorePush(OviAPI::Object*);
    OviAPI::SlotResult onHidePush(OviAPI::Object*);
    OviAPI::SlotResult onTestPush(OviAPI::Object*);
    OviAPI::SlotResult onConnectPush(OviAPI::Object*);
    OviAPI::SlotResult onCancelPush(OviAPI::Object*);

    const DorCPP::Engine& engine() const;
    bool isServer() const { return engine().place == DorCPP::Engine::Server; }
    void createRecent();
    void createFile();
    void createServer();
    void createAdvanced();
    void addRow(const Row& row, OviAPI::Container& parent);
    void loadRecent();
    void fill(const Connection& connection);
    void showEngine();
    void showAdvanced(bool visible);
    bool confirmRemoval();
    void say(const std::wstring& text);
    std::unique_ptr<DatabaseSession> open();
    void focusFault();
    void focusFault(TextId reason);

    std::vector<Row> advancedRows();
    int layoutRecent(int width, int top);
    int layoutGroup(GroupBox& box, const std::wstring& caption, int width, int top, int inside);
    int layoutFile(int width, int top);
    int layoutServer(int width, int top);
    int layoutAdvanced(int width, int top);
    int layoutRows(const std::vector<Row>& rows, int left, int width, int top);

    ExplorerOptions& m_options;
    std::vector<DorCPP::Engine> m_engines;
    std::unique_ptr<DatabaseSession> m_session;
    Opening m_opening;
    DatabaseSession::Open m_again;
    std::wstring m_fileCaption;
    std::wstring m_serverCaption;

    OviAPI::WStatic m_recentLabel;
    OviAPI::WComboBox m_recent;
    OviAPI::WButton m_remove;
    OviAPI::WStatic m_engineLabel;
    OviAPI::WComboBox m_engine;
    GroupBox m_file;
    OviAPI::WStatic m_pathLabel;
    OviAPI::WLineEdit m_path;
    OviAPI::WButton m_browse;
    GroupBox m_server;
    OviAPI::WStatic m_hostLabel;
    OviAPI::WLineEdit m_host;
    OviAPI::WStatic m_portLabel;
    OviAPI::WSpinBox m_port;
    OviAPI::WStatic m_databaseLabel;
    OviAPI::WLineEdit m_database;
    OviAPI::WStatic m_userLabel;
    OviAPI::WLineEdit m_user;
    OviAPI::WStatic m_passwordLabel;
    OviAPI::WLineEdit m_password;
    OviAPI::WButton m_more;
    HideableTitledPanel m_advanced;
    OviAPI::WCheckBox m_readOnly;
    OviAPI::WCheckBox m_verify;
    OviAPI::WStatic m_waitLabel;
    OviAPI::WSpinBox m_wait;
    OviAPI::WStatic m_encryptionLabel;
    OviAPI::WComboBox m_encryption;
    OviAPI::WStatic m_parametersLabel;
    OviAPI::WLineEdit m_parameters;
    OviAPI::WStatic m_message;
    OviAPI::WButton m_test;
    OviAPI::WButton m_connect;
    OviAPI::WButton m_cancel;
};
