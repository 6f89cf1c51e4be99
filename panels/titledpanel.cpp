#include "panels/titledpanel.h"

#include <oviapi/painter.h>

#include "panels/framelabel.h"

namespace {

constexpr int titleAbovePanel = 7; // px of the title above the panel's upper edge

} // namespace

TitledPanel::TitledPanel(OviAPI::ResourceManager* rm)
    : resource(rm)
{
    setStyle(style() | Border);
}

TitledPanel::~TitledPanel() = default;

bool TitledPanel::create()
{
    if (!WExtPanel::create())
        return false;
    titleLabel.setParent(parent());
    titleLabel.setFont(font());
    titleLabel.setBuddy(this);
    coverFrame(titleLabel, parent());
    titleLabel.create();
    titleLabel.setPositioner(this);
    measureTitle();
    OviAPI::MoveObject::MoveInit(&titleLabel);
    return true;
}

void TitledPanel::setTitle(const wchar_t* text)
{
    titleLabel.setText(text);
    measureTitle();
    updateTitlePosition();
}

void TitledPanel::measureTitle()
{
    titleWidth = 0;
    if (titleLabel.text().empty() || !isCreated())
        return;
    OviAPI::PaintDevice device = clientDevice();
    OviAPI::Painter painter(device);
    if (!font().isEmpty())
        painter.setFont(font());
    titleWidth = static_cast<int32_t>(painter.getTextRect(0, 0, titleLabel.text()).width());
}

void TitledPanel::updateTitlePosition()
{
    if (parent() && titleLabel.isCreated())
        titleLabel.move(x() + titleXOffset, y() - titleAbovePanel, titleWidth, titleHeight);
}

bool TitledPanel::positionObject(OviAPI::WVisualObject* obj)
{
    if (obj != &titleLabel)
        return false;
    updateTitlePosition();
    return true;
}

bool TitledPanel::move(int x, int y, int w, int h)
{
    const bool moved = WExtPanel::move(x, y, w, h);
    updateTitlePosition();
    layoutElements();
    return moved;
}

void TitledPanel::layoutElements() {}

void TitledPanel::show(bool visible)
{
    titleLabel.show(visible);
    WExtPanel::show(visible);
}

void TitledPanel::enable(bool enabled)
{
    titleLabel.enable(enabled);
    WExtPanel::enable(enabled);
}

void TitledPanel::setFont(const OviAPI::Font& font)
{
    WExtPanel::setFont(font);
    titleLabel.setFont(font);
    measureTitle();
    updateTitlePosition();
}

// The title is placed by the next move.
void TitledPanel::setParent(OviAPI::Container* parent)
{
    WExtPanel::setParent(parent);
    if (!isCreated())
        return;
    titleLabel.setParent(parent);
    coverFrame(titleLabel, parent);
    titleLabel.create();
    measureTitle();
}

void TitledPanel::nativeGoes()
{
    titleLabel.destroy();
}
