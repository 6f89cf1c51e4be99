#pragma once

#include <oviapi/export.h>

namespace OviAPI {

// Version of the library that is loaded, "major.minor.patch".
OVIAPI_API const char* version();

} // namespace OviAPI
