#include <dorcpp/postgresql/keys.h>

#include <dorcpp/value.h>

namespace DorCPP::Postgresql {

namespace {

void appendElement(std::string& array, const Parameter& part)
{
    array += array.size() > 1 ? "," : "";
    if (part.kind == Value::Null) {
        array += "NULL";
        return;
    }
    if (part.kind == Value::Integer) {
        array += numberText(part.integer);
        return;
    }
    if (part.kind == Value::Real) {
        array += numberText(part.real);
        return;
    }
    array += '"';
    if (part.kind == Value::Blob) {
        static constexpr char digits[] = "0123456789abcdef";
        array += "\\\\x";
        for (const char c : part.bytes) {
            const auto byte = static_cast<unsigned char>(c);
            array += {digits[byte >> 4], digits[byte & 15]};
        }
    } else {
        for (const char c : part.bytes) {
            if (c == '"' || c == '\\')
                array += '\\';
            array += c;
        }
    }
    array += '"';
}

} // namespace

const std::vector<std::string>& placeKey()
{
    static const std::vector<std::string> key{"ctid", "xmin::text::int8"};
    return key;
}

std::string whereKey(const TableKey& key, const std::string& alias, int firstNumber)
{
    std::string text;
    for (const std::string& column : key.columns) {
        text += (text.empty() ? " WHERE " : " AND ") + alias + column + " = $" +
                std::to_string(firstNumber++);
    }
    return text;
}

void setKey(Values& values, int firstNumber, RowKeys& keys, size_t row)
{
    for (size_t i = 0; i < keys.columns(); ++i)
        values.set(firstNumber + static_cast<int>(i), valueOf(keys.part(row, i)));
}

void setKeyArrays(Values& values, RowKeys& keys, size_t first, size_t count)
{
    for (size_t column = 0; column < keys.columns(); ++column) {
        std::string array = "{";
        for (size_t row = first; row < first + count; ++row)
            appendElement(array, keys.part(row, column));
        values.set(static_cast<int>(column) + 1, array + '}');
    }
}

Parameter ownValue(const Value& value)
{
    Parameter own;
    own.kind = value.kind;
    own.integer = value.integer;
    own.real = value.real;
    own.bytes = value.bytes();
    return own;
}

} // namespace DorCPP::Postgresql
