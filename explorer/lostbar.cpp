#include "explorer/lostbar.h"

#include <algorithm>

#include <oviapi/painter.h>

#include "explorer/textlookup.h"

namespace {

constexpr int margin = 6;         // px
constexpr int buttonPadding = 28; // px beside the text of the button, both sides together

} // namespace

LostBar::LostBar()
{
    OviAPI::connect<&OviAPI::WButton::onPush>(m_button, *this, &LostBar::onPush);
}

bool LostBar::create()
{
    if (!WExtPanel::create())
        return false;
    m_text.setParent(this);
    m_button.setParent(this);
    if (!m_text.create() || !m_button.create())
        return false;
    loadTexts();
    return true;
}

bool LostBar::onReconnect()
{
    return false;
}

OviAPI::SlotResult LostBar::onPush(OviAPI::Object*)
{
    OviAPI::dispatch<&LostBar::onReconnect>(*this);
    return 1;
}

int LostBar::wantedHeight() const
{
    return OviAPI::GetTextSize(font(), L"Xg").height + 12 + 2 * margin;
}

void LostBar::loadTexts()
{
    m_text.setText(textOf(TextLostNotice).c_str());
    m_button.setText(textOf(TextMenuReconnect).c_str());
    setAccessibleName(textOf(TextLostNotice).c_str());
    layOut();
}

bool LostBar::onSize()
{
    layOut();
    return false;
}

void LostBar::layOut()
{
    if (!m_button.isCreated())
        return;
    const OviAPI::Size size = clientSize();
    const OviAPI::Size text = OviAPI::GetTextSize(font(), m_text.text());
    const int button = OviAPI::GetTextSize(font(), m_button.text()).width + buttonPadding;
    const int widest = std::max(0, size.width - button - 3 * margin);
    m_text.move(margin, (size.height - text.height) / 2, std::min(text.width + 2, widest),
                text.height + 2);
    m_button.move(m_text.geometry().right + margin, margin, button,
                  std::max(0, size.height - 2 * margin));
}

bool LostBar::doPaint(OviAPI::PaintDevice* device)
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
