// What the bytes of a value are: text in one encoding or another, a picture, or neither.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

enum class ValueForm { Text, Image, Hex };

enum class TextEncoding { Utf8, Utf16Little, Utf16Big, Koi8, Windows1251, Latin1 };
inline constexpr TextEncoding allEncodings[] = {
    TextEncoding::Utf8, TextEncoding::Utf16Little, TextEncoding::Utf16Big,
    TextEncoding::Koi8, TextEncoding::Windows1251, TextEncoding::Latin1};

// The name that people know, "UTF-8".
const wchar_t* nameOf(TextEncoding encoding);

// How a text is written as bytes.
struct TextStyle {
    TextEncoding encoding = TextEncoding::Utf8;
    bool mark = false;    // with a byte order mark in front
    bool returns = false; // lines end with CR LF instead of LF

    bool operator==(const TextStyle&) const = default;
};

// The first bytes of a value, and whether they are all of it.
struct ValueStart {
    std::string_view bytes;
    bool isWhole = true;
};

// By the byte order mark, else what the bytes are most likely. Bytes that are no text at all give
// UTF-8.
TextEncoding guessEncoding(const ValueStart& start);
// isText: the database says that it is text.
ValueForm guessForm(const ValueStart& start, bool isText);

// How bytes of this encoding are written: with a mark, with carriage returns at all line ends.
TextStyle styleOf(std::string_view bytes, TextEncoding encoding);
// The text without its mark, line ends as LF. What is not valid becomes U+FFFD.
std::wstring decodedText(std::string_view bytes, const TextStyle& style);
// Nothing when the encoding lacks a character of the text.
std::optional<std::string> encodedText(std::wstring_view text, const TextStyle& style);
// Bytes from the start that hold whole characters.
size_t wholeCharacters(std::string_view bytes, TextEncoding encoding);

// Looks at a text in UTF-8 that comes in pieces.
class Utf8Check {
public:
    // False as soon as it is not valid, or holds a zero.
    bool add(std::string_view piece);
    // Whether it ended with a whole character.
    bool isComplete() const { return m_rest.empty(); }

private:
    std::string m_rest; // the start of a character
};
