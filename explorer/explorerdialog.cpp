#include "explorer/explorerdialog.h"

#include <algorithm>

#include <oviapi/moveobject.h>
#include <oviapi/painter.h>

namespace {

constexpr int buttonPadding = 28; // px beside the text of a button, both sides together
constexpr int narrowestButton = 84;

} // namespace

ExplorerDialog::ExplorerDialog(WExtForm& above)
    : WExtDialog(0, above.getResource())
{
    setParent(&above);
    setFont(above.font());
    setStyle(style() | DialogFrame);
}

bool ExplorerDialog::create()
{
    if (!WExtDialog::create())
        return false;
    createControls();
    loadTexts();
    arrange();
    OviAPI::MoveObject::MoveInit(this);
    return true;
}

bool ExplorerDialog::onClose()
{
    closeModal(0);
    return true;
}

OviAPI::SlotResult ExplorerDialog::onCharsetChanged(OviAPI::Object*)
{
    if (isCreated()) {
        loadTexts();
        arrange();
    }
    return 0;
}

void ExplorerDialog::add(OviAPI::WTypicalControl& control)
{
    control.setParent(this);
    control.setFont(font());
    control.create();
}

int ExplorerDialog::textHeight() const
{
    return OviAPI::GetTextSize(font(), L"Xg").height;
}

// Counts lines as a breaking at blanks gives them; a little generous where words are long.
int ExplorerDialog::wrappedHeight(const std::wstring& text, int width) const
{
    const int blank = OviAPI::GetTextSize(font(), L" ").width;
    int lines = 1;
    int used = 0;
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = std::min(text.find_first_of(L" \n", start), text.size());
        const int word = OviAPI::GetTextSize(font(), text.substr(start, end - start)).width;
        if (used > 0 && used + word > width) {
            ++lines;
            used = 0;
        }
        lines += word / std::max(1, width);
        used += word + blank;
        if (end < text.size() && text[end] == L'\n') {
            ++lines;
            used = 0;
        }
        start = end + 1;
    }
    return lines * textHeight() + 2;
}

int ExplorerDialog::layoutButtons(std::initializer_list<OviAPI::WButton*> buttons, int width,
                                  int top)
{
    int right = Margin + width;
    const int height = fieldHeight();
    for (auto button = buttons.end(); button != buttons.begin();) {
        --button;
        const int text = OviAPI::GetTextSize(font(), (*button)->text()).width;
        const int wide = std::max(narrowestButton, text + buttonPadding);
        (*button)->move(right - wide, top, wide, height);
        right -= wide + Gap;
    }
    return top + height;
}

void ExplorerDialog::arrange()
{
    const int width = contentWidth();
    const int bottom = layout(width);
    move(x(), y(), width + 2 * Margin, bottom + Margin);
}
