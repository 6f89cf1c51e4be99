#include "explorer/explorerdialog.h"

#include <algorithm>

#include <oviapi/moveobject.h>
#include <oviapi/painter.h>
#include <oviapi/systemmetrics.h>

namespace {

constexpr int buttonPadding = 28; // px beside the text of a button, both sides together
constexpr int narrowestButton = 84;
constexpr int smallestText = 6; // points

} // namespace

ExplorerDialog::ExplorerDialog(WExtForm& above)
    : WExtDialog(0, above.getResource())
{
    setParent(&above);
    setFont(above.font());
    setStyle(style() | DialogFrame);
    OviAPI::connect<&WExtForm::onFontChanged>(*this, *this, &ExplorerDialog::onFormFontChanged);
}

bool ExplorerDialog::create()
{
    if (isCreated()) // a modal loop asks for it again
        return true;
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

void ExplorerDialog::add(OviAPI::WTypicalControl& control, OviAPI::Container& parent)
{
    control.setParent(&parent);
    control.setFont(font());
    control.create();
}

int ExplorerDialog::textHeight() const
{
    return OviAPI::GetTextSize(font(), L"Xg").height;
}

int ExplorerDialog::scaled(int px) const
{
    constexpr int usualHeight = 18; // px of a line of Helvetica of 10 points
    return px * std::max(textHeight(), usualHeight) / usualHeight;
}

int ExplorerDialog::buttonWidth(const OviAPI::WButton& button) const
{
    return OviAPI::GetTextSize(font(), button.text()).width + buttonPadding;
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
        const int wide = std::max(narrowestButton, buttonWidth(**button));
        (*button)->move(right - wide, top, wide, height);
        right -= wide + Gap;
    }
    return top + height;
}

void ExplorerDialog::arrange()
{
    const OviAPI::Rect screen = OviAPI::SystemMetrics::getAvailableRect();
    const int widest = static_cast<int>(screen.width()) - 2 * Margin;
    const int width = std::min(contentWidth(), widest);
    const OviAPI::Size size{width + 2 * Margin, layout(width) + Margin};
    const OviAPI::Rect place =
        OviAPI::MoveObject::centered(size, {x(), y(), x() + size.width, y() + size.height}, screen);
    move(place.left, place.top, size.width, size.height);
}

OviAPI::Font ExplorerDialog::fittedFont(const std::wstring& text, OviAPI::Size room) const
{
    const OviAPI::Font own = font();
    for (int size = own.size(); size > smallestText; --size) {
        OviAPI::Font fitted(own.name(), size, own.bold(), own.italic());
        const OviAPI::Size needed = OviAPI::GetTextSize(fitted, text);
        if (needed.width <= room.width && needed.height <= room.height)
            return fitted;
    }
    return {own.name(), std::min(own.size(), smallestText), own.bold(), own.italic()};
}

// Emitted when the font has reached the controls.
OviAPI::SlotResult ExplorerDialog::onFormFontChanged(OviAPI::Object*, FontKind kind, OviAPI::Font)
{
    if (kind == fkControls && isCreated())
        arrange();
    return 0;
}
