#include <set>

#include <gtest/gtest.h>

#include <dorcpp/errors.h>
#include <dorcpp/sqlite/errors.h>

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
    EXPECT_STREQ(x.text(), plainWords(row.code));
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
        EXPECT_STRNE(plainWords(row.code), plainWords(CodeOther)) << row.native;
    }
}
