#include <oviapi/capture.h>

#include <algorithm>
#include <memory>

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QWidget>

#include "native.h"
#include "picture_native.h"

namespace OviAPI {

namespace {

constexpr int captionPadding = 4; // pixels above and below a title

bool hasCaption(const QWidget& window)
{
    return window.windowType() != Qt::Popup && window.windowType() != Qt::ToolTip;
}

int captionHeight(const QWidget& window)
{
    return hasCaption(window) ? window.fontMetrics().height() + 2 * captionPadding : 0;
}

// Where the window and its title stand on the screen.
QRect outline(const QWidget& window)
{
    return window.geometry().adjusted(-1, -1 - captionHeight(window), 1, 1);
}

// From the back to the front: a modal window stands before what it blocks, a menu before all.
int layerOf(const QWidget& window)
{
    if (!hasCaption(window))
        return 3;
    if (&window == QApplication::activeModalWidget())
        return 2;
    return window.isModal() ? 1 : 0;
}

std::vector<QWidget*> windowsInFrontOf(QWidget* back)
{
    std::vector<QWidget*> windows;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const bool inFront = layerOf(*window) > layerOf(*back) || back->isAncestorOf(window) ||
                             window->parentWidget() == back;
        if (window != back && window->isVisible() && !window->isMinimized() && inFront)
            windows.push_back(window);
    }
    std::stable_sort(windows.begin(), windows.end(),
                     [](const QWidget* a, const QWidget* b) { return layerOf(*a) < layerOf(*b); });
    return windows;
}

void drawWindow(QPainter& painter, QWidget& window)
{
    const QRect frame = outline(window);
    const QPalette& palette = window.palette();
    painter.fillRect(frame, palette.color(QPalette::Shadow));
    if (hasCaption(window)) {
        const QRect caption = frame.adjusted(1, 1, -1, 0);
        painter.fillRect(QRect(caption.topLeft(), QSize(caption.width(), captionHeight(window))),
                         palette.color(QPalette::Dark));
        painter.setFont(window.font());
        painter.setPen(palette.color(QPalette::BrightText));
        painter.drawText(QRect(caption.left() + 2 * captionPadding, caption.top(),
                               caption.width() - 4 * captionPadding, captionHeight(window)),
                         Qt::AlignVCenter | Qt::AlignLeft, window.windowTitle());
    }
    painter.drawPixmap(window.geometry().topLeft(), window.grab());
}

Picture captureFrom(QWidget* back)
{
    if (!back || !back->isVisible())
        return {};
    const std::vector<QWidget*> front = windowsInFrontOf(back);
    QRect area = outline(*back);
    for (const QWidget* window : front)
        area |= outline(*window);

    const double ratio = back->devicePixelRatioF();
    QImage image((QSizeF(area.size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(back->palette().color(QPalette::Mid));
    QPainter painter(&image);
    painter.translate(-area.topLeft());
    drawWindow(painter, *back);
    for (QWidget* window : front)
        drawWindow(painter, *window);
    painter.end();

    auto native = std::make_shared<Picture::Native>();
    native->variants.push_back(std::move(image));
    return Picture(std::move(native));
}

} // namespace

Picture captureWindow(const WVisualObject& object)
{
    QWidget* widget = widgetOf(&object);
    return captureFrom(widget ? widget->window() : nullptr);
}

Picture captureActiveWindow()
{
    return captureFrom(QApplication::activeWindow());
}

} // namespace OviAPI
