// Views and datasets that go while something is being edited.
#include <functional>
#include <memory>

#include "recordedit_support.h"

using namespace OviAPI;

namespace {

enum class Signal { Stored, Refused, Open, DeleteKey, RowBegun, Ended };

class EditorLife : public RecordEditTest {
protected:
    EditorLife()
    {
        second = std::make_unique<Table>();
        other = std::make_unique<aCRecordView>();
        other->setParent(&form);
        other->create();
        other->move(0, 0, 600, 424);
        for (int i = 1; i <= second->GetColCount(); ++i)
            second->GetColInfo(i)->width = 85;
        second->cell(Table::Name, 4) = L"two\nlines";
        other->SetDataSet(second.get(), true);
        other->SetReadOnly(false);
        other->placeInFrontOf(view);
        UiDriver::showAndActivate(form);
        other->setFocus();
        UiDriver::processEvents();
    }
    ~EditorLife() override { other.reset(); }

    // Calls the function once, in a slot of the signal.
    void when(Signal signal, const std::function<void()>& function)
    {
        const auto run = [this, function] {
            ++calls;
            function();
            return SlotResult(1);
        };
        const auto cell = [run](Object*, int, long) { return run(); };
        if (signal == Signal::Stored)
            connect<&aCRecordView::onEditStored>(*other, form, cell);
        else if (signal == Signal::Refused)
            connect<&aCRecordView::onEditRefused>(*other, form, cell);
        else if (signal == Signal::Open)
            connect<&aCRecordView::onOpenValue>(*other, form, cell);
        else if (signal == Signal::RowBegun)
            connect<&aCRecordView::onRowBegun>(*other, form,
                                               [run](Object*, long) { return run(); });
        else if (signal == Signal::Ended)
            connect<&aCRecordView::onEditEnded>(*other, form, [run](Object*) { return run(); });
        else
            connect<&aCRecordView::onDeleteRowKey>(*other, form,
                                                   [run](Object*, long) { return run(); });
    }
    void keyOn(int keyboardKey, int modifiers = 0)
    {
        UiDriver::key(form, keyboardKey, modifiers);
        UiDriver::processEvents();
    }
    void start(int col, long line, std::wstring_view text)
    {
        ASSERT_TRUE(other->EditCell(col, line));
        UiDriver::type(*other, text);
    }
    // Runs the signal by a key.
    void cause(Signal signal)
    {
        switch (signal) {
        case Signal::Stored:
            start(Table::Name, 2, L"x");
            keyOn(KeyTab);
            break;
        case Signal::Refused:
            start(Table::Number, 2, L"x");
            keyOn(KeyEnter);
            break;
        case Signal::Open:
            other->SetFocusCell(Table::Name, 4);
            keyOn(KeyEnter);
            break;
        case Signal::DeleteKey:
            other->SetFocusCell(Table::Name, 2);
            keyOn(KeyDelete, ModifierControl);
            break;
        case Signal::RowBegun:
            other->SetFocusCell(Table::Name, 2);
            keyOn(KeyInsert);
            break;
        case Signal::Ended:
            start(Table::Name, 2, L"x");
            keyOn(KeyEscape);
            break;
        }
    }

    std::unique_ptr<Table> second;
    std::unique_ptr<aCRecordView> other;
    int calls = 0;
};

class EditorLifeOf : public EditorLife, public testing::WithParamInterface<Signal> {};

INSTANTIATE_TEST_SUITE_P(Signals, EditorLifeOf,
                         testing::Values(Signal::Stored, Signal::Refused, Signal::Open,
                                         Signal::DeleteKey, Signal::RowBegun, Signal::Ended));

} // namespace

TEST_P(EditorLifeOf, ASlotMayDeleteTheView)
{
    when(GetParam(), [this] { other.reset(); });
    cause(GetParam());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(other, nullptr);
}

TEST_P(EditorLifeOf, ASlotMayDeleteTheDataset)
{
    when(GetParam(), [this] { second.reset(); });
    cause(GetParam());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(other->GetDataSet(), nullptr);
    EXPECT_FALSE(other->IsEditing());
    keyOn(KeyDown);
}

TEST_P(EditorLifeOf, ASlotMayTakeTheDatasetAway)
{
    when(GetParam(), [this] { other->SetDataSet(nullptr, true); });
    cause(GetParam());
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(other->IsEditing());
    keyOn(KeyEnter);
}

TEST_F(EditorLife, ASlotMayDeleteTheViewWhenTheNewRowIsPostedOrRefused)
{
    for (const bool refused : {false, true}) {
        SCOPED_TRACE(refused);
        second->refusal = refused ? L"no" : L"";
        if (!other) {
            other = std::make_unique<aCRecordView>();
            other->setParent(&form);
            other->create();
            other->SetDataSet(second.get(), true);
            other->SetReadOnly(false);
            other->setFocus();
        }
        ASSERT_TRUE(other->AppendRow());
        UiDriver::type(*other, L"1");
        keyOn(KeyEnter);
        when(refused ? Signal::Refused : Signal::Stored, [this] { other.reset(); });
        keyOn(KeyUp);
        EXPECT_EQ(other, nullptr);
        EXPECT_EQ(second->rows.size(), 6U) << "posted once, then refused";
    }
    EXPECT_EQ(calls, 2);
}

TEST_F(EditorLife, ASlotMayDeleteTheViewWhenTheFocusMovesOnAfterAStore)
{
    connect<&aCRecordView::onRowGetFocus>(*other, form, [this](Object*, long, long) {
        ++calls;
        other.reset();
        return SlotResult(1);
    });
    start(Table::Name, 1, L"x");
    keyOn(KeyEnter);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(second->cell(Table::Name, 1), L"x");
}

TEST_F(EditorLife, AViewDiesWithAnOpenEditor)
{
    start(Table::Name, 1, L"x");
    other.reset();
    EXPECT_EQ(second->statements, 0) << "the application was to ask before";
    UiDriver::processEvents();
}

TEST_F(EditorLife, ADatasetDiesUnderAnOpenEditor)
{
    start(Table::Name, 1, L"x");
    second.reset();
    EXPECT_FALSE(other->IsEditing());
    EXPECT_FALSE(other->HasPendingEdit());
    EXPECT_TRUE(other->FinishEdit());
    keyOn(KeyEnter);
}

TEST_F(EditorLife, AnotherDatasetClosesTheEditor)
{
    start(Table::Name, 1, L"x");
    other->SetDataSet(&table, true);
    EXPECT_FALSE(other->IsEditing());
    EXPECT_EQ(second->statements, 0);
    EXPECT_TRUE(other->hasFocus());
    EXPECT_TRUE(other->EditCell(Table::Name, 2));
    other->SetDataSet(nullptr, false);
}

TEST_F(EditorLife, TheNativePartGoesAndComesAgain)
{
    start(Table::Name, 1, L"x");
    other->destroy();
    EXPECT_FALSE(other->IsEditing());
    EXPECT_FALSE(other->EditCell(Table::Name, 1));
    EXPECT_TRUE(other->create());
    EXPECT_TRUE(other->EditCell(Table::Name, 1));
}

TEST_F(EditorLife, ColumnsThatGoTakeTheEditorAlong)
{
    start(Table::Kind, 1, L"x");
    second->DeleteColDef(Table::Key);
    second->DeleteColDef(Table::Kind);
    for (auto& each : second->rows)
        each.resize(4);
    second->RefreshViews();
    EXPECT_FALSE(other->IsEditing());
}
