#include "explorer/tablepane.h"

#include <oviapi/text.h>

#include "explorer/sqltext.h"
#include "explorer/textlookup.h"

namespace {

constexpr int lookInterval = 10; // ms
// A table that takes longer is announced.
constexpr std::chrono::milliseconds noticeAfter(300);

} // namespace

// A table that is being read.
struct TablePane::Loading {
    std::wstring table;
    bool keepPlace;
    std::unique_ptr<BackgroundStatement> statement;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
    bool announced = false;
};

TablePane::TablePane()
    : m_timer(lookInterval)
{
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &TablePane::look);
    OviAPI::connect<&OviAPI::aCRecordView::onCellGetFocus>(m_view, *this, &TablePane::onFocus);
}

TablePane::~TablePane()
{
    m_view.SetDataSet(nullptr, false);
}

bool TablePane::onPlaceChanged()
{
    return false;
}

bool TablePane::create()
{
    if (!WExtPanel::create())
        return false;
    m_view.setParent(this);
    m_notice.setParent(this);
    m_view.show(false);
    m_view.SetWideMargin(true);
    if (!m_view.create() || !m_notice.create())
        return false;
    loadTexts();
    layOut();
    return true;
}

void TablePane::showTable(const DorCPP::DorConnect& connection, const DatabaseTable& table)
{
    m_connection = &connection;
    begin(table, false);
}

void TablePane::refresh()
{
    if (m_connection && !m_table.name.empty())
        begin(m_table, hasTable());
}

void TablePane::clear(TextId heading, TextId hint)
{
    m_timer.stop();
    m_loading.reset();
    m_table = {};
    showNotice(heading, hint);
    m_connection = nullptr;
}

std::wstring TablePane::sql() const
{
    return selectAllText(tableReference(m_table.schema, m_table.name));
}

void TablePane::begin(const DatabaseTable& table, bool keepPlace)
{
    m_table = table;
    m_loading = std::make_unique<Loading>();
    m_loading->table = table.name;
    m_loading->keepPlace = keepPlace;
    try {
        m_loading->statement = std::make_unique<BackgroundStatement>(*m_connection, sql(), 0);
        m_timer.start();
    } catch (const DorCPP::DorX& x) {
        m_loading.reset();
        fail([x] { return messageOf(x); });
    }
}

OviAPI::SlotResult TablePane::look(OviAPI::Object*)
{
    if (!m_loading) {
        m_timer.stop();
        return 1;
    }
    if (m_loading->statement->isDone()) {
        m_timer.stop();
        takeResult();
    } else if (!m_loading->announced &&
               std::chrono::steady_clock::now() - m_loading->started > noticeAfter) {
        m_loading->announced = true;
        showNotice(TextNoticeReading, TextNoticeReadingHint,
                   [table = m_loading->table] { return table; });
    }
    return 1;
}

void TablePane::takeResult()
{
    const std::unique_ptr<Loading> loading = std::move(m_loading);
    try {
        loading->statement->result();
        showRows(std::move(loading->statement), loading->keepPlace && hasTable());
    } catch (const DorCPP::DorX& x) {
        fail([x] { return messageOf(x); });
    } catch (const OviAPI::aCDataFailure&) {
        fail([] { return textOf(TextErrorOther); });
    }
}

void TablePane::showRows(std::unique_ptr<BackgroundStatement> statement, bool keepPlace)
{
    auto data = std::make_unique<xCDorvexDataSet>();
    data->SetCreatesExtendedColumns(true);
    data->OpenUsingCursor(m_connection->channel(), sql().c_str(), &statement->result(), true);
    data->SetRowCache(true);

    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    const long top = m_view.GetFirstShownRow();
    if (keepPlace && m_data->GetColCount() == data->GetColCount()) {
        for (int i = 1; i <= data->GetColCount(); ++i)
            data->GetColInfo(i)->width = m_data->GetColInfo(i)->width;
    } else {
        keepPlace = false;
    }
    m_notice.show(false);
    m_view.setAccessibleName(textOf(TextRecordsName, m_table.name).c_str());
    m_view.SetDataSet(data.get(), true);
    m_view.show(true);
    // The old dataset lives until the view has let go of it, the old cursor until its dataset has.
    m_data = std::move(data);
    m_statement = std::move(statement);
    if (!keepPlace) {
        m_view.SetFocusCell(1, 1);
        fitColumns();
    } else if (m_view.GetRowCount() > 0) {
        m_view.ScrollToRow(top);
        m_view.SetFocusCell(col, std::min(row, m_view.GetRowCount()));
    }
    tell();
}

void TablePane::cancel()
{
    if (!m_loading)
        return;
    m_timer.stop();
    m_loading.reset();
    fail([] { return textOf(TextErrorStopped); });
}

void TablePane::fail(Words reason)
{
    showNotice(TextNoticeTableFailed, TextNoticeTableFailedHint, std::move(reason));
}

void TablePane::showNotice(TextId heading, TextId hint, Words argument)
{
    m_heading = heading;
    m_hint = hint;
    m_argument = std::move(argument);
    loadTexts();
    m_view.SetDataSet(nullptr, false);
    m_data.reset();
    m_statement.reset();
    m_view.show(false);
    m_notice.show(true);
    tell();
}

PlaceInTable TablePane::place()
{
    PlaceInTable place;
    if (!m_data)
        return place;
    place.rows = m_data->GetRowCount();
    place.row = m_view.GetRow();
    const int col = m_view.GetCol();
    const OviAPI::aCColumn* column = m_data->GetColInfo(col);
    if (place.row == 0 || !column)
        return place;
    place.column = column->caption;
    if (m_data->SetRow(place.row) != 0) {
        const auto* error = m_data->getRowError(place.row);
        place.value = textOf(TextStatusError, error ? error->text : std::wstring());
        return place;
    }
    const unsigned state = m_data->CellState(col);
    const std::wstring reason = m_data->ReadOnlyReason(col);
    if ((state & (OviAPI::StampCut | OviAPI::StampInvalid)) != 0)
        place.value = textOf(TextStatusCut, m_data->CellReason(col));
    else if ((state & OviAPI::StampNull) != 0)
        place.value = textOf(TextStatusNull);
    else if (!reason.empty())
        place.value = textOf(TextStatusReadOnly, reason);
    return place;
}

std::unique_ptr<ValueStore> TablePane::value()
{
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    if (!m_data || isLoading() || row == 0 || !m_data->GetColInfo(col))
        return nullptr;
    return valueOf(*m_data, *m_connection, col, row);
}

void TablePane::fitColumns()
{
    if (hasTable())
        m_view.SetColAlignment(m_view.GetColAlignMode(), m_view.GetColAlignChars());
}

void TablePane::loadTexts()
{
    const std::wstring argument = m_argument ? m_argument() : std::wstring();
    m_notice.setNotice(textOf(m_heading, argument), textOf(m_hint, argument));
    if (hasTable())
        m_view.setAccessibleName(textOf(TextRecordsName, m_table.name).c_str());
}

OviAPI::SlotResult TablePane::onFocus(OviAPI::Object*, int, long)
{
    tell();
    return 0;
}

void TablePane::tell()
{
    OviAPI::dispatch<&TablePane::onPlaceChanged>(*this);
}

bool TablePane::onSize()
{
    layOut();
    return false;
}

void TablePane::layOut()
{
    const OviAPI::Size size = clientSize();
    m_view.move(0, 0, size.width, size.height);
    m_notice.move(0, 0, size.width, size.height);
}
