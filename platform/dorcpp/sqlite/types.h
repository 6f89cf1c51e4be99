// Column types from declared types.
#pragma once

#include <string_view>

namespace DorCPP::Sqlite {

struct ColumnType {
    int type = 0;   // TypeCode; 0: values of any kind, told by the first one
    int length = 0; // bytes
};

// The type of a column that was declared so; null or empty: declared without a type.
//
//     SMALLINT, TINYINT, INT2         SMALLINT       DATE, DATETIME, TIMESTAMP..  DATE
//     MEDIUMINT, INT4                 INTEGER        BOOLEAN, BOOL                BOOLEAN
//     any other name with INT         BIGINT         BINARY(n), VARBINARY(n)      VARBYTE
//     DECIMAL, DEC, NUMERIC, NUMBER   DECIMAL        any other name with BLOB,
//     names with REAL, FLOA, DOUB     DOUBLE         BINARY, VARBINARY            BLOB
//     CHAR(n), CHARACTER(n)           CHAR           NCHAR(n), NATIVE CHARACTER   NCHAR
//     any other name with CHAR,                      NVARCHAR(n), NATIONAL ..     NVARCHAR
//     CLOB, TEXT                      VARCHAR        EXTFILE                      EXTFILE
//
// The engine's own integers have 64 bits whatever the name says, so INTEGER is BIGINT here. A text
// has four bytes for each declared character, 1,000 characters when none is declared. Other names
// (JSON, UUID, TIME) say nothing about the values.
ColumnType columnType(const char* declared);

// Whether the engine reads every integer in a column that was declared so as a real number.
bool holdsReals(const char* declared);

} // namespace DorCPP::Sqlite
