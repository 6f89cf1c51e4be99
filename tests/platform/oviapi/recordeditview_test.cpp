// An open editor while the view scrolls, changes its measures or loses the focus.
#include <QAccessible>
#include <QFocusEvent>

#include <oviapi/lineedit.h>

#include "recordedit_support.h"

using namespace OviAPI;

namespace {

class EditorInView : public RecordEditTest {
protected:
    // The editor stands over its cell, with its frame around it.
    void expectInCell(int col, long line)
    {
        const QRect cell = cellPlace(col, line);
        EXPECT_TRUE(place().adjusted(-1, -1, 1, 1).contains(cell));
        EXPECT_TRUE(cell.adjusted(-2, -2, 2, 2).contains(place()));
    }
};

} // namespace

TEST_F(EditorInView, TheWheelMovesItAlongAndStoresWhenItsCellLeaves)
{
    Table many(200);
    edit(many);
    enter(Table::Name, 8, L"x");
    UiDriver::wheel(view, 300, 300, -1);
    EXPECT_EQ(view.GetFirstShownRow(), 4);
    EXPECT_TRUE(view.IsEditing());
    expectInCell(Table::Name, 8);
    UiDriver::wheel(view, place().center().x(), place().center().y(), -1);
    EXPECT_EQ(view.GetFirstShownRow(), 7) << "over the editor as well";
    EXPECT_EQ(many.statements, 0);
    UiDriver::wheel(view, 300, 300, -1);
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(many.cell(Table::Name, 8), L"x");
    view.SetDataSet(nullptr, false);
}

TEST_F(EditorInView, ScrollingStopsAtACellThatCannotBeStored)
{
    Table many(200);
    edit(many);
    enter(Table::Number, 2, L"x");
    view.ScrollToRow(100);
    EXPECT_EQ(view.GetFirstShownRow(), 1);
    EXPECT_EQ(view.GetScrollPos(VerticalBar), 0);
    EXPECT_EQ(typed(), L"x");
    EXPECT_EQ(sentence(), L"This is not a whole number.");
    view.SetDataSet(nullptr, false);
}

TEST_F(EditorInView, AColumnThatLeavesTheScreenIsStored)
{
    edit(table);
    for (int i = 1; i <= table.GetColCount(); ++i)
        view.SetColWidth(i, 300);
    enter(Table::Number, 2, L"77");
    view.doScroll(200, 0);
    EXPECT_TRUE(view.IsEditing());
    view.doScroll(400, 0);
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(table.cell(Table::Number, 2), L"77");
}

TEST_F(EditorInView, ItStaysInItsCellWhenColumnsAndFontsChange)
{
    edit(table);
    enter(Table::Name, 3, L"x");
    expectInCell(Table::Name, 3);
    UiDriver::drag(view, {rowHeader + 85, 10}, {rowHeader + 125, 10});
    EXPECT_EQ(table.GetColInfo(1)->width, 125);
    expectInCell(Table::Name, 3);
    EXPECT_EQ(typed(), L"x") << "a press on an edge leaves nothing";
    view.SetColWidth(Table::Name, 150);
    expectInCell(Table::Name, 3);
    view.SetFont(Font{L"Helvetica", 20}, 1);
    view.ReShow(0, false, true, true, nullptr);
    expectInCell(Table::Name, 3);
    EXPECT_EQ(field()->font().pointSize(), 20);
    view.ShowRowHeaders(false);
    expectInCell(Table::Name, 3);
    EXPECT_EQ(table.statements, 0);
}

TEST_F(EditorInView, ItStaysInSightWhenTheWindowShrinks)
{
    Table many(200);
    edit(many);
    enter(Table::Name, 15, L"x");
    view.move(0, 0, 400, 160);
    UiDriver::processEvents();
    EXPECT_EQ(typed(), L"x");
    expectInCell(Table::Name, 15);
    view.SetDataSet(nullptr, false);
}

TEST_F(EditorInView, ARefreshKeepsItWithItsText)
{
    edit(table);
    enter(Table::Name, 2, L"half a wo");
    table.RefreshViews();
    view.ReShow(0, false, true, true, nullptr);
    UiDriver::processEvents();
    EXPECT_EQ(typed(), L"half a wo");
    EXPECT_TRUE(field()->hasFocus());
    expectInCell(Table::Name, 2);
    EXPECT_EQ(table.statements, 0);
}

TEST_F(EditorInView, ARefreshWithoutItsRowLosesNothing)
{
    edit(table);
    enter(Table::Name, 5, L"x");
    table.rows.resize(3);
    table.RefreshViews();
    EXPECT_EQ(typed(), L"x");
    EXPECT_FALSE(view.FinishEdit());
    EXPECT_EQ(typed(), L"x");
    EXPECT_EQ(sentence(), L"The change has not been stored.");
    view.GiveUpEdit();
    EXPECT_FALSE(view.IsEditing());
}

TEST_F(EditorInView, TheFocusOfAnotherControlStores)
{
    WLineEdit other;
    other.setParent(&form);
    other.create();
    other.move(0, 400, 100, 20);
    view.move(0, 0, 600, 390);
    edit(table);
    int left = 0;
    int come = 0;
    connect<&VisualObject::onLostFocus>(view, form, [&](Object*) {
        ++left;
        return SlotResult(0);
    });
    connect<&VisualObject::onGetFocus>(view, form, [&](Object*) {
        ++come;
        return SlotResult(0);
    });
    enter(Table::Name, 2, L"x");
    key(KeyEscape);
    enter(Table::Name, 2, L"x");
    EXPECT_EQ(left, 0) << "its editor has the focus in its name";
    EXPECT_EQ(come, 0);
    UiDriver::click(other);
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
    EXPECT_FALSE(view.IsEditing());
    EXPECT_TRUE(other.hasFocus());
    EXPECT_EQ(left, 1);
}

TEST_F(EditorInView, WhatIsRefusedWhenTheFocusGoesStaysOpen)
{
    WLineEdit other;
    other.setParent(&form);
    other.create();
    other.move(0, 400, 100, 20);
    view.move(0, 0, 600, 390);
    edit(table);
    enter(Table::Number, 2, L"x");
    other.setFocus();
    EXPECT_TRUE(other.hasFocus()) << "nobody is held";
    EXPECT_TRUE(view.IsEditing());
    EXPECT_EQ(sentence(), L"This is not a whole number.");
    EXPECT_FALSE(view.FinishEdit());
    view.setFocus();
    EXPECT_EQ(typed(), L"x");
}

TEST_F(EditorInView, AMenuAndAnotherWindowStoreNothing)
{
    edit(table);
    enter(Table::Name, 2, L"x");
    for (const auto reason : {Qt::PopupFocusReason, Qt::ActiveWindowFocusReason}) {
        QFocusEvent out(QEvent::FocusOut, reason);
        QApplication::sendEvent(field(), &out);
        EXPECT_EQ(typed(), L"x");
    }
    EXPECT_EQ(table.statements, 0);
}

TEST_F(EditorInView, SetFocusCellStoresFirst)
{
    edit(table);
    enter(Table::Name, 2, L"x");
    EXPECT_TRUE(view.SetFocusCell(Table::Name, 2));
    EXPECT_TRUE(view.IsEditing()) << "it is there already";
    EXPECT_TRUE(view.SetFocusCell(Table::Name, 4));
    EXPECT_FALSE(view.IsEditing());
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
}

TEST_F(EditorInView, FinishTellsWhetherAnythingIsPending)
{
    edit(table);
    EXPECT_FALSE(view.HasPendingEdit());
    EXPECT_TRUE(view.FinishEdit());
    ASSERT_TRUE(view.EditCell(Table::Name, 2));
    EXPECT_FALSE(view.HasPendingEdit());
    type(L"x");
    EXPECT_TRUE(view.HasPendingEdit());
    EXPECT_TRUE(view.FinishEdit());
    EXPECT_FALSE(view.HasPendingEdit());
    EXPECT_EQ(table.cell(Table::Name, 2), L"x");
}

TEST_F(EditorInView, ValuesThatDoNotFitTheLineAreOpened)
{
    table.cell(Table::Name, 1) = L"two\nlines";
    table.cell(Table::Name, 2) = std::wstring(1025, L'x');
    table.cell(Table::Name, 3) = std::wstring(1024, L'x');
    edit(table);
    EditEvents events(view);
    EXPECT_FALSE(view.EditCell(Table::Name, 1));
    key(KeyDown);
    key(KeyF1 + 1);
    const Point at = middle(Table::Name, 2);
    UiDriver::doubleClick(view, at.x, at.y);
    EXPECT_EQ(events.opened,
              (EditEvents::Cells{{Table::Name, 1}, {Table::Name, 2}, {Table::Name, 2}}));
    type(L"y");
    EXPECT_EQ(events.opened.size(), 3U) << "a letter opens nothing";
    EXPECT_EQ(sentence(), L"A text of several lines, or a long one, is not edited in the table.");
    EXPECT_FALSE(view.IsEditing());
    EXPECT_TRUE(view.EditCell(Table::Name, 3));
}

TEST_F(EditorInView, AReadOnlyViewOpensValuesAndNothingElse)
{
    table.cell(Table::Name, 1) = L"two\nlines";
    edit(table);
    view.SetReadOnly(true);
    EditEvents events(view);
    view.SetFocusCell(Table::Name, 1);
    EXPECT_TRUE(view.onKeyDown(VirtualKey(KeyEnter)));
    const Point at = middle(Table::Name, 1);
    UiDriver::doubleClick(view, at.x, at.y);
    EXPECT_EQ(events.opened.size(), 2U);
    events.opens = false;
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyEnter)));
    view.SetFocusCell(Table::Name, 2);
    EXPECT_FALSE(view.onKeyDown(VirtualKey(KeyEnter)));
    EXPECT_EQ(events.opened.size(), 3U);
}

TEST_F(EditorInView, CutValuesAndLargeObjectsAreOpenedOrExplained)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 1, 11, L"A", 0, 0, 0));
    data.AddColDef(new aCColumn(L"b", 9, 0, L"B", 0, 0, 0));
    data.AppendTexts({L"cut", nullptr});
    data.MarkCell(1, 1, StampCut, L"There is more.");
    edit(data);
    EditEvents events(view);
    EXPECT_FALSE(view.EditCell(1, 1));
    EXPECT_FALSE(view.EditCell(2, 1));
    EXPECT_EQ(events.opened, (EditEvents::Cells{{1, 1}, {2, 1}}));
    EXPECT_EQ(sentence(), L"");
    events.opens = false;
    EXPECT_FALSE(view.EditCell(1, 1));
    EXPECT_EQ(sentence(), L"There is more.");
    EXPECT_FALSE(view.SetFocusCell(1, 1) && view.SetFocusedNull()) << "what is not shown stays";
    view.SetDataSet(nullptr, false);
}

TEST_F(EditorInView, TheRowHeaderShowsAPencil)
{
    edit(table);
    view.SetFocusCell(Table::Name, 2);
    const auto mark = [this] {
        const Picture picture = shot();
        const Rect rect = view.GetRowHeaderRect(2);
        std::vector<uint32_t> pixels;
        for (int y = rect.top; y < rect.bottom; ++y)
            for (int x = rect.left; x < rect.left + 14; ++x)
                pixels.push_back(at(picture, x, y));
        return pixels;
    };
    const auto before = mark();
    view.EditCell(Table::Name, 2);
    EXPECT_NE(mark(), before);
    key(KeyEscape);
    EXPECT_EQ(mark(), before);
}

TEST_F(EditorInView, ANumberStandsWhereItsColumnShowsIt)
{
    edit(table);
    ASSERT_TRUE(view.EditCell(Table::Number, 2));
    EXPECT_TRUE(field()->alignment() & Qt::AlignRight);
    ASSERT_TRUE(view.EditCell(Table::Name, 2));
    EXPECT_TRUE(field()->alignment() & Qt::AlignLeft);
}

TEST_F(EditorInView, AssistiveTechnologyFindsTheEditorAndItsName)
{
    edit(table);
    QAccessibleInterface* tableOf = QAccessible::queryAccessibleInterface(area());
    ASSERT_NE(tableOf, nullptr);
    const int cells = tableOf->childCount();
    EXPECT_TRUE(tableOf->tableInterface()->cellAt(1, 1)->state().editable);
    EXPECT_FALSE(tableOf->tableInterface()->cellAt(1, 5)->state().editable);
    ASSERT_TRUE(view.EditCell(Table::Name, 2));
    EXPECT_EQ(tableOf->childCount(), cells + 1);
    QAccessibleInterface* editor = tableOf->focusChild();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->role(), QAccessible::EditableText);
    EXPECT_EQ(editor->text(QAccessible::Name), QStringLiteral("Name, 2"));
    EXPECT_EQ(editor->text(QAccessible::Value), QStringLiteral("name 2"));
    EXPECT_EQ(tableOf->indexOfChild(editor), cells);
    EXPECT_EQ(tableOf->child(cells), editor);
    view.AppendRow();
    view.EditCell(Table::Name, 6);
    EXPECT_EQ(tableOf->focusChild()->text(QAccessible::Name), QStringLiteral("Name, new row"));
    view.SetReadOnly(true);
    EXPECT_FALSE(tableOf->tableInterface()->cellAt(1, 1)->state().editable);
}
