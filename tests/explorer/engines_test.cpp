// Values and foreign keys, the same on every engine.
#include <algorithm>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>

#include "../conformance/support.h"
#include "application.h"
#include "explorer/foreignkeys.h"
#include "explorer/mainform.h"
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

// The main window with three tables that refer to one another.
class WindowOn : public ExplorerOn {
protected:
    WindowOn()
        : m_options(TestApplication::get().record)
    {
        execute("CREATE TABLE section (id integer PRIMARY KEY, name varchar(20) NOT NULL)");
        execute("CREATE TABLE package (id integer PRIMARY KEY, name varchar(20) UNIQUE,"
                " section_id integer REFERENCES section (id), size integer DEFAULT 7)");
        execute("CREATE TABLE file (id integer PRIMARY KEY,"
                " package_id integer REFERENCES package (id), path varchar(40))");
        execute("INSERT INTO section VALUES (1, 'admin'), (2, 'games')");
        execute("INSERT INTO package VALUES (10, 'cron', 1, 1), (11, 'chess', 2, 2),"
                " (12, 'go', 2, 3)");
        execute("INSERT INTO file VALUES (100, 10, '/etc/crontab'), (101, 12, '/usr/go')");
        m_options.initDefaults();
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->create();
        m_form->show(true);
        std::string name = place.database();
        if (isServer())
            name += " user=" + server().at("user") + " password=" + server().at("password");
        EXPECT_TRUE(m_form->openDatabase(name));
        EXPECT_TRUE(ready());
    }
    ~WindowOn() override
    {
        m_form.reset();
        BackgroundTask::waitForAbandoned();
    }

    bool ready()
    {
        return waitFor([this] { return !m_form->isBusy(); });
    }
    void openWithDetails(const wchar_t* name)
    {
        const auto& tables = m_form->session()->tables();
        const auto at = std::find_if(tables.begin(), tables.end(), [&](const DatabaseTable& t) {
            return t.name == name && (t.schema.empty() || t == table(name));
        });
        ASSERT_NE(at, tables.end());
        m_form->list().SetFocusCell(1, static_cast<long>(at - tables.begin()) + 1);
        ASSERT_TRUE(ready());
        m_form->execute(Command::AddDetails);
        ASSERT_TRUE(ready());
    }
    OviAPI::aCRecordView& master() { return m_form->pane().view(); }
    OviAPI::aCRecordView& detail(size_t level = 1)
    {
        return m_form->area().detail(level).rows().view();
    }
    std::vector<std::wstring> shown(OviAPI::aCRecordView& view, int column)
    {
        std::vector<std::wstring> texts;
        for (long row = 1; row <= view.GetRowCount(); ++row)
            texts.push_back(view.GetCellText(column, row));
        return texts;
    }

    using Shown = std::vector<std::wstring>;
    ExplorerOptions& m_options;
    std::unique_ptr<MainForm> m_form;
};

} // namespace

ON_BOTH_ENGINES(ExplorerOn);
ON_BOTH_ENGINES(WindowOn);

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

TEST_P(WindowOn, DetailsFollowTheMasterOverThreeLevels)
{
    openWithDetails(L"section");
    m_form->execute(Command::AddDetails);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(detail(), 2), Shown{L"cron"});
    EXPECT_EQ(shown(detail(2), 3), Shown{L"/etc/crontab"});
    master().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(detail(), 2), (Shown{L"chess", L"go"}));
    EXPECT_EQ(shown(detail(2), 3), Shown());
    detail().SetRow(2);
    ASSERT_TRUE(ready());
    EXPECT_EQ(shown(detail(2), 3), Shown{L"/usr/go"});
}

TEST_P(WindowOn, ANewDetailBelongsToTheMastersRowAndShowsItsDefaults)
{
    using OviAPI::InputDriver;
    using OviAPI::VirtualKey;
    openWithDetails(L"section");
    master().SetRow(2);
    ASSERT_TRUE(ready());
    detail().setFocus();
    InputDriver::key(VirtualKey(OviAPI::KeyInsert));
    settle();
    ASSERT_TRUE(detail().SetFocusCell(1, 3));
    InputDriver::type(L"13");
    InputDriver::key(VirtualKey(OviAPI::KeyTab));
    InputDriver::type(L"tetris");
    InputDriver::key(VirtualKey(OviAPI::KeyUp));
    ASSERT_TRUE(waitFor([&] { return own.value("SELECT count(*) FROM package") == "4"; }));
    EXPECT_EQ(own.value("SELECT section_id FROM package WHERE name = 'tetris'"), "2");
    EXPECT_EQ(detail().GetCellText(4, 3), L"7");
}

TEST_P(WindowOn, WhatAnotherSessionChangedInADetailIsNotLaidOver)
{
    using OviAPI::InputDriver;
    openWithDetails(L"section");
    Client(place).execute("UPDATE package SET size = 99 WHERE id = 10");
    detail().setFocus();
    ASSERT_TRUE(detail().SetFocusCell(4, 1));
    InputDriver::type(L"5");
    InputDriver::key(OviAPI::VirtualKey(OviAPI::KeyEnter));
    settle();
    EXPECT_EQ(own.value("SELECT size FROM package WHERE id = 10"), "99");
    EXPECT_TRUE(detail().IsEditing()) << "what was typed stays";
    detail().GiveUpEdit();
}
