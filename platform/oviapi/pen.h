// What lines and areas are drawn with.
#pragma once

#include <oviapi/color.h>

namespace OviAPI {

class Pen {
public:
    enum Style : int {
        Solid = 0,
        Dash = 1,
        Dot = 2,
        DashDot = 3,
        DashDotDot = 4,
        None = 5,
        Fine = 6
    };

    Pen() = default;
    // width: pixels, 0 and 1 are a hairline. A style outside the list draws solid.
    explicit Pen(Color color, int width = 1, Style style = Solid)
        : m_color(color)
        , m_width(width)
        , m_style(style)
    {
    }

    Color color() const { return m_color; }
    int width() const { return m_width; }
    Style style() const { return m_style; }

    bool operator==(const Pen&) const = default;

private:
    Color m_color;
    int m_width = 1;
    Style m_style = Solid;
};

class Brush {
public:
    enum HatchStyle : int {
        NoHatch = 0,
        Horizontal = 1,
        Vertical = 2,
        ForwardDiagonal = 3,
        BackwardDiagonal = 4,
        Cross = 5,
        DiagonalCross = 6,
    };

    // A brush that fills nothing.
    Brush() = default;
    explicit Brush(Color color, HatchStyle hatch = NoHatch)
        : m_color(color)
        , m_hatch(hatch)
        , m_null(false)
    {
    }

    bool isNull() const { return m_null; }
    Color color() const { return m_color; }
    HatchStyle hatch() const { return m_hatch; }

    bool operator==(const Brush&) const = default;

private:
    Color m_color;
    HatchStyle m_hatch = NoHatch;
    bool m_null = true;
};

} // namespace OviAPI
