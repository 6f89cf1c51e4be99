// The border between two panes, beside or above each other, moved with the mouse or the arrow keys.
#pragma once

#include "app/extpanel.h"

class SplitterBar : public WExtPanel {
public:
    static constexpr int Thickness = 7; // px

    enum class Direction {
        Upright, // between left and right
        Level,   // between above and below
    };

    explicit SplitterBar(Direction direction = Direction::Upright);

    // The bar is to stand at another place. place: of its left or upper edge, pixels in the parent.
    virtual bool onSplit(int place);

    bool onLButtonDown(int x, int y, long flags) override;
    bool onLButtonUp(int x, int y, long flags) override;
    bool onMouseMove(int x, int y, long flags) override;
    bool onKeyDown(OviAPI::VirtualKey key) override;
    bool onGetFocus() override;
    bool onLostFocus() override;
    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    bool isUpright() const { return m_direction == Direction::Upright; }
    int place() const { return isUpright() ? geometry().left : geometry().top; }

    Direction m_direction;
    int m_grip = -1; // where the bar was taken hold of, px from its edge; -1 when it is not
};

OVIAPI_SIGNAL(SplitterBar, onSplit);
