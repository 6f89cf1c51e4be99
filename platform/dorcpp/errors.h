// Making error records.
#pragma once

#include <string>
#include <string_view>

#include <dorcpp/dorx.h>

namespace DorCPP {

// What a code means, in plain words.
const char* plainWords(int code);

// An error of the client itself. detail is UTF-8.
DorX makeError(int code, std::string_view detail = {});
// An error of an engine. Errors that are never critical carry no system code, the others the native
// one; the native code is kept either way.
DorX makeEngineError(int code, int engineCode, std::string_view detail);
// An error of the operating system while something was done with a file: disk full or input/output.
DorX makeSystemError(int error, std::string_view action);

} // namespace DorCPP
