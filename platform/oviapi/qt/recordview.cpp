#include <oviapi/recordview.h>

#include <QAccessible>
#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QMimeData>
#include <QToolTip>

#include <oviapi/painter.h>
#include <oviapi/phrases.h>
#include <oviapi/recordcopy.h>
#include <oviapi/recordeditor.h>

#include "convert.h"
#include "native.h"
#include "recordaccessible.h"
#include "recordpaint.h"

namespace OviAPI {

std::unique_ptr<Native> aCRecordView::makeNative()
{
    RecordAccessible::install();
    return aCApsWnd::makeNative();
}

void aCRecordView::nativeGoes()
{
    m_editor->nativeGoes();
    m_faces.reset();
    aCApsWnd::nativeGoes();
}

bool aCRecordView::onDraw(Painter* on, const Rect& rect)
{
    if (!on || !isCreated())
        return false;
    if (syncLayout())
        m_layoutTimer.start();
    RecordPainter(*this, *on, rect).draw();
    return true;
}

void aCRecordView::tellFocus()
{
    if (!QAccessible::isActive() || !hasFocus())
        return;
    QAccessibleInterface* table = QAccessible::queryAccessibleInterface(widgetOf(this));
    QAccessibleInterface* cell = table ? table->focusChild() : nullptr;
    if (!cell)
        return;
    QAccessibleEvent event(cell, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

long aCRecordView::Copy(bool captions)
{
    if (!m_dataSet)
        return 0;
    const RecordCopy copy = RecordCopy::make(*m_dataSet, GetSelection(), captions);
    if (copy.rows == 0 && !captions)
        return 0;
    auto data = std::make_unique<QMimeData>();
    data->setText(toQString(copy.text));
    data->setHtml(toQString(copy.html));
    QGuiApplication::clipboard()->setMimeData(data.release()); // the clipboard owns it
    if (copy.cut) {
        const std::wstring note = phrase(Phrase::RowsCopied, std::to_wstring(copy.rows));
        QToolTip::showText(QCursor::pos(), toQString(note), widgetOf(this));
    }
    repaint(); // rows have been read that are not on the screen
    return static_cast<long>(copy.rows);
}

} // namespace OviAPI
