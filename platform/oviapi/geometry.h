// Points, sizes and rectangles in device-independent pixels.
#pragma once

#include <cstdint>

namespace OviAPI {

struct Point {
    int32_t x = 0;
    int32_t y = 0;

    bool operator==(const Point&) const = default;
};

struct Size {
    int32_t width = 0;
    int32_t height = 0;

    bool operator==(const Size&) const = default;
};

// right and bottom lie just outside: a rectangle of width 1 has right = left + 1.
// Differences are computed in 64 bits, so coordinates at the ends of the range never overflow.
struct Rect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    int64_t width() const { return int64_t{right} - left; }
    int64_t height() const { return int64_t{bottom} - top; }
    bool isEmpty() const { return right <= left || bottom <= top; }
    bool contains(Point p) const
    {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    // Moves every side outwards by dx and dy; negative values shrink the rectangle.
    void inflate(int32_t dx, int32_t dy)
    {
        left -= dx;
        right += dx;
        top -= dy;
        bottom += dy;
    }

    bool operator==(const Rect&) const = default;
};

} // namespace OviAPI
