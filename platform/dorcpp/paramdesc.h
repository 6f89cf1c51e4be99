// The descriptor of one column of an answer.
#pragma once

#include <cstdint>

// Names are multibyte text of the process locale, ended by a zero, with the length beside them.
//
// Owner (schema), table and column name the source of the column. Owner and table are empty when
// there is none that a statement could name: for an expression, for an answer that was not read row
// by row from one table, and where any of the three names is longer than its field. The column name
// is then the answer's own; it is never empty and is cut between two characters.
struct t_ParamDesc {
    enum { nameSize = 64 };

    char owner[nameSize];
    uint16_t ownerLength;
    char table[nameSize];
    uint16_t tableLength;
    char column[nameSize];
    uint16_t columnLength;
    // Bytes: four for every declared character of a text (NCHAR and NVARCHAR: two UTF-16 units a
    // character), else the size of the binary form. At most 65532.
    uint16_t length;
    uint8_t type; // DorCPP::TypeCode
    // The name the answer gives the column (its alias); cut like the others.
    char label[nameSize];
    uint16_t labelLength;
};
