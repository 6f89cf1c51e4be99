// A record view as assistive technology reads it.
#pragma once

#include <map>
#include <utility>

#include <QAccessible>
#include <QAccessibleWidget>

#include <oviapi/recordview.h>

namespace OviAPI {

class ScrollArea;

// A table whose children are the column headers and the cells on the screen, row by row, and behind
// them the open editor, if there is one; any other cell is reached by its row and column. Rows behind the first 2,147,483,647 have no number there.
class RecordAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    RecordAccessible(ScrollArea* area, aCRecordView& view);
    ~RecordAccessible() override;

    // Makes the toolkit ask here for record views. It forgets that with each application.
    static void install();

    void* interface_cast(QAccessible::InterfaceType type) override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* focusChild() const override;

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override;
    int selectedCellCount() const override;
    QList<QAccessibleInterface*> selectedCells() const override;
    QString columnDescription(int column) const override;
    QString rowDescription(int row) const override;
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return 0; }
    int columnCount() const override;
    int rowCount() const override;
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override { return {}; }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int) const override { return false; }
    bool selectRow(int row) override;
    bool selectColumn(int column) override;
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent*) override {}

private:
    static QAccessibleInterface* make(const QString&, QObject* object);

    class Cell;

    struct Page { // what is on the screen
        int firstCol = 1;
        int columns = 0;
        long firstRow = 1;
        long rows = 0;
    };

    Page page() const;
    int pageCells() const;
    QAccessibleInterface* field() const; // null without an open editor
    // row 0: the header.
    QAccessibleInterface* at(int col, long row) const;
    // Lets go of cells that have been scrolled away, when there are many.
    void dropOld() const;

    aCRecordView& m_view;
    mutable std::map<std::pair<long, int>, QAccessible::Id> m_cells;
};

} // namespace OviAPI
