// How statements of the embedded engine name one row of a keyed answer.
#pragma once

#include <string>

#include <dorcpp/driver.h>
#include <dorcpp/sqlite/statement.h>

namespace DorCPP::Sqlite {

void bindKey(Use& use, int firstNumber, RowKeys& keys, size_t row);

} // namespace DorCPP::Sqlite
