// Drawing and measuring.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include <oviapi/export.h>
#include <oviapi/font.h>
#include <oviapi/geometry.h>
#include <oviapi/pen.h>

namespace OviAPI {

class PaintDevice;
class Picture;

// How text stands in a rectangle. One of each of the first two groups, and any of the rest.
enum TextFlags : uint32_t {
    TextLeft = 0,
    TextCenter = 1,
    TextRight = 2,
    TextTop = 0,
    TextVCenter = 4,
    TextBottom = 8,
    TextWordWrap = 16,
    TextSingleLine = 32, // line ends are drawn as spaces
    TextElide = 64,      // text that is too wide ends in an ellipsis; implies one line
};

// Draws on a device. Coordinates are device-independent pixels; a line of width 1 is one unbroken
// row of device pixels at every scale. Pen, brush, font, text colours and clip belong to the
// painter and start as: black hairline, no brush, the device's font, window text, no background, no
// clip. Calls of a painter that is not valid do nothing and measure 0. User-interface thread only.
class OVIAPI_API Painter {
public:
    explicit Painter(PaintDevice* device); // null: not valid
    explicit Painter(PaintDevice& device)
        : Painter(&device)
    {
    }
    ~Painter();
    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;

    // Whether the painter could be made. It stops being valid when the paint event ends or the
    // window is destroyed.
    bool valid() const;
    explicit operator bool() const { return valid(); }
    // Device pixels per pixel.
    double pixelRatio() const;

    void setFont(const Font& font);
    Font font() const;
    void setPen(const Pen& pen);
    Pen pen() const;
    void setBrush(const Brush& brush);
    Brush brush() const;
    void setTextColor(Color color);
    Color textColor() const;
    // From now on text is drawn on a box of this colour.
    void setBackgroundColor(Color color);
    // Text is drawn on what is there.
    void clearBackgroundColor();
    // Whether slanted lines and curves are smoothed; off at first.
    void setSmooth(bool smooth);

    // Draws only inside the rectangle, and inside the device's own clip.
    void setClipRect(const Rect& rect);
    void clearClipRect();
    // The clip as far as it meets the part of the device that has to be painted.
    Rect clipRect() const;

    // Keeps everything that is set above, and takes it back. A restore too many does nothing.
    void save();
    void restore();

    // Both ends are drawn.
    void drawLine(int x1, int y1, int x2, int y2);
    void drawLine(Point from, Point to) { drawLine(from.x, from.y, to.x, to.y); }
    // Separate lines: each point with an even index to the one behind it.
    void drawLines(std::span<const Point> points);
    // Joins the points. The time grows with the number of points, whatever the pen's width.
    void drawPolyline(std::span<const Point> points);
    // Outline with the pen, inside with the brush; the outline lies inside the rectangle.
    void drawRect(const Rect& rect);
    void drawEllipse(const Rect& rect);
    // No outline.
    void fillRect(const Rect& rect, const Brush& brush);
    void fillRect(const Rect& rect, Color color) { fillRect(rect, Brush(color)); }
    // With the painter's brush.
    void fillRect(int x, int y, int width, int height);

    // The upper left corner of the text stands at the point. count: number of characters, -1 all.
    // An ampersand is a character like any other.
    void drawText(int x, int y, std::wstring_view text, int count = -1);
    // Clipped to the rectangle. flags: TextFlags.
    void drawText(const Rect& rect, std::wstring_view text, uint32_t flags);

    void drawPicture(int x, int y, const Picture& picture);
    void stretchPicture(const Rect& rect, const Picture& picture);

    // What drawText at the point would cover: as wide as the text moves the pen, as high as its
    // lines.
    Rect getTextRect(int x, int y, std::wstring_view text, int count = -1) const;
    // Width of the widest Latin letter or digit of the font.
    int getMaxCharWidth() const;
    // Height of a line of text, and how far its base line lies below its top.
    int getTextHeight() const;
    int getTextAscent() const;
    // The text cut to the width with an ellipsis at its end.
    std::wstring elidedText(std::wstring_view text, int width) const;

    struct Native;
    // For the framework's own code.
    Native* native() const { return m_native.get(); }

private:
    std::unique_ptr<Native> m_native;
};

// The brushes of the four sides of a box; a null one stands for the palette's.
struct BoxBrush {
    Brush left;
    Brush top;
    Brush right;
    Brush bottom;
};

// A box that stands out: light on the left and at the top, shadow on the right and at the bottom,
// each one pixel; with fill the inside is drawn in the colour of buttons.
OVIAPI_API void Draw3DRisedBox(Painter& painter, const Rect& rect, const BoxBrush& brushes,
                               bool fill);

// Size of a text in the painter's font, in the given font.
OVIAPI_API Size GetTextSize(const Painter& painter, std::wstring_view text, int count = -1);
OVIAPI_API Size GetTextSize(const Font& font, std::wstring_view text, int count = -1);

} // namespace OviAPI
