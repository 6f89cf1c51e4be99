// The border between two panes, moved with the mouse or the arrow keys.
#pragma once

#include "app/extpanel.h"

class SplitterBar : public WExtPanel {
public:
    static constexpr int Thickness = 7; // px

    SplitterBar();

    // The bar is to stand at another place. left: pixels in the parent.
    virtual bool onSplit(int left);

    bool onLButtonDown(int x, int y, long flags) override;
    bool onLButtonUp(int x, int y, long flags) override;
    bool onMouseMove(int x, int y, long flags) override;
    bool onKeyDown(OviAPI::VirtualKey key) override;
    bool onGetFocus() override;
    bool onLostFocus() override;
    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    int m_grip = -1; // where the bar was taken hold of, px from its left edge; -1 when it is not
};

OVIAPI_SIGNAL(SplitterBar, onSplit);
