#include "app/yesnoconfirmdlg.h"

#include <oviapi/application.h>
#include <oviapi/moveobject.h>

#include "app/extapp.h"

namespace {

constexpr int textSize = 4096; // wide characters

// Strings of the application object.
enum StringId : int {
    TitleText = 60003,
    YesText = 60013,
    NoText = 60014,
    RememberText = 60221,
};

// Lengths in px.
constexpr int margin = 40;
constexpr int messageTop = 5;
constexpr int belowMessage = 63;
constexpr int buttonWidth = 80;
constexpr int buttonHeight = 25;
constexpr int buttonsFromBottom = 53;
constexpr int boxHeight = 18;
constexpr int boxFromBottom = 23;

} // namespace

YesNoConfirmDlg::YesNoConfirmDlg(int id, OviAPI::ResourceManager* rm, const wchar_t* question)
    : WExtDialog(id, rm)
    , text(question)
    , app(dynamic_cast<ExtApp*>(OviAPI::Application::instance()))
    , yesTextId(0)
    , noTextId(0)
    , rememberTextId(0)
    , titleTextId(0)
{
}

YesNoConfirmDlg::YesNoConfirmDlg(int id, OviAPI::ResourceManager* rm, const wchar_t* question,
                                 int yesId, int noId, int rememberId, int titleId)
    : WExtDialog(id, rm)
    , text(question)
    , app(nullptr)
    , yesTextId(yesId)
    , noTextId(noId)
    , rememberTextId(rememberId)
    , titleTextId(titleId)
{
}

YesNoConfirmDlg::~YesNoConfirmDlg() = default;

bool YesNoConfirmDlg::create()
{
    const bool hasIds = yesTextId != 0 && noTextId != 0 && rememberTextId != 0 && titleTextId != 0;
    if (!app && !hasIds)
        return false; // without the application there are no default strings
    if (isCreated())
        return true; // execModal asks for it once more
    show(false);
    setStyle(style() | SizingBorder | DialogFrame);
    move(0, 0, width, height);
    if (app && app->options())
        setFont(app->options()->FontControls);
    if (!WExtDialog::create())
        return false;
    message.setStyle(OviAPI::WStatic::WordWrap);
    OviAPI::WTypicalControl* const children[] = {&message, &yesButton, &noButton, &rememberBox};
    for (OviAPI::WTypicalControl* child : children) {
        child->setParent(this);
        child->setFont(font());
        if (!child->create())
            return false;
    }
    onCharsetChanged(this);
    layoutElements();
    OviAPI::connect<&OviAPI::WButton::onPush>(yesButton, *this, &YesNoConfirmDlg::onYesPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(noButton, *this, &YesNoConfirmDlg::onNoPush);
    OviAPI::connect<&OviAPI::WCheckBox::onCheck>(rememberBox, *this,
                                                 &YesNoConfirmDlg::onRememberChoiceCheck);
    yesButton.setFocus();
    setDefaultButton(&yesButton);
    OviAPI::MoveObject::MoveInit(this);
    return true;
}

void YesNoConfirmDlg::layoutElements()
{
    const int w = clientWidth();
    const int h = clientHeight();
    const int gap = (w - 2 * buttonWidth) / 3;
    message.move(margin, messageTop, w - 2 * margin, h - belowMessage);
    yesButton.move(gap, h - buttonsFromBottom, buttonWidth, buttonHeight);
    noButton.move(gap * 2 + buttonWidth, h - buttonsFromBottom, buttonWidth, buttonHeight);
    rememberBox.move(margin, h - boxFromBottom, w - 2 * margin, boxHeight);
}

OviAPI::SlotResult YesNoConfirmDlg::onCharsetChanged(OviAPI::Object*)
{
    wchar_t buffer[textSize];
    loadText(titleTextId, TitleText, buffer);
    setTitle(buffer);
    message.setText(text ? text : L"");
    loadText(yesTextId, YesText, buffer);
    yesButton.setText(buffer);
    loadText(noTextId, NoText, buffer);
    noButton.setText(buffer);
    loadText(rememberTextId, RememberText, buffer);
    rememberBox.setText(buffer);
    return 0;
}

// Reads an own text from the dialog's resources, a default one from the application's. The buffer
// takes textSize characters; a text that is missing is empty.
void YesNoConfirmDlg::loadText(int id, int defaultId, wchar_t* buffer) const
{
    buffer[0] = 0;
    if (id == 0 && app)
        app->loadRRSString(defaultId, buffer, textSize, OviAPI::ResourceManager::CurrentLanguage);
    else if (id != 0 && resource)
        resource->loadString(id, buffer, textSize);
}

OviAPI::SlotResult YesNoConfirmDlg::onYesPush(OviAPI::Object*)
{
    closeModal(1);
    return 0;
}

OviAPI::SlotResult YesNoConfirmDlg::onNoPush(OviAPI::Object*)
{
    closeModal(0);
    return 0;
}

OviAPI::SlotResult YesNoConfirmDlg::onRememberChoiceCheck(OviAPI::Object*)
{
    rememberChoice = rememberBox.isChecked();
    yesButton.enable(!rememberChoice || yesEnabledWhenRemembered);
    noButton.enable(!rememberChoice || noEnabledWhenRemembered);
    return 0;
}

bool YesNoConfirmDlg::onClose()
{
    closeModal(0);
    return true;
}

bool YesNoConfirmDlg::onSize()
{
    layoutElements();
    return false;
}
