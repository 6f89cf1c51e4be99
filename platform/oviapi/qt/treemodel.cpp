#include "treeparts.h"

#include <oviapi/celldisplay.h>

#include "convert.h"

namespace OviAPI {

aQTreeViewItem* TreeModel::item(const QModelIndex& index) const
{
    if (!m_tree)
        return nullptr;
    return index.isValid() ? static_cast<aQTreeViewItem*>(index.internalPointer())
                           : m_tree->m_root.get();
}

QModelIndex TreeModel::indexOf(const aQTreeViewItem* item) const
{
    if (!m_tree || !item || !item->m_parent)
        return {};
    return createIndex(item->row(), 0, item);
}

void TreeModel::beginInsert(const aQTreeViewItem& parent, int row)
{
    beginInsertRows(indexOf(&parent), row, row);
}

void TreeModel::beginRemove(const aQTreeViewItem& parent, int first, int last)
{
    beginRemoveRows(indexOf(&parent), first, last);
}

void TreeModel::beginOrder()
{
    Q_EMIT layoutAboutToBeChanged();
    m_ordered = persistentIndexList();
}

void TreeModel::endOrder()
{
    QModelIndexList now;
    now.reserve(m_ordered.size());
    for (const QModelIndex& before : std::as_const(m_ordered))
        now.append(indexOf(item(before)));
    changePersistentIndexList(m_ordered, now);
    m_ordered.clear();
    Q_EMIT layoutChanged();
}

void TreeModel::changed(const aQTreeViewItem& item)
{
    const QModelIndex index = indexOf(&item);
    Q_EMIT dataChanged(index, index);
}

void TreeModel::detach()
{
    beginResetModel();
    m_tree = nullptr;
    endResetModel();
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const
{
    const aQTreeViewItem* above = item(parent);
    const aQTreeViewItem* child = above && column == 0 ? above->child(row) : nullptr;
    return child ? createIndex(row, 0, child) : QModelIndex();
}

QModelIndex TreeModel::parent(const QModelIndex& child) const
{
    const aQTreeViewItem* line = child.isValid() ? item(child) : nullptr;
    return line ? indexOf(line->m_parent) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const
{
    const aQTreeViewItem* above = item(parent);
    return above ? above->childCount() : 0;
}

int TreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

bool TreeModel::hasChildren(const QModelIndex& parent) const
{
    const aQTreeViewItem* above = item(parent);
    return above && above->canExpand();
}

QString TreeModel::spokenText(const aQTreeViewItem& item) const
{
    const std::wstring picture = m_tree->imageList().name(item.image());
    return toQString(picture.empty() ? item.text() : item.text() + L", " + picture);
}

QVariant TreeModel::data(const QModelIndex& index, int role) const
{
    const aQTreeViewItem* line = index.isValid() ? item(index) : nullptr;
    if (!line)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return toQString(shownLine(line->text()));
    case Qt::EditRole:
        return toQString(line->text());
    case Qt::AccessibleTextRole:
        return spokenText(*line);
    default:
        return {};
    }
}

bool TreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    aQTreeViewItem* line = index.isValid() ? item(index) : nullptr;
    const QString text = value.toString();
    if (!line || role != Qt::EditRole || text == toQString(line->text()))
        return false;
    bool taken = false;
    barrier([&] { taken = m_tree->userTyped(line, fromQString(text)); });
    return taken;
}

Qt::ItemFlags TreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || !m_tree)
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
}

} // namespace OviAPI
