// Making error records.
#pragma once

#include <string>
#include <string_view>

#include <dorcpp/dorx.h>

namespace DorCPP {

// What a code means, in plain words.
OviAPI::Phrase phraseOf(int code);

// A phrase with its argument, both UTF-8.
std::string detailText(OviAPI::Phrase detail, std::string_view argument = {});

// An error of the client itself. detail is UTF-8.
DorX makeError(int code, std::string_view detail = {});
DorX makeError(int code, OviAPI::Phrase detail, std::string_view argument = {});
// An error of an engine. Errors that are never critical carry no system code, the others the native
// one; the native code is kept either way.
DorX makeEngineError(int code, int engineCode, std::string_view detail);
// An error of the operating system while something was done with a file: disk full or input/output.
DorX makeSystemError(int error, OviAPI::Phrase action, std::string_view argument = {});

} // namespace DorCPP
