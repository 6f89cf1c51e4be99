// A source editor as assistive technology reads it.
#pragma once

#include <QAccessible>
#include <QAccessibleWidget>

#include "srcview.h"

namespace OviAPI {

// Editable text of several lines. Offsets count characters of wide text, line ends as one.
class SrcAccessible : public QAccessibleWidget,
                      public QAccessibleTextInterface,
                      public QAccessibleEditableTextInterface {
public:
    explicit SrcAccessible(SrcArea* area);

    // Makes the toolkit ask here for source editors; once.
    static void install();

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }

    void selection(int index, int* from, int* to) const override;
    int selectionCount() const override;
    void addSelection(int from, int to) override { setSelection(0, from, to); }
    void removeSelection(int index) override;
    void setSelection(int index, int from, int to) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    QString text(int from, int to) const override;
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int* from,
                             int* to) const override;
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType type, int* from,
                            int* to) const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType type, int* from,
                         int* to) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int from, int to) override;
    QString attributes(int offset, int* from, int* to) const override;

    void deleteText(int from, int to) override;
    void insertText(int offset, const QString& text) override;
    void replaceText(int from, int to, const QString& text) override;

private:
    // Null when the editor has gone and its window not yet.
    CSrcEdit::SrcNative* view() const;
    SrcSpan unitAt(int offset, QAccessible::TextBoundaryType type) const;
    QString spanText(const SrcSpan& span, int* from, int* to) const;
    SrcRange range(int from, int to) const;

    SrcArea* m_area;
};

} // namespace OviAPI
