#include "explorer/tablepane.h"

#include "explorer/sqltext.h"
#include "explorer/textlookup.h"

namespace {

constexpr int lookInterval = 10; // ms
// A table that takes longer is announced.
constexpr std::chrono::milliseconds noticeAfter(300);

// The answer of a statement that has run in the background, with its cursor.
class TableRows : public xCDorvexDataSet {
public:
    TableRows(int channel, const std::wstring& sql, std::unique_ptr<BackgroundStatement> statement)
        : m_statement(std::move(statement))
    {
        SetCreatesExtendedColumns(true);
        OpenUsingCursor(channel, sql.c_str(), &m_statement->result(), true);
        SetRowCache(true);
    }
    ~TableRows() override { SetDBCursor(nullptr, false); }

private:
    std::unique_ptr<BackgroundStatement> m_statement;
};

} // namespace

// A table that is being read.
struct TablePane::Loading {
    std::wstring table;
    bool keepPlace;
    std::unique_ptr<BackgroundStatement> statement;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
    bool announced = false;
};

TablePane::TablePane(TypicalConfirm& deleteRow)
    : RowsPane(deleteRow)
    , m_timer(lookInterval)
{
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &TablePane::look);
}

TablePane::~TablePane() = default;

void TablePane::showTable(const DorCPP::DorConnect& connection, const DatabaseTable& table)
{
    m_connection = &connection;
    begin(table, false);
}

void TablePane::refresh()
{
    if (m_connection && !m_table.name.empty())
        begin(m_table, hasRows());
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
    view().SetReadOnly(true); // these rows are about to go
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
        auto rows = std::make_unique<TableRows>(m_connection->channel(), sql(),
                                                std::move(loading->statement));
        showRows(std::move(rows), m_table.name, loading->keepPlace);
    } catch (const DorCPP::DorX& x) {
        fail([x] { return messageOf(x); });
    } catch (const OviAPI::aCDataFailure&) {
        fail([] { return textOf(TextErrorOther); });
    }
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
