// Lines of text files in UTF-8 and UTF-16, command-line parameters, file extensions.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

#include "app/export.h"

// The length of the longest part of a multibyte text (process locale) that has at most limit bytes
// and ends behind a whole character.
OVIEXT_API size_t wholeCharacters(std::string_view text, size_t limit);

// Writes the text in UTF-8 and a line end. Stops the program when an argument is null.
OVIEXT_API void writeln(FILE* f, const wchar_t* str);

// Reads one line of UTF-8 of at most size bytes and returns the number of wide characters stored.
// str must hold size + 1 characters: a zero follows the text. Leading carriage returns are skipped,
// others kept; what is left of a longer line is read by the next call. Stops the program when an
// argument is null.
//
// The caller tests feof before each call: at the end of the file the call does not return, and a
// last line without a line end is filled up to size bytes with its last byte.
OVIEXT_API int readln(FILE* f, wchar_t* str, int size);

// Writes the text and a line feed in 16-bit units, one a wide character; nothing for an empty text.
OVIEXT_API void writelnUCS2(FILE* f, const wchar_t* str);

// Writes the text in UTF-8 without a line end. size: bytes of room for the converted text and its
// zero, which cut it at a character; 0 for as many as it needs.
OVIEXT_API void writeUTF8(FILE* f, const wchar_t* str, size_t size);

// The same for multibyte text in the standard character set of the database client. With trimRight
// the text is len bytes without their trailing spaces, without it the zero-terminated string.
OVIEXT_API void writeUTF8(FILE* f, const char* str, size_t len, bool trimRight);

// Reads 16-bit units up to the unit delim (taken, not stored), size units or the end of the file
// and returns their number. swap: the file is big-endian. A zero follows the text where str has
// room.
OVIEXT_API int getlinexUCS2(FILE* f, wchar_t* str, int size, char delim, bool swap);

// Reads a byte order mark: 0 when there is one, *backward then tells whether it is big-endian; else
// 1, with *backward as it was and the two bytes taken.
OVIEXT_API int isBackward(FILE* f, bool* backward);

// The value of a command-line parameter: of -user=x, -userx and -user x it is x for the name -user.
// The last argument that contains the name counts. Empty text when no value follows, null when no
// argument contains the name.
OVIEXT_API wchar_t* findParam(int argc, wchar_t** argv, const wchar_t* name);

// Appends the extension, at most maxLen characters of it, unless the first place where the path
// contains it is its end. A path that is empty or longer than maxLen characters stays as it is, so
// the buffer needs room for maxLen characters, the extension and a zero.
OVIEXT_API void addExtention(wchar_t* path, int maxLen, const wchar_t* ext);
