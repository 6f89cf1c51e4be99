// Asking an engine what it holds.
#pragma once

#include <string>

#include <dorcpp/connect.h>
#include <oviapi/export.h>

namespace DorCPP {

// The statement, in UTF-8, whose rows are schema, name and kind ("table" or "view") of what the
// user of the connection can read, without the engine's own tables. Executed through a cursor it
// lists them, also asynchronously. Sends nothing. Throws DorX (CodeSessionLost) when the connection
// is not open.
OVIAPI_API std::string tableListText(const DorConnect& connection);

} // namespace DorCPP
