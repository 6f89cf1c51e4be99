// Reading of SQL text line by line, for colours, bracket matching and the split into statements.
//
// Nothing here knows a grammar: every text is read to its end, and what cannot be told is an
// operator. Engines differ in details; the rules are the common ones: '' inside '..' and "" inside
// ".." stand for the quote itself, E'..' strings know backslashes, comments /* */ do not nest,
// $tag$ .. $tag$ quotes anything.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

enum class SrcKind : uint8_t {
    Word,
    Keyword,
    Number,
    String, // '..' and dollar quotes
    QuotedName,
    Comment,
    Parameter, // :name @name $1 ?
    Operator,  // one sign each
};

// from and to: characters of the line, from 0, to just behind the token. Blanks are no tokens.
struct SrcToken {
    int from = 0;
    int to = 0;
    SrcKind kind = SrcKind::Operator;

    bool operator==(const SrcToken&) const = default;
};

// What a line ends, and the next one begins, inside of. 0 for nothing; the tags of dollar quotes
// are numbered by the SrcTokenizer that has met them.
using SrcState = int32_t;

// Remembers the tags of dollar quotes; a state is of use to the tokenizer that gave it only.
class OVIAPI_API SrcTokenizer {
public:
    // Appends the tokens of one line without its line end. Returns the state behind it.
    SrcState read(std::wstring_view line, SrcState before, std::vector<SrcToken>& tokens);
    // The state alone.
    SrcState skip(std::wstring_view line, SrcState before);

private:
    class Reader;

    SrcState stateOf(std::wstring_view tag);

    std::vector<std::wstring> m_tags; // with both dollar signs
};

// Whether a word is one that SQL gives a meaning to, in any case.
OVIAPI_API bool isSqlKeyword(std::wstring_view word);

// Finds the ends of statements: feed it the tokens in their order. A semicolon ends a statement,
// but not inside the body of a CREATE TRIGGER, which its END closes.
class OVIAPI_API SrcSplitter {
public:
    // line: the text the token lies in. True when the token is the semicolon that ends the
    // statement. Comments are to be left out.
    bool feed(std::wstring_view line, const SrcToken& token);

private:
    enum class Head { Start, Create, Trigger, Other };
    Head m_head = Head::Start;
    bool m_body = false;
    bool m_closed = false; // the word END has closed the body
    int m_cases = 0;
};

} // namespace OviAPI
