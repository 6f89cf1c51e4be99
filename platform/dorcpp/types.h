// Numbers and value forms of the database client.
//
// Own binary forms of values, by column type. They lie in a buffer as plain bytes (not aligned), in
// the byte order of the machine; a buffer that is longer is filled up with zeros:
//
//     SMALLINT 2 bytes, INTEGER 4, BIGINT 8   two's complement
//     REAL 4 bytes, DOUBLE 8                  IEEE 754
//     DATE 8 bytes                            int64, microseconds since 1970-01-01 00:00:00 without
//                                             a time zone (proleptic Gregorian calendar)
//     DECIMAL                                 ASCII characters of the number, ended by a zero
//     BOOLEAN 1 byte                          0 or 1
//     BYTE, VARBYTE, BLOB                     the bytes as they are
//     CHAR, VARCHAR, EXTFILE                  zero-terminated multibyte text
//     NCHAR, NVARCHAR                         UTF-16 units ended by a zero unit
#pragma once

#include <cstddef>
#include <cstdint>

#include <oviapi/export.h>

namespace DorCPP {

// Type codes of columns, and client types of getData and BindValue: every column type, Text, Utf16
// and Bytes (the same number as the column type BYTE).
enum TypeCode : int {
    TypeChar = 1,
    TypeSmallint = 2,
    TypeInteger = 3,
    TypeBigint = 4,
    TypeReal = 5,
    TypeByte = 6,
    TypeBlob = 7,
    TypeDouble = 8,
    TypeDate = 9,
    TypeDecimal = 10,
    TypeVarchar = 11,
    TypeVarbyte = 12,
    TypeBoolean = 13,
    TypeText = 15,  // client type: zero-terminated multibyte text
    TypeNchar = 16, // also the client type of UTF-16 text
    TypeNvarchar = 17,
    TypeExtfile = 18,
};

enum FetchDirection : int {
    FetchFirst = 1,
    FetchLast = 2,
    FetchNext = 3,
    FetchPrevious = 4,
    FetchAbsolute = 5,
};

// Bits of the mode of a connection or a cursor; other bits are kept and have no effect here.
enum Mode : int {
    ModeReadOnly = 1,
};

// How much of a value its delivered form holds.
enum class ValueState {
    Exact,    // the whole value
    Null,     // no value: the buffer holds zeros
    Cut,      // longer than the buffer or more precise than the form: shown as far as it goes
    BadText,  // text that is not valid (or holds a zero): replacement characters stand in it
    Mismatch, // not of the asked type: a binary buffer holds zeros, a text buffer shows the value
              // as it is stored (bytes as hexadecimal digits); TypeText always shows it
};

// Lets other threads run: gives up the time slice (0) or sleeps that many milliseconds.
OVIAPI_API void DelayThread(int milliseconds);

// The number that a DECIMAL value stands for, rounded to the nearest double; 0 when it is none. The
// value ends at a zero byte or after length bytes.
OVIAPI_API double DecToDbl(const void* decimal, size_t length);

// Sets the function that is called, from the worker, after the handler of an asynchronous statement
// has returned, so that a waiting event loop looks again. Null: none. The function must be safe to
// call from any thread.
OVIAPI_API void setWakeUp(void (*function)());

} // namespace DorCPP
