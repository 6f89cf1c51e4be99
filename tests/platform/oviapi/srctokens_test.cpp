#include <oviapi/srctokens.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace OviAPI;

// The tokens of some lines, one letter a kind: w word, k keyword, n number, s string, q quoted
// name, c comment, p parameter, o operator; '/' between lines.
std::string kinds(const std::vector<std::wstring>& lines)
{
    constexpr char letters[] = "wknsqcpo";
    SrcTokenizer tokenizer;
    SrcState state = 0;
    std::string out;
    for (const std::wstring& line : lines) {
        std::vector<SrcToken> tokens;
        const SrcState skipped = tokenizer.skip(line, state);
        state = tokenizer.read(line, state, tokens);
        EXPECT_EQ(skipped, state) << "the state alone";
        if (&line != lines.data())
            out += '/';
        for (const SrcToken& token : tokens)
            out += letters[static_cast<size_t>(token.kind)];
    }
    return out;
}

} // namespace

TEST(SrcTokens, EveryKindIsToldFromTheOthers)
{
    EXPECT_EQ(kinds({L"SELECT \"a b\", c1 FROM t WHERE x = 'it''s' AND y >= 1.5e-3 -- end"}),
              "kqowkwkwoskwoonc");
    EXPECT_EQ(kinds({L"select From"}), "kk");
    EXPECT_EQ(kinds({L"selects fromage"}), "ww");
    EXPECT_EQ(kinds({L"0x1F .5 1.e5 7"}), "nnnn");
    EXPECT_EQ(kinds({L"\x416\x443\x43A a$b _c"}), "www");
}

TEST(SrcTokens, TokensSayWhereTheyStand)
{
    SrcTokenizer tokenizer;
    std::vector<SrcToken> tokens;
    tokenizer.read(L"  a, 'b'", 0, tokens);
    const std::vector<SrcToken> wanted = {
        {2, 3, SrcKind::Word}, {3, 4, SrcKind::Operator}, {5, 8, SrcKind::String}};
    EXPECT_EQ(tokens, wanted);
}

TEST(SrcTokens, ParametersAreNamesBehindASignAndQuestionMarks)
{
    EXPECT_EQ(kinds({L":name @p $1 ? ?2"}), "ppppp");
    EXPECT_EQ(kinds({L"a::text : $"}), "wokoo") << "a cast is no parameter";
}

TEST(SrcTokens, ACommentGoesOverLinesAndDoesNotNest)
{
    EXPECT_EQ(kinds({L"a /* b", L"c /* d", L"e */ f */ g"}), "wc/c/cwoow");
    EXPECT_EQ(kinds({L"/**/a/***/b"}), "cwcw");
    EXPECT_EQ(kinds({L"/*", L"", L"*/x"}), "c//cw");
}

TEST(SrcTokens, StringsAndQuotedNamesGoOverLines)
{
    EXPECT_EQ(kinds({L"'a", L"b''", L"c' d"}), "s/s/sw");
    EXPECT_EQ(kinds({L"\"a", L"b\"\"c\" d"}), "q/qw");
    EXPECT_EQ(kinds({L"'--' x"}), "sw");
}

TEST(SrcTokens, ABackslashCountsInAnEscapeStringOnly)
{
    EXPECT_EQ(kinds({L"E'a\\'b' c"}), "sw");
    EXPECT_EQ(kinds({L"'a\\' b"}), "sw");
    EXPECT_EQ(kinds({L"e'a\\", L"' b"}), "s/sw") << "at the end of a line";
    EXPECT_EQ(kinds({L"name'x'"}), "ws") << "the letter of a word opens no string";
}

TEST(SrcTokens, ADollarQuoteEndsAtItsOwnTag)
{
    EXPECT_EQ(kinds({L"$$ a 'b", L"$x$ ; -- $$ c"}), "s/sw");
    EXPECT_EQ(kinds({L"$body$ $$ x", L"$bod$", L"$body$ d"}), "s/s/sw");
    EXPECT_EQ(kinds({L"$1$ x"}), "pw") << "a tag begins with no digit";
}

TEST(SrcTokens, AStateOfAnotherTokenizerIsReadAsNone)
{
    SrcTokenizer tokenizer;
    std::vector<SrcToken> tokens;
    EXPECT_EQ(tokenizer.read(L"a", 1000000, tokens), 0);
    EXPECT_EQ(tokens.size(), 1U);
}

TEST(SrcTokens, EveryKeywordIsOneInAnyCase)
{
    EXPECT_TRUE(isSqlKeyword(L"CURRENT_TIMESTAMP"));
    EXPECT_TRUE(isSqlKeyword(L"wHeRe"));
    EXPECT_FALSE(isSqlKeyword(L""));
    EXPECT_FALSE(isSqlKeyword(L"CURRENT_TIMESTAMPS"));
    EXPECT_FALSE(isSqlKeyword(std::wstring(1000, L'a')));
}
