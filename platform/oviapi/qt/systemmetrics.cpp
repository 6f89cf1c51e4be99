#include <oviapi/systemmetrics.h>

#include <QApplication>
#include <QScreen>
#include <QStyle>

#include "convert.h"
#include "toolkit.h"

namespace OviAPI {

namespace {

int styleMetric(QStyle::PixelMetric metric)
{
    return Toolkit::current() ? QApplication::style()->pixelMetric(metric) : 0;
}

const QScreen* mainScreen()
{
    return Toolkit::current() ? QGuiApplication::primaryScreen() : nullptr;
}

} // namespace

Rect SystemMetrics::getAvailableRect()
{
    const QScreen* screen = mainScreen();
    return screen ? fromQRect(screen->availableGeometry()) : Rect();
}

Rect SystemMetrics::getScreenRect()
{
    const QScreen* screen = mainScreen();
    return screen ? fromQRect(screen->geometry()) : Rect();
}

int SystemMetrics::getScrollBarWidth()
{
    return styleMetric(QStyle::PM_ScrollBarExtent);
}

int SystemMetrics::getScrollBarHeight()
{
    return styleMetric(QStyle::PM_ScrollBarExtent);
}

int SystemMetrics::getDoubleClickTime()
{
    return Toolkit::current() ? QApplication::doubleClickInterval() : 0;
}

int SystemMetrics::getDragDistance()
{
    return Toolkit::current() ? QApplication::startDragDistance() : 0;
}

int SystemMetrics::getSmallIconSize()
{
    return styleMetric(QStyle::PM_SmallIconSize);
}

int SystemMetrics::getLargeIconSize()
{
    return styleMetric(QStyle::PM_LargeIconSize);
}

double SystemMetrics::getPixelRatio()
{
    const QScreen* screen = mainScreen();
    return screen ? screen->devicePixelRatio() : 0;
}

} // namespace OviAPI
