#include <dorcpp/sqlite/keys.h>

namespace DorCPP::Sqlite {

void bindKey(Use& use, int firstNumber, RowKeys& keys, size_t row)
{
    if (keys.isPacked()) {
        use.bind(firstNumber, keys.packed(row));
        return;
    }
    for (size_t i = 0; i < keys.columns(); ++i)
        use.bind(firstNumber + static_cast<int>(i), keys.part(row, i));
}

} // namespace DorCPP::Sqlite
