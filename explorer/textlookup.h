// The explorer's texts in the present language.
#pragma once

#include <string>
#include <string_view>

#include "explorer/texts.h"

// Empty when the resources have no such text.
std::wstring textOf(TextId id);
// With the argument in the place of its placeholder.
std::wstring textOf(TextId id, std::wstring_view argument);

// A number in decimal digits, grouped by threes with no-break spaces.
std::wstring groupedNumber(long number);
