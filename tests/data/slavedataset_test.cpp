// A detail that follows the row of its master.
#include "data/slavedataset.h"

#include <oviapi/form.h>

#include "editing.h"

using namespace Editing;

namespace {

class Detail : public xCSlaveDataSet {
public:
    using xCSlaveDataSet::m_query;
};

class MasterAndDetail : public OnEngine {
protected:
    MasterAndDetail()
    {
        execute("CREATE TABLE m(id INTEGER PRIMARY KEY, code VARCHAR(9))");
        execute("CREATE TABLE s(id INTEGER PRIMARY KEY, m INTEGER, code VARCHAR(9), a VARCHAR(9))");
        execute("INSERT INTO m VALUES (1, 'x'), (2, 'y'), (3, NULL)");
        execute("INSERT INTO s VALUES (10, 1, 'x', 'a'), (11, 1, '', 'b'), (20, 2, 'y', 'c'), "
                "(30, 3, NULL, 'd'), (31, 3, '', 'e')");
        master.Open(connection.channel(), L"SELECT id, code FROM m ORDER BY id", 0, true);
        detail.SetMasterDataSet(&master);
    }
    void open(const wchar_t* sql = L"SELECT id, a FROM s WHERE m = ? ORDER BY id")
    {
        detail.Open(connection.channel(), sql, 0, true);
    }
    Texts ids()
    {
        Texts all;
        for (long row = 1; row <= detail.GetRowCount(); ++row) {
            const std::wstring id = detail.GetCellText(1, row);
            all.emplace_back(id.begin(), id.end());
        }
        return all;
    }
    void focus(long row) { detail.onGridRowGetFocus(nullptr, 1, row); }

    xCDorvexDataSet master;
    Detail detail;
};

class MasterView : public OviAPI::aCRecordView {};

} // namespace

ON_BOTH_ENGINES(MasterAndDetail);

TEST_P(MasterAndDetail, ShowsTheRowsOfTheFirstMasterRowAtFirst)
{
    detail.AddLink(1, 1);
    open();
    EXPECT_EQ(detail.GetColCount(), 2);
    EXPECT_EQ(ids(), (Texts{"10", "11"}));
    EXPECT_EQ(detail.GetMasterRow(), 1);
    EXPECT_TRUE(detail.WritesBack());
}

TEST_P(MasterAndDetail, FollowsTheFocusOfTheMastersView)
{
    OviAPI::WForm form;
    form.create();
    auto view = std::make_unique<MasterView>();
    view->setParent(&form);
    view->create();
    view->move(0, 0, 300, 200);
    form.show(true);
    view->SetDataSet(&master, true);
    detail.AddLink(1, 1);
    open();
    detail.SetRowCache(true);
    EXPECT_EQ(ids(), (Texts{"10", "11"}));
    view->SetFocusCell(1, 2);
    EXPECT_EQ(ids(), (Texts{"10", "11"})) << "before it was told to follow";
    detail.SetMasterGrid(view.get());
    view->SetFocusCell(1, 3);
    EXPECT_EQ(detail.GetMasterRow(), 3);
    EXPECT_EQ(ids(), (Texts{"30", "31"}));
    view->SetFocusCell(1, 2);
    EXPECT_EQ(ids(), Texts{"20"});
    detail.SetMasterGrid(nullptr);
    view->SetFocusCell(1, 1);
    EXPECT_EQ(ids(), Texts{"20"});
    detail.SetMasterGrid(view.get());
    view->SetDataSet(nullptr, false);
    view.reset();
    detail.SetMasterGrid(nullptr); // the view has gone
    focus(1);
    EXPECT_EQ(ids(), (Texts{"10", "11"}));
}

TEST_P(MasterAndDetail, AMasterWithoutRowsMakesTheQueryRunWithoutParameters)
{
    master.ReOpen(L"SELECT id, code FROM m WHERE id > 100");
    detail.AddLink(1, 1);
    open(L"SELECT id FROM s ORDER BY id");
    EXPECT_EQ(detail.GetRowCount(), 5);
    EXPECT_EQ(detail.GetLinkState(), 0);
}

TEST_P(MasterAndDetail, WithoutAMasterOrLinksTheQueryRunsWithoutParameters)
{
    open(L"SELECT id FROM s ORDER BY id");
    EXPECT_EQ(detail.GetRowCount(), 5);
    detail.AddLink(1, 1);
    detail.SetMasterDataSet(nullptr);
    focus(2);
    EXPECT_EQ(detail.GetRowCount(), 5);
    EXPECT_EQ(detail.GetLinkState(), 0);
}

TEST_P(MasterAndDetail, TwoLinksOnThreeParametersExecuteNothing)
{
    detail.AddLink(1, 1);
    open();
    focus(2);
    EXPECT_EQ(ids(), Texts{"20"});
    Detail other;
    other.SetMasterDataSet(&master);
    other.AddLink(1, 1);
    other.AddLink(2, 2);
    other.Open(connection.channel(), L"SELECT id FROM s WHERE m = ? OR m = ? OR m = ?", 0, false);
    EXPECT_EQ(other.GetLinkState(), 1);
    EXPECT_EQ(other.GetDBCursor(), nullptr);
    EXPECT_EQ(other.GetRowCount(), 0);
    detail.AddLink(2, 2);
    focus(1);
    EXPECT_EQ(detail.GetLinkState(), 1);
    EXPECT_EQ(ids(), Texts{"20"}) << "the rows stay";
}

TEST_P(MasterAndDetail, ANullOfTheMasterIsNullAndNotAnEmptyText)
{
    detail.AddLink(2, 1);
    open(isServer() ? L"SELECT id FROM s WHERE code IS NOT DISTINCT FROM $1 ORDER BY id"
                    : L"SELECT id FROM s WHERE code IS ? ORDER BY id");
    EXPECT_EQ(ids(), Texts{"10"});
    focus(3);
    EXPECT_EQ(ids(), Texts{"30"});
}

TEST_P(MasterAndDetail, AValueThatTheNewRowDoesNotHaveYetIsNull)
{
    detail.AddLink(1, 1);
    open();
    master.AddRow(nullptr, 0);
    focus(master.GetVirtualRow());
    EXPECT_EQ(detail.GetLinkState(), 0);
    EXPECT_EQ(detail.GetRowCount(), 0);
}

TEST_P(MasterAndDetail, LinksAreTakenByTheirParameterNumbers)
{
    detail.AddLink(2, 2);
    detail.AddLink(1, 1);
    open(L"SELECT id FROM s WHERE m = ? AND code = ?");
    EXPECT_EQ(ids(), Texts{"10"});
    focus(2);
    EXPECT_EQ(ids(), Texts{"20"});
}

TEST_P(MasterAndDetail, AnErrorOfTheDatabaseIsToldByTheLinkStateWhenTheFocusMoves)
{
    detail.AddLink(1, 1);
    open();
    change("ALTER TABLE s RENAME TO s2");
    EXPECT_EQ(detail.onGridRowGetFocus(nullptr, 1, 2).value, 0);
    EXPECT_EQ(detail.GetLinkState(), 2);
    EXPECT_EQ(detail.GetMasterRow(), 2);
    EXPECT_THROW(detail.updateCursor(), DorCPP::DorX);
    change("ALTER TABLE s2 RENAME TO s");
    focus(2);
    EXPECT_EQ(detail.GetLinkState(), 0);
    EXPECT_EQ(ids(), Texts{"20"});
}

TEST_P(MasterAndDetail, OpenThrowsWhatTheDatabaseRefuses)
{
    detail.AddLink(1, 1);
    EXPECT_THROW(open(L"SELECT * FROM nowhere WHERE a = ?"), DorCPP::DorX);
    EXPECT_THROW(detail.Open(123456, L"SELECT 1", 0, true), DorCPP::DorX);
}

// Kept: the text gets as many bytes as it has characters.
TEST_P(MasterAndDetail, KeptTheQueryIsCutToAsManyBytesAsItHasCharacters)
{
    detail.Open(connection.channel(), L"SELECT id FROM s ORDER BY id -- \u00E9\u00E9\u00E9\u00E9",
                0, true);
    EXPECT_EQ(detail.m_query, "SELECT id FROM s ORDER BY id -- \xC3\xA9\xC3\xA9");
    EXPECT_EQ(detail.GetRowCount(), 5);
}

// Kept: whatever mode was given; that is for the query without parameters.
TEST_P(MasterAndDetail, KeptACursorWithParametersHasAModeOfItsOwn)
{
    detail.AddLink(1, 1);
    detail.Open(connection.channel(), L"SELECT id FROM s WHERE m = ?", 2048, true);
    EXPECT_EQ(detail.GetDBCursor()->mode(), 1024);
    detail.SetMasterDataSet(nullptr);
    detail.Open(connection.channel(), L"SELECT id FROM s", 2048, true);
    EXPECT_EQ(detail.GetDBCursor()->mode(), 2048);
}

TEST_P(MasterAndDetail, RowsOfTheDetailAreEditedAsAnyOthers)
{
    detail.AddLink(1, 1);
    open(L"SELECT id, a, m FROM s WHERE m = ? ORDER BY id");
    focus(2);
    EXPECT_EQ(store(detail, 2, 1, L"new"), 0);
    auto row = detail.AllocRowData();
    detail.ColDataIntoRow(1, dataOf(detail, 1, L"21").get(), row.get());
    detail.ColDataIntoRow(3, dataOf(detail, 3, L"2").get(), row.get());
    EXPECT_EQ(detail.AddRow(row.get(), 0), 0);
    EXPECT_EQ(ids(), (Texts{"20", "21"})) << "executed again with the values of the same row";
    EXPECT_EQ(detail.DeleteRow(1), 0);
    EXPECT_EQ(ids(), Texts{"21"});
    EXPECT_EQ(stored("SELECT id FROM s WHERE m <> 2 ORDER BY id").size(), 4U);
}

TEST_P(MasterAndDetail, ReOpenSortsTheRowsOfTheSameMasterRow)
{
    detail.AddLink(1, 1);
    open();
    EXPECT_EQ(detail.ReOpen(L"SELECT id, a FROM s WHERE m = ? ORDER BY id DESC"), 0);
    EXPECT_EQ(ids(), (Texts{"11", "10"}));
    focus(3);
    EXPECT_EQ(ids(), (Texts{"31", "30"}));
    EXPECT_EQ(detail.ReOpen(L"SELECT id FROM s WHERE m = ? AND id > ?"), 1);
    EXPECT_EQ(ids(), (Texts{"31", "30"}));
}

TEST_P(MasterAndDetail, AMasterThatGoesLeavesTheDetailItsRows)
{
    auto other = std::make_unique<xCDorvexDataSet>();
    other->Open(connection.channel(), L"SELECT id FROM m ORDER BY id DESC", 0, true);
    detail.SetMasterDataSet(other.get());
    detail.AddLink(1, 1);
    open();
    EXPECT_EQ(ids(), (Texts{"30", "31"}));
    other.reset();
    EXPECT_EQ(ids(), (Texts{"30", "31"}));
    detail.SetMasterDataSet(&master);
    focus(1);
    EXPECT_EQ(ids(), (Texts{"10", "11"}));
}
