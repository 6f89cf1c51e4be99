// Values come out as they went in.
#include <array>
#include <cstring>
#include <limits>

#include "support.h"

using namespace Conformance;

namespace {

class Values : public OnEngine {
protected:
    // Puts one value into a column of this type and fetches it by its key.
    void store(const std::string& type, const std::string& value)
    {
        execute("DROP TABLE IF EXISTS v");
        execute("CREATE TABLE v(id INTEGER PRIMARY KEY, v " + type + ")");
        execute("INSERT INTO v VALUES(1, " + value + ")");
        execute("SELECT v FROM v");
        cursor.fetch(FetchFirst, 0);
    }
    // The same through a parameter.
    void storeBound(const std::string& type, const BindValue& value)
    {
        execute("DROP TABLE IF EXISTS v");
        execute("CREATE TABLE v(id INTEGER PRIMARY KEY, v " + type + ")");
        DorStatement statement;
        statement.create(connection, "INSERT INTO v VALUES(1, ?)", false);
        BindMap binds;
        binds.bind(1, value);
        cursor.execute(statement, &binds);
        EXPECT_EQ(cursor.changedRowCount(), 1);
        execute("SELECT v FROM v");
        cursor.fetch(FetchFirst, 0);
    }
    template<class T>
    T get(int type)
    {
        T value{};
        state = cursor.getData(1, type, &value, sizeof value);
        return value;
    }
    t_ParamDesc desc() const
    {
        t_ParamDesc d;
        cursor.answerDesc(1, d);
        return d;
    }
    std::string hex()
    {
        std::array<char, 100> buffer;
        size_t length = 0;
        state = cursor.getData(1, TypeByte, buffer.data(), buffer.size(), nullptr, &length);
        std::string out;
        for (size_t i = 0; i < length; ++i) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(buffer[i]));
            out += digits;
        }
        return out;
    }
    ValueState state = ValueState::Null;
};

} // namespace

ON_BOTH_ENGINES(Values);

TEST_P(Values, IntegersOfEveryWidthKeepTheirLimits)
{
    store("SMALLINT", "-32768");
    EXPECT_EQ(desc().type, TypeSmallint);
    EXPECT_EQ(get<int16_t>(TypeSmallint), -32768);
    store("BIGINT", "9223372036854775807");
    EXPECT_EQ(desc().type, TypeBigint);
    EXPECT_EQ(desc().length, 8);
    EXPECT_EQ(get<int64_t>(TypeBigint), std::numeric_limits<int64_t>::max());
    store("BIGINT", "-9223372036854775807 - 1");
    EXPECT_EQ(get<int64_t>(TypeBigint), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(state, ValueState::Exact);
    EXPECT_EQ(text(cursor, 1), "-9223372036854775808");
}

TEST_P(Values, FloatingNumbersAreTheSameBits)
{
    for (const double value : {0.1, -1.5e-300, 1.7976931348623157e308, 5e-324, 3.0}) {
        BindValue bind{TypeDouble, &value, sizeof value};
        storeBound("DOUBLE PRECISION", bind);
        EXPECT_EQ(desc().type, TypeDouble);
        EXPECT_EQ(get<double>(TypeDouble), value);
        EXPECT_EQ(state, ValueState::Exact);
    }
}

TEST_P(Values, AnExactNumberIsItsText)
{
    const std::string digits = "12345678901234567890123456.789012345678";
    const BindValue bind{TypeDecimal, digits.data(), digits.size()};
    storeBound(isServer() ? "NUMERIC(38,12)" : "VARCHAR(60)", bind);
    EXPECT_EQ(text(cursor, 1), digits);
    std::array<char, 64> buffer;
    EXPECT_EQ(cursor.getData(1, TypeDecimal, buffer.data(), buffer.size()), ValueState::Exact);
    EXPECT_EQ(buffer.data(), digits);
}

TEST_P(Values, MicrosecondsSurvive)
{
    for (const char* value : {"2005-03-04 06:07:08.000001", "1969-12-31 23:59:59.999999",
                              "0001-01-01 00:00:00", "9999-12-31 23:59:59.999999"}) {
        store("TIMESTAMP", '\'' + std::string(value) + '\'');
        EXPECT_EQ(desc().type, TypeDate);
        const auto micros = get<int64_t>(TypeDate);
        EXPECT_EQ(state, ValueState::Exact);
        EXPECT_EQ(text(cursor, 1), value);
        storeBound("TIMESTAMP", {TypeDate, &micros, sizeof micros});
        EXPECT_EQ(get<int64_t>(TypeDate), micros) << value;
    }
}

TEST_P(Values, TextOfEveryPlaneIsKept)
{
    const std::string all = "a\xC3\xA9\xD0\x96\xE2\x82\xAC\xE4\xB8\xAD\xF0\x9F\x98\x80"
                            "\xF4\x8F\xBF\xBD\x7F\x01";
    storeBound("VARCHAR(40)", {TypeVarchar, all.data(), all.size()});
    EXPECT_EQ(desc().type, TypeVarchar);
    EXPECT_EQ(desc().length, 160);
    EXPECT_EQ(text(cursor, 1), all);
    std::array<char16_t, 20> units{};
    size_t length = 0;
    EXPECT_EQ(cursor.getData(1, TypeNchar, units.data(), sizeof units, nullptr, &length),
              ValueState::Exact);
    EXPECT_EQ(units[5], 0xD83D);
    EXPECT_EQ(units[6], 0xDE00);
    storeBound("VARCHAR(40)", {TypeNchar, units.data(), length});
    EXPECT_EQ(text(cursor, 1), all);
}

TEST_P(Values, EmptyTextIsNotNull)
{
    store("VARCHAR(5)", "''");
    EXPECT_FALSE(cursor.isNull(1));
    EXPECT_EQ(text(cursor, 1), "");
    store("VARCHAR(5)", "NULL");
    EXPECT_TRUE(cursor.isNull(1));
    EXPECT_EQ(text(cursor, 1), "NULL");
    BindValue null;
    null.indicator = 1;
    storeBound("VARCHAR(5)", null);
    EXPECT_TRUE(cursor.isNull(1));
}

TEST_P(Values, EveryByteIsKept)
{
    store(bytesType(), bytes("00ff0a5c27"));
    EXPECT_EQ(desc().type, TypeBlob);
    EXPECT_EQ(desc().length, 0);
    EXPECT_EQ(hex(), "00ff0a5c27");
    EXPECT_EQ(state, ValueState::Exact);
    storeBound(bytesType(), {TypeByte, "\0\\'\x80", 4});
    EXPECT_EQ(hex(), "005c2780");
    storeBound(bytesType(), {TypeByte, "", 0});
    EXPECT_FALSE(cursor.isNull(1));
    EXPECT_EQ(hex(), "");
}

TEST_P(Values, EveryClientTypeCanBeBound)
{
    const int8_t yes = 1;
    storeBound("BOOLEAN", {TypeBoolean, &yes, sizeof yes});
    EXPECT_EQ(desc().type, TypeBoolean);
    EXPECT_EQ(get<int8_t>(TypeBoolean), 1);
    const int16_t small = -7;
    storeBound("BIGINT", {TypeSmallint, &small, sizeof small});
    EXPECT_EQ(get<int64_t>(TypeBigint), -7);
    const int32_t middle = 70000;
    storeBound("BIGINT", {TypeInteger, &middle, sizeof middle});
    EXPECT_EQ(get<int64_t>(TypeBigint), 70000);
    const float narrow = 0.5F;
    storeBound("DOUBLE PRECISION", {TypeReal, &narrow, sizeof narrow});
    EXPECT_EQ(get<double>(TypeDouble), 0.5);
    const double whole = 3;
    storeBound("BIGINT", {TypeDouble, &whole, sizeof whole});
    EXPECT_EQ(get<int64_t>(TypeBigint), 3);
    storeBound("VARCHAR(10)", {TypeChar, "abc", 3});
    EXPECT_EQ(text(cursor, 1), "abc");
    storeBound("VARCHAR(10)", {TypeText, "def", 3});
    EXPECT_EQ(text(cursor, 1), "def");
}

TEST_P(Values, AParameterMayBeNumberedAndUsedTwice)
{
    DorStatement statement;
    const std::string type = isServer() ? "::int8" : "";
    statement.create(connection,
                     ("SELECT ?2" + type + " - ?1" + type + ", ?2" + type + " + ?" + type).c_str(),
                     true);
    EXPECT_EQ(statement.paramCount(), 3);
    const int64_t one = 1;
    const int64_t two = 2;
    const int64_t three = 30;
    BindMap binds;
    binds.bind(1, {TypeBigint, &one, sizeof one});
    binds.bind(2, {TypeBigint, &two, sizeof two});
    binds.bind(3, {TypeBigint, &three, sizeof three});
    cursor.execute(statement, &binds);
    EXPECT_EQ(rows(cursor), std::vector<std::string>{"1|32"});
    binds.bind(4, {TypeBigint, &one, sizeof one});
    EXPECT_EQ(codeOf([&] { cursor.execute(statement, &binds); }), CodeBadBind);
}

TEST_P(Values, TextOfAColumnWithoutALengthIsDescribedAsAThousandCharacters)
{
    store("TEXT", "'x'");
    EXPECT_EQ(desc().type, TypeVarchar);
    EXPECT_EQ(desc().length, 4000);
}

TEST_P(Values, AColumnKnowsItsTableAndItsAlias)
{
    execute("CREATE TABLE described(id INTEGER PRIMARY KEY, \"a b\" VARCHAR(20))");
    execute("SELECT id, \"a b\" AS label, id + 1 FROM described");
    t_ParamDesc d;
    cursor.answerDesc(2, d);
    EXPECT_EQ(d.owner, place.schema());
    EXPECT_STREQ(d.table, "described");
    EXPECT_STREQ(d.column, "a b");
    EXPECT_STREQ(d.label, "label");
    EXPECT_EQ(d.length, 80);
    cursor.answerDesc(3, d);
    EXPECT_STREQ(d.table, "");
    EXPECT_STRNE(d.column, "");
}
