#include "explorer/tablelist.h"

#include <algorithm>
#include <optional>

#include <oviapi/painter.h>

#include "explorer/textlookup.h"

namespace {

constexpr long longestText = 260; // characters with the terminator
constexpr wchar_t unknown[] = L"?";
constexpr int narrowestName = 80; // px

} // namespace

TableList::TableList()
{
    addTableColumn(L"name", longestText);
    addTableColumn(L"kind", longestText);
    addTableColumn(L"rows", longestText);
    OviAPI::aCColumn& rows = *m_data.GetColInfo(Rows);
    rows.autoAlign = false;
    rows.cellAlign = OviAPI::TextRight | OviAPI::TextVCenter;
    SetListBoxMode(true, OneWholeRow);
    ShowRowHeaders(false);
    SetWideMargin(true);
}

TableList::~TableList()
{
    SetDataSet(nullptr, false);
}

void TableList::addTableColumn(const wchar_t* name, long size)
{
    auto* column = new OviAPI::aCColumn(name, static_cast<unsigned char>(OviAPI::DataType::Text),
                                        size, name, 0, 0, OviAPI::aCColumn::DisplayText);
    column->readOnly = true;
    m_data.AddColDef(column); // owned by the dataset
}

bool TableList::create()
{
    if (!OviAPI::aCRecordView::create())
        return false;
    loadTexts();
    SetDataSet(&m_data, true);
    return true;
}

void TableList::setTables(const std::vector<DatabaseTable>& tables)
{
    m_tables = tables;
    m_counts.assign(tables.size(), std::nullopt);
    m_data.DeleteAllRow();
    m_data.Reserve(static_cast<long>(tables.size()));
    // The schema says something only where there are several.
    const bool several = std::any_of(tables.begin(), tables.end(), [&](const DatabaseTable& table) {
        return table.schema != tables.front().schema;
    });
    for (const DatabaseTable& table : tables)
        m_data.AppendTexts(
            {(several ? table.schema + L"." + table.name : table.name).c_str(), L"", L""});
    for (size_t i = 0; i < tables.size(); ++i)
        fillRow(i);
    m_data.RefreshViews();
    fitColumns();
    ReShow(0, true, true, true, nullptr);
    if (!tables.empty())
        SetFocusCell(Name, 1);
}

void TableList::setCount(size_t table, const TableCount& count)
{
    if (table >= m_counts.size())
        return;
    m_counts[table] = count;
    fillRow(table);
    m_data.RefreshViews();
    fitColumns();
}

std::wstring TableList::countText(size_t table)
{
    return m_data.GetCellText(Rows, static_cast<long>(table) + 1);
}

int TableList::currentTable() const
{
    const long row = GetRow();
    return row < 1 || row > static_cast<long>(m_tables.size()) ? -1 : static_cast<int>(row) - 1;
}

void TableList::fillRow(size_t table)
{
    const long row = static_cast<long>(table) + 1;
    m_data.StoreText(Kind, row, textOf(m_tables[table].isView ? TextKindView : TextKindTable));
    const std::optional<TableCount>& count = m_counts[table];
    if (!count)
        return;
    if (count->state == TableCount::Known) {
        m_data.StoreText(Rows, row, groupedNumber(count->rows));
        m_data.MarkCell(Rows, row, 0, L"");
        return;
    }
    const std::wstring reason = count->state == TableCount::GivenUp
                                    ? textOf(TextCountUnknown)
                                    : textOf(TextCountFailed, messageOf(count->error));
    m_data.StoreText(Rows, row, unknown);
    m_data.MarkCell(Rows, row, OviAPI::StampInvalid, reason.c_str());
}

void TableList::loadTexts()
{
    m_data.GetColInfo(Name)->caption = textOf(TextColumnName);
    m_data.GetColInfo(Kind)->caption = textOf(TextColumnKind);
    m_data.GetColInfo(Rows)->caption = textOf(TextColumnRows);
    for (size_t i = 0; i < m_tables.size(); ++i)
        fillRow(i);
    setAccessibleName(textOf(TextTableListName).c_str());
    m_data.RefreshViews();
    fitColumns();
}

bool TableList::onVisClientSize()
{
    const bool handled = OviAPI::aCRecordView::onVisClientSize();
    fitColumns();
    return handled;
}

bool TableList::SetFont(OviAPI::Font font, short repaint)
{
    const bool changed = OviAPI::aCRecordView::SetFont(font, repaint);
    fitColumns();
    return changed;
}

// Scroll bars come and go with the widths, and with them the room that there is.
void TableList::fitColumns()
{
    if (!isCreated() || !GetDataSet() || m_fitting)
        return;
    m_fitting = true;
    FitColumn(Kind);
    FitColumn(Rows);
    const int others = m_data.GetColInfo(Kind)->width + m_data.GetColInfo(Rows)->width;
    SetColWidth(Name, std::max(narrowestName, clientWidth() - others));
    m_fitting = false;
}
