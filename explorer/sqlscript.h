// Texts of several statements.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/srcedit.h>

// The statements of a text from the first to the last, without the blanks, comments and semicolons
// around them. A semicolon inside a string, a name, a comment or the body of a trigger ends none.
std::vector<OviAPI::SrcRange> statementsIn(std::wstring_view text);

// The place of a fault. start: where the statement begins; byte: from 1 in the statement's UTF-8
// text, as DorX::position counts; a number beyond the end gives the end.
OviAPI::SrcPosition faultPosition(std::wstring_view statement, OviAPI::SrcPosition start, int byte);

// "1 h 2 min 3.456 s" in the present language; hours, and minutes without hours, are left out when
// they are 0.
std::wstring durationText(int64_t milliseconds);
