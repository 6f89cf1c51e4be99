// A yes/no question that can remember its answer.
#pragma once

#include <oviapi/button.h>
#include <oviapi/checkbox.h>
#include <oviapi/static.h>

#include "app/export.h"
#include "app/extdialog.h"

class ExtApp;

// Run it with execModal: 1 is yes, 0 is no or closed. Afterwards rememberChoice tells whether the
// user wants the answer to be kept. Points to the question, which must outlive the dialog.
class OVIEXT_API YesNoConfirmDlg : public WExtDialog {
public:
    // Labels from the strings of the application object, which must be an ExtApp.
    YesNoConfirmDlg(int id, OviAPI::ResourceManager* rm, const wchar_t* text);
    // Labels from rm; no id may be 0.
    YesNoConfirmDlg(int id, OviAPI::ResourceManager* rm, const wchar_t* text, int yesTextId,
                    int noTextId, int rememberTextId, int titleTextId);
    ~YesNoConfirmDlg() override;

    // False when there are no strings for the labels or the window cannot be made.
    bool create() override;
    void layoutElements();
    // Sets all texts.
    OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender) override;
    using WExtDialog::onCharsetChanged;

    OviAPI::SlotResult onYesPush(OviAPI::Object* sender);
    OviAPI::SlotResult onNoPush(OviAPI::Object* sender);
    OviAPI::SlotResult onRememberChoiceCheck(OviAPI::Object* sender);
    bool onClose() override;
    bool onSize() override;

    bool rememberChoice = false;

protected:
    const wchar_t* text;
    ExtApp* app;
    int32_t yesTextId;
    int32_t noTextId;
    int32_t rememberTextId;
    int32_t titleTextId;

public:
    // Whether a button can be pressed while the box is ticked.
    bool yesEnabledWhenRemembered = true;
    bool noEnabledWhenRemembered = true;
    // The size of the client area at first, px.
    int32_t width = 640;
    int32_t height = 120;

protected:
    OviAPI::WStatic message;
    OviAPI::WButton yesButton;
    OviAPI::WButton noButton;
    OviAPI::WCheckBox rememberBox;

private:
    void loadText(int id, int defaultId, wchar_t* buffer) const;
};
