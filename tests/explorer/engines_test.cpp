// Values and foreign keys, the same on every engine.
#include <gtest/gtest.h>

#include <oviapi/text.h>

#include "../conformance/support.h"
#include "application.h"
#include "explorer/foreignkeys.h"
#include "explorer/textlookup.h"
#include "explorer/valuestore.h"
#include "memoryvalue.h"

using namespace Conformance;

namespace {

class ExplorerOn : public OnEngine {
protected:
    ~ExplorerOn() override { m_data.reset(); }

    void open(const std::string& sql)
    {
        m_data = std::make_unique<xCDorvexDataSet>();
        m_data->SetRowCache(true);
        m_data->Open(connection.channel(), OviAPI::utf8ToWide(sql).c_str(), 0, true);
    }
    std::unique_ptr<ValueStore> value(int column, long row = 1)
    {
        return valueOf(*m_data, connection, column, row);
    }
    void makeValues()
    {
        execute("CREATE TABLE t (id integer PRIMARY KEY, b " + bytesType() +
                ", a text, n numeric(12,2), d timestamp)");
        execute("INSERT INTO t VALUES (1, " + bytes("0102ff") +
                ", 'one', 12.25, '2001-02-03 04:05:06')");
        execute("INSERT INTO t (id) VALUES (2)");
        open("SELECT * FROM t");
    }
    static std::string all(ValueStore& value)
    {
        std::string bytes;
        std::string piece(ValueStore::PieceSize, '\0');
        while (const size_t read =
                   value.read(static_cast<int64_t>(bytes.size()), piece.data(), piece.size()))
            bytes.append(piece, 0, read);
        return bytes;
    }
    DatabaseTable table(const wchar_t* name) const
    {
        return {name, false, OviAPI::utf8ToWide(place.schema())};
    }

    enum Column : int { Id = 1, Bytes, Text, Number, Date };
    std::unique_ptr<xCDorvexDataSet> m_data;
};

} // namespace

ON_BOTH_ENGINES(ExplorerOn);

TEST_P(ExplorerOn, ValuesAreReadAsTheyAre)
{
    makeValues();
    EXPECT_EQ(all(*value(Bytes)), "\x01\x02\xFF");
    EXPECT_FALSE(value(Bytes)->isText());
    EXPECT_EQ(all(*value(Text)), "one");
    EXPECT_TRUE(value(Text)->isText());
    EXPECT_EQ(all(*value(Number)), "12.25");
    EXPECT_EQ(all(*value(Date)), OviAPI::wideToUtf8(m_data->GetCellText(Date, 1)));
    for (const int column : {Bytes, Text, Number, Date}) {
        EXPECT_TRUE(value(column, 2)->isNull()) << column;
        EXPECT_FALSE(value(column, 1)->isNull()) << column;
    }
}

TEST_P(ExplorerOn, LongValuesAreReplacedAndReadInPieces)
{
    makeValues();
    const std::string bytes = noise(9 * ValueStore::PieceSize + 3);
    const auto store = value(Bytes);
    store->write(bytes);
    EXPECT_EQ(store->size(), static_cast<int64_t>(bytes.size()));
    EXPECT_EQ(all(*store), bytes);
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += "\xD0\x96z";
    value(Text)->write(text);
    EXPECT_EQ(all(*value(Text)), text);
    EXPECT_EQ(own.value("SELECT count(*) FROM t WHERE id = 1 AND length(a) = 400000"), "1");
    value(Bytes)->setNull();
    EXPECT_TRUE(value(Bytes)->isNull());
    value(Bytes)->write("");
    EXPECT_FALSE(value(Bytes)->isNull());
    EXPECT_EQ(value(Bytes)->size(), 0);
    EXPECT_TRUE(value(Bytes, 2)->isNull()) << "the other row";
}

TEST_P(ExplorerOn, AChangeOfAnotherSessionIsNeverOverwritten)
{
    makeValues();
    const auto store = value(Text);
    Client other(place);
    other.execute("UPDATE t SET n = 1 WHERE id = 1");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(codeOf([&] { store->write("mine"); }), CodeRowChanged);
        EXPECT_EQ(codeOf([&] { store->setNull(); }), CodeRowChanged);
    }
    EXPECT_EQ(own.value("SELECT a FROM t WHERE id = 1"), "one");
    m_data->ClearRowCache();
    other.execute("DELETE FROM t WHERE id = 1");
    EXPECT_NE(codeOf([&] { store->write("mine"); }), 0);
    EXPECT_EQ(own.value("SELECT count(*) FROM t WHERE a = 'mine'"), "0");
}

TEST_P(ExplorerOn, AValueTheEngineRefusesLeavesTheOldOne)
{
    execute("CREATE TABLE t (id integer PRIMARY KEY, a varchar(200) CHECK (length(a) < 5))");
    execute("INSERT INTO t VALUES (1, 'one')");
    open("SELECT * FROM t");
    const auto store = value(2);
    EXPECT_NE(codeOf([&] { store->write("too long for it"); }), 0);
    EXPECT_EQ(all(*store), "one");
    store->write("two");
    EXPECT_EQ(own.value("SELECT a FROM t"), "two");
}

TEST_P(ExplorerOn, ForeignKeysLeadFromMasterToDetail)
{
    execute("CREATE TABLE \"the master\" (a integer, b varchar(9), PRIMARY KEY (a, b))");
    execute("CREATE TABLE detail (id integer PRIMARY KEY, x integer, y varchar(9),"
            " FOREIGN KEY (x, y) REFERENCES \"the master\")");
    execute("INSERT INTO \"the master\" VALUES (1, 'p'), (2, 'p')");
    execute("INSERT INTO detail VALUES (1, 1, 'p'), (2, 2, 'p'), (3, 1, 'p')");
    ForeignKeys keys;
    keys.start(connection);
    ASSERT_TRUE(waitFor([&] { return !keys.isRunning(); }));
    EXPECT_EQ(keys.error().code(), 0);
    const auto details = keys.detailsOf(table(L"the master"));
    ASSERT_EQ(details.size(), 1U);
    EXPECT_EQ(details[0].caption, L"detail (x, y)");
    ASSERT_TRUE(keys.masterOf(table(L"detail"), L"y"));
    EXPECT_EQ(keys.masterOf(table(L"detail"), L"y")->master, table(L"the master"));
    DorStatement statement;
    statement.create(connection, OviAPI::wideToUtf8(detailQueryText(details[0].key)).c_str(),
                     false);
    BindMap binds;
    const int32_t a = 1;
    binds.bind(1, {TypeInteger, &a, sizeof a});
    binds.bind(2, {TypeVarchar, "p", 1});
    cursor.execute(statement, &binds);
    EXPECT_EQ(cursor.selectRowCount(), 2);
    EXPECT_TRUE(cursor.isKeyed());
}
