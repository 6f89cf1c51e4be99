// What assistive technology is told of an object, and what it looks like.
#pragma once

#include <vector>

#include <oviapi/wvisualobject.h>

bool isAccessibleGroup(const OviAPI::WVisualObject& object);

// How many stretches of other pixels than the first one each column (row) of a window has at the
// given places, px: two for one that crosses a frame once.
std::vector<int> linesInColumns(const OviAPI::WVisualObject& form, const std::vector<int>& columns);
std::vector<int> linesInRows(const OviAPI::WVisualObject& form, const std::vector<int>& rows);
