// Colours against the desktop's background.
#pragma once

#include <oviapi/color.h>
#include <oviapi/export.h>

namespace OviAPI {

// Whether fields are dark with light text. False before the application object is made.
OVIAPI_API bool isDarkPalette();

// Ratio of the luminances of two colours, 1 (the same) to 21 (black and white), as the Web Content
// Accessibility Guidelines define it.
OVIAPI_API double contrast(Color a, Color b);

// A fixed colour mixed with as much white as it takes to reach a contrast of 3 against the
// background; unchanged when it has that already.
OVIAPI_API Color lightenedAgainst(Color color, Color background);

// A fixed colour of a chart as it is drawn on this desktop: lightened against the field background
// where the palette is dark. A colour by number follows the palette anyway and is not changed.
OVIAPI_API Color chartColor(Color color);

} // namespace OviAPI
