// Paint devices over widgets, and the painter behind them.
//
// In the paint event of a widget:
//
//     void paintEvent(QPaintEvent* event) override
//     {
//         PaintSession session(this, event->region().boundingRect());
//         owner->doPaint(&session.device());
//     }
#pragma once

#include <QPainter>
#include <QPointer>
#include <QWidget>

#include <oviapi/paintdevice.h>
#include <oviapi/picture.h>

namespace OviAPI {

class Painter;

struct PaintDevice::Native {
    QPointer<QWidget> widget;                // null for a picture, and when the paint event is over
    std::shared_ptr<Picture::Native> pixels; // null for a widget
    QRect clip;                              // what has to be painted; null: the whole device
    QPainter qt;                             // active while painting
    const void* current = nullptr;           // the painter whose state is set in qt
    bool painting = false;                   // inside the paint event, or on a picture

    Native() = default;
    ~Native();
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

    // Whether painters on it can measure at least.
    bool isUsable() const;
    QPaintDevice* device() const;
    // What drawing goes to: this device, or the running paint event of its widget; null when there
    // is none.
    Native* drawable();
};

// The device of one paint event. When it ends, its painters stop being valid.
class PaintSession {
public:
    explicit PaintSession(QWidget* widget, const QRect& clip = QRect());
    ~PaintSession();
    PaintSession(const PaintSession&) = delete;
    PaintSession& operator=(const PaintSession&) = delete;

    PaintDevice& device() { return m_device; }

private:
    PaintDevice m_device;
};

// The client device of a widget: measures, asks for repaints, and inside the widget's paint event
// draws. Null for a null widget.
PaintDevice clientDevice(QWidget* widget);

// The Qt painter with this painter's font, clip and smoothing set; null when it only measures or is
// not valid. What the caller sets of these, its pen, brush and transformation hold until the next
// call of any painter on the device.
QPainter* qtPainter(Painter& painter);

} // namespace OviAPI
