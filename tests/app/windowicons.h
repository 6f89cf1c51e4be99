// The icons that the desktop is given for a window.
#pragma once

#include <string>
#include <vector>

// Widths of the icons of the window with that title, ascending; empty without an icon.
std::vector<int> iconWidths(const std::wstring& title);
