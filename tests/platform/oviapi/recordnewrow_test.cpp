// The new row of a record view.
#include "recordedit_support.h"

using namespace OviAPI;

namespace {

using NewRow = RecordEditTest;
using Cell = std::pair<int, long>;

} // namespace

TEST_F(NewRow, InsertAndDownOnTheLastRowBeginIt)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    key(KeyInsert);
    EXPECT_TRUE(table.HasVirtualRow());
    EXPECT_EQ(focus(), Cell(Table::Name, 6));
    key(KeyUp);
    EXPECT_FALSE(table.HasVirtualRow()) << "nothing had been entered";
    EXPECT_EQ(focus(), Cell(Table::Name, 5));
    key(KeyDown);
    EXPECT_TRUE(table.HasVirtualRow());
    EXPECT_EQ(focus(), Cell(Table::Name, 6));
    key(KeyDown);
    EXPECT_EQ(view.GetRowCount(), 6) << "one is enough";
    EXPECT_EQ(table.statements, 0);
}

TEST_F(NewRow, AKeyThatIsHeldStopsAtTheLastRow)
{
    edit(table);
    view.SetFocusCell(Table::Name, 5);
    view.onKeyDown(VirtualKey(KeyDown, 0, 0, true));
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_EQ(view.GetRow(), 5);
}

TEST_F(NewRow, ItBeginsInAnEmptyTable)
{
    Table empty(0);
    edit(empty);
    EXPECT_EQ(view.GetRow(), 0);
    key(KeyInsert);
    EXPECT_EQ(focus(), Cell(1, 1));
    type(L"7");
    key(KeyEnter);
    EXPECT_TRUE(view.FinishEdit());
    ASSERT_EQ(empty.rows.size(), 1U);
    EXPECT_EQ(empty.cell(1, 1), L"7");
    view.SetDataSet(nullptr, false);
}

TEST_F(NewRow, ItIsPostedWhenTheFocusLeavesIt)
{
    edit(table);
    EditEvents events(view);
    EXPECT_TRUE(view.AppendRow());
    view.SetFocusCell(Table::Number, 6);
    type(L"6");
    key(KeyTab);
    EXPECT_EQ(focus(), Cell(Table::Name, 6));
    type(L"six");
    key(KeyTab);
    EXPECT_EQ(table.statements, 0) << "the row is not left yet";
    EXPECT_TRUE(view.HasPendingEdit());
    click(Table::Name, 2);
    ASSERT_EQ(table.rows.size(), 6U);
    EXPECT_EQ(table.cell(Table::Name, 6), L"six");
    EXPECT_EQ(table.defaults, 4) << "untouched cells are left to the server";
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_FALSE(view.HasPendingEdit());
    EXPECT_EQ(focus(), Cell(Table::Name, 2));
    EXPECT_EQ(events.stored, (EditEvents::Cells{{Table::Number, 6}, {Table::Name, 6}, {0, 6}}));
}

TEST_F(NewRow, NullAndDefaultAreSetByKeys)
{
    edit(table);
    view.AppendRow();
    view.SetFocusCell(Table::Number, 6);
    type(L"6");
    key(Key0, ModifierControl | ModifierShift);
    EXPECT_EQ(view.GetCellWord(Table::Number, 6), L"DEFAULT");
    view.SetFocusCell(Table::Name, 6);
    key(Key0, ModifierControl);
    EXPECT_EQ(view.GetCellWord(Table::Name, 6), L"NULL");
    EXPECT_TRUE(view.HasPendingEdit());
    EXPECT_TRUE(view.FinishEdit());
    EXPECT_EQ(table.defaults, 5);
}

TEST_F(NewRow, ARefusedRowStaysWithItsErrorUntilItIsPosted)
{
    edit(table);
    EditEvents events(view);
    view.AppendRow();
    view.SetFocusCell(Table::Name, 6);
    type(L"six");
    key(KeyEnter);
    table.refusal = L"Number must have a value.";
    key(KeyUp);
    EXPECT_EQ(focus(), Cell(Table::Name, 6));
    EXPECT_TRUE(table.HasVirtualRow());
    EXPECT_EQ(view.GetCellText(Table::Name, 6), L"six");
    EXPECT_EQ(sentence(), L"Number must have a value.");
    EXPECT_EQ(events.refused, (EditEvents::Cells{{0, 6}}));
    const Rect place = view.GetRowHeaderRect(6);
    const int middle = (place.top + place.bottom) / 2;
    EXPECT_EQ(view.hintAt(5, middle), L"Number must have a value.");
    EXPECT_EQ(at(shot(), 4, middle) & 0xFFFFFF, 0xD02020U);
    click(Table::Name, 2);
    EXPECT_EQ(view.GetRow(), 6);
    EXPECT_FALSE(view.FinishEdit());
    table.refusal.clear();
    view.SetFocusCell(Table::Number, 6);
    type(L"6");
    key(KeyUp);
    EXPECT_EQ(focus(), Cell(Table::Number, 5));
    EXPECT_EQ(table.rows.size(), 6U);
    EXPECT_EQ(sentence(), L"");
    EXPECT_EQ(table.getRowError(0), nullptr);
}

TEST_F(NewRow, AHeaderPressPostsItFirst)
{
    edit(table);
    view.AppendRow();
    view.SetFocusCell(Table::Name, 6);
    type(L"six");
    size_t seen = 0;
    connect<&aCRecordView::onHeaderLButtonDown>(view, form, [&](Object*, int) {
        seen = table.rows.size();
        return SlotResult(1);
    });
    UiDriver::click(view, rowHeader + 40, 10);
    EXPECT_EQ(seen, 6U);
}

TEST_F(NewRow, TheSecondEscapeTakesItAway)
{
    edit(table);
    view.AppendRow();
    view.SetFocusCell(Table::Name, 6);
    type(L"six");
    key(KeyTab);
    type(L"x");
    key(KeyEscape);
    EXPECT_TRUE(table.HasVirtualRow());
    EXPECT_EQ(view.GetCellText(Table::Name, 6), L"six");
    key(KeyEscape);
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_EQ(view.GetRow(), 5);
    EXPECT_EQ(table.statements, 0);
}

TEST_F(NewRow, GivingUpAndDeletingTakeItAway)
{
    edit(table);
    view.AppendRow();
    type(L"x");
    view.GiveUpEdit();
    EXPECT_FALSE(view.IsEditing());
    EXPECT_FALSE(table.HasVirtualRow());
    view.AppendRow();
    EXPECT_TRUE(view.DeleteFocusedRow());
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_EQ(table.rows.size(), 5U);
    EXPECT_EQ(table.statements, 0);
}

TEST_F(NewRow, DownOnItPostsItAndBeginsTheNext)
{
    edit(table);
    view.AppendRow();
    view.SetFocusCell(Table::Name, 6);
    type(L"six");
    key(KeyDown);
    EXPECT_EQ(table.rows.size(), 6U);
    EXPECT_EQ(focus(), Cell(Table::Name, 7));
    EXPECT_TRUE(table.HasVirtualRow());
}

TEST_F(NewRow, EnterOnItKeepsItOpenForMore)
{
    edit(table);
    view.AppendRow();
    view.SetFocusCell(Table::Name, 6);
    type(L"six");
    key(KeyEnter);
    EXPECT_EQ(focus(), Cell(Table::Name, 6));
    EXPECT_TRUE(table.HasVirtualRow());
    EXPECT_EQ(table.statements, 0);
}

TEST_F(NewRow, ItKeepsItsEditorWhenRowsComeBeforeIt)
{
    edit(table);
    view.AppendRow();
    view.SetFocusCell(Table::Name, 6);
    type(L"six");
    table.rows.push_back(table.rows.front());
    table.RefreshViews();
    EXPECT_EQ(view.GetRow(), 7);
    EXPECT_EQ(typed(), L"six");
    key(KeyEnter);
    EXPECT_EQ(view.GetCellText(Table::Name, 7), L"six");
    EXPECT_EQ(table.cell(Table::Name, 6), L"name 1");
}

TEST_F(NewRow, ATableOfReadOnlyColumnsHasNone)
{
    for (int i = 1; i <= table.GetColCount(); ++i)
        table.GetColInfo(i)->readOnly = true;
    edit(table);
    EXPECT_FALSE(view.AppendRow());
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_EQ(sentence(), L"This column cannot be changed.");
}

TEST_F(NewRow, ANewRowThatTheApplicationBeganIsLeftAloneInAReadOnlyView)
{
    edit(table);
    view.SetReadOnly(true);
    table.AddRow(nullptr, 0);
    view.SetFocusCell(Table::Name, 6);
    view.SetFocusCell(Table::Name, 2);
    EXPECT_TRUE(table.HasVirtualRow());
    EXPECT_TRUE(view.FinishEdit());
    EXPECT_TRUE(table.HasVirtualRow());
}
