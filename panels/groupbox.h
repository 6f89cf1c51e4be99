// A frame with a caption.
#pragma once

#include <cstdint>

#include <oviapi/panel.h>

#include "app/export.h"
#include "app/extstatic.h"

// A framed panel with a caption on its upper line. A box that is moved to a rectangle fills it: the
// caption begins at its top, the panel half the caption's font size below, so that the geometry of
// the panel is that much smaller. The caption is a sibling of the panel and always 70 px wide;
// assistive technology reads the panel as a group of that name.
class OVIEXT_API GroupBox : public OviAPI::WPanel {
public:
    GroupBox();
    ~GroupBox() override;

    // False unless both the panel and the caption were created.
    bool create() override;
    // Half the caption's font size, from now on.
    void findShift();
    // Leaves the panel where it is and places the caption anew.
    void setFont(const OviAPI::Font& font) override;
    bool move(int x, int y, int w, int h) override;
    bool doMove(int x, int y, int w, int h) override;
    void show(bool visible) override;
    void enable(bool enabled) override;
    void setParent(OviAPI::Container* parent) override;

    void setText(const wchar_t* text);
    void getText(wchar_t* buf, int size) const;

protected:
    // Takes the height of its text, and not the width.
    class Caption : public WExtStatic {
    public:
        bool doMove(int x, int y, int w, int h) override;
    };

    int32_t shift = 0; // px between the tops of the caption and of the panel
    Caption caption;
    bool fontChanged = false; // the next move finds the panel shifted already

    void nativeGoes() override;
};
