#include "panels/titledpanel.h"

#include <climits>

#include <oviapi/lineedit.h>
#include <oviapi/painter.h>

#include "tests/panels/inspect.h"
#include "tests/panels/panelform.h"

namespace {

// Lets a test look at the parts.
class OpenPanel : public TitledPanel {
public:
    OpenPanel()
        : TitledPanel(nullptr)
    {
    }
    using TitledPanel::buttonMargin;
    using TitledPanel::titleHeight;
    using TitledPanel::titleLabel;
    using TitledPanel::titleWidth;
    using TitledPanel::titleXOffset;
    using TitledPanel::titleXOffset2;

    void layoutElements() override
    {
        ++layouts;
        titleAtLayout = titleLabel.geometry();
    }
    int layouts = 0;
    OviAPI::Rect titleAtLayout;
};

class TitledPanels : public PanelForm {
protected:
    OpenPanel& made()
    {
        panel.setParent(&form);
        EXPECT_TRUE(panel.create());
        panel.move(20, 30, 200, 100);
        return panel;
    }
    int widthOf(const wchar_t* text) { return OviAPI::GetTextSize(panel.font(), text).width; }

    OpenPanel panel;
};

} // namespace

TEST_F(TitledPanels, ItsMeasuresAreTheStatedOnes)
{
    EXPECT_EQ(panel.titleWidth, 0);
    EXPECT_EQ(panel.titleXOffset, 5);
    EXPECT_EQ(panel.titleXOffset2, 7);
    EXPECT_EQ(panel.titleHeight, 17);
    EXPECT_EQ(panel.buttonMargin, 5);
    EXPECT_FALSE(panel.titleLabel.isCreated());
}

TEST_F(TitledPanels, TheTitleIsASiblingInFrontOfThePanelAndInItsFont)
{
    panel.setFont({L"Courier", 9});
    made();
    EXPECT_TRUE(panel.titleLabel.isCreated());
    EXPECT_EQ(panel.titleLabel.parent(), &form);
    EXPECT_EQ(form.firstChild(), &panel.titleLabel);
    EXPECT_EQ(panel.titleLabel.font(), panel.font());
    EXPECT_EQ(panel.titleLabel.positioner(), &panel);
}

TEST_F(TitledPanels, TheTitleStandsSevenPixelsAboveThePanelAndIsAsWideAsItsText)
{
    made().setTitle(L"Server");
    ASSERT_GT(widthOf(L"Server"), 10);
    EXPECT_EQ(panel.titleWidth, widthOf(L"Server"));
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, widthOf(L"Server"), 17));
    EXPECT_EQ(panel.title(), L"Server");
}

TEST_F(TitledPanels, AnEmptyTitleHasNoWidth)
{
    made().setTitle(L"Server");
    panel.setTitle(L"");
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, 0, 17));
    panel.setTitle(L"Server");
    panel.setTitle(nullptr);
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, 0, 17));
    EXPECT_EQ(panel.title(), L"");
}

TEST_F(TitledPanels, WithoutAParentTheTitleIsPlacedOnlyWhenThereIsOneAndThePanelIsMoved)
{
    ASSERT_TRUE(panel.create());
    panel.setTitle(L"Server");
    panel.move(20, 30, 200, 100);
    EXPECT_EQ(panel.titleLabel.geometry(), OviAPI::Rect());
    panel.setParent(&form);
    EXPECT_EQ(panel.titleLabel.geometry(), OviAPI::Rect());
    EXPECT_EQ(panel.titleLabel.parent(), &form);
    panel.move(40, 50, 200, 100);
    EXPECT_EQ(panel.titleLabel.geometry(), placed(45, 43, widthOf(L"Server"), 17));
}

TEST_F(TitledPanels, ItIsNotCreatedInsideAParentThatIsNot)
{
    WExtForm later;
    panel.setParent(&later);
    EXPECT_FALSE(panel.create());
    EXPECT_FALSE(panel.titleLabel.isCreated());
}

TEST_F(TitledPanels, ItPlacesItsTitleAndNothingElse)
{
    made().setTitle(L"Server");
    OviAPI::WStatic other;
    EXPECT_FALSE(panel.positionObject(&other));
    EXPECT_FALSE(panel.positionObject(nullptr));
    panel.titleLabel.move(0, 0, 1, 1);
    EXPECT_TRUE(panel.positionObject(&panel.titleLabel));
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, widthOf(L"Server"), 17));
    panel.titleLabel.move(0, 0, 1, 1);
    OviAPI::MoveObject::MoveInit(&panel.titleLabel);
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, widthOf(L"Server"), 17));
}

TEST_F(TitledPanels, MovingItPlacesTheTitleAndThenLaysOutWhatIsInside)
{
    made().setTitle(L"Server");
    panel.layouts = 0;
    EXPECT_TRUE(panel.move(60, 70, 80, 90));
    EXPECT_EQ(panel.geometry(), placed(60, 70, 80, 90));
    EXPECT_EQ(panel.layouts, 1);
    EXPECT_EQ(panel.titleAtLayout, placed(65, 63, widthOf(L"Server"), 17));
}

TEST_F(TitledPanels, TheTitleIsShownHiddenAndDisabledWithThePanel)
{
    made();
    panel.show(false);
    EXPECT_FALSE(panel.isVisible());
    EXPECT_FALSE(panel.titleLabel.isVisible());
    panel.show(true);
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(panel.titleLabel.isVisible());
    panel.enable(false);
    EXPECT_FALSE(panel.titleLabel.isEnabled());
    panel.destroy();
    EXPECT_FALSE(panel.titleLabel.isCreated());
}

TEST_F(TitledPanels, ATitleGivenEarlyIsMeasuredWhenThePanelIsCreated)
{
    panel.setTitle(L"Server");
    EXPECT_EQ(panel.titleWidth, 0);
    panel.setParent(&form);
    panel.move(20, 30, 200, 100);
    ASSERT_TRUE(panel.create());
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, widthOf(L"Server"), 17));
}

TEST_F(TitledPanels, TheTitleFollowsAChangeOfTheFormsFont)
{
    made().setTitle(L"Server");
    const int before = panel.titleWidth;
    form.setSiblingsFont(&form, WExtForm::fkControls, {L"Helvetica", 20});
    EXPECT_GT(panel.titleWidth, before);
    EXPECT_EQ(panel.titleWidth, widthOf(L"Server"));
    EXPECT_EQ(panel.titleLabel.font().size(), 20);
    EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, panel.titleWidth, 17));
}

TEST_F(TitledPanels, TheFrameCanBeSeenAndTheTitleCoversItsLine)
{
    made().setTitle(L" ");
    panel.titleWidth = 40;
    panel.updateTitlePosition();
    UiDriver::showAndActivate(form);
    EXPECT_TRUE(isFrame(22, 30));
    EXPECT_TRUE(isFrame(150, 30));
    EXPECT_TRUE(isFrame(20, 100));
    EXPECT_TRUE(isFrame(150, 129));
    EXPECT_TRUE(isFrame(219, 100));
    for (const int x : {25, 40, 64})
        EXPECT_TRUE(isBackground(x, 30)) << x;
    EXPECT_TRUE(isFrame(65, 30));
    EXPECT_TRUE(isBackground(150, 80));
}

// Run at several scales of the screen: at 1.5 a panel may begin and end between two pixels.
TEST_F(TitledPanels, EverySideOfTheFrameIsSeenOnceWhereverThePanelStands)
{
    made();
    UiDriver::showAndActivate(form);
    for (const int shift : {0, 1, 2, 3}) {
        panel.move(20 + shift, 30 + shift, 101 - shift, 80 - shift);
        UiDriver::processEvents();
        EXPECT_EQ(linesInColumns(form, {50, 60, 70}), (std::vector<int>{2, 2, 2})) << shift;
        EXPECT_EQ(linesInRows(form, {60, 70, 80}), (std::vector<int>{2, 2, 2})) << shift;
    }
}

TEST_F(TitledPanels, TheTitleHasTheBackgroundOfTheParent)
{
    form.setBackColor(OviAPI::Color(10, 20, 30));
    made().setTitle(L" ");
    EXPECT_EQ(panel.titleLabel.backColor(), OviAPI::Color(10, 20, 30));
}

TEST_F(TitledPanels, AssistiveTechnologyReadsItAsAGroupOfThatName)
{
    made();
    EXPECT_FALSE(isAccessibleGroup(panel));
    panel.setTitle(L"Server");
    EXPECT_TRUE(isAccessibleGroup(panel));
    EXPECT_EQ(UiDriver::accessibleName(panel), L"Server");
}

TEST_F(TitledPanels, ItsTitleIsNotTakenForTheLabelOfAFieldBelow)
{
    OviAPI::WLineEdit edit;
    edit.setParent(&form);
    ASSERT_TRUE(edit.create());
    edit.move(25, 45, 100, 20);
    made().setTitle(L"Server");
    UiDriver::showAndActivate(form);
    EXPECT_EQ(UiDriver::accessibleName(edit), L"");
}

TEST_F(TitledPanels, TextsAndFontsOfAnySizeAreTaken)
{
    made().setTitle(std::wstring(10000, L'W').c_str());
    EXPECT_GT(panel.titleWidth, 10000);
    UiDriver::showAndActivate(form);
    panel.setTitle(L"two\nlines & one %s");
    for (const int size : {0, 1, 1000, INT_MAX, -1}) {
        panel.setFont({L"Helvetica", size});
        panel.move(20, 30, 200, 100);
        UiDriver::processEvents();
        EXPECT_EQ(panel.titleLabel.geometry(), placed(25, 23, panel.titleWidth, 17)) << size;
        EXPECT_EQ(panel.titleWidth, widthOf(L"two\nlines & one %s")) << size;
    }
}

TEST_F(TitledPanels, PlacesAtTheEdgeOfTheNumbersAreTaken)
{
    made().setTitle(L"Server");
    panel.move(INT_MAX - 100, INT_MAX - 100, INT_MAX, INT_MAX);
    EXPECT_EQ(panel.geometry().right, INT_MAX);
    panel.move(INT_MIN + 10, INT_MIN + 10, -5, -5);
    EXPECT_EQ(panel.width(), 0);
}
