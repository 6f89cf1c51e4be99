// Keys and mouse that open an editor, store from it and take back.
#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QInputMethodEvent>

#include "recordedit_support.h"

using namespace OviAPI;

namespace {

using Keys = RecordEditTest;
using Cell = std::pair<int, long>;

} // namespace

TEST_F(Keys, TypingReplacesTheValue)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    type(L"new");
    EXPECT_TRUE(view.IsEditing());
    EXPECT_EQ(typed(), L"new");
    EXPECT_TRUE(view.hasFocus()) << "its editor has the focus in its name";
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 2), L"new");
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Keys, ALetterWithControlOrAltStartsNoEdit)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    InputDriver::pressKey(view, VirtualKey(KeyA + 9, ModifierAlt, L'j'));
    InputDriver::pressKey(view, VirtualKey(Key0 + 5, ModifierControl, L'5'));
    UiDriver::processEvents();
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Keys, F2EnterAndADoubleClickSelectTheValue)
{
    edit(table);
    for (const int way : {KeyF1 + 1, int{KeyEnter}, 0}) {
        view.SetFocusCell(Table::Name, 2);
        if (way != 0) {
            key(way);
        } else {
            const Point at = middle(Table::Name, 2);
            UiDriver::doubleClick(view, at.x, at.y);
        }
        ASSERT_TRUE(view.IsEditing()) << way;
        EXPECT_EQ(typed(), L"name 2");
        EXPECT_EQ(field()->selectedText(), QStringLiteral("name 2"));
        key(KeyEscape);
    }
    EXPECT_EQ(table.statements, 0);
}

TEST_F(Keys, EnterStoresAndGoesDown)
{
    edit(table);
    enter(Table::Name, 2, L"x");
    key(KeyEnter);
    EXPECT_EQ(focus(), Cell(Table::Name, 3));
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
    enter(Table::Name, 5, L"y");
    key(KeyEnter);
    EXPECT_EQ(focus(), Cell(Table::Name, 5)) << "there is no row below";
    EXPECT_EQ(table.cell(Table::Name, 5), L"y");
}

TEST_F(Keys, TabStoresAndGoesToTheNextCell)
{
    edit(table);
    enter(Table::Name, 2, L"x");
    key(KeyTab);
    EXPECT_EQ(focus(), Cell(Table::When, 2));
    EXPECT_FALSE(view.IsEditing());
    enter(Table::Name, 3, L"y");
    key(KeyTab, ModifierShift);
    EXPECT_EQ(focus(), Cell(Table::Number, 3));
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
    EXPECT_EQ(table.cell(Table::Name, 3), L"y");
}

TEST_F(Keys, UpDownAndPagesStoreAndMove)
{
    edit(table);
    enter(Table::Name, 2, L"a");
    key(KeyUp);
    EXPECT_EQ(focus(), Cell(Table::Name, 1));
    enter(Table::Name, 2, L"b");
    key(KeyDown);
    EXPECT_EQ(focus(), Cell(Table::Name, 3));
    EXPECT_EQ(table.cell(Table::Name, 2), L"b");
    enter(Table::Kind, 3, L"c");
    key(KeyPageDown);
    EXPECT_EQ(focus(), Cell(Table::Kind, 5));
    EXPECT_EQ(table.cell(Table::Kind, 3), L"c");
}

TEST_F(Keys, EscapeStoresNothing)
{
    edit(table);
    enter(Table::Name, 2, L"x");
    key(KeyEscape);
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(table.statements, 0);
    EXPECT_EQ(focus(), Cell(Table::Name, 2));
    EXPECT_TRUE(view.hasFocus());
    key(KeyDown);
    EXPECT_EQ(focus(), Cell(Table::Name, 3)) << "keys are the view's again";
}

TEST_F(Keys, AnUnchangedTextSendsNoStatement)
{
    edit(table);
    for (const int col : {int{Table::Number}, int{Table::Name}, int{Table::When}}) {
        ASSERT_TRUE(view.EditCell(col, 2));
        key(KeyEnter);
        enter(col, 2, *table.cell(col, 2));
        EXPECT_FALSE(view.HasPendingEdit());
        key(KeyEnter);
    }
    EXPECT_EQ(table.statements, 0);
    ASSERT_TRUE(view.EditCell(Table::When, 2));
    EXPECT_EQ(typed(), L"2024-03-17 10:30:00.000123") << "to the last digit";
}

TEST_F(Keys, APressOnAnotherCellStores)
{
    edit(table);
    view.ReShow(0, false, true, true, nullptr); // the measures of a view that is shown anew
    enter(Table::Name, 2, L"x");
    click(Table::Number, 4);
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
    EXPECT_EQ(table.statements, 1);
    EXPECT_EQ(focus(), Cell(Table::Number, 4));
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Keys, APressOnAHeaderFindsEverythingStored)
{
    edit(table);
    std::wstring seen;
    connect<&VisualObject::onLButtonDown>(view, form, [&](Object*, int, int, long) {
        seen = table.cell(Table::Name, 2).value_or(L"NULL");
        return SlotResult(1);
    });
    enter(Table::Name, 2, L"x");
    UiDriver::click(view, rowHeader + 50, 10);
    EXPECT_EQ(seen, L"x");
}

TEST_F(Keys, ANullCellOpensEmptyAndStaysNullUntouched)
{
    table.cell(Table::Name, 2).reset();
    table.cell(Table::Number, 2).reset();
    edit(table);
    for (const int col : {int{Table::Number}, int{Table::Name}}) {
        ASSERT_TRUE(view.EditCell(col, 2));
        EXPECT_EQ(typed(), L"");
        key(KeyEnter);
    }
    EXPECT_EQ(table.statements, 0);
    EXPECT_EQ(table.cell(Table::Name, 2), std::nullopt);
}

TEST_F(Keys, AnEmptyTextTypedOnPurposeIsStoredInAText)
{
    table.cell(Table::Name, 3).reset();
    edit(table);
    ASSERT_TRUE(view.EditCell(Table::Name, 2));
    key(KeyBackspace);
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 2), L"");
    enter(Table::Name, 3, L"a");
    key(KeyBackspace);
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 3), L"");
}

TEST_F(Keys, ControlZeroSetsNull)
{
    edit(table);
    EditEvents events(view);
    view.SetFocusCell(Table::Name, 2);
    key(Key0, ModifierControl);
    EXPECT_EQ(table.cell(Table::Name, 2), std::nullopt);
    EXPECT_EQ(events.stored, (EditEvents::Cells{{Table::Name, 2}}));
    key(Key0, ModifierControl);
    EXPECT_EQ(table.statements, 1) << "it is NULL already";
    enter(Table::Number, 3, L"12");
    key(Key0, ModifierControl);
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(table.cell(Table::Number, 3), std::nullopt);
}

TEST_F(Keys, OnlyANewRowTakesTheDefault)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    key(Key0, ModifierControl | ModifierShift);
    EXPECT_EQ(table.statements, 0);
    EXPECT_EQ(sentence(), L"Only a cell of a new row can be left to the server.");
    key(KeyRight);
    EXPECT_EQ(sentence(), L"") << "until something else is done";
}

TEST_F(Keys, SpaceSwitchesACheckMark)
{
    edit(table);
    view.SetFocusCell(Table::Flag, 2);
    key(KeySpace);
    EXPECT_EQ(table.cell(Table::Flag, 2), L"true");
    key(KeySpace);
    EXPECT_EQ(table.cell(Table::Flag, 2), L"false");
    key(Key0, ModifierControl);
    EXPECT_EQ(table.cell(Table::Flag, 2), std::nullopt);
    key(KeySpace);
    EXPECT_EQ(table.cell(Table::Flag, 2), L"true");
    EXPECT_FALSE(view.IsEditing());
    const Point at = middle(Table::Flag, 2);
    UiDriver::doubleClick(view, at.x, at.y);
    EXPECT_EQ(table.cell(Table::Flag, 2), L"false");
    key(KeyEnter);
    EXPECT_EQ(sentence(), L"The space bar switches the mark, Ctrl+0 sets NULL.");
    EXPECT_EQ(table.statements, 5);
}

TEST_F(Keys, SpaceIsTextInOtherCells)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    key(KeySpace);
    EXPECT_EQ(typed(), L" ");
}

TEST_F(Keys, AltDownOpensTheListAndAChoiceIsStored)
{
    edit(table);
    view.SetFocusCell(Table::Kind, 2);
    key(KeyDown, ModifierAlt);
    ASSERT_TRUE(view.IsEditing());
    auto* list = area()->findChild<QComboBox*>();
    ASSERT_NE(list, nullptr);
    ASSERT_TRUE(UiDriver::waitUntil([&] { return list->view()->isVisible(); }));
    EXPECT_EQ(list->count(), 3);
    list->setCurrentIndex(1);
    list->hidePopup();
    UiDriver::processEvents();
    EXPECT_EQ(typed(), L"green");
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Kind, 2), L"green");
    view.SetFocusCell(Table::Name, 2);
    key(KeyDown, ModifierAlt);
    EXPECT_FALSE(view.IsEditing()) << "there is no list";
}

TEST_F(Keys, InACellWithAListAnyTextCanBeTypedAndIsNotCompleted)
{
    edit(table);
    view.SetFocusCell(Table::Kind, 2);
    type(L"gr");
    EXPECT_EQ(typed(), L"gr");
    key(KeyDown);
    EXPECT_EQ(table.cell(Table::Kind, 2), L"gr");
    EXPECT_EQ(focus(), Cell(Table::Kind, 3));
}

TEST_F(Keys, PastingPutsTheFirstCellIntoTheEditor)
{
    edit(table);
    QGuiApplication::clipboard()->setText(QStringLiteral("one\ttwo\nthree"));
    view.SetFocusCell(Table::Name, 2);
    key(KeyA + 21, ModifierControl);
    EXPECT_EQ(typed(), L"one");
    EXPECT_EQ(table.statements, 0) << "it can be taken back";
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 2), L"one");
    QGuiApplication::clipboard()->clear();
    view.SetFocusCell(Table::Name, 3);
    key(KeyInsert, ModifierShift);
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Keys, ACompositionBeginsAnEditAndIsNotCutShort)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    QInputMethodEvent begin(QStringLiteral("ni"), {});
    QApplication::sendEvent(area(), &begin);
    EXPECT_TRUE(view.IsEditing());
    EXPECT_EQ(QApplication::focusWidget(), area()) << "a move of the focus would end it";
    QInputMethodEvent end;
    end.setCommitString(QStringLiteral("\u4f60"));
    QApplication::sendEvent(area(), &end);
    EXPECT_EQ(typed(), L"\u4f60");
    key(KeyEnter);
    EXPECT_EQ(table.cell(Table::Name, 2), L"\u4f60");
}

TEST_F(Keys, ACompositionThatIsGivenUpLeavesNothing)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    QInputMethodEvent begin(QStringLiteral("n"), {});
    QApplication::sendEvent(area(), &begin);
    QInputMethodEvent end;
    QApplication::sendEvent(area(), &end);
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(table.statements, 0);
    view.SetReadOnly(true);
    QApplication::sendEvent(area(), &begin);
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Keys, AViewIsReadOnlyUntilItIsSaidOtherwise)
{
    edit(table);
    view.SetReadOnly(true);
    view.SetFocusCell(Table::Name, 5);
    type(L"x");
    key(KeyF1 + 1);
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyEnter))) << "for the default button";
    key(Key0, ModifierControl);
    key(KeyDown);
    key(KeyInsert);
    key(KeyDelete, ModifierControl);
    EXPECT_FALSE(view.IsEditing());
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_EQ(table.statements, 0);
    EXPECT_FALSE(view.EditCell(Table::Name, 2));
    EXPECT_EQ(sentence(), L"This table is open for reading only.");
    EXPECT_FALSE(view.SetFocusedNull());
    EXPECT_FALSE(view.AppendRow());
    EXPECT_FALSE(view.DeleteFocusedRow());
    aCRecordView fresh;
    EXPECT_TRUE(fresh.IsReadOnly());
}

TEST_F(Keys, AListIsNotEdited)
{
    edit(table);
    view.SetListBoxMode(true, 2);
    view.SetFocusCell(Table::Name, 2);
    type(L"x");
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyEnter)));
    EXPECT_FALSE(view.EditCell(Table::Name, 2));
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(Keys, ACellThatCannotBeEditedSaysWhy)
{
    edit(table);
    EXPECT_FALSE(view.EditCell(Table::Key, 2));
    EXPECT_EQ(sentence(), L"This column cannot be changed.");
    type(L"x");
    EXPECT_EQ(sentence(), L"This column cannot be changed.");
    key(Key0, ModifierControl);
    EXPECT_EQ(sentence(), L"This column cannot be changed.");
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(table.statements, 0);
    table.gone = 3;
    view.ReShow(0, false, true, true, nullptr);
    EXPECT_FALSE(view.EditCell(Table::Name, 3));
    EXPECT_EQ(sentence(), L"The row has been deleted.");
    EXPECT_FALSE(view.EditCell(Table::Name, 99));
}

TEST_F(Keys, TheKeysOfTheLineStayInTheEditor)
{
    edit(table);
    enter(Table::Name, 2, L"two words");
    EditEvents events(view);
    key(KeyHome);
    key(KeyRight);
    EXPECT_EQ(field()->cursorPosition(), 1);
    key(KeyDelete, ModifierControl);
    EXPECT_EQ(typed(), L"twords") << "the word is deleted, not the row";
    key(KeyInsert);
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_TRUE(events.deletions.empty());
    key(KeyA + 25, ModifierControl);
    EXPECT_EQ(typed(), L"two words") << "undone";
}

TEST_F(Keys, WhatTheApplicationPutsIntoANewRowDoesNotCountAsEntered)
{
    edit(table);
    OviAPI::Object application;
    OviAPI::connect<&aCRecordView::onRowBegun>(view, application,
                                               [this](OviAPI::Object*, long fresh) {
                                                   table.StoreText(Table::Number, fresh, L"42");
                                                   return OviAPI::SlotResult(0);
                                               });
    view.SetFocusCell(Table::Name, 5);
    key(KeyInsert);
    EXPECT_EQ(view.GetCellText(Table::Number, 6), L"42");
    EXPECT_FALSE(view.HasPendingEdit());
    key(KeyUp);
    EXPECT_FALSE(table.HasVirtualRow());
    EXPECT_EQ(table.rows.size(), 5U) << "nothing was entered";

    key(KeyInsert);
    enter(Table::Number, 6, L"43"); // the same cell, by the user
    key(KeyTab);
    EXPECT_TRUE(view.HasPendingEdit());
    key(KeyUp);
    ASSERT_EQ(table.rows.size(), 6U);
    EXPECT_EQ(table.cell(Table::Number, 6), L"43");
}

TEST_F(Keys, ControlDeleteAsksTheApplication)
{
    edit(table);
    EditEvents events(view);
    view.SetFocusCell(Table::Name, 2);
    key(KeyDelete, ModifierControl);
    EXPECT_EQ(events.deletions, std::vector<long>{2});
    EXPECT_EQ(table.rows.size(), 5U);
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyDelete, ModifierControl)));
    EXPECT_TRUE(view.DeleteFocusedRow());
    EXPECT_EQ(table.rows.size(), 4U);
    EXPECT_EQ(table.cell(Table::Name, 2), L"name 3");
    EXPECT_EQ(focus(), Cell(Table::Name, 2));
}
