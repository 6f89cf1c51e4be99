#include <oviapi/treeview.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QAccessible>
#include <QContextMenuEvent>
#include <QCoreApplication>

#include <oviapi/form.h>
#include <oviapi/qt/native.h>
#include <oviapi/text.h>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

using Lines = std::vector<std::wstring>;

// Writes down what the signals of a tree say; answers as told.
struct Listener : Object {
    std::vector<std::string> heard;
    SlotResult answer = 0;

    static std::string named(const aQTreeViewItem* item)
    {
        return item ? wideToUtf8(item->text()) : "-";
    }
    SlotResult note(const std::string& what)
    {
        heard.push_back(what);
        return answer;
    }
    void listen(WTreeView& tree)
    {
        connect<&WTreeView::onSelChanged>(
            tree, *this, [this](Object*, aQTreeViewItem* i) { return note("select " + named(i)); });
        connect<&WTreeView::onItemExpanding>(tree, *this, [this](Object*, aQTreeViewItem* i) {
            return note("expanding " + named(i));
        });
        connect<&WTreeView::onItemExpanded>(tree, *this, [this](Object*, aQTreeViewItem* i) {
            return note("expanded " + named(i));
        });
        connect<&WTreeView::onItemCollapsed>(tree, *this, [this](Object*, aQTreeViewItem* i) {
            return note("collapsed " + named(i));
        });
        connect<&WTreeView::onItemClick>(tree, *this, [this](Object*, aQTreeViewItem* i, int part) {
            return note("click " + named(i) + " " + std::to_string(part));
        });
        connect<&WTreeView::onItemDblClk>(
            tree, *this, [this](Object*, aQTreeViewItem* i) { return note("double " + named(i)); });
        connect<&WTreeView::onContextMenu>(
            tree, *this,
            [this](Object*, aQTreeViewItem* i, int, int) { return note("menu " + named(i)); });
        connect<&WTreeView::onLabelEditing>(tree, *this, [this](Object*, aQTreeViewItem* i) {
            return note("editing " + named(i));
        });
        connect<&WTreeView::onLabelEdited>(
            tree, *this, [this](Object*, aQTreeViewItem* i, const wchar_t* text) {
                return note("edited " + named(i) + " " + wideToUtf8(text));
            });
    }
    std::vector<std::string> take() { return std::exchange(heard, {}); }
};

using Heard = std::vector<std::string>;

// a(aa(aaa) ab) b c
struct Tree : ::testing::Test {
    WForm form;
    std::unique_ptr<WTreeView> owned = std::make_unique<WTreeView>();
    WTreeView& tree = *owned;
    Listener listener;
    aQTreeViewItem* a = nullptr;
    aQTreeViewItem* aa = nullptr;
    aQTreeViewItem* aaa = nullptr;
    aQTreeViewItem* ab = nullptr;
    aQTreeViewItem* b = nullptr;
    aQTreeViewItem* c = nullptr;

    void fill()
    {
        a = tree.insertItem(nullptr, L"a");
        aa = tree.insertItem(a, L"aa");
        aaa = tree.insertItem(aa, L"aaa");
        ab = tree.insertItem(a, L"ab");
        b = tree.insertItem(nullptr, L"b");
        c = tree.insertItem(nullptr, L"c");
    }
    void show()
    {
        form.move(0, 0, 400, 300);
        EXPECT_TRUE(form.create());
        tree.setParent(&form);
        tree.move(0, 0, 400, 300);
        EXPECT_TRUE(tree.create());
        UiDriver::showAndActivate(form);
        UiDriver::processEvents();
    }
    void fillAndShow()
    {
        fill();
        show();
        tree.select(a);
        tree.setFocus();
        listener.listen(tree);
    }
    Point textOf(const aQTreeViewItem* item)
    {
        const Rect text = tree.itemTextRect(item);
        EXPECT_FALSE(text.isEmpty());
        return {text.left + 2, (text.top + text.bottom) / 2};
    }
    Point boxOf(const aQTreeViewItem* item)
    {
        const Rect text = tree.itemTextRect(item);
        return {text.left - 12, (text.top + text.bottom) / 2};
    }
    void click(Point at) { UiDriver::click(tree, at.x, at.y); }
    void key(int keyboardKey, int modifiers = 0)
    {
        UiDriver::key(tree, keyboardKey, modifiers);
        UiDriver::processEvents();
    }
    Lines all() const
    {
        Lines lines;
        for (const aQTreeViewItem* item = tree.firstItem(); item; item = tree.nextItem(item))
            lines.push_back(item->text());
        return lines;
    }
    // Removes the tree while its handler runs.
    template<auto Signal>
    void destroyIn()
    {
        connect<Signal>(tree, listener, [this](Object*, auto&&...) -> SlotResult {
            owned.reset();
            return 1;
        });
    }
};

} // namespace

TEST_F(Tree, LinesStandWhereTheyWereInserted)
{
    fill();
    EXPECT_EQ(all(), (Lines{L"a", L"aa", L"aaa", L"ab", L"b", L"c"}));
    tree.insertBefore(a, L"0");
    tree.insertAfter(aa, L"aa2");
    tree.insertAfter(c, L"d");
    EXPECT_EQ(all(), (Lines{L"0", L"a", L"aa", L"aaa", L"aa2", L"ab", L"b", L"c", L"d"}));
    EXPECT_EQ(tree.itemCount(), 9);
    EXPECT_EQ(a->row(), 1);
    EXPECT_EQ(ab->row(), 2);
    EXPECT_EQ(c->nextSibling()->text(), L"d");
    EXPECT_EQ(a->previousSibling()->text(), L"0");
    EXPECT_EQ(a->previousSibling()->previousSibling(), nullptr);
}

TEST_F(Tree, TheRelativesOfALineAreFound)
{
    fill();
    EXPECT_EQ(a->parent(), nullptr);
    EXPECT_EQ(aaa->parent(), aa);
    EXPECT_EQ(a->firstChild(), aa);
    EXPECT_EQ(a->lastChild(), ab);
    EXPECT_EQ(a->child(1), ab);
    EXPECT_EQ(a->child(2), nullptr);
    EXPECT_EQ(a->child(-1), nullptr);
    EXPECT_EQ(aaa->firstChild(), nullptr);
    EXPECT_EQ(tree.nextItem(aaa), ab);
    EXPECT_EQ(tree.previousItem(b), ab);
    EXPECT_EQ(tree.previousItem(ab), aaa);
    EXPECT_EQ(tree.previousItem(a), nullptr);
    EXPECT_EQ(tree.nextItem(c), nullptr);
    EXPECT_EQ(tree.nextItem(nullptr), nullptr);
}

TEST_F(Tree, CargoAndPicturesBelongToTheirLine)
{
    fill();
    int thing = 0;
    tree.setItemCargo(ab, &thing);
    tree.setItemImage(ab, 2, 3, 4);
    EXPECT_EQ(tree.findCargo(&thing), ab);
    EXPECT_EQ(ab->cargo(), &thing);
    EXPECT_EQ(ab->image(), 2);
    EXPECT_EQ(ab->selectedImage(), 3);
    EXPECT_EQ(ab->openImage(), 4);
    int other = 0;
    EXPECT_EQ(tree.findCargo(&other), nullptr);
    void* const number = reinterpret_cast<void*>(uintptr_t{0xFFFFFFFFFFFFFFFF});
    const aQTreeViewItem* item = tree.insertItem(b, L"n", -1, number);
    EXPECT_EQ(tree.findCargo(number), item);
}

TEST_F(Tree, LinesOfAnotherTreeAndNullDoNothing)
{
    fill();
    WTreeView other;
    aQTreeViewItem* strange = other.insertItem(nullptr, L"strange");
    for (aQTreeViewItem* item : {strange, static_cast<aQTreeViewItem*>(nullptr)}) {
        EXPECT_EQ(tree.insertBefore(item, L"x"), nullptr);
        EXPECT_EQ(tree.insertAfter(item, L"x"), nullptr);
        tree.removeItem(item);
        tree.removeChildren(item);
        tree.setItemText(item, L"x");
        tree.expand(item);
        tree.collapse(item);
        tree.ensureVisible(item);
        tree.claimChildren(item, true);
        EXPECT_FALSE(tree.editLabel(item));
        EXPECT_TRUE(tree.itemTextRect(item).isEmpty());
    }
    tree.select(strange);
    tree.sortChildren(strange);
    tree.expandAll(strange);
    EXPECT_EQ(tree.insertItem(strange, L"x"), nullptr);
    EXPECT_EQ(tree.selected(), nullptr);
    EXPECT_EQ(tree.itemCount(), 6);
    EXPECT_EQ(strange->text(), L"strange");
    EXPECT_FALSE(strange->canExpand());
}

TEST_F(Tree, EverythingCanBeDoneBeforeItIsCreatedAndIsKept)
{
    fill();
    tree.expand(a);
    tree.select(ab);
    show();
    EXPECT_TRUE(a->isExpanded());
    EXPECT_EQ(tree.selected(), ab);
    EXPECT_FALSE(tree.itemTextRect(ab).isEmpty());
    EXPECT_TRUE(tree.itemTextRect(aaa).isEmpty()) << "inside a closed line";
    tree.destroy();
    EXPECT_TRUE(tree.itemTextRect(ab).isEmpty());
    EXPECT_EQ(tree.itemCount(), 6);
    EXPECT_TRUE(tree.create());
    EXPECT_EQ(tree.selected(), ab);
    EXPECT_TRUE(a->isExpanded());
}

TEST_F(Tree, RemovingTheSelectedLineSelectsItsNeighbour)
{
    fillAndShow();
    tree.select(b);
    tree.removeItem(b);
    EXPECT_EQ(tree.selected(), c);
    tree.removeItem(c);
    EXPECT_EQ(tree.selected(), a);
    tree.select(aaa);
    tree.removeItem(aa);
    EXPECT_EQ(tree.selected(), ab);
    tree.removeItem(ab);
    EXPECT_EQ(tree.selected(), a);
    EXPECT_FALSE(a->isExpanded()) << "nothing is left inside";
    EXPECT_FALSE(a->canExpand());
    tree.clear();
    EXPECT_EQ(tree.selected(), nullptr);
    EXPECT_EQ(tree.itemCount(), 0);
    EXPECT_EQ(tree.firstItem(), nullptr);
    EXPECT_EQ(listener.take(), (Heard{"expanding a", "expanded a", "expanding aa", "expanded aa"}))
        << "nobody is told of what the program selects";
}

TEST_F(Tree, ChildrenAloneCanBeRemoved)
{
    fillAndShow();
    tree.removeChildren(a);
    EXPECT_EQ(all(), (Lines{L"a", L"b", L"c"}));
    tree.removeChildren(a);
    EXPECT_EQ(tree.itemCount(), 3);
}

TEST_F(Tree, TheProgramOpensAndClosesLines)
{
    fillAndShow();
    tree.expand(a);
    EXPECT_TRUE(a->isExpanded());
    EXPECT_EQ(listener.take(), (Heard{"expanding a", "expanded a"}));
    tree.expand(a);
    tree.expand(b);
    EXPECT_FALSE(b->isExpanded()) << "has no children";
    EXPECT_EQ(listener.take(), Heard());
    tree.collapse(a);
    tree.collapse(a);
    EXPECT_EQ(listener.take(), (Heard{"collapsed a"}));
    tree.expandAll();
    EXPECT_TRUE(a->isExpanded() && aa->isExpanded());
    EXPECT_FALSE(tree.itemTextRect(aaa).isEmpty());
    tree.collapseAll();
    EXPECT_FALSE(a->isExpanded() || aa->isExpanded());
    tree.expandAll(aa);
    EXPECT_TRUE(aa->isExpanded());
    EXPECT_FALSE(a->isExpanded());
}

TEST_F(Tree, ALineThatIsNotToBeOpenedStaysClosed)
{
    fillAndShow();
    listener.answer = 1;
    tree.expand(a);
    EXPECT_FALSE(a->isExpanded());
    click(boxOf(a));
    EXPECT_FALSE(a->isExpanded());
    EXPECT_TRUE(tree.itemTextRect(aa).isEmpty()) << "not on the screen either";
    key(KeyRight);
    EXPECT_FALSE(a->isExpanded());
    listener.answer = 2;
    click(boxOf(a));
    EXPECT_TRUE(a->isExpanded()) << "seen is not handled";
}

TEST_F(Tree, ChildrenMayComeWhenTheirLineIsOpened)
{
    fillAndShow();
    connect<&WTreeView::onItemExpanding>(tree, listener, [this](Object*, aQTreeViewItem* item) {
        if (item == b && item->childCount() == 0)
            tree.insertItem(b, L"late");
        return SlotResult(0);
    });
    tree.claimChildren(b, true);
    tree.claimChildren(c, true);
    EXPECT_TRUE(b->canExpand());
    click(boxOf(b));
    EXPECT_TRUE(b->isExpanded());
    ASSERT_EQ(b->childCount(), 1);
    EXPECT_FALSE(tree.itemTextRect(b->firstChild()).isEmpty());
    click(boxOf(c));
    EXPECT_FALSE(c->isExpanded());
    EXPECT_FALSE(c->canExpand()) << "the claim was wrong";
    tree.claimChildren(c, true);
    tree.expandAll();
    EXPECT_TRUE(c->canExpand()) << "opening everything asks for nothing new";
}

TEST_F(Tree, AHandlerThatOpensTheLineItselfIsNotAskedAgain)
{
    fillAndShow();
    connect<&WTreeView::onItemExpanding>(tree, listener, [this](Object*, aQTreeViewItem* item) {
        tree.expand(item);
        return SlotResult(0);
    });
    tree.expand(a);
    EXPECT_EQ(listener.take(), (Heard{"expanding a", "expanded a"}));
}

TEST_F(Tree, TheMouseSelectsAndOpens)
{
    fillAndShow();
    click(textOf(b));
    EXPECT_EQ(tree.selected(), b);
    EXPECT_EQ(listener.take(), (Heard{"select b", "click b 4"}));
    click(boxOf(a));
    EXPECT_TRUE(a->isExpanded());
    EXPECT_EQ(tree.selected(), b) << "the box selects nothing";
    EXPECT_EQ(listener.take(), (Heard{"expanding a", "expanded a", "click a 2"}));
    const Point free{textOf(c).x, textOf(c).y + 60};
    click(free);
    EXPECT_EQ(tree.selected(), b);
    EXPECT_EQ(listener.take(), Heard());
}

TEST_F(Tree, ClosingALineAroundTheSelectionSelectsTheLine)
{
    fillAndShow();
    tree.select(aaa);
    listener.take();
    click(boxOf(a));
    EXPECT_EQ(tree.selected(), a);
    EXPECT_EQ(listener.take(), (Heard{"collapsed a", "select a", "click a 2"}));
}

TEST_F(Tree, ADoubleClickOpensUnlessItIsHandled)
{
    fillAndShow();
    UiDriver::doubleClick(tree, textOf(a).x, textOf(a).y);
    EXPECT_TRUE(a->isExpanded());
    EXPECT_EQ(listener.heard.at(1), "double a");
    listener.answer = 1;
    UiDriver::doubleClick(tree, textOf(a).x, textOf(a).y);
    EXPECT_TRUE(a->isExpanded()) << "not closed";
}

TEST_F(Tree, TheKeyboardGoesEverywhere)
{
    fillAndShow();
    key(KeyDown);
    EXPECT_EQ(tree.selected(), b);
    key(KeyEnd);
    EXPECT_EQ(tree.selected(), c);
    key(KeyHome);
    EXPECT_EQ(tree.selected(), a);
    key(KeyRight);
    EXPECT_TRUE(a->isExpanded());
    key(KeyRight);
    EXPECT_EQ(tree.selected(), aa);
    key(KeyLeft);
    EXPECT_EQ(tree.selected(), a);
    key(KeyLeft);
    EXPECT_FALSE(a->isExpanded());
    UiDriver::type(tree, L"+");
    EXPECT_TRUE(a->isExpanded());
    UiDriver::type(tree, L"-");
    EXPECT_FALSE(a->isExpanded());
    UiDriver::type(tree, L"*");
    EXPECT_TRUE(a->isExpanded() && aa->isExpanded());
    UiDriver::type(tree, L"c");
    EXPECT_EQ(tree.selected(), c) << "the beginning of its text";
}

TEST_F(Tree, AKeyIsOfferedToTheHandlerFirst)
{
    fillAndShow();
    int asked = 0;
    connect<&VisualObject::onKeyDown>(tree, listener, [&](Object*, VirtualKey pressed) {
        asked += pressed.getKeyboardKey() == KeySpace || pressed.getKeyboardKey() == KeyDown;
        return SlotResult(pressed.getKeyboardKey() == KeyDown);
    });
    key(KeyDown);
    EXPECT_EQ(tree.selected(), a) << "handled";
    key(KeySpace);
    EXPECT_EQ(asked, 2);
    key(KeyEnd);
    EXPECT_EQ(tree.selected(), c);
}

TEST_F(Tree, TheFirstLineIsSelectedWhenTheFocusComes)
{
    fill();
    listener.listen(tree);
    show();
    tree.setFocus();
    UiDriver::processEvents();
    EXPECT_EQ(tree.selected(), a);
    EXPECT_EQ(listener.take(), (Heard{"select a"}));
}

TEST_F(Tree, ControlAndAClickDoNotTakeTheSelectionAway)
{
    fillAndShow();
    UiDriver::click(tree, textOf(a).x, textOf(a).y, UiDriver::Button::Left, ModifierControl);
    EXPECT_EQ(tree.selected(), a);
    const uint32_t marked = UiDriver::pixel(tree, textOf(a).x - 2, textOf(a).y);
    EXPECT_NE(marked, UiDriver::pixel(tree, textOf(b).x - 2, textOf(b).y));
}

TEST_F(Tree, ADisabledTreeTakesNoInput)
{
    fillAndShow();
    tree.enable(false);
    UiDriver::processEvents();
    click(textOf(b));
    key(KeyDown);
    EXPECT_EQ(tree.selected(), a);
    EXPECT_EQ(listener.take(), Heard());
    tree.select(c);
    EXPECT_EQ(tree.selected(), c) << "by the program";
}

TEST_F(Tree, PicturesEndTwoPixelsBeforeTheText)
{
    ImageList images;
    images.add(Picture({16, 16}, Color(255, 0, 0)));
    images.add(Picture({16, 16}, Color(0, 0, 255)));
    images.add(Picture({16, 16}, Color(0, 255, 0)));
    fillAndShow();
    tree.setImageList(&images);
    tree.setItemImage(b, 0);
    UiDriver::processEvents();
    const Rect text = tree.itemTextRect(b);
    const Rect picture = tree.itemPictureRect(b);
    EXPECT_EQ(picture.left, text.left - 18);
    EXPECT_EQ(picture.right, text.left - 2);
    EXPECT_EQ(picture.bottom - picture.top, 16);
    EXPECT_TRUE(tree.itemPictureRect(c).isEmpty());
    const Point inside{picture.left + 8, picture.top + 8};
    EXPECT_EQ(UiDriver::pixel(tree, inside.x + 1, inside.y + 1), 0xFFFF0000U);
    int part = 0;
    EXPECT_EQ(tree.itemAt(inside.x, inside.y, &part), b);
    EXPECT_EQ(part, WTreeView::PicturePart);
    EXPECT_EQ(tree.itemAt(text.left + 1, inside.y, &part), b);
    EXPECT_EQ(part, WTreeView::TextPart);
    EXPECT_EQ(tree.itemAt(390, inside.y, &part), b);
    EXPECT_EQ(part, WTreeView::RightPart);
    EXPECT_EQ(tree.itemAt(1, inside.y, &part), b);
    EXPECT_EQ(part, WTreeView::IndentPart);
    EXPECT_EQ(tree.itemAt(1, 290, &part), nullptr);
    EXPECT_EQ(part, WTreeView::NoPart);
    tree.setItemImage(b, 0, 1, 2);
    tree.select(b);
    UiDriver::processEvents();
    EXPECT_EQ(UiDriver::pixel(tree, inside.x + 1, inside.y + 1), 0xFF0000FFU) << "selected";
    tree.select(a);
    tree.insertItem(b, L"ba");
    tree.expand(b);
    UiDriver::processEvents();
    EXPECT_EQ(UiDriver::pixel(tree, inside.x + 1, inside.y + 1), 0xFF00FF00U) << "open";
    tree.setImageList(nullptr);
    EXPECT_TRUE(tree.itemPictureRect(b).isEmpty());
}

TEST_F(Tree, PicturesOutOfRangeAreNone)
{
    ImageList images;
    images.add(Picture({16, 16}, Color(255, 0, 0)));
    fillAndShow();
    tree.setImageList(&images);
    for (const int image : {-1, 1, -2147483647 - 1, 2147483647}) {
        tree.setItemImage(b, image, image, image);
        EXPECT_TRUE(tree.itemPictureRect(b).isEmpty());
    }
    EXPECT_NE(UiDriver::pixel(tree, 5, 5), 0xFFFF0000U);
}

TEST_F(Tree, WithoutItsBitsATreeShowsNeitherBoxesNorPictures)
{
    ImageList images;
    images.add(Picture({16, 16}, Color(255, 0, 0)));
    tree.setStyle(0);
    tree.setImageList(&images);
    fillAndShow();
    tree.setItemImage(a, 0);
    EXPECT_TRUE(tree.itemPictureRect(a).isEmpty());
    int part = 0;
    EXPECT_EQ(tree.itemAt(1, textOf(a).y, &part), a);
    EXPECT_NE(part, WTreeView::BoxPart);
    EXPECT_LT(tree.itemTextRect(a).left, 5) << "no room for lines at the top level";
}

TEST_F(Tree, HostileTextsAreShownInOneRowAndKept)
{
    fillAndShow();
    const std::wstring longText(10000, L'w');
    for (const std::wstring& text :
         {longText, std::wstring(L"<b>bold</b><img src=x>"), std::wstring(L"one\ntwo\tthree"),
          std::wstring(L"\x202Eturned"), std::wstring(1, wchar_t(0xD800)), std::wstring()}) {
        tree.setItemText(b, text.c_str());
        UiDriver::processEvents();
        EXPECT_EQ(b->text(), text);
        const Rect above = tree.itemTextRect(a);
        const Rect rect = tree.itemTextRect(b);
        EXPECT_EQ(rect.bottom - rect.top, above.bottom - above.top);
        UiDriver::pixel(tree, 0, 0);
    }
    tree.setItemText(b, nullptr);
    EXPECT_EQ(b->text(), L"");
    EXPECT_NE(tree.insertItem(nullptr, nullptr), nullptr);
}

TEST_F(Tree, AFontMakesRowsHigherAndAnEmptyOneIsTheForms)
{
    fillAndShow();
    const Rect before = tree.itemTextRect(b);
    tree.setFont(Font(L"DejaVu Sans", 24));
    UiDriver::processEvents();
    const Rect after = tree.itemTextRect(b);
    EXPECT_GT(after.bottom - after.top, before.bottom - before.top);
    EXPECT_GT(after.right - after.left, before.right - before.left);
    tree.setFont(Font());
    UiDriver::processEvents();
    EXPECT_EQ(tree.itemTextRect(b), before);
}

TEST_F(Tree, ChildrenAreSortedAndEqualOnesKeepTheirOrder)
{
    fillAndShow();
    tree.clear();
    for (const wchar_t* text : {L"pear", L"apple", L"fig", L"apple"})
        tree.insertItem(nullptr, text);
    aQTreeViewItem* first = tree.firstItem()->nextSibling();
    tree.select(tree.firstItem());
    tree.sortChildren(nullptr);
    EXPECT_EQ(all(), (Lines{L"apple", L"apple", L"fig", L"pear"}));
    EXPECT_EQ(tree.firstItem(), first);
    EXPECT_EQ(tree.selected()->text(), L"pear") << "the selection stays with its line";
    UiDriver::processEvents();
    EXPECT_EQ(tree.itemAt(textOf(first).x, textOf(first).y), first);
    tree.sortChildren(nullptr, [](const aQTreeViewItem& x, const aQTreeViewItem& y) {
        return x.text().size() < y.text().size();
    });
    EXPECT_EQ(all(), (Lines{L"fig", L"pear", L"apple", L"apple"}));
}

TEST_F(Tree, AComparisonThatThrowsLeavesTheOrder)
{
    fill();
    EXPECT_THROW(
        tree.sortChildren(nullptr,
                          [](const aQTreeViewItem&, const aQTreeViewItem&) -> bool { throw 1; }),
        int);
    EXPECT_EQ(all(), (Lines{L"a", L"aa", L"aaa", L"ab", L"b", L"c"}));
}

TEST_F(Tree, ALineIsBroughtIntoView)
{
    fillAndShow();
    aQTreeViewItem* last = nullptr;
    for (int i = 0; i < 100; ++i)
        last = tree.insertItem(aa, std::to_wstring(i).c_str());
    tree.ensureVisible(last);
    EXPECT_TRUE(a->isExpanded() && aa->isExpanded());
    UiDriver::processEvents();
    const Rect place = tree.itemTextRect(last);
    EXPECT_TRUE(place.top >= 0 && place.bottom <= tree.clientHeight());
    EXPECT_EQ(tree.selected(), a) << "nothing else is selected";
}

TEST_F(Tree, TheContextMenuIsAskedForByMouseAndKey)
{
    fillAndShow();
    UiDriver::click(tree, textOf(b).x, textOf(b).y, UiDriver::Button::Right);
    EXPECT_EQ(tree.selected(), b);
    const Heard heard = listener.take();
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "menu b"), 1);
    Point at;
    connect<&WTreeView::onContextMenu>(tree, listener,
                                       [&](Object*, aQTreeViewItem* item, int x, int y) {
                                           EXPECT_EQ(item, b);
                                           at = {x, y};
                                           return SlotResult(1);
                                       });
    QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(),
                            QPoint()); // made of the key by the platform
    QCoreApplication::sendEvent(widgetOf(&tree), &byKey);
    EXPECT_EQ(listener.take(), (Heard{"menu b"}));
    const Rect text = tree.itemTextRect(b);
    EXPECT_EQ(at, (Point{text.left, text.bottom})) << "below the line that is selected";
}

TEST_F(Tree, LabelsAreEditedOnlyWhereThatIsSwitchedOn)
{
    fillAndShow();
    key(KeyF1 + 1);
    EXPECT_FALSE(tree.isEditing());
    EXPECT_FALSE(tree.editLabel(a));
    EXPECT_EQ(listener.take(), Heard());
}

TEST_F(Tree, ATypedLabelIsTaken)
{
    tree.setStyle(tree.style() | WTreeView::LabelEditing);
    fillAndShow();
    key(KeyF1 + 1);
    ASSERT_TRUE(tree.isEditing());
    UiDriver::type(tree, L"new");
    key(KeyEnter);
    EXPECT_FALSE(tree.isEditing());
    EXPECT_EQ(a->text(), L"new");
    EXPECT_EQ(listener.take(), (Heard{"editing a", "edited a new"}));
    EXPECT_TRUE(tree.editLabel(b));
    EXPECT_EQ(tree.selected(), b);
    UiDriver::type(tree, L"lost");
    key(KeyEscape);
    EXPECT_FALSE(tree.isEditing());
    EXPECT_EQ(b->text(), L"b");
    EXPECT_TRUE(tree.editLabel(b));
    key(KeyEnter);
    EXPECT_EQ(listener.take(), (Heard{"editing b", "editing b"})) << "no other text, no signal";
    EXPECT_TRUE(tree.editLabel(c));
    UiDriver::type(tree, L"kept");
    tree.endEditing(true);
    EXPECT_EQ(c->text(), L"kept");
    EXPECT_TRUE(tree.editLabel(c));
    UiDriver::type(tree, L"dropped");
    tree.endEditing(false);
    EXPECT_EQ(c->text(), L"kept");
}

TEST_F(Tree, EditingAndItsResultMayBeRefused)
{
    tree.setStyle(tree.style() | WTreeView::LabelEditing);
    fillAndShow();
    EXPECT_TRUE(tree.editLabel(a));
    listener.answer = 1;
    UiDriver::type(tree, L"new");
    key(KeyEnter);
    EXPECT_EQ(a->text(), L"a");
    EXPECT_FALSE(tree.editLabel(a));
    EXPECT_FALSE(tree.isEditing());
}

TEST_F(Tree, ALabelLongerThanAFieldUsuallyTakesIsNotCutByEditing)
{
    tree.setStyle(tree.style() | WTreeView::LabelEditing);
    fillAndShow();
    const std::wstring text(40000, L'x');
    tree.setItemText(a, text.c_str());
    ASSERT_TRUE(tree.editLabel(a));
    key(KeyHome);
    UiDriver::type(tree, L"y");
    tree.endEditing(true);
    EXPECT_EQ(a->text(), L'y' + text);
}

TEST_F(Tree, ALineThatIsEditedMayBeRemoved)
{
    tree.setStyle(tree.style() | WTreeView::LabelEditing);
    fillAndShow();
    connect<&WTreeView::onLabelEdited>(tree, listener,
                                       [this](Object*, aQTreeViewItem* item, const wchar_t*) {
                                           tree.removeItem(item);
                                           return SlotResult(0);
                                       });
    ASSERT_TRUE(tree.editLabel(b));
    UiDriver::type(tree, L"new");
    key(KeyEnter);
    EXPECT_EQ(all(), (Lines{L"a", L"aa", L"aaa", L"ab", L"c"}));
    ASSERT_TRUE(tree.editLabel(c));
    tree.removeItem(c);
    EXPECT_FALSE(tree.isEditing());
}

TEST_F(Tree, ALineMayBeRemovedByEveryHandlerOfItsOwn)
{
    fillAndShow();
    std::vector<std::wstring> seenLater;
    Listener second;
    const auto removing = [this](Object*, aQTreeViewItem* item, auto&&...) -> SlotResult {
        tree.removeItem(item);
        return 0;
    };
    const auto reading = [&](Object*, aQTreeViewItem* item, auto&&...) -> SlotResult {
        if (item) {
            EXPECT_EQ(item->tree(), nullptr);
            seenLater.push_back(item->text());
        }
        return 0;
    };
    connect<&WTreeView::onSelChanged>(tree, second,
                                      [&](Object* o, aQTreeViewItem* i) { return removing(o, i); });
    connect<&WTreeView::onSelChanged>(tree, second,
                                      [&](Object* o, aQTreeViewItem* i) { return reading(o, i); });
    click(textOf(b));
    EXPECT_EQ(seenLater, (Lines{L"b"}));
    EXPECT_EQ(all(), (Lines{L"a", L"aa", L"aaa", L"ab", L"c"}));
    disconnect<&WTreeView::onSelChanged>(tree, second);
    connect<&WTreeView::onItemExpanding>(
        tree, second, [&](Object* o, aQTreeViewItem* i) { return removing(o, i); });
    click(boxOf(a));
    EXPECT_EQ(all(), (Lines{L"c"}));
    connect<&WTreeView::onItemDblClk>(tree, second,
                                      [&](Object* o, aQTreeViewItem* i) { return removing(o, i); });
    UiDriver::doubleClick(tree, textOf(c).x, textOf(c).y);
    EXPECT_EQ(tree.itemCount(), 0);
}

TEST_F(Tree, ItMayBeDestroyedByItsHandlers)
{
    fillAndShow();
    destroyIn<&WTreeView::onSelChanged>();
    click(textOf(b));
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, ItMayBeDestroyedWhenALineIsOpened)
{
    fillAndShow();
    destroyIn<&WTreeView::onItemExpanding>();
    click(boxOf(a));
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, ItMayBeDestroyedWhenALineHasBeenOpenedByAKey)
{
    fillAndShow();
    destroyIn<&WTreeView::onItemExpanded>();
    UiDriver::type(tree, L"*");
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, ItMayBeDestroyedByADoubleClick)
{
    fillAndShow();
    destroyIn<&WTreeView::onItemDblClk>();
    UiDriver::doubleClick(tree, textOf(a).x, textOf(a).y);
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, ItMayBeDestroyedByAClick)
{
    fillAndShow();
    destroyIn<&WTreeView::onItemClick>();
    click(textOf(a));
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, ItMayBeDestroyedByAskingForItsMenu)
{
    fillAndShow();
    destroyIn<&WTreeView::onContextMenu>();
    UiDriver::click(tree, textOf(a).x, textOf(a).y, UiDriver::Button::Right);
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, ItMayBeDestroyedWhileALabelIsEdited)
{
    tree.setStyle(tree.style() | WTreeView::LabelEditing);
    fillAndShow();
    destroyIn<&WTreeView::onLabelEdited>();
    ASSERT_TRUE(tree.editLabel(a));
    UiDriver::type(tree, L"new");
    UiDriver::key(form, KeyEnter);
    UiDriver::processEvents();
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Tree, AnExceptionOfAHandlerReachesTheLoop)
{
    fillAndShow();
    connect<&WTreeView::onSelChanged>(tree, listener,
                                      [](Object*, aQTreeViewItem*) -> SlotResult { throw 7; });
    UiDriver::later([&] {
        click(textOf(b));
        form.exitModal(1);
    });
    EXPECT_THROW(form.execModal(), int);
}

TEST_F(Tree, DeepTreesAreDestroyedWithoutRecursion)
{
    aQTreeViewItem* at = nullptr;
    for (int i = 0; i < 200000; ++i)
        at = tree.insertItem(at, L"x");
    EXPECT_EQ(tree.itemCount(), 200000);
    tree.clear();
    EXPECT_EQ(tree.itemCount(), 0);
}

TEST_F(Tree, AssistiveTechnologyIsToldTheTextAndThePicture)
{
    ImageList images;
    images.add(Picture({16, 16}, Color(255, 0, 0)));
    images.setName(0, L"checked");
    fillAndShow();
    tree.setImageList(&images);
    tree.setItemImage(b, 0);
    tree.setAccessibleName(L"Things");
    EXPECT_EQ(UiDriver::accessibleName(tree), L"Things");
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(widgetOf(&tree));
    ASSERT_NE(told, nullptr);
    EXPECT_EQ(told->role(), QAccessible::Tree);
    ASSERT_GE(told->childCount(), 3); // the header, which is not shown, comes first
    EXPECT_EQ(told->child(2)->role(), QAccessible::TreeItem);
    EXPECT_EQ(told->child(2)->text(QAccessible::Name), "b, checked");
}
