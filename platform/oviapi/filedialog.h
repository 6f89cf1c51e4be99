// The choice of a file.
#pragma once

#include <string>
#include <vector>

#include <oviapi/export.h>

namespace OviAPI {

class WForm;

// The same dialog on every desktop. Fill it, run it, read the paths; it remembers nothing from one
// object to the next.
//
//     ExtFileDialog dialog(ExtFileDialog::Save);
//     dialog.setFilters(L"Charts (*.trend);;All files (*)");
//     if (dialog.execModal(this))
//         save(dialog.path());
class OVIAPI_API ExtFileDialog {
public:
    enum Mode {
        Open,     // one file that exists
        OpenMany, // one or several
        Save,     // any name; asks before a file is overwritten
    };

    explicit ExtFileDialog(Mode mode = Open);

    // Empty: that of the mode in the application's language.
    void setTitle(const wchar_t* title);
    // Texts with their patterns in parentheses, separated by ";;", as resources hold them:
    // "Images (*.png *.jpg);;All files (*)". Without filters all files are shown.
    void setFilters(const wchar_t* filters);
    // From 0; out of range: the first.
    void setCurrentFilter(int filter) { m_filter = filter; }
    // The filter that was chosen, from 0.
    int currentFilter() const { return m_filter; }
    // Added to the name of a file to be saved that has no extension; with or without the point.
    void setDefaultExtension(const wchar_t* extension);
    // The folder that is shown first, unless the path below names one; the current folder when it
    // does not exist.
    void setFolder(const wchar_t* folder);
    // The file that is preset.
    void setPath(const wchar_t* path);
    // Save only; true at first.
    void setOverwriteQuestion(bool ask) { m_ask = ask; }

    // Blocks every window, handles events until the user has chosen. False for Cancel, Escape, the
    // close box and without a started application; the paths are those from before then. Throws
    // what a handler has thrown meanwhile. above: the form that the dialog stays in front of; null
    // for the active one.
    bool execModal(WForm* above = nullptr);

    // Absolute. Bytes of a name that are not valid in the locale are kept in no wide text: such a
    // file cannot be chosen.
    const std::wstring& path() const { return m_path; }
    const std::vector<std::wstring>& paths() const { return m_paths; }

private:
    Mode m_mode;
    std::wstring m_title;
    std::wstring m_filters;
    std::wstring m_extension;
    std::wstring m_folder;
    std::wstring m_path;
    std::vector<std::wstring> m_paths;
    int m_filter = 0;
    bool m_ask = true;
};

} // namespace OviAPI

// Applications write it without a namespace.
using OviAPI::ExtFileDialog;
