// Values of tables, read and replaced in pieces.
#include <fstream>
#include <iterator>
#include <map>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <oviapi/text.h>

#include "application.h"
#include "database.h"
#include "explorer/databasesession.h"
#include "explorer/hexview.h"
#include "explorer/sqltext.h"
#include "explorer/textlookup.h"
#include "explorer/valuereader.h"
#include "explorer/valuestore.h"
#include "explorer/valuework.h"
#include "memoryvalue.h"
#include "support.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

std::string contentOf(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void makeFile(const fs::path& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

void finish(ValueWork& work)
{
    ASSERT_TRUE(waitFor([&] { return work.step() == ValueWork::State::Done; }));
}

class Work : public testing::Test {
protected:
    fs::path file(const char* name) const { return m_folder.path() / name; }
    long entries() const
    {
        return std::distance(fs::directory_iterator(m_folder.path()), fs::directory_iterator());
    }

    TemporaryFolder m_folder;
    MemoryValue m_value;
};

constexpr size_t piece = ValueStore::PieceSize;

TEST(ValueReader, GivesAnyPlaceOfAValueAndKeepsAFewPages)
{
    MemoryValue value;
    value.bytes = noise(10 * piece + 5);
    ValueReader reader(value);
    EXPECT_EQ(reader.bytes(0, 16), value.bytes.substr(0, 16));
    EXPECT_EQ(reader.bytes(16, 16), value.bytes.substr(16, 16));
    EXPECT_EQ(value.reads, 1);
    EXPECT_EQ(reader.bytes(piece - 3, 8), value.bytes.substr(piece - 3, 8));
    EXPECT_EQ(reader.bytes(10 * piece, 100), value.bytes.substr(10 * piece));
    EXPECT_EQ(reader.bytes(10 * piece + 5, 1), "");
    EXPECT_EQ(reader.bytes(-1, 1), "");
    EXPECT_EQ(reader.bytes(0, 3 * piece), value.bytes.substr(0, 3 * piece));
    EXPECT_LE(value.longestRead, piece);
    value.bytes = "new";
    reader.reset();
    EXPECT_EQ(reader.size(), 3);
    EXPECT_EQ(reader.bytes(0, 16), "new");
}

TEST(ValueReader, AValueThatBecameShorterEndsThere)
{
    MemoryValue value;
    value.bytes = noise(2 * piece);
    ValueReader reader(value);
    value.bytes.resize(piece + 4);
    EXPECT_EQ(reader.bytes(piece, 16).size(), 4U);
    EXPECT_EQ(reader.bytes(piece + 100, 16), "");
}

TEST_F(Work, AValueIsSavedInPieces)
{
    for (const size_t size : {size_t{0}, size_t{1}, piece, 3 * piece + 7}) {
        m_value.bytes = noise(size);
        ValueSaver saver(m_value, file("a").wstring());
        finish(saver);
        EXPECT_EQ(contentOf(file("a")), m_value.bytes) << size;
        EXPECT_EQ(saver.percent(), 100);
        EXPECT_EQ(entries(), 1);
    }
    EXPECT_LE(m_value.longestRead, piece);
}

TEST_F(Work, ASaveThatIsStoppedLeavesTheOldFile)
{
    makeFile(file("a"), "old");
    m_value.bytes = noise(4 * piece);
    {
        ValueSaver saver(m_value, file("a").wstring());
        EXPECT_EQ(saver.step(), ValueWork::State::Going);
        EXPECT_EQ(saver.step(), ValueWork::State::Going);
        EXPECT_EQ(saver.percent(), 50);
    }
    EXPECT_EQ(contentOf(file("a")), "old");
    EXPECT_EQ(entries(), 1);
}

TEST_F(Work, ASaveThatCannotReadOnLeavesNoFile)
{
    m_value.bytes = noise(4 * piece);
    m_value.failingRead = 3;
    {
        ValueSaver saver(m_value, file("a").wstring());
        saver.step();
        saver.step();
        EXPECT_THROW(saver.step(), DorCPP::DorX);
    }
    EXPECT_EQ(entries(), 0);
}

TEST_F(Work, ASaveIntoNoFolderSaysSo)
{
    EXPECT_THROW(ValueSaver(m_value, file("none/a").wstring()), std::system_error);
}

TEST_F(Work, AFileIsLoadedWhole)
{
    for (const size_t size : {size_t{0}, size_t{1}, piece, 3 * piece + 7}) {
        const std::string bytes = noise(size);
        makeFile(file("a"), bytes);
        ValueLoader loader(m_value, file("a").wstring());
        finish(loader);
        EXPECT_EQ(m_value.bytes, bytes) << size;
    }
    EXPECT_EQ(m_value.writes, 4);
}

TEST_F(Work, ALoadThatIsStoppedChangesNothing)
{
    m_value.bytes = "old";
    makeFile(file("a"), noise(4 * piece));
    {
        ValueLoader loader(m_value, file("a").wstring());
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(loader.step(), ValueWork::State::Going);
        EXPECT_EQ(loader.text(), TextValueStoring) << "the next step stores it";
    }
    EXPECT_EQ(m_value.bytes, "old");
    EXPECT_EQ(m_value.writes, 0);
}

TEST_F(Work, AFileThatChangesMeanwhileIsNotLoaded)
{
    m_value.bytes = "old";
    for (const std::string& other : {noise(piece).replace(5, 1, "x"), "short"s, noise(2 * piece)}) {
        makeFile(file("a"), noise(piece));
        ValueLoader loader(m_value, file("a").wstring());
        loader.step();
        loader.step();
        ASSERT_EQ(loader.text(), TextValueStoring);
        makeFile(file("a"), other);
        try {
            loader.step();
            ADD_FAILURE() << "it was stored";
        } catch (const ValueFault& fault) {
            EXPECT_EQ(fault.reason(), TextValueFileChanged);
        }
    }
    EXPECT_EQ(m_value.bytes, "old");
}

TEST_F(Work, ATextColumnTakesTextsInUtf8Only)
{
    m_value.text = true;
    m_value.bytes = "old";
    const std::string longText = std::string(piece - 1, 'a') + "\xD0\xB0";
    makeFile(file("good"), longText); // a letter lies across two pieces
    ValueLoader good(m_value, file("good").wstring());
    finish(good);
    EXPECT_EQ(m_value.bytes, longText);
    for (const std::string& bytes : {"a\xFF"s, "a\0b"s, "a\xD0"s}) {
        makeFile(file("bad"), bytes);
        ValueLoader loader(m_value, file("bad").wstring());
        EXPECT_THROW(loader.step(), ValueFault);
    }
    EXPECT_EQ(m_value.bytes, longText);
}

TEST_F(Work, WhatIsNoFileIsRefusedAtOnce)
{
    EXPECT_THROW(ValueLoader(m_value, m_folder.path().wstring()), ValueFault);
    EXPECT_THROW(ValueLoader(m_value, file("none").wstring()), std::system_error);
    ASSERT_EQ(::mkfifo(file("pipe").c_str(), 0600), 0);
    EXPECT_THROW(ValueLoader(m_value, file("pipe").wstring()), ValueFault);
}

TEST_F(Work, BytesAreFoundAcrossPieces)
{
    m_value.bytes = std::string(3 * piece, '.');
    m_value.bytes.replace(piece - 2, 4, "find");
    m_value.bytes.replace(3 * piece - 4, 4, "find");
    ValueReader reader(m_value);
    const auto found = [&](const char* what, int64_t from) {
        ValueFinder finder(reader, what, from);
        while (finder.step() == ValueWork::State::Going) {
        }
        return finder.found();
    };
    EXPECT_EQ(found("find", 0), static_cast<int64_t>(piece) - 2);
    EXPECT_EQ(found("find", piece - 1), static_cast<int64_t>(3 * piece) - 4);
    EXPECT_EQ(found("find", 3 * piece - 3), -1);
    EXPECT_EQ(found("finds", 0), -1);
    EXPECT_EQ(found("x", 5 * piece), -1);
}

TEST(HexRows, AreReadWhereTheyAreAskedFor)
{
    MemoryValue value;
    value.bytes = noise(16 * 1000 + 3);
    value.bytes.replace(0, 5, "A~\x7F\0z"s);
    ValueReader reader(value);
    HexData data;
    EXPECT_EQ(data.GetRowCount(), 0);
    data.setReader(&reader);
    EXPECT_EQ(data.GetRowCount(), 1001);
    EXPECT_EQ(data.GetCellText(1, 1), L"41");
    EXPECT_EQ(data.GetCellText(3, 1), L"7F");
    EXPECT_EQ(data.GetCellText(HexData::Characters, 1).substr(0, 5), L"A~..z");
    EXPECT_EQ(data.GetCellText(3, 1001).size(), 2U);
    EXPECT_EQ(data.GetCellText(4, 1001), L"") << "behind the end";
    EXPECT_EQ(data.GetCellText(HexData::Characters, 1001).size(), 3U);
    EXPECT_FALSE(data.IsUpdatable(1));
}

TEST(HexRows, ARowThatCannotBeReadKeepsItsError)
{
    MemoryValue value;
    value.bytes = noise(64);
    ValueReader reader(value);
    HexData data;
    data.setReader(&reader);
    value.failingRead = 1;
    EXPECT_EQ(data.SetRow(2), 1);
    ASSERT_TRUE(data.getRowError(2));
    EXPECT_EQ(data.getRowError(2)->code, DorCPP::CodeRowGone);
    EXPECT_EQ(data.SetRow(2), 0) << "the next reading succeeds";
}

TEST(SetNullText, NamesColumnAndTable)
{
    EXPECT_EQ(setNullText(L"\"s\".\"t\"", L"a\"b"),
              L"UPDATE \"s\".\"t\" SET \"a\"\"b\" = NULL WHERE CURRENT OF CURSOR");
}

// A table as the table pane shows it.
class Values : public testing::Test {
protected:
    Values()
    {
        TestDatabase made(path());
        made.execute("CREATE TABLE t (id INTEGER PRIMARY KEY, b BLOB, a TEXT, n INTEGER, d DATE)");
        made.execute("INSERT INTO t VALUES (1, x'0102', 'one', 12, '2001-02-03'),"
                     " (2, NULL, NULL, NULL, NULL), (3, x'', '', 'odd', 'never')");
        made.execute("CREATE VIEW v AS SELECT a FROM t");
        open("SELECT *, a || 'x' AS made FROM t");
    }
    ~Values() override { m_data.reset(); }

    fs::path path() const { return m_folder.path() / "a.db"; }
    void open(const char* sql, const std::string& mode = "")
    {
        m_data.reset();
        m_session = std::make_unique<DatabaseSession>("sqlite:" + path().string() + mode);
        m_data = std::make_unique<xCDorvexDataSet>();
        m_data->SetRowCache(true);
        m_data->Open(m_session->connection().channel(), OviAPI::utf8ToWide(sql).c_str(), 0, true);
    }
    std::unique_ptr<ValueStore> value(int column, long row)
    {
        return valueOf(*m_data, m_session->connection(), column, row);
    }
    std::string stored(const std::string& what)
    {
        return TestDatabase(path()).value("SELECT " + what + " FROM t WHERE id = 1");
    }
    static std::string all(ValueStore& value)
    {
        std::string bytes(static_cast<size_t>(value.size()), '\0');
        bytes.resize(value.read(0, bytes.data(), bytes.size()));
        return bytes;
    }
    template<class F>
    static int codeOf(F&& call)
    {
        try {
            call();
        } catch (const DorCPP::DorX& x) {
            return x.code();
        }
        return 0;
    }

    enum Column : int { Id = 1, Bytes, Text, Number, Date, Made };
    TemporaryFolder m_folder;
    std::unique_ptr<DatabaseSession> m_session;
    std::unique_ptr<xCDorvexDataSet> m_data;
};

TEST_F(Values, SayWhatTheyAre)
{
    EXPECT_EQ(all(*value(Bytes, 1)), "\x01\x02");
    EXPECT_FALSE(value(Bytes, 1)->isText());
    EXPECT_EQ(value(Bytes, 1)->typeName(), L"BLOB");
    EXPECT_EQ(all(*value(Text, 1)), "one");
    EXPECT_TRUE(value(Text, 1)->isText());
    EXPECT_EQ(value(Text, 1)->typeName(), L"VARCHAR");
    EXPECT_TRUE(value(Bytes, 2)->isNull());
    EXPECT_TRUE(value(Text, 2)->isNull());
    EXPECT_FALSE(value(Bytes, 3)->isNull());
    EXPECT_EQ(value(Bytes, 3)->size(), 0);
}

TEST_F(Values, OfOtherTypesAreWhatTheCellShows)
{
    EXPECT_EQ(all(*value(Number, 1)), "12");
    EXPECT_EQ(all(*value(Date, 1)), OviAPI::wideToUtf8(m_data->GetCellText(Date, 1)));
    EXPECT_TRUE(value(Number, 2)->isNull());
    EXPECT_EQ(all(*value(Number, 3)), "odd") << "what is stored, whatever the type";
    EXPECT_EQ(all(*value(Date, 3)), "never");
    for (const long row : {1L, 3L})
        EXPECT_EQ(value(Number, row)->readOnlyReason(), textOf(TextValueOtherType));
    EXPECT_EQ(codeOf([&] { value(Number, 1)->write("1"); }), DorCPP::CodeNotUpdatable);
    EXPECT_EQ(codeOf([&] { value(Number, 1)->setNull(); }), DorCPP::CodeNotUpdatable);
}

TEST_F(Values, TellWhyTheyCannotBeStored)
{
    EXPECT_EQ(value(Text, 1)->readOnlyReason(), L"");
    EXPECT_EQ(value(Made, 1)->readOnlyReason(), textOf(TextValueComputed));
    open("SELECT a FROM v");
    EXPECT_EQ(value(1, 1)->readOnlyReason(), textOf(TextValueNoKey));
    open("SELECT * FROM t", "?mode=ro");
    EXPECT_EQ(value(Text, 1)->readOnlyReason(), textOf(TextValueDatabaseReadOnly));
}

TEST_F(Values, AreReplacedAndShownAnew)
{
    EXPECT_EQ(m_data->GetCellText(Text, 1), L"one");
    const auto text = value(Text, 1);
    text->write("two");
    EXPECT_EQ(stored("a"), "two");
    EXPECT_EQ(m_data->GetCellText(Text, 1), L"two");
    EXPECT_EQ(all(*text), "two");
    text->write("three"); // its own change is no change by others
    EXPECT_EQ(stored("a || typeof(a)"), "threetext");
    const std::string bytes = noise(3 * piece + 1);
    value(Bytes, 1)->write(bytes);
    EXPECT_EQ(stored("typeof(b)"), "blob");
    EXPECT_EQ(all(*value(Bytes, 1)), bytes);
    value(Bytes, 1)->write("");
    EXPECT_EQ(stored("hex(b) || typeof(b)"), "blob") << "empty, not NULL";
}

TEST_F(Values, AreTakenAway)
{
    EXPECT_EQ(m_data->GetCellText(Text, 1), L"one");
    const auto text = value(Text, 1);
    text->setNull();
    EXPECT_TRUE(text->isNull());
    EXPECT_EQ(stored("a IS NULL"), "1");
    EXPECT_TRUE(m_data->SetRow(1) == 0 && m_data->IsNull(Text));
    text->write("");
    EXPECT_EQ(stored("typeof(a)"), "text");
}

TEST_F(Values, KeepWhatTheyWereWhenAPieceIsMissing)
{
    const auto bytes = value(Bytes, 1);
    int given = 0;
    EXPECT_THROW(bytes->write([&]() -> std::string_view {
        if (++given == 2)
            throw ValueFault(TextValueFileChanged);
        return "piece";
    }),
                 ValueFault);
    m_data->SetRow(2);
    EXPECT_EQ(stored("hex(b)"), "0102");
    EXPECT_EQ(all(*bytes), "\x01\x02");
}

TEST_F(Values, AreReadWhileAViewMovesAbout)
{
    const auto bytes = value(Bytes, 1);
    char one = 0;
    for (const long row : {2L, 3L, 1L, 3L}) {
        m_data->SetRow(row);
        EXPECT_EQ(bytes->read(1, &one, 1), 1U);
        EXPECT_EQ(one, 2);
        m_data->SetRow(row);
        EXPECT_EQ(m_data->IsNull(Bytes), row == 2) << "the dataset speaks of its own row";
    }
}

TEST_F(Values, ChangesOfOthersAreNeverOverwritten)
{
    const auto text = value(Text, 1);
    TestDatabase other(path());
    other.execute("UPDATE t SET n = 99 WHERE id = 1"); // another column of the same row
    for (int i = 0; i < 3; ++i) {                      // however often it is tried
        EXPECT_EQ(codeOf([&] { text->write("mine"); }), DorCPP::CodeRowChanged);
        EXPECT_EQ(codeOf([&] { text->setNull(); }), DorCPP::CodeRowChanged);
    }
    EXPECT_EQ(stored("a || n"), "one99");
    value(Text, 1)->write("mine"); // seen as it is now
    EXPECT_EQ(stored("a || n"), "mine99");
}

TEST_F(Values, OfARowThatHasGoneSaySo)
{
    const auto text = value(Text, 1);
    TestDatabase(path()).execute("DELETE FROM t WHERE id = 1");
    EXPECT_EQ(codeOf([&] { text->write("mine"); }), DorCPP::CodeRowGone);
    EXPECT_EQ(TestDatabase(path()).value("SELECT count(*) FROM t"), "2");
    EXPECT_NE(codeOf([&] { value(Text, 1); }), 0);
}

TEST_F(Values, EndWithTheirDataset)
{
    const auto text = value(Text, 1);
    m_data.reset();
    EXPECT_EQ(codeOf([&] { text->size(); }), DorCPP::CodeSessionLost);
    EXPECT_EQ(codeOf([&] { text->write("x"); }), DorCPP::CodeSessionLost);
    EXPECT_EQ(stored("a"), "one");
}

} // namespace
