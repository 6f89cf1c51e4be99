// A panel that scrolls in units of its own.
#pragma once

#include <memory>

#include <oviapi/export.h>
#include <oviapi/geometry.h>
#include <oviapi/panel.h>

namespace OviAPI {

class Painter;
struct ScrollNative;

enum ScrollBar : int { HorizontalBar = 0, VerticalBar = 1 };

// Draws what its derived class shows of something larger. The scroll bars count units that the
// derived class chooses (pixels, rows, steps), with 64 bits: an arrow click moves by exactly one
// line step whatever the range. Children are placed in the client area and do not scroll.
class OVIAPI_API aCApsWnd : public virtual WPanel {
public:
    enum ApsStyle : long {
        ThinFrame = 8, // beside those of WPanel; the client area lies inside it
    };

    aCApsWnd();
    ~aCApsWnd() override;

    // Paints the part of the client area that lies in the rectangle. Returns whether it did.
    virtual bool onDraw(Painter* painter, const Rect& rect);
    // The user wants these positions (0 is the start; they may lie outside). The default takes them
    // over as far as the ranges allow, and repaints everything.
    virtual void doScroll(long horizontal, long vertical);
    // The client area inside the scroll bars has another size.
    virtual bool onVisClientSize();

    // Positions 0..last. A bar without a range is not seen; neither is one that has been hidden.
    void SetScrollRange(ScrollBar bar, long last);
    long GetScrollRange(ScrollBar bar) const { return m_bars[bar].last; }
    // Takes the position over as far as the range allows; calls nothing.
    void SetScrollPos(ScrollBar bar, long position);
    long GetScrollPos(ScrollBar bar) const { return m_bars[bar].position; }
    // Units that an arrow and a click beside the thumb move by.
    void SetScrollSteps(ScrollBar bar, long line, long page);
    void ShowScrollBar(ScrollBar bar, bool shown);
    bool IsScrollBarShown(ScrollBar bar) const;

    // Moves what is on the screen inside the rectangle, and asks for the part that comes into view
    // to be painted.
    void ScrollPixels(const Rect& area, int dx, int dy);

    bool doPaint(PaintDevice* device) override;

protected:
    std::unique_ptr<Native> makeNative() override;
    void nativeGoes() override;
    // For a derived class that paints every pixel of its client area: nothing is filled before.
    void setOpaque() { m_opaque = true; }
    // The text of the tool tip at a point; empty for none.
    virtual std::wstring hintAt(int x, int y);
    // A mouse event is about to be dispatched. Sees it even when a slot handles it. True: the event
    // goes no further.
    virtual bool beforeMouse(int x, int y, long flags, bool pressed);

private:
    friend struct ScrollNative;
    struct Bar {
        long last = 0;
        long position = 0;
        long line = 1;
        long page = 10;
        bool hidden = false;
    };

    void applyBar(ScrollBar bar);

    Bar m_bars[2];
    ScrollNative* m_scroll = nullptr; // the native part while there is one
    bool m_opaque = false;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::aCApsWnd, onVisClientSize);
