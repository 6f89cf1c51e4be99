#include "panels/hideabletitledpanel.h"

#include "tests/app/support.h"
#include "tests/panels/panelform.h"

namespace {

constexpr int pictureNumber = 7;

class OpenPanel : public HideableTitledPanel {
public:
    using HideableTitledPanel::HideableTitledPanel;
    using HideableTitledPanel::hideButton;
    using HideableTitledPanel::pictureId;
    using HideableTitledPanel::titleLabel;
};

class HideablePanels : public PanelForm {
protected:
    HideablePanels()
    {
        ResourceBuilder builder;
        builder.addPicture(pictureNumber, 16);
        writeFile(folder.path() / "panel.rrs", builder.compiled());
        rm = std::make_unique<OviAPI::ResourceManager>(
            (folder.path() / "panel.rrs").wstring().c_str());
    }
    OpenPanel& made(OpenPanel& panel)
    {
        panel.setParent(&form);
        EXPECT_TRUE(panel.create());
        panel.move(20, 30, 100, 80);
        return panel;
    }
    // Counts pushes.
    struct Counter : OviAPI::Object {
        OviAPI::SlotResult count(OviAPI::Object*)
        {
            ++pushes;
            return 0;
        }
        int pushes = 0;
    };

    TempFolder folder;
    std::unique_ptr<OviAPI::ResourceManager> rm;
};

} // namespace

TEST_F(HideablePanels, ItsButtonStandsInTheLowerRightCorner)
{
    OpenPanel panel(rm.get(), pictureNumber);
    made(panel).setTitle(L"More");
    EXPECT_EQ(panel.hideButton.parent(), &panel);
    EXPECT_EQ(panel.hideButton.geometry(), placed(70, 50, 25, 25));
    EXPECT_EQ(panel.titleLabel.y(), 23);
    panel.move(0, 10, 300, 200);
    EXPECT_EQ(panel.hideButton.geometry(), placed(270, 170, 25, 25));
    EXPECT_EQ(panel.titleLabel.y(), 3);
}

TEST_F(HideablePanels, ItsButtonIsAnOrdinaryOneWithThePictureInThePanelsFont)
{
    OpenPanel panel(rm.get(), pictureNumber);
    panel.setFont({L"Courier", 9});
    made(panel);
    EXPECT_EQ(panel.pictureId, pictureNumber);
    EXPECT_EQ(panel.hideButton.style(), 6);
    EXPECT_EQ(panel.hideButton.picture().width(), 16);
    EXPECT_EQ(panel.hideButton.font(), panel.font());
    UiDriver::showAndActivate(form);
    EXPECT_EQ(UiDriver::pixel(panel.hideButton, 12, 12), 0xFFFF0000U);
}

TEST_F(HideablePanels, WhatItsButtonDoesIsTheApplications)
{
    OpenPanel panel(rm.get(), pictureNumber);
    made(panel);
    Counter counter;
    OviAPI::connect<&OviAPI::WButton::onPush>(panel.button(), counter, &Counter::count);
    UiDriver::showAndActivate(form);
    UiDriver::click(panel.button());
    EXPECT_EQ(counter.pushes, 1);
    EXPECT_TRUE(panel.isVisible());
}

TEST_F(HideablePanels, WithoutAPictureTheButtonIsEmpty)
{
    for (const int id : {0, -1, 8, 2147483647}) {
        OpenPanel panel(rm.get(), id);
        made(panel);
        EXPECT_TRUE(panel.hideButton.isCreated());
        EXPECT_TRUE(panel.hideButton.picture().isNull());
    }
    OpenPanel panel(nullptr, pictureNumber);
    made(panel);
    EXPECT_TRUE(panel.hideButton.picture().isNull());
}

TEST_F(HideablePanels, APanelSmallerThanItsButtonKeepsItOutside)
{
    OpenPanel panel(rm.get(), pictureNumber);
    made(panel);
    panel.move(20, 30, 10, 10);
    EXPECT_EQ(panel.hideButton.geometry(), placed(-20, -20, 25, 25));
}

TEST_F(HideablePanels, ItIsNotCreatedInsideAParentThatIsNot)
{
    WExtForm later;
    OpenPanel panel(rm.get(), pictureNumber);
    panel.setParent(&later);
    EXPECT_FALSE(panel.create());
    EXPECT_FALSE(panel.hideButton.isCreated());
}
