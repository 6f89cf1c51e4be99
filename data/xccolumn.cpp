#include "data/xccolumn.h"

const OviAPI::Color xCColumn::defColors[defColorsCount] = {
    {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {180, 0, 0}, {0, 180, 0},
    {0, 0, 180}, {100, 0, 0}, {0, 100, 0}, {0, 0, 100},
};

unsigned xCColumn::m_defaultColor = 0;

xCColumn::xCColumn()
{
    setDefaultColor();
}

xCColumn::xCColumn(const wchar_t* columnName, unsigned char type, long columnSize,
                   const wchar_t* title, short columnWidth, short columnMinWidth, int kind)
    : aCColumn(columnName, type, columnSize, title, columnWidth, columnMinWidth, kind)
{
    setDefaultColor();
}

void xCColumn::setDefaultColor()
{
    color = defColors[m_defaultColor % defColorsCount];
    ++m_defaultColor;
}
