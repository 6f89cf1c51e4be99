#include <gtest/gtest.h>

#include <dorcpp/sqlite/types.h>
#include <dorcpp/types.h>

using namespace DorCPP;
using DorCPP::Sqlite::columnType;

namespace {

struct Row {
    const char* declared;
    int type;
    int length;
};

class DeclaredType : public ::testing::TestWithParam<Row> {};

} // namespace

TEST_P(DeclaredType, GivesTypeCodeAndLength)
{
    const auto type = columnType(GetParam().declared);
    EXPECT_EQ(type.type, GetParam().type) << GetParam().declared;
    EXPECT_EQ(type.length, GetParam().length) << GetParam().declared;
}

INSTANTIATE_TEST_SUITE_P(
    Sqlite, DeclaredType,
    ::testing::Values(
        Row{"SMALLINT", TypeSmallint, 2}, Row{"tinyint", TypeSmallint, 2},
        Row{"MEDIUMINT", TypeInteger, 4}, Row{"INT4", TypeInteger, 4},
        Row{"INTEGER", TypeBigint, 8}, Row{"int", TypeBigint, 8}, Row{"BIGINT", TypeBigint, 8},
        Row{"UNSIGNED BIG INT", TypeBigint, 8}, Row{"POINT", TypeBigint, 8},
        Row{"BOOLEAN", TypeBoolean, 1}, Row{"DATE", TypeDate, 8}, Row{"DATETIME", TypeDate, 8},
        Row{"TIMESTAMP WITH TIME ZONE", TypeDate, 8}, Row{"DECIMAL(10,2)", TypeDecimal, 40},
        Row{"NUMERIC( 60 , 5 )", TypeDecimal, 70}, Row{"NUMBER", TypeDecimal, 40},
        Row{"BINARY(16)", TypeVarbyte, 16}, Row{"VARBINARY ( 20 )", TypeVarbyte, 20},
        Row{"VARBINARY", TypeBlob, 0}, Row{"BLOB", TypeBlob, 0}, Row{"LONGBLOB", TypeBlob, 0},
        Row{"NCHAR(5)", TypeNchar, 20}, Row{"NVARCHAR(10)", TypeNvarchar, 40},
        Row{"CHAR(3)", TypeChar, 12}, Row{"CHARACTER VARYING(7)", TypeVarchar, 28},
        Row{"VARCHAR(20)", TypeVarchar, 80}, Row{"TEXT", TypeVarchar, 4000},
        Row{"CLOB", TypeVarchar, 4000}, Row{"CHAR", TypeVarchar, 4000},
        Row{"VARCHAR(100000)", TypeVarchar, 65532},
        Row{"VARCHAR(99999999999999999999)", TypeVarchar, 65532},
        Row{"VARCHAR(-5)", TypeVarchar, 4000}, Row{"VARCHAR(", TypeVarchar, 4000},
        Row{"REAL", TypeDouble, 8}, Row{"DOUBLE  PRECISION", TypeDouble, 8},
        Row{"FLOAT", TypeDouble, 8}, Row{"EXTFILE", TypeExtfile, 2048}, Row{"JSON", 0, 0},
        Row{"UUID", 0, 0}, Row{"TIME", 0, 0}, Row{"", 0, 0}, Row{nullptr, 0, 0}));

TEST(RealColumns, TheEnginesOwnRuleDecides)
{
    for (const char* real : {"REAL", "double precision", "Float", "TIMESTAMP REAL"})
        EXPECT_TRUE(DorCPP::Sqlite::holdsReals(real)) << real;
    for (const char* other :
         {"", "INTEGER", "FLOATING POINT", "TEXT REAL", "REAL BLOB", "NUMERIC", "DECIMAL(10,2)"})
        EXPECT_FALSE(DorCPP::Sqlite::holdsReals(other)) << other;
    EXPECT_FALSE(DorCPP::Sqlite::holdsReals(nullptr));
}
