// Asks for the path of a database file.
#pragma once

#include <string>

#include <oviapi/lineedit.h>

#include "explorer/explorerdialog.h"

// execModal gives 1 when a path was entered.
class OpenDialog : public ExplorerDialog {
public:
    // directory: where paths that do not begin with a slash start.
    OpenDialog(WExtForm& above, std::wstring directory);

    // The database named, with the directory in front of a relative path.
    std::wstring database() const;
    OviAPI::WLineEdit& pathLine() { return m_path; }

protected:
    void createControls() override;
    void loadTexts() override;
    int layout(int width) override;

private:
    OviAPI::SlotResult onOpenPush(OviAPI::Object*);
    OviAPI::SlotResult onCancelPush(OviAPI::Object*);

    std::wstring m_directory;
    OviAPI::WStatic m_prompt;
    OviAPI::WLineEdit m_path;
    OviAPI::WStatic m_hint;
    OviAPI::WButton m_open;
    OviAPI::WButton m_cancel;
};

// What the user typed as the name of a database: blanks at the ends are taken off, "~/" is the home
// folder, a relative path starts at the directory. Names with a scheme stay as they are.
std::wstring resolvedDatabaseName(const std::wstring& typed, const std::wstring& directory);
