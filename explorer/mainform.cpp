#include "explorer/mainform.h"

#include <algorithm>
#include <utility>

#include <oviapi/application.h>

#include "app/extapp.h"
#include "explorer/samplebuilder.h"
#include "explorer/textlookup.h"

namespace {

constexpr int iconId = 1;
constexpr int narrowestPane = 120;  // px
constexpr int keepAliveTime = 5000; // ms

} // namespace

MainForm::MainForm(ExplorerOptions& options, OviAPI::ResourceManager* resources)
    : m_options(options)
    , m_samplePath(sampleDatabasePath())
    , m_keepAlive(keepAliveTime)
    , m_opening(*this)
    , m_tools(resources, m_menu)
    , m_area(options.DeleteRow)
{
    init(iconId, resources);
    OviAPI::connect<&MainMenu::onCommand>(m_menu, *this, &MainForm::onMenuCommand);
    OviAPI::connect<&OviAPI::WToolBar::onCommand>(m_tools, *this, &MainForm::onToolCommand);
    OviAPI::connect<&OviAPI::aCRecordView::onRowGetFocus>(m_list, *this, &MainForm::onListRow);
    OviAPI::connect<&RowsArea::onPlaceChanged>(m_area, *this, &MainForm::onPlaceChanged);
    OviAPI::connect<&RowsArea::onRowsChanged>(m_area, *this, &MainForm::onRowsChanged);
    OviAPI::connect<&RowsArea::onShowValue>(m_area, *this, &MainForm::onShowValue);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_keepAlive, *this, &MainForm::onKeepAlive);
    OviAPI::connect<&AliveProbe::onAnswer>(m_probe, *this, &MainForm::onAlive);
    OviAPI::connect<&ActionBar::onAction>(m_lostBar, *this, &MainForm::onLostAction);
    OviAPI::connect<&OviAPI::WTabControl::onTabChanged>(m_tabs, *this, &MainForm::onTab);
    OviAPI::connect<&SqlPane::onSqlState>(m_sql, *this, &MainForm::onSqlState);
    OviAPI::connect<&SplitterBar::onSplit>(m_splitter, *this, &MainForm::onSplit);
}

MainForm::~MainForm()
{
    m_counter.stop();
    m_area.clear(TextNoticeNoDatabase, TextNoticeNoDatabaseHint);
    m_sql.setConnection(nullptr);
    setMenu(nullptr);
}

void MainForm::setSample(const MachineData& machine, const std::filesystem::path& path)
{
    m_machine = machine;
    m_samplePath = path;
}

bool MainForm::create()
{
    if (!TypicalOptions::isValidGeometry(m_options.MainFormRect))
        m_options.initDefaultMainFormRect();
    const OviAPI::Rect& place = m_options.MainFormRect;
    move(place.left, place.top, static_cast<int>(place.width()), static_cast<int>(place.height()));
    setFont(m_options.FontControls);
    setMenu(&m_menu.menu());
    if (!WExtForm::create())
        return false;
    m_tabs.addTab(L"", &m_area);
    m_tabs.addTab(L"", &m_sql);
    for (OviAPI::WVisualObject* child : std::initializer_list<OviAPI::WVisualObject*>{
             &m_tools, &m_lostBar, &m_list, &m_splitter, &m_tabs, &m_status})
        child->setParent(this);
    for (OviAPI::WVisualObject* child : std::initializer_list<OviAPI::WVisualObject*>{
             &m_tools, &m_lostBar, &m_list, &m_splitter, &m_tabs, &m_area, &m_sql, &m_status}) {
        if (!child->create())
            return false;
    }
    m_tools.show(m_options.ToolBar);
    m_lostBar.show(false);
    applyFonts();
    loadTexts();
    m_list.setFocus();
    if (m_options.MainFormMaximized)
        maximize();
    return true;
}

bool MainForm::onClose()
{
    m_options.MainFormMaximized = isMaximized();
    m_options.MainFormRect = normalGeometry();
    m_opening.giveUp();
    if (!leaveDatabase(Command::Exit))
        return false;
    closeDatabase();
    return true;
}

bool MainForm::onSize()
{
    layOut();
    return false;
}

bool MainForm::onKeyDown(OviAPI::VirtualKey key)
{
    if (key.getKeyboardKey() != OviAPI::KeyEscape)
        return false;
    const bool stops = m_area.isBusy() || m_sql.isRunning();
    m_area.cancel();
    m_sql.stop();
    return stops;
}

OviAPI::SlotResult MainForm::onCharsetChanged(OviAPI::Object*, OviAPI::ResourceManager*)
{
    loadTexts();
    return 0;
}

OviAPI::SlotResult MainForm::onMenuCommand(OviAPI::Object*, Command command)
{
    execute(command);
    return 1;
}

OviAPI::SlotResult MainForm::onToolCommand(OviAPI::Object*, int command)
{
    execute(static_cast<Command>(command));
    return 1;
}

OviAPI::SlotResult MainForm::onListRow(OviAPI::Object*, long, long)
{
    if (m_filling)
        return 0;
    if (!m_area.leave()) {
        focusTable(m_area.tableOf(0));
        return 0;
    }
    showCurrentTable();
    showTab(RowsTab);
    return 0;
}

OviAPI::SlotResult MainForm::onPlaceChanged(OviAPI::Object*)
{
    updateStatus();
    updateMenu();
    return 0;
}

OviAPI::SlotResult MainForm::onShowValue(OviAPI::Object*)
{
    showValue();
    return 1;
}

// A table that is shown has as many rows as are shown of it.
OviAPI::SlotResult MainForm::onRowsChanged(OviAPI::Object*, size_t level)
{
    if (!m_session || level != 0)
        return 0;
    const auto& tables = m_session->tables();
    const auto found = std::find(tables.begin(), tables.end(), m_area.tableOf(level));
    if (found != tables.end())
        m_list.setCount(static_cast<size_t>(found - tables.begin()),
                        {TableCount::Known, m_area.table().place().rows});
    return 0;
}

OviAPI::SlotResult MainForm::onKeepAlive(OviAPI::Object*)
{
    checkConnection();
    return 1;
}

OviAPI::SlotResult MainForm::onAlive(OviAPI::Object*, bool alive)
{
    if (!alive)
        setLost(true);
    return 1;
}

OviAPI::SlotResult MainForm::onLostAction(OviAPI::Object*, int)
{
    reconnect();
    return 1;
}

OviAPI::SlotResult MainForm::onTab(OviAPI::Object*, int tab)
{
    // The same keys refresh the rows or execute the statement.
    const bool sql = tab == SqlTab;
    m_menu.setShortcut(Command::Refresh, sql ? L"" : MainMenu::shortcut(Command::Refresh));
    m_menu.setShortcut(Command::SqlRun, sql ? MainMenu::shortcut(Command::Refresh) : L"");
    m_menu.check(Command::SqlWindow, sql);
    m_tools.checkCommand(Command::SqlWindow, sql);
    if (tab == MonitorTab)
        m_monitor.refresh();
    updateStatus();
    updateMenu();
    return 0;
}

OviAPI::SlotResult MainForm::onSqlState(OviAPI::Object*)
{
    if (!m_sql.isRunning() && m_sql.hasChanged() && m_session)
        showChanges();
    else if (!m_sql.isRunning() && m_sql.hasFailed())
        checkConnection();
    updateStatus();
    updateMenu();
    if (!m_sql.isRunning() && m_afterSql != Command::None)
        execute(std::exchange(m_afterSql, Command::None));
    return 0;
}

OviAPI::SlotResult MainForm::onSplit(OviAPI::Object*, int left)
{
    m_options.Splitter =
        std::clamp(left, int{ExplorerOptions::MinSplitter}, int{ExplorerOptions::MaxSplitter});
    layOut();
    return 1;
}

void MainForm::setLanguage(enum TypicalOptions::Language language)
{
    m_options.Language = language;
    auto* application = dynamic_cast<ExtApp*>(OviAPI::Application::instance());
    if (!application)
        return;
    application->setLanguage(language);
    application->notifyCharsetChanged();
}

void MainForm::applyFonts()
{
    setFont(m_options.FontControls);
    slotFontChanged(this, fkControls, m_options.FontControls);
    slotFontChanged(this, fkRecordView, m_options.FontGrid);
    slotFontChanged(this, fkTree, m_options.FontTree);
    slotFontChanged(this, fkEdit, m_options.FontEdits);
    if (OviAPI::Application* application = OviAPI::Application::instance())
        application->roledFontsChanged();
    xRDorCursor::init(m_options.FontControls, getResource(), this);
    for (size_t i = 0; i <= m_area.levels(); ++i)
        m_area.rowsOf(i).fitColumns();
    layOut();
}

void MainForm::loadTexts()
{
    m_menu.loadTexts();
    m_menu.check(Command::English, m_options.Language != TypicalOptions::Koi8Language);
    m_menu.check(Command::Russian, m_options.Language == TypicalOptions::Koi8Language);
    m_menu.check(Command::ToolBar, m_options.ToolBar);
    m_tools.loadTexts(m_menu);
    m_list.loadTexts();
    m_tabs.setCaption(RowsTab, textOf(TextTabRows).c_str());
    m_tabs.setCaption(SqlTab, textOf(TextTabSql).c_str());
    m_lostBar.setTexts(textOf(TextLostNotice), {textOf(TextMenuReconnect)});
    m_area.loadTexts();
    m_sql.loadTexts();
    m_monitor.loadTexts();
    m_tabs.setCaption(MonitorTab, textOf(TextTabMonitor).c_str());
    m_menu.check(Command::Monitor, m_monitor.isWatching());
    m_splitter.setAccessibleName(textOf(TextSplitterName).c_str());
    updateTitle();
    updateStatus();
    updateMenu();
}

void MainForm::updateTitle()
{
    const std::wstring application = textOf(TextAppTitle);
    if (m_session)
        setTitle(m_session->displayName().c_str(), application.c_str());
    else
        setTitle(application.c_str());
}

void MainForm::updateStatus()
{
    m_status.setField(MainStatus::Database,
                      m_session ? m_session->displayPath() : textOf(TextStatusNoDatabase));
    std::wstring connection;
    if (m_session)
        connection = m_lost ? textOf(TextStateLost) : m_session->connectionText();
    m_status.setField(MainStatus::Connection, connection);
    std::wstring rows;
    std::wstring cell;
    const PlaceInTable place = rowsShown() ? m_area.currentRows().place() : PlaceInTable();
    if (isSqlShown())
        rows = m_sql.status();
    else if (rowsShown() && m_area.currentRows().hasRows())
        rows = place.rows == 1 ? textOf(TextStatusOneRow)
                               : textOf(TextStatusRows, groupedNumber(place.rows));
    if (place.row != 0)
        cell = textOf(TextStatusRow, groupedNumber(place.row)) + L", " +
               textOf(TextStatusColumn, place.column);
    m_status.setField(MainStatus::Rows, rows);
    m_status.setField(MainStatus::Place, cell);
    m_status.setField(MainStatus::Value, place.value);
}

void MainForm::updateMenu()
{
    const bool open = m_session != nullptr;
    for (const Command command : {Command::Open, Command::Connect, Command::Sample}) {
        m_menu.enable(command, !m_sql.isRunning());
        m_tools.enableCommand(command, !m_sql.isRunning());
    }
    m_menu.enable(Command::Reconnect, open && m_lost);
    m_menu.enable(Command::Close, open);
    m_menu.enable(Command::Refresh, open);
    RowsPane& pane = m_area.currentRows();
    const bool rows = rowsShown() && pane.hasRows();
    const bool anyRow = rows && pane.place().rows > 0;
    m_menu.enable(Command::NewRow, rows && pane.canAdd());
    m_menu.enable(Command::DeleteRow, anyRow && pane.canDelete());
    m_menu.enable(Command::SetNull, anyRow && pane.canChange());
    m_menu.enable(Command::SetDefault, anyRow && pane.canDefault());
    m_menu.enable(Command::AddDetails, open && m_area.levels() < RowsArea::MostLevels);
    m_menu.enable(Command::RemoveDetails, m_area.levels() > 0);
    m_menu.enable(Command::FitColumns, rows);
    m_menu.enable(Command::GoToRow, anyRow);
    m_menu.enable(Command::ShowValue, anyRow && !m_area.isBusy());
    m_tools.enableCommand(Command::Refresh, open);
    m_tools.enableCommand(Command::GoToRow, anyRow);
    const bool ready = open && !m_sql.isRunning();
    m_menu.enable(Command::SqlRun, isSqlShown() && ready);
    m_menu.enable(Command::SqlRunAll, isSqlShown() && ready);
    m_menu.enable(Command::SqlStop, m_sql.isRunning());
    const bool transaction = ready && m_session->connection().inTransaction();
    m_menu.enable(Command::Commit, transaction);
    m_menu.enable(Command::RollBack, transaction);
}

void MainForm::layOut()
{
    if (!m_status.isCreated())
        return;
    const OviAPI::Size size = clientSize();
    const int bar = SplitterBar::Thickness;
    const int widest =
        std::max<int>(ExplorerOptions::MinSplitter, size.width - narrowestPane - bar);
    const int left = std::min<int>(m_options.Splitter, widest);
    const int top = m_lost ? m_lostBar.wantedHeight(size.width) : 0;
    const int height = std::max(0, size.height - top);
    m_lostBar.move(0, 0, size.width, top);
    m_list.move(0, top, left, height);
    m_splitter.move(left, top, bar, height);
    m_tabs.move(left + bar, top, std::max(0, size.width - left - bar), height);
    m_status.fit();
}
