#include "explorer/opendialog.h"

#include <cstdlib>
#include <utility>

#include <dorcpp/connect.h>
#include <oviapi/text.h>

std::wstring resolvedDatabaseName(const std::wstring& typed, const std::wstring& directory)
{
    const size_t first = typed.find_first_not_of(L" \t\r\n");
    if (first == std::wstring::npos)
        return {};
    std::wstring name = typed.substr(first, typed.find_last_not_of(L" \t\r\n") - first + 1);
    if (name.compare(0, 2, L"~/") == 0) {
        const char* home = std::getenv("HOME");
        return OviAPI::localeToWide(home ? home : "") + name.substr(1);
    }
    if (name.front() == L'/' || name.compare(0, 7, L"sqlite:") == 0 || directory.empty() ||
        DorCPP::isServerName(OviAPI::wideToLocale(name)))
        return name;
    return directory + (directory.back() == L'/' ? L"" : L"/") + name;
}

OpenDialog::OpenDialog(WExtForm& above, std::wstring directory)
    : ExplorerDialog(above)
    , m_directory(std::move(directory))
{
}

std::wstring OpenDialog::database() const
{
    return resolvedDatabaseName(m_path.text(), m_directory);
}

void OpenDialog::createControls()
{
    m_hint.setStyle(OviAPI::WStatic::WordWrap);
    for (OviAPI::WTypicalControl* control : std::initializer_list<OviAPI::WTypicalControl*>{
             &m_prompt, &m_path, &m_hint, &m_open, &m_cancel})
        add(*control);
    setDefaultButton(&m_open);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_open, *this, &OpenDialog::onOpenPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_cancel, *this, &OpenDialog::onCancelPush);
    m_path.setFocus();
}

void OpenDialog::loadTexts()
{
    setTitle(textOf(TextOpenTitle).c_str());
    m_prompt.setText(textOf(TextOpenPrompt).c_str());
    m_hint.setText(m_directory.empty() ? L"" : textOf(TextOpenHint, m_directory).c_str());
    m_open.setText(textOf(TextOpenButton).c_str());
    m_cancel.setText(textOf(TextDialogCancel).c_str());
}

int OpenDialog::layout(int width)
{
    int top = Margin;
    m_prompt.move(Margin, top, width, textHeight() + 2);
    top += textHeight() + 6;
    m_path.move(Margin, top, width, fieldHeight());
    top += fieldHeight() + Gap;
    const int hint = wrappedHeight(m_hint.text(), width);
    m_hint.move(Margin, top, width, hint);
    return layoutButtons({&m_open, &m_cancel}, width, top + hint + Gap);
}

OviAPI::SlotResult OpenDialog::onOpenPush(OviAPI::Object*)
{
    if (database().empty())
        m_path.setFocus();
    else
        closeModal(1);
    return 1;
}

OviAPI::SlotResult OpenDialog::onCancelPush(OviAPI::Object*)
{
    closeModal(0);
    return 1;
}
