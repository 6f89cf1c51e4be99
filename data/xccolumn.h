// A column that carries the pen and colour of its series.
#pragma once

#include <oviapi/column.h>

#include "app/export.h"
#include "data/visualizator.h"

// Every new column takes the next of nine colours. The counter belongs to the program, not to a
// dataset: it is never reset, so that two charts side by side do not start with the same colour.
class OVIEXT_API xCColumn : public OviAPI::aCColumn, public xCVisualizator {
public:
    static constexpr int defColorsCount = 9;
    static const OviAPI::Color defColors[defColorsCount];

    xCColumn();
    // The arguments of aCColumn.
    xCColumn(const wchar_t* columnName, unsigned char type, long columnSize, const wchar_t* title,
             short columnWidth, short columnMinWidth, int kind);

    // Takes the next colour.
    void setDefaultColor();

    static unsigned m_defaultColor; // colours taken so far
};
