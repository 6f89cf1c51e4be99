// Looks at dialogs as their users do.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "explorer/explorerdialog.h"
#include "explorer/exploreroptions.h"
#include "support.h"

class YesNoConfirmDlg;

// A window for dialogs to belong to, and options of a new user, in English.
class DialogTest : public testing::Test {
protected:
    DialogTest();
    ~DialogTest() override;

    void setLanguage(enum TypicalOptions::Language language);

    ExplorerOptions& m_options;
    WExtForm m_above;
    TemporaryFolder m_folder;
};

bool modalIsOpen();
bool boxIsOpen();
bool confirmIsOpen();
YesNoConfirmDlg* openConfirmation();
// The first label in a form.
std::wstring labelIn(OviAPI::WForm& form);

// The dialog in which a file is chosen, as its user sees it.
struct FileDialogDriver {
    static bool isOpen();
    static std::wstring title();
    static std::wstring folder();
    static std::vector<std::wstring> filters();
    // Types the name and presses Enter.
    static void choose(const std::wstring& name);
    static void cancel();
};

// How many controls the Tab key visits before it comes back to the first one.
int tabStops(OviAPI::WForm& form);

// Fails where two controls that can be seen have the same mnemonic, where a text is missing, where
// a text of one line does not fit into its control, and where a control stands outside the form.
void checkTexts(OviAPI::WForm& form);
