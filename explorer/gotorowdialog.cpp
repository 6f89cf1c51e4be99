#include "explorer/gotorowdialog.h"

std::optional<long> rowNumberIn(std::wstring_view text, long rows)
{
    constexpr wchar_t noBreakSpace = 0xA0;
    long number = 0;
    bool digits = false;
    for (const wchar_t c : text) {
        if (c == L' ' || c == noBreakSpace)
            continue;
        if (c < L'0' || c > L'9')
            return std::nullopt;
        digits = true;
        const long digit = c - L'0';
        if (digit > rows || number > (rows - digit) / 10)
            return std::nullopt;
        number = number * 10 + digit;
    }
    if (!digits || number < 1)
        return std::nullopt;
    return number;
}

GoToRowDialog::GoToRowDialog(WExtForm& above, long current, long rows)
    : ExplorerDialog(above)
    , m_row(current)
    , m_rows(rows)
{
}

void GoToRowDialog::createControls()
{
    m_fault.setStyle(OviAPI::WStatic::WordWrap);
    for (OviAPI::WTypicalControl* control : std::initializer_list<OviAPI::WTypicalControl*>{
             &m_prompt, &m_number, &m_fault, &m_go, &m_cancel})
        add(*control);
    setDefaultButton(&m_go);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_go, *this, &GoToRowDialog::onGoPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_cancel, *this, &GoToRowDialog::onCancelPush);
    m_number.setText(std::to_wstring(m_row).c_str());
    m_number.select(0, -1);
    m_number.setFocus();
}

void GoToRowDialog::loadTexts()
{
    setTitle(textOf(TextGoToTitle).c_str());
    m_prompt.setText(textOf(TextGoToPrompt, groupedNumber(m_rows)).c_str());
    m_go.setText(textOf(TextGoToButton).c_str());
    m_cancel.setText(textOf(TextDialogCancel).c_str());
}

int GoToRowDialog::layout(int width)
{
    int top = Margin;
    m_prompt.move(Margin, top, width, textHeight() + 2);
    top += textHeight() + 6;
    m_number.move(Margin, top, width, fieldHeight());
    top += fieldHeight() + Gap;
    const int fault = wrappedHeight(textOf(TextGoToNotANumber, groupedNumber(m_rows)), width);
    m_fault.move(Margin, top, width, fault);
    return layoutButtons({&m_go, &m_cancel}, width, top + fault + Gap);
}

OviAPI::SlotResult GoToRowDialog::onGoPush(OviAPI::Object*)
{
    if (const auto row = rowNumberIn(m_number.text(), m_rows)) {
        m_row = *row;
        closeModal(1);
        return 1;
    }
    m_fault.setText(textOf(TextGoToNotANumber, groupedNumber(m_rows)).c_str());
    m_number.select(0, -1);
    m_number.setFocus();
    return 1;
}

OviAPI::SlotResult GoToRowDialog::onCancelPush(OviAPI::Object*)
{
    closeModal(0);
    return 1;
}
