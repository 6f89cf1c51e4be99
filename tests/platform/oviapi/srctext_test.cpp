#include <oviapi/srccursor.h>
#include <oviapi/srctext.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace OviAPI;

struct Text : ::testing::Test {
    SrcText text;
    SrcCursor cursor{text};

    void set(const wchar_t* what)
    {
        text.set(what);
        cursor.setCaret({0, 0});
    }
    // The statement around the place that '|' marks.
    std::wstring statement(std::wstring marked)
    {
        const size_t at = marked.find(L'|');
        marked.erase(at, 1);
        text.set(marked);
        return text.text(text.statementAt(text.point(at)));
    }
    void type(const wchar_t* what)
    {
        for (; *what; ++what)
            cursor.insert(std::wstring(1, *what), true);
    }
};

TEST_F(Text, LineEndsOfEveryKindBecomeOne)
{
    set(L"a\r\nb\rc\n");
    EXPECT_EQ(text.lineCount(), 4);
    EXPECT_EQ(text.text(), L"a\nb\nc\n");
    EXPECT_EQ(text.size(), 6U);
    set(L"");
    EXPECT_EQ(text.lineCount(), 1);
}

TEST_F(Text, PointsOutsideAreMovedInside)
{
    set(L"ab\nc");
    EXPECT_EQ(text.clamped({-1, 5}), (SrcPoint{0, 0}));
    EXPECT_EQ(text.clamped({0, 9}), (SrcPoint{0, 2}));
    EXPECT_EQ(text.clamped({7, 0}), (SrcPoint{1, 1}));
    EXPECT_EQ(text.text({{1, 1}, {0, 1}}), L"b\nc") << "either order";
}

TEST_F(Text, OffsetsAndPointsLeadToEachOther)
{
    set(L"ab\n\ncde");
    for (size_t i = 0; i <= text.size(); ++i)
        EXPECT_EQ(text.offset(text.point(i)), i);
    EXPECT_EQ(text.point(100), text.end());
}

TEST_F(Text, ManyRandomChangesAreUndoneAndRedone)
{
    std::mt19937 random(7);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const std::wstring pieces[] = {L"", L"x", L"\n", L"ab\ncd", L"\n\n", L"'q\n"};
    set(L"one\ntwo\nthree");
    std::vector<std::wstring> steps = {text.text()};
    for (int i = 0; i < 300; ++i) {
        const SrcPoint from =
            text.point(static_cast<size_t>(below(static_cast<int>(text.size()) + 1)));
        const SrcPoint to = text.clamped({from.line + below(2), below(6)});
        const std::wstring before = text.text();
        std::wstring wanted = before;
        const size_t a = std::min(text.offset(from), text.offset(to));
        const size_t b = std::max(text.offset(from), text.offset(to));
        const std::wstring& with = pieces[below(6)];
        wanted.replace(a, b - a, with);
        text.replace({from, to}, with);
        ASSERT_EQ(text.text(), wanted);
        ASSERT_EQ(text.size(), wanted.size());
        if (a != b || !with.empty())
            steps.push_back(wanted);
    }
    for (size_t i = steps.size() - 1; i-- > 0;) {
        ASSERT_TRUE(text.undo());
        ASSERT_EQ(text.text(), steps[i]);
    }
    EXPECT_FALSE(text.undo());
    EXPECT_FALSE(text.isModified());
    for (size_t i = 1; i < steps.size(); ++i) {
        ASSERT_TRUE(text.redo());
        ASSERT_EQ(text.text(), steps[i]);
    }
    EXPECT_FALSE(text.redo());
}

TEST_F(Text, TypingIsUndoneWordByWord)
{
    set(L"");
    type(L"ab cd");
    cursor.undo();
    EXPECT_EQ(text.text(), L"ab");
    cursor.undo();
    EXPECT_EQ(text.text(), L"");
    cursor.redo();
    cursor.redo();
    EXPECT_EQ(text.text(), L"ab cd");
    EXPECT_EQ(cursor.caret(), (SrcPoint{0, 5}));
}

TEST_F(Text, AMovedCaretBeginsANewChange)
{
    set(L"");
    type(L"ab");
    cursor.move(SrcMove::Left, false);
    type(L"x");
    cursor.undo();
    EXPECT_EQ(text.text(), L"ab");
}

TEST_F(Text, TheOldestChangesAreLetGo)
{
    set(L"");
    text.setUndoLimit(3, 1000);
    for (int i = 0; i < 5; ++i)
        text.replace({text.end(), text.end()}, L"x");
    while (text.undo()) {
    }
    EXPECT_EQ(text.text(), L"xx");
    EXPECT_TRUE(text.isModified()) << "the way back to the start is gone";
    text.setUndoLimit(100, 4);
    set(L"");
    text.replace({text.end(), text.end()}, L"longer than four");
    EXPECT_FALSE(text.canUndo());
    EXPECT_TRUE(text.isModified());
    text.setUndoLimit(0, 0);
    text.replace({text.end(), text.end()}, L"x");
    EXPECT_FALSE(text.canUndo());
}

TEST_F(Text, ATextUndoneToWhatWasSavedIsNotModified)
{
    set(L"a");
    text.replace({{0, 1}, {0, 1}}, L"b");
    EXPECT_TRUE(text.isModified());
    text.setModified(false);
    text.replace({{0, 2}, {0, 2}}, L"c");
    text.undo();
    EXPECT_FALSE(text.isModified());
    text.undo();
    EXPECT_TRUE(text.isModified());
    text.replace({{0, 1}, {0, 1}}, L"z");
    EXPECT_TRUE(text.isModified());
    text.undo();
    EXPECT_TRUE(text.isModified()) << "what was saved cannot be reached any more";
    text.setModified(true);
    EXPECT_TRUE(text.isModified());
}

TEST_F(Text, StatesFollowAChange)
{
    set(L"a\nb\nc");
    EXPECT_EQ(text.tokens(2).front().kind, SrcKind::Word);
    text.replace({{0, 0}, {0, 0}}, L"/*");
    EXPECT_EQ(text.tokens(2).front().kind, SrcKind::Comment);
    text.undo();
    EXPECT_EQ(text.tokens(2).front().kind, SrcKind::Word);
}

TEST_F(Text, TheStatementAroundAPlaceEndsAtSemicolons)
{
    EXPECT_EQ(statement(L"select 1; sel|ect 2; select 3"), L"select 2");
    EXPECT_EQ(statement(L"sel|ect ';' , \";\" -- ;\n, 2; x"), L"select ';' , \";\" -- ;\n, 2");
    EXPECT_EQ(statement(L"a $$ ; $$ |b; c"), L"a $$ ; $$ b");
    EXPECT_EQ(statement(L"a /* ; */ |b"), L"a /* ; */ b");
}

TEST_F(Text, BlanksBetweenStatementsBelongToOneOfThem)
{
    EXPECT_EQ(statement(L"|\n\n  select 1"), L"select 1");
    EXPECT_EQ(statement(L"select 1|;\nselect 2"), L"select 1");
    EXPECT_EQ(statement(L"select 1;|\nselect 2"), L"select 1");
    EXPECT_EQ(statement(L"select 1;  | \nselect 2"), L"select 1");
    EXPECT_EQ(statement(L"select 1;\n|\nselect 2"), L"select 2");
    EXPECT_EQ(statement(L"select 1;\n-- a |note\nselect 2"), L"select 2");
    EXPECT_EQ(statement(L"select 1;\n\n|"), L"select 1");
    EXPECT_EQ(statement(L"select 1|"), L"select 1");
    EXPECT_EQ(statement(L"a; | b"), L"a");
    EXPECT_EQ(statement(L"a; |b"), L"b");
}

TEST_F(Text, NoStatementIsEmpty)
{
    EXPECT_EQ(statement(L"|"), L"");
    EXPECT_EQ(statement(L" ;;| ; "), L"");
    EXPECT_EQ(statement(L"-- only |a comment"), L"");
}

TEST_F(Text, TheBodyOfATriggerIsOneStatement)
{
    const std::wstring trigger = L"create temp trigger g after insert on t begin "
                                 L"update t set a = case when 1 then 2 end; delete from u; end";
    EXPECT_EQ(statement(trigger + L"; select| 1"), L"select 1");
    EXPECT_EQ(statement(L"|" + trigger + L"; select 1"), trigger);
    EXPECT_EQ(statement(L"create trigger g before insert on t execute function f(); select| 2"),
              L"select 2")
        << "one without a body";
    EXPECT_EQ(statement(L"begin; select| 1; end; x"), L"select 1");
}

TEST_F(Text, WordsAreGoneThroughAndRemoved)
{
    set(L"select  a.b1\nx");
    cursor.move(SrcMove::WordRight, false);
    EXPECT_EQ(cursor.caret().column, 8);
    cursor.move(SrcMove::WordRight, false);
    EXPECT_EQ(cursor.caret().column, 9);
    cursor.move(SrcMove::WordLeft, false);
    cursor.move(SrcMove::WordLeft, false);
    EXPECT_EQ(cursor.caret().column, 0);
    cursor.removeWordRight();
    EXPECT_EQ(text.line(0), L"a.b1");
    cursor.setCaret({1, 0});
    cursor.removeWordLeft();
    EXPECT_EQ(text.text(), L"a.b1x");
    EXPECT_EQ(cursor.wordAt({0, 2}), (SrcSpan{{0, 2}, {0, 5}}));
}

TEST_F(Text, TheCaretStaysOffMarksButRemovesThemAlone)
{
    set(L"e\x301x");
    cursor.move(SrcMove::Right, false);
    EXPECT_EQ(cursor.caret().column, 2);
    cursor.move(SrcMove::Left, false);
    EXPECT_EQ(cursor.caret().column, 0);
    cursor.move(SrcMove::Right, false);
    cursor.removeLeft();
    EXPECT_EQ(text.text(), L"ex");
}

TEST_F(Text, HomeGoesToTheFirstLetterThenToTheMargin)
{
    set(L"   ab");
    cursor.move(SrcMove::LineEnd, false);
    cursor.move(SrcMove::LineStart, false);
    EXPECT_EQ(cursor.caret().column, 3);
    cursor.move(SrcMove::LineStart, false);
    EXPECT_EQ(cursor.caret().column, 0);
}

TEST_F(Text, ANewLineIsIndentedLikeItsOwn)
{
    set(L"  \tab");
    cursor.move(SrcMove::LineEnd, false);
    cursor.newLine();
    EXPECT_EQ(text.text(), L"  \tab\n  \t");
    cursor.setCaret({0, 1});
    cursor.newLine();
    EXPECT_EQ(text.line(1), L"  \tab") << "no more blanks than stand before the caret";
}

TEST_F(Text, LinesOfASelectionAreIndentedAndBack)
{
    set(L"a\n\nb\nc");
    cursor.select({{0, 0}, {3, 0}});
    cursor.indent(4);
    EXPECT_EQ(text.text(), L"    a\n\n    b\nc") << "not the line the selection only touches";
    cursor.unindent(4);
    EXPECT_EQ(text.text(), L"a\n\nb\nc");
    EXPECT_TRUE(cursor.undo());
    EXPECT_EQ(text.text(), L"    a\n\n    b\nc") << "one change";
    set(L"  x\n\ty");
    cursor.select({{0, 0}, {1, 2}});
    cursor.unindent(4);
    EXPECT_EQ(text.text(), L"x\ny");
}

TEST_F(Text, TabGoesToTheNextStopInOneLine)
{
    set(L"ab");
    cursor.setCaret({0, 1});
    cursor.indent(4);
    EXPECT_EQ(text.text(), L"a   b");
}

TEST_F(Text, CommentsAreToggledForAllLinesTogether)
{
    set(L"  a\n\n    -- b\n  c");
    cursor.select({{0, 0}, {3, 3}});
    cursor.toggleComment();
    EXPECT_EQ(text.text(), L"  -- a\n\n  --   -- b\n  -- c");
    cursor.toggleComment();
    EXPECT_EQ(text.text(), L"  a\n\n    -- b\n  c");
    set(L"\n  \n");
    cursor.select({{0, 0}, {2, 0}});
    cursor.toggleComment();
    EXPECT_EQ(text.text(), L"\n  \n") << "nothing to comment out";
}

TEST_F(Text, FindingMindsCaseWordsAndTheEnd)
{
    set(L"name Name names\nNAME");
    EXPECT_TRUE(cursor.find(L"NAME", 0));
    EXPECT_EQ(cursor.selection(), (SrcSpan{{0, 0}, {0, 4}}));
    EXPECT_TRUE(cursor.find(L"NAME", FindMatchCase));
    EXPECT_EQ(cursor.selection().from, (SrcPoint{1, 0}));
    EXPECT_FALSE(cursor.find(L"NAME", FindMatchCase));
    bool wrapped = false;
    EXPECT_TRUE(cursor.find(L"NAME", FindMatchCase | FindWrap, &wrapped));
    EXPECT_TRUE(wrapped);
    cursor.setCaret({0, 5});
    EXPECT_TRUE(cursor.find(L"name", FindWholeWord));
    EXPECT_TRUE(cursor.find(L"name", FindWholeWord));
    EXPECT_EQ(cursor.selection().from, (SrcPoint{1, 0})) << "names is another word";
    EXPECT_TRUE(cursor.find(L"name", FindBackward));
    EXPECT_EQ(cursor.selection().from, (SrcPoint{0, 10}));
    EXPECT_FALSE(cursor.find(L"", FindWrap));
    EXPECT_FALSE(cursor.find(L"s\nN", FindWrap));
    EXPECT_FALSE(cursor.find(L"nowhere", FindWrap | FindBackward));
}

TEST_F(Text, ReplacingEverywhereIsOneChange)
{
    set(L"aa a\nba");
    EXPECT_EQ(cursor.replaceAll(L"a", L"aa", 0), 4);
    EXPECT_EQ(text.text(), L"aaaa aa\nbaa");
    cursor.undo();
    EXPECT_EQ(text.text(), L"aa a\nba");
    EXPECT_EQ(cursor.replaceAll(L"a", L"\n", FindWholeWord), 1);
    EXPECT_EQ(text.text(), L"aa \n\nba");
    EXPECT_EQ(cursor.replaceAll(L"", L"x", 0), 0);
}

TEST_F(Text, ReplacingOneGoesOnToTheNext)
{
    set(L"x x");
    EXPECT_FALSE(cursor.replace(L"x", L"yx", 0)) << "nothing is selected yet";
    EXPECT_TRUE(cursor.replace(L"x", L"yx", 0));
    EXPECT_EQ(text.text(), L"yx x");
    EXPECT_EQ(cursor.selection().from.column, 3);
}

TEST_F(Text, BracketsFindTheirPartnersOutsideOfStrings)
{
    set(L"f(a, ')', [b\n])");
    cursor.setCaret({0, 1});
    auto pair = cursor.brackets();
    ASSERT_TRUE(pair && pair->partner);
    EXPECT_EQ(*pair->partner, (SrcPoint{1, 1}));
    cursor.setCaret({1, 2});
    pair = cursor.brackets();
    ASSERT_TRUE(pair && pair->partner);
    EXPECT_EQ(*pair->partner, (SrcPoint{0, 1}));
    cursor.setCaret({0, 6});
    EXPECT_FALSE(cursor.brackets()) << "inside a string";
    set(L"(");
    pair = cursor.brackets();
    ASSERT_TRUE(pair);
    EXPECT_FALSE(pair->partner);
}

} // namespace
