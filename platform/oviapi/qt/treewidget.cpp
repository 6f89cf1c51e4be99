#include "treeparts.h"

#include <algorithm>
#include <limits>

#include <QHeaderView>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <oviapi/celldisplay.h>

#include "colormix.h"
#include "convert.h"

namespace OviAPI {

namespace {

constexpr int pictureGap = 2;     // px before a picture, and between it and the text
constexpr int textMargin = 3;     // px of the selection right of the text
constexpr int rowMargin = 1;      // px above and below
constexpr int leastEditor = 80;   // px
constexpr int boxArm = 4;         // px from the middle of an expand box to its edge
constexpr int signArm = 2;        // px from there to the end of its minus
constexpr int measuredRows = 200; // around those that are seen, for the width of the tree
constexpr int lineShare = 35;     // per cent of the text's colour in that of the lines

QColor lineColor(const QPalette& palette)
{
    return mix(palette.color(QPalette::Base), palette.color(QPalette::Text), lineShare, 100);
}

} // namespace

void TreeDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    const aQTreeViewItem* item = m_tree.itemOf(index);
    if (!item)
        return;
    const TreeItemPlace place = m_tree.place(*item, option.rect);
    const bool selected = option.state & QStyle::State_Selected;
    const bool enabled = option.state & QStyle::State_Enabled;
    if (!place.picture.isEmpty())
        m_tree.icon(*item, selected)
            .paint(painter, place.picture, Qt::AlignCenter,
                   enabled ? QIcon::Normal : QIcon::Disabled);
    QPalette::ColorGroup group = QPalette::Disabled;
    if (enabled)
        group = option.state & QStyle::State_Active && m_tree.hasFocus() ? QPalette::Active
                                                                         : QPalette::Inactive;
    const QRect marked = QRect(place.text.left() - 1, option.rect.top(),
                               place.text.width() + 1 + textMargin, option.rect.height());
    painter->setFont(option.font);
    if (selected)
        painter->fillRect(marked, option.palette.brush(group, QPalette::Highlight));
    painter->setPen(
        option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    painter->drawText(place.text,
                      Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip,
                      toQString(shownLine(item->text())));
    if (option.state & QStyle::State_HasFocus && m_tree.hasFocus()) {
        painter->setPen(
            QPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text),
                 0, Qt::DotLine));
        painter->drawRect(QRectF(marked).adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

QSize TreeDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const int height = std::max(option.fontMetrics.height(), m_tree.iconArea().height());
    const aQTreeViewItem* item = m_tree.itemOf(index);
    const int width = item ? m_tree.place(*item, QRect(0, 0, 1, height)).text.right() : 0;
    return {width + 1 + textMargin, height + 2 * rowMargin};
}

QWidget* TreeDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const
{
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor)) {
        line->setMaxLength(std::numeric_limits<int>::max()); // nothing is cut unseen
        line->setFrame(true);
        line->setAccessibleName(toQString(shownLine(m_tree.itemOf(index)->text())));
    }
    return editor;
}

void TreeDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const
{
    const aQTreeViewItem* item = m_tree.itemOf(index);
    if (!item)
        return;
    const QRect text = m_tree.place(*item, option.rect).text;
    const int height = std::max(option.rect.height(), editor->sizeHint().height());
    const int free = m_tree.viewport()->width() - text.left();
    editor->setGeometry(text.left() - 2, option.rect.center().y() - height / 2,
                        std::max(leastEditor, free), height);
}

TreeWidget::TreeWidget(WTreeView& tree)
    : m_owner(tree)
    , m_model(new TreeModel(tree))
{
    m_model->setParent(this); // which owns it
    setModel(m_model);
    auto* delegate = new TreeDelegate(*this);
    delegate->setParent(this); // which owns it
    setItemDelegate(delegate);
    setHeaderHidden(true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Fixed);
    header()->setResizeContentsPrecision(measuredRows);
    header()->setMinimumSectionSize(0);
    setUniformRowHeights(true);
    setRootIsDecorated((tree.style() & WTreeView::RootLines) != 0);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    connect(this, &QTreeView::expanded, this,
            [this](const QModelIndex& index) { toggled(index, true); });
    connect(this, &QTreeView::collapsed, this,
            [this](const QModelIndex& index) { toggled(index, false); });
}

const QIcon& TreeWidget::icon(const aQTreeViewItem& item, bool selected) const
{
    static const QIcon none;
    int number = item.image();
    if (selected && item.selectedImage() >= 0)
        number = item.selectedImage();
    else if (item.isExpanded() && item.openImage() >= 0)
        number = item.openImage();
    return number >= 0 && static_cast<size_t>(number) < m_icons.size()
               ? m_icons[static_cast<size_t>(number)]
               : none;
}

void TreeWidget::setIcons(const ImageList& images)
{
    m_icons.clear();
    for (int i = 0; i < images.count(); ++i)
        m_icons.push_back(toQIcon(images.get(i)));
    const bool shown = (m_owner.style() & WTreeView::Pictures) != 0 && images.count() > 0;
    m_iconArea = shown ? toQSize(images.size()) : QSize(0, 0);
    scheduleDelayedItemsLayout();
}

TreeItemPlace TreeWidget::place(const aQTreeViewItem& item, const QRect& rect) const
{
    TreeItemPlace place;
    int left = rect.left() + pictureGap;
    if (!m_iconArea.isEmpty() && !icon(item, false).isNull()) {
        place.picture = QRect(QPoint(left, rect.top()), m_iconArea);
        place.picture.moveTop(rect.top() + (rect.height() - m_iconArea.height()) / 2);
        left += m_iconArea.width() + pictureGap;
    }
    const int width = fontMetrics().horizontalAdvance(toQString(shownLine(item.text())));
    place.text = QRect(left, rect.top(), width, rect.height());
    return place;
}

TreeItemPlace TreeWidget::place(const aQTreeViewItem& item) const
{
    const QRect rect = visualRect(m_model->indexOf(&item));
    return rect.isValid() ? place(item, rect) : TreeItemPlace();
}

int TreeWidget::partAt(const aQTreeViewItem& item, QPoint point) const
{
    const TreeItemPlace at = place(item);
    if (point.x() > at.text.right())
        return WTreeView::RightPart;
    if (point.x() >= at.text.left() - 1)
        return WTreeView::TextPart;
    if (!at.picture.isEmpty() && point.x() >= at.picture.left())
        return WTreeView::PicturePart;
    const int right = visualRect(m_model->indexOf(&item)).left();
    const bool hasCell = item.parent() || rootIsDecorated();
    const bool inCell = hasCell && point.x() >= right - indentation() && point.x() < right;
    return inCell && item.canExpand() && (m_owner.style() & WTreeView::ExpandBoxes)
               ? WTreeView::BoxPart
               : WTreeView::IndentPart;
}

void TreeWidget::showCurrent(const aQTreeViewItem* item)
{
    const Quiet quiet(*this);
    const QModelIndex index = m_model->indexOf(item);
    if (index == currentIndex() && (!index.isValid() || selectionModel()->isSelected(index)))
        return; // setting it again would lay out everything at once
    if (index.isValid())
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    else
        selectionModel()->clear();
}

void TreeWidget::showLine(const aQTreeViewItem& item)
{
    scrollTo(m_model->indexOf(&item));
}

void TreeWidget::beginRemove(const aQTreeViewItem& parent, int first, int last)
{
    ++m_quiet;
    m_model->beginRemove(parent, first, last);
}

void TreeWidget::endRemove(const aQTreeViewItem& parent, const aQTreeViewItem* current)
{
    m_model->endRemove();
    if (m_model->indexOf(&parent).isValid())
        showExpanded(parent);
    showCurrent(current);
    --m_quiet;
}

void TreeWidget::showExpanded(const aQTreeViewItem& item)
{
    const Quiet quiet(*this);
    setExpanded(m_model->indexOf(&item), item.isExpanded());
}

// The next line is not edited, whatever key has ended the editing of this one.
void TreeWidget::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint)
{
    if (edits()) // else its line has gone already
        QTreeView::closeEditor(editor, QAbstractItemDelegate::NoHint);
}

void TreeWidget::endEditing(bool keep)
{
    QWidget* editor = indexWidget(currentIndex());
    if (!edits() || !editor)
        return;
    const QPointer<QWidget> alive(editor);
    if (keep)
        commitData(editor);
    if (alive)
        closeEditor(editor, QAbstractItemDelegate::NoHint);
}

bool TreeWidget::event(QEvent* event)
{
    const AfterEvent::Scope scope(after, this);
    return QTreeView::event(event);
}

bool TreeWidget::viewportEvent(QEvent* event)
{
    const AfterEvent::Scope scope(after, this);
    return QTreeView::viewportEvent(event);
}

void TreeWidget::mousePressEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    m_pressed = event->button() == Qt::LeftButton ? indexAt(at) : QModelIndex();
    QTreeView::mousePressEvent(event);
}

void TreeWidget::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    const QPersistentModelIndex pressed = std::exchange(m_pressed, QPersistentModelIndex());
    QTreeView::mouseReleaseEvent(event);
    if (!native || event->button() != Qt::LeftButton || !pressed.isValid() ||
        indexAt(at) != pressed)
        return;
    const int part = partAt(*itemOf(pressed), at);
    after.run(native, [this, pressed, part] {
        if (pressed.isValid())
            m_owner.userClicked(itemOf(pressed), part);
    });
}

void TreeWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    const QPersistentModelIndex index(indexAt(at));
    m_pressed = index;
    const int part = index.isValid() ? partAt(*itemOf(index), at) : WTreeView::NoPart;
    if (native && event->button() == Qt::LeftButton && index.isValid() &&
        part != WTreeView::BoxPart) {
        const QPointer<Native> alive = native;
        bool handled = true; // by a handler that throws
        {
            const AfterEvent::Pause pause(after, this);
            barrier([&] { handled = m_owner.userDoubleClicked(itemOf(index)); });
        }
        if (handled || !alive || !index.isValid())
            return;
    }
    QTreeView::mouseDoubleClickEvent(event);
}

void TreeWidget::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTreeView::currentChanged(current, previous);
    if (m_quiet > 0 || !native)
        return;
    const QPersistentModelIndex now(current);
    after.run(native, [this, now] {
        if (now != currentIndex())
            return; // another one is current already
        if (now.isValid())
            selectionModel()->select(now, QItemSelectionModel::ClearAndSelect);
        m_owner.userSelected(now.isValid() ? itemOf(now) : nullptr);
    });
}

QItemSelectionModel::SelectionFlags TreeWidget::selectionCommand(const QModelIndex& index,
                                                                 const QEvent*) const
{
    return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

void TreeWidget::toggled(const QModelIndex& index, bool open)
{
    if (m_quiet > 0 || !native)
        return;
    const QPersistentModelIndex toggledIndex(index);
    after.run(native, [this, toggledIndex, open] {
        if (toggledIndex.isValid())
            m_owner.userToggled(itemOf(toggledIndex), open);
    });
}

void TreeWidget::updateGeometries()
{
    fitWidth(true);
    QTreeView::updateGeometries();
}

void TreeWidget::scrollContentsBy(int dx, int dy)
{
    QTreeView::scrollContentsBy(dx, dy);
    if (dy != 0)
        fitWidth(false);
}

// The only column is as wide as its widest line on the screen, and never narrower than the view.
void TreeWidget::fitWidth(bool mayShrink)
{
    if (m_fitting)
        return;
    m_fitting = true;
    const int before = header()->sectionSize(0);
    int width = std::max(viewport()->width(), sizeHintForColumn(0));
    if (!mayShrink)
        width = std::max(width, before);
    if (width != before)
        header()->resizeSection(0, width);
    m_fitting = false;
}

void TreeWidget::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const
{
    const aQTreeViewItem* item = itemOf(index);
    const long look = m_owner.style();
    if (!item || !(item->parent() || rootIsDecorated()))
        return;
    painter->fillRect(rect, palette().base()); // not marked when the line is selected
    // In device pixels, so that everything is equally wide at every ratio.
    const QTransform toDevice = painter->deviceTransform();
    painter->save();
    painter->setTransform(toDevice.inverted() * painter->worldTransform());
    const int unit = std::max(1, static_cast<int>(toDevice.m11()));
    const int top = qRound(toDevice.map(QPointF(rect.topLeft())).y());
    const int bottom = qRound(toDevice.map(QPointF(rect.bottomLeft() + QPoint(0, 1))).y());
    const auto cellAt = [&](int x) { return qRound(toDevice.map(QPointF(x, rect.top())).x()); };
    const QColor color = lineColor(palette());
    int right = rect.right() + 1;
    const aQTreeViewItem* at = item;
    while (at && (at->parent() || rootIsDecorated())) {
        const QPoint middle(cellAt(right - indentation() / 2), (top + bottom) / 2);
        const bool follows = at->nextSibling() != nullptr;
        if ((look & WTreeView::Lines) != 0 && (at == item || follows)) {
            const bool begins = at == item && !at->parent() && !at->previousSibling();
            const int from = begins ? middle.y() : top;
            const int to = follows ? bottom : middle.y();
            painter->fillRect(middle.x(), from, unit, to - from, color);
            if (at == item)
                painter->fillRect(middle.x(), middle.y(), cellAt(right) - middle.x(), unit, color);
        }
        if (at == item && item->canExpand() && (look & WTreeView::ExpandBoxes) != 0)
            drawBox(*painter, middle, toDevice.m11(), item->isExpanded());
        right -= indentation();
        at = at->parent();
    }
    painter->restore();
}

// A square with a minus or a plus, in device pixels.
void TreeWidget::drawBox(QPainter& painter, QPoint middle, double ratio, bool open) const
{
    const int unit = std::max(1, static_cast<int>(ratio));
    const int arm = qRound(boxArm * ratio);
    const int sign = qRound(signArm * ratio);
    const QRect box(middle.x() - arm, middle.y() - arm, 2 * arm + unit, 2 * arm + unit);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    painter.fillRect(box, lineColor(palette()));
    painter.fillRect(box.adjusted(unit, unit, -unit, -unit), palette().color(QPalette::Base));
    const QColor color = palette().color(group, QPalette::Text);
    painter.fillRect(middle.x() - sign, middle.y(), 2 * sign + unit, unit, color);
    if (!open)
        painter.fillRect(middle.x(), middle.y() - sign, unit, 2 * sign + unit, color);
}

} // namespace OviAPI
