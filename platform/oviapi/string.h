// The framework's strings. Wide text is wchar_t (32 bits, one Unicode code point each), narrow text
// is multibyte text of the process locale.
#pragma once

#include <string>

namespace OviAPI {

// The wide string of the framework's data classes.
using aCString = std::wstring;

} // namespace OviAPI

using CharString = std::string;
using WCharString = std::wstring;
