// What a record view lets an application do with its editor.
#include <oviapi/recordview.h>

#include <oviapi/recordeditor.h>

namespace OviAPI {

void aCRecordView::SetReadOnly(bool readOnly)
{
    m_editor->setReadOnly(readOnly);
}

bool aCRecordView::IsReadOnly() const
{
    return m_editor->isReadOnly();
}

bool aCRecordView::EditCell(int col, long row)
{
    return m_editor->open(col, row);
}

bool aCRecordView::IsEditing() const
{
    return m_editor->isOpen();
}

bool aCRecordView::HasPendingEdit() const
{
    return m_editor->isPending();
}

bool aCRecordView::FinishEdit()
{
    return m_editor->finish();
}

void aCRecordView::GiveUpEdit()
{
    m_editor->giveUp();
}

bool aCRecordView::AppendRow()
{
    return m_editor->append();
}

bool aCRecordView::DeleteFocusedRow()
{
    return m_editor->deleteFocused();
}

bool aCRecordView::SetFocusedNull()
{
    return m_editor->setNull();
}

bool aCRecordView::SetFocusedDefault()
{
    return m_editor->setDefault();
}

bool aCRecordView::KeepMine()
{
    return m_editor->keepMine();
}

bool aCRecordView::ShowTheirs()
{
    return m_editor->showTheirs();
}

bool aCRecordView::onDeleteRowKey(long)
{
    return false;
}

bool aCRecordView::onEditRefused(int, long)
{
    return false;
}

bool aCRecordView::onEditStored(int, long)
{
    return false;
}

bool aCRecordView::onEditEnded()
{
    return false;
}

bool aCRecordView::onRowBegun(long)
{
    return false;
}

bool aCRecordView::onOpenValue(int, long)
{
    return false;
}

} // namespace OviAPI
