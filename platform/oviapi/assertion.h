// An assertion that is checked in every build: it ends the program with a sentence on the standard
// error stream. For conditions whose failure would otherwise overwrite memory.
#pragma once

#include <oviapi/export.h>

namespace OviAPI {

// Writes "<source>:<line>: <function>: Assertion `<text>' failed." and aborts.
[[noreturn]] OVIAPI_API void assertionFailed(const char* text, const char* source, int line,
                                             const char* function);

} // namespace OviAPI
