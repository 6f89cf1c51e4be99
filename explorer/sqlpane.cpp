#include "explorer/sqlpane.h"

#include <algorithm>
#include <cmath>

#include <oviapi/application.h>
#include <oviapi/timer.h>

#include "explorer/databasesession.h"
#include "explorer/sqlscript.h"
#include "explorer/textlookup.h"

namespace {

constexpr int lookInterval = 10;   // ms
constexpr int smallestEditor = 60; // px
constexpr int smallestAnswer = 80; // px
constexpr size_t menuWidth = 70;   // characters of a statement in the history
constexpr size_t menuStatements = 20;

} // namespace

// Knows whether its statement was stopped: execute does not tell.
class SqlPane::Cursor : public xRDorCursor {
public:
    void close() override
    {
        m_closed = true;
        xRDorCursor::close();
    }
    bool wasStopped() const { return m_closed; }
    int64_t milliseconds() const
    {
        constexpr int64_t minute = 60000;
        return (int64_t{getHours()} * 60 + getMinutes()) * minute +
               std::llround(getSeconds() * 1000);
    }

private:
    bool m_closed = false;
};

SqlPane::SqlPane()
    : m_splitter(SplitterBar::Direction::Level)
{
    m_tools.setStyle(OviAPI::WToolBar::Captions);
    for (const int tool : {ToolRun, ToolRunAll, ToolStop, ToolHistory})
        m_tools.addButton(tool, nullptr, L"");
    m_tools.setDropDown(ToolHistory, &m_historyMenu);
    OviAPI::connect<&OviAPI::WToolBar::onCommand>(m_tools, *this, &SqlPane::onTool);
    OviAPI::connect<&OviAPI::WToolBar::onDropDown>(m_tools, *this, &SqlPane::onHistoryOpens);
    OviAPI::connect<&OviAPI::VisualObject::onKeyDown>(m_editor, *this, &SqlPane::onEditorKey);
    OviAPI::connect<&SplitterBar::onSplit>(m_splitter, *this, &SqlPane::onSplit);
}

SqlPane::~SqlPane()
{
    m_view.SetDataSet(nullptr, false);
}

bool SqlPane::create()
{
    if (!WExtPanel::create())
        return false;
    m_view.show(false);
    m_view.SetWideMargin(true);
    for (OviAPI::WVisualObject* child : std::initializer_list<OviAPI::WVisualObject*>{
             &m_tools, &m_editor, &m_splitter, &m_view, &m_notice}) {
        child->setParent(this);
        if (!child->create())
            return false;
    }
    loadTexts();
    updateTools();
    layOut();
    return true;
}

bool SqlPane::onSqlState()
{
    return false;
}

void SqlPane::setConnection(const DorCPP::DorConnect* connection)
{
    ++m_run;
    m_running = false;
    m_answer = {};
    dropAnswer();
    m_cursor.reset();
    m_connection = connection;
    showNotice();
    updateTools();
}

// --- executing

void SqlPane::run()
{
    const OviAPI::SrcRange selected = m_editor.selection();
    const OviAPI::SrcRange range = selected.isEmpty() ? m_editor.statementAtCaret() : selected;
    if (!range.isEmpty())
        start({range});
}

void SqlPane::runAll()
{
    start(statementsIn(m_editor.text()));
}

// Everything can happen in the wait for a statement: the connection may go, and this object.
void SqlPane::start(const std::vector<OviAPI::SrcRange>& ranges)
{
    if (m_running || !m_connection || ranges.empty())
        return;
    const std::weak_ptr<const void> alive = life();
    const unsigned run = ++m_run;
    const auto isOver = [&] { return alive.expired() || run != m_run; };
    m_running = true;
    m_changed = false;
    m_answer = {};
    m_editor.clearError();
    for (const OviAPI::SrcRange& range : ranges) {
        if (!begin(range) || isOver())
            break;
        try {
            m_cursor->execute(m_text.c_str(), true, false);
            if (isOver())
                return;
            takeResult();
        } catch (const DorCPP::DorX& x) {
            if (isOver())
                return;
            fail(x);
        } catch (...) { // from an event
            if (!isOver()) {
                m_running = false;
                updateTools();
            }
            throw;
        }
        if (m_answer.kind == Answer::Failed || m_answer.kind == Answer::Stopped)
            break;
    }
    if (!isOver())
        waitForEnd();
    if (!isOver())
        finish();
}

// False when there can be no cursor.
bool SqlPane::begin(const OviAPI::SrcRange& range)
{
    m_range = range;
    m_text = m_editor.textOf(range);
    m_history.add(m_text);
    dropAnswer();
    m_cursor = std::make_unique<Cursor>();
    try {
        m_cursor->create(*m_connection, 0, nullptr, false);
    } catch (const DorCPP::DorX& x) {
        fail(x);
        return false;
    }
    showNotice();
    updateTools();
    tell();
    return true;
}

void SqlPane::stop()
{
    if (m_running && m_cursor && m_cursor->isWaiting())
        m_cursor->terminate();
}

void SqlPane::takeResult()
{
    m_answer.milliseconds += m_cursor->milliseconds();
    if (m_cursor->wasStopped()) {
        m_answer.kind = Answer::Stopped;
    } else if (m_cursor->columnCount() > 0) {
        m_answer.kind = Answer::Rows;
        m_answer.rows = m_cursor->selectRowCount();
    } else {
        m_changed = true;
        m_answer.rows = m_cursor->changedRowCount();
        m_answer.kind = m_answer.rows > 0 ? Answer::Changed : Answer::Done;
    }
}

// error: what was thrown; the cursor may know more.
void SqlPane::fail(const DorCPP::DorX& error)
{
    m_answer.kind = Answer::Failed;
    m_answer.error = error;
    if (m_cursor->isCreated() && m_cursor->lastError().code() != 0)
        m_answer.error = m_cursor->lastError();
    const OviAPI::SrcPosition place =
        faultPosition(m_text, m_range.from, m_answer.error.position());
    m_editor.setCaret(place);
    m_editor.markError(place, messageOf(m_answer.error).c_str());
    m_editor.setFocus();
}

// A statement that was stopped goes on until the server has heard of it.
void SqlPane::waitForEnd()
{
    const std::weak_ptr<const void> alive = life();
    const unsigned run = m_run;
    OviAPI::WTimer pulse(lookInterval);
    pulse.start();
    while (!alive.expired() && run == m_run && m_cursor->isCreated() && m_cursor->isRunning())
        OviAPI::Application::procTaskEvents();
}

void SqlPane::finish()
{
    m_running = false;
    if (m_answer.kind == Answer::Rows)
        showRows();
    else
        showNotice();
    updateTools();
    tell();
}

// --- showing the answer

void SqlPane::dropAnswer()
{
    m_view.SetDataSet(nullptr, false);
    m_data.reset();
}

void SqlPane::showRows()
{
    auto data = std::make_unique<xCDorvexDataSet>();
    try {
        data->SetCreatesExtendedColumns(true);
        data->OpenUsingCursor(m_connection->channel(), m_text.c_str(), m_cursor.get(), true);
        data->SetRowCache(true);
    } catch (const DorCPP::DorX& x) {
        m_answer.kind = Answer::Failed;
        m_answer.error = x;
        showNotice();
        return;
    }
    m_notice.show(false);
    m_view.SetDataSet(data.get(), true);
    m_view.show(true);
    m_data = std::move(data);
    m_view.SetFocusCell(1, 1);
    m_view.SetColAlignment(m_view.GetColAlignMode(), m_view.GetColAlignChars());
}

void SqlPane::showNotice()
{
    loadTexts();
    m_view.show(false);
    m_notice.show(true);
}

std::wstring SqlPane::status() const
{
    if (m_running)
        return textOf(TextSqlRunning);
    const std::wstring duration = durationText(m_answer.milliseconds);
    switch (m_answer.kind) {
    case Answer::None:
        return {};
    case Answer::Rows:
        return textOf(TextStatusRows, groupedNumber(m_answer.rows)) + L", " + duration;
    case Answer::Changed:
        return textOf(TextSqlChanged, groupedNumber(m_answer.rows)) + L", " + duration;
    case Answer::Failed:
        return textOf(TextSqlFailed);
    case Answer::Stopped:
        return textOf(TextErrorStopped) + L" " + duration;
    case Answer::Done:
        break;
    }
    return textOf(TextSqlDone) + L", " + duration;
}

void SqlPane::loadTexts()
{
    m_tools.setCaption(ToolRun, textOf(TextSqlRun).c_str());
    m_tools.setButtonToolTip(ToolRun, textOf(TextSqlRunHint).c_str(), L"F5, Ctrl+Enter");
    m_tools.setCaption(ToolRunAll, textOf(TextSqlRunAll).c_str());
    m_tools.setButtonToolTip(ToolRunAll, textOf(TextSqlRunAllHint).c_str(), L"Shift+F5");
    m_tools.setCaption(ToolStop, textOf(TextSqlStop).c_str());
    m_tools.setButtonToolTip(ToolStop, textOf(TextSqlStopHint).c_str(), L"Escape");
    m_tools.setCaption(ToolHistory, textOf(TextSqlHistory).c_str());
    m_tools.setButtonToolTip(ToolHistory, textOf(TextSqlHistoryHint).c_str());
    m_editor.setAccessibleName(textOf(TextSqlEditorName).c_str());
    m_view.setAccessibleName(textOf(TextSqlRowsName).c_str());
    m_splitter.setAccessibleName(textOf(TextSqlSplitterName).c_str());
    if (m_running)
        m_notice.setNotice(textOf(TextSqlRunning), textOf(TextNoticeReadingHint));
    else if (m_answer.kind == Answer::Failed)
        m_notice.setNotice(textOf(TextSqlFailed), messageOf(m_answer.error));
    else if (m_answer.kind == Answer::None)
        m_notice.setNotice(textOf(TextSqlEmpty), textOf(TextSqlEmptyHint));
    else
        m_notice.setNotice(status(), L"");
}

void SqlPane::tell()
{
    OviAPI::dispatch<&SqlPane::onSqlState>(*this);
}

void SqlPane::updateTools()
{
    const bool ready = m_connection && !m_running;
    m_tools.enableButton(ToolRun, ready);
    m_tools.enableButton(ToolRunAll, ready);
    m_tools.enableButton(ToolStop, m_running);
}

// --- what the user does

OviAPI::SlotResult SqlPane::onTool(OviAPI::Object*, int tool)
{
    if (tool == ToolRun)
        run();
    else if (tool == ToolRunAll)
        runAll();
    else if (tool == ToolStop)
        stop();
    return 1;
}

OviAPI::SlotResult SqlPane::onHistoryOpens(OviAPI::Object*, int)
{
    m_historyMenu.clear();
    const auto& statements = m_history.statements();
    for (size_t i = 0; i < std::min(statements.size(), menuStatements); ++i) {
        std::wstring line = shortStatement(statements[i], menuWidth);
        for (size_t at = 0; (at = line.find(L'&', at)) != std::wstring::npos; at += 2)
            line.insert(at, 1, L'&');
        OviAPI::WMenuItem* item = m_historyMenu.insertItem(nullptr, line.c_str());
        OviAPI::connect<&OviAPI::WMenuItem::onClick>(
            *item, *this, [this, text = statements[i]](OviAPI::Object*) -> OviAPI::SlotResult {
                m_editor.insert(text.c_str());
                m_editor.setFocus();
                return 1;
            });
    }
    if (statements.empty())
        m_historyMenu.insertItem(nullptr, textOf(TextSqlNoHistory).c_str(), false);
    return 0;
}

OviAPI::SlotResult SqlPane::onEditorKey(OviAPI::Object*, OviAPI::VirtualKey key)
{
    const int code = key.getKeyboardKey();
    if (code == OviAPI::KeyEnter && key.modifiers() == OviAPI::ModifierControl) {
        run();
        return 1;
    }
    if (code == OviAPI::KeyEscape && isRunning()) {
        stop();
        return 1;
    }
    return 0;
}

void SqlPane::loadHistory()
{
    m_editor.setText(m_history.text().c_str());
}

void SqlPane::keepHistory()
{
    m_history.setText(m_editor.text());
}

// --- placing

OviAPI::SlotResult SqlPane::onSplit(OviAPI::Object*, int top)
{
    m_top = std::max(1, top);
    layOut();
    return 1;
}

bool SqlPane::onSize()
{
    layOut();
    return false;
}

void SqlPane::layOut()
{
    if (!m_tools.isCreated())
        return;
    const OviAPI::Size size = clientSize();
    const int bar = m_tools.preferredHeight();
    const int lowest =
        std::max(bar + smallestEditor, size.height - SplitterBar::Thickness - smallestAnswer);
    const int split =
        std::clamp(m_top == 0 ? size.height * 2 / 5 : m_top, bar + smallestEditor, lowest);
    const int answer = split + SplitterBar::Thickness;
    m_tools.move(0, 0, size.width, bar);
    m_editor.move(0, bar, size.width, split - bar);
    m_splitter.move(0, split, size.width, SplitterBar::Thickness);
    m_view.move(0, answer, size.width, std::max(0, size.height - answer));
    m_notice.move(0, answer, size.width, std::max(0, size.height - answer));
}
