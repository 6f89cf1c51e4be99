#include <oviapi/filedialog.h>

#include <algorithm>

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QWindow>

#include <oviapi/form.h>
#include <oviapi/msgbox.h>
#include <oviapi/phrases.h>
#include <oviapi/text.h>

#include "convert.h"
#include "native.h"
#include "toolkit.h"

namespace OviAPI {

namespace {

QString word(Phrase text)
{
    return toQString(phrase(text));
}

// "Text (patterns)" for every filter; patterns alone stand for their text as well.
QStringList nameFilters(const std::wstring& filters)
{
    QStringList names;
    for (const QString& part : toQString(filters).split(";;", Qt::SkipEmptyParts)) {
        const QString text = part.trimmed();
        const bool hasPatterns = text.endsWith(')') && text.contains('(');
        if (!text.isEmpty())
            names += hasPatterns ? text : text + " (" + text + ')';
    }
    return names;
}

// Asks its questions in the application's language.
class FileBox : public QFileDialog {
public:
    FileBox(bool asks, QString heading)
        : m_asks(asks)
        , m_heading(std::move(heading))
    {
        setOptions(DontUseNativeDialog | DontConfirmOverwrite | DontUseCustomDirectoryIcons);
        setLabelText(LookIn, word(Phrase::Folder));
        setLabelText(FileName, word(Phrase::FileName));
        setLabelText(FileType, word(Phrase::FileType));
        setLabelText(Reject, word(Phrase::Cancel));
        setWindowTitle(m_heading);
    }

    void accept() override
    {
        if (acceptMode() == AcceptOpen) {
            for (const QString& path : selectedFiles()) {
                if (QFileInfo::exists(path))
                    continue;
                ask(Phrase::FileMissing, path, MsgBox::Ok);
                return;
            }
        }
        QFileDialog::accept();
    }

protected:
    void done(int result) override
    {
        if (result == Accepted && acceptMode() == AcceptSave && m_asks) {
            const QString path = selectedFiles().value(0);
            if (QFileInfo::exists(path) &&
                ask(Phrase::FileExists, path, MsgBox::Yes | MsgBox::No) != MsgBox::Yes)
                return;
        }
        QFileDialog::done(result);
    }

private:
    int ask(Phrase question, const QString& path, int buttons)
    {
        int answer = 0;
        barrier([&] {
            const std::wstring name = fromQString(QFileInfo(path).fileName());
            answer = MsgBox::showEx(fromQString(m_heading).c_str(), phrase(question, name).c_str(),
                                    buttons, MsgBox::No);
        });
        return answer;
    }

    bool m_asks;
    QString m_heading;
};

} // namespace

ExtFileDialog::ExtFileDialog(Mode mode)
    : m_mode(mode)
{
}

void ExtFileDialog::setTitle(const wchar_t* title)
{
    m_title = title ? title : L"";
}

void ExtFileDialog::setFilters(const wchar_t* filters)
{
    m_filters = filters ? filters : L"";
}

void ExtFileDialog::setDefaultExtension(const wchar_t* extension)
{
    m_extension = extension ? extension : L"";
    m_extension.erase(0, m_extension.find_first_not_of(L'.'));
}

void ExtFileDialog::setFolder(const wchar_t* folder)
{
    m_folder = folder ? folder : L"";
}

void ExtFileDialog::setPath(const wchar_t* path)
{
    m_path = path ? path : L"";
    m_paths.clear();
    if (!m_path.empty())
        m_paths.push_back(m_path);
}

bool ExtFileDialog::execModal(WForm* above)
{
    if (!Toolkit::current())
        return false;
    const bool save = m_mode == Save;
    const Phrase heading = save ? Phrase::SaveFile : Phrase::OpenFile;
    FileBox box(m_ask, m_title.empty() ? word(heading) : toQString(m_title));
    box.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    box.setFileMode(save                 ? QFileDialog::AnyFile
                    : m_mode == OpenMany ? QFileDialog::ExistingFiles
                                         : QFileDialog::ExistingFile);
    box.setLabelText(QFileDialog::Accept, word(save ? Phrase::SaveButton : Phrase::OpenButton));
    QStringList names = nameFilters(m_filters);
    if (names.isEmpty())
        names += word(Phrase::AllFiles) + " (*)";
    if (m_filter < 0 || m_filter >= names.size())
        m_filter = 0;
    box.setNameFilters(names);
    box.selectNameFilter(names[m_filter]);
    if (save)
        box.setDefaultSuffix(toQString(m_extension));
    const QFileInfo preset(toQString(m_path));
    if (!m_path.empty() && preset.dir().exists() && preset.isAbsolute())
        box.setDirectory(preset.dir());
    else if (!m_folder.empty() && QFileInfo(toQString(m_folder)).isDir())
        box.setDirectory(toQString(m_folder));
    else
        box.setDirectory(QDir::current());
    if (!m_path.empty() && !preset.isDir())
        box.selectFile(preset.fileName());

    QEventLoop loop;
    LocalLoop local([&] { loop.quit(); });
    QObject::connect(&box, &QDialog::finished, &loop, &QEventLoop::quit);
    box.setWindowModality(Qt::ApplicationModal);
    const QPointer<QWidget> before = QApplication::activeWindow();
    const QWidget* owner = above ? widgetOf(above) : before.data();
    box.winId(); // makes the window handle
    if (owner && owner->window()->windowHandle())
        box.windowHandle()->setTransientParent(owner->window()->windowHandle());
    box.show();
    if (!local.failed())
        loop.exec();
    box.hide();
    const bool chosen = box.result() == QDialog::Accepted;
    if (chosen) {
        m_paths.clear();
        for (const QString& path : box.selectedFiles())
            m_paths.push_back(fromQString(path));
        m_path = m_paths.empty() ? std::wstring() : m_paths.front();
        m_filter = std::max(0, static_cast<int>(names.indexOf(box.selectedNameFilter())));
    }
    // Not every window manager gives the focus back by itself.
    if (before && before->isVisible() && !QApplication::activeWindow())
        before->activateWindow();
    local.rethrow();
    return chosen && !m_path.empty();
}

} // namespace OviAPI
