// What the main window does when it is asked to.
#include "explorer/mainform.h"

#include <algorithm>

#include <oviapi/msgbox.h>
#include <oviapi/text.h>
#include <oviapi/version.h>

#include "app/extapp.h"
#include "explorer/builddialog.h"
#include "explorer/connectdialog.h"
#include "explorer/gotorowdialog.h"
#include "explorer/opendialog.h"
#include "explorer/settingsdialog.h"
#include "explorer/textlookup.h"
#include "explorer/valuedialog.h"

namespace {

enum TextKind : int { ControlText = 1, TableText = 2, AllText = ControlText | TableText };

OviAPI::Font resized(const OviAPI::Font& font, int size)
{
    return {font.name(),      std::clamp(size, Settings::SmallestText, Settings::LargestText),
            font.bold(),      font.italic(),
            font.underline(), font.strikeout()};
}

void showBox(TextId title, const std::wstring& text)
{
    OviAPI::MsgBox::show(textOf(title).c_str(), text.c_str(), OviAPI::MsgBox::Ok);
}

} // namespace

void MainForm::execute(Command command)
{
    const bool opens =
        command == Command::Open || command == Command::Connect || command == Command::Sample;
    if ((opens || command == Command::Reconnect) && (m_opening.isRunning() || m_sql.isRunning()))
        return;
    switch (command) {
    case Command::Open:
        return askForDatabase();
    case Command::Connect:
        return connectToDatabase();
    case Command::Sample:
        openSample();
        return;
    case Command::Reconnect:
        return reconnect();
    case Command::Close:
        if (leaveDatabase(Command::Close))
            closeDatabase();
        return;
    case Command::Exit:
        close();
        return;
    case Command::Refresh:
        return refresh();
    case Command::FitColumns:
        return m_area.currentRows().fitColumns();
    case Command::NewRow:
        return m_area.currentRows().addRow();
    case Command::DeleteRow:
        return m_area.currentRows().deleteRow();
    case Command::SetNull:
        return m_area.currentRows().setNull();
    case Command::SetDefault:
        return m_area.currentRows().setDefault();
    case Command::AddDetails:
        return addDetails();
    case Command::RemoveDetails:
        m_area.removeLevel();
        updateMenu();
        return;
    case Command::GoToRow:
        return goToRow();
    case Command::ShowValue:
        return showValue();
    case Command::NextPane:
        return nextPane(1);
    case Command::PreviousPane:
        return nextPane(-1);
    case Command::ToolBar:
        return showToolBar(!m_options.ToolBar);
    case Command::SqlWindow:
        return showTab(isSqlShown() ? RowsTab : SqlTab);
    case Command::SqlRun:
        return m_sql.run();
    case Command::SqlRunAll:
        return m_sql.runAll();
    case Command::SqlStop:
        return m_sql.stop();
    case Command::Commit:
        endTransaction("COMMIT");
        return;
    case Command::RollBack:
        endTransaction("ROLLBACK");
        return;
    case Command::Monitor:
        return switchMonitor(!m_monitor.isWatching());
    case Command::English:
        return setLanguage(TypicalOptions::DefaultLanguage);
    case Command::Russian:
        return setLanguage(TypicalOptions::Koi8Language);
    case Command::SwitchLanguage:
        return setLanguage(m_options.Language == TypicalOptions::Koi8Language
                               ? TypicalOptions::DefaultLanguage
                               : TypicalOptions::Koi8Language);
    case Command::Larger:
        return resizeText(AllText, 1);
    case Command::Smaller:
        return resizeText(AllText, -1);
    case Command::NormalSize:
        return normalText();
    case Command::Settings:
        return changeSettings();
    case Command::ControlsLarger:
        return resizeText(ControlText, 1);
    case Command::ControlsSmaller:
        return resizeText(ControlText, -1);
    case Command::TablesLarger:
        return resizeText(TableText, 1);
    case Command::TablesSmaller:
        return resizeText(TableText, -1);
    case Command::Keys:
        return showBox(TextKeysTitle, textOf(TextKeysText));
    case Command::About:
        return showBox(TextAboutTitle,
                       textOf(TextAboutText, OviAPI::localeToWide(OviAPI::version())));
    case Command::None:
        return;
    }
}

// --- databases

void MainForm::askForDatabase()
{
    OpenDialog dialog(*this, m_options.LastLoadDirectory);
    if (!dialog.create() || dialog.execModal() != 1 ||
        !openDatabase(OviAPI::wideToLocale(dialog.database())) || m_session->path().empty())
        return;
    Connection opened;
    opened.path = OviAPI::localeToWide(m_session->path());
    m_options.Connections.add(opened);
}

void MainForm::connectToDatabase()
{
    ConnectDialog dialog(*this, m_options);
    if (dialog.create() && dialog.execModal() == 1)
        takeSession(dialog.takeSession(), dialog.openAgain());
}

bool MainForm::openDatabase(const std::string& name)
{
    if (m_sql.isRunning())
        return false;
    const std::wstring shown = OviAPI::localeToWide(DorCPP::withoutPasswords(name));
    try {
        const DatabaseSession::Open open = [name] {
            return std::make_unique<DatabaseSession>(name);
        };
        auto session = m_opening.run(shown, open);
        return session && takeSession(std::move(session), open);
    } catch (const OpenFailure& failure) {
        showError(TextErrorOpen, shown + L"\n\n" + textOf(failure));
        return false;
    }
}

bool MainForm::openSample()
{
    std::error_code error;
    if (!std::filesystem::exists(m_samplePath, error) && !buildSample())
        return false;
    return openDatabase(m_samplePath.string());
}

bool MainForm::buildSample()
{
    BuildDialog dialog(*this, m_machine, m_samplePath);
    if (dialog.create() && dialog.execModal() == 1)
        return true;
    if (!dialog.failure().empty())
        showError(TextErrorSample, dialog.failure());
    return false;
}

void MainForm::openLast()
{
    if (!m_options.LastDatabase.empty() &&
        openDatabase(OviAPI::wideToLocale(m_options.LastDatabase)))
        return;
    if (isVisible()) // not closed meanwhile
        openSample();
}

void MainForm::closeDatabase()
{
    m_counter.stop();
    m_filling = true;
    m_list.setTables({});
    m_filling = false;
    m_area.clear(TextNoticeNoDatabase, TextNoticeNoDatabaseHint);
    m_sql.setConnection(nullptr);
    m_keepAlive.stop();
    m_probe.forget();
    setLost(false);
    m_session.reset();
    m_again = nullptr;
    updateTitle();
    updateStatus();
    updateMenu();
}

// Asks what is to become of an open transaction. False when the user wants to stay, and while a
// statement runs: it is stopped then, and the command given again when it has ended.
bool MainForm::leaveDatabase(Command again)
{
    if (!m_area.leave())
        return false;
    if (m_sql.isRunning()) {
        m_afterSql = again;
        m_sql.stop();
        return false;
    }
    if (!m_session || m_lost || !m_session->connection().inTransaction())
        return true;
    using OviAPI::MsgBox;
    switch (MsgBox::show(textOf(TextTransactionTitle).c_str(),
                         textOf(TextTransactionQuestion).c_str(),
                         MsgBox::Yes | MsgBox::No | MsgBox::Cancel)) {
    case MsgBox::Yes:
        return endTransaction("COMMIT");
    case MsgBox::No:
        return endTransaction("ROLLBACK");
    default:
        return false;
    }
}

// False when it is still open, which a box has said.
bool MainForm::endTransaction(const char* sql)
{
    if (!m_session)
        return true;
    bool ended = true;
    try {
        m_session->execute(sql);
    } catch (const DorCPP::DorX& x) {
        showError(TextTransactionFailed, messageOf(x));
        ended = false;
    }
    updateStatus();
    updateMenu();
    return ended;
}

void MainForm::loadSql(const std::wstring& path)
{
    m_sql.history().load(path);
    m_sql.loadHistory();
}

void MainForm::saveSql(const std::wstring& path)
{
    m_sql.keepHistory();
    m_sql.history().save(path);
}

// False when the user wants to stay with the database that is open; the new one is closed then.
bool MainForm::takeSession(std::unique_ptr<DatabaseSession> session, DatabaseSession::Open again)
{
    if (!leaveDatabase(Command::None))
        return false;
    closeDatabase();
    m_again = std::move(again);
    useSession(std::move(session));
    m_options.LastDatabase = OviAPI::localeToWide(m_session->name());
    if (!m_session->path().empty()) {
        const std::filesystem::path path(m_session->path());
        m_options.setLastLoadDirectory(OviAPI::localeToWide(path.parent_path().string()).c_str());
    }
    updateTitle();
    showTables({});
    showCurrentTable();
    return true;
}

void MainForm::useSession(std::unique_ptr<DatabaseSession> session)
{
    m_session = std::move(session);
    m_sql.setConnection(&m_session->connection());
    m_monitor.setEngine(m_session->connection().info().engine);
    m_keepAlive.start();
    m_area.keys().start(m_session->connection());
}

void MainForm::checkConnection()
{
    if (m_session && !m_lost && !isBusy())
        m_probe.ask(m_session->connection().channel());
}

void MainForm::setLost(bool lost)
{
    if (m_lost == lost)
        return;
    m_lost = lost;
    m_lostBar.show(lost);
    layOut();
    updateStatus();
    updateMenu();
    if (lost && !m_sql.editor().hasFocus())
        m_lostBar.button().setFocus();
}

// Opens the database again and shows the table that was shown.
void MainForm::reconnect()
{
    if (!m_lost || !m_again || isBusy() || !m_area.leave())
        return;
    try {
        auto session = m_opening.run(m_session->displayPath(), m_again);
        if (!session)
            return;
        const DatabaseTable table = currentTable();
        const DatabaseSession::Open again = m_again;
        closeDatabase();
        m_again = again;
        useSession(std::move(session));
        updateTitle();
        showTables(table);
        showCurrentTable();
    } catch (const OpenFailure& failure) {
        showError(TextErrorOpen, textOf(failure));
    }
}

DatabaseTable MainForm::currentTable()
{
    const int table = m_list.currentTable();
    return m_session && table >= 0 ? m_session->tables()[static_cast<size_t>(table)]
                                   : DatabaseTable();
}

void MainForm::focusTable(const DatabaseTable& table)
{
    const auto& tables = m_session->tables();
    const auto found = std::find(tables.begin(), tables.end(), table);
    m_filling = true;
    if (found != tables.end())
        m_list.SetFocusCell(TableList::Name, found - tables.begin() + 1);
    m_filling = false;
}

void MainForm::showTables(const DatabaseTable& current)
{
    m_filling = true;
    m_list.setTables(m_session->tables());
    m_filling = false;
    focusTable(current);
    startCounting();
}

void MainForm::showCurrentTable()
{
    if (!m_session)
        return;
    const int table = m_list.currentTable();
    if (m_session->tables().empty())
        m_area.clear(TextNoticeNoTables, TextNoticeNoTablesHint);
    else if (table < 0)
        m_area.clear(TextNoticeChoose, TextNoticeChooseHint);
    else
        m_area.showTable(m_session->connection(), m_session->tables()[static_cast<size_t>(table)]);
    updateStatus();
    updateMenu();
}

void MainForm::startCounting()
{
    // A transaction keeps the connection to itself: counting would hold up its statements.
    if (m_session->connection().inTransaction())
        return;
    m_counter.start(
        m_session->connection(), m_session->tables(),
        [this](size_t table, const TableCount& count) { m_list.setCount(table, count); });
}

// Shows the tables that there are now and counts their rows.
void MainForm::showChanges()
{
    const DatabaseTable current = currentTable();
    const std::vector<DatabaseTable> before = m_session->tables();
    try {
        m_session->readTables();
    } catch (const DorCPP::DorX& x) {
        showError(TextErrorOpen, messageOf(x));
        return;
    }
    if (m_session->tables() != before)
        showTables(current);
    else
        startCounting();
}

void MainForm::refresh()
{
    if (!m_session || !m_area.leave())
        return;
    showChanges();
    m_area.keys().start(m_session->connection());
    if (!pane().table().empty() && currentTable() == pane().source())
        pane().refresh();
    else
        showCurrentTable();
}

void MainForm::showError(TextId format, const std::wstring& reason)
{
    showBox(TextErrorTitle, textOf(format, reason));
}

// --- moving about

void MainForm::goToRow()
{
    RowsPane& pane = m_area.currentRows();
    const PlaceInTable place = pane.place();
    if (place.rows < 1)
        return;
    GoToRowDialog dialog(*this, std::max(1L, place.row), place.rows);
    if (!dialog.create() || dialog.execModal() != 1 || !pane.hasRows())
        return;
    pane.view().SetRow(dialog.row());
    pane.view().setFocus();
}

void MainForm::showValue()
{
    RowsPane& pane = m_area.currentRows();
    if (!rowsShown() || m_area.isBusy() || !pane.leave())
        return;
    try {
        const std::unique_ptr<ValueStore> value = pane.value(m_session->connection());
        if (!value)
            return;
        const PlaceInTable place = pane.place();
        const std::wstring name = textOf(TextStatusRow, groupedNumber(place.row)) + L", " +
                                  textOf(TextStatusColumn, place.column);
        ValueDialog dialog(*this, *value, name, m_options);
        if (dialog.create())
            dialog.execModal();
    } catch (const DorCPP::DorX& x) {
        showError(TextValueFailed, messageOf(x));
        checkConnection();
    }
    updateStatus();
}

void MainForm::nextPane(int step)
{
    std::vector<OviAPI::WVisualObject*> panes{&m_list, &m_splitter};
    if (m_tabs.currentTab() == MonitorTab) {
        panes.push_back(&m_monitor.view());
    } else if (isSqlShown()) {
        panes.insert(panes.end(), {&m_sql.editor(), &m_sql.splitter()});
        if (m_sql.view().isVisible())
            panes.push_back(&m_sql.view());
    } else {
        for (size_t i = 0; i <= m_area.levels(); ++i) {
            if (i > 0)
                panes.push_back(&m_area.splitter(i));
            if (m_area.rowsOf(i).hasRows())
                panes.push_back(&m_area.rowsOf(i).view());
        }
    }
    const auto current =
        std::find_if(panes.begin(), panes.end(), [](auto* pane) { return pane->hasFocus(); });
    const auto count = static_cast<int>(panes.size());
    const int now = current == panes.end() ? 0 : static_cast<int>(current - panes.begin());
    panes[static_cast<size_t>((now + step + count) % count)]->setFocus();
}

void MainForm::addDetails()
{
    if (!m_area.addLevel())
        return;
    DetailPane& added = m_area.detail(m_area.levels());
    setSiblingsFont(&added, fkControls, m_options.FontControls);
    setSiblingsFont(&added, fkRecordView, m_options.FontGrid);
    added.loadTexts();
    added.choice().setFocus();
    updateMenu();
}

// --- settings

void MainForm::changeSettings()
{
    SettingsDialog dialog(*this, m_options, [this] { applySettings(); });
    if (dialog.create())
        dialog.execModal();
}

void MainForm::applySettings()
{
    applyFonts();
    auto* application = dynamic_cast<ExtApp*>(OviAPI::Application::instance());
    if (application && application->resources() &&
        application->resources()->language() != application->getRRSLang(m_options.Language))
        setLanguage(m_options.Language);
}

void MainForm::showTab(int tab)
{
    if (m_tabs.currentTab() == tab)
        return;
    m_tabs.setCurrentTab(tab);
    onTab(nullptr, tab);
    if (tab == SqlTab)
        m_sql.editor().setFocus();
    else if (tab == MonitorTab)
        m_monitor.view().setFocus();
    else if (pane().hasRows() && !m_list.hasFocus())
        pane().view().setFocus();
}

void MainForm::switchMonitor(bool on)
{
    if (on) {
        m_tabs.addTab(textOf(TextTabMonitor).c_str(), &m_monitor);
        m_monitor.create();
        setSiblingsFont(&m_monitor, fkControls, m_options.FontControls);
        setSiblingsFont(&m_monitor, fkRecordView, m_options.FontGrid);
        showTab(MonitorTab);
    } else {
        if (m_tabs.currentTab() == MonitorTab)
            showTab(RowsTab);
        m_tabs.removeTab(MonitorTab);
    }
    m_monitor.watch(on);
    m_menu.check(Command::Monitor, on);
}

void MainForm::showToolBar(bool shown)
{
    m_options.ToolBar = shown;
    m_menu.check(Command::ToolBar, shown);
    m_tools.show(shown);
    layOut();
}

void MainForm::resizeText(int kind, int step)
{
    if ((kind & ControlText) != 0)
        m_options.FontControls =
            resized(m_options.FontControls, m_options.FontControls.size() + step);
    if ((kind & TableText) != 0)
        m_options.FontGrid = resized(m_options.FontGrid, m_options.FontGrid.size() + step);
    applyFonts();
}

void MainForm::normalText()
{
    ExplorerOptions fresh;
    fresh.initDefaults();
    m_options.FontControls = resized(m_options.FontControls, fresh.FontControls.size());
    m_options.FontGrid = resized(m_options.FontGrid, fresh.FontGrid.size());
    applyFonts();
}
