#include "recordview_support.h"

#include <QAccessible>
#include <QApplication>
#include <QWidget>

using namespace OviAPI;

namespace {

constexpr long trillion = 1'000'000'000'000;

class RecordAccessibleTest : public RecordViewTest {
protected:
    QAccessibleInterface* table()
    {
        return QAccessible::queryAccessibleInterface(QApplication::focusWidget());
    }
    static QString name(QAccessibleInterface* cell)
    {
        return cell ? cell->text(QAccessible::Name) : QStringLiteral("none");
    }
};

} // namespace

TEST_F(RecordAccessibleTest, TheTableTellsItsSize)
{
    VirtualRows data(100);
    show(data);
    ASSERT_NE(table(), nullptr);
    EXPECT_EQ(table()->role(), QAccessible::Table);
    ASSERT_NE(table()->tableInterface(), nullptr);
    EXPECT_EQ(table()->tableInterface()->rowCount(), 100);
    EXPECT_EQ(table()->tableInterface()->columnCount(), 4);
    EXPECT_EQ(table()->tableInterface()->columnDescription(1), QStringLiteral("Column 2"));
}

TEST_F(RecordAccessibleTest, ChildrenAreTheHeadersAndTheCellsOfThePage)
{
    VirtualRows data(trillion);
    show(data);
    view.ScrollToRow(500);
    EXPECT_EQ(table()->childCount(), 4 * 21);
    EXPECT_EQ(table()->child(1)->role(), QAccessible::ColumnHeader);
    EXPECT_EQ(name(table()->child(1)), QStringLiteral("Column 2"));
    EXPECT_EQ(name(table()->child(4 + 1)), QStringLiteral("r500 c2"));
    EXPECT_EQ(table()->indexOfChild(table()->child(4 + 1)), 5);
    EXPECT_EQ(table()->child(4 * 21), nullptr);
}

TEST_F(RecordAccessibleTest, AnyCellIsReachedByRowAndColumn)
{
    VirtualRows data(1000);
    show(data);
    QAccessibleInterface* cell = table()->tableInterface()->cellAt(899, 2);
    EXPECT_EQ(name(cell), QStringLiteral("r900 c3"));
    ASSERT_NE(cell->tableCellInterface(), nullptr);
    EXPECT_EQ(cell->tableCellInterface()->rowIndex(), 899);
    EXPECT_EQ(cell->tableCellInterface()->columnIndex(), 2);
    EXPECT_EQ(name(cell->tableCellInterface()->columnHeaderCells().value(0)),
              QStringLiteral("Column 3"));
    EXPECT_EQ(table()->tableInterface()->cellAt(1000, 0), nullptr);
    EXPECT_EQ(table()->tableInterface()->cellAt(0, 4), nullptr);
}

TEST_F(RecordAccessibleTest, TheFocusedCellIsTold)
{
    VirtualRows data(1000);
    show(data);
    view.SetFocusCell(2, 3);
    QAccessibleInterface* cell = table()->focusChild();
    EXPECT_EQ(name(cell), QStringLiteral("r3 c2"));
    EXPECT_TRUE(cell->state().focused);
    EXPECT_TRUE(cell->state().selected);
    EXPECT_FALSE(table()->child(4)->state().selected);
}

TEST_F(RecordAccessibleTest, AReadOnlyCellTellsWhy)
{
    VirtualRows data(1000);
    data.GetColInfo(2)->readOnly = true;
    show(data);
    QAccessibleInterface* cell = table()->child(4 + 1);
    EXPECT_TRUE(cell->state().readOnly);
    EXPECT_EQ(cell->text(QAccessible::Description),
              QStringLiteral("This column cannot be changed."));
    EXPECT_FALSE(table()->child(4)->state().readOnly);
}

TEST_F(RecordAccessibleTest, NullAndErrorsAreReadAsWhatIsShown)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 1, 11, L"A", 0, 0, 0));
    data.AppendTexts({nullptr});
    show(data);
    EXPECT_EQ(name(table()->child(1)), QStringLiteral("NULL"));
    VirtualRows failing(10);
    failing.failing = {1};
    show(failing);
    EXPECT_EQ(name(table()->child(4)), QStringLiteral("The row is locked."));
}

TEST_F(RecordAccessibleTest, APointOnTheScreenFindsItsCell)
{
    VirtualRows data(1000);
    show(data);
    const Point at = view.toScreen(middle(2, 4));
    EXPECT_EQ(name(table()->childAt(at.x, at.y)), QStringLiteral("r4 c2"));
    EXPECT_TRUE(table()->childAt(at.x, at.y)->rect().contains(at.x, at.y));
}

TEST_F(RecordAccessibleTest, ReadingManyPagesKeepsOnlySoManyCells)
{
    VirtualRows data(trillion);
    show(data);
    for (int page = 0; page < 100; ++page) {
        view.ScrollToRow(1 + page * 20L);
        for (int i = 0; i < table()->childCount(); ++i)
            ASSERT_NE(table()->child(i), nullptr);
    }
    EXPECT_EQ(name(table()->child(4)), QStringLiteral("1981"));
}
