#include "panels/hideabletitledpanel.h"

namespace {

constexpr int buttonSize = 25; // px

} // namespace

HideableTitledPanel::HideableTitledPanel(OviAPI::ResourceManager* rm, int id)
    : TitledPanel(rm)
    , pictureId(id)
{
}

HideableTitledPanel::~HideableTitledPanel() = default;

bool HideableTitledPanel::create()
{
    if (!TitledPanel::create())
        return false;
    OviAPI::Picture picture;
    if (resource)
        resource->loadTransparentPicture(pictureId, &picture);
    hideButton.setParent(this);
    hideButton.setFont(font());
    hideButton.setStyle(OviAPI::WButton::TabStop | OviAPI::WButton::Visible);
    hideButton.create();
    hideButton.setPictures(&picture, nullptr, nullptr, nullptr);
    return true;
}

bool HideableTitledPanel::move(int x, int y, int w, int h)
{
    const bool moved = TitledPanel::move(x, y, w, h);
    const int fromEdge = buttonSize + buttonMargin;
    hideButton.move(width() - fromEdge, height() - fromEdge, buttonSize, buttonSize);
    return moved;
}
