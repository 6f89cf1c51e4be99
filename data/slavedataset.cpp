#include "data/slavedataset.h"

#include <string_view>
#include <utility>

#include <dorcpp/charset.h>

using DorCPP::DorCursor;
using DorCPP::DorX;

// Learns that the master dataset goes.
class xCSlaveDataSet::MasterWatch : public OviAPI::aCDataSetViewer {
public:
    MasterWatch(xCSlaveDataSet& detail, OviAPI::aCDataSet& master)
        : m_detail(detail)
        , m_master(&master)
    {
        master.AddViewer(this);
    }
    ~MasterWatch() override
    {
        if (m_master)
            m_master->RemoveViewer(this);
    }
    MasterWatch(const MasterWatch&) = delete;
    MasterWatch& operator=(const MasterWatch&) = delete;

    void onDataSetChanged() override {}
    void onDataSetDestroyed() override { m_master = m_detail.m_master = nullptr; }

private:
    xCSlaveDataSet& m_detail;
    OviAPI::aCDataSet* m_master;
};

xCSlaveDataSet::xCSlaveDataSet() = default;

xCSlaveDataSet::~xCSlaveDataSet() = default;

void xCSlaveDataSet::AddLink(int masterColumn, int parameter)
{
    m_links.append({masterColumn, parameter});
}

void xCSlaveDataSet::SetMasterDataSet(OviAPI::aCDataSet* master)
{
    m_masterWatch = master ? std::make_unique<MasterWatch>(*this, *master) : nullptr;
    m_master = master;
}

void xCSlaveDataSet::SetMasterGrid(OviAPI::aCRecordView* view)
{
    m_masterView = view;
    m_follower.reset(); // ends the connection to the view before
    if (!view)
        return;
    m_follower = std::make_unique<OviAPI::Object>();
    OviAPI::connect<&OviAPI::aCRecordView::onRowGetFocus>(
        *view, *m_follower, [this](OviAPI::Object* sender, long previous, long row) {
            return onGridRowGetFocus(sender, previous, row);
        });
}

OviAPI::SlotResult xCSlaveDataSet::onGridRowGetFocus(OviAPI::Object*, long, long row)
{
    m_masterRow = row;
    try {
        updateCursor();
    } catch (const DorX&) {
        m_linkState = LinkFailed;
    }
    return 0;
}

void xCSlaveDataSet::Open(int channel, const wchar_t* sql, int mode, bool autoColumns)
{
    const std::wstring_view text = sql ? sql : L"";
    // Kept: as many bytes as the text has characters.
    std::string narrow(text.size() + 1, '\0');
    narrow.resize(DorCPP::wcs2mbs(narrow.data(), text.size(), text.data(), text.size(),
                                  DorCPP::getStdCharset()));
    m_query = narrow;
    m_writeBack = true;
    m_channel = channel;
    m_mode = m_cursorMode = mode;
    updateCursor();
    if (autoColumns)
        AutoCreateColumns();
}

void xCSlaveDataSet::updateCursor()
{
    if (hasMasterRow() && !prepareLinks())
        return;
    auto cursor = executedCursor();
    if (IsRowCacheOn())
        ClearRowCache();
    SetDBCursor(cursor.release(), true);
    m_linkState = LinkFine;
    RefreshViews();
}

bool xCSlaveDataSet::hasMasterRow() const
{
    return m_master && m_master->GetRowCount() != 0 && m_links.count() != 0;
}

bool xCSlaveDataSet::prepareLinks()
{
    if (!m_prepared || m_preparedQuery != m_query) {
        DorCPP::DorConnect connection;
        connection.attach(m_channel, false);
        m_parameterised.create(connection, m_query.c_str(), false);
        m_preparedQuery = m_query;
        m_prepared = true;
    }
    if (m_parameterised.paramCount() == static_cast<int>(m_links.count()))
        return true;
    m_linkState = LinkMismatch;
    return false;
}

std::unique_ptr<DorCursor> xCSlaveDataSet::executedCursor()
{
    if (!hasMasterRow())
        return plainCursor();
    if (!prepareLinks())
        throw DorX(-1, DorCPP::CodeBadBind, OviAPI::Phrase::DbBadBind);
    return linkedCursor();
}

std::unique_ptr<DorCursor> xCSlaveDataSet::plainCursor()
{
    DorCPP::DorConnect connection;
    connection.attach(m_channel, false);
    auto cursor = std::make_unique<DorCursor>();
    cursor->create(connection, m_mode, nullptr, true);
    cursor->execute(m_query.c_str());
    m_openedByStatement = false;
    return cursor;
}

std::unique_ptr<DorCursor> xCSlaveDataSet::linkedCursor()
{
    DorCPP::DorConnect connection;
    connection.attach(m_channel, false);
    MasterValues values = readMasterValues();
    auto cursor = std::make_unique<DorCursor>();
    cursor->create(connection, linkedMode, nullptr, true);
    cursor->execute(m_parameterised, &values.binds);
    keepMasterValues(std::move(values));
    return cursor;
}

xCSlaveDataSet::MasterValues xCSlaveDataSet::readMasterValues()
{
    MasterValues values;
    for (const Link& link : m_links) {
        const std::wstring text = m_master->GetCellText(link.masterColumn, m_masterRow);
        const unsigned state = m_master->CellState(link.masterColumn);
        const bool none = (state & (OviAPI::StampNull | OviAPI::defaultStamps)) != 0;
        const std::string& value =
            values.texts.emplace_back(DorCPP::narrow(text, DorCPP::getStdCharset()));
        values.binds.bind(link.parameter, {DorCPP::TypeChar, value.data(), value.size(),
                                           static_cast<short>(none ? 1 : 0)});
    }
    return values;
}

void xCSlaveDataSet::keepMasterValues(MasterValues values)
{
    m_values = std::move(values); // a list that is moved leaves its texts where they are
    m_statement = &m_parameterised;
    m_binds = &m_values.binds;
    m_openedByStatement = true;
}
