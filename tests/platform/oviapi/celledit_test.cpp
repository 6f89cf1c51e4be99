#include <oviapi/celledit.h>

#include <gtest/gtest.h>

#include <QKeyEvent>

#include <oviapi/memorydataset.h>
#include <oviapi/qt/keys.h>

using namespace OviAPI;

namespace {

StoreNeed needOf(unsigned char type, std::wstring original, std::wstring text, bool none,
                 bool touched)
{
    aCColumn column;
    column.dataType = type;
    return storeNeed(column, {std::move(original), std::move(text), none, touched});
}

VirtualKey pressed(int qtKey, Qt::KeyboardModifiers modifiers, quint32 place)
{
    return toVirtualKey(QKeyEvent(QEvent::KeyPress, qtKey, modifiers, place, 0, 0));
}

constexpr unsigned char text = 1;
constexpr unsigned char integer = 2;
constexpr unsigned char date = 7;
constexpr unsigned char bytes = 12;

} // namespace

TEST(CellEdit, AnUnchangedTextIsNotStored)
{
    EXPECT_EQ(needOf(text, L"a", L"a", false, true), StoreNeed::Nothing);
    EXPECT_EQ(needOf(text, L"", L"", false, true), StoreNeed::Nothing);
    EXPECT_EQ(needOf(text, L"a", L"b", false, true), StoreNeed::Text);
}

TEST(CellEdit, AnEmptyTextInTheEditorOfNullIsStoredOnlyWhenItWasTypedIntoAText)
{
    EXPECT_EQ(needOf(text, L"", L"", true, false), StoreNeed::Nothing);
    EXPECT_EQ(needOf(text, L"", L"", true, true), StoreNeed::Text);
    EXPECT_EQ(needOf(bytes, L"", L"", true, true), StoreNeed::Text);
    EXPECT_EQ(needOf(integer, L"", L"", true, true), StoreNeed::Nothing);
    EXPECT_EQ(needOf(text, L"", L"a", true, true), StoreNeed::Text);
}

TEST(CellEdit, AnEmptyTextIsNoNumberAndNoDate)
{
    EXPECT_EQ(needOf(text, L"a", L"", false, true), StoreNeed::Text);
    EXPECT_EQ(needOf(integer, L"1", L"", false, true), StoreNeed::NullKey);
    EXPECT_EQ(needOf(date, L"2024-01-01", L"", false, true), StoreNeed::NullKey);
}

TEST(CellEdit, TheFirstCellOfWhatWasCopiedIsPasted)
{
    EXPECT_EQ(firstCell(L"one"), L"one");
    EXPECT_EQ(firstCell(L"one\ttwo\nthree"), L"one");
    EXPECT_EQ(firstCell(L"one\r\ntwo"), L"one");
    EXPECT_EQ(firstCell(L"one\x2028two"), L"one");
    EXPECT_EQ(firstCell(L""), L"");
    EXPECT_EQ(firstCell(L"\ttwo"), L"");
}

TEST(CellEdit, QuotesAroundACopiedCellGoOnlyInATable)
{
    EXPECT_EQ(firstCell(L"\"one\""), L"\"one\"");
    EXPECT_EQ(firstCell(L"\"a \"\"b\"\"\tc\"\td\n"), L"a \"b\"\tc");
    EXPECT_EQ(firstCell(L"\"two\nlines\"\tnext"), L"two");
    EXPECT_EQ(firstCell(L"\"open\tnext"), L"\"open");
    EXPECT_EQ(firstCell(L"\"a\"b\tnext"), L"\"a\"b");
}

TEST(CellEdit, AnEditorStandsOverItsCellAndInsideTheCells)
{
    const Rect cells{60, 24, 600, 424};
    EXPECT_EQ(fieldRect({100, 44, 200, 64}, cells, 40), (Rect{99, 43, 201, 65}));
    EXPECT_EQ(fieldRect({60, 24, 160, 44}, cells, 40), (Rect{60, 24, 161, 45}));
    EXPECT_EQ(fieldRect({20, 44, 120, 64}, cells, 40), (Rect{60, 43, 121, 65}));
    EXPECT_EQ(fieldRect({560, 44, 700, 64}, cells, 40), (Rect{559, 43, 600, 65}));
}

TEST(CellEdit, ANarrowCellGetsAnEditorOfTheLeastWidth)
{
    const Rect cells{60, 24, 600, 424};
    EXPECT_EQ(fieldRect({100, 44, 110, 64}, cells, 60), (Rect{99, 43, 159, 65}));
    EXPECT_EQ(fieldRect({590, 44, 600, 64}, cells, 60), (Rect{540, 43, 600, 65}));
    EXPECT_EQ(fieldRect({60, 24, 70, 44}, {60, 24, 90, 424}, 60), (Rect{60, 24, 90, 45}));
}

TEST(CellEdit, ACellOutOfSightHasNoPlaceForAnEditor)
{
    const Rect cells{60, 24, 600, 424};
    EXPECT_FALSE(fieldRect({0, 44, 60, 64}, cells, 60));
    EXPECT_FALSE(fieldRect({600, 44, 700, 64}, cells, 60));
    EXPECT_FALSE(fieldRect({100, 424, 200, 444}, cells, 60));
}

TEST(CellEdit, ASentenceStandsBelowOrWhereThereIsMoreRoom)
{
    const Rect bounds{0, 0, 600, 400};
    EXPECT_EQ(tipRect({100, 40, 200, 60}, {150, 30}, bounds), (Rect{100, 62, 250, 92}));
    EXPECT_EQ(tipRect({100, 380, 200, 400}, {150, 30}, bounds), (Rect{100, 348, 250, 378}));
    EXPECT_EQ(tipRect({550, 40, 600, 60}, {150, 30}, bounds), (Rect{450, 62, 600, 92}));
    EXPECT_EQ(tipRect({0, 0, 50, 20}, {900, 30}, bounds), (Rect{0, 22, 600, 52}));
    EXPECT_EQ(tipRect({0, 10, 50, 30}, {50, 500}, bounds), (Rect{0, 32, 50, 400}));
}

TEST(CellEdit, TheDigitKeysAreKnownByTheirPlaceTogetherWithControl)
{
    constexpr quint32 zero = 19;
    const auto control = Qt::ControlModifier;
    const auto both = Qt::ControlModifier | Qt::ShiftModifier;
    EXPECT_EQ(pressed(Qt::Key_ParenRight, both, zero).getKeyboardKey(), Key0);
    EXPECT_EQ(pressed(Qt::Key_Equal, both, zero).getKeyboardKey(), Key0) << "a German keyboard";
    EXPECT_EQ(pressed(Qt::Key_Agrave, control, zero).getKeyboardKey(), Key0) << "a French one";
    EXPECT_EQ(pressed(Qt::Key_Exclam, both, 10).getKeyboardKey(), Key0 + 1);
    EXPECT_EQ(pressed(Qt::Key_Plus, control, zero).getKeyboardKey(), KeyPlus);
    EXPECT_EQ(pressed(Qt::Key_Plus, both, 21).getKeyboardKey(), KeyPlus);
    EXPECT_EQ(pressed(Qt::Key_ParenRight, Qt::ShiftModifier, zero).getKeyboardKey(), KeyNone);
}

TEST(CellEdit, ASwitchedMarkIsWrittenAsItsColumnWritesIt)
{
    aCMemoryDataSet data;
    data.AddColDef(new aCColumn(L"a", 14, 1, L"A", 0, 0, aCColumn::CheckMark));
    data.AddColDef(new aCColumn(L"b", 2, 4, L"B", 0, 0, aCColumn::CheckMark));
    data.AddColDef(new aCColumn(L"c", 1, 6, L"C", 0, 0, aCColumn::CheckMark));
    data.AppendTexts({L"true", L"7", L"1"});
    data.AppendTexts({L"false", L"0", L"false"});
    data.AppendTexts({nullptr, nullptr, nullptr});
    data.SetRow(1);
    EXPECT_EQ(switchedMark(data, 1), L"false");
    EXPECT_EQ(switchedMark(data, 2), L"0");
    EXPECT_EQ(switchedMark(data, 3), L"0");
    data.SetRow(2);
    EXPECT_EQ(switchedMark(data, 1), L"true");
    EXPECT_EQ(switchedMark(data, 2), L"1");
    EXPECT_EQ(switchedMark(data, 3), L"true");
    data.SetRow(3);
    EXPECT_EQ(switchedMark(data, 1), L"true");
    EXPECT_EQ(switchedMark(data, 2), L"1");
    EXPECT_EQ(switchedMark(data, 3), L"true");
}
