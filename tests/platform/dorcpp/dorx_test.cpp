#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <dorcpp/dorx.h>
#include <dorcpp/types.h>

using namespace DorCPP;

TEST(DorX, TheEmptyRecordHasNoCodesTextsOrNestedRecords)
{
    const DorX x;
    EXPECT_EQ(x.status(), 0);
    EXPECT_EQ(x.position(), 0);
    EXPECT_EQ(x.code(), 0);
    EXPECT_EQ(x.systemCode(), 0);
    EXPECT_EQ(x.engineCode(), 0);
    EXPECT_EQ(x.text(), nullptr);
    EXPECT_EQ(x.detail(), nullptr);
    EXPECT_EQ(x.nested().count(), 0U);
    EXPECT_EQ(x.nested().growth(), 50U);
}

TEST(DorX, ACopyIsDeepInTextsAndNestedRecords)
{
    auto inner = std::make_unique<DorX>(-1, 3, "inner");
    auto x = std::make_unique<DorX>(-1, 2, "text", "detail");
    inner->addNested(DorX(-1, 4, "innermost"));
    x->addNested(*inner);
    const DorX copy = *x;
    EXPECT_NE(copy.text(), x->text());
    EXPECT_NE(copy.detail(), x->detail());
    EXPECT_NE(copy.nested()[0].text(), x->nested()[0].text());
    x.reset();
    inner.reset();
    EXPECT_STREQ(copy.text(), "text");
    EXPECT_STREQ(copy.nested()[0].nested()[0].text(), "innermost");
}

TEST(DorX, AListOfRecordsIsCopiedElementByElement)
{
    VectorOf<DorX> list(1, 50);
    for (int i = 0; i < 60; ++i) // grows twice
        list.append(DorX(-1, i, "text"));
    list[59].addNested(DorX(-1, 7, "nested"));
    const VectorOf<DorX> copy(list);
    VectorOf<DorX> assigned(0, 50);
    assigned.append(DorX(-1, 1, "before"));
    assigned = list;
    list[59] = DorX();
    list.clear();
    for (const VectorOf<DorX>* each : {&copy, static_cast<const VectorOf<DorX>*>(&assigned)}) {
        ASSERT_EQ(each->count(), 60U);
        EXPECT_EQ((*each)[30].code(), 30);
        EXPECT_STREQ((*each)[59].nested()[0].text(), "nested");
        EXPECT_EQ(each->growth(), 50U);
    }
    EXPECT_NE(copy[0].text(), assigned[0].text());
}

TEST(DorX, AssignmentToItselfAndFromAnotherKeepsTheTexts)
{
    DorX x(-1, 7, "seven");
    x = *&x;
    EXPECT_STREQ(x.text(), "seven");
    DorX y;
    y = x;
    EXPECT_STREQ(y.text(), "seven");
    EXPECT_EQ(y.code(), 7);
}

TEST(DorX, TheMessageHoldsTextDetailAndNestedRecords)
{
    DorX x(-1, 2, "first", "detail");
    x.addNested(DorX(-1, 3, "second"));
    char buffer[65536];
    EXPECT_EQ(x.getMessage(buffer, sizeof buffer), 20);
    EXPECT_STREQ(buffer, "first: detail\nsecond");
    EXPECT_STREQ(x.what(), "first: detail");
}

TEST(DorX, TheMessageIsCutBetweenCharactersAndAlwaysEnded)
{
    const DorX x(-1, 2, "a\xE2\x82\xAC");
    char buffer[8];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(x.getMessage(buffer, 4), 1);
    EXPECT_STREQ(buffer, "a");
    EXPECT_EQ(x.getMessage(buffer, 1), 0);
    EXPECT_STREQ(buffer, "");
    buffer[0] = 'x';
    EXPECT_EQ(x.getMessage(buffer, 0), 0);
    EXPECT_EQ(buffer[0], 'x');
}

TEST(Types, ADecimalBecomesTheNearestDouble)
{
    EXPECT_EQ(DecToDbl("12.50", 5), 12.5);
    EXPECT_EQ(DecToDbl("12.50", 2), 12.0);
    EXPECT_EQ(DecToDbl("-3\0junk", 8), -3.0);
    EXPECT_EQ(DecToDbl("+1e3", 4), 1000.0);
    EXPECT_EQ(DecToDbl("abc", 3), 0.0);
    EXPECT_EQ(DecToDbl("", 0), 0.0);
}
