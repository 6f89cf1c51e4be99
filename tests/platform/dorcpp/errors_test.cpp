#include <set>

#include <gtest/gtest.h>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/errors.h>
#include <oviapi/text.h>

using namespace DorCPP;

namespace {

struct Row {
    int native;
    int code;
    bool critical; // whether a dataset takes it for the end of the session's work
};

class NativeCode : public ::testing::TestWithParam<Row> {};

// How a dataset judges.
bool isCritical(const DorX& x)
{
    const bool harmless = x.code() >= 2000 && x.code() <= 3000;
    return (x.systemCode() != 0 && !harmless) || (x.code() >= 1000 && x.code() <= 1016);
}

} // namespace

TEST_P(NativeCode, BecomesItsDbmsCodeAndIsCriticalOnlyWhereItMustBe)
{
    const Row& row = GetParam();
    const DorX x = Sqlite::errorFor(row.native, "native words");
    EXPECT_EQ(x.status(), -1);
    EXPECT_EQ(x.code(), row.code);
    EXPECT_EQ(x.engineCode(), row.native);
    EXPECT_EQ(isCritical(x), row.critical);
    EXPECT_EQ(x.text(), OviAPI::wideToUtf8(OviAPI::phrase(phraseOf(row.code))));
    EXPECT_STREQ(x.detail(), "native words");
}

INSTANTIATE_TEST_SUITE_P(
    Sqlite, NativeCode,
    ::testing::Values(Row{SQLITE_ERROR, 2001, false}, Row{SQLITE_INTERNAL, 1001, true},
                      Row{SQLITE_PERM, 1022, false}, Row{SQLITE_ABORT, 2051, false},
                      Row{SQLITE_ABORT_ROLLBACK, 2051, false}, Row{SQLITE_BUSY, 135, false},
                      Row{SQLITE_BUSY_RECOVERY, 135, false}, Row{SQLITE_BUSY_SNAPSHOT, 129, false},
                      Row{SQLITE_LOCKED, 135, false}, Row{SQLITE_LOCKED_SHAREDCACHE, 135, false},
                      Row{SQLITE_NOMEM, 1005, true}, Row{SQLITE_READONLY, 1022, false},
                      Row{SQLITE_READONLY_DIRECTORY, 1022, false},
                      Row{SQLITE_READONLY_DBMOVED, 1001, true}, Row{SQLITE_INTERRUPT, 2050, false},
                      Row{SQLITE_IOERR, 1006, true}, Row{SQLITE_IOERR_WRITE, 1006, true},
                      Row{SQLITE_IOERR_NOMEM, 1005, true}, Row{SQLITE_IOERR_CORRUPTFS, 1003, true},
                      Row{SQLITE_IOERR_DATA, 1003, true}, Row{SQLITE_CORRUPT, 1003, true},
                      Row{SQLITE_CORRUPT_INDEX, 1003, true}, Row{SQLITE_NOTFOUND, 2001, false},
                      Row{SQLITE_FULL, 1004, true}, Row{SQLITE_CANTOPEN, 1007, true},
                      Row{SQLITE_CANTOPEN_ISDIR, 1007, true}, Row{SQLITE_PROTOCOL, 135, false},
                      Row{SQLITE_SCHEMA, 2004, false}, Row{SQLITE_TOOBIG, 2005, false},
                      Row{SQLITE_CONSTRAINT, 1022, false},
                      Row{SQLITE_CONSTRAINT_UNIQUE, 1022, false},
                      Row{SQLITE_CONSTRAINT_FOREIGNKEY, 1022, false},
                      Row{SQLITE_MISMATCH, 1022, false}, Row{SQLITE_MISUSE, 2003, false},
                      Row{SQLITE_NOLFS, 1006, true}, Row{SQLITE_AUTH, 1022, false},
                      Row{SQLITE_FORMAT, 1003, true}, Row{SQLITE_RANGE, 2006, false},
                      Row{SQLITE_NOTADB, 1003, true}, Row{99, 2199, false}));

TEST(NativeCodes, EveryRowOfTheTableHasPlainWords)
{
    std::set<int> seen;
    for (const Sqlite::ErrorRow& row : Sqlite::errorTable()) {
        EXPECT_TRUE(seen.insert(row.native).second) << row.native;
        EXPECT_NE(phraseOf(row.code), OviAPI::Phrase::DbOther) << row.native;
    }
}

class ErrorLanguage : public ::testing::Test {
protected:
    ~ErrorLanguage() override { OviAPI::loadPhrases(nullptr); }

    static std::string messageOf(const DorX& x)
    {
        char buffer[1000];
        x.getMessage(buffer, sizeof buffer);
        return buffer;
    }
    static void loadNumbers()
    {
        OviAPI::loadPhrases(
            [](int number) { return std::to_wstring(number) + (number == 61131 ? L" %ls" : L""); });
    }
};

TEST_F(ErrorLanguage, TheSentenceIsOursAndTheEnginesWordsFollowAsTheyAre)
{
    loadNumbers();
    EXPECT_EQ(messageOf(Sqlite::errorFor(SQLITE_BUSY, "database is locked")),
              "61104: database is locked");
    EXPECT_EQ(messageOf(makeError(CodeRowGone, OviAPI::Phrase::DbDetailRow, "7")),
              "61102: 61131 7");
}

TEST_F(ErrorLanguage, ARecordSpeaksTheLanguageOfTheTimeWhenItIsShown)
{
    DorX x = Sqlite::errorFor(SQLITE_FULL, "database or disk is full");
    x.addNested(makeError(CodeUndone));
    x.addNested(DorX(-1, 5, "words of the application"));
    loadNumbers();
    const DorX copy = x;
    EXPECT_EQ(messageOf(copy), "61108: database or disk is full\n61120\nwords of the application");
    EXPECT_STREQ(copy.text(), "The disk is full");
}

TEST_F(ErrorLanguage, EveryCodeHasASentenceOfItsOwn)
{
    std::set<OviAPI::Phrase> seen;
    for (const int code : {1,    2,    129,  135,  1001, 1002, 1003, 1004, 1005, 1006, 1007, 1022,
                           2001, 2002, 2003, 2004, 2005, 2006, 2199, 2050, 2051, 2060, 2070, 2162})
        EXPECT_TRUE(seen.insert(phraseOf(code)).second) << code;
}
