// The lines of a tree as a structure; what is shown of them is the business of the native part.
#include <oviapi/treeview.h>

#include <algorithm>

namespace OviAPI {

aQTreeViewItem::~aQTreeViewItem()
{
    // Not by recursion: trees may be deeper than the stack.
    std::vector<std::unique_ptr<aQTreeViewItem>> pending = std::move(m_children);
    while (!pending.empty()) {
        const std::unique_ptr<aQTreeViewItem> item = std::move(pending.back());
        pending.pop_back();
        for (auto& child : item->m_children)
            pending.push_back(std::move(child));
        item->m_children.clear();
    }
}

aQTreeViewItem* aQTreeViewItem::parent() const
{
    return m_parent && m_parent->m_parent ? m_parent : nullptr;
}

aQTreeViewItem* aQTreeViewItem::child(int number) const
{
    return number >= 0 && number < childCount() ? m_children[static_cast<size_t>(number)].get()
                                                : nullptr;
}

int aQTreeViewItem::row() const
{
    if (!m_parent)
        return 0;
    for (const int guess : {m_row, m_row - 1, m_row + 1}) {
        if (m_parent->child(guess) == this)
            return m_row = guess;
    }
    const int count = m_parent->childCount();
    for (int& number = m_parent->m_numbered; number < count; ++number)
        m_parent->child(number)->m_row = number;
    return m_row;
}

aQTreeViewItem* aQTreeViewItem::nextSibling() const
{
    return m_parent ? m_parent->child(row() + 1) : nullptr;
}

aQTreeViewItem* aQTreeViewItem::previousSibling() const
{
    return m_parent ? m_parent->child(row() - 1) : nullptr;
}

bool aQTreeViewItem::isBelow(const aQTreeViewItem& item) const
{
    const aQTreeViewItem* above = m_parent;
    while (above && above != &item)
        above = above->m_parent;
    return above != nullptr;
}

const aQTreeViewItem* aQTreeViewItem::nextInside(const aQTreeViewItem& top) const
{
    if (!m_children.empty())
        return m_children.front().get();
    for (const aQTreeViewItem* item = this; item && item != &top; item = item->m_parent) {
        if (const aQTreeViewItem* next = item->nextSibling())
            return next;
    }
    return nullptr;
}

void aQTreeViewItem::orderChildren(const std::vector<aQTreeViewItem*>& order)
{
    for (auto& child : m_children)
        static_cast<void>(child.release()); // each stands in the order and is owned again below
    std::transform(order.begin(), order.end(), m_children.begin(),
                   [](aQTreeViewItem* item) { return std::unique_ptr<aQTreeViewItem>(item); });
    m_numbered = 0;
}

aQTreeViewItem* WTreeView::nextItem(const aQTreeViewItem* item) const
{
    return owns(item) ? const_cast<aQTreeViewItem*>(item->nextInside(*m_root)) : nullptr;
}

aQTreeViewItem* WTreeView::previousItem(const aQTreeViewItem* item) const
{
    if (!owns(item))
        return nullptr;
    aQTreeViewItem* previous = item->previousSibling();
    if (!previous)
        return item->parent();
    while (aQTreeViewItem* last = previous->lastChild())
        previous = last;
    return previous;
}

aQTreeViewItem* WTreeView::findCargo(const void* cargo) const
{
    aQTreeViewItem* item = firstItem();
    while (item && item->m_cargo != cargo)
        item = nextItem(item);
    return item;
}

// The line that is selected when these children go: the next one, else the one before, else the
// parent.
aQTreeViewItem* WTreeView::selectionWithout(const aQTreeViewItem& parent, int first, int last) const
{
    if (aQTreeViewItem* behind = parent.child(last + 1))
        return behind;
    if (aQTreeViewItem* before = parent.child(first - 1))
        return before;
    return &parent == m_root.get() ? nullptr : const_cast<aQTreeViewItem*>(&parent);
}

} // namespace OviAPI
