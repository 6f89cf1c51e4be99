// Opening, the cursor and its columns; reading stands in dordataset_read.cpp, writing in
// dordataset_write.cpp, the errors in dordataset_errors.cpp.
#include "data/dordataset.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <dorcpp/charset.h>

#include "data/orderbycolumn.h"
#include "data/xccolumn.h"

using DorCPP::DorCursor;
using DorCPP::DorX;

namespace {

// The name in a descriptor, without the blanks behind it.
std::wstring wideName(const char* name, size_t length)
{
    std::string_view text(name, std::min<size_t>(length, t_ParamDesc::nameSize));
    text = text.substr(0, text.find('\0'));
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return DorCPP::widen(text, DorCPP::getStdCharset());
}

// The query as the database client takes it.
std::string narrowQuery(const wchar_t* sql)
{
    return DorCPP::narrow(sql ? sql : L"", DorCPP::getStdCharset());
}

// Types whose size in a column is counted in characters.
bool countsCharacters(unsigned char type)
{
    switch (type) {
    case DorCPP::TypeChar:
    case DorCPP::TypeVarchar:
    case DorCPP::TypeText:
    case DorCPP::TypeNchar:
    case DorCPP::TypeNvarchar:
    case DorCPP::TypeExtfile:
        return true;
    default:
        return false;
    }
}

} // namespace

xCDorvexDataSet::xCDorvexDataSet()
{
    SetStamp(OviAPI::StampDefault, L"DEFAULT");
    SetStamp(OviAPI::StampUntouched, L"DEFAULT");
    SetStamp(OviAPI::StampServer, L"DEFAULT");
}

xCDorvexDataSet::~xCDorvexDataSet()
{
    m_insertCursor.reset();
    releaseCursor();
}

void xCDorvexDataSet::Open(int channel, const wchar_t* sql, int mode, bool autoColumns)
{
    m_query = narrowQuery(sql);
    m_channel = channel;
    m_writeBack = true;
    m_openedByStatement = false;
    try {
        m_connection.attach(channel, false);
        m_cursorMode = mode;
        SetDBCursor(executedCursor().release(), true);
    } catch (const DorX& x) {
        if (!ErrorHandler(Fetching, x, 0))
            throw;
        return;
    }
    if (autoColumns)
        AutoCreateColumns();
}

void xCDorvexDataSet::OpenUsingCursor(int channel, const wchar_t* sql, DorCursor* cursor,
                                      bool autoColumns)
{
    m_query = narrowQuery(sql);
    m_channel = channel;
    m_writeBack = true;
    m_openedByStatement = false;
    SetDBCursor(cursor, false);
    if (autoColumns)
        AutoCreateColumns();
}

void xCDorvexDataSet::OpenUsingStatement(int channel, DorCursor* cursor,
                                         DorCPP::DorStatement* statement, DorCPP::BindMap* binds,
                                         bool autoColumns)
{
    m_query.clear();
    m_statement = statement;
    m_binds = binds;
    m_channel = channel;
    SetDBCursor(cursor, false);
    m_openedByStatement = true;
    if (autoColumns)
        AutoCreateColumns();
}

void xCDorvexDataSet::OpenByCursor(int channel, int cursorHandle, bool keep)
{
    m_query.clear();
    m_writeBack = false;
    m_openedByStatement = false;
    m_channel = channel;
    auto cursor = std::make_unique<DorCursor>();
    cursor->attach(cursorHandle, false);
    SetDBCursor(cursor.release(), true);
    AutoCreateColumns();
    m_openByCursor = keep;
}

short xCDorvexDataSet::ReOpen(const wchar_t* sql)
{
    if (sql)
        m_query = narrowQuery(sql);
    m_writeBack = true;
    settleBlob();
    try {
        auto cursor = executedCursor();
        if (IsRowCacheOn())
            ClearRowCache();
        SetDBCursor(cursor.release(), true);
    } catch (const DorX& x) {
        return ErrorHandler(Fetching, x, 0) ? 1 : 0;
    }
    return 0;
}

void xCDorvexDataSet::ResetDataSet(bool tellViews)
{
    settleBlob();
    SetCurrentRow(0);
    try {
        executeAgain();
        describe();
        forgetRowErrors();
        CountColumns();
    } catch (const DorX& x) {
        if (ErrorHandler(Fetching, x, 0))
            return;
    }
    m_rowCount = std::max<int64_t>(m_answerRows, 0);
    if (IsRowCacheOn())
        ClearRowCache();
    if (tellViews)
        RefreshViews();
}

std::unique_ptr<DorCursor> xCDorvexDataSet::executedCursor()
{
    auto cursor = std::make_unique<DorCursor>();
    cursor->create(m_connection, m_cursorMode, nullptr, true);
    cursor->execute(m_query.c_str());
    m_openedByStatement = false;
    return cursor;
}

// A cursor that was taken over without its text keeps the answer it has.
void xCDorvexDataSet::executeAgain()
{
    if (!m_cursor)
        return;
    if (m_openedByStatement && m_statement)
        m_cursor->execute(*m_statement, m_binds);
    else if (!m_query.empty())
        m_cursor->execute(m_query.c_str());
}

void xCDorvexDataSet::SetDBCursor(DorCursor* cursor, bool owns)
{
    if (cursor != m_cursor)
        releaseCursor();
    m_insertCursor.reset();
    m_rowBuffer.reset();
    m_rowBufferSize = 0;
    SetCurrentRow(0);
    m_cursor = cursor;
    m_ownsCursor = owns;
    if (!cursor)
        return;
    try {
        describe();
        forgetRowErrors();
        m_connection.attach(m_channel, false);
        m_access = accessOf();
    } catch (const DorX&) {
        releaseCursor();
        throw;
    }
}

xCDorvexDataSet::Access xCDorvexDataSet::accessOf() const
{
    if ((m_connection.mode(true) & DorCPP::ModeReadOnly) != 0)
        return Access::ConnectionReads;
    if ((m_cursor->mode() & DorCPP::ModeReadOnly) != 0)
        return Access::CursorReads;
    return m_cursor->isKeyed() ? Access::Writable : Access::NotKeyed;
}

bool xCDorvexDataSet::DestroyDBCursor()
{
    if (!m_cursor)
        return false;
    releaseCursor();
    return true;
}

// Leaves the dataset without a cursor and without rows. A cursor that is shared with another owner
// keeps its answer; every other one is closed by its destructor.
void xCDorvexDataSet::releaseCursor()
{
    settleBlob();
    DorCursor* cursor = std::exchange(m_cursor, nullptr);
    m_access = Access::NotKeyed;
    m_described = -1;
    m_rowLength = -1;
    m_answerRows = -1;
    m_slots.clear();
    SetCurrentRow(0);
    if (std::exchange(m_ownsCursor, false))
        delete cursor;
}

// All that is known of the answer, and room for one row of it.
void xCDorvexDataSet::describe()
{
    m_described = -1;
    m_rowLength = -1;
    m_answerRows = -1;
    m_slots.clear();
    buildColDesc();
    layOut();
    const int64_t length = GetRowBufferLength(m_cursor);
    buildRowCount();
    m_rowBuffer.reset();
    m_rowBufferSize = 0;
    makeRoom(length);
}

DorCursor* xCDorvexDataSet::GetDBInsCursor()
{
    if (!m_insertCursor) {
        auto cursor = std::make_unique<DorCursor>();
        cursor->create(m_connection, m_connection.mode(false), nullptr, true);
        m_insertCursor = std::move(cursor);
    }
    return m_insertCursor.get();
}

void xCDorvexDataSet::buildColDesc()
{
    const int count = m_cursor ? m_cursor->columnCount() : 0;
    if (count <= m_described)
        return;
    m_descriptors.assign(static_cast<size_t>(count) + 1, t_ParamDesc{});
    for (int i = 1; i <= count; ++i)
        m_cursor->answerDesc(i, m_descriptors[static_cast<size_t>(i)]);
    m_described = count;
}

// Empty for a column that the answer does not have, and without a table for one that is computed.
TableColumnName xCDorvexDataSet::nameOf(int column) const
{
    if (column < 1 || column > m_described)
        return {};
    const t_ParamDesc& desc = columnDesc(column);
    return {wideName(desc.owner, desc.ownerLength), wideName(desc.table, desc.tableLength),
            wideName(desc.column, desc.columnLength)};
}

// The table of the first column; where that is computed, of the first that is not. Throws DorX when
// there is none.
TableColumnName xCDorvexDataSet::tableName() const
{
    for (int i = 1; i <= m_described; ++i) {
        if (TableColumnName name = nameOf(i); name.hasTable())
            return name;
    }
    throw DorX(-1, DorCPP::CodeNotUpdatable, OviAPI::Phrase::RowsNotKeyed);
}

const t_ParamDesc& xCDorvexDataSet::columnDesc(int column) const
{
    if (column < 0 || column > m_described)
        throw OviAPI::aCDataFailure(OviAPI::aCDataFailure::IndexOutOfRange);
    return m_descriptors[static_cast<size_t>(column)];
}

void xCDorvexDataSet::buildRowCount()
{
    m_answerRows = 0;
    try {
        if (m_cursor)
            m_answerRows = m_cursor->selectRowCount();
    } catch (const DorX& x) {
        ErrorHandler(Fetching, x, 0);
    } catch (const OviAPI::aCDataFailure&) { // then there are no rows
    }
}

long xCDorvexDataSet::GetRowCount()
{
    if (m_answerRows < 0)
        buildRowCount();
    return m_answerRows + (HasVirtualRow() ? 1 : 0);
}

void xCDorvexDataSet::AutoCreateColumns()
{
    if (!m_cursor)
        throw OviAPI::aCDataFailure(OviAPI::aCDataFailure::NoCursor);
    DeleteAllColDef();
    for (int i = 1; i <= m_described; ++i) {
        const t_ParamDesc& desc = columnDesc(i);
        auto column = newColumn();
        column->name = wideName(desc.column, desc.columnLength);
        column->caption = column->name;
        column->dbmsType = desc.type;
        column->dataType = OviAPI::DorToApsType(desc.type);
        column->size = GetDataLenFromType(desc.type, desc.length);
        if (countsCharacters(desc.type))
            column->size /= static_cast<long>(sizeof(wchar_t));
        column->format.clear();
        column->blobType = 0;
        AddColDef(column.release(), 0); // the dataset owns it
    }
}

std::unique_ptr<OviAPI::aCColumn> xCDorvexDataSet::newColumn() const
{
    if (m_createExtended)
        return std::make_unique<xCColumn>();
    if (m_createOrderBy)
        return std::make_unique<xCOrderByColumn>();
    return std::make_unique<OviAPI::aCColumn>();
}
