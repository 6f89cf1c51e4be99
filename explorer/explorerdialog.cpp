#include "explorer/explorerdialog.h"

#include <algorithm>

#include <oviapi/moveobject.h>
#include <oviapi/painter.h>
#include <oviapi/systemmetrics.h>

namespace {

constexpr int buttonPadding = 28; // px beside the text of a button, both sides together
constexpr int narrowestButton = 84;
constexpr int smallestText = 6; // points
constexpr int windowFrame = 32; // px that the desktop's frame takes of the height

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
    m_content.setParent(this);
    m_content.setFont(font());
    if (!m_content.create())
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

bool ExplorerDialog::onSize()
{
    const OviAPI::Size size = clientSize();
    m_content.move(0, 0, size.width, size.height);
    return false;
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

int ExplorerDialog::rowWidth(std::initializer_list<OviAPI::WButton*> buttons) const
{
    int width = -Gap;
    for (const OviAPI::WButton* button : buttons)
        width += std::max(narrowestButton, buttonWidth(*button)) + Gap;
    return width;
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
    m_missing = std::max(m_missing, rowWidth(buttons) - width);
    return top + height;
}

void ExplorerDialog::arrange()
{
    const int bar = OviAPI::SystemMetrics::getScrollBarWidth();
    const auto widest = static_cast<int>(screen().width());
    const int highest = static_cast<int>(screen().height()) - windowFrame;
    int width = std::min(contentWidth(), widest - 2 * Margin - bar);
    m_missing = 0;
    int height = layout(width) + Margin;
    if (m_missing > 0) {
        width += m_missing;
        height = layout(width) + Margin;
    }
    m_content.setContentSize(width + 2 * Margin, height);
    OviAPI::Size size{width + 2 * Margin, height};
    if (size.width > widest)
        size.height += bar;
    if (size.height > highest)
        size.width += bar;
    size = {std::min(size.width, widest), std::min(size.height, highest)};
    const OviAPI::Rect place = OviAPI::MoveObject::centered(
        size, {x(), y(), x() + size.width, y() + size.height}, screen());
    move(place.left, place.top, size.width, size.height);
    m_content.move(0, 0, size.width, size.height);
}

OviAPI::Rect ExplorerDialog::screen() const
{
    return m_screen.isEmpty() ? OviAPI::SystemMetrics::getAvailableRect() : m_screen;
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
