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

// The statement, in UTF-8, that lists the foreign keys between tables that the user of the
// connection can read: a row for each column of each key, the columns of a key one after the other.
//
//     1 name     text; tells apart the keys of one child table, and no more than that
//     2, 3, 4    schema, table and column that refer
//     5, 6, 7    schema, table and column that are referred to
//     8 place    of the column in the key, a number from 1
//
// Names stand as they are in the catalogue, however the key was written. A key that names no
// columns of its parent refers to the primary key. Left out are keys that refer to nothing that
// exists, and those that a partition has from its table. Sends nothing. Throws DorX
// (CodeSessionLost) when the connection is not open.
OVIAPI_API std::string foreignKeyListText(const DorConnect& connection);

} // namespace DorCPP
