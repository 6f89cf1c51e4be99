#include <oviapi/scrollview.h>

#include <algorithm>

#include <QScrollArea>
#include <QScrollBar>

#include "convert.h"
#include "native.h"

namespace OviAPI {

struct WScrollView::ScrollNative : public Native {
    ScrollNative(WScrollView& owning, std::unique_ptr<QScrollArea> scrollArea)
        : Native(owning, std::move(scrollArea), new QWidget)
        , view(owning)
        , area(as<QScrollArea>())
    {
        area->setWidget(surface); // owned by the area
        area->setFrameShape(QFrame::NoFrame);
        area->setFocusPolicy(Qt::NoFocus); // its children have the focus
        area->viewport()->installEventFilter(this);
        surface->setAutoFillBackground(false);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object == surface || object == widget)
            return Native::eventFilter(object, event);
        if (event->type() == QEvent::Resize)
            barrier([&] { viewportResized(); });
        return false;
    }

    void layOut() override
    {
        Native::layOut();
        viewportResized();
    }

    void viewportResized()
    {
        if (visible == area->viewport()->size())
            return;
        visible = area->viewport()->size();
        fitSurface();
        dispatch<&WScrollView::onVisClientSize>(view);
    }

    void fitSurface()
    {
        const QSize needed = toQSize(view.contentSize());
        surface->resize(needed.expandedTo(area->maximumViewportSize()) ==
                                area->maximumViewportSize()
                            ? area->maximumViewportSize()
                            : needed.expandedTo(area->viewport()->size()));
    }

    WScrollView& view;
    QScrollArea* area;
    QSize visible;
};

WScrollView::WScrollView() = default;
WScrollView::~WScrollView() = default;

bool WScrollView::onVisClientSize()
{
    return false;
}

std::unique_ptr<Native> WScrollView::makeNative()
{
    return std::make_unique<ScrollNative>(*this, std::make_unique<QScrollArea>());
}

void WScrollView::setContentSize(int width, int height)
{
    m_content = {std::max(width, 0), std::max(height, 0)};
    childrenChanged();
}

Size WScrollView::contentSize() const
{
    Size size = m_content;
    for (const VisualObject* child = firstChild(); child; child = child->nextSibling()) {
        const auto* object = dynamic_cast<const WVisualObject*>(child);
        if (!object || !object->isVisible())
            continue;
        size.width = std::max(size.width, object->geometry().right);
        size.height = std::max(size.height, object->geometry().bottom);
    }
    return size;
}

void WScrollView::scrollTo(int x, int y)
{
    if (!native())
        return;
    const auto* area = static_cast<ScrollNative*>(native())->area;
    area->horizontalScrollBar()->setValue(x);
    area->verticalScrollBar()->setValue(y);
}

Rect WScrollView::visibleClientRect() const
{
    if (!native())
        return WVisualObject::visibleClientRect();
    const auto* area = static_cast<ScrollNative*>(native())->area;
    const QPoint corner(area->horizontalScrollBar()->value(), area->verticalScrollBar()->value());
    return fromQRect(QRect(corner, area->viewport()->size()));
}

int WScrollView::visibleWidth() const
{
    return static_cast<int>(visibleClientRect().width());
}

int WScrollView::visibleHeight() const
{
    return static_cast<int>(visibleClientRect().height());
}

void WScrollView::childrenChanged()
{
    if (native())
        static_cast<ScrollNative*>(native())->fitSurface();
}

} // namespace OviAPI
