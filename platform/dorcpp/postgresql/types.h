// Column types and values of the server.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include <endian.h>

#include <dorcpp/rowblock.h>
#include <libpq-fe.h>

namespace DorCPP::Postgresql {

// The types that this driver knows by their numbers in the catalogue.
enum KnownType : Oid {
    BoolType = 16,
    ByteaType = 17,
    SingleCharType = 18, // "char"
    NameType = 19,
    Int8Type = 20,
    Int2Type = 21,
    Int4Type = 23,
    TextType = 25,
    OidType = 26,
    TidType = 27,
    XidType = 28,
    JsonType = 114,
    Float4Type = 700,
    Float8Type = 701,
    UnknownType = 705,
    BpcharType = 1042,
    VarcharType = 1043,
    DateType = 1082,
    TimeType = 1083,
    TimestampType = 1114,
    TimestamptzType = 1184,
    NumericType = 1700,
    UuidType = 2950,
    JsonbType = 3802,
};

struct ColumnType {
    int type;   // TypeCode
    int length; // bytes
};

// The type of a column with this type and modifier.
//
//     smallint, integer, bigint, oid     SMALLINT, INTEGER, BIGINT, BIGINT
//     real, double precision, numeric    REAL, DOUBLE, DECIMAL
//     boolean                            BOOLEAN
//     date, timestamp                    DATE
//     bytea                              BLOB
//     character(n)                       CHAR
//     everything else                    VARCHAR: the text that the server writes for it
//
// A text has four bytes for each declared character, 1,000 characters when none is declared.
ColumnType columnType(Oid type, int modifier);

// Whether valueOf can read the binary form of the type.
bool hasBinaryForm(Oid type);
// Whether values of the type can be of any length.
bool isUnbounded(Oid type, int modifier);

// A field of an answer.
struct Field {
    Oid type;
    bool binary;
    const char* data;
    size_t length;
};

// The value of a field. Its bytes lie in the field or in own, and stay valid as long as both do.
// Dates become ISO text, as the server writes them.
Value valueOf(const Field& field, std::string& own);

// A number as the server sends it.
template<class T>
T bigEndian(const char* data)
{
    T value;
    std::memcpy(&value, data, sizeof value);
    if constexpr (sizeof value == 2)
        return static_cast<T>(be16toh(static_cast<uint16_t>(value)));
    else if constexpr (sizeof value == 4)
        return static_cast<T>(be32toh(static_cast<uint32_t>(value)));
    else
        return static_cast<T>(be64toh(static_cast<uint64_t>(value)));
}

// Forms of fields that become cells as they come.
enum class PlainForm : uint8_t { None, Integer4, Integer8, Real8, Text, Bytes };
PlainForm plainForm(Oid type, bool binary);

// Adds a field of such a form; false when it is of another size.
template<class Target>
bool addPlain(PlainForm form, const char* data, size_t length, Target& target)
{
    switch (form) {
    case PlainForm::Integer4:
        if (length == 4)
            target.addInteger(bigEndian<int32_t>(data));
        return length == 4;
    case PlainForm::Integer8:
        if (length == 8)
            target.addInteger(bigEndian<int64_t>(data));
        return length == 8;
    case PlainForm::Real8:
        if (length == 8)
            target.addReal(std::bit_cast<double>(bigEndian<uint64_t>(data)));
        return length == 8;
    case PlainForm::Text:
        target.addBytes(Value::Text, data, length);
        return true;
    case PlainForm::Bytes:
        target.addBytes(Value::Blob, data, length);
        return true;
    case PlainForm::None:
        break;
    }
    return false;
}

// Adds a value as a cell.
template<class Target>
void addValue(const Value& value, Target& target)
{
    switch (value.kind) {
    case Value::Null:
        target.addNull();
        break;
    case Value::Integer:
        target.addInteger(value.integer);
        break;
    case Value::Real:
        target.addReal(value.real);
        break;
    case Value::Text:
    case Value::Blob:
        target.addBytes(value.kind, value.data, value.length);
        break;
    }
}

} // namespace DorCPP::Postgresql
