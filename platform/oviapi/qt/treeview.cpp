#include <oviapi/treeview.h>

#include <algorithm>
#include <cwchar>
#include <iterator>

#include <QContextMenuEvent>
#include <QKeyEvent>

#include "convert.h"
#include "treeparts.h"

namespace OviAPI {

// While a handler runs, lines that are removed stay readable.
class WTreeView::Handling {
public:
    explicit Handling(WTreeView& tree)
        : m_tree(tree)
        , m_life(tree.life())
    {
        ++m_tree.m_handling;
    }
    ~Handling()
    {
        if (!treeDied() && --m_tree.m_handling == 0)
            m_tree.m_removed.clear();
    }
    Handling(const Handling&) = delete;
    Handling& operator=(const Handling&) = delete;
    bool treeDied() const { return m_life.expired(); }

private:
    WTreeView& m_tree;
    std::weak_ptr<const void> m_life;
};

WTreeView::TreeNative::TreeNative(WTreeView& tree)
    : Native(tree, std::make_unique<TreeWidget>(tree))
    , view(static_cast<TreeWidget*>(widget.data()))
    , m_tree(tree)
{
    view->native = this;
}

WTreeView::TreeNative::~TreeNative()
{
    if (!widget)
        return;
    const TreeWidget::Quiet quiet(*view);
    view->native = nullptr;
    view->lines()->detach();
}

bool WTreeView::TreeNative::filterWidget(QEvent* event)
{
    if (event->type() == QEvent::ContextMenu)
        return menuAsked(event, true);
    return Native::filterWidget(event);
}

bool WTreeView::TreeNative::filterSurface(QEvent* event)
{
    if (event->type() == QEvent::ContextMenu)
        return menuAsked(event, false);
    return Native::filterSurface(event);
}

// The key comes to the widget, and what the mouse does to the surface; then once more to the
// widget.
bool WTreeView::TreeNative::menuAsked(QEvent* event, bool byKey)
{
    const auto* asked = static_cast<QContextMenuEvent*>(event);
    if ((asked->reason() == QContextMenuEvent::Keyboard) != byKey)
        return false;
    return m_tree.userWantsMenu(asked->x(), asked->y(), byKey);
}

bool WTreeView::TreeNative::unhandledKey(QKeyEvent* event)
{
    aQTreeViewItem* item = m_tree.selected();
    if (!item || (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        return false;
    switch (event->key()) {
    case Qt::Key_F2:
        return m_tree.editLabel(item);
    case Qt::Key_Plus:
        m_tree.expand(item);
        return true;
    case Qt::Key_Minus:
        m_tree.collapse(item);
        return true;
    case Qt::Key_Asterisk:
        openAll(item);
        return true;
    default:
        return false;
    }
}

void WTreeView::TreeNative::openAll(aQTreeViewItem* item)
{
    const Handling handling(m_tree);
    m_tree.openItem(item);
    if (!handling.treeDied() && m_tree.owns(item))
        m_tree.expandAll(item);
}

WTreeView::WTreeView()
    : m_root(new aQTreeViewItem)
{
    m_root->m_tree = this;
    m_root->m_expanded = true;
    setStyle(Lines | ExpandBoxes | RootLines | Pictures);
}

WTreeView::~WTreeView()
{
    destroy(); // it asks for the lines
}

bool WTreeView::onSelChanged(aQTreeViewItem*)
{
    return false;
}
bool WTreeView::onItemExpanding(aQTreeViewItem*)
{
    return false;
}
bool WTreeView::onItemExpanded(aQTreeViewItem*)
{
    return false;
}
bool WTreeView::onItemCollapsed(aQTreeViewItem*)
{
    return false;
}
bool WTreeView::onItemClick(aQTreeViewItem*, int)
{
    return false;
}
bool WTreeView::onItemDblClk(aQTreeViewItem*)
{
    return false;
}
bool WTreeView::onContextMenu(aQTreeViewItem*, int, int)
{
    return false;
}
bool WTreeView::onLabelEditing(aQTreeViewItem*)
{
    return false;
}
bool WTreeView::onLabelEdited(aQTreeViewItem*, const wchar_t*)
{
    return false;
}

WTreeView::TreeNative* WTreeView::treeNative() const
{
    return static_cast<TreeNative*>(native());
}

std::unique_ptr<Native> WTreeView::makeNative()
{
    auto made = std::make_unique<TreeNative>(*this);
    made->view->setIcons(m_images);
    for (const aQTreeViewItem* item = firstItem(); item; item = nextItem(item)) {
        if (item->isExpanded())
            made->view->showExpanded(*item);
    }
    if (m_selected)
        made->view->showCurrent(m_selected);
    return made;
}

aQTreeViewItem* WTreeView::insertItem(aQTreeViewItem* parent, const wchar_t* text, int image,
                                      void* cargo)
{
    if (parent && !owns(parent))
        return nullptr;
    aQTreeViewItem& above = rootOr(parent);
    return insertAt(above, above.childCount(), text, image, cargo);
}

aQTreeViewItem* WTreeView::insertBefore(aQTreeViewItem* sibling, const wchar_t* text, int image,
                                        void* cargo)
{
    if (!owns(sibling))
        return nullptr;
    return insertAt(*sibling->m_parent, sibling->row(), text, image, cargo);
}

aQTreeViewItem* WTreeView::insertAfter(aQTreeViewItem* sibling, const wchar_t* text, int image,
                                       void* cargo)
{
    if (!owns(sibling))
        return nullptr;
    return insertAt(*sibling->m_parent, sibling->row() + 1, text, image, cargo);
}

aQTreeViewItem* WTreeView::insertAt(aQTreeViewItem& parent, int row, const wchar_t* text, int image,
                                    void* cargo)
{
    std::unique_ptr<aQTreeViewItem> made(new aQTreeViewItem);
    aQTreeViewItem* item = made.get();
    item->m_tree = this;
    item->m_parent = &parent;
    item->m_text = text ? text : L"";
    item->m_image = image;
    item->m_cargo = cargo;
    TreeNative* shown = treeNative();
    if (shown)
        shown->view->lines()->beginInsert(parent, row);
    parent.m_children.insert(parent.m_children.begin() + row, std::move(made));
    parent.m_numbered = std::min(parent.m_numbered, row);
    ++m_count;
    if (shown)
        shown->view->lines()->endInsert();
    return item;
}

void WTreeView::removeItem(aQTreeViewItem* item)
{
    if (owns(item))
        removeRows(*item->m_parent, item->row(), item->row());
}

void WTreeView::removeChildren(aQTreeViewItem* item)
{
    if (owns(item))
        removeRows(*item, 0, item->childCount() - 1);
}

void WTreeView::clear()
{
    removeRows(*m_root, 0, m_root->childCount() - 1);
}

void WTreeView::removeRows(aQTreeViewItem& parent, int first, int last)
{
    if (last < first)
        return;
    TreeNative* shown = treeNative();
    if (shown)
        shown->view->beginRemove(parent, first, last);
    const auto begin = parent.m_children.begin() + first;
    const auto end = parent.m_children.begin() + last + 1;
    const aQTreeViewItem* selected = m_selected;
    aQTreeViewItem* next = selectionWithout(parent, first, last);
    std::for_each(begin, end, [&](const auto& child) { leaveTree(*child); });
    if (selected && !selected->m_tree)
        m_selected = next;
    if (m_handling > 0)
        std::move(begin, end, std::back_inserter(m_removed));
    parent.m_children.erase(begin, end);
    parent.m_numbered = std::min(parent.m_numbered, first);
    if (parent.m_children.empty() && &parent != m_root.get())
        parent.m_expanded = false;
    if (shown)
        shown->view->endRemove(parent, m_selected);
}

// The line and everything below it.
void WTreeView::leaveTree(aQTreeViewItem& top)
{
    for (const aQTreeViewItem* at = &top; at; at = at->nextInside(top)) {
        const_cast<aQTreeViewItem*>(at)->m_tree = nullptr;
        --m_count;
    }
    top.m_parent = nullptr;
}

void WTreeView::setItemText(aQTreeViewItem* item, const wchar_t* text)
{
    if (!owns(item))
        return;
    item->m_text = text ? text : L"";
    if (TreeNative* shown = treeNative())
        shown->view->lines()->changed(*item);
}

void WTreeView::setItemCargo(aQTreeViewItem* item, void* cargo)
{
    if (owns(item))
        item->m_cargo = cargo;
}

void WTreeView::setItemImage(aQTreeViewItem* item, int image, int selectedImage, int openImage)
{
    if (!owns(item))
        return;
    item->m_image = image;
    item->m_selectedImage = selectedImage;
    item->m_openImage = openImage;
    if (TreeNative* shown = treeNative())
        shown->view->lines()->changed(*item);
}

void WTreeView::claimChildren(aQTreeViewItem* item, bool claims)
{
    if (!owns(item))
        return;
    item->m_claimsChildren = claims;
    if (TreeNative* shown = treeNative())
        shown->view->lines()->changed(*item);
}

void WTreeView::expand(aQTreeViewItem* item)
{
    if (owns(item))
        openItem(item);
}

// Returns whether the line has been opened now.
bool WTreeView::openItem(aQTreeViewItem* item)
{
    if (item->m_expanded || item->m_opening || !item->canExpand())
        return false;
    const Handling handling(*this);
    item->m_opening = true;
    const auto asked = dispatch<&WTreeView::onItemExpanding>(*this, item);
    if (handling.treeDied())
        return false;
    item->m_opening = false;
    if (!owns(item))
        return false;
    const bool refused = asked.bySlot || asked.value;
    if (!refused)
        item->m_claimsChildren = false; // they are there now, or there are none
    item->m_expanded = !refused && !item->m_children.empty();
    if (TreeNative* shown = treeNative()) {
        shown->view->showExpanded(*item);
        if (!item->m_expanded)
            shown->view->lines()->changed(*item); // its box may have gone
    }
    if (!item->m_expanded)
        return false;
    dispatch<&WTreeView::onItemExpanded>(*this, item);
    return true;
}

void WTreeView::collapse(aQTreeViewItem* item)
{
    if (owns(item))
        closeItem(item);
}

// The selection of a line inside moves to the line itself.
void WTreeView::closeItem(aQTreeViewItem* item)
{
    if (!item->m_expanded)
        return;
    const Handling handling(*this);
    item->m_expanded = false;
    if (m_selected && m_selected->isBelow(*item))
        m_selected = item;
    if (TreeNative* shown = treeNative()) {
        shown->view->showExpanded(*item);
        shown->view->showCurrent(m_selected);
    }
    dispatch<&WTreeView::onItemCollapsed>(*this, item);
}

void WTreeView::expandAll(aQTreeViewItem* item)
{
    if (item && !owns(item))
        return;
    const aQTreeViewItem& top = rootOr(item);
    std::vector<aQTreeViewItem*> lines;
    for (const aQTreeViewItem* at = &top; at; at = at->nextInside(top)) {
        if (at->childCount() > 0 && !at->isExpanded())
            lines.push_back(const_cast<aQTreeViewItem*>(at));
    }
    const Handling handling(*this);
    if (TreeNative* shown = treeNative())
        shown->view->changeMany();
    for (aQTreeViewItem* line : lines) {
        if (handling.treeDied())
            return;
        if (owns(line))
            openItem(line);
    }
}

void WTreeView::collapseAll(aQTreeViewItem* item)
{
    if (item && !owns(item))
        return;
    const aQTreeViewItem& top = rootOr(item);
    std::vector<aQTreeViewItem*> lines;
    for (const aQTreeViewItem* at = &top; at; at = at->nextInside(top)) {
        if (at != m_root.get() && at->isExpanded())
            lines.push_back(const_cast<aQTreeViewItem*>(at));
    }
    const Handling handling(*this);
    if (TreeNative* shown = treeNative())
        shown->view->changeMany();
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (handling.treeDied())
            return;
        if (owns(*line))
            closeItem(*line);
    }
}

// Returns false when the line, or the tree, has gone meanwhile.
bool WTreeView::openAbove(aQTreeViewItem* item)
{
    std::vector<aQTreeViewItem*> above;
    for (aQTreeViewItem* at = item->parent(); at; at = at->parent())
        above.push_back(at);
    const Handling handling(*this);
    for (auto at = above.rbegin(); at != above.rend(); ++at) {
        if (owns(*at))
            openItem(*at);
        if (handling.treeDied())
            return false;
    }
    return owns(item);
}

void WTreeView::select(aQTreeViewItem* item)
{
    if (item && !owns(item))
        return;
    m_selected = item;
    if (item && (!openAbove(item) || m_selected != item))
        return;
    if (TreeNative* shown = treeNative()) {
        shown->view->showCurrent(item);
        if (item)
            shown->view->showLine(*item);
    }
}

void WTreeView::ensureVisible(aQTreeViewItem* item)
{
    if (!owns(item) || !openAbove(item))
        return;
    if (TreeNative* shown = treeNative())
        shown->view->showLine(*item);
}

void WTreeView::sortChildren(aQTreeViewItem* item, const Less& less)
{
    if (item && !owns(item))
        return;
    aQTreeViewItem& above = rootOr(item);
    std::vector<aQTreeViewItem*> order;
    for (const auto& child : above.m_children)
        order.push_back(child.get());
    std::stable_sort(
        order.begin(), order.end(), [&](const aQTreeViewItem* a, const aQTreeViewItem* b) {
            return less ? less(*a, *b) : std::wcscoll(a->text().c_str(), b->text().c_str()) < 0;
        });
    TreeNative* shown = treeNative();
    if (shown)
        shown->view->lines()->beginOrder();
    above.orderChildren(order);
    if (shown)
        shown->view->lines()->endOrder();
}

void WTreeView::setImageList(const ImageList* images)
{
    m_images = images ? *images : ImageList();
    if (TreeNative* shown = treeNative())
        shown->view->setIcons(m_images);
}

aQTreeViewItem* WTreeView::itemAt(int x, int y, int* part) const
{
    const TreeNative* shown = treeNative();
    const QPoint point(x, y);
    const QModelIndex index = shown ? shown->view->indexAt(point) : QModelIndex();
    aQTreeViewItem* item = index.isValid() ? shown->view->itemOf(index) : nullptr;
    if (part)
        *part = item ? shown->view->partAt(*item, point) : NoPart;
    return item;
}

Rect WTreeView::itemTextRect(const aQTreeViewItem* item) const
{
    const TreeNative* shown = treeNative();
    return shown && owns(item) ? fromQRect(shown->view->place(*item).text) : Rect();
}

Rect WTreeView::itemPictureRect(const aQTreeViewItem* item) const
{
    const TreeNative* shown = treeNative();
    return shown && owns(item) ? fromQRect(shown->view->place(*item).picture) : Rect();
}

bool WTreeView::editLabel(aQTreeViewItem* item)
{
    if (!owns(item) || !treeNative() || !(style() & LabelEditing) || !isEnabled())
        return false;
    const Handling handling(*this);
    const auto asked = dispatch<&WTreeView::onLabelEditing>(*this, item);
    if (handling.treeDied() || asked.bySlot || asked.value || !owns(item))
        return false;
    select(item);
    if (handling.treeDied() || !owns(item) || !treeNative())
        return false;
    TreeWidget* view = treeNative()->view;
    view->edit(view->lines()->indexOf(item));
    return view->edits();
}

void WTreeView::endEditing(bool keep)
{
    if (TreeNative* shown = treeNative())
        shown->view->endEditing(keep);
}

bool WTreeView::isEditing() const
{
    const TreeNative* shown = treeNative();
    return shown && shown->view->edits();
}

void WTreeView::userSelected(aQTreeViewItem* item)
{
    if (item == m_selected)
        return;
    const Handling handling(*this);
    m_selected = item;
    dispatch<&WTreeView::onSelChanged>(*this, item);
}

void WTreeView::userToggled(aQTreeViewItem* item, bool open)
{
    const Handling handling(*this);
    if (open) {
        openItem(item);
        if (!handling.treeDied() && owns(item) && treeNative())
            treeNative()->view->showExpanded(*item);
        return;
    }
    const aQTreeViewItem* before = m_selected;
    closeItem(item);
    if (!handling.treeDied() && m_selected == item && before != item)
        dispatch<&WTreeView::onSelChanged>(*this, item);
}

bool WTreeView::userDoubleClicked(aQTreeViewItem* item)
{
    const Handling handling(*this);
    const auto result = dispatch<&WTreeView::onItemDblClk>(*this, item);
    return result.bySlot || result.value;
}

void WTreeView::userClicked(aQTreeViewItem* item, int part)
{
    const Handling handling(*this);
    dispatch<&WTreeView::onItemClick>(*this, item, part);
}

bool WTreeView::userWantsMenu(int x, int y, bool byKey)
{
    const Handling handling(*this);
    aQTreeViewItem* item = byKey ? m_selected : itemAt(x, y);
    if (byKey && item) {
        ensureVisible(item);
        if (handling.treeDied() || !owns(item))
            return true;
        const Rect text = itemTextRect(item);
        x = std::max(0, text.left);
        y = text.bottom;
    }
    const auto result = dispatch<&WTreeView::onContextMenu>(*this, item, x, y);
    return handling.treeDied() || result.bySlot || result.value;
}

bool WTreeView::userTyped(aQTreeViewItem* item, const std::wstring& text)
{
    const Handling handling(*this);
    const auto result = dispatch<&WTreeView::onLabelEdited>(*this, item, text.c_str());
    if (handling.treeDied() || result.bySlot || result.value || !owns(item))
        return false;
    setItemText(item, text.c_str());
    return true;
}

} // namespace OviAPI
