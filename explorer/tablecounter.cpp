#include "explorer/tablecounter.h"

#include "explorer/sqltext.h"

namespace {

constexpr int lookInterval = 15; // ms

}

TableCounter::TableCounter(std::chrono::milliseconds limit)
    : m_limit(limit)
    , m_timer(lookInterval)
{
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &TableCounter::look);
}

TableCounter::~TableCounter()
{
    stop();
}

void TableCounter::start(const DorCPP::DorConnect& connection,
                         const std::vector<DatabaseTable>& tables, Report report)
{
    stop();
    m_connection = &connection;
    m_references.clear();
    for (const DatabaseTable& table : tables)
        m_references.push_back(tableReference(table.schema, table.name));
    m_next = 0;
    m_report = std::move(report);
    if (!m_references.empty())
        m_timer.start();
}

void TableCounter::stop()
{
    m_timer.stop();
    m_current.reset();
    m_stopping.clear();
    m_connection = nullptr;
}

OviAPI::SlotResult TableCounter::look(OviAPI::Object*)
{
    std::erase_if(m_stopping, [](const auto& statement) { return statement->isDone(); });
    if (m_current && m_current->isDone()) {
        takeResult();
    } else if (m_current && std::chrono::steady_clock::now() - m_started > m_limit) {
        m_current->cancel();
        m_stopping.push_back(std::move(m_current));
        give({TableCount::GivenUp, 0, {}});
    }
    if (!m_current && m_connection && m_next < m_references.size())
        beginNext();
    else if (!m_current && m_stopping.empty())
        m_timer.stop();
    return 1;
}

void TableCounter::beginNext()
{
    m_started = std::chrono::steady_clock::now();
    try {
        m_current = std::make_unique<BackgroundStatement>(
            *m_connection, countText(m_references[m_next]), DorCPP::ModeReadOnly);
    } catch (const DorCPP::DorX& x) {
        give({TableCount::Failed, 0, x});
    }
}

void TableCounter::takeResult()
{
    const std::unique_ptr<BackgroundStatement> statement = std::move(m_current);
    TableCount count;
    try {
        DorCPP::DorCursor& cursor = statement->result();
        int64_t rows = 0;
        cursor.fetch(DorCPP::FetchFirst, 0);
        cursor.getData(1, DorCPP::TypeBigint, &rows, sizeof rows);
        count.rows = static_cast<long>(rows);
    } catch (const DorCPP::DorX& x) {
        count = {TableCount::Failed, 0, x};
    }
    give(count);
}

// The report may stop or start the counter.
void TableCounter::give(const TableCount& count)
{
    const Report report = m_report;
    report(m_next++, count);
}
