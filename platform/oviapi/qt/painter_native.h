// What a painter keeps, and how it reaches Qt.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QBrush>
#include <QFont>
#include <QPen>
#include <QRect>

#include <oviapi/painter.h>

#include "paintdevice.h"

namespace OviAPI {

struct Painter::Native {
    struct State {
        Font font;
        QFont qfont;
        Pen pen;
        Brush brush;
        Color text{ColorNumber::WindowText};
        std::optional<Color> background;
        std::optional<QRect> clip;
        bool smooth = false;
    };

    std::shared_ptr<PaintDevice::Native> device;
    State state;
    std::vector<State> saved;
    bool asked = false; // the window has been asked to repaint itself

    ~Native();
    // The Qt painter with font, clip and smoothing of this painter set; null when nothing can be
    // drawn, and then the window is asked to repaint itself.
    QPainter* begin();
    // The next call sets the state anew.
    void changed();
    double ratio() const;
    // Thickness of the pen's line in device pixels.
    int thickness() const;
    // A pen of this thickness, for coordinates in device pixels.
    QPen linePen() const;

    // What lines are drawn with.
    struct Lines {
        QPainter* qt;
        QPen pen;
        double ratio;
        int thickness;
    };
    // Nothing when lines cannot be seen.
    std::optional<Lines> lines();
};

// For coordinates in device pixels; ratio: device pixels per pixel.
QBrush toQBrush(const Brush& brush, double ratio);

} // namespace OviAPI
