#include "explorer/actionbar.h"

#include <algorithm>

#include <oviapi/painter.h>

namespace {

constexpr int margin = 6;         // px
constexpr int buttonPadding = 28; // px beside the text of a button, both sides together
constexpr int mostLines = 3;

int widthOf(const OviAPI::WButton& button, const OviAPI::Font& font)
{
    return OviAPI::GetTextSize(font, button.text()).width + buttonPadding;
}

} // namespace

ActionBar::ActionBar(int buttons)
{
    m_text.setStyle(m_text.style() | long{OviAPI::WStatic::WordWrap});
    for (int i = 0; i < buttons; ++i) {
        m_buttons.push_back(std::make_unique<OviAPI::WButton>());
        OviAPI::connect<&OviAPI::WButton::onPush>(
            *m_buttons.back(), *this, [this, i](OviAPI::Object*) -> OviAPI::SlotResult {
                OviAPI::dispatch<&ActionBar::onAction>(*this, i);
                return 1;
            });
    }
}

bool ActionBar::create()
{
    if (!WExtPanel::create())
        return false;
    m_text.setParent(this);
    if (!m_text.create())
        return false;
    for (const auto& button : m_buttons) {
        button->setParent(this);
        if (!button->create())
            return false;
    }
    return true;
}

bool ActionBar::onAction(int)
{
    return false;
}

void ActionBar::setTexts(const std::wstring& sentence, const std::vector<std::wstring>& captions)
{
    m_text.setText(sentence.c_str());
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        const std::wstring caption = i < captions.size() ? captions[i] : std::wstring();
        m_buttons[i]->setText(caption.c_str());
        m_buttons[i]->show(!caption.empty());
    }
    setAccessibleName(sentence.c_str());
    layOut();
}

int ActionBar::buttonsWidth() const
{
    int width = 0;
    for (const auto& button : m_buttons)
        if (!button->text().empty())
            width += widthOf(*button, font()) + margin;
    return width;
}

// A line is seldom filled to its end.
int ActionBar::textLines(int room) const
{
    const int width = OviAPI::GetTextSize(font(), m_text.text()).width;
    if (width <= room)
        return 1;
    return std::clamp(width / std::max(room * 9 / 10, 1) + 1, 2, mostLines);
}

int ActionBar::wantedHeight(int width) const
{
    const int line = OviAPI::GetTextSize(font(), L"Xg").height;
    const int lines = textLines(width - buttonsWidth() - 2 * margin - 2);
    return std::max(line + 12, lines * line) + 2 * margin;
}

bool ActionBar::onSize()
{
    layOut();
    return false;
}

void ActionBar::layOut()
{
    if (!m_text.isCreated())
        return;
    const OviAPI::Size size = clientSize();
    const OviAPI::Size text = OviAPI::GetTextSize(font(), m_text.text());
    const int widest = std::max(0, size.width - buttonsWidth() - 2 * margin);
    const int height = textLines(widest - 2) * text.height + 2;
    m_text.move(margin, (size.height - height) / 2, std::min(text.width + 2, widest), height);
    const int line = OviAPI::GetTextSize(font(), L"Xg").height;
    int left = m_text.geometry().right + margin;
    for (const auto& button : m_buttons) {
        if (button->text().empty())
            continue;
        const int width = widthOf(*button, font());
        const int top = (size.height - line - 12) / 2;
        button->move(left, top, width, line + 12);
        left += width + margin;
    }
}

bool ActionBar::doPaint(OviAPI::PaintDevice* device)
{
    OviAPI::Painter painter(device);
    if (!painter)
        return false;
    const OviAPI::Size size = clientSize();
    painter.fillRect({0, 0, size.width, size.height}, OviAPI::Color(OviAPI::ColorNumber::Window));
    painter.setPen(OviAPI::Pen(OviAPI::Color(OviAPI::ColorNumber::Shadow)));
    painter.drawLine(0, size.height - 1, size.width, size.height - 1);
    return true;
}
