// Forms, dialogs, panels and labels: icons, fonts, keys, modal loops.
#include "app/extform.h"

#include <memory>

#include <gtest/gtest.h>

#include <oviapi/button.h>
#include <oviapi/lineedit.h>
#include <oviapi/painter.h>
#include <oviapi/panel.h>
#include <oviapi/recordview.h>
#if __has_include(<oviapi/srcedit.h>) && __has_include(<oviapi/treeview.h>)
#define HAS_TREES_AND_EDITORS 1
#include <oviapi/srcedit.h>
#include <oviapi/treeview.h>
#endif

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
    std::vector<Font> controls() const { return {panel.font(), button.font(), edit.font()}; }
    std::vector<Font> views() const { return {outerView.font(), view.font()}; }

    const Font before{L"Helvetica", 9};
    OviAPI::WPanel panel;
    OviAPI::WButton button;
    OviAPI::WLineEdit edit;
    OviAPI::aCRecordView outerView;
    OviAPI::aCRecordView view;
    OviAPI::WButton insideView;
};

const Font changed{L"Courier", 17};

bool all(const std::vector<Font>& fonts, const Font& font)
{
    return std::all_of(fonts.begin(), fonts.end(), [&](const Font& f) { return f == font; });
}

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
    const TempFolder folder;
    const auto rm = iconResources(folder, {7, 107});
    IconForm form;
    form.make(7, rm.get());
    EXPECT_EQ(form.formId, 7);
    EXPECT_EQ(form.icons(), (Widths{16, 32}));
}

TEST(ExtForm, WithoutTheLargeIconTheSmallOneServesForBoth)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, {7});
    IconForm form;
    form.make(7, rm.get());
    EXPECT_EQ(form.icons(), (Widths{16}));
}

TEST(ExtForm, WithoutTheSmallIconTheLargeOneServesForBoth)
{
    const TempFolder folder;
    const auto rm = iconResources(folder, {107});
    IconForm form;
    form.make(7, rm.get());
    EXPECT_EQ(form.icons(), (Widths{32}));
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
    form.setSiblingsFont(&form, WExtForm::fkControls, changed);
    EXPECT_TRUE(all(form.controls(), changed));
    EXPECT_TRUE(all(form.views(), form.before));
    EXPECT_EQ(form.insideView.font(), form.before);
}

TEST(ExtForm, AFontOfRecordViewsReachesGridsOnly)
{
    FontForm form;
    form.setSiblingsFont(&form, WExtForm::fkRecordView, changed);
    EXPECT_TRUE(all(form.views(), changed));
    EXPECT_TRUE(all(form.controls(), form.before));
}

TEST(ExtForm, AFontOfTreesOrEditorsLeavesGridsAndControls)
{
    FontForm form;
    form.setSiblingsFont(&form, WExtForm::fkTree, changed);
    form.setSiblingsFont(&form, WExtForm::fkEdit, changed);
    EXPECT_TRUE(all(form.controls(), form.before));
    EXPECT_TRUE(all(form.views(), form.before));
}

#ifdef HAS_TREES_AND_EDITORS
namespace {

class TreeForm : public FontForm {
public:
    TreeForm()
    {
        add(outerTree, *this);
        add(tree, panel);
        add(outerEditor, *this);
        add(editor, panel);
    }
    std::vector<Font> trees() const { return {outerTree.font(), tree.font()}; }
    std::vector<Font> editors() const { return {outerEditor.font(), editor.font()}; }

    OviAPI::WTreeView outerTree;
    OviAPI::WTreeView tree;
    OviAPI::CSrcEdit outerEditor;
    OviAPI::CSrcEdit editor;
};

} // namespace

TEST(ExtForm, AFontOfTreesReachesTreesOnly)
{
    TreeForm form;
    form.setSiblingsFont(&form, WExtForm::fkTree, changed);
    EXPECT_TRUE(all(form.trees(), changed));
    EXPECT_TRUE(all(form.editors(), form.before));
    EXPECT_TRUE(all(form.controls(), form.before));
}

TEST(ExtForm, AFontOfEditorsReachesEditorsOnly)
{
    TreeForm form;
    form.setSiblingsFont(&form, WExtForm::fkEdit, changed);
    EXPECT_TRUE(all(form.editors(), changed));
    EXPECT_TRUE(all(form.trees(), form.before));
    EXPECT_TRUE(all(form.controls(), form.before));
}

TEST(ExtForm, AFontOfControlsReachesEditorsAndLeavesTrees)
{
    TreeForm form;
    form.setSiblingsFont(&form, WExtForm::fkControls, changed);
    EXPECT_TRUE(all(form.editors(), changed));
    EXPECT_TRUE(all(form.trees(), form.before));
}
#endif

TEST(ExtForm, AFontOfAnUnknownKindReachesNothing)
{
    FontForm form;
    for (const int kind : {4, -1, 2147483647})
        form.setSiblingsFont(&form, static_cast<WExtForm::FontKind>(kind), changed);
    form.setSiblingsFont(nullptr, WExtForm::fkControls, changed);
    EXPECT_TRUE(all(form.controls(), form.before));
    EXPECT_TRUE(all(form.views(), form.before));
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
    EXPECT_TRUE(all(middle.controls(), changed));
    EXPECT_TRUE(all(bottom.controls(), changed));
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
    WExtForm form;
    WExtStatic label;
    label.setParent(&form);
    form.move(0, 0, 400, 200);
    ASSERT_TRUE(form.create());
    ASSERT_TRUE(label.create());
    label.setFont({L"Helvetica", 12});
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
    WExtForm form;
    WExtStatic label;
    label.setParent(&form);
    form.move(0, 0, 400, 200);
    ASSERT_TRUE(form.create());
    ASSERT_TRUE(label.create());
    label.setFont({L"Helvetica", 12});
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
