// A picture in the middle of a panel.
#pragma once

#include <oviapi/panel.h>
#include <oviapi/picture.h>

// Shows it at its own size, or as much smaller as the panel is.
class ImageView : public OviAPI::WPanel {
public:
    ImageView() { setStyle(Border); }

    void setPicture(OviAPI::Picture picture);
    const OviAPI::Picture& picture() const { return m_picture; }

    bool doPaint(OviAPI::PaintDevice* device) override;
    bool onSize() override;

private:
    OviAPI::Picture m_picture;
};

// The rectangle in the middle of an area that a picture takes: its proportions stay.
OviAPI::Rect fittedRect(OviAPI::Size picture, OviAPI::Size area);
