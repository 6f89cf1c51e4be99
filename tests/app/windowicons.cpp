#include "tests/app/windowicons.h"

#include <algorithm>

#include <QApplication>
#include <QIcon>
#include <QWidget>

std::vector<int> iconWidths(const std::wstring& title)
{
    std::vector<int> widths;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowTitle().toStdWString() != title)
            continue;
        for (const QSize& size : window->windowIcon().availableSizes())
            widths.push_back(size.width());
    }
    std::sort(widths.begin(), widths.end());
    return widths;
}
