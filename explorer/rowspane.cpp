#include "explorer/rowspane.h"

#include <algorithm>

#include <oviapi/msgbox.h>

#include "app/yesnoconfirmdlg.h"
#include "explorer/textlookup.h"

using OviAPI::aCErrorHolder;
using OviAPI::SlotResult;

RowsPane::RowsPane(TypicalConfirm& deleteRow)
    : m_deleteRow(deleteRow)
    , m_conflict(3)
{
    using OviAPI::aCRecordView;
    OviAPI::connect<&aCRecordView::onCellGetFocus>(m_view, *this, &RowsPane::onFocus);
    OviAPI::connect<&aCRecordView::onDeleteRowKey>(m_view, *this, &RowsPane::onDeleteKey);
    OviAPI::connect<&aCRecordView::onEditRefused>(m_view, *this, &RowsPane::onRefused);
    OviAPI::connect<&aCRecordView::onEditStored>(m_view, *this, &RowsPane::onStored);
    OviAPI::connect<&aCRecordView::onRowBegun>(m_view, *this, &RowsPane::onBegun);
    OviAPI::connect<&aCRecordView::onEditEnded>(m_view, *this, &RowsPane::onEnded);
    OviAPI::connect<&aCRecordView::onOpenValue>(m_view, *this, &RowsPane::onOpen);
    OviAPI::connect<&ActionBar::onAction>(m_conflict, *this, &RowsPane::onConflictAction);
}

RowsPane::~RowsPane()
{
    m_view.SetDataSet(nullptr, false);
}

bool RowsPane::onPlaceChanged()
{
    return false;
}

bool RowsPane::onRowsChanged()
{
    return false;
}

bool RowsPane::onRowBegun()
{
    return false;
}

bool RowsPane::onShowValue()
{
    return false;
}

bool RowsPane::create()
{
    if (!WExtPanel::create())
        return false;
    for (OviAPI::WVisualObject* child :
         std::initializer_list<OviAPI::WVisualObject*>{&m_conflict, &m_view, &m_notice}) {
        child->setParent(this);
        child->show(child == &m_notice);
        if (!child->create())
            return false;
    }
    m_view.SetWideMargin(true);
    m_view.SetReadOnly(false); // the dataset says which cells are
    loadTexts();
    layOut();
    return true;
}

// --- what is shown

void RowsPane::showRows(std::unique_ptr<xCDorvexDataSet> rows, const std::wstring& name,
                        bool keepPlace)
{
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    const long top = m_view.GetFirstShownRow();
    keepPlace = keepPlace && hasRows() && m_rows->GetColCount() == rows->GetColCount();
    if (keepPlace) {
        for (int i = 1; i <= rows->GetColCount(); ++i)
            rows->GetColInfo(i)->width = m_rows->GetColInfo(i)->width;
    }
    m_name = name;
    showConflict(NoConflict);
    m_notice.show(false);
    m_view.setAccessibleName(textOf(TextRecordsName, m_name).c_str());
    m_view.SetDataSet(rows.get(), true);
    m_view.show(true);
    m_rows = std::move(rows); // those before live until the view has let go of them
    m_view.SetReadOnly(false);
    ++m_edition;
    if (!keepPlace) {
        m_view.SetFocusCell(1, 1);
        fitColumns();
    } else if (m_view.GetRowCount() > 0) {
        m_view.ScrollToRow(top);
        m_view.SetFocusCell(col, std::min(row, m_view.GetRowCount()));
    }
    tell();
}

void RowsPane::showNotice(TextId heading, TextId hint, Words argument)
{
    m_heading = heading;
    m_hint = hint;
    m_argument = std::move(argument);
    loadTexts();
    showConflict(NoConflict);
    m_view.SetDataSet(nullptr, false);
    m_rows.reset();
    ++m_edition;
    m_view.show(false);
    m_notice.show(true);
    tell();
}

void RowsPane::rowsReplaced()
{
    ++m_edition;
    m_view.SetReadOnly(false);
    showConflict(NoConflict);
    m_view.SetFocusCell(std::max(m_view.GetCol(), 1), 1);
    tell();
}

int RowsPane::columnOf(const std::wstring& name) const
{
    for (int i = 1; m_rows && i <= m_rows->GetColCount(); ++i)
        if (m_rows->GetColInfo(i)->name == name)
            return i;
    return 0;
}

std::wstring RowsPane::faultOf(long row)
{
    const auto* error = m_rows ? m_rows->getRowError(row) : nullptr;
    return error ? error->text : std::wstring();
}

PlaceInTable RowsPane::place()
{
    PlaceInTable place;
    if (!m_rows)
        return place;
    place.rows = m_rows->GetRowCount();
    place.row = m_view.GetRow();
    const int col = m_view.GetCol();
    const OviAPI::aCColumn* column = m_rows->GetColInfo(col);
    if (place.row == 0 || !column)
        return place;
    place.column = column->caption;
    if (m_rows->SetRow(place.row) != 0) {
        place.value = textOf(TextStatusError, faultOf(place.row));
        return place;
    }
    const unsigned state = m_rows->CellState(col);
    const std::wstring reason = m_rows->ReadOnlyReason(col);
    const std::wstring fault = faultOf(m_rows->IsVirtualRow(place.row) ? 0 : place.row);
    if (!fault.empty())
        place.value = textOf(TextStatusError, fault);
    else if ((state & (OviAPI::StampCut | OviAPI::StampInvalid)) != 0)
        place.value = textOf(TextStatusCut, m_rows->CellReason(col));
    else if ((state & OviAPI::StampNull) != 0)
        place.value = textOf(TextStatusNull);
    else if (!reason.empty())
        place.value = textOf(TextStatusReadOnly, reason);
    return place;
}

void RowsPane::fitColumns()
{
    if (hasRows())
        m_view.SetColAlignment(m_view.GetColAlignMode(), m_view.GetColAlignChars());
}

std::unique_ptr<ValueStore> RowsPane::value(const DorCPP::DorConnect& connection)
{
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    if (!hasRows() || row == 0 || m_rows->IsVirtualRow(row) || !m_rows->GetColInfo(col))
        return nullptr;
    return valueOf(*m_rows, connection, col, row);
}

void RowsPane::loadTexts()
{
    const std::wstring argument = m_argument ? m_argument() : std::wstring();
    m_notice.setNotice(textOf(m_heading, argument), textOf(m_hint, argument));
    if (hasRows())
        m_view.setAccessibleName(textOf(TextRecordsName, m_name).c_str());
    showConflict(m_conflictKind);
}

// --- editing

bool RowsPane::leave()
{
    if (!m_view.IsEditing() && !m_view.HasPendingEdit())
        return true;
    if (m_view.FinishEdit())
        return true;
    const bool isNew = m_rows->HasVirtualRow() && m_rows->IsVirtualRow(m_view.GetRow());
    const std::wstring fault = faultOf(isNew ? 0 : m_view.GetRow());
    using OviAPI::MsgBox;
    if (MsgBox::showEx(textOf(TextEditTitle).c_str(), textOf(TextEditGiveUp, fault).c_str(),
                       MsgBox::Yes | MsgBox::No, MsgBox::No) != MsgBox::Yes) {
        m_view.setFocus();
        return false;
    }
    m_view.GiveUpEdit();
    return true;
}

// Whether the rows can be changed at all.
bool RowsPane::areWritable()
{
    for (int i = 1; m_rows && i <= m_rows->GetColCount(); ++i)
        if (m_rows->IsUpdatable(i))
            return true;
    return false;
}

bool RowsPane::canAdd()
{
    return areWritable() && !m_view.IsReadOnly();
}

bool RowsPane::canChange()
{
    return canAdd() && m_view.GetRow() != 0 && m_rows->SetRow(m_view.GetRow()) == 0 &&
           m_rows->ReadOnlyReason(m_view.GetCol()).empty();
}

bool RowsPane::canDefault()
{
    return canChange() && m_rows->IsVirtualRow(m_view.GetRow());
}

bool RowsPane::canDelete()
{
    return canAdd() && m_view.GetRow() != 0;
}

void RowsPane::addRow()
{
    if (canAdd() && m_view.AppendRow())
        m_view.setFocus();
}

void RowsPane::deleteRow()
{
    if (!canDelete())
        return;
    const bool isNew = m_rows->IsVirtualRow(m_view.GetRow());
    if (isNew ? !m_view.HasPendingEdit() || confirmDelete() : leave() && confirmDelete()) {
        if (m_view.DeleteFocusedRow())
            rowsHaveChanged();
        else
            onRefused(nullptr, 0, m_view.GetRow());
    }
    m_view.setFocus();
}

bool RowsPane::confirmDelete()
{
    if (m_deleteRow.Value == TypicalConfirm::Yes)
        return true;
    const std::wstring question = textOf(TextDeleteQuestion, groupedNumber(m_view.GetRow()));
    YesNoConfirmDlg dialog(0, nullptr, question.c_str());
    dialog.setParent(this);
    dialog.width = 520;
    dialog.noEnabledWhenRemembered = false; // rows that can never be deleted help nobody
    const bool yes = dialog.create() && dialog.execModal() == 1;
    if (yes && dialog.rememberChoice)
        m_deleteRow.Value = TypicalConfirm::Yes;
    return yes;
}

void RowsPane::setNull()
{
    if (canChange())
        m_view.SetFocusedNull();
}

void RowsPane::setDefault()
{
    if (canDefault())
        m_view.SetFocusedDefault();
}

void RowsPane::rowsHaveChanged()
{
    ++m_edition;
    OviAPI::dispatch<&RowsPane::onRowsChanged>(*this);
    tell();
}

// --- what the view tells

SlotResult RowsPane::onFocus(OviAPI::Object*, int, long)
{
    tell();
    return 0;
}

SlotResult RowsPane::onDeleteKey(OviAPI::Object*, long)
{
    deleteRow();
    return 1;
}

SlotResult RowsPane::onRefused(OviAPI::Object*, int, long row)
{
    const auto* error = m_rows ? m_rows->getRowError(row) : nullptr;
    Conflict conflict = NoConflict;
    if (error && error->kind == aCErrorHolder::NoSuchRow)
        conflict = RowDeleted;
    else if (error && error->code == DorCPP::CodeRowChanged)
        conflict = RowChanged;
    showConflict(conflict);
    tell();
    return 0;
}

SlotResult RowsPane::onStored(OviAPI::Object*, int, long)
{
    showConflict(NoConflict);
    rowsHaveChanged();
    return 0;
}

SlotResult RowsPane::onBegun(OviAPI::Object*, long)
{
    OviAPI::dispatch<&RowsPane::onRowBegun>(*this);
    tell();
    return 0;
}

SlotResult RowsPane::onEnded(OviAPI::Object*)
{
    showConflict(NoConflict);
    tell();
    return 0;
}

SlotResult RowsPane::onOpen(OviAPI::Object*, int, long)
{
    OviAPI::dispatch<&RowsPane::onShowValue>(*this);
    return 1;
}

// --- a change that meets one of another session

SlotResult RowsPane::onConflictAction(OviAPI::Object*, int action)
{
    switch (action) {
    case ShowTheirs:
        m_view.ShowTheirs();
        break;
    case KeepMine:
        m_view.KeepMine();
        break;
    default:
        m_view.GiveUpEdit();
        m_rows->RefreshRow(m_view.GetRow());
        m_rows->RefreshViews();
        showConflict(NoConflict);
    }
    m_view.setFocus();
    return 1;
}

void RowsPane::showConflict(Conflict conflict)
{
    const bool gone = conflict == RowDeleted;
    m_conflict.setTexts(textOf(gone ? TextConflictDeleted : TextConflictChanged),
                        {gone ? std::wstring() : textOf(TextConflictTheirs),
                         gone ? std::wstring() : textOf(TextConflictMine),
                         textOf(TextConflictGiveUp)});
    if (m_conflictKind == conflict)
        return;
    m_conflictKind = conflict;
    m_conflict.show(conflict != NoConflict);
    layOut();
}

void RowsPane::tell()
{
    OviAPI::dispatch<&RowsPane::onPlaceChanged>(*this);
}

bool RowsPane::onSize()
{
    layOut();
    return false;
}

void RowsPane::layOut()
{
    const OviAPI::Size size = clientSize();
    const int top = m_conflictKind == NoConflict ? 0 : m_conflict.wantedHeight(size.width);
    const int height = std::max(0, size.height - top);
    m_conflict.move(0, 0, size.width, top);
    m_view.move(0, top, size.width, height);
    m_notice.move(0, top, size.width, height);
}
