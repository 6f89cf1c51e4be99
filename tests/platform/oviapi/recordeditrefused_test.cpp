// Texts that are no values, changes that the dataset refuses, rows that another session has
// changed.
#include "recordedit_support.h"

using namespace OviAPI;

namespace {

class Refused : public RecordEditTest {
protected:
    // Red of the mark in a row's header.
    bool isMarked(long line)
    {
        const Picture picture = shot();
        const Rect rect = view.GetRowHeaderRect(line);
        const int middle = (rect.top + rect.bottom) / 2;
        return (at(picture, rect.left + 4, middle) & 0xFFFFFF) == 0xD02020;
    }
    std::wstring headerHint(long line)
    {
        const Rect rect = view.GetRowHeaderRect(line);
        return view.hintAt(5, (rect.top + rect.bottom) / 2);
    }
    // Opens an editor on a row that another session then changes.
    void editChanged()
    {
        edit(table);
        enter(Table::Name, 2, L"mine");
        table.cell(Table::Kind, 2) = L"blue";
        key(KeyEnter);
    }
};

} // namespace

TEST_F(Refused, ATextThatIsNoValueStaysInTheEditorWithASentence)
{
    edit(table);
    EditEvents events(view);
    enter(Table::Number, 2, L"twelve");
    key(KeyEnter);
    EXPECT_TRUE(view.IsEditing());
    EXPECT_EQ(typed(), L"twelve");
    EXPECT_EQ(sentence(), L"This is not a whole number.");
    EXPECT_EQ(field()->accessibleDescription(), QStringLiteral("This is not a whole number."));
    EXPECT_EQ(events.refused, (EditEvents::Cells{{Table::Number, 2}}));
    EXPECT_EQ(table.statements, 0);
    type(L"");
    field()->selectAll();
    type(L"12");
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Number, 2), L"12");
    EXPECT_EQ(sentence(), L"");
}

TEST_F(Refused, EveryKindOfFaultIsSaid)
{
    edit(table);
    enter(Table::When, 2, L"yesterday");
    key(KeyEnter);
    EXPECT_EQ(sentence(), L"This is not a date and time in the form of this column.");
    key(KeyEscape);
    enter(Table::Kind, 2, L"a text of more than twenty characters");
    key(KeyTab);
    EXPECT_EQ(sentence(), L"The value is longer than this column allows.");
    EXPECT_EQ(typed(), L"a text of more than twenty characters") << "nothing is cut";
    EXPECT_EQ(view.GetCol(), Table::Kind);
    key(KeyEscape);
    ASSERT_TRUE(view.EditCell(Table::Number, 2));
    key(KeyBackspace);
    key(KeyEnter);
    EXPECT_EQ(sentence(), L"An empty text is no value of this column. Ctrl+0 sets NULL.");
    key(Key0, ModifierControl);
    EXPECT_EQ(table.cell(Table::Number, 2), std::nullopt);
    EXPECT_EQ(table.statements, 1);
}

TEST_F(Refused, AFaultyEditorHasAColouredFrame)
{
    edit(table);
    enter(Table::Number, 2, L"x");
    const QRect box = place();
    EXPECT_NE(at(shot(), box.left(), box.top()) & 0xFFFFFF, 0xD02020U);
    key(KeyEnter);
    EXPECT_EQ(at(shot(), box.left(), box.top()) & 0xFFFFFF, 0xD02020U);
}

TEST_F(Refused, ARefusedChangeStaysInTheEditorAndIsTriedAgain)
{
    edit(table);
    EditEvents events(view);
    table.refusal = L"Name must be unique.";
    enter(Table::Name, 2, L"x");
    key(KeyEnter);
    EXPECT_EQ(typed(), L"x");
    EXPECT_EQ(sentence(), L"Name must be unique.");
    EXPECT_EQ(events.refused, (EditEvents::Cells{{Table::Name, 2}}));
    EXPECT_TRUE(isMarked(2));
    EXPECT_EQ(headerHint(2), L"Name must be unique.");
    EXPECT_FALSE(isMarked(3));
    table.refusal.clear();
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
    EXPECT_FALSE(isMarked(2)) << "the mark goes with the error";
    EXPECT_EQ(table.statements, 2);
    EXPECT_EQ(events.stored, (EditEvents::Cells{{Table::Name, 2}}));
}

TEST_F(Refused, EscapeAfterARefusalShowsTheRowAsItIsStored)
{
    edit(table);
    table.refusal = L"no";
    enter(Table::Name, 2, L"x");
    key(KeyEnter);
    table.cell(Table::Name, 2) = L"from another";
    key(KeyEscape);
    EXPECT_EQ(view.GetCellText(Table::Name, 2), L"from another");
    EXPECT_FALSE(isMarked(2));
    EXPECT_EQ(sentence(), L"");
}

TEST_F(Refused, NothingLeavesACellThatCannotBeStored)
{
    edit(table);
    EditEvents events(view);
    enter(Table::Number, 2, L"x");
    click(Table::Name, 4);
    EXPECT_EQ(events.refused.size(), 1U) << "one press tries once";
    key(KeyTab);
    key(KeyDown);
    key(KeyUp, ModifierShift);
    EXPECT_FALSE(view.SetFocusCell(Table::Name, 4));
    EXPECT_FALSE(view.EditCell(Table::Name, 4));
    EXPECT_FALSE(view.FinishEdit());
    EXPECT_FALSE(view.AppendRow());
    view.ReShow(0, true, true, true, nullptr);
    EXPECT_EQ(focus(), std::pair(int{Table::Number}, 2L));
    EXPECT_EQ(typed(), L"x");
    EXPECT_TRUE(view.HasPendingEdit());
    EXPECT_TRUE(field()->hasFocus());
}

TEST_F(Refused, APressOnAHeaderGoesNoFurther)
{
    edit(table);
    int presses = 0;
    connect<&VisualObject::onLButtonDown>(view, form, [&](Object*, int, int, long) {
        ++presses;
        return SlotResult(0);
    });
    connect<&aCRecordView::onHeaderLButtonDown>(view, form, [&](Object*, int) {
        ++presses;
        return SlotResult(1);
    });
    enter(Table::Number, 2, L"x");
    UiDriver::click(view, rowHeader + 40, 10);
    EXPECT_EQ(presses, 0) << "a sort would move the row away";
    EXPECT_EQ(typed(), L"x");
    key(KeyEscape);
    UiDriver::click(view, rowHeader + 40, 10);
    EXPECT_EQ(presses, 2);
}

TEST_F(Refused, ANullThatIsRefusedIsSaidAtTheCell)
{
    edit(table);
    table.refusal = L"Name must have a value.";
    EXPECT_TRUE(view.SetFocusCell(Table::Name, 2));
    EXPECT_FALSE(view.SetFocusedNull());
    EXPECT_EQ(sentence(), L"Name must have a value.");
    EXPECT_TRUE(isMarked(2));
    EXPECT_EQ(table.cell(Table::Name, 2), L"name 2");
    table.refusal.clear();
    EXPECT_TRUE(view.SetFocusedNull());
    EXPECT_FALSE(isMarked(2));
    EXPECT_EQ(table.cell(Table::Name, 2), std::nullopt);
}

TEST_F(Refused, ADeletionThatIsRefusedIsSaid)
{
    edit(table);
    table.refusal = L"Other rows refer to it.";
    view.SetFocusCell(Table::Name, 2);
    EXPECT_FALSE(view.DeleteFocusedRow());
    EXPECT_EQ(sentence(), L"Other rows refer to it.");
    EXPECT_TRUE(isMarked(2));
    EXPECT_EQ(table.rows.size(), 5U);
}

TEST_F(Refused, WhatADatasetThrowsReachesTheCallerAndTheTextStays)
{
    edit(table);
    table.refusal = L"no";
    table.SetRaiseErrors(true);
    enter(Table::Name, 2, L"x");
    EXPECT_THROW(view.FinishEdit(), std::runtime_error);
    EXPECT_EQ(typed(), L"x");
    EXPECT_EQ(sentence(), L"no");
    table.refusal.clear();
    EXPECT_TRUE(view.FinishEdit());
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
}

TEST_F(Refused, ARowThatAnotherSessionHasChangedIsNotOverwritten)
{
    editChanged();
    EXPECT_EQ(table.statements, 0);
    EXPECT_EQ(typed(), L"mine");
    EXPECT_EQ(sentence(), L"The row has been changed by another session since it was read");
    ASSERT_NE(table.getRowError(2), nullptr);
    EXPECT_EQ(table.getRowError(2)->code, 2162);
    key(KeyEnter);
    EXPECT_EQ(table.statements, 0) << "nobody has looked yet";
}

TEST_F(Refused, KeepMineStoresOverTheChange)
{
    editChanged();
    EXPECT_TRUE(view.KeepMine());
    EXPECT_EQ(table.cell(Table::Name, 2), L"mine");
    EXPECT_EQ(table.cell(Table::Kind, 2), L"blue") << "theirs in another column stays";
    EXPECT_FALSE(view.IsEditing());
    EXPECT_FALSE(isMarked(2));
    EXPECT_FALSE(view.KeepMine()) << "nothing has been refused";
}

TEST_F(Refused, ShowTheirsPutsTheStoredValueBesideTheText)
{
    edit(table);
    enter(Table::Name, 2, L"mine");
    table.cell(Table::Name, 2) = L"theirs";
    key(KeyEnter);
    ASSERT_EQ(table.statements, 0);
    EXPECT_TRUE(view.ShowTheirs());
    EXPECT_EQ(typed(), L"mine");
    EXPECT_EQ(sentence(), L"Stored now: theirs");
    EXPECT_EQ(view.GetCellText(Table::Name, 2), L"theirs");
    EXPECT_FALSE(isMarked(2));
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 2), L"mine") << "it has been looked at";
}

TEST_F(Refused, ShowTheirsSaysNullAndCutsWhatIsLong)
{
    edit(table);
    enter(Table::Name, 2, L"mine");
    table.cell(Table::Name, 2).reset();
    EXPECT_TRUE(view.ShowTheirs());
    EXPECT_EQ(sentence(), L"Stored now: NULL");
    table.cell(Table::Name, 2) = std::wstring(300, L'y');
    EXPECT_TRUE(view.ShowTheirs());
    EXPECT_EQ(sentence(), L"Stored now: " + std::wstring(200, L'y') + L"...");
}

TEST_F(Refused, GivingUpShowsTheirs)
{
    edit(table);
    enter(Table::Name, 2, L"mine");
    table.cell(Table::Name, 2) = L"theirs";
    key(KeyEnter);
    view.GiveUpEdit();
    EXPECT_FALSE(view.IsEditing());
    EXPECT_FALSE(view.HasPendingEdit());
    EXPECT_EQ(view.GetCellText(Table::Name, 2), L"theirs");
    EXPECT_EQ(table.statements, 0);
}

TEST_F(Refused, ARowThatHasGoneLeavesTheTextInTheEditor)
{
    edit(table);
    enter(Table::Name, 2, L"mine");
    table.gone = 2;
    key(KeyEnter);
    EXPECT_EQ(typed(), L"mine");
    EXPECT_EQ(sentence(), L"The row has been deleted.");
    EXPECT_FALSE(view.KeepMine());
    EXPECT_FALSE(view.ShowTheirs());
    EXPECT_EQ(typed(), L"mine");
    EXPECT_EQ(sentence(), L"The row has been deleted.");
    view.GiveUpEdit();
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Refused, AMarkThatWasRefusedIsKeptAllTheSame)
{
    edit(table);
    view.SetFocusCell(Table::Flag, 2);
    UiDriver::processEvents();
    table.refusal = L"no";
    key(KeySpace);
    EXPECT_EQ(table.cell(Table::Flag, 2), L"false");
    table.refusal.clear();
    EXPECT_TRUE(view.KeepMine());
    EXPECT_EQ(table.cell(Table::Flag, 2), L"true");
}
