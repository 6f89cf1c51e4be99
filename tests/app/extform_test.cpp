// Forms, dialogs, panels and labels: icons, fonts, keys, modal loops.
#include "app/extform.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <oviapi/button.h>
#include <oviapi/lineedit.h>
#include <oviapi/painter.h>
#include <oviapi/panel.h>
#include <oviapi/recordview.h>
#include <oviapi/srcedit.h>
#include <oviapi/treeview.h>

#include "app/connectedform.h"
#include "app/extdialog.h"
#include "app/extpanel.h"
#include "app/extstatic.h"
#include "tests/app/support.h"
#include "tests/app/windowicons.h"
#include "tests/support/uidriver.h"

namespace {

using OviAPI::Font;

using Widths = std::vector<int>;

const Font changed{L"Courier", 17};

class IconForm : public WExtForm {
public:
    void make(int id, OviAPI::ResourceManager* rm)
    {
        init(id, rm);
        setTitle(L"form with icons");
        ASSERT_TRUE(create());
    }
    // Of the icons that the window has; one that serves for both is there once.
    Widths icons() const { return iconWidths(title()); }
    using WExtForm::formId;
};

// Controls beside and inside a panel, and a control inside a record view.
class FontForm : public WExtForm {
public:
    FontForm()
    {
        create();
        add(panel, *this);
        add(button, *this);
        add(outerView, *this);
        add(edit, panel);
        add(view, panel);
        add(insideView, view);
    }
    void add(OviAPI::WVisualObject& object, OviAPI::Container& parent)
    {
        object.setParent(&parent);
        object.create();
        object.setFont(before);
    }
    // Controls that are to have one font.
    struct Group {
        std::string name;
        std::vector<Font> fonts;
        bool all(const Font& font) const
        {
            return std::all_of(fonts.begin(), fonts.end(),
                               [&](const Font& f) { return f == font; });
        }
    };
    virtual std::vector<Group> groups() const
    {
        return {{"controls", {panel.font(), button.font(), edit.font()}},
                {"views", {outerView.font(), view.font()}}};
    }
    // The names of the groups that have the font wholly; the others have kept theirs.
    std::string groupsWith(const Font& font) const
    {
        std::string names;
        for (const Group& group : groups()) {
            if (group.all(font))
                names += (names.empty() ? "" : " ") + group.name;
            else
                EXPECT_TRUE(group.all(before)) << group.name;
        }
        return names;
    }
    // The groups that a change of font of the kind reaches.
    std::string reachedBy(WExtForm::FontKind kind)
    {
        setSiblingsFont(this, kind, changed);
        return groupsWith(changed);
    }

    const Font before{L"Helvetica", 9};
    OviAPI::WPanel panel;
    OviAPI::WButton button;
    OviAPI::WLineEdit edit;
    OviAPI::aCRecordView outerView;
    OviAPI::aCRecordView view;
    OviAPI::WButton insideView;
};

// Counts the font changes that it hears of.
struct Listener : OviAPI::Object {
    OviAPI::SlotResult heard(OviAPI::Object*, WExtForm::FontKind kind, Font font)
    {
        kinds.push_back(kind);
        last = font;
        return 0;
    }
    std::vector<int> kinds;
    Font last;
};

struct ClosingDialog : WExtDialog {
    ClosingDialog()
        : WExtDialog(0, nullptr)
    {
    }
    bool onClose() override
    {
        ++closes;
        return true;
    }
    int closes = 0;
};

struct LabelForm : WExtForm {
    LabelForm()
    {
        label.setParent(this);
        move(0, 0, 400, 200);
        EXPECT_TRUE(create());
        EXPECT_TRUE(label.create());
        label.setFont({L"Helvetica", 12});
    }
    WExtStatic label;
};

std::unique_ptr<OviAPI::ResourceManager> iconResources(const TempFolder& folder,
                                                       std::initializer_list<uint32_t> ids)
{
    ResourceBuilder builder;
    for (const uint32_t id : ids)
        builder.addPicture(id, id < 100 ? 16 : 32);
    const auto path = folder.path() / "icons.rrs";
    writeFile(path, builder.compiled());
    return std::make_unique<OviAPI::ResourceManager>(path.wstring().c_str());
}

// The icons of a form with the id 7 and these pictures in its resources.
Widths iconsOfForm7(std::initializer_list<uint32_t> ids)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, ids);
    IconForm form;
    form.make(7, rm.get());
    EXPECT_EQ(form.formId, 7);
    return form.icons();
}

} // namespace

TEST(CharsetIndicator, AManagerThatIsNotOwnedIsNeverDeleted)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, {});
    qdCharsetIndicator indicator(rm.get());
    EXPECT_EQ(indicator.getResource(), rm.get());
    indicator.setResource(nullptr, true);
    EXPECT_EQ(indicator.getResource(), nullptr);
    EXPECT_FALSE(rm->failed());
    EXPECT_EQ(indicator.onCharsetChanged(nullptr, nullptr).value, 0);
}

TEST(CharsetIndicator, AnOwnedManagerIsDeletedOnlyWhenAskedFor)
{
    struct Owner : qdCharsetIndicator {
        void own(OviAPI::ResourceManager* rm)
        {
            resource = rm;
            ownsResource = true;
        }
        bool owns() const { return ownsResource; }
    } owner;
    auto* first = new OviAPI::ResourceManager(L""); // deleted by the owner
    owner.own(first);
    owner.setResource(nullptr, true);
    EXPECT_FALSE(owner.owns());
    const auto second = std::make_unique<OviAPI::ResourceManager>(L"");
    owner.own(second.get());
    owner.setResource(nullptr, false);
    EXPECT_FALSE(owner.owns());
    EXPECT_TRUE(second->failed());
}

TEST(ExtForm, WithoutAnIdOrResourcesItIsCreatedWithoutAnIcon)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, {7, 107});
    IconForm none;
    none.make(7, nullptr);
    EXPECT_EQ(none.icons(), Widths());
    none.destroy();
    IconForm zero;
    zero.make(0, rm.get());
    EXPECT_EQ(zero.icons(), Widths());
    EXPECT_EQ(zero.getResource(), rm.get());
}

TEST(ExtForm, BothIconsAreThoseOfTheResources)
{
    EXPECT_EQ(iconsOfForm7({7, 107}), (Widths{16, 32}));
}

TEST(ExtForm, WithoutTheLargeIconTheSmallOneServesForBoth)
{
    EXPECT_EQ(iconsOfForm7({7}), (Widths{16}));
}

TEST(ExtForm, WithoutTheSmallIconTheLargeOneServesForBoth)
{
    EXPECT_EQ(iconsOfForm7({107}), (Widths{32}));
}

TEST(ExtForm, WithoutEitherPictureTheIconsAreTakenAway)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, {7, 107});
    IconForm form;
    form.make(7, rm.get());
    form.loadIcon(8);
    EXPECT_EQ(form.icons(), Widths());
    form.loadIcon(7);
    form.loadIcon(2147483647);
    EXPECT_EQ(form.icons(), Widths());
}

TEST(ExtForm, AFontOfControlsReachesControlsAndLeavesGridsAndTrees)
{
    FontForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkControls), "controls");
    EXPECT_EQ(form.insideView.font(), form.before);
}

TEST(ExtForm, AFontOfRecordViewsReachesGridsOnly)
{
    FontForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkRecordView), "views");
}

TEST(ExtForm, AFontOfTreesOrEditorsLeavesGridsAndControls)
{
    FontForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkTree), "");
    EXPECT_EQ(form.reachedBy(WExtForm::fkEdit), "");
}

namespace {

class TreeForm : public FontForm {
public:
    TreeForm()
    {
        add(outerTree, *this);
        add(tree, panel);
    }
    std::vector<Group> groups() const override
    {
        auto all = FontForm::groups();
        all.push_back({"trees", {outerTree.font(), tree.font()}});
        return all;
    }

    OviAPI::WTreeView outerTree;
    OviAPI::WTreeView tree;
};

} // namespace

TEST(ExtForm, AFontOfTreesReachesTreesOnly)
{
    TreeForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkTree), "trees");
}

TEST(ExtForm, AFontOfControlsLeavesTrees)
{
    TreeForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkControls), "controls");
}

namespace {

class EditorForm : public TreeForm {
public:
    EditorForm()
    {
        add(outerEditor, *this);
        add(editor, panel);
    }
    std::vector<Group> groups() const override
    {
        auto all = TreeForm::groups();
        all.push_back({"editors", {outerEditor.font(), editor.font()}});
        return all;
    }

    OviAPI::CSrcEdit outerEditor;
    OviAPI::CSrcEdit editor;
};

} // namespace

TEST(ExtForm, AFontOfEditorsReachesEditorsOnly)
{
    EditorForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkEdit), "editors");
}

TEST(ExtForm, AFontOfControlsLeavesEditorsAndTrees)
{
    EditorForm form;
    EXPECT_EQ(form.reachedBy(WExtForm::fkControls), "controls");
}

TEST(ExtForm, AFontOfAnUnknownKindReachesNothing)
{
    FontForm form;
    for (const int kind : {4, -1, 2147483647})
        form.setSiblingsFont(&form, static_cast<WExtForm::FontKind>(kind), changed);
    form.setSiblingsFont(nullptr, WExtForm::fkControls, changed);
    EXPECT_EQ(form.groupsWith(changed), "");
}

TEST(ExtForm, AFontChangeGoesDownToTheFormsOpenedFromIt)
{
    WExtForm top;
    FontForm middle;
    FontForm bottom;
    middle.setParent(&top);
    bottom.setParent(&middle);
    Listener listener;
    OviAPI::connect<&WExtForm::onFontChanged>(bottom, listener, &Listener::heard);
    top.setFont(changed);
    OviAPI::emit<&WExtForm::onFontChanged>(top, WExtForm::fkControls, changed);
    EXPECT_EQ(middle.groupsWith(changed), "controls");
    EXPECT_EQ(bottom.groupsWith(changed), "controls");
    EXPECT_EQ(listener.kinds, (std::vector<int>{WExtForm::fkControls}));
    EXPECT_EQ(listener.last, changed);
}

TEST(ExtForm, AFormTakesItsParentsFontForItsControlsAndNotTheOneGiven)
{
    WExtForm parent;
    WExtForm child;
    child.setParent(&parent);
    parent.setFont({L"Helvetica", 21});
    child.setFont({L"Helvetica", 5});
    EXPECT_TRUE(child.onFontChanged(WExtForm::fkTree, changed));
    EXPECT_EQ(child.font().size(), 5);
    EXPECT_TRUE(child.onFontChanged(WExtForm::fkControls, changed));
    EXPECT_EQ(child.font().size(), 21);
    WExtForm alone;
    alone.setFont({L"Helvetica", 5});
    EXPECT_TRUE(alone.onFontChanged(WExtForm::fkControls, changed));
    EXPECT_EQ(alone.font().size(), 5);
}

TEST(ExtForm, AFormThatChangesItsParentFollowsTheNewOneOnly)
{
    WExtForm first;
    WExtForm second;
    WExtForm child;
    Listener listener;
    OviAPI::connect<&WExtForm::onFontChanged>(child, listener, &Listener::heard);
    child.setParent(&first);
    child.setParent(&first);
    OviAPI::emit<&WExtForm::onFontChanged>(first, WExtForm::fkTree, changed);
    EXPECT_EQ(listener.kinds.size(), 1U);
    child.setParent(&second);
    OviAPI::emit<&WExtForm::onFontChanged>(first, WExtForm::fkTree, changed);
    EXPECT_EQ(listener.kinds.size(), 1U);
    OviAPI::emit<&WExtForm::onFontChanged>(second, WExtForm::fkTree, changed);
    EXPECT_EQ(listener.kinds.size(), 2U);
}

TEST(ExtForm, AFormMayOutliveItsParent)
{
    WExtForm child;
    {
        WExtForm parent;
        child.setParent(&parent);
    }
    EXPECT_EQ(child.parent(), nullptr);
    EXPECT_TRUE(child.create());
}

TEST(ExtForm, ClosingAModalFormHidesItAndGivesItsResult)
{
    WExtForm form;
    ASSERT_TRUE(form.create());
    UiDriver::later([&] {
        form.closeModal(42);
        EXPECT_FALSE(form.isVisible());
    });
    EXPECT_EQ(form.execModal(), 42);
    wchar_t text[] = L"chosen";
    UiDriver::later([&] { form.closeModal(text); });
    EXPECT_EQ(form.execModal(), 1);
    EXPECT_EQ(form.modalText(), L"chosen");
}

TEST(ExtForm, TheFrameworksNotificationCarriesTheFormsResources)
{
    struct Reloading : WExtForm {
        OviAPI::SlotResult onCharsetChanged(OviAPI::Object*, OviAPI::ResourceManager* rm) override
        {
            seen = rm;
            return 0;
        }
        using WExtForm::onCharsetChanged;
        OviAPI::ResourceManager* seen = nullptr;
    } form;
    const TempFolder folder;
    const auto rm = iconResources(folder, {});
    form.init(0, rm.get());
    OviAPI::Application::instance()->notifyCharsetChanged();
    EXPECT_EQ(form.seen, rm.get());
}

TEST(ExtDialog, EscapeClosesItAsTheCloseBoxDoes)
{
    ClosingDialog dialog;
    ASSERT_TRUE(dialog.create());
    UiDriver::later([&] { UiDriver::key(dialog, OviAPI::KeyEscape); });
    EXPECT_EQ(dialog.execModal(), 0);
    EXPECT_EQ(dialog.closes, 1);
    EXPECT_FALSE(dialog.isVisible());
}

TEST(ExtDialog, OtherKeysDoNothing)
{
    ClosingDialog dialog;
    ASSERT_TRUE(dialog.create());
    UiDriver::showAndActivate(dialog);
    for (const int key : {OviAPI::KeyEnter, OviAPI::KeySpace, OviAPI::KeyA, OviAPI::KeyTab})
        UiDriver::key(dialog, key);
    EXPECT_EQ(dialog.closes, 0);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.onDialogKeyDown(&dialog, OviAPI::KeyEnter).value, 0);
    EXPECT_EQ(dialog.onDialogKeyDown(&dialog, OviAPI::KeyEscape).value, 0);
    EXPECT_EQ(dialog.closes, 1);
}

TEST(ExtDialog, EscapeReachesItFromAControlInside)
{
    ClosingDialog dialog;
    OviAPI::WButton button;
    button.setParent(&dialog);
    ASSERT_TRUE(dialog.create());
    ASSERT_TRUE(button.create());
    button.setFocus();
    UiDriver::later([&] { UiDriver::key(button, OviAPI::KeyEscape); });
    EXPECT_EQ(dialog.execModal(), 0);
    EXPECT_EQ(dialog.closes, 1);
}

TEST(ExtDialog, ItKeepsItsIdAndResources)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, {7, 107});
    WExtDialog dialog(7, rm.get());
    dialog.setTitle(L"dialog with icons");
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.getResource(), rm.get());
    EXPECT_EQ(iconWidths(dialog.title()), (Widths{16, 32}));
}

TEST(ExtConnectedForm, ItKeepsItsConnectionAndCanAlwaysStop)
{
    int place = 0;
    auto* connection = reinterpret_cast<DorCPP::DorConnect*>(&place); // never looked into
    WExtConnectedForm form(5, nullptr, connection);
    EXPECT_EQ(form.getConnect(), connection);
    EXPECT_TRUE(form.StopAsync(true));
    EXPECT_TRUE(form.StopAsync(false));
    EXPECT_EQ(WExtConnectedForm().getConnect(), nullptr);
}

TEST(ExtPanel, ItsCharsetNotificationDoesNothing)
{
    WExtPanel panel;
    EXPECT_EQ(panel.onCharsetChanged(nullptr).value, 0);
}

TEST(ExtStatic, ItGrowsAndShrinksWithItsText)
{
    LabelForm form;
    WExtStatic& label = form.label;
    label.move(10, 20, 1, 1);
    UiDriver::showAndActivate(form);
    const auto widthOf = [&](const wchar_t* text) {
        label.setText(text);
        UiDriver::processEvents();
        EXPECT_EQ(label.x(), 10);
        EXPECT_EQ(label.y(), 20);
        EXPECT_EQ(label.width(), OviAPI::GetTextSize(label.font(), text).width) << text;
        return label.width();
    };
    const int medium = widthOf(L"medium text");
    EXPECT_GT(widthOf(L"a text that is much longer"), medium);
    EXPECT_LT(widthOf(L"short"), medium);
    EXPECT_EQ(widthOf(L""), 0);
    EXPECT_EQ(widthOf(L"medium text"), medium);
}

TEST(ExtStatic, ItMeasures255CharactersAtMost)
{
    LabelForm form;
    WExtStatic& label = form.label;
    UiDriver::showAndActivate(form);
    const auto widthOf = [&](size_t n) {
        label.setText(std::wstring(n, L'x').c_str());
        UiDriver::processEvents();
        return label.width();
    };
    const int limit = widthOf(255);
    EXPECT_LT(widthOf(254), limit);
    EXPECT_EQ(widthOf(256), limit);
    EXPECT_EQ(widthOf(100000), limit);
}

TEST(ExtStatic, WithoutADeviceItPaintsNothing)
{
    WExtStatic label;
    label.setText(L"text");
    const OviAPI::Rect before = label.geometry();
    OviAPI::PaintDevice none;
    EXPECT_FALSE(label.doPaint(&none));
    EXPECT_EQ(label.geometry(), before);
}
