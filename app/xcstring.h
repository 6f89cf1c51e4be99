// A growable narrow string: multibyte text of the process locale.
#pragma once

#include <cstdint>

#include <oviapi/string.h>

#include "app/export.h"

// The characters stand in one allocated buffer, always followed by a zero byte; the buffer is null
// until something is put into it, and every operation accepts that. Lengths, indexes and limits
// count bytes and start at 0. Zero bytes inside are allowed where a length is given.
//
// Text that memory cannot be found for leaves a null buffer and length 0 in a constructor, and the
// string as it was in every other operation.
class OVIEXT_API xCString {
public:
    xCString() = default;
    // At most n bytes of s; the length is n even when s is shorter (zero bytes follow then).
    xCString(const char* s, unsigned n);
    xCString(const char* s); // NOLINT(google-explicit-constructor): as callers write it
    // One byte is reserved for each wide character; what does not fit is cut off at a character.
    xCString(const wchar_t* s); // NOLINT(google-explicit-constructor): as callers write it
    // Whole, up to a zero character.
    xCString(const OviAPI::aCString& s); // NOLINT(google-explicit-constructor): as above
    xCString(const xCString& other);
    xCString(xCString&& other) noexcept;
    ~xCString();

    xCString& operator=(const xCString& other);
    xCString& operator=(xCString&& other) noexcept;
    xCString& operator=(const char* s);
    xCString& operator=(const wchar_t* s);

    xCString& operator+=(char c);
    xCString& operator+=(const char* s);
    xCString& operator+=(const xCString& other);

    // Never null: the empty text for a null buffer.
    const char* c_str() const { return m_buffer ? m_buffer : ""; }
    uint32_t GetLength() const { return m_length; }
    bool IsEmpty() const { return m_length == 0; }
    bool operator==(const xCString& other) const;

    // The buffer, n bytes long, for writing; new bytes are zero. A negative n counts as 0. Null
    // when memory is exhausted.
    char* GetBuffer(int n);
    // Sets the length to n, -1 for the first zero byte; a length over the present one is ignored.
    void ReleaseBuffer(int n = -1);
    // As GetBuffer, but null for n below 1.
    char* GetBufferSetLength(int n);

    // False, and nothing changes, when i is not the index of a byte of the string.
    bool SetAt(int i, char c);

    // From start to the end; empty when start is not below the length.
    xCString Mid(int start) const;
    // At most count bytes from start; empty for start 0 as well.
    xCString Mid(int start, int count) const;

    // Take off space characters, and nothing but those.
    void Trim();
    void TrimLeft();
    void TrimRight();

    // As printf, at most 4095 bytes; a longer text is cut at a character.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Convert the bytes in place between the ANSI, OEM and KOI8-R code pages.
    void AnsiToOem();
    void OemToAnsi();
    void OemToKoi();
    void KoiToOem();
    void AnsiToKoi();
    void KoiToAnsi();

private:
    void assign(const char* bytes, size_t count, size_t length);
    void append(const char* bytes, size_t count);
    xCString piece(uint32_t start, uint32_t count) const;
    char* resize(size_t length);
    void clear();

    char* m_buffer = nullptr; // from calloc or realloc
    uint32_t m_length = 0;
};

// Between the narrow and the wide string, both in the process locale. Of the wide text, as in the
// constructor from const wchar_t*, one byte a character is taken.
OVIEXT_API void convertACtoXC(xCString& dst, OviAPI::aCString& src);
OVIEXT_API void convertXCtoAC(OviAPI::aCString& dst, xCString& src);
