// A colour: three components, or a number that names a role of the desktop's palette.
#pragma once

#include <cstdint>

#include <oviapi/export.h>

namespace OviAPI {

// Colours by number follow the current palette, so that a dark desktop looks right: their
// components are looked up when they are asked for. A number that is not listed is black.
enum class ColorNumber : int {
    Window = 1,
    WindowText = 2,
    ButtonFace = 3,
    ButtonText = 4,
    Highlight = 5,
    Field = 6,
    FieldText = 7,
    HighlightText = 8,
    Caption = 9,
    CaptionText = 10,
    Shadow = 11,
    Light = 12,
    InactiveCaption = 13,
    DisabledText = 14,
    GridLine = 15,
    ToolTip = 16,
    ToolTipText = 17,
};

class OVIAPI_API Color {
public:
    constexpr Color() = default;
    explicit constexpr Color(int number)
        : m_number(number)
    {
    }
    explicit constexpr Color(ColorNumber number)
        : m_number(static_cast<int>(number))
    {
    }
    // Components from 0 to 255; only their low 8 bits count.
    constexpr Color(int red, int green, int blue)
        : m_rgb((static_cast<uint32_t>(red) & 255U) << 16 |
                (static_cast<uint32_t>(green) & 255U) << 8 | (static_cast<uint32_t>(blue) & 255U))
    {
    }

    int red() const { return static_cast<int>(rgb() >> 16 & 255U); }
    int green() const { return static_cast<int>(rgb() >> 8 & 255U); }
    int blue() const { return static_cast<int>(rgb() & 255U); }

    // 0xRRGGBB, looked up in the palette for a colour by number.
    uint32_t rgb() const;
    // 0 for a colour given by its components.
    constexpr int number() const { return m_number; }

    // Same number, or same components where neither has one.
    constexpr bool operator==(const Color&) const = default;

    static const Color Black;
    static const Color White;
    static const Color Gray;
    static const Color LtGray;
    static const Color DkGray;
    static const Color Red;
    static const Color Green;
    static const Color Blue;

private:
    uint32_t m_rgb = 0;
    int m_number = 0;
};

inline constexpr Color Color::Black{0, 0, 0};
inline constexpr Color Color::White{255, 255, 255};
inline constexpr Color Color::Gray{128, 128, 128};
inline constexpr Color Color::LtGray{192, 192, 192};
inline constexpr Color Color::DkGray{64, 64, 64};
inline constexpr Color Color::Red{255, 0, 0};
inline constexpr Color Color::Green{0, 255, 0};
inline constexpr Color Color::Blue{0, 0, 255};

} // namespace OviAPI
