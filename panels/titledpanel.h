// A panel with its title on the frame.
#pragma once

#include <cstdint>
#include <string>

#include <oviapi/moveobject.h>
#include <oviapi/resourcemanager.h>
#include <oviapi/static.h>

#include "app/export.h"
#include "app/extpanel.h"

// A framed panel whose title stands on the upper line of the frame:
//
//        title offset
//     |<------------>|         7 px of the title lie above the panel,
//      _______________ Title __________      the rest below its upper edge
//     |                                |
//
// The title is a sibling of the panel and goes where the panel goes; assistive technology reads the
// panel as a group of that name. Points to the resources, does not own them.
class OVIEXT_API TitledPanel : public WExtPanel, public OviAPI::MoveObjectPositioner {
public:
    explicit TitledPanel(OviAPI::ResourceManager* rm);
    ~TitledPanel() override;

    // Creates the panel and its title.
    bool create() override;
    // Null and empty leave a title without width.
    void setTitle(const wchar_t* text);
    const std::wstring& title() const { return titleLabel.text(); }

    // Places the title, once there is a parent and a title.
    void updateTitlePosition();
    // Places the title and returns true; false for any other object.
    bool positionObject(OviAPI::WVisualObject* obj) override;

    bool move(int x, int y, int w, int h) override;
    void show(bool visible) override;
    void enable(bool enabled) override;
    void setFont(const OviAPI::Font& font) override;
    void setParent(OviAPI::Container* parent) override;

protected:
    // Called after every move: derived panels place their controls here.
    virtual void layoutElements();
    void nativeGoes() override;

    int32_t titleWidth = 0;    // of the text in the panel's font, px
    int32_t titleXOffset = 5;  // px from the panel's left edge
    int32_t titleXOffset2 = 7; // not used by the placement
    int32_t titleHeight = 17;  // px
    int32_t buttonMargin = 5;  // px between a hide button and the right and bottom edges
    OviAPI::WStatic titleLabel;
    OviAPI::ResourceManager* resource;

private:
    void measureTitle();
};
