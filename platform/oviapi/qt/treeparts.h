// What the toolkit's tree needs to show the lines of a WTreeView: model, painting, and the widget.
#pragma once

#include <vector>

#include <QAbstractItemModel>
#include <QIcon>
#include <QStyledItemDelegate>
#include <QTreeView>

#include <oviapi/treeview.h>

#include "afterevent.h"
#include "native.h"

namespace OviAPI {

// The lines of a tree as the toolkit asks for them. Keeps nothing itself.
class TreeModel : public QAbstractItemModel {
public:
    explicit TreeModel(WTreeView& tree)
        : m_tree(&tree)
    {
    }

    // An index without a line stands for the root.
    aQTreeViewItem* item(const QModelIndex& index) const;
    QModelIndex indexOf(const aQTreeViewItem* item) const;

    void beginInsert(const aQTreeViewItem& parent, int row);
    void endInsert() { endInsertRows(); }
    void beginRemove(const aQTreeViewItem& parent, int first, int last);
    void endRemove() { endRemoveRows(); }
    void beginOrder();
    void endOrder();
    void changed(const aQTreeViewItem& item);
    // The tree goes: no line is left.
    void detach();

    QModelIndex index(int row, int column, const QModelIndex& parent) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex& parent) const override;
    bool hasChildren(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    QString spokenText(const aQTreeViewItem& item) const;

    WTreeView* m_tree;
    QModelIndexList m_ordered;
};

// Where the parts of a line are. Coordinates of the viewport.
struct TreeItemPlace {
    QRect picture; // empty: none
    QRect text;
};

class TreeWidget;

// Draws picture and text of a line, and places the editor over the text.
class TreeDelegate : public QStyledItemDelegate {
public:
    explicit TreeDelegate(TreeWidget& tree)
        : m_tree(tree)
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

private:
    TreeWidget& m_tree;
};

class TreeWidget : public QTreeView {
public:
    explicit TreeWidget(WTreeView& tree);

    TreeModel* lines() const { return m_model; }
    aQTreeViewItem* itemOf(const QModelIndex& index) const { return m_model->item(index); }
    // Null pictures where the image list has none.
    const QIcon& icon(const aQTreeViewItem& item, bool selected) const;
    void setIcons(const ImageList& images);
    QSize iconArea() const { return m_iconArea; }
    // rect: of the line, right of lines and boxes.
    TreeItemPlace place(const aQTreeViewItem& item, const QRect& rect) const;
    TreeItemPlace place(const aQTreeViewItem& item) const;
    int partAt(const aQTreeViewItem& item, QPoint point) const;

    // The framework changes something: no signal follows.
    class Quiet {
    public:
        explicit Quiet(TreeWidget& tree)
            : m_tree(tree)
        {
            ++m_tree.m_quiet;
        }
        ~Quiet() { --m_tree.m_quiet; }
        Quiet(const Quiet&) = delete;
        Quiet& operator=(const Quiet&) = delete;

    private:
        TreeWidget& m_tree;
    };
    void showCurrent(const aQTreeViewItem* item);
    // Scrolls.
    void showLine(const aQTreeViewItem& item);
    // Around the removal of lines; the toolkit's choice of another current line does not count.
    void beginRemove(const aQTreeViewItem& parent, int first, int last);
    void endRemove(const aQTreeViewItem& parent, const aQTreeViewItem* current);
    void showExpanded(const aQTreeViewItem& item);
    // Many lines are about to be opened or closed: they are laid out once, afterwards.
    void changeMany() { scheduleDelayedItemsLayout(); }
    bool edits() const { return state() == EditingState; }
    void endEditing(bool keep);

    QPointer<Native> native;
    AfterEvent after;

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void toggled(const QModelIndex& index, bool open);
    void fitWidth(bool mayShrink);
    void drawBox(QPainter& painter, QPoint middle, double ratio, bool open) const;

    WTreeView& m_owner;
    TreeModel* m_model;
    std::vector<QIcon> m_icons;
    QSize m_iconArea;
    QPersistentModelIndex m_pressed;
    int m_quiet = 0;
    bool m_fitting = false;
};

struct WTreeView::TreeNative : public Native {
    explicit TreeNative(WTreeView& tree);
    ~TreeNative() override;

    TreeWidget* view;

protected:
    bool filterWidget(QEvent* event) override;
    bool filterSurface(QEvent* event) override;
    bool unhandledKey(QKeyEvent* event) override;

private:
    bool menuAsked(QEvent* event, bool byKey);
    void openAll(aQTreeViewItem* item);

    WTreeView& m_tree;
};

} // namespace OviAPI
