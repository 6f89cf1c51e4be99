#include "explorer/detailrows.h"

#include <dorcpp/charset.h>

namespace {

constexpr int lookInterval = 10; // ms

} // namespace

DetailRows::DetailRows(const DorCPP::DorConnect& connection, const std::wstring& sql, Report report)
    : m_connection(connection)
    , m_report(std::move(report))
    , m_timer(lookInterval)
{
    // Open would cut a text that needs more bytes than it has characters.
    m_query = DorCPP::narrow(sql, DorCPP::getStdCharset());
    m_channel = connection.channel();
    SetCreatesExtendedColumns(true);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &DetailRows::look);
}

DetailRows::~DetailRows()
{
    SetDBCursor(nullptr, false); // it is the statement's
}

void DetailRows::readFor(OviAPI::aCDataSet* master, long row)
{
    SetMasterDataSet(master);
    m_masterRow = row;
    updateCursor();
}

void DetailRows::updateCursor()
{
    cancel();
    if (!hasMasterRow() || !prepareLinks())
        return;
    m_asked = readMasterValues();
    m_reading = std::make_unique<BackgroundStatement>(m_connection, m_parameterised, m_asked.binds,
                                                      linkedMode);
    m_timer.start();
}

void DetailRows::cancel()
{
    m_timer.stop();
    m_reading.reset();
}

OviAPI::SlotResult DetailRows::look(OviAPI::Object*)
{
    if (m_reading && m_reading->isDone())
        takeResult();
    return 1;
}

// Nothing may be touched behind the report: whoever gets it may delete the dataset.
void DetailRows::takeResult()
{
    m_timer.stop();
    const Report report = m_report;
    std::unique_ptr<BackgroundStatement> done = std::move(m_reading);
    try {
        DorCPP::DorCursor& cursor = done->result();
        if (IsRowCacheOn())
            ClearRowCache();
        SetDBCursor(&cursor, false);
        m_shown = std::move(done);
        keepMasterValues(std::move(m_asked));
        if (GetColCount() == 0)
            AutoCreateColumns();
        SetRowCache(true);
        RefreshViews();
    } catch (const DorCPP::DorX& x) {
        m_linkState = LinkFailed;
        return report(&x);
    }
    report(nullptr);
}
