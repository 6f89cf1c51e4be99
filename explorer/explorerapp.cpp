#include "explorer/explorerapp.h"

#include <cstdlib>

#include "explorer/textlookup.h"
#include "explorer/tour.h"

namespace {

constexpr const wchar_t* sqlFile = L"sql.dat";

} // namespace

ExplorerApp::ExplorerApp(Arguments arguments)
    : m_arguments(std::move(arguments))
{
}

ExplorerApp::~ExplorerApp() = default;

void ExplorerApp::initBeforeOptions()
{
    if (!m_arguments.configDir.empty())
        setenv("XDG_CONFIG_HOME", m_arguments.configDir.c_str(), 1);
}

void ExplorerApp::loadOptions()
{
    if (m_arguments.tour.empty())
        ExtApp::loadOptions();
    else
        m_options.initDefaults();
}

void ExplorerApp::saveOptions()
{
    if (m_arguments.tour.empty())
        ExtApp::saveOptions();
}

// A tour looks the same on every screen.
bool ExplorerApp::adaptToTD()
{
    return m_arguments.tour.empty() && ExtApp::adaptToTD();
}

void ExplorerApp::initAfterOptions()
{
    m_form = std::make_unique<MainForm>(m_options, resources());
    if (!m_form->create())
        throw LException("explorerapp", __LINE__, L"The window cannot be made");
    m_form->show(true);
    if (m_arguments.tour.empty())
        m_form->loadSql(getConfigFilePath(sqlFile, 0));
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_started, *this, &ExplorerApp::onStarted);
    m_started.start();
}

void ExplorerApp::deInitApplication()
{
    m_tour.reset();
    if (m_form && m_arguments.tour.empty())
        m_form->saveSql(getConfigFilePath(sqlFile, 1));
    ExtApp::deInitApplication();
}

void ExplorerApp::deInitAfterOptions()
{
    m_form.reset();
    BackgroundTask::waitForAbandoned();
}

OviAPI::SlotResult ExplorerApp::onStarted(OviAPI::Object*)
{
    m_started.stop();
    if (!m_arguments.tour.empty()) {
        m_tour = std::make_unique<Tour>(*m_form, m_arguments.tour, m_arguments.database);
        m_tour->start();
        return 1;
    }
    if (m_arguments.database.empty())
        m_form->openLast();
    else
        m_form->openDatabase(m_arguments.database);
    return 1;
}
