#include "explorer/monitorpane.h"

#include <algorithm>
#include <ctime>
#include <cwchar>

#include <dorcpp/types.h>
#include <oviapi/painter.h>
#include <oviapi/text.h>

#include "explorer/sqlhistory.h"
#include "explorer/textlookup.h"

namespace {

constexpr int lookInterval = 250;       // ms
constexpr long longestCell = 2000;      // characters with the terminator
constexpr int boxMark = 28;             // px that a check box takes beside its text
constexpr int gap = 12;                 // px
constexpr int narrowestStatement = 160; // px
constexpr int widestError = 260;        // px

// The local time of day: "14:03:59.120".
std::wstring timeText(std::chrono::system_clock::time_point time)
{
    const auto since =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    const std::time_t seconds = since.count() / 1000;
    std::tm parts{};
    localtime_r(&seconds, &parts);
    wchar_t text[32];
    std::swprintf(text, std::size(text), L"%02d:%02d:%02d.%03d", parts.tm_hour, parts.tm_min,
                  parts.tm_sec, static_cast<int>(since.count() % 1000));
    return text;
}

std::wstring millisecondsText(int64_t micros)
{
    wchar_t text[32];
    std::swprintf(text, std::size(text), L"%lld.%03d", static_cast<long long>(micros / 1000),
                  static_cast<int>(micros % 1000));
    return text;
}

} // namespace

MonitorPane::MonitorPane()
    : m_log(std::make_shared<MonitorLog>())
    , m_timer(lookInterval)
{
    for (const wchar_t* name : {L"time", L"duration", L"rows", L"statement", L"error"})
        addTableColumn(name);
    for (const int column : {Duration, Rows}) {
        OviAPI::aCColumn& number = *m_data.GetColInfo(column);
        number.autoAlign = false;
        number.cellAlign = OviAPI::TextRight | OviAPI::TextVCenter;
    }
    m_view.ShowRowHeaders(false);
    m_view.SetWideMargin(true);
    m_tools.setStyle(OviAPI::WToolBar::Captions);
    for (const int tool : {ToolCopy, ToolClear})
        m_tools.addButton(tool, nullptr, L"");
    OviAPI::connect<&OviAPI::WToolBar::onCommand>(m_tools, *this, &MonitorPane::onTool);
    OviAPI::connect<&OviAPI::WCheckBox::onCheck>(m_values, *this, &MonitorPane::onValues);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &MonitorPane::look);
}

MonitorPane::~MonitorPane()
{
    m_view.SetDataSet(nullptr, false);
}

void MonitorPane::addTableColumn(const wchar_t* name)
{
    auto* column = new OviAPI::aCColumn(name, static_cast<unsigned char>(OviAPI::DataType::Text),
                                        longestCell, name, 0, 0, OviAPI::aCColumn::DisplayText);
    column->readOnly = true;
    m_data.AddColDef(column); // owned by the dataset
}

bool MonitorPane::create()
{
    if (!WExtPanel::create())
        return false;
    for (OviAPI::WVisualObject* child :
         std::initializer_list<OviAPI::WVisualObject*>{&m_tools, &m_values, &m_view}) {
        child->setParent(this);
        if (!child->create())
            return false;
    }
    loadTexts();
    m_view.SetDataSet(&m_data, true);
    layOut();
    return true;
}

void MonitorPane::watch(bool on)
{
    if (on == isWatching())
        return;
    if (on) {
        m_watch = std::make_unique<MonitorWatch>(m_log);
        m_timer.start();
    } else {
        m_watch.reset();
        m_timer.stop();
        refresh();
    }
}

OviAPI::SlotResult MonitorPane::look(OviAPI::Object*)
{
    if (isVisible())
        refresh();
    return 1;
}

void MonitorPane::refresh()
{
    if (m_log->revision() != m_shown)
        fill();
}

// Stays at the end when it is there.
void MonitorPane::fill()
{
    const bool atEnd = m_view.GetRow() == m_view.GetRowCount();
    const long row = m_view.GetRow();
    m_shown = m_log->revision();
    const std::vector<MonitorEntry> entries = m_log->entries();
    m_data.DeleteAllRow();
    m_data.Reserve(static_cast<long>(entries.size()));
    for (const MonitorEntry& entry : entries)
        m_data.AppendTexts({timeText(entry.start).c_str(), millisecondsText(entry.micros).c_str(),
                            groupedNumber(static_cast<long>(entry.rows)).c_str(),
                            statementText(entry).c_str(), errorText(entry).c_str()});
    m_data.RefreshViews();
    m_view.ReShow(0, false, true, true, nullptr);
    if (!entries.empty())
        m_view.SetFocusCell(std::max(1, m_view.GetCol()),
                            atEnd || row < 1 ? m_view.GetRowCount()
                                             : std::min(row, m_view.GetRowCount()));
    layOut();
}

std::wstring MonitorPane::statementText(const MonitorEntry& entry) const
{
    const std::string text =
        m_values.isChecked() ? entry.text : DorCPP::maskedText(entry.text, m_engine);
    return shortStatement(OviAPI::utf8ToWide(text), longestCell - 1);
}

std::wstring MonitorPane::errorText(const MonitorEntry& entry) const
{
    if (entry.code == 0)
        return {};
    if (!m_values.isChecked())
        return textOf(TextMonitorErrorNumber, std::to_wstring(entry.code));
    return shortStatement(OviAPI::localeToWide(entry.message), longestCell - 1);
}

void MonitorPane::copy()
{
    if (m_view.GetSelection().isSingle())
        m_view.SelectAll();
    m_view.Copy(true);
}

void MonitorPane::clear()
{
    m_log->clear();
    fill();
}

void MonitorPane::loadTexts()
{
    m_tools.setCaption(ToolCopy, textOf(TextMonitorCopy).c_str());
    m_tools.setButtonToolTip(ToolCopy, textOf(TextMonitorCopyHint).c_str());
    m_tools.setCaption(ToolClear, textOf(TextMonitorClear).c_str());
    m_tools.setButtonToolTip(ToolClear, textOf(TextMonitorClearHint).c_str());
    m_values.setText(textOf(TextMonitorValues).c_str());
    constexpr TextId captions[] = {TextMonitorTime, TextMonitorDuration, TextMonitorRows,
                                   TextMonitorStatement, TextMonitorError};
    for (int column = Time; column <= Error; ++column)
        m_data.GetColInfo(column)->caption = textOf(captions[column - 1]);
    m_view.setAccessibleName(textOf(TextMonitorName).c_str());
    fill();
}

OviAPI::SlotResult MonitorPane::onTool(OviAPI::Object*, int tool)
{
    if (tool == ToolCopy)
        copy();
    else
        clear();
    return 1;
}

OviAPI::SlotResult MonitorPane::onValues(OviAPI::Object*)
{
    fill();
    return 1;
}

bool MonitorPane::onSize()
{
    layOut();
    return false;
}

void MonitorPane::layOut()
{
    if (!m_view.isCreated())
        return;
    const OviAPI::Size size = clientSize();
    const int bar = m_tools.preferredHeight();
    const int box = std::min(OviAPI::GetTextSize(font(), m_values.text()).width + boxMark,
                             std::max(0, size.width / 2));
    m_tools.move(0, 0, std::max(0, size.width - box - gap), bar);
    m_values.move(std::max(0, size.width - box), 0, box, bar);
    m_view.move(0, bar, size.width, std::max(0, size.height - bar));
    if (!m_view.GetDataSet())
        return;
    int others = 0;
    for (const int column : {Time, Duration, Rows, Error}) {
        m_view.FitColumn(column);
        int width = m_data.GetColInfo(column)->width;
        if (column == Error && width > widestError)
            m_view.SetColWidth(Error, width = widestError);
        others += width;
    }
    m_view.SetColWidth(Statement, std::max(narrowestStatement, m_view.clientWidth() - others));
}
