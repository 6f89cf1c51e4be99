// Forms, dialogs and labels that are given what nobody should give them.
#include <climits>
#include <memory>

#include <gtest/gtest.h>

#include <oviapi/button.h>
#include <oviapi/lineedit.h>
#include <oviapi/memorydataset.h>
#include <oviapi/painter.h>
#include <oviapi/recordview.h>
#include <oviapi/systemmetrics.h>

#include "app/extstatic.h"
#include "tests/app/dialogs.h"
#include "tests/app/support.h"
#include "tests/support/uidriver.h"

namespace {

using OviAPI::Font;

const std::wstring longText(10000, L'W');

class OpenDialog : public YesNoConfirmDlg {
public:
    using YesNoConfirmDlg::message;
    using YesNoConfirmDlg::noButton;
    using YesNoConfirmDlg::rememberBox;
    using YesNoConfirmDlg::yesButton;
    using YesNoConfirmDlg::YesNoConfirmDlg;
};

// An application whose resource file holds no string.
class BareApplication : public testing::Test {
protected:
    BareApplication()
    {
        m_folders.writeResources(ResourceBuilder());
        m_app.ownRecord.initDefaults();
        m_app.initResourceManager();
    }

    TestFolders m_folders;
    TestApp m_app;
};

// A form with controls of the usual kinds and a grid.
class MixedForm : public WExtForm {
public:
    MixedForm()
    {
        move(0, 0, 400, 300);
        create();
        for (OviAPI::WVisualObject* child :
             std::initializer_list<OviAPI::WVisualObject*>{&button, &edit, &label, &view}) {
            child->setParent(this);
            child->create();
            child->move(10, top += 40, 200, 30);
        }
        button.setText(L"text");
        label.setText(L"text");
        data.AddColDef(new OviAPI::aCColumn(L"name", 1, 20, L"name", 0, 0, 0)); // owned by data
        data.AppendTexts({L"value"});
        view.SetDataSet(&data, true);
    }
    std::vector<int> sizes() const
    {
        return {button.font().size(), edit.font().size(), label.font().size(), view.font().size()};
    }

    OviAPI::aCMemoryDataSet data;
    OviAPI::WButton button;
    OviAPI::WLineEdit edit;
    WExtStatic label;
    OviAPI::aCRecordView view;
    int top = -40;
};

} // namespace

TEST_F(BareApplication, AConfirmationWithoutStringsHasEmptyLabelsAndStillAnswers)
{
    OpenDialog dialog(0, nullptr, L"?");
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.title(), L"");
    EXPECT_EQ(dialog.yesButton.text(), L"");
    EXPECT_EQ(dialog.noButton.text(), L"");
    EXPECT_EQ(dialog.rememberBox.text(), L"");
    UiDriver::later([&] { UiDriver::key(dialog, OviAPI::KeyEnter); });
    EXPECT_EQ(dialog.execModal(), 1);
}

TEST_F(BareApplication, AConfirmationWithoutResourcesForItsOwnIdsHasEmptyLabels)
{
    OpenDialog dialog(INT_MIN, nullptr, L"?", -1, INT_MAX, INT_MIN, 60003);
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.title(), L"");
    EXPECT_EQ(dialog.yesButton.text(), L"");
    EXPECT_EQ(dialog.noButton.text(), L"");
}

TEST_F(BareApplication, AQuestionOfTenThousandCharactersStaysInItsPlace)
{
    std::wstring words;
    while (words.size() < 10000)
        words += L"several words ";
    for (const std::wstring& text : {longText, words, std::wstring(10000, L'\n')}) {
        OpenDialog dialog(0, nullptr, text.c_str());
        ASSERT_TRUE(dialog.create());
        UiDriver::later([&] {
            UiDriver::processEvents();
            EXPECT_EQ(dialog.message.width(), 560);
            EXPECT_EQ(dialog.message.height(), 57);
            UiDriver::click(dialog.noButton);
        });
        EXPECT_EQ(dialog.execModal(), 0);
    }
}

TEST_F(BareApplication, AConfirmationTakesAFontOfAnySize)
{
    for (const int size : {0, -1, 1000, INT_MAX}) {
        m_app.ownRecord.FontControls = {L"Helvetica", size};
        OpenDialog dialog(0, nullptr, L"Really?");
        ASSERT_TRUE(dialog.create());
        UiDriver::later([&] { UiDriver::click(dialog.yesButton); });
        EXPECT_EQ(dialog.execModal(), 1) << size;
        EXPECT_EQ(dialog.yesButton.height(), 25);
    }
}

TEST_F(BareApplication, AConfirmationLargerThanTheScreenKeepsItsCornerOnIt)
{
    const OviAPI::Rect screen = OviAPI::SystemMetrics::getAvailableRect();
    OpenDialog dialog(0, nullptr, L"Really?");
    dialog.width = static_cast<int>(screen.width()) + 500;
    dialog.height = static_cast<int>(screen.height()) + 500;
    ASSERT_TRUE(dialog.create());
    EXPECT_EQ(dialog.x(), screen.left);
    EXPECT_EQ(dialog.y(), screen.top);
    EXPECT_EQ(dialog.clientWidth(), dialog.width);
    UiDriver::later([&] { UiDriver::key(dialog, OviAPI::KeyEscape); });
    EXPECT_EQ(dialog.execModal(), 0);
}

TEST_F(BareApplication, AConfirmationWithoutRoomIsCreatedAndCanBeClosed)
{
    OpenDialog dialog(0, nullptr, L"Really?");
    dialog.width = -10;
    dialog.height = 0;
    ASSERT_TRUE(dialog.create());
    UiDriver::later([&] { UiDriver::key(dialog, OviAPI::KeyEscape); });
    EXPECT_EQ(dialog.execModal(), 0);
}

TEST(BadInput, FontsOfAnySizeReachEveryControl)
{
    MixedForm form;
    UiDriver::showAndActivate(form);
    for (const int size : {0, -1, 1, 1000, INT_MAX, 9}) {
        const Font font(L"Helvetica", size);
        form.setSiblingsFont(&form, WExtForm::fkControls, font);
        form.setSiblingsFont(&form, WExtForm::fkRecordView, font);
        UiDriver::processEvents();
        EXPECT_EQ(form.sizes(), (std::vector<int>{size, size, size, size}));
    }
}

TEST(BadInput, AnEmptyFontGivesControlsThatOfTheirParent)
{
    MixedForm form;
    form.setFont({L"Helvetica", 13});
    form.setSiblingsFont(&form, WExtForm::fkControls, {L"Courier", 20});
    form.setSiblingsFont(&form, WExtForm::fkControls, Font());
    EXPECT_EQ(form.button.font().size(), 13);
    EXPECT_EQ(form.edit.font().name(), L"Helvetica");
}

TEST(BadInput, AFaceThatDoesNotExistIsKeptByName)
{
    MixedForm form;
    UiDriver::showAndActivate(form);
    form.setSiblingsFont(&form, WExtForm::fkControls, {longText, 10});
    UiDriver::processEvents();
    EXPECT_EQ(form.button.font().name(), longText);
}

TEST(BadInput, AnUnknownKindIsPassedOnAndChangesNothingBelowTheForm)
{
    MixedForm parent;
    MixedForm form;
    form.setParent(&parent);
    struct Listener : OviAPI::Object {
        OviAPI::SlotResult heard(OviAPI::Object*, WExtForm::FontKind kind, Font)
        {
            kinds.push_back(kind);
            return 0;
        }
        std::vector<int> kinds;
    } listener;
    OviAPI::connect<&WExtForm::onFontChanged>(form, listener, &Listener::heard);
    const std::vector<int> before = form.sizes();
    for (const int kind : {4, 100, -1, INT_MAX, INT_MIN})
        OviAPI::emit<&WExtForm::onFontChanged>(parent, static_cast<WExtForm::FontKind>(kind),
                                               Font(L"Courier", 30));
    EXPECT_EQ(form.sizes(), before);
    EXPECT_EQ(listener.kinds, (std::vector<int>{4, 100, -1, INT_MAX, INT_MIN}));
}

TEST(BadInput, IdsWithoutPicturesGiveNoIcon)
{
    const TempFolder folder;
    writeFile(folder.path() / "empty.rrs", ResourceBuilder().compiled());
    OviAPI::ResourceManager rm((folder.path() / "empty.rrs").wstring().c_str());
    for (const int id : {0, -1, -100, INT_MIN, INT_MAX, INT_MAX - 99}) {
        WExtForm form;
        form.init(id, &rm);
        EXPECT_TRUE(form.create()) << id;
    }
    OviAPI::ResourceManager missing(L"/nonexistent/file.rrs");
    WExtDialog dialog(7, &missing);
    EXPECT_TRUE(dialog.create());
}

TEST(BadInput, NullTextsAreEmptyOnes)
{
    WExtForm form;
    form.setTitle(nullptr);
    WExtStatic label;
    label.setText(nullptr);
    label.setParent(&form);
    ASSERT_TRUE(form.create());
    ASSERT_TRUE(label.create());
    label.setText(nullptr);
    EXPECT_EQ(label.text(), L"");
    EXPECT_EQ(form.title(), L"");
    wchar_t* none = nullptr;
    UiDriver::later([&] { form.closeModal(none); });
    EXPECT_EQ(form.execModal(), 0);
    EXPECT_EQ(form.modalText(), L"");
}

TEST(BadInput, TextsOfTenThousandCharactersAreTaken)
{
    MixedForm form;
    form.setTitle(longText.c_str());
    form.button.setText(longText.c_str());
    form.edit.setText(longText.c_str());
    form.label.setText(std::wstring(10000, L'\n').c_str());
    UiDriver::showAndActivate(form);
    UiDriver::processEvents();
    EXPECT_EQ(form.title().size(), longText.size());
    EXPECT_EQ(form.edit.text(), longText);
    EXPECT_EQ(form.button.width(), 200);
    wchar_t end[] = L"end";
    UiDriver::later([&] { form.closeModal(end); });
    EXPECT_EQ(form.execModal(), 1);
}

TEST(BadInput, ClosingAFormThatIsNotModalHidesIt)
{
    WExtForm form;
    form.closeModal(1);
    ASSERT_TRUE(form.create());
    form.show(true);
    form.closeModal(1);
    form.closeModal(2);
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(form.isModal());
}

TEST(BadInput, ALabelWithAFontOfAnySizeIsAsLargeAsItsText)
{
    WExtForm form;
    form.move(0, 0, 400, 300);
    ASSERT_TRUE(form.create());
    WExtStatic label;
    label.setParent(&form);
    ASSERT_TRUE(label.create());
    UiDriver::showAndActivate(form);
    for (const int size : {1, 1000, 0, -1}) {
        label.setFont({L"Helvetica", size});
        label.setText(L"text");
        UiDriver::processEvents();
        EXPECT_EQ(label.width(), OviAPI::GetTextSize(label.font(), L"text").width) << size;
    }
}
