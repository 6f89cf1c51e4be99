// The faces to choose from.
#pragma once

#include <string>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

// The names of the installed faces that have letters of the Latin alphabet, in alphabetical order,
// each once. Empty before the application is started. User-interface thread only.
OVIAPI_API std::vector<std::wstring> fontFamilies();

} // namespace OviAPI
