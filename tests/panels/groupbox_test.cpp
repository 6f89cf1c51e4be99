#include "panels/groupbox.h"

#include <climits>
#include <cwchar>

#include <oviapi/painter.h>

#include "tests/panels/inspect.h"
#include "tests/panels/panelform.h"

namespace {

class OpenBox : public GroupBox {
public:
    using GroupBox::caption;
    using GroupBox::fontChanged;
    using GroupBox::shift;
};

class GroupBoxes : public PanelForm {
protected:
    // With a font of 10 points: moved half of that down.
    OpenBox& made()
    {
        box.setParent(&form);
        EXPECT_TRUE(box.create());
        box.move(10, 20, 200, 100);
        return box;
    }

    OpenBox box;
};

} // namespace

TEST_F(GroupBoxes, ItStartsWithoutAShift)
{
    EXPECT_EQ(box.shift, 0);
    EXPECT_FALSE(box.fontChanged);
    box.setParent(&form);
    ASSERT_TRUE(box.create());
    EXPECT_EQ(box.shift, 5);
    EXPECT_FALSE(box.fontChanged);
}

TEST_F(GroupBoxes, TheCaptionStandsAtTheTopAndThePanelHalfTheFontBelow)
{
    made();
    EXPECT_EQ(box.caption.geometry(), placed(15, 20, 70, 11));
    EXPECT_EQ(box.geometry(), placed(10, 25, 200, 95));
    EXPECT_TRUE(box.doMove(40, 50, 90, 60));
    EXPECT_EQ(box.caption.geometry(), placed(45, 50, 70, 11));
    EXPECT_EQ(box.geometry(), placed(40, 55, 90, 55));
}

TEST_F(GroupBoxes, HalfTheFontSizeRoundsDown)
{
    box.setFont({L"Helvetica", 13});
    made();
    EXPECT_EQ(box.shift, 6);
    EXPECT_EQ(box.caption.geometry(), placed(16, 20, 70, 13));
    EXPECT_EQ(box.geometry(), placed(10, 26, 200, 94));
}

TEST_F(GroupBoxes, AnotherFontLeavesThePanelAndMovesTheCaption)
{
    made().setFont({L"Helvetica", 20});
    EXPECT_EQ(box.shift, 10);
    EXPECT_EQ(box.geometry(), placed(10, 25, 200, 95));
    EXPECT_EQ(box.caption.geometry(), placed(20, 15, 70, 21));
    EXPECT_EQ(box.font().size(), 20);
    EXPECT_EQ(box.caption.font().size(), 20);
    EXPECT_FALSE(box.fontChanged) << "for one move only";
    box.move(10, 20, 200, 100);
    EXPECT_EQ(box.geometry(), placed(10, 30, 200, 90));
    EXPECT_EQ(box.caption.geometry(), placed(20, 20, 70, 21));
}

TEST_F(GroupBoxes, AFontOfTheFormReachesPanelAndCaption)
{
    made();
    form.setSiblingsFont(&form, WExtForm::fkControls, {L"Helvetica", 20});
    EXPECT_EQ(box.shift, 10);
    EXPECT_EQ(box.geometry(), placed(10, 25, 200, 95));
    EXPECT_EQ(box.caption.geometry(), placed(20, 15, 70, 21));
}

// Kept: dialogs are laid out for captions of this width.
TEST_F(GroupBoxes, KeptACaptionIs70PixelsWideWhateverItsText)
{
    made();
    UiDriver::showAndActivate(form);
    for (const wchar_t* text : {L"A caption that is longer than its room", L"i", L""}) {
        box.setText(text);
        box.move(10, 20, 200, 100);
        EXPECT_EQ(box.caption.geometry(), placed(15, 20, 70, 11)) << text;
        UiDriver::processEvents();
        EXPECT_EQ(box.caption.width(), 70) << text;
    }
}

TEST_F(GroupBoxes, APaintedCaptionIsAsHighAsItsText)
{
    made().setText(L"Engine");
    UiDriver::showAndActivate(form);
    UiDriver::processEvents();
    EXPECT_EQ(box.caption.height(), OviAPI::GetTextSize(box.font(), L"Engine").height);
    EXPECT_EQ(box.caption.y(), 20);
}

TEST_F(GroupBoxes, TheFrameCanBeSeenAndTheCaptionCoversItsLine)
{
    made().setText(L" ");
    UiDriver::showAndActivate(form);
    EXPECT_TRUE(isFrame(12, 25));
    EXPECT_TRUE(isFrame(150, 25));
    EXPECT_TRUE(isFrame(10, 80));
    EXPECT_TRUE(isFrame(150, 119));
    EXPECT_TRUE(isFrame(209, 80));
    for (const int x : {15, 50, 84})
        EXPECT_TRUE(isBackground(x, 25)) << x;
    EXPECT_TRUE(isFrame(85, 25));
}

TEST_F(GroupBoxes, PanelAndCaptionBelongTogether)
{
    made();
    EXPECT_EQ(box.caption.parent(), &form);
    EXPECT_EQ(form.firstChild(), &box.caption);
    box.show(false);
    EXPECT_FALSE(box.isVisible());
    EXPECT_FALSE(box.caption.isVisible());
    box.show(true);
    EXPECT_TRUE(box.caption.isVisible());
    box.enable(false);
    EXPECT_FALSE(box.caption.isEnabled());
    WExtForm other;
    ASSERT_TRUE(other.create());
    box.setParent(&other);
    EXPECT_EQ(box.parent(), &other);
    EXPECT_EQ(box.caption.parent(), &other);
    box.destroy();
    EXPECT_FALSE(box.caption.isCreated());
}

TEST_F(GroupBoxes, ItIsNotCreatedInsideAParentThatIsNot)
{
    WExtForm later;
    box.setParent(&later);
    EXPECT_FALSE(box.create());
    EXPECT_FALSE(box.isCreated());
    EXPECT_FALSE(box.caption.isCreated());
}

TEST_F(GroupBoxes, ItsTextIsThatOfTheCaption)
{
    wchar_t text[4] = L"";
    box.setText(L"Engine");
    box.getText(text, 4);
    EXPECT_STREQ(text, L"Eng");
    box.setText(nullptr);
    box.getText(text, 4);
    EXPECT_STREQ(text, L"");
    box.getText(nullptr, 4);
    box.getText(text, 0);
}

TEST_F(GroupBoxes, AssistiveTechnologyReadsItAsAGroupOfThatName)
{
    made();
    EXPECT_FALSE(isAccessibleGroup(box));
    box.setText(L"Engine");
    EXPECT_TRUE(isAccessibleGroup(box));
    EXPECT_EQ(UiDriver::accessibleName(box), L"Engine");
}

TEST_F(GroupBoxes, TextsAndFontsOfAnySizeAreTaken)
{
    made().setText(std::wstring(10000, L'W').c_str());
    UiDriver::showAndActivate(form);
    EXPECT_EQ(box.caption.width(), 70);
    struct Case {
        int size;
        int shift;
    };
    for (const Case& each : {Case{0, 0}, {1000, 500}, {INT_MAX, INT_MAX / 2}, {-9, 0}}) {
        box.setFont({L"Helvetica", each.size});
        EXPECT_EQ(box.shift, each.shift);
        box.move(10, 20, 200, 100);
        UiDriver::processEvents();
        EXPECT_EQ(box.y(), 20 + each.shift);
        EXPECT_EQ(box.height(), std::max(0, 100 - each.shift));
    }
}
