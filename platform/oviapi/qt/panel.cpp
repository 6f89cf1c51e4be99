#include <oviapi/panel.h>

#include <algorithm>
#include <cmath>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>

#include "colormix.h"
#include "native.h"

namespace OviAPI {

namespace {

constexpr int frameWidth = 1; // px

// The widget of a panel, to tell it from others.
class PanelWidget : public QWidget {};

// A panel with a name of its own or with a label is a group.
class PanelAccessible : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessible::Role role() const override
    {
        const bool named = !text(QAccessible::Name).isEmpty();
        return named ? QAccessible::Grouping : QAccessibleWidget::role();
    }

    // Makes the toolkit ask here for panels. It forgets that with each application.
    static void install() { QAccessible::installFactory(&make); }

private:
    static QAccessibleInterface* make(const QString&, QObject* object)
    {
        auto* panel = dynamic_cast<PanelWidget*>(object);
        return panel ? new PanelAccessible(panel) : nullptr; // the toolkit owns it
    }
};

// Between text and background, so that it can be seen on every desktop: the contrast to the
// background is 2.3 on a light one and about 3 on a dark one.
QColor frameColor(const QPalette& palette)
{
    return mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 35, 100);
}

// A frame inside the rectangle. At a scale that is no whole number a widget may begin and end
// between two device pixels; the frame keeps to the pixels that belong to it as a whole.
void paintFrame(QPainter& painter, const QRect& rect, const QColor& color)
{
    const QTransform toDevice = painter.deviceTransform();
    const double ratio = toDevice.m11();
    const QRectF outer = toDevice.mapRect(QRectF(rect));
    const double left = std::ceil(outer.left());
    const double top = std::ceil(outer.top());
    const double right = std::floor(outer.right());
    const double bottom = std::floor(outer.bottom());
    const double line = std::max(1.0, std::floor(frameWidth * ratio));
    painter.scale(1 / ratio, 1 / ratio);
    painter.translate(-toDevice.dx(), -toDevice.dy());
    painter.fillRect(QRectF(left, top, right - left, line), color);
    painter.fillRect(QRectF(left, bottom - line, right - left, line), color);
    painter.fillRect(QRectF(left, top, line, bottom - top), color);
    painter.fillRect(QRectF(right - line, top, line, bottom - top), color);
}

// A frame with the surface inside it.
struct FramedNative : public Native {
    FramedNative(WVisualObject& owning, std::unique_ptr<QWidget> made)
        : Native(owning, std::move(made), new QWidget)
    {
        surface->setParent(widget); // owned by the widget
    }

    void layOut() override
    {
        surface->setGeometry(
            widget->rect().adjusted(frameWidth, frameWidth, -frameWidth, -frameWidth));
    }

    bool filterWidget(QEvent* event) override
    {
        const QPointer<Native> alive(this);
        if (event->type() == QEvent::Resize)
            layOut();
        if (event->type() == QEvent::Paint) {
            QPainter painter(widget);
            paintFrame(painter, widget->rect(), frameColor(widget->palette()));
        }
        return !alive || Native::filterWidget(event);
    }
};

} // namespace

WPanel::WPanel() = default;
WPanel::~WPanel() = default;

bool WPanel::onMinimize()
{
    return true;
}
bool WPanel::onMaximize()
{
    return true;
}
bool WPanel::onRestore()
{
    return true;
}
bool WPanel::onClose()
{
    return true;
}

void WPanel::close()
{
    show(false);
}

std::unique_ptr<Native> WPanel::makeNative()
{
    std::unique_ptr<Native> native;
    PanelAccessible::install();
    if (style() & Border)
        native = std::make_unique<FramedNative>(*this, std::make_unique<PanelWidget>());
    else
        native = std::make_unique<Native>(*this, std::make_unique<PanelWidget>());
    native->widget->setFocusPolicy(style() & TabStop ? Qt::StrongFocus : Qt::NoFocus);
    return native;
}

} // namespace OviAPI
