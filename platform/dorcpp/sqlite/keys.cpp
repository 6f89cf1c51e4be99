#include <dorcpp/sqlite/keys.h>

namespace DorCPP::Sqlite {

std::string whereKey(const TableKey& key, const std::string& alias, int firstNumber)
{
    std::string text;
    for (const std::string& column : key.columns) {
        text += (text.empty() ? " WHERE " : " AND ") + alias + column + " = ?" +
                std::to_string(firstNumber++);
    }
    return text;
}

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
